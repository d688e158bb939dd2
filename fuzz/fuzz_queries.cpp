// Feeds doubles of any bits to the queries. Nothing crashes, no behaviour is undefined, and outputs
// are unchanged where a false result promises that.

#include "gsl_Matrix.h"
#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "gsl_TriTriMinDirectionalDist.h"
#include "gsl_Vector.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

/// Returns the input as doubles, and zeros after its end.
class Doubles {
public:
  Doubles(const std::uint8_t* bytes, std::size_t count) : next(bytes), left(count) {}

  double Take() {
    double value = 0.0;
    const std::size_t size = left < sizeof value ? left : sizeof value;
    std::memcpy(&value, next, size);
    next += size;
    left -= size;
    return value;
  }

  gsl_Point TakePoint() {
    const double x = Take(), y = Take(), z = Take();
    return {x, y, z};
  }

  gsl_Vector TakeVector() {
    const double x = Take(), y = Take(), z = Take();
    return {x, y, z};
  }

private:
  const std::uint8_t* next;
  std::size_t left;
};

void Require(bool holds) {
  if (!holds) std::abort();
}

/// Any result is acceptable.
void Ignore(bool) {}

void Vectors(Doubles& in) {
  const gsl_Vector a = in.TakeVector(), b = in.TakeVector(), axis = in.TakeVector();
  double angle = 12345.0;
  if (!axis.AngleBetween(a, b, angle)) Require(angle == 12345.0);
  a.AngleWith(b, false, axis);
  a.AnyOrthogonalUnit();
  a.BestAlignedOrthogonalUnit();
  Ignore(a.SameDirection(b, in.Take()));
  gsl_Matrix turn;
  turn.AxisRotation(in.TakePoint(), axis, in.Take());
  gsl_Point p;
  gsl_Vector found;
  turn.GetAxisRotation(p, found, angle);
  double angles[3];
  turn.GetRotationAngles(angles[0], angles[1], angles[2]);
  Ignore(turn.InverseRigidTransform().IsIdentity());
}

void LinesAndPlanes(Doubles& in) {
  const gsl_Point p = in.TakePoint();
  const gsl_StLine line(in.TakePoint(), in.TakeVector());
  const gsl_StLine other(in.TakePoint(), in.TakeVector());
  const gsl_Plane plane(in.TakePoint(), in.TakeVector());
  gsl_Point out;
  double dist = 0.0;
  p.GetDistance(line);
  p.GetDistance(plane, line.Direction());
  Ignore(p.RayIntersect(line.Direction(), plane, out));
  Ignore(line.Intersect(plane, out));
  Ignore(line.Intersect(other, out, dist));
}

void Segments(Doubles& in) {
  const gsl_Point p1 = in.TakePoint(), p2 = in.TakePoint(), p3 = in.TakePoint();
  const gsl_Segment segment(p1, p2);
  const gsl_Segment other(p3, in.TakePoint());
  gsl_Segment shortest;
  gsl_Point out;
  double weights[3] = {0.0, 0.0, 0.0};
  segment.GetDistance(other, shortest);
  Ignore(segment.Intersect(other, out));
  Ignore(segment.Intersect(gsl_StLine(p3, in.TakeVector()), out));
  p3.GetDistance(segment, out);
  Ignore(in.TakePoint().ProjectOn(p1, p2, p3, out, weights));
  Ignore(p3.RayIntersect(p1, p2, in.TakeVector(), out, weights));
}

void Triangles(Doubles& in) {
  gsl_Point a[3], b[3];
  for (gsl_Point& p : a)
    p = in.TakePoint();
  for (gsl_Point& p : b)
    p = in.TakePoint();
  gsl_Point contact[2];
  const bool twoSided[2] = {true, in.Take() > 0.0};
  double distance = in.Take();
  Ignore(gsl_TriTriMinDirectionalDist(in.TakeVector(), a[0], a[1], a[2], b[0], b[1], b[2], twoSided,
                                      in.Take(), contact, distance));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  if (count == 0) return 0;
  Doubles in(bytes + 1, count - 1);
  switch (bytes[0] % 4) {
  case 0:
    Vectors(in);
    break;
  case 1:
    LinesAndPlanes(in);
    break;
  case 2:
    Segments(in);
    break;
  default:
    Triangles(in);
    break;
  }
  return 0;
}
