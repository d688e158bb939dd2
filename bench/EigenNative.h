#ifndef BENCH_EIGEN_NATIVE_H
#define BENCH_EIGEN_NATIVE_H

#include <memory>

/// Eigen's PartialPivLU, compiled for the processor at hand: wide vectors, fused multiply-add. In a
/// source of its own, so that nothing else is.
class EigenNative {
public:
  /// n x n and n numbers, copied.
  EigenNative(int n, const double* a, const double* b);
  ~EigenNative();
  /// Factors and solves; the solution, n numbers.
  const double* FactorAndSolve();

private:
  struct System;
  std::unique_ptr<System> system;
};

#endif
