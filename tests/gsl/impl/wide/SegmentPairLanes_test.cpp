#include "wide/SegmentPairLanes.h"

#include "BatchCases.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace batch_cases;
using gsl_wide::SegmentPairBatch;

struct Outputs {
  Reals distances, onA, onB;
  Parts partsA, partsB;

  explicit Outputs(std::size_t count)
      : distances(count, numbers::kSentinel), onA(3 * count, numbers::kSentinel),
        onB(3 * count, numbers::kSentinel), partsA(count, kUnwritten), partsB(count, kUnwritten) {}

  friend bool operator==(const Outputs& a, const Outputs& b) {
    return Same(a.distances, b.distances) && Same(a.onA, b.onA) && Same(a.onB, b.onB) &&
           Same(a.partsA, b.partsA) && Same(a.partsB, b.partsB);
  }
};

long left = 0;

void CountedOne(const SegmentPairBatch& batch, std::size_t k) {
  ++left;
  gsl_batch::OneSegmentPair(batch, k);
}

SegmentPairBatch BatchOf(const Inputs& in, Outputs& out) {
  return {in.count,          in.arrays[0].In(),  in.arrays[1].In(),    in.arrays[2].In(),
          in.arrays[3].In(), in.linearTolerance, out.distances.Data(), out.onA.Data(),
          out.onB.Data(),    out.partsA.Data(),  out.partsB.Data(),    CountedOne};
}

/// What the kernel of one pair finds.
Outputs ExpectedOf(const Inputs& in) {
  Outputs out(in.count);
  for (std::size_t k = 0; k < in.count; ++k) {
    const gsl_kernel::Connection found = gsl_kernel::ConnectSegments(
        {in.arrays[0][k], in.arrays[1][k]}, {in.arrays[2][k], in.arrays[3][k]}, in.linearTolerance);
    const bool isNone = found.kind == gsl_kernel::ConnectionKind::None;
    out.distances.Data()[k] = isNone ? numbers::kNaN : gsl_kernel::Distance(found.onA, found.onB);
    out.partsA.Data()[k] = static_cast<unsigned char>(found.partA);
    out.partsB.Data()[k] = static_cast<unsigned char>(found.partB);
    if (isNone) continue;
    gsl_batch::WritePoint(out.onA.Data() + 3 * k, found.onA);
    gsl_batch::WritePoint(out.onB.Data() + 3 * k, found.onB);
  }
  return out;
}

/// A pair of the test of places, and its distance.
struct Pair {
  Coord3 a1, a2, b1, b2;
  double distance;
  int partA, partB;
};

} // namespace

TEST(SegmentPairLanes, EveryWidthReturnsTheBitsOfTheKernel) {
  constexpr std::uint64_t kSeed = 0xB5E;
  std::printf("seed %d\n", static_cast<int>(kSeed));
  FourPoints points(kSeed);
  RandomNumbers random(kSeed);
  long inputs = 0;
  while (inputs < Scaled(200000)) {
    const Inputs in(points, random);
    const Outputs expected = ExpectedOf(in);
    for (const gsl_WideKernels* const kernels : AllKernels()) {
      Outputs out(in.count);
      kernels->segmentPairs(BatchOf(in, out));
      ASSERT_TRUE(out == expected) << "after input " << inputs;
    }
    inputs += static_cast<long>(in.count);
  }
}

TEST(SegmentPairLanes, EveryPlaceIsDecidedInTheLanes) {
  using namespace gsl_wide;
  const Coord3 a1 = {-2.0, 0.0, 0.0}, a2 = {2.0, 0.0, 0.0};
  const Pair pairs[] = {
      {a1, a2, {0.5, -1.0, 3.0}, {0.5, 2.0, 3.0}, 3.0, kPartFoot, kPartFoot},
      {a1, a2, {0.5, -1.0, 0.0}, {0.5, 2.0, 0.0}, 0.0, kPartFoot, kPartFoot},
      {a1, a2, {0.5, 4.0, 0.0}, {0.5, 9.0, 1.0}, 4.0, kPartFoot, kPartFirst},
      {a1, a2, {0.5, 9.0, 1.0}, {0.5, 4.0, 0.0}, 4.0, kPartFoot, kPartSecond},
      {a1, a2, {5.0, -3.0, 0.0}, {5.0, 3.0, 0.0}, 3.0, kPartSecond, kPartFoot},
      {a1, a2, {-5.0, -3.0, 0.0}, {-5.0, 3.0, 0.0}, 3.0, kPartFirst, kPartFoot},
      {a1, a2, {5.0, 4.0, 0.0}, {9.0, 9.0, 1.0}, 5.0, kPartSecond, kPartFirst},
      {a1, a2, {-9.0, 9.0, 1.0}, {-5.0, 4.0, 0.0}, 5.0, kPartFirst, kPartSecond},
  };
  PointArray arrays[4] = {{8, 3}, {8, 3}, {8, 3}, {8, 3}};
  for (std::size_t k = 0; k < 8; ++k) {
    arrays[0].Set(k, pairs[k].a1);
    arrays[1].Set(k, pairs[k].a2);
    arrays[2].Set(k, pairs[k].b1);
    arrays[3].Set(k, pairs[k].b2);
  }
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    left = 0;
    Outputs out(8);
    kernels->segmentPairs({8, arrays[0].In(), arrays[1].In(), arrays[2].In(), arrays[3].In(), 1e-6,
                           out.distances.Data(), out.onA.Data(), out.onB.Data(), out.partsA.Data(),
                           out.partsB.Data(), CountedOne});
    EXPECT_EQ(left, 0);
    for (std::size_t k = 0; k < 8; ++k) {
      EXPECT_DOUBLE_EQ(out.distances.Data()[k], pairs[k].distance) << k;
      EXPECT_EQ(out.partsA.Data()[k], pairs[k].partA) << k;
      EXPECT_EQ(out.partsB.Data()[k], pairs[k].partB) << k;
    }
  }
}

TEST(SegmentPairLanes, OutputsOfNullAreSkipped) {
  FourPoints points(7);
  RandomNumbers random(7);
  for (int run = 0; run < 50; ++run) {
    const Inputs in(points, random);
    const Outputs expected = ExpectedOf(in);
    for (const gsl_WideKernels* const kernels : AllKernels()) {
      Outputs out(in.count);
      SegmentPairBatch batch = BatchOf(in, out);
      batch.onA = batch.onB = nullptr;
      batch.partsA = batch.partsB = nullptr;
      kernels->segmentPairs(batch);
      EXPECT_TRUE(Same(out.distances, expected.distances));
    }
  }
}

TEST(SegmentPairLanes, MostRandomInputsAreDecided) {
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
    Outputs out(kCount);
    kernels->segmentPairs({kCount, arrays[0].In(), arrays[1].In(), arrays[2].In(), arrays[3].In(),
                           1e-6, out.distances.Data(), nullptr, nullptr, nullptr, nullptr,
                           CountedOne});
    EXPECT_LT(left, 4096 / 20);
  }
}
