#ifndef GSL_EXACT_BIG_NATURAL_H
#define GSL_EXACT_BIG_NATURAL_H

#include "ExactArithmetic.h"

#include <cstdint>
#include <vector>

namespace gsl_sweep {

/// A natural number times a power of two, of any size. For the rare comparison whose terms leave
/// the range of double: it allocates.
class BigNatural {
public:
  /// Zero.
  BigNatural() = default;

  /// A finite number that is not negative, times 2^exponent.
  explicit BigNatural(double value, int exponent = 0);

  /// The magnitude of an expansion.
  template <int N>
  static BigNatural MagnitudeOf(const Expansion<N>& value) {
    BigNatural positive;
    BigNatural negative;
    for (int k = 0; k < value.count; ++k) {
      const double c = value.component[k];
      BigNatural& sum = c > 0.0 ? positive : negative;
      sum = Plus(sum, BigNatural(std::fabs(c)));
    }
    return Difference(positive, negative);
  }

  static BigNatural Plus(const BigNatural& a, const BigNatural& b);
  static BigNatural Times(const BigNatural& a, const BigNatural& b);

  /// |a - b|
  static BigNatural Difference(const BigNatural& a, const BigNatural& b);

  /// Sign of a - b: -1, 0 or 1.
  static int Compare(const BigNatural& a, const BigNatural& b);

private:
  void Align(int exponent);
  void Trim();

  std::vector<std::uint32_t> m_limbs; ///< from the lowest; the last is not zero
  int m_exponent = 0;                 ///< of the lowest bit
};

} // namespace gsl_sweep

#endif
