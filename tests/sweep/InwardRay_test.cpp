#include "InwardRay.h"

#include "Bodies.h"
#include "RandomNumbers.h"

#include <gtest/gtest.h>

namespace {

using namespace gsl_sweep;
using gsl_mesh::Mesh;

SurfaceTriangle TriangleOf(const Mesh& mesh, std::size_t k) {
  return {{mesh.corners[3 * k], mesh.corners[3 * k + 1], mesh.corners[3 * k + 2]}};
}

int Turns(const InwardRay& ray, const Mesh& mesh) {
  int turns = 0;
  for (std::size_t k = 0; 3 * k < mesh.corners.size(); ++k)
    turns += ray.Crossing(TriangleOf(mesh, k));
  return turns;
}

TEST(InwardRay, PointsToTheInnerSideAlongTheLargestComponent) {
  const SurfaceTriangle up{{{0, 0, 0}, {8, 0, 1}, {0, 8, 1}}};
  const InwardRay down(up);
  EXPECT_EQ(down.Axis(), 2);
  EXPECT_EQ(down.Sense(), -1);
  const SurfaceTriangle left{{{0, 0, 0}, {0, 0, 1}, {0, 1, 0}}};
  const InwardRay right(left);
  EXPECT_EQ(right.Axis(), 0);
  EXPECT_EQ(right.Sense(), 1);
}

TEST(InwardRay, ABoxIsOnceAroundThePointsUnderItsFaces) {
  const Mesh box = sweep_shapes::Box({0, 0, 0}, {2, 2, 2});
  for (std::size_t k = 0; k < 12; ++k) {
    const SurfaceTriangle face = TriangleOf(box, k);
    EXPECT_EQ(Turns(InwardRay(face), box), 1) << k;
    const SurfaceTriangle back{{face.corner[0], face.corner[2], face.corner[1]}};
    EXPECT_EQ(Turns(InwardRay(back), box), 0) << k;
  }
}

TEST(InwardRay, MeetsNoEdgeAndNoCorner) {
  // The ray begins at (2, 1, 1), over a lattice of boxes whose edges and corners are on its axis.
  const SurfaceTriangle face{{{0, 0, 9}, {4, 0, 9}, {4, 4, 9}}};
  const InwardRay ray(face);
  EXPECT_EQ(ray.Sense(), -1);
  for (const double x : {1.0, 2.0}) {
    for (const double y : {0.0, 1.0}) {
      const Mesh box = sweep_shapes::Box({x, y, 0}, {x + 1, y + 1, 1});
      const int turns = Turns(ray, box);
      EXPECT_EQ(turns, 0); // the ray passes through the whole box, or misses it
      int crossings = 0;
      for (std::size_t k = 0; k < 12; ++k)
        crossings += std::abs(ray.Crossing(TriangleOf(box, k)));
      EXPECT_TRUE(crossings == 0 || crossings == 2) << x << ' ' << y;
    }
  }
  // Of four boxes around the axis, it passes through one.
  int crossings = 0;
  for (const double x : {1.0, 2.0}) {
    for (const double y : {0.0, 1.0}) {
      const Mesh box = sweep_shapes::Box({x, y, 0}, {x + 1, y + 1, 1});
      for (std::size_t k = 0; k < 12; ++k)
        crossings += std::abs(ray.Crossing(TriangleOf(box, k)));
    }
  }
  EXPECT_EQ(crossings, 2);
}

TEST(InwardRay, TrianglesAtItsBeginningDoNotCount) {
  const SurfaceTriangle face{{{0, 0, 9}, {4, 0, 9}, {4, 4, 9}}};
  const InwardRay ray(face);
  EXPECT_EQ(ray.Crossing(face), 0);
  EXPECT_EQ(ray.Crossing({{{0, 0, 9}, {4, 4, 9}, {4, 0, 9}}}), 0);
  EXPECT_EQ(ray.Crossing({{{0, 0, 13}, {4, 0, 9}, {3, 3, 7}}}), 0); // above the point
  // A corner, and an edge, at the beginning.
  EXPECT_EQ(ray.Crossing({{{2, 1, 9}, {4, 0, 1}, {4, 4, 1}}}), 0);
  EXPECT_EQ(ray.Crossing({{{0, 1, 9}, {4, 1, 9}, {2, 3, 1}}}), 0);
  // One unit below, and one above.
  const double below = std::nextafter(9.0, 0.0);
  const double above = std::nextafter(9.0, 10.0);
  EXPECT_EQ(ray.Crossing({{{0, 0, below}, {4, 0, below}, {4, 4, below}}}), -1);
  EXPECT_EQ(ray.Crossing({{{0, 0, below}, {4, 4, below}, {4, 0, below}}}), 1);
  EXPECT_EQ(ray.Crossing({{{0, 0, above}, {4, 0, above}, {4, 4, above}}}), 0);
}

TEST(InwardRay, CountsEachComponentAroundThePoint) {
  RandomNumbers random(8);
  int inside = 0;
  for (int round = 0; round < 3000; ++round) {
    const auto at = [&] { return static_cast<double>(random.Below(7)); };
    const SurfaceTriangle face{{{at(), at(), at()}, {at(), at(), at()}, {at(), at(), at()}}};
    if (!face.HasArea()) continue;
    const InwardRay ray(face);
    // The point just under the face, by a step that no plane of the lattice is within.
    double p[3];
    for (int k = 0; k < 3; ++k) {
      const auto c = [k](const Coord3& q) { return k == 0 ? q.x : k == 1 ? q.y : q.z; };
      p[k] = 0.5 * c(face.corner[0]) + 0.25 * c(face.corner[1]) + 0.25 * c(face.corner[2]);
    }
    p[ray.Axis()] += 0x1p-10 * ray.Sense();
    p[(ray.Axis() + 1) % 3] += 0x1p-20 * ray.Sense();
    p[(ray.Axis() + 2) % 3] += 0x1p-30 * ray.Sense();
    const Coord3 low{at(), at(), at()};
    const Coord3 high{low.x + 1 + random.Below(4), low.y + 1 + random.Below(4),
                      low.z + 1 + random.Below(4)};
    const bool isInside = p[0] > low.x && p[0] < high.x && p[1] > low.y && p[1] < high.y &&
                          p[2] > low.z && p[2] < high.z;
    ASSERT_EQ(Turns(ray, sweep_shapes::Box(low, high)), isInside ? 1 : 0) << round;
    inside += isInside ? 1 : 0;
  }
  EXPECT_GT(inside, 50);
}

} // namespace
