#include "WithinEdge.h"

#include "BigNumber.h"
#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

namespace {

using gsl_exact::BigNumber;
using namespace gsl_sweep;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A place with its exact height and its exact side of an edge.
struct Place {
  BigNumber height, side;
};

/// The exact quotient of two numbers, the second of which is positive.
struct Quotient {
  BigNumber over, under;

  bool IsAtMost(double bound) const {
    return BigNumber::Compare(over, BigNumber(bound) * under) <= 0;
  }
};

/// Returns the heights at the ends of what is on the inner side of the edge: at places, and where
/// the line of two places crosses the edge.
std::vector<Quotient> HeightsWithin(const std::vector<Place>& places,
                                    const std::vector<std::pair<int, int>>& lines) {
  std::vector<Quotient> heights;
  for (const Place& place : places) {
    if (place.side.Sign() >= 0) heights.push_back({place.height, BigNumber(1.0)});
  }
  for (const auto& [from, to] : lines) {
    const Place& a = places[static_cast<std::size_t>(from)];
    const Place& b = places[static_cast<std::size_t>(to)];
    if (a.side.Sign() * b.side.Sign() >= 0) continue;
    const BigNumber over = a.height * b.side - b.height * a.side;
    const BigNumber under = b.side - a.side;
    heights.push_back(under.Sign() > 0 ? Quotient{over, under} : Quotient{-over, -under});
  }
  return heights;
}

/// Returns whether a bound is at least all of these heights. `tight` counts the bounds that exceed
/// the greatest height by less than a part of 2^-40.
bool Bounds(double bound, const std::vector<Quotient>& heights, int& tight) {
  if (bound == kInfinity) return true;
  bool isReached = false;
  for (const Quotient& height : heights) {
    if (!height.IsAtMost(bound)) return false;
    isReached = isReached || !height.IsAtMost(bound - std::fabs(bound) * 0x1p-40);
  }
  tight += isReached ? 1 : 0;
  return true;
}

TEST(WithinEdge, BoundsTheHeightsOfATriangle) {
  const unsigned seed = 20;
  SCOPED_TRACE(seed);
  std::mt19937_64 random(seed);
  RealsIn unit(-1.0, 1.0);
  int tight = 0;
  for (int round = 0; round < 20000 && !testing::Test::HasFailure(); ++round) {
    double height[3], side[3];
    const double size = std::ldexp(1.0, static_cast<int>(random() % 61) - 30);
    std::vector<Place> places;
    for (int c = 0; c < 3; ++c) {
      height[c] = size * unit(random);
      side[c] = unit(random);
      places.push_back({BigNumber(height[c]), BigNumber(side[c])});
    }
    const double bound = GreatestWithin(height, side);
    EXPECT_TRUE(Bounds(bound, HeightsWithin(places, {{0, 1}, {1, 2}, {2, 0}}), tight)) << round;
  }
  EXPECT_GT(tight, 4000);
}

/// A box around the origin, where its middle is.
struct Half {
  double half[3];

  /// Returns the exact value at a corner, whose bit k says on which side along axis k it is.
  BigNumber At(const Linear& linear, int corner, double sign) const {
    BigNumber value = BigNumber(linear.middle);
    for (int x = 0; x < 3; ++x) {
      const BigNumber part = BigNumber(linear.slope[x]) * BigNumber(half[x]);
      value = (corner >> x & 1) != 0 ? value + part : value - part;
    }
    return (sign < 0.0 ? -value : value) + BigNumber(linear.error);
  }
};

TEST(WithinEdge, BoundsTheHeightsOfABoxWithAllErrors) {
  const unsigned seed = 21;
  SCOPED_TRACE(seed);
  std::mt19937_64 random(seed);
  RealsIn unit(-1.0, 1.0);
  std::vector<std::pair<int, int>> lines;
  for (int corner = 0; corner < 8; ++corner) {
    for (int x = 0; x < 3; ++x) {
      if ((corner >> x & 1) == 0) lines.emplace_back(corner, corner | 1 << x);
    }
  }
  int tight = 0;
  for (int round = 0; round < 20000 && !testing::Test::HasFailure(); ++round) {
    Linear height{}, side{};
    Half box{};
    const double size = std::ldexp(1.0, static_cast<int>(random() % 61) - 30);
    height.middle = size * unit(random);
    side.middle = unit(random);
    for (int x = 0; x < 3; ++x) {
      height.slope[x] = size * unit(random);
      side.slope[x] = unit(random);
      box.half[x] = std::fabs(unit(random));
    }
    // Errors that are nothing, one, or both.
    height.error = round % 2 == 0 ? 0.0 : size * 0.01;
    side.error = round % 4 < 2 ? 0.0 : 0.01;
    const double sign = round % 8 < 4 ? 1.0 : -1.0;
    std::vector<Place> places;
    for (int corner = 0; corner < 8; ++corner)
      places.push_back({box.At(height, corner, 1.0), box.At(side, corner, sign)});
    const double bound = GreatestWithin(height, side, sign, box.half);
    EXPECT_TRUE(Bounds(bound, HeightsWithin(places, lines), tight)) << round;
  }
  EXPECT_GT(tight, 2000);
}

TEST(WithinEdge, AnEdgeThatBoundsNothingReturnsInfinity) {
  // The height rises on the inner side, or does not change across the edge.
  EXPECT_EQ(GreatestWithin({1.0, 2.0, 3.0}, {1.0, 2.0, 3.0}), kInfinity);
  EXPECT_EQ(GreatestWithin({1.0, 1.0, 1.0}, {1.0, -2.0, 3.0}), kInfinity);
  const double half[3] = {1.0, 1.0, 1.0};
  const Linear rising{0.0, {1.0, 0.0, 0.0}, 0.0};
  const Linear falling{0.0, {-1.0, 0.0, 0.0}, 0.0};
  EXPECT_EQ(GreatestWithin(rising, rising, 1.0, half), kInfinity);
  EXPECT_EQ(GreatestWithin(rising, falling, -1.0, half), kInfinity);
  EXPECT_LE(GreatestWithin(rising, falling, 1.0, half), 0x1p-40);
}

TEST(WithinEdge, TermsBeyondTheRangeOfDoubleBoundNothingFalsely) {
  // At the edge, between the first two corners, the height is 0.
  const double bound = GreatestWithin({0x1p1000, -0x1p1000, 0.0}, {-0x1p-20, 0x1p-20, -0x1p100});
  EXPECT_GE(bound, 0.0);
}

TEST(WithinEdge, ACornerOnTheEdgeCountsWhereOthersAreEquallyFarOutside) {
  // Only the last corner is not outside, and its height is 5.
  EXPECT_GE(GreatestWithin({1.0, 0.0, 5.0}, {-1.0, -1.0, 0.0}), 5.0);
}

TEST(WithinEdge, ACornerBeyondTheRangeOfDoubleHidesNoOther) {
  // The first corner is on the edge, at height 0. A term of the second is below the range.
  EXPECT_GE(GreatestWithin({0.0, 1.5e308, 0.0}, {0.0, -2.0, -0.5}), 0.0);
}

TEST(WithinEdge, TheRoundingsOfATiltedEdgeAreNeverLess) {
  // At (0.75, 1) the side is 0, and the height is 0.75.
  const Linear along{0.0, {1.0, 0.0, 0.0}, 0.0};
  EXPECT_GE(GreatestWithin(along, {0.25, {-1.0, 0.5, 0.0}, 0.0}, 1.0, {1.0, 1.0, 1.0}), 0.75);
  // At (2^-33, 1) the side is 0, and the height is 1 + 2^-53, which a double does not hold.
  const Linear steep{0.0, {0x1p-20, 1.0, 0.0}, 0.0};
  EXPECT_GT(GreatestWithin(steep, {0.0, {-1.0, 0x1p-33, 0.0}, 0.0}, 1.0, {1.0, 1.0, 0.0}), 1.0);
}

TEST(WithinEdge, SpreadIsTheGreatestDifferenceInTheBox) {
  EXPECT_EQ(SpreadOf({7.0, {1.0, -2.0, 4.0}, 0.5}, {1.0, 2.0, 0.25}), 6.5);
}

} // namespace
