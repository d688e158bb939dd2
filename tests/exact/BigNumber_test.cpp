#include "BigNumber.h"

#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using gsl_exact::BigNumber;
using gsl_exact::DoubleDouble;
using gsl_exact::Surd;

BigNumber Big(double value) {
  return BigNumber(value);
}

TEST(BigNumber, SignsFollowTheRulesOfArithmetic) {
  EXPECT_EQ(Big(0.0).Sign(), 0);
  EXPECT_EQ(Big(-0.0).Sign(), 0);
  EXPECT_EQ(BigNumber().Sign(), 0);
  EXPECT_EQ((-Big(3.0)).Sign(), -1);
  EXPECT_EQ((Big(3.0) * Big(-2.0)).Sign(), -1);
  EXPECT_EQ((Big(-3.0) * Big(-2.0)).Sign(), 1);
  EXPECT_EQ((Big(-3.0) * Big(0.0)).Sign(), 0);
  EXPECT_EQ((Big(3.0) - Big(3.0)).Sign(), 0);
  EXPECT_EQ((Big(2.0) - Big(3.0)).Sign(), -1);
  EXPECT_EQ((Big(-2.0) + Big(3.0)).Sign(), 1);
  EXPECT_EQ((Big(0x1p900) + Big(0x1p-900) - Big(0x1p900)).Sign(), 1);
}

TEST(BigNumber, ComparesBySignAndMagnitude) {
  EXPECT_EQ(BigNumber::Compare(Big(-1.0), Big(1.0)), -1);
  EXPECT_EQ(BigNumber::Compare(Big(1.0), Big(-1.0)), 1);
  EXPECT_EQ(BigNumber::Compare(Big(-1.0), Big(-2.0)), 1);
  EXPECT_EQ(BigNumber::Compare(Big(2.0), Big(1.0)), 1);
  EXPECT_EQ(BigNumber::Compare(Big(0.0), Big(-0.0)), 0);
  EXPECT_EQ(BigNumber::Compare(Big(0.5) * Big(4.0), Big(2.0)), 0);
}

TEST(Surd, SignsAreExactWhereTermsCancel) {
  // 3 - root(9), and one unit in the last place to either side.
  EXPECT_EQ(Surd(Big(3.0), Big(-1.0), Big(9.0), Big(7.0)).Sign(), 0);
  EXPECT_EQ(Surd(Big(3.0), Big(-1.0), Big(std::nextafter(9.0, 10.0)), Big(7.0)).Sign(), -1);
  EXPECT_EQ(Surd(Big(3.0), Big(-1.0), Big(std::nextafter(9.0, 8.0)), Big(7.0)).Sign(), 1);
  EXPECT_EQ(Surd(Big(-3.0), Big(1.0), Big(std::nextafter(9.0, 10.0)), Big(7.0)).Sign(), 1);
  EXPECT_EQ(Surd(Big(-3.0), Big(1.0), Big(std::nextafter(9.0, 8.0)), Big(7.0)).Sign(), -1);
  EXPECT_EQ(Surd(Big(0.0), Big(-1.0), Big(2.0), Big(1.0)).Sign(), -1);
  EXPECT_EQ(Surd(Big(0.0), Big(0.0), Big(2.0), Big(1.0)).Sign(), 0);
  EXPECT_EQ(Surd(Big(-1.0), Big(5.0), Big(0.0), Big(1.0)).Sign(), -1);
  EXPECT_EQ(Surd(Big(0.0), Big(5.0), Big(0.0), Big(1.0)).Sign(), 0);
  EXPECT_EQ(Surd(Big(1.0), Big(5.0), Big(2.0), Big(1.0)).Sign(), 1);
}

/// Expects the rounded number to be within its bound, by the exact sign of the difference.
void ExpectRounded(const BigNumber& whole, const BigNumber& factor, const BigNumber& radicand,
                   const BigNumber& divisor) {
  const DoubleDouble rounded = Surd(whole, factor, radicand, divisor).Rounded();
  const BigNumber value = Big(rounded.hi) + Big(rounded.lo);
  const BigNumber error = Big(std::fabs(rounded.hi)) * Big(0x1p-95);
  EXPECT_EQ(Surd(whole - (value - error) * divisor, factor, radicand, divisor).Sign(), 1);
  EXPECT_EQ(Surd(whole - (value + error) * divisor, factor, radicand, divisor).Sign(), -1);
}

TEST(Surd, RoundsWithinItsBound) {
  ExpectRounded(Big(0.0), Big(1.0), Big(2.0), Big(1.0));
  EXPECT_EQ(Surd(Big(0.0), Big(0.0), Big(2.0), Big(1.0)).Rounded().hi, 0.0);
  EXPECT_EQ(Surd(Big(-3.0), Big(1.0), Big(9.0), Big(7.0)).Rounded().hi, 0.0);
  ExpectRounded(Big(1.0), Big(0.0), Big(0.0), Big(3.0));
  ExpectRounded(Big(1.0), Big(5.0), Big(0.0), Big(3.0));
  ExpectRounded(Big(0x1p200), Big(-1.0), Big(0x1p400) - Big(1.0), Big(1.0)); // 2^-201
  ExpectRounded(Big(1.0), Big(-1.0), Big(1.0) - Big(0x1p-120), Big(0x1p-70));
  ExpectRounded(Big(-0x1p-300), Big(1.0), Big(0x1p-600) + Big(0x1p-800), Big(3.0));
  ExpectRounded(Big(0x1p-60), Big(-1.0), Big(0x1p-120) - Big(0x1p-180), Big(1.0));
  RandomNumbers random(5);
  for (int round = 0; round < 2000; ++round) {
    const auto number = [&random](double low) {
      return Big(std::ldexp(random.In(low, 1.0), random.Below(300) - 150)) +
             Big(random.In(low, 1.0));
    };
    const BigNumber whole = number(-1.0);
    const BigNumber factor = number(-1.0);
    const BigNumber radicand = number(0.0);
    const BigNumber divisor = number(0.01);
    ExpectRounded(whole, factor, radicand, divisor);
    // The terms cancel all but a little.
    ExpectRounded(whole, Big(1.0), whole * whole + Big(0x1p-130) * radicand, divisor);
  }
}

TEST(Surd, RadicandsBeyondTheRangeOfDoubleAreRounded) {
  // root(3 * 2^3600) / 2^1800 and root(3 * 2^-3600) / 2^-1800.
  for (const double scale : {0x1p900, 0x1p-900}) {
    const BigNumber square = Big(scale) * Big(scale);
    ExpectRounded(Big(0.0), Big(1.0), Big(3.0) * square * square, square);
  }
}

TEST(Surd, BeyondTheRangeOfDoubleIsInfinite) {
  EXPECT_TRUE(std::isinf(Surd(Big(0x1p900), Big(1.0), Big(1.0), Big(0x1p-900)).Rounded().hi));
}

} // namespace
