#ifndef REFERENCE_ENTITY_TRANSCRIPTION_H
#define REFERENCE_ENTITY_TRANSCRIPTION_H

#include <cmath>

/// The queries of points, lines, planes and segments, written step by step on bare numbers. Each
/// operation calls the next as documented, without kernels and without shared results.
///
/// The results must equal the results of the library bit for bit. This code is slow and must not be
/// tuned.
namespace transcription {

struct Tolerances {
  double linear;
  double zero;
  double cosine;
};

struct Vec {
  double x, y, z, magnitude;
};

/// The source of a point's identity: the number of an input, or one of these values.
constexpr int kFresh = -1;
constexpr int kUntouched = -2;

struct Pt {
  double x, y, z;
  int identity;
};

struct StLine {
  Pt point;
  Vec direction;
};

struct Plane {
  Pt point;
  Vec normal;
};

struct Segment {
  Pt point1, point2;
};

inline Vec Make(double x, double y, double z) {
  return {x, y, z, std::sqrt(x * x + y * y + z * z)};
}

inline Vec FromTo(const Pt& from, const Pt& to) {
  return Make(to.x - from.x, to.y - from.y, to.z - from.z);
}

inline double Dot(const Vec& a, const Vec& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline Vec Cross(const Vec& a, const Vec& b) {
  return Make(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

inline Vec Times(const Vec& v, double s) {
  return Make(v.x * s, v.y * s, v.z * s);
}

inline Pt Plus(const Pt& p, const Vec& v) {
  return {p.x + v.x, p.y + v.y, p.z + v.z, kFresh};
}

inline Pt Minus(const Pt& p, const Vec& v) {
  return {p.x - v.x, p.y - v.y, p.z - v.z, kFresh};
}

inline bool Normalize(Vec& v, const Tolerances& tol) {
  if (tol.linear > v.magnitude) return false;
  v = {v.x / v.magnitude, v.y / v.magnitude, v.z / v.magnitude, 1.0};
  return true;
}

inline Vec NormalizedCopy(const Vec& v, const Tolerances& tol) {
  if (tol.linear > v.magnitude) return {0.0, 0.0, 0.0, 0.0};
  return Times(v, 1.0 / v.magnitude);
}

inline Vec Normal(const Pt& p1, const Pt& p2, const Pt& p3, const Tolerances& tol) {
  const Vec a = FromTo(p1, p2);
  const Vec b = FromTo(p2, p3);
  const Vec c = Cross(a, b);
  if (tol.cosine * a.magnitude * b.magnitude >= c.magnitude) return {0.0, 0.0, 0.0, 0.0};
  const double s = 1.0 / c.magnitude;
  return {c.x * s, c.y * s, c.z * s, s > 0.0 ? c.magnitude * s : -(c.magnitude * s)};
}

inline bool IsOrthogonal(const Vec& a, const Vec& b, const Tolerances& tol) {
  return tol.cosine * a.magnitude * b.magnitude > std::fabs(Dot(a, b));
}

inline bool RealEqual(double a, double b, double tol) {
  const double d = b - a;
  if (-tol > d) return false;
  if (d > tol) return false;
  return true;
}

inline double Unit(double component, const Vec& v) {
  return v.magnitude == 0.0 ? 0.0 : component / v.magnitude;
}

inline bool IsParallel(const Vec& a, const Vec& b, double tol) {
  if (RealEqual(Unit(a.x, a), Unit(b.x, b), tol) && RealEqual(Unit(a.y, a), Unit(b.y, b), tol) &&
      RealEqual(Unit(a.z, a), Unit(b.z, b), tol)) {
    return true;
  }
  return RealEqual(Unit(a.x, a), -Unit(b.x, b), tol) &&
         RealEqual(Unit(a.y, a), -Unit(b.y, b), tol) && RealEqual(Unit(a.z, a), -Unit(b.z, b), tol);
}

inline double Distance(const Pt& a, const Pt& b) {
  return FromTo(a, b).magnitude;
}

inline bool Equal(const Pt& a, const Pt& b, const Tolerances& tol) {
  const Vec d = FromTo(b, a);
  return d.x * d.x + d.y * d.y + d.z * d.z <= tol.zero;
}

inline double Distance(const Pt& p, const StLine& line) {
  return Cross(FromTo(line.point, p), line.direction).magnitude / line.direction.magnitude;
}

inline double SignedDistance(const Pt& p, const Plane& plane) {
  return Dot(FromTo(plane.point, p), plane.normal) / plane.normal.magnitude;
}

inline double Distance(const Pt& p, const Plane& plane) {
  const double distance = SignedDistance(p, plane);
  return distance > 0.0 ? distance : -distance;
}

inline double DistanceAlong(const Pt& p, const Plane& plane, const Vec& dir) {
  return Distance(p, plane) * dir.magnitude * plane.normal.magnitude / Dot(dir, plane.normal);
}

inline bool ProjectOn(const Pt& p, const Segment& seg, double tol, Pt& out, double& t) {
  const double length = Distance(seg.point1, seg.point2);
  if (tol > length) return true;
  const Vec u = Times(FromTo(seg.point1, seg.point2), 1.0 / length);
  t = Dot(u, FromTo(seg.point1, p)) / length;
  out = Plus(seg.point1, Times(u, t * length));
  const double r = tol / length;
  return t > -r && t < 1.0 + r;
}

inline double Distance(const Pt& p, const Segment& seg, Pt& closest, const Tolerances& tol) {
  double t = 0.0;
  if (ProjectOn(p, seg, tol.linear, closest, t)) return Distance(p, closest);
  const double d1 = Distance(p, seg.point1);
  const double d2 = Distance(p, seg.point2);
  if (d2 > d1) {
    closest = seg.point1;
    return d1;
  }
  closest = seg.point2;
  return d2;
}

inline bool PointInTriangle(const Pt& x, const Pt& p0, const Pt& p1, const Pt& p2, double* weights,
                            const Tolerances& tol) {
  const Pt* const p[3] = {&p0, &p1, &p2};
  bool inside = true;
  for (int i = 0; i < 3; ++i) {
    const Pt& next = *p[(i + 1) % 3];
    const Pt& last = *p[(i + 2) % 3];
    const Vec normal = Cross(FromTo(*p[i], next), FromTo(last, *p[i]));
    const double nn = Dot(normal, normal);
    const Vec c = Cross(FromTo(x, next), FromTo(last, x));
    weights[i] = Dot(c, normal) / nn;
    if (weights[i] * nn < -(tol.linear * tol.linear)) inside = false;
  }
  return inside;
}

inline bool ProjectOn(const Pt& p, const Pt& p1, const Pt& p2, const Pt& p3, Pt& out,
                      double* weights, const Tolerances& tol) {
  const Plane plane = {p1, Normal(p1, p2, p3, tol)};
  out = Minus(p, Times(NormalizedCopy(plane.normal, tol), SignedDistance(p, plane)));
  return PointInTriangle(out, p1, p2, p3, weights, tol);
}

/// Returns the distance to a triangle.
inline double Distance(const Pt& p, const Pt& p1, const Pt& p2, const Pt& p3,
                       const Tolerances& tol) {
  Pt foot = p;
  double weights[3];
  if (ProjectOn(p, p1, p2, p3, foot, weights, tol)) return Distance(p, foot);
  const Segment edges[3] = {{p1, p2}, {p2, p3}, {p3, p1}};
  double least = 0.0;
  for (int i = 0; i < 3; ++i) {
    // An edge shorter than the tolerance leaves its first end, which is what `closest` holds.
    Pt closest = edges[i].point1;
    const double distance = Distance(p, edges[i], closest, tol);
    if (i == 0 || distance < least) least = distance;
  }
  return least;
}

inline bool PointSegmentParameters(const Pt& x, const Pt& p0, const Pt& p1, double* weights,
                                   const Tolerances& tol) {
  const double length = Distance(p0, p1);
  if (tol.linear >= length) {
    if (!(tol.linear >= Distance(x, p0))) return false;
    weights[0] = 0.0;
    weights[1] = 1.0;
    return true;
  }
  const Pt* const p[2] = {&p0, &p1};
  bool inside = true;
  for (int i = 0; i < 2; ++i) {
    weights[i] = Dot(FromTo(x, *p[i]), FromTo(*p[1 - i], *p[i])) / (length * length);
    if (weights[i] * length < -tol.linear) inside = false;
  }
  return inside;
}

inline bool LinesAreSkew(const StLine& a, const StLine& b, const Tolerances& tol) {
  Vec n = Cross(a.direction, b.direction);
  if (!Normalize(n, tol)) return false;
  return std::fabs(Dot(FromTo(a.point, b.point), n)) > tol.linear;
}

inline bool Intersect(const StLine& a, const StLine& b, Pt& out, double& dist,
                      const Tolerances& tol) {
  if (LinesAreSkew(a, b, tol)) return false;
  if (IsParallel(a.direction, b.direction, 1e-5)) {
    dist = Distance(a.point, b);
    return false;
  }
  const Vec u = NormalizedCopy(a.direction, tol);
  const Vec v = NormalizedCopy(b.direction, tol);
  const Vec w = FromTo(a.point, b.point);
  const double c = Dot(u, v);
  const double denominator = c * c - 1.0;
  const double s = (Dot(w, v) * c - Dot(w, u)) / denominator;
  out = Plus(a.point, Times(u, s));
  const double t = ((-Dot(w, u)) * c + Dot(w, v)) / denominator;
  dist = Distance(out, Plus(b.point, Times(v, t)));
  return true;
}

inline bool RayIntersect(const Pt& p, const Pt& p1, const Pt& p2, const Vec& dir, Pt& out,
                         double* weights, const Tolerances& tol) {
  if (tol.linear > Distance(p1, p2)) return false;
  double dist = 0.0;
  if (!Intersect({p1, FromTo(p1, p2)}, {p, dir}, out, dist, tol)) return false;
  return PointSegmentParameters(out, p1, p2, weights, tol);
}

inline bool RayIntersect(const Pt& p, const Vec& dir, const Plane& plane, Pt& out,
                         const Tolerances& tol) {
  out = p;
  if (tol.linear > dir.magnitude) return false;
  if (tol.linear > Distance(p, plane)) return true;
  if (IsOrthogonal(dir, plane.normal, tol)) return false;
  const double s = Dot(FromTo(p, plane.point), plane.normal) / Dot(dir, plane.normal);
  out = Plus(p, Times(dir, s));
  return true;
}

inline StLine Through(const Segment& seg) {
  return {seg.point1, FromTo(seg.point1, seg.point2)};
}

inline bool Intersect(const Segment& seg, const StLine& line, Pt& out, const Tolerances& tol) {
  const double length = Distance(seg.point1, seg.point2);
  if (length < tol.linear) return false;
  double dist = 0.0;
  if (!Intersect(Through(seg), line, out, dist, tol)) return false;
  // A segment of exactly the tolerance may leave the parameters unwritten. They then count as
  // beyond the segment.
  double weights[2] = {2.0 + tol.linear / length, 0.0};
  PointSegmentParameters(out, seg.point1, seg.point2, weights, tol);
  const double margin = tol.linear / length;
  return !(weights[0] < -margin) && !(weights[0] > 1.0 + margin);
}

inline bool Intersect(const Segment& a, const Segment& b, Pt& out, const Tolerances& tol) {
  if (!Intersect(a, Through(b), out, tol)) return false;
  return Intersect(b, Through(a), out, tol);
}

inline void ShortestConnection(const Segment& a, const Segment& b, Segment& connection,
                               const Tolerances& tol) {
  Pt x = {};
  if (Intersect(a, b, x, tol)) {
    connection = {x, x};
    return;
  }
  if (LinesAreSkew(Through(a), Through(b), tol)) {
    Vec n = Cross(FromTo(a.point1, a.point2), FromTo(b.point1, b.point2));
    Normalize(n, tol);
    const Vec v = Times(n, Dot(FromTo(a.point1, b.point1), n));
    if (Intersect({Plus(a.point1, v), Plus(a.point2, v)}, b, x, tol)) {
      connection = {Minus(x, v), x};
      return;
    }
  }
  double best = 1e10;
  const Pt* const ends[4] = {&a.point1, &a.point2, &b.point1, &b.point2};
  for (int i = 0; i < 4; ++i) {
    const Segment& other = i < 2 ? b : a;
    x = other.point1;
    const double distance = Distance(*ends[i], other, x, tol);
    if (!(distance < best)) continue;
    best = distance;
    connection = i < 2 ? Segment{*ends[i], x} : Segment{x, *ends[i]};
  }
}

} // namespace transcription

#endif
