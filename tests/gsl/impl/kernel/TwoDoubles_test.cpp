#include "kernel/TwoDoubles.h"

#include "Numbers.h"
#include "RandomNumbers.h"

namespace {

using gsl_kernel::Coord3;
using gsl_kernel::TwoCoords;
using gsl_kernel::TwoDoubles;
using numbers::kNaN;
using numbers::SameBits;

void ExpectLane(const TwoCoords& both, int lane, const Coord3& expected) {
  EXPECT_TRUE(SameBits(both.x[lane], expected.x));
  EXPECT_TRUE(SameBits(both.y[lane], expected.y));
  EXPECT_TRUE(SameBits(both.z[lane], expected.z));
}

TEST(KernelTwoDoubles, BothFillsBothLanes) {
  EXPECT_EQ(gsl_kernel::Both(3.0)[0], 3.0);
  EXPECT_EQ(gsl_kernel::Both(3.0)[1], 3.0);
  ExpectLane(gsl_kernel::Both(Coord3{1.0, 2.0, 3.0}), 1, {1.0, 2.0, 3.0});
}

TEST(KernelTwoDoubles, MagnitudeClearsTheSignAlone) {
  const TwoDoubles v = gsl_kernel::Magnitude(TwoDoubles{-0.0, -2.5});
  EXPECT_TRUE(SameBits(v[0], 0.0));
  EXPECT_EQ(v[1], 2.5);
}

TEST(KernelTwoDoubles, ANaNOnTheLeftIsIgnored) {
  EXPECT_EQ(gsl_kernel::Larger(kNaN, 2.0), 2.0);
  EXPECT_EQ(gsl_kernel::Smaller(kNaN, 2.0), 2.0);
  EXPECT_TRUE(std::isnan(gsl_kernel::Larger(2.0, kNaN)));
  const TwoDoubles larger = gsl_kernel::Larger(TwoDoubles{kNaN, 1.0}, TwoDoubles{2.0, 3.0});
  EXPECT_EQ(larger[0], 2.0);
  EXPECT_EQ(larger[1], 3.0);
  const TwoDoubles smaller = gsl_kernel::Smaller(TwoDoubles{kNaN, 1.0}, TwoDoubles{2.0, 3.0});
  EXPECT_EQ(smaller[0], 2.0);
  EXPECT_EQ(smaller[1], 1.0);
}

TEST(KernelTwoDoubles, OfEqualNumbersTheSecondIsReturned) {
  EXPECT_TRUE(SameBits(gsl_kernel::Larger(-0.0, 0.0), 0.0));
  EXPECT_TRUE(SameBits(gsl_kernel::Larger(0.0, -0.0), -0.0));
  EXPECT_TRUE(SameBits(gsl_kernel::Smaller(-0.0, 0.0), 0.0));
  EXPECT_TRUE(SameBits(gsl_kernel::Smaller(0.0, -0.0), -0.0));
  const TwoDoubles first = {-0.0, 0.0}, second = {0.0, -0.0};
  const TwoDoubles larger = gsl_kernel::Larger(first, second);
  const TwoDoubles smaller = gsl_kernel::Smaller(first, second);
  for (int k = 0; k < 2; ++k) {
    EXPECT_TRUE(SameBits(larger[k], second[k]));
    EXPECT_TRUE(SameBits(smaller[k], second[k]));
  }
}

TEST(KernelTwoDoubles, EachLaneHasTheBitsOfTheFormulaOnDoubles) {
  RandomNumbers random(0x2D0B1E5);
  const auto any = [&random] {
    const auto number = [&random] {
      return random.Chance(0.1) ? random.Hostile() : random.In(-3.0, 3.0);
    };
    const double x = number();
    const double y = number();
    return Coord3{x, y, number()};
  };
  for (int i = 0; i < 20000 && !testing::Test::HasFailure(); ++i) {
    const Coord3 a[2] = {any(), any()}, b[2] = {any(), any()};
    const TwoCoords bothA = gsl_kernel::Together(a[0], a[1]);
    const TwoCoords bothB = gsl_kernel::Together(b[0], b[1]);
    for (int k = 0; k < 2; ++k) {
      ExpectLane(Add(bothA, bothB), k, Add(a[k], b[k]));
      ExpectLane(Subtract(bothA, bothB), k, Subtract(a[k], b[k]));
      ExpectLane(Multiply(bothA, bothB.x), k, Multiply(a[k], b[k].x));
      ExpectLane(Cross(bothA, bothB), k, Cross(a[k], b[k]));
      EXPECT_TRUE(SameBits(Dot(bothA, bothB)[k], Dot(a[k], b[k])));
      const TwoDoubles length = gsl_kernel::SquareRoot(Dot(bothA, bothA));
      EXPECT_TRUE(SameBits(length[k], gsl_kernel::Length(a[k])));
    }
  }
}

} // namespace
