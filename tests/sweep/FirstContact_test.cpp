#include "FirstContact.h"

#include "Bodies.h"

#include <gtest/gtest.h>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

TEST(FirstContact, PrecedesAllIsTheOrderOfNumbers) {
  FoundPair found;
  EXPECT_FALSE(found.PrecedesAll(9, 9));
  found.any = true;
  found.moving = 5;
  found.fixed = FixedNumber(1, 7);
  EXPECT_TRUE(found.PrecedesAll(5, FixedNumber(1, 7)));
  EXPECT_TRUE(found.PrecedesAll(5, FixedNumber(2, 0)));
  EXPECT_TRUE(found.PrecedesAll(6, 0));
  EXPECT_FALSE(found.PrecedesAll(5, FixedNumber(1, 6)));
  EXPECT_FALSE(found.PrecedesAll(5, FixedNumber(0, 99)));
  EXPECT_FALSE(found.PrecedesAll(4, FixedNumber(9, 9)));
}

/// Counts the leaves that a search judges.
template <class Scalar>
struct Counting {
  static constexpr bool kFromEnd = false;
  TravelRange<Scalar> Range() const { return judgement.Range(); }
  bool IsSettled(const NodePair<Scalar>& pair) { return judgement.IsSettled(pair); }
  bool Judge(const NodePair<Scalar>& pair) {
    ++judged;
    return judgement.Judge(pair);
  }
  FirstContact<Scalar>& judgement;
  std::size_t judged = 0;
};

/// Two plates face to face, so that every pair of triangles one above the other ties.
template <class Scalar>
std::size_t JudgedLeaves(const Mesh& moving, const Mesh& fixed, FoundPair& best) {
  const PreparedBody a(ViewOf(moving));
  const PreparedBody b(ViewOf(fixed));
  const SceneBodies bodies{&a, {&b}};
  const TravelDirection direction({0.25, 0.5, -1.0});
  const RangeScale scale(8.0);
  Question question;
  const Scene<Scalar> scene(bodies, direction, scale, question, true);
  LeafCache<Scalar> movingCache;
  LeafCache<Scalar> fixedCache;
  FirstContact<Scalar> first(scene, question.maxDistance, movingCache, fixedCache);
  Counting<Scalar> counting{first};
  std::vector<NodePair<Scalar>> stack;
  const Watch none;
  Walk<Scalar, Counting<Scalar>> walk(scene, counting, none, stack);
  EXPECT_EQ(walk.Run(), WalkEnd::Done);
  best = first.Best();
  return counting.judged;
}

TEST(FirstContact, TiesAcrossAnAxisAreSettledWithoutJudgingThem) {
  const Mesh fixed = Bowl(64, 0.0);
  const Mesh moving = sweep_shapes::Moved(fixed, {0.0, 0.0, 4.0});
  FoundPair best;
  EXPECT_LT(JudgedLeaves<float>(moving, fixed, best), 30u);
  EXPECT_TRUE(best.any);
  FoundPair exact;
  EXPECT_LT(JudgedLeaves<double>(moving, fixed, exact), 30u);
  EXPECT_EQ(best.moving, exact.moving);
  EXPECT_EQ(best.fixed, exact.fixed);
  EXPECT_EQ(best.contact.travel, exact.contact.travel);
}

} // namespace
