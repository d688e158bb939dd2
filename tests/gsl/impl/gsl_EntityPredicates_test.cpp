#include "gsl_EntityPredicates.h"

#include "PointChecks.h"
#include "ScopedSettings.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

using numbers::Above;
using numbers::Below;

double LinearTolerance() {
  return omi_Singleton<gsl_Util>::Instance().linearTolerance;
}

double CosineTolerance() {
  return omi_Singleton<gsl_Util>::Instance().cosineTolerance;
}

gsl_StLine Line(double px, double py, double pz, double dx, double dy, double dz) {
  return {gsl_Point(px, py, pz), gsl_Vector(dx, dy, dz)};
}

gsl_Plane PlaneAt(double pz, double nx, double ny, double nz) {
  return {gsl_Point(0.0, 0.0, pz), gsl_Vector(nx, ny, nz)};
}

/// A vector whose cached length is not its length.
gsl_Vector Stale(double x, double y, double z, double magnitude) {
  gsl_Vector v(magnitude, 0.0, 0.0);
  v[0] = x;
  v[1] = y;
  v[2] = z;
  return v;
}

TEST(GslEntityPredicates, SkewDistanceIsAlongTheCommonNormal) {
  EXPECT_EQ(lineSkewDistance(Line(0, 0, 0, 2, 0, 0), Line(9, 9, 3, 0, 5, 0)), 3.0);
  EXPECT_EQ(lineSkewDistance(Line(9, 9, 3, 0, 5, 0), Line(0, 0, 0, 2, 0, 0)), 3.0);
  EXPECT_EQ(lineSkewDistance(Line(0, 0, 0, 2, 0, 0), Line(9, 9, -3, 0, -5, 0)), 3.0);
}

TEST(GslEntityPredicates, SkewDistanceOfParallelOrZeroDirectionsIsZero) {
  EXPECT_EQ(lineSkewDistance(Line(0, 0, 0, 2, 0, 0), Line(0, 9, 3, -1, 0, 0)), 0.0);
  EXPECT_EQ(lineSkewDistance(Line(0, 0, 0, 0, 0, 0), Line(0, 9, 3, 1, 0, 0)), 0.0);
}

TEST(GslEntityPredicates, CommonNormalOfExactlyTheToleranceCounts) {
  const double tol = LinearTolerance();
  EXPECT_EQ(lineSkewDistance(Line(0, 0, 0, 1, 0, 0), Line(0, 0, 3, 0, tol, 0)), 3.0);
  EXPECT_EQ(lineSkewDistance(Line(0, 0, 0, 1, 0, 0), Line(0, 0, 3, 0, Below(tol), 0)), 0.0);
}

TEST(GslEntityPredicates, DistanceOfExactlyTheToleranceIsNotSkew) {
  const double tol = LinearTolerance();
  EXPECT_FALSE(linesAreSkew(Line(0, 0, 0, 1, 0, 0), Line(0, 0, tol, 0, 1, 0)));
  EXPECT_TRUE(linesAreSkew(Line(0, 0, 0, 1, 0, 0), Line(0, 0, Above(tol), 0, 1, 0)));
  EXPECT_TRUE(linesAreSkew(Line(0, 0, 0, 1, 0, 0), Line(0, 0, -Above(tol), 0, 1, 0)));
}

TEST(GslEntityPredicates, ParallelLinesAreNeverSkew) {
  EXPECT_FALSE(linesAreSkew(Line(0, 0, 0, 1, 0, 0), Line(0, 4, 3, -1, 0, 0)));
}

TEST(GslEntityPredicates, CoincidentLinesMayRunOppositely) {
  EXPECT_TRUE(linesCoincident(Line(0, 0, 0, 1, 0, 0), Line(7, 0, 0, -3, 0, 0)));
  EXPECT_FALSE(linesCoincident(Line(0, 0, 0, 1, 0, 0), Line(7, 1, 0, -3, 0, 0)));
  EXPECT_FALSE(linesCoincident(Line(0, 0, 0, 1, 0, 0), Line(0, 0, 0, 1, 1e-9, 0)));
}

TEST(GslEntityPredicates, ZeroDirectionIsCoincidentWithNothing) {
  EXPECT_FALSE(linesCoincident(Line(0, 0, 0, 0, 0, 0), Line(0, 0, 0, 1, 0, 0)));
  EXPECT_FALSE(linesCoincident(Line(0, 0, 0, 1, 0, 0), Line(0, 0, 0, 0, 0, 0)));
  EXPECT_FALSE(linesCoincident(Line(0, 0, 0, 0, 0, 0), Line(0, 0, 0, 0, 0, 0)));
}

TEST(GslEntityPredicates, CoincidenceIsStrictInDistanceAndCosine) {
  const double tol = LinearTolerance();
  EXPECT_FALSE(linesCoincident(Line(0, 0, 0, 1, 0, 0), Line(0, tol, 0, 1, 0, 0)));
  EXPECT_TRUE(linesCoincident(Line(0, 0, 0, 1, 0, 0), Line(0, Below(tol), 0, 1, 0, 0)));
  const double cosine = CosineTolerance();
  EXPECT_FALSE(linesCoincident(Line(0, 0, 0, 1, 0, 0), Line(0, 0, 0, 1, cosine, 0)));
  EXPECT_TRUE(linesCoincident(Line(0, 0, 0, 1, 0, 0), Line(0, 0, 0, 1, Below(cosine), 0)));
}

TEST(GslEntityPredicates, CoincidenceMeasuresTheFirstLinesPointFromTheSecond) {
  // The lines are 1e-10 off parallel. At a distance of 1e8, measured at the point of the first
  // line, they are 5e-3 apart.
  const gsl_StLine a = Line(0, 0, 0, 1, 0, 0);
  const gsl_StLine b = Line(1e8, 0, 0, 1, 5e-11, 0);
  EXPECT_FALSE(linesCoincident(a, b));
  const gsl_StLine c = Line(1e8, 0, 0, 1, 0, 0);
  const gsl_StLine e = Line(0, 0, 0, 1, 5e-11, 0);
  EXPECT_FALSE(linesCoincident(c, e));
  EXPECT_TRUE(linesCoincident(e, c));
}

TEST(GslEntityPredicates, LineParallelToPlaneIsStrict) {
  const gsl_Plane plane = PlaneAt(0, 0, 0, 1);
  const double cosine = CosineTolerance();
  EXPECT_TRUE(lineParallelToPlane(Line(0, 0, 5, 1, 1, 0), plane));
  EXPECT_FALSE(lineParallelToPlane(Line(0, 0, 5, 1, 0, cosine), plane));
  EXPECT_TRUE(lineParallelToPlane(Line(0, 0, 5, 1, 0, Below(cosine)), plane));
  EXPECT_TRUE(lineParallelToPlane(Line(0, 0, 5, 1, 0, -Below(cosine)), plane));
  EXPECT_FALSE(lineParallelToPlane(Line(0, 0, 5, 1, 0, -cosine), plane));
}

TEST(GslEntityPredicates, LineParallelToPlaneReadsTheCachedMagnitudes) {
  const gsl_StLine line(gsl_Point(), Stale(1.0, 0.0, 1.0, 1e11));
  EXPECT_TRUE(lineParallelToPlane(line, PlaneAt(0, 0, 0, 1)));
  const gsl_Plane plane(gsl_Point(), Stale(0.0, 0.0, 1.0, 1e11));
  EXPECT_TRUE(lineParallelToPlane(Line(0, 0, 0, 1, 0, 1), plane));
}

TEST(GslEntityPredicates, ZeroDirectionOrNormalIsNotParallelToThePlane) {
  EXPECT_FALSE(lineParallelToPlane(Line(0, 0, 0, 0, 0, 0), PlaneAt(0, 0, 0, 1)));
  EXPECT_FALSE(lineParallelToPlane(Line(0, 0, 0, 1, 0, 0), PlaneAt(0, 0, 0, 0)));
}

TEST(GslEntityPredicates, LineLiesInPlaneNeedsItsPointStrictlyWithin) {
  const double tol = LinearTolerance();
  EXPECT_TRUE(lineLiesInPlane(Line(3, 4, 0, 1, 1, 0), PlaneAt(0, 0, 0, 2)));
  EXPECT_TRUE(lineLiesInPlane(Line(3, 4, -Below(tol), 1, 1, 0), PlaneAt(0, 0, 0, 1)));
  EXPECT_FALSE(lineLiesInPlane(Line(3, 4, tol, 1, 1, 0), PlaneAt(0, 0, 0, 1)));
  EXPECT_FALSE(lineLiesInPlane(Line(0, 0, 0, 1, 1, 1), PlaneAt(0, 0, 0, 1)));
}

TEST(GslEntityPredicates, DistanceToAParallelPlaneHasTheSignOfTheNormalsSide) {
  EXPECT_EQ(signedDistanceToParallelPlane(Line(7, 7, 5, 1, 1, 0), PlaneAt(1, 0, 0, 2)), 4.0);
  EXPECT_EQ(signedDistanceToParallelPlane(Line(7, 7, 5, 1, 1, 0), PlaneAt(1, 0, 0, -2)), -4.0);
  EXPECT_EQ(distanceToParallelPlane(Line(7, 7, 5, 1, 1, 0), PlaneAt(1, 0, 0, 2)), 4.0);
  EXPECT_EQ(distanceToParallelPlane(Line(7, 7, 5, 1, 1, 0), PlaneAt(1, 0, 0, -2)), 4.0);
}

TEST(GslEntityPredicates, DistanceToAPlaneThatIsNotParallelIsZero) {
  EXPECT_TRUE(
      SameBits(signedDistanceToParallelPlane(Line(0, 0, 5, 1, 0, 1), PlaneAt(0, 0, 0, -1)), 0.0));
  EXPECT_TRUE(SameBits(distanceToParallelPlane(Line(0, 0, 5, 1, 0, 1), PlaneAt(0, 0, 0, -1)), 0.0));
}

TEST(GslEntityPredicates, OppositeNormalsFiveApartAreParallelAtDistanceFive) {
  const gsl_Plane a = PlaneAt(0, 0, 0, 1);
  const gsl_Plane b = PlaneAt(5, 0, 0, -3);
  EXPECT_TRUE(planesParallel(a, b));
  EXPECT_TRUE(planesParallel(b, a));
  EXPECT_EQ(distanceBetweenParallelPlanes(a, b), 5.0);
  EXPECT_EQ(distanceBetweenParallelPlanes(b, a), 5.0);
}

TEST(GslEntityPredicates, DistanceBetweenPlanesThatAreNotParallelIsExactlyZero) {
  const gsl_Plane a = PlaneAt(0, 0, 0, 1);
  const gsl_Plane b = PlaneAt(5, 0, 1, 1);
  EXPECT_FALSE(planesParallel(a, b));
  EXPECT_TRUE(SameBits(distanceBetweenParallelPlanes(a, b), 0.0));
}

TEST(GslEntityPredicates, ParallelPlanesAreStrictInTheCosine) {
  const double cosine = CosineTolerance();
  EXPECT_FALSE(planesParallel(PlaneAt(0, 0, 0, 1), PlaneAt(0, 0, cosine, 1)));
  EXPECT_TRUE(planesParallel(PlaneAt(0, 0, 0, 1), PlaneAt(0, 0, Below(cosine), 1)));
}

TEST(GslEntityPredicates, ZeroNormalIsParallelToNothing) {
  const gsl_Plane zero = PlaneAt(0, 0, 0, 0);
  EXPECT_FALSE(planesParallel(zero, PlaneAt(0, 0, 0, 1)));
  EXPECT_FALSE(planesParallel(PlaneAt(0, 0, 0, 1), zero));
  EXPECT_FALSE(planesParallel(zero, zero));
  EXPECT_TRUE(SameBits(distanceBetweenParallelPlanes(zero, PlaneAt(5, 0, 0, 1)), 0.0));
}

TEST(GslEntityPredicates, CoincidentPlanesAreStrictInTheDistance) {
  const double tol = LinearTolerance();
  EXPECT_FALSE(planesCoincident(PlaneAt(tol, 0, 0, 1), PlaneAt(0, 0, 0, -1)));
  EXPECT_TRUE(planesCoincident(PlaneAt(Below(tol), 0, 0, 1), PlaneAt(0, 0, 0, -1)));
  EXPECT_FALSE(planesCoincident(PlaneAt(0, 0, 0, 1), PlaneAt(0, 0, 1, 1)));
}

TEST(GslEntityPredicates, DistanceBetweenPlanesMeasuresTheFirstsPointFromTheSecond) {
  // The planes are parallel within the tolerance, and their points are 1e8 apart sideways. The
  // distance is 2e-3 at one point and 0 at the other.
  const gsl_Plane a(gsl_Point(0.0, 1e8, 0.0), gsl_Vector(0.0, 0.0, 1.0));
  const gsl_Plane b(gsl_Point(), gsl_Vector(0.0, 2e-11, 1.0));
  EXPECT_NEAR(distanceBetweenParallelPlanes(a, b), 2e-3, 1e-12);
  EXPECT_EQ(distanceBetweenParallelPlanes(b, a), 0.0);
  EXPECT_FALSE(planesCoincident(a, b));
  EXPECT_TRUE(planesCoincident(b, a));
}

TEST(GslEntityPredicates, SegmentVectorRunsFromTheFirstPointToTheSecond) {
  const gsl_Vector v = segmentVector({gsl_Point(1, 2, 3), gsl_Point(1, 5, 7)});
  EXPECT_TRUE(IsAt(v, 0.0, 3.0, 4.0));
  EXPECT_EQ(v.magnitude, 5.0);
}

/// Calls visit(corners, order) for the six orders of a triangle.
template <class Visit>
void ForEachOrder(const gsl_Point& p, const gsl_Point& q, const gsl_Point& r, const Visit& visit) {
  const gsl_Point* const corner[3] = {&p, &q, &r};
  std::array<int, 3> order = {0, 1, 2};
  do {
    visit(*corner[order[0]], *corner[order[1]], *corner[order[2]], order);
  } while (std::next_permutation(order.begin(), order.end()));
}

TEST(GslEntityPredicates, WeightsAreBarycentricInEveryOrder) {
  const double expected[3] = {0.25, 0.625, 0.125};
  const gsl_Point p(1.0, 0.0, 2.0);
  const gsl_Point q(5.0, 0.0, 2.0);
  const gsl_Point r(1.0, 8.0, 2.0);
  const gsl_Point x(0.25 * 1 + 0.625 * 5 + 0.125 * 1, 0.125 * 8, 2.0);
  ForEachOrder(p, q, r, [&](const auto& a, const auto& b, const auto& c, const auto& order) {
    double weights[3];
    EXPECT_TRUE(pointInTriangle(x, a, b, c, weights));
    for (unsigned int i = 0; i < 3; ++i) {
      EXPECT_DOUBLE_EQ(weights[i], expected[order[i]]);
    }
  });
}

TEST(GslEntityPredicates, CornersAndEdgesAreInsideInEveryOrder) {
  const gsl_Point p(0.0, 0.0, 0.0);
  const gsl_Point q(3.0, 0.0, 1.0);
  const gsl_Point r(0.0, 2.0, 5.0);
  ForEachOrder(p, q, r, [&](const auto& a, const auto& b, const auto& c, const auto&) {
    double weights[3];
    EXPECT_TRUE(pointInTriangle(p, a, b, c, weights));
    EXPECT_TRUE(pointInTriangle(q, a, b, c, weights));
    EXPECT_TRUE(pointInTriangle(r, a, b, c, weights));
    EXPECT_TRUE(pointInTriangle(gsl_Point(p, q), a, b, c, weights));
    EXPECT_TRUE(pointInTriangle(gsl_Point(q, r), a, b, c, weights));
    EXPECT_TRUE(pointInTriangle(gsl_Point(r, p), a, b, c, weights));
    EXPECT_FALSE(pointInTriangle(gsl_Point(q, 1.01, r, -0.01), a, b, c, weights));
  });
}

TEST(GslEntityPredicates, WeightTimesSquaredAreaAtTheSquaredToleranceIsInside) {
  const double tol2 = LinearTolerance() * LinearTolerance();
  // The doubled area is 1, then 4: the distance that is still inside shrinks with the size.
  for (const double side : {1.0, 2.0}) {
    const gsl_Point p(0.0, 0.0, 0.0);
    const gsl_Point q(side, 0.0, 0.0);
    const gsl_Point r(0.0, side, 0.0);
    const double limit = side == 1.0 ? tol2 : tol2 / 8.0;
    ForEachOrder(p, q, r, [&](const auto& a, const auto& b, const auto& c, const auto&) {
      double weights[3];
      EXPECT_TRUE(pointInTriangle(gsl_Point(side / 2, -limit, 0.0), a, b, c, weights));
      EXPECT_FALSE(pointInTriangle(gsl_Point(side / 2, -Above(limit), 0.0), a, b, c, weights));
    });
  }
}

TEST(GslEntityPredicates, AllThreeWeightsAreWrittenOutside) {
  double weights[3] = {kSentinel, kSentinel, kSentinel};
  EXPECT_FALSE(
      pointInTriangle({2.0, 3.0, 0.0}, {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, weights));
  EXPECT_EQ(weights[0], -4.0);
  EXPECT_EQ(weights[1], 2.0);
  EXPECT_EQ(weights[2], 3.0);
}

TEST(GslEntityPredicates, DegenerateTriangleIsNotRejected) {
  double weights[3] = {kSentinel, kSentinel, kSentinel};
  EXPECT_TRUE(
      pointInTriangle({9.0, 9.0, 9.0}, {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {3.0, 0.0, 0.0}, weights));
  for (const double weight : weights) {
    EXPECT_TRUE(std::isnan(weight));
  }
}

TEST(GslEntityPredicates, NaNIsInsideATriangle) {
  double weights[3];
  EXPECT_TRUE(pointInTriangle({kNaN, 0.0, 0.0}, {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0},
                              weights));
}

TEST(GslEntityPredicates, SegmentParametersAreTheFractionAndItsComplement) {
  double weights[2];
  EXPECT_TRUE(pointSegmentParameters({1.0, 7.0, -9.0}, {0.0, 0.0, 0.0}, {4.0, 0.0, 0.0}, weights))
      << "the distance from the line does not count";
  EXPECT_EQ(weights[0], 0.25);
  EXPECT_EQ(weights[1], 0.75);
}

TEST(GslEntityPredicates, SegmentParametersAreBothWrittenOutside) {
  double weights[2] = {kSentinel, kSentinel};
  EXPECT_FALSE(pointSegmentParameters({-2.0, 0.0, 0.0}, {0.0, 0.0, 0.0}, {4.0, 0.0, 0.0}, weights));
  EXPECT_EQ(weights[0], -0.5);
  EXPECT_EQ(weights[1], 1.5);
  EXPECT_FALSE(pointSegmentParameters({8.0, 0.0, 0.0}, {0.0, 0.0, 0.0}, {4.0, 0.0, 0.0}, weights));
  EXPECT_EQ(weights[0], 2.0);
  EXPECT_EQ(weights[1], -1.0);
}

TEST(GslEntityPredicates, ExactlyTheToleranceBeyondASegmentIsInside) {
  const double tol = LinearTolerance();
  double weights[2];
  const gsl_Point origin;
  // At the first end, then at the second.
  EXPECT_TRUE(pointSegmentParameters({-tol, 0.0, 0.0}, origin, {1.0, 0.0, 0.0}, weights));
  EXPECT_FALSE(pointSegmentParameters({-Above(tol), 0.0, 0.0}, origin, {1.0, 0.0, 0.0}, weights));
  EXPECT_TRUE(pointSegmentParameters({tol, 0.0, 0.0}, {-1.0, 0.0, 0.0}, origin, weights));
  EXPECT_FALSE(pointSegmentParameters({Above(tol), 0.0, 0.0}, {-1.0, 0.0, 0.0}, origin, weights));
}

TEST(GslEntityPredicates, ToleranceBeyondASegmentIsALengthWhateverTheSegments) {
  const double tol = LinearTolerance();
  double weights[2];
  EXPECT_TRUE(pointSegmentParameters({-tol, 0.0, 0.0}, gsl_Point(), {1024.0, 0.0, 0.0}, weights));
  EXPECT_FALSE(
      pointSegmentParameters({-Above(tol), 0.0, 0.0}, gsl_Point(), {1024.0, 0.0, 0.0}, weights));
}

TEST(GslEntityPredicates, DegenerateSegmentTakesItsFirstPointsNeighbourhood) {
  const double tol = LinearTolerance();
  const gsl_Point end(0.0, tol, 0.0);
  double weights[2] = {kSentinel, kSentinel};
  EXPECT_TRUE(pointSegmentParameters({tol, 0.0, 0.0}, gsl_Point(), end, weights)) << "closed";
  EXPECT_TRUE(SameBits(weights[0], 0.0));
  EXPECT_EQ(weights[1], 1.0);
}

TEST(GslEntityPredicates, DegenerateSegmentMissedWritesNothing) {
  const double tol = LinearTolerance();
  double weights[2] = {kSentinel, kSentinel};
  EXPECT_FALSE(
      pointSegmentParameters({Above(tol), 0.0, 0.0}, gsl_Point(), {0.0, tol, 0.0}, weights));
  EXPECT_EQ(weights[0], kSentinel);
  EXPECT_EQ(weights[1], kSentinel);
}

TEST(GslEntityPredicates, SegmentJustLongerThanTheToleranceHasParameters) {
  const double length = Above(LinearTolerance());
  double weights[2];
  EXPECT_TRUE(
      pointSegmentParameters({length / 2, 0.0, 0.0}, gsl_Point(), {length, 0.0, 0.0}, weights));
  EXPECT_DOUBLE_EQ(weights[0], 0.5);
  EXPECT_DOUBLE_EQ(weights[1], 0.5);
}

TEST(GslEntityPredicates, TolerancesAreReadAtTheCall) {
  const ScopedSettings settings;
  const gsl_StLine a = Line(0, 0, 0, 1, 0, 0);
  const gsl_StLine b = Line(0, 0, 0.25, 0, 1, 0);
  EXPECT_TRUE(linesAreSkew(a, b));
  settings->linearTolerance = 0.25;
  EXPECT_FALSE(linesAreSkew(a, b));
  double weights[2];
  EXPECT_TRUE(pointSegmentParameters({-0.25, 0.0, 0.0}, gsl_Point(), {1.0, 0.0, 0.0}, weights));
  EXPECT_FALSE(planesParallel(PlaneAt(0, 0, 0, 1), PlaneAt(0, 0, 0.01, 1)));
  settings->cosineTolerance = 0.05;
  EXPECT_TRUE(planesParallel(PlaneAt(0, 0, 0, 1), PlaneAt(0, 0, 0.01, 1)));
  EXPECT_TRUE(lineParallelToPlane(Line(0, 0, 0, 1, 0, 0.01), PlaneAt(0, 0, 0, 1)));
}

} // namespace
