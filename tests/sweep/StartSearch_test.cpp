#include "StartSearch.h"

#include "Bodies.h"

#include <gtest/gtest.h>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

template <class Scalar>
FoundPair FirstAtStart(const Mesh& moving, const Mesh& fixed, const Watch& watch, WalkEnd end) {
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  const SceneBodies bodies{&a, {&b}};
  const TravelDirection direction({0.25, 0.5, -1.0});
  const RangeScale scale(4.0);
  const Question question;
  const Scene<Scalar> scene(bodies, direction, scale, question, true);
  LeafCache<Scalar> movingCache;
  LeafCache<Scalar> fixedCache;
  std::vector<NodePair<Scalar>> stack;
  StartSearch<Scalar> search(scene, movingCache, fixedCache, watch, stack);
  EXPECT_EQ(search.Run(), end);
  return search.Best();
}

TEST(StartSearch, FindsTheFirstOfAllPairsThatTouch) {
  for (unsigned seed = 0; seed < 8; ++seed) {
    const Mesh moving = Soup(seed, 300);
    const Mesh fixed = Soup(seed + 100, 300);
    const TravelDirection direction({0.25, 0.5, -1.0});
    const auto triangle = [&](const Mesh& mesh, std::size_t k) {
      const Coord3* c = mesh.corners.data() + 3 * k;
      return MakeTriangle(direction, c[0], c[1], c[2]);
    };
    FoundPair expected;
    for (std::uint32_t i = 0; i < 300 && !expected.any; ++i) {
      for (std::uint32_t j = 0; j < 300 && !expected.any; ++j) {
        PairContact contact{};
        ExactRatio travel;
        if (JudgePair(direction, triangle(moving, i), triangle(fixed, j), Rule::Touch, 0.0, contact,
                      travel) != PairOutcome::Touching) {
          continue;
        }
        expected.any = true;
        expected.moving = i;
        expected.fixed = j;
      }
    }
    ASSERT_TRUE(expected.any);
    for (const FoundPair& found : {FirstAtStart<float>(moving, fixed, {}, WalkEnd::Done),
                                   FirstAtStart<double>(moving, fixed, {}, WalkEnd::Done)}) {
      EXPECT_TRUE(found.any);
      EXPECT_EQ(found.moving, expected.moving);
      EXPECT_EQ(found.fixed, expected.fixed);
    }
  }
}

TEST(StartSearch, CanBeCancelled) {
  // The same surface twice, of which the first pair by number comes late.
  const Mesh mesh = Bowl(80, 0.2);
  const Mesh fixed = sweep_shapes::Moved(mesh, {0.0, 0.0, 1e-5});
  FirstAtStart<float>(
      mesh, fixed, [](double) { return false; }, WalkEnd::Cancelled);
}

} // namespace
