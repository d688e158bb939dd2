#include "Slabs.h"

#include "Bodies.h"
#include "TravelTest.h"

#include <gtest/gtest.h>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

/// Returns n . p with an error far below the errors that the slabs allow for.
long double AlongNormal(const float (&n)[3], const Coord3& p) {
  return static_cast<long double>(n[0]) * p.x + static_cast<long double>(n[1]) * p.y +
         static_cast<long double>(n[2]) * p.z;
}

void ExpectHolds(const Slab& slab, const Coord3& p) {
  const long double along = AlongNormal(slab.normal, p);
  ASSERT_LE(slab.from, along);
  ASSERT_LE(along, slab.to);
}

std::vector<Mesh> Families() {
  std::vector<Mesh> families;
  for (const Mesh& mesh : {Bowl(30, 0.3), Bowl(30, 0.0), Soup(5, 800)}) {
    families.push_back(mesh);
    families.push_back(Single(mesh));
    // Coordinates much larger than the body: every rounding shows.
    families.push_back(sweep_shapes::Moved(mesh, {300.1, -7000.3, 0.7}));
    families.push_back(sweep_shapes::Stretched(mesh, {1e-12, 1e-12, 1e-12}));
    families.push_back(sweep_shapes::Stretched(mesh, {1e15, 1.0, 1e-6}));
  }
  return families;
}

TEST(Slabs, HoldEveryCorner) {
  for (const Mesh& mesh : Families()) {
    const Parts parts(mesh);
    const auto made = Slabs::Of(parts.corners, parts.leaves, parts.tree);
    const Slabs& slabs = *made;
    ASSERT_EQ(slabs.nodes.size(), parts.tree.nodes.size());
    for (std::size_t k = 0; k < slabs.nodes.size(); ++k) {
      for (int lane = 0; lane < 4; ++lane) {
        const Slab slab = slabs.nodes[k].At(lane);
        const float length =
            std::sqrt(slab.normal[0] * slab.normal[0] + slab.normal[1] * slab.normal[1] +
                      slab.normal[2] * slab.normal[2]);
        EXPECT_LE(length, 1.0f + 0x1p-20f);
        EachPlace(parts.tree, parts.leaves, parts.tree.nodes[k].child[lane],
                  [&](std::size_t place) {
                    for (int c = 0; c < 3; ++c)
                      ExpectHolds(slab, parts.corners.At(place, c));
                  });
      }
    }
    for (std::size_t place = 0; place < parts.corners.Count(); ++place)
      ExpectHolds(slabs.root, parts.corners.At(place, 0));
  }
}

TEST(Slabs, AreThinWhereTheSurfaceIsFlat) {
  const Mesh plate = sweep_shapes::Moved(Bowl(30, 0.0), {0.0, 0.0, 1.0});
  const Parts parts(plate);
  const auto made = Slabs::Of(parts.corners, parts.leaves, parts.tree);
  const Slabs& slabs = *made;
  EXPECT_LT(slabs.root.to - slabs.root.from, 1e-3f);
  EXPECT_NEAR(std::fabs(slabs.root.normal[2]), 1.0f, 1e-6f);
  const Parts one(Mesh{plate.file, {plate.corners.begin(), plate.corners.begin() + 3}, {}});
  EXPECT_LT(Slabs::Of(one.corners, one.leaves, one.tree)->root.to, 1.00001f);
}

/// Two bowls of which corner k of the moving one meets corner j of the fixed one after `travel`:
/// all numbers have few enough bits for the difference to be exact.
TEST(SlabTest, NeverRejectsACornerThatMeetsACorner) {
  std::mt19937_64 random(99);
  std::size_t raised = 0;
  for (int round = 0; round < 400; ++round) {
    const auto whole = [&](int reach) {
      return static_cast<double>(
          static_cast<int>(random() % (2u * static_cast<unsigned>(reach) + 1u)) - reach);
    };
    // The largest component is from 1/2 to 1.
    Coord3 d{whole(64) / 128.0, whole(64) / 128.0, round % 2 == 0 ? 0.75 : -0.5};
    // The normals are along z, more or less, so that this direction slides along the slabs.
    if (round % 4 == 1) d = {0.75, whole(64) / 128.0, whole(2) / 128.0};
    const double travel = std::fabs(whole(200)) / 4.0;
    const float limit = round % 3 == 1 ? static_cast<float>(travel) : Box<float>::kFar;
    const double far = round % 3 == 0 ? 0.0 : 4096.0 * whole(40);
    Mesh fixed = sweep_shapes::Moved(Bowl(16, 0.25), {far, -far, 0.5 * far});
    const std::size_t j = random() % fixed.corners.size();
    Mesh moving = sweep_shapes::Stretched(Bowl(16, 0.125), {1.0, 1.0, round % 5 == 0 ? -1.0 : 1.0});
    const std::size_t k = random() % moving.corners.size();
    const Coord3 target =
        gsl_arithmetic::Subtract(fixed.corners[j], gsl_arithmetic::Multiply(d, travel));
    moving = sweep_shapes::Moved(moving, gsl_arithmetic::Subtract(target, moving.corners[k]));
    const Parts a(moving);
    const Parts b(fixed);
    const auto madeA = Slabs::Of(a.corners, a.leaves, a.tree);
    const Slabs& slabsA = *madeA;
    const auto madeB = Slabs::Of(b.corners, b.leaves, b.tree);
    const Slabs& slabsB = *madeB;
    const SlabTest test(d);
    const TreeNode<float>& node = a.tree.nodes[0];
    const Float4 error = (slabsA.nodes[0].reach + Float4::Of(RoundedUp(b.tree.box.Reach()))) *
                         Float4::Of(kSlabError);
    Float4 first = Float4::Of(0.0f);
    Float4 last = Float4::Of(limit);
    test.Narrow<true>(node.boxes, slabsA.nodes[0], b.tree.box, slabsB.root, error, first, last);
    const TreeNode<float>& other = b.tree.nodes[0];
    const Float4 otherError = (slabsB.nodes[0].reach + Float4::Of(RoundedUp(a.tree.box.Reach()))) *
                              Float4::Of(kSlabError);
    Float4 otherFirst = Float4::Of(0.0f);
    Float4 otherLast = Float4::Of(limit);
    test.Narrow<false>(other.boxes, slabsB.nodes[0], a.tree.box, slabsA.root, otherError,
                       otherFirst, otherLast);
    for (int lane = 0; lane < 4; ++lane) {
      EachPlace(a.tree, a.leaves, node.child[lane], [&](std::size_t place) {
        if (a.corners.Number(place) != k / 3) return;
        ASSERT_LE(first[lane], travel) << "round " << round;
        ASSERT_GE(last[lane], travel) << "round " << round;
        raised += first[lane] > 0.0f ? 1 : 0;
      });
      EachPlace(b.tree, b.leaves, other.child[lane], [&](std::size_t place) {
        if (b.corners.Number(place) != j / 3) return;
        ASSERT_LE(otherFirst[lane], travel) << "round " << round;
        ASSERT_GE(otherLast[lane], travel) << "round " << round;
      });
    }
  }
  EXPECT_GT(raised, 100u);
}

/// Flat plates at a distance of 1, and a direction that brings them together slowly or not at all.
TEST(SlabTest, RejectsPlatesThatStayApart) {
  const Mesh plate = sweep_shapes::Moved(Bowl(16, 0.0), {0.0, 0.0, 2.0});
  const Parts below(plate);
  const auto madeBelow = Slabs::Of(below.corners, below.leaves, below.tree);
  for (const double side : {1.0, -1.0}) {
    const Parts above(sweep_shapes::Moved(plate, {0.0, 0.0, side}));
    const auto madeAbove = Slabs::Of(above.corners, above.leaves, above.tree);
    const SlabNode& node = madeAbove->nodes[0];
    const Float4 error =
        (node.reach + Float4::Of(RoundedUp(below.tree.box.Reach()))) * Float4::Of(kSlabError);
    const auto areApart = [&](const Coord3& d, float limit) {
      const SlabTest test(d);
      unsigned kept = 0;
      for (const bool fourMove : {true, false}) {
        Float4 first = Float4::Of(0.0f);
        Float4 last = Float4::Of(limit);
        const Boxes<float>& boxes = above.tree.nodes[0].boxes;
        if (fourMove) {
          test.Narrow<true>(boxes, node, below.tree.box, madeBelow->root, error, first, last);
        } else {
          test.Narrow<false>(boxes, node, below.tree.box, madeBelow->root, error, first, last);
        }
        kept |= AtMost(first, last);
      }
      return kept == 0;
    };
    EXPECT_TRUE(areApart({0.75, 0.5, 0.0}, 1e4f));
    for (const double along : {0x1p-7, -0x1p-7}) {
      EXPECT_TRUE(areApart({0.75, 0.5, along}, 127.0f));
      EXPECT_FALSE(areApart({0.75, 0.5, along}, 128.0f));
    }
  }
}

} // namespace
