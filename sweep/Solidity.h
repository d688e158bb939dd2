#ifndef GSL_SWEEP_SOLIDITY_H
#define GSL_SWEEP_SOLIDITY_H

#include "Corners.h"
#include "TriangleCopies.h"

#include <vector>

namespace gsl_sweep {

/// What triangles are as the surface of a solid.
struct SolidSurface {
  Solidity solidity;
  /// The place of the lowest triangle with area of each component, by number. Two triangles at an
  /// edge belong to one component; of more than two, those that bound the same part of the solid.
  /// Not set when the surface is not closed or has no volume.
  std::vector<std::uint32_t> components;
  /// The component of the triangle at each place, as a number that all its triangles have. Empty
  /// where there are fewer than two components, those without area included.
  std::vector<std::uint32_t> componentOf;
  /// No triangle of some component has area.
  bool hasFlatComponent = false;
  /// The triangles that are there several times.
  TriangleCopies copies;

  std::size_t Bytes() const {
    return (components.capacity() + componentOf.capacity() + copies.repeated.capacity()) *
               sizeof(std::uint32_t) +
           copies.weights.capacity() * sizeof(TriangleCopies::Weight);
  }
};

/// Decides whether triangles are the surface of a solid, see Solidity. Where there are several
/// components, only the sign of their whole volume is looked at. The time is linear, apart from
/// the sorting of triangles at edges that more than two use, and so is the memory: six bytes for
/// each triangle, and little more when neighbours are stored close to each other and few edges have
/// more than two triangles.
SolidSurface SolidSurfaceOf(const Corners& corners);

} // namespace gsl_sweep

#endif
