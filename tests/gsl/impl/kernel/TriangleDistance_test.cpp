#include "kernel/TriangleDistance.h"

#include "EntityTranscription.h"
#include "FourPoints.h"
#include "KernelNames.h"
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
