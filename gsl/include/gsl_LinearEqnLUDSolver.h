#ifndef GSL_LINEAR_EQN_LUD_SOLVER_H
#define GSL_LINEAR_EQN_LUD_SOLVER_H

#include "gsl_Export.h"

#include <cstdint>

/// Solves a dense square system A * x = b by LU decomposition with scaled partial pivoting.
///
/// Source     W. H. Press et al., Numerical Recipes, 2.3 (Crout's method with implicit pivoting).
///            Each sum is a running subtraction with an increasing index and without fused
///            operations, so the results are the same bits on every processor.
/// Matrix     belongs to the caller and is worked on in place. It must stay alive and unchanged
///            while the solver is used. A row exchange moves contents, never the row pointers. The
///            rows must not overlap.
/// Pivot      the row with the largest scale[i] * |a[i][j]|, where 1 / scale[i] is the largest
///            magnitude of row i. Among equal figures the last row is taken, and a NaN only when
///            all figures are NaN.
/// Floor      a pivot with 1e-16 > |pivot| becomes +1e-16: a dependent column leads to large
///            values, not to a failure.
/// NaN        passes into the solution; a row that holds only NaN counts as a zero row.
/// Memory     n 32-bit integers. For n up to 16 they are 16, and later systems of up to 16 rows use
///            the same block. One decomposition takes scratch memory and frees it before Solve
///            returns: none up to n = 16, below 2048 a copy of the matrix (at most n^2 + 89 n +
///            25670 numbers, from 1024 on n^2 + 153 n + 51206), and from there at most 140 n +
///            26588 numbers. Without that memory n numbers are enough: slower, with the same bits.
/// Errors     none thrown, none printed. Not copyable: the factors live in the caller's matrix.
/// Threads    one solver belongs to one thread at a time.
class GSL_API gsl_LinearEqnLUDSolver {
public:
  gsl_LinearEqnLUDSolver();
  ~gsl_LinearEqnLUDSolver();
  gsl_LinearEqnLUDSolver(const gsl_LinearEqnLUDSolver&) = delete;
  gsl_LinearEqnLUDSolver& operator=(const gsl_LinearEqnLUDSolver&) = delete;

  /// `a` is n row pointers to n doubles each. Forgets the earlier matrix and its factors. With null
  /// the solver has no matrix.
  void SetMatrix(double** a, unsigned int n);

  /// Decomposes on first use; later calls reuse the factors. `b` and `x` hold n doubles; they are
  /// apart or the same array, and apart from the matrix. `b` is not modified unless it is `x`.
  /// Returns true at once for n = 0. Returns false without a matrix, and for a row whose every
  /// magnitude is below 1e-16 (strict). Returns false without memory for n numbers and n integers,
  /// and for n above 2147483640. On false, `x` and the matrix are untouched. The next call tries a
  /// failed decomposition again.
  [[nodiscard]] bool Solve(double* b, double* x);

  /// Returns Size() entries, of which entry j is the row that was exchanged with row j at step j.
  /// Returns null while IsDecomposed() is false.
  const std::int32_t* Pivots() const { return m_isDecomposed ? m_pivots : nullptr; }
  /// Returns n of SetMatrix.
  unsigned int Size() const { return m_size; }
  /// Returns +1 or -1, the sign of the row permutation. The product of the factors' diagonal times
  /// this sign is the determinant.
  int Parity() const { return m_parity; }
  /// Returns true when a decomposition met a zero row since SetMatrix.
  [[nodiscard]] bool IsSingular() const { return m_isSingular; }
  /// Returns true while the matrix holds its factors.
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
