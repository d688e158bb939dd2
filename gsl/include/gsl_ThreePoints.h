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
/// NaN        makes three points collinear and every other predicate false; it spreads into what is
///            built.
/// Outputs    a point may be one of the inputs; two outputs must be apart.
/// Errors     none thrown, none printed. Pointers must not be null; that is not checked.

/// Unit normal of p0, p1, p2, right-handed, or the zero vector when they are collinear within
/// cosineTolerance; written in every case. True when |normal| > linearTolerance.
[[nodiscard]] GSL_API bool gsl_NormalToThreePoints(const gsl_Point& p0, const gsl_Point& p1,
                                                   const gsl_Point& p2, gsl_Vector& normal);

/// gsl_NormalToThreePoints is false for the three points. At the limit the order counts: the sine
/// of the angle at d1 decides.
[[nodiscard]] GSL_API bool gsl_ThreePointsColinear(const gsl_Dot* d0, const gsl_Dot* d1,
                                                   const gsl_Dot* d2);

/// linearTolerance > distance.
[[nodiscard]] GSL_API bool gsl_PointsAreCoincident(const gsl_Dot* a, const gsl_Dot* b);

/// gsl_Vector::IsOn of the directions, so opposite ones are parallel and a zero one never is.
[[nodiscard]] GSL_API bool gsl_LinesAreParallel(const gsl_StLine* a, const gsl_StLine* b);

/// gsl_Vector::IsOn of the normals.
[[nodiscard]] GSL_API bool gsl_PlanesAreParallel(const gsl_Plane* a, const gsl_Plane* b);

/// The distance along the common normal exceeds linearTolerance (exactly that is not skew).
/// Parallel lines are never skew; nor are lines so short that the cross product of their directions
/// cannot be normalised.
[[nodiscard]] GSL_API bool gsl_LinesAreSkew(const gsl_StLine* a, const gsl_StLine* b);

/// Centre of the circle through three points and the unit normal of their plane, p0p1 x p0p2.
///
/// Method     the two bisecting planes and the plane of the points, by Cramer's rule.
/// Degenerate `normal` is always written: not normalised when linearTolerance > |p0p1 x p0p2|.
///            `centre` stays when linearTolerance > |determinant|, as for collinear points.
/// Identity   `centre` gets its coordinates and keeps its uid.
GSL_API void gsl_ComputeCircumCircle(const gsl_Point& p0, const gsl_Point& p1, const gsl_Point& p2,
                                     gsl_Point& centre, gsl_Vector& normal);

/// Right-handed orthogonal frame from three points.
///
/// At the circumcentre: origin and Z from gsl_ComputeCircumCircle, X from the origin towards p0.
/// Otherwise: origin p0 (identity included), X towards p1, Z along p0p1 x p0p2. Y is Z x X. Then
/// each axis is normalised unless it is shorter than linearTolerance. For collinear points the
/// circumcentre frame stands on whatever `origin` held.
GSL_API void gsl_Transcribe3PointsIntoOriginAndAxes(bool atCircumcentre, const gsl_Point& p0,
                                                    const gsl_Point& p1, const gsl_Point& p2,
                                                    gsl_Point& origin, gsl_Vector& xAxis,
                                                    gsl_Vector& yAxis, gsl_Vector& zAxis);

#endif
