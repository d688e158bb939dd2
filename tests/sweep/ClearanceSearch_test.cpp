#include "ClearanceSearch.h"

#include "Bodies.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const Coord3 kDirection{0.25, 0.5, -1.0};
const RangeScale kScale(8.0);

struct Found {
  FoundPair best;
  WalkEnd end = WalkEnd::Done;
};

template <class Scalar>
Found FirstOf(const Mesh& moving, const Mesh& fixed, double clearance,
              double maxDistance = kInfinity) {
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  const SceneBodies bodies{&a, {&b}};
  const TravelDirection direction(kDirection);
  Question question;
  question.clearance = clearance;
  const Scene<Scalar> scene(bodies, direction, kScale, question, true);
  LeafCache<Scalar> movingCache;
  LeafCache<Scalar> fixedCache;
  ClearanceSearch<Scalar> search(scene, maxDistance, movingCache, fixedCache);
  std::vector<NodePair<Scalar>> stack;
  const Watch none;
  Walk<Scalar, ClearanceSearch<Scalar>> walk(scene, search, none, stack);
  const WalkEnd end = walk.Run();
  return {search.Finish(), end};
}

/// Returns the first pair of all, in the kernel's coordinates.
FoundPair FirstOfAllPairs(const Mesh& moving, const Mesh& fixed, double clearance) {
  const TravelDirection direction(kDirection);
  const auto triangle = [&](const Mesh& mesh, std::size_t k) {
    const Coord3* c = mesh.corners.data() + 3 * k;
    return MakeTriangle(direction, kScale.Down(c[0]), kScale.Down(c[1]), kScale.Down(c[2]));
  };
  FoundPair best;
  for (std::uint32_t i = 0; i < moving.TriangleCount(); ++i) {
    for (std::uint32_t j = 0; j < fixed.TriangleCount(); ++j) {
      ClearanceContact found{};
      const ClearanceOutcome outcome =
          JudgeClearance(direction, triangle(moving, i), triangle(fixed, j), kScale.Down(clearance),
                         kInfinity, found);
      EXPECT_NE(outcome, ClearanceOutcome::Within);
      if (outcome != ClearanceOutcome::Ahead) continue;
      if (best.any && found.contact.travel >= best.contact.travel) continue;
      best.any = true;
      best.moving = i;
      best.fixed = j;
      best.contact = found.contact;
    }
  }
  return best;
}

TEST(ClearanceSearch, IsTheLeastTravelOfAllPairs) {
  for (unsigned seed = 0; seed < 4; ++seed) {
    const Mesh moving = sweep_shapes::Moved(Soup(seed, 40), {-1.25, -2.5, 5.0});
    const Mesh fixed = Soup(seed + 100, 40);
    const FoundPair expected = FirstOfAllPairs(moving, fixed, 0.375);
    ASSERT_TRUE(expected.any);
    for (const Found& found :
         {FirstOf<float>(moving, fixed, 0.375), FirstOf<double>(moving, fixed, 0.375)}) {
      EXPECT_EQ(found.end, WalkEnd::Done);
      EXPECT_TRUE(found.best.any);
      EXPECT_EQ(found.best.moving, expected.moving);
      EXPECT_EQ(found.best.fixed, expected.fixed);
      EXPECT_EQ(found.best.contact.travel, expected.contact.travel);
      EXPECT_EQ(found.best.contact.kind, expected.contact.kind);
    }
  }
}

TEST(ClearanceSearch, TheLowestTrianglesAreNamedAmongTies) {
  const Mesh fixed = Bowl(6, 0.0);
  const Mesh moving = sweep_shapes::Moved(fixed, {0.0, 0.0, 4.0});
  const FoundPair expected = FirstOfAllPairs(moving, fixed, 0.125);
  for (const Found& found :
       {FirstOf<float>(moving, fixed, 0.125), FirstOf<double>(moving, fixed, 0.125)}) {
    EXPECT_EQ(found.best.moving, expected.moving);
    EXPECT_EQ(found.best.fixed, expected.fixed);
    EXPECT_EQ(found.best.contact.travel, expected.contact.travel);
  }
}

TEST(ClearanceSearch, TheGreatestDistanceIsComparedWithTheRoundedTravel) {
  const Mesh fixed = Soup(3, 40);
  const Mesh moving = sweep_shapes::Moved(Soup(4, 40), {-1.25, -2.5, 5.0});
  const Found whole = FirstOf<float>(moving, fixed, 0.375);
  ASSERT_TRUE(whole.best.any);
  const double travel = kScale.UpTravel(whole.best.contact.travel);
  EXPECT_TRUE(FirstOf<float>(moving, fixed, 0.375, travel).best.any);
  EXPECT_FALSE(FirstOf<float>(moving, fixed, 0.375, std::nextafter(travel, 0.0)).best.any);
}

TEST(ClearanceSearch, PairsThatAreWithinTheClearanceEndTheWalk) {
  const Mesh fixed = Bowl(4, 0.0);
  const Mesh moving = sweep_shapes::Moved(fixed, {0.0, 0.0, 4.0});
  EXPECT_EQ(FirstOf<float>(moving, fixed, 4.0).end, WalkEnd::Stopped);
  EXPECT_EQ(FirstOf<double>(moving, fixed, 4.0).end, WalkEnd::Stopped);
}

} // namespace
