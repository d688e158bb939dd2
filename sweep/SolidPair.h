#ifndef GSL_SWEEP_SOLID_PAIR_H
#define GSL_SWEEP_SOLID_PAIR_H

#include "Determinant.h"

namespace gsl_sweep {

using gsl_arithmetic::Coord3;

/// A triangle of the surface of a solid. It turns left as seen from outside.
struct SurfaceTriangle {
  Coord3 corner[3];

  /// Decides exactly. A triangle without area bounds nothing.
  bool HasArea() const;
};

enum class SolidMeeting {
  Apart,      ///< they share no point
  Touching,   ///< they may share a point, and do not show that the interiors overlap
  Overlapping ///< the interiors of their solids overlap beside a point that they share
};

/// Judges exactly how two triangles, of two solids at rest, meet. A triangle without area is apart
/// from every other.
///
/// They show that the interiors overlap when one goes through the inside of the other, or to its
/// inner side from a point inside it, or when they have a part of a plane in common and face the
/// same way.
/// Range      of coordinates: see Determinant.h.
SolidMeeting MeetAtRest(const SurfaceTriangle& a, const SurfaceTriangle& b);

} // namespace gsl_sweep

#endif
