#include "gsl_Point.h"

#include "Numbers.h"
#include "RandomNumbers.h"
#include "ScopedSettings.h"
#include "VirtualSlot.h"
#include "gsl_EntityPredicates.h"
#include "gsl_Matrix.h"
#include "gsl_Plane.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

using numbers::Above;
using numbers::Below;
using numbers::Bits;
using numbers::kInfinity;
using numbers::kNaN;
using numbers::kSentinel;

namespace {

/// An output point that holds the sentinel. It reports whether the point is unchanged.
struct OutPoint {
  gsl_Point p{kSentinel, kSentinel, kSentinel};
  cls_Uid before = p.uid;

  bool Untouched() const {
    return p.x == kSentinel && p.y == kSentinel && p.z == kSentinel && p.uid == before;
  }
};

double Tolerance() {
  return omi_Singleton<gsl_Util>::Instance().linearTolerance;
}

const gsl_Plane& GroundPlane() {
  static const gsl_Plane plane(gsl_Point(0.0, 0.0, 0.0), gsl_Vector(0.0, 0.0, 1.0));
  return plane;
}

} // namespace

// ---- layout and identity

TEST(GslPoint, CoordinatesComeFirstAndTheIdentityLast) {
  const gsl_Point p(1.0, 2.0, 3.0);
  const auto offset = [&p](const void* field) {
    return static_cast<const char*>(field) - reinterpret_cast<const char*>(&p);
  };
  EXPECT_TRUE(std::is_polymorphic<gsl_Point>::value);
  EXPECT_EQ(offset(&p.x), 8);
  EXPECT_EQ(offset(&p.y), 16);
  EXPECT_EQ(offset(&p.z), 24);
  EXPECT_EQ(offset(&p.uid), 32);
  EXPECT_EQ(sizeof(cls_Uid), 16u);
  EXPECT_EQ(sizeof(gsl_Point), 48u);
}

TEST(GslPoint, TypeNumberIsTheFirstRowOfTheModule) {
  EXPECT_EQ(gsl_Point().DynTypeId(), 50987009u);
  EXPECT_EQ(gsl_Point::TypeId(), 0x30A0001u);
}

TEST(GslPoint, WritingIsTheOnlyVirtualOperation) {
  EXPECT_FALSE(std::has_virtual_destructor_v<gsl_Point>);
  EXPECT_EQ(VirtualSlot(&gsl_Point::DBWrite), 0);
  EXPECT_EQ(VirtualSlot(&gsl_Point::DynTypeId), -1);
}

TEST(GslPoint, EveryConstructorButTheCopyTakesAFreshIdentity) {
  const gsl_Point a, b(1.0, 2.0, 3.0), weighted(a, 0.5, b, 0.5), middle(a, b);
  const cls_Uid uids[] = {a.uid, b.uid, weighted.uid, middle.uid};
  for (int i = 0; i < 4; ++i) {
    EXPECT_FALSE(uids[i].IsNull());
    for (int j = 0; j < i; ++j)
      EXPECT_NE(uids[i], uids[j]);
  }
}

TEST(GslPoint, CopyAndAssignmentShareTheIdentity) {
  const gsl_Point a(1.0, 2.0, 3.0);
  const gsl_Point copy(a);
  EXPECT_XYZ(copy, 1.0, 2.0, 3.0);
  EXPECT_EQ(copy.uid, a.uid);
  gsl_Point assigned(7.0, 8.0, 9.0);
  assigned = a;
  EXPECT_XYZ(assigned, 1.0, 2.0, 3.0);
  EXPECT_EQ(assigned.uid, a.uid);
}

TEST(GslPoint, ConstructorsPlaceTheCoordinates) {
  EXPECT_XYZ(gsl_Point(), 0.0, 0.0, 0.0);
  const gsl_Point a(1.0, 2.0, 4.0), b(3.0, -2.0, 8.0);
  EXPECT_XYZ(gsl_Point(a, b), 2.0, 0.0, 6.0);
  // The weights are not normalised.
  EXPECT_XYZ(gsl_Point(a, 2.0, b, -1.0), -1.0, 6.0, 0.0);
  EXPECT_XYZ(gsl_Point(a, 0.0, b, 0.0), 0.0, 0.0, 0.0);
}

TEST(GslPoint, MidpointIsHalfOfTheSum) {
  // The sum overflows before it is halved.
  const gsl_Point big(1.5e308, 0.0, 0.0);
  EXPECT_EQ(gsl_Point(big, big).x, kInfinity);
}

// ---- operators

TEST(GslPoint, EqualityComparesASquaredDistanceClosed) {
  const gsl_Point o(0.0, 0.0, 0.0);
  EXPECT_TRUE(o == gsl_Point(9e-7, 0.0, 0.0));
  EXPECT_FALSE(o == gsl_Point(1.1e-6, 0.0, 0.0));
  const ScopedSettings settings;
  settings->zeroTolerance = 0.25;
  EXPECT_TRUE(o == gsl_Point(0.0, 0.5, 0.0));
  EXPECT_FALSE(o != gsl_Point(0.0, 0.5, 0.0));
  EXPECT_FALSE(o == gsl_Point(0.0, 0.0, Above(0.5)));
  EXPECT_TRUE(o != gsl_Point(0.0, 0.0, Above(0.5)));
  settings->zeroTolerance = Below(0.25);
  EXPECT_FALSE(o == gsl_Point(0.0, 0.5, 0.0));
  settings->zeroTolerance = 0.0;
  EXPECT_TRUE(o == gsl_Point(0.0, -0.0, 0.0));
}

TEST(GslPoint, EqualityUsesNoOtherTolerance) {
  const ScopedSettings settings;
  settings->linearTolerance = settings->cosineTolerance = settings->coarseTolerance = 100.0;
  EXPECT_FALSE(gsl_Point(0.0, 0.0, 0.0) == gsl_Point(1.0, 0.0, 0.0));
}

TEST(GslPoint, EqualsItselfEvenWithNaN) {
  const gsl_Point nan(kNaN, 0.0, 0.0);
  const gsl_Point& same = nan;
  EXPECT_TRUE(nan == same);
  EXPECT_FALSE(nan != same);
  EXPECT_FALSE(nan == gsl_Point(nan));
}

TEST(GslPoint, EqualityIgnoresTheIdentity) {
  EXPECT_TRUE(gsl_Point(1.0, 2.0, 3.0) == gsl_Point(1.0, 2.0, 3.0));
}

TEST(GslPoint, GreaterIsStrictDominanceInAllCoordinates) {
  const gsl_Point p(1.0, 2.0, 3.0);
  EXPECT_TRUE(p > gsl_Point(0.0, 1.0, 2.0));
  EXPECT_FALSE(p > gsl_Point(0.0, 2.0, 2.0));
  EXPECT_FALSE(p > gsl_Point(1.0, 1.0, 2.0));
  EXPECT_FALSE(p > gsl_Point(0.0, 1.0, 3.0));
  EXPECT_FALSE(p > gsl_Point(-9.0, -9.0, 4.0)) << "not lexicographic";
  EXPECT_TRUE(p > gsl_Point(Below(1.0), Below(2.0), Below(3.0))) << "no tolerance";
  const gsl_Point& same = p;
  EXPECT_FALSE(p > same);
  EXPECT_FALSE(p > gsl_Point(kNaN, 0.0, 0.0));
}

TEST(GslPoint, GreaterOrEqualIsDominanceInEveryCoordinate) {
  const gsl_Point p(1.0, 2.0, 3.0);
  EXPECT_TRUE(p >= gsl_Point(1.0, 2.0, 3.0));
  EXPECT_TRUE(p >= gsl_Point(0.0, 2.0, 3.0));
  EXPECT_FALSE(p >= gsl_Point(Above(1.0), 2.0, 3.0));
  EXPECT_FALSE(p >= gsl_Point(1.0, Above(2.0), 3.0));
  EXPECT_FALSE(p >= gsl_Point(1.0, 2.0, Above(3.0)));
  EXPECT_FALSE(p >= gsl_Point(-9.0, -9.0, 4.0));
  const gsl_Point nan(kNaN, kNaN, kNaN);
  const gsl_Point& same = nan;
  EXPECT_TRUE(nan >= same);
  EXPECT_TRUE(nan >= p) << "no coordinate of p is greater";
  EXPECT_FALSE(gsl_Point(kNaN, 0.0, 0.0) >= p);
}

TEST(GslPoint, SumAndDifferenceAreFreshPoints) {
  const gsl_Point p(1.0, 2.0, 3.0);
  const gsl_Vector v(10.0, 20.0, -30.0);
  const gsl_Point plus = p + v;
  const gsl_Point minus = p - v;
  EXPECT_XYZ(plus, 11.0, 22.0, -27.0);
  EXPECT_XYZ(minus, -9.0, -18.0, 33.0);
  EXPECT_NE(plus.uid, p.uid);
  EXPECT_NE(minus.uid, p.uid);
  EXPECT_NE(plus.uid, minus.uid);
}

TEST(GslPoint, EveryIndexAboveOneIsZ) {
  const gsl_Point p(1.0, 2.0, 3.0);
  EXPECT_EQ(p[0], 1.0);
  EXPECT_EQ(p[1], 2.0);
  EXPECT_EQ(p[2], 3.0);
  EXPECT_EQ(p[9], 3.0);
  gsl_Point w;
  const cls_Uid before = w.uid;
  w[0] = 4.0;
  w[1] = 5.0;
  w[100] = 6.0;
  EXPECT_XYZ(w, 4.0, 5.0, 6.0);
  EXPECT_EQ(w.uid, before);
}

TEST(GslPoint, TransformRotatesTranslatesAndKeepsTheIdentity) {
  gsl_Matrix m;
  m.SetRow(0, gsl_Vector(0.0, -1.0, 0.0));
  m.SetRow(1, gsl_Vector(1.0, 0.0, 0.0));
  m.SetTranslation(gsl_Vector(100.0, 200.0, 300.0));
  gsl_Point p(1.0, 2.0, 3.0);
  const cls_Uid before = p.uid;
  p.Transform(m);
  EXPECT_XYZ(p, 98.0, 201.0, 303.0);
  EXPECT_EQ(p.uid, before);
}

TEST(GslPoint, PrintWritesOneLabelledLine) {
  std::ostringstream out;
  gsl_Point(1.5, -2.0, 1.0 / 3.0).Print(out, 3);
  EXPECT_EQ(out.str(), "   x:\t1.5\ty:\t-2\tz:\t0.333333333333333\n");
  std::ostringstream none;
  gsl_Point().Print(none, 0);
  EXPECT_EQ(none.str(), "x:\t0\ty:\t0\tz:\t0\n");
}

// ---- distances

TEST(GslPointDistance, ToAPointIsEuclidean) {
  EXPECT_EQ(gsl_Point(1.0, 2.0, 3.0).GetDistance(gsl_Point(3.0, 5.0, 9.0)), 7.0);
  EXPECT_EQ(gsl_Point(3.0, 5.0, 9.0).GetDistance(gsl_Point(1.0, 2.0, 3.0)), 7.0);
  const gsl_Point p(1.0, 2.0, 3.0);
  EXPECT_EQ(p.GetDistance(p), 0.0);
}

TEST(GslPointDistance, ToALineIsAcrossIt) {
  const gsl_StLine line(gsl_Point(1.0, 0.0, 0.0), gsl_Vector(0.0, 0.0, 2.0));
  EXPECT_EQ(gsl_Point(4.0, 4.0, 77.0).GetDistance(line), 5.0);
  EXPECT_EQ(gsl_Point(1.0, 0.0, -9.0).GetDistance(line), 0.0);
  const gsl_StLine none(gsl_Point(1.0, 0.0, 0.0), gsl_Vector(0.0, 0.0, 0.0));
  EXPECT_TRUE(std::isnan(gsl_Point(4.0, 4.0, 4.0).GetDistance(none)));
}

TEST(GslPointDistance, ToAPlaneIsSignedAlongTheNormal) {
  const gsl_Plane plane(gsl_Point(0.0, 0.0, 1.0), gsl_Vector(0.0, 0.0, 4.0));
  const gsl_Point above(5.0, 6.0, 4.0), below(5.0, 6.0, -2.0), on(5.0, 6.0, 1.0);
  EXPECT_EQ(above.GetSignedDistance(plane), 3.0);
  EXPECT_EQ(below.GetSignedDistance(plane), -3.0);
  EXPECT_EQ(above.GetDistance(plane), 3.0);
  EXPECT_EQ(below.GetDistance(plane), 3.0);
  EXPECT_EQ(on.GetDistance(plane), 0.0);
  const gsl_Plane none(gsl_Point(), gsl_Vector(0.0, 0.0, 0.0));
  EXPECT_TRUE(std::isnan(above.GetSignedDistance(none)));
  EXPECT_TRUE(std::isnan(above.GetDistance(none)));
}

TEST(GslPointDistance, ASignedDistanceOfZeroIsNegated) {
  EXPECT_EQ(Bits(gsl_Point(1.0, 1.0, 0.0).GetDistance(GroundPlane())), Bits(-0.0));
}

TEST(GslPointDistance, AlongADirectionDividesByItsShareOfTheNormal) {
  const gsl_Plane plane(gsl_Point(0.0, 0.0, 0.0), gsl_Vector(0.0, 0.0, 2.0));
  const gsl_Point p(1.0, 1.0, 6.0);
  EXPECT_EQ(p.GetDistance(plane, gsl_Vector(0.0, 0.0, 5.0)), 6.0);
  // (3, 0, 4): 6 / cos with cos 4/5.
  EXPECT_EQ(p.GetDistance(plane, gsl_Vector(3.0, 0.0, 4.0)), 7.5);
}

TEST(GslPointDistance, AlongADirectionAgainstTheNormalIsNegative) {
  const gsl_Point p(1.0, 1.0, 6.0), below(1.0, 1.0, -6.0);
  EXPECT_EQ(p.GetDistance(GroundPlane(), gsl_Vector(0.0, 0.0, -1.0)), -6.0);
  EXPECT_EQ(p.GetDistance(GroundPlane(), gsl_Vector(3.0, 0.0, -4.0)), -7.5);
  // The side of the point does not matter, the distance is unsigned.
  EXPECT_EQ(below.GetDistance(GroundPlane(), gsl_Vector(0.0, 0.0, -1.0)), -6.0);
  EXPECT_EQ(below.GetDistance(GroundPlane(), gsl_Vector(0.0, 0.0, 1.0)), 6.0);
}

TEST(GslPointDistance, AlongADirectionInThePlaneIsUnguarded) {
  const gsl_Vector x(1.0, 0.0, 0.0);
  EXPECT_EQ(gsl_Point(0.0, 0.0, 6.0).GetDistance(GroundPlane(), x), kInfinity);
  EXPECT_TRUE(std::isnan(gsl_Point(0.0, 0.0, 0.0).GetDistance(GroundPlane(), x)));
  // Nearly in the plane, within the tolerance of orthogonality: still computed.
  EXPECT_NEAR(gsl_Point(0.0, 0.0, 6.0).GetDistance(GroundPlane(), gsl_Vector(1.0, 0.0, 1e-12)),
              6e12, 1.0);
}

TEST(GslPointDistance, OrthogonalityIsEvaluatedAndIgnored) {
  const ScopedSettings settings;
  const gsl_Plane plane(gsl_Point(0.0, 0.0, 0.0), gsl_Vector(0.0, 0.0, 1.0));
  const gsl_Point p(0.0, 0.0, 6.0);
  const gsl_Vector slanted(3.0, 0.0, 4.0);
  // With one tolerance everything is orthogonal, with the other nothing. The distance is the same.
  settings->cosineTolerance = 10.0;
  EXPECT_EQ(p.GetDistance(plane, slanted), 7.5);
  settings->cosineTolerance = -1.0;
  EXPECT_EQ(p.GetDistance(plane, slanted), 7.5);
  // The test reads the settings, so the first read makes them.
  omi_Singleton<gsl_Util>::Destroy();
  EXPECT_EQ(p.GetDistance(plane, slanted), 7.5);
  EXPECT_TRUE(omi_Singleton<gsl_Util>::Exists());
}

TEST(GslPointDistance, ToASegmentIsToTheFootWithinTheSpan) {
  const gsl_Segment segment(gsl_Point(0.0, 0.0, 0.0), gsl_Point(4.0, 0.0, 0.0));
  OutPoint out;
  EXPECT_EQ(gsl_Point(1.0, 3.0, 4.0).GetDistance(segment, out.p), 5.0);
  EXPECT_XYZ(out.p, 1.0, 0.0, 0.0);
  EXPECT_NE(out.p.uid, out.before);
  EXPECT_NE(out.p.uid, segment.Point1().uid);
  EXPECT_NE(out.p.uid, segment.Point2().uid);
}

TEST(GslPointDistance, ToASegmentFromBeyondItsSpanIsToTheNearerEnd) {
  const gsl_Segment segment(gsl_Point(0.0, 0.0, 0.0), gsl_Point(4.0, 0.0, 0.0));
  OutPoint out;
  EXPECT_EQ(gsl_Point(-3.0, 4.0, 0.0).GetDistance(segment, out.p), 5.0);
  EXPECT_XYZ(out.p, 0.0, 0.0, 0.0);
  EXPECT_EQ(out.p.uid, segment.Point1().uid);
  EXPECT_EQ(gsl_Point(7.0, 4.0, 0.0).GetDistance(segment, out.p), 5.0);
  EXPECT_XYZ(out.p, 4.0, 0.0, 0.0);
  EXPECT_EQ(out.p.uid, segment.Point2().uid);
}

TEST(GslPointDistance, AFootAtTheEndIsAComputedPoint) {
  const gsl_Segment segment(gsl_Point(0.0, 0.0, 0.0), gsl_Point(2.0, 0.0, 0.0));
  OutPoint out;
  EXPECT_EQ(gsl_Point(2.0, 3.0, 0.0).GetDistance(segment, out.p), 3.0);
  EXPECT_XYZ(out.p, 2.0, 0.0, 0.0);
  EXPECT_NE(out.p.uid, segment.Point2().uid);
  // Within the tolerance of the end the foot counts, and lies beyond it.
  const double beyond = 2.0 + 0.5 * omi_Singleton<gsl_Util>::Instance().linearTolerance;
  EXPECT_EQ(gsl_Point(beyond, 3.0, 0.0).GetDistance(segment, out.p), 3.0);
  EXPECT_GT(out.p.x, 2.0);
  EXPECT_NEAR(out.p.x, beyond, 1e-15);
  EXPECT_NE(out.p.uid, segment.Point2().uid);
}

TEST(GslPointDistance, ToASegmentATieOfTheEndsIsPointTwo) {
  // A tie needs a projection that fails in the middle of the segment. A tolerance of NaN makes it
  // fail.
  const ScopedSettings settings;
  settings->linearTolerance = kNaN;
  const gsl_Segment segment(gsl_Point(-1.0, 0.0, 0.0), gsl_Point(1.0, 0.0, 0.0));
  OutPoint out;
  EXPECT_EQ(gsl_Point(0.0, 1.0, 0.0).GetDistance(segment, out.p), std::sqrt(2.0));
  EXPECT_XYZ(out.p, 1.0, 0.0, 0.0);
  EXPECT_EQ(out.p.uid, segment.Point2().uid);
}

TEST(GslPointDistance, ToASegmentATieByRoundingIsPointTwo) {
  // The point is so far beyond a short segment that both distances round to one number.
  const gsl_Segment segment(gsl_Point(0.0, 0.0, 0.0), gsl_Point(1.0, 0.0, 0.0));
  for (const double x : {-1e17, 1e17}) {
    OutPoint out;
    EXPECT_EQ(gsl_Point(x, 0.0, 0.0).GetDistance(segment, out.p), 1e17);
    EXPECT_EQ(out.p.uid, segment.Point2().uid);
  }
}

TEST(GslPointDistance, ToADegenerateSegmentIsToTheOldClosestPoint) {
  const gsl_Segment segment(gsl_Point(5.0, 5.0, 5.0), gsl_Point(5.0, 5.0, 5.0 + 1e-7));
  gsl_Point closest(0.0, 3.0, 4.0);
  const cls_Uid before = closest.uid;
  EXPECT_EQ(gsl_Point(0.0, 0.0, 0.0).GetDistance(segment, closest), 5.0);
  EXPECT_XYZ(closest, 0.0, 3.0, 4.0);
  EXPECT_EQ(closest.uid, before);
}

TEST(GslPointDistance, ToATriangleFromOverItsFace) {
  const gsl_Point a(0.0, 0.0, 0.0), b(4.0, 0.0, 0.0), c(0.0, 4.0, 0.0);
  EXPECT_EQ(gsl_Point(1.0, 1.0, 5.0).GetDistance(a, b, c), 5.0);
  EXPECT_EQ(gsl_Point(1.0, 1.0, -5.0).GetDistance(a, b, c), 5.0);
  EXPECT_EQ(gsl_Point(1.0, 1.0, 0.0).GetDistance(a, b, c), 0.0);
}

TEST(GslPointDistance, ToATriangleFromBesideItIsToTheNearestEdgeOrVertex) {
  const gsl_Point a(0.0, 0.0, 0.0), b(4.0, 0.0, 0.0), c(0.0, 4.0, 0.0);
  const gsl_Point corners[3] = {a, b, c};
  int order[3] = {0, 1, 2};
  do {
    const gsl_Point &p1 = corners[order[0]], &p2 = corners[order[1]], &p3 = corners[order[2]];
    EXPECT_NEAR(gsl_Point(2.0, -3.0, 4.0).GetDistance(p1, p2, p3), 5.0, 1e-14);
    EXPECT_NEAR(gsl_Point(-2.0, -3.0, 6.0).GetDistance(p1, p2, p3), 7.0, 1e-14);
    EXPECT_NEAR(gsl_Point(4.0, 4.0, 0.0).GetDistance(p1, p2, p3), 2.0 * std::sqrt(2.0), 1e-14);
    EXPECT_NEAR(gsl_Point(7.0, -4.0, 0.0).GetDistance(p1, p2, p3), 5.0, 1e-14);
  } while (std::next_permutation(order, order + 3));
}

TEST(GslPointDistance, ToATriangleWithATinyEdgeIsToThatEdgesEnd) {
  // The edge p1-p2 is shorter than the tolerance, yet the triangle has a normal.
  const gsl_Point a(10.0, 0.0, 0.0), b(10.0, 5e-7, 0.0), c(20.0, 0.0, 0.0);
  EXPECT_NEAR(gsl_Point(7.0, 4.0, 0.0).GetDistance(a, b, c), 5.0, 1e-6);
}

TEST(GslPointDistance, ToATriangleWithoutANormalIsNaN) {
  const gsl_Point a(0.0, 0.0, 0.0), b(1.0, 0.0, 0.0), c(2.0, 0.0, 0.0);
  EXPECT_TRUE(std::isnan(gsl_Point(0.0, 3.0, 0.0).GetDistance(a, b, c)));
}

RC_GTEST_PROP(GslPointDistance, ToATriangleIsTheLeastOverASampling, ()) {
  const auto coordinate = [] { return *rc::gen::inRange(-40, 40) / 8.0; };
  const auto point = [&] { return gsl_Point(coordinate(), coordinate(), coordinate()); };
  const gsl_Point p = point(), a = point(), b = point(), c = point();
  RC_PRE(gsl_Vector(a, b).CrossProduct(gsl_Vector(b, c)).magnitude > 0.01);
  const double distance = p.GetDistance(a, b, c);
  double sampled = kInfinity;
  constexpr int kSteps = 24;
  for (int i = 0; i <= kSteps; ++i) {
    for (int j = 0; i + j <= kSteps; ++j) {
      const double u = static_cast<double>(i) / kSteps, v = static_cast<double>(j) / kSteps;
      const gsl_Point s(gsl_Point(a, 1.0 - u - v, b, u), 1.0, c, v);
      sampled = std::min(sampled, p.GetDistance(s));
    }
  }
  RC_ASSERT(distance <= sampled + 1e-9);
  // The longest edge is below 18, so a point of the grid is at most 18 / steps away.
  RC_ASSERT(distance >= sampled - 18.0 / kSteps);
}

// ---- lying on something

TEST(GslPointIsOn, APointIsStrict) {
  const gsl_Point o(0.0, 0.0, 0.0);
  EXPECT_TRUE(o.IsOn(gsl_Point(Below(Tolerance()), 0.0, 0.0)));
  EXPECT_FALSE(o.IsOn(gsl_Point(Tolerance(), 0.0, 0.0)));
}

TEST(GslPointIsOn, ALineIsStrict) {
  const gsl_StLine line(gsl_Point(0.0, 0.0, 0.0), gsl_Vector(0.0, 0.0, 1.0));
  EXPECT_TRUE(gsl_Point(0.0, Below(Tolerance()), 50.0).IsOn(line));
  EXPECT_FALSE(gsl_Point(0.0, Tolerance(), 50.0).IsOn(line));
}

TEST(GslPointIsOn, APlaneIsStrictOnBothSides) {
  EXPECT_TRUE(gsl_Point(3.0, 4.0, Below(Tolerance())).IsOn(GroundPlane()));
  EXPECT_FALSE(gsl_Point(3.0, 4.0, Tolerance()).IsOn(GroundPlane()));
  EXPECT_TRUE(gsl_Point(3.0, 4.0, -Below(Tolerance())).IsOn(GroundPlane()));
  EXPECT_FALSE(gsl_Point(3.0, 4.0, -Tolerance()).IsOn(GroundPlane()));
}

TEST(GslPointIsOn, ReadsTheToleranceAtOnce) {
  const ScopedSettings settings;
  const gsl_Point p(0.0, 0.0, 0.5), o(0.0, 0.0, 0.0);
  const gsl_StLine line(o, gsl_Vector(1.0, 0.0, 0.0));
  settings->linearTolerance = Above(0.5);
  EXPECT_TRUE(p.IsOn(o));
  EXPECT_TRUE(p.IsOn(line));
  EXPECT_TRUE(p.IsOn(GroundPlane()));
  settings->linearTolerance = 0.5;
  EXPECT_FALSE(p.IsOn(o));
  EXPECT_FALSE(p.IsOn(line));
  EXPECT_FALSE(p.IsOn(GroundPlane()));
}

TEST(GslPointIsOn, NothingLiesOnALineOrPlaneWithoutADirection) {
  const gsl_Point o(0.0, 0.0, 0.0);
  EXPECT_FALSE(o.IsOn(gsl_StLine(o, gsl_Vector(0.0, 0.0, 0.0))));
  EXPECT_FALSE(o.IsOn(gsl_Plane(o, gsl_Vector(0.0, 0.0, 0.0))));
  EXPECT_FALSE(o.IsOn(gsl_Point(kNaN, 0.0, 0.0)));
}

// ---- projections

TEST(GslPointProjectOn, ALineWritesTheSignedDistanceAlongIt) {
  const gsl_StLine line(gsl_Point(1.0, 1.0, 0.0), gsl_Vector(0.0, 0.0, -2.0));
  gsl_Point p(4.0, 5.0, 6.0);
  double t = kSentinel;
  const gsl_Point foot = p.ProjectOn(line, t);
  EXPECT_EQ(t, -6.0);
  EXPECT_XYZ(foot, 1.0, 1.0, 6.0);
  EXPECT_NE(foot.uid, p.uid);
  EXPECT_NE(foot.uid, line.PointOn().uid);
}

TEST(GslPointProjectOn, ALineWithoutADirectionReturnsItsPoint) {
  const gsl_StLine line(gsl_Point(1.0, 2.0, 3.0), gsl_Vector(0.0, 0.0, 1e-7));
  gsl_Point p(4.0, 5.0, 6.0);
  double t = kSentinel;
  EXPECT_XYZ(p.ProjectOn(line, t), 1.0, 2.0, 3.0);
  EXPECT_EQ(t, 0.0);
}

TEST(GslPointProjectOn, APlaneReturnsTheFoot) {
  const gsl_Plane plane(gsl_Point(0.0, 0.0, 1.0), gsl_Vector(0.0, 0.0, -4.0));
  gsl_Point p(5.0, 6.0, 9.0);
  const gsl_Point foot = p.ProjectOn(plane);
  EXPECT_XYZ(foot, 5.0, 6.0, 1.0);
  EXPECT_NE(foot.uid, p.uid);
}

TEST(GslPointProjectOn, ReadsTheToleranceAtOnce) {
  const ScopedSettings settings;
  gsl_Point p(3.0, 4.0, 5.0);
  const gsl_StLine line(gsl_Point(1.0, 0.0, 0.0), gsl_Vector(2.0, 0.0, 0.0));
  const gsl_Plane plane(gsl_Point(0.0, 0.0, 1.0), gsl_Vector(0.0, 0.0, 2.0));
  double t = kSentinel;
  // A direction and a normal of length 2 are too short, or just long enough.
  settings->linearTolerance = Above(2.0);
  EXPECT_XYZ(p.ProjectOn(line, t), 1.0, 0.0, 0.0);
  EXPECT_EQ(t, 0.0);
  EXPECT_XYZ(p.ProjectOn(plane), 3.0, 4.0, 5.0);
  settings->linearTolerance = 2.0;
  EXPECT_XYZ(p.ProjectOn(line, t), 3.0, 0.0, 0.0);
  EXPECT_EQ(t, 2.0);
  EXPECT_XYZ(p.ProjectOn(plane), 3.0, 4.0, 1.0);
}

template <class P, class... Arguments>
using CanProject = decltype(std::declval<P&>().ProjectOn(std::declval<Arguments>()...));

template <class, class P, class... Arguments>
struct Projects : std::false_type {};
template <class P, class... Arguments>
struct Projects<std::void_t<CanProject<P, Arguments...>>, P, Arguments...> : std::true_type {};

TEST(GslPointProjectOn, ProjectionsNeedAPointThatIsNotConst) {
  EXPECT_TRUE((Projects<void, gsl_Point, const gsl_StLine&, double&>::value));
  EXPECT_FALSE((Projects<void, const gsl_Point, const gsl_StLine&, double&>::value));
  EXPECT_TRUE((Projects<void, gsl_Point, const gsl_Plane&>::value));
  EXPECT_FALSE((Projects<void, const gsl_Point, const gsl_Plane&>::value));
  // The projection on a segment accepts a constant point.
  EXPECT_TRUE((Projects<void, const gsl_Point, const gsl_Segment&, gsl_Point&, double&>::value));
}

TEST(GslPointProjectOn, ASegmentWritesTheFootAndItsFraction) {
  const gsl_Segment segment(gsl_Point(2.0, 0.0, 0.0), gsl_Point(6.0, 0.0, 0.0));
  OutPoint out;
  double t = kSentinel;
  EXPECT_TRUE(gsl_Point(3.0, 7.0, 0.0).ProjectOn(segment, out.p, t));
  EXPECT_EQ(t, 0.25);
  EXPECT_XYZ(out.p, 3.0, 0.0, 0.0);
  EXPECT_NE(out.p.uid, out.before);
}

TEST(GslPointProjectOn, ASegmentBeyondItsEndsFailsButWritesTheOutputs) {
  const gsl_Segment segment(gsl_Point(2.0, 0.0, 0.0), gsl_Point(6.0, 0.0, 0.0));
  OutPoint out;
  double t = kSentinel;
  EXPECT_FALSE(gsl_Point(8.0, 7.0, 0.0).ProjectOn(segment, 0.5, out.p, t));
  EXPECT_EQ(t, 1.5);
  EXPECT_XYZ(out.p, 8.0, 0.0, 0.0);
  EXPECT_NE(out.p.uid, out.before);
  EXPECT_FALSE(gsl_Point(0.0, 7.0, 0.0).ProjectOn(segment, out.p, t));
  EXPECT_EQ(t, -0.5);
  EXPECT_XYZ(out.p, 0.0, 0.0, 0.0);
}

TEST(GslPointProjectOn, ASegmentIsOpenAtExactlyTheTolerance) {
  // Length 4, tolerance 1: fractions -0.25 and 1.25 are the limits.
  const gsl_Segment segment(gsl_Point(0.0, 0.0, 0.0), gsl_Point(4.0, 0.0, 0.0));
  OutPoint out;
  double t = 0.0;
  EXPECT_FALSE(gsl_Point(-1.0, 0.0, 0.0).ProjectOn(segment, 1.0, out.p, t));
  EXPECT_EQ(t, -0.25);
  EXPECT_TRUE(gsl_Point(Above(-1.0), 0.0, 0.0).ProjectOn(segment, 1.0, out.p, t));
  EXPECT_FALSE(gsl_Point(5.0, 0.0, 0.0).ProjectOn(segment, 1.0, out.p, t));
  EXPECT_EQ(t, 1.25);
  EXPECT_TRUE(gsl_Point(Below(5.0), 0.0, 0.0).ProjectOn(segment, 1.0, out.p, t));
}

TEST(GslPointProjectOn, ASegmentWithoutAToleranceOfItsOwnTakesTheSetting) {
  const ScopedSettings settings;
  settings->linearTolerance = 1.0;
  const gsl_Segment segment(gsl_Point(0.0, 0.0, 0.0), gsl_Point(4.0, 0.0, 0.0));
  OutPoint out;
  double t = 0.0;
  EXPECT_FALSE(gsl_Point(5.0, 0.0, 0.0).ProjectOn(segment, out.p, t));
  EXPECT_TRUE(gsl_Point(Below(5.0), 0.0, 0.0).ProjectOn(segment, out.p, t));
  settings->linearTolerance = 1e-6;
  EXPECT_FALSE(gsl_Point(Below(5.0), 0.0, 0.0).ProjectOn(segment, out.p, t));
}

TEST(GslPointProjectOn, DegenerateSegmentSucceedsAndLeavesTheOutputs) {
  const gsl_Segment segment(gsl_Point(1.0, 0.0, 0.0), gsl_Point(1.0, 1e-7, 0.0));
  OutPoint out;
  double t = kSentinel;
  EXPECT_TRUE(gsl_Point(50.0, 50.0, 50.0).ProjectOn(segment, out.p, t));
  EXPECT_TRUE(out.Untouched());
  EXPECT_EQ(t, kSentinel);
}

TEST(GslPointProjectOn, SegmentOfExactlyTheToleranceIsNotDegenerate) {
  const gsl_Segment segment(gsl_Point(0.0, 0.0, 0.0), gsl_Point(0.5, 0.0, 0.0));
  OutPoint out;
  double t = kSentinel;
  EXPECT_TRUE(gsl_Point(0.25, 9.0, 0.0).ProjectOn(segment, 0.5, out.p, t));
  EXPECT_EQ(t, 0.5);
  EXPECT_XYZ(out.p, 0.25, 0.0, 0.0);
  OutPoint untouched;
  EXPECT_TRUE(gsl_Point(0.25, 9.0, 0.0).ProjectOn(segment, Above(0.5), untouched.p, t));
  EXPECT_TRUE(untouched.Untouched());
}

TEST(GslPointProjectOn, ATriangleWritesTheFootAndItsWeights) {
  const gsl_Point a(0.0, 0.0, 2.0), b(4.0, 0.0, 2.0), c(0.0, 4.0, 2.0);
  OutPoint out;
  double w[3] = {kSentinel, kSentinel, kSentinel};
  EXPECT_TRUE(gsl_Point(1.0, 2.0, 9.0).ProjectOn(a, b, c, out.p, w));
  EXPECT_XYZ(out.p, 1.0, 2.0, 2.0);
  EXPECT_NE(out.p.uid, out.before);
  EXPECT_EQ(w[0], 0.25);
  EXPECT_EQ(w[1], 0.25);
  EXPECT_EQ(w[2], 0.5);
}

TEST(GslPointProjectOn, ATriangleFromBesideFailsAndWritesTheOutputs) {
  const gsl_Point a(0.0, 0.0, 2.0), b(4.0, 0.0, 2.0), c(0.0, 4.0, 2.0);
  OutPoint out;
  double w[3] = {kSentinel, kSentinel, kSentinel};
  EXPECT_FALSE(gsl_Point(-4.0, -4.0, 9.0).ProjectOn(a, b, c, out.p, w));
  EXPECT_XYZ(out.p, -4.0, -4.0, 2.0);
  EXPECT_EQ(w[0], 3.0);
  EXPECT_EQ(w[1], -1.0);
  EXPECT_EQ(w[2], -1.0);
}

TEST(GslPointProjectOn, ATriangleHoldsItsBorderInEveryVertexOrder) {
  const gsl_Point corners[3] = {{0.0, 0.0, 0.0}, {4.0, 0.0, 0.0}, {0.0, 4.0, 0.0}};
  int order[3] = {0, 1, 2};
  do {
    const gsl_Point &p1 = corners[order[0]], &p2 = corners[order[1]], &p3 = corners[order[2]];
    gsl_Point out;
    double w[3];
    for (const gsl_Point& corner : corners)
      EXPECT_TRUE(corner.ProjectOn(p1, p2, p3, out, w));
    EXPECT_TRUE(gsl_Point(2.0, 0.0, 1.0).ProjectOn(p1, p2, p3, out, w));
    EXPECT_TRUE(gsl_Point(2.0, 2.0, 1.0).ProjectOn(p1, p2, p3, out, w));
    EXPECT_FALSE(gsl_Point(2.0, -0.1, 1.0).ProjectOn(p1, p2, p3, out, w));
    EXPECT_FALSE(gsl_Point(2.1, 2.1, 1.0).ProjectOn(p1, p2, p3, out, w));
  } while (std::next_permutation(order, order + 3));
}

TEST(GslPointProjectOn, ATriangleWithoutANormalSucceedsWithNaN) {
  const gsl_Point a(0.0, 0.0, 0.0), b(1.0, 0.0, 0.0), c(2.0, 0.0, 0.0);
  OutPoint out;
  double w[3] = {kSentinel, kSentinel, kSentinel};
  EXPECT_TRUE(gsl_Point(0.0, 3.0, 0.0).ProjectOn(a, b, c, out.p, w));
  EXPECT_TRUE(std::isnan(out.p.x));
  for (const double weight : w)
    EXPECT_TRUE(std::isnan(weight));
}

TEST(GslPointProjectOn, ACornerMayTakeTheResult) {
  gsl_Point a(0.0, 0.0, 2.0);
  const gsl_Point b(4.0, 0.0, 2.0), c(0.0, 4.0, 2.0);
  double w[3];
  EXPECT_TRUE(gsl_Point(1.0, 2.0, 9.0).ProjectOn(a, b, c, a, w));
  EXPECT_XYZ(a, 1.0, 2.0, 2.0);
  EXPECT_EQ(w[2], 0.5);
}

// ---- the triangle test

TEST(PointInTriangle, WeightsAreBarycentric) {
  const gsl_Point p0(0.0, 0.0, 0.0), p1(2.0, 0.0, 0.0), p2(0.0, 2.0, 0.0);
  double w[3];
  EXPECT_TRUE(pointInTriangle(p1, p0, p1, p2, w));
  EXPECT_EQ(w[0], 0.0);
  EXPECT_EQ(w[1], 1.0);
  EXPECT_EQ(w[2], 0.0);
}

TEST(PointInTriangle, AllWeightsAreWrittenWhenTheFirstFails) {
  const gsl_Point p0(0.0, 0.0, 0.0), p1(2.0, 0.0, 0.0), p2(0.0, 2.0, 0.0);
  double w[3] = {kSentinel, kSentinel, kSentinel};
  EXPECT_FALSE(pointInTriangle(gsl_Point(2.0, 2.0, 0.0), p0, p1, p2, w));
  EXPECT_EQ(w[0], -1.0);
  EXPECT_EQ(w[1], 1.0);
  EXPECT_EQ(w[2], 1.0);
}

TEST(PointInTriangle, LimitIsTheSquaredToleranceAgainstTheSquaredDoubledArea) {
  const ScopedSettings settings;
  settings->linearTolerance = 0.5;
  // Doubled area 4, nn = 16; a point at y = -d below the first edge has weight -d / 2 at the third
  // vertex, so its product is -8 d: inside up to d = 1/32, exactly included.
  const gsl_Point p0(0.0, 0.0, 0.0), p1(2.0, 0.0, 0.0), p2(0.0, 2.0, 0.0);
  double w[3];
  EXPECT_TRUE(pointInTriangle(gsl_Point(1.0, -0.03125, 0.0), p0, p1, p2, w));
  EXPECT_EQ(w[2] * 16.0, -0.25);
  EXPECT_FALSE(pointInTriangle(gsl_Point(1.0, Below(-0.03125), 0.0), p0, p1, p2, w));
  EXPECT_TRUE(pointInTriangle(gsl_Point(1.0, Above(-0.03125), 0.0), p0, p1, p2, w));
}

TEST(PointInTriangle, DegenerateTriangleIsNotRejected) {
  const gsl_Point p(1.0, 1.0, 1.0);
  double w[3] = {kSentinel, kSentinel, kSentinel};
  EXPECT_TRUE(pointInTriangle(gsl_Point(9.0, 9.0, 9.0), p, p, p, w));
  for (const double weight : w)
    EXPECT_TRUE(std::isnan(weight));
}

// ---- the segment test

TEST(PointSegmentParameters, FractionsAlongTheSegment) {
  const gsl_Point p0(1.0, 0.0, 0.0), p1(5.0, 0.0, 0.0);
  double w[2] = {kSentinel, kSentinel};
  EXPECT_TRUE(pointSegmentParameters(gsl_Point(2.0, 100.0, 0.0), p0, p1, w));
  EXPECT_EQ(w[0], 0.25);
  EXPECT_EQ(w[1], 0.75);
}

TEST(PointSegmentParameters, BothAreWrittenWhenTheFirstFails) {
  const gsl_Point p0(1.0, 0.0, 0.0), p1(5.0, 0.0, 0.0);
  double w[2] = {kSentinel, kSentinel};
  EXPECT_FALSE(pointSegmentParameters(gsl_Point(-1.0, 0.0, 0.0), p0, p1, w));
  EXPECT_EQ(w[0], -0.5);
  EXPECT_EQ(w[1], 1.5);
}

TEST(PointSegmentParameters, ExactlyTheToleranceBeyondAnEndIsAccepted) {
  const ScopedSettings settings;
  settings->linearTolerance = 0.5;
  const gsl_Point p0(0.0, 0.0, 0.0), p1(4.0, 0.0, 0.0);
  double w[2];
  EXPECT_TRUE(pointSegmentParameters(gsl_Point(-0.5, 0.0, 0.0), p0, p1, w));
  EXPECT_FALSE(pointSegmentParameters(gsl_Point(Below(-0.5), 0.0, 0.0), p0, p1, w));
  EXPECT_TRUE(pointSegmentParameters(gsl_Point(4.5, 0.0, 0.0), p0, p1, w));
  EXPECT_FALSE(pointSegmentParameters(gsl_Point(Above(4.5), 0.0, 0.0), p0, p1, w));
}

TEST(PointSegmentParameters, LengthOfExactlyTheToleranceIsDegenerate) {
  const ScopedSettings settings;
  settings->linearTolerance = 0.5;
  const gsl_Point p0(0.0, 0.0, 0.0), p1(0.5, 0.0, 0.0);
  double w[2] = {kSentinel, kSentinel};
  EXPECT_TRUE(pointSegmentParameters(gsl_Point(0.0, 0.5, 0.0), p0, p1, w));
  EXPECT_EQ(w[0], 0.0);
  EXPECT_EQ(w[1], 1.0);
  w[0] = w[1] = kSentinel;
  EXPECT_FALSE(pointSegmentParameters(gsl_Point(0.0, Above(0.5), 0.0), p0, p1, w));
  EXPECT_EQ(w[0], kSentinel);
  EXPECT_EQ(w[1], kSentinel);
  EXPECT_TRUE(
      pointSegmentParameters(gsl_Point(0.25, 9.0, 0.0), p0, gsl_Point(Above(0.5), 0.0, 0.0), w));
}

// ---- rays

TEST(GslPointRayIntersect, ASegmentIsCrossedInBothSenses) {
  const gsl_Point p1(-1.0, 2.0, 0.0), p2(3.0, 2.0, 0.0), origin(0.0, 0.0, 0.0);
  for (const double sense : {1.0, -1.0}) {
    OutPoint out;
    double w[2] = {kSentinel, kSentinel};
    EXPECT_TRUE(origin.RayIntersect(p1, p2, gsl_Vector(0.0, sense, 0.0), out.p, w));
    EXPECT_XYZ(out.p, 0.0, 2.0, 0.0);
    EXPECT_NE(out.p.uid, out.before);
    EXPECT_EQ(w[0], 0.25);
    EXPECT_EQ(w[1], 0.75);
  }
}

TEST(GslPointRayIntersect, FirstWeightBelongsToTheSecondPoint) {
  const gsl_Point p1(0.0, 1.0, 0.0), p2(4.0, 1.0, 0.0);
  gsl_Point out;
  double w[2];
  EXPECT_TRUE(gsl_Point(3.0, 0.0, 0.0).RayIntersect(p1, p2, gsl_Vector(0.0, 1.0, 0.0), out, w));
  EXPECT_XYZ(gsl_Point(p1, w[1], p2, w[0]), 3.0, 1.0, 0.0);
}

TEST(GslPointRayIntersect, BesideTheSegmentFailsAndWritesTheOutputs) {
  const gsl_Point p1(0.0, 1.0, 0.0), p2(4.0, 1.0, 0.0);
  OutPoint out;
  double w[2] = {kSentinel, kSentinel};
  EXPECT_FALSE(gsl_Point(6.0, 0.0, 0.0).RayIntersect(p1, p2, gsl_Vector(0.0, 1.0, 0.0), out.p, w));
  EXPECT_XYZ(out.p, 6.0, 1.0, 0.0);
  EXPECT_EQ(w[0], 1.5);
  EXPECT_EQ(w[1], -0.5);
}

TEST(GslPointRayIntersect, AShortSegmentIsRefusedStrictly) {
  const gsl_Point o(0.0, 0.0, 0.0), tooNear(Below(Tolerance()), 0.0, 0.0);
  OutPoint out;
  double w[2] = {kSentinel, kSentinel};
  const gsl_Vector up(0.0, 1.0, 0.0);
  EXPECT_FALSE(gsl_Point(0.0, -1.0, 0.0).RayIntersect(o, tooNear, up, out.p, w));
  EXPECT_TRUE(out.Untouched());
  EXPECT_EQ(w[0], kSentinel);
  // At the tolerance the segment test treats the segment as a point.
  const gsl_Point atLimit(Tolerance(), 0.0, 0.0);
  EXPECT_TRUE(gsl_Point(0.0, -1.0, 0.0).RayIntersect(o, atLimit, up, out.p, w));
  EXPECT_EQ(w[0], 0.0);
  EXPECT_EQ(w[1], 1.0);
}

TEST(GslPointRayIntersect, ParallelAndSkewSegmentsFailUntouched) {
  const gsl_Point p1(0.0, 1.0, 0.0), p2(4.0, 1.0, 0.0), origin(0.0, 0.0, 0.0);
  OutPoint out;
  double w[2] = {kSentinel, kSentinel};
  EXPECT_FALSE(origin.RayIntersect(p1, p2, gsl_Vector(1.0, 0.0, 0.0), out.p, w));
  EXPECT_FALSE(origin.RayIntersect(p1, p2, gsl_Vector(-3.0, 0.0, 0.0), out.p, w));
  EXPECT_FALSE(gsl_Point(0.0, 0.0, 1.0).RayIntersect(p1, p2, gsl_Vector(0.0, 1.0, 0.0), out.p, w));
  EXPECT_TRUE(out.Untouched());
  EXPECT_EQ(w[0], kSentinel);
  EXPECT_EQ(w[1], kSentinel);
}

TEST(GslPointRayIntersect, CrossingLiesOnTheSegmentsLine) {
  // The ray passes 5e-7 over the segment, within the tolerance. The result is on the segment.
  const gsl_Point p1(-1.0, 2.0, 0.0), p2(3.0, 2.0, 0.0), origin(0.0, 0.0, 5e-7);
  gsl_Point out;
  double w[2];
  EXPECT_TRUE(origin.RayIntersect(p1, p2, gsl_Vector(0.0, 1.0, 0.0), out, w));
  EXPECT_XYZ(out, 0.0, 2.0, 0.0);
}

TEST(GslPointRayIntersect, APlaneIsCrossedInBothSenses) {
  const gsl_Point origin(1.0, 2.0, 6.0);
  for (const double sense : {1.0, -1.0}) {
    OutPoint out;
    EXPECT_TRUE(
        origin.RayIntersect(gsl_Vector(0.0, 3.0 * sense, -2.0 * sense), GroundPlane(), out.p));
    EXPECT_XYZ(out.p, 1.0, 11.0, 0.0);
    EXPECT_NE(out.p.uid, origin.uid);
    EXPECT_NE(out.p.uid, out.before);
  }
}

TEST(GslPointRayIntersect, AShortDirectionFailsWithTheOriginWritten) {
  const gsl_Point on(1.0, 2.0, 0.0);
  gsl_Point out(kSentinel, kSentinel, kSentinel);
  // The length of the direction is tested first, even when the origin lies on the plane.
  EXPECT_FALSE(on.RayIntersect(gsl_Vector(0.0, 0.0, Below(Tolerance())), GroundPlane(), out));
  EXPECT_XYZ(out, 1.0, 2.0, 0.0);
  EXPECT_EQ(out.uid, on.uid);
  EXPECT_TRUE(
      gsl_Point(1.0, 2.0, 8.0).RayIntersect(gsl_Vector(0.0, 0.0, Tolerance()), GroundPlane(), out));
  EXPECT_XYZ_NEAR(out, 1.0, 2.0, 0.0, 1e-12);
}

TEST(GslPointRayIntersect, ParallelToThePlaneFailsUnlessTheOriginLiesOnIt) {
  const gsl_Vector x(1.0, 0.0, 0.0);
  const gsl_Point above(1.0, 2.0, 3.0), on(1.0, 2.0, 0.0);
  gsl_Point out(kSentinel, kSentinel, kSentinel);
  EXPECT_FALSE(above.RayIntersect(x, GroundPlane(), out));
  EXPECT_XYZ(out, 1.0, 2.0, 3.0);
  EXPECT_EQ(out.uid, above.uid);
  EXPECT_TRUE(on.RayIntersect(x, GroundPlane(), out));
  EXPECT_XYZ(out, 1.0, 2.0, 0.0);
  EXPECT_EQ(out.uid, on.uid);
}

TEST(GslPointRayIntersect, AnOriginOnThePlaneIsTheCrossingInEveryDirection) {
  const gsl_Point near(1.0, 2.0, Below(Tolerance())), notNear(1.0, 2.0, Tolerance());
  const gsl_Vector down(0.0, 0.0, -1.0);
  gsl_Point out;
  EXPECT_TRUE(near.RayIntersect(down, GroundPlane(), out));
  EXPECT_EQ(out.z, near.z);
  EXPECT_EQ(out.uid, near.uid);
  EXPECT_TRUE(notNear.RayIntersect(down, GroundPlane(), out));
  EXPECT_EQ(out.z, 0.0);
  EXPECT_NE(out.uid, notNear.uid);
}

TEST(GslPointRayIntersect, OrthogonalityToTheNormalIsStrict) {
  const double cosine = omi_Singleton<gsl_Util>::Instance().cosineTolerance;
  const gsl_Point above(0.0, 0.0, 1.0);
  gsl_Point out;
  EXPECT_FALSE(above.RayIntersect(gsl_Vector(1.0, 0.0, Below(cosine)), GroundPlane(), out));
  EXPECT_TRUE(above.RayIntersect(gsl_Vector(1.0, 0.0, cosine), GroundPlane(), out));
  EXPECT_NEAR(out.x, -1e10, 1e-3);
}

TEST(GslPointRayIntersect, APlaneWithoutANormalSucceedsWithNaN) {
  const gsl_Plane none(gsl_Point(), gsl_Vector(0.0, 0.0, 0.0));
  gsl_Point out;
  EXPECT_TRUE(gsl_Point(1.0, 2.0, 3.0).RayIntersect(gsl_Vector(1.0, 0.0, 0.0), none, out));
  EXPECT_TRUE(std::isnan(out.x));
}

TEST(GslPointRayIntersect, ReadsTheTolerancesAtOnce) {
  const ScopedSettings settings;
  const gsl_Point p(1.0, 1.0, 4.0);
  const gsl_Vector slanted(3.0, 0.0, -4.0);
  OutPoint out;
  EXPECT_TRUE(p.RayIntersect(slanted, GroundPlane(), out.p));
  EXPECT_XYZ(out.p, 4.0, 1.0, 0.0);
  // The cosine is 0.8.
  settings->cosineTolerance = 0.9;
  EXPECT_FALSE(p.RayIntersect(slanted, GroundPlane(), out.p));
  // The distance is 4, and the length of the direction 5.
  settings->linearTolerance = Above(4.0);
  EXPECT_TRUE(p.RayIntersect(slanted, GroundPlane(), out.p));
  EXPECT_EQ(out.p.uid, p.uid);
  settings->linearTolerance = Above(5.0);
  EXPECT_FALSE(p.RayIntersect(slanted, GroundPlane(), out.p));
}

TEST(GslPointRayIntersect, OriginMayTakeTheResult) {
  gsl_Point p(1.0, 2.0, 6.0);
  EXPECT_TRUE(p.RayIntersect(gsl_Vector(0.0, 0.0, 1.0), GroundPlane(), p));
  EXPECT_XYZ(p, 1.0, 2.0, 0.0);
}

RC_GTEST_PROP(GslPointRayIntersect, CrossingLiesOnThePlaneAndTheRay, ()) {
  const auto coordinate = [] { return *rc::gen::inRange(-80, 80) / 8.0; };
  const gsl_Plane plane(gsl_Point(coordinate(), coordinate(), coordinate()),
                        gsl_Vector(coordinate(), coordinate(), coordinate()));
  const gsl_Point p(coordinate(), coordinate(), coordinate());
  const gsl_Vector d(coordinate(), coordinate(), coordinate());
  RC_PRE(plane.Direction().magnitude > 0.1 && d.magnitude > 0.1);
  RC_PRE(std::fabs(d.DotProduct(plane.Direction())) > 0.1);
  gsl_Point out;
  RC_ASSERT(p.RayIntersect(d, plane, out));
  RC_ASSERT(out.GetDistance(plane) < 1e-6);
  RC_ASSERT(out.GetDistance(gsl_StLine(p, d)) < 1e-6);
}

// ---- bad input

namespace {

/// Runs every query once. Returns how many succeeded, so that the compiler removes none.
int AskEverything(const gsl_Point& p, const gsl_Point& q, const gsl_Point& r, const gsl_Point& s,
                  double number) {
  const gsl_Vector v(q, r);
  const gsl_StLine line(q, v);
  const gsl_Plane plane(r, gsl_Vector(s.x, s.y, s.z));
  const gsl_Segment segment(q, s);
  gsl_Point out, mover(p);
  double t = 0.0, w[3] = {};
  int yes = (p == q) + (p != q) + (p > q) + (p >= q) + p.IsOn(q) + p.IsOn(line) + p.IsOn(plane);
  yes += p.GetDistance(q) < 1.0;
  yes += p.GetDistance(line) < 1.0;
  yes += p.GetSignedDistance(plane) < 1.0;
  yes += p.GetDistance(plane) < 1.0;
  yes += p.GetDistance(plane, v) < 1.0;
  yes += p.GetDistance(segment, out) < 1.0;
  yes += p.GetDistance(q, r, s) < 1.0;
  yes += mover.ProjectOn(line, t).x < 1.0;
  yes += mover.ProjectOn(plane).x < 1.0;
  yes += p.ProjectOn(segment, number, out, t);
  yes += p.ProjectOn(segment, out, t);
  yes += p.ProjectOn(q, r, s, out, w);
  yes += p.RayIntersect(q, r, gsl_Vector(s.x, s.y, s.z), out, w);
  yes += p.RayIntersect(v, plane, out);
  gsl_Matrix m;
  m.SetTranslation(v);
  mover.Transform(m);
  return yes;
}

} // namespace

TEST(GslPoint, HostileNumbersNeverCrash) {
  const std::uint64_t seed = 21;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  RandomNumbers random(seed);
  int yes = 0;
  for (int round = 0; round < 20000; ++round) {
    const auto any = [&random] {
      return gsl_Point(random.Hostile(), random.Hostile(), random.Hostile());
    };
    yes += AskEverything(any(), any(), any(), any(), random.Hostile());
  }
  EXPECT_GT(yes, 0);
}

TEST(GslPoint, HostileTolerancesNeverCrash) {
  const ScopedSettings settings;
  RandomNumbers random(22);
  int yes = 0;
  for (const double tolerance : numbers::Hostile()) {
    settings->linearTolerance = settings->cosineTolerance = settings->zeroTolerance = tolerance;
    for (int round = 0; round < 100; ++round) {
      const auto any = [&random] {
        return gsl_Point(random.In(-2.0, 2.0), random.Below(3), random.Below(2));
      };
      yes += AskEverything(any(), any(), any(), any(), tolerance);
    }
  }
  EXPECT_GT(yes, 0);
}
