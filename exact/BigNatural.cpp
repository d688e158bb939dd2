#include "BigNatural.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace gsl_exact {

namespace {

constexpr int kLimbBits = 32;

using Limbs = std::vector<std::uint32_t>;

int CompareLimbs(const Limbs& a, const Limbs& b) {
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  for (std::size_t k = a.size(); k > 0; --k) {
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
  m_limbs = {static_cast<std::uint32_t>(mantissa),
             static_cast<std::uint32_t>(mantissa >> kLimbBits)};
  m_exponent = scale - kMantissaBits + exponent;
  Trim();
}

void BigNatural::Trim() {
  while (!m_limbs.empty() && m_limbs.back() == 0)
    m_limbs.pop_back();
}

/// Returns the number with its lowest limb at 2^exponent and with at least `count` limbs, of which
/// the highest may be zero. Requires an exponent that is not above the present one.
BigNatural BigNatural::Aligned(int exponent, std::size_t count) const {
  BigNatural aligned;
  aligned.m_exponent = exponent;
  const int shift = IsZero() ? 0 : m_exponent - exponent;
  const std::size_t whole = static_cast<std::size_t>(shift / kLimbBits);
  const int bits = shift % kLimbBits;
  aligned.m_limbs.assign(std::max(whole + m_limbs.size() + 1, count), 0U);
  std::uint64_t carry = 0;
  for (std::size_t k = 0; k < m_limbs.size(); ++k) {
    carry |= static_cast<std::uint64_t>(m_limbs[k]) << bits;
    aligned.m_limbs[whole + k] = static_cast<std::uint32_t>(carry);
    carry >>= kLimbBits;
  }
  aligned.m_limbs[whole + m_limbs.size()] = static_cast<std::uint32_t>(carry);
  return aligned;
}

BigNatural BigNatural::Plus(const BigNatural& a, const BigNatural& b) {
  // The lower one is read where it is.
  const BigNatural& low = a.m_exponent <= b.m_exponent ? a : b;
  const BigNatural& high = a.m_exponent <= b.m_exponent ? b : a;
  BigNatural sum = high.Aligned(low.m_exponent, low.m_limbs.size() + 1);
  // The highest limb is below 2^31, and the lower number does not reach it, so it takes the carry.
  std::uint64_t carry = 0;
  for (std::size_t k = 0; k < sum.m_limbs.size(); ++k) {
    carry += sum.m_limbs[k];
    if (k < low.m_limbs.size()) carry += low.m_limbs[k];
    sum.m_limbs[k] = static_cast<std::uint32_t>(carry);
    carry >>= kLimbBits;
  }
  sum.Trim();
  return sum;
}

BigNatural BigNatural::Difference(const BigNatural& a, const BigNatural& b) {
  if (Compare(a, b) < 0) return Difference(b, a);
  const int exponent = std::min(a.m_exponent, b.m_exponent);
  BigNatural rest = a.Aligned(exponent, 0);
  const BigNatural room = b.m_exponent == exponent ? BigNatural() : b.Aligned(exponent, 0);
  const Limbs& taken = b.m_exponent == exponent ? b.m_limbs : room.m_limbs;
  std::uint64_t borrow = 0;
  for (std::size_t k = 0; k < rest.m_limbs.size(); ++k) {
    const std::uint64_t less = borrow + (k < taken.size() ? taken[k] : 0U);
    borrow = rest.m_limbs[k] < less ? 1 : 0;
    rest.m_limbs[k] = static_cast<std::uint32_t>(rest.m_limbs[k] - less);
  }
  rest.Trim();
  return rest;
}

BigNatural BigNatural::Times(const BigNatural& a, const BigNatural& b) {
  BigNatural product;
  product.m_exponent = a.m_exponent + b.m_exponent;
  product.m_limbs.assign(a.m_limbs.size() + b.m_limbs.size(), 0U);
  for (std::size_t i = 0; i < a.m_limbs.size(); ++i) {
    std::uint64_t carry = 0;
    for (std::size_t j = 0; j < b.m_limbs.size(); ++j) {
      carry += static_cast<std::uint64_t>(a.m_limbs[i]) * b.m_limbs[j] + product.m_limbs[i + j];
      product.m_limbs[i + j] = static_cast<std::uint32_t>(carry);
      carry >>= kLimbBits;
    }
    product.m_limbs[i + b.m_limbs.size()] = static_cast<std::uint32_t>(carry);
  }
  product.Trim();
  return product;
}

int BigNatural::Compare(const BigNatural& a, const BigNatural& b) {
  if (a.IsZero() || b.IsZero()) return static_cast<int>(b.IsZero()) - static_cast<int>(a.IsZero());
  const int top = a.TopExponent();
  if (top != b.TopExponent()) return top < b.TopExponent() ? -1 : 1;
  if (a.m_exponent == b.m_exponent) return CompareLimbs(a.m_limbs, b.m_limbs);
  if (a.m_exponent < b.m_exponent) return -Compare(b, a);
  BigNatural left = a.Aligned(b.m_exponent, 0);
  left.Trim();
  return CompareLimbs(left.m_limbs, b.m_limbs);
}

int BigNatural::TopExponent() const {
  const int low = m_exponent + kLimbBits * static_cast<int>(m_limbs.size() - 1);
  int top = 0;
  std::frexp(static_cast<double>(m_limbs.back()), &top);
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
  if (m_limbs.size() <= kept) return *this;
  BigNatural leading;
  const std::size_t dropped = m_limbs.size() - kept;
  leading.m_limbs.assign(m_limbs.begin() + static_cast<std::ptrdiff_t>(dropped), m_limbs.end());
  leading.m_exponent = m_exponent + kLimbBits * static_cast<int>(dropped);
  return leading;
}

DoubleDouble BigNatural::Fraction() const {
  // Five limbs have 129 bits or more, so less than 2^-128 of the number is dropped. Sums of three
  // limbs are exact, and each of the other two is off by less than 2^-100 of itself.
  constexpr std::size_t kTaken = 5;
  const int shift = -TopExponent();
  DoubleDouble sum;
  const std::size_t count = std::min(m_limbs.size(), kTaken);
  for (std::size_t k = m_limbs.size(); k > m_limbs.size() - count; --k) {
    const int exponent = m_exponent + kLimbBits * static_cast<int>(k - 1) + shift;
    sum = gsl_exact::Plus(sum, {std::ldexp(static_cast<double>(m_limbs[k - 1]), exponent), 0.0});
  }
  return sum;
}

} // namespace gsl_exact
