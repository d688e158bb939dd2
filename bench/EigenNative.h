#ifndef BENCH_EIGEN_NATIVE_H
#define BENCH_EIGEN_NATIVE_H

#include <memory>

/// Eigen's PartialPivLU, compiled for this processor, with wide vectors and fused multiply-add. It
/// has its own source, so that no other code is compiled like this.
class EigenNative {
public:
  /// Copies n x n and n numbers.
  EigenNative(int n, const double* a, const double* b);
  ~EigenNative();
  /// Factors and solves. Returns the solution, n numbers.
  const double* FactorAndSolve();

private:
  struct System;
  std::unique_ptr<System> system;
};

#endif
