#include "InnerPoint.h"

#include "ExactRatio.h"
#include "InwardRay.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace gsl_sweep {

using gsl_exact::CompareRatios;
using gsl_exact::DeterminantSign;
using gsl_exact::Estimate;
using gsl_exact::EstimateDeterminant;
using gsl_exact::ExactDeterminant;
using gsl_exact::ExactRatio;
using gsl_exact::Expansion;
using gsl_exact::VectorBetween;

namespace {

constexpr double kUnknown = std::numeric_limits<double>::infinity();

const Coord3 kOrigin{0.0, 0.0, 0.0};
const Coord3 kAxes[3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};

int Next(int k) {
  return k == 2 ? 0 : k + 1;
}

/// A triangle as seen along a direction that is not in its plane.
class Seen {
public:
  Seen(const SurfaceTriangle& t, const Coord3& direction)
      : m_triangle(t), m_direction(direction),
        m_sense(DeterminantSign(Along(), Edge(0), {&t.corner[0], &t.corner[2]})) {}

  /// Returns 1 when a point is on the side of an edge on which the triangle is.
  int Side(int edge, const Coord3& p) const {
    return m_sense * DeterminantSign(Along(), Edge(edge), {&m_triangle.corner[edge], &p});
  }
  /// Returns true when a point is inside or on the border.
  bool Holds(const Coord3& p) const {
    return Side(0, p) >= 0 && Side(1, p) >= 0 && Side(2, p) >= 0;
  }
  /// Returns true when an edge leaves the ends of a segment on different sides.
  bool Divides(int edge, const Coord3& p, const Coord3& q) const {
    return Side(edge, p) * Side(edge, q) < 0;
  }
  VectorBetween Along() const { return {&kOrigin, &m_direction}; }
  VectorBetween Edge(int edge) const {
    return {&m_triangle.corner[edge], &m_triangle.corner[Next(edge)]};
  }

private:
  const SurfaceTriangle& m_triangle;
  const Coord3& m_direction;
  int m_sense;
};

/// A triangle and the sides of its plane.
struct Plane {
  explicit Plane(const SurfaceTriangle& t)
      : triangle(t), u{&t.corner[0], &t.corner[1]}, v{&t.corner[0], &t.corner[2]} {}

  /// Returns 1 outside.
  int Side(const Coord3& p) const { return DeterminantSign(u, v, {&triangle.corner[0], &p}); }
  bool HoldsAll(const SurfaceTriangle& t) const {
    return Side(t.corner[0]) == 0 && Side(t.corner[1]) == 0 && Side(t.corner[2]) == 0;
  }
  /// Returns true when the segment between points on different sides meets the triangle. See
  /// SolidPair.cpp for the sign.
  bool Meets(const Coord3& p, const Coord3& q) const {
    const int side = Side(p);
    if (side * Side(q) >= 0) return false;
    for (int edge = 0; edge < 3; ++edge) {
      const Coord3& from = triangle.corner[edge];
      const Coord3& to = triangle.corner[Next(edge)];
      if (side * DeterminantSign({&from, &to}, {&from, &p}, {&from, &q}) > 0) return false;
    }
    return true;
  }
  /// Returns an axis that is not in the plane. Requires a triangle with area.
  int Axis() const {
    int axis = 0;
    while (DeterminantSign({&kOrigin, &kAxes[axis]}, u, v) == 0)
      ++axis;
    return axis;
  }

  const SurfaceTriangle& triangle;
  VectorBetween u, v;
};

/// Adds the corners, and the crossings of edges, of one triangle that are on the other.
void AddShared(const SurfaceTriangle& t, const Plane& plane, SharedPoints& points) {
  const Seen seen(plane.triangle, kAxes[plane.Axis()]);
  for (int k = 0; k < 3; ++k) {
    const Coord3& p = t.corner[k];
    if (plane.Side(p) != 0 || !seen.Holds(p)) continue;
    points.onFirst.Add(p);
    points.onSecond.Add(p);
  }
  for (int k = 0; k < 3; ++k) {
    const Coord3& p = t.corner[k];
    const Coord3& q = t.corner[Next(k)];
    if (!plane.Meets(p, q)) continue;
    for (InnerPoint* point : {&points.onFirst, &points.onSecond})
      point->AddCrossing(p, q, plane.u, plane.v, plane.triangle.corner[0]);
  }
}

/// Adds the corners of a triangle, first those on the inner side of a plane.
void AddCornersUnder(const Plane& plane, const SurfaceTriangle& t, InnerPoint& point) {
  for (const bool isUnder : {true, false}) {
    for (const Coord3& p : t.corner)
      if ((plane.Side(p) < 0) == isUnder) point.Add(p);
  }
}

} // namespace

Expansion<192> VectorTriple::Determinant() const {
  return ExactDeterminant({&from[0], &to[0]}, {&from[1], &to[1]}, {&from[2], &to[2]});
}

Estimate VectorTriple::Estimated() const {
  return EstimateDeterminant({&from[0], &to[0]}, {&from[1], &to[1]}, {&from[2], &to[2]});
}

int VectorTriple::Sign() const {
  return DeterminantSign({&from[0], &to[0]}, {&from[1], &to[1]}, {&from[2], &to[2]});
}

void InnerPoint::Add(const Coord3& place) {
  const VectorBetween none{&kOrigin, &kOrigin};
  m_places.push_back(
      {place, false, kOrigin, kOrigin, {none, none, none}, {none, none, none}, 0.0, 0.0});
}

// With estimates o and w of the two terms, off by at most b and c, the quotient of the terms is off
// o / w by at most (b + |o / w| c) / (|w| - c). With c < |w| / 4 that is below 4/3 of the same over
// |w|. The quotient is rounded once; the factor 1.5 covers the other roundings.
void InnerPoint::AddMoved(const Coord3& p, const VectorBetween& along, const VectorTriple& over,
                          const VectorTriple& under) {
  Place place{p, true, *along.from, *along.to, over, under, 0.0, kUnknown};
  const Estimate o = over.Estimated();
  const Estimate w = under.Estimated();
  if (4.0 * w.bound < std::fabs(w.value)) {
    place.ratio = o.value / w.value;
    const double size = std::fabs(place.ratio);
    place.error = 1.5 * (o.bound + size * w.bound) / std::fabs(w.value) + 0x1p-52 * size;
  }
  m_places.push_back(place);
}

// With h(x) = det[u, v, x - on], the point is p + h(p) / (h(p) - h(q)) (q - p).
void InnerPoint::AddCrossing(const Coord3& p, const Coord3& q, const VectorBetween& u,
                             const VectorBetween& v, const Coord3& on) {
  AddMoved(p, {&p, &q}, {u, v, {&p, &on}}, {u, v, {&q, &p}});
}

void InnerPoint::AddAlong(const Coord3& p, const Coord3& direction, const VectorBetween& u,
                          const VectorBetween& v, const Coord3& on) {
  const VectorBetween along{&kOrigin, &direction};
  AddMoved(p, along, {u, v, {&on, &p}}, {u, v, along});
}

void InnerPoint::Rotate(std::size_t count) {
  const auto first = m_places.begin();
  if (count > 1) std::rotate(first, first + 1, first + static_cast<std::ptrdiff_t>(count));
}

int InnerPoint::Side(const VectorBetween& u, const VectorBetween& v, const Coord3& on) const {
  for (const Place& place : m_places) {
    const int side = SideOf(place, u, v, on);
    if (side != 0) return side;
  }
  return 0;
}

// With D = det[u, v, p - on], L = det[u, v, to - from] and the ratio r that is taken away, the sign
// of D - r L is the sign of L times that of D / L - r.
//
// Estimates of D and r L decide nearly always. The product is off by at most the error of r times
// the magnitude of L, and r times the error of L. Two roundings are each below 2^-53 of the sum of
// the magnitudes; 2^-51 covers both and those of the bound, and 2^-1060 a product below the range.
int InnerPoint::SideOf(const Place& place, const VectorBetween& u, const VectorBetween& v,
                       const Coord3& on) {
  if (!place.isMoved) return DeterminantSign(u, v, {&on, &place.p});
  const Estimate height = EstimateDeterminant(u, v, {&on, &place.p});
  const Estimate change = EstimateDeterminant(u, v, {&place.from, &place.to});
  const double taken = place.ratio * change.value;
  const double value = height.value - taken;
  const double size = std::fabs(place.ratio);
  const double error = place.error * (std::fabs(change.value) + change.bound) +
                       size * change.bound + height.bound +
                       0x1p-51 * (std::fabs(height.value) + std::fabs(taken)) + 0x1p-1060;
  if (std::fabs(value) > 1.001 * error) return value > 0.0 ? 1 : -1;
  const int side = DeterminantSign(u, v, {&on, &place.p});
  const int changeSign = DeterminantSign(u, v, {&place.from, &place.to});
  const int moved = -changeSign * place.over.Sign() * place.under.Sign();
  if (moved == 0 || moved == side) return side;
  if (side == 0) return moved;
  ExactRatio reached;
  reached.Set(ExactDeterminant(u, v, {&on, &place.p}),
              ExactDeterminant(u, v, {&place.from, &place.to}));
  ExactRatio exact;
  exact.Set(place.over.Determinant(), place.under.Determinant());
  return changeSign * CompareRatios(reached, exact);
}

// The difference, the product and the sum are off by less than 2^-50 each.
Box<double> InnerPoint::Reach() const {
  const Place& place = m_places.front();
  const double p[3] = {place.p.x, place.p.y, place.p.z};
  Box<double> box{{p[0], p[1], p[2]}, {p[0], p[1], p[2]}};
  if (!place.isMoved) return box;
  double ratio = place.ratio;
  double ofRatio = place.error;
  if (!(ofRatio <= 0x1p-30 * std::fabs(ratio))) {
    ExactRatio exact;
    exact.Set(place.over.Determinant(), place.under.Determinant());
    ratio = exact.rounded.hi;
    ofRatio = 0x1p-52 * std::fabs(ratio);
  }
  const double from[3] = {place.from.x, place.from.y, place.from.z};
  const double to[3] = {place.to.x, place.to.y, place.to.z};
  for (int k = 0; k < 3; ++k) {
    const double change = -ratio * (to[k] - from[k]);
    const double error = 0x1p-48 * (std::fabs(p[k]) + std::fabs(change)) +
                         1.001 * ofRatio * std::fabs(to[k] - from[k]) + 0x1p-1000;
    box.low[k] = p[k] + change - error;
    box.high[k] = p[k] + change + error;
  }
  return box;
}

void SharedPoints::Rotate() {
  onFirst.Rotate(count);
  onSecond.Rotate(count);
}

// The places are the corners of what the shadows share.
SharedPoints PointsInShadow(const SurfaceTriangle& a, const SurfaceTriangle& b,
                            const Coord3& direction) {
  SharedPoints points;
  const Seen seenA(a, direction);
  const Seen seenB(b, direction);
  const auto addCorners = [&](const SurfaceTriangle& of, const Seen& other, const Plane& plane,
                              InnerPoint& own, InnerPoint& others) {
    for (const Coord3& p : of.corner) {
      if (!other.Holds(p)) continue;
      own.Add(p);
      others.AddAlong(p, direction, plane.u, plane.v, plane.triangle.corner[0]);
    }
  };
  addCorners(a, seenB, Plane(b), points.onFirst, points.onSecond);
  addCorners(b, seenA, Plane(a), points.onSecond, points.onFirst);
  for (int i = 0; i < 3; ++i) {
    const Coord3& p = a.corner[i];
    const Coord3& q = a.corner[Next(i)];
    for (int j = 0; j < 3; ++j) {
      const Coord3& r = b.corner[j];
      const Coord3& s = b.corner[Next(j)];
      if (!seenB.Divides(j, p, q) || !seenA.Divides(i, r, s)) continue;
      points.onFirst.AddCrossing(p, q, seenB.Along(), seenB.Edge(j), r);
      points.onSecond.AddCrossing(r, s, seenA.Along(), seenA.Edge(i), p);
    }
  }
  points.count = points.onFirst.PlaceCount();
  return points;
}

SharedPoints PointsAtMeeting(const SurfaceTriangle& a, const SurfaceTriangle& b) {
  const Plane planeA(a);
  const Plane planeB(b);
  SharedPoints points;
  if (planeA.HoldsAll(b)) {
    points = PointsInShadow(a, b, kAxes[planeA.Axis()]);
    points.areEqual = true;
    return points;
  }
  AddShared(a, planeB, points);
  AddShared(b, planeA, points);
  points.count = points.onFirst.PlaceCount();
  AddCornersUnder(planeB, a, points.onFirst);
  AddCornersUnder(planeA, b, points.onSecond);
  return points;
}

InnerRay::InnerRay(const SurfaceTriangle& face, const InnerPoint& point)
    : m_point(point), m_reach(point.Reach()) {
  const InwardRay ray(face);
  m_axis = ray.Axis();
  m_sense = ray.Sense();
}

/// Returns 0 when a line through the point along the axis misses a triangle, and else the sign of
/// the product of its normal and the ray.
int InnerRay::Along(const SurfaceTriangle& t) const {
  const VectorBetween axis{&kOrigin, &kAxes[m_axis]};
  int first = 0;
  for (int edge = 0; edge < 3; ++edge) {
    const Coord3& from = t.corner[edge];
    const int side = m_point.Side(axis, {&from, &t.corner[Next(edge)]}, from);
    if (side == 0 || (edge > 0 && side != first)) return 0;
    first = side;
  }
  return first * m_sense;
}

int InnerRay::Height(const SurfaceTriangle& t) const {
  return m_point.Side({&t.corner[0], &t.corner[1]}, {&t.corner[0], &t.corner[2]}, t.corner[0]);
}

int InnerRay::Crossing(const SurfaceTriangle& t) const {
  const int along = Along(t);
  return along != 0 && Height(t) * along < 0 ? along : 0;
}

int InnerRay::Layer(const SurfaceTriangle& t) const {
  const int along = Along(t);
  return along != 0 && Height(t) == 0 ? -along : 0;
}

bool InnerRay::Meets(const Box<double>& box, bool onRay) const {
  for (int k = 0; k < 3; ++k) {
    const int sense = onRay && k == m_axis ? m_sense : 0;
    if (sense <= 0 && m_reach.high[k] < box.low[k]) return false;
    if (sense >= 0 && m_reach.low[k] > box.high[k]) return false;
  }
  return true;
}

} // namespace gsl_sweep
