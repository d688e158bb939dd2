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

/// Sizes between which no length overflows or loses its digits.
// A length is the root of a sum of squares, and a position along a target is a quotient of products
// of two lengths. A sum of sizes of 1e-100 has a component of at least a third of it, whose square
// is above 1e-201. That is far from the least normal number, 2e-308, even after a multiplication by
// a unit roundoff. At the other end no product of two sums is above 1e201, and the largest number
// is 1.8e308.
constexpr double kLeastOrdinarySize = 1e-100;
constexpr double kLargestOrdinarySize = 1e100;

// The crossing of a target with the ray from an origin is start + s u with s = N / D,
// N = (w . v) c - w . u, D = c c - 1 and c = u . v. Here u is the unit vector of the target, v is
// the unit vector of the ray, and w leads from start to the origin. The constants below count unit
// roundoffs h = 2^-53.
// All z are equal, so that a dot product has two products and one sum.

/// Error of |u|^2 = 1, in unit roundoffs.
// The length has 2 h: a square has 1 h, the sum has 1 h, and the root halves both and adds 1 h. The
// reciprocal of the length adds 1 h, and the product with a component adds 1 h. Squaring doubles
// these 4 h.
constexpr double kUnitSquareRoundoffs = 2.0 * (2.0 + 1.0 + 1.0);

/// Error of c, in unit roundoffs.
// Each product has 1 h, and the sum has 1 h.
constexpr double kCosineRoundoffs = 1.0 + 1.0;

/// Error of D against (u . v)^2 - |u|^2 |v|^2 = -|u x v|^2, in unit roundoffs.
// c counts twice. The product has 1 h, and the difference has 1 h. The number 1 takes the place of
// |u|^2 |v|^2.
constexpr double kDenominatorRoundoffs =
    2.0 * kCosineRoundoffs + 1.0 + 1.0 + 2.0 * kUnitSquareRoundoffs;

/// Error of N against (w . v) (u . v) - (w . u) |v|^2, in unit roundoffs of |w|.
// w . v, c and their product have errors, and so have w . u and the difference. The factor |v|^2 is
// missing in w . u.
constexpr double kNumeratorRoundoffs =
    (kCosineRoundoffs + kCosineRoundoffs + 1.0) + kCosineRoundoffs + 1.0 + kUnitSquareRoundoffs;

/// The least |u x v| of a target that does not count as parallel to the ray.
// Some component of the unit vectors differs by more than the tolerance t = kLineParallelTolerance,
// for v and for -v. So 2 sin(a / 2) > t and 2 cos(a / 2) > t, where a is the angle. The squares of
// these two numbers add up to 4. So sin(a) is above t sqrt(1 - t^2 / 4), which is above
// t (1 - t^2 / 4). The components that are compared have 3 h each, and their difference adds 1 h.
// The directions of u and v have 1 h each. Their lengths have 4 h of |u x v|, which is far below
// 1 h.
constexpr double kLeastCross =
    kLineParallelTolerance * (1.0 - kLineParallelTolerance * kLineParallelTolerance / 4.0) -
    (2.0 * 3.0 + 1.0 + 2.0 * 1.0 + 1.0) * kUnitRoundoff;

// The errors below are not divided by |u x v|. They are in unit roundoffs of R. R is the sum of the
// sizes of all coordinates, plus the length that the tolerance adds to the target. |s|, |w| and
// every length are at most R.

/// Error of start + s u, after N and D, in unit roundoffs of R.
// The vector w, the quotient s and the product s u are at most R each, and have 1 h each. The sum
// is at most 2 R and has 1 h.
constexpr double kCrossingPointRoundoffs = 1.0 + 1.0 + 1.0 + 2.0 * 1.0;

/// How far aside the ray is where v is off the direction of d, in unit roundoffs of R.
// The components of v have 1 h each: the product. Their common factor does not turn v. The ray is
// at most 2 R long.
constexpr double kRayTurnRoundoffs = 2.0 * 1.0;

/// How far aside the target is where u is off its direction, in unit roundoffs of R.
// The components of u have 2 h each: the difference of two coordinates and the product. The target
// is at most R long.
constexpr double kTargetTurnRoundoffs = 1.0 + 1.0;

/// Error of the position along the target, in unit roundoffs of R.
// The dot product has 4 h: two differences, the product, the sum. The length has 3 h: 1 h of the
// differences, and 2 h as in kUnitSquareRoundoffs. Its square has 7 h. The quotient has 1 h more.
// The quotient is multiplied by the length, 3 h, which adds 1 h.
constexpr double kPositionRoundoffs = 4.0 + (2.0 * 3.0 + 1.0) + 1.0 + 3.0 + 1.0;

/// Error of GapAside, in unit roundoffs of R |d|.
// Each aside value has 2 h: the product and the difference. The two that count add up to at most
// R |d|, and so does their difference, which has 1 h.
constexpr double kGapAsideRoundoffs = (1.0 + 1.0) + 1.0;

/// Error of both sides of IsOn for two first ends, in unit roundoffs of R |d|.
// The cross product has 3 h: the difference of the ends, the product, the difference of products.
// The other side is the tolerance times two lengths: 3 h for the ends, 2 h for d, and two products.
constexpr double kFirstEndsRoundoffs = (1.0 + 1.0 + 1.0) + (3.0 + 2.0 + 1.0 + 1.0);

/// Error of AsideReach, in unit roundoffs of its value.
// A size passes at most 2 + 3 sums, then a product and a sum in `widest`. The reach adds two sums
// and two products, and the length of d has 2 h.
constexpr double kReachRoundoffs = (2.0 + 3.0) + 2.0 + (2.0 + 2.0) + 2.0;

/// The sum of the errors that are not divided by |u x v|, in unit roundoffs of R.
constexpr double kUndividedRoundoffs = kCrossingPointRoundoffs + kRayTurnRoundoffs +
                                       kTargetTurnRoundoffs + kPositionRoundoffs +
                                       kGapAsideRoundoffs + kFirstEndsRoundoffs + kReachRoundoffs;

/// How far rounding puts a crossing aside of its ray, relative to R.
///
/// Requires ordinary sizes, and a target that counts as neither shorter than the tolerance nor
/// parallel to the ray.
// The exact crossing of the two lines has s* = N* / D*, with N* and D* as named above. This holds
// for vectors of any length: N* = -(w x v) (u x v). The computed s satisfies s D = N (1 + h). So
// s - s* = (dN - s dD) / D*, where dN and dD are the errors of N and D. The computed crossing is
// off its ray by |u x v| times this difference: (|dN| + |s| |dD|) / |u x v|. |w| and |s| are at
// most R. Products of two errors add less than 1e-8 of the second part.
constexpr double kCrossingRounding =
    ((kNumeratorRoundoffs + kDenominatorRoundoffs) / kLeastCross + kUndividedRoundoffs) *
    kUnitRoundoff;

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
