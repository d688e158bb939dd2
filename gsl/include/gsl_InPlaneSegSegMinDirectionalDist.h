#ifndef GSL_IN_PLANE_SEG_SEG_MIN_DIRECTIONAL_DIST_H
#define GSL_IN_PLANE_SEG_SEG_MIN_DIRECTIONAL_DIST_H

#include "gsl_Point.h"
#include "gsl_Vector.h"

/// How far segment A travels along `direction` before it touches segment B, if that is less than
/// `distance` by more than `margin`; all in the XY plane, or one parallel to it.
///
/// Units       model units; `direction` need not be unit.
/// Orientation a segment's side normal is its edge x Z. A's must not point against the direction,
///             B's must not point along it; twoSided[0] and [1] allow A and B to be reversed. A
///             flag is read only when its segment has to be, A's first.
/// Result      true when a contact was accepted; of equal ones the first counts. Two segments along
///             the direction, or one, may also be accepted with a negative gap.
/// Outputs     contacts[0] on A, contacts[1] on B; an end point keeps its uid, a computed point has
///             a fresh one. For two segments across the direction a contact that an end of B makes
///             stores A's end of the same index as contacts[1], and an end of B that lies behind A
///             makes the result false although an earlier contact stays written:
///             docs/in-plane-sweep.md says where else the answer is not that of the motion. The
///             contacts may be end points, `distance` a coordinate of one or of `direction`; the
///             contacts and `distance` must be apart.
/// Untouched   every output where no contact was accepted, `contacts` not even read: for a refused
///             orientation, segments along the direction on two lines (or whose first ends
///             coincide), and segments across it that run the same way.
/// Tolerance   gsl_Util linearTolerance and cosineTolerance, read once. A segment shorter than
///             linearTolerance is never met by another's end; a `direction` shorter than it acts as
///             the zero vector, along which every gap is 0.
[[nodiscard]] GSL_API bool
gsl_InPlaneSegSegMinDirectionalDist(const gsl_Vector& direction, const gsl_Point& a0,
                                    const gsl_Point& a1, const gsl_Point& b0, const gsl_Point& b1,
                                    const bool* twoSided, double margin, gsl_Point* contacts,
                                    double& distance);

#endif
