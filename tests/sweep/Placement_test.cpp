#include "Placement.h"

#include <gtest/gtest.h>

namespace {

using namespace gsl_sweep;

/// Boxes for the kernel are moved and scaled, without a margin. The scale divides by 8.
template <class Scalar>
void ExpectBoxInKernel() {
  const Placement<Scalar> placement({0.5, -0.25, 4.0}, RangeScale(7.0), 0.125);
  const Box<Scalar> box{{Scalar{1}, Scalar{-2}, Scalar{0}}, {Scalar{2}, Scalar{5}, Scalar{3}}};
  const Box<double> inKernel = placement.InKernel(box);
  const Box<double> expected{{1.5 / 8, -2.25 / 8, 4.0 / 8}, {2.5 / 8, 4.75 / 8, 7.0 / 8}};
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(inKernel.low[k], expected.low[k]);
    EXPECT_EQ(inKernel.high[k], expected.high[k]);
  }
}

TEST(Placement, BoxesInTheKernelAreMovedAndScaled) {
  ExpectBoxInKernel<float>();
  ExpectBoxInKernel<double>();
}

} // namespace
