#ifndef GSL_KERNEL_BOX_H
#define GSL_KERNEL_BOX_H

#include "kernel/Matrix.h"

#include <initializer_list>
#include <limits>

namespace gsl_kernel {

using gsl_arithmetic::LowerTo;
using gsl_arithmetic::RaiseTo;

struct Box {
  Coord3 min, max;
};

// empty-box-counts-minus-one: its extent is -1, which rounding hides beside a huge box.
constexpr Box kEmptyBox = {{0.0, 0.0, 0.0}, {-1.0, -1.0, -1.0}};

/// Grows a box that is not empty.
inline void Grow(Box& box, const Box& other) {
  LowerTo(box.min, other.min);
  RaiseTo(box.max, other.max);
}

/// Returns the box around the eight transformed corners, one after the other.
inline Box TransformBoxByCorners(const Box& box, const Matrix4& m) {
  const Coord3 c = {0.5 * (box.min.x + box.max.x), 0.5 * (box.min.y + box.max.y),
                    0.5 * (box.min.z + box.max.z)};
  const Coord3 h = Multiply(Subtract(box.max, box.min), 0.5);
  Box result = kEmptyBox;
  bool first = true;
  for (const double sx : {-1.0, 1.0}) {
    for (const double sy : {-1.0, 1.0}) {
      for (const double sz : {-1.0, 1.0}) {
        const Coord3 corner = TransformPoint(m, Add(c, {sx * h.x, sy * h.y, sz * h.z}));
        if (first) {
          result = {corner, corner};
        } else {
          Grow(result, {corner, corner});
        }
        first = false;
      }
    }
  }
  return result;
}

struct Extent {
  double low, high;
};

/// Returns the products with both numbers, in order. Where they are equal or the second is NaN,
/// the first is both.
inline Extent ProductsInOrder(double factor, double a, double b) {
  const double pa = factor * a, pb = factor * b;
  return {pb < pa ? pb : pa, pa < pb ? pb : pa};
}

/// Returns the box around the eight transformed corners.
// Rounding keeps the order of numbers. So the least of the eight sums is the sum of the least
// products, and the same holds for the greatest. Two equal zeros can have different signs, of which
// the first corner's counts. A sum is -0 only where all its terms are -0, and the first of two zero
// products is that of the first such corner. A NaN is in order with nothing. A first product of NaN
// makes the least sum NaN. A second product of NaN limits nothing, and neither do the corners that
// have it. Where the least sum is finite, the greatest sum has only finite and +infinite terms.
inline Box TransformBox(const Box& box, const Matrix4& m) {
  const Coord3 c = {0.5 * (box.min.x + box.max.x), 0.5 * (box.min.y + box.max.y),
                    0.5 * (box.min.z + box.max.z)};
  const Coord3 h = Multiply(Subtract(box.max, box.min), 0.5);
  const Coord3 low = Subtract(c, h), high = Add(c, h);
  Extent e[3];
  bool isPlain = true;
  for (int r = 0; r < 3; ++r) {
    const Extent x = ProductsInOrder(m[r][0], low.x, high.x);
    const Extent y = ProductsInOrder(m[r][1], low.y, high.y);
    const Extent z = ProductsInOrder(m[r][2], low.z, high.z);
    e[r] = {x.low + y.low + z.low + m[r][3], x.high + y.high + z.high + m[r][3]};
    const double largest = std::numeric_limits<double>::max();
    isPlain &= std::fabs(e[r].low) <= largest;
  }
  if (!isPlain) return TransformBoxByCorners(box, m);
  return {{e[0].low, e[1].low, e[2].low}, {e[0].high, e[1].high, e[2].high}};
}

} // namespace gsl_kernel

#endif
