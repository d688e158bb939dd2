#include "support/EvenDirections.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

using namespace gsl_tools;

TEST(EvenDirections, FollowTheSpiral) {
  const double goldenAngle = 3.14159265358979323846 * (3.0 - std::sqrt(5.0));
  for (const std::size_t count : {1u, 2u, 3u, 10u, 1001u, 100000u}) {
    const std::vector<Coord3> directions = EvenDirections(count);
    ASSERT_EQ(directions.size(), count);
    for (std::size_t k = 0; k < count; ++k) {
      const double z = 1.0 - (2.0 * static_cast<double>(k) + 1.0) / static_cast<double>(count);
      const double angle = goldenAngle * static_cast<double>(k);
      EXPECT_NEAR(directions[k].z, z, 1e-15);
      EXPECT_NEAR(directions[k].x, std::sqrt(1.0 - z * z) * std::cos(angle), 1e-9);
      EXPECT_NEAR(directions[k].y, std::sqrt(1.0 - z * z) * std::sin(angle), 1e-9);
      const double length = std::hypot(directions[k].x, directions[k].y, directions[k].z);
      EXPECT_NEAR(length, 1.0, 1e-15);
    }
  }
}

TEST(EvenDirections, EveryPlaceIsNearADirection) {
  // The cell of each of N directions has an area of 4 pi / N; a disc of that area on the sphere has
  // a radius of about 2 / sqrt(N). Even directions leave no gap of twice that radius, and no two
  // are nearer than half of it.
  const std::size_t count = 1000;
  const std::vector<Coord3> directions = EvenDirections(count);
  const double radius = 2.0 / std::sqrt(static_cast<double>(count));
  const auto distance = [](const Coord3& a, const Coord3& b) {
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
  };
  const auto nearest = [&](const Coord3& place, std::size_t apartFrom) {
    double least = 9.0;
    for (std::size_t k = 0; k < count; ++k) {
      if (k != apartFrom) least = std::min(least, distance(place, directions[k]));
    }
    return least;
  };
  double gap = 0.0;
  for (const Coord3& place : EvenDirections(4999))
    gap = std::max(gap, nearest(place, count));
  EXPECT_LT(gap, 2.0 * radius);
  double apart = 9.0;
  for (std::size_t k = 0; k < count; ++k)
    apart = std::min(apart, nearest(directions[k], k));
  EXPECT_GT(apart, 0.5 * radius);
}

} // namespace
