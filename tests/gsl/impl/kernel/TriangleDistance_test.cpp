#include "kernel/TriangleDistance.h"

#include "EntityTranscription.h"
#include "FourPoints.h"
#include "KernelNames.h"
#include "RandomNumbers.h"
#include "TestScale.h"

#include <cstdio>

namespace {

using namespace kernel_names;
using gsl_kernel::NearestRegion;
using gsl_kernel::TriangleRegion;

constexpr double kCosine = 1e-10;
const Coord3 kA = {0.0, 0.0, 0.0}, kB = {4.0, 0.0, 0.0}, kC = {0.0, 3.0, 0.0};

NearestRegion RegionOfPoint(const Coord3& p) {
  return gsl_kernel::RegionOf(p, kA, kB, kC, 1e-6, kCosine);
}

double DistanceOf(const Coord3& p) {
  return gsl_kernel::TriangleDistance(p, kA, kB, kC, 1e-6, kCosine);
}

void ExpectRegion(const Coord3& p, TriangleRegion region, int first, double distance) {
  EXPECT_EQ(RegionOfPoint(p).region, region);
  EXPECT_EQ(RegionOfPoint(p).first, first);
  EXPECT_EQ(DistanceOf(p), distance);
}

transcription::Pt Plain(const Coord3& c) {
  return {c.x, c.y, c.z, 0};
}

TEST(KernelTriangleDistance, EveryRegionIsDecided) {
  ExpectRegion({1.0, 1.0, 2.0}, TriangleRegion::Face, 0, 2.0);
  ExpectRegion({-3.0, -4.0, 0.0}, TriangleRegion::Vertex, 0, 5.0);
  ExpectRegion({7.0, -4.0, 0.0}, TriangleRegion::Vertex, 1, 5.0);
  ExpectRegion({-3.0, 7.0, 0.0}, TriangleRegion::Vertex, 2, 5.0);
  ExpectRegion({2.0, -3.0, 4.0}, TriangleRegion::Edge, 0, 5.0);
  ExpectRegion({-3.0, 1.0, 4.0}, TriangleRegion::Edge, 2, 5.0);
  // From the middle of the long edge, (2, 1.5, 0), along its normal (3, 4, 0).
  EXPECT_EQ(RegionOfPoint({5.0, 5.5, 0.0}).region, TriangleRegion::Edge);
  EXPECT_EQ(RegionOfPoint({5.0, 5.5, 0.0}).first, 1);
  EXPECT_DOUBLE_EQ(DistanceOf({5.0, 5.5, 0.0}), 5.0);
}

TEST(KernelTriangleDistance, BordersAreLeftToTheSteps) {
  EXPECT_EQ(RegionOfPoint({2.0, 0.0, 1.0}).region, TriangleRegion::Unknown);
  EXPECT_EQ(RegionOfPoint({0.0, -1.0, 0.0}).region, TriangleRegion::Unknown);
  EXPECT_EQ(RegionOfPoint({4.0, -1.0, 0.0}).region, TriangleRegion::Unknown);
  EXPECT_EQ(RegionOfPoint({kNaN, 0.0, 0.0}).region, TriangleRegion::Unknown);
  EXPECT_EQ(gsl_kernel::RegionOf({1.0, 1.0, 2.0}, kA, kB, kB, 1e-6, kCosine).region,
            TriangleRegion::Unknown);
}

TEST(KernelTriangleDistance, UnusualTolerancesAreLeftToTheSteps) {
  const Coord3 p = {1.0, 1.0, 2.0};
  for (const double linear : {-1e-6, 0.6, kNaN}) {
    EXPECT_EQ(gsl_kernel::RegionOf(p, kA, kB, kC, linear, kCosine).region, TriangleRegion::Unknown);
  }
  for (const double cosine : {0.5, kNaN}) {
    EXPECT_EQ(gsl_kernel::RegionOf(p, kA, kB, kC, 1e-6, cosine).region, TriangleRegion::Unknown);
  }
}

TEST(KernelTriangleDistance, TolerancesAreDecidedUpToTheirLimits) {
  using gsl_kernel::RegionsAreDecided;
  EXPECT_TRUE(RegionsAreDecided(0.0, kCosine));
  EXPECT_FALSE(RegionsAreDecided(-1e-6, kCosine));
  EXPECT_TRUE(RegionsAreDecided(0.5, kCosine));
  EXPECT_FALSE(RegionsAreDecided(Above(0.5), kCosine));
  EXPECT_FALSE(RegionsAreDecided(kInfinity, kCosine));
  EXPECT_TRUE(RegionsAreDecided(1e-6, Below(0x1p-16)));
  EXPECT_FALSE(RegionsAreDecided(1e-6, 0x1p-16));
}

TEST(KernelTriangleDistance, SizesAreDecidedUpToTheirLimits) {
  // A right angle with legs of L, and a point over it that is L / 4 from both. The sum of the
  // squares is L^2 / 8 for the point, and 4 L^2 for twice the edges. Times 4 it is 16.5 L^2.
  const auto regionAt = [](double legs) {
    const Coord3 p = {legs / 4.0, legs / 4.0, 0.0};
    return gsl_kernel::RegionOf(p, {0, 0, 0}, {legs, 0, 0}, {0, legs, 0}, 1e-6, kCosine).region;
  };
  const double largest = std::sqrt(1e100 / 16.5);
  EXPECT_EQ(regionAt(0.99 * largest), TriangleRegion::Face);
  EXPECT_EQ(regionAt(1.01 * largest), TriangleRegion::Unknown);
}

TEST(KernelTriangleDistance, FaceTakesTheCosineToleranceForTheNormal) {
  // The sine of the angle between the first two edges is 0.24, less than the linear tolerance.
  const Coord3 a = {0.0, 0.0, 0.0}, b = {10000.0, 0.0, 0.0}, c = {30000.0, 5000.0, 0.0};
  const Coord3 p = {15000.0, 2000.0, 7.0};
  ASSERT_EQ(gsl_kernel::RegionOf(p, a, b, c, 0.4, kCosine).region, TriangleRegion::Face);
  EXPECT_DOUBLE_EQ(gsl_kernel::TriangleDistance(p, a, b, c, 0.4, kCosine), 7.0);
}

TEST(KernelTriangleDistance, AgreesWithTheStepsAboveTheBordersWithoutATolerance) {
  RandomNumbers random(0xB02D);
  const auto point = [&random] {
    const double x = random.In(-1000.0, 1000.0);
    const double y = random.In(-1000.0, 1000.0);
    const double z = random.In(-1000.0, 1000.0);
    return Coord3{x, y, z};
  };
  for (long i = 0; i < Scaled(50000) && !testing::Test::HasFailure(); ++i) {
    const Coord3 a = point();
    const Coord3 b = point();
    const Coord3 c = point();
    // The first corner is the foot of p on the edge to the second corner, up to rounding.
    const Coord3 u = gsl_kernel::Subtract(b, a), v = gsl_kernel::Subtract(c, a);
    const double part = gsl_kernel::Dot(u, v) / gsl_kernel::Dot(u, u);
    const Coord3 across = gsl_kernel::Subtract(v, gsl_kernel::Multiply(u, part));
    const Coord3 p = gsl_kernel::Subtract(a, gsl_kernel::Multiply(across, random.In(0.1, 2.0)));
    EXPECT_EQ(gsl_kernel::TriangleDistance(p, a, b, c, 0.0, kCosine),
              gsl_kernel::TriangleDistanceBySteps(p, a, b, c, 0.0, kCosine));
    EXPECT_EQ(gsl_kernel::TriangleDistance(p, c, a, b, 0.0, kCosine),
              gsl_kernel::TriangleDistanceBySteps(p, c, a, b, 0.0, kCosine));
  }
}

TEST(KernelTriangleDistance, AgreesWithTheTranscriptionBitForBit) {
  constexpr std::uint64_t kSeed = 0x7121;
  std::printf("seed %d\n", static_cast<int>(kSeed));
  FourPoints in(kSeed);
  long counts[4] = {};
  for (long i = 0; i < Scaled(200000); ++i) {
    in.Draw();
    const transcription::Tolerances tolerances = {in.linearTolerance, 1e-12, in.cosineTolerance};
    const double expected = transcription::Distance(Plain(in.p[3]), Plain(in.p[0]), Plain(in.p[1]),
                                                    Plain(in.p[2]), tolerances);
    const double actual = gsl_kernel::TriangleDistance(in.p[3], in.p[0], in.p[1], in.p[2],
                                                       in.linearTolerance, in.cosineTolerance);
    const double bySteps = gsl_kernel::TriangleDistanceBySteps(
        in.p[3], in.p[0], in.p[1], in.p[2], in.linearTolerance, in.cosineTolerance);
    ASSERT_TRUE(numbers::SameBits(expected, actual)) << "case " << i;
    ASSERT_TRUE(numbers::SameBits(expected, bySteps)) << "case " << i;
    ++counts[static_cast<int>(gsl_kernel::RegionOf(in.p[3], in.p[0], in.p[1], in.p[2],
                                                   in.linearTolerance, in.cosineTolerance)
                                  .region)];
  }
  for (const long count : counts)
    EXPECT_GT(count, Scaled(200000) / 200);
}

} // namespace
