#include "ExactRatio.h"

#include "Numbers.h"
#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

namespace {

using namespace gsl_exact;

__extension__ using Wide = __int128;

/// Returns an expansion of one component, or of no component for zero.
Expansion<192> Of(double value) {
  Expansion<192> result;
  result.Append(value);
  return result;
}

/// Returns large + small. Requires numbers whose bits do not overlap.
Expansion<192> Of(double large, double small) {
  Expansion<192> result;
  result.Append(small);
  result.Append(large);
  return result;
}

ExactRatio Ratio(const Expansion<192>& over, const Expansion<192>& under) {
  ExactRatio ratio;
  ratio.Set(over, under);
  return ratio;
}

void ExpectOrder(const ExactRatio& a, const ExactRatio& b, int order) {
  EXPECT_EQ(CompareRatios(a, b), order);
  EXPECT_EQ(CompareRatios(b, a), -order);
  EXPECT_EQ(CompareRatios(a, a), 0);
  EXPECT_EQ(CompareRatios(b, b), 0);
}

TEST(ExactRatio, SignsComeFirst) {
  const ExactRatio third = Ratio(Of(1.0), Of(3.0));
  const ExactRatio minusThird = Ratio(Of(1.0), Of(-3.0));
  const ExactRatio zero = Ratio(Of(0.0), Of(-3.0));
  ExpectOrder(minusThird, third, -1);
  ExpectOrder(minusThird, zero, -1);
  ExpectOrder(zero, third, -1);
  ExpectOrder(third, Ratio(Of(-1.0), Of(-3.0)), 0);
  ExpectOrder(zero, Ratio(Of(0.0), Of(5.0)), 0);
}

TEST(ExactRatio, EqualRatiosOfDifferentTermsAreEqual) {
  ExpectOrder(Ratio(Of(1.0), Of(3.0)), Ratio(Of(-7.0), Of(-21.0)), 0);
  ExpectOrder(Ratio(Of(0x1p500), Of(3.0)), Ratio(Of(0x1p-500), Of(3.0 * 0x1p-1000)), 0);
  // (2^60 + 1) / 3 of three times itself.
  ExpectOrder(Ratio(Of(0x1p60, 1.0), Of(3.0)), Ratio(Of(0x1.8p61, 3.0), Of(9.0)), 0);
}

TEST(ExactRatio, DifferencesBelowTheRoundedValuesAreSeen) {
  // 1/3 and 1/3 + 2^-202; the difference is far below one unit of a hundred bits.
  const ExactRatio third = Ratio(Of(1.0), Of(3.0));
  const ExactRatio above = Ratio(Of(1.0, 3.0 * 0x1p-202), Of(3.0));
  EXPECT_EQ(third.rounded.hi, above.rounded.hi);
  EXPECT_EQ(third.rounded.lo, above.rounded.lo);
  ExpectOrder(third, above, -1);
  ExpectOrder(third, Ratio(Of(1.0, -0x1p-900), Of(3.0)), 1);
  ExpectOrder(Ratio(Of(-1.0), Of(3.0)), Ratio(Of(-1.0, -0x1p-900), Of(3.0)), 1);
  ExpectOrder(third, Ratio(Of(1.0), Of(3.0, -0x1p-900)), -1);
}

TEST(ExactRatio, TheWholeRangeOfDoubleCounts) {
  const double least = 0x1p-1074;
  const double most = 0x1.fffffffffffffp1023;
  // The products of these numbers are 2^-2148 and nearly 2^2048.
  ExpectOrder(Ratio(Of(least), Of(1.0, least)), Ratio(Of(least), Of(1.0)), -1);
  ExpectOrder(Ratio(Of(most, least), Of(most)), Ratio(Of(most), Of(most)), 1);
  ExpectOrder(Ratio(Of(most, -least), Of(most)), Ratio(Of(most), Of(most, least)), -1);
}

TEST(ExactRatio, CarriesAndBorrowsCrossLimbs) {
  // The ratios are 2^320 - 1 over 2^320, and 2^320 over 2^320 + 1. Their cross products differ by
  // one.
  ExpectOrder(Ratio(Of(0x1p320, -1.0), Of(0x1p320)), Ratio(Of(0x1p320), Of(0x1p320, 1.0)), -1);
  // (2^320 - 1)(2^320 + 1) is one less than 2^640.
  ExpectOrder(Ratio(Of(0x1p320, -1.0), Of(1.0)), Ratio(Of(0x1p640), Of(0x1p320, 1.0)), -1);
  ExpectOrder(Ratio(Of(0x1p320, -1.0), Of(1.0)), Ratio(Of(0x1p640, -1.0), Of(0x1p320, 1.0)), 0);
}

/// Returns a whole number of up to 62 bits as the sum of two parts.
Expansion<192> Whole(std::int64_t value) {
  const auto high = static_cast<double>(value);
  return Of(high, static_cast<double>(value - static_cast<std::int64_t>(high)));
}

TEST(ExactRatio, AgreesWithWholeNumbers) {
  const unsigned seed = 77;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  WholesIn<std::int64_t> wide(-(std::int64_t{1} << 61), std::int64_t{1} << 61);
  WholesIn<std::int64_t> narrow(-3, 3);
  int equal = 0;
  for (int round = 0; round < 20000; ++round) {
    // The terms are near each other, so that the quotients are often equal or nearly equal.
    std::int64_t term[4] = {wide(random), wide(random), 0, 0};
    term[2] = round % 3 == 0 ? wide(random) : term[0] + narrow(random);
    term[3] = round % 3 == 0 ? wide(random) : term[1] + narrow(random);
    if (round % 5 == 1) {
      for (std::int64_t& t : term)
        t = narrow(random);
    }
    if (round % 7 == 2) {
      // The same quotient of different terms; only rounding would make a difference.
      const std::int64_t over = wide(random) >> 31;
      const std::int64_t under = wide(random) >> 31;
      for (int k = 0; k < 4; k += 2) {
        const std::int64_t factor = wide(random) >> 31;
        term[k] = over * factor;
        term[k + 1] = under * factor;
      }
    }
    if (term[1] == 0 || term[3] == 0) continue;
    const Wide cross = static_cast<Wide>(term[0]) * term[3] - static_cast<Wide>(term[2]) * term[1];
    int expected = (cross > 0) - (cross < 0);
    if ((term[1] < 0) != (term[3] < 0)) expected = -expected;
    equal += expected == 0 ? 1 : 0;
    ASSERT_EQ(
        CompareRatios(Ratio(Whole(term[0]), Whole(term[1])), Ratio(Whole(term[2]), Whole(term[3]))),
        expected)
        << round;
  }
  EXPECT_GT(equal, 2000);
}

constexpr Coord3 alongX{1.0, 0.0, 0.0};

TEST(ExactRatio, LengthsAreComparedWithoutRounding) {
  const ExactRatio third = Ratio(Of(1.0), Of(3.0));
  const double nearest = 1.0 / 3.0; // below a third
  EXPECT_EQ(CompareLength(third, alongX, {nearest, 0}), 1);
  EXPECT_EQ(CompareLength(third, alongX, {numbers::Above(nearest), 0}), -1);
  const ExactRatio fifth = Ratio(Of(-1.0), Of(-5.0));
  EXPECT_EQ(CompareLength(fifth, alongX, {0.2, 0}), -1); // the double is above
  EXPECT_EQ(CompareLength(Ratio(Of(3.0), Of(4.0)), alongX, {0.75, 0}), 0);
  EXPECT_EQ(CompareLength(Ratio(Of(3.0), Of(4.0)), alongX, {0x1.8p-101, 100}), 0);
  EXPECT_EQ(CompareLength(Ratio(Of(3.0), Of(4.0)), {0.0, -8.0, 0.0}, {6.0, 0}), 0);
}

TEST(ExactRatio, LengthOfTheVectorIsARootWithoutRounding) {
  // |(1, 1, 1)| is between 0x1.bb67ae8584caap+0 and the next double.
  const ExactRatio one = Ratio(Of(1.0), Of(1.0));
  const Coord3 diagonal{1.0, 1.0, 1.0};
  EXPECT_EQ(CompareLength(one, diagonal, {0x1.bb67ae8584caap+0, 0}), 1);
  EXPECT_EQ(CompareLength(one, diagonal, {0x1.bb67ae8584cabp+0, 0}), -1);
  // (3, 0, 4) has the length 5; a change of the last bit is noticed.
  EXPECT_EQ(CompareLength(one, {3.0, 0.0, 4.0}, {5.0, 0}), 0);
  EXPECT_EQ(CompareLength(Ratio(Of(1.0, 0x1p-200), Of(1.0)), {3.0, 0.0, 4.0}, {5.0, 0}), 1);
  EXPECT_EQ(CompareLength(Ratio(Of(1.0, -0x1p-200), Of(1.0)), {3.0, 0.0, 4.0}, {5.0, 0}), -1);
  EXPECT_EQ(CompareLength(one, {0.75, 0x1p-280, 1.0}, {1.25, 0}), 1);
}

TEST(ExactRatio, LengthsBeyondTheRangeOfDoubleAreCompared) {
  const ExactRatio one = Ratio(Of(1.0), Of(1.0));
  EXPECT_EQ(CompareLength(one, alongX, {1e300, 1000}), -1);
  EXPECT_EQ(CompareLength(one, alongX, {std::numeric_limits<double>::infinity(), 0}), -1);
  EXPECT_EQ(CompareLength(one, alongX, {1e-300, -1000}), 1);
  for (const double below : {0.0, -0.0, -1.0, -std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(CompareLength(one, alongX, {below, 0}), 1);
  }
  const ExactRatio tiny = Ratio(Of(0x1p-1020), Of(3.0));
  // 2^-1020 / 3 at the scale of 2^-500; its square is far below the least double.
  EXPECT_EQ(CompareLength(tiny, alongX, {0x1.5555555555555p-2, -1020}), 1);
  EXPECT_EQ(CompareLength(tiny, alongX, {0x1.5555555555556p-2, -1020}), -1);
  EXPECT_EQ(CompareLength(Ratio(Of(0x1p-1020), Of(4.0)), alongX, {0x1p-2, -1020}), 0);
  EXPECT_EQ(CompareLength(Ratio(Of(0x1p-1020), Of(4.0)), alongX, {0x1p-1022, 0}), 0);
  EXPECT_EQ(CompareLength(Ratio(Of(0x1p1000), Of(0x1p-1000)), alongX, {1.0, 2000}), 0);
  EXPECT_EQ(CompareLength(Ratio(Of(0x1p1000), Of(0x1p-1000)), alongX, {1.0, 2001}), -1);
}

TEST(ExactRatio, LengthsAgreeWithWholeNumbers) {
  const unsigned seed = 78;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  WholesIn<std::int64_t> term(1, 2000);
  WholesIn<std::int64_t> component(-30, 30);
  int counts[3] = {};
  for (int round = 0; round < 20000; ++round) {
    // In every third case the length of the vector and the ratio are whole numbers.
    const bool isWhole = round % 3 == 0;
    const std::int64_t x = isWhole ? 3 * component(random) : component(random);
    const std::int64_t y = isWhole ? x / 3 * 4 : component(random);
    const std::int64_t square = x * x + y * y;
    if (square == 0) continue;
    const std::int64_t under = term(random);
    const std::int64_t over = isWhole ? under * (1 + round % 7) : term(random);
    const auto near = static_cast<std::int64_t>(std::sqrt(static_cast<double>(square)) *
                                                static_cast<double>(over)) /
                      under;
    const std::int64_t limit = std::max<std::int64_t>(1, near + round % 4 / 3);
    const Wide cross =
        static_cast<Wide>(over) * over * square - static_cast<Wide>(limit) * limit * under * under;
    const int expected = (cross > 0) - (cross < 0);
    ++counts[expected + 1];
    const ExactRatio ratio = Ratio(Whole(-over), Whole(-under));
    const Coord3 vector{static_cast<double>(x), static_cast<double>(y), 0.0};
    ASSERT_EQ(CompareLength(ratio, vector, {static_cast<double>(limit), 0}), expected) << round;
  }
  for (const int count : counts)
    EXPECT_GT(count, 3000);
}

TEST(ExactRatio, TheRoundedQuotientHasTwiceThePrecision) {
  const ExactRatio third = Ratio(Of(0x1p60, 2.0), Of(3.0)); // (2^60 + 2) / 3 is a whole number
  EXPECT_EQ(third.rounded.hi + third.rounded.lo, 384307168202282326.0);
  const DoubleDouble rest = Plus(Times(third.rounded, {3.0, 0.0}), {-0x1p60, -2.0});
  EXPECT_LT(std::fabs(rest.hi), 0x1p-30);
  EXPECT_EQ(Ratio(Of(0.0), Of(3.0)).rounded.hi, 0.0);
}

TEST(ExactRatio, SubnormalComponentsCountInFull) {
  // Below 2^-1022 the leading bit of a double is not implied.
  const double least = 0x1p-1074;
  ExpectOrder(Ratio(Of(3.0 * least), Of(least)), Ratio(Of(3.0), Of(1.0)), 0);
  ExpectOrder(Ratio(Of(1.0, 3.0 * least), Of(1.0)), Ratio(Of(1.0, 2.0 * least), Of(1.0)), 1);
  ExpectOrder(Ratio(Of(0x1p-1022, least), Of(1.0)), Ratio(Of(0x1p-1022, -least), Of(1.0)), 1);
  ExpectOrder(Ratio(Of(0x1p-1022), Of(least)), Ratio(Of(0x1p52), Of(1.0)), 0);
  ExpectOrder(Ratio(Of(0x1p-1021), Of(0x1p-1022)), Ratio(Of(2.0), Of(1.0)), 0);
}

/// Returns x * y + more. Requires numbers whose bits do not overlap.
Expansion<192> ProductOf(double x, double y, double more) {
  const DoubleDouble exact = TwoProduct(x, y);
  Expansion<192> result;
  result.Append(more);
  result.Append(exact.lo);
  result.Append(exact.hi);
  return result;
}

TEST(ExactRatio, RoundedValuesDoNotDecideBelowTheirError) {
  // b = (p r + tiny) / (q r) is above a = p / q by far less than the error of the rounded
  // quotients, which may be in either order.
  RandomNumbers random(17);
  int misleading = 0;
  for (int round = 0; round < 4000; ++round) {
    const double scale = std::ldexp(1.0, 20 * (random.Below(9) - 4));
    const double p = random.In(1.0, 2.0) * scale;
    const double q = random.In(1.0, 2.0);
    const double r = random.In(1.0, 2.0);
    const ExactRatio a = Ratio(Of(p), Of(q));
    const ExactRatio b = Ratio(ProductOf(p, r, scale * 0x1p-160), ProductOf(q, r, 0.0));
    misleading += Plus(b.rounded, Minus(a.rounded)).hi < 0.0 ? 1 : 0;
    ExpectOrder(a, b, -1);
  }
  EXPECT_GT(misleading, 0);
}

} // namespace
