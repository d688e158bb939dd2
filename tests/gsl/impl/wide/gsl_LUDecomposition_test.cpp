#include "wide/gsl_LUDecomposition.h"

#include "FailingMemory.h"
#include "MatrixFamilies.h"
#include "Numbers.h"
#include "TestScale.h"
#include "TextbookLu.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using gsl_wide::Broadcast;
using gsl_wide::LuResult;
using gsl_wide::LuSystem;

namespace {

struct Width {
  const char* name;
  const gsl_WideKernels* kernels;
};

std::vector<Width> Widths() {
  std::vector<Width> widths;
  const auto add = [&](const char* name, gsl_VectorWidth width) {
    if (const gsl_WideKernels* const kernels = gsl_FindWideKernels(width))
      widths.push_back({name, kernels});
  };
  add("baseline", gsl_VectorWidth::Baseline);
  add("AVX2", gsl_VectorWidth::Avx2);
  add("AVX-512", gsl_VectorWidth::Avx512);
  return widths;
}

bool SameBits(double a, double b) {
  return numbers::Bits(a) == numbers::Bits(b) || (std::isnan(a) && std::isnan(b));
}

/// Returns the first element that differs, or an empty string.
std::string FirstDifference(const SquareMatrix& expected, const SquareMatrix& actual) {
  for (int i = 0; i < expected.Size(); ++i) {
    for (int j = 0; j < expected.Size(); ++j) {
      if (SameBits(expected.At(i, j), actual.At(i, j))) continue;
      std::ostringstream text;
      text << std::hexfloat << "(" << i << ", " << j << "): " << expected.At(i, j) << " became "
           << actual.At(i, j);
      return text.str();
    }
  }
  return std::string();
}

/// A matrix with the factors that the textbook finds.
struct Case {
  SquareMatrix matrix;
  SquareMatrix factors;
  bool decomposed;
  std::vector<int> pivots;
  int parity;

  explicit Case(const SquareMatrix& m) : matrix(m), factors(m) {
    TextbookLu textbook(factors.Rows(), factors.Size());
    decomposed = textbook.Decompose();
    pivots = textbook.Pivots();
    parity = textbook.Parity();
  }

  void ExpectFrom(const std::function<LuResult(LuSystem&)>& decompose) const {
    SquareMatrix actual(matrix);
    const std::vector<double*> rows(actual.Rows(), actual.Rows() + actual.Size());
    std::vector<std::int32_t> found(pivots.size(), -1);
    LuSystem system = {actual.Rows(), matrix.Size(), found.data(), 1};
    const LuResult result = decompose(system);
    ASSERT_EQ(result, decomposed ? LuResult::Decomposed : LuResult::ZeroRow);
    EXPECT_EQ(FirstDifference(decomposed ? factors : matrix, actual), "");
    EXPECT_TRUE(std::equal(rows.begin(), rows.end(), actual.Rows())) << "row pointers were moved";
    if (!decomposed) return;
    EXPECT_EQ(found, pivots);
    EXPECT_EQ(system.parity, parity);
  }

  void ExpectFromEveryWidth(const gsl_LUBlocking& blocking) const {
    for (const Width& width : Widths()) {
      SCOPED_TRACE(::testing::Message() << width.name << " n " << matrix.Size() << " panel "
                                        << blocking.panel << " strip " << blocking.strip
                                        << (blocking.inPlace ? " in place" : " on a copy"));
      ExpectFrom([&](LuSystem& s) { return gsl_LUDecomposeBlocked(s, *width.kernels, blocking); });
    }
  }
};

gsl_LUBlocking AnyBlocking(RandomNumbers& random) {
  const std::ptrdiff_t panels[] = {8, 16, 24, 64, 128, 256};
  const std::ptrdiff_t strips[] = {8, 24, 40, 384};
  const std::ptrdiff_t panel = panels[random.Below(6)];
  const std::ptrdiff_t strip = strips[random.Below(4)];
  const bool inPlace = random.Chance(0.5);
  return {panel, strip, inPlace, random.Chance(0.5) ? Broadcast::InOperand : Broadcast::InRegister};
}

} // namespace

TEST(GslLUDecomposition, EverySizeTo130HasTheBitsOfTheTextbook) {
  const std::uint64_t seed = 20240611;
  RecordProperty("seed", std::to_string(seed));
  RandomNumbers random(seed);
  for (int n = 1; n <= 130; ++n) {
    for (const MatrixFamily family : kMatrixFamilies) {
      if (kTestScaleDivisor > 1 && n > 30 && random.Below(kTestScaleDivisor) != 0) continue;
      SCOPED_TRACE(::testing::Message() << "family " << static_cast<int>(family) << " n " << n);
      const Case c(MakeMatrix(family, n, random));
      c.ExpectFromEveryWidth(gsl_ChooseLUBlocking(n));
      c.ExpectFromEveryWidth(AnyBlocking(random));
      for (const Width& width : Widths()) {
        c.ExpectFrom([&](LuSystem& s) { return gsl_LUDecompose(s, *width.kernels); });
      }
      if (HasFailure()) return;
    }
  }
}

TEST(GslLUDecomposition, SampledSizesTo700HaveTheBitsOfTheTextbook) {
  const std::uint64_t seed = 700;
  RecordProperty("seed", std::to_string(seed));
  RandomNumbers random(seed);
  const int sizes[] = {131, 144, 167, 191, 200, 256, 257, 320, 389, 511, 512, 700};
  const int families = static_cast<int>(sizeof kMatrixFamilies / sizeof *kMatrixFamilies);
  int family = 0;
  for (const int n : sizes) {
    if (kTestScaleDivisor > 1 && n > 200) break;
    // Up to 257 every size runs all families. Beyond that, each size runs some families, and
    // together the sizes run all.
    const int count = kTestScaleDivisor > 1 ? 4 : n <= 257 ? families : n < 700 ? 5 : 3;
    for (int k = 0; k < count; ++k, ++family) {
      const MatrixFamily kind = kMatrixFamilies[family % families];
      SCOPED_TRACE(::testing::Message() << "family " << static_cast<int>(kind) << " n " << n);
      const Case c(MakeMatrix(kind, n, random));
      gsl_LUBlocking blocking = gsl_ChooseLUBlocking(n);
      blocking.inPlace = false;
      blocking.broadcast = Broadcast::InRegister;
      c.ExpectFromEveryWidth(blocking);
      blocking.inPlace = true;
      blocking.broadcast = Broadcast::InOperand;
      c.ExpectFromEveryWidth(blocking);
      // These are the panels of systems that are too large to compare at every size.
      blocking.panel = k % 2 == 0 ? 128 : 256;
      if (n > 257) c.ExpectFromEveryWidth(blocking);
      if (HasFailure()) return;
    }
  }
}

TEST(GslLUDecomposition, AFewBlocksHaveTheBitsOfTheTextbook) {
  RandomNumbers random(17);
  for (const int n : {17, 24, 31}) {
    const Case c(MakeMatrix(MatrixFamily::Random, n, random));
    for (const bool inPlace : {false, true}) {
      c.ExpectFromEveryWidth({8, 24, inPlace, Broadcast::InRegister});
      c.ExpectFromEveryWidth({16, 8, inPlace, Broadcast::InOperand});
    }
  }
}

TEST(GslLUDecomposition, APivotKeepsItsSignUnlessItIsBelowTheTinyPivot) {
  // The identity, but for one element of the diagonal and one at the end of its row. Nothing is
  // exchanged, and nothing is subtracted.
  const double tiny = gsl_wide::kTinyPivot;
  const int n = 24;
  for (const auto& [element, pivot] :
       {std::pair(-tiny, -tiny), std::pair(-numbers::Below(tiny), tiny)}) {
    for (const int at : {5, 13}) {
      for (const Width& width : Widths()) {
        SquareMatrix matrix =
            matrix_families::Fill(n, [](int i, int j) { return i == j ? 1.0 : 0.0; });
        matrix.At(at, n - 1) = 1.0;
        SquareMatrix expected(matrix);
        matrix.At(at, at) = element;
        expected.At(at, at) = pivot;
        std::vector<std::int32_t> pivots(n);
        LuSystem system = {matrix.Rows(), n, pivots.data(), 1};
        ASSERT_EQ(gsl_LUDecomposeBlocked(system, *width.kernels, {8, 24, false}),
                  LuResult::Decomposed);
        EXPECT_EQ(matrix.Data(), expected.Data()) << width.name;
      }
    }
  }
}

TEST(GslLUDecomposition, RowsAnywhereInMemoryAreLeftWhereTheyAre) {
  RandomNumbers random(3);
  const int n = 45;
  const Case c(MakeMatrix(MatrixFamily::Random, n, random));
  for (const bool inPlace : {false, true}) {
    std::vector<std::vector<double>> storage;
    std::vector<double*> rows;
    for (int i = 0; i < n; ++i) {
      storage.emplace_back(static_cast<std::size_t>(n + i % 9 + 2), numbers::kSentinel);
      rows.push_back(storage.back().data() + 1 + i % 9);
      for (int j = 0; j < n; ++j)
        rows.back()[j] = c.matrix.At(i, j);
    }
    std::vector<std::int32_t> pivots(static_cast<std::size_t>(n));
    LuSystem system = {rows.data(), n, pivots.data(), 1};
    ASSERT_EQ(gsl_LUDecomposeBlocked(system, gsl_BestWideKernels(), {16, 24, inPlace}),
              LuResult::Decomposed);
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < n; ++j) {
        ASSERT_EQ(rows[static_cast<std::size_t>(i)][j], c.factors.At(i, j)) << i << " " << j;
      }
      EXPECT_EQ(rows[static_cast<std::size_t>(i)][-1], numbers::kSentinel);
      EXPECT_EQ(rows[static_cast<std::size_t>(i)][n], numbers::kSentinel);
    }
  }
}

TEST(GslLUDecomposition, PanelsGrowWithTheSystem) {
  EXPECT_EQ(gsl_ChooseLUBlocking(1023).panel, 64);
  EXPECT_EQ(gsl_ChooseLUBlocking(1024).panel, 128);
}

TEST(GslLUDecomposition, LargeSystemsAreWorkedOnInPlace) {
  EXPECT_FALSE(gsl_ChooseLUBlocking(2047).inPlace);
  EXPECT_TRUE(gsl_ChooseLUBlocking(2048).inPlace);
}

TEST(GslLUDecomposition, NumbersAreCopiedIntoRegistersWhereVectorsAreNotSplit) {
  EXPECT_EQ(gsl_ChooseLUBlocking(100).broadcast,
            gsl_SplitsWideVectors() ? Broadcast::InOperand : Broadcast::InRegister);
}

TEST(GslLUDecomposition, WithoutScratchTheResultIsTheSame) {
  RandomNumbers random(4);
  const Case c(MakeMatrix(MatrixFamily::SmallIntegers, 60, random));
  const FailingMemory noMore(4096);
  c.ExpectFrom([](LuSystem& s) {
    EXPECT_EQ(gsl_LUDecomposeBlocked(s, gsl_BestWideKernels(), {64, 384, false}),
              LuResult::NoMemory);
    return gsl_LUDecompose(s, gsl_BestWideKernels());
  });
}

TEST(GslLUDecomposition, WithoutAnyMemoryTheMatrixIsUntouched) {
  RandomNumbers random(5);
  SquareMatrix matrix = MakeMatrix(MatrixFamily::Random, 60, random);
  const SquareMatrix before(matrix);
  std::vector<std::int32_t> pivots(60);
  LuSystem system = {matrix.Rows(), 60, pivots.data(), 1};
  const FailingMemory none(0);
  EXPECT_EQ(gsl_LUDecompose(system, gsl_BestWideKernels()), LuResult::NoMemory);
  EXPECT_EQ(matrix.Data(), before.Data());
}

TEST(GslLUDecomposition, ScratchBeyondTheAddressSpaceIsRefused) {
  LuSystem system = {nullptr, 2147483640, nullptr, 1};
  EXPECT_EQ(gsl_LUDecomposeBlocked(system, gsl_BestWideKernels(), {128, 384, false}),
            LuResult::NoMemory);
}

TEST(GslLUDecomposition, SmallSystemsAreSolvedWithoutMemory) {
  RandomNumbers random(8);
  for (const Width& width : Widths()) {
    for (int n = 1; n <= gsl_wide::kLargestSmall; ++n) {
      SCOPED_TRACE(::testing::Message() << width.name << " n " << n);
      const Case c(MakeMatrix(MatrixFamily::Random, n, random));
      std::vector<double> b(static_cast<std::size_t>(n), 1.0), x(b);
      const FailingMemory none(0);
      c.ExpectFrom(
          [&](LuSystem& s) { return gsl_LUSolveSmall(s, *width.kernels, b.data(), x.data()); });
      SquareMatrix factors(c.matrix);
      TextbookLu textbook(factors.Rows(), n);
      ASSERT_TRUE(textbook.Decompose());
      textbook.Substitute(b.data());
      EXPECT_TRUE(std::equal(x.begin(), x.end(), b.begin(), SameBits));
    }
  }
}
