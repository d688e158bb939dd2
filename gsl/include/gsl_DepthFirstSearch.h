#ifndef GSL_DEPTH_FIRST_SEARCH_H
#define GSL_DEPTH_FIRST_SEARCH_H

#include "gsl_Export.h"

/// Labels each vertex of a graph with the number of its component.
///
/// `adjacency` is n x n, row by row: entry v * n + u is true when an edge leads from v to u. The
/// diagonal does not count. Starts are taken in increasing order. A component is what its start
/// reaches along out-edges, without the earlier components. For a symmetric matrix these are the
/// connected components; otherwise a vertex that only points into an earlier component starts its
/// own.
///
/// Outputs    `labels` receives n component numbers from 0, `count` the number of components. With
///            n <= 0 `count` is 0 and `labels` is not written.
/// Memory     a byte and a bit per vertex. Without them the search chains the waiting vertices
///            through `labels`, which is slower but has the same result. The search does not
///            recurse: any graph needs the same few hundred bytes of stack.
/// Reading    rows many entries at a time, only where a vertex is left, and no row after all
///            vertices are reached.
/// Errors     none thrown, none printed. `labels`, `count` and `adjacency` must be apart.
GSL_API void gsl_DepthFirstSearch(bool const* adjacency, int n, int* labels, int& count);

#endif
