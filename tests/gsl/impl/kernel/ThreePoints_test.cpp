#include "kernel/ThreePoints.h"

#include "Numbers.h"
#include "RandomNumbers.h"

namespace {

using gsl_kernel::Coord3;
using gsl_kernel::Measured3;
using gsl_kernel::PlaneEquation;
using numbers::Above;
using numbers::kNaN;
using numbers::kSentinel;

TEST(KernelThreePoints, BisectingPlaneIsHalfWayAndScaled) {
  // 2 (p - q) = (-4, 0, 0), |p|^2 - |q|^2 = 1 - 9: x = 2 after the division by 4.
  const PlaneEquation plane = gsl_kernel::BisectingPlane({1, 5, 7}, {3, 5, 7}, 1e-6);
  EXPECT_XYZ(plane.n, -1.0, 0.0, 0.0);
  EXPECT_EQ(plane.r, -2.0);
}

TEST(KernelThreePoints, BisectingPlaneOfExactlyTheToleranceIsScaled) {
  EXPECT_EQ(gsl_kernel::BisectingPlane({1, 0, 0}, {3, 0, 0}, 4.0).n.x, -1.0);
  const PlaneEquation unscaled = gsl_kernel::BisectingPlane({1, 0, 0}, {3, 0, 0}, Above(4.0));
  EXPECT_XYZ(unscaled.n, -4.0, 0.0, 0.0);
  EXPECT_EQ(unscaled.r, -8.0);
}

TEST(KernelThreePoints, BisectingPlaneOfOnePointIsZeroOrNaN) {
  EXPECT_XYZ(gsl_kernel::BisectingPlane({1, 2, 3}, {1, 2, 3}, 1e-6).n, 0.0, 0.0, 0.0);
  EXPECT_TRUE(std::isnan(gsl_kernel::BisectingPlane({1, 2, 3}, {1, 2, 3}, 0.0).n.x));
}

TEST(KernelThreePoints, CommonPointSolvesByCramersRule) {
  // x + y = 3, y + z = 5, x + z = 4 meet at (1, 2, 3).
  const PlaneEquation p1 = {{1, 1, 0}, 3}, p2 = {{0, 1, 1}, 5}, p3 = {{1, 0, 1}, 4};
  Coord3 out = {kSentinel, kSentinel, kSentinel};
  EXPECT_TRUE(CommonPoint(p1, p2, p3, 1e-6, out));
  EXPECT_XYZ(out, 1.0, 2.0, 3.0);
  EXPECT_TRUE(CommonPoint(p3, p1, p2, 1e-6, out));
  EXPECT_XYZ(out, 1.0, 2.0, 3.0);
  EXPECT_TRUE(CommonPoint(p2, p1, p3, 1e-6, out));
  EXPECT_XYZ(out, 1.0, 2.0, 3.0);
}

TEST(KernelThreePoints, DeterminantOfExactlyTheToleranceCounts) {
  const PlaneEquation x = {{1, 0, 0}, 1}, y = {{0, 1, 0}, 2}, z = {{0, 0, 0.25}, 1};
  Coord3 out = {kSentinel, kSentinel, kSentinel};
  EXPECT_FALSE(CommonPoint(x, y, z, Above(0.25), out));
  EXPECT_FALSE(CommonPoint(y, x, z, Above(0.25), out));
  EXPECT_XYZ(out, kSentinel, kSentinel, kSentinel);
  EXPECT_TRUE(CommonPoint(x, y, z, 0.25, out));
  EXPECT_XYZ(out, 1.0, 2.0, 4.0);
}

TEST(KernelThreePoints, NaNDeterminantCounts) {
  const PlaneEquation x = {{1, 0, 0}, 1}, y = {{0, 1, 0}, 2}, nan = {{0, 0, kNaN}, 1};
  Coord3 out = {kSentinel, kSentinel, kSentinel};
  EXPECT_TRUE(CommonPoint(x, y, nan, 1e-6, out));
  EXPECT_TRUE(std::isnan(out.x));
}

TEST(KernelThreePoints, CircumNormalIsNormalisedFromTheToleranceOn) {
  // (2, 0, 0) x (0, 3, 0) has the length 6.
  const Measured3 unit = gsl_kernel::CircumNormal({0, 0, 0}, {2, 0, 0}, {0, 3, 0}, 6.0);
  EXPECT_XYZ(unit.c, 0.0, 0.0, 1.0);
  EXPECT_EQ(unit.magnitude, 1.0);
  const Measured3 raw = gsl_kernel::CircumNormal({0, 0, 0}, {2, 0, 0}, {0, 3, 0}, Above(6.0));
  EXPECT_XYZ(raw.c, 0.0, 0.0, 6.0);
  EXPECT_EQ(raw.magnitude, 6.0);
}

TEST(KernelThreePoints, CircumCentreOfARightAngleIsTheMiddleOfTheHypotenuse) {
  Coord3 centre = {kSentinel, kSentinel, kSentinel};
  const Coord3 normal = {0, 0, 1};
  const Coord3 p[3] = {{0, 0, 5}, {4, 0, 5}, {0, 2, 5}};
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(
        gsl_kernel::CircumCentre(p[i], p[(i + 1) % 3], p[(i + 2) % 3], normal, 1e-6, centre));
    EXPECT_XYZ_NEAR(centre, 2.0, 1.0, 5.0, 1e-14);
  }
}

TEST(KernelThreePoints, CircumCentreOfCollinearPointsIsUnwritten) {
  Coord3 centre = {kSentinel, kSentinel, kSentinel};
  EXPECT_FALSE(gsl_kernel::CircumCentre({0, 0, 0}, {1, 0, 0}, {3, 0, 0}, {0, 0, 0}, 1e-6, centre));
  EXPECT_XYZ(centre, kSentinel, kSentinel, kSentinel);
}

TEST(KernelThreePoints, CentreHasTheBitsOfThePlanesInTheirOrder) {
  // Whole numbers make zeros, whose signs depend on the order, and parts make roundings.
  RandomNumbers random(0x3901);
  for (int i = 0; i < 2000 && !testing::Test::HasFailure(); ++i) {
    const double part = i % 2 == 0 ? 1.0 : random.In(0.1, 1.0);
    Coord3 p[3] = {};
    for (Coord3& point : p) {
      for (double* const c : {&point.x, &point.y, &point.z})
        *c = part * (random.Below(5) - 2.0);
    }
    const Coord3 n = gsl_kernel::CircumNormal(p[0], p[1], p[2], 1e-6).c;
    const PlaneEquation first = gsl_kernel::BisectingPlane(p[0], p[1], 1e-6);
    const PlaneEquation second = gsl_kernel::BisectingPlane(p[1], p[2], 1e-6);
    Coord3 expected = {kSentinel, kSentinel, kSentinel}, centre = expected;
    const bool exists = CommonPoint(first, second, {n, gsl_kernel::Dot(n, p[0])}, 1e-6, expected);
    EXPECT_EQ(gsl_kernel::CircumCentre(p[0], p[1], p[2], n, 1e-6, centre), exists);
    EXPECT_PRED2(numbers::SameBits, centre.x, expected.x);
    EXPECT_PRED2(numbers::SameBits, centre.y, expected.y);
    EXPECT_PRED2(numbers::SameBits, centre.z, expected.z);
  }
}

} // namespace
