#ifndef GSL_KERNEL_VECTOR_H
#define GSL_KERNEL_VECTOR_H

#include "gsl_Arithmetic.h"
#include "kernel/Comparison.h"
#include "kernel/Constants.h"

namespace gsl_kernel {

using gsl_arithmetic::Add;
using gsl_arithmetic::Coord3;
using gsl_arithmetic::Cross;
using gsl_arithmetic::Divide;
using gsl_arithmetic::Dot;
using gsl_arithmetic::Length;
using gsl_arithmetic::Measure;
using gsl_arithmetic::Measured3;
using gsl_arithmetic::Multiply;
using gsl_arithmetic::Negated;
using gsl_arithmetic::Subtract;

/// Returns the vector from `from` to `to`.
inline Measured3 Between(const Coord3& from, const Coord3& to) {
  return Measure(Subtract(to, from));
}

inline double Distance(const Coord3& a, const Coord3& b) {
  return Length(Subtract(b, a));
}

/// Returns the right-handed unit normal of p1, p2, p3. Returns zero when cosineTolerance * |p1p2| *
/// |p2p3| >= |p1p2 x p2p3|. The length is scaled with the components, so it can miss 1 by a last
/// place.
inline Measured3 UnitNormal(const Coord3& p1, const Coord3& p2, const Coord3& p3,
                            double cosineTolerance) {
  const Measured3 a = Between(p1, p2);
  const Measured3 b = Between(p2, p3);
  const Measured3 c = Measure(Cross(a.c, b.c));
  // This test is closed: at the tolerance itself the points are collinear.
  if (cosineTolerance * a.magnitude * b.magnitude >= c.magnitude) return {{0.0, 0.0, 0.0}, 0.0};
  return gsl_arithmetic::Scaled(c, 1.0 / c.magnitude);
}

/// Returns the components divided by the cached length, or zero when that length is exactly 0.
inline Coord3 UnitComponents(const Measured3& v) {
  if (v.magnitude == 0.0) return {0.0, 0.0, 0.0};
  return Divide(v.c, v.magnitude);
}

inline bool SameComponents(const Coord3& a, const Coord3& b, double tol) {
  return WithinBand(a.x, b.x, tol) && WithinBand(a.y, b.y, tol) && WithinBand(a.z, b.z, tol);
}

inline bool SameDirection(const Measured3& a, const Measured3& b, double tol) {
  return SameComponents(UnitComponents(a), UnitComponents(b), tol);
}

/// Returns true for the same direction or the opposite direction. Requires unit components.
inline bool SameOrOppositeComponents(const Coord3& a, const Coord3& b, double tol) {
  return SameComponents(a, b, tol) || SameComponents(a, Negated(b), tol);
}

/// Returns true when no division is needed to know that IsParallel is false.
// With p = a |b|, q = b |a| and m = |a| |b|, two components differ by (p - q) / m after the
// division, and their sum is (p + q) / m. The quotients have a relative error of 2^-53 each, and so
// have the products: 2^-48 (|p| + |q|) is more than all of them. 1e-260 is more than the error of a
// product that loses its digits, and 1e-280 more than the error of such a quotient. m itself keeps
// its digits. The last test keeps the quotients within 1e300, because infinite quotients differ by
// NaN, which every band accepts. Where another number overflows or is NaN, a comparison is false.
// This holds for two lengths below 0 too, and for a tolerance below 0, whose band holds only NaN.
inline bool IsCertainlyNotParallel(const Measured3& a, const Measured3& b, double tol) {
  const double m = a.magnitude * b.magnitude;
  const double bound = m * (tol * (1.0 + 0x1p-48) + 1e-280) + 1e-260;
  const auto differs = [&](double first, double second) {
    const double p = first * b.magnitude, q = second * a.magnitude;
    const double size = std::fabs(p) + std::fabs(q);
    const double least = bound + 0x1p-48 * size;
    return (std::fabs(p - q) > least) & (std::fabs(p + q) > least) & (size <= 1e300 * m);
  };
  // One pair of components decides nearly always.
  return m > 1e-200 && (differs(a.c.x, b.c.x) || differs(a.c.y, b.c.y) || differs(a.c.z, b.c.z));
}

/// Returns true for the same direction or the opposite direction.
inline bool IsParallel(const Measured3& a, const Measured3& b, double tol) {
  if (IsCertainlyNotParallel(a, b, tol)) return false;
  return SameOrOppositeComponents(UnitComponents(a), UnitComponents(b), tol);
}

inline Measured3 AnyOrthogonalUnit(const Coord3& v, double linearTolerance) {
  Measured3 w = Measure({v.y - v.z, v.z - v.x, v.x - v.y});
  if (linearTolerance > w.magnitude) w = Measure({1.0, -1.0, 0.0});
  gsl_arithmetic::Normalize(w, linearTolerance);
  return w;
}

/// Returns v less its component along the plane's normal.
inline Measured3 ProjectVectorOnPlane(const Coord3& v, const Measured3& normal,
                                      double linearTolerance) {
  const Coord3 n = gsl_arithmetic::NormalizedCopy(normal, linearTolerance).c;
  return Measure(Subtract(v, Multiply(n, Dot(v, n))));
}

inline Measured3 BestAlignedOrthogonalUnit(const Measured3& v, double linearTolerance) {
  const Coord3 axes[3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
  // A vector of NaN has no best axis; X then carries the NaN on.
  Measured3 best = ProjectVectorOnPlane(axes[0], v, linearTolerance);
  double bestLength = 0.0;
  for (const Coord3& axis : axes) {
    const Measured3 projected = ProjectVectorOnPlane(axis, v, linearTolerance);
    if (projected.magnitude - bestLength > linearTolerance) {
      best = projected;
      bestLength = projected.magnitude;
    }
  }
  const Coord3 t = Cross(v.c, best.c);
  // best-aligned-unit-is-not-a-unit: the product keeps the lengths of its factors.
  return Measure(Cross(t, v.c));
}

/// Computes the signed angle from a to b about `axis`. Returns false, and leaves `angle` unwritten,
/// for a vector shorter than the tolerance and for components along the axis that differ by more
/// than the tolerance.
inline bool AngleBetween(Measured3 axis, Measured3 a, Measured3 b, double linearTolerance,
                         double& angle) {
  if (linearTolerance > a.magnitude || linearTolerance > b.magnitude) return false;
  gsl_arithmetic::Normalize(axis, linearTolerance);
  gsl_arithmetic::Normalize(a, linearTolerance);
  gsl_arithmetic::Normalize(b, linearTolerance);
  const double da = Dot(a.c, axis.c);
  const double db = Dot(b.c, axis.c);
  if (std::fabs(da - db) > linearTolerance) return false;
  Measured3 pa = Measure(Subtract(a.c, Multiply(axis.c, da)));
  Measured3 pb = Measure(Subtract(b.c, Multiply(axis.c, db)));
  gsl_arithmetic::Normalize(pa, linearTolerance);
  gsl_arithmetic::Normalize(pb, linearTolerance);
  const double cosPart = Dot(pa.c, pb.c);
  Measured3 n = Measure(Cross(pb.c, axis.c));
  gsl_arithmetic::Normalize(n, linearTolerance);
  const double sinPart = Dot(pa.c, n.c);
  angle = std::atan2(sinPart, cosPart);
  return true;
}

/// Returns a . b, divided by each length unless both are promised to be 1. A length that does not
/// exceed the tolerance makes the result 0.
inline double CosineBetween(const Measured3& a, const Measured3& b, bool unitVectors,
                            double linearTolerance) {
  double c = Dot(a.c, b.c);
  if (unitVectors) return c;
  // A length within the tolerance makes the cosine 0.
  c = a.magnitude > linearTolerance ? c / a.magnitude : 0.0;
  c = b.magnitude > linearTolerance ? c / b.magnitude : 0.0;
  return c;
}

inline double AngleFromCosine(double c) {
  if (c >= 1.0) return 0.0;
  if (c <= -1.0) return kPi;
  return std::acos(c);
}

} // namespace gsl_kernel

#endif
