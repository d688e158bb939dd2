#ifndef TESTS_NUMBERS_H
#define TESTS_NUMBERS_H

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

/// Numbers that tests build limits and bad input from.
namespace numbers {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kSmallestNormal = std::numeric_limits<double>::min();
constexpr double kDenormal = std::numeric_limits<double>::denorm_min();
constexpr double kPi = 3.141592653589793;

/// What outputs hold before a call that must leave them alone.
constexpr double kSentinel = -987654.25;

inline double Above(double x) {
  return std::nextafter(x, kInfinity);
}

inline double Below(double x) {
  return std::nextafter(x, -kInfinity);
}

inline std::uint64_t Bits(double x) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &x, sizeof bits);
  return bits;
}

/// The same bits; one NaN is as good as another.
inline bool SameBits(double a, double b) {
  return Bits(a) == Bits(b) || (std::isnan(a) && std::isnan(b));
}

/// Values that no caller would choose.
inline const std::vector<double>& Hostile() {
  static const std::vector<double> values = {
      0.0,       -0.0,       kDenormal, -kDenormal, kSmallestNormal, 1e-200, -1e-160,  1e-7,
      1e-6,      -1.0,       1.0,       3e9,        -1e160,          1e200,  kLargest, -kLargest,
      kInfinity, -kInfinity, kNaN};
  return values;
}

/// A small deterministic generator, so that a failure can be repeated from its seed.
class Random {
public:
  explicit Random(std::uint64_t seed) : state(seed) {}

  std::uint64_t Next() {
    std::uint64_t z = (state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }

  /// In [low, high).
  double Between(double low, double high) {
    return low + static_cast<double>(Next() >> 11) * 0x1p-53 * (high - low);
  }

  int Below(int n) { return static_cast<int>(Next() % static_cast<std::uint64_t>(n)); }

  double Hostile() {
    const std::vector<double>& all = numbers::Hostile();
    return all[static_cast<std::size_t>(Below(static_cast<int>(all.size())))];
  }

private:
  std::uint64_t state;
};

} // namespace numbers

/// Exact components of a vector or point.
#define EXPECT_XYZ(actual, ex, ey, ez)                                                             \
  do {                                                                                             \
    const auto& xyzActual = (actual);                                                              \
    EXPECT_EQ(xyzActual.x, (ex));                                                                  \
    EXPECT_EQ(xyzActual.y, (ey));                                                                  \
    EXPECT_EQ(xyzActual.z, (ez));                                                                  \
  } while (false)

#define EXPECT_XYZ_NEAR(actual, ex, ey, ez, tol)                                                   \
  do {                                                                                             \
    const auto& xyzActual = (actual);                                                              \
    EXPECT_NEAR(xyzActual.x, (ex), (tol));                                                         \
    EXPECT_NEAR(xyzActual.y, (ey), (tol));                                                         \
    EXPECT_NEAR(xyzActual.z, (ez), (tol));                                                         \
  } while (false)

#endif
