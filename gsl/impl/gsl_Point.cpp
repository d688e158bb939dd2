#include "gsl_Point.h"

#include "gsl_EntityPredicates.h"
#include "gsl_FromCoordinates.h"
#include "gsl_Matrix.h"
#include "gsl_Printing.h"
#include "gsl_Settings.h"
#include "kernel/SegmentPair.h"
#include "kernel/TriangleDistance.h"

using gsl_kernel::Coord3;

bool gsl_Point::operator==(const gsl_Point& o) const {
  if (this == &o) return true;
  const Coord3 d = gsl_kernel::Subtract(Coords(), o.Coords());
  // tolerance-bounds-a-squared-distance: points up to the root of the tolerance apart are equal.
  return gsl_kernel::Dot(d, d) <= Settings().zeroTolerance;
}

void gsl_Point::Transform(const gsl_Matrix& m) {
  m.Transform(*this);
}

void gsl_Point::Print(aio_ostream& out, int indent) const {
  PrintCoordinates(out, indent, Coords());
}

double gsl_Point::GetDistance(const gsl_StLine& line) const {
  return gsl_kernel::LineDistance(Coords(), LineOf(line));
}

double gsl_Point::GetSignedDistance(const gsl_Plane& plane) const {
  return gsl_kernel::SignedPlaneDistance(Coords(), PlaneOf(plane));
}

double gsl_Point::GetDistance(const gsl_Plane& plane) const {
  return gsl_kernel::PlaneDistance(Coords(), PlaneOf(plane));
}

double gsl_Point::GetDistance(const gsl_Plane& plane, const gsl_Vector& dir) const {
  // orthogonality-is-asked-and-ignored: the caller judges the size and the sign.
  static_cast<void>(dir.IsOrthogonal(plane.Direction()));
  return gsl_kernel::PlaneDistanceAlong(Coords(), PlaneOf(plane), dir.Measured());
}

double gsl_Point::GetDistance(const gsl_Segment& seg, gsl_Point& closest) const {
  using gsl_kernel::SegmentPart;
  const gsl_kernel::NearestPoint nearest = gsl_kernel::NearestOnSegment(
      Coords(), seg.Point1().Coords(), seg.Point2().Coords(), Settings().linearTolerance);
  // distance-to-what-closest-held: a degenerate segment leaves the output as it was.
  if (nearest.part == SegmentPart::None) return GetDistance(closest);
  // `closest` may be this point, so it is written last.
  if (nearest.part == SegmentPart::Foot) {
    AcceptComputed(closest, nearest.point);
  } else {
    closest = nearest.part == SegmentPart::First ? seg.Point1() : seg.Point2();
  }
  return nearest.distance;
}

double gsl_Point::GetDistance(const gsl_Point& p1, const gsl_Point& p2, const gsl_Point& p3) const {
  const gsl_Util& settings = Settings();
  return gsl_kernel::TriangleDistance(Coords(), p1.Coords(), p2.Coords(), p3.Coords(),
                                      settings.linearTolerance, settings.cosineTolerance);
}

bool gsl_Point::IsOn(const gsl_Plane& plane) const {
  return Settings().linearTolerance > GetDistance(plane);
}

bool gsl_Point::IsOn(const gsl_StLine& line) const {
  return Settings().linearTolerance > GetDistance(line);
}

bool gsl_Point::IsOn(const gsl_Point& o) const {
  return Settings().linearTolerance > GetDistance(o);
}

gsl_Point gsl_Point::ProjectOn(const gsl_StLine& line, double& t) {
  return ComputedPoint(
      gsl_kernel::FootOnLine(Coords(), LineOf(line), Settings().linearTolerance, t));
}

gsl_Point gsl_Point::ProjectOn(const gsl_Plane& plane) {
  return ComputedPoint(
      gsl_kernel::FootOnPlane(Coords(), PlaneOf(plane), Settings().linearTolerance));
}

bool gsl_Point::ProjectOn(const gsl_Segment& seg, double tol, gsl_Point& out, double& t) const {
  Coord3 foot;
  const gsl_kernel::SegmentFoot where = gsl_kernel::FootOnSegment(
      Coords(), seg.Point1().Coords(), seg.Point2().Coords(), tol, foot, t);
  // degenerate-segment-succeeds: the outputs keep what the caller put in.
  if (where == gsl_kernel::SegmentFoot::Degenerate) return true;
  AcceptComputed(out, foot);
  // The caller may want the foot beyond the end.
  return where == gsl_kernel::SegmentFoot::Inside;
}

bool gsl_Point::ProjectOn(const gsl_Segment& seg, gsl_Point& out, double& t) const {
  return ProjectOn(seg, Settings().linearTolerance, out, t);
}

bool gsl_Point::ProjectOn(const gsl_Point& p1, const gsl_Point& p2, const gsl_Point& p3,
                          gsl_Point& out, double* const weights) const {
  const gsl_Util& settings = Settings();
  const gsl_kernel::Plane plane = {
      p1.Coords(),
      gsl_kernel::UnitNormal(p1.Coords(), p2.Coords(), p3.Coords(), settings.cosineTolerance)};
  const Coord3 foot = gsl_kernel::FootOnPlane(Coords(), plane, settings.linearTolerance);
  // The corners may be `out` itself, so the test comes before it is written.
  const bool inside = gsl_kernel::PointInTriangle(foot, p1.Coords(), p2.Coords(), p3.Coords(),
                                                  settings.linearTolerance, weights);
  AcceptComputed(out, foot);
  return inside;
}

bool gsl_Point::RayIntersect(const gsl_Point& p1, const gsl_Point& p2, const gsl_Vector& dir,
                             gsl_Point& out, double* const weights) const {
  Coord3 crossing;
  const gsl_kernel::SegmentCrossing where =
      gsl_kernel::CrossRaySegment(Coords(), dir.Measured(), {p1.Coords(), p2.Coords()},
                                  Settings().linearTolerance, crossing, weights);
  if (where == gsl_kernel::SegmentCrossing::Missed) return false;
  AcceptComputed(out, crossing);
  return where == gsl_kernel::SegmentCrossing::Crossing;
}

bool gsl_Point::RayIntersect(const gsl_Vector& dir, const gsl_Plane& plane, gsl_Point& out) const {
  const gsl_Util& settings = Settings();
  Coord3 crossing;
  const gsl_kernel::RayPlane where =
      gsl_kernel::IntersectRayPlane(Coords(), dir.Measured(), PlaneOf(plane),
                                    settings.linearTolerance, settings.cosineTolerance, crossing);
  if (where == gsl_kernel::RayPlane::Crossing) {
    AcceptComputed(out, crossing);
    return true;
  }
  // false-with-the-origin-written: the output takes the identity of the origin.
  out = *this;
  return where == gsl_kernel::RayPlane::OriginOnPlane;
}
