#include "kernel/Plane.h"

#include "KernelNames.h"
#include "RandomNumbers.h"
#include "TestScale.h"

namespace {

using namespace kernel_names;
using gsl_kernel::Plane;
using gsl_kernel::RayPlane;

constexpr double kCosine = 1e-10;

/// z = 1, with a normal that is not a unit vector.
Plane AtOne() {
  return {{5.0, 7.0, 1.0}, Measure({0.0, 0.0, 2.0})};
}

TEST(KernelPlane, SignedDistanceIsPositiveOnTheSideOfTheNormal) {
  EXPECT_EQ(SignedPlaneDistance({0.0, 0.0, 4.0}, AtOne()), 3.0);
  EXPECT_EQ(SignedPlaneDistance({9.0, -9.0, -4.0}, AtOne()), -5.0);
  EXPECT_EQ(PlaneDistance({9.0, -9.0, -4.0}, AtOne()), 5.0);
}

TEST(KernelPlane, DistanceOfZeroHasTheOtherSign) {
  const Coord3 on = {0.0, 0.0, 1.0};
  EXPECT_FALSE(std::signbit(SignedPlaneDistance(on, AtOne())));
  EXPECT_TRUE(std::signbit(PlaneDistance(on, AtOne())));
}

TEST(KernelPlane, ZeroNormalMeasuresNaNAndHoldsNoPoint) {
  const Plane none = {{0.0, 0.0, 0.0}, Measure({0.0, 0.0, 0.0})};
  EXPECT_TRUE(std::isnan(PlaneDistance({1.0, 2.0, 3.0}, none)));
  EXPECT_FALSE(IsOnPlane({0.0, 0.0, 0.0}, none, 1e300));
}

TEST(KernelPlane, DistanceAlongTakesTheSignOfTheDirection) {
  const Coord3 p = {0.0, 0.0, 4.0};
  EXPECT_EQ(PlaneDistanceAlong(p, AtOne(), Measure({0.0, 0.0, 5.0})), 3.0);
  EXPECT_EQ(PlaneDistanceAlong(p, AtOne(), Measure({0.0, 0.0, -5.0})), -3.0);
  // Along (0, 3, 4) a height of 3 takes 3 * 5 / 4.
  EXPECT_EQ(PlaneDistanceAlong(p, AtOne(), Measure({0.0, 3.0, 4.0})), 3.75);
  EXPECT_EQ(PlaneDistanceAlong(p, AtOne(), Measure({1.0, 0.0, 0.0})), kInfinity);
  EXPECT_TRUE(std::isnan(PlaneDistanceAlong({0, 0, 1}, AtOne(), Measure({1.0, 0.0, 0.0}))));
}

TEST(KernelPlane, OnThePlaneIsStrict) {
  EXPECT_FALSE(IsOnPlane({0.0, 0.0, 1.0 + kTolerance}, AtOne(), kTolerance));
  EXPECT_TRUE(IsOnPlane({0.0, 0.0, Below(1.0 + kTolerance)}, AtOne(), kTolerance));
  EXPECT_FALSE(IsOnPlane({0.0, 0.0, 1.0 - kTolerance}, AtOne(), kTolerance));
  EXPECT_TRUE(IsOnPlane({0.0, 0.0, Above(1.0 - kTolerance)}, AtOne(), kTolerance));
}

TEST(KernelPlane, CertainlyOffThePlaneIsNeverOnThePlane) {
  RandomNumbers random(0x0FF);
  long off = 0;
  for (long i = 0; i < Scaled(200000) && !testing::Test::HasFailure(); ++i) {
    const double normal = random.Below(8) == 0 ? random.Hostile() : random.In(0.1, 3.0);
    Plane plane = {{0.0, 0.0, 0.0}, Measure({0.0, 0.0, normal})};
    if (random.Below(8) == 0) plane.normal.magnitude = random.In(-2.0, 2.0);
    const double tolerance = random.Below(8) == 0 ? random.Hostile() : 1e-6;
    const double near = 1.0 + (random.Below(9) - 4) * 0x1p-52;
    const double height = random.Below(2) == 0 ? tolerance * near : random.In(-1e-5, 1e-5);
    const Coord3 p = {1.0, 2.0, height};
    const double away = gsl_kernel::Dot(gsl_kernel::Subtract(p, plane.point), plane.normal.c);
    const bool isOff = gsl_kernel::IsCertainlyOffPlane(away, plane, tolerance);
    EXPECT_FALSE(isOff && gsl_kernel::IsOnPlane(p, plane, tolerance));
    if (isOff) ++off;
  }
  EXPECT_GT(off, Scaled(200000) / 10);
}

TEST(KernelPlane, CertainlyOffThePlaneIsDecidedJustBeyondTheTolerance) {
  // The normal has the length 2, so a tolerance of 0.25 allows 0.5 of it.
  EXPECT_FALSE(IsCertainlyOffPlane(0.5, AtOne(), 0.25));
  EXPECT_TRUE(IsCertainlyOffPlane(Above(0.5), AtOne(), 0.25));
  EXPECT_TRUE(IsCertainlyOffPlane(Below(-0.5), AtOne(), 0.25));
  EXPECT_FALSE(IsCertainlyOffPlane(0.0, AtOne(), 0.0));
  EXPECT_TRUE(IsCertainlyOffPlane(numbers::kDenormal, AtOne(), 0.0));
  EXPECT_FALSE(IsCertainlyOffPlane(4.0, AtOne(), kNaN));
}

TEST(KernelPlane, FootOfAShortNormalIsThePointItself) {
  EXPECT_XYZ(FootOnPlane({3.0, 4.0, 9.0}, AtOne(), 2.0), 3.0, 4.0, 1.0);
  EXPECT_XYZ(FootOnPlane({3.0, 4.0, 9.0}, AtOne(), Above(2.0)), 3.0, 4.0, 9.0);
}

RayPlane Ray(const Coord3& p, const Measured3& dir, Coord3& out) {
  out = {kSentinel, kSentinel, kSentinel};
  return IntersectRayPlane(p, dir, AtOne(), kTolerance, kCosine, out);
}

TEST(KernelPlane, RayCrossesInBothSenses) {
  Coord3 out;
  EXPECT_EQ(Ray({1.0, 2.0, 3.0}, Measure({0.0, 1.0, 1.0}), out), RayPlane::Crossing);
  EXPECT_XYZ(out, 1.0, 0.0, 1.0);
  EXPECT_EQ(Ray({1.0, 2.0, 3.0}, Measure({0.0, -1.0, -1.0}), out), RayPlane::Crossing);
  EXPECT_XYZ(out, 1.0, 0.0, 1.0);
}

TEST(KernelPlane, RayTestsTheDirectionBeforeTheOrigin) {
  Coord3 out;
  const Coord3 on = {1.0, 2.0, 1.0};
  EXPECT_EQ(Ray(on, Measure({0.0, 0.0, Below(kTolerance)}), out), RayPlane::ShortDirection);
  EXPECT_EQ(Ray(on, Measure({0.0, 0.0, kTolerance}), out), RayPlane::OriginOnPlane);
  EXPECT_EQ(Ray(on, Measure({1.0, 0.0, 0.0}), out), RayPlane::OriginOnPlane);
  EXPECT_EQ(Ray({1.0, 2.0, 9.0}, Measure({1.0, 0.0, 0.0}), out), RayPlane::ParallelDirection);
  EXPECT_XYZ(out, kSentinel, kSentinel, kSentinel);
}

TEST(KernelPlane, RayMultipliesByTheLengthOfTheDirectionFirst) {
  // The dot product of (3, 0, 0) and (4, 3, 0) is 12. With the double 0.8, (0.8 * 5) * 3 is 12, and
  // (0.8 * 3) * 5 is the next number.
  const Measured3 along = Measure({3.0, 0.0, 0.0}), aslant = Measure({4.0, 3.0, 0.0});
  const Coord3 p = {9.0, 0.0, 0.0};
  Coord3 out;
  EXPECT_EQ(gsl_kernel::IntersectRayPlane(p, along, {{0, 0, 0}, aslant}, kTolerance, 0.8, out),
            RayPlane::ParallelDirection);
  EXPECT_EQ(gsl_kernel::IntersectRayPlane(p, aslant, {{0, 0, 0}, along}, kTolerance, 0.8, out),
            RayPlane::Crossing);
}

TEST(KernelPlane, RayFromThePlaneGoesNowhereWithAToleranceBelowZero) {
  // No point is on the plane then. The way back is +0, and -0 + 0 is +0.
  Coord3 out = {kSentinel, kSentinel, kSentinel};
  EXPECT_EQ(IntersectRayPlane({-0.0, 0.0, 1.0}, Measure({1.0, 0.0, 1.0}), AtOne(), -kTolerance,
                              kCosine, out),
            RayPlane::Crossing);
  EXPECT_XYZ(out, 0.0, 0.0, 1.0);
  EXPECT_FALSE(std::signbit(out.x));
}

TEST(KernelPlane, RayHasTheBitsOfTheWrittenOrder) {
  using gsl_kernel::Dot;
  using gsl_kernel::Subtract;
  RandomNumbers random(0x0FE);
  const auto number = [&random] {
    const bool isHostile = random.Below(16) == 0;
    const bool isZero = random.Below(8) == 0;
    return isHostile ? random.Hostile() : isZero ? 0.0 : random.In(-2.0, 2.0);
  };
  const auto point = [&number] {
    const double x = number();
    const double y = number();
    const double z = number();
    return Coord3{x, y, z};
  };
  long crossings = 0;
  for (long i = 0; i < Scaled(200000) && !testing::Test::HasFailure(); ++i) {
    const Coord3 p = point();
    const Coord3 onPlane = point();
    const Coord3 normal = point();
    const Measured3 dir = Measure(point());
    const Plane plane = {random.Below(16) == 0 ? p : onPlane, Measure(normal)};
    const double tolerance = random.Below(4) == 0 ? 0.0 : 1e-6;
    Coord3 out = {kSentinel, kSentinel, kSentinel};
    if (IntersectRayPlane(p, dir, plane, tolerance, kCosine, out) != RayPlane::Crossing) continue;
    ++crossings;
    const double s = Dot(Subtract(plane.point, p), plane.normal.c) / Dot(dir.c, plane.normal.c);
    const double expected[3] = {p.x + dir.c.x * s, p.y + dir.c.y * s, p.z + dir.c.z * s};
    const double actual[3] = {out.x, out.y, out.z};
    for (int k = 0; k < 3; ++k) {
      EXPECT_TRUE(numbers::SameBits(actual[k], expected[k]) ||
                  (std::isnan(actual[k]) && std::isnan(expected[k])))
          << i << " " << k;
    }
  }
  EXPECT_GT(crossings, Scaled(200000) / 3);
}

TEST(KernelPlane, RayOfNaNCrossesAtNaN) {
  Coord3 out;
  EXPECT_EQ(Ray({1.0, 2.0, kNaN}, Measure({0.0, 0.0, 1.0}), out), RayPlane::Crossing);
  EXPECT_TRUE(std::isnan(out.z));
}

TEST(KernelPlane, DistanceOfPlanesThatAreNotParallelIsZero) {
  const Plane above = {{0.0, 0.0, 4.0}, Measure({0.0, 0.0, -7.0})};
  EXPECT_EQ(DistanceBetweenParallelPlanes(above, AtOne(), kCosine), 3.0);
  const Plane steep = {{0.0, 0.0, 4.0}, Measure({0.0, 1.0, 0.0})};
  EXPECT_EQ(DistanceBetweenParallelPlanes(steep, AtOne(), kCosine), 0.0);
}

TEST(KernelPlane, ParallelIsStrictAndAZeroNormalIsParallelToNothing) {
  // The cross product of (0, 0, 2) and (0, 3, 4) has the length 6, the lengths are 2 and 5.
  const Plane leaning = {{0.0, 0.0, 0.0}, Measure({0.0, 3.0, 4.0})};
  EXPECT_FALSE(PlanesParallel(leaning, AtOne(), Below(0.6)));
  EXPECT_TRUE(PlanesParallel(leaning, AtOne(), Above(0.6)));
  const Plane none = {{0.0, 0.0, 0.0}, Measure({0.0, 0.0, 0.0})};
  EXPECT_FALSE(PlanesParallel(none, AtOne(), 1.0));
}

TEST(KernelPlane, ParallelMultipliesByTheLengthOfTheSecondNormalFirst) {
  // The cross product of (3, 0, 0) and (3, 4, 0) is 12. With the double 0.8, (0.8 * 5) * 3 is 12,
  // and (0.8 * 3) * 5 is the next number.
  const Plane along = {{0.0, 0.0, 0.0}, Measure({3.0, 0.0, 0.0})};
  const Plane aslant = {{7.0, 0.0, 0.0}, Measure({3.0, 4.0, 0.0})};
  EXPECT_FALSE(PlanesParallel(along, aslant, 0.8));
  EXPECT_TRUE(PlanesParallel(aslant, along, 0.8));
  EXPECT_EQ(DistanceBetweenParallelPlanes(along, aslant, 0.8), 0.0);
  EXPECT_EQ(DistanceBetweenParallelPlanes(aslant, along, 0.8), 7.0);
}

} // namespace
