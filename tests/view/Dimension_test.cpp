#include "Dimension.h"

#include "PageFiles.h"

using namespace gsl_view;
using namespace page_files;

namespace {

std::string Drawn(const Dimension& dimension, PictureFormat format = PictureFormat::Svg) {
  Page page(format, 200.0, 200.0);
  DrawDimension(page, dimension);
  return page.Finish();
}

Dimension Upright() {
  return {{50, 20}, {55, 80}, true, 100.0, "12.5", false, {0, 0, 200, 200}};
}

} // namespace

TEST(Dimension, UprightHasExtensionLinesAndItsNumber) {
  const std::string svg = Drawn(Upright());
  EXPECT_EQ(CountLines(svg, 51, 20, 101.8, 20), 1u);
  EXPECT_EQ(CountLines(svg, 56, 80, 101.8, 80), 1u);
  EXPECT_EQ(CountLines(svg, 100, 20, 100, 80), 1u);
  EXPECT_NE(TextOf(Drawn(Upright(), PictureFormat::Pdf)).find("12.5"), std::string::npos);
}

TEST(Dimension, LineMayBeOnTheLeftAndBelow) {
  Dimension left = Upright();
  left.line = 10.0;
  EXPECT_EQ(CountLines(Drawn(left), 49, 20, 8.2, 20), 1u);
  const Dimension below = {{50, 20}, {90, 30}, false, 60.0, "7", false, {0, 0, 200, 200}};
  const std::string svg = Drawn(below);
  EXPECT_EQ(CountLines(svg, 50, 21, 50, 61.8), 1u);
  EXPECT_EQ(CountLines(svg, 90, 31, 90, 61.8), 1u);
  EXPECT_EQ(CountLines(svg, 50, 60, 90, 60), 1u);
}

TEST(Dimension, ArrowsWithoutRoomAreOutside) {
  Dimension small = Upright();
  small.to.y = 22.0;
  const std::string svg = Drawn(small);
  // Each tail is 6 mm away from its tip and ends at the head, which is 2.6 mm long.
  EXPECT_EQ(CountLines(svg, 100, 14, 100, 17.4), 1u);
  EXPECT_EQ(CountLines(svg, 100, 28, 100, 24.6), 1u);
}

TEST(Dimension, BrokenLineHasAZigzag) {
  Dimension broken = Upright();
  broken.isBroken = true;
  const std::string svg = Drawn(broken);
  EXPECT_EQ(CountLines(svg, 100, 20, 100, 48), 1u);
  EXPECT_EQ(CountLines(svg, 98, 49, 102, 51), 1u);
}

TEST(Dimension, NumberStaysInItsBounds) {
  Dimension cramped = Upright();
  cramped.text = "-1.23457e-150";
  cramped.bounds.right = 105.0;
  Page page(PictureFormat::Svg, 200.0, 200.0);
  const double width = page.WidthOf(cramped.text, {3.6, Align::Left, true, {}});
  DrawDimension(page, cramped);
  const std::string svg = page.Finish();
  // The first letter is put where the text still ends at 105 mm, in points.
  const double left = (105.0 - width) * 72.0 / 25.4;
  EXPECT_NE(svg.find("x=\"" + std::to_string(left).substr(0, 6)), std::string::npos)
      << left << svg.substr(svg.size() - 3000);
}

TEST(Dimension, ArrowOfNoLengthIsNotDrawn) {
  Page page(PictureFormat::Svg, 100.0, 100.0), empty(PictureFormat::Svg, 100.0, 100.0);
  DrawArrow(page, {5, 5}, {5, 5}, {});
  EXPECT_EQ(page.Finish(), empty.Finish());
}
