#ifndef GSL_WIDE_BOX_LANES_H
#define GSL_WIDE_BOX_LANES_H

#include "wide/LaneCoords.h"

/// gsl_kernel::TransformBox, one box in each lane, and the box around points.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

struct LaneExtent {
  Doubles low, high;
};

GSL_ALWAYS_INLINE LaneExtent ProductsInOrder(double factor, Doubles a, Doubles b) {
  const Doubles pa = Splat(factor) * a, pb = Splat(factor) * b;
  return {pb < pa ? pb : pa, pa < pb ? pb : pa};
}

/// Returns the lanes whose box is neither empty nor left to the scalar kernel, and writes their
/// extents.
GSL_ALWAYS_INLINE Bits TransformedExtents(const Coords& min, const Coords& max,
                                          const double (&m)[4][4], LaneExtent (&e)[3]) {
  const Doubles half = Splat(0.5);
  const Coords c = {half * (min.x + max.x), half * (min.y + max.y), half * (min.z + max.z)};
  const Coords h = Multiply(Subtract(max, min), half);
  const Coords low = Subtract(c, h), high = Add(c, h);
  const Doubles largest = Splat(__DBL_MAX__);
  Bits isPlain = ~((min.x > max.x) | (min.y > max.y) | (min.z > max.z));
  for (int r = 0; r < 3; ++r) {
    const LaneExtent x = ProductsInOrder(m[r][0], low.x, high.x);
    const LaneExtent y = ProductsInOrder(m[r][1], low.y, high.y);
    const LaneExtent z = ProductsInOrder(m[r][2], low.z, high.z);
    const Doubles t = Splat(m[r][3]);
    e[r] = {x.low + y.low + z.low + t, x.high + y.high + z.high + t};
    isPlain &= Magnitude(e[r].low) <= largest;
  }
  return isPlain;
}

inline void TransformBoxes(const BoxBatch& batch) {
  ForGroups(
      batch, [&batch](std::size_t k) __attribute__((always_inline)) {
        LaneExtent e[3];
        const Bits isDone = TransformedExtents(LoadPoints(batch.min, k), LoadPoints(batch.max, k),
                                               *batch.matrix, e);
        // The output may be the input, so the scalar kernel comes first.
        if (!AllLanes(isDone)) RunOthers(batch, k, isDone);
        for (int i = 0; i < kLanes; ++i) {
          if (isDone[i] == 0) continue;
          double* const to = batch.out + 6 * (k + static_cast<std::size_t>(i));
          for (int r = 0; r < 3; ++r) {
            to[r] = e[r].low[i];
            to[r + 3] = e[r].high[i];
          }
        }
      });
}

/// Returns the first coordinate of an axis that equals `value`, a bound of the axis.
inline double FirstAmongEqual(const PointsIn& points, std::size_t count, int axis, double value) {
  // Equal zeros can differ in their signs, and the first zero stays. Other equal numbers are the
  // same.
  if (value != 0.0) return value;
  for (std::size_t k = 0; k < count; ++k) {
    const double c = points.first[static_cast<std::ptrdiff_t>(k) * points.stride + axis];
    if (c == 0.0) return c;
  }
  return value;
}

/// Writes the box around points, min and then max, as gsl_BBox::Add does one after the other.
/// Requires a point.
inline void BoxOfPoints(const PointsIn& points, std::size_t count, double* box) {
  const double* const p = points.first;
  // Each lane begins at the first point, so a NaN there stays.
  Coords low = {Splat(p[0]), Splat(p[1]), Splat(p[2])};
  Coords high = low;
  std::size_t k = 0;
  for (; count - k >= kLanes; k += kLanes) {
    const Coords c = LoadPoints(points, k);
    low = {c.x < low.x ? c.x : low.x, c.y < low.y ? c.y : low.y, c.z < low.z ? c.z : low.z};
    high = {c.x > high.x ? c.x : high.x, c.y > high.y ? c.y : high.y, c.z > high.z ? c.z : high.z};
  }
  const Doubles lows[3] = {low.x, low.y, low.z}, highs[3] = {high.x, high.y, high.z};
  double found[6]; // the box may be among the points
  for (int axis = 0; axis < 3; ++axis) {
    double least = lows[axis][0], greatest = highs[axis][0];
    for (int i = 1; i < kLanes; ++i) {
      if (lows[axis][i] < least) least = lows[axis][i];
      if (highs[axis][i] > greatest) greatest = highs[axis][i];
    }
    for (std::size_t rest = k; rest < count; ++rest) {
      const double c = p[static_cast<std::ptrdiff_t>(rest) * points.stride + axis];
      if (c < least) least = c;
      if (c > greatest) greatest = c;
    }
    found[axis] = FirstAmongEqual(points, count, axis, least);
    found[axis + 3] = FirstAmongEqual(points, count, axis, greatest);
  }
  for (int i = 0; i < 6; ++i)
    box[i] = found[i];
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
