#include "CrossingPair.h"

#include "Determinant.h"

#include <algorithm>
#include <cmath>

namespace gsl_sweep {

namespace {

using gsl_exact::DeterminantSign;
using gsl_exact::DoubleDouble;
using gsl_exact::TwoDifference;
using gsl_exact::TwoProduct;

const Coord3 kOrigin{0.0, 0.0, 0.0};
const Coord3 kAxes[3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};

int Next(int k) {
  return k == 2 ? 0 : k + 1;
}

bool AreEqual(const Coord3& a, const Coord3& b) {
  return a.x == b.x && a.y == b.y && a.z == b.z;
}

/// Returns on which side of the plane of p, q and r the point s is; 0 in the plane.
int SideOf(const Coord3& p, const Coord3& q, const Coord3& r, const Coord3& s) {
  return DeterminantSign({&p, &q}, {&p, &r}, {&p, &s});
}

double Component(const Coord3& p, int axis) {
  return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
}

/// Returns the turn p, q, r as seen along an axis: 1 to the left, -1 to the right, 0 in a line.
//
// Each product has three roundings, and their difference one more. In a flat part of a surface many
// corners are in a line. Where the differences are exact, so are the products, each as a sum of two
// numbers.
int TurnOf(int axis, const Coord3& p, const Coord3& q, const Coord3& r) {
  const int first = Next(axis);
  const int second = Next(first);
  const DoubleDouble u[2] = {TwoDifference(Component(q, first), Component(p, first)),
                             TwoDifference(Component(q, second), Component(p, second))};
  const DoubleDouble v[2] = {TwoDifference(Component(r, first), Component(p, first)),
                             TwoDifference(Component(r, second), Component(p, second))};
  const double left = u[0].hi * v[1].hi;
  const double right = u[1].hi * v[0].hi;
  if (std::fabs(left - right) > 0x1p-50 * (std::fabs(left) + std::fabs(right)))
    return left > right ? 1 : -1;
  if (u[0].lo != 0.0 || u[1].lo != 0.0 || v[0].lo != 0.0 || v[1].lo != 0.0)
    return DeterminantSign({&kOrigin, &kAxes[axis]}, {&p, &q}, {&p, &r});
  const double difference = left != right
                                ? left - right
                                : TwoProduct(u[0].hi, v[1].hi).lo - TwoProduct(u[1].hi, v[0].hi).lo;
  return (difference > 0.0) - (difference < 0.0);
}

/// Returns an axis along which the triangle shows area. Returns 3 for a triangle without area.
int AxisOf(const SurfaceTriangle& t) {
  int axis = 0;
  while (axis < 3 && TurnOf(axis, t.corner[0], t.corner[1], t.corner[2]) == 0)
    ++axis;
  return axis;
}

/// The sides of the corners of one triangle about the plane of another.
struct Sides {
  int of[3];

  Sides(const SurfaceTriangle& plane, const SurfaceTriangle& t, const bool (&isCommon)[3]) {
    for (int k = 0; k < 3; ++k) {
      of[k] =
          isCommon[k] ? 0 : SideOf(plane.corner[0], plane.corner[1], plane.corner[2], t.corner[k]);
    }
  }
  bool AreAllTheSame(int side) const { return of[0] == side && of[1] == side && of[2] == side; }
};

/// Returns whether a segment and a triangle in one plane share a point. If they do not, a line
/// along the segment or along a side of the triangle has the one on one side, and the other on the
/// other. The plane is seen with area along the axis.
bool MeetInPlane(int axis, const Coord3& a, const Coord3& b, const SurfaceTriangle& t) {
  const int inward = TurnOf(axis, t.corner[0], t.corner[1], t.corner[2]);
  for (int k = 0; k < 3; ++k) {
    const Coord3& p = t.corner[k];
    const Coord3& q = t.corner[Next(k)];
    if (TurnOf(axis, p, q, a) == -inward && TurnOf(axis, p, q, b) == -inward) return false;
  }
  const int side = TurnOf(axis, a, b, t.corner[0]);
  return side == 0 || TurnOf(axis, a, b, t.corner[1]) != side ||
         TurnOf(axis, a, b, t.corner[2]) != side;
}

/// Returns whether the segment from a to b shares a point with a triangle whose plane it meets in
/// one point at most.
bool MeetAcross(const Coord3& a, int sideOfA, const Coord3& b, int sideOfB,
                const SurfaceTriangle& t) {
  if (sideOfA * sideOfB > 0) return false;
  bool some[3] = {};
  for (int k = 0; k < 3; ++k)
    some[1 + SideOf(a, b, t.corner[k], t.corner[Next(k)])] = true;
  return !(some[0] && some[2]);
}

/// Returns whether the side of t from corner k to the next meets the other triangle.
bool SideMeets(const SurfaceTriangle& t, int k, const Sides& sides, const SurfaceTriangle& other) {
  const int next = Next(k);
  const Coord3& a = t.corner[k];
  const Coord3& b = t.corner[next];
  return sides.of[k] == 0 && sides.of[next] == 0
             ? MeetInPlane(AxisOf(other), a, b, other)
             : MeetAcross(a, sides.of[k], b, sides.of[next], other);
}

/// Returns true when the line of a side of a that begins at a common corner has the rest of a on
/// the one side and the rest of b on the other. Both are in one plane.
bool IsBeside(int axis, const SurfaceTriangle& a, int cornerOfA, const SurfaceTriangle& b,
              int cornerOfB) {
  const Coord3& p = a.corner[cornerOfA];
  const Coord3& q = a.corner[Next(cornerOfA)];
  const Coord3& r = a.corner[Next(Next(cornerOfA))];
  const Coord3& s = b.corner[Next(cornerOfB)];
  const Coord3& t = b.corner[Next(Next(cornerOfB))];
  const int outward = -TurnOf(axis, p, q, r);
  return (TurnOf(axis, p, q, s) == outward && TurnOf(axis, p, q, t) == outward) ||
         (TurnOf(axis, r, p, s) == outward && TurnOf(axis, r, p, t) == outward);
}

/// Returns whether triangles with two common corners, and others at the numbers, overlap: in one
/// plane, and on the same side of the common edge.
bool OverlapAtEdge(const SurfaceTriangle& a, int otherOfA, const SurfaceTriangle& b, int otherOfB) {
  const Coord3& p = a.corner[Next(otherOfA)];
  const Coord3& q = a.corner[Next(Next(otherOfA))];
  const Coord3& r = a.corner[otherOfA];
  const Coord3& s = b.corner[otherOfB];
  if (SideOf(p, q, r, s) != 0) return false;
  const int axis = AxisOf(a);
  return TurnOf(axis, p, q, r) == TurnOf(axis, p, q, s);
}

} // namespace

bool HasArea(const SurfaceTriangle& t) {
  return AxisOf(t) < 3;
}

// With one common corner, take another common point. The ray from the corner through it leaves one
// of the triangles first, through the opposite side and within the other triangle.
bool DoCross(const SurfaceTriangle& a, const SurfaceTriangle& b) {
  int common = 0;
  int lastOfA = 0;
  int lastOfB = 0;
  bool isOfA[3] = {};
  bool isOfB[3] = {};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      if (!AreEqual(a.corner[i], b.corner[j])) continue;
      ++common;
      isOfA[lastOfA = i] = true;
      isOfB[lastOfB = j] = true;
    }
  }
  if (common == 3) return true;
  if (common == 2) {
    const auto other = [](const bool(&isCommon)[3]) {
      return static_cast<int>(std::find(isCommon, isCommon + 3, false) - isCommon);
    };
    return OverlapAtEdge(a, other(isOfA), b, other(isOfB));
  }
  const Sides ofB(a, b, isOfB);
  if (ofB.AreAllTheSame(1) || ofB.AreAllTheSame(-1)) return false;
  if (common == 1) {
    const int next = Next(lastOfB);
    if (ofB.of[next] != 0 && ofB.of[next] == ofB.of[Next(next)]) return false;
    if (ofB.AreAllTheSame(0)) {
      const int axis = AxisOf(a);
      if (IsBeside(axis, a, lastOfA, b, lastOfB) || IsBeside(axis, b, lastOfB, a, lastOfA))
        return false;
    }
    return SideMeets(b, next, ofB, a) || SideMeets(a, Next(lastOfA), Sides(b, a, isOfA), b);
  }
  const Sides ofA(b, a, isOfA);
  if (ofA.AreAllTheSame(1) || ofA.AreAllTheSame(-1)) return false;
  for (int k = 0; k < 3; ++k)
    if (SideMeets(a, k, ofA, b) || SideMeets(b, k, ofB, a)) return true;
  return false;
}

} // namespace gsl_sweep
