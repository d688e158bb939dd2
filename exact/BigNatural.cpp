#include "BigNatural.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace gsl_exact {

namespace {

constexpr int kLimbBits = 32;

int CompareLimbs(const Limbs& a, const Limbs& b) {
  if (a.Count() != b.Count()) return a.Count() < b.Count() ? -1 : 1;
  for (std::size_t k = a.Count(); k > 0; --k) {
    if (a[k - 1] != b[k - 1]) return a[k - 1] < b[k - 1] ? -1 : 1;
  }
  return 0;
}

} // namespace

BigNatural::BigNatural(double value, int exponent) {
  constexpr int kMantissaBits = 53;
  int scale = 0;
  const double fraction = std::frexp(value, &scale);
  const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, kMantissaBits));
  const std::uint32_t limbs[] = {static_cast<std::uint32_t>(mantissa),
                                 static_cast<std::uint32_t>(mantissa >> kLimbBits)};
  m_limbs = Limbs(limbs, limbs + 2);
  m_limbs.Trim();
  m_exponent = scale - kMantissaBits + exponent;
}

/// Returns the number with its lowest limb at 2^exponent and with at least `count` limbs, of which
/// the highest may be zero. Requires an exponent that is not above the present one.
BigNatural BigNatural::Aligned(int exponent, std::size_t count) const {
  BigNatural aligned;
  aligned.m_exponent = exponent;
  const int shift = IsZero() ? 0 : m_exponent - exponent;
  const std::size_t whole = static_cast<std::size_t>(shift / kLimbBits);
  const int bits = shift % kLimbBits;
  aligned.m_limbs.Reset(std::max(whole + m_limbs.Count() + 1, count));
  std::uint64_t carry = 0;
  for (std::size_t k = 0; k < m_limbs.Count(); ++k) {
    carry |= static_cast<std::uint64_t>(m_limbs[k]) << bits;
    aligned.m_limbs[whole + k] = static_cast<std::uint32_t>(carry);
    carry >>= kLimbBits;
  }
  aligned.m_limbs[whole + m_limbs.Count()] = static_cast<std::uint32_t>(carry);
  return aligned;
}

BigNatural BigNatural::Plus(const BigNatural& a, const BigNatural& b) {
  // The lower one is read where it is.
  const BigNatural& low = a.m_exponent <= b.m_exponent ? a : b;
  const BigNatural& high = a.m_exponent <= b.m_exponent ? b : a;
  BigNatural sum = high.Aligned(low.m_exponent, low.m_limbs.Count() + 1);
  // The highest limb is below 2^31, and the lower number does not reach it, so it takes the carry.
  std::uint64_t carry = 0;
  for (std::size_t k = 0; k < sum.m_limbs.Count(); ++k) {
    carry += sum.m_limbs[k];
    if (k < low.m_limbs.Count()) carry += low.m_limbs[k];
    sum.m_limbs[k] = static_cast<std::uint32_t>(carry);
    carry >>= kLimbBits;
  }
  sum.m_limbs.Trim();
  return sum;
}

BigNatural BigNatural::Difference(const BigNatural& a, const BigNatural& b) {
  if (Compare(a, b) < 0) return Difference(b, a);
  const int exponent = std::min(a.m_exponent, b.m_exponent);
  BigNatural rest = a.Aligned(exponent, 0);
  const BigNatural room = b.m_exponent == exponent ? BigNatural() : b.Aligned(exponent, 0);
  const Limbs& taken = b.m_exponent == exponent ? b.m_limbs : room.m_limbs;
  std::uint64_t borrow = 0;
  for (std::size_t k = 0; k < rest.m_limbs.Count(); ++k) {
    const std::uint64_t less = borrow + (k < taken.Count() ? taken[k] : 0U);
    borrow = rest.m_limbs[k] < less ? 1 : 0;
    rest.m_limbs[k] = static_cast<std::uint32_t>(rest.m_limbs[k] - less);
  }
  rest.m_limbs.Trim();
  return rest;
}

BigNatural BigNatural::Times(const BigNatural& a, const BigNatural& b) {
  BigNatural product;
  product.m_exponent = a.m_exponent + b.m_exponent;
  product.m_limbs.Reset(a.m_limbs.Count() + b.m_limbs.Count());
  const std::uint32_t* const x = a.m_limbs.Data();
  const std::uint32_t* const y = b.m_limbs.Data();
  const std::size_t count = b.m_limbs.Count();
  std::uint32_t* out = product.m_limbs.Data();
  for (std::size_t i = 0; i < a.m_limbs.Count(); ++i, ++out) {
    std::uint64_t carry = 0;
    for (std::size_t j = 0; j < count; ++j) {
      carry += static_cast<std::uint64_t>(x[i]) * y[j] + out[j];
      out[j] = static_cast<std::uint32_t>(carry);
      carry >>= kLimbBits;
    }
    out[count] = static_cast<std::uint32_t>(carry);
  }
  product.m_limbs.Trim();
  return product;
}

int BigNatural::Compare(const BigNatural& a, const BigNatural& b) {
  if (a.IsZero() || b.IsZero()) return static_cast<int>(b.IsZero()) - static_cast<int>(a.IsZero());
  const int top = a.TopExponent();
  if (top != b.TopExponent()) return top < b.TopExponent() ? -1 : 1;
  if (a.m_exponent == b.m_exponent) return CompareLimbs(a.m_limbs, b.m_limbs);
  if (a.m_exponent < b.m_exponent) return -Compare(b, a);
  BigNatural left = a.Aligned(b.m_exponent, 0);
  left.m_limbs.Trim();
  return CompareLimbs(left.m_limbs, b.m_limbs);
}

int BigNatural::TopExponent() const {
  const int low = m_exponent + kLimbBits * static_cast<int>(m_limbs.Count() - 1);
  int top = 0;
  std::frexp(static_cast<double>(m_limbs[m_limbs.Count() - 1]), &top);
  return low + top;
}

BigNatural BigNatural::Scaled(int exponent) const {
  BigNatural scaled = *this;
  scaled.m_exponent += exponent;
  return scaled;
}

BigNatural BigNatural::Leading(int bits) const {
  // The highest limb may have a single bit.
  const std::size_t kept = static_cast<std::size_t>((bits - 1 + kLimbBits - 1) / kLimbBits) + 1;
  if (m_limbs.Count() <= kept) return *this;
  BigNatural leading;
  const std::size_t dropped = m_limbs.Count() - kept;
  leading.m_limbs = Limbs(m_limbs.Data() + dropped, m_limbs.Data() + m_limbs.Count());
  leading.m_exponent = m_exponent + kLimbBits * static_cast<int>(dropped);
  return leading;
}

DoubleDouble BigNatural::Fraction() const {
  // Five limbs have 129 bits or more, so less than 2^-128 of the number is dropped. Sums of three
  // limbs are exact, and each of the other two is off by less than 2^-100 of itself.
  constexpr std::size_t kTaken = 5;
  const int shift = -TopExponent();
  DoubleDouble sum;
  const std::size_t count = std::min(m_limbs.Count(), kTaken);
  for (std::size_t k = m_limbs.Count(); k > m_limbs.Count() - count; --k) {
    const int exponent = m_exponent + kLimbBits * static_cast<int>(k - 1) + shift;
    sum = gsl_exact::Plus(sum, {std::ldexp(static_cast<double>(m_limbs[k - 1]), exponent), 0.0});
  }
  return sum;
}

} // namespace gsl_exact
