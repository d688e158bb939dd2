#ifndef GSL_EXACT_EXACT_ARITHMETIC_H
#define GSL_EXACT_EXACT_ARITHMETIC_H

#include <cmath>

/// Sums and products of doubles without rounding error, as sums of doubles that do not overlap.
///
/// Source     Shewchuk, Adaptive Precision Floating-Point Arithmetic and Fast Robust Geometric
///            Predicates, 1997; Dekker 1971 for the product and the double-double operations.
/// Range      exact while no product overflows and no error term is subnormal; the callers
///            ensure that.
namespace gsl_exact {

/// The number hi + lo, where hi is the double nearest to the sum.
struct DoubleDouble {
  double hi = 0.0, lo = 0.0;
};

/// Returns a + b exactly.
inline DoubleDouble TwoSum(double a, double b) {
  const double sum = a + b;
  const double bRounded = sum - a;
  const double aRounded = sum - bRounded;
  return {sum, (a - aRounded) + (b - bRounded)};
}

/// Returns a + b exactly. Requires |a| >= |b| or a == 0.
inline DoubleDouble FastTwoSum(double a, double b) {
  const double sum = a + b;
  return {sum, b - (sum - a)};
}

/// Returns a - b exactly.
inline DoubleDouble TwoDifference(double a, double b) {
  return TwoSum(a, -b);
}

/// Splits a number into two halves of at most 26 bits each.
inline DoubleDouble Split(double a) {
  const double scaled = 134217729.0 * a; // 2^27 + 1
  const double hi = scaled - (scaled - a);
  return {hi, a - hi};
}

/// Returns a * b exactly.
inline DoubleDouble TwoProduct(double a, double b) {
  const double product = a * b;
  const DoubleDouble x = Split(a);
  const DoubleDouble y = Split(b);
  const double error = ((x.hi * y.hi - product) + x.hi * y.lo + x.lo * y.hi) + x.lo * y.lo;
  return {product, error};
}

/// Double-double operations, with a relative error below 2^-100.
inline DoubleDouble Plus(const DoubleDouble& a, const DoubleDouble& b) {
  const DoubleDouble high = TwoSum(a.hi, b.hi);
  const DoubleDouble low = TwoSum(a.lo, b.lo);
  const DoubleDouble first = FastTwoSum(high.hi, high.lo + low.hi);
  return FastTwoSum(first.hi, first.lo + low.lo);
}

inline DoubleDouble Minus(const DoubleDouble& a) {
  return {-a.hi, -a.lo};
}

inline DoubleDouble Times(const DoubleDouble& a, const DoubleDouble& b) {
  const DoubleDouble product = TwoProduct(a.hi, b.hi);
  return FastTwoSum(product.hi, product.lo + (a.hi * b.lo + a.lo * b.hi));
}

/// Requires b other than zero.
inline DoubleDouble Over(const DoubleDouble& a, const DoubleDouble& b) {
  // Both numbers are scaled to be near 1, so that no error term below is lost to underflow.
  int aExponent = 0;
  int bExponent = 0;
  std::frexp(a.hi, &aExponent);
  std::frexp(b.hi, &bExponent);
  const DoubleDouble x{std::ldexp(a.hi, -aExponent), std::ldexp(a.lo, -aExponent)};
  const DoubleDouble y{std::ldexp(b.hi, -bExponent), std::ldexp(b.lo, -bExponent)};
  const double first = x.hi / y.hi;
  const DoubleDouble rest = Plus(x, Minus(Times({first, 0.0}, y)));
  const double second = rest.hi / y.hi;
  const DoubleDouble last = Plus(rest, Minus(Times({second, 0.0}, y)));
  const DoubleDouble quotient = Plus(FastTwoSum(first, second), {last.hi / y.hi, 0.0});
  const int exponent = aExponent - bExponent;
  return {std::ldexp(quotient.hi, exponent), std::ldexp(quotient.lo, exponent)};
}

/// Returns the square root of a positive number.
inline DoubleDouble Root(const DoubleDouble& a) {
  const double root = std::sqrt(a.hi);
  const DoubleDouble rest = Plus(a, Minus(TwoProduct(root, root)));
  return FastTwoSum(root, rest.hi / (2.0 * root));
}

/// An exact sum of doubles. Its components do not overlap, grow in magnitude and are not zero.
template <int kCapacity>
struct Expansion {
  double component[kCapacity];
  int count = 0;

  Expansion() = default;
  Expansion(const Expansion& other) { *this = other; }
  ~Expansion() = default;
  /// Copies only the components that are in use.
  Expansion& operator=(const Expansion& other) {
    count = other.count;
    for (int k = 0; k < count; ++k)
      component[k] = other.component[k];
    return *this;
  }

  void Append(double c) {
    if (c != 0.0) component[count++] = c;
  }

  int Sign() const {
    if (count == 0) return 0;
    return component[count - 1] > 0.0 ? 1 : -1;
  }

  DoubleDouble Rounded() const {
    DoubleDouble sum;
    for (int k = count - 1; k >= 0; --k)
      sum = Plus(sum, {component[k], 0.0});
    return sum;
  }
};

inline Expansion<2> Expand(const DoubleDouble& a) {
  Expansion<2> result;
  result.Append(a.lo);
  result.Append(a.hi);
  return result;
}

/// Returns a + b (Shewchuk's fast expansion sum).
template <int N, int M>
Expansion<N + M> Sum(const Expansion<N>& a, const Expansion<M>& b) {
  Expansion<N + M> result;
  int i = 0;
  int j = 0;
  const auto next = [&] {
    const bool takeA =
        j == b.count || (i < a.count && std::fabs(a.component[i]) < std::fabs(b.component[j]));
    return takeA ? a.component[i++] : b.component[j++];
  };
  const int total = a.count + b.count;
  if (total == 0) return result;
  double carry = next();
  for (int k = 1; k < total; ++k) {
    const DoubleDouble sum = TwoSum(carry, next());
    result.Append(sum.lo);
    carry = sum.hi;
  }
  result.Append(carry);
  return result;
}

/// Returns a * factor (Shewchuk's scaled expansion).
template <int N>
Expansion<2 * N> Scaled(const Expansion<N>& a, double factor) {
  Expansion<2 * N> result;
  if (a.count == 0) return result;
  const DoubleDouble first = TwoProduct(a.component[0], factor);
  result.Append(first.lo);
  double carry = first.hi;
  for (int k = 1; k < a.count; ++k) {
    const DoubleDouble product = TwoProduct(a.component[k], factor);
    const DoubleDouble low = TwoSum(carry, product.lo);
    result.Append(low.lo);
    const DoubleDouble high = FastTwoSum(product.hi, low.hi);
    result.Append(high.lo);
    carry = high.hi;
  }
  result.Append(carry);
  return result;
}

/// Returns a * b for a factor of two components.
template <int N>
Expansion<4 * N> Product(const Expansion<N>& a, const DoubleDouble& b) {
  return Sum(Scaled(a, b.lo), Scaled(a, b.hi));
}

template <int N>
Expansion<N> Minus(Expansion<N> a) {
  for (int k = 0; k < a.count; ++k)
    a.component[k] = -a.component[k];
  return a;
}

} // namespace gsl_exact

#endif
