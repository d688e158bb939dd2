#ifndef GSL_SWEEP_CROSSING_PAIR_H
#define GSL_SWEEP_CROSSING_PAIR_H

#include "SolidPair.h"

namespace gsl_sweep {

/// Returns whether the corners are not in one line. Range: see Determinant.h.
bool HasArea(const SurfaceTriangle& t);

/// Returns whether two triangles share a point that is neither a common corner nor on a common
/// edge. Corners with equal coordinates are common. Two triangles with the same three corners do.
///
/// Requires triangles with area. Range: see Determinant.h.
bool DoCross(const SurfaceTriangle& a, const SurfaceTriangle& b);

} // namespace gsl_sweep

#endif
