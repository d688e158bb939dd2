#ifndef GSL_KERNEL_SEGMENT_DISTANCE_H
#define GSL_KERNEL_SEGMENT_DISTANCE_H

#include "kernel/SegmentDistanceBounds.h"
#include "kernel/SegmentPair.h"

/// The shortest connection of two segments.
///
/// The steps look for a crossing, for a connection along the common normal, and for the best of the
/// four distances of an end to the other segment. The place of the shortest connection is decided
/// first, with products alone, and only its formula runs. The steps run in full where the decision
/// is not certain.
namespace gsl_kernel {

enum class ConnectionKind { None, Crossing, Joined };

/// A connection from segment a to segment b. A part is the first end or the second end of its
/// segment, or a foot, which is a computed point. A crossing has one point, `onB`.
struct Connection {
  ConnectionKind kind;
  SegmentPart partA, partB;
  Coord3 onA, onB;
};

/// Returns the point where two segments cross that are known to cross. It lies on the line of b.
inline Connection CrossingOf(const Segment& a, const Segment& b, double linearTolerance) {
  const Coord3 p =
      ClosestOfNonParallel(SupportingLine(b), SupportingLine(a), linearTolerance).onFirst;
  return {ConnectionKind::Crossing, SegmentPart::Foot, SegmentPart::Foot, p, p};
}

/// Returns the way from the line of a to the line of b along their common normal.
inline Coord3 WayAlongNormal(const Segment& a, const Segment& b, double linearTolerance) {
  Measured3 n = Measure(Cross(Subtract(a.p2, a.p1), Subtract(b.p2, b.p1)));
  gsl_arithmetic::Normalize(n, linearTolerance);
  return Multiply(n.c, Dot(Subtract(b.p1, a.p1), n.c));
}

inline Segment Moved(const Segment& s, const Coord3& way) {
  return {Add(s.p1, way), Add(s.p2, way)};
}

/// Returns the connection along the common normal of two segments that have it.
inline Connection ConnectedAlongNormal(const Segment& a, const Segment& b, double linearTolerance) {
  const Coord3 way = WayAlongNormal(a, b, linearTolerance);
  const Coord3 onB = CrossingOf(Moved(a, way), b, linearTolerance).onB;
  return {ConnectionKind::Joined, SegmentPart::Foot, SegmentPart::Foot, Subtract(onB, way), onB};
}

/// Returns the best of the four distances of an end to the other segment. Ties go to the earlier
/// distance.
inline Connection ConnectEnds(const Segment& a, const Segment& b, double linearTolerance) {
  // far-segments-keep-the-connection: no distance at or above the cap counts.
  double best = kSegmentDistanceCap;
  Connection connection = {ConnectionKind::None, SegmentPart::None, SegmentPart::None, a.p1, b.p1};
  const Coord3* const ends[4] = {&a.p1, &a.p2, &b.p1, &b.p2};
  for (int i = 0; i < 4; ++i) {
    const Coord3& end = *ends[i];
    const Segment& target = i < 2 ? b : a;
    NearestPoint nearest = NearestOnSegment(end, target.p1, target.p2, linearTolerance);
    // A target shorter than the tolerance is its first point.
    if (nearest.part == SegmentPart::None) {
      nearest = {SegmentPart::First, target.p1, Distance(end, target.p1)};
    }
    if (!(nearest.distance < best)) continue;
    best = nearest.distance;
    const SegmentPart part = i % 2 == 0 ? SegmentPart::First : SegmentPart::Second;
    if (i < 2) {
      connection = {ConnectionKind::Joined, part, nearest.part, end, nearest.point};
    } else {
      connection = {ConnectionKind::Joined, nearest.part, part, nearest.point, end};
    }
  }
  return connection;
}

/// Finds the connection by the steps, without a shortcut.
inline Connection ConnectSegmentsBySteps(const Segment& a, const Segment& b,
                                         double linearTolerance) {
  Coord3 p = a.p1;
  if (CrossSegments(a, b, linearTolerance, p) == SegmentCrossing::Crossing) {
    return {ConnectionKind::Crossing, SegmentPart::Foot, SegmentPart::Foot, p, p};
  }
  if (LinesAreSkew(SupportingLine(a), SupportingLine(b), linearTolerance)) {
    const Coord3 way = WayAlongNormal(a, b, linearTolerance);
    if (CrossSegments(Moved(a, way), b, linearTolerance, p) == SegmentCrossing::Crossing) {
      return {ConnectionKind::Joined, SegmentPart::Foot, SegmentPart::Foot, Subtract(p, way), p};
    }
  }
  // overlapping-segments-do-not-cross: parallel lines have no crossing.
  return ConnectEnds(a, b, linearTolerance);
}

/// The products that decide.
struct SegmentProducts {
  double uu, vv, uv, ru, rv, rr, nn, rn, reach2;

  SegmentProducts(const Segment& a, const Segment& b) {
    const Coord3 u = Subtract(a.p2, a.p1), v = Subtract(b.p2, b.p1), r = Subtract(a.p1, b.p1);
    const Coord3 n = Cross(u, v);
    uu = Dot(u, u);
    vv = Dot(v, v);
    uv = Dot(u, v);
    ru = Dot(r, u);
    rv = Dot(r, v);
    rr = Dot(r, r);
    nn = Dot(n, n);
    rn = Dot(r, n);
    reach2 = 4.0 * (Dot(a.p1, a.p1) + Dot(b.p1, b.p1) + uu + vv);
  }

  /// Returns whether every constant of SegmentDistanceBounds.h holds.
  bool AreGeneral(double linearTolerance) const {
    const double tolerance2 = linearTolerance * linearTolerance;
    const double shorter = uu < vv ? uu : vv;
    return (nn > kLeastSineSquare * (uu * vv)) & (nn > 2.0 * tolerance2) &
           (shorter > kLeastLengthSquare * reach2) &
           (shorter > kLeastLengthInTolerances * tolerance2) & (linearTolerance > 1e-30) &
           (tolerance2 > kLeastToleranceRatio * kLeastToleranceRatio * reach2) &
           (reach2 < 0.25 * kSegmentDistanceCap * kSegmentDistanceCap);
  }
};

enum class CrossingPlace { Unknown, Within, Beyond };

/// Returns where the closest points of the two lines are. `s` and `t` are their positions times nn.
inline CrossingPlace PlaceOf(const SegmentProducts& q) {
  const double s = q.uv * q.rv - q.vv * q.ru;
  const double t = q.uu * q.rv - q.uv * q.ru;
  const double half = 0.5 * q.nn;
  const double fromMiddleS = std::fabs(s - half), fromMiddleT = std::fabs(t - half);
  const double farther = fromMiddleS > fromMiddleT ? fromMiddleS : fromMiddleT;
  if (farther > half + kPositionMargin * q.nn) return CrossingPlace::Beyond;
  return farther < half - kPositionMargin * q.nn ? CrossingPlace::Within : CrossingPlace::Unknown;
}

/// An end of one segment with its foot on the other segment: the position, and the square of the
/// distance to the point at this position or to the end that is nearer.
struct EndFoot {
  double position, squared;
};

/// Returns the foot of an end. `along` is the way from the start of the target times its edge,
/// `edge2` the square of the edge, and `away2` the square of the way.
inline EndFoot FootOfEnd(double along, double edge2, double inverse, double away2) {
  const double t = along * inverse;
  const double low = t < 0.0 ? 0.0 : t;
  const double at = low > 1.0 ? 1.0 : low;
  return {t, away2 - at * (2.0 * along - at * edge2)};
}

enum class FootPlace { Unknown, First, Second, Within };

inline FootPlace PlaceOfFoot(double t) {
  if (t < -kFootMargin) return FootPlace::First;
  if (t > 1.0 + kFootMargin) return FootPlace::Second;
  return t > kFootMargin && t < 1.0 - kFootMargin ? FootPlace::Within : FootPlace::Unknown;
}

/// An end, 0 and 1 of a and 2 and 3 of b, and the place of its foot on the other segment.
struct NearestEnd {
  int end;
  FootPlace place;
};

/// Finds the end that makes the shortest connection. The place is Unknown where that is not
/// certain.
inline NearestEnd NearestEndOf(const SegmentProducts& q, double linearTolerance) {
  const double inverseU = 1.0 / q.uu, inverseV = 1.0 / q.vv;
  const EndFoot feet[4] = {
      FootOfEnd(q.rv, q.vv, inverseV, q.rr),
      FootOfEnd(q.rv + q.uv, q.vv, inverseV, q.rr + 2.0 * q.ru + q.uu),
      FootOfEnd(-q.ru, q.uu, inverseU, q.rr),
      FootOfEnd(q.uv - q.ru, q.uu, inverseU, q.rr - 2.0 * q.rv + q.vv),
  };
  int best = feet[1].squared < feet[0].squared ? 1 : 0;
  const int bestOfB = feet[3].squared < feet[2].squared ? 3 : 2;
  if (feet[bestOfB].squared < feet[best].squared) best = bestOfB;
  const FootPlace place = PlaceOfFoot(feet[best].position);
  if (place == FootPlace::Unknown) return {best, place};
  // The nearest end of the target has the same connection, which may come first or last.
  int twin = best;
  if (place != FootPlace::Within) {
    twin = (best < 2 ? 2 : 0) + (place == FootPlace::First ? 0 : 1);
    const FootPlace back = PlaceOfFoot(feet[twin].position);
    if (back != (best % 2 == 0 ? FootPlace::First : FootPlace::Second)) twin = best;
  }
  const double limit =
      feet[best].squared + kSquareMargin * q.reach2 + 4.0 * linearTolerance * linearTolerance;
  bool isCertain = true;
  for (int i = 0; i < 4; ++i)
    isCertain &= (i == best) | (i == twin) | (feet[i].squared > limit);
  return {best, isCertain ? place : FootPlace::Unknown};
}

/// Returns the connection of an end, with its foot at that place.
inline Connection ConnectionOfEnd(const Segment& a, const Segment& b, const NearestEnd& nearest,
                                  double linearTolerance) {
  const bool isOfA = nearest.end < 2;
  const Segment& own = isOfA ? a : b;
  const Segment& target = isOfA ? b : a;
  const bool isFirst = nearest.end % 2 == 0;
  const Coord3 end = isFirst ? own.p1 : own.p2;
  const SegmentPart part = isFirst ? SegmentPart::First : SegmentPart::Second;
  const bool isAtFirst = nearest.place == FootPlace::First;
  SegmentPart onTarget = isAtFirst ? SegmentPart::First : SegmentPart::Second;
  Coord3 point = isAtFirst ? target.p1 : target.p2;
  if (nearest.place == FootPlace::Within) {
    onTarget = SegmentPart::Foot;
    double t = 0.0;
    FootOnSegment(end, target.p1, target.p2, linearTolerance, point, t);
  }
  if (isOfA) return {ConnectionKind::Joined, part, onTarget, end, point};
  return {ConnectionKind::Joined, onTarget, part, point, end};
}

/// Returns the connection of the end that makes the shortest connection.
inline Connection ConnectBestEnd(const Segment& a, const Segment& b, const SegmentProducts& q,
                                 double linearTolerance) {
  const NearestEnd nearest = NearestEndOf(q, linearTolerance);
  if (nearest.place == FootPlace::Unknown) return ConnectEnds(a, b, linearTolerance);
  return ConnectionOfEnd(a, b, nearest, linearTolerance);
}

/// Finds the shortest connection. Its kind is None where no distance is below kSegmentDistanceCap,
/// as for segments of which every end is NaN.
inline Connection ConnectSegments(const Segment& a, const Segment& b, double linearTolerance) {
  const SegmentProducts q(a, b);
  if (!q.AreGeneral(linearTolerance)) return ConnectSegmentsBySteps(a, b, linearTolerance);
  const double atTolerance = linearTolerance * linearTolerance * q.nn;
  const bool isSkew = q.rn * q.rn > 2.0 * atTolerance;
  if (!isSkew && !(q.rn * q.rn < 0.5 * atTolerance)) {
    return ConnectSegmentsBySteps(a, b, linearTolerance);
  }
  switch (PlaceOf(q)) {
  case CrossingPlace::Within:
    return isSkew ? ConnectedAlongNormal(a, b, linearTolerance) : CrossingOf(a, b, linearTolerance);
  case CrossingPlace::Beyond:
    return ConnectBestEnd(a, b, q, linearTolerance);
  case CrossingPlace::Unknown:
    break;
  }
  return ConnectSegmentsBySteps(a, b, linearTolerance);
}

} // namespace gsl_kernel

#endif
