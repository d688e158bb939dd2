#ifndef GSL_KERNEL_MATRIX_H
#define GSL_KERNEL_MATRIX_H

#include "kernel/Vector.h"

namespace gsl_kernel {

using Matrix4 = double[4][4];

using gsl_arithmetic::TransformPoint;
using gsl_arithmetic::TransformVector;

/// Writes out = a b. `out` is neither a nor b.
inline void Product(const Matrix4& a, const Matrix4& b, Matrix4& out) {
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      out[r][c] = a[r][0] * b[0][c] + a[r][1] * b[1][c] + a[r][2] * b[2][c] + a[r][3] * b[3][c];
    }
  }
}

/// Writes the rotation by the angle with cosine co and sine si about a unit axis into the 3x3
/// block.
inline void AxisRotationBlock(const Coord3& u, double co, double si, Matrix4& m) {
  m[0][0] = u.x * u.x + co * (1.0 - u.x * u.x);
  m[0][1] = u.x * u.y * (1.0 - co) - u.z * si;
  m[0][2] = u.z * u.x * (1.0 - co) + u.y * si;
  m[1][0] = u.x * u.y * (1.0 - co) + u.z * si;
  m[1][1] = u.y * u.y + co * (1.0 - u.y * u.y);
  m[1][2] = u.y * u.z * (1.0 - co) - u.x * si;
  m[2][0] = u.z * u.x * (1.0 - co) - u.y * si;
  m[2][1] = u.y * u.z * (1.0 - co) + u.x * si;
  m[2][2] = u.z * u.z + co * (1.0 - u.z * u.z);
}

/// Writes the inverse of a rigid matrix: the transposed block and the translation turned back.
/// `out` is not m.
inline void InverseRigid(const Matrix4& m, Matrix4& out) {
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c)
      out[r][c] = m[c][r];
  }
  const Coord3 t = TransformVector(out, {-m[0][3], -m[1][3], -m[2][3]});
  out[0][3] = t.x;
  out[1][3] = t.y;
  out[2][3] = t.z;
  out[3][0] = out[3][1] = out[3][2] = 0.0;
  out[3][3] = 1.0;
}

/// Writes B R T, the rotation about the axis through `fixed` along a unit vector, as three
/// matrices: T moves `fixed` to the origin, R turns, B moves back.
inline void RotationByProducts(const Coord3& fixed, const Coord3& u, double co, double si,
                               Matrix4& out) {
  const Matrix4 there = {
      {1, 0, 0, 0.0 - fixed.x}, {0, 1, 0, 0.0 - fixed.y}, {0, 0, 1, 0.0 - fixed.z}, {0, 0, 0, 1}};
  Matrix4 turn = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  const Matrix4 back = {{1, 0, 0, fixed.x}, {0, 1, 0, fixed.y}, {0, 0, 1, fixed.z}, {0, 0, 0, 1}};
  AxisRotationBlock(u, co, si, turn);
  Matrix4 turned;
  Product(turn, there, turned);
  Product(back, turned, out);
}

/// Writes what RotationByProducts writes.
// The products with 1 and 0 change nothing but the sign of a zero: every sum of them begins with a
// number and ends with a product that is +0. A number that is not finite spreads through the
// products with 0.
inline void RotationAbout(const Coord3& fixed, const Coord3& u, double co, double si,
                          Matrix4& out) {
  Matrix4 turn;
  AxisRotationBlock(u, co, si, turn);
  const Coord3 there = {0.0 - fixed.x, 0.0 - fixed.y, 0.0 - fixed.z};
  const Coord3 turned = TransformVector(turn, there);
  const double back[3] = {fixed.x, fixed.y, fixed.z};
  const double moved[3] = {turned.x, turned.y, turned.z};
  double sum = 0.0;
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c) {
      out[r][c] = turn[r][c] + 0.0;
      sum += out[r][c];
    }
    out[r][3] = (moved[r] + 0.0) + back[r];
    sum += out[r][3];
  }
  out[3][0] = out[3][1] = out[3][2] = 0.0;
  out[3][3] = 1.0;
  // A sum of finite numbers may overflow. It is then computed again, with the same result.
  if (!std::isfinite(sum)) RotationByProducts(fixed, u, co, si, out);
}

// axis-rotation-in-single-precision: hosts have stored axes and angles of this precision.
struct Quaternion {
  float x, y, z, w;
};

inline Quaternion QuaternionOfRotation(const Matrix4& m) {
  const auto single = [](double value) { return static_cast<float>(value); };
  const double trace = m[0][0] + m[1][1] + m[2][2];
  if (trace >= 0.0) {
    const double s = std::sqrt(trace + m[3][3]);
    const double half = 0.5 / s;
    return {single((m[2][1] - m[1][2]) * half), single((m[0][2] - m[2][0]) * half),
            single((m[1][0] - m[0][1]) * half), single(s / 2.0)};
  }
  int largest = m[1][1] > m[0][0] ? 1 : 0;
  if (m[2][2] > m[largest][largest]) largest = 2;
  if (largest == 0) {
    const double s = std::sqrt(m[0][0] - (m[1][1] + m[2][2]) + m[3][3]);
    const double half = 0.5 / s;
    return {single(s / 2.0), single((m[0][1] + m[1][0]) * half), single((m[2][0] + m[0][2]) * half),
            single((m[2][1] - m[1][2]) * half)};
  }
  if (largest == 1) {
    const double s = std::sqrt(m[1][1] - (m[2][2] + m[0][0]) + m[3][3]);
    const double half = 0.5 / s;
    return {single((m[0][1] + m[1][0]) * half), single(s / 2.0), single((m[1][2] + m[2][1]) * half),
            single((m[0][2] - m[2][0]) * half)};
  }
  const double s = std::sqrt(m[2][2] - (m[0][0] + m[1][1]) + m[3][3]);
  const double half = 0.5 / s;
  return {single((m[2][0] + m[0][2]) * half), single((m[1][2] + m[2][1]) * half), single(s / 2.0),
          single((m[1][0] - m[0][1]) * half)};
}

} // namespace gsl_kernel

#endif
