#ifndef GSL_UTILS_PRIVATE_H
#define GSL_UTILS_PRIVATE_H

#include "aio_istream.h"
#include "aio_ostream.h"
#include "kernel/Comparison.h"
#include "pnt_debugPrint.h"
#include "typ_DebugFlags.h"

#include <cmath>
#include <cstdint>
#include <limits>

/// Routines of gsl_utils.cpp that are not exported. They are here so that tests reach them.

/// Returns the debug flag of this module.
constexpr int kModuleDebugFlag = 778;

/// Compares like gsl_RealArrEqual with the band |a[i] * tol|, which tol replaces only where that
/// product is exactly zero. Unlike gsl_RealRelEqual it deliberately has no floor at tol for small
/// non-zero a[i].
inline bool RealArrRelEqual(int n, const double* a, const double* b, double tol) {
  for (int i = 0; i < n; ++i) {
    double band = std::fabs(a[i] * tol);
    // no-floor-for-small-elements: only a product of exactly zero takes the tolerance.
    if (band == 0.0) band = tol;
    if (!gsl_kernel::WithinBand(a[i], b[i], band)) return false;
  }
  return true;
}

/// Returns the whole number at or below y, or the next whole number when y is at least half way to
/// it.
inline double RoundHalfUp(double y) {
  // Adding zero turns -0 into +0, as a conversion through an integer does.
  const double whole = std::floor(y) + 0.0;
  return y - whole < 0.5 ? whole : whole + 1.0;
}

/// Returns base^n by squaring: 1.0 for n = 0, the reciprocal of base^|n| for n < 0.
inline double IntegerPower(double base, int n) {
  double result = 1.0;
  double square = base;
  for (auto bits = n < 0 ? 0u - static_cast<unsigned int>(n) : static_cast<unsigned int>(n);
       bits != 0; bits >>= 1) {
    if ((bits & 1u) != 0) result *= square;
    square *= square;
  }
  return n >= 0 ? result : 1.0 / result;
}

/// Returns base^n with the running value deliberately rounded to single precision at every step.
/// Returns 0.0 for base 0.0 (also for n = 0, which is tested later), and 1.0 for n = 0.
inline double SinglePrecisionPower(double base, int n) {
  // zero-to-the-power-zero: the base is tested before the exponent.
  if (base == 0.0) return 0.0;
  if (n == 0) return 1.0;
  auto value = static_cast<float>(n > 0 ? base : 1.0 / base);
  const std::int64_t steps = std::abs(static_cast<std::int64_t>(n)) - 1;
  for (std::int64_t i = 0; i < steps; ++i) {
    const double exact = n > 0 ? value * base : value / base;
    // The running value is rounded to single precision on purpose.
    const auto next = static_cast<float>(exact);
    const bool settled = std::fabs(next) == std::fabs(value) || std::isnan(next);
    value = next;
    if (!settled) continue;
    // The size is the same after every later step; only the sign may go on changing.
    if (base < 0.0 && (steps - 1 - i) % 2 != 0) value = -value;
    break;
  }
  return static_cast<double>(value);
}

/// Returns 10^e with e = -floor(log10(v)) + digits - 1, which moves `digits` digits of v > 0 before
/// the point.
inline double DigitScale(double v, int digits) {
  const double e = -std::floor(std::log10(v)) + digits - 1;
  // Exponents beyond the range of int are all beyond the range of 10^e too.
  const double lowest = std::numeric_limits<int>::min();
  const double highest = std::numeric_limits<int>::max();
  return std::pow(10.0, static_cast<int>(e < lowest ? lowest : (e > highest ? highest : e)));
}

/// Reads up to and including the next newline and returns it, or returns a negative number when the
/// input ends first.
inline int SkipToEndOfLine(aio_istream& in) {
  int c = in.get();
  while (c != '\n' && c >= 0)
    c = in.get();
  return c;
}

/// Reads like SkipToEndOfLine, after a prompt on the debug stream when the module's debug flag
/// exceeds 1.
inline int WaitForReturn(aio_istream& in) {
  if (typ_DebugFlags::GetDebugFlags(kModuleDebugFlag) > 1) {
    aio_ostream& out = pnt_debugPrint();
    out << "Press <Return> to continue...";
    out.flush();
  }
  return SkipToEndOfLine(in);
}

#endif
