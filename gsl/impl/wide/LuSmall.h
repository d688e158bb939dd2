#ifndef GSL_WIDE_LU_SMALL_H
#define GSL_WIDE_LU_SMALL_H

#include "wide/Lanes.h"
#include "wide/LuWork.h"

/// The solution of systems of up to kLargestSmall rows, without memory and nearly without branches.
///
/// Each lane is a row of the matrix, and stays there: an exchange of rows changes only the
/// positions of the two lanes. So nothing branches on the choice of a pivot, which no branch
/// predictor knows. The right side is one column more, so that the same steps permute it and
/// substitute it forward. Every element subtracts its terms in the order of the column-by-column
/// form, and rounds each product and each difference: the results are its bits.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

/// One elimination, in kVectors registers a column.
template <int kVectors>
class LuSmall {
public:
  LuSmall(LuSystem& system, const double* rightSide) : m_system(system), m_size(system.size) {
    FetchMatrix();
    for (int first = 0; first < kRows; first += kLanes) {
      if (first + kLanes <= m_size) {
        Store(m_columns[m_size] + first, Load(rightSide + first));
      } else {
        FetchPart(first, m_size, [rightSide](std::int32_t i) { return rightSide[i]; });
      }
    }
  }

  /// Returns false for a zero row.
  bool ScaleRows() {
    Bits zero = {};
    for (int v = 0; v < kVectors; ++v) {
      Doubles big = Splat(0.0);
      for (std::int32_t c = 0; c < m_size; ++c) {
        const Doubles magnitude = Magnitude(Load(m_columns[c] + v * kLanes));
        big = magnitude > big ? magnitude : big;
      }
      m_isOpen[v] = RowsOf(v) < Splat(m_size);
      zero |= m_isOpen[v] & (Splat(kTinyPivot) > big);
      m_scale[v] = Splat(1.0) / big;
    }
    return !AnyBit(zero);
  }

  void Eliminate() {
    for (std::int32_t i = 0; i < m_size; ++i)
      m_laneAt[i] = m_positionOf[i] = i;
    const std::int32_t last = m_size - 1;
    for (std::int32_t j = 0; j < last; ++j)
      EliminateColumn(j, ChoosePivot(j));
    m_system.pivots[last] = last;
    RaisePivot(m_columns[last][m_laneAt[last]]);
  }

  void StoreFactors() {
    for (std::int32_t first = 0; first < m_size; first += kLanes) {
      std::int32_t c = 0;
      if (first + kLanes <= m_size) {
        for (; c + kLanes <= m_size; c += kLanes)
          StoreBlock(first, c);
      }
      for (std::int32_t lane = first; lane < first + kLanes && lane < m_size; ++lane) {
        double* const row = m_system.matrix[m_positionOf[lane]];
        for (std::int32_t k = c; k < m_size; ++k)
          row[k] = m_columns[k][lane];
      }
    }
  }

  /// Substitutes backward, and writes the solution. Every sum has an increasing index.
  void SolveRightSide(double* to) const {
    double x[kRows];
    for (std::int32_t i = m_size - 1; i >= 0; --i) {
      const double* const row = &m_columns[0][m_laneAt[i]];
      double sum = row[m_size * kRows];
      for (std::int32_t k = i + 1; k < m_size; ++k)
        sum -= row[k * kRows] * x[k];
      x[i] = sum / row[i * kRows];
    }
    for (std::int32_t i = 0; i < m_size; ++i)
      to[i] = x[i];
  }

private:
  static constexpr int kRows = kVectors * kLanes;

  LuSystem& m_system;
  const std::int32_t m_size;
  alignas(64) double m_columns[kRows + 1][kRows]; ///< the last column is the right side
  Doubles m_scale[kVectors];
  Bits m_isOpen[kVectors]; ///< the rows that were not a pivot row yet
  std::int32_t m_laneAt[kRows];
  std::int32_t m_positionOf[kRows];

  static GSL_ALWAYS_INLINE Doubles RowsOf(int v) { return ZeroToLast() + Splat(v * kLanes); }

  /// Copies the rows from `first` on that fill a register.
  template <class Element>
  GSL_ALWAYS_INLINE void FetchPart(int first, std::int32_t column, const Element& element) {
    double part[kLanes] = {};
    for (int i = 0; i < kLanes && first + i < m_size; ++i)
      part[i] = element(first + i);
    Store(m_columns[column] + first, Load(part));
  }

  /// Copies the matrix, in blocks where whole blocks are left. Clears the lanes without a row.
  void FetchMatrix() {
    for (int first = 0; first < kRows; first += kLanes) {
      std::int32_t c = 0;
      if (first + kLanes <= m_size) {
        for (; c + kLanes <= m_size; c += kLanes)
          FetchBlock(first, c);
      }
      for (; c < m_size; ++c)
        FetchPart(first, c, [this, c](std::int32_t i) { return m_system.matrix[i][c]; });
    }
  }

  GSL_ALWAYS_INLINE void FetchBlock(int row, std::int32_t column) {
    Doubles t[kLanes];
#pragma GCC unroll 8
    for (int i = 0; i < kLanes; ++i)
      t[i] = Load(m_system.matrix[row + i] + column);
    Transpose(t);
#pragma GCC unroll 8
    for (int i = 0; i < kLanes; ++i)
      Store(m_columns[column + i] + row, t[i]);
  }

  GSL_ALWAYS_INLINE void StoreBlock(int row, std::int32_t column) {
    Doubles t[kLanes];
#pragma GCC unroll 8
    for (int i = 0; i < kLanes; ++i)
      t[i] = Load(m_columns[column + i] + row);
    Transpose(t);
#pragma GCC unroll 8
    for (int i = 0; i < kLanes; ++i)
      Store(m_system.matrix[m_positionOf[row + i]] + column, t[i]);
  }

  /// Returns the lane of the pivot row of column j, and exchanges its position with position j.
  GSL_ALWAYS_INLINE std::int32_t ChoosePivot(std::int32_t j) {
    // A NaN is never chosen over a number, so it counts as less than every merit.
    Doubles merit[kVectors];
    Doubles most = Splat(-1.0);
#pragma GCC unroll 8
    for (int v = 0; v < kVectors; ++v) {
      const Doubles m = m_scale[v] * Magnitude(Load(m_columns[j] + v * kLanes));
      const Bits counts = m_isOpen[v] & (m >= Splat(0.0));
      merit[v] = counts ? m : Splat(-1.0);
      most = Larger(most, merit[v]);
    }
    const double best = Largest(most);
    unsigned isBest = 0;
#pragma GCC unroll 8
    for (int v = 0; v < kVectors; ++v)
      isBest |= EqualLanes(merit[v], Splat(best)) << (v * kLanes);
    std::int32_t lane = __builtin_ctz(isBest);
    if ((isBest & (isBest - 1)) != 0) lane = best < 0.0 ? m_laneAt[j] : LastOf(isBest, j);
    const std::int32_t p = m_positionOf[lane], other = m_laneAt[j];
    m_system.pivots[j] = p;
    m_system.parity = p != j ? -m_system.parity : m_system.parity;
    m_laneAt[p] = other;
    m_positionOf[other] = p;
    m_laneAt[j] = lane;
    m_positionOf[lane] = j;
    return lane;
  }

  /// Returns the lane of the last position among equal merits.
  std::int32_t LastOf(unsigned isBest, std::int32_t j) const {
    // equal-merits-take-the-last-row: positions count, and lanes do not.
    std::int32_t last = m_size - 1;
    while (last > j && (isBest >> m_laneAt[last] & 1) == 0)
      --last;
    return m_laneAt[last];
  }

  static GSL_ALWAYS_INLINE void RaisePivot(double& pivot) {
    // small-negative-pivot-becomes-positive: the sign of a tiny pivot is rounding.
    if (kTinyPivot > __builtin_fabs(pivot)) pivot = kTinyPivot;
  }

  GSL_ALWAYS_INLINE void EliminateColumn(std::int32_t j, std::int32_t pivotLane) {
    RaisePivot(m_columns[j][pivotLane]);
    const Doubles divisor = Splat(m_columns[j][pivotLane]), row = Splat(pivotLane);
    Doubles l[kVectors];
    Bits open[kVectors];
#pragma GCC unroll 8
    for (int v = 0; v < kVectors; ++v) {
      const Bits isOpen = m_isOpen[v] & (RowsOf(v) != row);
      const Doubles old = Load(m_columns[j] + v * kLanes);
      const Doubles quotient = old / divisor;
      m_isOpen[v] = open[v] = isOpen;
      l[v] = quotient;
      const Doubles lower = isOpen ? quotient : old;
      Store(m_columns[j] + v * kLanes, lower);
    }
    for (std::int32_t c = j + 1; c <= m_size; ++c) {
      const Doubles u = Splat(m_columns[c][pivotLane]);
#pragma GCC unroll 8
      for (int v = 0; v < kVectors; ++v) {
        const Doubles old = Load(m_columns[c] + v * kLanes);
        const Doubles reduced = old - l[v] * u;
        const Bits isOpen = open[v];
        const Doubles updated = isOpen ? reduced : old;
        Store(m_columns[c] + v * kLanes, updated);
      }
    }
  }
};

template <int kVectors>
inline LuResult SolveIn(LuSystem& system, const double* rightSide, double* to) {
  LuSmall<kVectors> small(system, rightSide);
  if (!small.ScaleRows()) return LuResult::ZeroRow;
  small.Eliminate();
  small.StoreFactors();
  small.SolveRightSide(to);
  return LuResult::Decomposed;
}

/// Replaces the matrix by its factors, and writes the solution. Requires a parity of 1, and a size
/// of 1 to kLargestSmall. The right side may be the solution.
inline LuResult SolveSmall(LuSystem& system, const double* rightSide, double* to) {
  constexpr int kMostVectors = kLargestSmall / kLanes;
  const int vectors = (system.size + kLanes - 1) / kLanes;
  if (vectors <= kMostVectors / 4) return SolveIn<(kMostVectors + 3) / 4>(system, rightSide, to);
  if (vectors <= kMostVectors / 2) return SolveIn<kMostVectors / 2>(system, rightSide, to);
  return SolveIn<kMostVectors>(system, rightSide, to);
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
