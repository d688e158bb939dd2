#ifndef GSL_WIDE_EDGE_SCAN_H
#define GSL_WIDE_EDGE_SCAN_H

#include "wide/AdjacencyRun.h"
#include "wide/Lanes.h"

#include <cstddef>

namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

/// The edges of one line that lead to open vertices, or-ed together.
GSL_ALWAYS_INLINE Bits OpenEdges(const unsigned char* entries, const unsigned char* open) {
  Bits found = LoadBits(entries) & LoadBits(open);
#pragma GCC unroll 4
  for (int k = kLanes * 8; k < kAdjacencyRun; k += kLanes * 8) {
    found |= LoadBits(entries + k) & LoadBits(open + k);
  }
  return found;
}

/// Returns how many lines to skip to the first line with an edge to an open vertex, or `lines` when
/// no line has such an edge. The same lines of the row that comes next are fetched into the
/// second-level cache.
inline std::size_t SkipLines(const unsigned char* entries, const unsigned char* open,
                             const unsigned char* next, std::size_t lines) {
  std::size_t line = 0;
  for (; line + 4 <= lines; line += 4) {
    const std::size_t at = line * kAdjacencyRun;
    Bits found[4];
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
      __builtin_prefetch(next + at + k * kAdjacencyRun, 0, 2);
      found[k] = OpenEdges(entries + at + k * kAdjacencyRun, open + at + k * kAdjacencyRun);
    }
    if (AnyBit(found[0] | found[1] | found[2] | found[3])) {
      // No branch: which of the four it is cannot be predicted.
      const int which = AnyBit(found[0]) | AnyBit(found[1]) << 1 | AnyBit(found[2]) << 2 | 8;
      return line + static_cast<std::size_t>(__builtin_ctz(static_cast<unsigned>(which)));
    }
  }
  for (; line < lines; ++line) {
    if (AnyBit(OpenEdges(entries + line * kAdjacencyRun, open + line * kAdjacencyRun))) break;
  }
  return line;
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
