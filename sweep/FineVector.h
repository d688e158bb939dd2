#ifndef GSL_SWEEP_FINE_VECTOR_H
#define GSL_SWEEP_FINE_VECTOR_H

#include "ExactArithmetic.h"

#include "gsl_Arithmetic.h"

namespace gsl_sweep {

using gsl_arithmetic::Coord3;
using gsl_exact::DoubleDouble;
using gsl_exact::Times;
using gsl_exact::TwoDifference;

/// A vector whose components have twice the precision.
struct FineVector {
  DoubleDouble x, y, z;
};

inline FineVector FineDifference(const Coord3& a, const Coord3& b) {
  return {TwoDifference(a.x, b.x), TwoDifference(a.y, b.y), TwoDifference(a.z, b.z)};
}
inline DoubleDouble FineDot(const FineVector& a, const FineVector& b) {
  return Plus(Plus(Times(a.x, b.x), Times(a.y, b.y)), Times(a.z, b.z));
}
inline DoubleDouble FineDot(const FineVector& a, const Coord3& b) {
  return FineDot(a, {{b.x, 0.0}, {b.y, 0.0}, {b.z, 0.0}});
}
inline FineVector FineCross(const FineVector& a, const FineVector& b) {
  const auto minor = [](const DoubleDouble& p, const DoubleDouble& q, const DoubleDouble& r,
                        const DoubleDouble& s) { return Plus(Times(p, q), Minus(Times(r, s))); };
  return {minor(a.y, b.z, a.z, b.y), minor(a.z, b.x, a.x, b.z), minor(a.x, b.y, a.y, b.x)};
}
inline Coord3 RoundedOf(const FineVector& v) {
  return {v.x.hi, v.y.hi, v.z.hi};
}
inline bool IsLess(const DoubleDouble& a, const DoubleDouble& b) {
  return a.hi < b.hi || (a.hi == b.hi && a.lo < b.lo);
}

} // namespace gsl_sweep

#endif
