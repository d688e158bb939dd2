#ifndef GSL_SWEEP_TRIANGLE_COPIES_H
#define GSL_SWEEP_TRIANGLE_COPIES_H

#include "Corners.h"

#include <cstdint>
#include <vector>

namespace gsl_sweep {

/// The triangles of a body of which several have the same corners. Copies face the same way or the
/// other way, and may begin at any corner.
struct TriangleCopies {
  struct Weight {
    std::uint32_t place;
    int weight;
  };

  /// In rising order: the places of triangles that have the corners of a triangle with a lower
  /// number, in the same order.
  std::vector<std::uint32_t> repeated;
  /// In rising order of the places: how often triangles count where a surface is summed up, unless
  /// that is once. One triangle counts for all its copies, less those that face the other way.
  std::vector<Weight> weights;
};

/// Finds the copies among the triangles at the given places. The time is n log n. Equal coordinates
/// are one corner; -0.0 equals 0.0. Requires triangles whose corners differ.
TriangleCopies FindCopies(const Corners& corners, const std::vector<std::uint32_t>& places);

} // namespace gsl_sweep

#endif
