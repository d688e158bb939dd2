#ifndef GSL_EXACT_BIG_NUMBER_H
#define GSL_EXACT_BIG_NUMBER_H

#include "BigNatural.h"

namespace gsl_exact {

/// A whole number of any size times a power of two, with a sign. Sums and products are exact. It
/// allocates.
class BigNumber {
public:
  /// Zero.
  BigNumber() = default;

  /// Requires a finite number.
  explicit BigNumber(double value)
      : m_sign((value > 0.0) - (value < 0.0)), m_magnitude(std::fabs(value)) {}

  int Sign() const { return m_sign; }
  const BigNatural& Magnitude() const { return m_magnitude; }

  friend BigNumber operator-(BigNumber a) {
    a.m_sign = -a.m_sign;
    return a;
  }
  friend BigNumber operator+(const BigNumber& a, const BigNumber& b) { return Sum(a, b, b.m_sign); }
  friend BigNumber operator-(const BigNumber& a, const BigNumber& b) {
    return Sum(a, b, -b.m_sign);
  }
  friend BigNumber operator*(const BigNumber& a, const BigNumber& b);

  /// Returns the sign of a - b: -1, 0 or 1.
  static int Compare(const BigNumber& a, const BigNumber& b);

private:
  friend class Surd;
  BigNumber(int sign, BigNatural magnitude) : m_sign(sign), m_magnitude(std::move(magnitude)) {}

  static BigNumber Sum(const BigNumber& a, const BigNumber& b, int signOfB);

  int m_sign = 0;
  BigNatural m_magnitude; ///< zero exactly when the sign is 0
};

/// The number (whole + factor * root(radicand)) / divisor.
class Surd {
public:
  /// Requires a radicand that is not negative, and a positive divisor.
  Surd(BigNumber whole, BigNumber factor, BigNumber radicand, BigNumber divisor)
      : m_whole(std::move(whole)), m_factor(std::move(factor)), m_radicand(std::move(radicand)),
        m_divisor(std::move(divisor)) {}

  /// Returns the exact sign: -1, 0 or 1.
  int Sign() const;

  /// Returns the number with a relative error below 2^-95, so with its exact sign. Beyond the range
  /// of double it is infinite, and below that range it is rounded to it.
  DoubleDouble Rounded() const;

private:
  BigNumber m_whole, m_factor, m_radicand, m_divisor;
};

} // namespace gsl_exact

#endif
