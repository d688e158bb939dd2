#include "FeatureEdges.h"

#include "ViewSamples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace gsl_view;

namespace {

std::vector<Coord3> Corners(const std::vector<double>& numbers) {
  std::vector<Coord3> corners;
  for (std::size_t k = 0; k < numbers.size(); k += 3)
    corners.push_back({numbers[k], numbers[k + 1], numbers[k + 2]});
  return corners;
}

std::size_t FeatureCount(const std::vector<BodyEdge>& edges) {
  return static_cast<std::size_t>(
      std::count_if(edges.begin(), edges.end(), [](const BodyEdge& e) { return e.isFeature; }));
}

/// Two triangles that share the edge from (0, 0, 0) to (1, 0, 0), bent by an angle in degrees.
std::vector<Coord3> Bent(double degrees) {
  const double angle = degrees * std::acos(-1.0) / 180.0;
  return {{0, 0, 0}, {1, 0, 0}, {0.5, 1, 0},
          {0, 0, 0}, {1, 0, 0}, {0.5, -std::cos(angle), std::sin(angle)}};
}

/// Returns the shared edge of Bent.
BodyEdge SharedEdge(const std::vector<Coord3>& corners) {
  for (const BodyEdge& edge : FindEdges(corners)) {
    if (corners[edge.from].y == 0.0 && corners[edge.to].y == 0.0) return edge;
  }
  ADD_FAILURE() << "no edge is shared";
  return {};
}

} // namespace

TEST(FeatureEdges, BoxHasTwelveAndItsDiagonalsAreFlat) {
  const auto edges = FindEdges(Corners(view_samples::BoxCorners({0, 0, 0}, {1, 2, 3})));
  EXPECT_EQ(edges.size(), 18u);
  EXPECT_EQ(FeatureCount(edges), 12u);
}

TEST(FeatureEdges, OrientationDoesNotMatter) {
  std::vector<Coord3> corners = Corners(view_samples::BoxCorners({0, 0, 0}, {1, 2, 3}));
  for (std::size_t k = 0; k < corners.size(); k += 6)
    std::swap(corners[k], corners[k + 1]);
  EXPECT_EQ(FeatureCount(FindEdges(corners)), 12u);
}

TEST(FeatureEdges, EdgeIsSharpBeyond29Degrees) {
  EXPECT_FALSE(SharedEdge(Bent(0.0)).isFeature);
  EXPECT_FALSE(SharedEdge(Bent(28.9)).isFeature);
  EXPECT_TRUE(SharedEdge(Bent(29.1)).isFeature);
  EXPECT_TRUE(SharedEdge(Bent(-29.1)).isFeature);
  EXPECT_TRUE(SharedEdge(Bent(180.0)).isFeature) << "folded";
}

TEST(FeatureEdges, OpenEdgesAndEdgesOfThreeTrianglesAreFeatures) {
  std::vector<Coord3> corners = Bent(0.0);
  EXPECT_EQ(FeatureCount(FindEdges(corners)), 4u);
  corners.insert(corners.end(), {{0, 0, 0}, {1, 0, 0}, {0.5, 0, 1}});
  EXPECT_EQ(FindEdges(corners).size(), 7u);
  EXPECT_EQ(FeatureCount(FindEdges(corners)), 7u);
}

TEST(FeatureEdges, ZerosOfBothSignsAreOneCorner) {
  std::vector<Coord3> corners = Bent(0.0);
  corners[3] = {-0.0, 0.0, -0.0};
  EXPECT_EQ(FindEdges(corners).size(), 5u);
}

TEST(FeatureEdges, DegenerateTrianglesHaveNoEdges) {
  EXPECT_TRUE(FindEdges({{0, 0, 0}, {1, 0, 0}, {1, 0, 0}}).empty());
  EXPECT_TRUE(FindEdges({}).empty());
}

TEST(FeatureEdges, OutlineIsWhereBothTrianglesAreOnOneSide) {
  // A roof of 20 degrees: from above it is smooth, and along one slope it is an outline.
  const std::vector<Coord3> corners = Bent(20.0);
  const BodyEdge edge = SharedEdge(corners);
  ASSERT_FALSE(edge.isFeature);
  EXPECT_FALSE(IsDrawn(edge, corners, {0, 0, 1}));
  EXPECT_TRUE(IsDrawn(edge, corners, {0, -1, 0.1}));
  EXPECT_FALSE(IsDrawn(edge, corners, {0, 1, 0.1}));
  EXPECT_FALSE(IsDrawn(edge, corners, {0, -1, 1}));
  BodyEdge feature = edge;
  feature.isFeature = true;
  EXPECT_TRUE(IsDrawn(feature, corners, {0, 0, 1}));
}
