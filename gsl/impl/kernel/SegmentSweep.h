#ifndef GSL_KERNEL_SEGMENT_SWEEP_H
#define GSL_KERNEL_SEGMENT_SWEEP_H

#include "kernel/SegmentPair.h"
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

/// Turns the segment so that its side normal, edge x Z, does not point against `sense` * d. False
/// for one that would have to be turned and may not; the flag of another is not looked at.
inline bool FaceSegment(SweptSegment& segment, const Measured3& d, double sense,
                        const bool* twoSided) {
  const Coord3 sideNormal = Cross(segment.edge.c, {0.0, 0.0, 1.0});
  if (!(sense * Dot(sideNormal, d.c) < 0.0)) return true;
  if (!*twoSided) return false;
  segment.Reverse();
  return true;
}

/// The gap along d from a point of A to a point of B ahead of it.
inline double GapAlong(const Measured3& d, const Coord3& onA, const Coord3& onB) {
  return Dot(d.c, Subtract(onB, onA));
}

/// GapAlong, from the point of B. Not the same bits where the difference rounds to zero: the sign
/// of that zero differs.
inline double GapBackAlong(const Measured3& d, const Coord3& onB, const Coord3& onA) {
  return -Dot(d.c, Subtract(onA, onB));
}

/// Where the line through p meets the target; false when it misses it.
inline bool MeetTarget(const Coord3& p, const RayDirection& ray, const RayTarget& target,
                       double linearTolerance, SourcedPoint& hit) {
  double weights[2];
  hit.source = kComputed;
  return CrossRayTarget(p, ray, target, linearTolerance, hit.c, weights) ==
         SegmentCrossing::Crossing;
}

/// A across d, B along it: the ends of B against A. Gaps of either sign count.
inline bool EndsOfAlongB(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                         double margin, double linearTolerance, SweepContacts& contacts) {
  const RayDirection ray(d, linearTolerance);
  const RayTarget target(a.Coordinates(), ray, linearTolerance);
  bool found = false;
  for (const SourcedPoint& end : b.p) {
    SourcedPoint hit;
    if (!MeetTarget(end.c, ray, target, linearTolerance, hit)) continue;
    const double g = GapBackAlong(d, end.c, hit.c);
    if (!(contacts.distance - margin > g)) continue;
    contacts.Accept(0, hit, end, g);
    found = true;
  }
  return found;
}

/// A along d, B across it: the ends of A against B. Gaps of either sign count.
inline bool EndsOfAlongA(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                         double margin, double linearTolerance, SweepContacts& contacts) {
  const RayDirection ray(d, linearTolerance);
  const RayTarget target(b.Coordinates(), ray, linearTolerance);
  bool found = false;
  for (const SourcedPoint& end : a.p) {
    SourcedPoint hit;
    if (!MeetTarget(end.c, ray, target, linearTolerance, hit)) continue;
    const double g = GapAlong(d, end.c, hit.c);
    if (!(contacts.distance - margin > g)) continue;
    contacts.Accept(0, end, hit, g);
    found = true;
  }
  return found;
}

/// Both along d: end against end, where they are on one line. Gaps of either sign count.
inline bool EndsOnOneLine(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                          double margin, double cosineTolerance, SweepContacts& contacts) {
  // first-ends-coincide: a zero vector is on no line.
  if (!gsl_arithmetic::IsOn(Between(a.p[0].c, b.p[0].c), d, cosineTolerance)) return false;
  bool found = false;
  for (const SourcedPoint& endA : a.p) {
    for (const SourcedPoint& endB : b.p) {
      // accepts-a-negative-gap
      const double g = GapAlong(d, endA.c, endB.c);
      if (!(contacts.distance - margin > g)) continue;
      contacts.Accept(0, endA, endB, g);
      found = true;
    }
  }
  return found;
}

/// Both across d: the ends of A against B, then those of B against A.
inline bool EndsAcross(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                       double margin, double linearTolerance, SweepContacts& contacts) {
  // segments-running-the-same-way
  if (Dot(a.edge.c, b.edge.c) > 0.0) return false;
  const auto improves = [&contacts, margin](double g) {
    // a-negative-margin-does-not-loosen
    return contacts.distance - margin > g && contacts.distance > g;
  };
  bool found = false;
  const RayDirection ray(d, linearTolerance);
  const RayTarget targetB(b.Coordinates(), ray, linearTolerance);
  for (const SourcedPoint& end : a.p) {
    SourcedPoint hit;
    if (!MeetTarget(end.c, ray, targetB, linearTolerance, hit)) continue;
    const double g = GapAlong(d, end.c, hit.c);
    // behind-from-a-keeps-the-result
    if (g < 0.0) return found;
    if (!improves(g)) continue;
    contacts.Accept(0, end, hit, g);
    found = true;
  }
  const RayTarget targetA(a.Coordinates(), ray, linearTolerance);
  for (int i = 0; i < 2; ++i) {
    SourcedPoint hit;
    if (!MeetTarget(b.p[i].c, ray, targetA, linearTolerance, hit)) continue;
    const double g = GapBackAlong(d, b.p[i].c, hit.c);
    // behind-from-b-is-no-contact: what the first pass wrote stays all the same.
    if (g < 0.0) return false;
    if (!improves(g)) continue;
    // second-pass-stores-the-end-of-a: with the same index, not that of B.
    contacts.Accept(0, hit, a.p[i], g);
    found = true;
  }
  return found;
}

inline double SumOfSizes(const Coord3& c) {
  return std::fabs(c.x) + std::fabs(c.y) + std::fabs(c.z);
}

/// Sizes between which no length overflows or loses its digits.
constexpr double kLeastOrdinarySize = 1e-100;
constexpr double kLargestOrdinarySize = 1e100;

/// How far aside of its ray rounding puts a crossing, relative to the coordinates plus whatever the
/// target was lengthened by.
///
/// Requires ordinary sizes, and a target that counts as neither shorter than the tolerance nor
/// parallel to the ray.
// The crossing is start + s u with s = N / D, N = (w . v) c - w . u, D = c c - 1 and c = u . v: u
// is the target's unit vector, v that of the ray, w leads from start to the ray's origin. To the
// first order in h = 2^-53, with all z equal:
//   u, v     2 h by the length, h by its reciprocal, h by the product      |u|^2, |v|^2 = 1 +- 8 h
//   c        2 products, 1 sum                                             +- 2 h
//   D        c twice, 1 product, 1 difference: 6 h; and it should be
//            (u . v)^2 - |u|^2 |v|^2 = -|u x v|^2, which is 16 h away       +- 22 h
//   N        w . v 2 h, its product with c 3 h, w . u 2 h, 1 difference:
//            8 h |w|; and w . u should be times |v|^2, which is 8 h away   +- 16 h |w|
// So s is off by (22 h |s| + 16 h |w|) / |u x v|^2, and the crossing is off the ray by |u x v|
// times that. The unit components of u and v differ by more than kLineParallelTolerance, in both
// senses, and so |u x v| is no smaller. |s| is at most the target's length plus what it was
// lengthened by, and that length and |w| are at most the sum of the coordinates: 22 + 16 = 38. The
// other roundings (the differences of coordinates, the sum start + s u, the values that PassAside
// compares, the position along the target) are a few h and not divided by |u x v|: the last 2 of 40
// are 2e5 h.
constexpr double kCrossingRounding = 40.0 * kUnitRoundoff / kLineParallelTolerance;

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

/// Whether AsideReach holds for them. False for a NaN.
inline bool AreOrdinary(const SweptSegment& a, const SweptSegment& b, const Measured3& d) {
  // segment-whose-length-overflows: even what is far aside can meet it.
  // tiny-segment-along-the-direction: so can it meet one whose length has lost its digits.
  return SumOfSizes(a.edge.c) > kLeastOrdinarySize && SumOfSizes(b.edge.c) > kLeastOrdinarySize &&
         d.magnitude > kLeastOrdinarySize && d.magnitude < kLargestOrdinarySize &&
         SumOfSizes(a.p[0].c) + SumOfSizes(a.p[1].c) < kLargestOrdinarySize &&
         SumOfSizes(b.p[0].c) + SumOfSizes(b.p[1].c) < kLargestOrdinarySize;
}

/// The gap between segments of one plane, across d and times |d|; not positive when they overlap.
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

/// Segments in one plane that pass each other too far aside for the steps to find a contact. Quick,
/// and safe to miss some.
inline bool PassAside(const SweptSegment& a, const SweptSegment& b, const Measured3& d,
                      const SweepTolerances& tol) {
  const double height = a.p[0].c.z;
  if (d.c.z != 0.0 || a.p[1].c.z != height || b.p[0].c.z != height || b.p[1].c.z != height) {
    return false;
  }
  const double gap = GapAside(a, b, d);
  if (!(gap > 0.0)) return false;
  // tolerance-above-the-unit-direction: no line is crossed then, an end meets its foot on the
  // other.
  if (tol.linear > d.magnitude || !AreOrdinary(a, b, d)) return false;
  return gap > AsideReach(a, b, d, tol);
}

/// The sweep along d, the direction after NormalizedCopy, of a pair that PassAside keeps.
inline bool SweepSegment(const Measured3& d, SweptSegment a, SweptSegment b, const bool* twoSided,
                         double margin, const SweepTolerances& tol, SweepContacts& contacts) {
  // A is judged, and may be refused, before B is looked at.
  if (!FaceSegment(a, d, 1.0, &twoSided[0])) return false;
  const bool alongA = gsl_arithmetic::IsOn(d, a.edge, tol.cosine);
  if (!FaceSegment(b, d, -1.0, &twoSided[1])) return false;
  const bool alongB = gsl_arithmetic::IsOn(d, b.edge, tol.cosine);

  if (alongA && alongB) return EndsOnOneLine(a, b, d, margin, tol.cosine, contacts);
  if (alongA) return EndsOfAlongA(a, b, d, margin, tol.linear, contacts);
  if (alongB) return EndsOfAlongB(a, b, d, margin, tol.linear, contacts);
  return EndsAcross(a, b, d, margin, tol.linear, contacts);
}

} // namespace gsl_kernel

#endif
