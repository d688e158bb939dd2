#include "Determinant.h"

#include "Numbers.h"
#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using namespace gsl_exact;

const Coord3 origin{0.0, 0.0, 0.0};

VectorBetween FromOrigin(const Coord3& a) {
  return {&origin, &a};
}

TEST(Determinant, OfAxesIsOneAndChangesSignWithOrder) {
  const Coord3 x{1.0, 0.0, 0.0};
  const Coord3 y{0.0, 1.0, 0.0};
  const Coord3 z{0.0, 0.0, 1.0};
  EXPECT_EQ(ExactDeterminant(FromOrigin(x), FromOrigin(y), FromOrigin(z)).Rounded().hi, 1.0);
  EXPECT_EQ(DeterminantSign(FromOrigin(x), FromOrigin(y), FromOrigin(z)), 1);
  EXPECT_EQ(DeterminantSign(FromOrigin(y), FromOrigin(x), FromOrigin(z)), -1);
}

TEST(Determinant, ZeroTermsAreCertainWithoutExactArithmetic) {
  const Coord3 x{3.0, 0.0, 0.0};
  const Coord3 alsoX{-5.0, 0.0, 0.0};
  const Coord3 z{0.0, 0.0, 1.0};
  const Estimate estimate = EstimateDeterminant(FromOrigin(x), FromOrigin(alsoX), FromOrigin(z));
  EXPECT_TRUE(estimate.IsCertain());
  EXPECT_EQ(estimate.Sign(), 0);
}

TEST(Determinant, SeesOneUnitInTheLastPlace) {
  // Three points on a line through decimal fractions, the last moved by one ulp.
  const Coord3 along{0.0, 0.0, 1.0};
  const Coord3 p{0.5, 0.5, 7.0};
  const Coord3 q{12.0, 12.0, -3.0};
  for (const double start : {24.0, 0.1, 1e6}) {
    for (const int step : {-1, 0, 1}) {
      Coord3 r{start, start, 0.25};
      if (step != 0) r.y = step > 0 ? numbers::Above(start) : numbers::Below(start);
      EXPECT_EQ(DeterminantSign(FromOrigin(along), {&p, &q}, {&p, &r}), step)
          << start << " " << step;
    }
  }
}

TEST(Determinant, DifferencesThatRoundAreTakenExactly) {
  // 1e30 + 1 is not a double, so the vector from the far point rounds its last part away.
  const Coord3 far{1e30, 0.0, 0.0};
  const Coord3 near{1.0, 1.0, 0.0};
  const Coord3 second{1.0, 0.0, 1.0};
  const Coord3 third{1.0, 1.0, 1.0};
  // Columns (1 - 1e30, 1, 0), (1 - 1e30, 0, 1), (1 - 1e30, 1, 1): the determinant is about 1e30 -
  // 1.
  const auto exact = ExactDeterminant({&far, &near}, {&far, &second}, {&far, &third});
  EXPECT_EQ(exact.Rounded().hi, 1e30);
  EXPECT_EQ(exact.Rounded().lo, -1.0);
}

TEST(Determinant, EstimateBoundHoldsAtManyScales) {
  const unsigned seed = 77;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  std::mt19937_64 random(seed);
  RealsIn unit(-1.0, 1.0);
  WholesIn<int> exponent(-60, 60);
  const auto point = [&] {
    return Coord3{std::ldexp(unit(random), exponent(random) / 4),
                  std::ldexp(unit(random), exponent(random) / 4),
                  std::ldexp(unit(random), exponent(random) / 4)};
  };
  for (int round = 0; round < 20000; ++round) {
    const double scale = std::ldexp(1.0, exponent(random));
    const Coord3 o = gsl_arithmetic::Multiply(point(), scale);
    const Coord3 p = gsl_arithmetic::Multiply(point(), scale);
    const Coord3 q = gsl_arithmetic::Multiply(point(), scale);
    // A third vector almost in the plane of the others.
    const Coord3 r = gsl_arithmetic::Add(
        gsl_arithmetic::Add(gsl_arithmetic::Multiply(p, 0.3), gsl_arithmetic::Multiply(q, 0.7)),
        gsl_arithmetic::Multiply(point(), scale * std::ldexp(1.0, -exponent(random) - 60)));
    const Estimate estimate = EstimateDeterminant({&o, &p}, {&o, &q}, {&o, &r});
    const DoubleDouble exact = ExactDeterminant({&o, &p}, {&o, &q}, {&o, &r}).Rounded();
    ASSERT_LE(std::fabs((estimate.value - exact.hi) - exact.lo), estimate.bound);
    ASSERT_EQ(DeterminantSign({&o, &p}, {&o, &q}, {&o, &r}), (exact.hi > 0) - (exact.hi < 0));
  }
}

TEST(Determinant, ExactAtTheLimitsOfTheRange) {
  // Two vectors that differ in the last bit of their smallest component.
  const double tiny = 0x1p-288;
  const Coord3 u{tiny, 0.0, 0.0};
  const Coord3 v{0.0, tiny, tiny};
  const Coord3 w{0.0, tiny, numbers::Above(tiny)};
  EXPECT_EQ(DeterminantSign(FromOrigin(u), FromOrigin(v), FromOrigin(w)), 1);
  EXPECT_EQ(DeterminantSign(FromOrigin(u), FromOrigin(w), FromOrigin(v)), -1);
  const double huge = 0x1p300;
  const Coord3 a{huge, 0.0, 0.0};
  const Coord3 b{0.0, huge, huge};
  const Coord3 c{0.0, huge, numbers::Below(huge)};
  EXPECT_EQ(DeterminantSign(FromOrigin(a), FromOrigin(b), FromOrigin(c)), -1);
}

TEST(Estimate, IsCertainOnlyBeyondItsBound) {
  EXPECT_FALSE((Estimate{1.0, 1.0}.IsCertain()));
  EXPECT_FALSE((Estimate{-1.0, 1.0}.IsCertain()));
  EXPECT_TRUE((Estimate{numbers::Above(1.0), 1.0}.IsCertain()));
  EXPECT_TRUE((Estimate{-numbers::Above(1.0), 1.0}.IsCertain()));
  EXPECT_TRUE((Estimate{0.0, 0.0}.IsCertain()));
}

} // namespace
