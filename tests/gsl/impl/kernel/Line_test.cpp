#include "kernel/Line.h"

#include "KernelNames.h"

namespace {

using namespace kernel_names;
using gsl_kernel::ClosestPoints;
using gsl_kernel::Line;
using gsl_kernel::LinePair;
using gsl_kernel::Plane;

Line Along(const Coord3& p, const Coord3& d) {
  return {p, Measure(d)};
}

const Line kX = Along({0.0, 0.0, 0.0}, {2.0, 0.0, 0.0});

TEST(KernelLine, ThroughTwoPointsBeginsAtTheFirst) {
  const Line line = gsl_kernel::LineThrough({1.0, 2.0, 3.0}, {3.0, 5.0, 9.0});
  EXPECT_XYZ(line.point, 1.0, 2.0, 3.0);
  EXPECT_XYZ(line.direction.c, 2.0, 3.0, 6.0);
  EXPECT_EQ(line.direction.magnitude, 7.0);
}

TEST(KernelLine, DistanceIsAcrossTheLine) {
  EXPECT_EQ(LineDistance({9.0, 3.0, 4.0}, kX), 5.0);
  EXPECT_EQ(LineDistance({-9.0, 0.0, 0.0}, kX), 0.0);
  EXPECT_TRUE(std::isnan(LineDistance({1.0, 2.0, 3.0}, Along({0, 0, 0}, {0, 0, 0}))));
  EXPECT_TRUE(std::isnan(LineDistance({kNaN, 2.0, 3.0}, kX)));
}

TEST(KernelLine, FootIsMeasuredInLengthsNotInDirections) {
  double t = kSentinel;
  EXPECT_XYZ(FootOnLine({6.0, 3.0, 4.0}, kX, kTolerance, t), 6.0, 0.0, 0.0);
  EXPECT_EQ(t, 6.0);
}

TEST(KernelLine, FootOnAShortDirectionIsThePointOfTheLine) {
  double t = kSentinel;
  const Line line = Along({1.0, 2.0, 3.0}, {kTolerance, 0.0, 0.0});
  EXPECT_XYZ(FootOnLine({6.0, 0.0, 0.0}, line, kTolerance, t), 6.0, 2.0, 3.0);
  EXPECT_EQ(t, 5.0);
  EXPECT_XYZ(FootOnLine({6.0, 0.0, 0.0}, line, Above(kTolerance), t), 1.0, 2.0, 3.0);
  EXPECT_EQ(t, 0.0);
}

TEST(KernelLine, CommonNormalOfExactlyTheToleranceIsNormalised) {
  Coord3 normal = {kSentinel, kSentinel, kSentinel};
  EXPECT_FALSE(gsl_kernel::CommonNormal({1, 0, 0}, {0, kTolerance, 0}, Above(kTolerance), normal));
  EXPECT_XYZ(normal, kSentinel, kSentinel, kSentinel);
  EXPECT_TRUE(gsl_kernel::CommonNormal({1, 0, 0}, {0, kTolerance, 0}, kTolerance, normal));
  EXPECT_XYZ(normal, 0.0, 0.0, 1.0);
}

TEST(KernelLine, SkewDistanceIsAlongTheCommonNormal) {
  EXPECT_EQ(LineSkewDistance(kX, Along({7, 8, -3}, {0, 1, 0}), kTolerance), 3.0);
  EXPECT_EQ(LineSkewDistance(kX, Along({7, 8, -3}, {5, 0, 0}), kTolerance), 0.0);
  EXPECT_EQ(LineSkewDistance(kX, Along({7, 8, -3}, {0, 0, 0}), kTolerance), 0.0);
}

TEST(KernelLine, SkewIsStrictlyFartherThanTheTolerance) {
  EXPECT_FALSE(LinesAreSkew(kX, Along({0, 0, kTolerance}, {0, 1, 0}), kTolerance));
  EXPECT_TRUE(LinesAreSkew(kX, Along({0, 0, Above(kTolerance)}, {0, 1, 0}), kTolerance));
  EXPECT_FALSE(gsl_kernel::IsSkewDistance(-kTolerance, kTolerance));
  EXPECT_TRUE(gsl_kernel::IsSkewDistance(Below(-kTolerance), kTolerance));
  EXPECT_FALSE(gsl_kernel::IsSkewDistance(kNaN, kTolerance));
}

TEST(KernelLine, ClosestPointsOfSkewLines) {
  const ClosestPoints closest =
      gsl_kernel::ClosestOfNonParallel({1, 0, 0}, {1, 0, 0}, {4, 5, 6}, {0, 1, 0});
  EXPECT_XYZ(closest.onFirst, 4.0, 0.0, 0.0);
  EXPECT_XYZ(closest.onSecond, 4.0, 0.0, 6.0);
  EXPECT_EQ(closest.distance, 6.0);
}

TEST(KernelLine, ClosestPointsOfObliqueLines) {
  // Through (0, 0, 0) along (3, 4) / 5, and through (0, 25) along X: they cross at y = 25.
  const ClosestPoints closest =
      ClosestOfNonParallel(Along({0, 0, 0}, {3, 4, 0}), Along({0, 25, 1}, {1, 0, 0}), kTolerance);
  EXPECT_XYZ_NEAR(closest.onFirst, 18.75, 25.0, 0.0, 1e-13);
  EXPECT_XYZ_NEAR(closest.onSecond, 18.75, 25.0, 1.0, 1e-13);
}

TEST(KernelLine, ClosestPointsOfParallelLinesAreNotFinite) {
  const ClosestPoints closest =
      gsl_kernel::ClosestOfNonParallel({0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 0, 0});
  EXPECT_FALSE(std::isfinite(closest.onFirst.x));
}

TEST(KernelLine, SkewComesBeforeParallel) {
  // Directions that differ by 1e-5 are parallel; with a small enough tolerance they are skew too.
  const Line nearly = Along({0, 0, 1}, {1, 1e-5, 0});
  const Line x = Along({0, 0, 0}, {1, 0, 0});
  EXPECT_EQ(ClassifyLines(x, nearly, 1e-6), LinePair::Skew);
  EXPECT_EQ(ClassifyLines(x, nearly, 1e-4), LinePair::Parallel);
  EXPECT_EQ(ClassifyLines(x, Along({0, 0, 0}, {1, 2e-5, 0}), 1e-6), LinePair::Crossing);
}

TEST(KernelLine, ParallelIsClosedAtTheFixedTolerance) {
  const double limit = gsl_kernel::kLineParallelTolerance;
  const Line x = Along({0, 0, 0}, {1, 0, 0});
  // The cached length is 1, so that the components are compared unchanged.
  const Line at = {{0, 0, 0}, {{1.0, limit, 0.0}, 1.0}};
  const Line beyond = {{0, 0, 0}, {{1.0, Above(limit), 0.0}, 1.0}};
  EXPECT_EQ(ClassifyLines(x, at, 1e-6), LinePair::Parallel);
  EXPECT_EQ(ClassifyLines(x, beyond, 1e-6), LinePair::Crossing);
}

TEST(KernelLine, CrossLinesWritesOnlyForACrossing) {
  Coord3 out = {kSentinel, kSentinel, kSentinel};
  EXPECT_FALSE(CrossLines(kX, Along({0, 0, 1}, {0, 1, 0}), kTolerance, out));
  EXPECT_FALSE(CrossLines(kX, Along({0, 0.1, 0}, {1, 0, 0}), kTolerance, out));
  EXPECT_XYZ(out, kSentinel, kSentinel, kSentinel);
  EXPECT_TRUE(CrossLines(kX, Along({3, 5, kTolerance}, {0, 1, 0}), kTolerance, out));
  EXPECT_XYZ(out, 3.0, 0.0, 0.0);
}

TEST(KernelLine, LineParallelToAPlaneIsStrict) {
  const Plane plane = {{0, 0, 0}, Measure({0.0, 0.0, 2.0})};
  // The dot product is 2 * 4, the lengths are 2 and 5: the sine against the plane is 0.8.
  const Line line = Along({0, 0, 0}, {0, 3, 4});
  EXPECT_FALSE(LineParallelToPlane(line, plane, 0.8));
  EXPECT_TRUE(LineParallelToPlane(line, plane, Above(0.8)));
  EXPECT_FALSE(LineParallelToPlane(Along({0, 0, 0}, {0, 0, 0}), plane, 1.0));
}

TEST(KernelLine, CoincidentNeedsDirectionAndDistance) {
  EXPECT_TRUE(LinesCoincident(kX, Along({5, 0, 0}, {-1, 0, 0}), kTolerance, 1e-10));
  EXPECT_FALSE(LinesCoincident(kX, Along({5, kTolerance, 0}, {1, 0, 0}), kTolerance, 1e-10));
  EXPECT_TRUE(LinesCoincident(kX, Along({5, Below(kTolerance), 0}, {1, 0, 0}), kTolerance, 1e-10));
  EXPECT_FALSE(LinesCoincident(kX, Along({0, 0, 0}, {1, 1, 0}), kInfinity, 1e-10));
}

TEST(KernelLine, CoincidentMultipliesByTheLengthOfTheSecondDirectionFirst) {
  // The cross product of (3, 0, 0) and (3, 4, 0) is 12. With the double 0.8, (0.8 * 5) * 3 is 12,
  // and (0.8 * 3) * 5 is the next number.
  const Line along = Along({0, 0, 0}, {3, 0, 0});
  const Line aslant = Along({0, 0, 0}, {3, 4, 0});
  EXPECT_FALSE(LinesCoincident(along, aslant, kTolerance, 0.8));
  EXPECT_TRUE(LinesCoincident(aslant, along, kTolerance, 0.8));
}

} // namespace
