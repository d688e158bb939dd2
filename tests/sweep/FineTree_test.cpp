#include "FineTree.h"

#include "Bodies.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

std::vector<Mesh> Families() {
  const Mesh bowl = Bowl(20, 0.3);
  const Mesh one{bowl.file, {bowl.corners.begin(), bowl.corners.begin() + 3}, {}};
  const Mesh five{bowl.file, {bowl.corners.begin(), bowl.corners.begin() + 15}, {}};
  return {bowl, Single(bowl), Soup(5, 800), one, five};
}

/// A tree refers to every triangle once, in leaves of at most two, within its boxes and slabs.
TEST(FineTree, HoldsEveryTriangleOnce) {
  for (const Mesh& mesh : Families()) {
    const Parts parts(mesh);
    const auto fine = FineTree::Of(parts.corners, parts.leaves, parts.tree);
    std::vector<int> seen(parts.corners.Count());
    EachPlace(fine->tree, fine->leaves, fine->tree.root, [&](std::size_t place) { ++seen[place]; });
    EXPECT_EQ(seen, std::vector<int>(parts.corners.Count(), 1));
    for (std::size_t leaf = 0; leaf < fine->leaves.Count(); ++leaf)
      EXPECT_LE(fine->leaves.begin[leaf + 1] - fine->leaves.begin[leaf], kFineLeafSize);
    for (std::size_t k = 0; k < fine->tree.nodes.size(); ++k) {
      const TreeNode<float>& node = fine->tree.nodes[k];
      for (int lane = 0; lane < 4; ++lane) {
        std::uint32_t least = TreeRef::kNone;
        const Slab slab = fine->slabs->nodes[k].At(lane);
        EachPlace(fine->tree, fine->leaves, node.child[lane], [&](std::size_t place) {
          least = std::min(least, parts.corners.Number(place));
          for (int c = 0; c < 3; ++c) {
            const Coord3 p = parts.corners.At(place, c);
            EXPECT_TRUE(Holds(node.boxes.At(lane), p));
            const double along = slab.normal[0] * p.x + slab.normal[1] * p.y + slab.normal[2] * p.z;
            EXPECT_LE(static_cast<double>(slab.from), along + 1e-12);
            EXPECT_GE(static_cast<double>(slab.to), along - 1e-12);
          }
        });
        EXPECT_EQ(node.least[lane], least);
      }
    }
  }
}

TEST(FineTree, ReplacesEachLeafWithTheSameTriangles) {
  for (const Mesh& mesh : Families()) {
    const Parts parts(mesh);
    const auto fine = FineTree::Of(parts.corners, parts.leaves, parts.tree);
    ASSERT_EQ(fine->ofLeaf.size(), parts.leaves.Count());
    for (std::size_t leaf = 0; leaf < parts.leaves.Count(); ++leaf) {
      std::size_t place = parts.leaves.begin[leaf];
      EachPlace(fine->tree, fine->leaves, fine->ofLeaf[leaf],
                [&](std::size_t below) { EXPECT_EQ(below, place++); });
      EXPECT_EQ(place, parts.leaves.begin[leaf + 1]);
    }
  }
}

TEST(FineTree, LeavesCopiesOfATriangleTogether) {
  Mesh mesh;
  for (int k = 0; k < 8; ++k)
    sweep_shapes::AddTriangle(mesh, {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0});
  const Parts parts(mesh);
  const auto fine = FineTree::Of(parts.corners, parts.leaves, parts.tree);
  EXPECT_EQ(fine->leaves.Count(), 1u);
  mesh.corners.back().z = 0x1p-20;
  const Parts others(mesh);
  EXPECT_EQ(FineTree::Of(others.corners, others.leaves, others.tree)->leaves.Count(), 4u);
}

TEST(FineTree, BeginsWithTheNodesOfTheFirstTree) {
  const Parts parts(Bowl(20, 0.3));
  const auto fine = FineTree::Of(parts.corners, parts.leaves, parts.tree);
  ASSERT_GT(fine->tree.nodes.size(), parts.tree.nodes.size());
  for (std::size_t k = 0; k < parts.tree.nodes.size(); ++k) {
    for (int lane = 0; lane < 4; ++lane) {
      const TreeRef before = parts.tree.nodes[k].child[lane];
      const TreeRef after = fine->tree.nodes[k].child[lane];
      EXPECT_EQ(before.IsNone(), after.IsNone());
      if (before.IsNone()) continue;
      const TreeRef expected = before.IsLeaf() ? fine->ofLeaf[before.Index()] : before;
      EXPECT_EQ(after.IsLeaf(), expected.IsLeaf());
      EXPECT_EQ(after.Index(), expected.Index());
    }
  }
}

TEST(FineTree, OfNothingIsEmpty) {
  const Parts parts(Mesh{});
  const auto fine = FineTree::Of(parts.corners, parts.leaves, parts.tree);
  EXPECT_TRUE(fine->tree.root.IsNone());
  EXPECT_EQ(fine->leaves.Count(), 0u);
}

TEST(FineTree, IsGivenUp) {
  const Parts parts(Bowl(60, 0.3));
  int asked = 0;
  EXPECT_EQ(FineTree::Of(parts.corners, parts.leaves, parts.tree, [&] { return ++asked < 0; }),
            nullptr);
  EXPECT_EQ(FineTree::Of(parts.corners, parts.leaves, parts.tree, [&] { return ++asked < 3; }),
            nullptr);
  EXPECT_NE(FineTree::Of(parts.corners, parts.leaves, parts.tree, [&] { return ++asked > 0; }),
            nullptr);
}

TEST(FineTree, IsTheSameForAnyTeam) {
  for (const Mesh& mesh : LargeMeshes()) {
    const Parts parts(mesh);
    const auto alone = FineTree::Of(parts.corners, parts.leaves, parts.tree);
    WithEachTeam([&](Team& team) {
      const auto fine = FineTree::Of(parts.corners, parts.leaves, parts.tree, {}, team);
      EXPECT_TRUE(SameBytes(fine->leaves.begin, alone->leaves.begin));
      EXPECT_TRUE(SameBytes(fine->tree, alone->tree));
      EXPECT_TRUE(SameBytes(fine->ofLeaf, alone->ofLeaf));
      EXPECT_TRUE(SameBytes(fine->slabs->nodes, alone->slabs->nodes));
      EXPECT_TRUE(SameBytes(fine->slabs->sides, alone->slabs->sides));
      EXPECT_TRUE(SameBytes(fine->slabs->sidesOf, alone->slabs->sidesOf));
    });
  }
}

TEST(FineTree, IsGivenUpByATeam) {
  const Parts parts(Soup(3, 60000));
  WithEachTeam([&](Team& team) {
    for (const int most : {0, 1, 3}) {
      std::atomic<int> asked{0};
      const auto goesOn = [&] { return ++asked <= most; };
      const auto fine = FineTree::Of(parts.corners, parts.leaves, parts.tree, goesOn, team);
      // A thread does not wait to ask while another asks, so there may be fewer calls.
      EXPECT_EQ(fine == nullptr, asked == most + 1);
      EXPECT_LE(asked, most + 1);
      EXPECT_TRUE(most > 1 || fine == nullptr);
    }
  });
}

TEST(FineTree, TellsCopiesByEveryCoordinate) {
  // In a plane across each axis the corners have one coordinate in common.
  for (int axis = 0; axis < 3; ++axis) {
    Mesh mesh;
    for (int k = 0; k < 8; ++k) {
      const auto at = [axis, k](double u, double v) {
        double c[3] = {2.0, 2.0, 2.0};
        c[(axis + 1) % 3] = u + 0.125 * k;
        c[(axis + 2) % 3] = v + 0.0625 * k;
        return Coord3{c[0], c[1], c[2]};
      };
      sweep_shapes::AddTriangle(mesh, at(0, 0), at(1, 0), at(0, 1));
    }
    const Parts parts(mesh);
    EXPECT_EQ(FineTree::Of(parts.corners, parts.leaves, parts.tree)->leaves.Count(), 4u) << axis;
  }
  // The triangle after the last copy is another one.
  Mesh copies;
  for (int k = 0; k < 16; ++k) {
    const double x = k < 8 ? 1.0 : 9.0;
    sweep_shapes::AddTriangle(copies, {x, 0.0, 0.0}, {x + 1.0, 0.0, 0.0}, {x, 1.0, 0.0});
  }
  const Parts parts(copies);
  ASSERT_EQ(parts.leaves.Count(), 2u);
  EXPECT_EQ(FineTree::Of(parts.corners, parts.leaves, parts.tree)->leaves.Count(), 2u);
}

} // namespace
