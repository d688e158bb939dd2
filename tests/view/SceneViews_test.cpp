#include "SceneViews.h"

#include "PageFiles.h"
#include "ViewSamples.h"

#include <cmath>

using namespace gsl_view;
using namespace view_samples;
using namespace page_files;

namespace {

const Rect panel{10, 10, 140, 110};

bool IsIn(const PagePoint& p, const Rect& box) {
  return p.x >= box.left - 1e-9 && p.x <= box.right + 1e-9 && p.y >= box.top - 1e-9 &&
         p.y <= box.bottom + 1e-9;
}

std::string Drawn(const DrawnScene& drawn, const Fineness& fineness, bool showsBefore = true) {
  Page page(PictureFormat::Svg, 150.0, 120.0);
  DrawBodies(page, drawn, FindSceneEdges(drawn), {{IsometricView(drawn, panel), showsBefore}},
             panel, fineness);
  return page.Finish();
}

} // namespace

TEST(SceneViews, EverythingFitsTheIsometricView) {
  const Sample sample = FallingBox();
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  const View view = IsometricView(drawn, panel);
  for (const DrawnBody* const body : {&drawn.moving, &drawn.fixed}) {
    for (const Coord3& corner : body->corners)
      EXPECT_TRUE(IsIn(view.At(corner), panel));
  }
  for (const Coord3& corner : drawn.moving.corners) {
    const Coord3 before = {corner.x, corner.y, corner.z + drawn.travel};
    EXPECT_TRUE(IsIn(view.At(before), panel));
  }
}

TEST(SceneViews, SideViewShowsTheTravelInTrueLengthWithRoomForItsDimension) {
  for (const Coord3& direction : {Coord3{0, 0, -1}, Coord3{0, 0, 1}, Coord3{-1, 0, 0},
                                  Coord3{1, 0, 0}, Coord3{0, 1, 0}, Coord3{1, 1, 0.5}}) {
    const auto at = [&](double part) { return gsl_arithmetic::Multiply(direction, part); };
    const Coord3 from = at(-4.0);
    Sample sample(BoxCorners({from.x, from.y, from.z}, {from.x + 1, from.y + 1, from.z + 1}),
                  {BoxCorners({0, 0, 0}, {1, 1, 1})}, direction);
    sample.Ask();
    const DrawnScene drawn = MakeDrawnScene(sample.scene);
    ASSERT_GT(drawn.travel, 0.0);
    const SideView side = SideViewOf(drawn, panel);
    const PagePoint to = side.view.At(drawn.movingPoint);
    const Coord3 start = gsl_arithmetic::Subtract(
        drawn.movingPoint, gsl_arithmetic::Multiply(drawn.direction, drawn.travel));
    const PagePoint before = side.view.At(start);
    const double length = side.isUpright ? to.y - before.y : to.x - before.x;
    EXPECT_NEAR(std::fabs(length), side.view.scale * drawn.travel, 1e-9);
    EXPECT_NEAR(side.isUpright ? to.x - before.x : to.y - before.y, 0.0, 1e-9);
    const Rect& shown = side.view.panel;
    const double room =
        side.isUpright ? std::max(panel.right - side.line, side.line - panel.left) : 0.0;
    EXPECT_TRUE(IsIn(side.isUpright ? PagePoint{side.line, 50} : PagePoint{50, side.line}, panel));
    EXPECT_TRUE(shown.left >= panel.left && shown.right <= panel.right);
    if (side.isUpright) {
      EXPECT_GE(std::min(panel.right - side.line, side.line - panel.left), 25.0) << "number";
      EXPECT_GT(room, 0.0);
    }
    EXPECT_FALSE(side.isCut);
  }
}

TEST(SceneViews, LargeFixedBodyIsCutInTheSideViewOnly) {
  Sample sample(BoxCorners({0, 0, 3}, {0.01, 0.01, 3.01}), {BoxCorners({-90, -90, 0}, {90, 90, 1})},
                {0, 0, -1});
  sample.Ask();
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  const SideView side = SideViewOf(drawn, panel);
  EXPECT_TRUE(side.isCut);
  EXPECT_GT(side.view.scale * drawn.travel, 20.0) << "millimetres";
  EXPECT_LT(IsometricView(drawn, panel).scale * drawn.travel, 5.0);
}

TEST(SceneViews, PageHasOneImageAndTheLinesOfEachBody) {
  const Sample sample = FallingBox();
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  const std::string svg = Drawn(drawn, {});
  EXPECT_EQ(CountOf(svg, "<image "), 1u);
  // A box shows nine of its edges. The slab and the box at the contact, and the box before.
  EXPECT_EQ(CountOf(svg, "stroke:rgb(72%,36%,0%)"), 1u) << svg.substr(svg.size() - 4000);
  EXPECT_EQ(CountOf(svg, "stroke:rgb(8%,8%,8%)"), 2u);
  EXPECT_EQ(CountOf(Drawn(drawn, {}, false), "stroke:rgb(72%,36%,0%)"), 0u);
}

TEST(SceneViews, BoxBeforeItsTravelHasNineEdges) {
  const Sample sample = FallingBox();
  const std::string svg = Drawn(MakeDrawnScene(sample.scene), {});
  const std::size_t pen = svg.find("stroke:rgb(72%,36%,0%)");
  ASSERT_NE(pen, std::string::npos);
  const std::string element =
      svg.substr(svg.rfind("<path", pen), svg.find("/>", pen) - svg.rfind("<path", pen));
  EXPECT_EQ(CountOf(element, "M "), 9u) << element;
}

TEST(SceneViews, TooManyLinesBecomePixels) {
  const Sample sample = FallingBox();
  const std::string svg = Drawn(MakeDrawnScene(sample.scene), {kPixelsPerMillimetre, 0});
  EXPECT_EQ(CountOf(svg, "stroke-width:"), 0u);
  EXPECT_EQ(CountOf(svg, "<image "), 1u);
}

TEST(SceneViews, BodyInsideAnotherIsSeenThroughIt) {
  for (const bool movingIsInside : {true, false}) {
    const std::vector<double> small = BoxCorners({0.4, 0.4, 0.4}, {0.6, 0.6, 0.6});
    const std::vector<double> large = BoxCorners({0, 0, 0}, {1, 1, 1});
    Sample sample(movingIsInside ? small : large, {movingIsInside ? large : small}, {0, 0, 1});
    sample.scene.question.rule = gsl_sweep::Rule::Solid;
    sample.Ask();
    const std::string svg = Drawn(MakeDrawnScene(sample.scene), {});
    EXPECT_EQ(CountOf(svg, "stroke:rgb(86%,72%,56%)"), movingIsInside ? 1u : 0u);
    EXPECT_EQ(CountOf(svg, "stroke:rgb(16%,22%,42%)"), movingIsInside ? 0u : 1u);
  }
}

TEST(SceneViews, BodyInsideAnotherIsSeenInACoarsePictureToo) {
  for (const bool movingIsInside : {true, false}) {
    const std::vector<double> small = BoxCorners({0.4, 0.4, 0.4}, {0.6, 0.6, 0.6});
    const std::vector<double> large = BoxCorners({0, 0, 0}, {1, 1, 1});
    Sample sample(movingIsInside ? small : large, {movingIsInside ? large : small}, {0, 0, 1});
    sample.scene.question.rule = gsl_sweep::Rule::Solid;
    sample.Ask();
    // Without lines the outline is in the pixels; the same picture of the large body alone lacks
    // it.
    Fineness coarse;
    coarse.mostLines = 0;
    const DrawnScene drawn = MakeDrawnScene(sample.scene);
    const std::string both = Drawn(drawn, coarse);
    EXPECT_EQ(CountOf(both, "stroke:rgb(86%,72%,56%)"), 0u);
    EXPECT_EQ(CountOf(both, "stroke:rgb(16%,22%,42%)"), 0u);
    EXPECT_NE(both, Drawn(drawn, coarse, false));
  }
}
