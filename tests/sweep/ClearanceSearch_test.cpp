#include "ClearanceSearch.h"

#include "Bodies.h"

#include "TestScale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const Coord3 kDirection{0.25, 0.5, -1.0};
const RangeScale kScale(8.0);

struct Found {
  FoundPair best;
  WalkEnd end = WalkEnd::Done;
  std::size_t extraVisits = 0;
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
  WalkEnd end = Walk<Scalar, ClearanceSearch<Scalar>>(scene, search, none, stack).Run();
  if (search.WantsLimit()) {
    search.Lower(kInfinity);
    end = Walk<Scalar, ClearanceSearch<Scalar>>(scene, search, none, stack).Run();
  }
  EXPECT_FALSE(search.WantsLimit());
  const FoundPair best = search.Finish();
  return {best, end, search.ExtraVisits()};
}

/// Returns all pairs of the least travel in their order, in the kernel's coordinates.
std::vector<FoundPair> FirstOfAllPairs(const Mesh& moving, const Mesh& fixed, double clearance) {
  const TravelDirection direction(kDirection);
  const auto triangle = [&](const Mesh& mesh, std::size_t k) {
    const Coord3* c = mesh.corners.data() + 3 * k;
    return MakeTriangle(direction, kScale.Down(c[0]), kScale.Down(c[1]), kScale.Down(c[2]));
  };
  std::vector<FoundPair> best;
  for (std::uint32_t i = 0; i < moving.TriangleCount(); ++i) {
    for (std::uint32_t j = 0; j < fixed.TriangleCount(); ++j) {
      ClearanceContact found{};
      const ClearanceOutcome outcome =
          JudgeClearance(direction, triangle(moving, i), triangle(fixed, j), kScale.Down(clearance),
                         kInfinity, found);
      EXPECT_NE(outcome, ClearanceOutcome::Within);
      if (outcome != ClearanceOutcome::Ahead) continue;
      if (!best.empty() && found.contact.travel > best[0].contact.travel) continue;
      if (!best.empty() && found.contact.travel < best[0].contact.travel) best.clear();
      FoundPair pair;
      pair.any = true;
      pair.moving = i;
      pair.fixed = j;
      pair.contact = found.contact;
      best.push_back(pair);
    }
  }
  return best;
}

TEST(ClearanceSearch, IsTheLeastTravelOfAllPairs) {
  for (unsigned seed = 0; seed < 4; ++seed) {
    const Mesh moving = sweep_shapes::Moved(Soup(seed, 40), {-1.25, -2.5, 5.0});
    const Mesh fixed = Soup(seed + 100, 40);
    const std::vector<FoundPair> all = FirstOfAllPairs(moving, fixed, 0.375);
    ASSERT_FALSE(all.empty());
    const FoundPair& expected = all[0];
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

TEST(ClearanceSearch, PairsThatPassNearlyEndTheWalkUntilThereIsALimit) {
  Mesh moving, fixed;
  sweep_shapes::AddTriangle(moving, {0.0, 0.0, 4.0}, {0.25, 0.0, 4.0}, {0.0, 0.25, 4.0});
  sweep_shapes::AddTriangle(fixed, {3.0, 1.5, 0.0}, {3.0, 2.0, 0.0}, {3.5, 1.5, 0.0});
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  const SceneBodies bodies{&a, {&b}};
  const TravelDirection direction(kDirection);
  Question question;
  question.clearance = 0.125;
  const Scene<float> scene(bodies, direction, kScale, question, true);
  LeafCache<float> caches[2];
  ClearanceSearch<float> search(scene, kInfinity, caches[0], caches[1]);
  NodePair<float> pair{};
  pair.moving = {a.SingleTree().root, 0, a.SingleTree().box, {}};
  pair.fixed = {b.SingleTree().root, 0, b.SingleTree().box, {}};
  int judged = 1;
  while (judged < 1000 && search.Judge(pair))
    ++judged;
  EXPECT_EQ(judged, 256);
  EXPECT_TRUE(search.WantsLimit());
  search.Lower(kInfinity);
  EXPECT_FALSE(search.WantsLimit());
  // It is asked for once, and never where there is a limit.
  for (int k = 0; k < 1000; ++k)
    ASSERT_TRUE(search.Judge(pair)) << k;
  ClearanceSearch<float> limited(scene, 3.0, caches[0], caches[1]);
  for (int k = 0; k < 1000; ++k)
    ASSERT_TRUE(limited.Judge(pair)) << k;
}

TEST(ClearanceSearch, CopiesOfTrianglesAreNamedByTheLowest) {
  Mesh moving, fixed;
  for (int k = 0; k < 40; ++k) {
    sweep_shapes::AddTriangle(moving, {0.0, 0.0, 4.0}, {0.25, 0.0, 4.0}, {0.0, 0.25, 4.0});
    sweep_shapes::AddTriangle(fixed, {1.0, 1.5, 0.0}, {1.0, 2.0, 0.0}, {1.5, 1.5, 0.0});
  }
  const FoundPair expected = FirstOfAllPairs(moving, fixed, 0.125).at(0);
  for (const Found& found :
       {FirstOf<float>(moving, fixed, 0.125), FirstOf<double>(moving, fixed, 0.125)}) {
    EXPECT_EQ(found.best.moving, 0u);
    EXPECT_EQ(found.best.fixed, 0u);
    EXPECT_EQ(found.best.contact.travel, expected.contact.travel);
    // One judgement is enough.
    EXPECT_LE(found.extraVisits, 64u);
  }
}

TEST(ClearanceSearch, TheLowestTrianglesAreNamedAmongTies) {
  const Mesh fixed = Bowl(6, 0.0);
  const Mesh moving = sweep_shapes::Moved(fixed, {0.0, 0.0, 4.0});
  const FoundPair expected = FirstOfAllPairs(moving, fixed, 0.125).at(0);
  for (const Found& found :
       {FirstOf<float>(moving, fixed, 0.125), FirstOf<double>(moving, fixed, 0.125)}) {
    EXPECT_EQ(found.best.moving, expected.moving);
    EXPECT_EQ(found.best.fixed, expected.fixed);
    EXPECT_EQ(found.best.contact.travel, expected.contact.travel);
  }
}

/// Returns the mesh with its triangles in another order.
Mesh InOrder(const Mesh& mesh, const std::vector<std::uint32_t>& order) {
  Mesh result;
  for (const std::uint32_t k : order) {
    const Coord3* c = mesh.corners.data() + 3 * k;
    sweep_shapes::AddTriangle(result, c[0], c[1], c[2]);
  }
  return result;
}

TEST(ClearanceSearch, TheLowestTrianglesAreNamedAmongTiesThatAreJudgedInTurns) {
  // Two flat squares tie in many more pairs than wait for one judgement. Their triangles are
  // numbered in any order, so the lowest pair is often judged after others.
  const Mesh fixed = Bowl(5, 0.0);
  const Mesh moving = sweep_shapes::Moved(fixed, {-0.96875, -1.9375, 4.0});
  const std::vector<FoundPair> ties = FirstOfAllPairs(moving, fixed, 0.125);
  ASSERT_GT(ties.size(), 200u);
  std::mt19937 random(7);
  std::size_t most = 0;
  for (long round = 0; round < Scaled(20); ++round) {
    std::vector<std::uint32_t> order[2];
    std::vector<std::uint32_t> number[2];
    for (int body = 0; body < 2; ++body) {
      order[body].resize(moving.TriangleCount());
      std::iota(order[body].begin(), order[body].end(), 0u);
      std::shuffle(order[body].begin(), order[body].end(), random);
      number[body].resize(order[body].size());
      for (std::uint32_t k = 0; k < order[body].size(); ++k)
        number[body][order[body][k]] = k;
    }
    std::pair<std::uint32_t, std::uint64_t> lowest(~0u, 0);
    for (const FoundPair& tie : ties)
      lowest = std::min(lowest, {number[0][tie.moving], number[1][tie.fixed]});
    const Mesh a = InOrder(moving, order[0]);
    const Mesh b = InOrder(fixed, order[1]);
    for (const Found& found : {FirstOf<float>(a, b, 0.125), FirstOf<double>(a, b, 0.125)}) {
      EXPECT_EQ(found.best.moving, lowest.first) << round;
      EXPECT_EQ(found.best.fixed, lowest.second) << round;
      EXPECT_EQ(found.best.contact.travel, ties[0].contact.travel) << round;
      most = std::max(most, found.extraVisits);
    }
  }
  // At most 64 pairs wait, and a judgement counts as 64 visits. A single order may need few.
  if (kTestScaleDivisor == 1) {
    EXPECT_GT(most, 64u * 64u);
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

/// A vector of whole numbers with a whole length.
struct WholeVector {
  std::int64_t c[3];
  std::int64_t length;
};

/// Draws one whose length is at most 4 * bound^2. One or two components are often zero.
WholeVector DrawWholeVector(std::mt19937_64& random, std::int64_t bound) {
  std::uniform_int_distribution<std::int64_t> draw(-bound, bound);
  // The square of a quaternion's length is the length of the vector to which it turns an axis.
  std::int64_t q[4] = {draw(random), draw(random), draw(random), draw(random)};
  if (random() % 4 == 0) q[2] = q[3] = 0;
  if (random() % 4 == 0) q[1] = q[3] = 0;
  if (random() % 4 == 0) q[0] = q[3] = 0;
  if (q[0] == 0 && q[1] == 0 && q[2] == 0 && q[3] == 0) q[0] = 1;
  WholeVector v{{q[0] * q[0] + q[1] * q[1] - q[2] * q[2] - q[3] * q[3],
                 2 * (q[0] * q[3] + q[1] * q[2]), 2 * (q[1] * q[3] - q[0] * q[2])},
                q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]};
  std::rotate(v.c, v.c + random() % 3, v.c + 3);
  return v;
}

/// Two boxes whose distance is exactly a clearance after exactly a travel. All numbers are exact in
/// the precision of the boxes.
template <class Scalar>
struct BoxesAtClearance {
  Box<Scalar> moving, fixed;
  Coord3 direction;
  double travel, clearance;
  bool approaches; ///< until then
};

template <class Scalar>
BoxesAtClearance<Scalar> DrawBoxes(std::mt19937_64& random) {
  constexpr bool kIsSingle = sizeof(Scalar) == sizeof(float);
  // The largest number is less than 1, and all are multiples of the unit.
  constexpr int kUnit = kIsSingle ? 22 : 40;
  constexpr std::int64_t kBound = kIsSingle ? 31 : 511;
  constexpr int kGap = kIsSingle ? 14 : 22;
  const auto draw = [&](double most) {
    const std::int64_t count = std::llround(std::ldexp(most, kUnit));
    return static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(count + 1));
  };
  const WholeVector gap = DrawWholeVector(random, kBound);
  const WholeVector along = DrawWholeVector(random, kBound);
  const std::int64_t steps =
      random() % 4 == 0 ? 0 : draw(0.25) / (random() % 2 == 0 ? along.length : along.length * 64);
  BoxesAtClearance<Scalar> boxes{};
  const auto real = [&](std::int64_t units) {
    return static_cast<Scalar>(std::ldexp(static_cast<double>(units), -kUnit));
  };
  std::int64_t closing = 0;
  for (int k = 0; k < 3; ++k) {
    const auto width = [&] { return random() % 4 == 0 ? 0 : draw(0.125); };
    const std::int64_t from = draw(0.5) - draw(0.25);
    const std::int64_t to =
        from + steps * along.c[k] + gap.c[k] * (std::int64_t{1} << (kUnit - kGap));
    boxes.moving.high[k] = real(from + (gap.c[k] > 0 ? 0 : width()));
    boxes.moving.low[k] = real(from - (gap.c[k] < 0 ? 0 : width()));
    boxes.fixed.low[k] = real(to - (gap.c[k] > 0 ? 0 : width()));
    boxes.fixed.high[k] = real(to + (gap.c[k] < 0 ? 0 : width()));
    closing += gap.c[k] * along.c[k];
  }
  boxes.direction = {static_cast<double>(along.c[0]), static_cast<double>(along.c[1]),
                     static_cast<double>(along.c[2])};
  boxes.travel = std::ldexp(static_cast<double>(steps * along.length), -kUnit);
  boxes.clearance = std::ldexp(static_cast<double>(gap.length), -kGap);
  boxes.approaches = 8 * closing > gap.length * along.length;
  return boxes;
}

/// Returns true when the search leaves the boxes out.
template <class Scalar>
bool AreBeyond(const BoxesAtClearance<Scalar>& boxes, double clearance, double maxDistance) {
  // The triangles of the bodies are not looked at.
  Mesh mesh;
  sweep_shapes::AddTriangle(mesh, {0.0, 0.0, 0.0}, {0.5, 0.0, 0.0}, {0.0, 0.5, 0.0});
  static const PreparedBody body(ViewOf(mesh));
  const SceneBodies bodies{&body, {&body}};
  const TravelDirection direction(boxes.direction);
  Question question;
  question.clearance = clearance;
  const RangeScale scale(0.5);
  const Scene<Scalar> scene(bodies, direction, scale, question, true);
  LeafCache<Scalar> movingCache;
  LeafCache<Scalar> fixedCache;
  ClearanceSearch<Scalar> search(scene, maxDistance, movingCache, fixedCache);
  NodePair<Scalar> pair{};
  pair.moving.box = boxes.moving;
  pair.fixed.box = boxes.fixed;
  Boxes<Scalar> moving, fixed;
  for (int lane = 0; lane < 4; ++lane) {
    moving.Set(lane, boxes.moving);
    fixed.Set(lane, boxes.fixed);
  }
  Four<Scalar> first[2] = {Four<Scalar>::Of(0), Four<Scalar>::Of(0)};
  const unsigned left = search.template Raise<true>(pair, moving, 15u, first[0]);
  EXPECT_TRUE(left == 0u || left == 15u);
  EXPECT_EQ(search.template Raise<false>(pair, fixed, 15u, first[1]), left);
  EXPECT_EQ(first[0][0], first[1][3]);
  // The first travel is never after that at which they are at the clearance.
  if (clearance == boxes.clearance) {
    const double travel = scene.WalkTravel(scale.Down(boxes.travel));
    const double multiple = travel / direction.Length().hi;
    EXPECT_LE(static_cast<double>(first[0][0]), multiple * (1.0 + 0x1p-50));
  }
  return left == 0u;
}

template <class Scalar>
void AttackBoxes(unsigned seed) {
  std::mt19937_64 random(seed);
  std::size_t left = 0;
  std::size_t approaching = 0;
  for (long k = 0; k < Scaled(20000); ++k) {
    const BoxesAtClearance<Scalar> boxes = DrawBoxes<Scalar>(random);
    // They are at the clearance at the greatest distance, or somewhere before it.
    for (const double more : {0.0, 0x1p-52, 0.5, kInfinity}) {
      ASSERT_FALSE(AreBeyond(boxes, boxes.clearance, boxes.travel + more * boxes.clearance)) << k;
    }
    // A little nearer, they are beyond it until then.
    if (!boxes.approaches) continue;
    ++approaching;
    if (AreBeyond(boxes, boxes.clearance * (1.0 - 0x1p-20), boxes.travel)) ++left;
  }
  EXPECT_GT(static_cast<double>(left), 0.75 * static_cast<double>(approaching));
}

TEST(ClearanceSearch, BoxesThatComeWithinTheClearanceAreNotLeftOut) {
  AttackBoxes<float>(1);
  AttackBoxes<double>(2);
}

TEST(ClearanceSearch, PairsThatAreWithinTheClearanceEndTheWalk) {
  const Mesh fixed = Bowl(4, 0.0);
  const Mesh moving = sweep_shapes::Moved(fixed, {0.0, 0.0, 4.0});
  EXPECT_EQ(FirstOf<float>(moving, fixed, 4.0).end, WalkEnd::Stopped);
  EXPECT_EQ(FirstOf<double>(moving, fixed, 4.0).end, WalkEnd::Stopped);
}

/// A search for two bodies whose leaves are judged one by one.
struct ByLeaves {
  ByLeaves(const Mesh& moving, const Mesh& fixed, double clearance, const Coord3& along)
      : a(ViewOf(moving)), b(ViewOf(fixed)), direction(along), question(Within(clearance)),
        scene(bodies, direction, kScale, question, true),
        search(scene, kInfinity, caches[0], caches[1]) {}

  static Question Within(double clearance) {
    Question question;
    question.clearance = clearance;
    return question;
  }
  NodePair<float> PairOf(std::size_t movingLeaf, std::size_t fixedLeaf = 0) const {
    NodePair<float> pair{};
    pair.moving = {TreeRef::Leaf(movingLeaf), 0, a.SingleTree().box, {}};
    pair.fixed = {TreeRef::Leaf(fixedLeaf), 0, b.SingleTree().box, {}};
    return pair;
  }

  PreparedBody a, b;
  SceneBodies bodies{&a, {&b}};
  TravelDirection direction;
  Question question;
  Scene<float> scene;
  LeafCache<float> caches[2];
  ClearanceSearch<float> search;
};

TEST(ClearanceSearch, PairsAreSettledByTheNearestCornersOfTheirBoxes) {
  // A corner 3 before the plane x - y - z = 0, whose normal has both signs.
  const Coord3 tip{-1.0, -1.0, 3.0};
  Mesh moving, fixed;
  sweep_shapes::AddTriangle(moving, tip, {-1.0, -1.0, 4.0}, {-1.0, -0.75, 4.0});
  sweep_shapes::AddTriangle(fixed, {-2.0, -2.0, 0.0}, {2.0, -1.0, 3.0}, {0.0, 2.0, -2.0});
  ByLeaves by(moving, fixed, 0.125, kDirection);
  NodePair<float> pair = by.PairOf(0);
  EXPECT_FALSE(by.search.IsSettled(pair));
  ASSERT_TRUE(by.search.Judge(pair));
  ASSERT_TRUE(by.search.Finish().any);
  const auto isSettled = [&](int axis, float more) {
    pair.moving.box = {{-1.0f, -1.0f, 3.0f}, {-1.0f, -1.0f, 3.0f}};
    pair.fixed.box = {{2.0f, -1.0f, 3.0f}, {2.0f, -1.0f, 3.0f}};
    (more < 0.0f ? pair.moving.box.low : pair.moving.box.high)[axis] += more;
    const bool ofMoving = by.search.IsSettled(pair);
    // As much nearer or farther on the other side.
    pair.moving.box = {{-1.0f, -1.0f, 3.0f}, {-1.0f, -1.0f, 3.0f}};
    (more < 0.0f ? pair.fixed.box.high : pair.fixed.box.low)[axis] -= more;
    EXPECT_EQ(by.search.IsSettled(pair), ofMoving) << axis << ' ' << more;
    return ofMoving;
  };
  EXPECT_TRUE(isSettled(0, 0.0f));
  EXPECT_TRUE(isSettled(0, -0.5f));
  EXPECT_TRUE(isSettled(1, 0.5f));
  EXPECT_TRUE(isSettled(2, 0.5f));
  EXPECT_FALSE(isSettled(0, 0.5f));
  EXPECT_FALSE(isSettled(1, -0.5f));
  EXPECT_FALSE(isSettled(2, -0.5f));
}

TEST(ClearanceSearch, ANearerLeafIsJudgedThoughAllFixedTrianglesAreHeld) {
  Mesh moving, fixed;
  for (int k = 0; k < 16; ++k) {
    const double x = k < 8 ? -4.0 : 4.0;
    const double z = k < 8 ? 4.0 : 3.0;
    sweep_shapes::AddTriangle(moving, {x, 0.0, z}, {x + 1.0, 0.0, z + 1.0}, {x, 1.0, z + 1.0});
  }
  sweep_shapes::AddTriangle(fixed, {-8.0, -8.0, 0.0}, {8.0, -8.0, 0.0}, {0.0, 8.0, 0.0});
  ByLeaves by(moving, fixed, 0.125, {0.0, 0.0, -1.0});
  ASSERT_EQ(by.a.Runs().Count(), 2u);
  ASSERT_TRUE(by.search.Judge(by.PairOf(0)));
  EXPECT_EQ(by.search.Finish().moving, 0u);
  ASSERT_TRUE(by.search.Judge(by.PairOf(1)));
  EXPECT_EQ(by.search.Finish().moving, 8u);
}

TEST(ClearanceSearch, APlaneThatHardlyPartsLeavesOutNothingWithoutALimit) {
  // The first moving triangle rises by 2^-47 of its way from the slope. The second meets the wall.
  Mesh moving, fixed;
  sweep_shapes::AddTriangle(moving, {0.0, 0.0, 0.5}, {0.125, 0.0, 0.5}, {0.0, 0.0, 0.625});
  sweep_shapes::AddTriangle(moving, {0.0, 0.0, 4.0}, {0.125, 0.0, 4.0}, {0.0, 0.125, 4.0});
  for (const bool isWallFirst : {true, false}) {
    fixed = Mesh();
    const auto addWall = [&] {
      sweep_shapes::AddTriangle(fixed, {2.0, -1.0, 3.5}, {2.0, 1.0, 3.5}, {2.0, 0.0, 6.0});
    };
    if (isWallFirst) addWall();
    sweep_shapes::AddTriangle(fixed, {-8.0, -2.0, -1.5}, {8.0, -2.0, -1.5}, {0.0, 2.0, 1.5});
    if (!isWallFirst) addWall();
    ByLeaves by(moving, fixed, 0.125, {1.0, 0.0, 0x1p-47});
    for (std::size_t i = 0; i < by.a.Runs().Count(); ++i) {
      for (std::size_t j = 0; j < by.b.Runs().Count(); ++j)
        ASSERT_TRUE(by.search.Judge(by.PairOf(i, j)));
    }
    const FoundPair& best = by.search.Finish();
    ASSERT_TRUE(best.any);
    EXPECT_EQ(best.moving, 1u);
    EXPECT_EQ(best.fixed, isWallFirst ? 0u : 1u);
  }
}

} // namespace
