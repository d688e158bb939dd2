#ifndef POINT_CHECKS_H
#define POINT_CHECKS_H

#include "Numbers.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <gtest/gtest.h>

using numbers::kInfinity;
using numbers::kNaN;
using numbers::kSentinel;
using numbers::SameBits;

/// The value of outputs before a call that must not write them.
inline gsl_Point Sentinel() {
  return {kSentinel, kSentinel - 1.0, kSentinel - 2.0};
}

inline bool SameBits(const gsl_Point& a, const gsl_Point& b) {
  return SameBits(a.x, b.x) && SameBits(a.y, b.y) && SameBits(a.z, b.z);
}

/// Returns whether the coordinates and the identity equal those of `expected`, bit for bit.
inline testing::AssertionResult Is(const gsl_Point& actual, const gsl_Point& expected) {
  if (SameBits(actual, expected) && actual.uid == expected.uid) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure()
         << '(' << actual.x << ", " << actual.y << ", " << actual.z << ") is not (" << expected.x
         << ", " << expected.y << ", " << expected.z << ')'
         << (actual.uid == expected.uid ? "" : ", another identity");
}

/// Returns whether the coordinates are exactly these (-0 counts as 0).
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
