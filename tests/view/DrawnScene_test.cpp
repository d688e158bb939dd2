#include "DrawnScene.h"

#include "ViewSamples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

using namespace gsl_view;
using namespace view_samples;
using gsl_arithmetic::Subtract;

namespace {

double Distance(const Coord3& a, const Coord3& b) {
  return gsl_arithmetic::Length(Subtract(a, b));
}

} // namespace

TEST(DrawnScene, BodiesAreAtTheContactAndHaveASizeOfAboutOne) {
  const Sample sample = FallingBox();
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  EXPECT_TRUE(drawn.touches);
  EXPECT_FALSE(drawn.isShortened);
  EXPECT_EQ(drawn.moving.corners.size(), 36u);
  EXPECT_EQ(drawn.fixed.isMarked.size(), 12u);
  EXPECT_GE(drawn.size, 0.5);
  EXPECT_LE(drawn.size, 1.0);
  EXPECT_LT(Distance(drawn.movingPoint, drawn.fixedPoint), 1e-12);
  // The box around both is 4 by 3 by 2 in the files, and the travel is 2.
  EXPECT_NEAR(drawn.travel / drawn.size, 2.0 / std::sqrt(29.0), 1e-12);
  const ViewBox moving = BoxOf(drawn.moving, AxesToward({0, -1, 0}));
  const ViewBox fixed = BoxOf(drawn.fixed, AxesToward({0, -1, 0}));
  EXPECT_NEAR(moving.bottom, fixed.top, 1e-12);
  EXPECT_NEAR((moving.left - fixed.left) / (fixed.right - fixed.left), 1.25 / 4.0, 1e-12);
}

TEST(DrawnScene, EverySizeOfNumbersIsDrawnAlike) {
  const DrawnScene one = MakeDrawnScene(FallingBox().scene);
  for (const double scale : {1e150, 1e-150, 1e307, 1e-300, 1e-310}) {
    SCOPED_TRACE(scale);
    const Sample sample = FallingBox(scale);
    const DrawnScene drawn = MakeDrawnScene(sample.scene);
    EXPECT_NEAR(drawn.travel / drawn.size, one.travel / one.size, 1e-9);
    ASSERT_EQ(drawn.moving.corners.size(), one.moving.corners.size());
    for (std::size_t k = 0; k < one.moving.corners.size(); ++k) {
      EXPECT_NEAR(drawn.moving.corners[k].x / drawn.size, one.moving.corners[k].x / one.size, 1e-9);
      EXPECT_NEAR(drawn.moving.corners[k].z / drawn.size, one.moving.corners[k].z / one.size, 1e-9);
    }
  }
}

TEST(DrawnScene, LongTravelLosesNothingAndIsDrawnShorter) {
  Sample sample(BoxCorners({0, 0, 1e12}, {1, 1, 1e12 + 1}), {BoxCorners({-1, -1, 0}, {2, 2, 1})},
                {0, 0, -1});
  sample.Ask();
  ASSERT_EQ(sample.scene.answer.contact.travel, 1e12 - 1);
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  EXPECT_TRUE(drawn.isShortened);
  EXPECT_EQ(drawn.travel, 2.0 * drawn.size);
  const ViewBox moving = BoxOf(drawn.moving, AxesToward({0, -1, 0}));
  const ViewBox fixed = BoxOf(drawn.fixed, AxesToward({0, -1, 0}));
  EXPECT_EQ(moving.top - moving.bottom, fixed.top - fixed.bottom);
  EXPECT_EQ(moving.bottom, fixed.top);
}

TEST(DrawnScene, WithoutContactBodiesAreWhereTheyWere) {
  Sample sample = FallingBox();
  sample.scene.question.direction = {0, 0, 1};
  sample.Ask();
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  EXPECT_FALSE(drawn.touches);
  EXPECT_EQ(drawn.travel, 0.0);
  EXPECT_TRUE(drawn.movingTriangles.empty());
  const ViewBox moving = BoxOf(drawn.moving, AxesToward({0, -1, 0}));
  const ViewBox fixed = BoxOf(drawn.fixed, AxesToward({0, -1, 0}));
  EXPECT_NEAR((moving.bottom - fixed.top) / (fixed.top - fixed.bottom), 2.0, 1e-12);
}

TEST(DrawnScene, TrianglesThatAreNotFiniteAndUnusedVerticesAreLeftOut) {
  std::vector<double> moving = BoxCorners({0, 0, 3}, {1, 1, 4});
  moving[9] = std::numeric_limits<double>::quiet_NaN();
  moving[100] = std::numeric_limits<double>::infinity();
  Sample sample(moving, {BoxCorners({-1, -1, 0}, {2, 2, 1})}, {0, 0, -1});
  // The same triangles by numbers, with a vertex that none uses.
  std::vector<double> vertices = moving;
  vertices.insert(vertices.end(), {1e300, 1e300, 1e300});
  std::vector<std::uint32_t> numbers(36);
  std::iota(numbers.begin(), numbers.end(), 0u);
  sample.scene.moving.triangles = {vertices.data(), 37, numbers.data(), 12};
  sample.Ask();
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  EXPECT_EQ(drawn.moving.corners.size(), 30u);
  EXPECT_LE(drawn.size, 1.0);
  EXPECT_GT(drawn.travel, 0.1);
}

TEST(DrawnScene, ClearanceKeepsTheBodiesApart) {
  Sample sample = FallingBox();
  sample.scene.question.clearance = 0.5;
  sample.Ask();
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  EXPECT_NEAR(drawn.travel / Distance(drawn.movingPoint, drawn.fixedPoint), 1.5 / 0.5, 1e-9);
  const ViewBox moving = BoxOf(drawn.moving, AxesToward({0, -1, 0}));
  const ViewBox fixed = BoxOf(drawn.fixed, AxesToward({0, -1, 0}));
  EXPECT_NEAR((moving.bottom - fixed.top) / (fixed.top - fixed.bottom), 0.5, 1e-9);
}

TEST(DrawnScene, PatchIsMarkedByTheNumbersOfTheFiles) {
  std::vector<double> moving = BoxCorners({0.25, 0.25, 3}, {1.25, 1.25, 4});
  std::fill_n(moving.begin() + 2 * 9, 9, std::numeric_limits<double>::quiet_NaN());
  Sample sample(moving, {BoxCorners({9, 9, 9}, {10, 10, 10}), BoxCorners({-1, -1, 0}, {3, 2, 1})},
                {0, 0, -1});
  sample.Ask(true);
  ASSERT_GT(sample.scene.pairCount, 0u);
  const DrawnScene drawn = MakeDrawnScene(sample.scene);
  // Triangles 0 and 1 are the lower side, and 2 is not drawn. The upper side of the second fixed
  // body has its triangles 2 and 3.
  EXPECT_EQ(drawn.moving.isMarked[0] + drawn.moving.isMarked[1], 2);
  EXPECT_EQ(drawn.moving.isMarked[2], 0) << "triangle 3 of the upper side";
  EXPECT_EQ(std::count(drawn.fixed.isMarked.begin(), drawn.fixed.isMarked.begin() + 12, 1), 0);
  EXPECT_EQ(drawn.fixed.isMarked[14] + drawn.fixed.isMarked[15], 2);
  EXPECT_EQ(drawn.fixed.isMarked[12], 0);
}

TEST(DrawnScene, InsideHasNoTriangleOfTheOtherBody) {
  for (const bool movingIsInside : {true, false}) {
    const std::vector<double> small = BoxCorners({0.4, 0.4, 0.4}, {0.6, 0.6, 0.6});
    const std::vector<double> large = BoxCorners({0, 0, 0}, {1, 1, 1});
    Sample sample(movingIsInside ? small : large, {movingIsInside ? large : small}, {0, 0, 1});
    sample.scene.question.rule = gsl_sweep::Rule::Solid;
    sample.Ask();
    ASSERT_EQ(sample.scene.answer.contact.kind, gsl_sweep::ContactKind::Inside);
    const DrawnScene drawn = MakeDrawnScene(sample.scene);
    EXPECT_EQ(drawn.movingTriangles.size(), movingIsInside ? 1u : 0u);
    EXPECT_EQ(drawn.fixedTriangles.size(), movingIsInside ? 0u : 1u);
    EXPECT_EQ(drawn.hidesFixed, !movingIsInside);
  }
}
