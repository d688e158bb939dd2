#ifndef GSL_FLOATING_POINT_H
#define GSL_FLOATING_POINT_H

#include "gsl_Arithmetic.h"

#include <cstdint>
#include <cstring>

/// The steps of gsl_CheckFloatingPoint, which is declared below.
///
/// Everything is static, because each source file needs a copy that is compiled with its own flags.
/// The linker would keep one copy of an inline function. Each mention of a volatile number reads
/// it. So the compiler cannot compute a result itself, and cannot merge two operations.
namespace gsl_floating_point {

/// Upward, the first sum is above 1. Downward and towards zero, the difference is below 1.
[[nodiscard]] static inline bool RoundsToNearest() {
  const volatile double one = 1.0, half = 0x1p-53, quarter = 0x1p-55;
  return one + half == 1.0 && one - quarter == 1.0;
}

/// Both the product and the comparison would count a subnormal number as zero.
[[nodiscard]] static inline bool KeepsSubnormals() {
  const volatile double smallestNormal = 0x1p-1022, half = 0.5;
  return smallestNormal * half != 0.0;
}

/// The arguments come by value. Otherwise instrumentation puts code around each read of memory,
/// which keeps some compilers from fusing here, but not in the whole file.
static inline double LocalDot(gsl_arithmetic::Coord3 a, gsl_arithmetic::Coord3 b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// (1 + 2^-30)^2 is 1 + 2^-29 + 2^-60, and a rounded product loses the last term. Every row
/// subtracts the rounded product: the result is 0 when each operation rounds, and 2^-60 when the
/// square is fused. Each of the three products is the square once.
[[nodiscard]] static inline bool RoundsProducts() {
  const volatile double h = 1.0 + 0x1p-30, k = 1.0 + 0x1p-29, minus = -1.0, zero = 0.0;
  const gsl_arithmetic::Coord3 rows[3][2] = {{{h, minus, zero}, {h, k, zero}},
                                             {{minus, h, zero}, {k, h, zero}},
                                             {{minus, zero, h}, {k, zero, h}}};
  for (const auto& row : rows) {
    // The first check is compiled with this source file, the second is the copy that the linker
    // kept.
    if (LocalDot(row[0], row[1]) != 0.0 || gsl_arithmetic::Dot(row[0], row[1]) != 0.0) return false;
  }
  return true;
}

/// The 1 is lost beside 2^60, unless the sum is never formed or has more bits than a double.
[[nodiscard]] static inline bool KeepsOrderOfSums() {
  const volatile double small = 1.0, large = 0x1p60;
  const double x = small, y = large;
  return (x + y) - y == 0.0;
}

/// 49 * (1 / 49) is below 1. A compiler that may do so replaces several divisions by one number
/// with one division and products. It does not do so for a number that it knows.
[[nodiscard]] static inline bool Divides() {
  const volatile double numerators[] = {49.0, 98.0, 196.0}, divisor = 49.0;
  const double d = divisor;
  // Both quotients are stored before either is compared: a comparison in between would keep the
  // divisions apart.
  const volatile double quotients[] = {numerators[0] / d, numerators[1] / d, numerators[2] / d};
  return quotients[0] == 1.0 && quotients[1] == 2.0 && quotients[2] == 4.0 &&
         numerators[0] / 49.0 == 1.0;
}

/// -0.0 + 0.0 is +0.0. A compiler leaves the sum out only when it ignores the signs of zeros.
[[nodiscard]] static inline bool KeepsSignsOfZero() {
  const volatile double minusZero = -0.0;
  const double sum = minusZero + 0.0;
  std::uint64_t bits = 0;
  std::memcpy(&bits, &sum, sizeof bits);
  return bits == 0;
}

/// A NaN is unequal even to itself.
[[nodiscard]] static inline bool HonoursNaN() {
  const volatile double zero = 0.0;
  const double nan = zero / zero;
  return nan != nan;
}

} // namespace gsl_floating_point

/// Returns whether inlined arithmetic has the documented bits in the calling source file and on the
/// calling thread.
///
/// Returns null when it has, and otherwise a literal of one line that says what is wrong and how to
/// mend it. A host calls it at start-up, once in a source file of each module that is compiled with
/// its own flags. It notices fused products and sums, reordered sums, excess precision, divisions
/// turned into products, lost signs of zero and NaN, flushed subnormals, and a rounding mode other
/// than nearest. Do not call it from inline functions in headers, of which the linker keeps one
/// copy.
static inline const char* gsl_CheckFloatingPoint() {
  using namespace gsl_floating_point;
  if (!RoundsToNearest())
    return "results are not rounded to nearest: call fesetround(FE_TONEAREST)";
  if (!KeepsSubnormals())
    return "subnormal numbers count as zero: link every module without -ffast-math";
  if (!RoundsProducts()) return "products are fused with sums: compile with -ffp-contract=off";
  if (!KeepsOrderOfSums())
    return "sums are not rounded in order: compile without -fassociative-math, with SSE2";
  if (!Divides()) return "divisions are turned into products: compile without -freciprocal-math";
  if (!KeepsSignsOfZero()) return "signs of zero are lost: compile without -fno-signed-zeros";
  if (!HonoursNaN()) return "NaN counts as a number: compile without -ffinite-math-only";
  return nullptr;
}

#endif
