#include "wide/LuElimination.h"

#include "Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

// gsl_LUDecomposition_test.cpp runs the elimination for every width and blocking.
using namespace gsl_wide::GSL_LANES_NAMESPACE;
using numbers::kNaN;

namespace {

/// Returns the row that a search finds. It begins at row 100 and sees `merits`, padded with NaN.
std::ptrdiff_t PivotOf(std::vector<double> merits) {
  merits.resize((merits.size() + kLanes - 1) / kLanes * kLanes, kNaN);
  PivotSearch search(100);
  for (std::size_t k = 0; k < merits.size(); k += kLanes)
    search.See(Load(merits.data() + k));
  return search.Row();
}

} // namespace

TEST(LuElimination, PivotSearchFindsTheLargestMeritWhereverItIs) {
  for (std::size_t at = 0; at < 20; ++at) {
    std::vector<double> merits(20, 0.5);
    merits[at] = 0.75;
    EXPECT_EQ(PivotOf(merits), 100 + static_cast<std::ptrdiff_t>(at));
  }
}

TEST(LuElimination, PivotSearchTakesTheLastOfEqualMerits) {
  EXPECT_EQ(PivotOf({0.5, 0.75, 0.75, 0.5, 0.75, 0.5}), 104);
  EXPECT_EQ(PivotOf({0.0, 0.0, 0.0}), 102) << "zero is a merit";
}

TEST(LuElimination, PivotSearchNeverTakesNaN) {
  EXPECT_EQ(PivotOf({kNaN, 0.25, kNaN, kNaN}), 101);
  EXPECT_EQ(PivotOf({kNaN, kNaN, kNaN}), -1);
}

TEST(LuElimination, LargestOfRowCopiesEveryElement) {
  for (std::ptrdiff_t n = 0; n < 20; ++n) {
    std::vector<double> row, copy(static_cast<std::size_t>(n) + 1, numbers::kSentinel);
    for (std::ptrdiff_t k = 0; k < n; ++k)
      row.push_back(k % 3 == 0 ? kNaN : static_cast<double>(k % 2 == 0 ? k : -k));
    double expected = 0.0;
    for (const double value : row)
      expected = std::isnan(value) ? expected : std::fmax(expected, std::fabs(value));
    EXPECT_EQ(LargestOfRow(row.data(), n, copy.data()), expected) << n;
    for (std::size_t k = 0; k < row.size(); ++k)
      EXPECT_EQ(numbers::Bits(copy[k]), numbers::Bits(row[k])) << n << " " << k;
    EXPECT_EQ(copy.back(), numbers::kSentinel);
  }
}
