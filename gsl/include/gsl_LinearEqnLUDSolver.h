#ifndef GSL_LINEAR_EQN_LUD_SOLVER_H
#define GSL_LINEAR_EQN_LUD_SOLVER_H

#include "gsl_Export.h"

#include <cstdint>

/// Solves a dense square system A * x = b by LU decomposition with scaled partial pivoting.
///
/// Source     W. H. Press et al., Numerical Recipes, 2.3 (Crout's method with implicit pivoting).
///            Each sum is a running subtraction, its index increasing, no fused operation: the
///            results are the same bits on every processor.
/// Matrix     the caller's and worked on in place; it must stay alive and unchanged while the
///            solver is used. A row exchange moves contents, never the row pointers. The rows must
///            not overlap.
/// Pivot      scale[i] * |a[i][j]|, where 1 / scale[i] is the largest magnitude of row i; among
///            equal figures the last row, never a NaN while there is a number.
/// Floor      a pivot with 1e-16 > |pivot| becomes +1e-16: a column that turns out dependent gives
///            large values, not a failure.
/// NaN        passes into the solution; a row of nothing but NaN counts as a zero row.
/// Memory     n 32-bit integers. One decomposition takes scratch, freed before Solve returns: up to
///            n = 16 none, below 1024 a copy of the matrix (at most n^2 + 89 n + 25662 numbers),
///            from there at most 268 n + 102228 numbers. Without it n numbers do: slower, the same
///            bits.
/// Errors     none thrown, none printed. Not copyable: the factors live in the caller's matrix.
/// Threads    one solver belongs to one thread at a time.
class GSL_API gsl_LinearEqnLUDSolver {
public:
  gsl_LinearEqnLUDSolver();
  ~gsl_LinearEqnLUDSolver();
  gsl_LinearEqnLUDSolver(const gsl_LinearEqnLUDSolver&) = delete;
  gsl_LinearEqnLUDSolver& operator=(const gsl_LinearEqnLUDSolver&) = delete;

  /// `a` is n row pointers to n doubles each. Forgets the matrix before it and its factors.
  /// Null: the solver has no matrix.
  void SetMatrix(double** a, unsigned int n);

  /// Decomposes on first use; later calls reuse the factors. `b` and `x` hold n doubles; they are
  /// apart or the same array, and apart from the matrix. `b` is not modified unless it is `x`. True
  /// at once for n = 0.
  /// False, with `x` and the matrix untouched, without a matrix, for a row whose every magnitude
  /// is below 1e-16 (strict), without memory for n numbers and n integers, and for n above
  /// 2147483640. A failed decomposition is tried again by the next call.
  [[nodiscard]] bool Solve(double* b, double* x);

  /// Entry j is the row that was exchanged with row j at step j; Size() entries, null while
  /// IsDecomposed() is false.
  const std::int32_t* Pivots() const { return m_isDecomposed ? m_pivots : nullptr; }
  unsigned int Size() const { return m_size; }
  /// +1 or -1, the sign of the row permutation: times the product of the factors' diagonal it is
  /// the determinant.
  int Parity() const { return m_parity; }
  /// A decomposition met a zero row since SetMatrix.
  [[nodiscard]] bool IsSingular() const { return m_isSingular; }
  /// The matrix holds its factors.
  [[nodiscard]] bool IsDecomposed() const { return m_isDecomposed; }

private:
  double** m_matrix;
  std::uint32_t m_size;
  std::int32_t* m_pivots;
  std::int32_t m_parity;
  bool m_isSingular;
  bool m_isDecomposed;

  void Reset();
  [[nodiscard]] bool Decompose();
};

#endif
