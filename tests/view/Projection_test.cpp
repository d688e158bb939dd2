#include "Projection.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace gsl_view;
using gsl_arithmetic::Cross;
using gsl_arithmetic::Dot;

namespace {

void ExpectNear(const Coord3& a, const Coord3& b) {
  EXPECT_NEAR(a.x, b.x, 1e-12);
  EXPECT_NEAR(a.y, b.y, 1e-12);
  EXPECT_NEAR(a.z, b.z, 1e-12);
}

void ExpectRightHanded(const Axes& axes) {
  for (const Coord3& axis : {axes.right, axes.up, axes.toward})
    EXPECT_NEAR(gsl_arithmetic::Length(axis), 1.0, 1e-12);
  EXPECT_NEAR(Dot(axes.right, axes.up), 0.0, 1e-12);
  ExpectNear(Cross(axes.right, axes.up), axes.toward);
}

const Coord3 directions[] = {{1, 0, 0},  {-1, 0, 0}, {0, 1, 0}, {0, -1, 0},        {0, 0, 1},
                             {0, 0, -1}, {1, 2, 3},  {3, 2, 1}, {-1, 0.001, -0.9}, {-1, 1, -1}};

} // namespace

TEST(Projection, UnitHasLengthOneForEverySize) {
  ExpectNear(Unit({3e200, 4e200, 0}), {0.6, 0.8, 0});
  ExpectNear(Unit({0, 3e-200, -4e-200}), {0, 0.6, -0.8});
}

TEST(Projection, AxesLookDownOntoXyWithYUp) {
  const Axes axes = AxesToward({0, 0, 1});
  ExpectNear(axes.right, {1, 0, 0});
  ExpectNear(axes.up, {0, 1, 0});
}

TEST(Projection, FrontViewHasXToTheRightAndZUp) {
  const Axes axes = AxesToward({0, -1, 0});
  ExpectNear(axes.right, {1, 0, 0});
  ExpectNear(axes.up, {0, 0, 1});
}

TEST(Projection, SideViewIsAcrossTheDirectionAndAlongThePage) {
  for (const Coord3& direction : directions) {
    const Coord3 d = Unit(direction);
    const Axes axes = SideAxes(d);
    ExpectRightHanded(axes);
    EXPECT_NEAR(Dot(axes.toward, d), 0.0, 1e-12);
    const double upright = std::fabs(Dot(axes.up, d));
    EXPECT_NEAR(upright, std::fabs(d.z) > std::sqrt(0.5) ? 1.0 : 0.0, 1e-12);
    EXPECT_GE(axes.up.z, -1e-12) << "the z axis does not point down";
  }
}

TEST(Projection, IsometricViewIsFromAboveAndNeverAlongTheDirection) {
  for (const Coord3& direction : directions) {
    const Axes axes = IsometricAxes(Unit(direction));
    ExpectRightHanded(axes);
    EXPECT_NEAR(axes.toward.z, std::sqrt(1.0 / 3.0), 1e-12);
    EXPECT_LT(std::fabs(Dot(axes.toward, Unit(direction))), 0.9);
  }
}

TEST(Projection, DetailIsTurnedUntilItShowsBothTriangles) {
  const Axes front = AxesToward({0, -1, 0});
  const Coord3 none{0, 0, 0};
  const Coord3 seen[2] = {{0, 1, 0}, none};
  EXPECT_EQ(AxesThatShow(seen, none, front).toward.y, -1.0) << "good enough as it is";
  // Both triangles, and the normal, are seen edge-on or end-on from the front.
  const Coord3 hidden[2] = {{1, 0, 0}, {0, 0, 1}};
  const Coord3 line{0, 1, 0};
  const Axes axes = AxesThatShow(hidden, line, front);
  ExpectRightHanded(axes);
  EXPECT_GT(std::fabs(axes.toward.x), 0.35);
  EXPECT_GT(std::fabs(axes.toward.z), 0.35);
  EXPECT_GT(std::hypot(Dot(axes.right, line), Dot(axes.up, line)), 0.35);
}

TEST(Projection, BoxHoldsWhatIsAdded) {
  ViewBox box;
  EXPECT_TRUE(box.isEmpty);
  box.Add(ViewBox());
  EXPECT_TRUE(box.isEmpty);
  box.Add(2.0, -3.0);
  box.Add(-1.0, 5.0);
  ViewBox both = box.Moved(10.0, 20.0);
  both.Add(box);
  EXPECT_EQ(both.left, -1.0);
  EXPECT_EQ(both.right, 12.0);
  EXPECT_EQ(both.bottom, -3.0);
  EXPECT_EQ(both.top, 25.0);
}

TEST(Projection, FittedViewFillsThePanel) {
  ViewBox box;
  box.Add(0.0, 0.0);
  box.Add(4.0, 1.0);
  const View view = FitView(AxesToward({0, -1, 0}), box, {10, 20, 90, 100});
  EXPECT_EQ(view.scale, 20.0);
  const PagePoint low = view.At({0, 7, 0}), high = view.At({4, -7, 1});
  EXPECT_NEAR(low.x, 10.0, 1e-12);
  EXPECT_NEAR(high.x, 90.0, 1e-12);
  EXPECT_NEAR(low.y, 70.0, 1e-12);
  EXPECT_NEAR(high.y, 50.0, 1e-12);
  EXPECT_EQ(view.Depth({0, -1, 0}), 20.0) << "nearer in front";
}

TEST(Projection, BoxWithoutExtentHasAScale) {
  ViewBox box;
  box.Add(3.0, 4.0);
  const View view = FitView(AxesToward({0, -1, 0}), box, {0, 0, 10, 10});
  EXPECT_EQ(view.scale, 1.0);
  EXPECT_EQ(view.At({3, 0, 4}).x, 5.0);
}
