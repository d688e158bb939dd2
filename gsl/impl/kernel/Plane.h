#ifndef GSL_KERNEL_PLANE_H
#define GSL_KERNEL_PLANE_H

#include "kernel/Vector.h"

namespace gsl_kernel {

struct Plane {
  Coord3 point;
  Measured3 normal;
};

/// Returns (v . n) / |n| with v from the plane's point to p.
inline double SignedPlaneDistance(const Coord3& p, const Plane& plane) {
  return Dot(Subtract(p, plane.point), plane.normal.c) / plane.normal.magnitude;
}

inline double PlaneDistance(const Coord3& p, const Plane& plane) {
  const double distance = SignedPlaneDistance(p, plane);
  // zero-distance-changes-its-sign: a signed distance of zero is negated too.
  return distance > 0.0 ? distance : -distance;
}

/// Returns the distance along `dir`. It is negative against the normal, and is not finite for a
/// parallel `dir`.
inline double PlaneDistanceAlong(const Coord3& p, const Plane& plane, const Measured3& dir) {
  // distance-against-the-normal-is-negative: only the distance itself is made positive.
  return PlaneDistance(p, plane) * dir.magnitude * plane.normal.magnitude /
         Dot(dir.c, plane.normal.c);
}

inline bool IsOnPlane(const Coord3& p, const Plane& plane, double linearTolerance) {
  return linearTolerance > PlaneDistance(p, plane);
}

/// Returns true when no division is needed to know that IsOnPlane is false. `away` is the way from
/// the plane's point to the point, times the normal.
// Rounding keeps the order of numbers. So a number above the rounded product is above the product,
// and the quotient, which is above the tolerance, is not rounded below it. A tolerance below 0 is
// left to the division, so that `away` is never 0 here.
inline bool IsCertainlyOffPlane(double away, const Plane& plane, double linearTolerance) {
  const double least = linearTolerance * std::fabs(plane.normal.magnitude);
  return std::fabs(away) > least && least >= 0.0;
}

inline Coord3 FootOnPlane(const Coord3& p, const Plane& plane, double linearTolerance) {
  const Coord3 n = gsl_arithmetic::NormalizedCopy(plane.normal, linearTolerance).c;
  return Subtract(p, Multiply(n, SignedPlaneDistance(p, plane)));
}

enum class RayPlane { ShortDirection, OriginOnPlane, ParallelDirection, Crossing };

/// Crosses the line through p along `dir` with the plane. Writes `out` for Crossing only.
inline RayPlane IntersectRayPlane(const Coord3& p, const Measured3& dir, const Plane& plane,
                                  double linearTolerance, double cosineTolerance, Coord3& out) {
  if (linearTolerance > dir.magnitude) return RayPlane::ShortDirection;
  const double away = Dot(Subtract(p, plane.point), plane.normal.c);
  // Rounding is symmetric, so the way back has the same bits with the other sign.
  double back = -away;
  if (!IsCertainlyOffPlane(away, plane, linearTolerance)) {
    if (IsOnPlane(p, plane, linearTolerance)) return RayPlane::OriginOnPlane;
    // A zero can have the same sign on both ways.
    back = Dot(Subtract(plane.point, p), plane.normal.c);
  }
  if (gsl_arithmetic::IsOrthogonal(dir, plane.normal, cosineTolerance)) {
    return RayPlane::ParallelDirection;
  }
  // ray-runs-both-ways: a crossing behind the origin counts.
  const double s = back / Dot(dir.c, plane.normal.c);
  out = Add(p, Multiply(dir.c, s));
  return RayPlane::Crossing;
}

/// Opposite normals are parallel; a zero normal is parallel to nothing.
inline bool PlanesParallel(const Plane& a, const Plane& b, double cosineTolerance) {
  return gsl_arithmetic::IsOn(b.normal, a.normal, cosineTolerance);
}

/// Returns 0.0 for planes that are not parallel.
inline double DistanceBetweenParallelPlanes(const Plane& a, const Plane& b,
                                            double cosineTolerance) {
  if (!PlanesParallel(a, b, cosineTolerance)) return 0.0;
  return PlaneDistance(a.point, b);
}

} // namespace gsl_kernel

#endif
