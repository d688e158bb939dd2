#ifndef GSL_WIDE_LU_SUBSTITUTION_H
#define GSL_WIDE_LU_SUBSTITUTION_H

#include "wide/LuWork.h"

#include <utility>

/// Solves L * U * x = P * b in place. Every sum is a running subtraction with an increasing j.
namespace gsl_wide {

/// Applies the exchanges of rows to the right side. Comes first: step i exchanges no row that is
/// already solved.
inline void PermuteRightSide(const LuSystem& s, double* x) {
  for (std::int32_t i = 0; i < s.size; ++i)
    std::swap(x[i], x[s.pivots[i]]);
}

/// Solves L * y = x in place, eight rows at a time. Left of the diagonal block the sums of these
/// rows do not depend on each other.
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

/// Solves U * x = y in place, row by row. The sum of each row begins with the unknown found last,
/// so that each row waits for the row below it.
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
