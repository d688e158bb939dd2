#ifndef GSL_SWEEP_BOX_H
#define GSL_SWEEP_BOX_H

#include <algorithm>
#include <cmath>
#include <limits>

namespace gsl_sweep {

/// The closed extents of an object along the axes.
template <class Scalar>
struct Box {
  Scalar low[3], high[3];

  static constexpr Scalar kFar = std::numeric_limits<Scalar>::infinity();
  static Box Empty() { return {{kFar, kFar, kFar}, {-kFar, -kFar, -kFar}}; }

  void Include(const Box& other) {
    for (int k = 0; k < 3; ++k) {
      low[k] = std::min(low[k], other.low[k]);
      high[k] = std::max(high[k], other.high[k]);
    }
  }

  /// Returns the sum of its lengths along the axes.
  Scalar Size() const { return (high[0] - low[0]) + (high[1] - low[1]) + (high[2] - low[2]); }

  /// Returns at least |x| + |y| + |z| of every point in it, as long as the sum is exact.
  double Reach() const {
    double reach = 0.0;
    for (int k = 0; k < 3; ++k) {
      reach +=
          std::max(std::fabs(static_cast<double>(low[k])), std::fabs(static_cast<double>(high[k])));
    }
    return reach;
  }
};

/// Returns true when two boxes have a point in common.
template <class Scalar>
bool ShareAPoint(const Box<Scalar>& a, const Box<Scalar>& b) {
  for (int k = 0; k < 3; ++k) {
    if (a.high[k] < b.low[k] || b.high[k] < a.low[k]) return false;
  }
  return true;
}

/// Returns the float at or below x. A number whose magnitude is below 2^-100 becomes 0 or -2^-100,
/// so that differences of such floats are never subnormal.
inline float RoundedDown(double x) {
  constexpr double kLeast = 0x1p-100;
  if (x < kLeast && x > -kLeast) return x < 0.0 ? -0x1p-100f : 0.0f;
  volatile float rounded = static_cast<float>(x);
  const float nearest = rounded;
  return static_cast<double>(nearest) > x
             ? std::nextafter(nearest, -std::numeric_limits<float>::infinity())
             : nearest;
}

/// Returns the float at or above x in the same way.
inline float RoundedUp(double x) {
  return -RoundedDown(-x);
}

} // namespace gsl_sweep

#endif
