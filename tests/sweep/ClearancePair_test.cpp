#include "ClearancePair.h"

#include "gsl_Arithmetic.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace {

using namespace gsl_sweep;
using Corners = Coord3[3];

constexpr double kInfinity = std::numeric_limits<double>::infinity();

const TravelDirection kDown({0.0, 0.0, -1.0});

Triangle Of(const Coord3& a, const Coord3& b, const Coord3& c) {
  return MakeTriangle(kDown, a, b, c);
}
Triangle Point(const Coord3& p) {
  return Of(p, p, p);
}

const Triangle kFloor = Of({0, 0, 0}, {8, 0, 0}, {0, 8, 0});

/// Expects a contact ahead, and the mirrored contact when the bodies change places.
ClearanceContact Ahead(const Triangle& moving, const Triangle& fixed, double clearance,
                       ContactKind kind, double travel) {
  ClearanceContact found{};
  EXPECT_EQ(JudgeClearance(kDown, moving, fixed, clearance, kInfinity, found),
            ClearanceOutcome::Ahead);
  EXPECT_EQ(found.contact.kind, kind);
  EXPECT_EQ(found.contact.travel, travel);
  EXPECT_FALSE(AreWithin(kDown, moving, fixed, clearance));
  // The limit does not change the outcome while it is not below the multiple.
  ClearanceContact limited{};
  const double limit = found.multiple.hi * (1.0 + 0x1p-50);
  EXPECT_EQ(JudgeClearance(kDown, moving, fixed, clearance, limit, limited),
            ClearanceOutcome::Ahead);
  EXPECT_EQ(limited.contact.travel, travel);
  EXPECT_EQ(limited.contact.kind, kind);
  return found;
}

void ExpectPoint(const Coord3& p, const Coord3& expected) {
  EXPECT_NEAR(p.x, expected.x, 0x1p-50);
  EXPECT_NEAR(p.y, expected.y, 0x1p-50);
  EXPECT_NEAR(p.z, expected.z, 0x1p-50);
}

TEST(ClearancePair, TheClosestFeaturesAreNamed) {
  const Triangle overFace = Of({1, 1, 9}, {1, 2, 12}, {2, 1, 12});
  ClearanceContact found = Ahead(overFace, kFloor, 2.0, ContactKind::VertexFace, 7.0);
  ExpectPoint(found.contact.onMoving, {1, 1, 9});
  ExpectPoint(found.contact.onFixed, {1, 1, 0});
  // The three corners of a point are equal; the first is named.
  found = Ahead(Point({4, -3, 9}), kFloor, 5.0, ContactKind::VertexEdge, 5.0);
  EXPECT_EQ(found.contact.movingFeature, 0);
  EXPECT_EQ(found.contact.fixedFeature, 0);
}

TEST(ClearancePair, EachKindHasItsTravelAndPoints) {
  const Triangle needle = Of({4, -3, 9}, {4, -3, 12}, {4, -4, 12});
  ClearanceContact found = Ahead(needle, kFloor, 5.0, ContactKind::VertexEdge, 5.0);
  ExpectPoint(found.contact.onFixed, {4, 0, 0});
  found = Ahead(Of({-2, -3, 9}, {-2, -3, 12}, {-3, -4, 12}), kFloor, 7.0, ContactKind::VertexVertex,
                3.0);
  ExpectPoint(found.contact.onFixed, {0, 0, 0});
  // A bar across the edge of the floor, 1 higher where it crosses.
  found = Ahead(Of({4, -2, 9}, {4, 2, 9}, {4, 0, 20}), Of({0, 0, 0}, {8, 0, 0}, {4, 0, -5}), 1.0,
                ContactKind::EdgeEdge, 8.0);
  ExpectPoint(found.contact.onMoving, {4, 0, 9});
  ExpectPoint(found.contact.onFixed, {4, 0, 0});
  // A flat triangle above a spike, and its edge beside a spike.
  const Triangle flat = Of({0, 0, 9}, {8, 0, 9}, {0, 8, 9});
  const Triangle spike = Of({1, 1, 0}, {1, 2, -3}, {2, 1, -3});
  found = Ahead(flat, spike, 2.0, ContactKind::FaceVertex, 7.0);
  ExpectPoint(found.contact.onMoving, {1, 1, 9});
  found = Ahead(flat, Of({4, -3, 0}, {4, -3, -3}, {4, -4, -3}), 5.0, ContactKind::EdgeVertex, 5.0);
  ExpectPoint(found.contact.onMoving, {4, 0, 9});
}

TEST(ClearancePair, TheFirstKindIsNamedAmongEqualDistances) {
  // A face over an equal face: corners, edges and faces are 2 apart at once.
  const Triangle above = Of({0, 0, 9}, {8, 0, 9}, {0, 8, 9});
  const ClearanceContact found = Ahead(above, kFloor, 2.0, ContactKind::VertexVertex, 7.0);
  EXPECT_EQ(found.contact.movingFeature, 0);
  EXPECT_EQ(found.contact.fixedFeature, 0);
}

TEST(ClearancePair, APathThatGrazesAtExactlyTheClearanceCounts) {
  const Triangle one = Point({3, 4, 9});
  const Triangle other = Point({0, 0, 0});
  ClearanceContact found{};
  Ahead(one, other, 5.0, ContactKind::VertexVertex, 9.0);
  EXPECT_EQ(JudgeClearance(kDown, one, other, std::nextafter(5.0, 0.0), kInfinity, found),
            ClearanceOutcome::Apart);
  // One unit more: 9 - root(2 * 5 * 2^-50 + 2^-100), which a formula in double misses in the
  // eighth digit.
  const double wide = std::nextafter(5.0, 6.0);
  ASSERT_EQ(wide - 5.0, 0x1p-50);
  EXPECT_EQ(JudgeClearance(kDown, one, other, wide, kInfinity, found), ClearanceOutcome::Ahead);
  EXPECT_NEAR(found.contact.travel, 9.0 - std::sqrt(10.0) * 0x1p-25, 0x1p-49);
}

TEST(ClearancePair, AFaceThatHardlyTiltsIsReachedWhereItIs) {
  // The direction falls by 2^-60 for each unit along x. The corner is 1 + 2^-60 * 4 above the
  // plane, at x = -4, so it is 1 above it at x = 0. That is inside the face from x = -1 on.
  const TravelDirection along({1.0, 0.0, -0x1p-60});
  const Triangle fixed = MakeTriangle(along, {-2, -2, 0}, {8, -2, 0}, {-2, 8, 0});
  const Coord3 p{-1.5, 0, 1};
  const Triangle moving = MakeTriangle(along, p, p, p);
  ClearanceContact found{};
  EXPECT_EQ(JudgeClearance(along, moving, fixed, 1.0, kInfinity, found), ClearanceOutcome::Within);
  EXPECT_EQ(JudgeClearance(along, moving, fixed, 1.0 - 0x1p-53, kInfinity, found),
            ClearanceOutcome::Apart);
}

TEST(ClearancePair, TrianglesAtTheClearanceAreWithinIt) {
  EXPECT_TRUE(AreWithin(kDown, Point({1, 1, 2}), kFloor, 2.0));
  EXPECT_FALSE(AreWithin(kDown, Point({1, 1, 2}), kFloor, std::nextafter(2.0, 0.0)));
  EXPECT_TRUE(AreWithin(kDown, Point({4, -3, 4}), kFloor, 5.0));
  EXPECT_FALSE(AreWithin(kDown, Point({4, -3, 4}), kFloor, std::nextafter(5.0, 0.0)));
  EXPECT_TRUE(AreWithin(kDown, Point({-2, -3, -6}), kFloor, 7.0));
  EXPECT_FALSE(AreWithin(kDown, Point({-2, -3, -6}), kFloor, std::nextafter(7.0, 0.0)));
  // Triangles that cross, far from all edges.
  const Triangle blade = Of({1, 1, -90}, {1, 1, 90}, {-90, 1, 90});
  EXPECT_TRUE(AreWithin(kDown, blade, Of({-90, -90, 0}, {90, -90, 0}, {0, 90, 0}), 0x1p-40));
}

TEST(ClearancePair, WhatMovesAwayOrIsPassedStaysApart) {
  ClearanceContact found{};
  const auto outcome = [&found](const Triangle& moving) {
    return JudgeClearance(kDown, moving, kFloor, 1.0, kInfinity, found);
  };
  EXPECT_EQ(outcome(Point({1, 1, -2})), ClearanceOutcome::Apart);
  EXPECT_EQ(outcome(Point({-2, 1, 9})), ClearanceOutcome::Apart);
  EXPECT_EQ(outcome(Point({-1, 1, 9})), ClearanceOutcome::Ahead);
  EXPECT_EQ(found.contact.travel, 9.0);
  const double limit = 7.5 / kDown.Length().hi;
  EXPECT_EQ(JudgeClearance(kDown, Point({1, 1, 9}), kFloor, 1.0, limit, found),
            ClearanceOutcome::Apart);
}

TEST(ClearancePair, EstimatesEncloseTheTravel) {
  const Triangle moving = Of({4, -0.5, 9}, {4, -3, 12}, {4, -4, 12});
  ClearanceContact found{};
  ASSERT_EQ(JudgeClearance(kDown, moving, kFloor, 1.0, kInfinity, found), ClearanceOutcome::Ahead);
  const ClearanceEstimate estimate = EstimateClearance(kDown, moving, kFloor, 1.0, kInfinity);
  EXPECT_TRUE(estimate.isApartAtRest);
  EXPECT_FALSE(estimate.isApart);
  EXPECT_LE(estimate.least, found.multiple.hi);
  EXPECT_GE(estimate.most, found.multiple.hi);
  EXPECT_LT(estimate.most - estimate.least, 1e-8);
  EXPECT_TRUE(EstimateClearance(kDown, moving, kFloor, 1.0, 0.999 * estimate.least).isApart);
  EXPECT_FALSE(EstimateClearance(kDown, kFloor, kFloor, 1.0, kInfinity).isApartAtRest);
}

TEST(ClearancePair, TheClosestFeaturesAtRestAreNamed) {
  const PairContact over = ClosestAtRest(kDown, Point({1, 1, 3}), kFloor);
  // All three corners of the point are as near; a face has none nearer.
  EXPECT_EQ(over.kind, ContactKind::VertexFace);
  EXPECT_EQ(over.travel, 0.0);
  ExpectPoint(over.onFixed, {1, 1, 0});
  const PairContact crossing = ClosestAtRest(kDown, Of({4, -2, 1}, {4, 2, 1}, {4, 0, 20}),
                                             Of({0, 0, 0}, {8, 0, 0}, {4, 0, -5}));
  EXPECT_EQ(crossing.kind, ContactKind::EdgeEdge);
  ExpectPoint(crossing.onMoving, {4, 0, 1});
  ExpectPoint(crossing.onFixed, {4, 0, 0});
}

TEST(ClearancePair, EstimatesTellGapsOfARoundingFromTheClearance) {
  const TravelDirection along({1.0, 0.0, 0.0});
  const Triangle fixed = MakeTriangle(along, {0, 0, 0.5}, {0.25, 0, 0.5}, {0, 0.25, 0.5});
  const Triangle moving = MakeTriangle(along, {-0.5, 0, 0.25}, {-0.25, 0, 0.25}, {-0.5, 0.25, 0});
  const double below = 0.25 - 0x1p-54;
  const ClearanceEstimate estimate = EstimateClearance(along, moving, fixed, below, kInfinity);
  EXPECT_TRUE(estimate.isApart);
  EXPECT_TRUE(estimate.isApartByPlane);
  EXPECT_FALSE(EstimateClearance(along, moving, fixed, 0.25, kInfinity).isApart);
  EXPECT_FALSE(EstimateClearance(along, moving, fixed, 0.25 + 0x1p-53, kInfinity).isApart);
  // At rest, one above the other: apart, at the clearance, and nearer.
  const Triangle above = MakeTriangle(along, {0, 0, 0.25}, {0.25, 0, 0.25}, {0, 0.25, 0.25});
  EXPECT_TRUE(EstimateClearance(along, above, fixed, below, kInfinity).isApart);
  EXPECT_FALSE(EstimateClearance(along, above, fixed, 0.25, kInfinity).isApartAtRest);
  EXPECT_FALSE(EstimateClearance(along, above, fixed, 0.25 + 0x1p-53, kInfinity).isApartAtRest);
  // It falls: apart at rest by less than doubles tell, and not for long.
  const ClearanceEstimate falling =
      EstimateClearance(kDown, MakeTriangle(kDown, {0, 0, 0.75}, {0.25, 0, 0.75}, {0, 0.25, 0.75}),
                        fixed, below, kInfinity);
  EXPECT_TRUE(falling.isApartAtRest);
  EXPECT_FALSE(falling.isApart);
  EXPECT_GT(falling.least, 0.0);
  EXPECT_LE(falling.least, 0x1p-53); // the vector is half as long as the direction
}

TEST(ClearancePair, AFootThatIsHardlyInsideIsInside) {
  // The corner or edge beside it is farther away by less than the travel tells.
  const Triangle flat = Of({0, 0, 9}, {8, 0, 9}, {0, 8, 9});
  Ahead(flat, Of({4, 0x1p-30, 0}, {4, 1, -3}, {5, 1, -3}), 2.0, ContactKind::FaceVertex, 7.0);
  Ahead(Of({4, 0x1p-30, 9}, {4, 1, 12}, {5, 1, 12}), kFloor, 2.0, ContactKind::VertexFace, 7.0);
  const Triangle fixed = Of({0, 0, 0}, {8, 0, 0}, {4, 0, -5});
  for (const double x : {0x1p-30, 8.0 - 0x1p-30})
    Ahead(Of({x, -2, 9}, {x, 2, 9}, {x, 0, 20}), fixed, 1.0, ContactKind::EdgeEdge, 8.0);
  for (const double y : {0x1p-30, 2.0 - 0x1p-30}) {
    Ahead(Of({4, y - 2, 9}, {4, y, 9}, {4, 0, 20}), fixed, 1.0, ContactKind::EdgeEdge, 8.0);
  }
}

TEST(ClearancePair, EstimatesAreNarrowWhereEdgesCross) {
  // Edges that are shorter than 1 cross obliquely, at three quarters of each.
  const Triangle moving = Of({-0.375, 0, 1}, {0.125, 0, 1}, {0, 0.125, 2});
  const Triangle fixed = Of({-0.1875, -0.1875, 0}, {0.0625, 0.0625, 0}, {0, 0, -1});
  Ahead(moving, fixed, 0.25, ContactKind::EdgeEdge, 0.75);
  for (const bool isSwapped : {false, true}) {
    const TravelDirection along({0.0, 0.0, isSwapped ? 1.0 : -1.0});
    const ClearanceEstimate estimate =
        isSwapped ? EstimateClearance(along, fixed, moving, 0.25, kInfinity)
                  : EstimateClearance(along, moving, fixed, 0.25, kInfinity);
    const double multiple = 0.75 / along.Length().hi;
    EXPECT_LE(estimate.least, multiple);
    EXPECT_GE(estimate.most, multiple);
    EXPECT_LT(estimate.most - estimate.least, 1e-8);
  }
}

TEST(ClearancePair, APathAlongAnyAxisGrazesAtTheClearance) {
  for (int axis = 0; axis < 3; ++axis) {
    double along[3] = {0.0, 0.0, 0.0};
    double from[3] = {0.0, 0.0, 0.0};
    along[axis] = 1.0;
    from[axis] = -1.0;
    from[axis == 2 ? 0 : axis + 1] = 0.25;
    const TravelDirection direction({along[0], along[1], along[2]});
    const Coord3 p{from[0], from[1], from[2]};
    const Coord3 q{along[0], along[1], along[2]};
    const Triangle moving = MakeTriangle(direction, p, p, p);
    const Triangle fixed = MakeTriangle(direction, q, q, q);
    ClearanceContact found{};
    ASSERT_EQ(JudgeClearance(direction, moving, fixed, 0.25, kInfinity, found),
              ClearanceOutcome::Ahead);
    EXPECT_EQ(found.contact.travel, 2.0);
    const double less = std::nextafter(0.25, 0.0);
    EXPECT_EQ(JudgeClearance(direction, moving, fixed, less, kInfinity, found),
              ClearanceOutcome::Apart);
  }
}

TEST(ClearancePair, AGapOfARoundingThatClosesFastIsNotOverestimated) {
  // A corner before the middle of a face, both across the direction (1, 1, 1).
  const TravelDirection along({1.0, 1.0, 1.0});
  const Triangle fixed = MakeTriangle(along, {1, 0, -1}, {-1, 1, 0}, {0, -1, 1});
  const Coord3 p{-0.25, -0.25, -0.25};
  const Triangle moving = MakeTriangle(along, p, p, p);
  const double clearance = std::nextafter(0.25 * std::sqrt(3.0), 0.0);
  ClearanceContact found{};
  ASSERT_EQ(JudgeClearance(along, moving, fixed, clearance, kInfinity, found),
            ClearanceOutcome::Ahead);
  EXPECT_LT(found.multiple.hi, 0x1p-53);
  const ClearanceEstimate estimate = EstimateClearance(along, moving, fixed, clearance, kInfinity);
  EXPECT_TRUE(estimate.isApartAtRest);
  EXPECT_GT(estimate.least, 0.0);
  EXPECT_LE(estimate.least, found.multiple.hi);
}

TEST(ClearancePair, EstimatesTellSuchGapsBesideAnyFeatures) {
  const TravelDirection along({1.0, 0.0, 0.0});
  // A face that passes a corner.
  const Triangle face =
      MakeTriangle(along, {-0.5, 0, 0.25}, {-0.25, 0.125, 0.25}, {-0.4375, 0.25, 0.25});
  const Coord3 above{0, 0.125, 0.5};
  const Triangle corner = MakeTriangle(along, above, above, above);
  EXPECT_TRUE(EstimateClearance(along, face, corner, 0.25 - 0x1p-54, kInfinity).isApartByPlane);
  EXPECT_FALSE(EstimateClearance(along, face, corner, 0.25, kInfinity).isApart);
  // A corner that passes along an edge, 3 / 16 and 4 / 16 away.
  const Coord3 below{-0.5, -0.1875, 0.25};
  const Triangle point = MakeTriangle(along, below, below, below);
  const Coord3 ends[] = {{0, 0, 0.5}, {0.75, 0, 0.5}, {0.25, 0.5, 0.75}};
  for (int k = 0; k < 3; ++k) {
    const Triangle edge = MakeTriangle(along, ends[k], ends[(k + 1) % 3], ends[(k + 2) % 3]);
    EXPECT_TRUE(EstimateClearance(along, point, edge, 0.3125 - 0x1p-54, kInfinity).isApartByPlane);
    EXPECT_FALSE(EstimateClearance(along, point, edge, 0.3125, kInfinity).isApart);
  }
}

/// Two triangles, and a direction along which a point of an edge of one meets one of the other.
struct EdgesThatMeet {
  Coord3 moving[3], fixed[3], direction;

  explicit EdgesThatMeet(std::mt19937_64& random) {
    std::uniform_real_distribution<double> real(-1.0, 1.0);
    const auto draw = [&] {
      const double x = real(random), y = real(random);
      return Coord3{x, y, real(random)};
    };
    for (int k = 0; k < 3; ++k) {
      moving[k] = draw();
      fixed[k] = draw();
    }
    const auto onEdge = [&](const Coord3& a, const Coord3& b) {
      return gsl_arithmetic::Multiply(gsl_arithmetic::Add(a, b), 0.5);
    };
    const Coord3 way =
        gsl_arithmetic::Subtract(onEdge(fixed[0], fixed[1]), onEdge(moving[0], moving[1]));
    const double most = std::max({std::fabs(way.x), std::fabs(way.y), std::fabs(way.z)});
    direction = gsl_arithmetic::Multiply(way, 1.0 / most);
  }
};

TEST(ClearancePair, TheMultipleItselfIsNoLimitForTinyClearances) {
  std::mt19937_64 random(5);
  int ahead = 0;
  for (int round = 0; round < 400; ++round) {
    const EdgesThatMeet edges(random);
    const TravelDirection direction(edges.direction);
    const auto& a = edges.moving;
    const auto& b = edges.fixed;
    const Triangle moving = MakeTriangle(direction, a[0], a[1], a[2]);
    const Triangle fixed = MakeTriangle(direction, b[0], b[1], b[2]);
    const double clearance = std::ldexp(1.0, -10 - round % 4 * 12);
    ClearanceContact found{};
    if (JudgeClearance(direction, moving, fixed, clearance, kInfinity, found) !=
        ClearanceOutcome::Ahead) {
      continue;
    }
    ++ahead;
    const double limit = std::nextafter(found.multiple.hi, kInfinity);
    ClearanceContact limited{};
    ASSERT_EQ(JudgeClearance(direction, moving, fixed, clearance, limit, limited),
              ClearanceOutcome::Ahead)
        << round;
    EXPECT_EQ(limited.contact.travel, found.contact.travel) << round;
    EXPECT_EQ(limited.contact.kind, found.contact.kind) << round;
    const ClearanceEstimate estimate =
        EstimateClearance(direction, moving, fixed, clearance, limit);
    EXPECT_FALSE(estimate.isApart) << round;
    EXPECT_LE(estimate.least, limit) << round;
    EXPECT_GE(estimate.most, found.multiple.hi) << round;
  }
  EXPECT_GT(ahead, 100);
}

} // namespace
