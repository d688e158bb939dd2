#ifndef POINT_CHECKS_H
#define POINT_CHECKS_H

#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// What outputs hold before a call that must not write them.
inline gsl_Point Sentinel() {
  return {-901.5, 902.25, -903.125};
}
constexpr double kSentinelNumber = -77.0625;

inline bool SameBits(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

/// The coordinates and the identity of `expected`, bit for bit.
inline testing::AssertionResult Is(const gsl_Point& actual, const gsl_Point& expected) {
  if (SameBits(actual.x, expected.x) && SameBits(actual.y, expected.y) &&
      SameBits(actual.z, expected.z) && actual.uid == expected.uid) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure()
         << '(' << actual.x << ", " << actual.y << ", " << actual.z << ") is not (" << expected.x
         << ", " << expected.y << ", " << expected.z << ')'
         << (actual.uid == expected.uid ? "" : ", another identity");
}

/// Exactly these coordinates (-0 counts as 0).
inline testing::AssertionResult IsAt(const gsl_Point& actual, double x, double y, double z) {
  if (actual.x == x && actual.y == y && actual.z == z) return testing::AssertionSuccess();
  return testing::AssertionFailure() << '(' << actual.x << ", " << actual.y << ", " << actual.z
                                     << ") is not (" << x << ", " << y << ", " << z << ')';
}

inline testing::AssertionResult IsAt(const gsl_Vector& actual, double x, double y, double z) {
  return IsAt(gsl_Point(actual.x, actual.y, actual.z), x, y, z);
}

inline testing::AssertionResult IsNear(const gsl_Point& actual, double x, double y, double z,
                                       double tolerance) {
  if (actual.GetDistance(gsl_Point(x, y, z)) <= tolerance) return testing::AssertionSuccess();
  return testing::AssertionFailure() << '(' << actual.x << ", " << actual.y << ", " << actual.z
                                     << ") is not near (" << x << ", " << y << ", " << z << ')';
}

#endif
