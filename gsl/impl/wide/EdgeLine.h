#ifndef GSL_WIDE_EDGE_LINE_H
#define GSL_WIDE_EDGE_LINE_H

namespace gsl_kernel {

/// Entries of an adjacency row that are looked at together: a cache line of bytes.
constexpr int kEdgeLine = 64;

} // namespace gsl_kernel

#endif
