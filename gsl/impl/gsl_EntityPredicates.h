#ifndef GSL_ENTITY_PREDICATES_H
#define GSL_ENTITY_PREDICATES_H

#include "gsl_Plane.h"
#include "gsl_Segment.h"
#include "gsl_Settings.h"
#include "gsl_StLine.h"
#include "kernel/Line.h"
#include "kernel/Segment.h"
#include "kernel/Triangle.h"

/// Relations between entities. Several classes use them, and no class exports them. Each relation
/// fetches its tolerances.

inline gsl_kernel::Line LineOf(const gsl_StLine& line) {
  return {line.PointOn().Coords(), line.Direction().Measured()};
}

inline gsl_kernel::Plane PlaneOf(const gsl_Plane& plane) {
  return {plane.PointOn().Coords(), plane.Direction().Measured()};
}

inline gsl_Vector segmentVector(const gsl_Segment& segment) {
  return {segment.Point1(), segment.Point2()};
}

inline bool pointInTriangle(const gsl_Point& x, const gsl_Point& p0, const gsl_Point& p1,
                            const gsl_Point& p2, double* weights) {
  return gsl_kernel::PointInTriangle(x.Coords(), p0.Coords(), p1.Coords(), p2.Coords(),
                                     Settings().linearTolerance, weights);
}

inline bool pointSegmentParameters(const gsl_Point& x, const gsl_Point& p0, const gsl_Point& p1,
                                   double* weights) {
  return gsl_kernel::PointSegmentParameters(x.Coords(), p0.Coords(), p1.Coords(),
                                            Settings().linearTolerance, weights);
}

inline double lineSkewDistance(const gsl_StLine& a, const gsl_StLine& b) {
  return gsl_kernel::LineSkewDistance(LineOf(a), LineOf(b), Settings().linearTolerance);
}

inline bool linesAreSkew(const gsl_StLine& a, const gsl_StLine& b) {
  return gsl_kernel::LinesAreSkew(LineOf(a), LineOf(b), Settings().linearTolerance);
}

inline bool linesCoincident(const gsl_StLine& a, const gsl_StLine& b) {
  const gsl_Util& settings = Settings();
  return gsl_kernel::LinesCoincident(LineOf(a), LineOf(b), settings.linearTolerance,
                                     settings.cosineTolerance);
}

inline bool lineParallelToPlane(const gsl_StLine& line, const gsl_Plane& plane) {
  return gsl_kernel::LineParallelToPlane(LineOf(line), PlaneOf(plane), Settings().cosineTolerance);
}

inline bool lineLiesInPlane(const gsl_StLine& line, const gsl_Plane& plane) {
  return lineParallelToPlane(line, plane) && line.PointOn().IsOn(plane);
}

/// Returns 0.0 for a line that is not parallel to the plane.
inline double signedDistanceToParallelPlane(const gsl_StLine& line, const gsl_Plane& plane) {
  if (!lineParallelToPlane(line, plane)) return 0.0;
  return gsl_kernel::SignedPlaneDistance(line.PointOn().Coords(), PlaneOf(plane));
}

inline double distanceToParallelPlane(const gsl_StLine& line, const gsl_Plane& plane) {
  return std::fabs(signedDistanceToParallelPlane(line, plane));
}

inline bool planesParallel(const gsl_Plane& a, const gsl_Plane& b) {
  return gsl_kernel::PlanesParallel(PlaneOf(a), PlaneOf(b), Settings().cosineTolerance);
}

inline bool planesCoincident(const gsl_Plane& a, const gsl_Plane& b) {
  return planesParallel(a, b) && a.PointOn().IsOn(b);
}

/// Returns 0.0 for planes that are not parallel.
inline double distanceBetweenParallelPlanes(const gsl_Plane& a, const gsl_Plane& b) {
  return gsl_kernel::DistanceBetweenParallelPlanes(PlaneOf(a), PlaneOf(b),
                                                   Settings().cosineTolerance);
}

#endif
