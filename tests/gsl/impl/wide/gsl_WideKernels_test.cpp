#include "wide/gsl_WideKernels.h"

#include "Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

std::vector<const gsl_WideKernels*> AllKernels() {
  std::vector<const gsl_WideKernels*> all;
  for (const gsl_VectorWidth width :
       {gsl_VectorWidth::Baseline, gsl_VectorWidth::Avx2, gsl_VectorWidth::Avx512}) {
    if (const gsl_WideKernels* const kernels = gsl_FindWideKernels(width)) all.push_back(kernels);
  }
  return all;
}

} // namespace

TEST(GslWideKernels, BaselineRunsEverywhere) {
  EXPECT_EQ(gsl_FindWideKernels(gsl_VectorWidth::Baseline), &gsl_WideKernelsBaseline);
}

TEST(GslWideKernels, AnUnknownWidthHasNoKernels) {
  EXPECT_EQ(gsl_FindWideKernels(static_cast<gsl_VectorWidth>(3)), nullptr);
}

TEST(GslWideKernels, TheWidestOfTheProcessorIsChosen) {
  EXPECT_EQ(&gsl_BestWideKernels(), AllKernels().back());
}

TEST(GslWideKernels, ProcessorsOfOneFamilySplitWideVectors) {
  std::ifstream file("/proc/cpuinfo");
  const std::string about((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const bool ofAmd = about.find("AuthenticAMD") != std::string::npos;
  const bool ofFamily = about.find("cpu family\t: 25\n") != std::string::npos;
  EXPECT_EQ(gsl_SplitsWideVectors(), ofAmd && ofFamily);
}

TEST(GslWideKernels, LargestOfRowSetsNaNAside) {
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    for (std::ptrdiff_t n = 0; n < 40; ++n) {
      for (std::ptrdiff_t at = 0; at < n; ++at) {
        std::vector<double> row(static_cast<std::size_t>(n), numbers::kNaN);
        row[static_cast<std::size_t>(at)] = -3.0;
        std::vector<double> copy(row.size() + 1, numbers::kSentinel);
        EXPECT_EQ(kernels->largestOfRow(row.data(), n, nullptr), 3.0);
        EXPECT_EQ(kernels->largestOfRow(row.data(), n, copy.data()), 3.0);
        EXPECT_EQ(copy[static_cast<std::size_t>(at)], -3.0);
        EXPECT_TRUE(n < 2 || std::isnan(copy[static_cast<std::size_t>(at == 0 ? 1 : 0)]));
        EXPECT_EQ(copy.back(), numbers::kSentinel);
      }
      const std::vector<double> nothing(static_cast<std::size_t>(n), numbers::kNaN);
      EXPECT_EQ(kernels->largestOfRow(nothing.data(), n, nullptr), 0.0);
    }
  }
}

TEST(GslWideKernels, SkipRunsStopsAtTheFirstOpenEdge) {
  constexpr std::size_t kRuns = 11;
  constexpr std::size_t kRun = gsl_wide::kAdjacencyRun;
  for (const gsl_WideKernels* const kernels : AllKernels()) {
    std::vector<unsigned char> open(kRuns * kRun, 0xFF);
    for (std::size_t at = 0; at < open.size(); ++at) {
      std::vector<unsigned char> entries(open.size(), 0);
      const auto skipped = [&] {
        return kernels->skipRuns(entries.data(), open.data(), entries.data(), kRuns);
      };
      EXPECT_EQ(skipped(), kRuns);
      entries[at] = 1;
      EXPECT_EQ(skipped(), at / kRun);
      open[at] = 0;
      EXPECT_EQ(skipped(), kRuns) << "the vertex is not open";
      open[at] = 0xFF;
      entries.back() = 1;
      EXPECT_EQ(skipped(), at / kRun) << "a later edge does not count";
    }
  }
}
