#ifndef GSL_EXACT_EXACT_RATIO_H
#define GSL_EXACT_EXACT_RATIO_H

#include "ExactArithmetic.h"

#include "gsl_Arithmetic.h"

namespace gsl_exact {

using gsl_arithmetic::Coord3;

/// The ratio numerator / denominator without rounding. A travel is such a quotient of two
/// determinants.
struct ExactRatio {
  Expansion<192> numerator;
  Expansion<192> denominator; ///< not zero
  DoubleDouble rounded;       ///< the quotient, with a relative error below 2^-90

  /// Stores the terms and computes `rounded`.
  void Set(const Expansion<192>& over, const Expansion<192>& under);
};

/// Returns the exact sign of a - b: -1, 0 or 1. The terms may be any finite numbers, even if their
/// products overflow.
int CompareRatios(const ExactRatio& a, const ExactRatio& b);

/// The length value * 2^exponent, which may be outside the range of double.
struct ScaledLength {
  double
      value; ///< infinity is above every length; a negative number and NaN are below every length
  int exponent;
};

/// Returns the exact sign of ratio * |vector| - length: -1, 0 or 1. Requires a positive ratio. The
/// squares of the components of the vector, and their rounding errors, must be in the range of
/// double.
int CompareLength(const ExactRatio& ratio, const Coord3& vector, const ScaledLength& length);

} // namespace gsl_exact

#endif
