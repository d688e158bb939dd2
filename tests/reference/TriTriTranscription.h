#ifndef REFERENCE_TRI_TRI_TRANSCRIPTION_H
#define REFERENCE_TRI_TRI_TRANSCRIPTION_H

#include "gsl_Plane.h"
#include "gsl_Point.h"
#include "gsl_Segment.h"
#include "gsl_StLine.h"
#include "gsl_Util.h"
#include "gsl_Vector.h"

#include <cmath>

/// The triangle sweep, written step by step on the public classes, without the kernels. Every
/// intermediate is an entity with its own identity, which is copied as entities copy it.
///
/// A peer of gsl_TriTriMinDirectionalDist in the benchmarks and in the tests, which compare every
/// bit and every identity. The code is slow and must not be tuned.
namespace transcription {

// clang-format off
#define TRANSCRIPTION_BRANCHES(X) \
  X(DegenerateA) X(DegenerateB) X(AAlong) X(AEdgeOn) X(ATurned) X(ARefused) X(BAlong) X(BEdgeOn) \
  X(BTurned) X(BRefused) X(Behind) X(BeyondReach) X(OnlyBEdgeOn) X(OnlyAEdgeOn) X(BothEdgeOn) \
  X(NoneEdgeOn) X(SeparatePlanes) X(CoplanarByA) X(CoplanarByB) X(CoplanarByNone) X(ShadowMoved) \
  X(ShadowStays) X(VertexOfAOutside) X(VertexOfANoCloser) X(VertexOfACloser) X(VertexOfBOutside) \
  X(VertexOfBNoCloser) X(VertexOfBCloser) X(EdgesDoNotMeet) X(EdgesMeetBeyondFirst) \
  X(EdgesMeetBeyondSecond) X(EdgesMeetNoCloser) X(EdgesMeetCloser) X(SecondContactMoved) \
  X(SecondContactStays) X(NothingFound) X(FoundNoCloser) X(EdgeOnVertexOutside) \
  X(EdgeOnVertexNoCloser) X(EdgeOnVertexCloser) X(EdgeOnEdgesDoNotMeet) X(EdgeOnMeetBeyondFirst) \
  X(EdgeOnMeetBeyondSecond) X(EdgeOnEdgesNoCloser) X(EdgeOnEdgesCloser) X(CoplanarMissed) \
  X(CoplanarNoCloser) X(CoplanarCloser)
// clang-format on

/// The branches of a call. The tests count them.
enum class Branch {
#define TRANSCRIPTION_ENUMERATOR(name) name,
  TRANSCRIPTION_BRANCHES(TRANSCRIPTION_ENUMERATOR)
#undef TRANSCRIPTION_ENUMERATOR
      Count
};

inline const char* Name(Branch branch) {
#define TRANSCRIPTION_STRING(name) #name,
  static const char* const names[] = {TRANSCRIPTION_BRANCHES(TRANSCRIPTION_STRING)};
#undef TRANSCRIPTION_STRING
  return names[static_cast<unsigned>(branch)];
}

struct NoTrace {
  void operator()(Branch) const {}
};

inline double LinearTolerance() {
  return omi_Singleton<gsl_Util>::Instance().linearTolerance;
}

inline bool PointInTriangle(const gsl_Point& x, const gsl_Point& p0, const gsl_Point& p1,
                            const gsl_Point& p2, double* weights) {
  const gsl_Point* const p[3] = {&p0, &p1, &p2};
  const double tol2 = LinearTolerance() * LinearTolerance();
  bool inside = true;
  for (int i = 0; i < 3; ++i) {
    const gsl_Point& next = *p[(i + 1) % 3];
    const gsl_Point& last = *p[(i + 2) % 3];
    const gsl_Vector a(*p[i], next);
    const gsl_Vector b(last, *p[i]);
    const gsl_Vector normal = a.CrossProduct(b);
    const double nn = normal.DotProduct(normal);
    const gsl_Vector c = gsl_Vector(x, next).CrossProduct(gsl_Vector(last, x));
    weights[i] = c.DotProduct(normal) / nn;
    if (weights[i] * nn < -tol2) inside = false;
  }
  return inside;
}

inline bool PointSegmentParameters(const gsl_Point& x, const gsl_Point& p0, const gsl_Point& p1,
                                   double* weights) {
  const gsl_Point* const p[2] = {&p0, &p1};
  const double length = p0.GetDistance(p1);
  if (LinearTolerance() >= length) {
    if (LinearTolerance() >= x.GetDistance(p0)) {
      weights[0] = 0.0;
      weights[1] = 1.0;
      return true;
    }
    return false;
  }
  bool inside = true;
  for (int i = 0; i < 2; ++i) {
    const gsl_Vector toX(x, *p[i]);
    const gsl_Vector toOther(*p[1 - i], *p[i]);
    weights[i] = toX.DotProduct(toOther) / (length * length);
    if (weights[i] * length < -LinearTolerance()) inside = false;
  }
  return inside;
}

/// Returns 0.0 for planes that are not parallel.
inline double DistanceBetweenParallelPlanes(const gsl_Plane& a, const gsl_Plane& b) {
  if (!b.Direction().IsOn(a.Direction())) return 0.0;
  return a.PointOn().GetDistance(b);
}

template <class Trace>
void ProjectTriangleAlong(const gsl_Point* tri, const gsl_Plane& plane, const gsl_Vector& d,
                          gsl_Point* shadow, const Trace& trace) {
  for (int i = 0; i < 3; ++i) {
    const gsl_StLine line(tri[i], d);
    static_cast<void>(line.Intersect(plane, shadow[i]));
    trace(shadow[i].uid == tri[i].uid ? Branch::ShadowStays : Branch::ShadowMoved);
  }
}

template <class Trace>
bool EdgeOnTriangleDist(const gsl_Point* e, const gsl_Point* f, const gsl_Plane& planeF,
                        const gsl_Vector& d, int side, gsl_Point* contacts, double& distance,
                        const Trace& trace) {
  const int k = (1 - side) / 2;
  bool found = false;
  gsl_Point es[3];
  ProjectTriangleAlong(e, planeF, d, es, trace);
  for (int i = 0; i < 3; ++i) {
    double weights[3];
    if (!PointInTriangle(es[i], f[0], f[1], f[2], weights)) {
      trace(Branch::EdgeOnVertexOutside);
      continue;
    }
    const double g = std::fabs(e[i].GetDistance(es[i]));
    trace(distance > g ? Branch::EdgeOnVertexCloser : Branch::EdgeOnVertexNoCloser);
    if (distance > g) {
      found = true;
      contacts[k] = e[i];
      contacts[1 - k] = es[i];
      distance = g;
    }
  }
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const gsl_StLine edgeF(f[i], f[(i + 1) % 3]);
      const gsl_StLine edgeE(es[j], es[(j + 1) % 3]);
      gsl_Point p;
      double gap;
      double w[2];
      if (!edgeF.Intersect(edgeE, p, gap)) {
        trace(Branch::EdgeOnEdgesDoNotMeet);
        continue;
      }
      if (!PointSegmentParameters(p, f[i], f[(i + 1) % 3], w)) {
        trace(Branch::EdgeOnMeetBeyondFirst);
        continue;
      }
      if (!PointSegmentParameters(p, es[j], es[(j + 1) % 3], w)) {
        trace(Branch::EdgeOnMeetBeyondSecond);
        continue;
      }
      found = true;
      const gsl_Point q(e[j], w[1], e[(j + 1) % 3], w[0]);
      const double g = std::fabs(p.GetDistance(q));
      trace(distance > g ? Branch::EdgeOnEdgesCloser : Branch::EdgeOnEdgesNoCloser);
      if (distance > g) {
        contacts[1 - k] = p;
        contacts[k] = q;
        distance = g;
      }
    }
  }
  return found;
}

template <class Trace>
bool CoplanarVertexEdgeDist(const gsl_Point* t1, const gsl_Point* t2, const gsl_Vector& d, int side,
                            gsl_Point* contacts, double& distance, const Trace& trace) {
  const int k = (1 - side) / 2;
  bool found = false;
  for (int i = 0; i < 3; ++i) {
    const gsl_StLine line(t1[i], d);
    for (int j = 0; j < 3; ++j) {
      const gsl_Segment s(t2[i], t2[(i + 1) % 3]);
      gsl_Point p;
      if (!s.Intersect(line, p)) {
        trace(Branch::CoplanarMissed);
        continue;
      }
      const double g = std::fabs(side * d.DotProduct(gsl_Vector(t1[i], p)));
      trace(distance > g ? Branch::CoplanarCloser : Branch::CoplanarNoCloser);
      if (distance > g) {
        found = true;
        contacts[k] = t1[i];
        contacts[1 - k] = p;
        distance = g;
      }
    }
  }
  return found;
}

/// Makes a candidate on the plane of A the contact when it is closer.
inline bool Improve(const gsl_Point& candidate, const gsl_Plane& planeB, const gsl_Vector& d,
                    gsl_Point* contacts, double& distance) {
  const double g = std::fabs(candidate.GetDistance(planeB, d));
  if (!(distance > g)) return false;
  contacts[0] = candidate;
  distance = g;
  return true;
}

template <class Trace>
bool TryVertices(const gsl_Point* vertices, const gsl_Point* over, const gsl_Plane& planeB,
                 const gsl_Vector& d, bool ofA, gsl_Point* contacts, double& distance,
                 const Trace& trace) {
  bool found = false;
  for (int i = 0; i < 3; ++i) {
    double weights[3];
    if (!PointInTriangle(vertices[i], over[0], over[1], over[2], weights)) {
      trace(ofA ? Branch::VertexOfAOutside : Branch::VertexOfBOutside);
      continue;
    }
    found = true;
    if (Improve(vertices[i], planeB, d, contacts, distance)) {
      trace(ofA ? Branch::VertexOfACloser : Branch::VertexOfBCloser);
    } else {
      trace(ofA ? Branch::VertexOfANoCloser : Branch::VertexOfBNoCloser);
    }
  }
  return found;
}

template <class Trace>
bool TryEdges(const gsl_Point* a, const gsl_Point* bs, const gsl_Plane& planeB, const gsl_Vector& d,
              gsl_Point* contacts, double& distance, const Trace& trace) {
  bool found = false;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const gsl_StLine edgeA(a[i], a[(i + 1) % 3]);
      const gsl_StLine edgeB(bs[j], bs[(j + 1) % 3]);
      gsl_Point p;
      double gap;
      double w[2];
      if (!edgeA.Intersect(edgeB, p, gap)) {
        trace(Branch::EdgesDoNotMeet);
      } else if (!PointSegmentParameters(p, a[i], a[(i + 1) % 3], w)) {
        trace(Branch::EdgesMeetBeyondFirst);
      } else if (!PointSegmentParameters(p, bs[j], bs[(j + 1) % 3], w)) {
        trace(Branch::EdgesMeetBeyondSecond);
      } else {
        found = true;
        const bool closer = Improve(p, planeB, d, contacts, distance);
        trace(closer ? Branch::EdgesMeetCloser : Branch::EdgesMeetNoCloser);
      }
    }
  }
  return found;
}

/// Sweeps two triangles that are not edge-on.
template <class Trace>
bool FaceToFace(const gsl_Point* a, const gsl_Point* b, const gsl_Plane& planeA,
                const gsl_Plane& planeB, const gsl_Vector& d, gsl_Point* contacts, double& distance,
                const Trace& trace) {
  const double before = distance;
  gsl_Point bs[3];
  ProjectTriangleAlong(b, planeA, d, bs, trace);
  bool found = TryVertices(a, bs, planeB, d, true, contacts, distance, trace);
  if (TryVertices(bs, a, planeB, d, false, contacts, distance, trace)) found = true;
  if (TryEdges(a, bs, planeB, d, contacts, distance, trace)) found = true;
  if (!found) {
    trace(Branch::NothingFound);
    return false;
  }
  if (!(before > distance)) trace(Branch::FoundNoCloser);
  const gsl_StLine line(contacts[0], d);
  static_cast<void>(line.Intersect(planeB, contacts[1]));
  trace(contacts[1].uid == contacts[0].uid ? Branch::SecondContactStays
                                           : Branch::SecondContactMoved);
  return true;
}

template <class Trace>
bool BothEdgeOn(const gsl_Point* a, const gsl_Point* b, const gsl_Plane& planeA,
                const gsl_Plane& planeB, const gsl_Vector& d, gsl_Point* contacts, double& distance,
                const Trace& trace) {
  if (DistanceBetweenParallelPlanes(planeA, planeB) > LinearTolerance()) {
    trace(Branch::SeparatePlanes);
    return false;
  }
  if (CoplanarVertexEdgeDist(a, b, d, +1, contacts, distance, trace)) {
    trace(Branch::CoplanarByA);
    return true;
  }
  const bool found = CoplanarVertexEdgeDist(b, a, d, -1, contacts, distance, trace);
  trace(found ? Branch::CoplanarByB : Branch::CoplanarByNone);
  return found;
}

/// Orders the extents of both triangles along the axis. Returns false when the slabs reject the
/// pair.
template <class Trace>
bool SlabsAccept(gsl_Point* a, gsl_Point* b, const gsl_Vector& d, double reach,
                 const Trace& trace) {
  const gsl_StLine axis(a[0], d);
  double min[2];
  double max[2];
  gsl_Point* const triangles[2] = {a, b};
  for (int k = 0; k < 2; ++k) {
    double t;
    triangles[k][0].ProjectOn(axis, t);
    min[k] = max[k] = t;
    for (int i = 1; i < 3; ++i) {
      triangles[k][i].ProjectOn(axis, t);
      if (t < min[k]) min[k] = t;
      if (t > max[k]) max[k] = t;
    }
  }
  if (min[0] > max[1]) {
    trace(Branch::Behind);
    return false;
  }
  if (min[1] - max[0] > reach) {
    trace(Branch::BeyondReach);
    return false;
  }
  return true;
}

template <class Trace = NoTrace>
bool TriTriMinDirectionalDist(const gsl_Vector& direction, const gsl_Point& a0, const gsl_Point& a1,
                              const gsl_Point& a2, const gsl_Point& b0, const gsl_Point& b1,
                              const gsl_Point& b2, const bool* twoSided, double margin,
                              gsl_Point* contacts, double& distance, const Trace& trace = Trace()) {
  gsl_Point a[3] = {a0, a1, a2};
  gsl_Point b[3] = {b0, b1, b2};
  gsl_Vector nA(a[0], a[1], a[2]);
  gsl_Vector nB(b[0], b[1], b[2]);
  if (nA.magnitude < 0.5) {
    trace(Branch::DegenerateA);
    return false;
  }
  if (nB.magnitude < 0.5) {
    trace(Branch::DegenerateB);
    return false;
  }

  const gsl_Vector d = direction.NormalizedCopy();
  bool aEdgeOn = false;
  bool bEdgeOn = false;
  if (nA.IsOrthogonal(d)) {
    aEdgeOn = true;
    trace(Branch::AEdgeOn);
  } else if (nA.DotProduct(d) < 0.0) {
    trace(twoSided[0] ? Branch::ATurned : Branch::ARefused);
    if (!twoSided[0]) return false;
    nA.Negate();
  } else {
    trace(Branch::AAlong);
  }
  if (nB.IsOrthogonal(d)) {
    bEdgeOn = true;
    trace(Branch::BEdgeOn);
  } else if (nB.DotProduct(d) > 0.0) {
    trace(twoSided[1] ? Branch::BTurned : Branch::BRefused);
    if (!twoSided[1]) return false;
    nB.Negate();
  } else {
    trace(Branch::BAlong);
  }
  if (!SlabsAccept(a, b, d, distance + margin, trace)) return false;

  const gsl_Plane planeA(a[0], nA);
  const gsl_Plane planeB(b[0], nB);
  if (!aEdgeOn && bEdgeOn) {
    trace(Branch::OnlyBEdgeOn);
    return EdgeOnTriangleDist(b, a, planeA, d, -1, contacts, distance, trace);
  }
  if (aEdgeOn && !bEdgeOn) {
    trace(Branch::OnlyAEdgeOn);
    return EdgeOnTriangleDist(a, b, planeB, d, +1, contacts, distance, trace);
  }
  if (aEdgeOn && bEdgeOn) {
    trace(Branch::BothEdgeOn);
    return BothEdgeOn(a, b, planeA, planeB, d, contacts, distance, trace);
  }
  trace(Branch::NoneEdgeOn);
  return FaceToFace(a, b, planeA, planeB, d, contacts, distance, trace);
}

} // namespace transcription

#endif
