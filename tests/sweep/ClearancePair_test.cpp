#include "ClearancePair.h"

#include "gsl_Arithmetic.h"

#include <gtest/gtest.h>

#include <cmath>

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

} // namespace
