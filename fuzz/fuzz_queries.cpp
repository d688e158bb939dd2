// Feeds doubles of any bits, any tolerances and stale lengths to the queries. Those that have
// a second implementation return its bits and leave the same outputs alone. The others (angles,
// orthogonal vectors, rotations, a line with a plane) end without a fault.

#include "EntityTranscription.h"
#include "FuzzEntities.h"
#include "gsl_Matrix.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "gsl_Vector.h"

namespace {

using transcription::Pt;
using transcription::Tolerances;
using transcription::Vec;

Pt Plain(const gsl_Point& p) {
  return {p.x, p.y, p.z, 0};
}
Vec Plain(const gsl_Vector& v) {
  return {v.x, v.y, v.z, v.magnitude};
}

/// Outputs of the library and of the second implementation, with the same numbers at first.
struct Outputs {
  gsl_Point point = gsl_Point(7.5, -8.5, 9.5);
  Pt plainPoint = {7.5, -8.5, 9.5, 0};
  double numbers[3] = {12345.0, 12345.0, 12345.0};
  double plainNumbers[3] = {12345.0, 12345.0, 12345.0};

  void RequireSame(bool result, bool plainResult) const {
    Require(result == plainResult);
    RequireSamePoint(point, plainPoint);
    for (int k = 0; k < 3; ++k)
      Require(SameNumber(numbers[k], plainNumbers[k]));
  }

  static void RequireSamePoint(const gsl_Point& p, const Pt& plain) {
    Require(SameNumber(p.x, plain.x) && SameNumber(p.y, plain.y) && SameNumber(p.z, plain.z));
  }
};

void Vectors(FuzzInput& in, const Tolerances& tol) {
  const gsl_Vector a = VectorOf(in);
  const gsl_Vector b = VectorOf(in);
  const gsl_Vector axis = VectorOf(in);
  Require(a.IsOrthogonal(b) == IsOrthogonal(Plain(a), Plain(b), tol));
  Require(a.IsParallel(b, tol.linear) == IsParallel(Plain(a), Plain(b), tol.linear));
  gsl_Vector unit = a;
  Vec plainUnit = Plain(a);
  Require(unit.Normalize() == Normalize(plainUnit, tol));
  Require(SameNumber(unit.x, plainUnit.x) && SameNumber(unit.y, plainUnit.y) &&
          SameNumber(unit.z, plainUnit.z) && SameNumber(unit.magnitude, plainUnit.magnitude));
  double angle = 12345.0;
  if (!axis.AngleBetween(a, b, angle)) Require(angle == 12345.0);
  a.AngleWith(b, false, axis);
  a.AnyOrthogonalUnit();
  a.BestAlignedOrthogonalUnit();
  Ignore(a.SameDirection(b, in.Number()));
  gsl_Matrix turn;
  const gsl_Point pivot = PointOf(in);
  turn.AxisRotation(pivot, axis, in.Number());
  gsl_Point p;
  gsl_Vector found;
  turn.GetAxisRotation(p, found, angle);
  double angles[3];
  turn.GetRotationAngles(angles[0], angles[1], angles[2]);
  Ignore(turn.InverseRigidTransform().IsIdentity());
}

void LinesAndPlanes(FuzzInput& in, const Tolerances& tol) {
  const gsl_Point p = PointOf(in), onLine = PointOf(in), onOther = PointOf(in),
                  onPlane = PointOf(in);
  const gsl_Vector d = VectorOf(in), e = VectorOf(in), n = VectorOf(in);
  const gsl_StLine line(onLine, d), other(onOther, e);
  const gsl_Plane plane(onPlane, n);
  const transcription::StLine plainLine = {Plain(onLine), Plain(d)};
  const transcription::StLine plainOther = {Plain(onOther), Plain(e)};
  const transcription::Plane plainPlane = {Plain(onPlane), Plain(n)};
  Require((p == onLine) == Equal(Plain(p), Plain(onLine), tol));
  Require(SameNumber(p.GetDistance(line), Distance(Plain(p), plainLine)));
  Require(SameNumber(p.GetDistance(plane), Distance(Plain(p), plainPlane)));
  Require(SameNumber(p.GetSignedDistance(plane), SignedDistance(Plain(p), plainPlane)));
  Require(SameNumber(p.GetDistance(plane, d), DistanceAlong(Plain(p), plainPlane, Plain(d))));
  Outputs ray, lines, onto;
  const bool meets = p.RayIntersect(d, plane, ray.point);
  ray.RequireSame(meets, RayIntersect(Plain(p), Plain(d), plainPlane, ray.plainPoint, tol));
  const bool cross = line.Intersect(other, lines.point, lines.numbers[0]);
  lines.RequireSame(cross,
                    Intersect(plainLine, plainOther, lines.plainPoint, lines.plainNumbers[0], tol));
  Ignore(line.Intersect(plane, onto.point));
}

void Segments(FuzzInput& in, const Tolerances& tol) {
  const gsl_Point p[4] = {PointOf(in), PointOf(in), PointOf(in), PointOf(in)};
  const gsl_Vector d = VectorOf(in);
  const Pt plain[4] = {Plain(p[0]), Plain(p[1]), Plain(p[2]), Plain(p[3])};
  const gsl_Segment a(p[0], p[1]), b(p[2], p[3]);
  const transcription::Segment plainA = {plain[0], plain[1]}, plainB = {plain[2], plain[3]};
  Outputs nearest, crossing, onLine, onto;
  const double distance = p[2].GetDistance(a, nearest.point);
  Require(SameNumber(distance, Distance(plain[2], plainA, nearest.plainPoint, tol)));
  nearest.RequireSame(true, true);
  const bool isOnto = p[3].ProjectOn(a, onto.point, onto.numbers[0]);
  onto.RequireSame(isOnto,
                   ProjectOn(plain[3], plainA, tol.linear, onto.plainPoint, onto.plainNumbers[0]));
  const bool cross = a.Intersect(b, crossing.point);
  crossing.RequireSame(cross, Intersect(plainA, plainB, crossing.plainPoint, tol));
  const bool meets = a.Intersect(gsl_StLine(p[2], d), onLine.point);
  onLine.RequireSame(
      meets, Intersect(plainA, transcription::StLine{plain[2], Plain(d)}, onLine.plainPoint, tol));
  gsl_Segment shortest(onLine.point, onLine.point);
  transcription::Segment plainShortest = {onLine.plainPoint, onLine.plainPoint};
  a.GetDistance(b, shortest);
  ShortestConnection(plainA, plainB, plainShortest, tol);
  Outputs::RequireSamePoint(shortest.Point1(), plainShortest.point1);
  Outputs::RequireSamePoint(shortest.Point2(), plainShortest.point2);
}

void Triangles(FuzzInput& in, const Tolerances& tol) {
  const gsl_Point p[4] = {PointOf(in), PointOf(in), PointOf(in), PointOf(in)};
  const gsl_Vector d = VectorOf(in);
  const Pt plain[4] = {Plain(p[0]), Plain(p[1]), Plain(p[2]), Plain(p[3])};
  Require(SameNumber(p[3].GetDistance(p[0], p[1], p[2]),
                     Distance(plain[3], plain[0], plain[1], plain[2], tol)));
  Outputs onto, ray;
  const bool isInside = p[3].ProjectOn(p[0], p[1], p[2], onto.point, onto.numbers);
  onto.RequireSame(isInside, ProjectOn(plain[3], plain[0], plain[1], plain[2], onto.plainPoint,
                                       onto.plainNumbers, tol));
  const bool meets = p[2].RayIntersect(p[0], p[1], d, ray.point, ray.numbers);
  ray.RequireSame(meets, RayIntersect(plain[2], plain[0], plain[1], Plain(d), ray.plainPoint,
                                      ray.plainNumbers, tol));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  FuzzInput in(bytes, count);
  ScopedSettings settings;
  SetTolerances(in, settings);
  const Tolerances tol = {settings->linearTolerance, settings->zeroTolerance,
                          settings->cosineTolerance};
  switch (in.Below(4)) {
  case 0:
    Vectors(in, tol);
    break;
  case 1:
    LinesAndPlanes(in, tol);
    break;
  case 2:
    Segments(in, tol);
    break;
  default:
    Triangles(in, tol);
    break;
  }
  return 0;
}
