#ifndef TESTS_CONTRACTION_CANARY_H
#define TESTS_CONTRACTION_CANARY_H

#include "gsl_Arithmetic.h"

/// Returns whether a compiled dot product fuses one of its multiplications with an addition.
///
/// (1 + 2^-30)^2 is 1 + 2^-29 + 2^-60, and a rounded product loses the last term. Each row
/// subtracts the rounded product: the result is 0 when every operation rounds, and 2^-60 when the
/// square is fused. Each of the three products is the square once.
template <class DotProduct>
bool IsContracted(const DotProduct& dot) {
  // The numbers are volatile, so that the compiler cannot compute the result itself.
  const volatile double h = 1.0 + 0x1p-30, k = 1.0 + 0x1p-29, one = -1.0, zero = 0.0;
  const gsl_arithmetic::Coord3 rows[3][2] = {{{h, one, zero}, {h, k, zero}},
                                             {{one, h, zero}, {k, h, zero}},
                                             {{one, zero, h}, {k, zero, h}}};
  for (const auto& row : rows) {
    if (dot(row[0], row[1]) != 0.0) return true;
  }
  return false;
}

#endif
