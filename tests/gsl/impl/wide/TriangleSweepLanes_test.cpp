#include "wide/TriangleSweepLanes.h"

#include "BatchCases.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace batch_cases;
using gsl_batch::SweptPairs;
using gsl_kernel::Measured3;
using gsl_wide::TriangleSweepBatch;

/// Pairs of triangles, many of them near each other and square to an axis, under one direction.
struct Pairs {
  std::vector<PointArray> corners; ///< three of A, three of B
  Measured3 direction;
  TriangleSweepBatch batch = {};
  SweptPairs start = {};

  Pairs(FourPoints& points, RandomNumbers& random) {
    const auto count = static_cast<std::size_t>(random.Below(70));
    const std::ptrdiff_t strides[] = {3, 3, 9, 0};
    const std::ptrdiff_t strideOfA = strides[random.Below(4)];
    for (int i = 0; i < 6; ++i)
      corners.emplace_back(count, i < 3 ? strideOfA : 3);
    const double lift = random.In(-3.0, 6.0);
    for (std::size_t k = 0; k < count; ++k) {
      points.Draw();
      for (std::size_t i = 0; i < 3; ++i)
        corners[i].Set(k, points.p[i]);
      if (random.Chance(0.5)) points.Draw();
      for (std::size_t i = 0; i < 3; ++i) {
        const Coord3& c = points.p[i];
        corners[i + 3].Set(k, {c.x, c.y, c.z + lift});
      }
    }
    if (count == 0) points.Draw();
    const double x = random.Chance(0.5) ? 0.0 : random.In(-1.0, 1.0);
    const double z = random.Chance(0.05) ? random.Hostile() : random.In(-0.5, 2.0);
    direction = gsl_arithmetic::Measure({x, 0.0, z});
    batch.count = count;
    for (std::size_t i = 0; i < 3; ++i) {
      batch.a[i] = corners[i].In();
      batch.b[i] = corners[i + 3].In();
    }
    batch.linearTolerance = points.linearTolerance;
    batch.cosineTolerance = points.cosineTolerance;
    batch.twoSided[0] = random.Chance(0.5);
    batch.twoSided[1] = random.Chance(0.5);
    batch.margin = random.Chance(0.5) ? 0.0 : random.In(-1.0, 1.0);
    const double limits[] = {numbers::kInfinity, 1e6, 5.0, 0.01, numbers::kNaN};
    const double held = numbers::kSentinel;
    start = {limits[random.Below(5)], {{held, held, held}, {held, held, held}}, 999, false};
  }
};

/// Calls the scalar kernel for one pair after the other.
SweptPairs ExpectedOf(const Pairs& in) {
  SweptPairs best = in.start;
  TriangleSweepBatch batch = in.batch;
  const Measured3 d = gsl_arithmetic::NormalizedCopy(in.direction, batch.linearTolerance);
  gsl_batch::WritePoint(batch.direction, d.c);
  batch.length = d.magnitude;
  batch.contact = &best;
  for (std::size_t k = 0; k < batch.count; ++k)
    gsl_batch::OneTrianglePair(batch, k);
  return best;
}

bool SameCoords(const Coord3& a, const Coord3& b) {
  return numbers::SameBits(a.x, b.x) && numbers::SameBits(a.y, b.y) && numbers::SameBits(a.z, b.z);
}

bool Same(const SweptPairs& a, const SweptPairs& b) {
  return numbers::SameBits(a.distance, b.distance) && SameCoords(a.contact[0], b.contact[0]) &&
         SameCoords(a.contact[1], b.contact[1]) && a.pair == b.pair && a.found == b.found;
}

long left = 0;

void CountedOne(const TriangleSweepBatch& batch, std::size_t k) {
  ++left;
  gsl_batch::OneTrianglePair(batch, k);
}

} // namespace

TEST(TriangleSweepLanes, EveryWidthFindsWhatTheLoopFinds) {
  constexpr std::uint64_t kSeed = 0xB75;
  std::printf("seed %d\n", static_cast<int>(kSeed));
  FourPoints points(kSeed);
  RandomNumbers random(kSeed);
  long inputs = 0, contacts = 0;
  while (inputs < Scaled(200000)) {
    const Pairs in(points, random);
    const SweptPairs expected = ExpectedOf(in);
    contacts += expected.pair != in.start.pair ? 1 : 0;
    for (const gsl_WideKernels* const kernels : AllKernels()) {
      SweptPairs best = in.start;
      gsl_batch::SweepTriangles(*kernels, in.batch, in.direction, best);
      ASSERT_TRUE(Same(best, expected)) << "after input " << inputs;
    }
    inputs += static_cast<long>(in.batch.count);
  }
  EXPECT_GT(contacts, inputs / 1000);
}

TEST(TriangleSweepLanes, PairsBehindOutOfReachOrFacingAwayAreRejectedInTheLanes) {
  // A is z = 0 and faces up. The pairs: behind, out of reach, facing up, collinear.
  const Coord3 up[3] = {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}};
  std::vector<PointArray> corners(6, PointArray(8, 3));
  for (std::size_t k = 0; k < 8; ++k) {
    for (std::size_t i = 0; i < 3; ++i) {
      corners[i].Set(k, up[i]);
      const double z[4] = {-1.0, 9.0, 2.0, 2.0};
      const Coord3& c = up[k % 4 == 2 ? i : (3 - i) % 3];
      corners[i + 3].Set(k, {c.x, k % 4 == 3 ? 0.0 : c.y, z[k % 4]});
    }
  }
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    SweptPairs best = {5.0, {{9.0, 9.0, 9.0}, {9.0, 9.0, 9.0}}, 999, false};
    TriangleSweepBatch batch = {};
    batch.count = 8;
    for (std::size_t i = 0; i < 3; ++i) {
      batch.a[i] = corners[i].In();
      batch.b[i] = corners[i + 3].In();
    }
    batch.direction[2] = batch.axis[2] = batch.length = 1.0;
    batch.linearTolerance = 1e-6;
    batch.cosineTolerance = 1e-10;
    batch.distance = &best.distance;
    batch.contact = &best;
    batch.one = CountedOne;
    left = 0;
    kernels->sweepTriangles(batch);
    EXPECT_EQ(left, 0);
    EXPECT_FALSE(best.found);
    batch.twoSided[1] = true;
    kernels->sweepTriangles(batch);
    EXPECT_EQ(left, 2) << "the pairs that face up may be reversed";
    EXPECT_EQ(best.distance, 2.0);
    EXPECT_EQ(best.pair, 2u) << "the earlier pair of a tie";
  }
}
