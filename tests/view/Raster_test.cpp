#include "Raster.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

using namespace gsl_view;

namespace {

constexpr Colour kRed{1, 0, 0}, kBlue{0, 0, 1};
const Rect area{10, 20, 30, 40};

/// Shows x from 0 to 20 and y from 0 to 20 in the area, from above.
View Above() {
  return {AxesToward({0, 0, 1}), 1.0, 10.0, 10.0, area};
}

/// Two triangles that fill a rectangle at a height.
std::vector<Coord3> Plate(double left, double bottom, double right, double top, double z) {
  return {{left, bottom, z}, {right, bottom, z}, {right, top, z},
          {left, bottom, z}, {right, top, z},    {left, top, z}};
}

std::size_t CountOther(const Raster& raster, std::uint32_t pixel) {
  const auto& pixels = raster.Pixels();
  return pixels.size() - static_cast<std::size_t>(std::count(pixels.begin(), pixels.end(), pixel));
}

std::uint32_t PixelAt(const Raster& raster, int x, int y) {
  return raster.Pixels()[static_cast<std::size_t>(y * raster.Width() + x)];
}

} // namespace

TEST(Raster, HasTheSizeOfItsArea) {
  const Raster raster(area, 2.0);
  EXPECT_EQ(raster.Width(), 40);
  EXPECT_EQ(raster.Height(), 40);
  EXPECT_EQ(raster.Area().right, 30.0);
  EXPECT_EQ(CountOther(raster, 0xFFFFFFu), 0u);
}

TEST(Raster, PixelsAreColouredOneByOne) {
  Raster raster(area, 2.0);
  EXPECT_EQ(raster.MiddleOf(0, 0).x, 10.25);
  EXPECT_EQ(raster.MiddleOf(3, 39).y, 39.75);
  raster.SetPixel(3, 39, 0x123456u);
  EXPECT_EQ(PixelAt(raster, 3, 39), 0x123456u);
  EXPECT_EQ(CountOther(raster, 0xFFFFFFu), 1u);
}

TEST(Raster, FillsThePixelsWhoseCentresAreInside) {
  Raster raster(area, 2.0);
  raster.Shade(Plate(2, 3, 5, 10, 0), {0, 0, 0}, Above(), kRed, {}, kBlue);
  EXPECT_EQ(CountOther(raster, 0xFFFFFFu), 6u * 14u);
  EXPECT_EQ(PixelAt(raster, 4, 20), PixelAt(raster, 9, 33));
  EXPECT_EQ(PixelAt(raster, 3, 20), 0xFFFFFFu);
  EXPECT_EQ(PixelAt(raster, 10, 20), 0xFFFFFFu);
  EXPECT_EQ(PixelAt(raster, 4, 19), 0xFFFFFFu);
  EXPECT_EQ(PixelAt(raster, 4, 34), 0xFFFFFFu);
}

TEST(Raster, NearerSurfaceWinsInEitherOrder) {
  for (const bool isFirst : {true, false}) {
    Raster raster(area, 1.0);
    const auto low = Plate(0, 0, 20, 20, 0), high = Plate(5, 5, 10, 10, 1);
    raster.Shade(isFirst ? high : low, {0, 0, 0}, Above(), isFirst ? kRed : kBlue, {}, kRed);
    raster.Shade(isFirst ? low : high, {0, 0, 0}, Above(), isFirst ? kBlue : kRed, {}, kRed);
    EXPECT_EQ(PixelAt(raster, 7, 12) & 0xFFu, 0u) << "red";
    EXPECT_NE(PixelAt(raster, 2, 12) & 0xFFu, 0u) << "blue";
  }
}

TEST(Raster, DepthOfASlopeIsThatOfItsPlane) {
  Raster raster(area, 4.0);
  raster.Shade({{0, 0, 0}, {20, 0, 20}, {0, 20, 0}}, {0, 0, 0}, Above(), kRed, {}, kRed);
  // At x = 6 and y = 6 the slope is 6 high. A pixel, 0.25, is forgiven, and another for its
  // neighbour.
  const PagePoint at{16, 34};
  EXPECT_TRUE(raster.IsVisible(at, 6.0));
  EXPECT_TRUE(raster.IsVisible(at, 5.65));
  EXPECT_FALSE(raster.IsVisible(at, 5.6));
  EXPECT_TRUE(raster.IsVisible({10.1, 20.1}, -100.0)) << "at the border";
  EXPECT_TRUE(raster.IsVisible({28, 22}, -100.0)) << "where there is nothing";
}

TEST(Raster, MarkedTrianglesHaveTheirColourAndTheShiftMoves) {
  Raster raster(area, 1.0);
  raster.Shade(Plate(0, 0, 10, 10, 0), {10, 10, 0}, Above(), kRed, {0, 1}, kBlue);
  EXPECT_EQ(PixelAt(raster, 5, 15), 0xFFFFFFu);
  EXPECT_EQ(PixelAt(raster, 18, 8) & 0xFFu, 0u) << "the first triangle is red";
  EXPECT_NE(PixelAt(raster, 11, 2) & 0xFFu, 0u) << "the second triangle is blue";
}

TEST(Raster, SteepSurfacesAreDarkerFromBothSides) {
  std::uint32_t tones[3];
  const double tilts[] = {0.0, 4.0, -4.0};
  for (int k = 0; k < 3; ++k) {
    Raster raster(area, 1.0);
    const double z = tilts[k] * 20.0;
    raster.Shade({{0, 0, 0}, {20, 0, z}, {0, 20, 0}}, {0, 0, 0}, Above(), kRed, {}, kRed);
    tones[k] = PixelAt(raster, 3, 16);
  }
  EXPECT_GT(tones[0], tones[1]);
  EXPECT_GT(tones[0], tones[2]);
}

TEST(Raster, NothingIsDrawnOutsideThePanel) {
  View view = Above();
  view.panel = {12, 22, 20, 30};
  view.centreX = view.centreY = 0.0;
  Raster raster(area, 1.0);
  raster.Shade({{-1e6, -1e6, 0}, {3e6, -1e6, 0}, {-1e6, 3e6, 0}}, {0, 0, 0}, view, kRed, {}, kRed);
  EXPECT_EQ(CountOther(raster, 0xFFFFFFu), 8u * 8u);
  EXPECT_NE(PixelAt(raster, 2, 2), 0xFFFFFFu);
  EXPECT_EQ(PixelAt(raster, 1, 2), 0xFFFFFFu);
}

TEST(Raster, HugeAndDegenerateTrianglesAreHarmless) {
  Raster raster(area, 1.0);
  const double huge = 1e300;
  raster.Shade({{-huge, -huge, 0},
                {huge, -huge, 0},
                {0, huge, huge},
                {1, 1, 0},
                {2, 2, 0},
                {3, 3, 0},
                {1, 1, 0},
                {1, 1, 0},
                {1, 1, 0}},
               {0, 0, 0}, Above(), kRed, {}, kRed);
  EXPECT_EQ(CountOther(raster, 0xFFFFFFu), 0u);
}

TEST(Raster, OutlineIsTracedWhereASurfaceEndsOrSteps) {
  Raster raster(area, 1.0);
  raster.Shade(Plate(2, 2, 18, 18, 0), {0, 0, 0}, Above(), kRed, {}, kRed);
  raster.Shade(Plate(8, 8, 12, 12, 1), {0, 0, 0}, Above(), kRed, {}, kRed);
  raster.TraceOutlines(raster, area, kBlue);
  std::size_t blue = 0;
  for (const std::uint32_t pixel : raster.Pixels())
    blue += pixel == 0x0000FFu ? 1u : 0u;
  // The border of 16 by 16 pixels and the border of 4 by 4 pixels.
  EXPECT_EQ(blue, 60u + 12u);
}

TEST(Raster, OutlineBehindASurfaceIsNotTraced) {
  Raster raster(area, 1.0), shape(area, 1.0);
  shape.Shade(Plate(2, 2, 18, 18, 0), {0, 0, 0}, Above(), kRed, {}, kRed);
  raster.Shade(Plate(0, 0, 20, 20, 50), {0, 0, 0}, Above(), kRed, {}, kRed);
  raster.TraceOutlines(shape, area, kBlue);
  EXPECT_EQ(PixelAt(raster, 2, 10) & 0xFFu, 0u);
}

TEST(Raster, OutlineBehindASurfaceIsTracedWhereAllAre) {
  Raster raster(area, 1.0), shape(area, 1.0);
  shape.Shade(Plate(2, 2, 18, 18, 0), {0, 0, 0}, Above(), kRed, {}, kRed);
  raster.Shade(Plate(0, 0, 20, 20, 50), {0, 0, 0}, Above(), kRed, {}, kRed);
  raster.TraceOutlines(shape, area, kBlue, Traced::All);
  EXPECT_EQ(PixelAt(raster, 2, 10), 0x0000FFu);
  EXPECT_EQ(PixelAt(raster, 10, 10) & 0xFFu, 0u);
}

TEST(Raster, SmoothSlopeHasNoOutlineWithin) {
  Raster raster(area, 1.0);
  raster.Shade({{0, 0, 0}, {20, 0, 200}, {20, 20, 200}, {0, 0, 0}, {20, 20, 200}, {0, 20, 0}},
               {0, 0, 0}, Above(), kRed, {}, kRed);
  raster.TraceOutlines(raster, area, kBlue);
  EXPECT_EQ(PixelAt(raster, 10, 10) & 0xFFu, 0u);
}
