#ifndef GSL_SWEEP_EXACT_RATIO_H
#define GSL_SWEEP_EXACT_RATIO_H

#include "ExactArithmetic.h"

namespace gsl_sweep {

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

} // namespace gsl_sweep

#endif
