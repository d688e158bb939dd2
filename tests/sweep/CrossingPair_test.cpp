#include "CrossingPair.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace gsl_sweep;

/// Judges in both orders, from every first corner of both, and with both turned over.
bool Judged(SurfaceTriangle a, SurfaceTriangle b) {
  const bool crosses = DoCross(a, b);
  for (int way = 0; way < 36; ++way) {
    std::rotate(a.corner, a.corner + 1, a.corner + 3);
    if (way % 3 == 2) std::rotate(b.corner, b.corner + 1, b.corner + 3);
    if (way % 9 == 8) std::swap(a.corner[0], a.corner[1]);
    if (way % 18 == 17) std::swap(b.corner[0], b.corner[1]);
    EXPECT_EQ(DoCross(a, b), crosses) << way;
    EXPECT_EQ(DoCross(b, a), crosses) << way;
  }
  return crosses;
}

const SurfaceTriangle floorFace{{{0, 0, 0}, {8, 0, 0}, {0, 8, 0}}};

TEST(CrossingPair, ApartAndThrough) {
  EXPECT_FALSE(Judged(floorFace, {{{0, 0, 1}, {8, 0, 1}, {0, 8, 2}}}));
  EXPECT_FALSE(Judged(floorFace, {{{9, 9, -1}, {10, 9, 1}, {9, 10, 1}}}));
  // Each is on both sides of the plane of the other.
  EXPECT_FALSE(Judged(floorFace, {{{5, 5, -1}, {5, 5, 1}, {-1, 20, 0.5}}}));
  EXPECT_TRUE(Judged(floorFace, {{{1, 1, -1}, {3, 1, -1}, {2, 2, 1}}}));
  EXPECT_TRUE(Judged(floorFace, {{{-5, 1, -5}, {20, 1, 0}, {-5, 1, 5}}}));
}

TEST(CrossingPair, TouchingCounts) {
  EXPECT_TRUE(Judged(floorFace, {{{2, 2, 0}, {1, 1, 4}, {5, 1, 4}}}));    // corner in the face
  EXPECT_TRUE(Judged(floorFace, {{{4, 0, 0}, {1, 1, 4}, {5, 1, 4}}}));    // corner in an edge
  EXPECT_TRUE(Judged(floorFace, {{{4, -1, 0}, {4, 1, 0}, {4, 0, 5}}}));   // edge in the face
  EXPECT_TRUE(Judged(floorFace, {{{4, -1, -1}, {4, 1, 1}, {4, -8, 5}}})); // edges in one point
  EXPECT_TRUE(Judged(floorFace, {{{-1, 1, 0}, {1, -1, 0}, {0, 0, 5}}}));  // corner in its edge
  EXPECT_FALSE(Judged(floorFace, {{{4, -0x1p-50, 0}, {1, -1, 4}, {5, -1, 4}}}));
  EXPECT_FALSE(Judged(floorFace, {{{2, 2, 0x1p-300}, {1, 1, 4}, {5, 1, 4}}}));
}

TEST(CrossingPair, OneCommonCorner) {
  EXPECT_FALSE(Judged(floorFace, {{{0, 0, 0}, {1, 1, 4}, {5, 1, 4}}}));
  EXPECT_FALSE(Judged(floorFace, {{{0, 0, 0}, {-1, -1, -4}, {-1, -1, 4}}}));
  // Beside it in one plane, and in a sector of it.
  EXPECT_FALSE(Judged(floorFace, {{{0, 0, 0}, {-1, 0, 0}, {0, -1, 0}}}));
  EXPECT_TRUE(Judged(floorFace, {{{0, 0, 0}, {2, 1, 0}, {1, 2, 0}}}));
  EXPECT_TRUE(Judged(floorFace, {{{0, 0, 0}, {20, 10, 0}, {10, 20, 0}}}));
  // A part of an edge is common, though no edge is.
  EXPECT_TRUE(Judged(floorFace, {{{0, 0, 0}, {4, 0, 0}, {2, -3, 1}}}));
  EXPECT_TRUE(Judged(floorFace, {{{0, 0, 0}, {4, 0, 0}, {2, -3, 0}}}));
  EXPECT_TRUE(Judged(floorFace, {{{0, 0, 0}, {16, 0, 0}, {2, -3, 1}}}));
  // Through it from the corner.
  EXPECT_TRUE(Judged(floorFace, {{{0, 0, 0}, {2, 2, -1}, {2, 2, 1}}}));
  EXPECT_TRUE(Judged(floorFace, {{{0, 0, 0}, {20, 20, -1}, {20, 20, 1}}}));
  EXPECT_FALSE(Judged(floorFace, {{{0, 0, 0}, {-2, 2, -1}, {-2, 2, 1}}}));
}

TEST(CrossingPair, TwoCommonCorners) {
  EXPECT_FALSE(Judged(floorFace, {{{0, 0, 0}, {8, 0, 0}, {0, -8, 0}}}));
  EXPECT_FALSE(Judged(floorFace, {{{0, 0, 0}, {8, 0, 0}, {2, 2, 0x1p-300}}}));
  EXPECT_FALSE(Judged(floorFace, {{{0, 0, 0}, {8, 0, 0}, {2, 2, 9}}}));
  EXPECT_TRUE(Judged(floorFace, {{{0, 0, 0}, {8, 0, 0}, {2, 2, 0}}}));
  EXPECT_TRUE(Judged(floorFace, {{{0, 0, 0}, {8, 0, 0}, {-90, 0x1p-40, 0}}}));
  // A zero of either sign.
  EXPECT_FALSE(Judged(floorFace, {{{-0.0, 0, -0.0}, {8, -0.0, 0}, {0, -8, 0}}}));
}

TEST(CrossingPair, ThreeCommonCornersCount) {
  EXPECT_TRUE(Judged(floorFace, floorFace));
}

TEST(CrossingPair, AreaIsJudgedWithoutError) {
  EXPECT_TRUE(HasArea(floorFace));
  EXPECT_TRUE(HasArea({{{0, 0, 0}, {0, 0, 1}, {0, 0x1p-300, 0.5}}}));
  // Both products are rounded to 1; they differ by 2^-60.
  EXPECT_TRUE(HasArea({{{0, 0, 0}, {1 + 0x1p-30, 1, 0}, {1, 1 - 0x1p-30, 0}}}));
  EXPECT_FALSE(HasArea({{{0, 0, 0}, {1, 2, 3}, {2, 4, 6}}}));
  EXPECT_FALSE(HasArea({{{0.1, 0.1, 0.1}, {0.3, 0.3, 0.3}, {0.7, 0.7, 0.7}}}));
  EXPECT_FALSE(HasArea({{{1, 2, 3}, {1, 2, 3}, {4, 5, 6}}}));
  EXPECT_FALSE(HasArea({{{1, 2, 3}, {1, 2, 3}, {1, 2, 3}}}));
}

} // namespace
