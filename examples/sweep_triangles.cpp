// How far a triangle travels before it touches the first of several others, and where.

#include <gsl_TriTriMinDirectionalDist.h>

#include <cstddef>
#include <cstdio>

namespace {

struct Triangle {
  gsl_Point p0, p1, p2;
};

} // namespace

int main() {
  // The moving triangle lies in z = 5 and travels down; its normal points down too.
  const gsl_Vector down(0.0, 0.0, -2.0); // any length
  const Triangle moving = {{0.0, 0.0, 5.0}, {0.0, 4.0, 5.0}, {4.0, 0.0, 5.0}};

  const Triangle obstacles[] = {
      {{-9.0, -9.0, 0.0}, {9.0, -9.0, 0.0}, {0.0, 9.0, 0.0}}, // a floor that faces up
      {{1.0, 1.0, 2.0}, {1.2, 1.0, 1.0}, {1.0, 1.2, 1.0}},    // a spike above it
      {{7.0, 7.0, 4.0}, {8.0, 7.0, 4.0}, {7.0, 8.0, 4.0}},    // off to the side
  };

  const bool twoSided[2] = {false, true}; // an obstacle may face either way
  gsl_Point contacts[2];                  // on the moving triangle and on the obstacle
  double distance = 100.0;                // only a smaller travel counts
  // Use the contacts at once: a later obstacle may write them without a smaller travel.
  for (std::size_t i = 0; i < 3; ++i) {
    const Triangle& o = obstacles[i];
    const double before = distance;
    const bool meets = gsl_TriTriMinDirectionalDist(down, moving.p0, moving.p1, moving.p2, o.p0,
                                                    o.p1, o.p2, twoSided, 0.0, contacts, distance);
    if (meets && distance < before) {
      std::printf("obstacle %zu: after %g, (%g, %g, %g) meets (%g, %g, %g)\n", i, distance,
                  contacts[0].x, contacts[0].y, contacts[0].z, contacts[1].x, contacts[1].y,
                  contacts[1].z);
    } else {
      std::printf("obstacle %zu: %s\n", i, meets ? "not nearer" : "not met");
    }
  }
  std::printf("the travel is %g\n", distance);

  // One-sided, the moving triangle is refused when it faces backwards.
  const gsl_Vector up(0.0, 0.0, 1.0);
  const Triangle ceiling = {{-9.0, -9.0, 8.0}, {0.0, 9.0, 8.0}, {9.0, -9.0, 8.0}};
  const bool choices[2][2] = {{false, false}, {true, false}};
  for (const auto& sides : choices) {
    distance = 100.0;
    const bool meets =
        gsl_TriTriMinDirectionalDist(up, moving.p0, moving.p1, moving.p2, ceiling.p0, ceiling.p1,
                                     ceiling.p2, sides, 0.0, contacts, distance);
    std::printf("up, %s: ", sides[0] ? "two-sided" : "one-sided");
    if (meets) {
      std::printf("after %g\n", distance);
    } else {
      std::printf("refused\n");
    }
  }
}
