#include "ExactArithmetic.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using namespace gsl_exact;

__extension__ using Wide = __int128;

/// Returns the exact sum of an expansion of integers.
template <int N>
Wide Total(const Expansion<N>& e) {
  Wide total = 0;
  for (int k = 0; k < e.count; ++k)
    total += static_cast<Wide>(e.component[k]);
  return total;
}

template <int N>
bool IsWellFormed(const Expansion<N>& e) {
  for (int k = 0; k < e.count; ++k) {
    if (e.component[k] == 0.0) return false;
    if (k == 0) continue;
    // Each component is smaller than the lowest bit of the next larger component.
    int exponent = 0;
    const double mantissa = std::frexp(e.component[k], &exponent);
    double lowest = std::ldexp(1.0, exponent - 53);
    const auto bits = static_cast<std::uint64_t>(std::ldexp(std::fabs(mantissa), 53));
    lowest *= static_cast<double>(bits & (~bits + 1));
    if (!(std::fabs(e.component[k - 1]) < lowest)) return false;
  }
  return true;
}

TEST(ExactArithmetic, SumKeepsWhatRoundingDrops) {
  const DoubleDouble sum = TwoSum(1.0, 0x1p-80);
  EXPECT_EQ(sum.hi, 1.0);
  EXPECT_EQ(sum.lo, 0x1p-80);
  const DoubleDouble turned = TwoSum(0x1p-80, 1.0);
  EXPECT_EQ(turned.hi, 1.0);
  EXPECT_EQ(turned.lo, 0x1p-80);
}

TEST(ExactArithmetic, ProductKeepsWhatRoundingDrops) {
  const double a = 1.0 + 0x1p-52;
  const DoubleDouble product = TwoProduct(a, a);
  EXPECT_EQ(product.hi, 1.0 + 0x1p-51);
  EXPECT_EQ(product.lo, 0x1p-104);
}

TEST(ExactArithmetic, ExpansionsOfIntegersMatchWideIntegers) {
  const unsigned seed = 20240611;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  const auto integer = [&random] {
    const int bits = 1 + static_cast<int>(random() % 30);
    const auto value = static_cast<double>(random() >> (64 - bits));
    return random() % 2 == 0 ? value : -value;
  };
  for (int round = 0; round < 20000; ++round) {
    // Pairs of 30 and 60 bits; each number needs two doubles.
    const double high = integer() * 0x1p30;
    const DoubleDouble a = TwoSum(high, integer());
    const DoubleDouble b = TwoSum(integer(), integer() * 0x1p-0);
    const Wide exactA = static_cast<Wide>(a.hi) + static_cast<Wide>(a.lo);
    const Wide exactB = static_cast<Wide>(b.hi) + static_cast<Wide>(b.lo);
    const auto product = Product(Expand(a), b);
    ASSERT_EQ(Total(product), exactA * exactB);
    const auto difference = Sum(product, Minus(Expand(a)));
    ASSERT_EQ(Total(difference), exactA * exactB - exactA);
    ASSERT_TRUE(IsWellFormed(difference));
    const Wide exact = exactA * exactB - exactA;
    ASSERT_EQ(difference.Sign(), (exact > 0) - (exact < 0));
    const DoubleDouble rounded = difference.Rounded();
    ASSERT_EQ(static_cast<Wide>(rounded.hi) + static_cast<Wide>(rounded.lo), exact);
  }
}

TEST(ExactArithmetic, QuotientAndRootReachTwiceThePrecision) {
  const DoubleDouble third = Over({1.0, 0.0}, {3.0, 0.0});
  const DoubleDouble one = Times(third, {3.0, 0.0});
  EXPECT_EQ(one.hi, 1.0);
  EXPECT_LT(std::fabs(one.lo), 0x1p-100);
  const DoubleDouble root = Root({2.0, 0.0});
  const DoubleDouble two = Times(root, root);
  EXPECT_EQ(two.hi, 2.0);
  EXPECT_LT(std::fabs(two.lo), 0x1p-99);
  EXPECT_EQ(Root({25.0, 0.0}).hi, 5.0);
  EXPECT_EQ(Root({25.0, 0.0}).lo, 0.0);
}

TEST(ExactArithmetic, QuotientSurvivesTinyDivisors) {
  const DoubleDouble a{0x1.8p-1000, 0.0};
  const DoubleDouble b{0x1p-1000, 0.0};
  EXPECT_EQ(Over(a, b).hi, 1.5);
}

TEST(ExactArithmetic, QuotientSurvivesTinyDividends) {
  // Both terms are scaled alike, so the error terms of a tiny dividend must not be lost.
  const DoubleDouble expected = Over({1.4375, 0.0}, {3.0, 0.0});
  const DoubleDouble quotient = Over({0x1.7p-1000, 0.0}, {0x1.8p-999, 0.0});
  EXPECT_EQ(quotient.hi, expected.hi);
  EXPECT_EQ(quotient.lo, expected.lo);
  EXPECT_NE(quotient.lo, 0.0);
}

TEST(ExactArithmetic, ScaledExpansionsKeepEveryBit) {
  const unsigned seed = 7;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  for (int round = 0; round < 20000; ++round) {
    // Two components of 53 bits and a factor of 20: every bit of the product is in 128.
    const auto low =
        static_cast<double>(static_cast<std::int64_t>(random() >> 11) - (std::int64_t{1} << 52));
    const auto high = static_cast<double>(random() >> 11) * 0x1p53;
    const auto factor = static_cast<double>(random() >> 44);
    const Expansion<2> a = Expand(TwoSum(high, low));
    const Expansion<4> product = Scaled(a, factor);
    EXPECT_TRUE(Total(product) == Total(a) * static_cast<Wide>(factor));
    EXPECT_TRUE(IsWellFormed(product));
  }
}

} // namespace
