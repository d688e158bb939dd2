#include "PatchSearch.h"

#include "Bodies.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

const Coord3 kDirection{0.25, 0.5, -1.0};
const RangeScale kScale(1.0);

using Numbers = std::vector<std::pair<std::uint32_t, std::uint64_t>>;

struct Found {
  std::size_t count = 0;
  Numbers kept;
  PointBounds points;
};

/// Finds the pairs that touch at the start.
template <class Scalar>
Found PatchAtStart(const Mesh& moving, const Mesh& fixed, std::size_t capacity) {
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  const SceneBodies bodies{&a, {&b}};
  const TravelDirection direction(kDirection);
  const Scene<Scalar> scene(bodies, direction, kScale, Question(), true);
  LeafCache<Scalar> movingCache;
  LeafCache<Scalar> fixedCache;
  FoundPair unused;
  PatchSearch<Scalar> patch(scene, unused, true, capacity, movingCache, fixedCache);
  std::vector<NodePair<Scalar>> stack;
  const Watch none;
  Walk<Scalar, PatchSearch<Scalar>> walk(scene, patch, none, stack);
  EXPECT_EQ(walk.Run(), WalkEnd::Done);
  Found found;
  found.count = patch.Count();
  found.points = {kScale.UpPoint(patch.Points().low), kScale.UpPoint(patch.Points().high)};
  for (const FoundTriangles& pair : patch.Kept())
    found.kept.emplace_back(pair.moving, pair.fixed);
  return found;
}

/// Returns all pairs that touch at the start, in the order of their numbers.
Numbers AllAtStart(const Mesh& moving, const Mesh& fixed) {
  const TravelDirection direction(kDirection);
  const auto triangle = [&](const Mesh& mesh, std::size_t k) {
    const Coord3* c = mesh.corners.data() + 3 * k;
    return MakeTriangle(direction, c[0], c[1], c[2]);
  };
  Numbers all;
  for (std::uint32_t i = 0; i < moving.TriangleCount(); ++i) {
    for (std::uint32_t j = 0; j < fixed.TriangleCount(); ++j) {
      PairContact contact{};
      ExactRatio travel;
      if (JudgePair(direction, triangle(moving, i), triangle(fixed, j), Rule::Touch, 0.0, contact,
                    travel) == PairOutcome::Touching) {
        all.emplace_back(i, j);
      }
    }
  }
  return all;
}

TEST(PatchSearch, CountsAllPairsAndKeepsTheFirst) {
  std::mt19937_64 random(3);
  const Mesh moving = sweep_shapes::Soup(random, 400, 1.0, 0.5, 0.0);
  const Mesh fixed = sweep_shapes::Soup(random, 400, 1.0, 0.5, 0.0);
  const Numbers all = AllAtStart(moving, fixed);
  // More than are kept before a surplus is dropped.
  ASSERT_GT(all.size(), 300u);
  for (const std::size_t capacity :
       {std::size_t{0}, std::size_t{1}, std::size_t{7}, std::size_t{100}, all.size() - 1,
        all.size(), all.size() + 1, ~std::size_t{0}}) {
    Numbers expected = all;
    expected.resize(std::min(capacity, all.size()));
    for (const Found& found : {PatchAtStart<float>(moving, fixed, capacity),
                               PatchAtStart<double>(moving, fixed, capacity)}) {
      EXPECT_EQ(found.count, all.size());
      EXPECT_EQ(found.kept, expected);
      EXPECT_GE(found.points.low.x, -1.5);
      EXPECT_LE(found.points.high.x, 1.5);
      EXPECT_LT(found.points.low.x, -0.8);
      EXPECT_GT(found.points.high.x, 0.8);
    }
  }
}

/// A pair that comes after others were dropped is compared with those that stay.
TEST(PatchSearch, KeepsTheFirstOfManyAtEveryCapacity) {
  std::mt19937_64 random(5);
  const Mesh moving = sweep_shapes::Soup(random, 300, 1.0, 0.75, 0.0);
  const Mesh fixed = sweep_shapes::Soup(random, 300, 1.0, 0.75, 0.0);
  const Numbers all = AllAtStart(moving, fixed);
  ASSERT_GT(all.size(), 600u);
  for (std::size_t capacity = 1; capacity < 150; capacity += 1 + capacity / 8) {
    Numbers expected = all;
    expected.resize(capacity);
    EXPECT_EQ(PatchAtStart<float>(moving, fixed, capacity).kept, expected) << capacity;
  }
}

} // namespace
