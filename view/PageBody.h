#ifndef GSL_VIEW_PAGE_BODY_H
#define GSL_VIEW_PAGE_BODY_H

#include "gsl_Arithmetic.h"
#include "gsl_Sweep.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace gsl_view {

/// The triangles of a body as the viewer page keeps them: a corner is
/// centre + scale * (x, y, z), with x, y, z in single precision.
///
/// Scale      the least power of two from 2^-1000 to 2^1023 that is more than half the longest side
///            of the box, so that x, y and z are from -1 to 1. Near the end of the range of
///            double, where 2^1023 is not enough, they are from -2 to 2.
/// Accuracy   a coordinate is off by at most 2^-24 of the scale, up to the rounding of doubles.
/// Vertices   corners that are equal in single precision are one vertex.
/// NaN        triangles with a NaN or infinite corner are left out.
struct PageBody {
  static constexpr std::uint32_t kLeftOut = 0xffffffffu;

  gsl_arithmetic::Coord3 centre{0.0, 0.0, 0.0}; ///< of the box around the triangles
  double scale = 1.0;
  std::vector<float> vertices; ///< x, y, z of each vertex, by its first corner
  std::vector<std::uint32_t>
      triangles; ///< three numbers of vertices each, in the order of the body
  /// The number in `triangles` of each triangle of the body, or kLeftOut. Empty when all are there.
  std::vector<std::uint32_t> numbers;

  std::size_t TriangleCount() const { return triangles.size() / 3; }
  /// Returns the number in `triangles` of a triangle of the body, or kLeftOut.
  std::uint32_t NumberOf(std::size_t triangle) const;
  /// Returns a finite point in the numbers of `vertices`, rounded.
  void Place(const gsl_arithmetic::Coord3& point, float place[3]) const;

  static PageBody Of(const gsl_sweep::TriangleView& view);
};

} // namespace gsl_view

#endif
