#include "kernel/Comparison.h"

#include "Numbers.h"

namespace {

using gsl_kernel::WithinBand;
using numbers::Above;
using numbers::Below;
using numbers::kInfinity;
using numbers::kNaN;

TEST(WithinBand, BothLimitsAreInside) {
  EXPECT_TRUE(WithinBand(0.0, 0.25, 0.25));
  EXPECT_FALSE(WithinBand(0.0, Above(0.25), 0.25));
  EXPECT_TRUE(WithinBand(0.0, -0.25, 0.25));
  EXPECT_FALSE(WithinBand(0.0, Below(-0.25), 0.25));
}

TEST(WithinBand, ComparesTheRoundedDifference) {
  // 1 + 2^-53 rounds to 1, so that the difference is exactly 1.
  EXPECT_TRUE(WithinBand(-0x1p-53, 1.0, 1.0));
  EXPECT_TRUE(WithinBand(1.0, 1.0, 0.0));
  EXPECT_FALSE(WithinBand(1.0, Above(1.0), 0.0));
}

TEST(WithinBand, NaNDifferenceIsWithinEveryBand) {
  EXPECT_TRUE(WithinBand(kNaN, 5.0, 0.0));
  EXPECT_TRUE(WithinBand(5.0, kNaN, 0.0));
  EXPECT_TRUE(WithinBand(kInfinity, kInfinity, 0.0));
  EXPECT_FALSE(WithinBand(kInfinity, -kInfinity, 1e300));
}

TEST(WithinBand, NaNBandHoldsEverything) {
  EXPECT_TRUE(WithinBand(0.0, 1e300, kNaN));
}

TEST(WithinBand, NegativeBandHoldsNothing) {
  EXPECT_FALSE(WithinBand(1.0, 1.0, -0.5));
  EXPECT_FALSE(WithinBand(1.0, 1.25, -0.5));
}

} // namespace
