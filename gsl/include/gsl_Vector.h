#ifndef GSL_VECTOR_H
#define GSL_VECTOR_H

#include "aio_ostream.h"
#include "gsl_Arithmetic.h"
#include "gsl_Util.h"

class gsl_Matrix;
class gsl_Plane;
class gsl_Point;

/// Free vector that carries its own length.
///
/// Units      components and length in model units, angles in radians.
/// Invariant  magnitude == sqrt(x*x + y*y + z*z), up to rounding; only the writable operator[], and
///            writing a member, let it go stale.
/// Tolerance  gsl_Util fields, read at the call; strict, tolerance > quantity, unless a member says
///            otherwise. A NaN therefore never counts as small.
/// Errors     none thrown, none printed.
class GSL_API gsl_Vector {
public:
  double x;
  double y;
  double z;
  /// Cached length; stored with the record.
  double magnitude;

  /// Unit Z, (0, 0, 1); not the zero vector.
  // default-vector-is-unit-z: it is not the zero vector.
  gsl_Vector() : x(0.0), y(0.0), z(1.0), magnitude(1.0) {}

  gsl_Vector(double xComponent, double yComponent, double zComponent)
      : x(xComponent), y(yComponent), z(zComponent),
        magnitude(gsl_arithmetic::Length({xComponent, yComponent, zComponent})) {}

  /// to - from.
  gsl_Vector(const gsl_Point& from, const gsl_Point& to);

  /// Unit normal of three points, right-handed over p1, p2, p3; (0, 0, 0) with magnitude 0 when
  /// cosineTolerance * |p1p2| * |p2p3| >= |p1p2 x p2p3| (closed), that is for collinear or
  /// coincident points. The magnitude is that of a scaling, so it may differ from 1 in the last
  /// place. A NaN coordinate results in NaN.
  gsl_Vector(const gsl_Point& p1, const gsl_Point& p2, const gsl_Point& p3);

  /// Components, and components with the cached length, as the arithmetic takes them.
  gsl_arithmetic::Coord3 Coords() const { return {x, y, z}; }
  gsl_arithmetic::Measured3 Measured() const { return {{x, y, z}, magnitude}; }

  gsl_Vector operator+(const gsl_Vector& o) const { return {x + o.x, y + o.y, z + o.z}; }
  gsl_Vector operator-(const gsl_Vector& o) const { return {x - o.x, y - o.y, z - o.z}; }
  gsl_Vector operator*(double s) const { return {x * s, y * s, z * s}; }

  /// The same object, or linearTolerance > |this - o|: a difference of exactly linearTolerance is
  /// unequal.
  [[nodiscard]] bool operator==(const gsl_Vector& o) const {
    if (this == &o) return true;
    return omi_Singleton<gsl_Util>::Instance().linearTolerance > (*this - o).magnitude;
  }
  [[nodiscard]] bool operator!=(const gsl_Vector& o) const { return !(*this == o); }

  /// 0 is x, 1 is y, every other index is z.
  // every-index-above-one-is-z: an index out of range is not an error.
  double operator[](unsigned int i) const { return i == 0 ? x : (i == 1 ? y : z); }
  /// The same mapping, writable. Deliberately leaves `magnitude` as it is.
  // index-write-keeps-the-magnitude: the length is measured when the vector is made.
  double& operator[](unsigned int i) { return i == 0 ? x : (i == 1 ? y : z); }

  double DotProduct(const gsl_Vector& o) const { return gsl_arithmetic::Dot(Coords(), o.Coords()); }

  /// this x o.
  gsl_Vector CrossProduct(const gsl_Vector& o) const {
    return gsl_Vector(gsl_arithmetic::Measure(gsl_arithmetic::Cross(Coords(), o.Coords())));
  }

  /// Keeps `magnitude`.
  void Negate() {
    x = -x;
    y = -y;
    z = -z;
  }

  /// Multiplies the components by s and `magnitude` by |s|, without a square root.
  void Scale(double s) { *this = gsl_Vector(gsl_arithmetic::Scaled(Measured(), s)); }

  /// this * s, its length measured again.
  gsl_Vector ScaledCopy(double s) const { return *this * s; }

  /// Scales to length exactly 1.0. False, and unchanged, when linearTolerance > magnitude; exactly
  /// linearTolerance is scaled.
  bool Normalize() {
    gsl_arithmetic::Measured3 v = Measured();
    if (!gsl_arithmetic::Normalize(v, omi_Singleton<gsl_Util>::Instance().linearTolerance)) {
      return false;
    }
    *this = gsl_Vector(v);
    return true;
  }

  /// ScaledCopy(1 / magnitude); the zero vector when linearTolerance > magnitude.
  gsl_Vector NormalizedCopy() const {
    return gsl_Vector(gsl_arithmetic::NormalizedCopy(
        Measured(), omi_Singleton<gsl_Util>::Instance().linearTolerance));
  }

  /// Collinear in either sense: cosineTolerance * |this| * |o| > |this x o|. Never for a zero
  /// vector or NaN.
  [[nodiscard]] bool IsOn(const gsl_Vector& o) const {
    return gsl_arithmetic::IsOn(Measured(), o.Measured(),
                                omi_Singleton<gsl_Util>::Instance().cosineTolerance);
  }

  /// cosineTolerance * |this| * |o| > |this . o|. Never for a zero vector or NaN.
  [[nodiscard]] bool IsOrthogonal(const gsl_Vector& o) const {
    return gsl_arithmetic::IsOrthogonal(Measured(), o.Measured(),
                                        omi_Singleton<gsl_Util>::Instance().cosineTolerance);
  }

  /// The unit components agree within `tol`, a cosine (closed, gsl_RealEqual: NaN agrees). A vector
  /// of magnitude exactly 0 has unit components 0.
  [[nodiscard]] bool SameDirection(const gsl_Vector& o, double tol) const;

  /// SameDirection, or the same against the opposite of `o`.
  [[nodiscard]] bool IsParallel(const gsl_Vector& o, double tol) const;

  /// A unit vector orthogonal to this one: this x (1, 1, 1), or (1, -1, 0) when that is shorter
  /// than linearTolerance; normalised.
  gsl_Vector AnyOrthogonalUnit() const;

  /// A vector orthogonal to this one, leaning towards the coordinate axis that lies best in the
  /// orthogonal plane (near ties within linearTolerance go to the earlier axis).
  ///
  /// Not normalised: for a unit vector it is the axis projected onto the plane. The zero vector
  /// gives the zero vector.
  gsl_Vector BestAlignedOrthogonalUnit() const;

  /// The component of this vector in the plane. A plane with a normal shorter than linearTolerance
  /// gives the vector itself.
  gsl_Vector ProjectOn(const gsl_Plane& plane) const;

  /// Signed angle in (-pi, pi] from a to b about this vector, right-handed. `angle` may be a
  /// component of this vector.
  ///
  /// False, and `angle` unwritten, when linearTolerance > |a| or > |b|, or when the components of
  /// a and b along the axis (all as unit vectors) differ by more than linearTolerance.
  [[nodiscard]] bool AngleBetween(gsl_Vector a, gsl_Vector b, double& angle) const;

  /// Unsigned angle in [0, pi]; `unitVectors` promises that both have length 1. A vector of
  /// magnitude at most linearTolerance makes it pi / 2.
  double AngleWith(const gsl_Vector& o, bool unitVectors) const;

  /// Angle from 0 to 2 pi: the unsigned angle, taken the other way round when
  /// (this x o) . reference < 0. That of vectors so close that their angle rounds to 0 is then 2 pi
  /// itself.
  double AngleWith(const gsl_Vector& o, bool unitVectors, const gsl_Vector& reference) const;

  /// Applies the 3x3 block of m in place, without translation, and measures the magnitude again.
  void RotateAndTransform(const gsl_Matrix& m);

  /// Two lines, each after `indent` blanks and flushed: the magnitude, then the components, 15
  /// significant digits.
  void Print(aio_ostream& out, int indent) const;

private:
  /// The length is that of the components, or scaled along with them.
  explicit gsl_Vector(const gsl_arithmetic::Measured3& v)
      : x(v.c.x), y(v.c.y), z(v.c.z), magnitude(v.magnitude) {}
};

#endif
