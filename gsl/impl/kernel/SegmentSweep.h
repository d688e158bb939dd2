#ifndef GSL_KERNEL_SEGMENT_SWEEP_H
#define GSL_KERNEL_SEGMENT_SWEEP_H

#include "kernel/SegmentPair.h"
#include "kernel/SegmentSweepBounds.h"
#include "kernel/SweepContacts.h"

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
  const double ahead = Dot(d.c, Subtract(met, end));
  return side > 0 ? ahead : -ahead;
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

/// Tests two segments across d: the ends of A against B, then the ends of B against A.
inline bool EndsAcross(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                       double margin, double linearTolerance, SweepContacts& contacts) {
  // Such segments do not face each other.
  if (Dot(a.edge.c, b.edge.c) > 0.0) return false;
  const auto improves = [&contacts, margin](double g) {
    // negative-margin-loosens-along-only: across the direction a contact must beat the distance
    // itself too.
    return contacts.distance - margin > g && contacts.distance > g;
  };
  bool found = false;
  const RayDirection ray(d, linearTolerance);
  const RayTarget targetB(b.Coordinates(), ray, linearTolerance);
  for (const SourcedPoint& end : a.p) {
    SourcedPoint hit;
    if (!MeetTarget(end.c, ray, targetB, linearTolerance, hit)) continue;
    const double g = GapFromEnd(+1, d, end.c, hit.c);
    // passed-end-of-a-keeps-the-result: the search ends with what was found so far.
    if (g < 0.0) return found;
    if (!improves(g)) continue;
    contacts.Accept(0, end, hit, g);
    found = true;
  }
  const RayTarget targetA(a.Coordinates(), ray, linearTolerance);
  for (int i = 0; i < 2; ++i) {
    SourcedPoint hit;
    if (!MeetTarget(b.p[i].c, ray, targetA, linearTolerance, hit)) continue;
    const double g = GapFromEnd(-1, d, b.p[i].c, hit.c);
    // passed-end-of-b-is-no-contact: what the first pass wrote stays.
    if (g < 0.0) return false;
    if (!improves(g)) continue;
    // second-pass-stores-the-end-of-a: this is the end with the same index, not the end of B.
    contacts.Accept(0, hit, a.p[i], g);
    found = true;
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

/// Returns true when two segments of one plane pass each other too far aside for the steps of the
/// sweep to find a contact. It may return false for such a pair, and the steps then find nothing.
inline bool PassAside(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                      const SweepTolerances& tol) {
  const double height = a.p[0].c.z;
  if (d.c.z != 0.0 || a.p[1].c.z != height || b.p[0].c.z != height || b.p[1].c.z != height) {
    return false;
  }
  const double gap = GapAside(a, b, d);
  if (!(gap > 0.0)) return false;
  // With a tolerance above |d| no line is crossed: an end meets its foot on the other segment.
  if (tol.linear > d.magnitude || !AreOrdinary(a, b, d)) return false;
  return gap > AsideReach(a, b, d, tol);
}

/// Sweeps along d, the direction after NormalizedCopy, a pair that PassAside keeps.
inline bool SweepSegment(const Measured3& d, SweptSegment a, SweptSegment b, const bool* twoSided,
                         double margin, const SweepTolerances& tol, SweepContacts& contacts) {
  // A is judged, and may be refused, before B is looked at.
  if (!TurnSegment(a, d, 1.0, &twoSided[0])) return false;
  const bool alongA = gsl_arithmetic::IsOn(d, a.edge, tol.cosine);
  if (!TurnSegment(b, d, -1.0, &twoSided[1])) return false;
  const bool alongB = gsl_arithmetic::IsOn(d, b.edge, tol.cosine);

  if (alongA && alongB) return EndsOnOneLine(a, b, d, margin, tol.cosine, contacts);
  if (alongA) return EndsOfAlong(+1, a, b, d, margin, tol.linear, contacts);
  if (alongB) return EndsOfAlong(-1, b, a, d, margin, tol.linear, contacts);
  return EndsAcross(a, b, d, margin, tol.linear, contacts);
}

} // namespace gsl_kernel

#endif
