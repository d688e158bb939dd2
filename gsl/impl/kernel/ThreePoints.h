#ifndef GSL_KERNEL_THREE_POINTS_H
#define GSL_KERNEL_THREE_POINTS_H

#include "kernel/Vector.h"

namespace gsl_kernel {

/// The plane n . x = r.
struct PlaneEquation {
  Coord3 n;
  double r;
};

/// Returns the plane half way between p and q, scaled to a unit normal unless that is shorter than
/// linearTolerance.
inline PlaneEquation BisectingPlane(const Coord3& p, const Coord3& q, double linearTolerance) {
  PlaneEquation plane = {{2.0 * (p.x - q.x), 2.0 * (p.y - q.y), 2.0 * (p.z - q.z)},
                         (p.x * p.x - q.x * q.x) + (p.y * p.y - q.y * q.y) +
                             (p.z * p.z - q.z * q.z)};
  const double length = Length(plane.n);
  if (linearTolerance > std::fabs(length)) return plane;
  return {Divide(plane.n, length), plane.r / length};
}

/// Finds the point on three planes, by Cramer's rule. Returns false, and writes nothing, when the
/// determinant is smaller than linearTolerance.
inline bool CommonPoint(const PlaneEquation& p1, const PlaneEquation& p2, const PlaneEquation& p3,
                        double linearTolerance, Coord3& out) {
  const double a1 = p1.n.x, b1 = p1.n.y, c1 = p1.n.z, r1 = p1.r;
  const double a2 = p2.n.x, b2 = p2.n.y, c2 = p2.n.z, r2 = p2.r;
  const double a3 = p3.n.x, b3 = p3.n.y, c3 = p3.n.z, r3 = p3.r;
  const double det = a1 * (b2 * c3 - c2 * b3) - b1 * (a2 * c3 - c2 * a3) + c1 * (a2 * b3 - b2 * a3);
  if (std::fabs(det) < linearTolerance) return false;
  out = {(r1 * (b2 * c3 - c2 * b3) + r2 * (c1 * b3 - b1 * c3) + r3 * (b1 * c2 - c1 * b2)) / det,
         (r1 * (c2 * a3 - a2 * c3) + r2 * (a1 * c3 - c1 * a3) + r3 * (c1 * a2 - a1 * c2)) / det,
         (r1 * (a2 * b3 - b2 * a3) + r2 * (b1 * a3 - a1 * b3) + r3 * (a1 * b2 - b1 * a2)) / det};
  return true;
}

/// Returns p0p1 x p0p2, normalised unless it is shorter than linearTolerance.
inline Measured3 CircumNormal(const Coord3& p0, const Coord3& p1, const Coord3& p2,
                              double linearTolerance) {
  Measured3 n = Measure(Cross(Subtract(p1, p0), Subtract(p2, p0)));
  gsl_arithmetic::Normalize(n, linearTolerance);
  return n;
}

/// Finds the centre of the circle through three points of the plane with that normal. Returns
/// false, and writes nothing, for collinear points.
inline bool CircumCentre(const Coord3& p0, const Coord3& p1, const Coord3& p2, const Coord3& normal,
                         double linearTolerance, Coord3& centre) {
  return CommonPoint(BisectingPlane(p0, p1, linearTolerance),
                     BisectingPlane(p1, p2, linearTolerance), {normal, Dot(normal, p0)},
                     linearTolerance, centre);
}

} // namespace gsl_kernel

#endif
