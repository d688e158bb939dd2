#ifndef GSL_IN_PLANE_SEG_SEG_MIN_DIRECTIONAL_DIST_H
#define GSL_IN_PLANE_SEG_SEG_MIN_DIRECTIONAL_DIST_H

#include "gsl_Point.h"
#include "gsl_Vector.h"

/// Measures how far segment A travels along `direction` before it touches segment B, if that is
/// less than `distance` by more than `margin`. Everything lies in the XY plane or in a plane
/// parallel to it.
///
/// Units       model units; `direction` need not be unit.
/// Orientation The side normal of a segment is its edge x Z. The normal of A must not point against
///             the direction, and the normal of B must not point along it. twoSided[0] and [1]
///             allow A and B to be reversed. A flag is read only when its segment has to be
///             reversed, A's first.
/// Result      true when a contact was accepted; among equal contacts the first counts. When one or
///             both segments lie along the direction, a negative gap may also be accepted.
/// Outputs     contacts[0] lies on A, contacts[1] on B. An end point keeps its uid, a computed
///             point has a fresh uid. For two segments across the direction, a contact that an end
///             of B makes stores A's end of the same index as contacts[1]. An end of B that lies
///             behind A makes the result false, although an earlier contact stays written.
///             docs/in-plane-sweep.md lists the other places where the result differs from the
///             motion. The contacts may be end points, and `distance` a coordinate of an end point
///             or of `direction`. The contacts and `distance` must be apart.
/// Untouched   every output where no contact was accepted; `contacts` is not even read. This holds
///             for a refused orientation, and for segments across the direction that run the same
///             way. It also holds for segments along the direction on two lines, or whose first
///             ends coincide.
/// Tolerance   gsl_Util linearTolerance and cosineTolerance, read once. A segment shorter than
///             linearTolerance is never met by an end of the other. A `direction` shorter than
///             linearTolerance acts as the zero vector, along which every gap is 0.
[[nodiscard]] GSL_API bool
gsl_InPlaneSegSegMinDirectionalDist(const gsl_Vector& direction, const gsl_Point& a0,
                                    const gsl_Point& a1, const gsl_Point& b0, const gsl_Point& b1,
                                    const bool* twoSided, double margin, gsl_Point* contacts,
                                    double& distance);

#endif
