#include "Facings.h"

#include "Bodies.h"
#include "PairKernel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;

/// The wall of a round bar along z.
Mesh Wall(int around) {
  Mesh mesh;
  const auto at = [around](int i, double z) {
    const double angle = 6.28318530717958647692 * i / around;
    return Coord3{std::cos(angle), std::sin(angle), z};
  };
  for (int i = 0; i < around; ++i) {
    for (int j = 0; j < 10; ++j) {
      const double z = 0.1 * j;
      sweep_shapes::AddQuad(mesh, at(i, z), at(i + 1, z), at(i + 1, z + 0.1), at(i, z + 0.1));
    }
  }
  return mesh;
}

std::vector<Mesh> Families() {
  Mesh slivers = Soup(7, 400);
  for (std::size_t k = 0; k + 2 < slivers.corners.size(); k += 6)
    slivers.corners[k + 2] = slivers.corners[k + 1];
  for (std::size_t k = 3; k + 2 < slivers.corners.size(); k += 6) {
    const Coord3 middle = gsl_arithmetic::Multiply(
        gsl_arithmetic::Add(slivers.corners[k], slivers.corners[k + 1]), 0.5);
    slivers.corners[k + 2] = middle;
  }
  std::vector<Mesh> families;
  for (const Mesh& mesh :
       {Bowl(20, 0.3), Bowl(20, 0.0), Soup(5, 800), slivers, Squares(12, {}, {1.0, 0.5, 3.0}),
        Sheared(Squares(12, {}, {1.0, 0.5, 3.0})), Wall(40)}) {
    families.push_back(mesh);
    families.push_back(Single(mesh));
    families.push_back(sweep_shapes::Moved(mesh, {300.1, -7000.3, 0.7}));
    families.push_back(sweep_shapes::Stretched(mesh, {1e-12, 1e-12, 1e-12}));
    families.push_back(sweep_shapes::Stretched(mesh, {1e15, 1.0, 1e-6}));
  }
  return families;
}

std::vector<Coord3> Directions() {
  std::vector<Coord3> directions = {{0.0, 0.0, 1.0},    {0.0, 0.0, -0.7},   {1.0, 0.0, 0.0},
                                    {0.0, -1.0, 0.0},   {0.25, 0.0, 1.0},   {-0.25, 0.0, -1.0},
                                    {-0.25, 0.5, -1.0}, {1.0, 0.0, 0x1p-60}};
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> real(-1.0, 1.0);
  for (int k = 0; k < 20; ++k) {
    const double x = real(random);
    const double y = real(random);
    directions.push_back({x, y, k % 2 == 0 ? 0.75 : -0.75});
  }
  return directions;
}

int FacingOf(const Parts& parts, std::size_t place, const Coord3& direction) {
  return MakeTriangle(TravelDirection(direction), parts.corners.At(place, 0),
                      parts.corners.At(place, 1), parts.corners.At(place, 2))
      .facing;
}

/// The children of the nodes of a tree, of which `facing` have a triangle that faces the direction.
struct Count {
  std::size_t children = 0, facing = 0, kept = 0;
};

/// Counts, and expects that no child with a triangle that faces the direction is left out.
Count CountOf(const Parts& parts, const Facings& facings, const Coord3& direction) {
  FacedNodes nodes(facings, parts.tree, direction);
  Count count;
  for (std::size_t k = 0; k < parts.tree.nodes.size(); ++k) {
    const unsigned mask = nodes.Of(k);
    EXPECT_LT(mask, 16u);
    for (unsigned lane = 0; lane < 4; ++lane) {
      const TreeRef child = parts.tree.nodes[k].child[lane];
      bool faces = false;
      EachPlace(parts.tree, parts.leaves, child,
                [&](std::size_t place) { faces = faces || FacingOf(parts, place, direction) > 0; });
      const bool isKept = (mask >> lane & 1u) != 0;
      EXPECT_TRUE(isKept || !faces) << k << ' ' << lane;
      EXPECT_FALSE(isKept && child.IsNone());
      count.children += child.IsNone() ? 0 : 1;
      count.facing += faces ? 1 : 0;
      count.kept += isKept ? 1 : 0;
    }
  }
  return count;
}

TEST(Facings, LeaveOutNoTriangleThatFacesTheDirection) {
  std::size_t children = 0;
  std::size_t kept = 0;
  for (const Mesh& mesh : Families()) {
    const Parts parts(mesh);
    const auto facings = Facings::Of(parts.corners, parts.leaves, parts.tree);
    ASSERT_EQ(facings->nodes.size(), parts.tree.nodes.size());
    for (const Coord3& direction : Directions()) {
      const Count count = CountOf(parts, *facings, direction);
      children += count.children;
      kept += count.kept;
    }
  }
  EXPECT_LT(4 * kept, 3 * children);
}

/// The normals are exact, so every child without such a triangle is known.
TEST(Facings, LeaveOutEveryPlaneOfWholeNumbers) {
  for (const Mesh& mesh :
       {Squares(12, {}, {12.0, 6.0, 36.0}), Sheared(Squares(12, {}, {12.0, 6.0, 36.0}))}) {
    const Parts parts(mesh);
    const auto facings = Facings::Of(parts.corners, parts.leaves, parts.tree);
    for (const Coord3& direction : Directions()) {
      const Count count = CountOf(parts, *facings, direction);
      EXPECT_EQ(count.kept, count.facing);
    }
    EXPECT_LE(facings->directions.size(), 200u);
  }
}

/// The sides of the wall are in planes that rounding turns, but all are along z.
TEST(Facings, LeaveOutEveryWallAlongAnAxis) {
  for (const Mesh& mesh : {Wall(40), Single(Wall(40))}) {
    const Parts parts(mesh);
    const auto facings = Facings::Of(parts.corners, parts.leaves, parts.tree);
    EXPECT_EQ(CountOf(parts, *facings, {0.0, 0.0, 1.0}).kept, 0u);
    EXPECT_EQ(CountOf(parts, *facings, {0.0, 0.0, -0.7}).kept, 0u);
    EXPECT_GT(CountOf(parts, *facings, {0x1p-60, 0.0, 1.0}).facing, 0u);
  }
}

/// n . d is zero for the sheared walls, and the next number decides otherwise.
TEST(Facings, DecideExactlyAtTheLimit) {
  const Mesh upright = Sheared(Squares(4, {}, {0.0, 4.0, 4.0}));
  const Parts wall(Mesh{upright.file, {upright.corners.begin(), upright.corners.begin() + 96}, {}});
  const auto facings = Facings::Of(wall.corners, wall.leaves, wall.tree);
  const double next = std::nextafter(-0.25, 0.0);
  EXPECT_EQ(CountOf(wall, *facings, {-0.25, 0.0, -1.0}).kept, 0u);
  const Count faced = CountOf(wall, *facings, {next, 0.0, -1.0});
  EXPECT_GT(faced.facing, 0u);
  EXPECT_EQ(faced.kept, faced.facing);
  EXPECT_EQ(CountOf(wall, *facings, {std::nextafter(-0.25, -1.0), 0.0, -1.0}).kept, 0u);
}

TEST(Facings, HoldUntilAnOffsetRoundsACoordinateThatMatters) {
  const Parts parts(Squares(4, {}, {1.0, 1.0, 1.0})); // multiples of 1/4, up to 1
  const auto facings = Facings::Of(parts.corners, parts.leaves, parts.tree);
  const Coord3 aslant{0.5, 0.5, 1.0};
  const double most = 0x1p51 - 1.0; // with the largest coordinate 2^53 quarters
  EXPECT_TRUE(facings->Hold({0.0, 0.0, 0.0}, aslant));
  EXPECT_TRUE(facings->Hold({most, -most, most}, aslant));
  EXPECT_FALSE(facings->Hold({0.0, most + 1.0, 0.0}, aslant));
  // The sum with the largest coordinate rounds to 2^53 quarters.
  EXPECT_FALSE(facings->Hold({0.0, most + 0.25, 0.0}, aslant));
  EXPECT_FALSE(facings->Hold({0x1p-54, 0.0, 0.0}, aslant));
  EXPECT_TRUE(facings->Hold({0x1p-50, 0.0, 0.0}, aslant));
  // Heights do not turn a normal up or down.
  EXPECT_TRUE(facings->Hold({0.0, 0.0, 0.1}, {0.0, 0.0, 1.0}));
  EXPECT_FALSE(facings->Hold({0.0, 0.1, 0.0}, {0.0, 0.0, 1.0}));
  EXPECT_FALSE(facings->Hold({0.0, 0.0, 0.1}, aslant));
}

TEST(Facings, GiveUpWhenTheyAreTold) {
  const Parts parts(Bowl(80, 0.3));
  int asked = 0;
  const auto goesOn = [&asked] { return ++asked < 1; };
  EXPECT_EQ(Facings::Of(parts.corners, parts.leaves, parts.tree, goesOn), nullptr);
  EXPECT_EQ(asked, 1);
}

TEST(Facings, KnowNothingOfOtherNodes) {
  const Parts parts(Wall(40));
  const auto facings = Facings::Of(parts.corners, parts.leaves, parts.tree);
  FacedNodes nodes(*facings, parts.tree, {0.0, 0.0, 1.0});
  EXPECT_EQ(nodes.Of(parts.tree.nodes.size()), 15u);
}

TEST(Facings, AreTheSameForAnyTeam) {
  std::vector<Mesh> meshes = LargeMeshes();
  meshes.push_back(Squares(70, {0, 0, 0}, {1, 2, 3})); // whole nodes with one direction
  for (const Mesh& mesh : meshes) {
    const Parts parts(mesh);
    const auto alone = Facings::Of(parts.corners, parts.leaves, parts.tree);
    WithEachTeam([&](Team& team) {
      const auto facings = Facings::Of(parts.corners, parts.leaves, parts.tree, {}, team);
      EXPECT_TRUE(SameBytes(facings->nodes, alone->nodes));
      ASSERT_EQ(facings->directions.size(), alone->directions.size());
      for (std::size_t k = 0; k < alone->directions.size(); ++k)
        EXPECT_EQ(std::memcmp(&facings->directions[k], &alone->directions[k], sizeof(Coord3)), 0);
      EXPECT_EQ(std::memcmp(facings->unit, alone->unit, sizeof alone->unit), 0);
      EXPECT_EQ(std::memcmp(facings->reach, alone->reach, sizeof alone->reach), 0);
    });
  }
}

TEST(Facings, AreGivenUpByATeam) {
  const Parts parts(Soup(3, 60000));
  WithEachTeam([&](Team& team) {
    for (const int most : {0, 2, 10}) {
      std::atomic<int> asked{0};
      const auto goesOn = [&] { return ++asked <= most; };
      const auto facings = Facings::Of(parts.corners, parts.leaves, parts.tree, goesOn, team);
      // A thread does not wait to ask while another asks, so there may be fewer calls.
      EXPECT_EQ(facings == nullptr, asked == most + 1);
      EXPECT_LE(asked, most + 1);
      EXPECT_TRUE(most > 0 || facings == nullptr);
    }
  });
}

/// Expects that a leaf with both triangles, in either order, is left out for a direction where
/// `faces` is false, and that it is kept where it is true. Another leaf is far away.
void ExpectOfLeaf(const Mesh& one, const Mesh& other, const Coord3& direction, bool faces) {
  for (const bool isTurned : {false, true}) {
    Mesh mesh;
    for (int k = 0; k < 4; ++k) {
      sweep_shapes::Append(mesh, isTurned ? other : one);
      sweep_shapes::Append(mesh, isTurned ? one : other);
    }
    for (int k = 0; k < 8; ++k)
      sweep_shapes::AddTriangle(mesh, {64, 0, 0}, {65, 0, 0}, {64, 1, 0});
    const Parts parts(mesh);
    ASSERT_EQ(parts.leaves.Count(), 2u);
    const auto facings = Facings::Of(parts.corners, parts.leaves, parts.tree);
    const Count count = CountOf(parts, *facings, direction);
    EXPECT_EQ(count.facing, faces ? 1u : 0u);
    EXPECT_EQ(count.kept, count.facing);
  }
}

Mesh TriangleOf(const Coord3& a, const Coord3& b, const Coord3& c) {
  Mesh mesh;
  sweep_shapes::AddTriangle(mesh, a, b, c);
  return mesh;
}

TEST(Facings, TellNormalsApartByEveryComponent) {
  // Normals (1, 0, 2) and (1, 2, 2): the direction is against the one and along the other.
  ExpectOfLeaf(TriangleOf({0, 0, 0}, {0, 1, 0}, {-2, 0, 1}),
               TriangleOf({0, 0, 0}, {0, 1, -1}, {-2, 1, 0}), {-1.0, 1.0, 0.0}, true);
  // The two sides of a plane that the direction hardly falls below.
  ExpectOfLeaf(TriangleOf({0, 0, 0}, {1, 0, 0}, {0, 1, 0}),
               TriangleOf({0, 0, 0}, {0, 1, 0}, {1, 0, 0}), {1.0, 0.0, -0x1p-30}, true);
  // Normals (1, 2, 2) and (2, 4, 4), and a direction along their plane.
  const Mesh small = TriangleOf({0, 0, 0}, {0, 1, -1}, {-2, 1, 0});
  ExpectOfLeaf(small, TriangleOf({0, 0, 0}, {0, 2, -2}, {-2, 1, 0}), {0.0, 1.0, -1.0}, false);
  // The normal (1 + 2^-60, 1, 1) is not exact in its first component alone.
  const Mesh turned = TriangleOf({1, -1, -0x1p-60}, {0, 0, 0}, {0, -1, 1});
  ExpectOfLeaf(turned, turned, {1.0, -1.0, 0.0}, true);
}

TEST(Facings, KnowTheUnitsAndTheReachAlongEachAxis) {
  const Parts parts(TriangleOf({8, 0.5, 2}, {-1.25, 4, 1}, {0, -1, -2}));
  const auto facings = Facings::Of(parts.corners, parts.leaves, parts.tree);
  const double units[] = {0.25, 0.5, 1.0};
  const double reaches[] = {8.0, 4.0, 2.0};
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(facings->unit[k], units[k]);
    EXPECT_EQ(facings->reach[k], reaches[k]);
  }
}

} // namespace
