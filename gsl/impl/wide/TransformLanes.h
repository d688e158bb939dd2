#ifndef GSL_WIDE_TRANSFORM_LANES_H
#define GSL_WIDE_TRANSFORM_LANES_H

#include "wide/LaneCoords.h"

/// gsl_arithmetic::TransformPoint, one point in each lane.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

GSL_ALWAYS_INLINE Doubles TransformedCoordinate(const double (&row)[4], const Coords& p) {
  return Times(&row[0], p.x) + Times(&row[1], p.y) + Times(&row[2], p.z) + Splat(row[3]);
}

inline void TransformPoints(const TransformBatch& batch) {
  // The output may be anything of doubles, so the entries are copied for the loop.
  double m[3][4];
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 4; ++c)
      m[r][c] = (*batch.matrix)[r][c];
  }
  ForGroups(
      batch, [&batch, &m ](std::size_t k) __attribute__((always_inline)) {
        const Coords p = LoadPoints(batch.in, k);
        StorePacked(batch.out + 3 * k,
                    {TransformedCoordinate(m[0], p), TransformedCoordinate(m[1], p),
                     TransformedCoordinate(m[2], p)});
      });
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
