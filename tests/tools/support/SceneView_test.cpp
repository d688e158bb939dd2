#include "support/SceneView.h"

#include "support/MeshView.h"

#include <gtest/gtest.h>

using namespace gsl_tools;

TEST(SceneView, PlacedCornersHaveTheOffset) {
  const std::vector<double> numbers = {0, 0, 0, 1, 0, 0, 0, 1, 0};
  const Body body(ViewOf(numbers));
  const std::vector<double> expected = {10, 20, 30, 11, 20, 30, 10, 21, 30};
  EXPECT_EQ(PlacedCorners(body, {10, 20, 30}), expected);
}

TEST(SceneView, SceneHasWhatTheReportHas) {
  const std::vector<double> numbers = {0, 0, 0, 1, 0, 0, 0, 1, 0};
  SweepReport report;
  report.movingFile = "-";
  report.fixed = {{"a\nb.stl", {}}, {"c.stl", {}}};
  report.last = true;
  report.toolVersion = "7.8.9";
  report.answer.contact.travel = 5.0;
  report.patch = PatchReport{3, {}, {}, {report.answer.contact}};
  gsl_sweep::Question question;
  question.maxDistance = 6.0;
  const gsl_view::ViewScene scene =
      ViewSceneOf(report, question, {ViewOf(numbers), {}, ViewOf(numbers)});
  EXPECT_EQ(scene.moving.name, "standard input");
  EXPECT_EQ(scene.moving.triangles.triangleCount, 1u);
  ASSERT_EQ(scene.fixed.size(), 2u);
  EXPECT_EQ(scene.fixed[0].name, "a?b.stl");
  EXPECT_EQ(scene.fixed[1].triangles.vertices, numbers.data());
  EXPECT_TRUE(scene.last);
  EXPECT_EQ(scene.toolVersion, "7.8.9");
  EXPECT_EQ(scene.answer.contact.travel, 5.0);
  EXPECT_EQ(scene.question.maxDistance, 6.0);
  EXPECT_EQ(scene.pairCount, 3u);
  EXPECT_EQ(scene.patch.size(), 1u);
}
