#include "wide/EdgeScan.h"

#include "RandomNumbers.h"

#include <gtest/gtest.h>

#include <vector>

// This test is compiled for the instruction set of the tests. gsl_WideKernels_test.cpp runs the
// other sets.
using namespace gsl_wide::GSL_LANES_NAMESPACE;
using gsl_wide::kAdjacencyRun;

namespace {

/// Counts entry by entry.
std::size_t RunsToSkip(const std::vector<unsigned char>& entries,
                       const std::vector<unsigned char>& open) {
  for (std::size_t k = 0; k < entries.size(); ++k) {
    if ((entries[k] & open[k]) != 0) return k / kAdjacencyRun;
  }
  return entries.size() / kAdjacencyRun;
}

} // namespace

TEST(EdgeScan, OpenEdgesMeetsEachEntryOfARun) {
  std::vector<unsigned char> entries(kAdjacencyRun, 0), open(kAdjacencyRun, 0xFF);
  EXPECT_FALSE(AnyBit(OpenEdges(entries.data(), open.data())));
  for (std::size_t at = 0; at < entries.size(); ++at) {
    entries[at] = 1;
    EXPECT_TRUE(AnyBit(OpenEdges(entries.data(), open.data()))) << at;
    open[at] = 0;
    EXPECT_FALSE(AnyBit(OpenEdges(entries.data(), open.data()))) << at;
    open[at] = 0xFF;
    entries[at] = 0;
  }
}

TEST(EdgeScan, SkipRunsAgreesWithOneEntryAfterTheOther) {
  RandomNumbers random(20);
  for (int run = 0; run < 2000; ++run) {
    const std::size_t size = static_cast<std::size_t>(random.Below(12)) * kAdjacencyRun;
    std::vector<unsigned char> entries(size, 0), open(size, 0);
    for (int edges = random.Below(4); edges > 0 && size > 0; --edges)
      entries[static_cast<std::size_t>(random.Below(static_cast<int>(size)))] = 1;
    for (unsigned char& byte : open)
      byte = random.Chance(0.7) ? 0xFF : 0;
    EXPECT_EQ(SkipRuns(entries.data(), open.data(), entries.data(), size / kAdjacencyRun),
              RunsToSkip(entries, open));
  }
}
