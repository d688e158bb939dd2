#ifndef GSL_SWEEP_PLACEMENT_H
#define GSL_SWEEP_PLACEMENT_H

#include "RangeScale.h"
#include "Tree.h"

#include <cmath>

namespace gsl_sweep {

/// The place of a body while a question is answered. The body is moved by an offset and, in double,
/// brought into the range of the pair kernel. In float the coordinates keep their size.
///
/// Each step rounds, and rounding keeps order. So the extents of moved corners are the moved
/// extents, and boxes that held their corners still do. Boxes can be enlarged by a margin on every
/// side; corners never are.
template <class Scalar>
class Placement {
public:
  Placement(const Coord3& offset, const RangeScale& scale, double margin = 0.0)
      : m_offset{offset.x, offset.y, offset.z}, m_scale(scale),
        m_margin(kIsSingle ? margin : scale.Down(margin)),
        m_hasOffset(offset.x != 0.0 || offset.y != 0.0 || offset.z != 0.0) {}

  bool HasOffset() const { return m_hasOffset; }
  bool HasMargin() const { return m_margin != 0.0; }
  Coord3 Offset() const { return {m_offset[0], m_offset[1], m_offset[2]}; }
  /// Returns the sum of the magnitudes of the offset.
  double OffsetReach() const {
    return std::fabs(m_offset[0]) + std::fabs(m_offset[1]) + std::fabs(m_offset[2]);
  }

  /// Returns the boxes at the place of the body; `room` may hold them.
  const Boxes<Scalar>& At(const Boxes<Scalar>& boxes, Boxes<Scalar>& room) const {
    if (IsPlain()) return boxes;
    for (int lane = 0; lane < 4; ++lane)
      room.Set(lane, At(boxes.At(lane)));
    return room;
  }
  Box<Scalar> At(const Box<Scalar>& box) const {
    if (IsPlain()) return box;
    Box<Scalar> placed;
    for (int k = 0; k < 3; ++k) {
      placed.low[k] = Down(Moved(box.low[k], k));
      placed.high[k] = Up(Moved(box.high[k], k));
    }
    return placed;
  }

  /// Returns the exact box of a triangle, in the coordinates of the walk, with the margin.
  Box<double> WithMargin(const Box<double>& box) const {
    if (m_margin == 0.0) return box;
    Box<double> result;
    for (int k = 0; k < 3; ++k) {
      result.low[k] = Lowered(box.low[k]);
      result.high[k] = Raised(box.high[k]);
    }
    return result;
  }

  /// Returns a corner, in the coordinates of the walk.
  Coord3 At(const Coord3& p) const {
    return {Walked(Moved(p.x, 0)), Walked(Moved(p.y, 1)), Walked(Moved(p.z, 2))};
  }

  /// Returns a box of exact extents, in the coordinates of the pair kernel.
  Box<double> InKernel(const Box<Scalar>& box) const {
    Box<double> result;
    for (int k = 0; k < 3; ++k) {
      result.low[k] = m_scale.Down(Moved(box.low[k], k));
      result.high[k] = m_scale.Down(Moved(box.high[k], k));
    }
    return result;
  }

  /// Converts from the coordinates of the walk to the coordinates of the pair kernel.
  double ToKernel(double c) const { return kIsSingle ? m_scale.Down(c) : c; }
  Coord3 ToKernel(const Coord3& p) const { return {ToKernel(p.x), ToKernel(p.y), ToKernel(p.z)}; }
  Box<double> ToKernel(const Box<double>& box) const {
    Box<double> result;
    for (int k = 0; k < 3; ++k) {
      result.low[k] = ToKernel(box.low[k]);
      result.high[k] = ToKernel(box.high[k]);
    }
    return result;
  }

private:
  static constexpr bool kIsSingle = sizeof(Scalar) == sizeof(float);
  static constexpr double kFar = Box<double>::kFar;

  bool IsPlain() const { return kIsSingle && !m_hasOffset && m_margin == 0.0; }
  /// Returns at most c - margin, and at least c + margin.
  double Lowered(double c) const {
    return m_margin == 0.0 ? c : std::nextafter(c - m_margin, -kFar);
  }
  double Raised(double c) const { return -Lowered(-c); }
  /// Without an offset a zero keeps its sign.
  double Moved(double c, int axis) const { return m_hasOffset ? c + m_offset[axis] : c; }
  double Walked(double c) const { return kIsSingle ? c : m_scale.Down(c); }
  Scalar Down(double c) const {
    if constexpr (kIsSingle) {
      return RoundedDown(Lowered(c));
    } else {
      return Lowered(m_scale.Down(c));
    }
  }
  Scalar Up(double c) const {
    if constexpr (kIsSingle) {
      return RoundedUp(Raised(c));
    } else {
      return Raised(m_scale.Down(c));
    }
  }

  double m_offset[3];
  RangeScale m_scale;
  double m_margin; ///< in the coordinates of the walk
  bool m_hasOffset;
};

} // namespace gsl_sweep

#endif
