#ifndef SMALL_SYSTEMS_H
#define SMALL_SYSTEMS_H

#include "MatrixFamilies.h"
#include "Numbers.h"
#include "TextbookLu.h"
#include "wide/LuWork.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

/// Systems of a few rows, and how a solver of them is compared with the textbook.
namespace small_systems {

using Solver = gsl_wide::LuResult (*)(gsl_wide::LuSystem& system, const double* rightSide,
                                      double* to);

struct System {
  SquareMatrix matrix;
  std::vector<double> rightSide;

  explicit System(int n) : matrix(n), rightSide(static_cast<std::size_t>(n), 1.0) {}
  System(MatrixFamily family, int n, RandomNumbers& random)
      : matrix(MakeMatrix(family, n, random)) {
    for (int i = 0; i < n; ++i) {
      const bool isZero = random.Chance(0.1);
      const double number = random.In(-1.0, 1.0);
      rightSide.push_back(isZero ? -0.0 : number);
    }
  }
};

struct Outcome {
  gsl_wide::LuResult result;
  std::int32_t parity;
  std::vector<std::int32_t> pivots;
  SquareMatrix factors;
  std::vector<double> solution;
};

inline Outcome Solve(const System& system, Solver solver) {
  Outcome outcome = {gsl_wide::LuResult::NoMemory, 0,
                     std::vector<std::int32_t>(system.rightSide.size(), -1), system.matrix,
                     std::vector<double>(system.rightSide.size(), numbers::kSentinel)};
  gsl_wide::LuSystem work = {outcome.factors.Rows(), system.matrix.Size(), outcome.pivots.data(),
                             1};
  outcome.result = solver(work, system.rightSide.data(), outcome.solution.data());
  outcome.parity = work.parity;
  return outcome;
}

/// Expects equal bits, where every NaN is equal to every NaN.
inline void ExpectSameNumbers(const std::vector<double>& actual,
                              const std::vector<double>& expected, const char* what) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t k = 0; k < actual.size(); ++k) {
    if (std::isnan(actual[k]) && std::isnan(expected[k])) continue;
    EXPECT_TRUE(numbers::SameBits(actual[k], expected[k]))
        << what << " " << k << ": " << std::hexfloat << expected[k] << " became " << actual[k];
  }
}

inline void ExpectTheTextbook(const System& system, Solver solver) {
  SCOPED_TRACE(::testing::Message() << "n " << system.matrix.Size());
  SquareMatrix factors(system.matrix);
  TextbookLu textbook(factors.Rows(), factors.Size());
  const bool decomposed = textbook.Decompose();
  const Outcome outcome = Solve(system, solver);
  ASSERT_EQ(outcome.result,
            decomposed ? gsl_wide::LuResult::Decomposed : gsl_wide::LuResult::ZeroRow);
  if (!decomposed) return;
  EXPECT_EQ(outcome.pivots, textbook.Pivots());
  EXPECT_EQ(outcome.parity, textbook.Parity());
  ExpectSameNumbers(outcome.factors.Data(), factors.Data(), "factor");
  std::vector<double> solution = system.rightSide;
  textbook.Substitute(solution.data());
  ExpectSameNumbers(outcome.solution, solution, "unknown");
}

inline void ExpectInPlace(const System& system, Solver solver) {
  const Outcome apart = Solve(system, solver);
  SquareMatrix matrix(system.matrix);
  std::vector<double> x = system.rightSide;
  std::vector<std::int32_t> pivots(x.size());
  gsl_wide::LuSystem work = {matrix.Rows(), matrix.Size(), pivots.data(), 1};
  ASSERT_EQ(solver(work, x.data(), x.data()), gsl_wide::LuResult::Decomposed);
  ExpectSameNumbers(x, apart.solution, "unknown");
}

/// Expects that a zero row anywhere is refused.
inline void ExpectZeroRowRefused(int n, Solver solver) {
  RandomNumbers random(static_cast<std::uint64_t>(n));
  for (int row = 0; row < n; ++row) {
    System system(MatrixFamily::Random, n, random);
    for (int j = 0; j < n; ++j)
      system.matrix.At(row, j) = j % 2 == 0 ? numbers::Below(1e-16) : -0.0;
    const Outcome outcome = Solve(system, solver);
    EXPECT_EQ(outcome.result, gsl_wide::LuResult::ZeroRow) << n << " " << row;
    EXPECT_EQ(outcome.parity, 1);
    ExpectSameNumbers(outcome.factors.Data(), system.matrix.Data(), "element");
    EXPECT_EQ(outcome.solution, std::vector<double>(system.rightSide.size(), numbers::kSentinel));
  }
}

} // namespace small_systems

#endif
