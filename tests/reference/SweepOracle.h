#ifndef REFERENCE_SWEEP_ORACLE_H
#define REFERENCE_SWEEP_ORACLE_H

#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <cmath>
#include <limits>

/// Computes the first contact of a moving triangle with a fixed triangle, from the definition of
/// the motion.
///
/// A + t d meets B when some a of A and b of B have a + t d = b. With a and b as convex
/// combinations of the corners this is a linear program in t and six weights, with five equations.
/// The least t is at a basic solution. There are fifteen kinds of basis: one corner and three (a
/// vertex and a face), or two and two (an edge and an edge). Cramer's rule solves all of them in
/// three dimensions and extended precision. Nothing is projected, oriented or ordered.
namespace oracle {

using Real = long double;

struct Vec {
  Real x, y, z;
};

inline Vec Of(const gsl_Point& p) {
  return {p.x, p.y, p.z};
}
inline Vec operator-(const Vec& a, const Vec& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vec operator+(const Vec& a, const Vec& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vec operator*(const Vec& a, Real s) {
  return {a.x * s, a.y * s, a.z * s};
}
inline Real Dot(const Vec& a, const Vec& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec Cross(const Vec& a, const Vec& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline Real Length(const Vec& a) {
  return std::sqrt(Dot(a, a));
}
inline Vec Unit(const Vec& a) {
  return a * (1 / Length(a));
}

struct Triangle {
  Vec p[3];
};

inline Triangle Of(const gsl_Point* p) {
  return {{Of(p[0]), Of(p[1]), Of(p[2])}};
}

inline Vec UnitNormal(const Triangle& t) {
  return Unit(Cross(t.p[1] - t.p[0], t.p[2] - t.p[0]));
}

/// Solves s u + t v + r w = q. Returns false when the three are dependent, as for an edge-on face.
inline bool Solve(const Vec& u, const Vec& v, const Vec& w, const Vec& q, Real& s, Real& t,
                  Real& r) {
  const Vec vw = Cross(v, w);
  const Real determinant = Dot(u, vw);
  if (std::fabs(determinant) <= 1e-12L * Length(u) * Length(v) * Length(w)) return false;
  const Vec uq = Cross(u, q);
  s = Dot(q, vw) / determinant;
  t = Dot(uq, w) / determinant;
  r = -Dot(uq, v) / determinant;
  return true;
}

constexpr Real kNone = std::numeric_limits<Real>::infinity();

/// How a travel against the direction counts: with its sign, or by its size.
enum class Travels { Signed, Unsigned };

/// The travel at which contact begins, or kNone. It has three readings of "on the triangle": shrunk
/// by `slack` (a length across d), exact, and grown by `slack`.
struct Travel {
  Real slack;
  Travels counted = Travels::Signed;
  Real shrunk = kNone;
  Real exact = kNone;
  Real grown = kNone;

  /// Takes a basic solution with travel t, whose worst weight is `depth` (a length) inside.
  void Take(Real t, Real depth) {
    if (counted == Travels::Unsigned) t = std::fabs(t);
    if (depth >= slack && t < shrunk) shrunk = t;
    if (depth >= 0 && t < exact) exact = t;
    if (depth >= -slack && t < grown) grown = t;
  }
};

inline Real Least(Real a, Real b, Real c) {
  return std::fmin(a, std::fmin(b, c));
}

/// Returns the least height of the triangle as seen along d. A barycentric weight times this height
/// is at most the distance from the opposite side.
inline Real LeastHeightAcross(const Triangle& t, const Vec& d) {
  const Vec e[3] = {t.p[1] - t.p[0], t.p[2] - t.p[1], t.p[0] - t.p[2]};
  const Real area2 = std::fabs(Dot(Cross(e[0], e[1]), d));
  Real longest = 0;
  for (const Vec& edge : e) {
    longest = std::fmax(longest, Length(Cross(edge, d)));
  }
  return area2 / longest;
}

inline Real LeastHeight(const Triangle& t) {
  return LeastHeightAcross(t, UnitNormal(t));
}

/// A vertex against the other triangle, moved by sense * t along d.
inline void TakeVertexFace(const Vec& vertex, const Triangle& face, const Vec& d, Real sense,
                           Travel& travel) {
  Real u;
  Real v;
  Real t;
  if (!Solve(face.p[1] - face.p[0], face.p[2] - face.p[0], d * -sense, vertex - face.p[0], u, v,
             t)) {
    return;
  }
  travel.Take(t, Least(u, v, 1 - u - v) * LeastHeightAcross(face, d));
}

inline void TakeEdgeEdge(const Vec& a0, const Vec& a1, const Vec& b0, const Vec& b1, const Vec& d,
                         Travel& travel) {
  const Vec ea = a1 - a0;
  const Vec eb = b1 - b0;
  Real s;
  Real r;
  Real t;
  if (!Solve(ea, eb * -1, d, b0 - a0, s, r, t)) return;
  const Real depthA = std::fmin(s, 1 - s) * Length(Cross(ea, d));
  const Real depthB = std::fmin(r, 1 - r) * Length(Cross(eb, d));
  travel.Take(t, std::fmin(depthA, depthB));
}

/// d is a unit vector.
inline Travel FirstContact(const Triangle& a, const Triangle& b, const Vec& d, Real slack,
                           Travels counted = Travels::Signed) {
  Travel travel{slack, counted};
  for (int i = 0; i < 3; ++i) {
    TakeVertexFace(a.p[i], b, d, 1, travel);
    TakeVertexFace(b.p[i], a, d, -1, travel);
    for (int j = 0; j < 3; ++j) {
      TakeEdgeEdge(a.p[i], a.p[(i + 1) % 3], b.p[j], b.p[(j + 1) % 3], d, travel);
    }
  }
  return travel;
}

/// A vertex against an edge of the plane of d and `across`, moved by sense * t along d.
inline void TakeVertexEdge(const Vec& vertex, const Vec& e0, const Vec& e1, const Vec& d,
                           const Vec& across, Real sense, Travel& travel) {
  const Real width = Dot(e1 - e0, across);
  if (width == 0) return;
  const Real s = Dot(vertex - e0, across) / width;
  const Real t = sense * Dot(e0 + (e1 - e0) * s - vertex, d);
  travel.Take(t, std::fmin(s, 1 - s) * std::fabs(width));
}

/// The vertices and edges that a pair of triangles in one plane is tried with.
enum class Tried { EveryEdge, SameIndexOnly };

/// Tries vertices of `moving` against edges of `standing`, both in the plane of d and `across`.
inline void TakeVerticesOverEdges(const Triangle& moving, const Triangle& standing, const Vec& d,
                                  const Vec& across, Real sense, Tried tried, Travel& travel) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      if (tried == Tried::SameIndexOnly && i != j) continue;
      TakeVertexEdge(moving.p[i], standing.p[j], standing.p[(j + 1) % 3], d, across, sense, travel);
    }
  }
}

/// Returns the least sine of the angle between an edge of A and an edge of B, both as shadows along
/// d in the plane with normal n.
inline Real LeastSineBetweenEdges(const Triangle& a, const Triangle& b, const Vec& d,
                                  const Vec& n) {
  Real least = 1;
  for (int i = 0; i < 3; ++i) {
    const Vec ea = Unit(a.p[(i + 1) % 3] - a.p[i]);
    for (int j = 0; j < 3; ++j) {
      const Vec edge = b.p[(j + 1) % 3] - b.p[j];
      const Vec eb = Unit(edge - d * (Dot(edge, n) / Dot(d, n)));
      least = std::fmin(least, Length(Cross(ea, eb)));
    }
  }
  return least;
}

/// Returns the largest distance of x from the triangle: out of its plane or beyond a side.
inline Real Outside(const Vec& x, const Triangle& t) {
  const Vec n = UnitNormal(t);
  Real worst = std::fabs(Dot(x - t.p[0], n));
  for (int i = 0; i < 3; ++i) {
    const Vec edge = Unit(t.p[(i + 1) % 3] - t.p[i]);
    worst = std::fmax(worst, -Dot(Cross(n, edge), x - t.p[i]));
  }
  return worst;
}

} // namespace oracle

#endif
