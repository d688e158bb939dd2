#ifndef GSL_VIEW_HEMISPHERE_H
#define GSL_VIEW_HEMISPHERE_H

#include "Projection.h"

#include <optional>

namespace gsl_view {

/// A map of one half of the directions, seen from outside of the sphere with +y up: Lambert's
/// azimuthal projection, in which equal areas are equal solid angles. On the half around +z the x
/// axis points to the right; on the half around -z, to the left.
struct Hemisphere {
  PagePoint centre;
  double radius = 1.0; ///< of the rim, in millimetres
  bool isUpper = true; ///< around +z, not -z

  /// Returns whether a direction belongs to this half; the rim belongs to the upper half.
  bool Has(const Coord3& direction) const { return (direction.z >= 0.0) == isUpper; }
  /// Returns where a direction of length one is; also outside the rim, except for the direction
  /// opposite to the centre.
  PagePoint At(const Coord3& direction) const;
  /// Returns the unit direction at a place; nothing outside the rim.
  std::optional<Coord3> DirectionAt(const PagePoint& place) const;
};

} // namespace gsl_view

#endif
