#include "BigNatural.h"

#include "AllocationCounter.h"
#include "Numbers.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <utility>

namespace {

using gsl_exact::BigNatural;
using gsl_exact::Expansion;

__extension__ using Wide = unsigned __int128;

void ExpectSame(const BigNatural& a, const BigNatural& b) {
  EXPECT_EQ(BigNatural::Compare(a, b), 0);
}

void ExpectLess(const BigNatural& a, const BigNatural& b) {
  EXPECT_EQ(BigNatural::Compare(a, b), -1);
  EXPECT_EQ(BigNatural::Compare(b, a), 1);
}

/// Returns value * 2^exponent, from four numbers that doubles hold.
BigNatural Of(Wide value, int exponent = 0) {
  BigNatural sum;
  for (int k = 0; k < 4; ++k) {
    const auto part = static_cast<double>(static_cast<std::uint32_t>(value >> (32 * k)));
    sum = BigNatural::Plus(sum, BigNatural(part, 32 * k + exponent));
  }
  return sum;
}

TEST(BigNatural, EveryDoubleIsHeld) {
  const double least = std::numeric_limits<double>::denorm_min();
  const double most = std::numeric_limits<double>::max();
  ExpectSame(BigNatural(0.0), BigNatural());
  ExpectSame(BigNatural(0.0, -3000), BigNatural(0.0, 3000));
  ExpectLess(BigNatural(), BigNatural(least));
  ExpectLess(BigNatural(least), BigNatural(2.0 * least));
  ExpectLess(BigNatural(1.0), BigNatural(numbers::Above(1.0)));
  ExpectLess(BigNatural(numbers::Below(most)), BigNatural(most));
  ExpectSame(BigNatural(0.75, 3), BigNatural(6.0));
  ExpectSame(BigNatural(least, 1074), BigNatural(1.0));
  ExpectLess(BigNatural(most), BigNatural(1.0, 1024));
  ExpectLess(BigNatural(1.0, -1075), BigNatural(least));
}

TEST(BigNatural, NumbersOfAnyLengthMoveAndStayWhenTheyMoveToThemselves) {
  for (const int bits : {100, 1279, 1280, 1281, 5000}) {
    const BigNatural wanted = BigNatural::Plus(BigNatural(1.0, bits), BigNatural(1.0));
    BigNatural number = wanted;
    BigNatural& same = number;
    number = std::move(same);
    ExpectSame(number, wanted);
    BigNatural other(3.0);
    other = std::move(number);
    ExpectSame(other, wanted);
    other = BigNatural(3.0);
    ExpectSame(other, BigNatural(3.0));
  }
}

TEST(BigNatural, CopiesAreNumbersOfTheirOwn) {
  for (const int bits : {100, 1280, 5000}) {
    const BigNatural wanted = BigNatural::Plus(BigNatural(1.0, bits), BigNatural(1.0));
    BigNatural source = wanted;
    BigNatural copy(3.0);
    copy = source;
    source = BigNatural(5.0);
    ExpectSame(copy, wanted);
    const BigNatural& same = copy;
    copy = same;
    ExpectSame(copy, wanted);
  }
}

TEST(BigNatural, SumsAndDifferencesCarry) {
  const BigNatural big(1.0, 320);
  const BigNatural one(1.0);
  const BigNatural below = BigNatural::Difference(big, one);
  ExpectLess(below, big);
  ExpectSame(BigNatural::Plus(below, one), big);
  ExpectSame(BigNatural::Difference(one, big), below);
  ExpectSame(BigNatural::Difference(big, big), BigNatural());
  ExpectSame(BigNatural::Plus(big, BigNatural()), big);
  // (2^320 - 1) (2^320 + 1) is 2^640 - 1.
  ExpectSame(BigNatural::Times(below, BigNatural::Plus(big, one)),
             BigNatural::Difference(BigNatural(1.0, 640), one));
  ExpectSame(BigNatural::Times(big, BigNatural()), BigNatural());
}

TEST(BigNatural, ExpansionsOfEitherSignAreSummed) {
  Expansion<8> expansion;
  for (const double c : {0x1p-1074, -0x1p-900, 3.0, -0x1p100})
    expansion.Append(c);
  BigNatural expected = BigNatural::Difference(BigNatural(1.0, 100), BigNatural(3.0));
  expected = BigNatural::Plus(expected, BigNatural(1.0, -900));
  expected = BigNatural::Difference(expected, BigNatural(1.0, -1074));
  ExpectSame(BigNatural::MagnitudeOf(expansion), expected);
  ExpectSame(BigNatural::MagnitudeOf(Minus(expansion)), expected);
  ExpectSame(BigNatural::MagnitudeOf(Expansion<8>()), BigNatural());
}

TEST(BigNatural, AgreesWithWholeNumbers) {
  const unsigned seed = 3;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  for (int round = 0; round < 5000; ++round) {
    const std::uint64_t a = random() >> (random() % 64);
    const std::uint64_t b = round % 5 == 0 ? a : random() >> (random() % 64);
    const int up = static_cast<int>(random() % 60);
    ExpectSame(BigNatural::Times(Of(a), Of(b)), Of(static_cast<Wide>(a) * b));
    ExpectSame(BigNatural::Plus(Of(a, up), Of(b)), Of((static_cast<Wide>(a) << up) + b));
    const Wide shifted = static_cast<Wide>(a) << up;
    const Wide difference = shifted > b ? shifted - b : b - shifted;
    ExpectSame(BigNatural::Difference(Of(a, up), Of(b)), Of(difference));
    EXPECT_EQ(BigNatural::Compare(Of(a), Of(b)), a < b ? -1 : a > b ? 1 : 0);
    // The higher number may be on either side.
    ExpectSame(BigNatural::Plus(Of(b), Of(a, up)), Of(shifted + b));
    ExpectSame(BigNatural::Difference(Of(b), Of(a, up)), Of(difference));
    EXPECT_EQ(BigNatural::Compare(Of(a, up), Of(b)), shifted < b ? -1 : shifted > b ? 1 : 0);
    EXPECT_EQ(BigNatural::Compare(Of(b), Of(a, up)), shifted < b ? 1 : shifted > b ? -1 : 0);
  }
}

TEST(BigNatural, SumsOfNumbersFarApartGoBack) {
  std::mt19937_64 random(4);
  const auto draw = [&] {
    const BigNatural high = Of(random(), 64);
    return BigNatural::Plus(high, Of(random() >> (random() % 64)))
        .Scaled(static_cast<int>(random() % 300));
  };
  for (int round = 0; round < 2000; ++round) {
    const BigNatural a = draw();
    const BigNatural b = draw();
    const BigNatural sum = BigNatural::Plus(a, b);
    ExpectLess(a, sum);
    ExpectSame(sum, BigNatural::Plus(b, a));
    ExpectSame(BigNatural::Difference(sum, b), a);
    ExpectSame(BigNatural::Difference(b, sum), a);
    ExpectLess(sum, BigNatural::Plus(sum, BigNatural(1.0, -40)));
  }
}

TEST(BigNatural, TopExponentIsAboveTheHighestBit) {
  EXPECT_EQ(BigNatural(1.0).TopExponent(), 1);
  EXPECT_EQ(BigNatural(0.75, 3).TopExponent(), 3);
  EXPECT_EQ(BigNatural(1.0, 320).TopExponent(), 321);
  EXPECT_EQ(BigNatural::Difference(BigNatural(1.0, 320), BigNatural(1.0)).TopExponent(), 320);
  EXPECT_EQ(BigNatural(6.0).Fraction().hi, 0.75);
  EXPECT_EQ(BigNatural(6.0).Fraction().lo, 0.0);
}

TEST(BigNatural, LeadingKeepsTheHighestBitsAndNotManyMore) {
  for (int bits = 2; bits <= 128; ++bits) {
    for (int offset = 0; offset < 32; ++offset) {
      SCOPED_TRACE(testing::Message() << bits << " bits, offset " << offset);
      // The lowest bit decides where limbs begin. The bit above it is farther down than a whole
      // limb below the last bit that must stay.
      const BigNatural kept = BigNatural::Plus(BigNatural(1.0), BigNatural(1.0, 1 - bits));
      const BigNatural dropped =
          BigNatural::Plus(BigNatural(1.0, -bits - 62), BigNatural(1.0, -400 - offset));
      ExpectSame(BigNatural::Plus(kept, dropped).Leading(bits), kept);
    }
  }
  ExpectSame(BigNatural(1.0).Leading(108), BigNatural(1.0));
}

TEST(BigNatural, NumbersOf1280BitsDoNotAllocate) {
  // The sum has the bits from 2^-53 to 2^1187, and the next one has a limb of 32 bits more.
  const BigNatural one(1.0);
  const BigNatural high(1.0, 37 * 32);
  const BigNatural higher(1.0, 38 * 32);
  const long before = AllocationCount();
  const BigNatural fits = BigNatural::Plus(one, high);
  const long between = AllocationCount();
  const BigNatural exceeds = BigNatural::Plus(one, higher);
  const long after = AllocationCount();
  EXPECT_EQ(between, before);
  EXPECT_GT(after, between);
  ExpectSame(BigNatural::Difference(fits, high), one);
  ExpectSame(BigNatural::Difference(exceeds, higher), one);
}

} // namespace
