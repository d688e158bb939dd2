#include "ExactRatio.h"

#include "BigNatural.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace gsl_exact {

namespace {

constexpr int kLimbBits = 32;
constexpr int kMantissaBits = 53;

/// Returns the exponent of the lowest bit in the mantissa of a double; -1074 for the least double.
int UnitExponent(double value) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  const int biased = static_cast<int>(bits >> (kMantissaBits - 1) & 0x7ffU);
  return std::max(biased, 1) - 1075;
}

std::uint64_t MantissaOf(double value) {
  constexpr std::uint64_t kLeading = std::uint64_t{1} << (kMantissaBits - 1);
  std::uint64_t bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  const bool isNormal = (bits >> (kMantissaBits - 1) & 0x7ffU) != 0;
  return (bits & (kLeading - 1)) | (isNormal ? kLeading : 0);
}

/// The magnitude of an expansion as a whole number of units of 2^exponent. The lowest bits of a
/// product of two determinants are below the least double, so floating point cannot hold it.
class WideNumber {
public:
  /// Requires at least one component, and no component with a bit below 2^exponent.
  WideNumber(const Expansion<192>& value, int exponent) {
    const int last = value.count - 1;
    const int top = UnitExponent(value.component[last]) + kMantissaBits - exponent;
    m_count = static_cast<std::size_t>(top / kLimbBits) + 3;
    std::fill_n(m_limbs, m_count, 0U);
    // From the largest component down, so that the number never falls below zero.
    for (int k = last; k >= 0; --k) {
      const double c = value.component[k];
      const bool adds = (c > 0.0) == (value.component[last] > 0.0);
      Shifted(MantissaOf(c), UnitExponent(c) - exponent, adds);
    }
    while (m_limbs[m_count - 1] == 0)
      --m_count;
  }

  /// Returns the sign of a * b - c * d.
  static int CompareProducts(const WideNumber& a, const WideNumber& b, const WideNumber& c,
                             const WideNumber& d) {
    std::uint32_t left[2 * kCapacity];
    std::uint32_t right[2 * kCapacity];
    const std::size_t count = std::max(a.m_count + b.m_count, c.m_count + d.m_count);
    std::fill_n(left, count, 0U);
    std::fill_n(right, count, 0U);
    Multiply(a, b, left);
    Multiply(c, d, right);
    for (std::size_t k = count; k > 0; --k) {
      if (left[k - 1] != right[k - 1]) return left[k - 1] < right[k - 1] ? -1 : 1;
    }
    return 0;
  }

private:
  // The range of double, 1074 bits below one and 1024 bits above, and one whole mantissa.
  static constexpr std::size_t kCapacity = (1074 + 1024) / kLimbBits + 4;

  /// Adds or subtracts bits * 2^shift.
  void Shifted(std::uint64_t bits, int shift, bool adds) {
    const auto limb = static_cast<std::size_t>(shift / kLimbBits);
    const int offset = shift % kLimbBits;
    const std::uint64_t low = (bits & 0xffffffffU) << offset;
    const std::uint64_t high = ((bits >> kLimbBits) << offset) + (low >> kLimbBits);
    const std::uint32_t parts[3] = {static_cast<std::uint32_t>(low),
                                    static_cast<std::uint32_t>(high),
                                    static_cast<std::uint32_t>(high >> kLimbBits)};
    if (adds) {
      Add(parts, limb);
    } else {
      Subtract(parts, limb);
    }
  }

  void Add(const std::uint32_t (&parts)[3], std::size_t limb) {
    std::uint64_t carry = 0;
    for (std::size_t k = 0; k < 3 || carry != 0; ++k) {
      carry += m_limbs[limb + k];
      if (k < 3) carry += parts[k];
      m_limbs[limb + k] = static_cast<std::uint32_t>(carry);
      carry >>= kLimbBits;
    }
  }

  void Subtract(const std::uint32_t (&parts)[3], std::size_t limb) {
    std::uint64_t borrow = 0;
    for (std::size_t k = 0; k < 3 || borrow != 0; ++k) {
      const std::uint64_t taken = (k < 3 ? parts[k] : 0U) + borrow;
      borrow = m_limbs[limb + k] < taken ? 1 : 0;
      m_limbs[limb + k] = static_cast<std::uint32_t>(m_limbs[limb + k] - taken);
    }
  }

  static void Multiply(const WideNumber& a, const WideNumber& b, std::uint32_t* product) {
    for (std::size_t i = 0; i < a.m_count; ++i) {
      std::uint64_t carry = 0;
      for (std::size_t j = 0; j < b.m_count; ++j) {
        carry += static_cast<std::uint64_t>(a.m_limbs[i]) * b.m_limbs[j] + product[i + j];
        product[i + j] = static_cast<std::uint32_t>(carry);
        carry >>= kLimbBits;
      }
      product[i + b.m_count] = static_cast<std::uint32_t>(carry);
    }
  }

  std::uint32_t m_limbs[kCapacity];
  std::size_t m_count;
};

/// Returns an exponent such that no bit of either expansion is below 2 to that power.
int LowestExponent(const Expansion<192>& a, const Expansion<192>& b) {
  return std::min(UnitExponent(a.component[0]), UnitExponent(b.component[0]));
}

/// Compares the ratios by their rounded values; returns 0 when these are too close to decide.
int CompareRounded(const ExactRatio& a, const ExactRatio& b) {
  // Rounded values below this bound have lost bits to underflow.
  constexpr double kLeastMagnitude = 0x1p-850;
  constexpr double kRelativeBound = 0x1p-85;
  const double magnitude = std::fabs(a.rounded.hi) + std::fabs(b.rounded.hi);
  const double difference = Plus(a.rounded, Minus(b.rounded)).hi;
  if (!(magnitude > kLeastMagnitude) || !(std::fabs(difference) > kRelativeBound * magnitude)) {
    return 0;
  }
  return difference < 0.0 ? -1 : 1;
}

Expansion<6> SquaredLength(const Coord3& v) {
  return Sum(Sum(Expand(TwoProduct(v.x, v.x)), Expand(TwoProduct(v.y, v.y))),
             Expand(TwoProduct(v.z, v.z)));
}

/// CompareLength by rounded values; returns 0 when these are too close to decide.
int CompareRoundedLength(const ExactRatio& ratio, const Coord3& vector,
                         const ScaledLength& length) {
  // Between these bounds the product has all its bits.
  constexpr double kLeast = 0x1p-850;
  constexpr double kGreatest = 0x1p900;
  // The relative error of the ratio is below 2^-90, and the error of the root and the product is
  // below 2^-98.
  constexpr double kRelativeBound = 0x1p-85;
  const DoubleDouble product = Times(ratio.rounded, Root(SquaredLength(vector).Rounded()));
  if (!(product.hi > kLeast && product.hi < kGreatest)) return 0;
  const double limit = std::ldexp(length.value, length.exponent);
  if (limit >= kGreatest) return -1;
  if (limit <= kLeast) return 1;
  const double difference = Plus(product, {-limit, 0.0}).hi;
  if (!(std::fabs(difference) > kRelativeBound * limit)) return 0;
  return difference < 0.0 ? -1 : 1;
}

int SignOf(const ExactRatio& ratio) {
  return ratio.numerator.Sign() * ratio.denominator.Sign();
}

} // namespace

void ExactRatio::Set(const Expansion<192>& over, const Expansion<192>& under) {
  numerator = over;
  denominator = under;
  rounded = over.count == 0 ? DoubleDouble{} : Over(over.Rounded(), under.Rounded());
}

int CompareRatios(const ExactRatio& a, const ExactRatio& b) {
  const int sign = SignOf(a);
  if (sign != SignOf(b)) return sign < SignOf(b) ? -1 : 1;
  if (sign == 0) return 0;
  const int rounded = CompareRounded(a, b);
  if (rounded != 0) return rounded;
  const int above = LowestExponent(a.numerator, b.numerator);
  const int below = LowestExponent(a.denominator, b.denominator);
  const int larger =
      WideNumber::CompareProducts(WideNumber(a.numerator, above), WideNumber(b.denominator, below),
                                  WideNumber(b.numerator, above), WideNumber(a.denominator, below));
  return sign * larger;
}

int CompareLength(const ExactRatio& ratio, const Coord3& vector, const ScaledLength& length) {
  if (!(length.value > 0.0)) return 1;
  if (std::isinf(length.value)) return -1;
  const int rounded = CompareRoundedLength(ratio, vector, length);
  if (rounded != 0) return rounded;
  // Both sides are positive, so their squares compare in the same way. With the ratio n / d this
  // compares n^2 |vector|^2 with length^2 d^2, and all factors are exact.
  const BigNatural over = BigNatural::MagnitudeOf(ratio.numerator);
  const BigNatural under = BigNatural::MagnitudeOf(ratio.denominator);
  const BigNatural limit(length.value, length.exponent);
  const BigNatural squared = BigNatural::MagnitudeOf(SquaredLength(vector));
  const auto times = BigNatural::Times;
  return BigNatural::Compare(times(times(over, over), squared),
                             times(times(limit, limit), times(under, under)));
}

} // namespace gsl_exact
