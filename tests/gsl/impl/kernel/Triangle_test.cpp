#include "kernel/Triangle.h"

#include "Numbers.h"
#include "RandomNumbers.h"
#include "TestScale.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using gsl_kernel::Coord3;
using numbers::Below;
using numbers::kSentinel;

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

struct Weights {
  double of[4] = {kSentinel, kSentinel, kSentinel, kSentinel};
  bool inside;

  Weights(const Coord3& x, const Triangle& t, double tolerance)
      : inside(gsl_kernel::PointInTriangle(x, t.p[0], t.p[1], t.p[2], tolerance, of)) {}
};

TEST(PointInTriangle, WeightsBelongToTheirCornersInEveryOrder) {
  // (1, 1) = 1/2 (0, 0) + 1/4 (4, 0) + 1/4 (0, 4).
  const Coord3 corner[3] = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}};
  const double expected[3] = {0.5, 0.25, 0.25};
  const int orders[6][3] = {{0, 1, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}, {1, 0, 2}, {0, 2, 1}};
  for (const auto& order : orders) {
    const Triangle t = {{corner[order[0]], corner[order[1]], corner[order[2]]}};
    const Weights weights({1, 1, 0}, t, kTolerance);
    EXPECT_TRUE(weights.inside);
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(weights.of[i], expected[order[i]]);
  }
}

TEST(PointInTriangle, WeightTimesSquaredAreaIsComparedWithTheSquaredTolerance) {
  // The doubled area of the triangle with legs of 1 is 1: the weight is the distance itself.
  const Triangle t = RightAngled(1.0);
  EXPECT_TRUE(Weights({0.5, -0.0625, 0.0}, t, 0.25).inside);
  EXPECT_FALSE(Weights({0.5, Below(-0.0625), 0.0}, t, 0.25).inside);
  EXPECT_TRUE(Weights({-0.0625, 0.5, 0.0}, t, 0.25).inside);
  EXPECT_FALSE(Weights({Below(-0.0625), 0.5, 0.0}, t, 0.25).inside);
}

TEST(PointInTriangle, EachWeightIsDividedByTheSquareOfItsOwnNormal) {
  RandomNumbers random(0x7718);
  for (int i = 0; i < 1000; ++i) {
    Triangle t = {};
    for (Coord3& p : t.p) {
      for (double* const c : {&p.x, &p.y, &p.z})
        *c = random.In(-1.0, 1.0);
    }
    const Coord3 x = {0.25, 0.5, 0.125};
    const Weights weights(x, t, kTolerance);
    for (int k = 0; k < 3; ++k) {
      const Coord3 &at = t.p[k], &next = t.p[(k + 1) % 3], &last = t.p[(k + 2) % 3];
      using gsl_kernel::Cross;
      using gsl_kernel::Subtract;
      const Coord3 normal = Cross(Subtract(next, at), Subtract(at, last));
      const Coord3 part = Cross(Subtract(next, x), Subtract(x, last));
      EXPECT_EQ(weights.of[k], gsl_kernel::Dot(part, normal) / gsl_kernel::Dot(normal, normal));
    }
  }
}

TEST(PointInTriangle, AllWeightsAreWrittenWithFalse) {
  const Weights weights({2.0, -3.0, 0.0}, RightAngled(1.0), kTolerance);
  EXPECT_FALSE(weights.inside);
  EXPECT_EQ(weights.of[0], 2.0);
  EXPECT_EQ(weights.of[1], 2.0);
  EXPECT_EQ(weights.of[2], -3.0);
  EXPECT_EQ(weights.of[3], kSentinel);
}

TEST(PointInTriangle, TriangleWithoutAreaHoldsEveryPointWithWeightsOfNaN) {
  const Weights weights({9, 9, 9}, {{{0, 0, 0}, {1, 0, 0}, {3, 0, 0}}}, kTolerance);
  EXPECT_TRUE(weights.inside);
  for (int i = 0; i < 3; ++i)
    EXPECT_FALSE(std::isfinite(weights.of[i]));
}

/// Tests without the division and the multiplication, which cancel except for rounding.
bool WithoutRounding(const Triangle& t, const Coord3& x) {
  const gsl_kernel::Corner corner = gsl_kernel::CornerAt(t.p[2], t.p[0], t.p[1]);
  return !(gsl_kernel::ScaledWeight(x, corner) < -(kTolerance * kTolerance));
}

TEST(TriangleTest, AgreesWithTheWeightsWithinRoundingOfTheLimit) {
  RandomNumbers random(0x7719);
  long inside = 0;
  long outside = 0;
  long roundingDecides = 0;
  for (int i = 0; i < 200000; ++i) {
    const double side = random.In(0.5, 2.0);
    Triangle t = RightAngled(side);
    // The three normals have the same length, which is rounded in three ways.
    t.p[2].x = random.In(0.0, side);
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

TEST(TriangleTest, AgreesWithTheWeightsAnywhere) {
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

TEST(TriangleTest, AgreesWithTheWeightsForEveryToleranceAndSize) {
  RandomNumbers random(0x7721);
  long inside = 0, outside = 0;
  for (long i = 0; i < Scaled(400000); ++i) {
    // The weights of x are about the square of the tolerance, wherever both can be represented.
    const double exponent = i % 2 == 0 ? random.In(-1.0, 1.0) : random.In(-60.0, 60.0);
    const double side = std::pow(10.0, exponent);
    const double tolerances[6] = {0.0,   1e-6 * side,        std::pow(10.0, random.In(-95.0, 3.0)),
                                  -1e-3, numbers::kInfinity, numbers::kNaN};
    const double tolerance = tolerances[random.Below(6)];
    const Triangle t = RightAngled(side);
    const double near = tolerance * tolerance / (side * side * side);
    const double beyond = random.Chance(0.5) ? near * (1.0 + random.In(-2.0, 2.0) * 0x1p-45)
                                             : near * random.In(-1.0, 3.0);
    const Coord3 x = {side / 2, -beyond, 0.0};
    double weights[3];
    const bool answer = gsl_kernel::PointInTriangle(x, t.p[0], t.p[1], t.p[2], tolerance, weights);
    const gsl_kernel::TriangleTest test(t.p[0], t.p[1], t.p[2], tolerance);
    ASSERT_EQ(test.Contains(x), answer) << "case " << i << ", side " << side << ", tolerance "
                                        << tolerance << ", beyond " << beyond;
    ++(answer ? inside : outside);
  }
  EXPECT_GT(inside, Scaled(10000));
  EXPECT_GT(outside, Scaled(10000));
}

TEST(TriangleTest, QuotientThatIsRoundedUpIsOutside) {
  // The quotient is 0.7 of the least number and is rounded up to it. The product is then beyond the
  // square of the tolerance, although the scaled weight is not.
  const Triangle t = RightAngled(5e34);
  const double tolerance = 4.97e-93;
  const Coord3 x = {1e34, -1.73e-289, 0.0};
  ASSERT_GT(gsl_kernel::ScaledWeight(x, gsl_kernel::CornerAt(t.p[2], t.p[0], t.p[1])),
            -tolerance * tolerance);
  EXPECT_FALSE(Weights(x, t, tolerance).inside);
  EXPECT_FALSE(gsl_kernel::TriangleTest(t.p[0], t.p[1], t.p[2], tolerance).Contains(x));
}

TEST(TriangleTest, SquaredAreaThatOverflowsContainsEverything) {
  // A weight of 0 times infinity is NaN, and NaN is not too small.
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

TEST(TriangleTest, LeastDecidedWeightIsOutsideByMoreThanTheSlackAlone) {
  // The square of the tolerance is the least decided weight, or the number below it. The weight is
  // half of the slack nearer.
  const double squared = gsl_kernel::kLeastDecidedWeight;
  double tolerance = std::sqrt(squared);
  while (tolerance * tolerance > squared)
    tolerance = Below(tolerance);
  const double nearer = (1.0 - gsl_kernel::kWeightSlack / 2.0) * squared;
  ASSERT_LT(nearer, tolerance * tolerance);
  const Triangle t = RightAngled(1.0);
  EXPECT_TRUE(
      gsl_kernel::TriangleTest(t.p[0], t.p[1], t.p[2], tolerance).Contains({0.5, -nearer, 0.0}));
}

/// Returns ContainsCorners by the weights of one corner after the other.
unsigned CornersByWeights(const Triangle& t, const Triangle& other) {
  unsigned bits = 0;
  for (unsigned k = 0; k < 3; ++k)
    bits |= static_cast<unsigned>(ByWeights(t, other.p[k])) << k;
  return bits;
}

unsigned CornersByTest(const Triangle& t, const Triangle& other) {
  return gsl_kernel::TriangleTest(t.p[0], t.p[1], t.p[2], kTolerance)
      .ContainsCorners(other.p[0], other.p[1], other.p[2]);
}

TEST(TriangleTest, EachCornerHasItsOwnBit) {
  const Triangle t = RightAngled(1.0);
  for (unsigned expected = 0; expected < 8; ++expected) {
    Triangle other = {};
    for (unsigned k = 0; k < 3; ++k)
      other.p[k] = {0.25, (expected >> k & 1u) != 0 ? 0.25 : -0.25, 0.0};
    EXPECT_EQ(CornersByTest(t, other), expected);
  }
}

TEST(TriangleTest, CornersAgreeWithTheWeightsWithinRoundingOfTheLimit) {
  RandomNumbers random(0x7722);
  long counts[8] = {};
  for (int i = 0; i < 100000; ++i) {
    const double side = random.In(0.5, 2.0);
    Triangle t = RightAngled(side), other = {};
    t.p[2].x = random.In(0.0, side);
    const double limit = kTolerance * kTolerance / (side * side * side);
    for (Coord3& p : other.p) {
      // Half of the corners are so close to the limit that only the quotients decide.
      const double close[4] = {-1.0, 3.0, 1.0 + random.In(-0.5, 0.5) * gsl_kernel::kWeightSlack,
                               1.0 + (random.Below(9) - 4) * 0x1p-52};
      p = {side / 2, -limit * close[random.Below(4)], 0.0};
    }
    const unsigned expected = CornersByWeights(t, other);
    ASSERT_EQ(CornersByTest(t, other), expected) << "case " << i;
    ++counts[expected];
  }
  for (const long count : counts)
    EXPECT_GT(count, 5000);
}

TEST(TriangleTest, InfiniteWeightIsOnlyOutsideWhereTheSquaredAreaIsFinite) {
  const Coord3 beyond = {5e79, -1e80, 0.0};
  EXPECT_EQ(CornersByTest(RightAngled(1e80), {{beyond, beyond, beyond}}), 7u);
}

TEST(TriangleTest, WeightOfNaNDoesNotHideAWeightThatIsOutside) {
  // Far aside at a height between the corners the weights of the first and the last corner are
  // infinite, and the weight of the second is a difference of infinite products.
  const Triangle t = {{{0.0, -4.0, 0.0}, {4.0, 4.0, 0.0}, {8.0, -4.0, 0.0}}};
  const Coord3 x = {1e308, 0.0, 0.0};
  ASSERT_EQ(gsl_kernel::ScaledWeight(x, gsl_kernel::CornerAt(t.p[0], t.p[1], t.p[2])),
            -numbers::kInfinity);
  ASSERT_TRUE(
      std::isnan(gsl_kernel::ScaledWeight(x, gsl_kernel::CornerAt(t.p[1], t.p[2], t.p[0]))));
  EXPECT_FALSE(ByWeights(t, x));
  EXPECT_FALSE(ByTest(t, x));
  EXPECT_EQ(CornersByTest(t, {{x, x, x}}), 0u);
}

} // namespace
