#include "BigNumber.h"

#include <algorithm>
#include <cmath>

namespace gsl_exact {

namespace {

/// Returns the square root of a number other than zero with a relative error below 2^-98.
//
// The number is m * 4^h with m from 1/2 to 2. Newton's step y (3 - m y^2) / 2 turns
// y = (1 + e) / root(m) into (1 - 3/2 e^2 - e^3/2) / root(m). The first y is rounded three times in
// double, to 2^-50, so the step leaves an error below 1.51 * 2^-100. Cutting y to 108 bits adds at
// most 2^-107, and cutting the root m y to 102 bits at most 2^-101.
BigNatural RootOf(const BigNatural& number) {
  const int top = number.TopExponent();
  const int half = top >= 0 ? top / 2 : -((1 - top) / 2);
  const BigNatural m = number.Scaled(-2 * half);
  const double leading = std::ldexp(m.Fraction().hi, m.TopExponent());
  BigNatural y(1.0 / std::sqrt(leading));
  const BigNatural rest =
      BigNatural::Difference(BigNatural(3.0), BigNatural::Times(m, BigNatural::Times(y, y)));
  y = BigNatural::Times(y, rest).Scaled(-1).Leading(108);
  return BigNatural::Times(m, y).Leading(102).Scaled(half);
}

/// Returns a / b with a relative error below 2^-96, for b other than zero.
// Each fraction is off by 2^-98 of itself, and the division by 2^-100.
DoubleDouble Quotient(const BigNumber& a, const BigNumber& b) {
  if (a.Sign() == 0) return {};
  const DoubleDouble fraction = Over(a.Magnitude().Fraction(), b.Magnitude().Fraction());
  // The exponents of doubles end at 1100 in magnitude.
  const int exponent = a.Magnitude().TopExponent() - b.Magnitude().TopExponent();
  const int within = std::max(-3000, std::min(3000, exponent));
  const double sign = a.Sign() * b.Sign();
  return {sign * std::ldexp(fraction.hi, within), sign * std::ldexp(fraction.lo, within)};
}

} // namespace

/// Returns the sum of a and of the magnitude of b with a sign.
BigNumber BigNumber::Sum(const BigNumber& a, const BigNumber& b, int signOfB) {
  if (a.m_sign == 0) return {signOfB, b.m_magnitude};
  if (signOfB == 0) return a;
  if (a.m_sign == signOfB) return {a.m_sign, BigNatural::Plus(a.m_magnitude, b.m_magnitude)};
  const int order = BigNatural::Compare(a.m_magnitude, b.m_magnitude);
  if (order == 0) return {};
  return {order * a.m_sign, BigNatural::Difference(a.m_magnitude, b.m_magnitude)};
}

BigNumber operator*(const BigNumber& a, const BigNumber& b) {
  if (a.m_sign == 0 || b.m_sign == 0) return {};
  return {a.m_sign * b.m_sign, BigNatural::Times(a.m_magnitude, b.m_magnitude)};
}

int BigNumber::Compare(const BigNumber& a, const BigNumber& b) {
  if (a.m_sign != b.m_sign) return a.m_sign < b.m_sign ? -1 : 1;
  if (a.m_sign == 0) return 0;
  return a.m_sign * BigNatural::Compare(a.m_magnitude, b.m_magnitude);
}

int Surd::Sign() const {
  const int root = m_radicand.Sign() == 0 ? 0 : m_factor.Sign();
  if (m_whole.Sign() == root || root == 0) return m_whole.Sign();
  if (m_whole.Sign() == 0) return root;
  // The two terms have opposite signs, so the one with the greater square decides.
  return root * BigNumber::Compare(m_factor * m_factor * m_radicand, m_whole * m_whole);
}

// Terms of opposite signs are not subtracted:
//   whole + term = (whole^2 - term^2) / (whole - term)
// The numerator is exact, and the terms of the denominator have one sign. So either sum has the
// relative error of the root, below 2^-98, and the quotient adds 2^-96.
DoubleDouble Surd::Rounded() const {
  if (m_factor.Sign() == 0 || m_radicand.Sign() == 0) return Quotient(m_whole, m_divisor);
  const BigNumber root{1, RootOf(m_radicand.m_magnitude)};
  const BigNumber term = m_factor * root;
  if (m_whole.Sign() != -m_factor.Sign()) return Quotient(m_whole + term, m_divisor);
  return Quotient(m_whole * m_whole - m_factor * m_factor * m_radicand,
                  (m_whole - term) * m_divisor);
}

} // namespace gsl_exact
