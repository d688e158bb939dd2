#include "wide/Lanes.h"

#include "Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

// This test is compiled for the instruction set of the tests. gsl_WideKernels_test.cpp runs the
// other sets.
using namespace gsl_wide::GSL_LANES_NAMESPACE;
using numbers::kInfinity;
using numbers::kNaN;

namespace {

/// Returns first, first + 1, and so on.
Doubles Counted(double first) {
  return Splat(first) + ZeroToLast();
}

} // namespace

TEST(Lanes, LoadAndStoreNeedNoAlignment) {
  double from[kLanes + 1], to[kLanes + 1];
  for (int k = 0; k <= kLanes; ++k) {
    from[k] = k + 0.5;
    to[k] = numbers::kSentinel;
  }
  Store(to + 1, Load(from + 1));
  EXPECT_EQ(to[0], numbers::kSentinel);
  EXPECT_EQ(std::memcmp(to + 1, from + 1, kLanes * sizeof(double)), 0);
}

TEST(Lanes, MagnitudeClearsTheSignAndNothingElse) {
  for (const double value : {-0.0, 0.0, -1.5, 2.5, -kInfinity, 5e-324, -5e-324}) {
    const Doubles magnitude = Magnitude(Splat(value));
    for (int k = 0; k < kLanes; ++k)
      EXPECT_EQ(numbers::Bits(magnitude[k]), numbers::Bits(std::fabs(value))) << value;
  }
  EXPECT_TRUE(std::isnan(Magnitude(Splat(-kNaN))[0]));
}

TEST(Lanes, LargerTakesTheSecondWhereTheFirstIsNaN) {
  EXPECT_EQ(Larger(Splat(1.0), Splat(2.0))[0], 2.0);
  EXPECT_EQ(Larger(Splat(2.0), Splat(1.0))[0], 2.0);
  EXPECT_EQ(Larger(Splat(kNaN), Splat(1.0))[0], 1.0);
  EXPECT_TRUE(std::isnan(Larger(Splat(1.0), Splat(kNaN))[0]));
  EXPECT_TRUE(std::signbit(Larger(Splat(0.0), Splat(-0.0))[0])) << "equal ones are not larger";
}

TEST(Lanes, LargestLooksAtEveryLane) {
  for (int at = 0; at < kLanes; ++at) {
    Doubles v = Counted(-20.0);
    v[at] = 3.0;
    EXPECT_EQ(Largest(v), 3.0) << at;
  }
}

TEST(Lanes, EqualLanesHasABitForEachLane) {
  const Doubles v = Counted(-20.0);
  EXPECT_EQ(EqualLanes(v, v), (1u << kLanes) - 1);
  for (int at = 0; at < kLanes; ++at) {
    Doubles other = v;
    other[at] += 0.5;
    EXPECT_EQ(EqualLanes(v, other), ((1u << kLanes) - 1) & ~(1u << at)) << at;
    other[at] = std::nan("");
    EXPECT_EQ(EqualLanes(other, other), ((1u << kLanes) - 1) & ~(1u << at)) << "NaN equals nothing";
  }
  EXPECT_EQ(EqualLanes(Splat(0.0), Splat(-0.0)), (1u << kLanes) - 1);
}

TEST(Lanes, MaskOfHasABitForEachLaneThatHolds) {
  EXPECT_EQ(MaskOf(SplatBits(0)), 0u);
  EXPECT_EQ(MaskOf(SplatBits(-1)), (1u << kLanes) - 1);
  for (int at = 0; at < kLanes; ++at) {
    Bits v = SplatBits(0);
    v[at] = -1;
    EXPECT_EQ(MaskOf(v), 1u << at);
  }
}

TEST(Lanes, AnyBitFindsEachBit) {
  EXPECT_FALSE(AnyBit(SplatBits(0)));
  for (int at = 0; at < kLanes; ++at) {
    for (int bit = 0; bit < 64; ++bit) {
      Bits v = SplatBits(0);
      v[at] = static_cast<std::int64_t>(std::uint64_t{1} << bit);
      EXPECT_TRUE(AnyBit(v)) << at << " " << bit;
    }
  }
}

TEST(Lanes, TimesRoundsLaneByLane) {
  const double third = 1.0 / 3.0;
  const Doubles v = Counted(0.1);
  const Doubles product = Times(&third, v);
  for (int k = 0; k < kLanes; ++k)
    EXPECT_EQ(product[k], third * v[k]);
}

TEST(Lanes, TransposeExchangesRowsAndColumns) {
  Doubles rows[kLanes];
  for (int i = 0; i < kLanes; ++i)
    rows[i] = Counted(10.0 * i);
  Transpose(rows);
  for (int i = 0; i < kLanes; ++i) {
    for (int j = 0; j < kLanes; ++j)
      EXPECT_EQ(rows[i][j], 10.0 * j + i) << i << " " << j;
  }
}
