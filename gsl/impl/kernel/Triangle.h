#ifndef GSL_KERNEL_TRIANGLE_H
#define GSL_KERNEL_TRIANGLE_H

#include "kernel/Vector.h"

namespace gsl_kernel {

/// A corner for the triangle test, with the normal of its two edges and the square of this normal.
/// The length of the normal is the doubled area.
struct Corner {
  Coord3 at, next, last;
  Coord3 normal;
  double normalSquared;
};

inline Corner CornerAt(const Coord3& at, const Coord3& next, const Coord3& last) {
  const Coord3 normal = Cross(Subtract(next, at), Subtract(at, last));
  return {at, next, last, normal, Dot(normal, normal)};
}

/// Returns the barycentric weight of the corner at x, times normalSquared.
inline double ScaledWeight(const Coord3& x, const Corner& corner) {
  const Coord3 c = Cross(Subtract(corner.next, x), Subtract(x, corner.last));
  return Dot(c, corner.normal);
}

/// Computes the barycentric weights of x, a point of the triangle's plane. All three are always
/// written.
///
/// Returns false when a weight times its squared doubled area falls below -linearTolerance^2, so
/// the border and a small band beyond it are inside. A degenerate triangle has NaN weights, and the
/// result is true.
inline bool PointInTriangle(const Coord3& x, const Coord3& p0, const Coord3& p1, const Coord3& p2,
                            double linearTolerance, double* weights) {
  const Corner corners[3] = {CornerAt(p0, p1, p2), CornerAt(p1, p2, p0), CornerAt(p2, p0, p1)};
  const double tolerance2 = linearTolerance * linearTolerance;
  bool inside = true;
  for (int i = 0; i < 3; ++i) {
    weights[i] = ScaledWeight(x, corners[i]) / corners[i].normalSquared;
    // degenerate-triangle-holds-every-point: weights of NaN pass the rejection.
    if (weights[i] * corners[i].normalSquared < -tolerance2) inside = false;
  }
  return inside;
}

/// A triangle that many points are tested against. Returns the results of PointInTriangle, bit for
/// bit, without the weights.
class TriangleTest {
public:
  TriangleTest(const Coord3& p0, const Coord3& p1, const Coord3& p2, double linearTolerance)
      : m_corners{CornerAt(p0, p1, p2), CornerAt(p1, p2, p0), CornerAt(p2, p0, p1)},
        m_tolerance2(linearTolerance * linearTolerance) {}

  bool Contains(const Coord3& x) const {
    for (const Corner& corner : m_corners) {
      const double scaled = ScaledWeight(x, corner);
      // Only a negative weight can be too small, so only the rounding of a negative weight matters.
      // The quotient and the product of any other number with a square are not negative, or NaN.
      if (!(scaled < 0.0)) continue;
      if (scaled / corner.normalSquared * corner.normalSquared < -m_tolerance2) return false;
    }
    return true;
  }

private:
  Corner m_corners[3];
  double m_tolerance2;
};

} // namespace gsl_kernel

#endif
