#include "wide/LuUnblocked.h"

#include "MatrixFamilies.h"
#include "Numbers.h"
#include "TextbookLu.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

using namespace gsl_wide;

namespace {

struct Outcome {
  LuResult result;
  std::int32_t parity;
  std::vector<std::int32_t> pivots;
};

Outcome Decompose(SquareMatrix& matrix) {
  std::vector<std::int32_t> pivots(static_cast<std::size_t>(matrix.Size()), -1);
  std::vector<double> scale(pivots.size(), numbers::kSentinel);
  LuSystem system = {matrix.Rows(), matrix.Size(), pivots.data(), 1};
  const LuResult result = DecomposeUnblocked(system, scale.data());
  return {result, system.parity, pivots};
}

SquareMatrix Diagonal(double first, double second) {
  SquareMatrix matrix(2);
  matrix.At(0, 0) = first;
  matrix.At(0, 1) = matrix.At(1, 0) = 0.0;
  matrix.At(1, 1) = second;
  return matrix;
}

} // namespace

TEST(LuUnblocked, HasTheBitsOfTheTextbook) {
  RandomNumbers random(31);
  for (int n = 1; n <= 24; ++n) {
    for (const MatrixFamily family : kMatrixFamilies) {
      SquareMatrix actual = MakeMatrix(family, n, random);
      SquareMatrix expected(actual);
      TextbookLu textbook(expected.Rows(), n);
      const bool decomposed = textbook.Decompose();
      const Outcome outcome = Decompose(actual);
      ASSERT_EQ(outcome.result, decomposed ? LuResult::Decomposed : LuResult::ZeroRow) << n;
      if (!decomposed) continue;
      EXPECT_EQ(outcome.pivots, textbook.Pivots()) << n;
      EXPECT_EQ(outcome.parity, textbook.Parity()) << n;
      for (std::size_t k = 0; k < actual.Data().size(); ++k)
        EXPECT_TRUE(numbers::SameBits(actual.Data()[k], expected.Data()[k])) << n << " " << k;
    }
  }
}

TEST(LuUnblocked, ARowIsZeroStrictlyBelowTheFloor) {
  SquareMatrix below = Diagonal(1.0, numbers::Below(1e-16));
  EXPECT_EQ(Decompose(below).result, LuResult::ZeroRow);
  EXPECT_EQ(below.At(1, 1), numbers::Below(1e-16)) << "untouched";
  SquareMatrix at = Diagonal(1.0, 1e-16);
  EXPECT_EQ(Decompose(at).result, LuResult::Decomposed);
  EXPECT_EQ(at.At(1, 1), 1e-16);
}

TEST(LuUnblocked, ASmallPivotOfEitherSignBecomesTheFloor) {
  // The rows are equal, so the second pivot is 0 after the first step.
  SquareMatrix matrix(2);
  matrix.At(0, 0) = matrix.At(0, 1) = matrix.At(1, 0) = matrix.At(1, 1) = -2.0;
  EXPECT_EQ(Decompose(matrix).result, LuResult::Decomposed);
  EXPECT_EQ(matrix.At(1, 1), 1e-16);
}

TEST(LuUnblocked, SubtractRowReachesOddAndEvenEnds) {
  for (std::int32_t n = 0; n < 6; ++n) {
    for (std::int32_t first = 0; first <= n; ++first) {
      double to[7] = {1, 2, 3, 4, 5, 6, 7};
      const double from[7] = {10, 20, 30, 40, 50, 60, 70};
      SubtractRow(to, from, 0.5, first, n);
      for (std::int32_t k = 0; k < 7; ++k)
        EXPECT_EQ(to[k], k + 1 - (k >= first && k < n ? 5.0 * (k + 1) : 0.0))
            << first << " " << n << " " << k;
    }
  }
}
