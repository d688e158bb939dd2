#ifndef GSL_WIDE_LU_FIXED_H
#define GSL_WIDE_LU_FIXED_H

#include "wide/LuWork.h"

#include <cmath>
#include <cstring>

/// The solution of systems of a few rows, without memory, on a copy that lies on the stack.
///
/// The size is a constant, so that the loops have constant counts. An exchange of rows changes only
/// the order of their numbers, and nothing branches on the choice of a pivot. The right side is one
/// column more, so that the same steps permute it and substitute it forward. Every element
/// subtracts its terms in the order of the column-by-column form, and rounds each product and each
/// difference: the results are its bits.
namespace gsl_wide {

/// The largest size that has loops of its own.
constexpr std::int32_t kLargestFixed = 6;

template <int kSize>
class LuFixed {
public:
  /// Copies the system.
  LuFixed(double* const* matrix, const double* rightSide) {
    for (int i = 0; i < kSize; ++i) {
      std::memcpy(m_row[i], matrix[i], kSize * sizeof(double));
      m_row[i][kSize] = rightSide[i];
      if (kStride > kSize + 1) m_row[i][kStride - 1] = 0.0;
    }
  }

  /// Writes the reciprocal of each row's largest magnitude, and the merits of the first column.
  /// Returns false for a zero row.
  bool ScaleRows() {
    bool isZero = false;
    for (int i = 0; i < kSize; ++i) {
      double big = 0.0;
      for (int j = 0; j < kSize; ++j) {
        const double magnitude = std::fabs(m_row[i][j]);
        big = magnitude > big ? magnitude : big;
      }
      isZero |= kTinyPivot > big;
      m_scale[i] = 1.0 / big;
      m_order[i] = i;
      m_merit[i] = m_scale[i] * std::fabs(m_row[i][0]);
    }
    return !isZero;
  }

  /// Returns the parity of the exchanges, and writes them.
  std::int32_t Eliminate(std::int32_t* pivots) {
    std::int32_t parity = 1;
    for (int j = 0; j < kSize; ++j) {
      const int p = ChoosePivot(j);
      parity = p != j ? -parity : parity;
      pivots[j] = p;
      const int chosen = m_order[p];
      m_order[p] = m_order[j];
      m_order[j] = chosen;
      EliminateColumn(j, m_row[chosen]);
    }
    return parity;
  }

  void StoreFactors(double* const* matrix) const {
    for (int i = 0; i < kSize; ++i)
      std::memcpy(matrix[i], m_row[m_order[i]], kSize * sizeof(double));
  }

  /// Substitutes backward, and writes the solution. Every sum has an increasing index.
  void SolveRightSide(double* to) const {
    double x[kSize];
#pragma GCC unroll 16
    for (int i = kSize - 1; i >= 0; --i) {
      const double* const row = m_row[m_order[i]];
      double sum = row[kSize];
#pragma GCC unroll 16
      for (int k = i + 1; k < kSize; ++k)
        sum -= row[k] * x[k];
      x[i] = sum / row[i];
    }
    for (int i = 0; i < kSize; ++i)
      to[i] = x[i];
  }

private:
  /// The columns and the right side, in pairs.
  static constexpr int kStride = (kSize + 2) / 2 * 2;

  alignas(16) double m_row[kSize][kStride];
  double m_scale[kSize]; ///< of each row
  double m_merit[kSize]; ///< of each position, in the next column
  int m_order[kSize];    ///< the row at each position

  int ChoosePivot(int j) const {
    double best = 0.0;
    int p = j;
    for (int i = j; i < kSize; ++i) {
      // equal-merits-take-the-last-row: the comparison lets a tie through.
      const bool isBetter = m_merit[i] >= best;
      best = m_merit[i] > best ? m_merit[i] : best;
      p = isBetter ? i : p;
    }
    return p;
  }

  void EliminateColumn(int j, double* pivotRow) {
    // small-negative-pivot-becomes-positive: the sign of a tiny pivot is rounding.
    if (kTinyPivot > std::fabs(pivotRow[j])) pivotRow[j] = kTinyPivot;
    const double pivot = pivotRow[j];
    for (int i = j + 1; i < kSize; ++i) {
      double* const row = m_row[m_order[i]];
      const double factor = row[j] / pivot;
      row[j] = factor;
      int k = j + 1;
      // Pairs begin at even columns, so that no pair is read that was written in two parts.
      if (k % 2 != 0) {
        row[k] -= factor * pivotRow[k];
        ++k;
      }
      for (; k < kStride; k += 2) {
        const double a = row[k] - factor * pivotRow[k];
        const double b = row[k + 1] - factor * pivotRow[k + 1];
        row[k] = a;
        row[k + 1] = b;
      }
      m_merit[i] = m_scale[m_order[i]] * std::fabs(row[j + 1]);
    }
  }
};

template <int kSize>
inline LuResult SolveOfSize(LuSystem& system, const double* rightSide, double* to) {
  LuFixed<kSize> fixed(system.matrix, rightSide);
  if (!fixed.ScaleRows()) return LuResult::ZeroRow;
  system.parity = fixed.Eliminate(system.pivots);
  fixed.StoreFactors(system.matrix);
  fixed.SolveRightSide(to);
  return LuResult::Decomposed;
}

/// Replaces the matrix by its factors, and writes the solution. Requires a size of 1 to
/// kLargestFixed. The right side may be the solution.
inline LuResult SolveFixed(LuSystem& system, const double* rightSide, double* to) {
  switch (system.size) {
  case 1:
    return SolveOfSize<1>(system, rightSide, to);
  case 2:
    return SolveOfSize<2>(system, rightSide, to);
  case 3:
    return SolveOfSize<3>(system, rightSide, to);
  case 4:
    return SolveOfSize<4>(system, rightSide, to);
  case 5:
    return SolveOfSize<5>(system, rightSide, to);
  default:
    return SolveOfSize<6>(system, rightSide, to);
  }
}

} // namespace gsl_wide

#endif
