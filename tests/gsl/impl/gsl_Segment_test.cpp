#include "gsl_Segment.h"

#include "PointChecks.h"
#include "RandomNumbers.h"
#include "ScopedSettings.h"
#include "VirtualSlot.h"
#include "gsl_StLine.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace {

using numbers::Above;
using numbers::Below;

double LinearTolerance() {
  return omi_Singleton<gsl_Util>::Instance().linearTolerance;
}

gsl_Segment Segment(double x1, double y1, double z1, double x2, double y2, double z2) {
  return {gsl_Point(x1, y1, z1), gsl_Point(x2, y2, z2)};
}

/// The line along Y through (x, 0, 0).
gsl_StLine LineAcross(double x) {
  return {gsl_Point(x, -3.0, 0.0), gsl_Vector(0.0, 2.0, 0.0)};
}

bool Has(const gsl_Segment& segment, const gsl_Point& p1, const gsl_Point& p2) {
  return Is(segment.Point1(), p1) && Is(segment.Point2(), p2);
}

bool SharesAnEndPointsIdentity(const gsl_Point& p, const gsl_Segment& a, const gsl_Segment& b) {
  return p.uid == a.Point1().uid || p.uid == a.Point2().uid || p.uid == b.Point1().uid ||
         p.uid == b.Point2().uid;
}

TEST(GslSegment, DefaultHasBothEndsAtTheOrigin) {
  const gsl_Segment segment;
  EXPECT_TRUE(IsAt(segment.Point1(), 0.0, 0.0, 0.0));
  EXPECT_TRUE(IsAt(segment.Point2(), 0.0, 0.0, 0.0));
  EXPECT_NE(segment.Point1().uid, segment.Point2().uid);
  EXPECT_FALSE(segment.Uid().IsNull());
  EXPECT_NE(segment.Uid(), gsl_Segment().Uid());
}

TEST(GslSegment, HoldsCopiesOfItsEndPointsWithTheirIdentities) {
  const gsl_Point p1(1.0, 2.0, 3.0);
  const gsl_Point p2(4.0, 6.0, 3.0);
  const gsl_Segment segment(p1, p2);
  EXPECT_TRUE(Has(segment, p1, p2));
  EXPECT_EQ(segment.Length(), 5.0);
  EXPECT_NE(segment.Uid(), p1.uid);
  EXPECT_NE(segment.Uid(), gsl_Segment(p1, p2).Uid());
}

TEST(GslSegment, EqualEndPointsAreAllowed) {
  const gsl_Point p(1.0, 2.0, 3.0);
  EXPECT_EQ(gsl_Segment(p, p).Length(), 0.0);
}

TEST(GslSegment, CopyAndAssignmentTakeTheIdentitiesOfPointsAndSegment) {
  const gsl_Segment source = Segment(1, 2, 3, 4, 5, 6);
  const gsl_Segment copy(source);
  gsl_Segment assigned;
  assigned = source;
  EXPECT_TRUE(Has(copy, source.Point1(), source.Point2()));
  EXPECT_EQ(copy.Uid(), source.Uid());
  EXPECT_TRUE(Has(assigned, source.Point1(), source.Point2()));
  EXPECT_EQ(assigned.Uid(), source.Uid());
}

TEST(GslSegment, TypeIdMatchesItsRow) {
  EXPECT_EQ(gsl_Segment::TypeId(), 0x30A0008u);
  EXPECT_EQ(gsl_Segment().DynTypeId(), 0x30A0008u);
}

TEST(GslSegment, VirtualSlotsStartWithTheTypeIdAndNotWithADestructor) {
  EXPECT_FALSE(std::has_virtual_destructor_v<gsl_Segment>);
  EXPECT_EQ(VirtualSlot(&gsl_Segment::DynTypeId), 0);
  EXPECT_EQ(VirtualSlot(&gsl_Segment::DBWrite), 1);
}

class HostSegment : public gsl_Segment {
public:
  unsigned int DynTypeId() const override { return 10u; }
  void DBWrite(const cls_WriteVisitor&) const override {}
};

TEST(GslSegment, OverridesAreReachedThroughTheBase) {
  const HostSegment host;
  const gsl_Segment& segment = host;
  EXPECT_EQ(segment.DynTypeId(), 10u);
}

TEST(GslSegmentWithLine, CrossingIsOnTheSegmentWithAFreshIdentity) {
  const gsl_Segment segment = Segment(0, 0, 0, 4, 0, 0);
  const gsl_StLine line = LineAcross(1.0);
  gsl_Point out = Sentinel();
  const gsl_Point before = out;
  EXPECT_TRUE(segment.Intersect(line, out));
  EXPECT_TRUE(IsAt(out, 1.0, 0.0, 0.0));
  EXPECT_NE(out.uid, before.uid);
  EXPECT_NE(out.uid, line.PointOn().uid);
  EXPECT_FALSE(SharesAnEndPointsIdentity(out, segment, segment));
}

TEST(GslSegmentWithLine, PointIsTheClosestOnTheSegmentsLineNotOnTheOther) {
  gsl_Point out = Sentinel();
  const gsl_StLine line(gsl_Point(1.0, 5.0, 1e-7), gsl_Vector(0.0, 1.0, 0.0));
  EXPECT_TRUE(Segment(0, 0, 0, 4, 0, 0).Intersect(line, out));
  EXPECT_TRUE(IsAt(out, 1.0, 0.0, 0.0));
}

TEST(GslSegmentWithLine, SegmentShorterThanTheToleranceNeverIntersects) {
  gsl_Point out = Sentinel();
  const gsl_Point before = out;
  EXPECT_FALSE(Segment(0, 0, 0, 1e-7, 0, 0).Intersect(LineAcross(0.0), out));
  EXPECT_FALSE(Segment(0, 0, 0, 0, 0, 0).Intersect(LineAcross(0.0), out));
  EXPECT_FALSE(Segment(0, 0, 0, Below(LinearTolerance()), 0, 0).Intersect(LineAcross(0.0), out));
  EXPECT_TRUE(Is(out, before));
}

TEST(GslSegmentWithLine, SegmentOfExactlyTheToleranceIntersectsAtItsFirstPoint) {
  const gsl_Segment segment = Segment(0, 0, 0, LinearTolerance(), 0, 0);
  gsl_Point out = Sentinel();
  EXPECT_TRUE(segment.Intersect(LineAcross(0.0), out));
  EXPECT_TRUE(segment.Intersect(LineAcross(LinearTolerance()), out));
}

TEST(GslSegmentWithLine, SegmentOfExactlyTheToleranceIsMissedFartherFromItsFirstPoint) {
  const gsl_Segment segment = Segment(0, 0, 0, LinearTolerance(), 0, 0);
  gsl_Point out = Sentinel();
  EXPECT_FALSE(segment.Intersect(LineAcross(1.5 * LinearTolerance()), out));
  EXPECT_TRUE(IsNear(out, 1.5e-6, 0.0, 0.0, 1e-15)) << "written, as beyond an end";
}

TEST(GslSegmentWithLine, NoLengthAndNoToleranceIsCrossedAtNaN) {
  const ScopedSettings settings;
  const gsl_Segment dot = Segment(1, 2, 3, 1, 2, 3);
  for (const gsl_StLine& line : {LineAcross(1.0), LineAcross(-70.0)}) {
    settings->linearTolerance = 0.0;
    gsl_Point out = Sentinel();
    const gsl_Point before = out;
    EXPECT_TRUE(dot.Intersect(line, out));
    EXPECT_TRUE(std::isnan(out.x) && std::isnan(out.y) && std::isnan(out.z));
    EXPECT_NE(out.uid, before.uid);
    // The least tolerance makes it degenerate again.
    settings->linearTolerance = numbers::kDenormal;
    out = before;
    EXPECT_FALSE(dot.Intersect(line, out));
    EXPECT_TRUE(Is(out, before));
  }
  // A line without a direction is parallel to the segment.
  settings->linearTolerance = 0.0;
  gsl_Point out = Sentinel();
  EXPECT_FALSE(dot.Intersect(gsl_StLine(gsl_Point(), gsl_Vector(0.0, 0.0, 0.0)), out));
  EXPECT_TRUE(IsAt(out, Sentinel().x, Sentinel().y, Sentinel().z));
}

TEST(GslSegmentWithSegment, NoLengthAndNoToleranceIsCrossedAtNaN) {
  const ScopedSettings settings;
  settings->linearTolerance = 0.0;
  const gsl_Segment dot = Segment(1, 2, 3, 1, 2, 3);
  const gsl_Segment other = Segment(5, 0, 0, 6, 1, 0);
  gsl_Point out = Sentinel();
  EXPECT_TRUE(dot.Intersect(other, out));
  EXPECT_TRUE(std::isnan(out.x));
  out = Sentinel();
  EXPECT_TRUE(other.Intersect(dot, out));
  EXPECT_TRUE(std::isnan(out.x));
  gsl_Segment connection;
  dot.GetDistance(other, connection);
  EXPECT_TRUE(std::isnan(connection.Length()));
}

TEST(GslSegmentWithLine, SkewLineLeavesThePointUntouched) {
  gsl_Point out = Sentinel();
  const gsl_Point before = out;
  const gsl_StLine line(gsl_Point(1.0, 5.0, 1.0), gsl_Vector(0.0, 1.0, 0.0));
  EXPECT_FALSE(Segment(0, 0, 0, 4, 0, 0).Intersect(line, out));
  EXPECT_TRUE(Is(out, before));
}

TEST(GslSegmentWithLine, ParallelLineLeavesThePointUntouched) {
  gsl_Point out = Sentinel();
  const gsl_Point before = out;
  EXPECT_FALSE(Segment(0, 0, 0, 4, 0, 0).Intersect(gsl_StLine(), out)) << "even a coincident one";
  EXPECT_TRUE(Is(out, before));
}

TEST(GslSegmentWithLine, HalfATolerancePastTheEndIntersectsAndTwoDoNot) {
  const double tol = LinearTolerance();
  const gsl_Segment segment = Segment(0, 0, 0, 1, 0, 0);
  gsl_Point out = Sentinel();
  EXPECT_TRUE(segment.Intersect(LineAcross(1.0 + 0.5 * tol), out));
  EXPECT_FALSE(segment.Intersect(LineAcross(1.0 + 2.0 * tol), out));
  EXPECT_TRUE(IsAt(out, 1.0 + 2.0 * tol, 0.0, 0.0)) << "written although beyond the end";
}

TEST(GslSegmentWithLine, ExactlyTheToleranceBeforeTheStartIntersects) {
  const double tol = LinearTolerance();
  const gsl_Segment segment = Segment(0, 0, 0, 1, 0, 0);
  gsl_Point out = Sentinel();
  EXPECT_TRUE(segment.Intersect(LineAcross(-tol), out));
  EXPECT_FALSE(segment.Intersect(LineAcross(-Above(tol)), out));
  EXPECT_TRUE(IsAt(out, -Above(tol), 0.0, 0.0));
}

TEST(GslSegmentWithLine, ExactlyOnePlusTheTolerancePastTheEndIntersects) {
  // With the end at the origin, x + 1 is the parameter without rounding.
  const double limit = 1.0 + LinearTolerance();
  const gsl_Segment segment = Segment(-1, 0, 0, 0, 0, 0);
  gsl_Point out = Sentinel();
  EXPECT_TRUE(segment.Intersect(LineAcross(limit - 1.0), out));
  EXPECT_FALSE(segment.Intersect(LineAcross(Above(limit) - 1.0), out));
}

TEST(GslSegmentWithLine, MarginIsALengthWhateverTheSegments) {
  const double tol = LinearTolerance();
  const gsl_Segment segment = Segment(0, 0, 0, 1024, 0, 0);
  gsl_Point out = Sentinel();
  EXPECT_TRUE(segment.Intersect(LineAcross(-tol), out));
  EXPECT_FALSE(segment.Intersect(LineAcross(-Above(tol)), out));
}

TEST(GslSegmentWithLine, ToleranceIsReadAtTheCall) {
  const gsl_Segment segment = Segment(0, 0, 0, 1, 0, 0);
  gsl_Point out = Sentinel();
  EXPECT_FALSE(segment.Intersect(LineAcross(1.125), out));
  const ScopedSettings settings;
  settings->linearTolerance = 0.125;
  EXPECT_TRUE(segment.Intersect(LineAcross(1.125), out));
}

TEST(GslSegmentWithSegment, CrossingInTheInteriors) {
  const gsl_Segment a = Segment(0, 0, 0, 4, 0, 0);
  const gsl_Segment b = Segment(1, -1, 0, 1, 3, 0);
  gsl_Point out = Sentinel();
  EXPECT_TRUE(a.Intersect(b, out));
  EXPECT_TRUE(IsAt(out, 1.0, 0.0, 0.0));
  EXPECT_FALSE(SharesAnEndPointsIdentity(out, a, b));
}

TEST(GslSegmentWithSegment, PointLiesOnTheOtherSegmentsLine) {
  gsl_Point out = Sentinel();
  EXPECT_TRUE(Segment(0, 0, 0, 4, 0, 0).Intersect(Segment(1, -1, 1e-7, 1, 3, 1e-7), out));
  EXPECT_TRUE(IsAt(out, 1.0, 0.0, 1e-7)) << "the second of the two tests writes last";
}

TEST(GslSegmentWithSegment, MeetingAtASharedEndPointIntersects) {
  const gsl_Segment a = Segment(0, 0, 0, 1, 0, 0);
  const gsl_Segment b = Segment(1, 0, 0, 1, 1, 0);
  gsl_Point out = Sentinel();
  EXPECT_TRUE(a.Intersect(b, out));
  EXPECT_TRUE(IsAt(out, 1.0, 0.0, 0.0));
  EXPECT_FALSE(SharesAnEndPointsIdentity(out, a, b)) << "computed, not chosen";
}

TEST(GslSegmentWithSegment, MissingTheFirstTestLeavesItsPoint) {
  gsl_Point out = Sentinel();
  EXPECT_FALSE(Segment(0, 0, 0, 1, 0, 0).Intersect(Segment(2, -1, 1e-7, 2, 1, 1e-7), out));
  EXPECT_TRUE(IsAt(out, 2.0, 0.0, 0.0)) << "on this segment's line: the second test was not made";
}

TEST(GslSegmentWithSegment, MissingTheSecondTestLeavesItsPoint) {
  gsl_Point out = Sentinel();
  EXPECT_FALSE(Segment(0, 0, 0, 4, 0, 0).Intersect(Segment(2, 1, 1e-7, 2, 3, 1e-7), out));
  EXPECT_TRUE(IsAt(out, 2.0, 0.0, 1e-7)) << "on the other segment's line";
}

TEST(GslSegmentWithSegment, CollinearSegmentsDoNotIntersect) {
  gsl_Point out = Sentinel();
  const gsl_Point before = out;
  EXPECT_FALSE(Segment(0, 0, 0, 2, 0, 0).Intersect(Segment(1, 0, 0, 3, 0, 0), out));
  EXPECT_TRUE(Is(out, before));
}

TEST(GslSegmentWithSegment, DegenerateOtherKeepsThePointOfTheFirstTest) {
  gsl_Point out = Sentinel();
  // The line of the short segment crosses. The test of the short segment itself then fails.
  EXPECT_FALSE(Segment(0, 0, 0, 2, 0, 0).Intersect(Segment(1, 0, 0, 1, 5e-7, 0), out));
  EXPECT_TRUE(IsAt(out, 1.0, 0.0, 0.0));
}

TEST(GslSegmentDistance, CrossingInTheInteriorsIsOnePointTwice) {
  const gsl_Segment a = Segment(0, 0, 0, 4, 0, 0);
  const gsl_Segment b = Segment(1, -1, 0, 1, 3, 0);
  gsl_Segment r;
  const cls_Uid before = r.Uid();
  a.GetDistance(b, r);
  EXPECT_EQ(r.Length(), 0.0);
  EXPECT_TRUE(IsAt(r.Point1(), 1.0, 0.0, 0.0));
  EXPECT_EQ(r.Point1().uid, r.Point2().uid);
  EXPECT_FALSE(SharesAnEndPointsIdentity(r.Point1(), a, b));
  EXPECT_NE(r.Uid(), before);
  EXPECT_NE(r.Uid(), a.Uid());
  EXPECT_NE(r.Uid(), b.Uid());
}

TEST(GslSegmentDistance, SharedEndPointAtAnAngleHasNoLength) {
  gsl_Segment r = Segment(9, 9, 9, 8, 8, 8);
  Segment(0, 0, 0, 1, 0, 0).GetDistance(Segment(1, 0, 0, 1, 1, 0), r);
  EXPECT_EQ(r.Length(), 0.0);
  EXPECT_TRUE(IsAt(r.Point1(), 1.0, 0.0, 0.0));
}

TEST(GslSegmentDistance, CollinearOverlapFallsBackToEndPoints) {
  const gsl_Segment a = Segment(0, 0, 0, 2, 0, 0);
  const gsl_Segment b = Segment(1, 0, 0, 3, 0, 0);
  gsl_Segment r;
  a.GetDistance(b, r);
  EXPECT_EQ(r.Length(), 0.0);
  EXPECT_TRUE(Is(r.Point1(), a.Point2())) << "the first end point at distance zero";
  EXPECT_TRUE(IsAt(r.Point2(), 2.0, 0.0, 0.0));
  EXPECT_FALSE(SharesAnEndPointsIdentity(r.Point2(), a, b));
}

TEST(GslSegmentDistance, CollinearGapJoinsTheEndPointsThemselves) {
  const gsl_Segment a = Segment(0, 0, 0, 2, 0, 0);
  const gsl_Segment b = Segment(5, 0, 0, 3, 0, 0);
  gsl_Segment r;
  a.GetDistance(b, r);
  EXPECT_EQ(r.Length(), 1.0);
  EXPECT_TRUE(Has(r, a.Point2(), b.Point2()));
}

TEST(GslSegmentDistance, SkewSegmentsWhoseImagesCrossJoinAlongTheNormal) {
  const gsl_Segment a = Segment(0, 0, 0, 2, 0, 0);
  const gsl_Segment b = Segment(1, -1, 1, 1, 1, 1);
  gsl_Segment r;
  a.GetDistance(b, r);
  EXPECT_TRUE(IsAt(r.Point1(), 1.0, 0.0, 0.0));
  EXPECT_TRUE(IsAt(r.Point2(), 1.0, 0.0, 1.0));
  EXPECT_EQ(r.Length(), 1.0);
  EXPECT_NE(r.Point1().uid, r.Point2().uid);
  EXPECT_FALSE(SharesAnEndPointsIdentity(r.Point1(), a, b));
  EXPECT_FALSE(SharesAnEndPointsIdentity(r.Point2(), a, b));
  // And from the other side, where the normal points the other way.
  b.GetDistance(a, r);
  EXPECT_TRUE(IsAt(r.Point1(), 1.0, 0.0, 1.0));
  EXPECT_TRUE(IsAt(r.Point2(), 1.0, 0.0, 0.0));
}

TEST(GslSegmentDistance, SkewSegmentsWhoseImagesMissJoinAnEndPoint) {
  const gsl_Segment a = Segment(0, 0, 0, 2, 0, 0);
  const gsl_Segment b = Segment(1, 3, 4, 1, 9, 4);
  gsl_Segment r;
  a.GetDistance(b, r);
  // The connection is from (1, 0, 0) to the first point of b. No end of a is that near.
  EXPECT_EQ(r.Length(), 5.0);
  EXPECT_TRUE(IsAt(r.Point1(), 1.0, 0.0, 0.0));
  EXPECT_FALSE(SharesAnEndPointsIdentity(r.Point1(), a, b));
  EXPECT_TRUE(Is(r.Point2(), b.Point1()));
}

TEST(GslSegmentDistance, EachEndPointCanBeTheNearest) {
  const gsl_Segment across = Segment(0, -5, 0, 0, 5, 0);
  gsl_Segment r;
  const gsl_Segment firstNear = Segment(1, 1, 2, 9, 1, 2);
  firstNear.GetDistance(across, r);
  EXPECT_TRUE(Is(r.Point1(), firstNear.Point1()));
  EXPECT_TRUE(IsAt(r.Point2(), 0.0, 1.0, 0.0));
  across.GetDistance(firstNear, r);
  EXPECT_TRUE(IsAt(r.Point1(), 0.0, 1.0, 0.0));
  EXPECT_TRUE(Is(r.Point2(), firstNear.Point1()));
  const gsl_Segment secondNear = Segment(9, 1, 2, 1, 1, 2);
  secondNear.GetDistance(across, r);
  EXPECT_TRUE(Is(r.Point1(), secondNear.Point2()));
  across.GetDistance(secondNear, r);
  EXPECT_TRUE(Is(r.Point2(), secondNear.Point2()));
}

TEST(GslSegmentDistance, AmongEqualDistancesTheEarliestCandidateWins) {
  const gsl_Segment a = Segment(0, 0, 0, 2, 0, 0);
  const gsl_Segment b = Segment(0, 1, 0, 2, 1, 0);
  gsl_Segment r;
  a.GetDistance(b, r);
  EXPECT_TRUE(Is(r.Point1(), a.Point1()));
  EXPECT_TRUE(IsAt(r.Point2(), 0.0, 1.0, 0.0));
  EXPECT_FALSE(SharesAnEndPointsIdentity(r.Point2(), a, b)) << "a foot, even at an end";
}

TEST(GslSegmentDistance, DegenerateSegmentsAreMeasuredAsTheirFirstPoint) {
  const gsl_Segment dot = Segment(1, 2, 0, 1, 2, 0);
  const gsl_Segment a = Segment(0, 0, 0, 4, 0, 0);
  gsl_Segment r;
  dot.GetDistance(a, r);
  EXPECT_EQ(r.Length(), 2.0);
  EXPECT_TRUE(Is(r.Point1(), dot.Point1()));
  EXPECT_TRUE(IsAt(r.Point2(), 1.0, 0.0, 0.0));
  a.GetDistance(dot, r);
  EXPECT_EQ(r.Length(), 2.0);
  EXPECT_TRUE(IsAt(r.Point1(), 1.0, 0.0, 0.0));
  EXPECT_TRUE(Is(r.Point2(), dot.Point1()));
  const gsl_Segment far = Segment(1, 2, 7, 1, 2, 7);
  dot.GetDistance(far, r);
  EXPECT_EQ(r.Length(), 7.0);
  EXPECT_TRUE(Has(r, dot.Point1(), far.Point1()));
}

TEST(GslSegmentDistance, AtTheCapTheConnectionDeliberatelyStays) {
  const gsl_Segment a = Segment(0, 0, 0, -1, 0, 0);
  gsl_Segment r = Segment(1, 2, 3, 4, 5, 6);
  const gsl_Segment before(r);
  a.GetDistance(Segment(1e10, 0, 0, 2e10, 0, 0), r);
  EXPECT_TRUE(Has(r, before.Point1(), before.Point2()));
  EXPECT_EQ(r.Uid(), before.Uid());
  const gsl_Segment below = Segment(Below(1e10), 0, 0, 2e10, 0, 0);
  a.GetDistance(below, r);
  EXPECT_TRUE(Has(r, a.Point1(), below.Point1()));
}

TEST(GslSegmentDistance, NaNLeavesTheConnection) {
  gsl_Segment r = Segment(1, 2, 3, 4, 5, 6);
  const gsl_Segment before(r);
  Segment(kNaN, 0, 0, kNaN, 1, 0).GetDistance(Segment(0, 0, 0, 1, 0, 0), r);
  EXPECT_TRUE(Has(r, before.Point1(), before.Point2()));
  EXPECT_EQ(r.Uid(), before.Uid());
}

TEST(GslSegmentDistance, TheConnectionMayBeOneOfTheSegments) {
  gsl_Segment a = Segment(0, 0, 0, 2, 0, 0);
  const gsl_Segment b = Segment(1, 3, 4, 1, 9, 4);
  a.GetDistance(b, a);
  EXPECT_TRUE(IsAt(a.Point1(), 1.0, 0.0, 0.0));
  EXPECT_TRUE(Is(a.Point2(), b.Point1()));
  gsl_Segment c = Segment(1, 3, 4, 1, 9, 4);
  const gsl_Point first = c.Point1();
  Segment(0, 0, 0, 2, 0, 0).GetDistance(c, c);
  EXPECT_TRUE(IsAt(c.Point1(), 1.0, 0.0, 0.0));
  EXPECT_TRUE(Is(c.Point2(), first));
}

/// Returns the least value of a convex function on [0, 1]. Each step narrows the interval to two
/// thirds.
template <class Function>
long double Least(const Function& f) {
  long double low = 0;
  long double high = 1;
  for (int i = 0; i < 80; ++i) {
    const long double third = (high - low) / 3;
    if (f(low + third) < f(high - third)) {
      high -= third;
    } else {
      low += third;
    }
  }
  return f((low + high) / 2);
}

/// The squared distance is convex in both parameters, and so is its least over one of them.
long double DistanceByNarrowing(const gsl_Segment& a, const gsl_Segment& b) {
  const auto at = [](const gsl_Segment& g, long double t, unsigned int i) {
    return g.Point1()[i] + (static_cast<long double>(g.Point2()[i]) - g.Point1()[i]) * t;
  };
  return std::sqrt(Least([&](long double s) {
    return Least([&](long double t) {
      long double sum = 0;
      for (unsigned int i = 0; i < 3; ++i) {
        const long double d = at(a, s, i) - at(b, t, i);
        sum += d * d;
      }
      return sum;
    });
  }));
}

TEST(GslSegmentDistance, RandomSegmentsAgreeWithNarrowing) {
  RandomNumbers random(0x5E6);
  const auto point = [&random] {
    return gsl_Point(random.In(-2.0, 2.0), random.In(-2.0, 2.0), random.In(-2.0, 2.0));
  };
  for (int i = 0; i < 200; ++i) {
    const gsl_Segment a(point(), point());
    const gsl_Segment b(point(), point());
    gsl_Segment r;
    a.GetDistance(b, r);
    EXPECT_NEAR(r.Length(), static_cast<double>(DistanceByNarrowing(a, b)), 2e-6) << "case " << i;
  }
}

} // namespace
