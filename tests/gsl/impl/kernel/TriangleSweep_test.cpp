#include "kernel/TriangleSweep.h"

#include "FourPoints.h"
#include "Numbers.h"
#include "RandomNumbers.h"
#include "TestScale.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <utility>
#include <vector>

namespace {

using gsl_kernel::Coord3;
using gsl_kernel::Facing;
using gsl_kernel::kComputed;
using gsl_kernel::Measure;
using gsl_kernel::Measured3;
using gsl_kernel::Plane;
using gsl_kernel::SourcedPoint;
using gsl_kernel::SourcedTriangle;
using gsl_kernel::SweepContacts;
using gsl_kernel::SweepTolerances;
using numbers::Above;
using numbers::Below;
using numbers::kInfinity;
using numbers::kNaN;
using numbers::kSentinel;

constexpr SweepTolerances kTolerances = {1e-6, 1e-10};

const Measured3 kUp = Measure({0.0, 0.0, 1.0});

SourcedTriangle OfA(const Coord3& p0, const Coord3& p1, const Coord3& p2) {
  return {{{p0, 0}, {p1, 1}, {p2, 2}}};
}

SourcedTriangle OfB(const Coord3& p0, const Coord3& p1, const Coord3& p2) {
  return {{{p0, 3}, {p1, 4}, {p2, 5}}};
}

/// Returns the plane at that height, with a normal upwards.
Plane Level(double z) {
  return {{0.0, 0.0, z}, kUp};
}

SweepContacts Within(double distance) {
  SweepContacts contacts = {};
  contacts.distance = distance;
  return contacts;
}

void ExpectContact(const SourcedPoint& actual, double x, double y, double z, int source) {
  EXPECT_XYZ(actual.c, x, y, z);
  EXPECT_EQ(actual.source, source);
}

void ExpectUnwritten(const SweepContacts& contacts, double distance) {
  EXPECT_FALSE(contacts.written[0]);
  EXPECT_FALSE(contacts.written[1]);
  EXPECT_EQ(contacts.distance, distance);
}

Coord3 NeverAsked() {
  ADD_FAILURE() << "the caller's contact was asked for";
  return {};
}

TEST(KernelShadow, MovesAPointAlongTheDirection) {
  const Measured3 oblique = Measure({0.0, 1.0, 1.0});
  ExpectContact(ShadowOf({{1, 2, 3}, 4}, Level(0.0), oblique, kTolerances), 1, -1, 0, kComputed);
}

TEST(KernelShadow, LeavesAPointOnThePlaneOrWithoutAWayToThePlane) {
  ExpectContact(ShadowOf({{1, 2, 3}, 4}, Level(3.0), kUp, kTolerances), 1, 2, 3, 4);
  const Measured3 level = Measure({1.0, 0.0, 0.0});
  ExpectContact(ShadowOf({{1, 2, 3}, 4}, Level(0.0), level, kTolerances), 1, 2, 3, 4);
  const Measured3 none = Measure({0.0, 0.0, 0.0});
  ExpectContact(ShadowOf({{1, 2, 3}, 4}, Level(0.0), none, kTolerances), 1, 2, 3, 4);
}

TEST(KernelShadow, OnThePlaneIsStrictAtTheLinearTolerance) {
  const SweepTolerances tol = {0.25, 1e-10};
  EXPECT_EQ(ShadowOf({{0, 0, 0.25}, 4}, Level(0.0), kUp, tol).source, kComputed);
  EXPECT_EQ(ShadowOf({{0, 0, Below(0.25)}, 4}, Level(0.0), kUp, tol).source, 4);
}

TEST(KernelEdgeCrossing, VisitsThePairsOfEdgesInOrderWithTheWeightsOfTheSecond) {
  const SourcedTriangle first = OfA({0, 0, 0}, {8, 0, 0}, {0, 8, 0});
  // Edge 0 of the second triangle crosses edges 0 and 2. Its other edges are outside.
  const SourcedTriangle second = OfB({3, -1, 0}, {-1, 3, 0}, {-9, -9, 0});
  std::vector<std::pair<double, double>> points;
  std::vector<double> fractions;
  ForEachEdgeCrossing(first, second, 1e-6, [&](int j, const Coord3& p, const double* weights) {
    EXPECT_EQ(j, 0);
    points.emplace_back(p.x, p.y);
    fractions.push_back(weights[0]);
  });
  ASSERT_EQ(points.size(), 2u);
  EXPECT_NEAR(points[0].first, 2.0, 1e-12);
  EXPECT_NEAR(points[0].second, 0.0, 1e-12);
  EXPECT_NEAR(fractions[0], 0.25, 1e-12);
  EXPECT_NEAR(points[1].first, 0.0, 1e-12);
  EXPECT_NEAR(points[1].second, 2.0, 1e-12);
  EXPECT_NEAR(fractions[1], 0.75, 1e-12);
}

TEST(KernelEdgeCrossing, ParallelSkewAndDegenerateEdgesDoNotCross) {
  const SourcedTriangle first = OfA({0, 0, 0}, {8, 0, 0}, {0, 8, 0});
  const auto count = [&first](const SourcedTriangle& second) {
    int crossings = 0;
    ForEachEdgeCrossing(first, second, 0.25,
                        [&](int, const Coord3&, const double*) { ++crossings; });
    return crossings;
  };
  EXPECT_EQ(count(OfB({3, -1, 0.25}, {-1, 3, 0.25}, {-9, -9, 0.25})), 2);
  EXPECT_EQ(count(OfB({3, -1, Above(0.25)}, {-1, 3, Above(0.25)}, {-9, -9, Above(0.25)})), 0);
  EXPECT_EQ(count(OfB({9, 9, 0}, {9, 9, 0}, {9, 9, 0})), 0);
  EXPECT_EQ(count(OfB({1, -5, 0}, {7, -5, 0}, {4, -5, 0})), 0);
}

TEST(KernelEdgeCrossing, ReachIsTheRootOfEightTimesTheSquares) {
  // The first corner and the first and last edges: 1 + 4 + 9 for A, and 1 + 1 + 16 for B.
  const SourcedTriangle first = OfA({1, 0, 0}, {1, 2, 0}, {4, 0, 0});
  const SourcedTriangle second = OfB({0, 0, 1}, {0, 0, 2}, {4, 0, 1});
  const gsl_kernel::PreparedEdges a(first, 1e-6);
  const gsl_kernel::PreparedEdges b(second, 1e-6);
  EXPECT_EQ(gsl_kernel::PreparedEdges::ReachOf(a, b), 16.0);
}

TEST(KernelEdgeCrossing, EdgesThatCrossBeyondTheMarginMiss) {
  // Two edges of length 1, with a cosine of 0.6. They cross at s and t along their lines.
  const SourcedTriangle triangle = OfA({0, 0, 0}, {1, 0, 0}, {0, 0, 9});
  const gsl_kernel::PreparedEdges first(triangle, 1e-6);
  const auto isBeyond = [&first](double s, double t) {
    const Coord3 start = {s - 0.6 * t, -0.8 * t, 0.0};
    const Coord3 end = {start.x + 0.6, start.y + 0.8, 0.0};
    const SourcedTriangle other = OfB(start, end, {0, 0, 9});
    const gsl_kernel::PreparedEdges second(other, 1e-6);
    return gsl_kernel::CrossingRow(first, 0, second, 0.25).missed[0][0] > 0.0;
  };
  EXPECT_FALSE(isBeyond(-0.24, 0.5));
  EXPECT_TRUE(isBeyond(-0.26, 0.5));
  EXPECT_FALSE(isBeyond(1.24, 0.5));
  EXPECT_TRUE(isBeyond(1.26, 0.5));
  EXPECT_FALSE(isBeyond(0.5, -0.24));
  EXPECT_TRUE(isBeyond(0.5, -0.26));
  EXPECT_FALSE(isBeyond(0.5, 1.24));
  EXPECT_TRUE(isBeyond(0.5, 1.26));
}

TEST(KernelEdgeCrossing, EdgeAsLongAsTheToleranceIsMetNearItsStart) {
  const SourcedTriangle triangle = OfA({0, 0, 0}, {0.25, 0, 0}, {0, 0, 9});
  const gsl_kernel::PreparedEdges first(triangle, 0.25);
  const auto crosses = [&first](double x) {
    const SourcedTriangle other = OfB({x, -1, 0}, {x, 1, 0}, {0, 0, 9});
    const gsl_kernel::PreparedEdges second(other, 0.25);
    Coord3 p;
    double weights[2];
    return CrossEdges(first, 0, second, 0, 0.25, p, weights);
  };
  EXPECT_TRUE(crosses(-0.25));
  EXPECT_TRUE(crosses(0.25));
  EXPECT_FALSE(crosses(0.375));
}

TEST(KernelEdgeCrossing, EdgesCrossUpToTheToleranceBeyondTheirEnds) {
  const SourcedTriangle first = OfA({0, 0, 0}, {1, 0, 0}, {0, 0, 9});
  const auto crossesAt = [&first](double x) {
    int crossings = 0;
    ForEachEdgeCrossing(first, OfB({x, -1, 0}, {x, 1, 0}, {9, 9, 50}), 0.25,
                        [&](int j, const Coord3& p, const double*) {
                          if (j == 0 && p.x != 0.0) ++crossings;
                        });
    return crossings > 0;
  };
  EXPECT_TRUE(crossesAt(-0.25));
  EXPECT_FALSE(crossesAt(-0.5));
  EXPECT_TRUE(crossesAt(1.25));
  EXPECT_FALSE(crossesAt(1.5));
  const gsl_kernel::PreparedEdges edges(first, 0.25);
  const SourcedTriangle second = OfB({-0.5, -1, 0}, {-0.5, 1, 0}, {9, 9, 50});
  const gsl_kernel::PreparedEdges others(second, 0.25);
  Coord3 p;
  double weights[2];
  EXPECT_FALSE(CrossEdges(edges, 0, others, 0, 0.25, p, weights));
}

TEST(KernelEdgeCrossing, EveryCrossingAtACornerIsVisitedWithoutATolerance) {
  RandomNumbers random(0xC02E);
  const auto point = [&random](double size) {
    const double x = random.In(-size, size);
    const double y = random.In(-size, size);
    return Coord3{x, y, 0.0};
  };
  long crossings = 0;
  for (long i = 0; i < Scaled(20000) && !testing::Test::HasFailure(); ++i) {
    // Edges far from the origin that leave a corner at a small angle. Rounding decides which cross.
    const Coord3 corner = point(1000.0);
    const Coord3 way = point(1.0);
    const Coord3 other = gsl_kernel::Add(way, point(0.01));
    const Coord3 end = gsl_kernel::Add(corner, way), otherEnd = gsl_kernel::Add(corner, other);
    const Coord3 third = gsl_kernel::Add(corner, point(1.0));
    const SourcedTriangle first = OfA(corner, end, third), second = OfB(corner, otherEnd, third);
    const gsl_kernel::PreparedEdges firstEdges(first, 0.0), secondEdges(second, 0.0);
    int expected = 0;
    for (int pair = 0; pair < 9; ++pair) {
      Coord3 p;
      double weights[2];
      expected += CrossEdges(firstEdges, pair / 3, secondEdges, pair % 3, 0.0, p, weights) ? 1 : 0;
    }
    int visited = 0;
    ForEachEdgeCrossing(first, second, 0.0,
                        [&visited](int, const Coord3&, const double*) { ++visited; });
    EXPECT_EQ(visited, expected) << "case " << i;
    crossings += expected;
  }
  EXPECT_GT(crossings, Scaled(20000) / 4);
}

TEST(KernelEdgeCrossing, EdgesThatCertainlyMissNeverCross) {
  FourPoints in(0xC205);
  long missed = 0, crossed = 0;
  for (long i = 0; i < Scaled(200000) && !testing::Test::HasFailure(); ++i) {
    in.Draw();
    const double tolerance = in.linearTolerance;
    // The lines of the second edges meet the lines of the first, up to rounding.
    const Coord3 way = gsl_kernel::Subtract(in.p[1], in.p[0]);
    const double part = i % 4 == 0 ? 1e-6 : 3.0;
    const Coord3 start = gsl_kernel::Add(
        in.p[0], gsl_kernel::Multiply(way, part * (static_cast<double>(i % 101) / 100.0 - 0.5)));
    const SourcedTriangle a = OfA(in.p[0], in.p[1], in.p[2]), b = OfB(start, in.p[3], in.p[2]);
    const gsl_kernel::EdgeCrossings crossings(a, b, tolerance);
    for (int pair = 0; pair < 9; ++pair) {
      Coord3 p, q;
      double weights[2];
      const bool isMissed = (crossings.open >> pair & 1u) == 0;
      const bool isCrossed =
          CrossEdges(crossings.first, pair / 3, crossings.second, pair % 3, tolerance, p, weights);
      EXPECT_FALSE(isMissed && isCrossed) << "case " << i;
      missed += isMissed ? 1 : 0;
      crossed += isCrossed ? 1 : 0;
      if (isMissed) continue;
      EXPECT_EQ(CrossOpenPair(crossings, pair, tolerance, q), isCrossed) << "case " << i;
      if (isCrossed) {
        EXPECT_TRUE(numbers::SameBits(p.x, q.x) && numbers::SameBits(p.y, q.y) &&
                    numbers::SameBits(p.z, q.z))
            << "case " << i;
      }
    }
  }
  EXPECT_GT(missed, Scaled(200000));
  EXPECT_GT(crossed, Scaled(200000) / 4);
}

// The face z = 0, and a triangle below it that is edge-on to the direction.
const SourcedTriangle kFace = OfB({-4, -4, 0}, {4, -4, 0}, {0, 4, 0});
const SourcedTriangle kEdgeOn = OfA({0, 0, -3}, {0, 1, -4}, {0, 0, -5});

TEST(KernelEdgeOn, NearestCornerIsTheContactOnItsSide) {
  for (const int side : {+1, -1}) {
    SweepContacts contacts = Within(kInfinity);
    EXPECT_TRUE(EdgeOnTriangleDist(kEdgeOn, kFace, Level(0.0), kUp, side, kTolerances, contacts));
    EXPECT_EQ(contacts.distance, 3.0);
    const int slot = side > 0 ? 0 : 1;
    ExpectContact(contacts.point[slot], 0, 0, -3, 0);
    ExpectContact(contacts.point[1 - slot], 0, 0, 0, kComputed);
  }
}

TEST(KernelEdgeOn, CornerCountsOnlyWhenItIsStrictlyCloser) {
  SweepContacts at = Within(3.0);
  EXPECT_FALSE(EdgeOnTriangleDist(kEdgeOn, kFace, Level(0.0), kUp, +1, kTolerances, at));
  ExpectUnwritten(at, 3.0);
  SweepContacts above = Within(Above(3.0));
  EXPECT_TRUE(EdgeOnTriangleDist(kEdgeOn, kFace, Level(0.0), kUp, +1, kTolerances, above));
  EXPECT_EQ(above.distance, 3.0);
}

TEST(KernelEdgeOn, CrossingCountsEvenWhereItImprovesNothing) {
  // Its corners are beside the face; its upper edge crosses two edges of the face.
  const SourcedTriangle wide = OfA({-9, 0, -3}, {9, 0, -3}, {9, 0, -5});
  SweepContacts far = Within(1.0);
  EXPECT_TRUE(EdgeOnTriangleDist(wide, kFace, Level(0.0), kUp, +1, kTolerances, far));
  ExpectUnwritten(far, 1.0);
  SweepContacts near = Within(kInfinity);
  EXPECT_TRUE(EdgeOnTriangleDist(wide, kFace, Level(0.0), kUp, +1, kTolerances, near));
  EXPECT_NEAR(near.distance, 3.0, 1e-12);
  EXPECT_EQ(near.point[0].source, kComputed);
  EXPECT_NEAR(near.point[0].c.z, -3.0, 1e-12);
  EXPECT_NEAR(near.point[1].c.z, 0.0, 1e-12);
}

TEST(KernelCoplanar, CornerIIsTriedAgainstEdgeIAlone) {
  const SourcedTriangle a = OfA({0, 0, 0}, {0, 1, 0}, {0, 0.5, -1});
  const SourcedTriangle b = OfB({0, -1, 5}, {0, 2, 5}, {0, 0, 9});
  SweepContacts contacts = Within(kInfinity);
  EXPECT_TRUE(CoplanarVertexEdgeDist(a, b, kUp, +1, kTolerances, contacts));
  EXPECT_EQ(contacts.distance, 5.0);
  ExpectContact(contacts.point[0], 0, 0, 0, 0);
  ExpectContact(contacts.point[1], 0, 0, 5, kComputed);
  // This is the same triangle from its second corner: edge 0 is now from (2, 5) to (0, 9).
  const SourcedTriangle turned = OfB({0, 2, 5}, {0, 0, 9}, {0, -1, 5});
  SweepContacts other = Within(kInfinity);
  EXPECT_TRUE(CoplanarVertexEdgeDist(a, turned, kUp, +1, kTolerances, other));
  EXPECT_EQ(other.distance, 6.0);
  ExpectContact(other.point[0], 0, 0.5, -1, 2);
}

TEST(KernelCoplanar, SideOfBExchangesTheSlots) {
  const SourcedTriangle b = OfB({0, 0, 9}, {0, 1, 9}, {0, 0.5, 10});
  const SourcedTriangle a = OfA({0, -1, 5}, {0, 2, 5}, {0, 0, 1});
  SweepContacts contacts = Within(kInfinity);
  EXPECT_TRUE(CoplanarVertexEdgeDist(b, a, kUp, -1, kTolerances, contacts));
  ExpectContact(contacts.point[1], 0, 0, 9, 3);
  ExpectContact(contacts.point[0], 0, 0, 5, kComputed);
  EXPECT_EQ(contacts.distance, 4.0);
  SweepContacts full = Within(4.0);
  EXPECT_FALSE(CoplanarVertexEdgeDist(b, a, kUp, -1, kTolerances, full));
  ExpectUnwritten(full, 4.0);
}

// A large face upwards at z = 0, and a small one inside it at z = 5.
const SourcedTriangle kBelow = OfA({0, 0, 0}, {8, 0, 0}, {0, 8, 0});
const SourcedTriangle kAbove = OfB({1, 1, 5}, {1, 2, 5}, {2, 1, 5});

TEST(KernelFaceToFace, CornerOfBOverAIsAContactOnBothPlanes) {
  SweepContacts contacts = Within(kInfinity);
  EXPECT_TRUE(FaceToFaceDist(kBelow, kAbove, Level(0.0), Level(5.0), kUp, kTolerances, &NeverAsked,
                             contacts));
  EXPECT_EQ(contacts.distance, 5.0);
  ExpectContact(contacts.point[0], 1, 1, 0, kComputed);
  ExpectContact(contacts.point[1], 1, 1, 5, kComputed);
}

TEST(KernelFaceToFace, CornerOfAUnderBKeepsItsSource) {
  const SourcedTriangle small = OfA({1, 1, 0}, {2, 1, 0}, {1, 2, 0});
  const SourcedTriangle large = OfB({0, 0, 5}, {0, 8, 5}, {8, 0, 5});
  SweepContacts contacts = Within(kInfinity);
  EXPECT_TRUE(FaceToFaceDist(small, large, Level(0.0), Level(5.0), kUp, kTolerances, &NeverAsked,
                             contacts));
  ExpectContact(contacts.point[0], 1, 1, 0, 0);
  ExpectContact(contacts.point[1], 1, 1, 5, kComputed);
}

TEST(KernelFaceToFace, WithoutImprovementTheSecondContactFollowsTheCallersFirst) {
  SweepContacts contacts = Within(5.0);
  EXPECT_TRUE(FaceToFaceDist(
      kBelow, kAbove, Level(0.0), Level(5.0), kUp, kTolerances,
      [] {
        return Coord3{7.0, 8.0, 0.0};
      },
      contacts));
  EXPECT_FALSE(contacts.written[0]);
  EXPECT_TRUE(contacts.written[1]);
  EXPECT_EQ(contacts.distance, 5.0);
  ExpectContact(contacts.point[1], 7, 8, 5, kComputed);
}

TEST(KernelFaceToFace, CrossingOfEdgesLiesOnTheEdgeOfA) {
  // B is within the tolerance of A's plane, so it is not moved. No corner is inside the other.
  const SourcedTriangle a = OfA({0, 0, 0}, {8, 0, 0}, {4, 6, 0});
  const SourcedTriangle b = OfB({0, 4, 0.125}, {4, -2, 0.125}, {8, 4, 0.125});
  SweepContacts contacts = Within(kInfinity);
  EXPECT_TRUE(
      FaceToFaceDist(a, b, Level(0.0), Level(0.125), kUp, {0.25, 1e-10}, &NeverAsked, contacts));
  EXPECT_EQ(contacts.distance, 0.125);
  EXPECT_EQ(contacts.point[0].c.z, 0.0);
  EXPECT_EQ(contacts.point[0].source, kComputed);
}

TEST(KernelFaceToFace, FacesThatPassEachOtherWriteNothing) {
  const SourcedTriangle aside = OfB({21, 1, 5}, {21, 2, 5}, {22, 1, 5});
  SweepContacts contacts = Within(kInfinity);
  EXPECT_FALSE(FaceToFaceDist(kBelow, aside, Level(0.0), Level(5.0), kUp, kTolerances, &NeverAsked,
                              contacts));
  ExpectUnwritten(contacts, kInfinity);
}

TEST(KernelSlab, HoldsTheParametersOfAllCornersInEveryOrder) {
  const Coord3 corners[3] = {{0, 0, 7}, {9, 9, 3}, {-9, 9, 5}};
  const SourcedTriangle tri = OfB(corners[0], corners[1], corners[2]);
  for (int k = 0; k < 3; ++k) {
    const SourcedTriangle a = OfA(corners[k], corners[(k + 1) % 3], corners[(k + 2) % 3]);
    const double z = corners[k].z;
    const gsl_kernel::Slabs slabs = gsl_kernel::SlabsAlong(kUp.c, a, tri);
    for (int lane = 0; lane < 2; ++lane) {
      EXPECT_EQ(slabs.min[lane], 3.0 - z);
      EXPECT_EQ(slabs.max[lane], 7.0 - z);
    }
  }
  const SourcedTriangle odd = OfA({0, 0, kNaN}, corners[1], corners[2]);
  EXPECT_TRUE(std::isnan(gsl_kernel::SlabsAlong(kUp.c, odd, tri).min[0]));
  const gsl_kernel::Slabs later =
      gsl_kernel::SlabsAlong(kUp.c, OfA(corners[0], {0, 0, kNaN}, corners[2]), tri);
  EXPECT_EQ(later.min[0], -2.0) << "a NaN is neither below nor above";
  EXPECT_EQ(later.max[0], 0.0);
}

TEST(KernelSlab, RejectsATriangleStrictlyBehindOrBeyondTheReach) {
  const SourcedTriangle a = OfA({0, 0, 0}, {1, 0, 1}, {0, 1, 1});
  const SourcedTriangle ahead = OfB({0, 0, 3}, {1, 0, 4}, {0, 1, 4});
  EXPECT_FALSE(SlabsReject(a, ahead, kUp, 2.0, 1e-6));
  EXPECT_TRUE(SlabsReject(a, ahead, kUp, Below(2.0), 1e-6));
  const SourcedTriangle touching = OfB({0, 0, 0}, {1, 0, -4}, {0, 1, -4});
  EXPECT_FALSE(SlabsReject(a, touching, kUp, 2.0, 1e-6));
  const SourcedTriangle behind = OfB({0, 0, -0x1p-40}, {1, 0, -4}, {0, 1, -4});
  EXPECT_TRUE(SlabsReject(a, behind, kUp, 2.0, 1e-6));
  EXPECT_FALSE(SlabsReject(a, ahead, kUp, kNaN, 1e-6));
}

TEST(KernelFacing, IsJudgedWithTheSenseAndStrictlyAtTheCosine) {
  EXPECT_EQ(gsl_kernel::FacingOf(kUp, kUp, +1.0, 1e-10), Facing::Right);
  EXPECT_EQ(gsl_kernel::FacingOf(kUp, kUp, -1.0, 1e-10), Facing::Wrong);
  // (0, 0.8, 0.6) has the length 1 and the cosine 0.6 with Z.
  const Measured3 leaning = {{0.0, 0.8, 0.6}, 1.0};
  EXPECT_EQ(gsl_kernel::FacingOf(leaning, kUp, +1.0, 0.6), Facing::Right);
  EXPECT_EQ(gsl_kernel::FacingOf(leaning, kUp, +1.0, Above(0.6)), Facing::EdgeOn);
  EXPECT_EQ(gsl_kernel::FacingOf({{kNaN, 0.0, 0.0}, kNaN}, kUp, +1.0, 0.6), Facing::Right);
}

TEST(KernelFacing, MultipliesByTheLengthOfTheNormalFirst) {
  // The dot product of (3, 0, 0) and (4, 3, 0) is 12. With the double 0.8, (0.8 * 5) * 3 is 12, and
  // (0.8 * 3) * 5 is the next number.
  const Measured3 along = Measure({3.0, 0.0, 0.0}), aslant = Measure({4.0, 3.0, 0.0});
  EXPECT_EQ(gsl_kernel::FacingOf(along, aslant, +1.0, 0.8), Facing::EdgeOn);
  EXPECT_EQ(gsl_kernel::FacingOf(aslant, along, +1.0, 0.8), Facing::Right);
}

TEST(KernelFacing, TurnReadsTheFlagOnlyOfATriangleThatFacesTheWrongWay) {
  const bool oneSided = false, twoSided = true;
  Measured3 normal = kUp;
  EXPECT_TRUE(Turn(normal, Facing::Right, nullptr));
  EXPECT_TRUE(Turn(normal, Facing::EdgeOn, nullptr));
  EXPECT_FALSE(Turn(normal, Facing::Wrong, &oneSided));
  EXPECT_XYZ(normal.c, 0.0, 0.0, 1.0);
  EXPECT_TRUE(Turn(normal, Facing::Wrong, &twoSided));
  EXPECT_XYZ(normal.c, 0.0, 0.0, -1.0);
}

TEST(KernelNormalPresent, SeparatesZeroFromEveryUnitNormal) {
  constexpr std::uint64_t kSeed = 0x40147u;
  RandomNumbers random(kSeed);
  double worst = 0.0;
  for (long i = 0; i < Scaled(1000000); ++i) {
    const double size = std::pow(10.0, random.In(-60.0, 60.0));
    const auto any = [&random, size] {
      return Coord3{random.In(-size, size), random.In(-size, size), random.In(-size, size)};
    };
    const Measured3 n = gsl_kernel::NormalOf({{{any(), 0}, {any(), 1}, {any(), 2}}}, 1e-10);
    if (n.magnitude == 0.0) continue;
    worst = std::max(worst, std::fabs(n.magnitude - 1.0) / gsl_kernel::kUnitRoundoff);
  }
  std::printf("seed %" PRIu64 ", worst %.3f roundoffs\n", kSeed, worst);
  EXPECT_LE(worst, gsl_kernel::kUnitNormalRoundoffs);
  EXPECT_GE(worst, gsl_kernel::kUnitNormalRoundoffs / 2.0);
  EXPECT_GT(gsl_kernel::kNormalPresent, 0.0);
  EXPECT_LT(gsl_kernel::kNormalPresent,
            1.0 - gsl_kernel::kUnitNormalRoundoffs * gsl_kernel::kUnitRoundoff);
}

bool Sweep(const SourcedTriangle& a, const SourcedTriangle& b, bool twoSidedA, bool twoSidedB,
           SweepContacts& contacts) {
  const bool twoSided[2] = {twoSidedA, twoSidedB};
  return SweepTriangle(kUp, a, b, twoSided, kTolerances, &NeverAsked, contacts);
}

TEST(KernelSweepTriangle, FacesMustFaceEachOtherUnlessTheyAreTwoSided) {
  const SourcedTriangle turnedA = OfA({0, 0, 0}, {0, 8, 0}, {8, 0, 0});
  const SourcedTriangle turnedB = OfB({1, 1, 5}, {2, 1, 5}, {1, 2, 5});
  for (const bool twoSided : {false, true}) {
    SweepContacts contacts = Within(kInfinity);
    EXPECT_TRUE(Sweep(kBelow, kAbove, false, false, contacts));
    SweepContacts wrongA = Within(kInfinity);
    EXPECT_EQ(Sweep(turnedA, kAbove, twoSided, false, wrongA), twoSided);
    EXPECT_EQ(wrongA.distance, twoSided ? 5.0 : kInfinity);
    SweepContacts wrongB = Within(kInfinity);
    EXPECT_EQ(Sweep(kBelow, turnedB, false, twoSided, wrongB), twoSided);
    EXPECT_EQ(wrongB.distance, twoSided ? 5.0 : kInfinity);
  }
}

TEST(KernelSweepTriangle, DistanceIsMeasuredFromTheFirstCornerOfB) {
  // The plane z = 5 - x. Another corner is 1e9 away, where a double has only seven places left.
  const SourcedTriangle small = OfA({1, 1, 0}, {2, 1, 0}, {1, 2, 0});
  const SourcedTriangle large = OfB({0, 0, 5}, {1e9, 0, 5 - 1e9}, {0, 1e9, 5});
  SweepContacts contacts = Within(kInfinity);
  EXPECT_TRUE(Sweep(small, large, true, true, contacts));
  EXPECT_NEAR(contacts.distance, 3.0, 1e-12);
}

TEST(KernelSweepTriangle, TriangleWithoutANormalEndsItUnwritten) {
  const SourcedTriangle flat = OfA({0, 0, 0}, {1, 0, 0}, {3, 0, 0});
  SweepContacts contacts = Within(kInfinity);
  EXPECT_FALSE(Sweep(flat, kAbove, true, true, contacts));
  EXPECT_FALSE(Sweep(kBelow, OfB({1, 1, 5}, {1, 1, 5}, {2, 1, 5}), true, true, contacts));
  ExpectUnwritten(contacts, kInfinity);
}

TEST(KernelSweepTriangle, EdgeOnTrianglesTakeTheirOwnWays) {
  SweepContacts aEdgeOn = Within(kInfinity);
  EXPECT_TRUE(Sweep(kEdgeOn, OfB({-4, -4, 0}, {0, 4, 0}, {4, -4, 0}), false, false, aEdgeOn));
  EXPECT_EQ(aEdgeOn.distance, 3.0);
  ExpectContact(aEdgeOn.point[0], 0, 0, -3, 0);
  SweepContacts bEdgeOn = Within(kInfinity);
  EXPECT_TRUE(Sweep(kBelow, OfB({1, 1, 5}, {1, 2, 6}, {1, 1, 7}), false, false, bEdgeOn));
  EXPECT_EQ(bEdgeOn.distance, 5.0);
  ExpectContact(bEdgeOn.point[1], 1, 1, 5, 3);
  ExpectContact(bEdgeOn.point[0], 1, 1, 0, kComputed);
}

TEST(KernelSweepTriangle, EdgeOnPlanesMoreThanTheToleranceApartMissEachOther) {
  const SourcedTriangle a = OfA({0, 0, 0}, {0, 1, 0}, {0, 0.5, -1});
  const auto at = [](double x) { return OfB({x, -1, 5}, {x, 2, 5}, {x, 0, 9}); };
  SweepContacts contacts = Within(kInfinity);
  EXPECT_FALSE(Sweep(a, at(Above(1e-6)), true, true, contacts));
  ExpectUnwritten(contacts, kInfinity);
  EXPECT_TRUE(Sweep(a, at(1e-6), true, true, contacts));
  EXPECT_EQ(contacts.distance, 5.0);
}

TEST(KernelSweepTriangle, EdgeOnPlanesAreAsFarApartAsTheFirstCornerOfAFromB) {
  // The planes meet at an angle with the sine 0.28 in the first corner of B, whose height is above
  // the second corner of A. They count as parallel, and the first corner of A is 2.8 off the other.
  const SweepTolerances tol = {1e-6, 0.5};
  const bool twoSided[2] = {true, true};
  const SourcedTriangle a = OfA({0, 0, 0}, {10, 0, 0}, {5, 0, -10});
  const SourcedTriangle b = OfB({10, 0, 9}, {9.04, 0.28, 5}, {10.96, -0.28, 5});
  SweepContacts contacts = Within(kInfinity);
  EXPECT_FALSE(SweepTriangle(kUp, a, b, twoSided, tol, &NeverAsked, contacts));
  ExpectUnwritten(contacts, kInfinity);
  const SourcedTriangle near = OfA({10, 0, 0}, {0, 0, 0}, {5, 0, -10});
  EXPECT_TRUE(SweepTriangle(kUp, near, b, twoSided, tol, &NeverAsked, contacts));
}

} // namespace
