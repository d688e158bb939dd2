#include "CrossingSearch.h"

#include "Bodies.h"
#include "CrossingPair.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <stdexcept>
#include <vector>

namespace {

using namespace gsl_sweep;
using sweep_ask::BodyOf;
using sweep_ask::OnThreads;
using Mesh = gsl_mesh::Mesh;

constexpr std::size_t kMany = 100000;

std::vector<Crossing> AllOf(const Mesh& mesh, unsigned threads = 2) {
  const Body body = BodyOf(mesh);
  std::vector<Crossing> found(kMany);
  const std::size_t count = Crossings(body, found.data(), found.size(), OnThreads(threads));
  EXPECT_LE(count, kMany);
  found.resize(count);
  return found;
}

/// Looks at all pairs, in their order.
std::vector<Crossing> ByAllPairs(const Mesh& mesh) {
  std::vector<Crossing> found;
  const auto triangle = [&](std::size_t k) {
    return SurfaceTriangle{{mesh.corners[3 * k], mesh.corners[3 * k + 1], mesh.corners[3 * k + 2]}};
  };
  const std::size_t count = mesh.corners.size() / 3;
  for (std::size_t i = 0; i < count; ++i) {
    if (!HasArea(triangle(i))) continue;
    for (std::size_t j = i + 1; j < count; ++j)
      if (HasArea(triangle(j)) && DoCross(triangle(i), triangle(j))) found.push_back({i, j});
  }
  return found;
}

void ExpectSame(const std::vector<Crossing>& found, const std::vector<Crossing>& expected) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t k = 0; k < found.size(); ++k) {
    ASSERT_EQ(found[k].first, expected[k].first) << k;
    ASSERT_EQ(found[k].second, expected[k].second) << k;
  }
}

Mesh Soup(unsigned seed, std::size_t count, double size, double step) {
  std::mt19937_64 random(seed);
  return sweep_shapes::Soup(random, count, 1.0, size, step);
}

TEST(CrossingSearch, FindsThoseOfAllPairs) {
  constexpr std::size_t count = kTestScaleDivisor == 1 ? 600 : 200;
  for (const double step : {0.0, 0.125, 0.5}) {
    const Mesh mesh = Soup(7, count, 0.3, step);
    const std::vector<Crossing> expected = ByAllPairs(mesh);
    EXPECT_GT(expected.size(), 10u);
    ExpectSame(AllOf(mesh, 1), expected);
    ExpectSame(AllOf(mesh, 3), expected);
    // In single precision, and beyond the range of single precision.
    const Mesh single = sweep_bodies::Single(mesh);
    ExpectSame(AllOf(single), ByAllPairs(single));
    ExpectSame(AllOf(sweep_shapes::Stretched(mesh, {0x1p300, 0x1p300, 0x1p300})), expected);
    ExpectSame(AllOf(sweep_shapes::Stretched(mesh, {0x1p-400, 0x1p-400, 0x1p-400})), expected);
  }
}

TEST(CrossingSearch, SoundSurfacesHaveNone) {
  EXPECT_TRUE(AllOf(sweep_shapes::Box({0, 0, 0}, {1, 2, 3})).empty());
  EXPECT_TRUE(AllOf(sweep_shapes::PlateWithHole(5, 2, 0, 1)).empty());
  EXPECT_TRUE(AllOf(sweep_bodies::Bowl(40, 0.3)).empty());
  EXPECT_TRUE(AllOf(Mesh()).empty());
}

TEST(CrossingSearch, TwoBoxesCrossAtTheirEdges) {
  Mesh mesh = sweep_shapes::Box({0, 0, 0}, {4, 4, 4});
  sweep_shapes::Append(mesh, sweep_shapes::Box({5, 0, 0}, {9, 4, 4}));
  EXPECT_TRUE(AllOf(mesh).empty());
  Mesh touching = sweep_shapes::Box({0, 0, 0}, {4, 4, 4});
  sweep_shapes::Append(touching, sweep_shapes::Box({1, 1, 4}, {2, 2, 5}));
  // The small face is inside the triangle of the large one that has (1, 1) and (2, 2) in its
  // border, or in both; its walls stand on it too.
  ExpectSame(AllOf(touching), ByAllPairs(touching));
  EXPECT_FALSE(AllOf(touching).empty());
}

TEST(CrossingSearch, CopiesOfATriangleAreAllPairs) {
  Mesh mesh;
  constexpr std::size_t kCopies = 50;
  for (std::size_t k = 0; k < kCopies; ++k)
    sweep_shapes::AddTriangle(mesh, {0, 0, 0}, {1, 0, 0}, {0, 1, 0});
  EXPECT_EQ(AllOf(mesh).size(), kCopies * (kCopies - 1) / 2);
}

TEST(CrossingSearch, TrianglesThatAreSkippedOrWithoutAreaHaveNone) {
  Mesh mesh;
  sweep_shapes::AddTriangle(mesh, {0, 0, 0}, {8, 0, 0}, {0, 8, 0});
  sweep_shapes::AddTriangle(mesh, {2, 2, -1}, {2, 2, 1}, {2, 2, 1});
  sweep_shapes::AddTriangle(mesh, {2, 2, -1}, {2, 2, 1}, {2, 2, std::nan("")});
  EXPECT_TRUE(AllOf(mesh).empty());
  sweep_shapes::AddTriangle(mesh, {2, 2, -1}, {2, 2, 1}, {2, 3, 1});
  ExpectSame(AllOf(mesh), {{0, 3}});
}

TEST(CrossingSearch, FirstOfManyAreWritten) {
  const Mesh mesh = Soup(9, 300, 0.4, 0.25);
  const std::vector<Crossing> all = AllOf(mesh);
  ASSERT_GT(all.size(), 20u);
  const Body body = BodyOf(mesh);
  EXPECT_EQ(Crossings(body, nullptr, 0), all.size());
  for (const std::size_t capacity : {std::size_t{1}, std::size_t{7}, all.size() - 1}) {
    std::vector<Crossing> found(capacity + 1, Crossing{77, 88});
    EXPECT_EQ(Crossings(body, found.data(), capacity), all.size());
    EXPECT_EQ(found.back().first, 77u);
    EXPECT_EQ(found.back().second, 88u);
    found.pop_back();
    ExpectSame(found, {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(capacity)});
  }
}

TEST(CrossingSearch, ProgressGrowsToOneAndCancels) {
  const Body body = BodyOf(Soup(3, 6000, 0.05, 0.0));
  gsl_sweep::Run run = OnThreads(2);
  double last = 0.0;
  std::size_t calls = 0;
  run.progress = [&](double part) {
    EXPECT_GE(part, last);
    last = part;
    ++calls;
    return true;
  };
  const std::size_t count = Crossings(body, nullptr, 0, run);
  EXPECT_GT(count, 0u);
  EXPECT_EQ(last, 1.0);
  EXPECT_GT(calls, 2u);
  run.progress = [](double) { return false; };
  Crossing untouched{77, 88};
  EXPECT_EQ(Crossings(body, &untouched, 1, run), 0u);
  EXPECT_EQ(untouched.first, 77u);
  run.progress = [](double) -> bool { throw std::runtime_error("enough"); };
  EXPECT_THROW(Crossings(body, nullptr, 0, run), std::runtime_error);
}

TEST(CrossingSearch, LooksAtEveryLeafOnce) {
  // Pairs of triangles that cross, in a row.
  constexpr std::size_t kPairs = 1500;
  Mesh mesh;
  std::vector<Crossing> expected;
  for (std::size_t k = 0; k < kPairs; ++k) {
    const double x = 4.0 * static_cast<double>(k);
    sweep_shapes::AddTriangle(mesh, {x, 0, 0}, {x + 3, 0, 0}, {x, 3, 0});
    sweep_shapes::AddTriangle(mesh, {x + 1, 1, -1}, {x + 1, 1, 1}, {x + 1, 2, 1});
    expected.push_back({2 * k, 2 * k + 1});
  }
  ExpectSame(AllOf(mesh, 1), expected);
  ExpectSame(AllOf(mesh, 3), expected);
}

} // namespace
