#include "ShadowTree.h"

#include "SweepShapes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

using namespace gsl_sweep;

ShadowTriangle ShadowOf(const ShadowFrame& frame, const Coord3* corner, std::uint32_t index) {
  ShadowTriangle shadow{};
  shadow.index = index;
  shadow.zLow = 1e300;
  shadow.zHigh = -1e300;
  for (int c = 0; c < 3; ++c) {
    const Coord3 p = frame.Transform(corner[c]);
    shadow.u[c] = p.x;
    shadow.v[c] = p.y;
    shadow.zLow = std::min(shadow.zLow, p.z - frame.Error());
    shadow.zHigh = std::max(shadow.zHigh, p.z + frame.Error());
  }
  return shadow;
}

std::vector<ShadowTriangle> ShadowsOf(const ShadowFrame& frame, const Mesh& mesh) {
  std::vector<ShadowTriangle> shadows;
  for (std::uint32_t k = 0; k < mesh.TriangleCount(); ++k) {
    shadows.push_back(ShadowOf(frame, mesh.corners.data() + 3 * k, k));
  }
  return shadows;
}

bool Contains(const ShadowBox& outer, const ShadowBox& inner) {
  return outer.low.x <= inner.low.x && outer.low.y <= inner.low.y && outer.low.z <= inner.low.z &&
         inner.high.x <= outer.high.x && inner.high.y <= outer.high.y &&
         inner.high.z <= outer.high.z;
}

/// Counts the leaf that each triangle is in and checks that every box holds what is below it.
void Walk(const ShadowTree& tree, std::uint32_t index, double error, std::vector<int>& seen) {
  const ShadowTree::Node& node = tree.At(index);
  if (node.count == 0) {
    for (const std::uint32_t child : {index + 1, node.first}) {
      EXPECT_TRUE(Contains(node.box, tree.At(child).box));
      Walk(tree, child, error, seen);
    }
    return;
  }
  for (std::uint32_t k = node.first; k < node.first + node.count; ++k) {
    EXPECT_TRUE(Contains(node.box, tree.TriangleAt(k).Box(error)));
    ++seen[tree.TriangleAt(k).index];
  }
}

void ExpectWholeTree(const Mesh& mesh) {
  const TravelDirection direction({0.3, -0.2, 1.0});
  const ShadowFrame frame(direction, {0.0, 0.0, 0.0}, 4.0);
  const ShadowTree tree(frame, ShadowsOf(frame, mesh));
  ASSERT_FALSE(tree.IsEmpty());
  std::vector<int> seen(mesh.TriangleCount(), 0);
  Walk(tree, 0, frame.Error(), seen);
  EXPECT_EQ(seen, std::vector<int>(mesh.TriangleCount(), 1));
}

TEST(ShadowTree, HoldsEveryTriangleOnce) {
  std::mt19937_64 random(8);
  ExpectWholeTree(sweep_shapes::Soup(random, 1, 1.0, 0.2, 0.0));
  ExpectWholeTree(sweep_shapes::Soup(random, 5, 1.0, 0.2, 0.0));
  ExpectWholeTree(sweep_shapes::Soup(random, 3000, 1.0, 0.2, 0.0));
}

TEST(ShadowTree, HoldsTrianglesThatNoCutSeparates) {
  Mesh same;
  for (int k = 0; k < 1000; ++k) {
    sweep_shapes::AddTriangle(same, {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0});
  }
  ExpectWholeTree(same);
  // Each half as far as the one before: equal slices cut off one at a time.
  Mesh nested;
  double at = 1.0;
  for (int k = 0; k < 900; ++k) {
    sweep_shapes::AddTriangle(nested, {at, 0.0, 0.0}, {at, at, 0.0}, {at, 0.0, at});
    at /= 2.0;
  }
  ExpectWholeTree(nested);
}

TEST(ShadowTree, IsEmptyWithoutTriangles) {
  const ShadowFrame frame(TravelDirection({0.0, 0.0, 1.0}), {0.0, 0.0, 0.0}, 1.0);
  EXPECT_TRUE(ShadowTree(frame, {}).IsEmpty());
}

TEST(ShadowFrame, AxesAreAcrossAndAlong) {
  const TravelDirection direction({2.0, 3.0, -6.0});
  for (const double angle : {0.0, 0.7}) {
    const ShadowFrame frame = ShadowFrame(direction, {1.0, 1.0, 1.0}, 10.0).Turned(angle);
    const Coord3 start = frame.Transform({3.0, -1.0, 2.0});
    const Coord3 end = frame.Transform({5.0, 2.0, -4.0});
    EXPECT_NEAR(end.x, start.x, frame.Error());
    EXPECT_NEAR(end.y, start.y, frame.Error());
    EXPECT_NEAR(end.z, start.z + 7.0, frame.Error());
  }
  EXPECT_LT(ShadowFrame(direction, {1.0, 1.0, 1.0}, 10.0).Error(), 1e-12);
}

TEST(ShadowBox, ApartIsStrictOnEverySide) {
  const ShadowBox moving{{0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}};
  const auto at = [](double x, double y, double z) {
    return ShadowBox{{x, y, z}, {x + 1.0, y + 1.0, z + 1.0}};
  };
  EXPECT_FALSE(ShadowBox::AreApart(moving, at(1.0, -1.0, 3.0), 2.0));
  EXPECT_TRUE(ShadowBox::AreApart(moving, at(1.0, -1.0, 3.0), std::nextafter(2.0, 0.0)));
  EXPECT_TRUE(ShadowBox::AreApart(moving, at(std::nextafter(1.0, 2.0), 0.0, 3.0), 9.0));
  EXPECT_TRUE(ShadowBox::AreApart(moving, at(0.0, std::nextafter(-1.0, -2.0), 3.0), 9.0));
  EXPECT_FALSE(ShadowBox::AreApart(moving, at(0.0, 0.0, -1.0), 9.0));
  EXPECT_TRUE(ShadowBox::AreApart(moving, at(0.0, 0.0, std::nextafter(-1.0, -2.0)), 9.0));
}

TEST(ShadowsApart, NeverPartsWhatTheExactKernelJoins) {
  const unsigned seed = 12;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  int parted = 0;
  for (int round = 0; round < 300; ++round) {
    const Coord3 d = round % 3 == 0 ? Coord3{0.0, 0.0, 1.0} : Coord3{0.3, -0.7, 1.0};
    const TravelDirection direction(d);
    // On a grid, so that corners and edges often meet exactly.
    const double step = round % 2 == 0 ? 0.25 : 0.0;
    const Mesh a = sweep_shapes::Soup(random, 8, 0.5, 0.5, step);
    const Mesh b = sweep_shapes::Soup(random, 8, 0.5, 0.5, step);
    const ShadowFrame frame = ShadowFrame(direction, {0.0, 0.0, 0.0}, 1.25).Turned(0.1 * round);
    for (std::size_t i = 0; i < a.TriangleCount(); ++i) {
      for (std::size_t j = 0; j < b.TriangleCount(); ++j) {
        const Coord3* p = a.corners.data() + 3 * i;
        const Coord3* q = b.corners.data() + 3 * j;
        if (!ShadowsApart(ShadowOf(frame, p, 0), ShadowOf(frame, q, 0), frame.CrossError())) {
          continue;
        }
        ++parted;
        ContactInterval interval{};
        ASSERT_FALSE(FindContactInterval(direction, MakeTriangle(direction, p[0], p[1], p[2]),
                                         MakeTriangle(direction, q[0], q[1], q[2]), interval));
      }
    }
  }
  EXPECT_GT(parted, 1000);
}

} // namespace
