#ifndef GSL_EXACT_EXACT_RATIO_H
#define GSL_EXACT_EXACT_RATIO_H

#include "ExactArithmetic.h"

#include "gsl_Arithmetic.h"

namespace gsl_sweep {

using gsl_arithmetic::Coord3;

/// numerator / denominator, without rounding: a travel as the quotient of two determinants.
struct ExactRatio {
  Expansion<192> numerator;
  Expansion<192> denominator; ///< not zero
  DoubleDouble rounded;       ///< the quotient, relative error below 2^-90

  /// Takes the terms and fills in `rounded`.
  void Set(const Expansion<192>& over, const Expansion<192>& under);
};

/// Exact sign of a - b: -1, 0 or 1. Of any finite terms, whatever their products exceed.
int CompareRatios(const ExactRatio& a, const ExactRatio& b);

/// value * 2^exponent, which may leave the range of double.
struct ScaledLength {
  double value; ///< infinity is beyond every length; a negative number and NaN are below
  int exponent;
};

/// Exact sign of ratio * |vector| - length: -1, 0 or 1. The ratio must be positive; the squares of
/// the components of the vector and their rounding errors must be in the range of double.
int CompareLength(const ExactRatio& ratio, const Coord3& vector, const ScaledLength& length);

} // namespace gsl_sweep

#endif
