#ifndef GSL_WIDE_LU_SUBSTITUTION_H
#define GSL_WIDE_LU_SUBSTITUTION_H

#include "wide/LuWork.h"

#include <utility>

/// Solution of L * U * x = P * b in place. Every sum is a running subtraction, j increasing.
namespace gsl_wide {

/// The pivots are applied first: the row that step i swaps in is never one that is solved already.
inline void PermuteRightSide(const LuSystem& s, double* x) {
  for (std::int32_t i = 0; i < s.size; ++i)
    std::swap(x[i], x[s.pivots[i]]);
}

/// Eight rows at a time: their sums do not depend on each other left of the diagonal block.
inline void SubstituteForward(const LuSystem& s, double* x) {
  constexpr std::int32_t kRows = 8;
  std::int32_t i = 0;
  for (; i + kRows <= s.size; i += kRows) {
    double* const* const a = s.matrix + i;
    double* const sum = x + i;
    double t[kRows];
    for (int r = 0; r < kRows; ++r)
      t[r] = sum[r];
    for (std::int32_t j = 0; j < i; ++j) {
      for (int r = 0; r < kRows; ++r)
        t[r] -= a[r][j] * x[j];
    }
    for (int r = 0; r < kRows; ++r) {
      for (int k = 0; k < r; ++k)
        t[r] -= a[r][i + k] * t[k];
    }
    for (int r = 0; r < kRows; ++r)
      sum[r] = t[r];
  }
  for (; i < s.size; ++i) {
    double sum = x[i];
    for (std::int32_t j = 0; j < i; ++j)
      sum -= s.matrix[i][j] * x[j];
    x[i] = sum;
  }
}

/// Row i's sum begins with the unknown found last, so that one row follows the other.
inline void SubstituteBackward(const LuSystem& s, double* x) {
  for (std::int32_t i = s.size - 1; i >= 0; --i) {
    const double* const row = s.matrix[i];
    double sum = x[i];
    for (std::int32_t j = i + 1; j < s.size; ++j)
      sum -= row[j] * x[j];
    x[i] = sum / row[i];
  }
}

} // namespace gsl_wide

#endif
