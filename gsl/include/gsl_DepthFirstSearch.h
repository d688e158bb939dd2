#ifndef GSL_DEPTH_FIRST_SEARCH_H
#define GSL_DEPTH_FIRST_SEARCH_H

#include "gsl_Export.h"

/// Labels the vertices of a graph with the component that each is reached in.
///
/// `adjacency` is n x n, row by row: entry v * n + u is true when an edge leads from v to u. The
/// diagonal does not count. A component is what can be reached along out-edges from its start,
/// without the pieces before it; starts are taken in increasing order. So for a symmetric matrix
/// pieces are the connected components; otherwise a vertex that only points into an earlier
/// component starts its own. `labels` receives n component numbers from 0, `count` the number of
/// components; with n <= 0 count is 0 and labels is not written. Depth      no recursion: the
/// vertices that wait are a set, so that any graph needs the same few
///            hundred bytes of stack, and a byte and a bit of memory per vertex; without that
///            memory the search chains them through `labels`: slower, not wrong.
/// Reads      rows many entries at a time, only where a vertex is left; none once all are reached.
/// Errors     none thrown, none printed. `labels`, `count` and `adjacency` must be apart.
GSL_API void gsl_DepthFirstSearch(bool const* adjacency, int n, int* labels, int& count);

#endif
