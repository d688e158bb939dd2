#include "MeshPolygon.h"

#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using gsl_arithmetic::Coord3;
using gsl_mesh::PolygonTriangulator;

namespace {

using Triangle = PolygonTriangulator::Triangle;
constexpr double pi = 3.14159265358979323846;

/// The shoelace formula, a slower way to the same area.
double SignedArea(const std::vector<Coord3>& ring) {
  double sum = 0.0;
  for (std::size_t k = 0; k < ring.size(); ++k) {
    const Coord3& a = ring[k];
    const Coord3& b = ring[(k + 1) % ring.size()];
    sum += a.x * b.y - a.y * b.x;
  }
  return sum / 2;
}

std::vector<Triangle> Cut(const std::vector<Coord3>& ring) {
  PolygonTriangulator triangulator;
  const auto* triangles = triangulator.Triangulate(ring.data(), ring.size());
  return triangles == nullptr ? std::vector<Triangle>{} : *triangles;
}

/// Checks that every triangle has the orientation of the ring and that the areas add up, so that
/// the ring is covered once.
void ExpectCovered(const std::vector<Coord3>& ring) {
  const std::vector<Triangle> triangles = Cut(ring);
  ASSERT_EQ(triangles.size(), ring.size() - 2);
  const double whole = SignedArea(ring);
  double sum = 0.0;
  for (const Triangle& t : triangles) {
    const double area = SignedArea({ring[t[0]], ring[t[1]], ring[t[2]]});
    EXPECT_GE(area * whole, -1e-13 * whole * whole);
    sum += area;
  }
  EXPECT_NEAR(sum, whole, 1e-12 * std::fabs(whole));
}

std::vector<Coord3> Reversed(std::vector<Coord3> ring) {
  return {ring.rbegin(), ring.rend()};
}

/// Checks every first corner and both orientations.
void ExpectCoveredFromEverywhere(std::vector<Coord3> ring) {
  for (std::size_t k = 0; k < ring.size(); ++k) {
    ExpectCovered(ring);
    ExpectCovered(Reversed(ring));
    std::rotate(ring.begin(), ring.begin() + 1, ring.end());
  }
}

} // namespace

TEST(MeshPolygon, ConvexPolygonBecomesTheFanFromItsFirstCorner) {
  const std::vector<Triangle> expected{{0, 1, 2}, {0, 2, 3}, {0, 3, 4}};
  EXPECT_EQ(Cut({{0, 0, 0}, {2, 0, 0}, {3, 1, 0}, {2, 2, 0}, {0, 2, 0}}), expected);
}

TEST(MeshPolygon, ConvexPolygonWithACornerInLineBecomesTheFanToo) {
  const std::vector<Triangle> expected{{0, 1, 2}, {0, 2, 3}, {0, 3, 4}};
  EXPECT_EQ(Cut({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}}), expected);
}

TEST(MeshPolygon, LongerPolygonBeforeChangesNothing) {
  PolygonTriangulator triangulator;
  // The fifth corner is on the other side of the last edge of the square below.
  const std::vector<Coord3> longer{{0, 0, 0}, {4, 0, 0}, {5, 1, 0},
                                   {5, 3, 0}, {4, 4, 0}, {0, 4, 0}};
  ASSERT_EQ(triangulator.Triangulate(longer.data(), longer.size())->size(), 4u);
  const std::vector<Coord3> square{{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};
  const std::vector<Triangle> expected{{0, 1, 2}, {0, 2, 3}};
  EXPECT_EQ(*triangulator.Triangulate(square.data(), square.size()), expected);
}

TEST(MeshPolygon, QuadrangleIsHalvedFromItsFirstCornerWhicheverDiagonalIsShorter) {
  const std::vector<Triangle> expected{{0, 1, 2}, {0, 2, 3}};
  EXPECT_EQ(Cut({{0, 0, 0}, {9, 1, 0}, {10, 5, 0}, {1, 4, 0}}), expected);
}

TEST(MeshPolygon, ConcaveQuadrangleIsHalvedInside) {
  // The diagonal between corners 0 and 2 is shorter and lies outside.
  const std::vector<Coord3> dart{{-1, 0, 0}, {0, 1, 0}, {1, 0, 0}, {0, 100, 0}};
  ExpectCoveredFromEverywhere(dart);
  for (const Triangle& t : Cut(dart)) {
    EXPECT_TRUE((t == Triangle{0, 1, 3}) || (t == Triangle{1, 2, 3}) || (t == Triangle{3, 0, 1}));
  }
}

TEST(MeshPolygon, CombIsCovered) {
  ExpectCoveredFromEverywhere({{0, 0, 0},
                               {10, 0, 0},
                               {10, 5, 0},
                               {8, 5, 0},
                               {8, 1, 0},
                               {6, 1, 0},
                               {6, 5, 0},
                               {4, 5, 0},
                               {4, 1, 0},
                               {2, 1, 0},
                               {2, 5, 0},
                               {0, 5, 0}});
}

TEST(MeshPolygon, CornersInLineAreKept) {
  ExpectCoveredFromEverywhere({{0, 0, 0},
                               {1, 0, 0},
                               {2, 0, 0},
                               {3, 0, 0},
                               {3, 3, 0},
                               {2, 3, 0},
                               {2, 1, 0},
                               {1, 1, 0},
                               {1, 3, 0},
                               {0, 3, 0}});
}

TEST(MeshPolygon, NoDiagonalGoesThroughACorner) {
  // Corner 3 is in the middle of the diagonal from 2 to 0, and corner 5 keeps the fan from
  // covering.
  const std::vector<Coord3> ring{{0, 0, 0}, {4, 0, 0}, {4, 4, 0},
                                 {2, 2, 0}, {0, 6, 0}, {0.5, 3, 0}};
  ExpectCoveredFromEverywhere(ring);
  for (const Triangle& t : Cut(ring))
    EXPECT_NE(t, (Triangle{0, 1, 2}));
}

TEST(MeshPolygon, RepeatedCornersAreKept) {
  ExpectCoveredFromEverywhere(
      {{0, 0, 0}, {4, 0, 0}, {4, 0, 0}, {4, 4, 0}, {2, 1, 0}, {2, 1, 0}, {0, 4, 0}});
}

TEST(MeshPolygon, BridgeToAHoleIsFollowed) {
  ExpectCoveredFromEverywhere({{0, 0, 0},
                               {6, 0, 0},
                               {6, 6, 0},
                               {0, 6, 0},
                               {0, 0, 0},
                               {2, 2, 0},
                               {2, 4, 0},
                               {4, 4, 0},
                               {4, 2, 0},
                               {2, 2, 0}});
}

TEST(MeshPolygon, TwoHolesOnOneBridgeAreFollowed) {
  ExpectCoveredFromEverywhere({{0, 0, 0},
                               {12, 0, 0},
                               {12, 6, 0},
                               {0, 6, 0},
                               {0, 3, 0},
                               {2, 3, 0},
                               {3, 4, 0},
                               {4, 3, 0},
                               {6, 3, 0},
                               {7, 4, 0},
                               {8, 3, 0},
                               {7, 2, 0},
                               {6, 3, 0},
                               {4, 3, 0},
                               {3, 2, 0},
                               {2, 3, 0},
                               {0, 3, 0}});
}

TEST(MeshPolygon, StarsOfAnyShapeAreCovered) {
  std::mt19937 random(20240611);
  RealsIn radius(0.05, 1.0);
  WholesIn<int> corners(4, 40);
  for (int k = 0; k < 300; ++k) {
    const int count = corners(random);
    std::vector<Coord3> ring;
    for (int c = 0; c < count; ++c) {
      const double angle = 2 * pi * c / count, r = radius(random);
      ring.push_back({r * std::cos(angle), r * std::sin(angle), 0.0});
    }
    SCOPED_TRACE("star " + std::to_string(k));
    ExpectCovered(ring);
  }
}

TEST(MeshPolygon, SpiralIsCovered) {
  std::vector<Coord3> outer, inner;
  for (int k = 0; k <= 200; ++k) {
    const double angle = 0.1 * k, r = 1.0 + 0.2 * angle;
    outer.push_back({r * std::cos(angle), r * std::sin(angle), 0.0});
    inner.push_back({(r - 0.3) * std::cos(angle), (r - 0.3) * std::sin(angle), 0.0});
  }
  outer.insert(outer.end(), inner.rbegin(), inner.rend());
  ExpectCovered(outer);
}

TEST(MeshPolygon, PlaneAndScaleDoNotMatter) {
  const std::vector<Coord3> dart{{-1, 0, 0}, {0, 1, 0}, {1, 0, 0}, {0, 100, 0}};
  const std::vector<Triangle> expected = Cut(dart);
  for (const double scale : {1e-300, 1e-20, 1.0, 1e20, 1e305}) {
    std::vector<Coord3> yz, zx;
    for (const Coord3& c : dart) {
      yz.push_back({0.0, c.x * scale, c.y * scale});
      zx.push_back({c.y * scale, 0.0, c.x * scale});
    }
    EXPECT_EQ(Cut(yz), expected) << scale;
    EXPECT_EQ(Cut(zx), expected) << scale;
  }
}

TEST(MeshPolygon, FarFromTheOriginIsCovered) {
  std::vector<Coord3> ring{{-1, 0, 0}, {0, 1, 0}, {1, 0, 0}, {0, 100, 0}};
  const std::vector<Triangle> expected = Cut(ring);
  for (Coord3& c : ring)
    c = {c.x + 1e9, c.y - 1e9, c.z + 1e9};
  EXPECT_EQ(Cut(ring), expected);
}

TEST(MeshPolygon, PolygonWithoutInsideBecomesTheFan) {
  const std::vector<Triangle> expected{{0, 1, 2}, {0, 2, 3}};
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(Cut({{0, 0, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}}), expected);
  EXPECT_EQ(Cut({{0, 0, 0}, {1, 1, 1}, {3, 3, 3}, {2, 2, 2}}), expected);
  EXPECT_EQ(Cut({{0, 0, 0}, {1, 0, 0}, {1, nan, 0}, {0, 1, 0}}), expected);
  EXPECT_EQ(Cut({{0, 0, 0}, {1, 0, 0}, {1, 1, infinity}, {0, 1, 0}}), expected);
}

TEST(MeshPolygon, PolygonThatCrossesItselfBecomesTheFan) {
  const std::vector<Coord3> bow{{0, 0, 0}, {4, 4, 0}, {4, 0, 0}, {0, 3, 0}};
  const std::vector<Triangle> expected{{0, 1, 2}, {0, 2, 3}};
  EXPECT_EQ(Cut(bow), expected);
}

TEST(MeshPolygon, LongWindingPolygonIsRefusedInsteadOfTakingMinutes) {
  // A comb of needles that all end above the same corner blocks nearly every ear.
  constexpr std::size_t teeth = 60000;
  std::vector<Coord3> ring{{0.0, -1.0, 0.0}};
  for (std::size_t k = 0; k < teeth; ++k) {
    const auto x = static_cast<double>(k);
    ring.push_back({x, 0.0, 0.0});
    ring.push_back({x + 0.5, 100.0 + (k % 2 == 0 ? 0.0 : x), 0.0});
  }
  ring.push_back({static_cast<double>(teeth), -1.0, 0.0});
  PolygonTriangulator triangulator;
  EXPECT_EQ(triangulator.Triangulate(ring.data(), ring.size()), nullptr);
}
