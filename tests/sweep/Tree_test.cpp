#include "Tree.h"

#include "Bodies.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

/// Every triangle is reached once, below boxes that hold it and numbers that do not exceed it.
template <class Scalar>
void ExpectSound(const Tree<Scalar>& tree, const Corners& corners, const Leaves& leaves) {
  std::vector<int> seen(corners.Count(), 0);
  EachPlace(tree, leaves, tree.root, [&](std::size_t place) { ++seen[place]; });
  for (const int times : seen)
    ASSERT_EQ(times, 1);
  for (std::size_t k = 0; k < tree.nodes.size(); ++k) {
    const TreeNode<Scalar>& node = tree.nodes[k];
    for (int lane = 0; lane < 4; ++lane) {
      const TreeRef child = node.child[lane];
      if (!child.IsNone() && !child.IsLeaf()) {
        EXPECT_GT(child.Index(), k);
      }
      std::uint32_t least = 0xffffffffu;
      EachPlace(tree, leaves, child, [&](std::size_t place) {
        least = std::min(least, corners.Number(place));
        for (int c = 0; c < 3; ++c)
          EXPECT_TRUE(Holds(node.boxes.At(lane), corners.At(place, c)));
      });
      EXPECT_EQ(node.least[lane], least);
    }
  }
}

TEST(Tree, HoldsEveryTriangleOnce) {
  for (const std::size_t count : {1u, 2u, 9u, 33u, 1000u}) {
    const Parts parts(Soup(11, count));
    ExpectSound(parts.tree, parts.corners, parts.leaves);
    const Tree<double> exact =
        Tree<double>::Over(parts.corners, parts.leaves, ExactBoxes(parts.corners, parts.leaves));
    ExpectSound(exact, parts.corners, parts.leaves);
    EXPECT_EQ(exact.box.low[1], parts.boxes.bounds.low[1]);
    EXPECT_EQ(exact.box.high[2], parts.boxes.bounds.high[2]);
  }
}

TEST(Tree, OfNothingHasNoRoot) {
  EXPECT_TRUE(Parts(Mesh{}).tree.root.IsNone());
}

TEST(Tree, OfCoincidentTrianglesEnds) {
  Mesh mesh;
  for (int k = 0; k < 3000; ++k)
    sweep_shapes::AddTriangle(mesh, {0, 0, 0}, {1, 0, 0}, {0, 1, 0});
  const Parts parts(mesh);
  ExpectSound(parts.tree, parts.corners, parts.leaves);
}

TEST(Tree, RefittedHoldsTheMovedTriangles) {
  for (const std::size_t count : {5u, 700u}) {
    const Mesh mesh = Soup(13, count);
    const Parts parts(mesh);
    std::vector<double> vertices;
    for (std::size_t v = 0; v < parts.corners.VertexCount(); ++v) {
      const Coord3 p = parts.corners.VertexAt(v);
      vertices.insert(vertices.end(), {-2.0 * p.y, p.x + 100.0, 0.3 * p.z});
    }
    const Corners moved(parts.corners, vertices.data());
    LeafBoxes boxes;
    MeasureLeaves(moved, parts.leaves, boxes);
    const Tree<float> refitted = parts.tree.Refitted(boxes.boxes);
    ExpectSound(refitted, moved, parts.leaves);
    EXPECT_FALSE(Holds(refitted.box, {0.0, 0.0, 0.0}));
  }
}

} // namespace
