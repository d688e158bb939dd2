#include "MeshFacts.h"

#include "RandomNumbers.h"
#include "SweepShapes.h"
#include "TestScale.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <set>

namespace {

using namespace gsl_mesh;
using gsl_arithmetic::Coord3;
using sweep_shapes::AddTriangle;

void ExpectNear(const Coord3& p, const Coord3& expected, double error) {
  EXPECT_NEAR(p.x, expected.x, error);
  EXPECT_NEAR(p.y, expected.y, error);
  EXPECT_NEAR(p.z, expected.z, error);
}

TEST(MeshFacts, OfABox) {
  const MeshFacts facts = FactsOf(sweep_shapes::Box({1, 2, 3}, {2, 4, 6}));
  EXPECT_EQ(facts.triangles, 12u);
  EXPECT_EQ(facts.vertices, 8u);
  EXPECT_EQ(facts.edges, 18u);
  EXPECT_EQ(facts.components, 1u);
  EXPECT_EQ(facts.notFinite + facts.degenerate + facts.duplicate, 0u);
  EXPECT_EQ(facts.openEdges + facts.nonManifoldEdges + facts.turnedEdges, 0u);
  EXPECT_TRUE(facts.isClosed);
  EXPECT_TRUE(facts.isOriented);
  EXPECT_DOUBLE_EQ(facts.area, 22.0);
  EXPECT_DOUBLE_EQ(facts.volume, 6.0);
  ExpectNear(facts.centroid, {1.5, 3.0, 4.5}, 1e-15);
  ExpectNear(facts.low, {1, 2, 3}, 0.0);
  ExpectNear(facts.high, {2, 4, 6}, 0.0);
}

TEST(MeshFacts, OfABoxInsideOut) {
  Mesh mesh = sweep_shapes::Box({0, 0, 0}, {1, 1, 1});
  for (std::size_t k = 0; k < mesh.corners.size(); k += 3)
    std::swap(mesh.corners[k], mesh.corners[k + 1]);
  const MeshFacts facts = FactsOf(mesh);
  EXPECT_TRUE(facts.isClosed);
  EXPECT_DOUBLE_EQ(facts.volume, -1.0);
  ExpectNear(facts.centroid, {0.5, 0.5, 0.5}, 1e-15);
}

TEST(MeshFacts, OfAnOpenSheet) {
  Mesh mesh;
  sweep_shapes::AddQuad(mesh, {0, 0, 1}, {4, 0, 1}, {4, 2, 1}, {0, 2, 1});
  const MeshFacts facts = FactsOf(mesh);
  EXPECT_EQ(facts.vertices, 4u);
  EXPECT_EQ(facts.edges, 5u);
  EXPECT_EQ(facts.openEdges, 4u);
  EXPECT_EQ(facts.firstAtOpenEdge, 0u);
  EXPECT_FALSE(facts.isClosed);
  EXPECT_TRUE(facts.isOriented);
  EXPECT_DOUBLE_EQ(facts.area, 8.0);
  EXPECT_EQ(facts.volume, 0.0);
  ExpectNear(facts.centroid, {2, 1, 1}, 1e-15);
}

TEST(MeshFacts, CountsEachFault) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double far = std::numeric_limits<double>::infinity();
  Mesh mesh = sweep_shapes::Box({0, 0, 0}, {1, 1, 1});
  std::swap(mesh.corners[15], mesh.corners[16]); // triangle 5
  AddTriangle(mesh, {0, 0, nan}, {1, 0, 0}, {0, 1, 0});
  AddTriangle(mesh, {0, 0, 0}, {far, 0, 0}, {0, 1, 0});
  AddTriangle(mesh, {9, 9, 9}, {9, 9, 9}, {8, 8, 8});
  AddTriangle(mesh, {5, 5, 5}, {6, 6, 6}, {7, 7, 7});
  AddTriangle(mesh, mesh.corners[1], mesh.corners[2], mesh.corners[0]);
  AddTriangle(mesh, mesh.corners[2], mesh.corners[1], mesh.corners[0]);
  const MeshFacts facts = FactsOf(mesh);
  EXPECT_EQ(facts.triangles, 18u);
  EXPECT_EQ(facts.notFinite, 2u);
  EXPECT_EQ(facts.firstNotFinite, 12u);
  EXPECT_EQ(facts.degenerate, 2u);
  EXPECT_EQ(facts.firstDegenerate, 14u);
  EXPECT_EQ(facts.duplicate, 2u);
  EXPECT_EQ(facts.firstDuplicate, 16u);
  // The edges of triangle 0, which three triangles use beside its neighbours, and those of the
  // triangle in one line.
  EXPECT_EQ(facts.nonManifoldEdges, 3u);
  EXPECT_EQ(facts.firstAtNonManifoldEdge, 0u);
  EXPECT_EQ(facts.openEdges, 3u);
  EXPECT_EQ(facts.firstAtOpenEdge, 15u);
  EXPECT_EQ(facts.turnedEdges, 3u);
  EXPECT_EQ(facts.components, 2u);
  EXPECT_FALSE(facts.isClosed);
  EXPECT_FALSE(facts.isOriented);
}

TEST(MeshFacts, ZerosOfEitherSignAreOneVertexAndNothingElseIs) {
  Mesh mesh;
  AddTriangle(mesh, {0.0, -0.0, 0.0}, {1, 0, 0}, {0, 1, 0});
  AddTriangle(mesh, {-0.0, 0.0, 0.0}, {0, 1, -0.0}, {-1, 0, 0});
  EXPECT_EQ(FactsOf(mesh).vertices, 4u);
  EXPECT_EQ(FactsOf(mesh).openEdges, 4u);
  mesh.corners[3].x = 0x1p-1074;
  EXPECT_EQ(FactsOf(mesh).vertices, 5u);
}

TEST(MeshFacts, AreaIsDecidedExactlyAtEverySize) {
  for (const double scale : {1.0, 0x1p-1040, 0x1p-500, 0x1p500, 0x1p1010}) {
    Mesh mesh;
    AddTriangle(mesh, {0, 0, 0}, {scale, 2 * scale, 3 * scale},
                {7 * scale, 14 * scale, 21 * scale});
    EXPECT_EQ(FactsOf(mesh).degenerate, 1u) << scale;
    mesh.corners[2].z = std::nextafter(mesh.corners[2].z, 0.0);
    EXPECT_EQ(FactsOf(mesh).degenerate, 0u) << scale;
  }
  Mesh mesh;
  AddTriangle(mesh, {0.1, 0.1, 0.1}, {0.3, 0.3, 0.3}, {0.7, 0.7, 0.7});
  EXPECT_EQ(FactsOf(mesh).degenerate, 1u);
  // Three points of the line y = 3 x. The difference of the first two in x is a tie that is rounded
  // up by 1/8, and in y it is rounded down by 1/8.
  Mesh rounded;
  AddTriangle(rounded, {0.125, 0.375, 0}, {0x1p50 + 1, 3 * (0x1p50 + 1), 0}, {1, 3, 0});
  EXPECT_EQ(FactsOf(rounded).degenerate, 1u);
}

TEST(MeshFacts, MeasuresBodiesOfAnySizeAnywhere) {
  const MeshFacts tiny = FactsOf(sweep_shapes::Box({0, 0, 0}, {0x1p-300, 0x1p-300, 0x1p-300}));
  EXPECT_EQ(tiny.volume, 0x1p-900);
  EXPECT_EQ(tiny.area, 6 * 0x1p-600);
  const MeshFacts huge = FactsOf(sweep_shapes::Box({0, 0, 0}, {0x1p300, 0x1p300, 0x1p300}));
  EXPECT_EQ(huge.volume, 0x1p900);
  ExpectNear(huge.centroid, {0x1p299, 0x1p299, 0x1p299}, 0x1p250);
  const MeshFacts beyond = FactsOf(sweep_shapes::Box({0, 0, 0}, {0x1p400, 0x1p400, 0x1p400}));
  EXPECT_EQ(beyond.volume, std::numeric_limits<double>::infinity());
  EXPECT_EQ(beyond.area, 6 * 0x1p800);
  const double most = std::numeric_limits<double>::max();
  const MeshFacts whole = FactsOf(sweep_shapes::Box({-most, -most, -most}, {most, most, most}));
  EXPECT_TRUE(whole.isClosed);
  ExpectNear(whole.centroid, {0, 0, 0}, 0.0);
  const MeshFacts far = FactsOf(sweep_shapes::Box({0x1p30, 0, 0}, {0x1p30 + 1, 1, 1}));
  EXPECT_EQ(far.volume, 1.0);
  ExpectNear(far.centroid, {0x1p30 + 0.5, 0.5, 0.5}, 1e-14);
}

TEST(MeshFacts, MeasuresFlatSheetsOfAnySize) {
  for (const double size : {0x1p-600, 1.0, 0x1p600}) {
    Mesh mesh;
    sweep_shapes::AddQuad(mesh, {0, 0, 0}, {4 * size, 0, 0}, {4 * size, 2 * size, 0},
                          {0, 2 * size, 0});
    ExpectNear(FactsOf(mesh).centroid, {2 * size, size, 0}, 1e-15 * size);
  }
}

TEST(MeshFacts, ManyVerticesAreNumberedInAFractionOfASecond) {
  // A square of whole numbers, whose last bits are all zero.
  constexpr int kSide = 250;
  Mesh mesh;
  for (int x = 0; x < kSide; ++x) {
    for (int y = 0; y < kSide; ++y) {
      sweep_shapes::AddQuad(mesh, {1.0 * x, 1.0 * y, 0}, {x + 1.0, 1.0 * y, 0},
                            {x + 1.0, y + 1.0, 0}, {1.0 * x, y + 1.0, 0});
    }
  }
  const auto start = std::chrono::steady_clock::now();
  const MeshFacts facts = FactsOf(mesh);
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(facts.vertices, 251u * 251u);
  EXPECT_EQ(facts.edges, 2u * 250u * 251u + 250u * 250u);
  EXPECT_EQ(facts.openEdges, 4u * 250u);
  EXPECT_EQ(facts.components, 1u);
  std::printf("%.3f s\n", time.count());
  EXPECT_LT(time.count(), 10.0); // under sanitizers too
}

TEST(MeshFacts, OfNoTriangles) {
  const MeshFacts facts = FactsOf(Mesh());
  EXPECT_EQ(facts.triangles + facts.vertices + facts.edges + facts.components, 0u);
  EXPECT_FALSE(facts.isClosed);
  EXPECT_EQ(facts.area, 0.0);
}

/// Counts with ordered containers of points.
MeshFacts ByContainers(const Mesh& mesh) {
  using Point = std::array<double, 3>;
  MeshFacts facts;
  std::set<Point> points;
  std::map<std::pair<Point, Point>, std::array<std::size_t, 2>> edges;
  std::set<std::array<Point, 3>> triangles;
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    std::array<Point, 3> p;
    for (std::size_t i = 0; i < 3; ++i) {
      const Coord3& c = mesh.corners[3 * k + i];
      p[i] = {c.x + 0.0, c.y + 0.0, c.z + 0.0};
      points.insert(p[i]);
    }
    for (std::size_t i = 0; i < 3 && p[0] != p[1] && p[1] != p[2] && p[2] != p[0]; ++i) {
      const Point& from = p[i];
      const Point& to = p[(i + 1) % 3];
      ++edges[std::minmax(from, to)][from < to ? 0 : 1];
    }
    std::sort(p.begin(), p.end());
    facts.duplicate += triangles.insert(p).second ? 0 : 1;
  }
  facts.vertices = points.size();
  facts.edges = edges.size();
  for (const auto& [ends, uses] : edges) {
    const std::size_t count = uses[0] + uses[1];
    facts.openEdges += count == 1 ? 1 : 0;
    facts.turnedEdges += count == 2 && uses[0] != 1 ? 1 : 0;
    facts.nonManifoldEdges += count > 2 ? 1 : 0;
  }
  return facts;
}

TEST(MeshFacts, AgreeWithOrderedContainers) {
  for (unsigned seed = 0; seed < Scaled(200); ++seed) {
    std::mt19937_64 random(seed);
    const Mesh mesh = sweep_shapes::Soup(random, 60, 1.0, 1.0, 0.5 + 0.5 * (seed % 3));
    const MeshFacts facts = FactsOf(mesh);
    const MeshFacts expected = ByContainers(mesh);
    EXPECT_EQ(facts.vertices, expected.vertices);
    EXPECT_EQ(facts.edges, expected.edges);
    EXPECT_EQ(facts.openEdges, expected.openEdges);
    EXPECT_EQ(facts.turnedEdges, expected.turnedEdges);
    EXPECT_EQ(facts.nonManifoldEdges, expected.nonManifoldEdges);
    EXPECT_EQ(facts.duplicate, expected.duplicate);
  }
}

} // namespace
