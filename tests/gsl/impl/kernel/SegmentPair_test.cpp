#include "kernel/SegmentPair.h"

#include "KernelNames.h"

namespace {

using namespace kernel_names;
using gsl_kernel::Line;
using gsl_kernel::RayDirection;
using gsl_kernel::RayTarget;
using gsl_kernel::Segment;
using gsl_kernel::SegmentCrossing;

constexpr Segment kTarget = {{0.0, 0.0, 0.0}, {4.0, 0.0, 0.0}};

struct Crossing {
  Coord3 at = {kSentinel, kSentinel, kSentinel};
  double weights[2] = {kSentinel, kSentinel};
  SegmentCrossing where = SegmentCrossing::Missed;
};

Crossing OfRay(const Coord3& origin, const Coord3& dir, const Segment& segment) {
  Crossing c;
  c.where = CrossRaySegment(origin, Measure(dir), segment, kTolerance, c.at, c.weights);
  return c;
}

Crossing OfSegments(const Segment& a, const Segment& b, double tolerance = kTolerance) {
  Crossing c;
  c.where = CrossSegments(a, b, tolerance, c.at);
  return c;
}

TEST(KernelSegmentPair, SupportingLineLeadsFromTheFirstEnd) {
  const Line line = gsl_kernel::SupportingLine({{1, 2, 3}, {3, 5, 9}});
  EXPECT_XYZ(line.point, 1.0, 2.0, 3.0);
  EXPECT_XYZ(line.direction.c, 2.0, 3.0, 6.0);
}

TEST(KernelSegmentPair, UnitOfARayIsMultipliedByTheReciprocalOfTheLength) {
  // 49 (1 / 49) misses 1, 49 / 49 does not.
  const RayDirection ray(Measure({0.0, 49.0, 0.0}), kTolerance);
  EXPECT_EQ(ray.measured.c.y, 49.0);
  EXPECT_EQ(ray.measured.magnitude, 49.0);
  EXPECT_EQ(ray.unit.y, Below(1.0));
}

TEST(KernelSegmentPair, RayCrossesInBothSensesWithTheWeightsOfThePoint) {
  for (const double sense : {1.0, -3.0}) {
    const Crossing c = OfRay({1.0, 5.0, 0.0}, {0.0, sense, 0.0}, kTarget);
    EXPECT_EQ(c.where, SegmentCrossing::Crossing);
    EXPECT_XYZ(c.at, 1.0, 0.0, 0.0);
    EXPECT_EQ(c.weights[0], 0.25);
    EXPECT_EQ(c.weights[1], 0.75);
  }
}

TEST(KernelSegmentPair, RayAtTheToleranceBeyondAnEndCrosses) {
  EXPECT_EQ(OfRay({-kTolerance, 5, 0}, {0, 1, 0}, kTarget).where, SegmentCrossing::Crossing);
  const Crossing beyond = OfRay({Below(-kTolerance), 5, 0}, {0, 1, 0}, kTarget);
  EXPECT_EQ(beyond.where, SegmentCrossing::Beyond);
  EXPECT_EQ(beyond.at.x, Below(-kTolerance));
}

TEST(KernelSegmentPair, RayAtTheToleranceAsideOfThePlaneCrosses) {
  EXPECT_EQ(OfRay({1, 5, kTolerance}, {0, 1, 0}, kTarget).where, SegmentCrossing::Crossing);
  const Crossing aside = OfRay({1, 5, Above(kTolerance)}, {0, 1, 0}, kTarget);
  EXPECT_EQ(aside.where, SegmentCrossing::Missed);
  EXPECT_XYZ(aside.at, kSentinel, kSentinel, kSentinel);
  EXPECT_EQ(aside.weights[0], kSentinel);
}

TEST(KernelSegmentPair, RayMissesAShortOrParallelTarget) {
  const RayDirection ray(Measure({0.0, 1.0, 0.0}), kTolerance);
  EXPECT_FALSE(RayTarget({{0, 0, 0}, {kTolerance, 0, 0}}, ray, kTolerance).isMissed);
  EXPECT_TRUE(RayTarget({{0, 0, 0}, {Below(kTolerance), 0, 0}}, ray, kTolerance).isMissed);
  EXPECT_TRUE(RayTarget({{0, 0, 0}, {0, 4, 0}}, ray, kTolerance).isMissed);
  EXPECT_TRUE(RayTarget({{0, 4, 0}, {0, 0, 0}}, ray, kTolerance).isMissed);
  EXPECT_EQ(OfRay({1, 5, 0}, {1, 0, 0}, kTarget).where, SegmentCrossing::Missed);
}

TEST(KernelSegmentPair, RayOfNaNMissesNothingThatHasADirection) {
  const Crossing c = OfRay({kNaN, 5, 0}, {0, 1, 0}, kTarget);
  EXPECT_EQ(c.where, SegmentCrossing::Crossing);
  EXPECT_TRUE(std::isnan(c.at.x));
}

TEST(KernelSegmentPair, SegmentsCrossOnTheSecondOne) {
  // The second is higher by the tolerance: the point written last lies on it.
  const Segment across = {{1.0, -1.0, kTolerance}, {1.0, 1.0, kTolerance}};
  const Crossing c = OfSegments(kTarget, across);
  EXPECT_EQ(c.where, SegmentCrossing::Crossing);
  EXPECT_XYZ(c.at, 1.0, 0.0, kTolerance);
  EXPECT_XYZ(OfSegments(across, kTarget).at, 1.0, 0.0, 0.0);
}

TEST(KernelSegmentPair, SegmentsThatMissEachOthersLineLeaveTheirPoint) {
  const Crossing first = OfSegments(kTarget, {{9, 1, 0}, {9, 3, 0}});
  EXPECT_EQ(first.where, SegmentCrossing::Beyond);
  EXPECT_XYZ(first.at, 9.0, 0.0, 0.0);
  const Crossing second = OfSegments(kTarget, {{1, 1, 0}, {1, 3, 0}});
  EXPECT_EQ(second.where, SegmentCrossing::Beyond);
  EXPECT_XYZ(second.at, 1.0, 0.0, 0.0);
}

TEST(KernelSegmentPair, ParallelAndSkewSegmentsWriteNothing) {
  for (const Segment& other : {Segment{{0, 0, 0}, {4, 0, 0}},
                               Segment{{1, -1, Above(kTolerance)}, {1, 1, Above(kTolerance)}}}) {
    const Crossing c = OfSegments(kTarget, other);
    EXPECT_EQ(c.where, SegmentCrossing::Missed);
    EXPECT_XYZ(c.at, kSentinel, kSentinel, kSentinel);
  }
}

SegmentCrossing WithLine(const Segment& segment, double x, Coord3& out) {
  return CrossSegmentLine(segment, {{x, 7, 0}, Measure({0.0, 1.0, 0.0})}, kTolerance, out);
}

TEST(KernelSegmentPair, LineAtTheToleranceBeyondAnEndCrosses) {
  Coord3 out;
  EXPECT_EQ(WithLine(kTarget, 4.0 + kTolerance, out), SegmentCrossing::Crossing);
  EXPECT_EQ(WithLine(kTarget, Above(4.0 + kTolerance), out), SegmentCrossing::Beyond);
  EXPECT_EQ(WithLine(kTarget, -kTolerance, out), SegmentCrossing::Crossing);
  EXPECT_EQ(WithLine(kTarget, Below(-kTolerance), out), SegmentCrossing::Beyond);
  EXPECT_XYZ(out, Below(-kTolerance), 0.0, 0.0);
}

TEST(KernelSegmentPair, SegmentAsLongAsTheToleranceIsMetNearItsFirstEndOnly) {
  const Segment segment = {{0, 0, 0}, {kTolerance, 0, 0}};
  Coord3 out = {kSentinel, kSentinel, kSentinel};
  EXPECT_EQ(WithLine({{0, 0, 0}, {Below(kTolerance), 0, 0}}, 0.0, out), SegmentCrossing::Missed);
  EXPECT_XYZ(out, kSentinel, kSentinel, kSentinel);
  EXPECT_EQ(WithLine(segment, kTolerance, out), SegmentCrossing::Crossing);
  EXPECT_EQ(WithLine(segment, Above(kTolerance), out), SegmentCrossing::Beyond);
}

TEST(KernelSegmentPair, NoLengthAndNoToleranceCrossesAtNaN) {
  const Crossing c = OfSegments({{1, 1, 0}, {1, 1, 0}}, kTarget, 0.0);
  EXPECT_EQ(c.where, SegmentCrossing::Crossing);
  EXPECT_TRUE(std::isnan(c.at.x));
}

} // namespace
