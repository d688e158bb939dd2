#ifndef GSL_KERNEL_LINE_H
#define GSL_KERNEL_LINE_H

#include "kernel/Plane.h"

namespace gsl_kernel {

struct Line {
  Coord3 point;
  Measured3 direction;
};

inline Line LineThrough(const Coord3& p1, const Coord3& p2) {
  return {p1, Between(p1, p2)};
}

/// Returns |v x d| / |d| with v from the line's point to p.
inline double LineDistance(const Coord3& p, const Line& line) {
  return Length(Cross(Subtract(p, line.point), line.direction.c)) / line.direction.magnitude;
}

/// Returns the signed distance from `origin` to the foot of p on the line through it along the unit
/// vector d.
inline double ParameterAlong(const Coord3& p, const Coord3& origin, const Coord3& d) {
  return Dot(d, Subtract(p, origin));
}

/// Returns the foot of p on the line; t is its signed distance from the line's point.
inline Coord3 FootOnLine(const Coord3& p, const Line& line, double linearTolerance, double& t) {
  const Coord3 d = gsl_arithmetic::NormalizedCopy(line.direction, linearTolerance).c;
  t = ParameterAlong(p, line.point, d);
  return Add(line.point, Multiply(d, t));
}

/// Computes the unit normal of two directions. Returns false, and writes nothing, for parallel
/// directions or a zero direction.
inline bool CommonNormal(const Coord3& u, const Coord3& v, double linearTolerance, Coord3& normal) {
  Measured3 n = Measure(Cross(u, v));
  if (!gsl_arithmetic::Normalize(n, linearTolerance)) return false;
  normal = n.c;
  return true;
}

inline double DistanceAlongNormal(const Coord3& from, const Coord3& to, const Coord3& normal) {
  return std::fabs(Dot(Subtract(to, from), normal));
}

/// Returns the distance along the common normal, or 0.0 for parallel lines or a zero direction.
inline double LineSkewDistance(const Line& a, const Line& b, double linearTolerance) {
  Coord3 n;
  // zero-direction-crosses-every-line: a zero direction is neither skew nor parallel.
  if (!CommonNormal(a.direction.c, b.direction.c, linearTolerance, n)) return 0.0;
  return DistanceAlongNormal(a.point, b.point, n);
}

inline bool IsSkewDistance(double distance, double linearTolerance) {
  return distance > linearTolerance || distance < -linearTolerance;
}

inline bool LinesAreSkew(const Line& a, const Line& b, double linearTolerance) {
  return IsSkewDistance(LineSkewDistance(a, b, linearTolerance), linearTolerance);
}

struct ClosestPoints {
  Coord3 onFirst;
  Coord3 onSecond;
  double distance;
};

/// Computes the closest points of the lines through p along the unit vector u and through q along
/// v. Parallel lines are not refused: their points are not finite.
inline ClosestPoints ClosestOfNonParallel(const Coord3& p, const Coord3& u, const Coord3& q,
                                          const Coord3& v) {
  const Coord3 w = Subtract(q, p);
  const double cosine = Dot(u, v);
  const double denominator = cosine * cosine - 1.0;
  const double s = (Dot(w, v) * cosine - Dot(w, u)) / denominator;
  const double t = (-Dot(w, u) * cosine + Dot(w, v)) / denominator;
  const Coord3 onFirst = Add(p, Multiply(u, s));
  const Coord3 onSecond = Add(q, Multiply(v, t));
  return {onFirst, onSecond, Distance(onFirst, onSecond)};
}

inline ClosestPoints ClosestOfNonParallel(const Line& a, const Line& b, double linearTolerance) {
  return ClosestOfNonParallel(
      a.point, gsl_arithmetic::NormalizedCopy(a.direction, linearTolerance).c, b.point,
      gsl_arithmetic::NormalizedCopy(b.direction, linearTolerance).c);
}

enum class LinePair { Skew, Parallel, Crossing };

/// Tests for skew lines first, so lines that are both skew and parallel count as skew.
inline LinePair ClassifyLines(const Line& a, const Line& b, double linearTolerance) {
  if (LinesAreSkew(a, b, linearTolerance)) return LinePair::Skew;
  if (IsParallel(a.direction, b.direction, kLineParallelTolerance)) return LinePair::Parallel;
  return LinePair::Crossing;
}

/// Finds the crossing of two coplanar lines, on the first line. Returns false for skew and parallel
/// lines.
inline bool CrossLines(const Line& a, const Line& b, double linearTolerance, Coord3& out) {
  if (ClassifyLines(a, b, linearTolerance) != LinePair::Crossing) return false;
  out = ClosestOfNonParallel(a, b, linearTolerance).onFirst;
  return true;
}

inline bool LineParallelToPlane(const Line& line, const Plane& plane, double cosineTolerance) {
  return std::fabs(Dot(plane.normal.c, line.direction.c)) <
         cosineTolerance * plane.normal.magnitude * line.direction.magnitude;
}

inline bool LinesCoincident(const Line& a, const Line& b, double linearTolerance,
                            double cosineTolerance) {
  return gsl_arithmetic::IsOn(b.direction, a.direction, cosineTolerance) &&
         LineDistance(a.point, b) < linearTolerance;
}

} // namespace gsl_kernel

#endif
