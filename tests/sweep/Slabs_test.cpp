#include "Slabs.h"

#include "Bodies.h"
#include "TravelTest.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

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
  for (const Mesh& mesh : {Bowl(30, 0.3), Bowl(30, 0.0), Soup(5, 800), Needles(200, 0.5)}) {
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

float LengthOf(const Slab& slab) {
  return std::sqrt(slab.normal[0] * slab.normal[0] + slab.normal[1] * slab.normal[1] +
                   slab.normal[2] * slab.normal[2]);
}

TEST(Slabs, SidesHoldEveryCorner) {
  std::size_t sides = 0;
  for (const Mesh& mesh : Families()) {
    const Parts parts(mesh);
    const auto made = Slabs::Of(parts.corners, parts.leaves, parts.tree);
    for (std::size_t k = 0; k < made->nodes.size(); ++k) {
      for (int lane = 0; lane < 4; ++lane) {
        const std::uint32_t number = made->SideNumber(k, lane);
        const Slab side = made->SideAt(number);
        if (number == Slabs::kNoSide) {
          EXPECT_TRUE(side.IsNone());
          continue;
        }
        ++sides;
        EXPECT_NEAR(LengthOf(side), 1.0f, 0x1p-20f);
        EachPlace(parts.tree, parts.leaves, parts.tree.nodes[k].child[lane],
                  [&](std::size_t place) {
                    for (int c = 0; c < 3; ++c)
                      ExpectHolds(side, parts.corners.At(place, c));
                  });
      }
    }
  }
  EXPECT_GT(sides, 100u);
}

/// Eight triangles are four strips: three steps of 2^-7 and a width of 2^-8.
/// Squares of squares of lengths would leave the range of float at both ends.
TEST(Slabs, SidesAreFoundAtEveryScale) {
  const auto sidesAt = [](double scale) {
    const Parts parts(sweep_shapes::Stretched(Needles(200, 0.5), {scale, scale, scale}));
    return Slabs::Of(parts.corners, parts.leaves, parts.tree)->sides.size();
  };
  const std::size_t usual = sidesAt(1.0);
  ASSERT_GT(usual, 10u);
  for (const double scale : {0x1p-42, 0x1p-37, 0x1p33, 0x1p42})
    EXPECT_EQ(sidesAt(scale), usual) << scale;
}

TEST(Slabs, SidesAreAsWideAsTheStripsTogether) {
  const Parts parts(Needles(64, 0.0));
  const auto made = Slabs::Of(parts.corners, parts.leaves, parts.tree);
  const Coord3 across = Turned({0.0, 1.0, 0.0});
  std::size_t leaves = 0;
  for (std::size_t k = 0; k < made->nodes.size(); ++k) {
    for (int lane = 0; lane < 4; ++lane) {
      const TreeRef child = parts.tree.nodes[k].child[lane];
      if (child.IsNone() || !child.IsLeaf()) continue;
      ++leaves;
      const Slab side = made->SideAt(made->SideNumber(k, lane));
      EXPECT_NEAR(std::fabs(static_cast<double>(AlongNormal(side.normal, across))), 1.0, 1e-4);
      // The corners of a strip spread along its diagonal too, which tilts the side a little.
      EXPECT_GE(side.to - side.from, 3.5f * 0x1p-7f);
      EXPECT_LE(side.to - side.from, 1.1f * 3.5f * 0x1p-7f);
    }
  }
  EXPECT_EQ(leaves, 16u);
}

TEST(SlabShift, ReachesAsFarAsItsOffset) {
  for (const Coord3& offset : {Coord3{5.0, 0.0, 0.0}, Coord3{0.0, -5.0, 0.0}, Coord3{0.0, 0.0, 5.0},
                               Coord3{2.0, -2.0, 1.0}}) {
    EXPECT_GE(SlabShift(offset).Reach(), 5.0f);
    EXPECT_LE(SlabShift(offset).Reach(), 5.0001f);
  }
}

TEST(SlabShift, MovesSidesWithTheirCorners) {
  const Parts parts(Needles(64, 0.5));
  const auto made = Slabs::Of(parts.corners, parts.leaves, parts.tree);
  ASSERT_GT(made->sides.size(), 0u);
  const Coord3 offset{0.3, -7.1, 100.7};
  const SlabShift shift(offset);
  for (std::size_t k = 0; k < made->nodes.size(); ++k) {
    if (made->SidesOf(k) == nullptr) continue;
    const SlabLanes moved = shift.Of(*made->SidesOf(k));
    for (int lane = 0; lane < 4; ++lane) {
      const Slab side = moved.At(lane);
      if (side.IsNone()) continue;
      const double error =
          (made->nodes[k].reach[lane] + shift.Reach()) * static_cast<double>(kShiftedSideError);
      EachPlace(parts.tree, parts.leaves, parts.tree.nodes[k].child[lane], [&](std::size_t place) {
        const Coord3 p = gsl_arithmetic::Add(parts.corners.At(place, 0), offset);
        const double along = static_cast<double>(AlongNormal(side.normal, p));
        ASSERT_LE(side.from, along + error);
        ASSERT_LE(along, side.to + error);
      });
    }
  }
}

TEST(Slabs, WideTrianglesHaveNoSides) {
  const Parts parts(Bowl(30, 0.3));
  const auto made = Slabs::Of(parts.corners, parts.leaves, parts.tree);
  EXPECT_EQ(made->SidesOf(0), nullptr);
  EXPECT_EQ(made->Bytes(), made->nodes.Bytes());
}

/// A child of a node, as one side of a test.
struct Child {
  Child(const Parts& parts, const Slabs& slabs, std::size_t node, int lane)
      : box(parts.tree.nodes[node].boxes.At(lane)), slab(slabs.nodes[node].At(lane)),
        side(slabs.SideAt(slabs.SideNumber(node, lane))) {}

  Box<float> box;
  Slab slab, side;
};

struct Travels {
  Float4 first, last;
};

/// Tests the children of a node against one child, with side slabs.
template <bool kFourMove>
Travels BySides(const Coord3& direction, const Parts& parts, const Slabs& slabs, std::size_t node,
                const Child& one, float limit) {
  const SlabLanes* sides = slabs.SidesOf(node);
  const Float4 reach = slabs.nodes[node].reach + Float4::Of(RoundedUp(one.box.Reach()));
  Travels travels{Float4::Of(0.0f), Float4::Of(limit)};
  SlabTest(direction).NarrowBySides<kFourMove>(
      parts.tree.nodes[node].boxes, slabs.nodes[node], sides != nullptr ? *sides : SlabLanes{},
      sides != nullptr, one.box, one.slab, one.side, reach * Float4::Of(kSideError), travels.first,
      travels.last);
  return travels;
}

/// Calls work(node, lane) for each child that is a leaf.
template <class Work>
void EachLeaf(const Parts& parts, const Work& work) {
  for (std::size_t node = 0; node < parts.tree.nodes.size(); ++node) {
    for (int lane = 0; lane < 4; ++lane) {
      const TreeRef child = parts.tree.nodes[node].child[lane];
      if (!child.IsNone() && child.IsLeaf()) work(node, lane);
    }
  }
}

/// A sheet of strips travels onto its copy. The leaves hold four strips each, and 2^-8 is between
/// the strips of two leaves, so each leaf meets its own copy alone. The boxes of all overlap.
TEST(SlabTest, RejectsNeedlesBesideEachOtherByTheirSides) {
  const Mesh strips = Needles(64, 0.0);
  const Parts below(strips);
  const Parts above(sweep_shapes::Moved(strips, Turned({0.0, 0.0, 0.25})));
  const auto slabsBelow = Slabs::Of(below.corners, below.leaves, below.tree);
  const auto slabsAbove = Slabs::Of(above.corners, above.leaves, above.tree);
  const Coord3 down = Turned({0.0, 0.0, -1.0});
  const Coord3 up = Turned({0.0, 0.0, 1.0});
  std::size_t kept = 0;
  EachLeaf(below, [&](std::size_t node, int lane) {
    const Child one(below, *slabsBelow, node, lane);
    EachLeaf(above, [&](std::size_t other, int at) {
      const bool isCopy = below.tree.nodes[node].least[lane] == above.tree.nodes[other].least[at];
      const Travels moves = BySides<true>(down, above, *slabsAbove, other, one, Box<float>::kFar);
      EXPECT_EQ(moves.first[at] <= moves.last[at], isCopy);
      if (isCopy) {
        EXPECT_NEAR(moves.first[at], 0.25f, 1e-3f);
      }
      const Travels stays = BySides<false>(up, above, *slabsAbove, other, one, Box<float>::kFar);
      EXPECT_EQ(stays.first[at] <= stays.last[at], isCopy);
      kept += isCopy ? 1 : 0;
    });
  });
  EXPECT_EQ(kept, 16u);
}

/// Bent sheets of strips of which corner k of the moving one meets corner j of the fixed one after
/// `travel`, up to roundings far below the errors that the slabs allow for.
TEST(SlabTest, SidesNeverRejectACornerThatMeetsACorner) {
  std::mt19937_64 random(17);
  std::uniform_real_distribution<double> real(-1.0, 1.0);
  std::size_t raised = 0;
  for (int round = 0; round < 300; ++round) {
    Coord3 d{real(random), real(random), round % 2 == 0 ? 1.0 : -1.0};
    // The strips slide along each other, nearly.
    if (round % 3 == 1) d = Turned({1.0, 0x1p-9 * real(random), 0x1p-9 * real(random)});
    const double travel = std::fabs(real(random)) * (round % 4 == 0 ? 0x1p-6 : 1.0);
    const float limit = round % 5 < 2 ? RoundedUp(travel) : Box<float>::kFar;
    const Coord3 far{100.0 * real(random), 100.0 * real(random), 100.0 * real(random)};
    const Mesh fixed = sweep_shapes::Moved(Needles(40, 0.5), round % 2 == 0 ? Coord3{} : far);
    Mesh moving = sweep_shapes::Stretched(Needles(40, 1.0), {1.0, round % 7 == 0 ? 0.7 : 1.0, 1.0});
    const std::size_t j = random() % fixed.corners.size();
    const std::size_t k = random() % moving.corners.size();
    const Coord3 target =
        gsl_arithmetic::Subtract(fixed.corners[j], gsl_arithmetic::Multiply(d, travel));
    moving = sweep_shapes::Moved(moving, gsl_arithmetic::Subtract(target, moving.corners[k]));
    const Parts a(moving);
    const Parts b(fixed);
    const auto slabsA = Slabs::Of(a.corners, a.leaves, a.tree);
    const auto slabsB = Slabs::Of(b.corners, b.leaves, b.tree);
    const auto holds = [](const Parts& parts, std::size_t node, int lane, std::size_t triangle) {
      bool isIn = false;
      EachPlace(parts.tree, parts.leaves, parts.tree.nodes[node].child[lane],
                [&](std::size_t place) { isIn = isIn || parts.corners.Number(place) == triangle; });
      return isIn;
    };
    for (std::size_t node = 0; node < a.tree.nodes.size(); ++node) {
      for (int lane = 0; lane < 4; ++lane) {
        if (!holds(a, node, lane, k / 3)) continue;
        for (std::size_t other = 0; other < b.tree.nodes.size(); ++other) {
          for (int at = 0; at < 4; ++at) {
            if (!holds(b, other, at, j / 3)) continue;
            const Travels moves =
                BySides<true>(d, a, *slabsA, node, Child(b, *slabsB, other, at), limit);
            ASSERT_LE(moves.first[lane], travel) << "round " << round;
            ASSERT_GE(moves.last[lane], travel) << "round " << round;
            const Travels stays =
                BySides<false>(d, b, *slabsB, other, Child(a, *slabsA, node, lane), limit);
            ASSERT_LE(stays.first[at], travel) << "round " << round;
            ASSERT_GE(stays.last[at], travel) << "round " << round;
            raised += moves.first[lane] > 0.0f ? 1 : 0;
          }
        }
      }
    }
  }
  EXPECT_GT(raised, 100u);
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

bool AreTheSame(const Slabs& a, const Slabs& b) {
  return SameBytes(a.nodes, b.nodes) && SameBytes(a.sides, b.sides) &&
         SameBytes(a.sidesOf, b.sidesOf) && std::memcmp(&a.root, &b.root, sizeof a.root) == 0;
}

TEST(Slabs, AreTheSameForAnyTeam) {
  std::size_t sides = 0;
  for (const Mesh& mesh : LargeMeshes()) {
    const Parts parts(mesh);
    const auto alone = Slabs::Of(parts.corners, parts.leaves, parts.tree);
    sides += alone->sides.size();
    WithEachTeam([&](Team& team) {
      const auto slabs = Slabs::Of(parts.corners, parts.leaves, parts.tree, {}, team);
      EXPECT_TRUE(AreTheSame(*slabs, *alone));
    });
  }
  EXPECT_GT(sides, 1000u);
}

TEST(Slabs, AreGivenUpByATeam) {
  const Parts parts(Soup(3, 60000));
  WithEachTeam([&](Team& team) {
    std::atomic<int> asked{0};
    const auto goesOn = [&] { return ++asked < 1; };
    EXPECT_EQ(Slabs::Of(parts.corners, parts.leaves, parts.tree, goesOn, team), nullptr);
    EXPECT_EQ(asked, 1); // nobody is asked again
    const auto throws = []() -> bool { throw std::runtime_error("no"); };
    EXPECT_THROW(Slabs::Of(parts.corners, parts.leaves, parts.tree, throws, team),
                 std::runtime_error);
    EXPECT_NE(Slabs::Of(parts.corners, parts.leaves, parts.tree, {}, team), nullptr);
  });
}

} // namespace
