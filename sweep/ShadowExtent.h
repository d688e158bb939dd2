#ifndef GSL_SWEEP_SHADOW_EXTENT_H
#define GSL_SWEEP_SHADOW_EXTENT_H

#include "Box.h"
#include "PairKernel.h"

#include "ExactArithmetic.h"

#include <algorithm>
#include <cmath>

namespace gsl_sweep {

/// The extents of a shadow along two axes across the direction of travel.
struct ShadowExtent {
  double low[2], high[2];

  void Include(const ShadowExtent& other) {
    for (int side = 0; side < 2; ++side) {
      low[side] = std::min(low[side], other.low[side]);
      high[side] = std::max(high[side], other.high[side]);
    }
  }

  /// Returns false when the shadows share at most a border.
  bool MayShareArea(const ShadowExtent& other) const {
    return low[0] < other.high[0] && other.low[0] < high[0] && low[1] < other.high[1] &&
           other.low[1] < high[1];
  }
};

/// Measures the extents of shadows. They are exact where every product and difference is, and wider
/// elsewhere.
/// Range      of coordinates and direction: no product of two has a remainder below 2^-1074.
class ShadowAxes {
public:
  explicit ShadowAxes(const TravelDirection& direction)
      : m_along(direction.Dominant()), m_axis{m_along == 2 ? 0 : m_along + 1, 0} {
    m_axis[1] = 3 - m_along - m_axis[0];
    const Coord3& d = direction.Vector();
    m_direction[0] = d.x;
    m_direction[1] = d.y;
    m_direction[2] = d.z;
  }

  ShadowExtent Of(const double (&p)[3]) const {
    ShadowExtent extent;
    for (int side = 0; side < 2; ++side) {
      const int axis = m_axis[side];
      const Bounds at = Across(p[axis], p[m_along], axis);
      extent.low[side] = at.low;
      extent.high[side] = at.high;
    }
    return extent;
  }

  template <class Scalar>
  ShadowExtent Of(const Box<Scalar>& box) const {
    ShadowExtent extent;
    for (int side = 0; side < 2; ++side) {
      const int axis = m_axis[side];
      // A coordinate is greatest where its first term is greatest and its second is least.
      const bool rises = m_direction[axis] == 0.0 || m_direction[m_along] > 0.0;
      const bool falls = m_direction[axis] > 0.0;
      const Scalar first[2] = {rises ? box.low[axis] : box.high[axis],
                               rises ? box.high[axis] : box.low[axis]};
      const Scalar second[2] = {falls ? box.high[m_along] : box.low[m_along],
                                falls ? box.low[m_along] : box.high[m_along]};
      extent.low[side] = Across(first[0], second[0], axis).low;
      extent.high[side] = Across(first[1], second[1], axis).high;
    }
    return extent;
  }

private:
  struct Bounds {
    double low, high;
  };

  /// Bounds p * d[along] - q * d[axis], where p and q are coordinates of a point along these axes.
  /// It is the same at all points of a line along d. Where d has no such component, it is p.
  //
  // Both products and their difference are off by 2^-53 of themselves, together by less than 2^-51
  // of both terms, unless all three have no remainder. The bounds are rounded by 2^-53 of at most
  // twice the terms each, which is within the rest of 2^-50.
  Bounds Across(double p, double q, int axis) const {
    if (m_direction[axis] == 0.0) return {p, p};
    const DoubleDouble over = gsl_exact::TwoProduct(p, m_direction[m_along]);
    const DoubleDouble under = gsl_exact::TwoProduct(q, m_direction[axis]);
    const DoubleDouble across = gsl_exact::TwoDifference(over.hi, under.hi);
    if (over.lo == 0.0 && under.lo == 0.0 && across.lo == 0.0) return {across.hi, across.hi};
    const double error = 0x1p-50 * (std::fabs(over.hi) + std::fabs(under.hi));
    return {across.hi - error, across.hi + error};
  }

  int m_along;
  int m_axis[2];
  double m_direction[3];
};

} // namespace gsl_sweep

#endif
