// Feeds doubles of any bits to comparison, rounding, boxes and transforms. Nothing crashes, no
// behaviour is undefined, and what holds for all numbers holds.

#include "FuzzEntities.h"
#include "gsl_BBox.h"
#include "gsl_Matrix.h"
#include "gsl_utils.h"
#include "nex_AssertException.h"

#include <algorithm>
#include <cmath>

namespace {

void Comparisons(FuzzInput& in) {
  double a[4], b[4];
  for (int k = 0; k < 4; ++k) {
    a[k] = in.Number();
    b[k] = in.Number();
  }
  const double tolerance = in.Number();
  const int digits = static_cast<int>(in.Byte()) - 128;
  // The comparison is the same in both orders.
  Require(gsl_RealEqual(a[0], b[0], tolerance) == gsl_RealEqual(b[0], a[0], tolerance));
  Ignore(gsl_RealRelEqual(a[0], b[0], tolerance));
  Ignore(gsl_RealEqualDig(a[0], b[0], digits));
  // An array is equal exactly when each of its numbers is.
  bool isEach = true;
  for (int k = 0; k < 4; ++k)
    isEach = isEach && gsl_RealEqual(a[k], b[k], tolerance);
  Require(gsl_RealArrEqual(4, a, b, tolerance) == isEach);
  gsl_RoundFloat(a[1], digits);
  // Only a positive number of places is allowed.
  bool isRefused = false;
  try {
    gsl_Truncate(a[2], digits);
  } catch (const nex_AssertException&) {
    isRefused = true;
  }
  Require(isRefused == (digits <= 0));
}

/// Returns whether a number is one of eight, up to the sign of zero.
bool IsAmong(double number, const gsl_Point* points, double gsl_Point::*axis, int count) {
  for (int k = 0; k < count; ++k) {
    if (points[k].*axis == number) return true;
  }
  return false;
}

void Boxes(FuzzInput& in) {
  gsl_Point points[8];
  gsl_BBox box, other;
  Require(box.IsEmpty());
  for (gsl_Point& p : points) {
    p = PointOf(in);
    box.Add(p);
  }
  const bool isFinite = std::all_of(points, points + 8, [](const gsl_Point& p) {
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
  });
  if (isFinite) {
    // The corners are coordinates of points, and no point is outside.
    for (double gsl_Point::*axis : {&gsl_Point::x, &gsl_Point::y, &gsl_Point::z}) {
      Require(IsAmong(box.min.*axis, points, axis, 8));
      Require(IsAmong(box.max.*axis, points, axis, 8));
      for (const gsl_Point& p : points)
        Require(box.min.*axis <= p.*axis && p.*axis <= box.max.*axis);
    }
  }
  other.Add(PointOf(in));
  Ignore(box.Intersect(other));
  box.Add(other);
  gsl_Matrix matrix;
  const gsl_Point pivot = PointOf(in);
  const gsl_Vector axis = VectorOf(in);
  matrix.AxisRotation(pivot, axis, in.Number());
  box.Transform(matrix);
  box.Size();
  box.Diag();
  box.GetExtent();
  Ignore(box == other);
}

void Matrices(FuzzInput& in) {
  gsl_Matrix m;
  for (unsigned int row = 0; row < 4; ++row) {
    for (unsigned int column = 0; column < 4; ++column)
      m.m[row][column] = in.Number();
  }
  m.isIdentity = -1;
  const gsl_Point p = PointOf(in);
  gsl_Vector v = VectorOf(in);
  const gsl_Point pivot = PointOf(in);
  gsl_Matrix turn;
  turn.AxisRotation(pivot, v, in.Number());
  gsl_Point moved = p;
  m.Transform(moved);
  m.Transform(v);
  m.InverseRigidTransform();
  Ignore(m.IsIdentity());
  double angles[3];
  m.GetRotationAngles(angles[0], angles[1], angles[2]);
  gsl_Vector axis;
  m.GetAxisRotation(moved, axis, angles[0]);
  turn.Concatenate(m);
  Ignore(turn.IsIdentity());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  FuzzInput in(bytes, count);
  ScopedSettings settings;
  SetTolerances(in, settings);
  switch (in.Below(3)) {
  case 0:
    Comparisons(in);
    break;
  case 1:
    Boxes(in);
    break;
  default:
    Matrices(in);
    break;
  }
  return 0;
}
