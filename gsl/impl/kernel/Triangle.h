#ifndef GSL_KERNEL_TRIANGLE_H
#define GSL_KERNEL_TRIANGLE_H

#include "kernel/TriangleSweepBounds.h"
#include "kernel/TwoDoubles.h"

#include <limits>

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
        m_tolerance2(linearTolerance * linearTolerance),
        m_outside(-std::numeric_limits<double>::infinity()), m_inside(0.0) {
    bool isDecided = m_tolerance2 >= 0.0;
    for (const Corner& corner : m_corners)
      isDecided &= (corner.normalSquared > kLeastDecidedSquare) &
                   (corner.normalSquared < kLargestDecidedSquare);
    if (!isDecided) return;
    m_outside = -(1.0 + kWeightSlack) * kLeastDecidedWeight;
    if (!(m_tolerance2 > kLeastDecidedWeight)) return;
    m_outside = -(1.0 + kWeightSlack) * m_tolerance2;
    m_inside = -(1.0 - kWeightSlack) * m_tolerance2;
  }

  /// Decides by the least weight, without a branch that random points would mislead.
  bool Contains(const Coord3& x) const {
    double least = 0.0; // a NaN does not count
    for (const Corner& corner : m_corners) {
      const double scaled = ScaledWeight(x, corner);
      least = scaled < least ? scaled : least;
    }
    return IsWithin(x, least);
  }

  /// Returns a bit for each of the corners of another triangle: bit i is Contains of corner i.
  unsigned ContainsCorners(const Coord3& p0, const Coord3& p1, const Coord3& p2) const {
    const TwoCoords points[2] = {Together(p0, p1), Both(p2)};
    TwoDoubles least[2] = {Both(0.0), Both(0.0)};
    for (const Corner& corner : m_corners) {
      const TwoCoords next = Both(corner.next), last = Both(corner.last);
      for (int k = 0; k < 2; ++k) {
        // Is ScaledWeight.
        const TwoDoubles scaled =
            Dot(Cross(Subtract(next, points[k]), Subtract(points[k], last)), Both(corner.normal));
        least[k] = Smaller(scaled, least[k]);
      }
    }
    const double weights[3] = {least[0][0], least[0][1], least[1][0]};
    unsigned outside = 0, inside = 0;
    for (int k = 0; k < 3; ++k) {
      outside |= static_cast<unsigned>(weights[k] < m_outside) << k;
      inside |= static_cast<unsigned>(weights[k] >= m_inside) << k;
    }
    const unsigned open = ~(outside | inside) & 7u;
    if (open == 0) return inside & ~outside;
    return static_cast<unsigned>(Contains(p0)) | static_cast<unsigned>(Contains(p1)) << 1 |
           static_cast<unsigned>(Contains(p2)) << 2;
  }

private:
  bool IsWithin(const Coord3& x, double leastWeight) const {
    const bool isOutside = leastWeight < m_outside;
    if (!(isOutside | (leastWeight >= m_inside))) return ContainsByQuotients(x);
    return !isOutside;
  }

  bool ContainsByQuotients(const Coord3& x) const {
    for (const Corner& corner : m_corners) {
      const double scaled = ScaledWeight(x, corner);
      // Only a negative weight can be too small, so only the rounding of a negative weight matters.
      // The quotient and the product of any other number with a square are not negative, or NaN.
      if (!(scaled < 0.0)) continue;
      if (scaled / corner.normalSquared * corner.normalSquared < -m_tolerance2) return false;
    }
    return true;
  }

  Corner m_corners[3];
  double m_tolerance2;
  /// A scaled weight below the first is outside, and weights of at least the second are inside.
  double m_outside, m_inside;
};

} // namespace gsl_kernel

#endif
