#include "support/SceneView.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace {

using namespace gsl_tools;
using gsl_sweep::TriangleView;

TEST(SceneView, PlacedCornersHaveTheOffset) {
  const double kNan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> numbers = {0, 1, 2, 3, 4, 5, 6, 7, 9, kNan, 0, 0, 1, 0, 0, 0, 1, 0};
  TriangleView view;
  view.vertices = numbers.data();
  view.vertexCount = 6;
  view.triangleCount = 2;
  const std::vector<double> placed = PlacedCorners(Body(view), {10.0, 20.0, 30.0});
  ASSERT_EQ(placed.size(), 18u);
  EXPECT_EQ(std::vector<double>(placed.begin(), placed.begin() + 9),
            (std::vector<double>{10, 21, 32, 13, 24, 35, 16, 27, 39}));
  for (std::size_t k = 9; k < 18; ++k)
    EXPECT_TRUE(std::isnan(placed[k])) << k;
}

TEST(SceneView, ASceneHoldsWhatTheReportSays) {
  SweepReport report;
  report.movingFile = "-";
  report.fixed = {{"a\n.stl", {}}, {"b.stl", {}}};
  report.last = true;
  report.toolVersion = "1.2.3";
  report.answer.contact.travel = 7.0;
  std::vector<TriangleView> surfaces(3);
  for (std::size_t k = 0; k < 3; ++k)
    surfaces[k].triangleCount = k + 1;
  gsl_sweep::Question question;
  question.clearance = 0.5;

  gsl_view::ViewScene scene = ViewSceneOf(report, question, surfaces);
  EXPECT_EQ(scene.moving.name, "standard input");
  EXPECT_EQ(scene.moving.triangles.triangleCount, 1u);
  ASSERT_EQ(scene.fixed.size(), 2u);
  EXPECT_EQ(scene.fixed[0].name, "a?.stl");
  EXPECT_EQ(scene.fixed[0].triangles.triangleCount, 2u);
  EXPECT_EQ(scene.fixed[1].name, "b.stl");
  EXPECT_EQ(scene.fixed[1].triangles.triangleCount, 3u);
  EXPECT_TRUE(scene.last);
  EXPECT_EQ(scene.toolVersion, "1.2.3");
  EXPECT_EQ(scene.answer.contact.travel, 7.0);
  EXPECT_EQ(scene.question.clearance, 0.5);
  EXPECT_EQ(scene.pairCount, 0u);

  EXPECT_EQ(scene.changes, "");
  report.allowance = -0.25;
  report.pose = gsl_Matrix();
  report.offset = {0.0, 1.0, 2.0};
  scene = ViewSceneOf(report, question, surfaces);
  EXPECT_EQ(scene.changes, "grown by -0.25, posed, moved by (0, 1, 2)");

  scene = SceneWithoutAnswer(report, question, surfaces);
  EXPECT_EQ(scene.moving.name, "standard input");
  EXPECT_EQ(scene.changes, "grown by -0.25, posed, moved by (0, 1, 2)");
  EXPECT_EQ(scene.answer.contact.travel, 0.0);

  report.patch = PatchReport{};
  report.patch->pairCount = 12;
  report.patch->listed.resize(3);
  scene = ViewSceneOf(report, question, surfaces);
  EXPECT_EQ(scene.pairCount, 12u);
  EXPECT_EQ(scene.patch.size(), 3u);
}

} // namespace
