#include "BigNumber.h"

#include <algorithm>
#include <cmath>

namespace gsl_exact {

namespace {

/// Returns the square root of a number other than zero with a relative error below 2^-bits.
//
// The number is m * 4^h with m from 1/2 to 2. Newton's step y (3 - m y^2) / 2 turns
// y = (1 + e) / root(m) into (1 - 3/2 e^2 - e^3/2) / root(m). A y of `known` bits, |e| < 2^-known,
// so has an error below 1.51 * 2^-2known; cutting y to 2 known + 8 bits adds at most 2^-2known-7.
// Together that is less than 2^-(2 known - 1). The first y is rounded three times in double, to
// 2^-50. The root is m y, cut to bits + 4 bits: its error is that of y, which is below 2^-(bits +
// 1), and 2^-(bits + 3).
BigNatural RootOf(const BigNatural& number, int bits) {
  const int top = number.TopExponent();
  const int half = top >= 0 ? top / 2 : -((1 - top) / 2);
  const BigNatural m = number.Scaled(-2 * half);
  const double leading = std::ldexp(m.Fraction().hi, m.TopExponent());
  BigNatural y(1.0 / std::sqrt(leading));
  const BigNatural three(3.0);
  for (int known = 50; known <= bits; known = 2 * known - 1) {
    const BigNatural square = BigNatural::Times(m, BigNatural::Times(y, y));
    y = BigNatural::Times(y, BigNatural::Difference(three, square)).Scaled(-1);
    y = y.Leading(2 * known + 8);
  }
  return BigNatural::Times(m, y).Leading(bits + 4).Scaled(half);
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

BigNumber operator+(const BigNumber& a, const BigNumber& b) {
  if (a.m_sign == 0) return b;
  if (b.m_sign == 0) return a;
  if (a.m_sign == b.m_sign) return {a.m_sign, BigNatural::Plus(a.m_magnitude, b.m_magnitude)};
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

// The root has a relative error of 2^-bits, so factor * root / divisor is off by less than
// 2^(top - bits). That is 2^-91 at most, and the quotient by 2^-96 of itself.
DoubleDouble Surd::Rounded() const {
  if (m_factor.Sign() == 0 || m_radicand.Sign() == 0) return Quotient(m_whole, m_divisor);
  // The term factor * root / divisor is less than 2^top.
  const int top = m_factor.m_magnitude.TopExponent() +
                  (m_radicand.m_magnitude.TopExponent() + 1) / 2 + 1 -
                  (m_divisor.m_magnitude.TopExponent() - 1);
  const int bits = std::max(8, top + 91);
  const BigNumber root{1, RootOf(m_radicand.m_magnitude, bits)};
  return Quotient(m_whole + m_factor * root, m_divisor);
}

} // namespace gsl_exact
