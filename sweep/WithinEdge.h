#ifndef GSL_SWEEP_WITHIN_EDGE_H
#define GSL_SWEEP_WITHIN_EDGE_H

#include "Box.h"

#include <algorithm>
#include <cmath>

/// Bounds a height, which is linear, where another linear function, the side of an edge, is not
/// negative: on the inner side of the edge.
///
/// For any m >= 0 the height is at most height + m * side there. That is linear too, so its
/// greatest value over a triangle or a box is at a corner, and a few m give the least such bound.
/// Every m gives a true bound, so that the rounding of m does not matter.
namespace gsl_sweep {

/// Bounds the roundings of a sum of a linear function and a multiple of another one, as a part of
/// the magnitudes of its terms: a product and up to ten sums, of 2^-53 each. The errors that are
/// added too are not terms, because they are larger than what they bound by more than that.
constexpr double kCombined = 0x1p-49;

/// Returns at least the height of every mean of three corners whose side is not negative: height
/// and side are those of the corners. It is infinity where the edge bounds nothing.
//
// The bound is least where two corners are equal, or at m = 0, which is left out. A term below the
// range of double makes a corner NaN, which std::max leaves out: such a corner is far below others.
inline double GreatestWithin(const double (&height)[3], const double (&side)[3]) {
  double least = Box<double>::kFar;
  for (int a = 0; a < 3; ++a) {
    const int b = a == 2 ? 0 : a + 1;
    const double factor = (height[a] - height[b]) / (side[b] - side[a]);
    if (!(factor > 0.0 && factor < Box<double>::kFar)) continue;
    double greatest = -Box<double>::kFar;
    for (int c = 0; c < 3; ++c) {
      const double term = factor * side[c];
      const double rounding = (std::fabs(height[c]) + std::fabs(term)) * kCombined;
      greatest = std::max(greatest, height[c] + term + rounding);
    }
    least = std::min(least, greatest);
  }
  return least;
}

/// A linear function over a box: its value in the middle and its slopes along the axes.
struct Linear {
  double middle, slope[3];
  double error; ///< of any value in the box
};

/// Returns how much a value in the box differs from the value in its middle, at most. `half` is
/// half the size of the box along each axis.
inline double SpreadOf(const Linear& linear, const double (&half)[3]) {
  double spread = linear.error;
  for (int x = 0; x < 3; ++x)
    spread += std::fabs(linear.slope[x]) * half[x];
  return spread;
}

/// Returns at least the height of every point of a box at which sign * side is not negative, for a
/// sign of 1 or -1. It is infinity where the edge bounds nothing.
//
// The greatest value over the box is least where it does not change along one of the axes. Beyond
// the range of double it is NaN, which std::min leaves out.
inline double GreatestWithin(const Linear& height, const Linear& side, double sign,
                             const double (&half)[3]) {
  double least = Box<double>::kFar;
  for (int axis = 0; axis < 3; ++axis) {
    const double factor = -height.slope[axis] / (sign * side.slope[axis]);
    if (!(factor > 0.0 && factor < Box<double>::kFar)) continue;
    const double signedFactor = sign * factor;
    double greatest =
        height.middle + signedFactor * side.middle + height.error + factor * side.error;
    double terms = std::fabs(height.middle) + factor * std::fabs(side.middle);
    for (int x = 0; x < 3; ++x) {
      greatest += std::fabs(height.slope[x] + signedFactor * side.slope[x]) * half[x];
      terms += (std::fabs(height.slope[x]) + factor * std::fabs(side.slope[x])) * half[x];
    }
    least = std::min(least, greatest + terms * kCombined);
  }
  return least;
}

} // namespace gsl_sweep

#endif
