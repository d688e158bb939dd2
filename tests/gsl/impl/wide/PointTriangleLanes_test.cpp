#include "wide/PointTriangleLanes.h"

#include "BatchCases.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace batch_cases;
using gsl_wide::PointTriangleBatch;

long left = 0;

void CountedOne(const PointTriangleBatch& batch, std::size_t k) {
  ++left;
  gsl_batch::OnePointTriangle(batch, k);
}

PointTriangleBatch BatchOf(const Inputs& in, Reals& distances) {
  return {in.count,           in.arrays[3].In(), in.arrays[0].In(),
          in.arrays[1].In(),  in.arrays[2].In(), in.linearTolerance,
          in.cosineTolerance, distances.Data(),  CountedOne};
}

Reals ExpectedOf(const Inputs& in) {
  Reals distances(in.count, numbers::kSentinel);
  for (std::size_t k = 0; k < in.count; ++k) {
    distances.Data()[k] =
        gsl_kernel::TriangleDistance(in.arrays[3][k], in.arrays[0][k], in.arrays[1][k],
                                     in.arrays[2][k], in.linearTolerance, in.cosineTolerance);
  }
  return distances;
}

} // namespace

TEST(PointTriangleLanes, EveryWidthReturnsTheBitsOfTheKernel) {
  constexpr std::uint64_t kSeed = 0xB37;
  std::printf("seed %d\n", static_cast<int>(kSeed));
  FourPoints points(kSeed);
  RandomNumbers random(kSeed);
  long inputs = 0;
  while (inputs < Scaled(200000)) {
    const Inputs in(points, random);
    const Reals expected = ExpectedOf(in);
    for (const gsl_WideKernels* const kernels : AllKernels()) {
      Reals distances(in.count, numbers::kSentinel);
      gsl_batch::PointTriangles(*kernels, BatchOf(in, distances));
      ASSERT_TRUE(Same(distances, expected)) << "after input " << inputs;
    }
    inputs += static_cast<long>(in.count);
  }
}

TEST(PointTriangleLanes, EveryRegionIsDecidedInTheLanes) {
  // The triangle (0, 0), (4, 0), (0, 3): its face, its vertices and its edges, and each distance.
  const std::vector<Coord3> points = {{1.0, 1.0, 2.0},  {-3.0, -4.0, 0.0}, {7.0, -4.0, 0.0},
                                      {-3.0, 7.0, 0.0}, {2.0, -3.0, 4.0},  {-3.0, 1.0, 4.0},
                                      {5.0, 5.5, 0.0},  {1.0, 1.0, -7.0}};
  const std::vector<double> distances = {2.0, 5.0, 5.0, 5.0, 5.0, 5.0, 5.0, 7.0};
  PointArray p(8, 3), a(8, 0), b(8, 0), c(8, 0);
  for (std::size_t k = 0; k < points.size(); ++k)
    p.Set(k, points[k]);
  a.Set(0, {0.0, 0.0, 0.0});
  b.Set(0, {4.0, 0.0, 0.0});
  c.Set(0, {0.0, 3.0, 0.0});
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    left = 0;
    Reals out(8, numbers::kSentinel);
    kernels->pointTriangles(
        {8, p.In(), a.In(), b.In(), c.In(), 1e-6, 1e-10, out.Data(), CountedOne});
    EXPECT_EQ(left, 0);
    for (std::size_t k = 0; k < 8; ++k)
      EXPECT_DOUBLE_EQ(out.Data()[k], distances[k]) << k;
  }
}

TEST(PointTriangleLanes, BordersAndTrianglesWithoutANormalAreLeft) {
  PointArray p(8, 0), a(8, 0), b(8, 0), c(8, 0);
  a.Set(0, {0.0, 0.0, 0.0});
  b.Set(0, {4.0, 0.0, 0.0});
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    const auto run = [&] {
      left = 0;
      Reals out(8, numbers::kSentinel);
      kernels->pointTriangles(
          {8, p.In(), a.In(), b.In(), c.In(), 1e-6, 1e-10, out.Data(), CountedOne});
      EXPECT_EQ(left, 8);
      return out.Data()[7];
    };
    p.Set(0, {2.0, 0.0, 1.0});
    c.Set(0, {0.0, 3.0, 0.0});
    EXPECT_EQ(run(), 1.0);
    p.Set(0, {numbers::kNaN, 0.0, 1.0});
    EXPECT_TRUE(std::isnan(run()));
    p.Set(0, {2.0, 0.0, 1.0});
    c.Set(0, {8.0, 0.0, 0.0});
    EXPECT_TRUE(std::isnan(run()));
  }
}

TEST(PointTriangleLanes, MostRandomInputsAreDecided) {
  RandomNumbers random(5);
  constexpr std::size_t kCount = 4096;
  std::vector<PointArray> arrays(4, PointArray(kCount, 3));
  for (std::size_t k = 0; k < kCount; ++k) {
    for (PointArray& array : arrays) {
      const double x = random.In(-5.0, 5.0);
      const double y = random.In(-5.0, 5.0);
      array.Set(k, {x, y, random.In(-5.0, 5.0)});
    }
  }
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    left = 0;
    Reals out(kCount, numbers::kSentinel);
    kernels->pointTriangles({kCount, arrays[0].In(), arrays[1].In(), arrays[2].In(), arrays[3].In(),
                             1e-6, 1e-10, out.Data(), CountedOne});
    EXPECT_LT(left, 4096 / 20);
  }
}
