#ifndef GSL_THREE_POINTS_H
#define GSL_THREE_POINTS_H

#include "gsl_Dot.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_StLine.h"
#include "gsl_Vector.h"

/// Predicates on datum entities, and geometry built from three points.
///
/// Tolerance  gsl_Util fields, read at the call.
/// NaN        makes three points collinear and every other predicate false. A construction passes
///            NaN on.
/// Outputs    a point may be one of the inputs; two outputs must be apart.
/// Errors     none thrown, none printed. Pointers must not be null, which is not checked.

/// Writes the unit normal of p0, p1, p2, right-handed, or the zero vector when they are collinear
/// within cosineTolerance. The normal is written in every case. Returns true when |normal| >
/// linearTolerance.
[[nodiscard]] GSL_API bool gsl_NormalToThreePoints(const gsl_Point& p0, const gsl_Point& p1,
                                                   const gsl_Point& p2, gsl_Vector& normal);

/// Returns true when gsl_NormalToThreePoints is false for the three points. At the limit the order
/// counts: the sine of the angle at d1 decides.
[[nodiscard]] GSL_API bool gsl_ThreePointsColinear(const gsl_Dot* d0, const gsl_Dot* d1,
                                                   const gsl_Dot* d2);

/// Returns true when linearTolerance > distance.
[[nodiscard]] GSL_API bool gsl_PointsAreCoincident(const gsl_Dot* a, const gsl_Dot* b);

/// Returns gsl_Vector::IsOn of the directions. Opposite directions are parallel, and a zero
/// direction is never parallel.
[[nodiscard]] GSL_API bool gsl_LinesAreParallel(const gsl_StLine* a, const gsl_StLine* b);

/// Returns gsl_Vector::IsOn of the normals.
[[nodiscard]] GSL_API bool gsl_PlanesAreParallel(const gsl_Plane* a, const gsl_Plane* b);

/// Returns true when the distance along the common normal exceeds linearTolerance (exactly
/// linearTolerance is not skew). Parallel lines are never skew. Neither are lines whose directions
/// are too short for their cross product to be normalised.
[[nodiscard]] GSL_API bool gsl_LinesAreSkew(const gsl_StLine* a, const gsl_StLine* b);

/// Computes the centre of the circle through three points and the unit normal of their plane, p0p1
/// x p0p2.
///
/// Method     the two bisecting planes and the plane of the points, by Cramer's rule.
/// Degenerate `normal` is always written. It is not normalised when linearTolerance > |p0p1 x
///            p0p2|. `centre` stays unchanged when linearTolerance > |determinant|, as for
///            collinear points.
/// Identity   `centre` gets its coordinates and keeps its uid.
GSL_API void gsl_ComputeCircumCircle(const gsl_Point& p0, const gsl_Point& p1, const gsl_Point& p2,
                                     gsl_Point& centre, gsl_Vector& normal);

/// Builds a right-handed orthogonal frame from three points.
///
/// At the circumcentre: origin and Z come from gsl_ComputeCircumCircle, and X leads from the origin
/// towards p0. Otherwise: the origin is p0 (identity included), X leads towards p1, and Z along
/// p0p1 x p0p2. Y is Z x X. Then each axis is normalised unless it is shorter than linearTolerance.
/// For collinear points the frame at the circumcentre uses the point that `origin` held.
GSL_API void gsl_Transcribe3PointsIntoOriginAndAxes(bool atCircumcentre, const gsl_Point& p0,
                                                    const gsl_Point& p1, const gsl_Point& p2,
                                                    gsl_Point& origin, gsl_Vector& xAxis,
                                                    gsl_Vector& yAxis, gsl_Vector& zAxis);

#endif
