#ifndef GSL_KERNEL_SEGMENT_SWEEP_BOUNDS_H
#define GSL_KERNEL_SEGMENT_SWEEP_BOUNDS_H

#include "kernel/Constants.h"

/// The bounds within which it is certain that two segments have no contact. The kernel of one pair
/// and the lanes of many share them.
namespace gsl_kernel {

/// Sizes between which no length overflows or loses its digits.
// A length is the root of a sum of squares, and a position along a target is a quotient of products
// of two lengths. A sum of sizes of 1e-100 has a component of at least a third of it, whose square
// is above 1e-201. That is far from the least normal number, 2e-308, even after a multiplication by
// a unit roundoff. At the other end no product of two sums is above 1e201, and the largest number
// is 1.8e308.
constexpr double kLeastOrdinarySize = 1e-100;
constexpr double kLargestOrdinarySize = 1e100;

/// The least magnitude of a position along a segment of ordinary size, times its length, that
/// decides. Divided by the square of the length and multiplied by the length, it keeps its digits:
/// 1e-90 / 1e200 is above 2e-308.
constexpr double kLeastDecidedPosition = 1e-90;

/// The least gap aside that decides. The way from one segment to the other has a cross product with
/// the direction that is at least as large. Its square keeps its digits, so that IsOn is not true
/// for want of them: both sizes may be ordinary where their product is not.
constexpr double kLeastDecidedGap = 1e-150;

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

/// How far rounding makes a gap along the direction smaller than the way between the segments,
/// relative to R |d|.
// A contact that counts is within the linear tolerance of its target along it. The errors of the
// crossing, of the turn of the target and of the position are those above. The gap has 5 h: the
// difference, the product and the sums. Each end of the way has 4 h, and their difference has 1 h.
constexpr double kGapRounding = 0x1p-46;

static_assert(kCrossingPointRoundoffs + kTargetTurnRoundoffs + kPositionRoundoffs + 5.0 + 9.0 <
                  kGapRounding / kUnitRoundoff,
              "the bound of a gap covers its parts");

} // namespace gsl_kernel

#endif
