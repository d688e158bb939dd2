#ifndef GSL_KERNEL_COMPARISON_H
#define GSL_KERNEL_COMPARISON_H

namespace gsl_kernel {

/// Returns -tol <= b - a <= tol, written so that a NaN difference is within every band.
inline bool WithinBand(double a, double b, double tol) {
  const double d = b - a;
  // nan-compares-equal: the comparison only rejects, and a NaN passes every rejection.
  if (-tol > d) return false;
  return !(d > tol);
}

} // namespace gsl_kernel

#endif
