#include "gsl_LinearEqnLUDSolver.h"

#include "FailingMemory.h"
#include "MatrixFamilies.h"
#include "Numbers.h"
#include "TestScale.h"
#include "TextbookLu.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

using numbers::kInfinity;
using numbers::kNaN;
using numbers::kSentinel;

namespace {

SquareMatrix Matrix(std::initializer_list<std::initializer_list<double>> rows) {
  SquareMatrix m(static_cast<int>(rows.size()));
  int i = 0;
  for (const auto& row : rows) {
    int j = 0;
    for (const double entry : row)
      m.At(i, j++) = entry;
    ++i;
  }
  return m;
}

std::vector<double> Sentinels(int n) {
  return std::vector<double>(static_cast<std::size_t>(n), kSentinel);
}

struct System {
  SquareMatrix a;
  gsl_LinearEqnLUDSolver solver;

  explicit System(const SquareMatrix& m) : a(m) {
    solver.SetMatrix(a.Rows(), static_cast<unsigned int>(a.Size()));
  }
  bool Solve(std::vector<double> b, std::vector<double>& x) {
    const std::vector<double> before = b;
    x = Sentinels(a.Size());
    const bool solved = solver.Solve(b.data(), x.data());
    EXPECT_EQ(b, before) << "the right side was modified";
    return solved;
  }
};

/// Every NaN is equal to every NaN here.
std::vector<std::uint64_t> AllBits(const std::vector<double>& values) {
  std::vector<std::uint64_t> bits;
  for (const double value : values)
    bits.push_back(numbers::Bits(std::isnan(value) ? kNaN : value));
  return bits;
}

} // namespace

static_assert(!std::is_copy_constructible<gsl_LinearEqnLUDSolver>::value, "");
static_assert(!std::is_copy_assignable<gsl_LinearEqnLUDSolver>::value, "");

TEST(GslLinearEqnLUDSolver, NewSolverHasNoMatrix) {
  gsl_LinearEqnLUDSolver solver;
  EXPECT_EQ(solver.Size(), 0u);
  EXPECT_EQ(solver.Pivots(), nullptr);
  EXPECT_EQ(solver.Parity(), 1);
  EXPECT_FALSE(solver.IsSingular());
  EXPECT_FALSE(solver.IsDecomposed());
}

TEST(GslLinearEqnLUDSolver, WithoutMatrixFailsWithSolutionUntouched) {
  gsl_LinearEqnLUDSolver solver;
  double b = 1.0;
  double x = kSentinel;
  EXPECT_FALSE(solver.Solve(&b, &x));
  EXPECT_EQ(x, kSentinel);
  solver.SetMatrix(nullptr, 1);
  EXPECT_FALSE(solver.Solve(&b, &x));
  EXPECT_EQ(x, kSentinel);
  EXPECT_FALSE(solver.IsSingular());
}

TEST(GslLinearEqnLUDSolver, EmptySystemIsSolved) {
  double* noRows[1] = {nullptr};
  gsl_LinearEqnLUDSolver solver;
  solver.SetMatrix(noRows, 0);
  double b = 1.0;
  double x = kSentinel;
  EXPECT_TRUE(solver.Solve(&b, &x));
  EXPECT_TRUE(solver.Solve(nullptr, nullptr));
  EXPECT_EQ(x, kSentinel);
  EXPECT_TRUE(solver.IsDecomposed());
}

TEST(GslLinearEqnLUDSolver, IdentityOfAnySizeSolvesToTheRightSide) {
  for (const int n : {1, 2, 3, 7, 16, 17, 64, 100, 200}) {
    System s(matrix_families::Fill(n, [](int i, int j) { return i == j ? 1.0 : 0.0; }));
    std::vector<double> b;
    for (int i = 0; i < n; ++i)
      b.push_back(0.5 * i - 3.0);
    std::vector<double> x;
    ASSERT_TRUE(s.Solve(b, x));
    EXPECT_EQ(x, b) << n;
    EXPECT_EQ(s.solver.Parity(), 1);
  }
}

TEST(GslLinearEqnLUDSolver, FactorsReplaceTheMatrix) {
  // No exchanges: 4 > 2 relative to the rows, then 2 alone.
  System s(Matrix({{4.0, 2.0}, {2.0, 3.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({8.0, 8.0}, x));
  EXPECT_EQ(s.a.Data(), (std::vector<double>{4.0, 2.0, 0.5, 2.0}));
  EXPECT_EQ(x, (std::vector<double>{1.0, 2.0}));
  EXPECT_EQ(s.solver.Pivots()[0], 0);
  EXPECT_EQ(s.solver.Pivots()[1], 1);
}

TEST(GslLinearEqnLUDSolver, ExchangedRowsNegateParity) {
  System s(Matrix({{0.0, 1.0}, {1.0, 0.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({5.0, 7.0}, x));
  EXPECT_EQ(x, (std::vector<double>{7.0, 5.0}));
  EXPECT_EQ(s.solver.Parity(), -1);
  EXPECT_EQ(s.solver.Pivots()[0], 1);
  EXPECT_EQ(s.solver.Pivots()[1], 1);
}

TEST(GslLinearEqnLUDSolver, ExchangeMovesContentsNotRowPointers) {
  System s(Matrix({{0.0, 1.0}, {1.0, 0.0}}));
  double* const first = s.a.Rows()[0];
  double* const second = s.a.Rows()[1];
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({5.0, 7.0}, x));
  EXPECT_EQ(s.a.Rows()[0], first);
  EXPECT_EQ(s.a.Rows()[1], second);
  EXPECT_EQ(s.a.Data(), (std::vector<double>{1.0, 0.0, 0.0, 1.0}));
}

TEST(GslLinearEqnLUDSolver, EqualMeritsTakeTheLastRow) {
  System s(Matrix({{1.0, 0.0, 0.0}, {1.0, 1.0, 0.0}, {1.0, 0.0, 1.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({1.0, 3.0, 4.0}, x));
  EXPECT_EQ(s.solver.Pivots()[0], 2);
  EXPECT_EQ(x, (std::vector<double>{1.0, 2.0, 3.0}));
}

TEST(GslLinearEqnLUDSolver, MeritIsRelativeToTheRow) {
  // 10 is the larger number, but 1 is the larger part of its row.
  System s(Matrix({{1.0, 0.5}, {10.0, 100.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({1.0, 1.0}, x));
  EXPECT_EQ(s.solver.Pivots()[0], 0);
}

TEST(GslLinearEqnLUDSolver, ScaleTravelsWithTheExchangedRow) {
  // Step 0 takes row 2. Row 0 goes to its place and keeps its figure 1/8 there: at step 1 row 1
  // has merit 1/4 * 1 and wins against 1/8 * 1. With the figure 1 of the old row 2 it would lose.
  System s(Matrix({{0.0, 1.0, 8.0}, {0.0, 1.0, 4.0}, {1.0, 0.0, 0.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({1.0, 1.0, 1.0}, x));
  EXPECT_EQ(s.solver.Pivots()[0], 2);
  EXPECT_EQ(s.solver.Pivots()[1], 1);
}

TEST(GslLinearEqnLUDSolver, ZeroRowFailsWithMatrixAndSolutionUntouched) {
  for (const int n : {2, 5, 40}) {
    RandomNumbers random(static_cast<std::uint64_t>(n));
    SquareMatrix m = MakeMatrix(MatrixFamily::Random, n, random);
    for (int j = 0; j < n; ++j)
      m.At(n - 1, j) = j % 2 == 0 ? 0.0 : -0.0;
    System s(m);
    std::vector<double> x;
    EXPECT_FALSE(s.Solve(std::vector<double>(static_cast<std::size_t>(n), 1.0), x));
    EXPECT_EQ(x, Sentinels(n));
    EXPECT_EQ(AllBits(s.a.Data()), AllBits(m.Data()));
    EXPECT_TRUE(s.solver.IsSingular());
    EXPECT_FALSE(s.solver.IsDecomposed());
    EXPECT_EQ(s.solver.Pivots(), nullptr);
    EXPECT_EQ(s.solver.Parity(), 1);
  }
}

TEST(GslLinearEqnLUDSolver, RowIsZeroStrictlyBelowTheFloor) {
  for (const int n : {1, 3, 20}) {
    const auto solves = [n](double largest) {
      System s(matrix_families::Fill(
          n, [&](int i, int j) { return i == j ? (i == n - 1 ? -largest : 1.0) : 0.0; }));
      std::vector<double> x;
      return s.Solve(std::vector<double>(static_cast<std::size_t>(n), 1.0), x);
    };
    EXPECT_FALSE(solves(numbers::Below(1e-16))) << n;
    EXPECT_TRUE(solves(1e-16)) << n;
    EXPECT_TRUE(solves(numbers::Above(1e-16))) << n;
  }
}

TEST(GslLinearEqnLUDSolver, FailedDecompositionIsTriedAgain) {
  System s(Matrix({{1.0, 0.0}, {0.0, 0.0}}));
  std::vector<double> x;
  EXPECT_FALSE(s.Solve({1.0, 2.0}, x));
  EXPECT_FALSE(s.Solve({1.0, 2.0}, x));
  s.a.At(1, 1) = 4.0;
  EXPECT_TRUE(s.Solve({1.0, 2.0}, x));
  EXPECT_EQ(x, (std::vector<double>{1.0, 0.5}));
  EXPECT_TRUE(s.solver.IsSingular()) << "an attempt since SetMatrix met a zero row";
}

TEST(GslLinearEqnLUDSolver, DependentColumnGetsTheTinyPivot) {
  // Equal merits 1/2: row 1 is the pivot row. l = 0.5 and 2 - 0.5 * 4 is 0, which becomes 1e-16.
  System s(Matrix({{1.0, 2.0}, {2.0, 4.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({3.0, 6.0}, x));
  EXPECT_EQ(s.a.Data(), (std::vector<double>{2.0, 4.0, 0.5, 1e-16}));
  EXPECT_EQ(x, (std::vector<double>{3.0, 0.0}));
  EXPECT_FALSE(s.solver.IsSingular());
  ASSERT_TRUE(s.Solve({1.0, 1.0}, x));
  const double large = 0.5 / 1e-16;
  EXPECT_EQ(x, (std::vector<double>{(1.0 - 4.0 * large) / 2.0, large}));
}

TEST(GslLinearEqnLUDSolver, SmallNegativePivotBecomesPositive) {
  // Row 1 is the pivot row; 0 - 1 * p is what is left in the corner.
  const auto corner = [](double p) {
    System s(Matrix({{1.0, 0.0}, {1.0, p}}));
    std::vector<double> x;
    EXPECT_TRUE(s.Solve({1.0, 1.0}, x));
    return s.a.At(1, 1);
  };
  EXPECT_EQ(corner(5e-17), 1e-16);
  EXPECT_EQ(corner(numbers::Below(1e-16)), 1e-16);
  EXPECT_EQ(corner(1e-16), -1e-16) << "exactly the floor stays";
  EXPECT_EQ(corner(numbers::Above(1e-16)), -numbers::Above(1e-16));
  EXPECT_EQ(corner(-5e-17), 1e-16);
  EXPECT_EQ(corner(0.0), 1e-16);
}

TEST(GslLinearEqnLUDSolver, SecondRightSideReusesTheFactors) {
  RandomNumbers random(11);
  const int n = 30;
  const SquareMatrix m = MakeMatrix(MatrixFamily::Random, n, random);
  System s(m);
  for (int round = 0; round < 3; ++round) {
    std::vector<double> expected;
    std::vector<double> b(static_cast<std::size_t>(n), 0.0);
    for (int i = 0; i < n; ++i)
      expected.push_back(random.In(-1.0, 1.0));
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < n; ++j) {
        b[static_cast<std::size_t>(i)] += m.At(i, j) * expected[static_cast<std::size_t>(j)];
      }
    }
    const std::vector<double> factors = s.a.Data();
    std::vector<double> x;
    ASSERT_TRUE(s.Solve(b, x));
    for (int i = 0; i < n; ++i) {
      EXPECT_NEAR(x[static_cast<std::size_t>(i)], expected[static_cast<std::size_t>(i)], 1e-10);
    }
    if (round > 0) {
      EXPECT_EQ(s.a.Data(), factors);
    }
  }
}

TEST(GslLinearEqnLUDSolver, SolutionMayReplaceTheRightSide) {
  RandomNumbers random(12);
  for (const int n : {1, 4, 33}) {
    const SquareMatrix m = MakeMatrix(MatrixFamily::Random, n, random);
    std::vector<double> b;
    for (int i = 0; i < n; ++i)
      b.push_back(random.In(-1.0, 1.0));
    System apart(m);
    std::vector<double> x;
    ASSERT_TRUE(apart.Solve(b, x));
    System same(m);
    ASSERT_TRUE(same.solver.Solve(b.data(), b.data()));
    EXPECT_EQ(AllBits(b), AllBits(x));
  }
}

TEST(GslLinearEqnLUDSolver, SetMatrixResets) {
  System s(Matrix({{0.0, 1.0}, {1.0, 0.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({1.0, 2.0}, x));
  SquareMatrix zero(3);
  s.solver.SetMatrix(zero.Rows(), 3);
  EXPECT_EQ(s.solver.Size(), 3u);
  EXPECT_EQ(s.solver.Parity(), 1);
  EXPECT_EQ(s.solver.Pivots(), nullptr);
  EXPECT_FALSE(s.solver.IsDecomposed());
  double values[3] = {1.0, 2.0, 3.0};
  EXPECT_FALSE(s.solver.Solve(values, values));
  EXPECT_TRUE(s.solver.IsSingular());

  SquareMatrix diagonal = Matrix({{2.0, 0.0}, {0.0, 4.0}});
  s.solver.SetMatrix(diagonal.Rows(), 2);
  EXPECT_FALSE(s.solver.IsSingular());
  EXPECT_TRUE(s.solver.Solve(values, values));
  EXPECT_EQ(values[0], 0.5);
  EXPECT_EQ(values[1], 0.5);
  EXPECT_EQ(values[2], 3.0);
}

TEST(GslLinearEqnLUDSolver, SameMatrixSetAgainIsDecomposedAgain) {
  SquareMatrix a = Matrix({{4.0, 2.0}, {2.0, 3.0}});
  gsl_LinearEqnLUDSolver solver;
  double x[2] = {8.0, 8.0};
  solver.SetMatrix(a.Rows(), 2);
  ASSERT_TRUE(solver.Solve(x, x));
  a.At(0, 0) = a.At(1, 1) = 2.0;
  a.At(0, 1) = a.At(1, 0) = 0.0;
  solver.SetMatrix(a.Rows(), 2);
  x[0] = x[1] = 8.0;
  ASSERT_TRUE(solver.Solve(x, x));
  EXPECT_EQ(x[0], 4.0);
}

TEST(GslLinearEqnLUDSolver, ParityAndDiagonalMakeTheDeterminant) {
  System s(Matrix({{0.0, 2.0, 1.0}, {3.0, 0.0, 0.0}, {0.0, 0.0, 4.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({1.0, 1.0, 1.0}, x));
  EXPECT_EQ(s.solver.Parity() * s.a.At(0, 0) * s.a.At(1, 1) * s.a.At(2, 2), -24.0);
}

TEST(GslLinearEqnLUDSolver, LeadingZerosAreNotSkipped) {
  // l = -0.5: the second sum is -0.0 - (-0.5 * 0.0) = -0.0 + 0.0, which is +0.0.
  System s(Matrix({{2.0, 1.0}, {-1.0, 2.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({0.0, -0.0}, x));
  EXPECT_FALSE(std::signbit(x[1]));
}

TEST(GslLinearEqnLUDSolver, NaNIsNeverChosenOverANumber) {
  System s(Matrix({{kNaN, 1.0, 0.0}, {0.25, 1.0, 1.0}, {kNaN, 0.0, 1.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({1.0, 1.0, 1.0}, x));
  EXPECT_EQ(s.solver.Pivots()[0], 1);
  EXPECT_TRUE(std::isnan(x[2]));
}

TEST(GslLinearEqnLUDSolver, ColumnOfNaNKeepsItsRow) {
  System s(Matrix({{kNaN, 1.0}, {kNaN, 2.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({1.0, 1.0}, x));
  EXPECT_EQ(s.solver.Pivots()[0], 0);
  EXPECT_TRUE(std::isnan(s.a.At(0, 0))) << "NaN is not raised to the floor";
}

TEST(GslLinearEqnLUDSolver, RowOfNaNIsAZeroRow) {
  System s(Matrix({{1.0, 1.0}, {kNaN, kNaN}}));
  std::vector<double> x;
  EXPECT_FALSE(s.Solve({1.0, 1.0}, x));
  EXPECT_TRUE(s.solver.IsSingular());
}

TEST(GslLinearEqnLUDSolver, InfiniteRowHasNoMerit) {
  // 1 / infinity is 0, so that the finite row wins.
  System s(Matrix({{1.0, 1.0}, {kInfinity, 2.0}}));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve({1.0, 1.0}, x));
  EXPECT_EQ(s.solver.Pivots()[0], 0);
  EXPECT_EQ(s.a.At(1, 0), kInfinity);
}

namespace {

/// Compares factors, pivots, parity and solution of the public class with the textbook.
void ExpectBitsOfTheTextbook(MatrixFamily family, int n, RandomNumbers& random) {
  SCOPED_TRACE(::testing::Message() << "family " << static_cast<int>(family) << " n " << n);
  const SquareMatrix m = MakeMatrix(family, n, random);
  std::vector<double> b;
  for (int i = 0; i < n; ++i)
    b.push_back(random.Chance(0.2) ? 0.0 : random.In(-1.0, 1.0));
  SquareMatrix factors(m);
  TextbookLu textbook(factors.Rows(), n);
  const bool solvable = textbook.Decompose();
  std::vector<double> expected = Sentinels(n);
  if (solvable) {
    expected = b;
    textbook.Substitute(expected.data());
  }
  System s(m);
  std::vector<double> x;
  ASSERT_EQ(s.Solve(b, x), solvable);
  EXPECT_EQ(AllBits(x), AllBits(expected)) << "solution";
  EXPECT_EQ(AllBits(s.a.Data()), AllBits(factors.Data())) << "factors";
  EXPECT_EQ(s.solver.Parity(), textbook.Parity());
  ASSERT_EQ(s.solver.Pivots() != nullptr, solvable);
  if (!solvable) return;
  const std::vector<int>& pivots = textbook.Pivots();
  EXPECT_TRUE(std::equal(pivots.begin(), pivots.end(), s.solver.Pivots())) << "pivots";
}

} // namespace

TEST(GslLinearEqnLUDSolver, EverySizeTo130HasTheBitsOfTheTextbook) {
  const std::uint64_t seed = 99;
  RecordProperty("seed", std::to_string(seed));
  RandomNumbers random(seed);
  for (int n = 1; n <= 130; ++n) {
    if (kTestScaleDivisor > 1 && n > 40 && n % 16 != 1) continue;
    for (const MatrixFamily family : kMatrixFamilies) {
      ExpectBitsOfTheTextbook(family, n, random);
      if (HasFailure()) return;
    }
  }
}

TEST(GslLinearEqnLUDSolver, LargeSystemsHaveTheBitsOfTheTextbook) {
  // The last system is eliminated in the caller's rows.
  RandomNumbers random(100);
  const int sizes[] = {131, 200, 257, 389, 512, 700, 1027};
  std::size_t family = 0;
  for (const int n : sizes) {
    if (kTestScaleDivisor > 1 && n > 200) break;
    for (int k = 0; k < (n < 600 ? 5 : 1); ++k) {
      ExpectBitsOfTheTextbook(
          kMatrixFamilies[family++ % (sizeof kMatrixFamilies / sizeof *kMatrixFamilies)], n,
          random);
      if (HasFailure()) return;
    }
  }
}

TEST(GslLinearEqnLUDSolver, WithoutMemoryFailsUntouchedAndTriesAgain) {
  RandomNumbers random(6);
  System s(MakeMatrix(MatrixFamily::Random, 50, random));
  const std::vector<double> before = s.a.Data();
  std::vector<double> x = Sentinels(50);
  std::vector<double> b(50, 1.0);
  {
    const FailingMemory none(0);
    EXPECT_FALSE(s.solver.Solve(b.data(), x.data()));
  }
  EXPECT_EQ(x, Sentinels(50));
  EXPECT_EQ(s.a.Data(), before);
  EXPECT_FALSE(s.solver.IsSingular());
  {
    const FailingMemory onlyPivots(50 * sizeof(std::int32_t) + 1);
    EXPECT_FALSE(s.solver.Solve(b.data(), x.data()));
  }
  EXPECT_EQ(s.a.Data(), before);
  EXPECT_TRUE(s.solver.Solve(b.data(), x.data()));
}

TEST(GslLinearEqnLUDSolver, NextSmallSystemTakesNoMemory) {
  RandomNumbers random(9);
  gsl_LinearEqnLUDSolver solver;
  for (const int n : {3, 16, 1, 8}) {
    SquareMatrix a = MakeMatrix(MatrixFamily::Random, n, random);
    std::vector<double> x(static_cast<std::size_t>(n), 1.0);
    solver.SetMatrix(a.Rows(), static_cast<unsigned int>(n));
    if (n == 3) {
      ASSERT_TRUE(solver.Solve(x.data(), x.data()));
      continue;
    }
    const FailingMemory none(0);
    EXPECT_EQ(solver.Pivots(), nullptr) << "the earlier factors are forgotten";
    EXPECT_TRUE(solver.Solve(x.data(), x.data())) << n;
  }
  SquareMatrix larger = MakeMatrix(MatrixFamily::Random, 17, random);
  std::vector<double> x(17, 1.0);
  solver.SetMatrix(larger.Rows(), 17);
  {
    const FailingMemory none(0);
    EXPECT_FALSE(solver.Solve(x.data(), x.data())) << "17 rows need a block of their own";
  }
  EXPECT_TRUE(solver.Solve(x.data(), x.data()));
}

TEST(GslLinearEqnLUDSolver, TakesNoMoreScratchThanItSays) {
  RandomNumbers random(7);
  for (const int n : {16, 17, 20, 100, 640, 1023, 1024, kTestScaleDivisor == 1 ? 2047 : 1100,
                      kTestScaleDivisor == 1 ? 2049 : 640}) {
    System s(MakeMatrix(MatrixFamily::Random, n, random));
    std::vector<double> x;
    const FailingMemory watched(std::numeric_limits<std::size_t>::max());
    ASSERT_TRUE(s.Solve(std::vector<double>(static_cast<std::size_t>(n), 1.0), x));
    const auto size = static_cast<std::size_t>(n);
    const std::size_t most = n <= 16    ? 0
                             : n < 1024 ? size * size + 89 * size + 25670
                             : n < 2048 ? size * size + 153 * size + 51206
                                        : 140 * size + 26588;
    const std::size_t pivots = size * sizeof(std::int32_t);
    EXPECT_LE(watched.LargestAsked(), std::max(most * sizeof(double), pivots)) << n;
    if (n < 640) continue;
    EXPECT_GE(2 * watched.LargestAsked(), most * sizeof(double)) << n << ": the bound is too wide";
  }
}

TEST(GslLinearEqnLUDSolver, MoreRowsThanRowNumbersFail) {
  double* rows[1] = {nullptr};
  gsl_LinearEqnLUDSolver solver;
  solver.SetMatrix(rows, 2147483641u);
  EXPECT_FALSE(solver.Solve(nullptr, nullptr));
}

namespace {

/// Makes the types of matrix that the tests of LAPACK use for general systems.
SquareMatrix Reflected(const std::vector<double>& singularValues, RandomNumbers& random) {
  // The matrix is D between two reflections I - 2 v v' / v'v, so it has the given singular values.
  const int n = static_cast<int>(singularValues.size());
  std::vector<double> v, w;
  double vv = 0.0, ww = 0.0;
  for (int i = 0; i < n; ++i) {
    v.push_back(random.In(-1.0, 1.0));
    w.push_back(random.In(-1.0, 1.0));
    vv += v.back() * v.back();
    ww += w.back() * w.back();
  }
  return matrix_families::Fill(n, [&](int i, int j) {
    double sum = 0.0;
    for (int k = 0; k < n; ++k) {
      const std::size_t r = static_cast<std::size_t>(i), c = static_cast<std::size_t>(j),
                        m = static_cast<std::size_t>(k);
      const double left = (i == k ? 1.0 : 0.0) - 2.0 * v[r] * v[m] / vv;
      const double right = (k == j ? 1.0 : 0.0) - 2.0 * w[m] * w[c] / ww;
      sum += left * singularValues[m] * right;
    }
    return sum;
  });
}

SquareMatrix WithCondition(int n, double condition, RandomNumbers& random) {
  std::vector<double> values;
  for (int i = 0; i < n; ++i) {
    values.push_back(n == 1 ? 1.0 : std::pow(condition, -static_cast<double>(i) / (n - 1)));
  }
  return Reflected(values, random);
}

SquareMatrix Scaled(const SquareMatrix& m, double factor) {
  return matrix_families::Fill(m.Size(), [&](int i, int j) { return m.At(i, j) * factor; });
}

/// Returns ||b - A x|| / (||A|| ||x|| eps n) in the norm of the row sums.
double BackwardError(const SquareMatrix& a, const std::vector<double>& x,
                     const std::vector<double>& b) {
  const int n = a.Size();
  long double residual = 0.0L, norm = 0.0L, largest = 0.0L;
  for (int i = 0; i < n; ++i) {
    long double r = b[static_cast<std::size_t>(i)], sum = 0.0L;
    for (int j = 0; j < n; ++j) {
      r -= static_cast<long double>(a.At(i, j)) * x[static_cast<std::size_t>(j)];
      sum += std::fabs(static_cast<long double>(a.At(i, j)));
    }
    residual = std::max(residual, std::fabs(r));
    norm = std::max(norm, sum);
    largest =
        std::max(largest, std::fabs(static_cast<long double>(x[static_cast<std::size_t>(i)])));
  }
  return static_cast<double>(residual / (norm * largest * 0x1p-53L * n));
}

constexpr int kSizes[] = {1, 2, 3, 5, 10, 50, 200};

void ExpectSmallBackwardError(const SquareMatrix& m, RandomNumbers& random, const char* type) {
  System s(m);
  const int n = m.Size();
  const double scale = std::max(1e-250, std::fabs(m.At(0, 0)));
  std::vector<double> b;
  for (int i = 0; i < n; ++i)
    b.push_back(scale * random.In(-1.0, 1.0));
  std::vector<double> x;
  ASSERT_TRUE(s.Solve(b, x)) << type << " n " << n;
  EXPECT_LT(BackwardError(m, x, b), 30.0) << type << " n " << n;
}

/// Tests a column of zeros: the elimination goes on with the floor as the pivot.
void ExpectFloorInColumn(const SquareMatrix& m, int column) {
  const int n = m.Size();
  System s(m);
  std::vector<double> x;
  if (n == 1) {
    EXPECT_FALSE(s.Solve({1.0}, x)) << "the only row is a zero row";
    return;
  }
  ASSERT_TRUE(s.Solve(std::vector<double>(static_cast<std::size_t>(n), 1.0), x));
  EXPECT_EQ(s.a.At(column, column), 1e-16);
  EXPECT_EQ(s.solver.Pivots()[column], n - 1) << "all merits are 0: the last row";
  EXPECT_FALSE(s.solver.IsSingular());
}

} // namespace

TEST(GslLinearEqnLUDSolver, BackwardErrorIsSmallOnDiagonalAndTriangularMatrices) {
  RandomNumbers random(21);
  for (const int n : kSizes) {
    // The diagonals are large, because a triangle of random entries alone is nearly singular.
    const auto entry = [&](bool kept, bool diagonal) {
      const double value = random.In(-1.0, 1.0);
      return !kept ? 0.0 : diagonal ? (value < 0.0 ? value - 1.0 : value + 1.0) : value / n;
    };
    ExpectSmallBackwardError(
        matrix_families::Fill(n, [&](int i, int j) { return entry(i == j, i == j); }), random,
        "diagonal");
    ExpectSmallBackwardError(
        matrix_families::Fill(n, [&](int i, int j) { return entry(i <= j, i == j); }), random,
        "upper triangle");
    ExpectSmallBackwardError(
        matrix_families::Fill(n, [&](int i, int j) { return entry(i >= j, i == j); }), random,
        "lower triangle");
  }
}

TEST(GslLinearEqnLUDSolver, BackwardErrorIsSmallOnRandomMatricesOfAnyCondition) {
  RandomNumbers random(22);
  for (const int n : kSizes) {
    ExpectSmallBackwardError(WithCondition(n, 2.0, random), random, "condition 2");
    ExpectSmallBackwardError(WithCondition(n, std::sqrt(0.1 / 0x1p-53), random), random,
                             "condition sqrt(0.1 / eps)");
    // The singular values go down to 1e-15, so that pivots stay above the floor.
    ExpectSmallBackwardError(WithCondition(n, 0.1 / 0x1p-53, random), random,
                             "condition 0.1 / eps");
  }
}

TEST(GslLinearEqnLUDSolver, BackwardErrorIsSmallNearOverflow) {
  RandomNumbers random(23);
  for (const int n : kSizes) {
    ExpectSmallBackwardError(Scaled(WithCondition(n, 2.0, random), 1e300), random, "near overflow");
  }
}

TEST(GslLinearEqnLUDSolver, BackwardErrorIsSmallAboveTheFloor) {
  RandomNumbers random(24);
  for (const int n : kSizes) {
    ExpectSmallBackwardError(Scaled(WithCondition(n, 2.0, random), 1e-12), random, "small");
  }
}

TEST(GslLinearEqnLUDSolver, MatrixNearUnderflowIsAllZeroRows) {
  RandomNumbers random(25);
  for (const int n : kSizes) {
    System s(Scaled(WithCondition(n, 2.0, random), 1e-300));
    std::vector<double> x;
    EXPECT_FALSE(s.Solve(std::vector<double>(static_cast<std::size_t>(n), 1e-300), x));
    EXPECT_EQ(x, Sentinels(n));
    EXPECT_TRUE(s.solver.IsSingular());
  }
}

TEST(GslLinearEqnLUDSolver, ZeroColumnsGetTheTinyPivot) {
  RandomNumbers random(26);
  for (const int n : kSizes) {
    const SquareMatrix full = WithCondition(n, 2.0, random);
    const auto without = [&](int from, int to) {
      return matrix_families::Fill(
          n, [&](int i, int j) { return j >= from && j < to ? 0.0 : full.At(i, j); });
    };
    ExpectFloorInColumn(without(0, 1), 0);
    ExpectFloorInColumn(without(n - 1, n), n - 1);
    if (n < 3) continue;
    ExpectFloorInColumn(without(n - n / 2, n), n - n / 2);
    ExpectFloorInColumn(without(n / 2, n / 2 + 1), n / 2);
  }
}
