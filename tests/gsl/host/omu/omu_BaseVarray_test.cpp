#include "omu_BaseVarray.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

class Pointers : public omu_BaseVarray {
public:
  using omu_BaseVarray::Entry;
  using omu_BaseVarray::omu_BaseVarray;
};

/// Capacities that an array takes while it grows to `count` entries.
std::vector<unsigned int> Capacities(double ratio, unsigned int start, unsigned int count) {
  Pointers array(start, ratio);
  std::vector<unsigned int> seen = {array.Capacity()};
  while (array.Count() < count) {
    array.add(nullptr);
    if (array.Capacity() != seen.back()) seen.push_back(array.Capacity());
  }
  return seen;
}

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

} // namespace

TEST(OmuBaseVarray, StartsEmptyWithTheDefaultRatio) {
  const Pointers array;
  EXPECT_EQ(array.Count(), 0u);
  EXPECT_EQ(array.Capacity(), 0u);
  EXPECT_EQ(array.GrowthRatio(), 2.0);
}

TEST(OmuBaseVarray, GrowsByItsRatio) {
  EXPECT_EQ(Capacities(2.0, 8, 65), (std::vector<unsigned int>{8, 16, 32, 64, 128}));
  EXPECT_EQ(Capacities(1.5, 100, 226), (std::vector<unsigned int>{100, 150, 225, 337}));
}

TEST(OmuBaseVarray, RatioOfAtMostOneStillMakesRoom) {
  for (const double ratio : {1.0, 0.5, 0.0, -0.0, -3.0, kNan, -kInfinity}) {
    EXPECT_EQ(Capacities(ratio, 0, 12), (std::vector<unsigned int>{0, 4, 8, 12})) << ratio;
    // Beyond 64 entries the least step is a sixteenth.
    EXPECT_EQ(Capacities(ratio, 160, 161), (std::vector<unsigned int>{160, 170})) << ratio;
  }
}

TEST(OmuBaseVarray, RatioBelowTheLeastStepTakesTheLeastStep) {
  EXPECT_EQ(Capacities(1.0001, 1600, 1601), (std::vector<unsigned int>{1600, 1700}));
}

TEST(OmuBaseVarray, HugeRatioStopsAtTheFreeStep) {
  for (const double ratio : {1e300, kInfinity, 1e7}) {
    EXPECT_EQ(Capacities(ratio, 1, 2), (std::vector<unsigned int>{1, 1 + (1u << 20)})) << ratio;
  }
  // A capacity above the free step may double.
  EXPECT_EQ(Capacities(100.0, 3u << 20, (3u << 20) + 1),
            (std::vector<unsigned int>{3u << 20, 6u << 20}));
}

TEST(OmuBaseVarray, KeepsItsEntriesWhileGrowing) {
  for (const double ratio : {0.0, 1.3, 2.0, kNan}) {
    int objects[500];
    Pointers array(1, ratio);
    for (int& object : objects)
      array.add(&object);
    ASSERT_EQ(array.Count(), 500u);
    for (unsigned int i = 0; i < 500; ++i)
      EXPECT_EQ(array.Entry(i), &objects[i]);
  }
}

TEST(OmuBaseVarray, NullIsAnEntry) {
  Pointers array;
  array.add(nullptr);
  EXPECT_EQ(array.Count(), 1u);
  EXPECT_EQ(array.Entry(0), nullptr);
}

TEST(OmuBaseVarray, ManyEntriesAtTheLeastStepStayFast) {
  // With steps of a fixed size this would copy some 10^12 bytes.
  Pointers array(0, 0.0);
  for (int i = 0; i < 1000000; ++i)
    array.add(nullptr);
  EXPECT_EQ(array.Count(), 1000000u);
}
