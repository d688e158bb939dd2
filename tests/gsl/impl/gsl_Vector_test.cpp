#include "gsl_Vector.h"

#include "Numbers.h"
#include "RandomNumbers.h"
#include "ScopedSettings.h"
#include "gsl_Matrix.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstddef>
#include <cstring>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

using numbers::Above;
using numbers::Below;
using numbers::kInfinity;
using numbers::kNaN;
using numbers::kPi;
using numbers::kSentinel;

namespace {

/// A vector whose cached length is what the test wants it to be.
gsl_Vector WithMagnitude(double x, double y, double z, double magnitude) {
  gsl_Vector v(x, y, z);
  v.magnitude = magnitude;
  return v;
}

bool SameBits(const gsl_Vector& a, const gsl_Vector& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

// ---- layout and construction

TEST(GslVector, IsFourDoublesAndNothingElse) {
  EXPECT_EQ(sizeof(gsl_Vector), 32u);
  EXPECT_EQ(offsetof(gsl_Vector, x), 0u);
  EXPECT_EQ(offsetof(gsl_Vector, y), 8u);
  EXPECT_EQ(offsetof(gsl_Vector, z), 16u);
  EXPECT_EQ(offsetof(gsl_Vector, magnitude), 24u);
  EXPECT_FALSE(std::is_polymorphic<gsl_Vector>::value);
  EXPECT_TRUE(std::is_standard_layout<gsl_Vector>::value);
  EXPECT_TRUE(std::is_trivially_copyable<gsl_Vector>::value);
}

TEST(GslVector, HasNoConstructorThatTakesALength) {
  EXPECT_FALSE((std::is_constructible_v<gsl_Vector, gsl_arithmetic::Measured3>));
  EXPECT_FALSE((std::is_constructible_v<gsl_Vector, gsl_arithmetic::Coord3, double>));
}

TEST(GslVector, DefaultIsUnitZNotTheZeroVector) {
  const gsl_Vector v;
  EXPECT_XYZ(v, 0.0, 0.0, 1.0);
  EXPECT_EQ(v.magnitude, 1.0);
}

TEST(GslVector, ComponentsDetermineTheMagnitude) {
  const gsl_Vector v(2.0, -3.0, 6.0);
  EXPECT_XYZ(v, 2.0, -3.0, 6.0);
  EXPECT_EQ(v.magnitude, 7.0);
  EXPECT_EQ(gsl_Vector(0.0, 0.0, 0.0).magnitude, 0.0);
}

TEST(GslVector, ComponentsMayBeInBraces) {
  const gsl_Vector v({2.0, -3.0, 6.0});
  EXPECT_XYZ(v, 2.0, -3.0, 6.0);
  EXPECT_EQ(v.magnitude, 7.0);
  EXPECT_EQ(v.DotProduct({1.0, 1.0, 1.0}), 5.0);
}

TEST(GslVector, TwoPointsMakeTheSecondLessTheFirst) {
  const gsl_Vector v(gsl_Point(1.0, 2.0, 3.0), gsl_Point(2.0, 4.0, 1.0));
  EXPECT_XYZ(v, 1.0, 2.0, -2.0);
  EXPECT_EQ(v.magnitude, 3.0);
}

TEST(GslVector, CopyIsMemberwiseEvenWhenTheMagnitudeIsStale) {
  gsl_Vector v(3.0, 4.0, 0.0);
  v[0] = 30.0;
  const gsl_Vector copy(v);
  EXPECT_TRUE(SameBits(copy, v));
  EXPECT_EQ(copy.magnitude, 5.0);
}

// ---- normal of three points

TEST(GslVectorNormal, FollowsTheRightHandRule) {
  const gsl_Point o(0.0, 0.0, 0.0), x(2.0, 0.0, 0.0), y(0.0, 3.0, 0.0);
  EXPECT_XYZ(gsl_Vector(o, x, y), 0.0, 0.0, 1.0);
  EXPECT_XYZ(gsl_Vector(o, y, x), 0.0, 0.0, -1.0);
  EXPECT_XYZ(gsl_Vector(x, y, o), 0.0, 0.0, 1.0);
  EXPECT_EQ(gsl_Vector(o, x, y).magnitude, 1.0);
}

TEST(GslVectorNormal, CollinearAndCoincidentPointsMakeTheZeroVector) {
  const gsl_Point a(1.0, 1.0, 1.0), b(2.0, 3.0, 4.0), c(3.0, 5.0, 7.0);
  for (const gsl_Vector& n : {gsl_Vector(a, b, c), gsl_Vector(a, a, b), gsl_Vector(a, b, b),
                              gsl_Vector(a, b, a), gsl_Vector(a, a, a)}) {
    EXPECT_XYZ(n, 0.0, 0.0, 0.0);
    EXPECT_EQ(n.magnitude, 0.0);
  }
}

TEST(GslVectorNormal, ExactlyTheCosineToleranceIsCollinear) {
  const double tol = omi_Singleton<gsl_Util>::Instance().cosineTolerance;
  const gsl_Point o(0.0, 0.0, 0.0), e(1.0, 0.0, 0.0);
  // Edges of length 1 whose cross product has the length of the last coordinate.
  EXPECT_EQ(gsl_Vector(o, e, gsl_Point(2.0, Below(tol), 0.0)).magnitude, 0.0);
  EXPECT_EQ(gsl_Vector(o, e, gsl_Point(2.0, tol, 0.0)).magnitude, 0.0);
  EXPECT_NEAR(gsl_Vector(o, e, gsl_Point(2.0, Above(tol), 0.0)).z, 1.0, 1e-15);
}

TEST(GslVectorNormal, UsesTheEdgesOneTwoAndTwoThree) {
  const ScopedSettings settings;
  settings->cosineTolerance = 0.5;
  const gsl_Point o(0.0, 0.0, 0.0), e(1.0, 0.0, 0.0);
  // |b| = sqrt(2) and |a x b| = 1; with |p1p3| = sqrt(5) it would be collinear.
  EXPECT_XYZ(gsl_Vector(o, e, gsl_Point(2.0, 1.0, 0.0)), 0.0, 0.0, 1.0);
  // |b| = 2.28 and |a x b| = 1.1; with |p1p3| = 1.49 it would not be.
  EXPECT_XYZ(gsl_Vector(o, e, gsl_Point(-1.0, 1.1, 0.0)), 0.0, 0.0, 0.0);
}

TEST(GslVectorNormal, MagnitudeIsScaledAlong) {
  const gsl_Point p1(0.1, 0.2, 0.3), p2(1.7, -0.4, 0.9), p3(-0.6, 1.1, 2.3);
  const double ax = 1.7 - 0.1, ay = -0.4 - 0.2, az = 0.9 - 0.3;
  const double bx = -0.6 - 1.7, by = 1.1 - -0.4, bz = 2.3 - 0.9;
  const double cx = ay * bz - az * by, cy = az * bx - ax * bz, cz = ax * by - ay * bx;
  const double length = std::sqrt(cx * cx + cy * cy + cz * cz);
  const gsl_Vector n(p1, p2, p3);
  EXPECT_XYZ(n, cx * (1.0 / length), cy * (1.0 / length), cz * (1.0 / length));
  EXPECT_EQ(n.magnitude, length * (1.0 / length));
}

// ---- operators

TEST(GslVector, SumDifferenceAndMultipleAreMeasuredAgain) {
  gsl_Vector a(1.0, 0.0, 2.0);
  a.magnitude = 1000.0;
  const gsl_Vector b(1.0, 3.0, 4.0);
  EXPECT_XYZ(a + b, 2.0, 3.0, 6.0);
  EXPECT_EQ((a + b).magnitude, 7.0);
  EXPECT_XYZ(b - a, 0.0, 3.0, 2.0);
  EXPECT_EQ((b - a).magnitude, std::sqrt(13.0));
  EXPECT_XYZ(gsl_Vector(1.0, -2.0, 2.0) * -2.0, -2.0, 4.0, -4.0);
  EXPECT_EQ((gsl_Vector(1.0, -2.0, 2.0) * -2.0).magnitude, 6.0);
}

TEST(GslVector, EqualityIsStrictAtTheTolerance) {
  const double tol = omi_Singleton<gsl_Util>::Instance().linearTolerance;
  const gsl_Vector zero(0.0, 0.0, 0.0);
  EXPECT_TRUE(zero == gsl_Vector(Below(tol), 0.0, 0.0));
  EXPECT_FALSE(zero == gsl_Vector(tol, 0.0, 0.0));
  EXPECT_TRUE(zero != gsl_Vector(tol, 0.0, 0.0));
  EXPECT_FALSE(zero == gsl_Vector(0.0, 0.0, -Above(tol)));
  EXPECT_FALSE(zero != gsl_Vector(0.0, -Below(tol), 0.0));
}

TEST(GslVector, EqualityReadsTheToleranceAtOnce) {
  const ScopedSettings settings;
  const gsl_Vector a(1.0, 0.0, 0.0), b(1.25, 0.0, 0.0);
  EXPECT_FALSE(a == b);
  settings->linearTolerance = Above(0.25);
  EXPECT_TRUE(a == b);
  settings->linearTolerance = 0.25;
  EXPECT_FALSE(a == b);
}

TEST(GslVector, EqualsItselfEvenWithNaN) {
  const gsl_Vector nan(kNaN, 0.0, 0.0);
  const gsl_Vector& same = nan;
  EXPECT_TRUE(nan == same);
  EXPECT_FALSE(nan == gsl_Vector(nan));
  const ScopedSettings settings;
  settings->linearTolerance = 0.0;
  const gsl_Vector v(1.0, 2.0, 3.0);
  const gsl_Vector& sameV = v;
  EXPECT_TRUE(v == sameV);
  EXPECT_FALSE(v == gsl_Vector(v));
}

TEST(GslVector, EveryIndexAboveOneIsZ) {
  const gsl_Vector v(1.0, 2.0, 3.0);
  EXPECT_EQ(v[0], 1.0);
  EXPECT_EQ(v[1], 2.0);
  EXPECT_EQ(v[2], 3.0);
  EXPECT_EQ(v[7], 3.0);
  EXPECT_EQ(v[0xFFFFFFFFu], 3.0);
  gsl_Vector w;
  w[7] = 5.0;
  EXPECT_XYZ(w, 0.0, 0.0, 5.0);
}

TEST(GslVector, WritingThroughTheIndexLeavesTheMagnitudeStale) {
  gsl_Vector v(3.0, 4.0, 0.0);
  v[0] = 0.0;
  v[1] = 1.0;
  v[2] = 2.0;
  EXPECT_XYZ(v, 0.0, 1.0, 2.0);
  EXPECT_EQ(v.magnitude, 5.0);
}

TEST(GslVector, DotAndCrossProduct) {
  const gsl_Vector a(1.0, 2.0, 3.0), b(-4.0, 5.0, 6.0);
  EXPECT_EQ(a.DotProduct(b), 24.0);
  EXPECT_XYZ(a.CrossProduct(b), -3.0, -18.0, 13.0);
  EXPECT_EQ(a.CrossProduct(b).magnitude, std::sqrt(9.0 + 324.0 + 169.0));
  EXPECT_XYZ(b.CrossProduct(a), 3.0, 18.0, -13.0);
}

TEST(GslVector, DotProductAddsFromLeftToRight) {
  // (1e16 + 1) loses the 1; from the right it would stay.
  EXPECT_EQ(gsl_Vector(1e16, 1.0, -1e16).DotProduct(gsl_Vector(1.0, 1.0, 1.0)), 0.0);
  EXPECT_EQ(gsl_Vector(1e16, -1e16, 1.0).DotProduct(gsl_Vector(1.0, 1.0, 1.0)), 1.0);
}

// ---- scaling

TEST(GslVector, NegateKeepsTheMagnitude) {
  gsl_Vector v = WithMagnitude(1.0, -2.0, 3.0, 42.0);
  v.Negate();
  EXPECT_XYZ(v, -1.0, 2.0, -3.0);
  EXPECT_EQ(v.magnitude, 42.0);
}

TEST(GslVector, ScaleMultipliesTheMagnitudeWithoutASquareRoot) {
  gsl_Vector v(2.0, -1.0, 2.0);
  v.Scale(-2.0);
  EXPECT_XYZ(v, -4.0, 2.0, -4.0);
  EXPECT_EQ(v.magnitude, 6.0);
  v.Scale(0.5);
  EXPECT_EQ(v.magnitude, 3.0);
  gsl_Vector stale = WithMagnitude(1.0, 0.0, 0.0, 10.0);
  stale.Scale(2.0);
  EXPECT_EQ(stale.magnitude, 20.0);
  stale.Scale(0.0);
  EXPECT_XYZ(stale, 0.0, 0.0, 0.0);
  EXPECT_EQ(stale.magnitude, 0.0);
}

TEST(GslVector, ScaledCopyIsMeasuredAgainAndLeavesTheSource) {
  gsl_Vector v = WithMagnitude(1.0, 2.0, 2.0, 10.0);
  const gsl_Vector copy = v.ScaledCopy(-3.0);
  EXPECT_XYZ(copy, -3.0, -6.0, -6.0);
  EXPECT_EQ(copy.magnitude, 9.0);
  EXPECT_XYZ(v, 1.0, 2.0, 2.0);
  EXPECT_EQ(v.magnitude, 10.0);
}

TEST(GslVector, NormalizeAcceptsExactlyTheTolerance) {
  const double tol = omi_Singleton<gsl_Util>::Instance().linearTolerance;
  gsl_Vector tooShort(0.0, 0.0, 1e-7);
  const gsl_Vector before(tooShort);
  EXPECT_FALSE(tooShort.Normalize());
  EXPECT_TRUE(SameBits(tooShort, before));

  gsl_Vector below(0.0, 0.0, Below(tol));
  EXPECT_FALSE(below.Normalize());
  EXPECT_EQ(below.z, Below(tol));

  gsl_Vector at(0.0, 0.0, -tol);
  EXPECT_TRUE(at.Normalize());
  EXPECT_XYZ(at, 0.0, 0.0, -1.0);
  EXPECT_EQ(at.magnitude, 1.0);
}

TEST(GslVector, NormalizeDividesByTheCachedMagnitude) {
  gsl_Vector v = WithMagnitude(3.0, 4.0, 5.0, 7.0);
  EXPECT_TRUE(v.Normalize());
  EXPECT_XYZ(v, 3.0 / 7.0, 4.0 / 7.0, 5.0 / 7.0);
  EXPECT_EQ(v.magnitude, 1.0);
}

TEST(GslVector, NormalizeReadsTheToleranceAtOnce) {
  const ScopedSettings settings;
  settings->linearTolerance = 2.0;
  gsl_Vector v(1.0, 0.0, 0.0);
  EXPECT_FALSE(v.Normalize());
  EXPECT_XYZ(v.NormalizedCopy(), 0.0, 0.0, 0.0);
  settings->linearTolerance = 1.0;
  EXPECT_TRUE(v.Normalize());
}

TEST(GslVector, NormalizedCopyMultipliesByTheReciprocal) {
  const gsl_Vector v = WithMagnitude(3.0, 4.0, 5.0, 7.0);
  const double s = 1.0 / 7.0;
  const gsl_Vector n = v.NormalizedCopy();
  EXPECT_XYZ(n, 3.0 * s, 4.0 * s, 5.0 * s);
  EXPECT_EQ(n.magnitude, gsl_Vector(3.0 * s, 4.0 * s, 5.0 * s).magnitude);
  EXPECT_XYZ(v, 3.0, 4.0, 5.0);
}

TEST(GslVector, NormalizedCopyReadsTheToleranceAtOnce) {
  const ScopedSettings settings;
  const gsl_Vector v(0.0, 0.0, 2.0);
  settings->linearTolerance = Above(2.0);
  EXPECT_XYZ(v.NormalizedCopy(), 0.0, 0.0, 0.0);
  settings->linearTolerance = 2.0;
  EXPECT_XYZ(v.NormalizedCopy(), 0.0, 0.0, 1.0);
}

TEST(GslVector, NormalizedCopyOfAShortVectorIsTheZeroVector) {
  const double tol = omi_Singleton<gsl_Util>::Instance().linearTolerance;
  const gsl_Vector none = gsl_Vector(0.0, Below(tol), 0.0).NormalizedCopy();
  EXPECT_XYZ(none, 0.0, 0.0, 0.0);
  EXPECT_EQ(none.magnitude, 0.0);
  EXPECT_EQ(gsl_Vector(0.0, tol, 0.0).NormalizedCopy().magnitude, 1.0);
}

// ---- predicates

TEST(GslVector, IsOnIsStrictAndTakesEitherSense) {
  const double tol = omi_Singleton<gsl_Util>::Instance().cosineTolerance;
  const gsl_Vector x(1.0, 0.0, 0.0);
  EXPECT_TRUE(x.IsOn(gsl_Vector(1.0, Below(tol), 0.0)));
  EXPECT_FALSE(x.IsOn(gsl_Vector(1.0, tol, 0.0)));
  EXPECT_TRUE(x.IsOn(gsl_Vector(-1.0, 0.0, Below(tol))));
  EXPECT_FALSE(x.IsOn(gsl_Vector(-1.0, 0.0, tol)));
  EXPECT_TRUE(gsl_Vector(2.0, 4.0, 6.0).IsOn(gsl_Vector(-1.0, -2.0, -3.0)));
}

TEST(GslVector, IsOnIsRelativeToBothMagnitudes) {
  const ScopedSettings settings;
  settings->cosineTolerance = 0.25;
  const gsl_Vector a = WithMagnitude(1.0, 0.0, 0.0, 2.0);
  EXPECT_TRUE(a.IsOn(WithMagnitude(0.0, Below(1.5), 0.0, 3.0)));
  EXPECT_FALSE(a.IsOn(WithMagnitude(0.0, 1.5, 0.0, 3.0)));
}

TEST(GslVector, ZeroVectorIsOnAndOrthogonalToNothing) {
  const gsl_Vector zero(0.0, 0.0, 0.0), x(1.0, 0.0, 0.0);
  EXPECT_FALSE(zero.IsOn(x));
  EXPECT_FALSE(x.IsOn(zero));
  EXPECT_FALSE(zero.IsOn(zero));
  EXPECT_FALSE(zero.IsOrthogonal(x));
  EXPECT_FALSE(x.IsOrthogonal(zero));
  EXPECT_FALSE(zero.IsOrthogonal(zero));
}

TEST(GslVector, IsOrthogonalIsStrict) {
  const double tol = omi_Singleton<gsl_Util>::Instance().cosineTolerance;
  const gsl_Vector x(1.0, 0.0, 0.0);
  EXPECT_TRUE(x.IsOrthogonal(gsl_Vector(Below(tol), 1.0, 0.0)));
  EXPECT_FALSE(x.IsOrthogonal(gsl_Vector(tol, 1.0, 0.0)));
  EXPECT_TRUE(x.IsOrthogonal(gsl_Vector(-Below(tol), 1.0, 0.0)));
  EXPECT_FALSE(x.IsOrthogonal(gsl_Vector(-tol, 1.0, 0.0)));
  const ScopedSettings settings;
  settings->cosineTolerance = 0.25;
  EXPECT_TRUE(
      WithMagnitude(1.0, 0.0, 0.0, 2.0).IsOrthogonal(WithMagnitude(Below(1.5), 0.0, 0.0, 3.0)));
  EXPECT_FALSE(WithMagnitude(1.0, 0.0, 0.0, 2.0).IsOrthogonal(WithMagnitude(1.5, 0.0, 0.0, 3.0)));
}

TEST(GslVector, SameDirectionComparesUnitComponentsClosed) {
  EXPECT_TRUE(gsl_Vector(3.0, 0.0, 4.0).SameDirection(gsl_Vector(0.75, 0.0, 1.0), 1e-15));
  EXPECT_FALSE(gsl_Vector(3.0, 0.0, 4.0).SameDirection(gsl_Vector(-0.75, 0.0, -1.0), 0.1));
  const gsl_Vector zero(0.0, 0.0, 0.0);
  for (unsigned int axis = 0; axis < 3; ++axis) {
    gsl_Vector unit = WithMagnitude(0.0, 0.0, 0.0, 1.0);
    unit[axis] = 0.25;
    EXPECT_TRUE(zero.SameDirection(unit, 0.25)) << axis;
    EXPECT_FALSE(zero.SameDirection(unit, Below(0.25))) << axis;
    EXPECT_FALSE(unit.SameDirection(zero, Below(0.25))) << axis;
  }
}

TEST(GslVector, SameDirectionTakesZeroComponentsForAMagnitudeOfExactlyZero) {
  const gsl_Vector zero(0.0, 0.0, 0.0);
  EXPECT_TRUE(zero.SameDirection(zero, 0.0));
  EXPECT_TRUE(WithMagnitude(5.0, 5.0, 5.0, 0.0).SameDirection(zero, 0.0));
  // The smallest length that is not zero does divide.
  EXPECT_FALSE(gsl_Vector(1e-160, 0.0, 0.0).SameDirection(zero, 0.5));
}

TEST(GslVector, SameDirectionUsesTheCallersToleranceAlone) {
  const ScopedSettings settings;
  settings->linearTolerance = settings->cosineTolerance = 100.0;
  EXPECT_FALSE(gsl_Vector(1.0, 0.0, 0.0).SameDirection(gsl_Vector(0.0, 1.0, 0.0), 0.5));
  EXPECT_FALSE(gsl_Vector(1.0, 0.0, 0.0).IsParallel(gsl_Vector(0.0, 1.0, 0.0), 0.5));
}

TEST(GslVector, NaNPassesSameDirection) {
  EXPECT_TRUE(gsl_Vector(kNaN, kNaN, kNaN).SameDirection(gsl_Vector(1.0, 0.0, 0.0), 0.0));
  EXPECT_FALSE(WithMagnitude(kNaN, 1.0, 0.0, 1.0).SameDirection(gsl_Vector(0.0, 0.0, 1.0), 0.0));
}

TEST(GslVector, IsParallelAcceptsTheOppositeDirection) {
  const gsl_Vector v(1.0, 2.0, -2.0);
  EXPECT_TRUE(v.IsParallel(gsl_Vector(2.0, 4.0, -4.0), 1e-12));
  EXPECT_TRUE(v.IsParallel(gsl_Vector(-2.0, -4.0, 4.0), 1e-12));
  EXPECT_FALSE(v.IsParallel(gsl_Vector(-2.0, 4.0, -4.0), 1e-12));
  EXPECT_FALSE(v.IsParallel(gsl_Vector(-2.0, -4.0, -4.0), 1e-12));
}

TEST(GslVector, IsParallelIsClosedInBothSenses) {
  const gsl_Vector unit = WithMagnitude(1.0, 0.0, 0.0, 1.0);
  EXPECT_TRUE(unit.IsParallel(WithMagnitude(1.0, 0.25, 0.0, 1.0), 0.25));
  EXPECT_FALSE(unit.IsParallel(WithMagnitude(1.0, Above(0.25), 0.0, 1.0), 0.25));
  EXPECT_TRUE(unit.IsParallel(WithMagnitude(-1.0, 0.0, 0.25, 1.0), 0.25));
  EXPECT_FALSE(unit.IsParallel(WithMagnitude(-1.0, 0.0, Above(0.25), 1.0), 0.25));
}

// ---- orthogonal vectors

TEST(GslVector, AnyOrthogonalUnitIsTheCrossProductWithOneOneOne) {
  const double h = 1.0 / std::sqrt(2.0);
  const gsl_Vector w = gsl_Vector(0.0, 0.0, 1.0).AnyOrthogonalUnit();
  EXPECT_XYZ(w, -h, h, 0.0);
  EXPECT_EQ(w.magnitude, 1.0);
  // (1, 2, 4) x (1, 1, 1) = (-2, 3, -1).
  const double s = std::sqrt(14.0);
  EXPECT_XYZ(gsl_Vector(1.0, 2.0, 4.0).AnyOrthogonalUnit(), -2.0 / s, 3.0 / s, -1.0 / s);
}

TEST(GslVector, AnyOrthogonalUnitAlongOneOneOneFallsBack) {
  const double h = 1.0 / std::sqrt(2.0);
  for (const gsl_Vector& v : {gsl_Vector(1.0, 1.0, 1.0), gsl_Vector(-5.0, -5.0, -5.0),
                              gsl_Vector(0.0, 0.0, 0.0), gsl_Vector(1e-7, 0.0, 0.0)}) {
    const gsl_Vector w = v.AnyOrthogonalUnit();
    EXPECT_XYZ(w, h, -h, 0.0);
    EXPECT_EQ(w.magnitude, 1.0);
  }
}

TEST(GslVector, AnyOrthogonalUnitFallsBackStrictlyBelowTheTolerance) {
  const ScopedSettings settings;
  const gsl_Vector v(3.0, 0.0, 4.0);
  // v x (1, 1, 1) = (-4, 1, 3).
  const double length = std::sqrt(26.0);
  settings->linearTolerance = length;
  EXPECT_EQ(v.AnyOrthogonalUnit().x, -4.0 / length);
  settings->linearTolerance = Above(length);
  // The replacement is shorter than this tolerance too and stays as it is.
  EXPECT_XYZ(v.AnyOrthogonalUnit(), 1.0, -1.0, 0.0);
}

RC_GTEST_PROP(GslVector, AnyOrthogonalUnitIsOrthogonalAndUnit, ()) {
  const auto component = [] { return *rc::gen::inRange(-1000, 1000) / 8.0; };
  const gsl_Vector v(component(), component(), component());
  const gsl_Vector w = v.AnyOrthogonalUnit();
  RC_ASSERT(w.magnitude == 1.0);
  RC_ASSERT(std::fabs(std::sqrt(w.DotProduct(w)) - 1.0) < 1e-14);
  RC_ASSERT(std::fabs(v.DotProduct(w)) <= 1e-14 * (1.0 + v.magnitude));
}

TEST(GslVector, BestAlignedOrthogonalUnitLeansTowardsTheBestAxis) {
  EXPECT_XYZ(gsl_Vector(0.0, 0.0, 1.0).BestAlignedOrthogonalUnit(), 1.0, 0.0, 0.0);
  EXPECT_XYZ(gsl_Vector(1.0, 0.0, 0.0).BestAlignedOrthogonalUnit(), 0.0, 1.0, 0.0);
  EXPECT_XYZ(gsl_Vector(0.0, 1.0, 0.0).BestAlignedOrthogonalUnit(), 1.0, 0.0, 0.0);
  EXPECT_XYZ_NEAR(gsl_Vector(0.6, 0.8, 0.0).BestAlignedOrthogonalUnit(), 0.0, 0.0, 1.0, 1e-15);
  EXPECT_XYZ_NEAR(gsl_Vector(0.0, 0.6, 0.8).BestAlignedOrthogonalUnit(), 1.0, 0.0, 0.0, 1e-15);
}

TEST(GslVector, BestAlignedOrthogonalUnitIsNotNormalised) {
  // A unit vector: the X axis less its component along it, (2, -1, -1) / 3.
  const double h = 1.0 / std::sqrt(3.0);
  const gsl_Vector w = gsl_Vector(h, h, h).BestAlignedOrthogonalUnit();
  EXPECT_XYZ_NEAR(w, 2.0 / 3.0, -1.0 / 3.0, -1.0 / 3.0, 1e-15);
  EXPECT_NEAR(w.magnitude, std::sqrt(2.0 / 3.0), 1e-15);
  // Length 2: the projection times the square of the length.
  EXPECT_XYZ(gsl_Vector(0.0, 0.0, 2.0).BestAlignedOrthogonalUnit(), 4.0, 0.0, 0.0);
}

TEST(GslVector, BestAlignedOrthogonalUnitOfTheZeroVectorIsTheZeroVector) {
  const gsl_Vector w = gsl_Vector(0.0, 0.0, 0.0).BestAlignedOrthogonalUnit();
  EXPECT_XYZ(w, 0.0, 0.0, 0.0);
  EXPECT_EQ(w.magnitude, 0.0);
}

TEST(GslVector, BestAlignedOrthogonalUnitTakesTheEarlierAxisOfANearTie) {
  // X projects to sqrt(1 - a^2) and Y to 1 nearly: 5e-7 shorter is a tie, 2e-6 is not.
  EXPECT_GT(gsl_Vector(1e-3, 0.0, 1.0).BestAlignedOrthogonalUnit().x, 0.9);
  EXPECT_GT(gsl_Vector(2e-3, 0.0, 1.0).BestAlignedOrthogonalUnit().y, 0.9);
}

TEST(GslVector, BestAlignedOrthogonalUnitReplacesStrictlyAboveTheTolerance) {
  const ScopedSettings settings;
  const gsl_Vector v(0.6, 0.0, 0.8);
  gsl_Vector x(0.0, 0.0, 0.0);
  x[0] = 1.0;
  const double gain = 1.0 - x.ProjectOn(gsl_Plane(gsl_Point(), v)).magnitude;
  settings->linearTolerance = gain;
  EXPECT_GT(v.BestAlignedOrthogonalUnit().x, 0.1) << "no better than the tolerance";
  settings->linearTolerance = Below(gain);
  EXPECT_GT(v.BestAlignedOrthogonalUnit().y, 0.1);
}

TEST(GslVector, BestAlignedOrthogonalUnitSurvivesATooWideTolerance) {
  const ScopedSettings settings;
  settings->linearTolerance = 1.0;
  const gsl_Vector w = gsl_Vector(0.0, 0.0, 1.0).BestAlignedOrthogonalUnit();
  EXPECT_XYZ(w, 1.0, 0.0, 0.0);
}

TEST(GslVector, ProjectOnRemovesTheComponentAlongTheNormal) {
  const gsl_Plane plane(gsl_Point(7.0, 8.0, 9.0), gsl_Vector(0.0, 0.0, 5.0));
  const gsl_Vector p = gsl_Vector(1.0, 2.0, 3.0).ProjectOn(plane);
  EXPECT_XYZ(p, 1.0, 2.0, 0.0);
  EXPECT_EQ(p.magnitude, std::sqrt(5.0));
  EXPECT_XYZ(gsl_Vector(0.0, 0.0, -4.0).ProjectOn(plane), 0.0, 0.0, 0.0);
}

TEST(GslVector, ProjectOnAPlaneWithoutANormalReturnsTheVector) {
  const gsl_Plane plane(gsl_Point(), gsl_Vector(0.0, 0.0, 1e-7));
  EXPECT_XYZ(gsl_Vector(1.0, 2.0, 3.0).ProjectOn(plane), 1.0, 2.0, 3.0);
}

TEST(GslVector, ProjectOnDoesNotReadTheMagnitudeOfTheVector) {
  const gsl_Plane plane(gsl_Point(), gsl_Vector(0.0, 1.0, 0.0));
  EXPECT_XYZ(WithMagnitude(1.0, 2.0, 3.0, 0.0).ProjectOn(plane), 1.0, 0.0, 3.0);
}

// ---- angles

TEST(GslVectorAngleBetween, IsSignedAboutTheAxis) {
  const gsl_Vector x(1.0, 0.0, 0.0), y(0.0, 1.0, 0.0), z(0.0, 0.0, 1.0);
  double angle = kSentinel;
  EXPECT_TRUE(z.AngleBetween(x, y, angle));
  EXPECT_EQ(angle, kPi / 2);
  EXPECT_TRUE(z.AngleBetween(y, x, angle));
  EXPECT_EQ(angle, -kPi / 2);
  EXPECT_TRUE(gsl_Vector(0.0, 0.0, -3.0).AngleBetween(x, y, angle));
  EXPECT_EQ(angle, -kPi / 2);
  EXPECT_TRUE(z.AngleBetween(x, x, angle));
  EXPECT_EQ(angle, 0.0);
  EXPECT_TRUE(z.AngleBetween(gsl_Vector(5.0, 0.0, 0.0), gsl_Vector(7.0, 7.0, 0.0), angle));
  EXPECT_NEAR(angle, kPi / 4, 1e-15);
}

TEST(GslVectorAngleBetween, OppositeVectorsAreAtPlusPi) {
  double angle = kSentinel;
  EXPECT_TRUE(gsl_Vector(0.0, 0.0, 1.0)
                  .AngleBetween(gsl_Vector(1.0, 0.0, 0.0), gsl_Vector(-1.0, 0.0, 0.0), angle));
  EXPECT_EQ(angle, kPi);
}

TEST(GslVectorAngleBetween, CountsOnlyThePartsAcrossTheAxis) {
  const gsl_Vector z(0.0, 0.0, 2.0);
  double angle = kSentinel;
  EXPECT_TRUE(z.AngleBetween(gsl_Vector(1.0, 0.0, 1.0), gsl_Vector(0.0, 3.0, 3.0), angle));
  EXPECT_NEAR(angle, kPi / 2, 1e-15);
}

TEST(GslVectorAngleBetween, DifferentAxialComponentsFail) {
  double angle = kSentinel;
  EXPECT_FALSE(gsl_Vector(0.0, 0.0, 1.0)
                   .AngleBetween(gsl_Vector(1.0, 0.0, 0.0), gsl_Vector(0.0, 1.0, 1.0), angle));
  EXPECT_EQ(angle, kSentinel);
}

TEST(GslVectorAngleBetween, AxialDifferenceOfExactlyTheToleranceIsAccepted) {
  const double tol = omi_Singleton<gsl_Util>::Instance().linearTolerance;
  const gsl_Vector z(0.0, 0.0, 1.0), x(1.0, 0.0, 0.0);
  double angle = kSentinel;
  EXPECT_TRUE(z.AngleBetween(x, WithMagnitude(0.0, 1.0, tol, 1.0), angle));
  EXPECT_NEAR(angle, kPi / 2, 1e-12);
  angle = kSentinel;
  EXPECT_FALSE(z.AngleBetween(x, WithMagnitude(0.0, 1.0, Above(tol), 1.0), angle));
  EXPECT_FALSE(z.AngleBetween(x, WithMagnitude(0.0, 1.0, -Above(tol), 1.0), angle));
  EXPECT_EQ(angle, kSentinel);
}

TEST(GslVectorAngleBetween, ShortArgumentsFailAndLeaveTheAngle) {
  const double tol = omi_Singleton<gsl_Util>::Instance().linearTolerance;
  const gsl_Vector z(0.0, 0.0, 1.0), x(1.0, 0.0, 0.0), brief(Below(tol), 0.0, 0.0);
  double angle = kSentinel;
  EXPECT_FALSE(z.AngleBetween(brief, x, angle));
  EXPECT_FALSE(z.AngleBetween(x, brief, angle));
  EXPECT_EQ(angle, kSentinel);
  EXPECT_TRUE(z.AngleBetween(gsl_Vector(tol, 0.0, 0.0), gsl_Vector(0.0, tol, 0.0), angle));
  EXPECT_EQ(angle, kPi / 2);
}

TEST(GslVectorAngleBetween, ReadsTheToleranceAtOnce) {
  const ScopedSettings settings;
  const gsl_Vector axis(0.0, 0.0, 1.0), x(1.0, 0.0, 0.0), raised(0.0, 0.6, 0.8);
  double angle = kSentinel;
  EXPECT_FALSE(axis.AngleBetween(x, raised, angle)) << "0.8 apart along the axis";
  settings->linearTolerance = 0.9;
  EXPECT_TRUE(axis.AngleBetween(x, raised, angle));
  settings->linearTolerance = Above(1.0);
  angle = kSentinel;
  EXPECT_FALSE(axis.AngleBetween(x, raised, angle)) << "the vectors are short";
  EXPECT_EQ(angle, kSentinel);
}

TEST(GslVectorAngleBetween, FailedNormalisationsAreIgnored) {
  double angle = kSentinel;
  // Without an axis nothing is subtracted from the arguments, and the sine is 0.
  const gsl_Vector zero(0.0, 0.0, 0.0);
  EXPECT_TRUE(zero.AngleBetween(gsl_Vector(1.0, 0.0, 0.0), gsl_Vector(0.0, 1.0, 0.0), angle));
  EXPECT_EQ(angle, 0.0);
  angle = kSentinel;
  // The arguments are along the axis, so nothing remains of them.
  const gsl_Vector z(0.0, 0.0, 1.0);
  EXPECT_TRUE(z.AngleBetween(z, z, angle));
  EXPECT_EQ(angle, 0.0);
}

TEST(GslVectorAngleBetween, LeavesAxisAndArgumentsAsTheyWere) {
  const gsl_Vector axis(0.0, 0.0, 5.0), a(3.0, 0.0, 0.0), b(0.0, 4.0, 0.0);
  double angle = 0.0;
  EXPECT_TRUE(axis.AngleBetween(a, b, angle));
  EXPECT_EQ(axis.z, 5.0);
  EXPECT_EQ(a.x, 3.0);
  EXPECT_EQ(b.y, 4.0);
}

RC_GTEST_PROP(GslVectorAngleBetween, RecoversARotation, ()) {
  const auto component = [] { return *rc::gen::inRange(-100, 100) / 8.0; };
  const gsl_Vector axis(component(), component(), component());
  const gsl_Vector a(component(), component(), component());
  RC_PRE(axis.magnitude > 0.1 && a.CrossProduct(axis).magnitude > 0.1);
  const double turn = *rc::gen::inRange(-3000, 3000) / 1000.0;
  gsl_Matrix m;
  m.AxisRotation(gsl_Point(), axis, turn);
  gsl_Vector b(a);
  m.Transform(b);
  double angle = kSentinel;
  RC_ASSERT(axis.AngleBetween(a, b, angle));
  RC_ASSERT(std::fabs(angle - turn) < 1e-9);
}

TEST(GslVectorAngleWith, IsUnsignedBetweenZeroAndPi) {
  const gsl_Vector x(1.0, 0.0, 0.0), y(0.0, 2.0, 0.0);
  EXPECT_EQ(x.AngleWith(y, false), kPi / 2);
  EXPECT_EQ(y.AngleWith(x, false), kPi / 2);
  EXPECT_EQ(x.AngleWith(gsl_Vector(-1.0, 0.0, 0.0), false), kPi);
  EXPECT_EQ(x.AngleWith(gsl_Vector(9.0, 0.0, 0.0), false), 0.0);
  EXPECT_NEAR(x.AngleWith(gsl_Vector(1.0, std::sqrt(3.0), 0.0), false), kPi / 3, 1e-15);
}

TEST(GslVectorAngleWith, AZeroVectorIsAtARightAngle) {
  const gsl_Vector x(1.0, 0.0, 0.0), zero(0.0, 0.0, 0.0);
  EXPECT_EQ(x.AngleWith(zero, false), kPi / 2);
  EXPECT_EQ(zero.AngleWith(x, false), kPi / 2);
  EXPECT_EQ(zero.AngleWith(zero, false), kPi / 2);
}

TEST(GslVectorAngleWith, ExactlyTheToleranceCountsAsNoLength) {
  const double tol = omi_Singleton<gsl_Util>::Instance().linearTolerance;
  const gsl_Vector x(1.0, 0.0, 0.0);
  EXPECT_EQ(x.AngleWith(gsl_Vector(tol, 0.0, 0.0), false), kPi / 2);
  EXPECT_EQ(gsl_Vector(tol, 0.0, 0.0).AngleWith(x, false), kPi / 2);
  EXPECT_LT(x.AngleWith(gsl_Vector(Above(tol), 0.0, 0.0), false), 1e-7);
  EXPECT_LT(gsl_Vector(Above(tol), 0.0, 0.0).AngleWith(x, false), 1e-7);
}

TEST(GslVectorAngleWith, ThePromiseOfUnitVectorsSkipsTheDivision) {
  // 0.5 as promised; the lengths would make it 1.
  EXPECT_NEAR(gsl_Vector(1.0, 0.0, 0.0).AngleWith(gsl_Vector(0.5, 0.0, 0.0), true), kPi / 3, 1e-15);
  EXPECT_EQ(gsl_Vector(2.0, 0.0, 0.0).AngleWith(gsl_Vector(3.0, 0.0, 0.0), true), 0.0);
  EXPECT_EQ(gsl_Vector(2.0, 0.0, 0.0).AngleWith(gsl_Vector(-3.0, 0.0, 0.0), true), kPi);
  EXPECT_EQ(gsl_Vector(1e-9, 0.0, 0.0).AngleWith(gsl_Vector(0.0, 1e-9, 0.0), true), kPi / 2);
}

TEST(GslVectorAngleWith, ReferenceDecidesTheWayRound) {
  const gsl_Vector x(1.0, 0.0, 0.0), y(0.0, 1.0, 0.0);
  EXPECT_EQ(x.AngleWith(y, false, gsl_Vector(0.0, 0.0, 1.0)), kPi / 2);
  EXPECT_EQ(x.AngleWith(y, false, gsl_Vector(0.0, 0.0, -1.0)), 6.283185307179586 - kPi / 2);
  EXPECT_NEAR(x.AngleWith(y, false, gsl_Vector(0.0, 0.0, -1.0)), 3.0 * kPi / 2, 1e-15);
  EXPECT_NEAR(y.AngleWith(x, false, gsl_Vector(0.3, 0.2, 9.0)), 3.0 * kPi / 2, 1e-15);
  EXPECT_NEAR(x.AngleWith(gsl_Vector(0.5, 0.0, 0.0), true, gsl_Vector(0.0, 0.0, 1.0)), kPi / 3,
              1e-15);
}

TEST(GslVectorAngleWith, AnAngleOfZeroTheOtherWayRoundIsTwoPi) {
  // The cosine rounds to 1, but the cross product is not zero and points down.
  const gsl_Vector x(1.0, 0.0, 0.0), below(1.0, -1e-9, 0.0), up(0.0, 0.0, 1.0);
  EXPECT_EQ(x.AngleWith(below, false), 0.0);
  EXPECT_EQ(x.AngleWith(below, false, up), 6.283185307179586);
}

TEST(GslVectorAngleWith, AZeroTripleProductKeepsTheAngle) {
  const gsl_Vector x(1.0, 0.0, 0.0), y(0.0, 1.0, 0.0);
  EXPECT_EQ(x.AngleWith(y, false, gsl_Vector(1.0, 1.0, 0.0)), kPi / 2);
  EXPECT_EQ(x.AngleWith(y, false, gsl_Vector(0.0, 0.0, 0.0)), kPi / 2);
  EXPECT_EQ(x.AngleWith(gsl_Vector(-1.0, 0.0, 0.0), false, gsl_Vector(0.0, 0.0, -1.0)), kPi);
}

TEST(GslVectorAngleWith, NaNStaysNaN) {
  EXPECT_TRUE(std::isnan(gsl_Vector(1.0, 0.0, 0.0).AngleWith(gsl_Vector(kNaN, 1.0, 0.0), true)));
}

TEST(GslVectorAngleWith, ToleranceIsReadAtOnce) {
  const ScopedSettings settings;
  settings->linearTolerance = 1.0;
  EXPECT_EQ(gsl_Vector(1.0, 0.0, 0.0).AngleWith(gsl_Vector(5.0, 0.0, 0.0), false), kPi / 2);
  settings->linearTolerance = Below(1.0);
  EXPECT_EQ(gsl_Vector(1.0, 0.0, 0.0).AngleWith(gsl_Vector(5.0, 0.0, 0.0), false), 0.0);
}

// ---- transform and print

TEST(GslVector, RotateAndTransformIgnoresTheTranslationAndMeasuresAgain) {
  gsl_Matrix m;
  m.SetRow(0, gsl_Vector(0.0, -1.0, 0.0));
  m.SetRow(1, gsl_Vector(1.0, 0.0, 0.0));
  m.SetTranslation(gsl_Vector(100.0, 200.0, 300.0));
  gsl_Vector v = WithMagnitude(1.0, 2.0, 2.0, 77.0);
  v.RotateAndTransform(m);
  EXPECT_XYZ(v, -2.0, 1.0, 2.0);
  EXPECT_EQ(v.magnitude, 3.0);
}

namespace {

/// Remembers the text that was written at every flush.
class FlushRecorder : public std::stringbuf {
public:
  std::vector<std::string> atFlush;

protected:
  int sync() override {
    atFlush.push_back(str());
    return std::stringbuf::sync();
  }
};

} // namespace

TEST(GslVectorPrint, WritesTheMagnitudeThenTheComponents) {
  std::ostringstream out;
  gsl_Vector(1.0, -2.0, 2.0).Print(out, 2);
  EXPECT_EQ(out.str(), "  magnitude:\t3\n  x:\t1\ty:\t-2\tz:\t2\n");
  std::ostringstream flush;
  gsl_Vector(0.0, 0.5, 0.0).Print(flush, 0);
  EXPECT_EQ(flush.str(), "magnitude:\t0.5\nx:\t0\ty:\t0.5\tz:\t0\n");
  std::ostringstream negative;
  gsl_Vector(0.0, 0.5, 0.0).Print(negative, -3);
  EXPECT_EQ(negative.str(), flush.str());
}

TEST(GslVectorPrint, WritesFifteenSignificantDigits) {
  std::ostringstream out;
  WithMagnitude(1.0 / 3.0, 2e20, -1.0 / 7e-10, kInfinity).Print(out, 0);
  EXPECT_EQ(out.str(),
            "magnitude:\tinf\nx:\t0.333333333333333\ty:\t2e+20\tz:\t-1428571428.57143\n");
}

TEST(GslVectorPrint, FlushesAfterEachLine) {
  FlushRecorder buffer;
  std::ostream out(&buffer);
  gsl_Vector(3.0, 0.0, 4.0).Print(out, 1);
  ASSERT_EQ(buffer.atFlush.size(), 2u);
  EXPECT_EQ(buffer.atFlush[0], " magnitude:\t5\n");
  EXPECT_EQ(buffer.atFlush[1], " magnitude:\t5\n x:\t3\ty:\t0\tz:\t4\n");
}

// ---- bad input

TEST(GslVector, HostileNumbersNeverCrash) {
  const std::uint64_t seed = 20;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  RandomNumbers random(seed);
  for (int round = 0; round < 20000; ++round) {
    const auto any = [&random] {
      return gsl_Vector(random.Hostile(), random.Hostile(), random.Hostile());
    };
    const gsl_Vector a = any(), b = any(), c = any();
    const gsl_Plane plane(gsl_Point(random.Hostile(), random.Hostile(), random.Hostile()), c);
    gsl_Vector n(a);
    if (!n.Normalize()) {
      EXPECT_TRUE(SameBits(n, a));
    }
    a.NormalizedCopy();
    EXPECT_NE(a == b, a != b);
    static_cast<void>(a.IsOn(b));
    static_cast<void>(a.IsOrthogonal(b));
    if (a.SameDirection(b, 1e-6)) {
      EXPECT_TRUE(a.IsParallel(b, 1e-6));
    }
    a.AnyOrthogonalUnit();
    a.BestAlignedOrthogonalUnit();
    a.ProjectOn(plane);
    double angle = kSentinel;
    if (!a.AngleBetween(b, c, angle)) {
      EXPECT_EQ(angle, kSentinel);
    }
    const double with = a.AngleWith(b, false);
    EXPECT_FALSE(with < 0.0 || with > kPi);
    a.AngleWith(b, true, c);
    gsl_Matrix m;
    m.SetRotationVectors(a, b, c);
    n.RotateAndTransform(m);
    n.Scale(random.Hostile());
    gsl_Vector(gsl_Point(a.x, a.y, a.z), gsl_Point(b.x, b.y, b.z), gsl_Point(c.x, c.y, c.z));
    std::ostringstream out;
    if (round < 100) a.Print(out, round % 3);
  }
}
