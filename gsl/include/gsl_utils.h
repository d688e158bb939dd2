#ifndef GSL_UTILS_H
#define GSL_UTILS_H

#include "gsl_Arithmetic.h"
#include "gsl_Batch.h"
#include "gsl_DepthFirstSearch.h"
#include "gsl_Export.h"
#include "gsl_InPlaneSegSegMinDirectionalDist.h"
#include "gsl_Interval.h"
#include "gsl_ModelSegment.h"
#include "gsl_Module.h"
#include "gsl_ThreePoints.h"
#include "gsl_TriTriMinDirectionalDist.h"
#include "gsl_Util.h"
#include "gsl_Version.h"

/// Tolerant comparison and rounding of reals. All functions are pure, and none reads gsl_Util.
///
/// Units      the units of the compared numbers; a relative tolerance is a fraction.
/// Tolerance  the comparisons use d = b - a. Bands are closed: exactly the tolerance is equal.
/// NaN        is never rejected by a band, so it compares equal to anything. This is promised.
/// Errors     gsl_Truncate alone throws.

/// Returns -tol <= b - a <= tol; a negative tol accepts nothing but NaN.
[[nodiscard]] GSL_API inline bool gsl_RealEqual(double a, double b, double tol) {
  return gsl_arithmetic::WithinBand(a, b, tol);
}

/// Returns gsl_RealEqual with the band max(|a| * tol, tol). The band follows the first argument
/// only, so the function is not symmetric. An infinite `a` has an infinite band: everything is
/// equal to it.
[[nodiscard]] GSL_API bool gsl_RealRelEqual(double a, double b, double tol);

/// Returns gsl_RealEqual for the first n elements, up to the first that differs. Returns true for n
/// <= 0 without reading either array.
[[nodiscard]] GSL_API bool gsl_RealArrEqual(int n, const double* a, const double* b, double tol);

/// Returns whether the leading `digits` significant digits are equal.
///
/// Compares the two numbers as integers of that many digits, with sign. The exponents do not take
/// part, so 1.0 and 10.0 are equal at one digit. Identical numbers are equal. With more than 15
/// digits only identical numbers are equal. An infinity equals only itself; a NaN counts as 0 up to
/// 15 digits. Numbers of one sign below about 10^(digits - 309) cannot be scaled and are equal.
[[nodiscard]] GSL_API bool gsl_RealEqualDig(double a, double b, int digits);

/// Returns x rounded to `digits` significant digits, with ties away from zero.
///
/// Returns 0.0, infinities, NaN, and everything for 16 digits or more, unchanged. Digits below 1
/// round to a power of ten above the leading digit. The scale 10^e must be finite: magnitudes below
/// about 10^(digits - 309) result in NaN.
GSL_API double gsl_RoundFloat(double x, int digits);

/// Returns x with its fractional part rounded to `places` decimal places, with ties towards plus
/// infinity.
///
/// It rounds, despite its name: gsl_Truncate(-1.25, 1) is -1.2 and gsl_Truncate(1.25, 1) is 1.3.
/// Throws nex_AssertException "places > 0" for places <= 0. Returns NaN for an infinity and for
/// more than 308 places.
GSL_API double gsl_Truncate(double x, int places);

#endif
