#include "wide/LaneCoords.h"

#include "BatchCases.h"

#include <gtest/gtest.h>

#include <set>

// This test is compiled for the instruction set of the tests. The tests of the batches run the
// other sets.
using namespace gsl_wide::GSL_LANES_NAMESPACE;

namespace {

struct CountedBatch {
  std::size_t count;
  std::multiset<std::size_t>* ones;
  void (*one)(const CountedBatch& batch, std::size_t k);
};

} // namespace

TEST(LaneCoords, PointsLoadAtEveryStride) {
  for (const std::ptrdiff_t stride : {3, 0, 5, -3, 11}) {
    batch_cases::PointArray points(kLanes + 2, stride);
    for (std::size_t k = 0; k < kLanes + 2; ++k) {
      const double c = static_cast<double>(k);
      points.Set(k, {c, c + 100.0, c + 200.0});
    }
    const Coords loaded = LoadPoints(points.In(), 2);
    for (int i = 0; i < kLanes; ++i) {
      const gsl_arithmetic::Coord3 expected = points[static_cast<std::size_t>(i) + 2];
      EXPECT_EQ(loaded.x[i], expected.x) << stride;
      EXPECT_EQ(loaded.y[i], expected.y) << stride;
      EXPECT_EQ(loaded.z[i], expected.z) << stride;
    }
  }
}

TEST(LaneCoords, StoresKeepTheLanesOutsideTheMask) {
  const Coords v = {ZeroToLast(), ZeroToLast() + Splat(100.0), ZeroToLast() + Splat(200.0)};
  const Bits mask = ZeroToLast() > Splat(0.0);
  for (const bool isWhole : {true, false}) {
    batch_cases::Reals out(3 * kLanes + 3, numbers::kSentinel);
    StorePoints(out.Data(), 1, v, mask, isWhole);
    EXPECT_TRUE(out.GuardsHold());
    EXPECT_EQ(out.Data()[2], numbers::kSentinel);
    for (int i = 0; i < kLanes; ++i) {
      const bool isKept = !isWhole && i == 0;
      for (int axis = 0; axis < 3; ++axis) {
        EXPECT_EQ(out.Data()[3 + 3 * i + axis], isKept ? numbers::kSentinel : i + 100.0 * axis);
      }
    }
  }
  unsigned char bytes[kLanes + 1] = {9, 9};
  StoreBytes(bytes, 1, SplatBits(3), mask);
  EXPECT_EQ(bytes[1], 9);
  EXPECT_EQ(bytes[kLanes], 3);
  StorePoints(nullptr, 0, v, mask, true);
  StoreBytes(nullptr, 0, SplatBits(3), mask);
}

TEST(LaneCoords, GroupsAndTheRestCoverEveryInputOnce) {
  for (std::size_t count = 0; count < 30; ++count) {
    std::multiset<std::size_t> seen;
    const CountedBatch batch = {count, &seen,
                                [](const CountedBatch& b, std::size_t k) { b.ones->insert(k); }};
    ForGroups(batch, [&](std::size_t k) {
      EXPECT_EQ(k % kLanes, 0u);
      RunOthers(batch, k, SplatBits(0));
    });
    EXPECT_EQ(seen.size(), count);
    for (std::size_t k = 0; k < count; ++k)
      EXPECT_EQ(seen.count(k), 1u);
  }
}

TEST(LaneCoords, RootsAndProductsHaveTheBitsOfTheScalar) {
  RandomNumbers random(11);
  for (int run = 0; run < 10000; ++run) {
    double in[6][kLanes];
    for (auto& row : in) {
      for (double& number : row)
        number = random.Chance(0.1) ? random.Hostile() : random.In(-9.0, 9.0);
    }
    const Coords a = {Load(in[0]), Load(in[1]), Load(in[2])};
    const Coords b = {Load(in[3]), Load(in[4]), Load(in[5])};
    const Doubles length = Distance(a, b);
    const Coords cross = Cross(a, b);
    for (int i = 0; i < kLanes; ++i) {
      const gsl_arithmetic::Coord3 u = {in[0][i], in[1][i], in[2][i]};
      const gsl_arithmetic::Coord3 v = {in[3][i], in[4][i], in[5][i]};
      ASSERT_TRUE(numbers::SameBits(length[i], gsl_kernel::Distance(u, v)));
      ASSERT_TRUE(numbers::SameBits(cross.y[i], gsl_arithmetic::Cross(u, v).y));
    }
  }
}
