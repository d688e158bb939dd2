#include "LargeLeaves.h"

#include "Bodies.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Returns the side of a pair at the root of a body.
template <class Scalar>
WalkSide<Scalar> RootOf(const TreeInUse<Scalar>& used) {
  WalkSide<Scalar> side{};
  side.ref = used.tree->root;
  side.least = used.tree->least;
  side.box = used.tree->box;
  return side;
}

/// A bowl and a narrow triangle above it that leads far away. One of them moves.
template <class Scalar>
struct NarrowOverBowl {
  explicit NarrowOverBowl(bool bowlMoves)
      : bowl(Bowl(8, 0.25)), bowlBody(ViewOf(bowl)), triangle(Narrow()),
        triangleBody(ViewOf(triangle)), bodies{bowlMoves ? &bowlBody : &triangleBody,
                                               {bowlMoves ? &triangleBody : &bowlBody}},
        direction({0.125, 0.25, bowlMoves ? 1.0 : -1.0}), scale(0x1p41),
        scene(bodies, direction, scale, Question(), true) {
    pair.moving = RootOf(scene.template TreeOf<true>(0));
    pair.fixed = RootOf(scene.template TreeOf<false>(0));
  }

  static Mesh Narrow() {
    Mesh mesh;
    sweep_shapes::AddTriangle(mesh, {-2.0, -0.2, 3.0}, {-2.0, 0.3, 3.3}, {0x1p40, 0.1, -0x1p38});
    return mesh;
  }
  const Tree<Scalar>& BowlTree(bool bowlMoves) const {
    return *(bowlMoves ? scene.template TreeOf<true>(0) : scene.template TreeOf<false>(0)).tree;
  }

  Mesh bowl;
  PreparedBody bowlBody;
  Mesh triangle;
  PreparedBody triangleBody;
  SceneBodies bodies;
  TravelDirection direction;
  RangeScale scale;
  Scene<Scalar> scene;
  LeafCache<Scalar> movingCache, fixedCache;
  NodePair<Scalar> pair{};
};

/// The first and the last travel of all that is below a child, and whether there is one.
struct Travels {
  bool any = false;
  double first = kInfinity, last = -kInfinity;
};

template <class Scalar>
Travels TravelsBelow(const NarrowOverBowl<Scalar>& asked, bool bowlMoves, TreeRef child) {
  const auto triangle = [&](const PreparedBody& body, std::size_t place) {
    const auto at = [&](int c) { return asked.scale.Down(body.Triangles().At(place, c)); };
    return MakeTriangle(asked.direction, at(0), at(1), at(2));
  };
  Travels travels;
  const Tree<Scalar>& tree = asked.BowlTree(bowlMoves);
  EachPlace(tree, asked.bowlBody.Runs(), child, [&](std::size_t place) {
    const Triangle ofBowl = triangle(asked.bowlBody, place);
    const Triangle narrow = triangle(asked.triangleBody, 0);
    ContactInterval interval{};
    if (!FindContactInterval(asked.direction, bowlMoves ? ofBowl : narrow,
                             bowlMoves ? narrow : ofBowl, interval)) {
      return;
    }
    const double length = asked.direction.Length().hi;
    travels.any = true;
    travels.first = std::min(travels.first, asked.scene.WalkTravel(interval.first.travel / length));
    travels.last = std::max(travels.last, asked.scene.WalkTravel(interval.last.travel / length));
  });
  return travels;
}

/// Raises the travels of the children of the bowl's root before the narrow triangle.
template <class Scalar, bool kFromEnd>
unsigned Raised(NarrowOverBowl<Scalar>& asked, bool bowlMoves, const TravelRange<double>& range,
                Four<Scalar>& from) {
  LargeLeaves<Scalar> leaves(asked.scene, asked.movingCache, asked.fixedCache);
  const Boxes<Scalar>& boxes = asked.BowlTree(bowlMoves).nodes[0].boxes;
  return bowlMoves ? leaves.template Raise<true, kFromEnd>(asked.pair, boxes, 15u, range, from)
                   : leaves.template Raise<false, kFromEnd>(asked.pair, boxes, 15u, range, from);
}

template <class Scalar>
void RaisesUpToTheTravels() {
  for (const bool bowlMoves : {false, true}) {
    NarrowOverBowl<Scalar> asked(bowlMoves);
    const TreeNode<Scalar>& root = asked.BowlTree(bowlMoves).nodes[0];
    const TravelRange<double> all{0.0, kInfinity};
    // One in the coordinates of the bodies.
    const double unit = sizeof(Scalar) == sizeof(float) ? 1.0 : asked.scale.Down(1.0);
    Four<Scalar> first = Four<Scalar>::Of(0);
    const unsigned toMeet = Raised<Scalar, false>(asked, bowlMoves, all, first);
    Four<Scalar> last = Four<Scalar>::Of(-Box<Scalar>::kFar);
    const unsigned toPart = Raised<Scalar, true>(asked, bowlMoves, all, last);
    for (int lane = 0; lane < 4; ++lane) {
      if (root.child[lane].IsNone()) continue;
      const Travels travels = TravelsBelow(asked, bowlMoves, root.child[lane]);
      EXPECT_EQ(toMeet >> lane & 1u, travels.any ? 1u : 0u);
      EXPECT_EQ(toPart >> lane & 1u, travels.any ? 1u : 0u);
      if (!travels.any) continue;
      const double met = first[lane];
      EXPECT_LE(met, travels.first);
      EXPECT_GE(met, unit);
      const double parted = -static_cast<double>(last[lane]);
      EXPECT_GE(parted, travels.last);
      EXPECT_LE(parted, 20.0 * unit);
      // The child is left out where all its travels are beyond the range.
      Four<Scalar> before = Four<Scalar>::Of(0);
      const TravelRange<double> early{0.0, 0.5 * met};
      EXPECT_EQ((Raised<Scalar, false>(asked, bowlMoves, early, before) >> lane & 1u), 0u);
      Four<Scalar> after = Four<Scalar>::Of(-Box<Scalar>::kFar);
      const TravelRange<double> late{2.0 * parted, kInfinity};
      EXPECT_EQ((Raised<Scalar, true>(asked, bowlMoves, late, after) >> lane & 1u), 0u);
    }
  }
}

TEST(LargeLeaves, RaisesTheTravelsOfChildrenInFloat) {
  RaisesUpToTheTravels<float>();
}

TEST(LargeLeaves, RaisesTheTravelsOfChildrenInDouble) {
  RaisesUpToTheTravels<double>();
}

/// A float can be greater than the travel that is rounded to it.
TEST(LargeLeaves, RoundsTowardsTravelsThatMayMatter) {
  for (const bool bowlMoves : {false, true}) {
    NarrowOverBowl<float> single(bowlMoves);
    NarrowOverBowl<double> exact(bowlMoves);
    const TravelRange<double> all{0.0, kInfinity};
    Float4 first = Float4::Of(0);
    Double4 exactFirst = Double4::Of(0);
    Float4 last = Float4::Of(-Box<float>::kFar);
    Double4 exactLast = Double4::Of(-kInfinity);
    const unsigned mask = Raised<float, false>(single, bowlMoves, all, first);
    Raised<double, false>(exact, bowlMoves, all, exactFirst);
    Raised<float, true>(single, bowlMoves, all, last);
    Raised<double, true>(exact, bowlMoves, all, exactLast);
    ASSERT_NE(mask, 0u);
    for (int lane = 0; lane < 4; ++lane) {
      if ((mask >> lane & 1u) == 0) continue;
      // The same bounds in the coordinates of the walk, which are those of the bodies in float.
      const double asFirst = single.scene.WalkTravel(exactFirst[lane]);
      const double asLast = single.scene.WalkTravel(exactLast[lane]);
      EXPECT_LT(static_cast<double>(first[lane]), asFirst);
      EXPECT_GT(static_cast<double>(first[lane]), asFirst * (1.0 - 0x1p-20));
      EXPECT_LT(static_cast<double>(last[lane]), asLast);
      EXPECT_GT(static_cast<double>(last[lane]), asLast * (1.0 + 0x1p-20));
    }
  }
}

TEST(LargeLeaves, LeavesAloneWhatIsKnownAsWell) {
  for (const bool bowlMoves : {false, true}) {
    NarrowOverBowl<float> asked(bowlMoves);
    Float4 from = Float4::Of(100.0f);
    const TravelRange<double> all{0.0, kInfinity};
    const unsigned mask = Raised<float, false>(asked, bowlMoves, all, from);
    EXPECT_NE(mask, 0u);
    for (int lane = 0; lane < 4; ++lane)
      EXPECT_EQ(from[lane], 100.0f);
  }
}

/// The leaves of a node of triangles that lead far away, 3 above the origin of a bowl that is 1/2
/// high, say how far it is to the box of the bowl.
TEST(LargeLeaves, RaisesTheTravelsToASmallNode) {
  Mesh far;
  for (int k = 0; k < 32; ++k) {
    const double y = 0.0625 * (k - 16);
    sweep_shapes::AddTriangle(far, {-2.0, y, 3.0}, {-2.0, y + 0.0625, 3.0}, {0x1p40, y, 3.0});
  }
  const PreparedBody farBody(ViewOf(far));
  const Mesh bowl = Bowl(8, 0.25);
  const PreparedBody bowlBody(ViewOf(bowl));
  const RangeScale scale(0x1p41);
  for (const bool farMoves : {false, true}) {
    const SceneBodies bodies{farMoves ? &farBody : &bowlBody, {farMoves ? &bowlBody : &farBody}};
    const TravelDirection direction({0.0, 0.0, farMoves ? -1.0 : 1.0});
    const Scene<float> scene(bodies, direction, scale, Question(), true);
    NodePair<float> pair{};
    pair.moving = RootOf(scene.template TreeOf<true>(0));
    pair.fixed = RootOf(scene.template TreeOf<false>(0));
    ASSERT_FALSE(pair.moving.ref.IsLeaf() || pair.fixed.ref.IsLeaf());
    const WalkSide<float>& own = farMoves ? pair.moving : pair.fixed;
    const Tree<float>& tree = farBody.SingleTree();
    const TreeNode<float>& node = tree.nodes[own.ref.Index()];
    LeafCache<float> movingCache, fixedCache;
    LargeLeaves<float> leaves(scene, movingCache, fixedCache);
    const TravelRange<double> all{0.0, kInfinity};
    Float4 from = Float4::Of(0.0f);
    if (farMoves) {
      leaves.Raise<true, false>(pair, node.boxes, 15u, all, from);
    } else {
      leaves.Raise<false, false>(pair, node.boxes, 15u, all, from);
    }
    for (int lane = 0; lane < 4; ++lane) {
      if (node.child[lane].IsNone()) continue;
      ASSERT_TRUE(node.child[lane].IsLeaf());
      const double length = from[lane] * direction.Length().hi;
      EXPECT_LE(length, 2.5);
      EXPECT_GT(length, 2.4999);
    }
  }
}

TEST(LargeLeaves, BoxesAreUnequalBeyondAFactorOfSixteen) {
  const Box<float> one{{0, 0, 0}, {1, 1, 1}};
  const Box<float> large{{0, 0, 0}, {16, 16, 16}};
  const Box<float> larger{{0, 0, 0}, {16, 16, 16.0001f}};
  EXPECT_FALSE(LargeLeaves<float>::AreUnequal(one, large));
  EXPECT_FALSE(LargeLeaves<float>::AreUnequal(large, one));
  EXPECT_TRUE(LargeLeaves<float>::AreUnequal(one, larger));
  EXPECT_TRUE(LargeLeaves<float>::AreUnequal(larger, one));
}

} // namespace
