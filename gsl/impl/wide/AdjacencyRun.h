#ifndef GSL_WIDE_ADJACENCY_RUN_H
#define GSL_WIDE_ADJACENCY_RUN_H

namespace gsl_wide {

/// The entries of an adjacency row that are scanned together: a cache line of bytes.
constexpr int kAdjacencyRun = 64;

} // namespace gsl_wide

#endif
