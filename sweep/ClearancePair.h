#ifndef GSL_SWEEP_CLEARANCE_PAIR_H
#define GSL_SWEEP_CLEARANCE_PAIR_H

#include "PairKernel.h"

/// Decides when two triangles come within a distance of each other, the clearance, if one of them
/// travels along a direction.
///
/// The distance is a convex function of the travel, so the travels at which it is at most the
/// clearance are a closed interval. It begins at the root of a quadratic whose coefficients are
/// polynomials in the corners. Whether there is such a travel, and which features are closest
/// there, is decided exactly, by whole numbers of any size. The travel is computed from the exact
/// coefficients.
///
/// Degenerate triangles count as the segments or points that they are.
/// Range      of coordinates, direction and clearance: any finite numbers; the largest coordinate
///            should be near 1.
namespace gsl_sweep {

/// Returns true when the distance between the triangles at rest is at most the clearance. The
/// decision is exact. It is true for triangles that share a point.
bool AreWithin(const TravelDirection& direction, const Triangle& moving, const Triangle& fixed,
               double clearance);

/// Returns the closest features of triangles at rest that share no point. Among equal distances it
/// is the first in the order of ContactKind, then of corners and edges. The travel is zero.
PairContact ClosestAtRest(const TravelDirection& direction, const Triangle& moving,
                          const Triangle& fixed);

/// What rounded numbers say about a pair. Multiples are those of the direction vector.
struct ClearanceEstimate {
  bool isApart = false; ///< never within the clearance from zero on, or beyond the limit
  /// A plane across `normal` decided so, by twice the precision. It may decide so of other pairs.
  bool isApartByPlane = false;
  bool isApartAtRest = false; ///< certainly not within it at zero; false where that is not certain
  double least = 0.0;         ///< the pair is not within the clearance before this multiple
  double most = std::numeric_limits<double>::infinity(); ///< it is by then, if it is apart at rest
  /// About the shortest vector between the triangles at `least`, with components of at most 1.
  Coord3 normal{0.0, 0.0, 0.0};
};

/// Bounds the first multiple at which the pair is within the clearance. Requires that the pair is
/// not within it before the multiple `from`.
ClearanceEstimate EstimateClearance(const TravelDirection& direction, const Triangle& moving,
                                    const Triangle& fixed, double clearance, double limit,
                                    double from = 0.0);

enum class ClearanceOutcome {
  Apart,  ///< never within the clearance from zero on, or only beyond the limit
  Within, ///< within it at travel zero
  Ahead   ///< comes within it at a positive travel
};

/// The first travel at which a pair is within the clearance. The travel of the contact is the exact
/// travel rounded from more than 90 bits, however small it is.
struct ClearanceContact {
  PairContact contact;
  DoubleDouble multiple; ///< the travel as a multiple of the direction vector
};

/// Judges a pair. `found` is written for Ahead alone. `limit`, a multiple of the direction vector,
/// only saves work: a pair whose multiple is at most the limit has the same outcome for any limit.
ClearanceOutcome JudgeClearance(const TravelDirection& direction, const Triangle& moving,
                                const Triangle& fixed, double clearance, double limit,
                                ClearanceContact& found);

} // namespace gsl_sweep

#endif
