#include "CrossingJudge.h"

#include <algorithm>

namespace reference {

namespace {

using Polygon = std::vector<RationalPoint>;

RationalPoint PointOf(const Coord3& p) {
  return {Rational(p.x), Rational(p.y), Rational(p.z)};
}

RationalPoint Minus(const RationalPoint& a, const RationalPoint& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Rational Dot(const RationalPoint& a, const RationalPoint& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

RationalPoint Cross(const RationalPoint& a, const RationalPoint& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

bool IsZero(const RationalPoint& a) {
  return a.x == 0 && a.y == 0 && a.z == 0;
}

/// Returns the part of a convex polygon, which may be a segment or a point, where the product of
/// the normal and the vector from the origin is not negative.
Polygon Cut(const Polygon& polygon, const RationalPoint& origin, const RationalPoint& normal) {
  Polygon part;
  for (std::size_t k = 0; k < polygon.size(); ++k) {
    const RationalPoint& p = polygon[k];
    const RationalPoint& q = polygon[(k + 1) % polygon.size()];
    const Rational atP = Dot(normal, Minus(p, origin));
    const Rational atQ = Dot(normal, Minus(q, origin));
    if (atP >= 0) part.push_back(p);
    if (sgn(atP) * sgn(atQ) < 0) {
      const Rational s = atP / (atP - atQ);
      part.push_back({p.x + s * (q.x - p.x), p.y + s * (q.y - p.y), p.z + s * (q.z - p.z)});
    }
  }
  return part;
}

/// Returns whether a point is in the hull of one or two points.
bool IsWithin(const RationalPoint& p, const Polygon& hull) {
  const RationalPoint along = Minus(hull.back(), hull.front());
  const RationalPoint from = Minus(p, hull.front());
  return IsZero(Cross(along, from)) && (hull.size() == 1 ? IsZero(from) : Dot(from, along) >= 0) &&
         Dot(Minus(p, hull.back()), along) <= 0;
}

} // namespace

bool Cross(const std::array<Coord3, 3>& a, const std::array<Coord3, 3>& b) {
  Polygon first;
  Polygon second;
  Polygon common;
  for (std::size_t k = 0; k < 3; ++k) {
    first.push_back(PointOf(a[k]));
    second.push_back(PointOf(b[k]));
  }
  const RationalPoint normal = Cross(Minus(first[1], first[0]), Minus(first[2], first[0]));
  const RationalPoint other = Cross(Minus(second[1], second[0]), Minus(second[2], second[0]));
  if (IsZero(normal) || IsZero(other)) return false;
  for (const RationalPoint& p : first) {
    if (std::any_of(second.begin(), second.end(),
                    [&p](const RationalPoint& q) { return IsZero(Minus(p, q)); })) {
      common.push_back(p);
    }
  }
  if (common.size() == 3) return true;
  Polygon shared = Cut(Cut(second, first[0], normal), first[0], Minus({0, 0, 0}, normal));
  for (std::size_t k = 0; k < 3; ++k)
    shared = Cut(shared, first[k], Cross(normal, Minus(first[(k + 1) % 3], first[k])));
  return std::any_of(shared.begin(), shared.end(), [&common](const RationalPoint& p) {
    return common.empty() || !IsWithin(p, common);
  });
}

} // namespace reference
