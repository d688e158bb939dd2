#ifndef GSL_ARITHMETIC_H
#define GSL_ARITHMETIC_H

#include "gsl_Export.h"

#include <cmath>

/// Arithmetic on bare coordinates, shared by the inline public operations and the kernels.
///
/// Every formula is evaluated left to right as written, without contraction. So a result has the
/// same bits wherever it is computed.
namespace gsl_arithmetic {

/// Three coordinates, of a place or of a direction.
struct Coord3 {
  double x, y, z; ///< along each axis
};

/// Returns a + b.
inline Coord3 Add(const Coord3& a, const Coord3& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}

/// Returns a - b.
inline Coord3 Subtract(const Coord3& a, const Coord3& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

/// Returns a * s.
inline Coord3 Multiply(const Coord3& a, double s) {
  return {a.x * s, a.y * s, a.z * s};
}

/// Returns a / s, each component divided.
inline Coord3 Divide(const Coord3& a, double s) {
  return {a.x / s, a.y / s, a.z / s};
}

/// Returns -a.
inline Coord3 Negated(const Coord3& a) {
  return {-a.x, -a.y, -a.z};
}

/// Returns a . b, summed from x to z.
inline double Dot(const Coord3& a, const Coord3& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// Returns a x b.
inline Coord3 Cross(const Coord3& a, const Coord3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// Returns sqrt(x*x + y*y + z*z), without scaling: the result overflows to infinity above about
/// 1e154.
inline double Length(const Coord3& a) {
  return std::sqrt(a.x * a.x + a.y * a.y + a.z * a.z);
}

/// A vector together with its cached length, which need not be fresh.
struct Measured3 {
  Coord3 c;         ///< the components
  double magnitude; ///< their length, as it was measured or scaled

  Measured3() = default;
  /// The length is taken as it is.
  // This is not an aggregate, so that three numbers in braces, as in gsl_Vector({1, 2, 3}), never
  // make one.
  constexpr Measured3(const Coord3& components, double length) : c(components), magnitude(length) {}
};

/// Returns the components with their length.
inline Measured3 Measure(const Coord3& c) {
  return {c, Length(c)};
}

/// Returns the multiple by s. The length is multiplied as well, without a square root.
inline Measured3 Scaled(const Measured3& v, double s) {
  return {Multiply(v.c, s), s > 0.0 ? v.magnitude * s : -(v.magnitude * s)};
}

/// Divides by the cached length, which becomes exactly 1.0. Returns false, and changes nothing,
/// when linearTolerance > magnitude.
inline bool Normalize(Measured3& v, double linearTolerance) {
  if (linearTolerance > v.magnitude) return false;
  v = {Divide(v.c, v.magnitude), 1.0};
  return true;
}

/// Returns the multiple by 1 / magnitude, with its length measured again, or zero when
/// linearTolerance > magnitude.
inline Measured3 NormalizedCopy(const Measured3& v, double linearTolerance) {
  if (linearTolerance > v.magnitude) return {{0.0, 0.0, 0.0}, 0.0};
  return Measure(Multiply(v.c, 1.0 / v.magnitude));
}

/// Returns whether cosineTolerance * |a| * |b| > |a x b|.
[[nodiscard]] inline bool IsOn(const Measured3& a, const Measured3& b, double cosineTolerance) {
  return cosineTolerance * a.magnitude * b.magnitude > Length(Cross(a.c, b.c));
}

/// Returns whether cosineTolerance * |a| * |b| > |a . b|.
[[nodiscard]] inline bool IsOrthogonal(const Measured3& a, const Measured3& b,
                                       double cosineTolerance) {
  return cosineTolerance * a.magnitude * b.magnitude > std::fabs(Dot(a.c, b.c));
}

/// Returns the 3x3 block of m times v.
inline Coord3 TransformVector(const double (&m)[4][4], const Coord3& v) {
  return {m[0][0] * v.x + m[0][1] * v.y + m[0][2] * v.z,
          m[1][0] * v.x + m[1][1] * v.y + m[1][2] * v.z,
          m[2][0] * v.x + m[2][1] * v.y + m[2][2] * v.z};
}

/// Returns the 3x3 block of m times p, plus the translation.
inline Coord3 TransformPoint(const double (&m)[4][4], const Coord3& p) {
  return {m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
          m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
          m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]};
}

/// Returns -tol <= b - a <= tol, written so that a NaN difference is within every band.
[[nodiscard]] inline bool WithinBand(double a, double b, double tol) {
  const double d = b - a;
  // nan-compares-equal: the comparison only rejects, and a NaN passes every rejection.
  return !(-tol > d) & !(d > tol);
}

/// Returns whether each coordinate of c is at least the coordinate of `low` and at most the
/// coordinate of `high`. It is never true for a NaN.
[[nodiscard]] inline bool LiesBetween(const Coord3& c, const Coord3& low, const Coord3& high) {
  return (c.x >= low.x) & (c.x <= high.x) & (c.y >= low.y) & (c.y <= high.y) & (c.z >= low.z) &
         (c.z <= high.z);
}

/// LowerTo replaces each coordinate of c that is above the coordinate of `limit`; RaiseTo replaces
/// each that is below. C is any type with x, y and z. A NaN is neither below nor above.
template <class C, class Limit>
inline void LowerTo(C& c, const Limit& limit) {
  c.x = limit.x < c.x ? limit.x : c.x;
  c.y = limit.y < c.y ? limit.y : c.y;
  c.z = limit.z < c.z ? limit.z : c.z;
}

/// Raises each coordinate of c to the coordinate of the limit that is larger.
template <class C, class Limit>
inline void RaiseTo(C& c, const Limit& limit) {
  c.x = limit.x > c.x ? limit.x : c.x;
  c.y = limit.y > c.y ? limit.y : c.y;
  c.z = limit.z > c.z ? limit.z : c.z;
}

} // namespace gsl_arithmetic

#endif
