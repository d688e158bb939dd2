#ifndef GSL_KERNEL_SEGMENT_PAIR_H
#define GSL_KERNEL_SEGMENT_PAIR_H

#include "kernel/Line.h"
#include "kernel/Segment.h"

#include <limits>

namespace gsl_kernel {

struct Segment {
  Coord3 p1, p2;
};

inline Line SupportingLine(const Segment& s) {
  return LineThrough(s.p1, s.p2);
}

/// The result of a crossing test. Missed writes nothing. Beyond and Crossing write the point.
enum class SegmentCrossing { Missed, Beyond, Crossing };

/// A direction of lines. `unit` is the direction multiplied by the reciprocal of its length.
struct RayDirection {
  Measured3 measured;
  Coord3 unit;

  RayDirection(const Measured3& dir, double linearTolerance)
      : measured(dir), unit(gsl_arithmetic::NormalizedCopy(dir, linearTolerance).c) {}
};

/// A segment that lines of one direction may cross, with everything that does not depend on the
/// line.
struct RayTarget {
  Coord3 start, end, unit;
  double length;
  Coord3 commonNormal;
  bool hasCommonNormal;
  /// The target is shorter than the tolerance or parallel to the lines.
  bool isMissed;

  RayTarget(const Segment& segment, const RayDirection& ray, double linearTolerance)
      : start(segment.p1), end(segment.p2), commonNormal{0.0, 0.0, 0.0} {
    const Measured3 edge = Between(start, end);
    length = edge.magnitude;
    unit = gsl_arithmetic::NormalizedCopy(edge, linearTolerance).c;
    hasCommonNormal = CommonNormal(edge.c, ray.measured.c, linearTolerance, commonNormal);
    isMissed = linearTolerance > length || IsParallel(edge, ray.measured, kLineParallelTolerance);
  }
};

/// Finds where the line through `origin`, in both senses, crosses the target.
/// PointSegmentParameters computes the weights, which are written with the point. The crossing must
/// be within linearTolerance (closed) of the segment.
inline SegmentCrossing CrossRayTarget(const Coord3& origin, const RayDirection& ray,
                                      const RayTarget& target, double linearTolerance, Coord3& out,
                                      double* weights) {
  if (target.isMissed) return SegmentCrossing::Missed;
  if (target.hasCommonNormal &&
      IsSkewDistance(DistanceAlongNormal(target.start, origin, target.commonNormal),
                     linearTolerance)) {
    return SegmentCrossing::Missed;
  }
  // ray-runs-both-ways: a crossing behind the origin counts.
  out = ClosestOfNonParallel(target.start, target.unit, origin, ray.unit).onFirst;
  return PointSegmentParameters(out, target.start, target.end, target.length, linearTolerance,
                                weights)
             ? SegmentCrossing::Crossing
             : SegmentCrossing::Beyond;
}

inline SegmentCrossing CrossRaySegment(const Coord3& origin, const Measured3& dir,
                                       const Segment& segment, double linearTolerance, Coord3& out,
                                       double* weights) {
  const RayDirection ray(dir, linearTolerance);
  return CrossRayTarget(origin, ray, RayTarget(segment, ray, linearTolerance), linearTolerance, out,
                        weights);
}

/// Finds where a segment's line crosses another line, and whether that point is within
/// linearTolerance (closed) of the segment.
inline SegmentCrossing CrossSegmentLine(const Segment& segment, const Line& line,
                                        double linearTolerance, Coord3& out) {
  const double length = Distance(segment.p1, segment.p2);
  if (length < linearTolerance) return SegmentCrossing::Missed;
  if (!CrossLines(SupportingLine(segment), line, linearTolerance, out))
    return SegmentCrossing::Missed;
  // segment-as-long-as-the-tolerance: unwritten parameters count as beyond. Without a tolerance, a
  // segment of no length has a margin of NaN, and no parameter is beyond it.
  double weights[2] = {std::numeric_limits<double>::infinity(), 0.0};
  PointSegmentParameters(out, segment.p1, segment.p2, length, linearTolerance, weights);
  const double t = weights[0];
  const double margin = linearTolerance / length;
  return t < -margin || t > 1.0 + margin ? SegmentCrossing::Beyond : SegmentCrossing::Crossing;
}

/// Finds where each segment crosses the line of the other segment, a first. The point written last
/// stays.
inline SegmentCrossing CrossSegments(const Segment& a, const Segment& b, double linearTolerance,
                                     Coord3& out) {
  const SegmentCrossing first = CrossSegmentLine(a, SupportingLine(b), linearTolerance, out);
  // false-with-the-first-point-written: the point of the first test stays.
  if (first != SegmentCrossing::Crossing) return first;
  // The second test writes the point on `b`.
  const SegmentCrossing second = CrossSegmentLine(b, SupportingLine(a), linearTolerance, out);
  return second == SegmentCrossing::Crossing ? second : SegmentCrossing::Beyond;
}

} // namespace gsl_kernel

#endif
