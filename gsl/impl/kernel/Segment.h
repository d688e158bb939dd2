#ifndef GSL_KERNEL_SEGMENT_H
#define GSL_KERNEL_SEGMENT_H

#include "kernel/Vector.h"

namespace gsl_kernel {

/// Computes the position of x along p0-p1. The distance of x from the line does not count.
///
/// weights[0] is the fraction from p0 to p1, and weights[1] is the weight of p0. Returns true
/// within linearTolerance (closed) of the span. The weights are written either way. A segment is
/// degenerate when linearTolerance >= length. Its weights are (0, 1) when x is within
/// linearTolerance of p0 (closed). Otherwise the result is false and nothing is written. `length`
/// is the length of p0-p1.
inline bool PointSegmentParameters(const Coord3& x, const Coord3& p0, const Coord3& p1,
                                   double length, double linearTolerance, double* weights) {
  if (linearTolerance >= length) {
    if (!(linearTolerance >= Distance(x, p0))) return false;
    weights[0] = 0.0;
    weights[1] = 1.0;
    return true;
  }
  // first-weight-belongs-to-the-second-point: it is the fraction towards that point.
  weights[0] = Dot(Subtract(p0, x), Subtract(p0, p1)) / (length * length);
  weights[1] = Dot(Subtract(p1, x), Subtract(p1, p0)) / (length * length);
  return !(weights[0] * length < -linearTolerance) && !(weights[1] * length < -linearTolerance);
}

inline bool PointSegmentParameters(const Coord3& x, const Coord3& p0, const Coord3& p1,
                                   double linearTolerance, double* weights) {
  return PointSegmentParameters(x, p0, p1, Distance(p0, p1), linearTolerance, weights);
}

enum class SegmentFoot { Degenerate, Inside, Outside };

/// Computes the foot of p on the line of p1-p2, and the fraction t of the foot. The foot is inside
/// within `tol` of the span (open). Writes nothing for a degenerate segment, tol > length.
inline SegmentFoot FootOnSegment(const Coord3& p, const Coord3& p1, const Coord3& p2, double tol,
                                 Coord3& foot, double& t) {
  const Coord3 edge = Subtract(p2, p1);
  const double length = Length(edge);
  if (tol > length) return SegmentFoot::Degenerate;
  const Coord3 u = Multiply(edge, 1.0 / length);
  t = Dot(u, Subtract(p, p1)) / length;
  foot = Add(p1, Multiply(u, t * length));
  // A tolerance that is not negative only widens the span, so a foot within the span needs no
  // quotient.
  if (t > 0.0 && t < 1.0 && tol >= 0.0) return SegmentFoot::Inside;
  const double r = tol / length;
  return t > -r && t < 1.0 + r ? SegmentFoot::Inside : SegmentFoot::Outside;
}

enum class SegmentPart { None, Foot, First, Second };

/// The point of a segment that is nearest to a point. `part` is None for a degenerate segment,
/// which has neither a point nor a distance here.
struct NearestPoint {
  SegmentPart part;
  Coord3 point;
  double distance;
};

/// Returns the nearer end. At a tie of the distances it is the second end.
inline NearestPoint NearerEnd(const Coord3& p, const Coord3& p1, const Coord3& p2) {
  const Coord3 v1 = Subtract(p1, p), v2 = Subtract(p2, p);
  const double s1 = Dot(v1, v1), s2 = Dot(v2, v2);
  // A root keeps the order of two numbers, but it can make them equal.
  if (!(s2 > s1)) return {SegmentPart::Second, p2, std::sqrt(s2)};
  const double d1 = std::sqrt(s1), d2 = std::sqrt(s2);
  if (d2 > d1) return {SegmentPart::First, p1, d1};
  return {SegmentPart::Second, p2, d2};
}

/// Finds the nearest point of a segment. The foot counts while it is within linearTolerance (open)
/// of the span.
inline NearestPoint NearestOnSegment(const Coord3& p, const Coord3& p1, const Coord3& p2,
                                     double linearTolerance) {
  NearestPoint nearest = {SegmentPart::None, p1, 0.0};
  double t = 0.0;
  const SegmentFoot where = FootOnSegment(p, p1, p2, linearTolerance, nearest.point, t);
  if (where == SegmentFoot::Degenerate) return nearest;
  if (where == SegmentFoot::Outside) return NearerEnd(p, p1, p2);
  nearest.part = SegmentPart::Foot;
  nearest.distance = Distance(p, nearest.point);
  return nearest;
}

} // namespace gsl_kernel

#endif
