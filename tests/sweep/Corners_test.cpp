#include "Corners.h"

#include "Bodies.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace gsl_sweep;
using gsl_mesh::Mesh;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TriangleView ViewOf(const std::vector<double>& vertices,
                    const std::vector<std::uint32_t>& corners) {
  return {vertices.data(), vertices.size() / 3, corners.data(), corners.size() / 3};
}

std::string MessageOf(const TriangleView& view) {
  try {
    const Corners corners(view);
  } catch (const std::invalid_argument& error) {
    return error.what();
  } catch (const std::length_error& error) {
    return error.what();
  }
  return {};
}

TEST(Corners, AreSingleWhereThatHoldsEveryNumber) {
  std::vector<double> vertices(3 * 5000, 0.5);
  const std::vector<std::uint32_t> corners{0, 1, 2, 4999, 1, 0};
  EXPECT_TRUE(Corners(ViewOf(vertices, corners)).IsSingle());
  // Anywhere, in a block and after the last whole one.
  for (const std::size_t place : {0u, 4097u, 14999u}) {
    std::vector<double> other = vertices;
    other[place] = std::nextafter(0.5, 1.0);
    const Corners kept(ViewOf(other, corners));
    EXPECT_FALSE(kept.IsSingle());
    const Coord3 p = kept.VertexAt(place / 3);
    EXPECT_EQ((place % 3 == 0 ? p.x : place % 3 == 1 ? p.y : p.z), other[place]);
  }
  vertices[7] = 1e300; // beyond single precision
  EXPECT_FALSE(Corners(ViewOf(vertices, corners)).IsSingle());
  vertices[7] = -0.0;
  const Corners zero(ViewOf(vertices, corners));
  EXPECT_TRUE(zero.IsSingle() && std::signbit(zero.VertexAt(2).y));
}

TEST(Corners, ANaNDoesNotCostSinglePrecision) {
  std::vector<double> vertices(3 * 5000, 0.5);
  const std::vector<std::uint32_t> corners{0, 1, 2, 4999, 1, 0, 3, 1366, 4};
  for (const double unfit : {kNaN, kInfinity}) {
    // In a block, at the end of a block, and after the last whole group of four.
    for (const std::size_t place : {9u, 4098u, 14999u}) {
      std::vector<double> other = vertices;
      other[place] = unfit;
      const Corners kept(ViewOf(other, corners));
      EXPECT_TRUE(kept.IsSingle());
      EXPECT_EQ(kept.SkippedCount(), 1u);
      EXPECT_EQ(kept.VertexAt(1).x, 0.5);
      other[place - 2] = std::nextafter(0.5, 1.0);
      EXPECT_FALSE(Corners(ViewOf(other, corners)).IsSingle());
    }
  }
}

TEST(Corners, WithoutIndicesEveryThreeVerticesAreATriangle) {
  const std::vector<double> vertices{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17};
  const Corners corners({vertices.data(), 6, nullptr, 2});
  EXPECT_EQ(corners.Count(), 2u);
  EXPECT_EQ(corners.At(1, 2).z, 17.0);
  EXPECT_EQ(corners.Number(1), 1u);
}

TEST(Corners, UnfitTrianglesAreDroppedAndCounted) {
  for (const double unfit : {kNaN, kInfinity, -kInfinity}) {
    const std::vector<double> vertices{0, 0, 0, 1, 0, 0, 0, 1, 0, 5, unfit, 5};
    const Corners indexed(ViewOf(vertices, {0, 1, 3, 0, 1, 2, 3, 3, 3, 2, 1, 0}));
    EXPECT_EQ(indexed.Count(), 2u);
    EXPECT_EQ(indexed.SkippedCount(), 2u);
    EXPECT_EQ(indexed.Number(0), 1u);
    EXPECT_EQ(indexed.Number(1), 3u);
    EXPECT_EQ(indexed.At(1, 0).y, 1.0);
    std::vector<double> soup(18, 1.0);
    soup[4] = unfit;
    const Corners plain({soup.data(), 6, nullptr, 2});
    EXPECT_EQ(plain.Count(), 1u);
    EXPECT_EQ(plain.Number(0), 1u);
    EXPECT_EQ(plain.At(0, 2).z, 1.0);
    // A vertex that no triangle names is nobody's.
    EXPECT_EQ(Corners(ViewOf(vertices, {0, 1, 2})).SkippedCount(), 0u);
  }
}

TEST(Corners, ReportTheErrorOfAView) {
  const std::vector<double> vertices(9, 0.0);
  EXPECT_EQ(MessageOf(ViewOf(vertices, {0, 1, 2, 2, 3, 7})),
            "corner 4 is vertex 3, expected less than 3");
  EXPECT_EQ(MessageOf({vertices.data(), 3, nullptr, 2}),
            "without corners there must be three vertices for each triangle (got 3 vertices, 2 "
            "triangles)");
  EXPECT_EQ(MessageOf({nullptr, 3, nullptr, 1}), "the vertices are null, expected 3");
  const std::uint32_t none = 0;
  EXPECT_EQ(MessageOf({nullptr, 0, &none, 0x80000000u}),
            "a body must have at most 2147483647 triangles (got 2147483648)");
  EXPECT_EQ(MessageOf({nullptr, 0, nullptr, 0}), "");
}

TEST(Corners, ReorderKeepsNumbersWithTheirTriangles) {
  std::vector<double> vertices;
  for (int k = 0; k < 9 * 40; ++k)
    vertices.push_back(k);
  Corners corners({vertices.data(), 120, nullptr, 40});
  for (int round = 0; round < 2; ++round)
    corners.Reorder(40, [](std::size_t k) { return static_cast<std::uint32_t>(k * 7 % 40); });
  for (std::size_t place = 0; place < 40; ++place) {
    EXPECT_EQ(corners.Number(place), place * 49 % 40);
    EXPECT_EQ(corners.At(place, 1).x, 9.0 * corners.Number(place) + 3.0);
  }
}

/// What a reader of all storages sees.
void ExpectSame(const Corners& corners, const Corners& alone) {
  ASSERT_EQ(corners.Count(), alone.Count());
  EXPECT_EQ(corners.SkippedCount(), alone.SkippedCount());
  EXPECT_EQ(corners.IsSingle(), alone.IsSingle());
  EXPECT_EQ(corners.AreComfortable(), alone.AreComfortable());
  EXPECT_EQ(corners.LeastMagnitude(), alone.LeastMagnitude());
  EXPECT_EQ(corners.Bytes(), alone.Bytes());
  for (std::size_t place = 0; place < alone.Count(); ++place) {
    ASSERT_EQ(corners.Number(place), alone.Number(place));
    for (int k = 0; k < 3; ++k) {
      ASSERT_EQ(corners.VertexNumber(place, k), alone.VertexNumber(place, k));
      const Coord3 p = corners.At(place, k);
      const Coord3 q = alone.At(place, k);
      ASSERT_TRUE(p.x == q.x && p.y == q.y && p.z == q.z);
    }
  }
}

TEST(Corners, AreTheSameForAnyTeam) {
  std::vector<Mesh> meshes = sweep_bodies::LargeMeshes();
  Mesh last = meshes.front(); // only the last vertex needs double precision, and is small
  last.corners.back() = {0x1.000001p-120, 0.0, 0.0};
  meshes.push_back(last);
  std::mt19937 random(3);
  for (const Mesh& mesh : meshes) {
    const std::size_t vertexCount = mesh.corners.size();
    std::vector<std::uint32_t> order(vertexCount);
    for (std::uint32_t& corner : order)
      corner = static_cast<std::uint32_t>(random() % vertexCount);
    const TriangleView plain = gsl_tools::ViewOf(mesh);
    const TriangleView indexed{plain.vertices, vertexCount, order.data(), vertexCount / 3};
    for (const TriangleView& view : {plain, indexed}) {
      const Corners alone(view);
      sweep_bodies::WithEachTeam([&](Team& team) { ExpectSame(Corners(view, team), alone); });
    }
  }
}

TEST(Corners, ATeamNamesTheFirstWrongCorner) {
  const Mesh mesh = sweep_bodies::LargeMeshes().front();
  const std::size_t count = mesh.corners.size();
  std::vector<std::uint32_t> order(count, 0);
  order[70000] = 999999;
  order[count - 1] = 888888;
  const TriangleView view{gsl_tools::ViewOf(mesh).vertices, count, order.data(), count / 3};
  sweep_bodies::WithEachTeam([&](Team& team) {
    try {
      const Corners corners(view, team);
      FAIL();
    } catch (const std::invalid_argument& error) {
      EXPECT_EQ(std::string(error.what()).find("corner 70000 is vertex 999999, expected"), 0u);
    }
  });
}

TEST(Corners, AreComfortableFrom2ToTheMinus100On) {
  const std::vector<std::uint32_t> corners{0, 1, 2};
  for (const double other : {0.5, std::nextafter(0.5, 1.0)}) {
    std::vector<double> vertices(9, other);
    vertices[7] = 0x1p-100;
    EXPECT_TRUE(Corners(ViewOf(vertices, corners)).AreComfortable());
    vertices[7] = 0x1p-101;
    const Corners tiny(ViewOf(vertices, corners));
    EXPECT_FALSE(tiny.AreComfortable());
    EXPECT_EQ(tiny.LeastMagnitude(), 0x1p-101);
    vertices[7] = 0.0;
    EXPECT_TRUE(Corners(ViewOf(vertices, corners)).AreComfortable());
  }
}

} // namespace
