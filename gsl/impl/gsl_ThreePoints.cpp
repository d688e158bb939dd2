#include "gsl_ThreePoints.h"

#include "gsl_EntityPredicates.h"
#include "gsl_FromCoordinates.h"
#include "gsl_Settings.h"
#include "kernel/ThreePoints.h"

using gsl_kernel::Coord3;

bool gsl_NormalToThreePoints(const gsl_Point& p0, const gsl_Point& p1, const gsl_Point& p2,
                             gsl_Vector& normal) {
  // The normal is written in every case.
  normal = gsl_Vector(p0, p1, p2);
  return normal.magnitude > Settings().linearTolerance;
}

bool gsl_ThreePointsColinear(const gsl_Dot* d0, const gsl_Dot* d1, const gsl_Dot* d2) {
  gsl_Vector normal;
  // The normal compares the sine at its second point, so the order counts at the limit.
  return !gsl_NormalToThreePoints(d0->GetPoint(), d1->GetPoint(), d2->GetPoint(), normal);
}

bool gsl_PointsAreCoincident(const gsl_Dot* a, const gsl_Dot* b) {
  return a->GetPoint().IsOn(b->GetPoint());
}

bool gsl_LinesAreParallel(const gsl_StLine* a, const gsl_StLine* b) {
  return a->Direction().IsOn(b->Direction());
}

bool gsl_PlanesAreParallel(const gsl_Plane* a, const gsl_Plane* b) {
  return planesParallel(*a, *b);
}

bool gsl_LinesAreSkew(const gsl_StLine* a, const gsl_StLine* b) {
  return linesAreSkew(*a, *b);
}

void gsl_ComputeCircumCircle(const gsl_Point& p0, const gsl_Point& p1, const gsl_Point& p2,
                             gsl_Point& centre, gsl_Vector& normal) {
  const double tolerance = Settings().linearTolerance;
  const Coord3 c0 = p0.Coords();
  const Coord3 c1 = p1.Coords();
  const Coord3 c2 = p2.Coords();
  const gsl_kernel::Measured3 n = gsl_kernel::CircumNormal(c0, c1, c2, tolerance);
  normal = VectorOf(n);
  Coord3 found;
  // Collinear points have no centre.
  if (!gsl_kernel::CircumCentre(c0, c1, c2, n.c, tolerance, found)) return;
  // centre-keeps-its-identity: the caller's point is moved, not replaced.
  centre.x = found.x;
  centre.y = found.y;
  centre.z = found.z;
}

void gsl_Transcribe3PointsIntoOriginAndAxes(bool atCircumcentre, const gsl_Point& p0,
                                            const gsl_Point& p1, const gsl_Point& p2,
                                            gsl_Point& origin, gsl_Vector& xAxis, gsl_Vector& yAxis,
                                            gsl_Vector& zAxis) {
  if (atCircumcentre) {
    // p0 may be `origin` itself, so it is copied before `origin` is written.
    const Coord3 first = p0.Coords();
    // frame-keeps-the-old-origin: collinear points leave the origin as it was.
    gsl_ComputeCircumCircle(p0, p1, p2, origin, zAxis);
    xAxis = VectorOf(gsl_kernel::Between(origin.Coords(), first));
  } else {
    xAxis = gsl_Vector(p0, p1);
    zAxis = xAxis.CrossProduct(gsl_Vector(p0, p2));
    origin = p0;
  }
  yAxis = zAxis.CrossProduct(xAxis);
  xAxis.Normalize();
  yAxis.Normalize();
  zAxis.Normalize();
}
