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

TEST(KernelEdgeCrossing, MarginIsAPartOfTheReachAndTwoTolerances) {
  // The reach is 16, as above.
  const SourcedTriangle a = OfA({1, 0, 0}, {1, 2, 0}, {4, 0, 0});
  const SourcedTriangle b = OfB({0, 0, 1}, {0, 0, 2}, {4, 0, 1});
  EXPECT_EQ(gsl_kernel::EdgeCrossings(a, b, 0.25).margin, 0x1p-23 + 0.5);
  EXPECT_EQ(gsl_kernel::EdgeCrossings(a, b, -0.25).margin, 0x1p-23 + 0.5);
  EXPECT_EQ(gsl_kernel::EdgeCrossings(a, b, 4.0).margin, 0x1p-23 + 8.0);
}

/// Returns the triangle with edges of the lengths 4, 5 and 3, from its corner k on. Edge 2 - k is
/// the shortest.
SourcedTriangle RightAngled(int k, double scale = 1.0) {
  const Coord3 corners[3] = {{0, 0, 0}, {4 * scale, 0, 0}, {0, 0, 3 * scale}};
  return OfA(corners[k], corners[(k + 1) % 3], corners[(k + 2) % 3]);
}

TEST(KernelEdgeCrossing, EdgeShorterThanTheToleranceHasNoUnit) {
  for (int k = 0; k < 3; ++k) {
    const SourcedTriangle triangle = RightAngled(k);
    const gsl_kernel::PreparedEdges at(triangle, 3.0), above(triangle, Above(3.0));
    EXPECT_TRUE(at.haveUnits);
    EXPECT_FALSE(above.haveUnits);
    for (int i = 0; i < 3; ++i) {
      EXPECT_NEAR(Length(at.Unit(i)), 1.0, 1e-15);
      if (i != 2 - k) {
        EXPECT_NEAR(Length(above.Unit(i)), 1.0, 1e-15);
      }
    }
    EXPECT_XYZ(at.Unit(2 - k), 0.0, 0.0, -1.0);
    EXPECT_XYZ(above.Unit(2 - k), 0.0, 0.0, 0.0);
  }
}

TEST(KernelEdgeCrossing, EdgeWhoseSquareLosesItsDigitsHasNoUsableUnit) {
  for (int k = 0; k < 3; ++k) {
    const SourcedTriangle tiny = RightAngled(k, 3e-121), small = RightAngled(k, 4e-121);
    EXPECT_FALSE(gsl_kernel::PreparedEdges(tiny, 0.0).haveUnits) << "the shortest has 9e-121";
    EXPECT_TRUE(gsl_kernel::PreparedEdges(small, 0.0).haveUnits) << "the shortest has 1.2e-120";
  }
}

TEST(KernelEdgeCrossing, OnlyThePairsThatMeetWithinBothEdgesAreOpen) {
  // The sides of A are y = 0, 3 x + 2 y = 24 and 3 x = 2 y. Edge 0 of B crosses sides 1 and 2, edge
  // 1 crosses sides 0 and 1, and edge 2 crosses sides 0 and 2.
  const SourcedTriangle a = OfA({0, 0, 0}, {8, 0, 0}, {4, 6, 0});
  const SourcedTriangle b = OfB({1, 4, 0}, {7, 4.5, 0}, {4, -3, 0});
  EXPECT_EQ(gsl_kernel::EdgeCrossings(a, b, 1e-6).open, 0b101011110u);
  const SourcedTriangle aside = OfB({8.5, 4, 0}, {14.5, 4.5, 0}, {11.5, -3, 0});
  EXPECT_EQ(gsl_kernel::EdgeCrossings(a, aside, 1e-6).open, 0u);
}

TEST(KernelEdgeCrossing, EveryPairIsOpenWhereAnEdgeHasNoUnit) {
  const SourcedTriangle a = OfA({0, 0, 0}, {8, 0, 0}, {4, 6, 0});
  const SourcedTriangle aside = OfB({38.5, 4, 0}, {44.5, 4.5, 0}, {41.5, -3, 0});
  EXPECT_EQ(gsl_kernel::EdgeCrossings(a, aside, 1.0).open, 0u);
  const SourcedTriangle shortA = OfA({0, 0, 0}, {0.5, 0, 0}, {4, 6, 0});
  const SourcedTriangle shortB = OfB({38.5, 4, 0}, {44.5, 4.5, 0}, {38.5, 4.5, 0});
  constexpr unsigned kEveryPair = 0b111111111u;
  EXPECT_EQ(gsl_kernel::EdgeCrossings(shortA, aside, 1.0).open, kEveryPair);
  EXPECT_EQ(gsl_kernel::EdgeCrossings(a, shortB, 1.0).open, kEveryPair);
  EXPECT_EQ(gsl_kernel::EdgeCrossings(shortA, shortB, 1.0).open, kEveryPair);
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

/// A first edge of length 2 along x, and a second of length 4. Their lines cross at s and t along
/// them, and the second is at the height z.
struct CertainPair {
  double s = 1.0, t = 2.0, z = 0.0;
  Coord3 way = {0.6, 0.8, 0.0}; ///< along the second edge
  double margin = 0.25, reach = 0.0;
  double tolerance = 0.5;
  double third = 9.0; ///< how far the third corners are from the first

  bool IsCertain() const {
    const SourcedTriangle a = OfA({0, 0, 0}, {2, 0, 0}, {0, 0, third});
    const Coord3 start = {s - way.x * t, -way.y * t, z};
    const Coord3 end = gsl_kernel::Add(start, gsl_kernel::Multiply(way, 4.0));
    const SourcedTriangle b = OfB(start, end, {start.x, start.y, z + 9.0});
    gsl_kernel::EdgeCrossings ab(a, b, 0.5), ba(b, a, 0.5);
    ab.margin = ba.margin = margin;
    ab.reach = ba.reach = reach;
    const bool isCertain = AreCertainToCross(ab, 0, 0, tolerance);
    EXPECT_EQ(AreCertainToCross(ba, 0, 0, tolerance), isCertain);
    return isCertain;
  }
};

TEST(KernelEdgeCrossing, CrossingIsCertainWithinBothEdgesByTheMargin) {
  const auto isCertain = [](double s, double t) {
    CertainPair pair;
    pair.s = s;
    pair.t = t;
    return pair.IsCertain();
  };
  for (const double middle : {0.26, 1.0, 1.74}) {
    EXPECT_TRUE(isCertain(middle, 0.26));
    EXPECT_TRUE(isCertain(middle, 3.74));
    for (const double beside : {-1.0, 0.24, 3.76, 5.0})
      EXPECT_FALSE(isCertain(middle, beside)) << middle << ' ' << beside;
  }
  for (const double middle : {0.26, 2.0, 3.74}) {
    for (const double beside : {-1.0, 0.24, 1.76, 3.0})
      EXPECT_FALSE(isCertain(beside, middle)) << middle << ' ' << beside;
  }
  EXPECT_FALSE(isCertain(0.1, 0.1));
}

TEST(KernelEdgeCrossing, CrossingAtTheMarginIsNotCertain) {
  CertainPair pair;
  pair.way = {0.0, 1.0, 0.0};
  for (double CertainPair::*const position : {&CertainPair::s, &CertainPair::t}) {
    CertainPair at = pair;
    at.*position = 0.25;
    EXPECT_FALSE(at.IsCertain());
    at.*position = 0.25 + 0x1p-40;
    EXPECT_TRUE(at.IsCertain());
  }
}

TEST(KernelEdgeCrossing, CrossingIsCertainWithinHalfTheTolerance) {
  const auto isCertain = [](double z, double reach) {
    CertainPair pair;
    pair.z = z;
    pair.reach = reach;
    return pair.IsCertain();
  };
  EXPECT_TRUE(isCertain(0.24, 0.0));
  EXPECT_TRUE(isCertain(-0.24, 0.0));
  EXPECT_FALSE(isCertain(0.26, 0.0));
  EXPECT_FALSE(isCertain(-0.26, 0.0));
  // The height times the sine of 0.8, and 2^-46 of the reach, must be below 0.2.
  const double reach = 0x1p46 * 0.1;
  EXPECT_TRUE(isCertain(0.12, reach));
  EXPECT_FALSE(isCertain(0.13, reach));
  EXPECT_FALSE(isCertain(-0.13, reach));
  CertainPair across;
  across.way = {0.0, 1.0, 0.0};
  across.z = 0.25;
  EXPECT_FALSE(across.IsCertain()) << "at half the tolerance";
  across.z = Below(0.25);
  EXPECT_TRUE(across.IsCertain());
}

TEST(KernelEdgeCrossing, UnusualPairsAreNeverCertain) {
  EXPECT_TRUE(CertainPair().IsCertain());
  for (const double tolerance : {-0.5, 0.0, kNaN}) {
    CertainPair pair;
    pair.tolerance = tolerance;
    EXPECT_FALSE(pair.IsCertain()) << tolerance;
  }
  CertainPair shortEdge;
  shortEdge.third = 0.25;
  EXPECT_FALSE(shortEdge.IsCertain());
  CertainPair nearlyParallel;
  nearlyParallel.way = {1.0, 0x1p-11, 0.0};
  EXPECT_FALSE(nearlyParallel.IsCertain()) << "the square of the sine is 2^-22";
  nearlyParallel.way.y = 0x1p-9;
  EXPECT_TRUE(nearlyParallel.IsCertain());
  CertainPair large;
  large.tolerance = 1e38; // 2^-46 of the reach is below half of it
  large.reach = Below(gsl_kernel::kLargestApart);
  EXPECT_TRUE(large.IsCertain());
  for (const double reach : {gsl_kernel::kLargestApart, 1e51, kInfinity, kNaN}) {
    large.reach = reach;
    EXPECT_FALSE(large.IsCertain()) << reach;
  }
}

TEST(KernelEdgeCrossing, CertainCrossingOfAnyPairHasTheBitsOfTheSteps) {
  const Coord3 a[3] = {{0.1, 0.2, 0.3}, {2.3, 0.1, 0.2}, {0.7, -5.0, 7.0}};
  const Coord3 b[3] = {{0.5, -1.1, 0.25}, {1.7, 1.9, 0.25}, {-9.0, 3.0, -6.0}};
  for (int k = 0; k < 9; ++k) {
    // Edge i of the first triangle and edge j of the second are the edges that cross.
    const int i = k / 3, j = k % 3;
    const SourcedTriangle first = OfA(a[(3 - i) % 3], a[(4 - i) % 3], a[(5 - i) % 3]);
    const SourcedTriangle second = OfB(b[(3 - j) % 3], b[(4 - j) % 3], b[(5 - j) % 3]);
    const gsl_kernel::EdgeCrossings crossings(first, second, 0.25);
    EXPECT_TRUE(AreCertainToCross(crossings, i, j, 0.25)) << k;
    for (int pair = 0; pair < 9; ++pair) {
      Coord3 p, q;
      double weights[2];
      EXPECT_EQ(CrossOpenPair(crossings, pair, 0.25, p), pair == k) << k << ' ' << pair;
      EXPECT_EQ(CrossEdges(crossings.first, pair / 3, crossings.second, pair % 3, 0.25, q, weights),
                pair == k);
      if (pair == k) {
        EXPECT_XYZ(p, q.x, q.y, q.z);
      }
    }
  }
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

TEST(KernelFaceToFace, CornerOfTheShadowStaysTheContactBesideCrossings) {
  // B rises from (2, 2, 5) to z = 9 on x + y = -2. Its edges from this corner cross two edges of A.
  const SourcedTriangle b = OfB({-4, 2, 9}, {2, -4, 9}, {2, 2, 5});
  const Plane planeB = {b.p[0].c, gsl_kernel::NormalOf(b, 1e-10)};
  SweepContacts contacts = Within(kInfinity);
  EXPECT_TRUE(
      FaceToFaceDist(kBelow, b, Level(0.0), planeB, kUp, kTolerances, &NeverAsked, contacts));
  EXPECT_NEAR(contacts.distance, 5.0, 1e-12);
  ExpectContact(contacts.point[0], 2, 2, 0, kComputed);
}

TEST(KernelFaceToFace, FirstCrossingFollowsTheSixCorners) {
  const gsl_kernel::ContactsOnA contacts(kBelow, kAbove, 7.0);
  EXPECT_EQ(contacts.count, 6u);
  EXPECT_EQ(contacts.distance, 7.0);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(contacts.point[i].source, i);
    EXPECT_EQ(contacts.point[i + 3].source, i + 3);
  }
}

TEST(KernelFaceToFace, ShadowDecidesWhetherBIsAside) {
  // B is 50 along the direction above (1, 1), and 30 aside of it.
  SourcedTriangle b = OfB({31, 1, 40}, {31, 2, 40}, {32, 1, 40});
  for (SourcedPoint& p : b.p)
    p.source = kComputed;
  SweepContacts contacts = Within(kInfinity);
  EXPECT_TRUE(FaceToFaceDist(kBelow, b, Level(0.0), Level(40.0), Measure({0.6, 0.0, 0.8}),
                             kTolerances, &NeverAsked, contacts));
  EXPECT_NEAR(contacts.distance, 50.0, 1e-12);
  EXPECT_XYZ_NEAR(contacts.point[0].c, 1.0, 1.0, 0.0, 1e-12);
}

// The shadow of B is 13 aside of A. The boxes have a size of 30, and the shortest edge is 1.
const SourcedTriangle kAside = OfB({21, 1, 5}, {21, 2, 5}, {22, 1, 5});

bool PassesAside(const SourcedTriangle& a, const SourcedTriangle& b, const Measured3& d,
                 double tolerance) {
  const SourcedTriangle shadow = ProjectTriangleAlong(b, Level(0.0), d, {tolerance, 1e-10});
  return ShadowPassesAside(a, b, shadow, Level(0.0), d, tolerance);
}

TEST(KernelShadowAside, NeedsAToleranceAndAUsualLengthOfTheDirection) {
  const SourcedTriangle shadow = ProjectTriangleAlong(kAside, Level(0.0), kUp, kTolerances);
  const auto passes = [&shadow](double length, double tolerance) {
    return ShadowPassesAside(kBelow, kAside, shadow, Level(0.0), {kUp.c, length}, tolerance);
  };
  for (const double tolerance : {0.0, 1e-6}) {
    EXPECT_TRUE(passes(1.0, tolerance));
  }
  for (const double tolerance : {-1e-6, kNaN}) {
    EXPECT_FALSE(passes(1.0, tolerance));
  }
  EXPECT_TRUE(passes(Above(0.5), 1e-6));
  EXPECT_TRUE(passes(Below(2.0), 1e-6));
  for (const double length : {0.0, 0.5, 2.0, 4.0, -1.0, kNaN})
    EXPECT_FALSE(passes(length, 1e-6)) << length;
}

TEST(KernelShadowAside, EveryCornerMustHaveMoved) {
  EXPECT_TRUE(PassesAside(kBelow, kAside, kUp, 1e-6));
  for (int i = 0; i < 3; ++i) {
    SourcedTriangle b = kAside;
    b.p[i].c.z = 0.0;
    EXPECT_FALSE(PassesAside(kBelow, b, kUp, 1e-6)) << i;
  }
}

TEST(KernelShadowAside, NoWayMayBeLong) {
  // The way must be below 2^25 times the gap of 13 by the size of 30: 1.45e7.
  for (int i = 0; i < 3; ++i) {
    SourcedTriangle b = kAside;
    b.p[i].c.z = 1e7;
    EXPECT_TRUE(PassesAside(kBelow, b, kUp, 1e-6)) << i;
    b.p[i].c.z = 2e7;
    EXPECT_FALSE(PassesAside(kBelow, b, kUp, 1e-6)) << i;
  }
  const Measured3 oblique = Measure({0.96, 0.0, 0.28});
  const auto passesFrom = [&oblique](double distance) {
    SourcedTriangle b = kAside;
    for (SourcedPoint& p : b.p)
      p.c = gsl_kernel::Add({p.c.x, p.c.y, 0.0}, gsl_kernel::Multiply(oblique.c, distance));
    return PassesAside(kBelow, b, oblique, 1e-6);
  };
  EXPECT_TRUE(passesFrom(1e7));
  EXPECT_FALSE(passesFrom(2e7)) << "the height alone is below the limit";
}

TEST(KernelShadowAside, DoesNotDependOnTheScale) {
  for (const double scale : {0x1p-30, 0x1p30}) {
    SourcedTriangle a = kBelow, b = kAside;
    for (int i = 0; i < 3; ++i) {
      a.p[i].c = gsl_kernel::Multiply(a.p[i].c, scale);
      b.p[i].c = gsl_kernel::Multiply(b.p[i].c, scale);
    }
    EXPECT_TRUE(PassesAside(a, b, kUp, 0.0)) << scale;
  }
}

TEST(KernelShadowAside, TiltsWithThePlaneOfA) {
  // An edge of the thin triangle is 2^-11 long, and the error of its normal moves a far shadow.
  const SourcedTriangle thin = OfA({0, 0, 0}, {1, 0, 0}, {0x1p-11, 0x1p-16, 0});
  const SourcedTriangle wide = OfA({2, 0, 0}, {3, 0, 0}, {2, 1, 0});
  const auto raised = [](SourcedTriangle tri) {
    for (SourcedPoint& p : tri.p)
      p.c.z = 5.0;
    return tri;
  };
  EXPECT_FALSE(PassesAside(thin, raised(wide), kUp, 0.0));
  EXPECT_TRUE(PassesAside(wide, raised(thin), kUp, 0.0));
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
  const gsl_kernel::Slabs last =
      gsl_kernel::SlabsAlong(kUp.c, OfA(corners[0], corners[1], {0, 0, kNaN}), tri);
  EXPECT_EQ(last.min[0], -4.0);
  EXPECT_EQ(last.max[0], 0.0);
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
