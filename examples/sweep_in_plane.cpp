// How far the outline of a tool slides in the XY plane before it touches the outline of a part.

#include <gsl_InPlaneSegSegMinDirectionalDist.h>

#include <cstddef>
#include <cstdio>

int main() {
  // Each outline is a chain of points. The tool travels along +X. The side normal of a segment is
  // its edge turned clockwise, so the front of the tool runs upwards and the front of the part
  // down.
  const gsl_Vector along(1.0, 0.0, 0.0);
  const gsl_Point tool[] = {{0.0, 0.0, 0.0}, {2.0, 1.0, 0.0}, {0.0, 2.0, 0.0}};
  const gsl_Point part[] = {{7.0, 4.0, 0.0}, {9.0, 1.5, 0.0}, {6.0, -1.0, 0.0}};

  const bool twoSided[2] = {false, false};
  gsl_Point contacts[2]; // on the tool and on the part
  double distance = 100.0;
  bool touches = false;
  for (std::size_t i = 0; i + 1 < 3; ++i) {
    for (std::size_t j = 0; j + 1 < 3; ++j) {
      // Even a false result may have written, so each pair has outputs of its own.
      double nearest = distance;
      gsl_Point found[2];
      if (!gsl_InPlaneSegSegMinDirectionalDist(along, tool[i], tool[i + 1], part[j], part[j + 1],
                                               twoSided, 0.0, found, nearest)) {
        continue;
      }
      std::printf("tool segment %zu and part segment %zu: %g\n", i, j, nearest);
      touches = true;
      distance = nearest;
      contacts[0] = found[0];
      contacts[1] = found[1];
    }
  }
  if (!touches) return 1;
  std::printf("the tool travels %g; (%g, %g) meets (%g, %g)\n", distance, contacts[0].x,
              contacts[0].y, contacts[1].x, contacts[1].y);
}
