#ifndef GSL_EXACT_BIG_NATURAL_H
#define GSL_EXACT_BIG_NATURAL_H

#include "ExactArithmetic.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace gsl_exact {

/// A natural number of any size times a power of two. It allocates, so it is used only for rare
/// decisions whose terms doubles do not hold.
class BigNatural {
public:
  /// Zero.
  BigNatural() = default;

  /// The number times 2^exponent. Requires a finite number that is not negative.
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

  /// Returns |a - b|.
  static BigNatural Difference(const BigNatural& a, const BigNatural& b);

  /// Returns the sign of a - b: -1, 0 or 1.
  static int Compare(const BigNatural& a, const BigNatural& b);

  bool IsZero() const { return m_limbs.empty(); }
  /// Returns the exponent e such that the number is from 2^(e-1) to less than 2^e. Requires a
  /// number other than zero.
  int TopExponent() const;
  /// Returns the number times 2^exponent.
  BigNatural Scaled(int exponent) const;
  /// Returns the number without low bits: at least `bits` of the highest bits stay.
  BigNatural Leading(int bits) const;
  /// Returns the number divided by 2^TopExponent(), with a relative error below 2^-98.
  DoubleDouble Fraction() const;

private:
  BigNatural Aligned(int exponent, std::size_t count) const;
  void Trim();

  std::vector<std::uint32_t> m_limbs; ///< from the lowest limb; the last limb is not zero
  int m_exponent = 0;                 ///< the exponent of the lowest bit
};

} // namespace gsl_exact

#endif
