#include "wide/TransformLanes.h"

#include "BatchCases.h"
#include "TestScale.h"

#include <gtest/gtest.h>

namespace {

using namespace batch_cases;

/// Entries of any size, or hostile ones.
void Fill(double (&m)[4][4], RandomNumbers& random) {
  const bool isHostile = random.Chance(0.1);
  for (double(&row)[4] : m) {
    for (double& entry : row)
      entry = isHostile ? random.Hostile() : random.In(-3.0, 3.0);
  }
}

Reals ExpectedOf(const Inputs& in, const double (&m)[4][4]) {
  Reals expected(3 * in.count, numbers::kSentinel);
  for (std::size_t k = 0; k < in.count; ++k) {
    gsl_batch::WritePoint(expected.Data() + 3 * k,
                          gsl_arithmetic::TransformPoint(m, in.arrays[0][k]));
  }
  return expected;
}

} // namespace

TEST(TransformLanes, EveryWidthReturnsTheBitsOfTheMatrix) {
  FourPoints points(0xB7A);
  RandomNumbers random(0xB7A);
  double m[4][4];
  long inputs = 0;
  while (inputs < Scaled(100000)) {
    const Inputs in(points, random);
    Fill(m, random);
    const Reals expected = ExpectedOf(in, m);
    for (const gsl_WideKernels* const kernels : AllKernels()) {
      Reals moved(3 * in.count, numbers::kSentinel);
      gsl_batch::TransformPoints(*kernels,
                                 {in.count, in.arrays[0].In(), &m, moved.Data(), nullptr});
      ASSERT_TRUE(Same(moved, expected)) << "after input " << inputs;
    }
    inputs += static_cast<long>(in.count);
  }
}

TEST(TransformLanes, PackedPointsMoveInPlace) {
  RandomNumbers random(3);
  double m[4][4];
  for (std::size_t count = 0; count < 40; ++count) {
    Fill(m, random);
    Reals start(3 * count, numbers::kSentinel);
    for (std::size_t i = 0; i < 3 * count; ++i)
      start.Data()[i] = random.In(-9.0, 9.0);
    Reals expected = start;
    for (std::size_t k = 0; k < count; ++k) {
      const Coord3 p = gsl_batch::PointOf({start.Data(), 3}, k);
      gsl_batch::WritePoint(expected.Data() + 3 * k, gsl_arithmetic::TransformPoint(m, p));
    }
    for (const gsl_WideKernels* const kernels : AllKernels()) {
      Reals moved = start;
      gsl_batch::TransformPoints(*kernels, {count, {moved.Data(), 3}, &m, moved.Data(), nullptr});
      EXPECT_TRUE(Same(moved, expected)) << count;
    }
  }
}
