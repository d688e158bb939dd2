#ifndef GSL_KERNEL_COMPARISON_H
#define GSL_KERNEL_COMPARISON_H

namespace gsl_kernel {

/// -tol <= b - a <= tol, written so that a NaN difference is within every band.
inline bool WithinBand(double a, double b, double tol) {
  const double d = b - a;
  // nan-compares-equal
  if (-tol > d) return false;
  return !(d > tol);
}

} // namespace gsl_kernel

#endif
