#ifndef GSL_WIDE_SEGMENT_PAIR_LANES_H
#define GSL_WIDE_SEGMENT_PAIR_LANES_H

#include "kernel/Constants.h"
#include "kernel/SegmentDistanceBounds.h"
#include "wide/PointSegmentLanes.h"

/// gsl_kernel::ConnectSegments, one pair in each lane. A lane whose connection is not certain is
/// left to the scalar kernel.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

struct LaneSegments {
  Coords p1, p2;
};

GSL_ALWAYS_INLINE LaneSegments Choose(Bits mask, const LaneSegments& a, const LaneSegments& b) {
  return {Choose(mask, a.p1, b.p1), Choose(mask, a.p2, b.p2)};
}

/// Connections, and the lanes in which they are certain.
struct LaneConnections {
  Bits isDone, partA, partB;
  Coords onA, onB;
};

/// Is gsl_kernel::SegmentProducts.
struct LaneProducts {
  Doubles uu, vv, uv, ru, rv, rr, nn, rn, reach2;

  GSL_ALWAYS_INLINE LaneProducts(const LaneSegments& a, const LaneSegments& b) {
    const Coords u = Subtract(a.p2, a.p1), v = Subtract(b.p2, b.p1), r = Subtract(a.p1, b.p1);
    const Coords n = Cross(u, v);
    uu = Dot(u, u);
    vv = Dot(v, v);
    uv = Dot(u, v);
    ru = Dot(r, u);
    rv = Dot(r, v);
    rr = Dot(r, r);
    nn = Dot(n, n);
    rn = Dot(r, n);
    reach2 = Splat(4.0) * (Dot(a.p1, a.p1) + Dot(b.p1, b.p1) + uu + vv);
  }

  GSL_ALWAYS_INLINE Bits AreGeneral(double linearTolerance) const {
    using namespace gsl_kernel;
    const double tolerance2 = linearTolerance * linearTolerance;
    const Doubles shorter = uu < vv ? uu : vv;
    return (nn > Splat(kLeastSineSquare) * (uu * vv)) & (nn > Splat(2.0 * tolerance2)) &
           (shorter > Splat(kLeastLengthSquare) * reach2) &
           (shorter > Splat(kLeastLengthInTolerances * tolerance2)) &
           (Splat(linearTolerance) > Splat(1e-30)) &
           (Splat(tolerance2) > Splat(kLeastToleranceRatio * kLeastToleranceRatio) * reach2) &
           (reach2 < Splat(0.25 * kSegmentDistanceCap * kSegmentDistanceCap));
  }
};

/// Returns the connection of two segments whose lines are nearest within both: along the common
/// normal where they are skew, and the crossing elsewhere.
GSL_ALWAYS_INLINE LaneConnections ConnectWithin(const LaneSegments& a, const LaneSegments& b,
                                                Bits isSkew) {
  const Coords u = Subtract(a.p2, a.p1), v = Subtract(b.p2, b.p1);
  const Coords cross = Cross(u, v);
  const Coords n = Divide(cross, Length(cross));
  const Coords way = Multiply(n, Dot(Subtract(b.p1, a.p1), n));
  const LaneSegments moved = Choose(isSkew, LaneSegments{Add(a.p1, way), Add(a.p2, way)}, a);
  const Coords movedEdge = Subtract(moved.p2, moved.p1);
  const Coords alongA = Multiply(movedEdge, Splat(1.0) / Length(movedEdge));
  const Coords alongB = Multiply(v, Splat(1.0) / Length(v));
  const Coords w = Subtract(moved.p1, b.p1);
  const Doubles cosine = Dot(alongB, alongA);
  const Doubles denominator = cosine * cosine - Splat(1.0);
  const Doubles s = (Dot(w, alongA) * cosine - Dot(w, alongB)) / denominator;
  const Coords onB = Add(b.p1, Multiply(alongB, s));
  const Bits foot = SplatBits(kPartFoot);
  return {SplatBits(-1), foot, foot, Choose(isSkew, Subtract(onB, way), onB), onB};
}

/// Is gsl_kernel::EndFoot, with its place: before the first end, beyond the second, or within.
struct LaneEndFoot {
  Doubles position, squared;
};

GSL_ALWAYS_INLINE LaneEndFoot FootOfEnd(Doubles along, Doubles edge2, Doubles inverse,
                                        Doubles away2) {
  const Doubles t = along * inverse;
  const Doubles low = t < Splat(0.0) ? Splat(0.0) : t;
  const Doubles at = low > Splat(1.0) ? Splat(1.0) : low;
  return {t, away2 - at * (Splat(2.0) * along - at * edge2)};
}

GSL_ALWAYS_INLINE LaneEndFoot Choose(Bits mask, const LaneEndFoot& a, const LaneEndFoot& b) {
  return {mask ? a.position : b.position, mask ? a.squared : b.squared};
}

GSL_ALWAYS_INLINE Bits IsFirst(Doubles t) {
  return t < Splat(-gsl_kernel::kFootMargin);
}
GSL_ALWAYS_INLINE Bits IsSecond(Doubles t) {
  return t > Splat(1.0 + gsl_kernel::kFootMargin);
}

/// The four feet, and which has the shortest connection. The best end is on b, or the second end
/// of its segment, where the mask holds.
struct LaneEnds {
  LaneEndFoot feet[4], best;
  Bits isOnB, isSecondEnd;

  GSL_ALWAYS_INLINE explicit LaneEnds(const LaneProducts& q) {
    const Doubles inverseU = Splat(1.0) / q.uu, inverseV = Splat(1.0) / q.vv;
    const Doubles two = Splat(2.0);
    feet[0] = FootOfEnd(q.rv, q.vv, inverseV, q.rr);
    feet[1] = FootOfEnd(q.rv + q.uv, q.vv, inverseV, q.rr + two * q.ru + q.uu);
    feet[2] = FootOfEnd(-q.ru, q.uu, inverseU, q.rr);
    feet[3] = FootOfEnd(q.uv - q.ru, q.uu, inverseU, q.rr - two * q.rv + q.vv);
    const Bits isSecondOfA = feet[1].squared < feet[0].squared;
    const Bits isSecondOfB = feet[3].squared < feet[2].squared;
    const LaneEndFoot ofA = Choose(isSecondOfA, feet[1], feet[0]);
    const LaneEndFoot ofB = Choose(isSecondOfB, feet[3], feet[2]);
    isOnB = ofB.squared < ofA.squared;
    isSecondEnd = (isOnB & isSecondOfB) | (~isOnB & isSecondOfA);
    best = Choose(isOnB, ofB, ofA);
  }

  /// Returns the foot of the end of the target that lies at the place of the best foot.
  GSL_ALWAYS_INLINE LaneEndFoot Twin(Bits isAtFirst) const {
    return Choose(isOnB, Choose(isAtFirst, feet[0], feet[1]), Choose(isAtFirst, feet[2], feet[3]));
  }

  /// Returns where foot `i` is farther than `limit`, or is the best foot or its twin.
  GSL_ALWAYS_INLINE Bits IsNoRival(int i, Doubles limit, Bits hasTwin, Bits isAtFirst) const {
    const Bits ofB = i < 2 ? SplatBits(0) : SplatBits(-1);
    const Bits second = i % 2 == 0 ? SplatBits(0) : SplatBits(-1);
    const Bits isBest = ~(isOnB ^ ofB) & ~(isSecondEnd ^ second);
    const Bits isTwin = hasTwin & (isOnB ^ ofB) & (isAtFirst ^ second);
    return isBest | isTwin | (feet[i].squared > limit);
  }
};

/// Is gsl_kernel::ConnectBestEnd.
GSL_ALWAYS_INLINE LaneConnections ConnectBestEnd(const LaneSegments& a, const LaneSegments& b,
                                                 const LaneProducts& q, double linearTolerance) {
  const LaneEnds ends(q);
  const Doubles t = ends.best.position;
  const Bits isAtFirst = IsFirst(t), isAtEnd = isAtFirst | IsSecond(t);
  const Bits isFoot =
      ~isAtEnd & (t > Splat(gsl_kernel::kFootMargin)) & (t < Splat(1.0 - gsl_kernel::kFootMargin));
  const LaneEndFoot twin = ends.Twin(isAtFirst);
  const Bits hasTwin = isAtEnd & ((ends.isSecondEnd & IsSecond(twin.position)) |
                                  (~ends.isSecondEnd & IsFirst(twin.position)));
  const Doubles limit = ends.best.squared + Splat(gsl_kernel::kSquareMargin) * q.reach2 +
                        Splat(4.0 * linearTolerance * linearTolerance);
  Bits isCertain = isFoot | isAtEnd;
  for (int i = 0; i < 4; ++i)
    isCertain &= ends.IsNoRival(i, limit, hasTwin, isAtFirst);

  const LaneSegments own = Choose(ends.isOnB, b, a), target = Choose(ends.isOnB, a, b);
  const Coords end = Choose(ends.isSecondEnd, own.p2, own.p1);
  Coords point = Choose(isAtFirst, target.p1, target.p2);
  if (AnyBit(isFoot)) {
    point = Choose(isFoot, FootOnSegment(end, target.p1, target.p2).point, point);
  }
  const Bits first = SplatBits(kPartFirst), second = SplatBits(kPartSecond);
  const Bits part = ends.isSecondEnd ? second : first;
  const Bits onTarget = isFoot ? SplatBits(kPartFoot) : (isAtFirst ? first : second);
  return {isCertain, ends.isOnB ? onTarget : part, ends.isOnB ? part : onTarget,
          Choose(ends.isOnB, point, end), Choose(ends.isOnB, end, point)};
}

GSL_ALWAYS_INLINE LaneConnections Choose(Bits mask, const LaneConnections& a,
                                         const LaneConnections& b) {
  return {mask ? a.isDone : b.isDone, mask ? a.partA : b.partA, mask ? a.partB : b.partB,
          Choose(mask, a.onA, b.onA), Choose(mask, a.onB, b.onB)};
}

GSL_ALWAYS_INLINE LaneConnections Connect(const LaneSegments& a, const LaneSegments& b,
                                          double linearTolerance) {
  const LaneProducts q(a, b);
  const Doubles atTolerance = Splat(linearTolerance * linearTolerance) * q.nn;
  const Bits isSkew = q.rn * q.rn > Splat(2.0) * atTolerance;
  const Bits isCertain =
      q.AreGeneral(linearTolerance) & (isSkew | (q.rn * q.rn < Splat(0.5) * atTolerance));
  const Doubles s = q.uv * q.rv - q.vv * q.ru;
  const Doubles t = q.uu * q.rv - q.uv * q.ru;
  const Doubles half = Splat(0.5) * q.nn, margin = Splat(gsl_kernel::kPositionMargin) * q.nn;
  const Doubles fromMiddleS = Magnitude(s - half), fromMiddleT = Magnitude(t - half);
  const Doubles farther = fromMiddleS > fromMiddleT ? fromMiddleS : fromMiddleT;
  const Bits isBeyond = isCertain & (farther > half + margin);
  const Bits isWithin = isCertain & ~isBeyond & (farther < half - margin);
  if (!AnyBit(isWithin)) {
    LaneConnections found = ConnectBestEnd(a, b, q, linearTolerance);
    found.isDone &= isBeyond;
    return found;
  }
  LaneConnections found = ConnectWithin(a, b, isSkew);
  found.isDone = isWithin;
  if (!AnyBit(isBeyond)) return found;
  LaneConnections ends = ConnectBestEnd(a, b, q, linearTolerance);
  ends.isDone &= isBeyond;
  return Choose(isWithin, found, ends);
}

GSL_ALWAYS_INLINE void SegmentPairGroup(const SegmentPairBatch& batch, std::size_t k) {
  const LaneSegments a = {LoadPoints(batch.a1, k), LoadPoints(batch.a2, k)};
  const LaneSegments b = {LoadPoints(batch.b1, k), LoadPoints(batch.b2, k)};
  const LaneConnections found = Connect(a, b, batch.linearTolerance);
  const bool isWhole = AllLanes(found.isDone);
  Store(batch.distances + k, Distance(found.onA, found.onB));
  StorePoints(batch.onA, k, found.onA, found.isDone, isWhole);
  StorePoints(batch.onB, k, found.onB, found.isDone, isWhole);
  StoreBytes(batch.partsA, k, found.partA, found.isDone);
  StoreBytes(batch.partsB, k, found.partB, found.isDone);
  if (!isWhole) RunOthers(batch, k, found.isDone);
}

inline void SegmentPairs(const SegmentPairBatch& batch) {
  ForGroups(
      batch, [&batch](std::size_t k)
                 __attribute__((always_inline)) { SegmentPairGroup(batch, k); });
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
