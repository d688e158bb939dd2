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
/// Flag       isIdentity is 1 (is), 0 (is not) or -1 (not known); setters and products make it -1,
///            IsIdentity() settles it. Writing m does not touch it.
/// Threads    IsIdentity() const writes the flag, and the entries when it snaps them: a matrix with
///            flag -1 is not safe to ask from two threads.
/// Outputs    a number may be an entry of the matrix, an array its own; two outputs must be apart.
/// Errors     none thrown, none printed; nothing checks that the matrix is rigid.
class GSL_API gsl_Matrix {
public:
  /// The entries. Writing one here leaves the flag as it is, and IsIdentity() then answers for the
  /// entries before: set isIdentity to -1 as well.
  // entry-write-keeps-the-flag: the flag is kept by the operations alone.
  mutable double m[4][4];
  mutable std::int32_t isIdentity;

  /// The identity.
  gsl_Matrix() { FillIdentity(); }

  /// Every entry exact, and the flag 1.
  void FillIdentity();

  /// The same object, or no entry differs by more than 0.001 (closed; NaN agrees). Fixed,
  /// deliberately none of the gsl_Util tolerances; the flag does not count.
  [[nodiscard]] bool operator==(const gsl_Matrix& o) const;
  [[nodiscard]] bool operator!=(const gsl_Matrix& o) const { return !(*this == o); }

  /// Moves p in place; it keeps its uid.
  void Transform(gsl_Point& p) const;
  /// Rotates v in place, without translation, and measures its magnitude again.
  void Transform(gsl_Vector& v) const;

  /// this = o x this, in full: transforming by the result is transforming by the old this, then by
  /// o, which may be this matrix.
  void Concatenate(const gsl_Matrix& o);

  /// What the flag says; when it is -1, whether rows 0 to 2 equal the identity's within 1e-5
  /// (closed; NaN does not), and then all entries are set to the exact identity.
  [[nodiscard]] bool IsIdentity() const;

  /// m[0..2][3].
  void SetTranslation(const gsl_Vector& t);
  void GetTranslation(gsl_Vector& t) const;

  /// m[r][0..2] and m[0..2][c]; that r and c are below 4 is not checked.
  void SetRow(unsigned int r, const gsl_Vector& v);
  void SetColumn(unsigned int c, const gsl_Vector& v);

  /// Columns 0 to 2 become the unit vectors of X, Y, Z (zero for a magnitude of exactly 0); not
  /// checked for orthogonality. Translation and row 3 stay.
  void SetRotationVectors(const gsl_Vector& x, const gsl_Vector& y, const gsl_Vector& z);

  /// Angles with rotation = Rz(c) Ry(b) Rx(a): about the fixed X axis by a first, then Y, then Z.
  ///
  /// In gimbal lock, where cos b is at most 2^-19, c is set to 0.
  /// Method     K. Shoemake, Euler Angle Conversion, Graphics Gems IV (1994).
  void GetRotationAngles(double& a, double& b, double& c) const;

  /// The inverse of a rigid matrix; one whose flag is 1 gives the identity unseen.
  gsl_Matrix InverseRigidTransform() const;

  /// Becomes the rotation by `angle` (radians, right-handed) about the line through p along `axis`;
  /// the identity, flag 1, when linearTolerance > |axis|. By Rodrigues' formula.
  void AxisRotation(const gsl_Point& p, const gsl_Vector& axis, double angle);

  /// Axis and angle (in [0, 2 pi]) of the rotation, through a quaternion deliberately held in
  /// single precision. The zero vector when the angle is at most cosineTolerance. p is the
  /// translation, with a fresh uid: not a point on the axis. For NaN in the
  /// rotation the angle is NaN and the axis zero.
  ///
  /// Method     K. Shoemake, Polar Matrix Decomposition, Graphics Gems IV (1994).
  void GetAxisRotation(gsl_Point& p, gsl_Vector& axis, double& angle) const;

  /// The sixteen entries, row by row.
  void AsArray(double (*const out)[4]) const;

  /// Images of the origin and of the coordinate axes.
  gsl_Point NewOrigin() const { return {m[0][3], m[1][3], m[2][3]}; }
  gsl_Vector NewXAxis() const { return Column(0); }
  gsl_Vector NewYAxis() const { return Column(1); }
  gsl_Vector NewZAxis() const { return Column(2); }
  /// Rows 0 to 2 of column c; c below 4 is not checked.
  gsl_Vector Column(unsigned int c) const { return {m[0][c], m[1][c], m[2][c]}; }
};

#endif
