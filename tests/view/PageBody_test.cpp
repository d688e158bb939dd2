#include "PageBody.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using gsl_arithmetic::Coord3;
using gsl_sweep::TriangleView;
using gsl_view::PageBody;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TriangleView ViewOf(const std::vector<double>& numbers) {
  TriangleView view;
  view.vertices = numbers.data();
  view.vertexCount = numbers.size() / 3;
  view.triangleCount = numbers.size() / 9;
  return view;
}

/// Two triangles of a square from (0, 0, 0) to (side, side, 0), at an offset along x.
std::vector<double> Square(double side, double x = 0.0) {
  return {x, 0, 0, x + side, 0,    0, x + side, side, 0, //
          x, 0, 0, x + side, side, 0, x,        side, 0};
}

/// Returns the greatest difference of a coordinate from its place in the page, in parts of scale.
double WorstError(const std::vector<double>& numbers, const PageBody& body) {
  const double centre[] = {body.centre.x, body.centre.y, body.centre.z};
  double worst = 0.0;
  for (std::size_t k = 0; k < numbers.size(); ++k) {
    const std::size_t vertex = body.triangles.at(k / 3);
    const double drawn = double{body.vertices.at(3 * vertex + k % 3)};
    worst =
        std::max(worst, std::fabs((numbers[k] / body.scale - centre[k % 3] / body.scale) - drawn));
  }
  return worst;
}

TEST(PageBody, SharesVerticesAndPlacesThemByTheCentre) {
  const std::vector<double> square = Square(3.0);
  const PageBody body = PageBody::Of(ViewOf(square));
  EXPECT_EQ(body.centre.x, 1.5);
  EXPECT_EQ(body.centre.y, 1.5);
  EXPECT_EQ(body.centre.z, 0.0);
  EXPECT_EQ(body.scale, 2.0); // the least power of two above 1.5
  EXPECT_EQ(body.vertices, (std::vector<float>{-0.75f, -0.75f, 0, 0.75f, -0.75f, 0, 0.75f, 0.75f, 0,
                                               -0.75f, 0.75f, 0}));
  EXPECT_EQ(body.triangles, (std::vector<std::uint32_t>{0, 1, 2, 0, 2, 3}));
  EXPECT_TRUE(body.numbers.empty());
  EXPECT_EQ(body.NumberOf(1), 1u);
}

TEST(PageBody, ReadsNumbersOfVertices) {
  const std::vector<double> vertices = {9, 9, 9, 0, 0, 0, 2, 0, 0, 0, 2, 0};
  const std::uint32_t corners[] = {1, 2, 3, 3, 2, 1};
  TriangleView view;
  view.vertices = vertices.data();
  view.vertexCount = 4;
  view.corners = corners;
  view.triangleCount = 2;
  const PageBody body = PageBody::Of(view);
  // The first vertex belongs to no triangle.
  EXPECT_EQ(body.centre.x, 1.0);
  EXPECT_EQ(body.vertices.size(), 9u);
  EXPECT_EQ(body.triangles, (std::vector<std::uint32_t>{0, 1, 2, 2, 1, 0}));
}

TEST(PageBody, LeavesOutTrianglesThatAreNotFiniteAndKeepsTheirNumbers) {
  std::vector<double> numbers = Square(2.0);
  const std::vector<double> broken = {kNan, 0, 0, 1, 0, 0, 0, 1, 0};
  std::vector<double> endless = broken;
  endless[0] = std::numeric_limits<double>::infinity();
  numbers.insert(numbers.begin() + 9, broken.begin(), broken.end());
  numbers.insert(numbers.end(), endless.begin(), endless.end());
  const PageBody body = PageBody::Of(ViewOf(numbers));
  EXPECT_EQ(body.TriangleCount(), 2u);
  EXPECT_EQ(body.numbers,
            (std::vector<std::uint32_t>{0, PageBody::kLeftOut, 1, PageBody::kLeftOut}));
  EXPECT_EQ(body.NumberOf(0), 0u);
  EXPECT_EQ(body.NumberOf(2), 1u);
  EXPECT_EQ(body.NumberOf(3), PageBody::kLeftOut);
  EXPECT_EQ(body.centre.x, 1.0);

  const PageBody none = PageBody::Of(ViewOf(broken));
  EXPECT_EQ(none.TriangleCount(), 0u);
  EXPECT_EQ(none.scale, 1.0);
}

TEST(PageBody, KeepsTheShapeAtAnySizeAndPlace) {
  for (const double side : {3.0, 3e-300, 3e150, 1.5e308, 3e-322}) {
    const std::vector<double> numbers = Square(side);
    const PageBody body = PageBody::Of(ViewOf(numbers));
    EXPECT_EQ(body.vertices.size(), 12u) << side;
    EXPECT_LE(WorstError(numbers, body), 0x1p-24) << side;
    for (const float number : body.vertices)
      EXPECT_LE(std::fabs(number), 1.0f) << side;
  }
  // Far from zero the place is exact where the doubles are.
  const std::vector<double> far = Square(3.0, 0x1p40);
  const PageBody body = PageBody::Of(ViewOf(far));
  EXPECT_EQ(body.centre.x, 0x1p40 + 1.5);
  EXPECT_EQ(WorstError(far, body), 0.0);
}

TEST(PageBody, ReachesFromOneEndOfTheRangeToTheOther) {
  const double most = std::numeric_limits<double>::max();
  const std::vector<double> numbers = {-most, 0, 0, most, 0, 0, 0, 1, 0};
  const PageBody body = PageBody::Of(ViewOf(numbers));
  EXPECT_EQ(body.scale, 0x1p1023);
  EXPECT_EQ(body.vertices[0], -2.0f);
  EXPECT_EQ(body.vertices[3], 2.0f);
}

TEST(PageBody, PlacesABodyBesideTheEndOfTheRange) {
  const std::vector<double> numbers = {1.5e308, 0, 0, 1.75e308, 0, 0, 1.75e308, 1e307, 0};
  const PageBody body = PageBody::Of(ViewOf(numbers));
  EXPECT_EQ(body.centre.x, 0.5 * 1.5e308 + 0.5 * 1.75e308);
  EXPECT_LE(WorstError(numbers, body), 0x1p-24);
}

TEST(PageBody, VerticesThatDifferInOneNumberStayApart) {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    std::vector<double> numbers(9 * 4096, 0.5);
    for (std::size_t k = 0; k < 3 * 4096; ++k)
      numbers[3 * k + axis] = static_cast<double>(k);
    const PageBody body = PageBody::Of(ViewOf(numbers));
    EXPECT_EQ(body.vertices.size(), numbers.size()) << axis;
    EXPECT_LE(WorstError(numbers, body), 0x1p-24) << axis;
  }
}

TEST(PageBody, AScaleIsMoreThanHalfTheLongestSide) {
  for (const double side : {4.0, std::nextafter(4.0, 0.0), std::nextafter(4.0, 5.0)}) {
    const std::vector<double> numbers = Square(side);
    EXPECT_EQ(PageBody::Of(ViewOf(numbers)).scale, side < 4.0 ? 2.0 : 4.0);
  }
}

TEST(PageBody, ZerosOfBothSignsAreOneVertex) {
  const std::vector<double> numbers = {0.0,  1, 0,    1, -1, 0, -1, -1, 0, //
                                       -0.0, 1, -0.0, 1, -1, 0, -1, -1, -0.0};
  EXPECT_EQ(PageBody::Of(ViewOf(numbers)).vertices.size(), 9u);
}

TEST(PageBody, PlacesAPoint) {
  const std::vector<double> square = Square(3.0);
  float place[3] = {9, 9, 9};
  PageBody::Of(ViewOf(square)).Place({3.0, 1.5, -1.0}, place);
  EXPECT_EQ(place[0], 0.75f);
  EXPECT_EQ(place[1], 0.0f);
  EXPECT_EQ(place[2], -0.5f);
}

} // namespace
