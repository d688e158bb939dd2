#include "TriangleCopies.h"

#include "Bodies.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <vector>

namespace {

using namespace gsl_sweep;
using namespace sweep_bodies;
using sweep_shapes::AddTriangle;

constexpr Coord3 a{0, 0, 0};
constexpr Coord3 b{1, 0, 0};
constexpr Coord3 c{0, 1, 0};
constexpr Coord3 d{0, 0, 1};

/// Finds the copies in triangles that stay in their order.
struct Found {
  explicit Found(const Mesh& mesh) {
    const Corners corners(ViewOf(mesh));
    std::vector<std::uint32_t> places(corners.Count());
    std::iota(places.begin(), places.end(), 0u);
    const TriangleCopies copies = FindCopies(corners, places);
    repeated = copies.repeated;
    for (const TriangleCopies::Weight& weight : copies.weights)
      weights[weight.place] = weight.weight;
  }

  std::vector<std::uint32_t> repeated;
  std::map<std::uint32_t, int> weights;
};

using Places = std::vector<std::uint32_t>;
using Weights = std::map<std::uint32_t, int>;

TEST(TriangleCopies, ThereAreNoneAmongTrianglesThatDiffer) {
  const Found found(sweep_shapes::Box(a, {1, 1, 1}));
  EXPECT_EQ(found.repeated, Places());
  EXPECT_EQ(found.weights, Weights());
}

TEST(TriangleCopies, EqualTrianglesCountAtTheFirst) {
  Mesh mesh;
  AddTriangle(mesh, a, b, d);
  AddTriangle(mesh, a, b, c);
  AddTriangle(mesh, a, b, c);
  AddTriangle(mesh, a, c, d);
  AddTriangle(mesh, a, b, c);
  const Found found(mesh);
  EXPECT_EQ(found.repeated, (Places{2, 4}));
  EXPECT_EQ(found.weights, (Weights{{1, 3}, {2, 0}, {4, 0}}));
}

TEST(TriangleCopies, TrianglesThatFaceOppositeWaysCancelEachOther) {
  Mesh mesh;
  AddTriangle(mesh, a, b, c);
  AddTriangle(mesh, b, a, c);
  const Found sheet(mesh);
  EXPECT_EQ(sheet.repeated, Places());
  EXPECT_EQ(sheet.weights, (Weights{{0, 0}, {1, 0}}));
  // Twice the other way leaves one, and one triangle repeats another.
  AddTriangle(mesh, b, a, c);
  const Found more(mesh);
  EXPECT_EQ(more.repeated, Places{2});
  int sum = 0;
  int counted = 0;
  for (std::uint32_t place = 0; place < 3; ++place) {
    const int weight = more.weights.count(place) == 0 ? 1 : more.weights.at(place);
    sum += place == 0 ? weight : -weight;
    counted += weight != 0 ? 1 : 0;
  }
  EXPECT_EQ(sum, -1);
  EXPECT_EQ(counted, 1);
}

TEST(TriangleCopies, TheFirstCornerMakesADifferenceForRepeatsAlone) {
  Mesh mesh;
  AddTriangle(mesh, a, b, c);
  AddTriangle(mesh, b, c, a);
  AddTriangle(mesh, c, a, b);
  AddTriangle(mesh, b, c, a);
  const Found found(mesh);
  EXPECT_EQ(found.repeated, Places{3});
  int sum = 0;
  for (std::uint32_t place = 0; place < 4; ++place)
    sum += found.weights.count(place) == 0 ? 1 : found.weights.at(place);
  EXPECT_EQ(sum, 4);
}

TEST(TriangleCopies, LargeCornersAreComparedWithEachOtherAlone) {
  const Coord3 p{1e300, 0, 0};
  const Coord3 q{2e300, 0, 0};
  const Coord3 r{3e300, 1, 0};
  Mesh mesh;
  AddTriangle(mesh, p, q, r);
  AddTriangle(mesh, q, r, p);
  AddTriangle(mesh, r, p, q);
  const Found found(mesh);
  EXPECT_EQ(found.repeated, Places());
  EXPECT_EQ(found.weights, (Weights{{0, 3}, {1, 0}, {2, 0}}));
}

TEST(TriangleCopies, ZerosOfBothSignsAreEqual) {
  Mesh mesh;
  AddTriangle(mesh, a, b, c);
  AddTriangle(mesh, {-0.0, 0.0, -0.0}, {1, -0.0, 0.0}, {-0.0, 1, -0.0});
  EXPECT_EQ(Found(mesh).repeated, Places{1});
}

TEST(TriangleCopies, OnlyTheGivenPlacesAreLookedAt) {
  Mesh mesh;
  for (int k = 0; k < 4; ++k)
    AddTriangle(mesh, a, b, c);
  const TriangleCopies copies = FindCopies(Corners(ViewOf(mesh)), {1, 3});
  EXPECT_EQ(copies.repeated, Places{3});
  ASSERT_EQ(copies.weights.size(), 2u);
  EXPECT_EQ(copies.weights.front().place, 1u);
  EXPECT_EQ(copies.weights.front().weight, 2);
}

/// Returns 0, 1 or 2 when the corners of t are those of u rotated so often, 3 to 5 when they are
/// those turned over, and else 6.
int Relation(const Coord3* t, const Coord3* u) {
  for (int turned = 0; turned < 2; ++turned) {
    for (int by = 0; by < 3; ++by) {
      bool isEqual = true;
      for (int k = 0; k < 3; ++k) {
        const Coord3& p = u[turned == 0 ? (k + by) % 3 : (2 * k + by) % 3];
        isEqual = isEqual && t[k].x == p.x && t[k].y == p.y && t[k].z == p.z;
      }
      if (isEqual) return 3 * turned + by;
    }
  }
  return 6;
}

TEST(TriangleCopies, AgreeWithAComparisonOfAllTriangles) {
  std::mt19937_64 random(7);
  for (int round = 0; round < 200; ++round) {
    Mesh mesh;
    const Coord3 points[4] = {a, b, c, d};
    for (int k = 0; k < 20; ++k) {
      std::size_t order[4] = {0, 1, 2, 3};
      std::shuffle(order, order + 4, random);
      AddTriangle(mesh, points[order[0]], points[order[1]], points[order[2]]);
    }
    const Found found(mesh);
    for (std::uint32_t k = 0; k < 20; ++k) {
      const Coord3* t = &mesh.corners[3 * k];
      bool repeats = false;
      int expected = 0;
      int sum = 0;
      for (std::uint32_t i = 0; i < 20; ++i) {
        const int relation = Relation(&mesh.corners[3 * i], t);
        if (relation == 6) continue;
        repeats = repeats || (relation == 0 && i < k);
        expected += relation < 3 ? 1 : -1;
        const int weight = found.weights.count(i) == 0 ? 1 : found.weights.at(i);
        sum += relation < 3 ? weight : -weight;
      }
      EXPECT_EQ(std::binary_search(found.repeated.begin(), found.repeated.end(), k), repeats);
      EXPECT_EQ(sum, expected);
    }
  }
}

} // namespace
