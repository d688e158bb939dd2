#ifndef REFERENCE_IN_PLANE_SWEEP_ORACLE_H
#define REFERENCE_IN_PLANE_SWEEP_ORACLE_H

#include "InPlaneCases.h"

#include <algorithm>
#include <cmath>
#include <limits>

/// Computes the motion in the plane from its definition, slowly and in extended precision.
///
/// The plane is cut into lines along the direction. A segment covers a range of lines, which is its
/// extent to the side. On each line it covers a range of positions along the direction. A, moved by
/// t, touches B when their ranges meet on a common line. The ranges vary linearly with the line. So
/// the set of all such t is one interval, whose ends are on the first or the last common line.
namespace in_plane_oracle {

using Real = long double;

struct Point2 {
  Real side, forward;
};

struct Segment2 {
  Point2 p[2];

  Real Low() const { return std::min(p[0].side, p[1].side); }
  Real High() const { return std::max(p[0].side, p[1].side); }
};

struct Frame {
  Real x, y;

  explicit Frame(const gsl_Vector& direction) {
    const Real dx = direction.x;
    const Real dy = direction.y;
    const Real length = std::sqrt(dx * dx + dy * dy);
    x = dx / length;
    y = dy / length;
  }

  Point2 Of(const gsl_Point& p) const {
    const Real px = p.x;
    const Real py = p.y;
    return {x * py - y * px, x * px + y * py};
  }

  Segment2 Of(const gsl_Point* ends) const { return {{Of(ends[0]), Of(ends[1])}}; }
};

struct Range {
  Real low, high;
};

/// Returns the positions of the segment on the line `side`, which it covers.
inline Range Slice(const Segment2& s, Real side) {
  const Real width = s.p[1].side - s.p[0].side;
  if (width == 0) {
    return {std::min(s.p[0].forward, s.p[1].forward), std::max(s.p[0].forward, s.p[1].forward)};
  }
  const Real t = (side - s.p[0].side) / width;
  const Real at = s.p[0].forward + t * (s.p[1].forward - s.p[0].forward);
  return {at, at};
}

/// Returns the t for which A moved by t touches B, or an empty range (low > high).
inline Range TouchingTravel(const Segment2& a, const Segment2& b) {
  const Real first = std::max(a.Low(), b.Low());
  const Real last = std::min(a.High(), b.High());
  Range result = {std::numeric_limits<Real>::infinity(), -std::numeric_limits<Real>::infinity()};
  if (first > last) return result;
  for (const Real side : {first, last}) {
    const Range onA = Slice(a, side);
    const Range onB = Slice(b, side);
    result.low = std::min(result.low, onB.low - onA.high);
    result.high = std::max(result.high, onB.high - onA.low);
  }
  return result;
}

/// Returns the segment with `by` added at both ends. A segment without length grows along the side.
inline Segment2 Lengthened(const Segment2& s, Real by) {
  Real ds = s.p[1].side - s.p[0].side;
  Real df = s.p[1].forward - s.p[0].forward;
  const Real length = std::sqrt(ds * ds + df * df);
  if (length == 0) {
    ds = 1;
    df = 0;
  } else {
    ds /= length;
    df /= length;
  }
  return {{{s.p[0].side - by * ds, s.p[0].forward - by * df},
           {s.p[1].side + by * ds, s.p[1].forward + by * df}}};
}

inline Real Length(const Segment2& s) {
  return std::hypot(s.p[1].side - s.p[0].side, s.p[1].forward - s.p[0].forward);
}

inline Real DistanceTo(const Segment2& s, const Point2& p) {
  const Real ds = s.p[1].side - s.p[0].side;
  const Real df = s.p[1].forward - s.p[0].forward;
  const Real square = ds * ds + df * df;
  Real t =
      square == 0 ? 0 : ((p.side - s.p[0].side) * ds + (p.forward - s.p[0].forward) * df) / square;
  t = std::clamp<Real>(t, 0, 1);
  return std::hypot(p.side - s.p[0].side - t * ds, p.forward - s.p[0].forward - t * df);
}

/// Returns the sine of the angle between the segment and the direction.
inline Real SineToDirection(const Segment2& s) {
  return std::fabs(s.p[1].side - s.p[0].side) / Length(s);
}

/// Returns a positive number for a segment whose side normal, the edge turned clockwise, points
/// along the direction.
inline Real Facing(const Segment2& s) {
  return s.p[1].side - s.p[0].side;
}

/// A segment along the direction covers one line only.
inline Segment2 OnOneLine(const Segment2& s) {
  const Real side = (s.p[0].side + s.p[1].side) / 2;
  return {{{side, s.p[0].forward}, {side, s.p[1].forward}}};
}

} // namespace in_plane_oracle

#endif
