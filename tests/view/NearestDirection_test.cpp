#include "NearestDirection.h"

#include "ViewSamples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace gsl_view;
using gsl_arithmetic::Coord3;

namespace {

constexpr unsigned kSeed = 20261123;

Coord3 RandomDirection(std::mt19937& generator) {
  std::normal_distribution<double> normal;
  const double x = normal(generator);
  const double y = normal(generator);
  const double z = normal(generator);
  const double length = std::sqrt(x * x + y * y + z * z);
  return {x / length, y / length, z / length};
}

std::size_t BySearchingAll(const std::vector<Coord3>& directions, const Coord3& v) {
  std::size_t best = 0;
  const auto square = [&](std::size_t k) {
    const double x = directions[k].x - v.x, y = directions[k].y - v.y, z = directions[k].z - v.z;
    return x * x + y * y + z * z;
  };
  for (std::size_t k = 1; k < directions.size(); ++k) {
    if (square(k) < square(best)) best = k;
  }
  return best;
}

void ExpectAsBySearchingAll(const std::vector<Coord3>& directions) {
  std::mt19937 generator(kSeed);
  const NearestDirection nearest(directions);
  std::size_t guess = 0;
  for (int k = 0; k < 500; ++k) {
    const Coord3 v = RandomDirection(generator);
    const std::size_t found = nearest.Find(v, guess);
    ASSERT_EQ(found, BySearchingAll(directions, v)) << "seed " << kSeed << ", number " << k;
    guess = (found + 7) % directions.size();
  }
}

} // namespace

TEST(NearestDirection, FindsWhatASearchOfAllFinds) {
  for (const std::size_t count : {1u, 2u, 6u, 7u, 13u, 100u, 3000u})
    ExpectAsBySearchingAll(view_samples::SpiralDirections(count));
}

TEST(NearestDirection, DirectionsMayBeUneven) {
  std::mt19937 generator(kSeed);
  std::vector<Coord3> directions;
  for (int k = 0; k < 300; ++k) {
    const Coord3 v = RandomDirection(generator);
    // Most are in a narrow cone.
    const double length = std::sqrt(1e-4 * (v.x * v.x + v.y * v.y) + 1.0);
    directions.push_back(
        k % 10 == 0 ? v : Coord3{0.01 * v.x / length, 0.01 * v.y / length, 1.0 / length});
  }
  ExpectAsBySearchingAll(directions);
}

TEST(NearestDirection, TheLowestOfEquallyNearIsFound) {
  const Coord3 x{1, 0, 0}, y{0, 1, 0};
  EXPECT_EQ(NearestDirection({x, y}).Find({0, 0, 1}, 1), 0u);
  // More than a range that is not divided holds.
  const std::vector<Coord3> same(40, y);
  for (const std::size_t guess : {0u, 20u, 39u})
    EXPECT_EQ(NearestDirection(same).Find(x, guess), 0u);
}
