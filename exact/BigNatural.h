#ifndef GSL_EXACT_BIG_NATURAL_H
#define GSL_EXACT_BIG_NATURAL_H

#include "ExactArithmetic.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace gsl_exact {

/// The limbs of a number. A few are held without allocating.
class Limbs {
public:
  using Limb = std::uint32_t;

  Limbs() = default;
  /// The limbs from `from` to `to`.
  Limbs(const Limb* from, const Limb* to) {
    Resize(static_cast<std::size_t>(to - from));
    std::copy(from, to, Data());
  }
  Limbs(const Limbs& other) : Limbs(other.Data(), other.Data() + other.m_count) {}
  Limbs(Limbs&& other) noexcept { Take(other); }
  Limbs& operator=(const Limbs& other) {
    if (this != &other) *this = Limbs(other);
    return *this;
  }
  Limbs& operator=(Limbs&& other) noexcept {
    if (this != &other) Take(other);
    return *this;
  }
  ~Limbs() = default;

  std::size_t Count() const { return m_count; }
  Limb* Data() { return m_count > kNear ? m_far.data() : m_near; }
  const Limb* Data() const { return m_count > kNear ? m_far.data() : m_near; }
  Limb& operator[](std::size_t k) { return Data()[k]; }
  Limb operator[](std::size_t k) const { return Data()[k]; }

  /// Makes it so many zeros.
  void Reset(std::size_t count) {
    Resize(count);
    std::fill(Data(), Data() + count, Limb{0});
  }
  /// Drops the highest limbs that are zero.
  void Trim() {
    const Limb* const limbs = Data();
    std::size_t count = m_count;
    while (count > 0 && limbs[count - 1] == 0)
      --count;
    if (m_count > kNear && count <= kNear) std::copy(limbs, limbs + count, m_near);
    m_count = count;
  }

private:
  static constexpr std::size_t kNear = 40;

  void Resize(std::size_t count) {
    if (count > kNear) m_far.resize(count);
    m_count = count;
  }
  void Take(Limbs& other) noexcept {
    m_count = other.m_count;
    if (m_count > kNear) {
      m_far = std::move(other.m_far);
      other.m_count = 0;
    } else {
      std::copy(other.m_near, other.m_near + m_count, m_near);
    }
  }

  std::size_t m_count = 0;
  Limb m_near[kNear];      ///< those of a number with at most so many
  std::vector<Limb> m_far; ///< those of any other number
};

/// A natural number of any size times a power of two. It is used only for rare decisions whose
/// terms doubles do not hold. Numbers of more than 1280 bits allocate.
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

  bool IsZero() const { return m_limbs.Count() == 0; }
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

  Limbs m_limbs;      ///< from the lowest limb; the last limb is not zero
  int m_exponent = 0; ///< the exponent of the lowest bit
};

} // namespace gsl_exact

#endif
