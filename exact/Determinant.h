#ifndef GSL_EXACT_DETERMINANT_H
#define GSL_EXACT_DETERMINANT_H

#include "ExactArithmetic.h"

#include "gsl_Arithmetic.h"

/// Determinants of three vectors between points, with their exact sign.
/// Range      exact when every coordinate is zero or has a magnitude from 2^-288 to 2^300; then no
///            term of three factors is outside the range of double.
namespace gsl_exact {

using gsl_arithmetic::Coord3;

/// The vector from one point to another. It keeps its two ends, because the difference may round.
struct VectorBetween {
  const Coord3* from;
  const Coord3* to;

  Coord3 Rounded() const { return gsl_arithmetic::Subtract(*to, *from); }
};

/// An approximation with |exact - value| <= bound.
struct Estimate {
  double value;
  double bound;

  /// Returns the sign. Requires a value whose sign the bound leaves certain.
  bool IsCertain() const { return std::fabs(value) > bound || bound == 0.0; }
  int Sign() const { return (value > 0.0) - (value < 0.0); }
};

/// Returns det[u, v, w] in double with its error bound; a bound of zero means exactly zero.
Estimate EstimateDeterminant(const VectorBetween& u, const VectorBetween& v,
                             const VectorBetween& w);

/// Returns u x v without error.
struct ExactCross {
  Expansion<16> x, y, z;
};
ExactCross ExactCrossProduct(const VectorBetween& u, const VectorBetween& v);

/// Returns det[u, v, w] without error.
Expansion<192> ExactDeterminant(const VectorBetween& u, const VectorBetween& v,
                                const VectorBetween& w);

/// Returns the exact sign of det[u, v, w]: -1, 0 or 1.
int DeterminantSign(const VectorBetween& u, const VectorBetween& v, const VectorBetween& w);

} // namespace gsl_exact

#endif
