#include "Outline.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace gsl_view;

namespace {

const Rect area{0, 0, 40, 40};

View Above() {
  return {AxesToward({0, 0, 1}), 1.0, 20.0, 20.0, area};
}

/// An edge that is drawn from every side.
std::vector<BodyEdge> Edge() {
  return {{0, 1, 0, 1, true}};
}

double Length(const std::vector<PageLine>& lines) {
  double length = 0.0;
  for (const PageLine& line : lines)
    length += std::hypot(line.to.x - line.from.x, line.to.y - line.from.y);
  return length;
}

/// A raster with a plate over x from 10 to 20, at the height 5.
Raster WithPlate() {
  Raster raster(area, 5.0);
  raster.Shade({{10, 0, 5}, {20, 0, 5}, {20, 40, 5}, {10, 0, 5}, {20, 40, 5}, {10, 40, 5}},
               {0, 0, 0}, Above(), {}, {}, {});
  return raster;
}

} // namespace

TEST(Outline, LineIsDividedWhereItIsHidden) {
  const Raster empty(area, 5.0), plate = WithPlate();
  const std::vector<Coord3> corners = {{5, 20, 0}, {35, 20, 0}};
  const Outline outline = OutlineOf(Edge(), corners, {0, 0, 0}, Above(), empty, plate);
  ASSERT_EQ(outline.visible.size(), 2u);
  ASSERT_EQ(outline.hidden.size(), 1u);
  EXPECT_NEAR(outline.visible[0].from.x, 5.0, 0.05);
  EXPECT_NEAR(outline.visible[0].to.x, 10.0, 0.5);
  EXPECT_NEAR(outline.hidden[0].to.x, 20.0, 0.5);
  EXPECT_NEAR(outline.visible[1].to.x, 35.0, 0.05);
  EXPECT_EQ(outline.hidden[0].from.y, outline.hidden[0].to.y);
}

TEST(Outline, LineBehindItsOwnBodyIsLeftOut) {
  const Raster plate = WithPlate();
  const std::vector<Coord3> corners = {{5, 20, 0}, {35, 20, 0}};
  const Outline outline = OutlineOf(Edge(), corners, {0, 0, 0}, Above(), plate, plate);
  EXPECT_EQ(outline.visible.size(), 2u);
  EXPECT_TRUE(outline.hidden.empty());
}

TEST(Outline, LineInFrontIsWhole) {
  const Raster plate = WithPlate();
  const std::vector<Coord3> corners = {{5, 20, 0}, {35, 20, 0}};
  const Outline outline = OutlineOf(Edge(), corners, {0, 0, 6}, Above(), plate, plate);
  ASSERT_EQ(outline.visible.size(), 1u);
  EXPECT_NEAR(Length(outline.visible), 30.0, 0.1);
}

TEST(Outline, LineIsCutAtThePanel) {
  const Raster empty(area, 1.0);
  View view = Above();
  view.panel = {10, 10, 30, 30};
  const std::vector<Coord3> corners = {{-1e9, 20, 0}, {1e9, 20, 0}};
  const Outline outline = OutlineOf(Edge(), corners, {0, 0, 0}, view, empty, empty);
  ASSERT_EQ(outline.visible.size(), 1u);
  EXPECT_NEAR(outline.visible[0].from.x, 10.0, 0.25);
  EXPECT_NEAR(outline.visible[0].to.x, 30.0, 0.25);
  const std::vector<Coord3> outside = {{-50, 90, 0}, {50, 90, 0}};
  EXPECT_TRUE(OutlineOf(Edge(), outside, {0, 0, 0}, view, empty, empty).visible.empty());
}

TEST(Outline, EqualLinesAreDrawnOnceAndPointsNever) {
  const Raster empty(area, 1.0);
  const std::vector<BodyEdge> edges = {{0, 1, 0, 1, true}, {1, 0, 0, 1, true}, {0, 0, 0, 0, true}};
  const std::vector<Coord3> corners = {{5, 20, 0}, {35, 20, 0}};
  EXPECT_EQ(OutlineOf(edges, corners, {0, 0, 0}, Above(), empty, empty).visible.size(), 1u);
}
