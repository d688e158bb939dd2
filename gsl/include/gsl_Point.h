#ifndef GSL_POINT_H
#define GSL_POINT_H

#include "cls_Uid.h"
#include "gsl_Vector.h"

class cls_ClassRegistrar;
class cls_ReadVisitor;
class cls_WriteVisitor;
class gsl_Matrix;
class gsl_Plane;
class gsl_Segment;
class gsl_StLine;

/// Position in model space with a persistent identity.
///
/// Units      model units.
/// Identity   every constructor except the copies allocates a fresh uid; a copy and an assignment
///            take the source's. A query that fills an output point copies the uid of the point
///            that it chose, or allocates a fresh uid for a computed point.
/// Tolerance  gsl_Util fields, read at the call; strict, tolerance > quantity, unless a member says
///            otherwise.
/// Outputs    a point may be this point or an input, and a number may be a coordinate of either.
///            Two outputs must be apart, and an array of weights must be apart from everything
///            else.
/// Errors     queries never throw or print; a NaN spreads by the arithmetic and passes every
///            rejection that compares it.
class GSL_API gsl_Point {
public:
  double x;
  double y;
  double z;
  /// The persistent identity.
  cls_Uid uid;

  /// The point is the origin.
  gsl_Point() : x(0.0), y(0.0), z(0.0), uid(cls_Uid::AllocateUid()) {}
  /// The point has these coordinates.
  gsl_Point(double xCoordinate, double yCoordinate, double zCoordinate)
      : x(xCoordinate), y(yCoordinate), z(zCoordinate), uid(cls_Uid::AllocateUid()) {}
  /// The point is a * wa + b * wb; the weights need not sum to 1.
  gsl_Point(const gsl_Point& a, double wa, const gsl_Point& b, double wb)
      : x(a.x * wa + b.x * wb), y(a.y * wa + b.y * wb), z(a.z * wa + b.z * wb),
        uid(cls_Uid::AllocateUid()) {}
  /// The point is the midpoint, 0.5 * (a + b).
  gsl_Point(const gsl_Point& a, const gsl_Point& b)
      : x(0.5 * (a.x + b.x)), y(0.5 * (a.y + b.y)), z(0.5 * (a.z + b.z)),
        uid(cls_Uid::AllocateUid()) {}
  /// Reads a record; a missing coordinate is 0.0. Throws nex_Exception for a record of another
  /// class and for a field of another kind.
  explicit gsl_Point(const cls_ReadVisitor& visitor);
  gsl_Point(const gsl_Point&) = default;
  gsl_Point& operator=(const gsl_Point&) = default;

  /// Writes the record. This is the only virtual operation.
  virtual void DBWrite(const cls_WriteVisitor& visitor) const;
  static void InitializeMetadata(cls_ClassRegistrar& registrar);

  /// Returns the coordinates without the identity.
  gsl_arithmetic::Coord3 Coords() const { return {x, y, z}; }

  static constexpr unsigned int TypeId() { return 0x030A0001u; }
  unsigned int DynTypeId() const { return TypeId(); }

  /// Returns true for the same object, and when squared distance <= zeroTolerance (closed). With
  /// the default 1e-12, points up to 1e-6 apart are equal.
  [[nodiscard]] bool operator==(const gsl_Point& o) const;
  [[nodiscard]] bool operator!=(const gsl_Point& o) const { return !(*this == o); }

  /// Returns true when every coordinate is greater than the same coordinate of `o`. The test is
  /// strict and has no tolerance. It does not order points.
  [[nodiscard]] bool operator>(const gsl_Point& o) const {
    return this != &o && x > o.x && y > o.y && z > o.z;
  }
  /// Returns true when no coordinate is smaller than the same coordinate of `o`, without a
  /// tolerance.
  [[nodiscard]] bool operator>=(const gsl_Point& o) const {
    if (this == &o) return true;
    return !(o.x > x) && !(o.y > y) && !(o.z > z);
  }

  /// Returns the point moved by v, with a fresh identity.
  gsl_Point operator+(const gsl_Vector& v) const { return {x + v.x, y + v.y, z + v.z}; }
  /// Returns the point moved by -v, with a fresh identity.
  gsl_Point operator-(const gsl_Vector& v) const { return {x - v.x, y - v.y, z - v.z}; }

  /// Index 0 is x, 1 is y, every other index is z.
  // every-index-above-one-is-z: an index out of range is not an error.
  double operator[](unsigned int i) const { return i == 0 ? x : (i == 1 ? y : z); }
  /// Does the same for a coordinate that is to be changed.
  double& operator[](unsigned int i) { return i == 0 ? x : (i == 1 ? y : z); }

  /// Applies rotation and translation in place; the identity stays.
  void Transform(const gsl_Matrix& m);

  /// Writes one line after `indent` blanks and flushes it; numbers have 15 significant digits.
  void Print(aio_ostream& out, int indent) const;

  /// Returns the distance of the two points.
  double GetDistance(const gsl_Point& o) const {
    return gsl_arithmetic::Length({o.x - x, o.y - y, o.z - z});
  }

  /// Returns |v x d| / |d| with v from the line's point to this point. The result is NaN for a zero
  /// direction.
  double GetDistance(const gsl_StLine& line) const;

  /// Returns (v . n) / |n|, which is positive on the side that the normal points to, and NaN for a
  /// zero normal.
  double GetSignedDistance(const gsl_Plane& plane) const;

  /// Returns |GetSignedDistance|.
  double GetDistance(const gsl_Plane& plane) const;

  /// Returns the distance to the plane measured along `dir`: GetDistance(plane) * |dir| * |n| /
  /// (dir . n). It is deliberately negative when `dir` points against the normal. Whether `dir` is
  /// orthogonal to the normal is evaluated and ignored: the result is then infinite or NaN.
  double GetDistance(const gsl_Plane& plane, const gsl_Vector& dir) const;

  /// Returns the distance to the segment; `closest` becomes the nearest point. Where ProjectOn
  /// returns true, `closest` is the foot, with a fresh uid. This includes a foot at an end and up
  /// to linearTolerance beyond it. Elsewhere `closest` is the nearer end point with its uid (at a
  /// tie Point2). For a segment shorter than linearTolerance `closest` stays unchanged, and the
  /// result is the distance to the point that it held.
  double GetDistance(const gsl_Segment& seg, gsl_Point& closest) const;

  /// Returns the distance to the triangle, or NaN for a triangle without a normal.
  double GetDistance(const gsl_Point& p1, const gsl_Point& p2, const gsl_Point& p3) const;

  /// Returns linearTolerance > distance, which is false for NaN and for a zero normal or direction.
  [[nodiscard]] bool IsOn(const gsl_Plane& plane) const;
  /// Does the same for a line.
  [[nodiscard]] bool IsOn(const gsl_StLine& line) const;
  /// Does the same for a point.
  [[nodiscard]] bool IsOn(const gsl_Point& o) const;

  /// Writes the foot on the line; `t` is its signed distance from the line's point along the
  /// direction. For a direction shorter than linearTolerance the foot is the line's point, and t is
  /// 0. The operation does not change this point, but is deliberately not const: its exported name
  /// is the non-const name.
  gsl_Point ProjectOn(const gsl_StLine& line, double& t);

  /// Writes the foot on the plane. The foot is this point itself for a normal shorter than
  /// linearTolerance, and NaN for a zero normal. The operation is deliberately not const, like the
  /// projection on a line.
  gsl_Point ProjectOn(const gsl_Plane& plane);

  /// Writes the foot on the segment's line; `t` is its fraction from Point1 (0) to Point2 (1).
  /// Returns true when the foot lies within the segment lengthened by `tol` at both ends (open:
  /// exactly tol is outside). The outputs are written either way, except for a segment with tol >
  /// length, which returns true and writes nothing.
  [[nodiscard]] bool ProjectOn(const gsl_Segment& seg, double tol, gsl_Point& out, double& t) const;

  /// Does the same with tol = linearTolerance.
  [[nodiscard]] bool ProjectOn(const gsl_Segment& seg, gsl_Point& out, double& t) const;

  /// Writes the foot on the triangle's plane and its three barycentric weights, in every case.
  /// Returns true when the foot lies in the triangle, the border and a small band included: each
  /// weight times the square of the doubled area is at least -linearTolerance^2. A triangle without
  /// a normal results in NaN and true.
  [[nodiscard]] bool ProjectOn(const gsl_Point& p1, const gsl_Point& p2, const gsl_Point& p3,
                               gsl_Point& out, double* const weights) const;

  /// Crosses the line through this point along `dir`, in both senses of `dir`, with the segment
  /// p1-p2. `out` is the crossing, weights[0] the weight of p2 and weights[1] the weight of p1.
  ///
  /// Returns false, and writes nothing, when linearTolerance > |p1 - p2| or the lines are parallel
  /// or skew (gsl_StLine::Intersect). Returns false with the outputs written when the crossing lies
  /// beyond an end by more than linearTolerance. A segment of exactly linearTolerance is met only
  /// within linearTolerance of p1, and `weights` stay unchanged where it is missed.
  [[nodiscard]] bool RayIntersect(const gsl_Point& p1, const gsl_Point& p2, const gsl_Vector& dir,
                                  gsl_Point& out, double* const weights) const;

  /// Crosses the line through this point along `dir`, in both senses, with the plane. `out` is this
  /// point (with its uid) when this point lies on the plane, and also on false. Returns false when
  /// linearTolerance > |dir|, or when `dir` is orthogonal to the normal.
  [[nodiscard]] bool RayIntersect(const gsl_Vector& dir, const gsl_Plane& plane,
                                  gsl_Point& out) const;
};

#endif
