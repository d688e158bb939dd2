#ifndef GSL_KERNEL_TWO_DOUBLES_H
#define GSL_KERNEL_TWO_DOUBLES_H

#include "kernel/Vector.h"

#include <cstdint>

/// Two doubles in one vector register, by the vector extension of the compiler. Every operation
/// rounds each lane as the operation on a double does.
namespace gsl_kernel {

typedef double TwoDoubles __attribute__((vector_size(16)));
typedef std::int64_t TwoMasks __attribute__((vector_size(16)));

__attribute__((always_inline)) inline TwoDoubles Both(double s) {
  return TwoDoubles{s, s};
}

__attribute__((always_inline)) inline TwoDoubles Magnitude(TwoDoubles v) {
  return reinterpret_cast<TwoDoubles>(reinterpret_cast<TwoMasks>(v) &
                                      TwoMasks{INT64_MAX, INT64_MAX});
}

/// Returns the larger number, and b where neither is larger: for equal numbers and for a NaN.
inline double Larger(double a, double b) {
  return a > b ? a : b;
}
inline double Smaller(double a, double b) {
  return a < b ? a : b;
}
__attribute__((always_inline)) inline TwoDoubles Larger(TwoDoubles a, TwoDoubles b) {
  return a > b ? a : b;
}
__attribute__((always_inline)) inline TwoDoubles Smaller(TwoDoubles a, TwoDoubles b) {
  return a < b ? a : b;
}

__attribute__((always_inline)) inline TwoDoubles SquareRoot(TwoDoubles v) {
  return TwoDoubles{std::sqrt(v[0]), std::sqrt(v[1])};
}

/// Two points or vectors. Each formula is evaluated in the order of gsl_Arithmetic.h.
struct TwoCoords {
  TwoDoubles x, y, z;
};

__attribute__((always_inline)) inline TwoCoords Both(const Coord3& c) {
  return {Both(c.x), Both(c.y), Both(c.z)};
}
__attribute__((always_inline)) inline TwoCoords Together(const Coord3& a, const Coord3& b) {
  return {TwoDoubles{a.x, b.x}, TwoDoubles{a.y, b.y}, TwoDoubles{a.z, b.z}};
}
__attribute__((always_inline)) inline TwoCoords Add(const TwoCoords& a, const TwoCoords& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
__attribute__((always_inline)) inline TwoCoords Subtract(const TwoCoords& a, const TwoCoords& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
__attribute__((always_inline)) inline TwoCoords Multiply(const TwoCoords& a, TwoDoubles s) {
  return {a.x * s, a.y * s, a.z * s};
}
__attribute__((always_inline)) inline TwoDoubles Dot(const TwoCoords& a, const TwoCoords& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
__attribute__((always_inline)) inline TwoCoords Cross(const TwoCoords& a, const TwoCoords& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

} // namespace gsl_kernel

#endif
