#ifndef GSL_WIDE_EDGE_SCAN_H
#define GSL_WIDE_EDGE_SCAN_H

#include "wide/AdjacencyRun.h"
#include "wide/Lanes.h"

#include <cstddef>

namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

/// Returns the edges of one run that lead to open vertices. The parts of the run are or-ed
/// together.
GSL_ALWAYS_INLINE Bits OpenEdges(const unsigned char* entries, const unsigned char* open) {
  Bits found = LoadBits(entries) & LoadBits(open);
#pragma GCC unroll 4
  for (int k = kLanes * 8; k < kAdjacencyRun; k += kLanes * 8) {
    found |= LoadBits(entries + k) & LoadBits(open + k);
  }
  return found;
}

/// Returns how many runs to skip to the first run with an edge to an open vertex, or `runs` when
/// no run has such an edge. Fetches the same runs of the row that comes next into the second-level
/// cache.
inline std::size_t SkipRuns(const unsigned char* entries, const unsigned char* open,
                            const unsigned char* next, std::size_t runs) {
  std::size_t run = 0;
  for (; run + 4 <= runs; run += 4) {
    const std::size_t at = run * kAdjacencyRun;
    Bits found[4];
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
      __builtin_prefetch(next + at + k * kAdjacencyRun, 0, 2);
      found[k] = OpenEdges(entries + at + k * kAdjacencyRun, open + at + k * kAdjacencyRun);
    }
    if (AnyBit(found[0] | found[1] | found[2] | found[3])) {
      // No branch is used, because no processor can predict which of the four it is.
      const int which = AnyBit(found[0]) | AnyBit(found[1]) << 1 | AnyBit(found[2]) << 2 | 8;
      return run + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(which)));
    }
  }
  for (; run < runs; ++run) {
    if (AnyBit(OpenEdges(entries + run * kAdjacencyRun, open + run * kAdjacencyRun))) break;
  }
  return run;
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
