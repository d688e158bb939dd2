#include "Tree.h"

#include "Bodies.h"

#include <gtest/gtest.h>

#include <mutex>
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

TEST(Tree, IsTheSameForAnyTeam) {
  for (const Mesh& mesh : LargeMeshes()) {
    const Parts alone(mesh);
    const Array<Box<double>> boxes = ExactBoxes(alone.corners, alone.leaves);
    const Tree<double> exact = Tree<double>::Over(alone.corners, alone.leaves, boxes);
    EXPECT_EQ(alone.tree.orderedCount, alone.tree.nodes.size());
    WithEachTeam([&](Team& team) {
      EXPECT_TRUE(SameBytes(Parts(mesh, team).tree, alone.tree));
      const Array<Box<double>> others = ExactBoxes(alone.corners, alone.leaves, team);
      EXPECT_TRUE(SameBytes(others, boxes));
      EXPECT_TRUE(SameBytes(Tree<double>::Over(alone.corners, alone.leaves, others, team), exact));
    });
  }
}

/// Runs hold every node once, from the last to the first, and no run needs a later one.
TEST(Tree, RunsUpwardsHoldEachNodeAfterItsChildren) {
  const Parts parts(Single(Bowl(160, 0.3)));
  ASSERT_GT(parts.tree.nodes.size(), 3000u);
  EXPECT_EQ(parts.tree.RunsUpwards(Team::Alone()).size(), 1u);
  WithEachTeam([&](Team& team) {
    const std::vector<NodeRun> runs = parts.tree.RunsUpwards(team);
    EXPECT_GT(runs.size(), 2u);
    std::vector<int> runOf(parts.tree.nodes.size());
    std::size_t end = parts.tree.nodes.size();
    for (std::size_t k = 0; k < runs.size(); ++k) {
      EXPECT_EQ(runs[k].end, end);
      end = runs[k].begin;
      for (std::size_t node = runs[k].begin; node < runs[k].end; ++node)
        runOf[node] = static_cast<int>(k);
    }
    EXPECT_EQ(end, 0u);
    for (std::size_t node = 0; node < runOf.size(); ++node) {
      for (const TreeRef child : parts.tree.nodes[node].child) {
        if (child.IsNone() || child.IsLeaf()) continue;
        const NodeRun& above = runs[static_cast<std::size_t>(runOf[node])];
        const int below = runOf[child.Index()];
        EXPECT_TRUE(below == runOf[node] ||
                    runs[static_cast<std::size_t>(below)].stage < above.stage ||
                    (above.stage == kLastStage && below < runOf[node]));
      }
    }
    std::vector<std::size_t> order;
    std::mutex mutex;
    EachUpwards(runs, team, [&](std::size_t run) {
      const std::lock_guard<std::mutex> lock(mutex);
      for (const std::size_t before : order)
        EXPECT_LE(runs[before].stage, runs[run].stage);
      order.push_back(run);
    });
    EXPECT_EQ(order.size(), runs.size());
  });
}

} // namespace
