#include "wide/TriangleSweepLanes.h"

#include "SweepBatches.h"
#include "TriTriTranscription.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace batch_cases;
using namespace sweep_batches;
using gsl_wide::TriangleSweepBatch;

long left = 0;

void CountedOne(const TriangleSweepBatch& batch, std::size_t k) {
  ++left;
  gsl_batch::OneTrianglePair(batch, k);
}

/// The corners of eight pairs, and a sweep along Z that counts the pairs of the scalar kernel.
struct EightPairs {
  std::vector<PointArray> corners = std::vector<PointArray>(6, PointArray(8, 3));
  bool twoSided[2] = {true, true};

  void Set(std::size_t k, const Coord3 (&a)[3], const Coord3 (&b)[3]) {
    for (std::size_t i = 0; i < 3; ++i) {
      corners[i].Set(k, a[i]);
      corners[i + 3].Set(k, b[i]);
    }
  }

  SweptPairs Sweep(const gsl_WideKernels& kernels, double distance) const {
    SweptPairs best = TriangleBatch::Nothing(distance);
    gsl_batch::SweptTriangles swept = {best};
    TriangleSweepBatch batch = {};
    batch.count = 8;
    for (std::size_t i = 0; i < 3; ++i) {
      batch.a[i] = corners[i].In();
      batch.b[i] = corners[i + 3].In();
      if (i < 2) batch.twoSided[i] = twoSided[i];
    }
    batch.direction[2] = batch.axis[2] = batch.length = 1.0;
    batch.linearTolerance = 1e-6;
    batch.cosineTolerance = 1e-10;
    batch.distance = &best.distance;
    batch.contact = &swept;
    batch.one = CountedOne;
    batch.take = gsl_batch::TakeTriangles;
    left = 0;
    kernels.sweepTriangles(batch);
    gsl_batch::WriteContactOnB(batch, swept);
    return best;
  }
};

} // namespace

TEST(TriangleSweepLanes, EveryWidthFindsWhatTheLoopOfSingleCallsFinds) {
  constexpr std::uint64_t kSeed = 0xB75;
  std::printf("seed %d\n", static_cast<int>(kSeed));
  for (int family = 0; family < SweepCases::kFamilies; ++family)
    ExpectTheLoopOfTriangles<TriangleBatch, SweepCases>(
        family, kSeed, 20000,
        [](auto&&... arguments) { return transcription::TriTriMinDirectionalDist(arguments...); });
}

TEST(TriangleSweepLanes, PairsBehindOutOfReachOrFacingAwayAreRejectedInTheLanes) {
  // A is z = 0 and faces up. The pairs: behind, out of reach, facing up, collinear.
  const Coord3 up[3] = {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}};
  EightPairs pairs;
  for (std::size_t k = 0; k < 8; ++k) {
    const double z[4] = {-1.0, 9.0, 2.0, 2.0};
    Coord3 b[3] = {};
    for (std::size_t i = 0; i < 3; ++i) {
      const Coord3& c = up[k % 4 == 2 ? i : (3 - i) % 3];
      b[i] = {c.x, k % 4 == 3 ? 0.0 : c.y, z[k % 4]};
    }
    pairs.Set(k, up, b);
  }
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    pairs.twoSided[0] = pairs.twoSided[1] = false;
    EXPECT_FALSE(pairs.Sweep(*kernels, 5.0).found);
    EXPECT_EQ(left, 0);
    pairs.twoSided[1] = true;
    const SweptPairs best = pairs.Sweep(*kernels, 5.0);
    EXPECT_TRUE(best.found) << "the pairs that face up may be reversed";
    EXPECT_EQ(best.distance, 2.0);
    EXPECT_EQ(best.pair, 2u) << "the earlier pair of a tie";
  }
}

TEST(TriangleSweepLanes, ALaterPairThatIsNoCloserWritesTheContactOnB) {
  // Pair 1 is closer than pair 5. The extent of pair 5 reaches far down, so that it is tried.
  const Coord3 a[3] = {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.1}, {0.0, 1.0, 0.2}};
  const Coord3 behind[3] = {{0.0, 0.0, -9.0}, {0.0, 1.0, -9.0}, {1.0, 0.0, -9.0}};
  const Coord3 near[3] = {{-4.1, -4.3, 2.0}, {-4.2, 9.4, 2.0}, {9.7, -4.4, 2.0}};
  const Coord3 later[3] = {{-4.1, -4.3, 9.0}, {-4.2, 9.4, 9.5}, {99.0, -4.4, -90.0}};
  EightPairs pairs;
  for (std::size_t k = 0; k < 8; ++k)
    pairs.Set(k, a, behind);
  pairs.Set(1, a, near);
  pairs.Set(5, a, later);
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    const SweptPairs best = pairs.Sweep(*kernels, 50.0);
    EXPECT_EQ(left, 0) << "both pairs are decided in the lanes";
    EXPECT_EQ(best.pair, 1u);
    EXPECT_NEAR(best.distance, 1.8, 1e-12);
    EXPECT_EQ(best.contact[0].z, 0.2);
    EXPECT_GT(best.contact[1].z, 4.0) << "on the plane of pair 5";
    EXPECT_EQ(best.contact[1].x, best.contact[0].x);
  }
}

TEST(TriangleSweepLanes, ATriangleEdgeOnGoesToTheScalarKernel) {
  const Coord3 a[3] = {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}};
  const Coord3 b[3] = {{-4.1, -4.3, 2.0}, {-4.2, 9.4, 2.0}, {9.7, -4.4, 2.0}};
  EightPairs pairs;
  for (std::size_t k = 0; k < 8; ++k)
    pairs.Set(k, a, b);
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    const SweptPairs best = pairs.Sweep(*kernels, 50.0);
    EXPECT_EQ(best.distance, 1.0);
    EXPECT_EQ(best.pair, 0u);
    EXPECT_EQ(left, 8);
  }
}
