#ifndef GSL_KERNEL_BOX_H
#define GSL_KERNEL_BOX_H

#include "kernel/Matrix.h"

#include <initializer_list>

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

/// Returns the box around the eight transformed corners.
inline Box TransformBox(const Box& box, const Matrix4& m) {
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

} // namespace gsl_kernel

#endif
