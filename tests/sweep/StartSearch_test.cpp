#include "StartSearch.h"

#include "Bodies.h"

#include <gtest/gtest.h>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

template <class Scalar>
FoundPair FirstAtStart(const Mesh& moving, const Mesh& fixed, const Watch& watch, WalkEnd end,
                       double clearance = 0.0) {
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  const SceneBodies bodies{&a, {&b}};
  const TravelDirection direction({0.25, 0.5, -1.0});
  const RangeScale scale(32.0);
  Question question;
  question.clearance = clearance;
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

TEST(StartSearch, CallsTheWatchOnceForManyPairs) {
  // 8 triangles on 8 triangles take few looks, two large surfaces take many.
  int calls = 0;
  const Watch counts = [&calls](double) { return ++calls > 0; };
  FirstAtStart<float>(Bowl(2, 0.2), Bowl(2, 0.2), counts, WalkEnd::Done);
  EXPECT_EQ(calls, 0);
  const Mesh mesh = Bowl(80, 0.2);
  FirstAtStart<float>(mesh, sweep_shapes::Moved(mesh, {0.0, 0.0, 1e-5}), counts, WalkEnd::Done);
  EXPECT_GT(calls, 0);
  EXPECT_LT(calls, 1000);
}

TEST(StartSearch, CountsWhatIsWithinTheClearanceByLessThanARounding) {
  // The gap along x is 2^-48 less than the clearance, at coordinates of 16.
  const double gap = 0x1p-10 - 0x1p-48;
  Mesh moving;
  sweep_shapes::AddTriangle(moving, {16.0, 0.0, 0.0}, {15.0, 1.0, 0.0}, {15.0, 0.0, 1.0});
  Mesh fixed;
  sweep_shapes::AddTriangle(fixed, {16.0 + gap, 0.0, 0.0}, {17.0, 1.0, 0.0}, {17.0, 0.0, 1.0});
  EXPECT_TRUE(FirstAtStart<float>(moving, fixed, {}, WalkEnd::Done, 0x1p-10).any);
  EXPECT_TRUE(FirstAtStart<double>(moving, fixed, {}, WalkEnd::Done, 0x1p-10).any);
  EXPECT_FALSE(FirstAtStart<float>(moving, fixed, {}, WalkEnd::Done, 0x1p-11).any);
}

TEST(StartSearch, ComparesBoxesAlongEachAxisByItself) {
  // Both triangles are at 10 along one axis, and near 0 along the others, 1/4 from each other.
  for (int axis = 0; axis < 3; ++axis) {
    const auto at = [axis](double x, double y, double z) {
      const double c[3] = {x, y, z};
      return Coord3{c[(3 - axis) % 3], c[(4 - axis) % 3], c[(5 - axis) % 3]};
    };
    for (const double side : {10.0, -10.0}) {
      Mesh moving;
      sweep_shapes::AddTriangle(moving, at(side, 0, 0), at(side, 1, 0), at(side, 0, 1));
      Mesh fixed;
      sweep_shapes::AddTriangle(fixed, at(side + 0.25, 0, 0), at(side + 0.25, 1, 0),
                                at(side + 0.25, 0, 1));
      EXPECT_TRUE(FirstAtStart<float>(moving, fixed, {}, WalkEnd::Done, 0.5).any) << axis;
      EXPECT_TRUE(FirstAtStart<double>(moving, fixed, {}, WalkEnd::Done, 0.5).any) << axis;
      EXPECT_FALSE(FirstAtStart<double>(moving, fixed, {}, WalkEnd::Done, 0.125).any) << axis;
    }
  }
}

} // namespace
