#ifndef GSL_SWEEP_INWARD_RAY_H
#define GSL_SWEEP_INWARD_RAY_H

#include "SolidPair.h"

namespace gsl_sweep {

/// A ray from a point inside a triangle of a surface, to the inner side. The point is a half of the
/// first corner and a quarter of each other corner.
///
/// The ray is along an axis, turned by an infinitely small amount. So it meets no edge and no
/// corner, and is in the plane of no triangle.
class InwardRay {
public:
  /// Requires a triangle with area, which must outlive the ray. Range: see Determinant.h.
  explicit InwardRay(const SurfaceTriangle& face);

  int Axis() const { return m_axis; }
  /// Returns 1 when the ray is along the axis, and -1 when against it.
  int Sense() const { return m_sense; }

  /// Returns 1 when the ray leaves a solid through the triangle, -1 when it enters, and 0 when it
  /// misses the triangle or begins on it. The sum over a surface is the number of times that the
  /// surface winds around the points at the beginning of the ray.
  int Crossing(const SurfaceTriangle& t) const;

private:
  int Side(const Coord3& from, const Coord3& to) const;

  const SurfaceTriangle& m_face;
  int m_axis, m_sense;
};

} // namespace gsl_sweep

#endif
