#ifndef GSL_WIDE_POINT_SEGMENT_LANES_H
#define GSL_WIDE_POINT_SEGMENT_LANES_H

#include "wide/LaneCoords.h"

/// gsl_kernel::NearestOnSegment, one point and segment in each lane.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

/// The foot of a point on the line of a segment. `t` is its fraction.
struct LaneFoot {
  Doubles length, t;
  Coords point;
};

GSL_ALWAYS_INLINE LaneFoot FootOnSegment(const Coords& p, const Coords& p1, const Coords& p2) {
  const Coords edge = Subtract(p2, p1);
  const Doubles length = Length(edge);
  const Coords u = Multiply(edge, Splat(1.0) / length);
  const Doubles t = Dot(u, Subtract(p, p1)) / length;
  return {length, t, Add(p1, Multiply(u, t * length))};
}

/// Returns where the first end is nearer than the second. A tie is not nearer.
GSL_ALWAYS_INLINE Bits FirstIsNearer(const Coords& p, const Coords& p1, const Coords& p2) {
  const Coords v1 = Subtract(p1, p), v2 = Subtract(p2, p);
  const Doubles s1 = Dot(v1, v1), s2 = Dot(v2, v2);
  const Bits isLess = s2 > s1;
  // A root keeps the order of two numbers, but it can make them equal. It halves their relative
  // difference: a part in 2^49 becomes a part in 2^50, which no rounding hides.
  if (!AnyBit(isLess & ~(s2 > s1 * Splat(1.0 + 0x1p-49)))) return isLess;
  return isLess & (SquareRoot(s2) > SquareRoot(s1));
}

GSL_ALWAYS_INLINE void PointSegmentGroup(const PointSegmentBatch& batch, std::size_t k) {
  const Coords p = LoadPoints(batch.p, k);
  const Coords p1 = LoadPoints(batch.p1, k);
  const Coords p2 = LoadPoints(batch.p2, k);
  const Doubles tolerance = Splat(batch.linearTolerance);
  const LaneFoot foot = FootOnSegment(p, p1, p2);
  // A degenerate segment leaves the outputs, which is left to the scalar kernel.
  const Bits isDone = ~(tolerance > foot.length);
  const Doubles r = tolerance / foot.length;
  const Doubles zero = Splat(0.0), whole = Splat(1.0);
  const Bits isWithin = (foot.t > zero) & (foot.t < whole) & (tolerance >= zero);
  const Bits isInside = isWithin | ((foot.t > -r) & (foot.t < whole + r));
  const Bits isFirst = FirstIsNearer(p, p1, p2);
  const Coords nearest = Choose(isInside, foot.point, Choose(isFirst, p1, p2));
  const Doubles distance = Distance(p, nearest);
  const bool isWhole = AllLanes(isDone);
  StorePoints(batch.nearest, k, nearest, isDone, isWhole);
  if (batch.parts != nullptr) {
    const Bits part = isInside ? SplatBits(kPartFoot)
                               : (isFirst ? SplatBits(kPartFirst) : SplatBits(kPartSecond));
    StoreBytes(batch.parts, k, part, isDone);
  }
  Store(batch.distances + k, distance);
  if (!isWhole) RunOthers(batch, k, isDone);
}

inline void PointSegments(const PointSegmentBatch& batch) {
  ForGroups(
      batch, [&batch](std::size_t k)
                 __attribute__((always_inline)) { PointSegmentGroup(batch, k); });
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
