#include "kernel/Segment.h"

#include "KernelNames.h"

namespace {

using namespace kernel_names;
using gsl_kernel::PointSegmentParameters;
using gsl_kernel::SegmentFoot;

constexpr Coord3 kStart = {0.0, 0.0, 0.0};
constexpr Coord3 kEnd = {4.0, 0.0, 0.0};

struct Position {
  double weights[2] = {kSentinel, kSentinel};
  bool inside;

  Position(const Coord3& x, const Coord3& p0, const Coord3& p1, double tolerance)
      : inside(PointSegmentParameters(x, p0, p1, tolerance, weights)) {}
};

TEST(PointSegmentParameters, FirstWeightIsTheFractionTowardsTheSecondPoint) {
  const Position p({1.0, 7.0, 0.0}, kStart, kEnd, kTolerance);
  EXPECT_TRUE(p.inside);
  EXPECT_EQ(p.weights[0], 0.25);
  EXPECT_EQ(p.weights[1], 0.75);
}

TEST(PointSegmentParameters, TheToleranceBeyondEachEndIsInside) {
  EXPECT_TRUE(Position({-kTolerance, 0.0, 0.0}, kStart, kEnd, kTolerance).inside);
  EXPECT_FALSE(Position({Below(-kTolerance), 0.0, 0.0}, kStart, kEnd, kTolerance).inside);
  EXPECT_TRUE(Position({4.0 + kTolerance, 0.0, 0.0}, kStart, kEnd, kTolerance).inside);
  EXPECT_FALSE(Position({Above(4.0 + kTolerance), 0.0, 0.0}, kStart, kEnd, kTolerance).inside);
}

TEST(PointSegmentParameters, WeightsAreWrittenWithFalse) {
  const Position p({8.0, 0.0, 0.0}, kStart, kEnd, kTolerance);
  EXPECT_FALSE(p.inside);
  EXPECT_EQ(p.weights[0], 2.0);
  EXPECT_EQ(p.weights[1], -1.0);
}

TEST(PointSegmentParameters, LengthOfExactlyTheToleranceIsDegenerate) {
  const Coord3 end = {kTolerance, 0.0, 0.0};
  const Position near({-kTolerance, 0.0, 0.0}, kStart, end, kTolerance);
  EXPECT_TRUE(near.inside);
  EXPECT_EQ(near.weights[0], 0.0);
  EXPECT_EQ(near.weights[1], 1.0);
  const Position far({Below(-kTolerance), 0.0, 0.0}, kStart, end, kTolerance);
  EXPECT_FALSE(far.inside);
  EXPECT_EQ(far.weights[0], kSentinel);
  EXPECT_EQ(far.weights[1], kSentinel);
  EXPECT_EQ(Position({0.0, 9.0, 0.0}, kStart, {Above(kTolerance), 0.0, 0.0}, kTolerance).weights[1],
            1.0);
}

TEST(PointSegmentParameters, NaNIsInsideALongSegmentAndNotADegenerateOne) {
  const Position inLong({kNaN, 0.0, 0.0}, kStart, kEnd, kTolerance);
  EXPECT_TRUE(inLong.inside);
  EXPECT_TRUE(std::isnan(inLong.weights[0]));
  EXPECT_FALSE(Position({kNaN, 0.0, 0.0}, kStart, kStart, kTolerance).inside);
}

struct Foot {
  Coord3 at = {kSentinel, kSentinel, kSentinel};
  double t = kSentinel;
  SegmentFoot where;

  Foot(const Coord3& p, const Coord3& p1, const Coord3& p2, double tolerance)
      : where(gsl_kernel::FootOnSegment(p, p1, p2, tolerance, at, t)) {}
};

TEST(FootOnSegment, LiesOnTheLineAndIsMeasuredAsAFraction) {
  const Foot foot({1.0, 7.0, 0.0}, kStart, kEnd, kTolerance);
  EXPECT_EQ(foot.where, SegmentFoot::Inside);
  EXPECT_XYZ(foot.at, 1.0, 0.0, 0.0);
  EXPECT_EQ(foot.t, 0.25);
}

TEST(FootOnSegment, TheToleranceBeyondEachEndIsOutside) {
  EXPECT_EQ(Foot({-kTolerance, 0, 0}, kStart, kEnd, kTolerance).where, SegmentFoot::Outside);
  EXPECT_EQ(Foot({Above(-kTolerance), 0, 0}, kStart, kEnd, kTolerance).where, SegmentFoot::Inside);
  EXPECT_EQ(Foot({4.0 + kTolerance, 0, 0}, kStart, kEnd, kTolerance).where, SegmentFoot::Outside);
  EXPECT_EQ(Foot({Below(4.0 + kTolerance), 0, 0}, kStart, kEnd, kTolerance).where,
            SegmentFoot::Inside);
  EXPECT_XYZ(Foot({8.0, 0, 0}, kStart, kEnd, kTolerance).at, 8.0, 0.0, 0.0);
}

TEST(FootOnSegment, ShorterThanTheToleranceIsDegenerateAndUnwritten) {
  const Foot shorter({1, 1, 1}, kStart, {Below(kTolerance), 0, 0}, kTolerance);
  EXPECT_EQ(shorter.where, SegmentFoot::Degenerate);
  EXPECT_XYZ(shorter.at, kSentinel, kSentinel, kSentinel);
  EXPECT_EQ(shorter.t, kSentinel);
  EXPECT_EQ(Foot({0, 1, 1}, kStart, {kTolerance, 0, 0}, kTolerance).where, SegmentFoot::Inside);
}

TEST(FootOnSegment, NoLengthAndNoToleranceIsOutsideAtNaN) {
  const Foot foot({1, 1, 1}, kStart, kStart, 0.0);
  EXPECT_EQ(foot.where, SegmentFoot::Outside);
  EXPECT_TRUE(std::isnan(foot.t));
}

TEST(KernelSegment, NearestIsTheFootOrTheNearerEnd) {
  using gsl_kernel::NearestPoint;
  using gsl_kernel::SegmentPart;
  const Coord3 p1 = {0.0, 0.0, 0.0}, p2 = {8.0, 0.0, 0.0};
  const NearestPoint foot = gsl_kernel::NearestOnSegment({2.0, 3.0, 4.0}, p1, p2, kTolerance);
  EXPECT_EQ(foot.part, SegmentPart::Foot);
  EXPECT_XYZ(foot.point, 2.0, 0.0, 0.0);
  EXPECT_EQ(foot.distance, 5.0);
  const NearestPoint first = gsl_kernel::NearestOnSegment({-3.0, 4.0, 0.0}, p1, p2, kTolerance);
  EXPECT_EQ(first.part, SegmentPart::First);
  EXPECT_EQ(first.distance, 5.0);
  const NearestPoint second = gsl_kernel::NearestOnSegment({11.0, 4.0, 0.0}, p1, p2, kTolerance);
  EXPECT_EQ(second.part, SegmentPart::Second);
  EXPECT_EQ(second.distance, 5.0);
  EXPECT_EQ(
      gsl_kernel::NearestOnSegment({1.0, 0.0, 0.0}, p1, {Below(kTolerance), 0.0, 0.0}, kTolerance)
          .part,
      SegmentPart::None);
}

TEST(KernelSegment, NearerEndIsTheSecondWhereTheDistancesRoundToOneNumber) {
  using gsl_kernel::SegmentPart;
  // The squares are 1 and the next number, and both roots are 1.
  const double next = std::sqrt(0x1p-52);
  const Coord3 p = {0.0, 0.0, 0.0}, unit = {1.0, 0.0, 0.0}, longer = {1.0, next, 0.0};
  ASSERT_GT(gsl_kernel::Dot(longer, longer), 1.0);
  ASSERT_EQ(gsl_kernel::Length(longer), 1.0);
  EXPECT_EQ(gsl_kernel::NearerEnd(p, unit, longer).part, SegmentPart::Second);
  EXPECT_EQ(gsl_kernel::NearerEnd(p, unit, {1.0, 2.0 * next, 0.0}).part, SegmentPart::First);
  EXPECT_EQ(gsl_kernel::NearerEnd(p, longer, unit).part, SegmentPart::Second);
  EXPECT_EQ(gsl_kernel::NearerEnd({kNaN, 0.0, 0.0}, unit, longer).part, SegmentPart::Second);
}

TEST(KernelSegment, FootIsInsideAtTheLimitsOfTheSpan) {
  Coord3 foot;
  double t = kSentinel;
  const Coord3 p1 = {0.0, 0.0, 0.0}, p2 = {8.0, 0.0, 0.0};
  const auto where = [&](double x, double tol) {
    return gsl_kernel::FootOnSegment({x, 1.0, 0.0}, p1, p2, tol, foot, t);
  };
  // Without a tolerance the ends are outside, and a negative tolerance shortens the span.
  EXPECT_EQ(where(0.0, 0.0), SegmentFoot::Outside);
  EXPECT_EQ(where(8.0, 0.0), SegmentFoot::Outside);
  EXPECT_EQ(where(Below(8.0), 0.0), SegmentFoot::Inside);
  EXPECT_EQ(where(2.0, -2.0), SegmentFoot::Outside);
  EXPECT_EQ(where(Above(2.0), -2.0), SegmentFoot::Inside);
  EXPECT_EQ(where(6.0, -2.0), SegmentFoot::Outside);
  EXPECT_EQ(where(-2.0, 2.0), SegmentFoot::Outside);
  EXPECT_EQ(where(Above(-2.0), 2.0), SegmentFoot::Inside);
  EXPECT_EQ(where(4.0, kNaN), SegmentFoot::Outside);
}

} // namespace
