#include "kernel/Triangle.h"

#include "RandomNumbers.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using gsl_kernel::Coord3;

constexpr double kTolerance = 1e-6;

struct Triangle {
  Coord3 p[3];
};

Triangle RightAngled(double side) {
  return {{{0.0, 0.0, 0.0}, {side, 0.0, 0.0}, {0.0, side, 0.0}}};
}

bool ByWeights(const Triangle& t, const Coord3& x) {
  double weights[3];
  return gsl_kernel::PointInTriangle(x, t.p[0], t.p[1], t.p[2], kTolerance, weights);
}

bool ByTest(const Triangle& t, const Coord3& x) {
  return gsl_kernel::TriangleTest(t.p[0], t.p[1], t.p[2], kTolerance).Contains(x);
}

/// Without the division and the multiplication that undo each other but for rounding.
bool WithoutRounding(const Triangle& t, const Coord3& x) {
  const gsl_kernel::Corner corner = gsl_kernel::CornerAt(t.p[2], t.p[0], t.p[1]);
  return !(gsl_kernel::ScaledWeight(x, corner) < -(kTolerance * kTolerance));
}

TEST(TriangleTest, AnswersAsTheWeightsDoWithinRoundingOfTheLimit) {
  RandomNumbers random(0x7719);
  long inside = 0;
  long outside = 0;
  long roundingDecides = 0;
  for (int i = 0; i < 200000; ++i) {
    const double side = random.In(0.5, 2.0);
    const Triangle t = RightAngled(side);
    const double limit = kTolerance * kTolerance / (side * side * side);
    const double beyond = limit * (1.0 + (random.Below(9) - 4) * 0x1p-52);
    const Coord3 x = {side / 2, -beyond, 0.0};
    const bool answer = ByWeights(t, x);
    ASSERT_EQ(ByTest(t, x), answer) << "case " << i;
    ++(answer ? inside : outside);
    if (WithoutRounding(t, x) != answer) ++roundingDecides;
  }
  EXPECT_GT(inside, 1000);
  EXPECT_GT(outside, 1000);
  EXPECT_GT(roundingDecides, 100);
}

TEST(TriangleTest, AnswersAsTheWeightsDoAnywhere) {
  RandomNumbers random(0x7720);
  const auto any = [&random] {
    return Coord3{random.In(-1.0, 1.0), random.In(-1.0, 1.0), random.In(-1.0, 1.0)};
  };
  for (int i = 0; i < 20000; ++i) {
    const Triangle t = {{any(), any(), any()}};
    const Coord3 x = any();
    EXPECT_EQ(ByTest(t, x), ByWeights(t, x)) << "case " << i;
  }
}

TEST(TriangleTest, SquaredAreaThatOverflowsContainsEverything) {
  // A weight of 0 times infinity is no number, and no number is too small.
  const Triangle t = RightAngled(1e80);
  EXPECT_TRUE(ByWeights(t, {5e79, -1e80, 0.0}));
  EXPECT_TRUE(ByTest(t, {5e79, -1e80, 0.0}));
}

TEST(TriangleTest, SquaredAreaThatUnderflowsContainsEverything) {
  const Triangle t = RightAngled(1e-100);
  EXPECT_TRUE(ByWeights(t, {5e-101, -1e290, 0.0}));
  EXPECT_TRUE(ByTest(t, {5e-101, -1e290, 0.0}));
}

TEST(TriangleTest, NaNIsInside) {
  const Triangle t = RightAngled(1.0);
  EXPECT_TRUE(ByTest(t, {std::nan(""), 0.0, 0.0}));
  EXPECT_TRUE(
      ByTest({{{std::nan(""), 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}}}, {9.0, 9.0, 0.0}));
}

} // namespace
