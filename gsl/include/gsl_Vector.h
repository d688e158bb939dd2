#ifndef GSL_VECTOR_H
#define GSL_VECTOR_H

#include "aio_fwd.h"
#include "gsl_Arithmetic.h"
#include "gsl_Util.h"

class gsl_Matrix;
class gsl_Plane;
class gsl_Point;

/// Free vector that carries its own length.
///
/// Units      components and length in model units, angles in radians.
/// Invariant  magnitude == sqrt(x*x + y*y + z*z), up to rounding. Only the writable operator[], and
///            writing a member, let it go stale.
/// Tolerance  gsl_Util fields, read at the call; strict, tolerance > quantity, unless a member says
///            otherwise. A NaN therefore never counts as small.
/// Errors     none thrown, none printed.
class GSL_API gsl_Vector {
public:
  double x;
  double y;
  double z;
  /// The cached length. It is stored with the record.
  double magnitude;

  /// The vector is unit Z, (0, 0, 1), not the zero vector.
  // default-vector-is-unit-z: a default direction has a length of 1.
  gsl_Vector() : x(0.0), y(0.0), z(1.0), magnitude(1.0) {}

  /// The vector has these components, and their length.
  gsl_Vector(double xComponent, double yComponent, double zComponent)
      : x(xComponent), y(yComponent), z(zComponent),
        magnitude(gsl_arithmetic::Length({xComponent, yComponent, zComponent})) {}

  /// The vector is to - from.
  gsl_Vector(const gsl_Point& from, const gsl_Point& to);

  /// The vector is the unit normal of three points, right-handed over p1, p2, p3. It is (0, 0, 0)
  /// with magnitude 0 when cosineTolerance * |p1p2| * |p2p3| >= |p1p2 x p2p3| (closed), so for
  /// collinear or coincident points. A scaling computes the magnitude, so it may differ from 1 in
  /// the last place. A NaN coordinate results in NaN.
  gsl_Vector(const gsl_Point& p1, const gsl_Point& p2, const gsl_Point& p3);

  /// Returns the components without the cached length.
  gsl_arithmetic::Coord3 Coords() const { return {x, y, z}; }
  /// Returns the components with the cached length.
  gsl_arithmetic::Measured3 Measured() const { return {{x, y, z}, magnitude}; }

  gsl_Vector operator+(const gsl_Vector& o) const { return {x + o.x, y + o.y, z + o.z}; }
  gsl_Vector operator-(const gsl_Vector& o) const { return {x - o.x, y - o.y, z - o.z}; }
  gsl_Vector operator*(double s) const { return {x * s, y * s, z * s}; }

  /// Returns true for the same object, and when linearTolerance > |this - o|: a difference of
  /// exactly linearTolerance is unequal.
  [[nodiscard]] bool operator==(const gsl_Vector& o) const {
    if (this == &o) return true;
    return omi_Singleton<gsl_Util>::Instance().linearTolerance > (*this - o).magnitude;
  }
  [[nodiscard]] bool operator!=(const gsl_Vector& o) const { return !(*this == o); }

  /// Index 0 is x, 1 is y, every other index is z.
  // every-index-above-one-is-z: an index out of range is not an error.
  double operator[](unsigned int i) const { return i == 0 ? x : (i == 1 ? y : z); }
  /// Index 0 is x, 1 is y, every other index is z. Writing deliberately leaves `magnitude` as it
  /// is.
  // index-write-keeps-the-magnitude: the length is measured when the vector is made.
  double& operator[](unsigned int i) { return i == 0 ? x : (i == 1 ? y : z); }

  /// Returns this . o.
  double DotProduct(const gsl_Vector& o) const { return gsl_arithmetic::Dot(Coords(), o.Coords()); }

  /// Returns this x o.
  gsl_Vector CrossProduct(const gsl_Vector& o) const {
    return gsl_Vector(gsl_arithmetic::Measure(gsl_arithmetic::Cross(Coords(), o.Coords())));
  }

  /// The sign of each component changes; `magnitude` stays.
  void Negate() {
    x = -x;
    y = -y;
    z = -z;
  }

  /// Multiplies the components by s and `magnitude` by |s|, without a square root.
  void Scale(double s) { *this = gsl_Vector(gsl_arithmetic::Scaled(Measured(), s)); }

  /// Returns this * s, with its length measured again.
  gsl_Vector ScaledCopy(double s) const { return *this * s; }

  /// Scales the vector to length exactly 1.0. Returns false, and changes nothing, when
  /// linearTolerance > magnitude; exactly linearTolerance is scaled.
  bool Normalize() {
    gsl_arithmetic::Measured3 v = Measured();
    if (!gsl_arithmetic::Normalize(v, omi_Singleton<gsl_Util>::Instance().linearTolerance)) {
      return false;
    }
    *this = gsl_Vector(v);
    return true;
  }

  /// Returns ScaledCopy(1 / magnitude), or the zero vector when linearTolerance > magnitude.
  gsl_Vector NormalizedCopy() const {
    return gsl_Vector(gsl_arithmetic::NormalizedCopy(
        Measured(), omi_Singleton<gsl_Util>::Instance().linearTolerance));
  }

  /// Returns true for collinear vectors in either sense: cosineTolerance * |this| * |o| > |this x
  /// o|. It is never true for a zero vector or NaN.
  [[nodiscard]] bool IsOn(const gsl_Vector& o) const {
    return gsl_arithmetic::IsOn(Measured(), o.Measured(),
                                omi_Singleton<gsl_Util>::Instance().cosineTolerance);
  }

  /// Returns cosineTolerance * |this| * |o| > |this . o|, which is never true for a zero vector or
  /// NaN.
  [[nodiscard]] bool IsOrthogonal(const gsl_Vector& o) const {
    return gsl_arithmetic::IsOrthogonal(Measured(), o.Measured(),
                                        omi_Singleton<gsl_Util>::Instance().cosineTolerance);
  }

  /// Returns true when the unit components agree within `tol`, a cosine (closed, gsl_RealEqual: NaN
  /// agrees). A vector of magnitude exactly 0 has unit components 0.
  [[nodiscard]] bool SameDirection(const gsl_Vector& o, double tol) const;

  /// Returns SameDirection with `o` or with its opposite.
  [[nodiscard]] bool IsParallel(const gsl_Vector& o, double tol) const;

  /// Returns a unit vector orthogonal to this vector: this x (1, 1, 1), or (1, -1, 0) when that
  /// product is shorter than linearTolerance; normalised.
  gsl_Vector AnyOrthogonalUnit() const;

  /// Returns a vector orthogonal to this vector that leans towards the coordinate axis nearest to
  /// the orthogonal plane (near ties within linearTolerance go to the earlier axis).
  ///
  /// It is not normalised: for a unit vector it is the axis projected onto the plane. For the zero
  /// vector it is the zero vector.
  gsl_Vector BestAlignedOrthogonalUnit() const;

  /// Returns the component of this vector in the plane, or the vector itself for a plane whose
  /// normal is shorter than linearTolerance.
  gsl_Vector ProjectOn(const gsl_Plane& plane) const;

  /// Computes the signed angle in (-pi, pi] from a to b about this vector, right-handed. `angle`
  /// may be a component of this vector.
  ///
  /// Returns false, with `angle` unwritten, when linearTolerance > |a| or > |b|, or when the
  /// components of a and b along the axis (all as unit vectors) differ by more than
  /// linearTolerance.
  [[nodiscard]] bool AngleBetween(gsl_Vector a, gsl_Vector b, double& angle) const;

  /// Returns the unsigned angle in [0, pi]; `unitVectors` promises that both have length 1. The
  /// angle is pi / 2 when a magnitude is at most linearTolerance.
  double AngleWith(const gsl_Vector& o, bool unitVectors) const;

  /// Returns an angle from 0 to 2 pi: the unsigned angle, taken the other way round when
  /// (this x o) . reference < 0. So for vectors so close that their angle rounds to 0, the result
  /// is then 2 pi itself.
  double AngleWith(const gsl_Vector& o, bool unitVectors, const gsl_Vector& reference) const;

  /// Applies the 3x3 block of m in place, without translation, and measures the magnitude again.
  void RotateAndTransform(const gsl_Matrix& m);

  /// Writes two lines, each after `indent` blanks and flushed: the magnitude, then the components,
  /// with 15 significant digits.
  void Print(aio_ostream& out, int indent) const;

private:
  /// The magnitude is the length of the components, or was scaled with them.
  explicit gsl_Vector(const gsl_arithmetic::Measured3& v)
      : x(v.c.x), y(v.c.y), z(v.c.z), magnitude(v.magnitude) {}
};

#endif
