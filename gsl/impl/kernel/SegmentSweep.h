#ifndef GSL_KERNEL_SEGMENT_SWEEP_H
#define GSL_KERNEL_SEGMENT_SWEEP_H

#include "kernel/SegmentPair.h"
#include "kernel/SegmentSweepBounds.h"
#include "kernel/SweepContacts.h"
#include "kernel/TriangleSweepBounds.h"
#include "kernel/TwoDoubles.h"

/// One segment swept along a direction onto another, both in the XY plane or one parallel to it, on
/// bare coordinates.
namespace gsl_kernel {

/// A segment with its edge vector, which turns with it.
struct SweptSegment {
  SourcedPoint p[2];
  Measured3 edge;

  Segment Coordinates() const { return {p[0].c, p[1].c}; }

  void Reverse() {
    edge.c = Negated(edge.c);
    const SourcedPoint first = p[0];
    p[0] = p[1];
    p[1] = first;
  }
};

inline SweptSegment SweptSegmentBetween(const SourcedPoint& p0, const SourcedPoint& p1) {
  return {{p0, p1}, Between(p0.c, p1.c)};
}

/// Turns the segment so that its side normal, edge x Z, does not point against `sense` * d. Returns
/// false when the segment must be turned and the caller does not allow it. Reads the flag only when
/// the segment must be turned.
inline bool TurnSegment(SweptSegment& segment, const Measured3& d, double sense,
                        const bool* twoSided) {
  const Coord3 sideNormal = Cross(segment.edge.c, {0.0, 0.0, 1.0});
  if (!(sense * Dot(sideNormal, d.c) < 0.0)) return true;
  if (!*twoSided) return false;
  segment.Reverse();
  return true;
}

/// Returns the gap along d between an end and the point that its line along d meets. `side` is +1
/// for an end of A and -1 for an end of B.
// The difference always leads from the end. Where it rounds to zero, the other order has zeros of
// the other sign.
inline double GapFromEnd(int side, const Measured3& d, const Coord3& end, const Coord3& met) {
  return static_cast<double>(side) * Dot(d.c, Subtract(met, end));
}

/// Finds where the line through p meets the target. Returns false when the line misses the target.
inline bool MeetTarget(const Coord3& p, const RayDirection& ray, const RayTarget& target,
                       double linearTolerance, SourcedPoint& hit) {
  double weights[2];
  hit.source = kComputed;
  return CrossRayTarget(p, ray, target, linearTolerance, hit.c, weights) ==
         SegmentCrossing::Crossing;
}

/// Tests the ends of a segment along d against a segment across d. `side` is +1 when A lies along
/// d, and -1 when B lies along d. Gaps of either sign count.
inline bool EndsOfAlong(int side, const SweptSegment& along, const SweptSegment& across,
                        const Measured3& d, double margin, double linearTolerance,
                        SweepContacts& contacts) {
  const RayDirection ray(d, linearTolerance);
  const RayTarget target(across.Coordinates(), ray, linearTolerance);
  bool found = false;
  for (const SourcedPoint& end : along.p) {
    SourcedPoint hit;
    if (!MeetTarget(end.c, ray, target, linearTolerance, hit)) continue;
    const double g = GapFromEnd(side, d, end.c, hit.c);
    if (!(contacts.distance - margin > g)) continue;
    contacts.Accept(SlotOf(side), end, hit, g);
    found = true;
  }
  return found;
}

/// Tests two segments along d, end against end, when they are on one line. Gaps of either sign
/// count.
inline bool EndsOnOneLine(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                          double margin, double cosineTolerance, SweepContacts& contacts) {
  // first-ends-that-coincide: a zero vector is on no line.
  if (!gsl_arithmetic::IsOn(Between(a.p[0].c, b.p[0].c), d, cosineTolerance)) return false;
  bool found = false;
  for (const SourcedPoint& endA : a.p) {
    for (const SourcedPoint& endB : b.p) {
      // negative-gap-counts-along: a segment along the direction can be met behind.
      const double g = GapFromEnd(+1, d, endA.c, endB.c);
      if (!(contacts.distance - margin > g)) continue;
      contacts.Accept(0, endA, endB, g);
      found = true;
    }
  }
  return found;
}

inline double SumOfSizes(const Coord3& c) {
  return std::fabs(c.x) + std::fabs(c.y) + std::fabs(c.z);
}

/// The largest distance aside, times |d|, at which the steps of the sweep can accept a contact of a
/// and b. Requires ordinary sizes, and a d that is no shorter than linearTolerance.
// A crossing is within linearTolerance of the target's span, and off its ray by rounding. Of two
// segments along d, the vector v between their first ends has |v x d| < cosineTolerance |v| |d|,
// and |v| is at most the sum of the coordinates. Gaps aside are distances times |d|.
inline double AsideReach(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                         const SweepTolerances& tol) {
  const double size =
      SumOfSizes(a.p[0].c) + SumOfSizes(a.p[1].c) + SumOfSizes(b.p[0].c) + SumOfSizes(b.p[1].c);
  const double widest = std::fabs(tol.linear) + std::fabs(tol.cosine) * size;
  return (widest + kCrossingRounding * (widest + size)) * d.magnitude;
}

/// Returns whether AsideReach holds for these segments and this direction. Returns false for a NaN.
inline bool AreOrdinary(const SweptSegment& a, const SweptSegment& b, const Measured3& d) {
  // A segment whose length overflows (beyond about 1e154) can be met from far aside, and so can a
  // segment whose length has lost its digits.
  return SumOfSizes(a.edge.c) > kLeastOrdinarySize && SumOfSizes(b.edge.c) > kLeastOrdinarySize &&
         d.magnitude > kLeastOrdinarySize && d.magnitude < kLargestOrdinarySize &&
         SumOfSizes(a.p[0].c) + SumOfSizes(a.p[1].c) < kLargestOrdinarySize &&
         SumOfSizes(b.p[0].c) + SumOfSizes(b.p[1].c) < kLargestOrdinarySize;
}

/// Returns the gap between segments of one plane, across d and times |d|. It is not positive when
/// they overlap.
inline double GapAside(const SweptSegment& a, const SweptSegment& b, const Measured3& d) {
  const auto aside = [&d](const SourcedPoint& p) { return d.c.y * p.c.x - d.c.x * p.c.y; };
  const double a0 = aside(a.p[0]);
  const double a1 = aside(a.p[1]);
  const double b0 = aside(b.p[0]);
  const double b1 = aside(b.p[1]);
  const double aThenB = (b0 < b1 ? b0 : b1) - (a0 > a1 ? a0 : a1);
  const double bThenA = (a0 < a1 ? a0 : a1) - (b0 > b1 ? b0 : b1);
  return aThenB > bThenA ? aThenB : bThenA;
}

/// Returns whether the segments and the direction are in one plane of constant z.
inline bool LieFlat(const SweptSegment& a, const SweptSegment& b, const Measured3& d) {
  const double height = a.p[0].c.z;
  return d.c.z == 0.0 && a.p[1].c.z == height && b.p[0].c.z == height && b.p[1].c.z == height;
}

/// Returns true when two segments of one plane pass each other too far aside for the steps of the
/// sweep to find a contact. It may return false for such a pair, and the steps then find nothing.
inline bool PassAside(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                      const SweepTolerances& tol) {
  if (!LieFlat(a, b, d)) return false;
  const double gap = GapAside(a, b, d);
  if (!(gap > kLeastDecidedGap)) return false;
  // With a tolerance above |d| no line is crossed: an end meets its foot on the other segment.
  if (tol.linear > d.magnitude || !AreOrdinary(a, b, d)) return false;
  return gap > AsideReach(a, b, d, tol);
}

constexpr unsigned kNoEnd = 4;

/// What the lines along d through the four ends meet. The ends have numbers: 0 and 1 are of A, 2
/// and 3 are of B.
struct EndGaps {
  /// From each end to the point that it meets, along d. Infinite where it meets nothing. The last
  /// is the distance before.
  double gap[5];
  Coord3 met[4];
};

/// Finds what each end meets, by the documented steps. This is a function of its own, with
/// arguments of its own, so that the common way keeps its numbers in registers.
[[gnu::noinline]] inline EndGaps MeetEveryEnd(SweptSegment a, SweptSegment b, Measured3 d,
                                              double linearTolerance) {
  const RayDirection ray(d, linearTolerance);
  const RayTarget targets[2] = {RayTarget(b.Coordinates(), ray, linearTolerance),
                                RayTarget(a.Coordinates(), ray, linearTolerance)};
  const Coord3 ends[4] = {a.p[0].c, a.p[1].c, b.p[0].c, b.p[1].c};
  EndGaps gaps = {};
  for (int k = 0; k < 4; ++k) {
    SourcedPoint hit;
    const bool isMet = MeetTarget(ends[k], ray, targets[k / 2], linearTolerance, hit);
    gaps.gap[k] = isMet ? GapFromEnd(k < 2 ? +1 : -1, d, ends[k], hit.c)
                        : std::numeric_limits<double>::infinity();
    if (isMet) gaps.met[k] = hit.c;
  }
  return gaps;
}

/// Returns whether MeetFlatEnds holds for this direction. Returns false for a NaN.
// With a tolerance below 0 every line is skew to the target. With a tolerance above |d| an end
// meets its foot on the other segment.
inline bool IsUsualDirection(const Measured3& d, double linearTolerance) {
  return linearTolerance >= 0.0 && linearTolerance <= d.magnitude && d.c.z == 0.0 &&
         d.magnitude > kLeastOrdinarySize && d.magnitude < kLargestOrdinarySize;
}

/// Does what MeetEveryEnd does, for B and for A in the lanes of vectors, where no root, no common
/// normal and no weight is needed. Returns false where one is. Requires a usual direction.
inline bool MeetFlatEnds(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                         double linearTolerance, EndGaps& gaps) {
  const TwoCoords start = Together(b.p[0].c, a.p[0].c), end = Together(b.p[1].c, a.p[1].c);
  const TwoCoords way = Subtract(end, start), direction = Both(d.c);
  const TwoDoubles length = {b.edge.magnitude, a.edge.magnitude};
  // Is NormalizedCopy.
  const TwoCoords u = Multiply(way, Both(1.0) / length), v = Both(Multiply(d.c, 1.0 / d.magnitude));
  const TwoDoubles cosine = Dot(u, v), denominator = cosine * cosine - Both(1.0);
  // Where a weight is compared with the tolerance, it is multiplied by the square of the length.
  const TwoDoubles bound = Both(linearTolerance) * length;
  const TwoDoubles outside = -Larger(Both(1.0 + kWeightSlack) * bound, Both(kLeastDecidedPosition));
  const TwoDoubles inside =
      bound > Both(kLeastDecidedPosition) ? -(Both(1.0 - kWeightSlack) * bound) : Both(0.0);
  const auto isUsual = (end.z == start.z) & (start.z == Both(a.p[0].c.z)) &
                       (length > Both(linearTolerance)) & (length > Both(kLeastOrdinarySize)) &
                       (length < Both(kLargestOrdinarySize)) &
                       (-denominator > Both(kCrossingSineSquare));
  const auto meet = [&](int i) __attribute__((always_inline)) {
    const TwoCoords origin = Together(a.p[i].c, b.p[i].c), w = Subtract(origin, start);
    // Is ClosestOfNonParallel, then PointSegmentParameters and GapFromEnd.
    const TwoDoubles s = (Dot(w, v) * cosine - Dot(w, u)) / denominator;
    const TwoCoords met = Add(start, Multiply(u, s));
    const TwoDoubles least = Smaller(Dot(Subtract(met, start), way), Dot(Subtract(end, met), way));
    const TwoDoubles gap = TwoDoubles{1.0, -1.0} * Dot(direction, Subtract(met, origin));
    const TwoDoubles counted =
        least < outside ? Both(std::numeric_limits<double>::infinity()) : gap;
    for (int k = 0; k < 2; ++k) {
      gaps.gap[2 * k + i] = counted[k];
      gaps.met[2 * k + i] = {met.x[k], met.y[k], met.z[k]};
    }
    return (least >= inside) | (least < outside);
  };
  const auto isCertain = isUsual & meet(0) & meet(1);
  return (isCertain[0] & isCertain[1]) != 0;
}

/// Returns the end whose gap is accepted last, or kNoEnd. Clears `isContact` where an end of B was
/// passed.
inline unsigned AcceptedEnd(const EndGaps& gaps, double margin, bool& isContact) {
  const double* const g = gaps.gap;
  // Without a margin the first of the least gaps is accepted, unless an end was passed. It is
  // chosen without a branch, because no branch could be predicted.
  const double least01 = Smaller(g[1], g[0]), least23 = Smaller(g[3], g[2]);
  if (margin == 0.0 && least01 >= 0.0 && least23 >= 0.0 && Smaller(least23, least01) < g[kNoEnd]) {
    constexpr unsigned char kEnds[8] = {0, 1, 0, 1, 2, 2, 3, 3};
    return kEnds[static_cast<unsigned>(g[1] < g[0]) | static_cast<unsigned>(g[3] < g[2]) << 1 |
                 static_cast<unsigned>(least23 < least01) << 2];
  }
  unsigned closest = kNoEnd;
  for (unsigned k = 0; k < 4; ++k) {
    if (g[k] < 0.0) {
      // passed-end-of-a-keeps-the-result: the search ends with what was found so far.
      // passed-end-of-b-is-no-contact: what the first pass wrote stays.
      isContact = k < 2;
      break;
    }
    // negative-margin-loosens-along-only: across the direction a contact must beat the distance
    // itself too.
    if (g[closest] - margin > g[k] && g[closest] > g[k]) closest = k;
  }
  return closest;
}

/// Tests two segments across d: the ends of A against B, then the ends of B against A.
inline bool EndsAcross(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                       double margin, double linearTolerance, SweepContacts& contacts) {
  // Such segments do not face each other.
  if (Dot(a.edge.c, b.edge.c) > 0.0) return false;
  EndGaps gaps;
  if (!IsUsualDirection(d, linearTolerance) || !MeetFlatEnds(a, b, d, linearTolerance, gaps)) {
    gaps = MeetEveryEnd(a, b, d, linearTolerance);
  }
  gaps.gap[kNoEnd] = contacts.distance;
  bool isContact = true;
  const unsigned closest = AcceptedEnd(gaps, margin, isContact);
  if (closest == kNoEnd) return false;
  // second-pass-stores-the-end-of-a: this is the end with the same index, not the end of B.
  const SourcedPoint ends[2] = {a.p[0], a.p[1]};
  contacts.Accept(static_cast<int>(closest / 2), ends[closest % 2], {gaps.met[closest], kComputed},
                  gaps.gap[closest]);
  return isContact;
}

/// Returns true when no root is needed to know that IsOn is false.
// The length of the cross product is at least the magnitude of its z, but for three roundings.
// Where the square of z overflows or loses its digits, the length is infinite or a comparison
// fails.
inline bool IsCertainlyNotOn(const Measured3& d, const Measured3& edge, double cosineTolerance) {
  const double across = std::fabs(d.c.x * edge.c.y - d.c.y * edge.c.x);
  return across > (1.0 + kWeightSlack) * (cosineTolerance * d.magnitude * edge.magnitude) &&
         across > kLeastDecidedPosition;
}

inline bool LiesAlong(const Measured3& d, const SweptSegment& segment, double cosineTolerance) {
  return !IsCertainlyNotOn(d, segment.edge, cosineTolerance) &&
         gsl_arithmetic::IsOn(d, segment.edge, cosineTolerance);
}

/// Sweeps a pair of which at least one segment lies along d. This is a function of its own, as
/// MeetEveryEnd is.
[[gnu::noinline]] inline bool SweepAlong(SweptSegment a, bool alongA, SweptSegment b, bool alongB,
                                         Measured3 d, double margin, SweepTolerances tol,
                                         SweepContacts& contacts) {
  if (alongA && alongB) return EndsOnOneLine(a, b, d, margin, tol.cosine, contacts);
  if (alongA) return EndsOfAlong(+1, a, b, d, margin, tol.linear, contacts);
  return EndsOfAlong(-1, b, a, d, margin, tol.linear, contacts);
}

/// Sweeps along d, the direction after NormalizedCopy, a pair that PassAside keeps.
inline bool SweepSegment(const Measured3& d, SweptSegment a, SweptSegment b, const bool* twoSided,
                         double margin, const SweepTolerances& tol, SweepContacts& contacts) {
  // A is judged, and may be refused, before B is looked at.
  if (!TurnSegment(a, d, 1.0, &twoSided[0])) return false;
  const bool alongA = LiesAlong(d, a, tol.cosine);
  if (!TurnSegment(b, d, -1.0, &twoSided[1])) return false;
  const bool alongB = LiesAlong(d, b, tol.cosine);

  if (alongA || alongB) return SweepAlong(a, alongA, b, alongB, d, margin, tol, contacts);
  return EndsAcross(a, b, d, margin, tol.linear, contacts);
}

} // namespace gsl_kernel

#endif
