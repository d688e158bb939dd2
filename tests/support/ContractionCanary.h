#ifndef TESTS_CONTRACTION_CANARY_H
#define TESTS_CONTRACTION_CANARY_H

#include "gsl_Arithmetic.h"

/// Whether a compiled dot product fuses one of its multiplications with an addition.
///
/// (1 + 2^-30)^2 = 1 + 2^-29 + 2^-60, whose last term a product loses when it is rounded. Each row
/// takes the rounded product away again: 0 when every operation rounds, 2^-60 when the one that
/// makes the square is fused. Each of the three products is the square once.
template <class DotProduct>
bool IsContracted(const DotProduct& dot) {
  // Volatile, so that the compiler cannot compute the result itself.
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
