#include "wide/LuSubstitution.h"

#include "MatrixFamilies.h"
#include "Numbers.h"
#include "TextbookLu.h"

#include <gtest/gtest.h>

#include <vector>

using namespace gsl_wide;

TEST(LuSubstitution, HasTheBitsOfTheTextbook) {
  RandomNumbers random(32);
  for (int n = 1; n <= 40; ++n) {
    SquareMatrix factors = MakeMatrix(MatrixFamily::Random, n, random);
    TextbookLu textbook(factors.Rows(), n);
    ASSERT_TRUE(textbook.Decompose());
    std::vector<std::int32_t> pivots(textbook.Pivots().begin(), textbook.Pivots().end());
    std::vector<double> expected, actual;
    for (int k = 0; k < n; ++k)
      expected.push_back(random.In(-5.0, 5.0));
    actual = expected;
    textbook.Substitute(expected.data());
    const LuSystem system = {factors.Rows(), n, pivots.data(), textbook.Parity()};
    PermuteRightSide(system, actual.data());
    SubstituteForward(system, actual.data());
    SubstituteBackward(system, actual.data());
    for (std::size_t k = 0; k < actual.size(); ++k)
      EXPECT_EQ(numbers::Bits(actual[k]), numbers::Bits(expected[k])) << n << " " << k;
  }
}

TEST(LuSubstitution, ExchangesFollowEachOther) {
  std::int32_t pivots[] = {2, 2, 2};
  double x[] = {1.0, 2.0, 3.0};
  PermuteRightSide({nullptr, 3, pivots, 1}, x);
  EXPECT_EQ(x[0], 3.0);
  EXPECT_EQ(x[1], 1.0);
  EXPECT_EQ(x[2], 2.0);
}
