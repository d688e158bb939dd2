#include "LastContact.h"

#include "Bodies.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Counts the leaves that a search judges.
template <class Scalar>
struct Counting {
  static constexpr bool kFromEnd = true;
  TravelRange<Scalar> Range() const { return judgement.Range(); }
  bool IsSettled(const NodePair<Scalar>& pair) { return judgement.IsSettled(pair); }
  template <bool kMoving>
  unsigned Raise(const NodePair<Scalar>& pair, const Boxes<Scalar>& boxes, unsigned mask,
                 Four<Scalar>& from) {
    return judgement.template Raise<kMoving>(pair, boxes, mask, from);
  }
  bool Judge(const NodePair<Scalar>& pair) {
    ++judged;
    return judgement.Judge(pair);
  }
  LastContact<Scalar>& judgement;
  std::size_t judged = 0;
};

struct Found {
  FoundPair best;
  bool isCut = false;
  std::size_t judged = 0;
};

const Coord3 kDirection{0.25, 0.5, -1.0};
const RangeScale kScale(8.0);

template <class Scalar>
Found LastOf(const Mesh& moving, const Mesh& fixed, double maxDistance = kInfinity,
             Rule rule = Rule::Touch) {
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  const SceneBodies bodies{&a, {&b}};
  const TravelDirection direction(kDirection);
  Question question;
  question.rule = rule;
  const Scene<Scalar> scene(bodies, direction, kScale, question, true);
  LeafCache<Scalar> movingCache;
  LeafCache<Scalar> fixedCache;
  LastContact<Scalar> last(scene, maxDistance, movingCache, fixedCache);
  Counting<Scalar> counting{last};
  std::vector<NodePair<Scalar>> stack;
  const Watch none;
  Walk<Scalar, Counting<Scalar>> walk(scene, counting, none, stack);
  EXPECT_EQ(walk.Run(), WalkEnd::Done);
  return {last.Best(), last.IsCut(), counting.judged};
}

/// Returns the pair with the greatest end of all, in the kernel's coordinates.
FoundPair LastOfAllPairs(const Mesh& moving, const Mesh& fixed) {
  const TravelDirection direction(kDirection);
  const auto triangle = [&](const Mesh& mesh, std::size_t k) {
    const Coord3* c = mesh.corners.data() + 3 * k;
    return MakeTriangle(direction, kScale.Down(c[0]), kScale.Down(c[1]), kScale.Down(c[2]));
  };
  FoundPair best;
  for (std::uint32_t i = 0; i < moving.TriangleCount(); ++i) {
    for (std::uint32_t j = 0; j < fixed.TriangleCount(); ++j) {
      ContactInterval interval{};
      if (!FindContactInterval(direction, triangle(moving, i), triangle(fixed, j), interval) ||
          interval.last.travel < 0.0 || (best.any && interval.last.travel <= best.contact.travel)) {
        continue;
      }
      best.any = true;
      best.moving = i;
      best.fixed = j;
      best.contact = interval.last;
    }
  }
  return best;
}

TEST(LastContact, IsTheGreatestEndOfAllPairs) {
  for (unsigned seed = 0; seed < 6; ++seed) {
    const Mesh moving = sweep_shapes::Moved(Soup(seed, 300), {0.0, 0.0, seed % 3 == 0 ? 0.0 : 3.0});
    const Mesh fixed = Soup(seed + 100, 300);
    const FoundPair expected = LastOfAllPairs(moving, fixed);
    ASSERT_TRUE(expected.any);
    for (const Found& found : {LastOf<float>(moving, fixed), LastOf<double>(moving, fixed)}) {
      EXPECT_TRUE(found.best.any);
      EXPECT_FALSE(found.isCut);
      EXPECT_EQ(found.best.moving, expected.moving);
      EXPECT_EQ(found.best.fixed, expected.fixed);
      EXPECT_EQ(found.best.contact.travel, expected.contact.travel);
      // Not every leaf is looked at.
      EXPECT_LT(found.judged, 600u);
    }
  }
}

TEST(LastContact, TiesAcrossAnAxisAreSettledWithoutJudgingThem) {
  const Mesh fixed = Bowl(64, 0.0);
  const Mesh moving = sweep_shapes::Moved(fixed, {0.0, 0.0, 4.0});
  const Found single = LastOf<float>(moving, fixed);
  const Found exact = LastOf<double>(moving, fixed);
  EXPECT_TRUE(single.best.any);
  EXPECT_LT(single.judged, 30u);
  EXPECT_LT(exact.judged, 30u);
  EXPECT_EQ(single.best.moving, exact.best.moving);
  EXPECT_EQ(single.best.fixed, exact.best.fixed);
}

/// Sheets that are parallel and oblique to the axes part everywhere at once. Steps in one of them
/// part later or earlier.
TEST(LastContact, IsTheFirstByNumberOfTheTiesAcrossAPlane) {
  for (unsigned seed = 0; seed < 8; ++seed) {
    std::mt19937_64 random(seed);
    Mesh fixed = Bowl(16, 0.0);
    std::reverse(fixed.corners.begin(), fixed.corners.end());
    for (Coord3& p : fixed.corners)
      p.z += 0.5 * p.x + 0.25 * p.y;
    const Mesh moving = sweep_shapes::Moved(fixed, {0.25, 0.125, 4.0});
    const std::size_t run = std::size_t{6} << seed % 4;
    for (std::size_t k = 0; seed > 0 && k < fixed.corners.size(); k += run) {
      const double step = static_cast<double>(random() % 8) / 64.0;
      for (std::size_t c = k; c < std::min(k + run, fixed.corners.size()); ++c)
        fixed.corners[c].z += step;
    }
    const FoundPair expected = LastOfAllPairs(moving, fixed);
    ASSERT_TRUE(expected.any);
    for (const Found& found : {LastOf<float>(moving, fixed), LastOf<double>(moving, fixed)}) {
      EXPECT_EQ(found.best.moving, expected.moving) << seed;
      EXPECT_EQ(found.best.fixed, expected.fixed) << seed;
      EXPECT_EQ(found.best.contact.travel, expected.contact.travel) << seed;
    }
  }
}

TEST(LastContact, OfCopiesTheLowestIsNamed) {
  Mesh one = Bowl(2, 0.25);
  one.corners.resize(6);
  Mesh copies;
  for (int k = 0; k < 20; ++k)
    copies.corners.insert(copies.corners.end(), one.corners.begin() + 3 * (k % 7 == 0 ? 1 : 0),
                          one.corners.begin() + 3 * (k % 7 == 0 ? 2 : 1));
  const Mesh moving = sweep_shapes::Moved(copies, {0.25, 0.125, 4.0});
  const FoundPair expected = LastOfAllPairs(moving, copies);
  const Found found = LastOf<float>(moving, copies);
  EXPECT_EQ(found.best.moving, expected.moving);
  EXPECT_EQ(found.best.fixed, expected.fixed);
  EXPECT_EQ(found.best.contact.travel, expected.contact.travel);
}

TEST(LastContact, IsFoundBesideTrianglesFarLargerThanTheOthers) {
  for (unsigned seed = 0; seed < 4; ++seed) {
    Mesh fixed = Soup(seed, 200);
    fixed.corners[3] = {1e6, 2e6, -1e6};
    fixed.corners[100] = {-1e6, 0.0, 5e5};
    const Mesh moving = sweep_shapes::Moved(Soup(seed + 50, 200), {0.0, 0.0, 1.0});
    const FoundPair expected = LastOfAllPairs(moving, fixed);
    const Found found = LastOf<float>(moving, fixed);
    EXPECT_EQ(found.best.moving, expected.moving);
    EXPECT_EQ(found.best.fixed, expected.fixed);
    EXPECT_EQ(found.best.contact.travel, expected.contact.travel);
  }
}

/// A narrow triangle leads from the lower body to a point far away, under the whole upper body.
TEST(LastContact, FewLeavesAreJudgedBesideATriangleThatLeadsFarAway) {
  for (const bool moves : {false, true}) {
    Mesh lower = Bowl(32, 0.25);
    const double far = 1e6;
    sweep_shapes::AddTriangle(lower, {-1.0, -1.0, 0.5}, {-1.0, -0.96875, 0.5},
                              {0.5 * far, far, -far});
    Mesh upper = sweep_shapes::Moved(Bowl(32, -0.25), {0.0, 0.0, 4.0});
    if (moves) {
      for (Mesh* mesh : {&lower, &upper}) {
        for (Coord3& p : mesh->corners)
          p = {-p.x, -p.y, -p.z};
      }
    }
    const Mesh& moving = moves ? lower : upper;
    const Mesh& fixed = moves ? upper : lower;
    const FoundPair expected = LastOfAllPairs(moving, fixed);
    for (const Found& found : {LastOf<float>(moving, fixed), LastOf<double>(moving, fixed)}) {
      EXPECT_EQ(found.best.moving, expected.moving);
      EXPECT_EQ(found.best.fixed, expected.fixed);
      EXPECT_EQ(found.best.contact.travel, expected.contact.travel);
      EXPECT_LT(found.judged, 30u);
    }
  }
}

TEST(LastContact, PairsThatTouchAtTheGreatestDistanceTieThere) {
  // The same soup twice, which overlaps itself for a while.
  const Mesh soup = Soup(7, 400);
  const Found whole = LastOf<float>(soup, soup);
  const double end = kScale.UpTravel(whole.best.contact.travel);
  ASSERT_GT(end, 0.5);
  const double half = 0.5 * end;
  const Found cut = LastOf<float>(soup, soup, half);
  EXPECT_TRUE(cut.isCut);
  // The first pair by number that touches there.
  const TravelDirection direction(kDirection);
  const auto triangle = [&](std::size_t k) {
    const Coord3* c = soup.corners.data() + 3 * k;
    return MakeTriangle(direction, c[0], c[1], c[2]);
  };
  std::uint32_t moving = 0;
  std::uint32_t fixed = 0;
  for (bool found = false; !found && moving < 400; ++moving) {
    for (fixed = 0; !found && fixed < 400; ++fixed) {
      ContactInterval interval{};
      found = FindContactInterval(direction, triangle(moving), triangle(fixed), interval) &&
              interval.first.travel <= half && interval.last.travel >= half;
    }
  }
  EXPECT_EQ(cut.best.moving, moving - 1);
  EXPECT_EQ(cut.best.fixed, fixed - 1);
  const Found beyond = LastOf<float>(soup, soup, end * (1.0 + 1e-9));
  EXPECT_FALSE(beyond.isCut);
  EXPECT_EQ(beyond.best.moving, whole.best.moving);
}

TEST(LastContact, PairsThatPartAtZeroCountUnlessTheyLeave) {
  const Mesh fixed = Bowl(4, 0.0);
  const Mesh moving = sweep_shapes::Moved(fixed, {0.0, 0.0, 0.0});
  const Found touching = LastOf<float>(moving, fixed);
  EXPECT_TRUE(touching.best.any);
  EXPECT_EQ(touching.best.contact.travel, 0.0);
  EXPECT_FALSE(LastOf<float>(moving, fixed, kInfinity, Rule::NotLeaving).best.any);
  EXPECT_FALSE(LastOf<double>(moving, fixed, kInfinity, Rule::NotLeaving).best.any);
}

TEST(LastContact, FewLeavesOfASmallSheetAreJudged) {
  const Mesh fixed = Bowl(24, 0.0);
  const Mesh moving = sweep_shapes::Moved(fixed, {0.0, 0.0, 4.0});
  EXPECT_LT(LastOf<float>(moving, fixed).judged, 30u);
  EXPECT_LT(LastOf<double>(moving, fixed).judged, 30u);
}

TEST(LastContact, APairThatPartsJustBeforeTheGreatestDistanceIsNotCut) {
  // The plate leaves the lowest corner of the first triangle after the direction once, and that of
  // the second one later.
  Mesh moving;
  sweep_shapes::AddTriangle(moving, {-4, -4, 1}, {4, -4, 1}, {0, 4, 1});
  Mesh fixed;
  sweep_shapes::AddTriangle(fixed, {0, 0, 0}, {0.5, 0, 0.5}, {0, 0.5, 0.5});
  sweep_shapes::AddTriangle(fixed, {0, 0, -0.5}, {0.5, 0, 0.5}, {0, 0.5, 0.5});
  // The least double above the length of the direction, which is the root of 1.3125.
  double greatest = std::sqrt(1.3125);
  if (std::fma(greatest, greatest, -1.3125) < 0.0) greatest = std::nextafter(greatest, 2.0);
  for (const Found& found :
       {LastOf<float>(moving, fixed, greatest), LastOf<double>(moving, fixed, greatest)}) {
    EXPECT_TRUE(found.isCut);
    EXPECT_EQ(found.best.fixed, 1u);
  }
}

} // namespace
