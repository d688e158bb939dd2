#include "wide/PointSegmentLanes.h"

#include "BatchCases.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

using namespace batch_cases;
using gsl_wide::PointSegmentBatch;

struct Outputs {
  Reals distances, nearest;
  Parts parts;

  explicit Outputs(std::size_t count)
      : distances(count, numbers::kSentinel), nearest(3 * count, numbers::kSentinel),
        parts(count, kUnwritten) {}

  friend bool operator==(const Outputs& a, const Outputs& b) {
    return Same(a.distances, b.distances) && Same(a.nearest, b.nearest) && Same(a.parts, b.parts);
  }
};

long left = 0;

void CountedOne(const PointSegmentBatch& batch, std::size_t k) {
  ++left;
  gsl_batch::OnePointSegment(batch, k);
}

PointSegmentBatch BatchOf(const Inputs& in, Outputs& out) {
  return {in.count,           in.arrays[3].In(),  in.arrays[0].In(),
          in.arrays[1].In(),  in.linearTolerance, out.distances.Data(),
          out.nearest.Data(), out.parts.Data(),   CountedOne};
}

/// What the kernel of one segment finds.
Outputs ExpectedOf(const Inputs& in) {
  Outputs out(in.count);
  for (std::size_t k = 0; k < in.count; ++k) {
    const Coord3 p = in.arrays[3][k];
    const gsl_kernel::NearestPoint nearest =
        gsl_kernel::NearestOnSegment(p, in.arrays[0][k], in.arrays[1][k], in.linearTolerance);
    const bool isNone = nearest.part == gsl_kernel::SegmentPart::None;
    const Coord3 held = {numbers::kSentinel, numbers::kSentinel, numbers::kSentinel};
    out.distances.Data()[k] = isNone ? gsl_kernel::Distance(p, held) : nearest.distance;
    out.parts.Data()[k] = static_cast<unsigned char>(nearest.part);
    if (!isNone) gsl_batch::WritePoint(out.nearest.Data() + 3 * k, nearest.point);
  }
  return out;
}

/// Runs one segment in every lane.
Outputs RunOne(const gsl_WideKernels& kernels, const Coord3& p, const Coord3& p1, const Coord3& p2,
               double tolerance) {
  constexpr std::size_t kCount = 8;
  PointArray arrays[3] = {{kCount, 0}, {kCount, 0}, {kCount, 0}};
  arrays[0].Set(0, p);
  arrays[1].Set(0, p1);
  arrays[2].Set(0, p2);
  Outputs out(kCount);
  kernels.pointSegments({kCount, arrays[0].In(), arrays[1].In(), arrays[2].In(), tolerance,
                         out.distances.Data(), out.nearest.Data(), out.parts.Data(), CountedOne});
  return out;
}

} // namespace

TEST(PointSegmentLanes, EveryWidthReturnsTheBitsOfTheKernel) {
  constexpr std::uint64_t kSeed = 0xB15;
  std::printf("seed %d\n", static_cast<int>(kSeed));
  FourPoints points(kSeed);
  RandomNumbers random(kSeed);
  long inputs = 0;
  left = 0;
  while (inputs < Scaled(200000)) {
    const Inputs in(points, random);
    const Outputs expected = ExpectedOf(in);
    for (const gsl_WideKernels* const kernels : AllKernels()) {
      Outputs out(in.count);
      kernels->pointSegments(BatchOf(in, out));
      ASSERT_TRUE(out == expected) << "after input " << inputs;
    }
    inputs += static_cast<long>(in.count);
  }
  EXPECT_LT(left, inputs * static_cast<long>(AllKernels().size()) / 4);
}

TEST(PointSegmentLanes, OutputsOfNullAreSkipped) {
  FourPoints points(7);
  RandomNumbers random(7);
  for (int run = 0; run < 50; ++run) {
    const Inputs in(points, random);
    Outputs expected = ExpectedOf(in);
    for (std::size_t k = 0; k < in.count; ++k) {
      if (expected.parts.Data()[k] == 0) expected.distances.Data()[k] = numbers::kNaN;
    }
    for (const gsl_WideKernels* const kernels : AllKernels()) {
      Outputs out(in.count);
      PointSegmentBatch batch = BatchOf(in, out);
      batch.nearest = nullptr;
      batch.parts = nullptr;
      kernels->pointSegments(batch);
      EXPECT_TRUE(Same(out.distances, expected.distances));
    }
  }
}

TEST(PointSegmentLanes, ASegmentAtTheToleranceIsOne) {
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    const Coord3 p = {0.0, 3.0, 0.0}, start = {0.0, 0.0, 0.0};
    Outputs at = RunOne(*kernels, p, start, {0.5, 0.0, 0.0}, 0.5);
    EXPECT_EQ(at.parts.Data()[7], gsl_wide::kPartFoot);
    EXPECT_EQ(at.distances.Data()[7], 3.0);
    Outputs below = RunOne(*kernels, p, start, {numbers::Below(0.5), 0.0, 0.0}, 0.5);
    EXPECT_EQ(below.parts.Data()[7], 0);
    EXPECT_EQ(below.nearest.Data()[21], numbers::kSentinel);
  }
}

TEST(PointSegmentLanes, TheSecondEndWinsATieThatOnlyTheRootMakes) {
  // The squares 1 + 2^-52 and 1 have the same root, and the ends are beyond each other's foot.
  const double longer = 1.0 + 0x1p-52;
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    for (const double scale : {1.0, 0x1p-500, 0x1p500}) {
      const Coord3 p = {0.0, 0.0, 0.0};
      const Coord3 near = {scale, 0.0, 0.0};
      const Coord3 far = {scale * longer, 0.0, 0.0};
      const gsl_kernel::NearestPoint expected = gsl_kernel::NearestOnSegment(p, near, far, 0.0);
      Outputs out = RunOne(*kernels, p, near, far, 0.0);
      EXPECT_EQ(out.parts.Data()[0], static_cast<unsigned char>(expected.part));
      EXPECT_EQ(out.distances.Data()[0], expected.distance);
    }
  }
}

TEST(PointSegmentLanes, TinyAndNearlyEqualSquaresKeepTheirOrder) {
  RandomNumbers random(31);
  const std::vector<const gsl_WideKernels*> all = AllKernels();
  for (long i = 0; i < Scaled(40000); ++i) {
    const int exponent = -540 + random.Below(40);
    const double size = std::ldexp(1.0 + random.Unit(), exponent);
    const double steps = static_cast<double>(random.Below(33) - 16);
    const Coord3 near = {size, 0.0, 0.0};
    const Coord3 far = {size * (1.0 + steps * 0x1p-52), 0.0, 0.0};
    const Coord3 p = {0.0, 0.0, 0.0};
    const gsl_kernel::NearestPoint expected = gsl_kernel::NearestOnSegment(p, near, far, 0.0);
    for (const gsl_WideKernels* const kernels : all) {
      Outputs out = RunOne(*kernels, p, near, far, 0.0);
      ASSERT_EQ(out.parts.Data()[0], static_cast<unsigned char>(expected.part)) << size;
      ASSERT_TRUE(numbers::SameBits(out.distances.Data()[0], expected.distance)) << size;
    }
  }
}
