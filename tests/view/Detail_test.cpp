#include "Detail.h"

#include "PageFiles.h"
#include "ViewSamples.h"

#include <cmath>
#include <limits>

using namespace gsl_view;
using namespace view_samples;
using namespace page_files;

namespace {

const Rect panel{0, 0, 130, 48};

double AreaOf(const std::vector<PagePoint>& polygon) {
  double area = 0.0;
  for (std::size_t k = 0; k < polygon.size(); ++k) {
    const PagePoint &p = polygon[k], &q = polygon[(k + 1) % polygon.size()];
    area += 0.5 * (p.x * q.y - p.y * q.x);
  }
  return std::fabs(area);
}

std::string LegendOf(const Sample& sample) {
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  Page page(PictureFormat::Pdf, 140.0, 60.0);
  DrawDetail(page, sample.scene, drawn, DetailView(sample.scene, drawn, panel, 1.0), panel, 1.0);
  return TextOf(page.Finish());
}

} // namespace

TEST(Detail, PolygonIsCutToTheBox) {
  const Rect box{0, 0, 10, 10};
  EXPECT_NEAR(AreaOf(Clipped({{1, 1}, {9, 1}, {1, 9}}, box)), 32.0, 1e-12) << "inside";
  EXPECT_NEAR(AreaOf(Clipped({{-100, -100}, {300, -100}, {-100, 300}}, box)), 100.0, 1e-9);
  EXPECT_NEAR(AreaOf(Clipped({{5, 5}, {25, 5}, {5, 25}}, box)), 25.0, 1e-12);
  EXPECT_TRUE(Clipped({{11, 0}, {20, 0}, {11, 9}}, box).empty()) << "outside";
  EXPECT_NEAR(AreaOf(Clipped({{-1e12, -1e12}, {1e12, -1e12}, {0, 1e12}}, box)), 100.0, 0.1);
  for (const double wrong :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()})
    EXPECT_TRUE(Clipped({{wrong, 1}, {9, 1}, {1, 9}}, box).empty());
}

TEST(Detail, ViewHasTheContactInItsMiddle) {
  const Sample sample = FallingBox();
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  const View view = DetailView(sample.scene, drawn, panel, 1.0);
  EXPECT_NEAR(view.At(drawn.fixedPoint).x, 24.0, 1e-9);
  EXPECT_NEAR(view.At(drawn.fixedPoint).y, 24.0, 1e-9);
  // The triangles of the box reach sqrt(2), and those of the slab further, but less than 6 times.
  EXPECT_GT(DetailRadius(view) / drawn.size, 1.4 / std::sqrt(29.0));
}

TEST(Detail, IsAtLeastTwoAndAHalfTimesTheSideView) {
  const Sample sample = FallingBox();
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  EXPECT_GE(DetailView(sample.scene, drawn, panel, 1000.0).scale, 2500.0);
}

TEST(Detail, LargeTriangleBesideASmallOneIsCut) {
  Sample sample(BoxCorners({0, 0, 3}, {0.001, 0.001, 3.001}), {BoxCorners({-9, -9, 0}, {9, 9, 1})},
                {0, 0, -1});
  sample.Ask();
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  const double size = std::sqrt(18.0 * 18.0 * 2.0 + 3.001 * 3.001);
  EXPECT_LT(DetailRadius(DetailView(sample.scene, drawn, panel, 1.0)) / drawn.size, 0.011 / size);
}

TEST(Detail, LegendNamesTrianglesPointAndNormal) {
  Sample sample = FallingBox();
  sample.scene.answer.contact.hasNormal = true;
  sample.scene.answer.contact.normal = {0, 0, 1};
  const std::string text = LegendOf(sample);
  const auto& contact = sample.scene.answer.contact;
  const auto has = [&](const std::string& words) { return text.find(words) != std::string::npos; };
  EXPECT_TRUE(has("triangle " + std::to_string(contact.movingTriangle) + " of 12")) << text;
  EXPECT_TRUE(has("triangle " + std::to_string(contact.fixedTriangle) + " of 12"));
  EXPECT_TRUE(has("(0.25, 0.25, 1)"));
  EXPECT_TRUE(has("normal n"));
  EXPECT_TRUE(has("(0, 0, 1)"));
  EXPECT_FALSE(has("patch"));
}

TEST(Detail, LegendOfInsideAndOfAPatch) {
  Sample inside(BoxCorners({0.4, 0.4, 0.4}, {0.6, 0.6, 0.6}), {BoxCorners({0, 0, 0}, {1, 1, 1})},
                {0, 0, 1});
  inside.scene.question.rule = gsl_sweep::Rule::Solid;
  const std::string text = LegendOf(inside.Ask());
  EXPECT_NE(text.find("one body is inside the other"), std::string::npos) << text;
  EXPECT_EQ(CountOf(text, "triangle 0 of 12"), 1u);
  Sample patch = FallingBox();
  patch.Ask(true);
  EXPECT_NE(LegendOf(patch).find(std::to_string(patch.scene.pairCount) + " pairs of triangles"),
            std::string::npos);
}

TEST(Detail, TriangleWithoutExtentHasAView) {
  Sample sample({1, 1, 5, 1, 1, 5, 1, 1, 5}, {{1, 1, 0, 1, 1, 0, 1, 1, 0}}, {0, 0, -1});
  sample.Ask();
  ASSERT_EQ(sample.scene.answer.contact.travel, 5.0);
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  const View view = DetailView(sample.scene, drawn, panel, 1.0);
  EXPECT_TRUE(std::isfinite(view.scale));
  EXPECT_GT(view.scale, 0.0);
}
