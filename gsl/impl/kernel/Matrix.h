#ifndef GSL_KERNEL_MATRIX_H
#define GSL_KERNEL_MATRIX_H

#include "kernel/Vector.h"

namespace gsl_kernel {

using Matrix4 = double[4][4];

inline Coord3 TransformVector(const Matrix4& m, const Coord3& v) {
  return {m[0][0] * v.x + m[0][1] * v.y + m[0][2] * v.z,
          m[1][0] * v.x + m[1][1] * v.y + m[1][2] * v.z,
          m[2][0] * v.x + m[2][1] * v.y + m[2][2] * v.z};
}

inline Coord3 TransformPoint(const Matrix4& m, const Coord3& p) {
  return {m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
          m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
          m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]};
}

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
