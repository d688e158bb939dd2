#include "kernel/Constants.h"

#include "Numbers.h"

namespace {

TEST(KernelConstants, TolerancesHaveTheirFixedValues) {
  EXPECT_EQ(gsl_kernel::kMatrixEqualTolerance, 0.001);
  EXPECT_EQ(gsl_kernel::kIdentityTolerance, 0.00001);
  EXPECT_EQ(gsl_kernel::kLineParallelTolerance, 0.00001);
  EXPECT_EQ(gsl_kernel::kIntervalTolerance, 0.00000001);
  EXPECT_EQ(gsl_kernel::kSegmentDistanceCap, 10000000000.0);
}

TEST(KernelConstants, GimbalLockCosineIsTwoToThePowerMinusNineteen) {
  EXPECT_EQ(gsl_kernel::kGimbalLockCosine, std::ldexp(1.0, -19));
}

TEST(KernelConstants, UnitRoundoffIsTheLargestThatOneAbsorbs) {
  // A tie goes to the even neighbour, which is 1.
  EXPECT_EQ(1.0 + gsl_kernel::kUnitRoundoff, 1.0);
  EXPECT_EQ(1.0 + numbers::Above(gsl_kernel::kUnitRoundoff), numbers::Above(1.0));
}

TEST(KernelConstants, PiIsTheNearestDouble) {
  // 0x1.921fb54442d18p+1 is the double that is nearest to pi.
  EXPECT_EQ(gsl_kernel::kPi, 0x1.921fb54442d18p+1);
  EXPECT_EQ(gsl_kernel::kTwoPi, 0x1.921fb54442d18p+2);
}

} // namespace
