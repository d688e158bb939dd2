#ifndef GSL_MATRIX_H
#define GSL_MATRIX_H

#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <cstdint>

/// Rigid transform: a homogeneous 4x4 matrix that acts on column vectors from the left.
///
/// Layout     m[row][column]; the upper left 3x3 block rotates, column 3 translates, row 3 is
///            (0, 0, 0, 1).
/// Units      translation in model units, angles in radians.
/// Flag       isIdentity is 1 (is), 0 (is not) or -1 (not known). Setters and products make it -1,
///            and IsIdentity() settles it. Writing m does not touch it.
/// Threads    IsIdentity() const writes the flag, and the entries when it snaps them. So two
///            threads must not ask a matrix with flag -1 at once.
/// Outputs    a number may be an entry of the matrix, and an array its own; two outputs must be
///            apart.
/// Errors     none thrown, none printed; nothing checks that the matrix is rigid.
class GSL_API gsl_Matrix {
public:
  /// The entries. Writing an entry here leaves the flag as it is, and IsIdentity() then reports on
  /// the earlier entries, so set isIdentity to -1 as well.
  // entry-write-keeps-the-flag: only the operations keep the flag.
  mutable double m[4][4];
  /// The flag: 1 (is), 0 (is not) or -1 (not known).
  mutable std::int32_t isIdentity;

  /// The matrix is the identity.
  gsl_Matrix() { FillIdentity(); }

  /// Every entry becomes the exact entry of the identity, and the flag becomes 1.
  GSL_API void FillIdentity() {
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 4; ++c)
        m[r][c] = r == c ? 1.0 : 0.0;
    }
    isIdentity = 1;
  }

  /// Returns true for the same object, and when no entry differs by more than 0.001 (closed; NaN
  /// agrees). The width is fixed and deliberately independent of the gsl_Util tolerances. The flag
  /// does not count.
  [[nodiscard]] bool operator==(const gsl_Matrix& o) const;
  [[nodiscard]] bool operator!=(const gsl_Matrix& o) const { return !(*this == o); }

  /// Moves p in place; it keeps its uid.
  GSL_API void Transform(gsl_Point& p) const {
    const gsl_arithmetic::Coord3 moved = gsl_arithmetic::TransformPoint(m, p.Coords());
    p.x = moved.x;
    p.y = moved.y;
    p.z = moved.z;
  }
  /// Rotates v in place, without translation, and measures its magnitude again.
  GSL_API void Transform(gsl_Vector& v) const {
    const gsl_arithmetic::Coord3 turned = gsl_arithmetic::TransformVector(m, v.Coords());
    v = gsl_Vector(turned.x, turned.y, turned.z);
  }

  /// this = o x this, in full: transforming by the result is transforming by the old this, then by
  /// o. o may be this matrix.
  void Concatenate(const gsl_Matrix& o);

  /// Returns what the flag says. When the flag is -1, returns whether rows 0 to 2 equal the
  /// identity within 1e-5 (closed; NaN does not). If they do, all entries become the exact
  /// identity.
  [[nodiscard]] bool IsIdentity() const;

  /// Writes t to m[0..2][3].
  void SetTranslation(const gsl_Vector& t);
  /// Writes m[0..2][3] to t.
  void GetTranslation(gsl_Vector& t) const;

  /// Writes v to m[r][0..2]. It does not check that r is below 4.
  void SetRow(unsigned int r, const gsl_Vector& v);
  /// Writes v to m[0..2][c]. It does not check that c is below 4.
  void SetColumn(unsigned int c, const gsl_Vector& v);

  /// Columns 0 to 2 become the unit vectors of X, Y, Z (zero for a magnitude of exactly 0).
  /// Orthogonality is not checked. Translation and row 3 stay.
  void SetRotationVectors(const gsl_Vector& x, const gsl_Vector& y, const gsl_Vector& z);

  /// Returns angles with rotation = Rz(c) Ry(b) Rx(a): about the fixed X axis by a first, then Y,
  /// then Z.
  ///
  /// In gimbal lock, where cos b is at most 2^-19, c is set to 0.
  /// Method     K. Shoemake, Euler Angle Conversion, Graphics Gems IV (1994).
  void GetRotationAngles(double& a, double& b, double& c) const;

  /// Returns the inverse of a rigid matrix. A matrix whose flag is 1 has the identity as its
  /// inverse, and its entries are not read.
  gsl_Matrix InverseRigidTransform() const;

  /// The matrix becomes the rotation by `angle` (radians, right-handed) about the line through p
  /// along `axis`, by Rodrigues' formula. It becomes the identity, flag 1, when linearTolerance >
  /// |axis|.
  void AxisRotation(const gsl_Point& p, const gsl_Vector& axis, double angle);

  /// Returns axis and angle (in [0, 2 pi]) of the rotation, through a quaternion that is
  /// deliberately held in single precision. The axis is the zero vector when the angle is at most
  /// cosineTolerance. p is the translation, with a fresh uid, not a point on the axis. For NaN in
  /// the rotation the angle is NaN and the axis zero.
  ///
  /// Method     K. Shoemake, Polar Matrix Decomposition, Graphics Gems IV (1994).
  void GetAxisRotation(gsl_Point& p, gsl_Vector& axis, double& angle) const;

  /// Writes the sixteen entries, row by row.
  void AsArray(double (*const out)[4]) const;

  /// Returns the image of the origin.
  gsl_Point NewOrigin() const { return {m[0][3], m[1][3], m[2][3]}; }
  /// Returns the image of the X axis.
  gsl_Vector NewXAxis() const { return Column(0); }
  /// Returns the image of the Y axis.
  gsl_Vector NewYAxis() const { return Column(1); }
  /// Returns the image of the Z axis.
  gsl_Vector NewZAxis() const { return Column(2); }
  /// Returns rows 0 to 2 of column c. It does not check that c is below 4.
  gsl_Vector Column(unsigned int c) const { return {m[0][c], m[1][c], m[2][c]}; }
};

#endif
