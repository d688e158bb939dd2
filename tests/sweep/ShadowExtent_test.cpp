#include "ShadowExtent.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>

namespace {

using namespace gsl_sweep;

Box<float> BoxOf(float xLow, float yLow, float zLow, float xHigh, float yHigh, float zHigh) {
  return {{xLow, yLow, zLow}, {xHigh, yHigh, zHigh}};
}

ShadowExtent Around(const ShadowAxes& axes, const double (&p)[3], const double (&q)[3]) {
  ShadowExtent extent = axes.Of(p);
  extent.Include(axes.Of(q));
  return extent;
}

TEST(ShadowExtent, ShadowsThatShareABorderShareNoArea) {
  // Along (1, 0, 4) the points (x, y, z) and (x + 1, y, z + 4) have one shadow.
  const ShadowAxes axes(TravelDirection({0.25, 0.0, 1.0}));
  const ShadowExtent low = Around(axes, {0.0, 0.0, 0.0}, {1.0, 1.0, 0.0});
  const ShadowExtent beside = Around(axes, {2.0, 0.0, 4.0}, {3.0, 1.0, 4.0});
  const ShadowExtent over = Around(axes, {1.9375, 0.0, 4.0}, {3.0, 1.0, 4.0});
  EXPECT_FALSE(low.MayShareArea(beside));
  EXPECT_FALSE(beside.MayShareArea(low));
  EXPECT_TRUE(low.MayShareArea(over));
  const ShadowExtent above = Around(axes, {0.0, 1.0, 0.0}, {1.0, 2.0, 0.0});
  EXPECT_FALSE(above.MayShareArea(low));
  EXPECT_FALSE(low.MayShareArea(above));
}

TEST(ShadowExtent, BoundsThatAreRoundedAreWider) {
  const double third = 1.0 / 3.0;
  const ShadowAxes axes(TravelDirection({third, 0.0, 1.0}));
  const ShadowExtent low = Around(axes, {0.0, 0.0, 0.0}, {1.0, 1.0, 0.0});
  const ShadowExtent beside = Around(axes, {1.0 + 0.1 * third, 0.0, 0.1}, {3.0, 1.0, 0.1});
  EXPECT_TRUE(low.MayShareArea(beside));
  const ShadowExtent apart = Around(axes, {1.0 + 0x1p-45 + 0.1 * third, 0.0, 0.1}, {3.0, 1.0, 0.1});
  EXPECT_FALSE(low.MayShareArea(apart));
}

/// Both terms are of size 2^14 and have up to 62 bits. In whole numbers all is exact.
TEST(ShadowExtent, BoundsHoldWhatRoundingLosesOfLargeCoordinates) {
  std::mt19937_64 random(6);
  const auto draw = [&random](int bits) {
    return static_cast<std::int64_t>(random() >> (64 - bits)) | std::int64_t{1} << (bits - 1);
  };
  for (int round = 0; round < 500; ++round) {
    const std::int64_t z = draw(30);
    const std::int64_t y = draw(30);
    const std::int64_t d = draw(31);
    // Coordinates have the unit 2^-16, and the direction is (0, d / 2^32, 1) times a power of two.
    const TravelDirection direction({0.0, std::ldexp(static_cast<double>(d), -32), 1.0});
    const double factor = direction.Vector().z;
    const ShadowExtent extent = ShadowAxes(direction).Of(
        {0.0, 0x1p-16 * static_cast<double>(y), 0x1p-16 * static_cast<double>(z)});
    const std::int64_t across = (y << 32) - z * d; // in units of 2^-48
    EXPECT_LE(0x1p48L * extent.low[1] / factor, static_cast<long double>(across));
    EXPECT_GE(0x1p48L * extent.high[1] / factor, static_cast<long double>(across));
  }
}

TEST(ShadowExtent, OfABoxHoldsItsPoints) {
  std::mt19937_64 random(3);
  const auto draw = [&random] { return static_cast<double>(random() % 2001) / 1000.0 - 1.0; };
  for (int round = 0; round < 2000; ++round) {
    const double x = draw();
    const double y = draw();
    const double z = round % 3 == 0 ? 0.0 : draw();
    const ShadowAxes axes(TravelDirection({x, y == 0.0 && x == 0.0 ? 0.5 : y, z}));
    const double a[3] = {draw(), draw(), draw()};
    const double b[3] = {draw(), draw(), draw()};
    const auto least = [&](int k) { return RoundedDown(std::min(a[k], b[k])); };
    const auto most = [&](int k) { return RoundedUp(std::max(a[k], b[k])); };
    const ShadowExtent all =
        axes.Of(BoxOf(least(0), least(1), least(2), most(0), most(1), most(2)));
    for (unsigned corner = 0; corner < 8; ++corner) {
      const auto at = [&](unsigned k) { return (corner >> k & 1u) != 0 ? a[k] : b[k]; };
      const ShadowExtent point = axes.Of({at(0), at(1), at(2)});
      for (int side = 0; side < 2; ++side) {
        EXPECT_LE(all.low[side], point.high[side]);
        EXPECT_GE(all.high[side], point.low[side]);
      }
    }
  }
}

/// Moving along the direction changes no shadow: the points p and p + d have bounds in common.
TEST(ShadowExtent, IsTheSameAlongTheDirection) {
  std::mt19937_64 random(4);
  const auto draw = [&random] { return static_cast<double>(random() % 2001) / 1024.0 - 1.0; };
  for (int round = 0; round < 2000; ++round) {
    const double x = draw();
    const double y = draw();
    const ShadowAxes axes(TravelDirection({x, y, 1.0}));
    const double p[3] = {draw(), draw(), draw()};
    const double q[3] = {p[0] + x, p[1] + y, p[2] + 1.0}; // exact: multiples of 2^-10
    const ShadowExtent a = axes.Of(p);
    const ShadowExtent b = axes.Of(q);
    for (int side = 0; side < 2; ++side) {
      EXPECT_EQ(a.low[side], b.low[side]);
      EXPECT_EQ(a.high[side], b.high[side]);
      EXPECT_EQ(a.low[side], a.high[side]);
    }
  }
}

} // namespace
