#include "gsl_ThreePoints.h"

#include "Numbers.h"
#include "RandomNumbers.h"
#include "ScopedSettings.h"
#include "TestScale.h"
#include "gsl_utils.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using numbers::Above;
using numbers::Below;
using numbers::kNaN;

gsl_StLine LineAlong(const gsl_Point& p, const gsl_Vector& d) {
  return {p, d};
}

TEST(GslThreePoints, NormalIsRightHandedAndUnit) {
  gsl_Vector normal(7.0, 7.0, 7.0);
  EXPECT_TRUE(gsl_NormalToThreePoints({0.0, 0.0, 0.0}, {2.0, 0.0, 0.0}, {0.0, 3.0, 0.0}, normal));
  EXPECT_XYZ(normal, 0.0, 0.0, 1.0);
  EXPECT_TRUE(gsl_NormalToThreePoints({0.0, 0.0, 0.0}, {0.0, 3.0, 0.0}, {2.0, 0.0, 0.0}, normal));
  EXPECT_XYZ(normal, 0.0, 0.0, -1.0);
}

TEST(GslThreePoints, NormalOfCollinearPointsIsWrittenAsZeroAndRefused) {
  gsl_Vector normal(7.0, 7.0, 7.0);
  EXPECT_FALSE(gsl_NormalToThreePoints({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, {3.0, 3.0, 3.0}, normal));
  EXPECT_XYZ(normal, 0.0, 0.0, 0.0);
  EXPECT_EQ(normal.magnitude, 0.0);
}

TEST(GslThreePoints, NormalMustBeLongerThanTheTolerance) {
  const ScopedSettings settings;
  settings->linearTolerance = 1.0;
  gsl_Vector normal(7.0, 7.0, 7.0);
  EXPECT_FALSE(gsl_NormalToThreePoints({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {1.0, 1.0, 0.0}, normal));
  EXPECT_XYZ(normal, 0.0, 0.0, 1.0);
  settings->linearTolerance = Below(1.0);
  EXPECT_TRUE(gsl_NormalToThreePoints({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {1.0, 1.0, 0.0}, normal));
}

TEST(GslThreePoints, CoincidentOrCollinearDotsAreColinear) {
  const gsl_Dot p(1.0, 2.0, 3.0);
  const gsl_Dot q(2.0, 4.0, 6.0);
  const gsl_Dot r(3.0, 6.0, 9.0);
  EXPECT_TRUE(gsl_ThreePointsColinear(&p, &p, &p));
  EXPECT_TRUE(gsl_ThreePointsColinear(&p, &p, &q));
  EXPECT_TRUE(gsl_ThreePointsColinear(&p, &q, &r));
  EXPECT_TRUE(gsl_ThreePointsColinear(&r, &p, &q));
}

TEST(GslThreePoints, MiddleDotDecidesAboutColinear) {
  const ScopedSettings settings;
  // The sines at the corner and at the ends of the long and the short leg: 1, 0.447 and 0.894.
  settings->cosineTolerance = 0.95;
  const gsl_Dot corner(0.0, 0.0, 0.0);
  const gsl_Dot longLeg(2.0, 0.0, 0.0);
  const gsl_Dot shortLeg(0.0, 1.0, 0.0);
  EXPECT_FALSE(gsl_ThreePointsColinear(&longLeg, &corner, &shortLeg));
  EXPECT_TRUE(gsl_ThreePointsColinear(&longLeg, &shortLeg, &corner));
  EXPECT_TRUE(gsl_ThreePointsColinear(&corner, &longLeg, &shortLeg));
  settings->cosineTolerance = 0.6;
  EXPECT_TRUE(gsl_ThreePointsColinear(&corner, &longLeg, &shortLeg));
  EXPECT_FALSE(gsl_ThreePointsColinear(&longLeg, &shortLeg, &corner));
}

TEST(GslThreePoints, NaNIsColinearAndNothingElse) {
  const gsl_Dot nan(kNaN, 0.0, 0.0);
  const gsl_Dot p(0.0, 0.0, 0.0);
  const gsl_Dot q(0.0, 1.0, 0.0);
  EXPECT_TRUE(gsl_ThreePointsColinear(&nan, &p, &q));
  EXPECT_FALSE(gsl_PointsAreCoincident(&nan, &nan));
  const gsl_StLine nowhere = LineAlong({kNaN, kNaN, kNaN}, {kNaN, kNaN, kNaN});
  const gsl_StLine a = LineAlong({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0});
  EXPECT_FALSE(gsl_LinesAreParallel(&a, &nowhere));
  EXPECT_FALSE(gsl_LinesAreSkew(&a, &nowhere));
  const gsl_Plane none({0.0, 0.0, 0.0}, {kNaN, kNaN, kNaN});
  EXPECT_FALSE(gsl_PlanesAreParallel(&none, &none));
  gsl_Vector normal(7.0, 7.0, 7.0);
  EXPECT_FALSE(gsl_NormalToThreePoints(nan.GetPoint(), p.GetPoint(), q.GetPoint(), normal));
  EXPECT_TRUE(std::isnan(normal.x));
  EXPECT_TRUE(std::isnan(normal.magnitude));
}

TEST(GslThreePoints, DotsOfATriangleAreNotColinear) {
  const gsl_Dot p(0.0, 0.0, 0.0);
  const gsl_Dot q(1.0, 0.0, 0.0);
  const gsl_Dot r(0.0, 1e-3, 0.0);
  EXPECT_FALSE(gsl_ThreePointsColinear(&p, &q, &r));
}

TEST(GslThreePoints, CoincidentIsStrictlyCloserThanTheTolerance) {
  const ScopedSettings settings;
  settings->linearTolerance = 0.5;
  const gsl_Dot p(0.0, 0.0, 0.0);
  const gsl_Dot at(0.5, 0.0, 0.0);
  const gsl_Dot below(Below(0.5), 0.0, 0.0);
  EXPECT_TRUE(gsl_PointsAreCoincident(&p, &p));
  EXPECT_TRUE(gsl_PointsAreCoincident(&p, &below));
  EXPECT_FALSE(gsl_PointsAreCoincident(&p, &at));
}

TEST(GslThreePoints, ParallelLinesMayRunInOppositeDirections) {
  const gsl_StLine a = LineAlong({0.0, 0.0, 0.0}, {1.0, 2.0, 3.0});
  const gsl_StLine same = LineAlong({5.0, 0.0, 0.0}, {2.0, 4.0, 6.0});
  const gsl_StLine opposite = LineAlong({5.0, 0.0, 0.0}, {-0.5, -1.0, -1.5});
  const gsl_StLine other = LineAlong({0.0, 0.0, 0.0}, {1.0, 2.0, 3.001});
  EXPECT_TRUE(gsl_LinesAreParallel(&a, &same));
  EXPECT_TRUE(gsl_LinesAreParallel(&a, &opposite));
  EXPECT_FALSE(gsl_LinesAreParallel(&a, &other));
}

TEST(GslThreePoints, ParallelIsStrictlyBelowTheCosineTolerance) {
  const ScopedSettings settings;
  // |a x b| is 3, and 0.6 |a| |b| is 3 exactly.
  settings->cosineTolerance = 0.6;
  const gsl_StLine a = LineAlong({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0});
  const gsl_StLine at = LineAlong({0.0, 0.0, 0.0}, {4.0, 3.0, 0.0});
  EXPECT_FALSE(gsl_LinesAreParallel(&a, &at));
  settings->cosineTolerance = Above(0.6);
  EXPECT_TRUE(gsl_LinesAreParallel(&a, &at));
}

TEST(GslThreePoints, LineWithoutDirectionIsParallelToNothing) {
  const gsl_StLine a = LineAlong({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0});
  const gsl_StLine none = LineAlong({0.0, 0.0, 0.0}, {0.0, 0.0, 0.0});
  EXPECT_FALSE(gsl_LinesAreParallel(&a, &none));
  EXPECT_FALSE(gsl_LinesAreParallel(&none, &none));
}

TEST(GslThreePoints, PlanesAreParallelByTheirNormals) {
  const gsl_Plane a({0.0, 0.0, 0.0}, {0.0, 0.0, 2.0});
  const gsl_Plane opposite({0.0, 0.0, 4.0}, {0.0, 0.0, -0.1});
  const gsl_Plane other({0.0, 0.0, 0.0}, {0.0, 0.01, 2.0});
  const gsl_Plane none({0.0, 0.0, 0.0}, {0.0, 0.0, 0.0});
  EXPECT_TRUE(gsl_PlanesAreParallel(&a, &opposite));
  EXPECT_FALSE(gsl_PlanesAreParallel(&a, &other));
  EXPECT_FALSE(gsl_PlanesAreParallel(&a, &none));
}

TEST(GslThreePoints, AntiparallelLinesAreParallelAndNotSkew) {
  const gsl_StLine a = LineAlong({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0});
  const gsl_StLine b = LineAlong({0.0, 3.0, 5.0}, {-1.0, 0.0, 0.0});
  EXPECT_TRUE(gsl_LinesAreParallel(&a, &b));
  EXPECT_FALSE(gsl_LinesAreSkew(&a, &b));
}

TEST(GslThreePoints, IntersectingLinesAreNotSkew) {
  const gsl_StLine a = LineAlong({-1.0, 0.0, 0.0}, {1.0, 0.0, 0.0});
  const gsl_StLine b = LineAlong({0.0, 2.0, 0.0}, {0.0, 1.0, 0.0});
  EXPECT_FALSE(gsl_LinesAreSkew(&a, &b));
}

TEST(GslThreePoints, LinesExactlyTheToleranceApartAreNotSkew) {
  const ScopedSettings settings;
  settings->linearTolerance = 0.25;
  const gsl_StLine a = LineAlong({0.0, 0.0, 0.0}, {1.0, 0.0, 0.0});
  const gsl_StLine at = LineAlong({0.0, 0.0, 0.25}, {0.0, 1.0, 0.0});
  const gsl_StLine above = LineAlong({0.0, 0.0, Above(0.25)}, {0.0, 1.0, 0.0});
  const gsl_StLine under = LineAlong({0.0, 0.0, -Above(0.25)}, {0.0, 1.0, 0.0});
  EXPECT_FALSE(gsl_LinesAreSkew(&a, &at));
  EXPECT_TRUE(gsl_LinesAreSkew(&a, &above));
  EXPECT_TRUE(gsl_LinesAreSkew(&a, &under));
}

TEST(GslThreePoints, LinesOfShortDirectionsCountAsParallelForSkewness) {
  const gsl_StLine a = LineAlong({0.0, 0.0, 0.0}, {1e-4, 0.0, 0.0});
  const gsl_StLine b = LineAlong({0.0, 0.0, 9.0}, {0.0, 1e-4, 0.0});
  EXPECT_FALSE(gsl_LinesAreSkew(&a, &b));
}

TEST(GslCircumCircle, RightTriangleHasItsCentreAtTheMiddleOfTheHypotenuse) {
  gsl_Point centre;
  gsl_Vector normal;
  gsl_ComputeCircumCircle({0.0, 0.0, 0.0}, {4.0, 0.0, 0.0}, {0.0, 3.0, 0.0}, centre, normal);
  EXPECT_XYZ_NEAR(centre, 2.0, 1.5, 0.0, 1e-15);
  EXPECT_XYZ(normal, 0.0, 0.0, 1.0);
  EXPECT_EQ(normal.magnitude, 1.0);
}

TEST(GslCircumCircle, NormalFollowsTheOrderOfThePoints) {
  gsl_Point centre;
  gsl_Vector normal;
  gsl_ComputeCircumCircle({0.0, 0.0, 0.0}, {0.0, 3.0, 0.0}, {4.0, 0.0, 0.0}, centre, normal);
  EXPECT_XYZ(normal, 0.0, 0.0, -1.0);
  EXPECT_XYZ_NEAR(centre, 2.0, 1.5, 0.0, 1e-15);
}

TEST(GslCircumCircle, CentreKeepsItsIdentity) {
  gsl_Point centre(9.0, 9.0, 9.0);
  const cls_Uid uid = centre.uid;
  gsl_Vector normal;
  gsl_ComputeCircumCircle({0.0, 0.0, 0.0}, {4.0, 0.0, 0.0}, {0.0, 3.0, 0.0}, centre, normal);
  EXPECT_EQ(centre.uid, uid);
  EXPECT_EQ(centre.x, 2.0);
}

TEST(GslCircumCircle, CentreMayBeOneOfThePoints) {
  gsl_Point p(4.0, 0.0, 0.0);
  gsl_Vector normal;
  gsl_ComputeCircumCircle({0.0, 0.0, 0.0}, p, {0.0, 3.0, 0.0}, p, normal);
  EXPECT_XYZ_NEAR(p, 2.0, 1.5, 0.0, 1e-15);
}

TEST(GslCircumCircle, CollinearPointsLeaveTheCentreAndWriteTheNormal) {
  gsl_Point centre(9.0, 8.0, 7.0);
  const cls_Uid uid = centre.uid;
  gsl_Vector normal(5.0, 5.0, 5.0);
  gsl_ComputeCircumCircle({0.0, 0.0, 0.0}, {1.0, 1.0, 0.0}, {2.0, 2.0, 0.0}, centre, normal);
  EXPECT_XYZ(centre, 9.0, 8.0, 7.0);
  EXPECT_EQ(centre.uid, uid);
  EXPECT_XYZ(normal, 0.0, 0.0, 0.0);
}

TEST(GslCircumCircle, CoincidentPointsLeaveTheCentre) {
  gsl_Point centre(9.0, 8.0, 7.0);
  gsl_Vector normal(5.0, 5.0, 5.0);
  const gsl_Point p(1.0, 2.0, 3.0);
  gsl_ComputeCircumCircle(p, p, p, centre, normal);
  EXPECT_XYZ(centre, 9.0, 8.0, 7.0);
  EXPECT_XYZ(normal, 0.0, 0.0, 0.0);
}

TEST(GslCircumCircle, NormalShorterThanTheToleranceIsNotNormalised) {
  gsl_Point centre(9.0, 8.0, 7.0);
  gsl_Vector normal;
  gsl_ComputeCircumCircle({0.0, 0.0, 0.0}, {1e-4, 0.0, 0.0}, {0.0, 1e-4, 0.0}, centre, normal);
  EXPECT_NEAR(normal.z, 1e-8, 1e-20);
  // The third equation is then equally short, and so is the determinant.
  EXPECT_XYZ(centre, 9.0, 8.0, 7.0);
}

TEST(GslCircumCircle, DeterminantOfExactlyTheToleranceIsSolved) {
  const ScopedSettings settings;
  // Unit rows (1, 0, 0), (0, -1, 0) and (0, 0, -1): the determinant is 1.
  const gsl_Point p0(1.0, 0.0, 0.0);
  const gsl_Point p1(0.0, 0.0, 0.0);
  const gsl_Point p2(0.0, 1.0, 0.0);
  gsl_Vector normal;
  gsl_Point centre(9.0, 8.0, 7.0);
  settings->linearTolerance = Above(1.0);
  gsl_ComputeCircumCircle(p0, p1, p2, centre, normal);
  EXPECT_XYZ(centre, 9.0, 8.0, 7.0);
  settings->linearTolerance = 1.0;
  gsl_ComputeCircumCircle(p0, p1, p2, centre, normal);
  EXPECT_XYZ(centre, 0.5, 0.5, 0.0);
}

TEST(GslCircumCircle, BisectingPlaneShorterThanTheToleranceIsNotScaled) {
  const ScopedSettings settings;
  settings->linearTolerance = 0.75;
  // The first row is (-0.5, 0, 0) without scaling: the determinant is 0.5. With scaling it would
  // be 1.
  gsl_Point centre(9.0, 8.0, 7.0);
  gsl_Vector normal;
  gsl_ComputeCircumCircle({0.0, 0.0, 0.0}, {0.25, 0.0, 0.0}, {0.25, 100.0, 0.0}, centre, normal);
  EXPECT_XYZ(centre, 9.0, 8.0, 7.0);
  settings->linearTolerance = 0.5;
  gsl_ComputeCircumCircle({0.0, 0.0, 0.0}, {0.25, 0.0, 0.0}, {0.25, 100.0, 0.0}, centre, normal);
  EXPECT_XYZ(centre, 0.125, 50.0, 0.0);
}

TEST(GslCircumCircle, BisectingPlaneOfExactlyTheToleranceIsScaled) {
  const ScopedSettings settings;
  // The first row is (-0.5, 0, 0), and the second is a unit vector along (0.6, 0.8, 0). The
  // determinant is 0.8 with the first row scaled, and 0.4 without.
  settings->linearTolerance = 0.5;
  gsl_Point centre(9.0, 8.0, 7.0);
  gsl_Vector normal;
  gsl_ComputeCircumCircle({0.0, 0.0, 0.0}, {0.25, 0.0, 0.0}, {30.25, 40.0, 0.0}, centre, normal);
  EXPECT_XYZ_NEAR(centre, 0.125, 31.34375, 0.0, 1e-12);
}

TEST(GslCircumCircle, NormalIsMadeOfTheEdgesFromTheFirstPoint) {
  // The edge from the second to the third point has no digits left for the short one.
  const double far = std::ldexp(1.0, 60);
  gsl_Point centre;
  gsl_Vector normal;
  gsl_ComputeCircumCircle({0.0, 0.0, 0.0}, {far, far, 0.0}, {1.0, 0.0, 0.0}, centre, normal);
  EXPECT_XYZ(normal, 0.0, 0.0, -1.0);
  gsl_Vector throughTheSecond;
  EXPECT_FALSE(
      gsl_NormalToThreePoints({0.0, 0.0, 0.0}, {far, far, 0.0}, {1.0, 0.0, 0.0}, throughTheSecond));
}

TEST(GslCircumCircle, NaNSpreadsAndIsNotRefused) {
  gsl_Point centre(9.0, 8.0, 7.0);
  gsl_Vector normal;
  gsl_ComputeCircumCircle({kNaN, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, centre, normal);
  EXPECT_TRUE(std::isnan(centre.x));
  EXPECT_TRUE(std::isnan(normal.z));
}

/// The centre by its barycentric coordinates, which are ai^2 (aj^2 + ak^2 - ai^2) with ai the side
/// opposite to point i; in extended precision.
void CentreByWeights(const gsl_Point* p, long double* centre) {
  long double square[3];
  for (int i = 0; i < 3; ++i) {
    const gsl_Point& a = p[(i + 1) % 3];
    const gsl_Point& b = p[(i + 2) % 3];
    const long double d[3] = {static_cast<long double>(a.x) - b.x,
                              static_cast<long double>(a.y) - b.y,
                              static_cast<long double>(a.z) - b.z};
    square[i] = d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
  }
  long double sum = 0.0L;
  centre[0] = centre[1] = centre[2] = 0.0L;
  for (int i = 0; i < 3; ++i) {
    const long double w = square[i] * (square[(i + 1) % 3] + square[(i + 2) % 3] - square[i]);
    sum += w;
    centre[0] += w * p[i].x;
    centre[1] += w * p[i].y;
    centre[2] += w * p[i].z;
  }
  for (int k = 0; k < 3; ++k)
    centre[k] /= sum;
}

TEST(GslCircumCircle, AgreesWithTheBarycentricFormula) {
  const std::uint64_t seed = 20240611;
  RandomNumbers random(seed);
  long compared = 0;
  for (long i = 0; i < Scaled(20000); ++i) {
    gsl_Point p[3];
    for (gsl_Point& q : p)
      q = gsl_Point(random.In(-5.0, 5.0), random.In(-5.0, 5.0), random.In(-5.0, 5.0));
    const gsl_Vector side1(p[0], p[1]);
    const gsl_Vector side2(p[0], p[2]);
    const double sine =
        gsl_Vector(side1).CrossProduct(side2).magnitude / (side1.magnitude * side2.magnitude);
    if (sine < 0.05) continue;
    ++compared;
    gsl_Point centre;
    gsl_Vector normal;
    gsl_ComputeCircumCircle(p[0], p[1], p[2], centre, normal);
    long double expected[3];
    CentreByWeights(p, expected);
    const double slack = 1e-10 / sine;
    ASSERT_NEAR(centre.x, static_cast<double>(expected[0]), slack) << "seed " << seed << ' ' << i;
    ASSERT_NEAR(centre.y, static_cast<double>(expected[1]), slack) << "seed " << seed << ' ' << i;
    ASSERT_NEAR(centre.z, static_cast<double>(expected[2]), slack) << "seed " << seed << ' ' << i;
    ASSERT_NEAR(normal.DotProduct(side1), 0.0, 1e-13);
    ASSERT_NEAR(normal.DotProduct(side2), 0.0, 1e-13);
  }
  EXPECT_GT(compared, Scaled(15000));
}

struct FrameOf {
  gsl_Point origin{9.0, 8.0, 7.0};
  gsl_Vector x, y, z;

  FrameOf(bool atCircumcentre, const gsl_Point& p0, const gsl_Point& p1, const gsl_Point& p2) {
    gsl_Transcribe3PointsIntoOriginAndAxes(atCircumcentre, p0, p1, p2, origin, x, y, z);
  }
};

TEST(GslThreePointFrame, AtTheFirstPointItStartsExactlyThereWithItsIdentity) {
  const gsl_Point p0(1.0, 2.0, 3.0);
  const FrameOf frame(false, p0, {4.0, 2.0, 3.0}, {2.0, 7.0, 3.0});
  EXPECT_XYZ(frame.origin, 1.0, 2.0, 3.0);
  EXPECT_EQ(frame.origin.uid, p0.uid);
  EXPECT_XYZ(frame.x, 1.0, 0.0, 0.0);
  EXPECT_XYZ(frame.y, 0.0, 1.0, 0.0);
  EXPECT_XYZ(frame.z, 0.0, 0.0, 1.0);
}

TEST(GslThreePointFrame, AtTheCircumcentreXPointsToTheFirstPoint) {
  const gsl_Point p0(5.0, 1.0, 0.0);
  const FrameOf frame(true, p0, {1.0, 5.0, 0.0}, {-3.0, 1.0, 0.0});
  EXPECT_XYZ_NEAR(frame.origin, 1.0, 1.0, 0.0, 1e-15);
  EXPECT_NE(frame.origin.uid, p0.uid);
  EXPECT_XYZ_NEAR(frame.x, 1.0, 0.0, 0.0, 1e-15);
  EXPECT_XYZ_NEAR(frame.y, 0.0, 1.0, 0.0, 1e-15);
  EXPECT_XYZ_NEAR(frame.z, 0.0, 0.0, 1.0, 1e-15);
}

TEST(GslThreePointFrame, AtTheCircumcentreTheOriginMayBeTheFirstPoint) {
  gsl_Point p0(5.0, 1.0, 0.0);
  gsl_Vector x, y, z;
  gsl_Transcribe3PointsIntoOriginAndAxes(true, p0, {1.0, 5.0, 0.0}, {-3.0, 1.0, 0.0}, p0, x, y, z);
  EXPECT_XYZ_NEAR(p0, 1.0, 1.0, 0.0, 1e-15);
  EXPECT_XYZ_NEAR(x, 1.0, 0.0, 0.0, 1e-15);
}

TEST(GslThreePointFrame, CollinearPointsAtTheCircumcentreKeepTheOldOrigin) {
  const FrameOf frame(true, {9.0, 8.0, 3.0}, {10.0, 8.0, 3.0}, {12.0, 8.0, 3.0});
  EXPECT_XYZ(frame.origin, 9.0, 8.0, 7.0);
  EXPECT_XYZ(frame.x, 0.0, 0.0, -1.0);
  EXPECT_XYZ(frame.y, 0.0, 0.0, 0.0);
  EXPECT_XYZ(frame.z, 0.0, 0.0, 0.0);
}

TEST(GslThreePointFrame, AxesShorterThanTheToleranceAreNotNormalised) {
  const FrameOf frame(false, {0.0, 0.0, 0.0}, {1e-7, 0.0, 0.0}, {0.0, 1.0, 0.0});
  EXPECT_EQ(frame.x.x, 1e-7);
  EXPECT_EQ(frame.z.z, 1e-7);
  EXPECT_NEAR(frame.y.y, 1e-14, 1e-28);
}

TEST(GslThreePointFrame, YIsCrossedBeforeTheOthersAreNormalised) {
  const FrameOf frame(false, {0.0, 0.0, 0.0}, {1e-3, 0.0, 0.0}, {0.0, 1e-2, 0.0});
  EXPECT_EQ(frame.x.x, 1.0);
  EXPECT_EQ(frame.z.z, 1.0);
  // |Z| = 1e-5 and |X| = 1e-3 before; 1e-8 is too short to be normalised.
  EXPECT_NEAR(frame.y.y, 1e-8, 1e-20);
  EXPECT_EQ(frame.y.magnitude, frame.y.y);
}

TEST(GslThreePointFrame, IsRightHandedAndOrthonormal) {
  const std::uint64_t seed = 77001;
  RandomNumbers random(seed);
  for (long i = 0; i < Scaled(5000); ++i) {
    gsl_Point p[3];
    for (gsl_Point& q : p)
      q = gsl_Point(random.In(-5.0, 5.0), random.In(-5.0, 5.0), random.In(-5.0, 5.0));
    gsl_Vector normal(p[0], p[1], p[2]);
    if (gsl_Vector(p[0], p[1]).CrossProduct(gsl_Vector(p[0], p[2])).magnitude < 0.5) continue;
    for (const bool atCircumcentre : {false, true}) {
      const FrameOf frame(atCircumcentre, p[0], p[1], p[2]);
      ASSERT_NEAR(frame.x.DotProduct(frame.y), 0.0, 1e-10) << "seed " << seed << ' ' << i;
      ASSERT_NEAR(frame.y.DotProduct(frame.z), 0.0, 1e-10);
      ASSERT_NEAR(frame.z.DotProduct(frame.x), 0.0, 1e-10);
      ASSERT_NEAR(frame.x.CrossProduct(frame.y).DotProduct(frame.z), 1.0, 1e-10);
      ASSERT_NEAR(frame.z.DotProduct(normal), 1.0, 1e-10);
      ASSERT_EQ(frame.x.magnitude, 1.0);
      ASSERT_EQ(frame.y.magnitude, 1.0);
      ASSERT_EQ(frame.z.magnitude, 1.0);
    }
  }
}

} // namespace
