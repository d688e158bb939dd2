#ifndef GSL_WIDE_LU_UNBLOCKED_H
#define GSL_WIDE_LU_UNBLOCKED_H

#include "wide/LuWork.h"

#include <cmath>
#include <utility>

/// LU elimination in place, column after column. It serves systems that are too small for blocks,
/// and systems without memory for blocks. The results are the bits of the blocked form.
namespace gsl_wide {

/// Returns the largest magnitude of a row. Ignores NaN, and returns 0 for a row of NaN.
inline double LargestMagnitude(const double* row, std::int32_t n) {
  double big = 0.0;
  for (std::int32_t j = 0; j < n; ++j) {
    const double magnitude = std::fabs(row[j]);
    if (magnitude > big) big = magnitude;
  }
  return big;
}

/// Writes the reciprocal of each row's largest magnitude. Returns false for a zero row.
inline bool ScaleRows(const LuSystem& s, double* scale) {
  for (std::int32_t i = 0; i < s.size; ++i) {
    const double big = LargestMagnitude(s.matrix[i], s.size);
    if (kTinyPivot > big) return false;
    scale[i] = 1.0 / big;
  }
  return true;
}

inline std::int32_t PivotRow(const LuSystem& s, const double* scale, std::int32_t j) {
  double best = 0.0;
  std::int32_t p = j;
  for (std::int32_t i = j; i < s.size; ++i) {
    const double merit = scale[i] * std::fabs(s.matrix[i][j]);
    // equal-merits-take-the-last-row: the comparison lets a tie through.
    if (merit >= best) {
      best = merit;
      p = i;
    }
  }
  return p;
}

inline void ExchangeRows(LuSystem& s, std::int32_t j, std::int32_t p) {
  double* const a = s.matrix[j];
  double* const b = s.matrix[p];
  for (std::int32_t k = 0; k < s.size; ++k)
    std::swap(a[k], b[k]);
  s.parity = -s.parity;
}

/// Subtracts factor * from[k] from to[k] for k = first .. n - 1.
inline void SubtractRow(double* to, const double* from, double factor, std::int32_t first,
                        std::int32_t n) {
  std::int32_t k = first;
  for (; k + 2 <= n; k += 2) {
    const double a = to[k] - factor * from[k];
    const double b = to[k + 1] - factor * from[k + 1];
    to[k] = a;
    to[k + 1] = b;
  }
  if (k < n) to[k] -= factor * from[k];
}

/// Replaces the matrix by its factors. Requires room for one number per row in `scale`.
inline LuResult DecomposeUnblocked(LuSystem& s, double* scale) {
  if (!ScaleRows(s, scale)) return LuResult::ZeroRow;
  for (std::int32_t j = 0; j < s.size; ++j) {
    const std::int32_t p = PivotRow(s, scale, j);
    if (p != j) {
      ExchangeRows(s, j, p);
      scale[p] = scale[j];
    }
    s.pivots[j] = p;
    double* const pivotRow = s.matrix[j];
    // small-negative-pivot-becomes-positive: the sign of a tiny pivot is rounding.
    if (kTinyPivot > std::fabs(pivotRow[j])) pivotRow[j] = kTinyPivot;
    for (std::int32_t i = j + 1; i < s.size; ++i) {
      double* const row = s.matrix[i];
      row[j] /= pivotRow[j];
      SubtractRow(row, pivotRow, row[j], j + 1, s.size);
    }
  }
  return LuResult::Decomposed;
}

} // namespace gsl_wide

#endif
