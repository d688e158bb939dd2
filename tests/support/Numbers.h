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

/// The value of outputs before a call that must not write them.
constexpr double kSentinel = -987654.25;

/// Returns the next double above x.
inline double Above(double x) {
  return std::nextafter(x, kInfinity);
}

/// Returns the next double below x.
inline double Below(double x) {
  return std::nextafter(x, -kInfinity);
}

inline std::uint64_t Bits(double x) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &x, sizeof bits);
  return bits;
}

/// Returns true for the same bits, and for any two NaN.
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

} // namespace numbers

/// Expects exact components of a vector or point.
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
