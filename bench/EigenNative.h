#ifndef BENCH_EIGEN_NATIVE_H
#define BENCH_EIGEN_NATIVE_H

#include <memory>

/// Eigen's PartialPivLU, compiled for this processor, with wide vectors and fused multiply-add. It
/// has its own source, so that no other code is compiled like this.
class EigenNative {
public:
  explicit EigenNative(int n);
  ~EigenNative();
  /// Returns n x n and n numbers to be written.
  double* Matrix();
  double* RightSide();
  /// Factors and solves. Returns the solution, n numbers.
  const double* FactorAndSolve();

private:
  struct System;
  std::unique_ptr<System> system;
};

#endif
