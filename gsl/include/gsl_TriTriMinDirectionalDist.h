#ifndef GSL_TRI_TRI_MIN_DIRECTIONAL_DIST_H
#define GSL_TRI_TRI_MIN_DIRECTIONAL_DIST_H

#include "gsl_Point.h"
#include "gsl_Vector.h"

/// Measures how far triangle A travels along `direction` before it touches triangle B, if that is
/// less than `distance`. It suits a caller that sweeps one triangle against many and keeps the
/// running minimum.
///
/// Units      model units; `direction` need not be unit.
/// Arguments  twoSided[0] and [1] say whether A (facing along the direction) and B (facing against
///            it) may be used reversed. A flag is read only when its triangle has to be reversed,
///            A's first. `margin` only loosens the rejection by extents along the direction.
/// Result     true when a contact was found. It may be no closer than `distance` where both
///            triangles face the direction, or where an edge of one triangle crosses the other,
///            edge-on.
/// Outputs    `distance` is written only when it falls to a strictly smaller value. contacts[0]
///            lies on A, contacts[1] on B; a vertex keeps its uid, a computed point has a fresh
///            uid. When both face the direction and a contact was found, contacts[1] is always
///            computed again from contacts[0]. The contacts may be vertices, and `distance` a
///            coordinate of a vertex or of `direction`. The contacts and `distance` must be apart.
/// Untouched  every output where no contact was found; `contacts` is not even read. This holds for
///            a degenerate triangle, a refused orientation, a B behind A or out of reach, and
///            edge-on triangles in separate planes.
/// Degenerate a triangle collinear within cosineTolerance is refused. A `direction` shorter than
///            linearTolerance acts as the zero vector, along which nothing improves.
/// NaN        `distance` never becomes NaN, and a NaN `distance` stays NaN. A NaN vertex is not
///            refused: the other vertices of its triangle can still improve the distance.
/// Tolerance  gsl_Util linearTolerance and cosineTolerance, read once.
/// Limits     distances are unsigned. Of two triangles that are both edge-on, vertex i is tried
///            against edge i only: docs/triangle-sweep.md.
[[nodiscard]] GSL_API bool gsl_TriTriMinDirectionalDist(const gsl_Vector& direction,
                                                        const gsl_Point& a0, const gsl_Point& a1,
                                                        const gsl_Point& a2, const gsl_Point& b0,
                                                        const gsl_Point& b1, const gsl_Point& b2,
                                                        const bool* twoSided, double margin,
                                                        gsl_Point* contacts, double& distance);

#endif
