#include "kernel/Vector.h"

#include "KernelNames.h"
#include "RandomNumbers.h"
#include "TestScale.h"

namespace {

using namespace kernel_names;

TEST(KernelVector, BetweenLeadsFromTheFirstPointAndIsMeasured) {
  const Measured3 v = gsl_kernel::Between({1.0, 2.0, 3.0}, {3.0, 5.0, 9.0});
  EXPECT_XYZ(v.c, 2.0, 3.0, 6.0);
  EXPECT_EQ(v.magnitude, 7.0);
}

TEST(KernelVector, DistanceOverflowsInsteadOfScaling) {
  EXPECT_EQ(gsl_kernel::Distance({1.0, 2.0, 3.0}, {3.0, 5.0, 9.0}), 7.0);
  EXPECT_EQ(gsl_kernel::Distance({0.0, 0.0, 0.0}, {1e200, 0.0, 0.0}), kInfinity);
  EXPECT_EQ(gsl_kernel::Distance({0.0, 0.0, 0.0}, {1e-200, 0.0, 0.0}), 0.0);
  EXPECT_TRUE(std::isnan(gsl_kernel::Distance({kNaN, 0.0, 0.0}, {0.0, 0.0, 0.0})));
}

TEST(KernelVector, UnitNormalIsRightHandedInEveryOrder) {
  const Coord3 p[3] = {{0.0, 0.0, 1.0}, {2.0, 0.0, 1.0}, {0.0, 4.0, 1.0}};
  for (int i = 0; i < 3; ++i) {
    const Coord3 &a = p[i], &b = p[(i + 1) % 3], &c = p[(i + 2) % 3];
    EXPECT_XYZ(gsl_kernel::UnitNormal(a, b, c, 1e-10).c, 0.0, 0.0, 1.0);
    EXPECT_XYZ(gsl_kernel::UnitNormal(c, b, a, 1e-10).c, 0.0, 0.0, -1.0);
  }
}

TEST(KernelVector, UnitNormalIsZeroAtExactlyTheCosineTolerance) {
  // Edges (4, 0, 0) and (3, 4, 0): lengths 4 and 5, cross product 16, sine 0.8.
  const Coord3 a = {0.0, 0.0, 0.0}, b = {4.0, 0.0, 0.0}, c = {7.0, 4.0, 0.0};
  const double sine = 16.0 / (4.0 * 5.0);
  const Measured3 at = gsl_kernel::UnitNormal(a, b, c, sine);
  EXPECT_XYZ(at.c, 0.0, 0.0, 0.0);
  EXPECT_EQ(at.magnitude, 0.0);
  // 0.8 is rounded up: with a last place less, the product is below 16.
  const Measured3 below = gsl_kernel::UnitNormal(a, b, c, Below(sine));
  EXPECT_XYZ(below.c, 0.0, 0.0, 1.0);
  EXPECT_EQ(below.magnitude, 1.0);
}

TEST(KernelVector, UnitNormalOfCollinearPointsIsZeroEvenWithoutATolerance) {
  const Measured3 n = gsl_kernel::UnitNormal({0, 0, 0}, {1, 1, 1}, {3, 3, 3}, 0.0);
  EXPECT_XYZ(n.c, 0.0, 0.0, 0.0);
  EXPECT_EQ(n.magnitude, 0.0);
}

TEST(KernelVector, UnitNormalOfNaNIsNaN) {
  const Measured3 n = gsl_kernel::UnitNormal({kNaN, 0, 0}, {1, 0, 0}, {0, 1, 0}, 1e-10);
  EXPECT_TRUE(std::isnan(n.c.z));
  EXPECT_TRUE(std::isnan(n.magnitude));
}

TEST(KernelVector, UnitNormalScalesTheLengthAlong) {
  // The cross product of the edges is (0, 0, 49), and 49 (1 / 49) misses 1 by a unit roundoff.
  const Measured3 n = gsl_kernel::UnitNormal({0, 0, 0}, {7, 0, 0}, {7, 7, 0}, 1e-10);
  EXPECT_EQ(n.c.z, Below(1.0));
  EXPECT_EQ(n.magnitude, Below(1.0));
}

TEST(KernelVector, UnitComponentsDivideByTheCachedLength) {
  EXPECT_XYZ(gsl_kernel::UnitComponents(Measured3({2.0, -4.0, 8.0}, 2.0)), 1.0, -2.0, 4.0);
  EXPECT_XYZ(gsl_kernel::UnitComponents(Measured3({2.0, -4.0, 8.0}, 0.0)), 0.0, 0.0, 0.0);
  EXPECT_TRUE(std::isnan(gsl_kernel::UnitComponents(Measured3({1.0, 0.0, 0.0}, kNaN)).x));
  EXPECT_EQ(gsl_kernel::UnitComponents(Measured3({1.0, 0.0, 0.0}, numbers::kDenormal)).x,
            kInfinity);
}

TEST(KernelVector, SameComponentsIsClosedOnEveryAxis) {
  const Coord3 o = {0.0, 0.0, 0.0};
  EXPECT_TRUE(gsl_kernel::SameComponents(o, {kTolerance, -kTolerance, kTolerance}, kTolerance));
  EXPECT_FALSE(gsl_kernel::SameComponents(o, {Above(kTolerance), 0.0, 0.0}, kTolerance));
  EXPECT_FALSE(gsl_kernel::SameComponents(o, {0.0, Below(-kTolerance), 0.0}, kTolerance));
  EXPECT_FALSE(gsl_kernel::SameComponents(o, {0.0, 0.0, Above(kTolerance)}, kTolerance));
  EXPECT_TRUE(gsl_kernel::SameComponents(o, {kNaN, kNaN, kNaN}, 0.0));
}

TEST(KernelVector, OppositeDirectionsAreParallelButNotTheSame) {
  const Measured3 a = Measure({3.0, 0.0, 0.0});
  const Measured3 b = Measure({-5.0, 0.0, 0.0});
  EXPECT_FALSE(gsl_kernel::SameDirection(a, b, 0.0));
  EXPECT_TRUE(gsl_kernel::SameDirection(a, Measure({7.0, 0.0, 0.0}), 0.0));
  EXPECT_TRUE(gsl_kernel::IsParallel(a, b, 0.0));
  EXPECT_FALSE(gsl_kernel::IsParallel(a, Measure({0.0, 1.0, 0.0}), 0.5));
}

TEST(KernelVector, ZeroVectorIsParallelToADirectionOnlyWithinTheTolerance) {
  const Measured3 zero = Measure({0.0, 0.0, 0.0});
  const Measured3 x = Measure({2.0, 0.0, 0.0});
  EXPECT_FALSE(gsl_kernel::IsParallel(zero, x, Below(1.0)));
  EXPECT_TRUE(gsl_kernel::IsParallel(zero, x, 1.0));
  EXPECT_TRUE(gsl_kernel::IsParallel(zero, zero, 0.0));
}

TEST(KernelVector, AnyOrthogonalUnitOfEqualComponentsIsTheFixedOne) {
  const double half = 1.0 / std::sqrt(2.0);
  const Measured3 fixed = gsl_kernel::AnyOrthogonalUnit({5.0, 5.0, 5.0}, 1e-6);
  EXPECT_XYZ(fixed.c, half, -half, 0.0);
  EXPECT_EQ(fixed.magnitude, 1.0);
  EXPECT_XYZ(gsl_kernel::AnyOrthogonalUnit({0.0, 0.0, 0.0}, 1e-6).c, half, -half, 0.0);
}

TEST(KernelVector, AnyOrthogonalUnitTakesDifferencesOfExactlyTheTolerance) {
  // (x, x, x + tolerance) has the differences (-tolerance, tolerance, 0).
  const double length = std::sqrt(2.0 * 0.25 * 0.25);
  EXPECT_XYZ(gsl_kernel::AnyOrthogonalUnit({1.0, 1.0, 1.25}, length).c, -0.25 / length,
             0.25 / length, 0.0);
  EXPECT_XYZ(gsl_kernel::AnyOrthogonalUnit({1.0, 1.0, 1.25}, Above(length)).c, 1.0 / std::sqrt(2.0),
             -1.0 / std::sqrt(2.0), 0.0);
}

TEST(KernelVector, ProjectionOnAPlaneDropsTheComponentAlongItsNormal) {
  const Measured3 v =
      gsl_kernel::ProjectVectorOnPlane({3.0, 4.0, 5.0}, Measure({0.0, 0.0, 2.0}), 1e-6);
  EXPECT_XYZ(v.c, 3.0, 4.0, 0.0);
  EXPECT_EQ(v.magnitude, 5.0);
  // A normal that is shorter than the tolerance takes nothing away.
  const Measured3 whole =
      gsl_kernel::ProjectVectorOnPlane({3.0, 4.0, 5.0}, Measure({0.0, 0.0, 0.5}), Above(0.5));
  EXPECT_XYZ(whole.c, 3.0, 4.0, 5.0);
}

TEST(KernelVector, BestAlignedOrthogonalTakesTheEarlierAxisOfATie) {
  // X and Y are both orthogonal to Z; X comes first. (Z x X) x Z = X.
  EXPECT_XYZ(gsl_kernel::BestAlignedOrthogonalUnit(Measure({0.0, 0.0, 1.0}), 1e-6).c, 1.0, 0.0,
             0.0);
  // Along X the image of X is zero, and the image of Y comes next. (X x Y) x X = Y, times |v|^2
  // = 4.
  EXPECT_XYZ(gsl_kernel::BestAlignedOrthogonalUnit(Measure({2.0, 0.0, 0.0}), 1e-6).c, 0.0, 4.0,
             0.0);
  EXPECT_TRUE(std::isnan(gsl_kernel::BestAlignedOrthogonalUnit(Measure({kNaN, 0, 0}), 1e-6).c.x));
}

TEST(KernelVector, AngleBetweenIsSignedAboutTheAxis) {
  const Measured3 x = Measure({2.0, 0.0, 0.0}), y = Measure({0.0, 3.0, 0.0});
  const Measured3 z = Measure({0.0, 0.0, 5.0});
  double angle = kSentinel;
  EXPECT_TRUE(gsl_kernel::AngleBetween(z, x, y, 1e-6, angle));
  EXPECT_EQ(angle, std::atan2(1.0, 0.0));
  EXPECT_TRUE(gsl_kernel::AngleBetween(z, y, x, 1e-6, angle));
  EXPECT_EQ(angle, std::atan2(-1.0, 0.0));
}

TEST(KernelVector, AngleBetweenRefusesShortVectorsStrictly) {
  const Measured3 z = Measure({0.0, 0.0, 1.0});
  const Measured3 x = Measure({kTolerance, 0.0, 0.0}), y = Measure({0.0, 1.0, 0.0});
  const Measured3 shorter = Measure({Below(kTolerance), 0.0, 0.0});
  double angle = kSentinel;
  EXPECT_FALSE(gsl_kernel::AngleBetween(z, shorter, y, kTolerance, angle));
  EXPECT_FALSE(gsl_kernel::AngleBetween(z, y, shorter, kTolerance, angle));
  EXPECT_EQ(angle, kSentinel);
  EXPECT_TRUE(gsl_kernel::AngleBetween(z, x, y, kTolerance, angle));
}

TEST(KernelVector, AngleBetweenRefusesComponentsAlongTheAxisThatDifferByMore) {
  const Measured3 z = Measure({0.0, 0.0, 1.0});
  // Unit vectors with 0.6 and 0 along the axis.
  const Measured3 up = Measure({0.8, 0.0, 0.6}), level = Measure({0.0, 1.0, 0.0});
  ASSERT_EQ(up.magnitude, 1.0);
  double angle = kSentinel;
  EXPECT_FALSE(gsl_kernel::AngleBetween(z, up, level, Below(0.6), angle));
  EXPECT_EQ(angle, kSentinel);
  EXPECT_TRUE(gsl_kernel::AngleBetween(z, up, level, 0.6, angle));
}

TEST(KernelVector, AngleBetweenOfAVectorAlongTheAxisIsNaNWithoutATolerance) {
  // Nothing is left of the first vector across the axis, and 0 / 0 is NaN.
  const Measured3 z = Measure({0.0, 0.0, 1.0});
  const Measured3 beside = Measure({1e-9, 0.0, 1.0});
  ASSERT_EQ(beside.magnitude, 1.0);
  double angle = kSentinel;
  EXPECT_TRUE(gsl_kernel::AngleBetween(z, z, beside, 0.0, angle));
  EXPECT_TRUE(std::isnan(angle));
}

TEST(KernelVector, AngleBetweenDoesNotDependOnTheLengthOfTheAxis) {
  // The cached length is below the tolerance, so the axis keeps its length of 2.
  const Measured3 axis = {{0.0, 0.0, 2.0}, Below(kTolerance)};
  double angle = kSentinel;
  EXPECT_TRUE(gsl_kernel::AngleBetween(axis, Measure({1.0, 0.0, 0.0}), Measure({3.0, 4.0, 0.0}),
                                       kTolerance, angle));
  EXPECT_NEAR(angle, std::atan2(4.0, 3.0), 1e-15);
}

TEST(KernelVector, CosineBetweenDividesOnlyByLengthsAboveTheTolerance) {
  const Measured3 a = Measure({2.0, 0.0, 0.0}), b = Measure({kTolerance, 0.0, 0.0});
  EXPECT_EQ(gsl_kernel::CosineBetween(a, b, true, kTolerance), 0.5);
  EXPECT_EQ(gsl_kernel::CosineBetween(a, b, false, kTolerance), 0.0);
  EXPECT_EQ(gsl_kernel::CosineBetween(a, b, false, Below(kTolerance)), 1.0);
  // The second length decides last: a short first vector alone leaves 0 / |b|.
  EXPECT_EQ(gsl_kernel::CosineBetween(b, a, false, kTolerance), 0.0);
}

TEST(KernelVector, AngleFromCosineIsClampedAndPassesNaNOn) {
  EXPECT_EQ(gsl_kernel::AngleFromCosine(1.0), 0.0);
  EXPECT_EQ(gsl_kernel::AngleFromCosine(2.0), 0.0);
  EXPECT_GT(gsl_kernel::AngleFromCosine(Below(1.0)), 0.0);
  EXPECT_EQ(gsl_kernel::AngleFromCosine(-1.0), gsl_kernel::kPi);
  EXPECT_EQ(gsl_kernel::AngleFromCosine(-kInfinity), gsl_kernel::kPi);
  EXPECT_LT(gsl_kernel::AngleFromCosine(Above(-1.0)), gsl_kernel::kPi);
  EXPECT_TRUE(std::isnan(gsl_kernel::AngleFromCosine(kNaN)));
}

TEST(KernelVector, ParallelIsDecidedAsByDivisions) {
  RandomNumbers random(0x9A6A);
  long decided = 0;
  for (long i = 0; i < Scaled(400000) && !testing::Test::HasFailure(); ++i) {
    const auto number = [&random] {
      const int kind = random.Below(40);
      if (kind == 0) return random.Hostile();
      return kind < 20 ? random.Below(5) - 2.0 : random.In(-3.0, 3.0);
    };
    Measured3 a = Measure({number(), number(), number()});
    Measured3 b = Measure({number(), number(), number()});
    if (random.Below(2) == 0) {
      const double factor = number();
      b = Measure(gsl_kernel::Multiply(a.c, factor));
      b.c.x += random.In(-2e-5, 2e-5);
    }
    if (random.Below(8) == 0) a.magnitude = number();
    if (random.Below(8) == 0) b.magnitude = number();
    const double tolerances[] = {1e-5, 0.0, -1e-5, 0.5, kNaN, kInfinity, random.In(0.0, 1e-4)};
    const double tol = tolerances[random.Below(7)];
    const bool byDivisions = gsl_kernel::SameOrOppositeComponents(
        gsl_kernel::UnitComponents(a), gsl_kernel::UnitComponents(b), tol);
    EXPECT_EQ(gsl_kernel::IsParallel(a, b, tol), byDivisions);
    if (gsl_kernel::IsCertainlyNotParallel(a, b, tol)) ++decided;
  }
  EXPECT_GT(decided, Scaled(400000) / 10);
}

TEST(KernelVector, ParallelAcceptsComponentsThatOverflowWhenDivided) {
  // Only a stale length is this much shorter than its components. Both quotients are infinite, and
  // their difference is NaN, which every band accepts.
  Measured3 a = {{1e300, 0.0, 0.0}, 1e-10};
  Measured3 b = {{1e300, 0.0, 0.0}, 1e-9};
  EXPECT_TRUE(gsl_kernel::IsParallel(a, b, 1e-5));
  a = {{1e308, 0.0, 0.0}, 0.01};
  b = {{1e308, 0.0, 0.0}, 0.02};
  EXPECT_TRUE(gsl_kernel::IsParallel(a, b, 1e-5));
}

TEST(KernelVector, OneComponentThatDiffersDecidesThatVectorsAreNotParallel) {
  // The cached lengths are 1, so the components are compared unchanged.
  const Measured3 a = {{1.0, 1.0, 1.0}, 1.0};
  EXPECT_TRUE(gsl_kernel::IsCertainlyNotParallel(a, {{0.5, 1.0, 1.0}, 1.0}, 0.25));
  EXPECT_TRUE(gsl_kernel::IsCertainlyNotParallel(a, {{1.0, 0.5, 1.0}, 1.0}, 0.25));
  EXPECT_TRUE(gsl_kernel::IsCertainlyNotParallel(a, {{1.0, 1.0, 0.5}, 1.0}, 0.25));
  EXPECT_FALSE(gsl_kernel::IsCertainlyNotParallel(a, a, 0.25));
}

TEST(KernelVector, ParallelIsDecidedAsByDivisionsAtTheToleranceItself) {
  RandomNumbers random(0x70E);
  for (long i = 0; i < Scaled(20000) && !testing::Test::HasFailure(); ++i) {
    const double lengthA = random.In(1.0, 100.0);
    const double lengthB = random.In(1.0, 100.0);
    const double x = random.Below(2) == 0 ? 0.0 : random.In(0.5, 1.0);
    const double step = random.In(0.5, 1.0) * (random.Below(2) == 0 ? 1.0 : 1e-10);
    const Measured3 a = {{x * lengthA, lengthA, 0.0}, lengthA};
    const Measured3 b = {{(x + step) * lengthB, lengthB, 0.0}, lengthB};
    const double tol = std::fabs(b.c.x / b.magnitude - a.c.x / a.magnitude);
    EXPECT_TRUE(gsl_kernel::IsParallel(a, b, tol));
    EXPECT_FALSE(gsl_kernel::IsParallel(a, b, Below(tol)));
  }
}

TEST(KernelVector, ParallelAcceptsComponentsThatVanishWhenDivided) {
  // 1e-290 / 1e50 and 2e-290 / 1e50 are both rounded to 0.
  const Measured3 a = {{1e-290, 1e50, 0.0}, 1e50};
  const Measured3 b = {{2e-290, 1e50, 0.0}, 1e50};
  EXPECT_TRUE(gsl_kernel::IsParallel(a, b, 0.0));
}

TEST(KernelVector, ParallelAcceptsTheToleranceWhereTheProductOfTheLengthsLosesItsDigits) {
  // The unit components differ by exactly 2^900. The square of the length is 1.265625 * 2^-1074,
  // which is rounded to 2^-1074.
  const double length = 0x1.2p-537;
  ASSERT_EQ(length * length, numbers::kDenormal);
  const Measured3 a = {{0x1.2p363, length, 0.0}, length};
  const Measured3 b = {{0.0, length, 0.0}, length};
  EXPECT_TRUE(gsl_kernel::IsParallel(a, b, 0x1p900));
  EXPECT_FALSE(gsl_kernel::IsParallel(a, b, Below(0x1p900)));
}

TEST(KernelVector, ParallelIsClosedAtTheToleranceOfAComponent) {
  // The unit components differ by 0.25 in y alone.
  Measured3 a = {{1.0, 0.5, 0.0}, 1.0};
  Measured3 b = {{1.0, 0.75, 0.0}, 1.0};
  EXPECT_TRUE(gsl_kernel::IsParallel(a, b, 0.25));
  EXPECT_FALSE(gsl_kernel::IsParallel(a, b, Below(0.25)));
  b.c = {-1.0, -0.75, 0.0};
  EXPECT_TRUE(gsl_kernel::IsParallel(a, b, 0.25));
  EXPECT_FALSE(gsl_kernel::IsParallel(a, b, Below(0.25)));
}

} // namespace
