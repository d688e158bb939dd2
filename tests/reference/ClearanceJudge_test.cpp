#include "ClearanceJudge.h"

#include <gtest/gtest.h>

namespace {

using namespace reference;
using Corners = std::array<Coord3, 3>;

const Corners floorTriangle{Coord3{0, 0, 0}, Coord3{8, 0, 0}, Coord3{0, 8, 0}};

Corners PointAt(double x, double y, double z) {
  return {Coord3{x, y, z}, Coord3{x, y, z}, Coord3{x, y, z}};
}

Rational SquaredDistance(const Corners& a, const Corners& b) {
  return ClearancePair(a, b, {1, 0, 0}).At(0).square;
}

TEST(ClearanceJudge, DistancesAreThoseOfTheClosestFeatures) {
  EXPECT_EQ(SquaredDistance(PointAt(1, 1, 3), floorTriangle), 9);    // over the face
  EXPECT_EQ(SquaredDistance(PointAt(4, -3, 4), floorTriangle), 25);  // over an edge
  EXPECT_EQ(SquaredDistance(PointAt(-2, -3, 6), floorTriangle), 49); // from a corner
  EXPECT_EQ(SquaredDistance(floorTriangle, PointAt(5, 5, 0)), 2);    // from the long edge
  const Corners bar{Coord3{4, -5, 2}, Coord3{4, 5, 3}, Coord3{4, 5, 3}};
  EXPECT_EQ(SquaredDistance(bar, floorTriangle), Rational(625, 101)); // edge and edge
}

TEST(ClearanceJudge, TrianglesThatCrossHaveNoDistance) {
  const Corners needle{Coord3{1, 1, -1}, Coord3{1, 1, 1}, Coord3{1, 1, 1}};
  EXPECT_EQ(SquaredDistance(needle, floorTriangle), 0);
  EXPECT_EQ(SquaredDistance(floorTriangle, needle), 0);
  EXPECT_EQ(SquaredDistance(floorTriangle, floorTriangle), 0);
}

TEST(ClearanceJudge, APathThatGrazesIsFound) {
  const ClearancePair pair(PointAt(3, 4, 9), PointAt(0, 0, 0), {0, 0, -1});
  EXPECT_EQ(pair.IsWithinBetween(0, 20, 25), true);
  EXPECT_EQ(pair.IsWithinBetween(0, 8, 25), false);
  EXPECT_EQ(pair.IsWithinBetween(10, 20, 25), false);
  EXPECT_EQ(pair.IsWithinBetween(0, 20, Rational(25) - Rational(1, 1000000)), false);
  // Within 13 of it from 9 - 12 on: before the start.
  EXPECT_TRUE(pair.IsWithin(0, 169));
}

} // namespace
