#include "SolidPair.h"

namespace gsl_sweep {

using gsl_exact::DeterminantSign;

namespace {

const Coord3 kOrigin{0.0, 0.0, 0.0};
const Coord3 kAxes[3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};

int Next(int k) {
  return k == 2 ? 0 : k + 1;
}

/// Returns the sign of a component of the normal.
int NormalSign(const SurfaceTriangle& t, int axis) {
  return DeterminantSign({&kOrigin, &kAxes[axis]}, {&t.corner[0], &t.corner[1]},
                         {&t.corner[0], &t.corner[2]});
}

/// The sides of the corners of a triangle as seen from the plane of another: 1 is outside.
struct Sides {
  Sides(const SurfaceTriangle& plane, const SurfaceTriangle& t) {
    const Coord3* p = plane.corner;
    for (int k = 0; k < 3; ++k)
      of[k] = DeterminantSign({&p[0], &p[1]}, {&p[0], &p[2]}, {&p[0], &t.corner[k]});
  }

  bool Any(int side) const { return of[0] == side || of[1] == side || of[2] == side; }
  bool AreAll(int side) const { return of[0] == side && of[1] == side && of[2] == side; }

  int of[3];
};

/// A triangle in its own plane.
class InPlane {
public:
  /// Requires a triangle with area.
  explicit InPlane(const SurfaceTriangle& t) : m_triangle(t), m_axis(0) {
    while ((m_normal = NormalSign(t, m_axis)) == 0)
      ++m_axis;
  }

  /// Returns 1 when a point of the plane is on the side of an edge on which the triangle is.
  int Side(int edge, const Coord3& p) const {
    const Coord3& from = m_triangle.corner[edge];
    const Coord3& to = m_triangle.corner[Next(edge)];
    return m_normal * DeterminantSign({&kOrigin, &kAxes[m_axis]}, {&from, &to}, {&from, &p});
  }

  /// Does the same for the point where the segment from p to q goes through the plane. `sideOfP` is
  /// the side of the plane on which p is, and q is on the other.
  //
  // Let x be that point, w = x - from, v = p - x and u the edge. Then q - x = -k v with k > 0, and
  // det[u, w + v, w - k v] = -(1 + k) det[u, w, v] = -(1 + k) (u x w) . v. The vector u x w is
  // along the normal when x is on the side of the triangle, and v . normal has the sign of
  // `sideOfP`.
  int SideOfCrossing(int edge, const Coord3& p, const Coord3& q, int sideOfP) const {
    const Coord3& from = m_triangle.corner[edge];
    const Coord3& to = m_triangle.corner[Next(edge)];
    return -sideOfP * DeterminantSign({&from, &to}, {&from, &p}, {&from, &q});
  }

  int Normal() const { return m_normal; }
  int Axis() const { return m_axis; }

private:
  const SurfaceTriangle& m_triangle;
  int m_axis, m_normal;
};

/// Returns true when t goes to the inner side of f from a point inside f. `ofT` are the sides of
/// the corners of t as seen from f, and `ofF` the other way round.
//
// What t has in common with the plane of f is a corner or a segment. An edge of f that has no part
// of it on its inner side keeps it away from the inside of f. If no edge does so, a corner is
// inside f. A segment can then still pass beside f, but only along a line that leaves all corners
// of f on one side or on the line; that line is in the plane of t.
bool GoesInside(const SurfaceTriangle& t, const Sides& ofT, const SurfaceTriangle& f,
                const Sides& ofF) {
  if (!ofT.Any(-1)) return false;
  const bool isCorner = !ofT.Any(1) && (ofT.of[0] == 0) + (ofT.of[1] == 0) + (ofT.of[2] == 0) == 1;
  if (!isCorner && !(ofF.Any(1) && ofF.Any(-1))) return false;
  const InPlane plane(f);
  for (int edge = 0; edge < 3; ++edge) {
    bool someInside = false;
    for (int k = 0; k < 3 && !someInside; ++k) {
      const int next = Next(k);
      if (ofT.of[k] == 0) {
        someInside = plane.Side(edge, t.corner[k]) > 0;
      } else if (ofT.of[k] * ofT.of[next] < 0) {
        someInside = plane.SideOfCrossing(edge, t.corner[k], t.corner[next], ofT.of[k]) > 0;
      }
    }
    if (!someInside) return false;
  }
  return true;
}

/// Returns true when an edge of `own` has all corners of the other on its outer side, or on itself.
bool Separates(const SurfaceTriangle& own, const SurfaceTriangle& other) {
  const InPlane plane(own);
  for (int edge = 0; edge < 3; ++edge) {
    bool separates = true;
    for (const Coord3& p : other.corner)
      separates = separates && plane.Side(edge, p) <= 0;
    if (separates) return true;
  }
  return false;
}

SolidMeeting MeetInOnePlane(const SurfaceTriangle& a, const SurfaceTriangle& b) {
  const InPlane plane(a);
  const bool facesSameWay = NormalSign(b, plane.Axis()) == plane.Normal();
  const bool sharesArea = !Separates(a, b) && !Separates(b, a);
  return facesSameWay && sharesArea ? SolidMeeting::Overlapping : SolidMeeting::Touching;
}

} // namespace

bool SurfaceTriangle::HasArea() const {
  return NormalSign(*this, 0) != 0 || NormalSign(*this, 1) != 0 || NormalSign(*this, 2) != 0;
}

SolidMeeting MeetAtRest(const SurfaceTriangle& a, const SurfaceTriangle& b) {
  const Sides ofB(a, b);
  if (ofB.AreAll(1) || ofB.AreAll(-1)) return SolidMeeting::Apart;
  const Sides ofA(b, a);
  if (ofA.AreAll(1) || ofA.AreAll(-1)) return SolidMeeting::Apart;
  if (!a.HasArea() || !b.HasArea()) return SolidMeeting::Apart;
  if (ofB.AreAll(0)) return MeetInOnePlane(a, b);
  if (GoesInside(a, ofA, b, ofB) || GoesInside(b, ofB, a, ofA)) return SolidMeeting::Overlapping;
  return SolidMeeting::Touching;
}

} // namespace gsl_sweep
