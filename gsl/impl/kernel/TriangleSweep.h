#ifndef GSL_KERNEL_TRIANGLE_SWEEP_H
#define GSL_KERNEL_TRIANGLE_SWEEP_H

#include "kernel/SegmentPair.h"
#include "kernel/SweepContacts.h"
#include "kernel/Triangle.h"
#include "kernel/TriangleSweepBounds.h"

/// One triangle swept along a direction onto another, on bare coordinates.
namespace gsl_kernel {

struct SourcedTriangle {
  SourcedPoint p[3];
};

/// Returns the point moved along d onto the plane. A point that lies on the plane, or that d does
/// not lead there, is returned as it is, identity included.
inline SourcedPoint ShadowOf(const SourcedPoint& p, const Plane& plane, const Measured3& d,
                             const SweepTolerances& tol) {
  Coord3 crossing;
  if (IntersectRayPlane(p.c, d, plane, tol.linear, tol.cosine, crossing) != RayPlane::Crossing) {
    return p;
  }
  return {crossing, kComputed};
}

inline SourcedTriangle ProjectTriangleAlong(const SourcedTriangle& tri, const Plane& plane,
                                            const Measured3& d, const SweepTolerances& tol) {
  return {{ShadowOf(tri.p[0], plane, d, tol), ShadowOf(tri.p[1], plane, d, tol),
           ShadowOf(tri.p[2], plane, d, tol)}};
}

inline TriangleTest InsideTest(const SourcedTriangle& tri, double linearTolerance) {
  return {tri.p[0].c, tri.p[1].c, tri.p[2].c, linearTolerance};
}

/// An edge, with the values that all its crossings use.
struct PreparedEdge {
  Coord3 start, end;
  Line line;
  Coord3 unit;
  /// `unit` is not zero and has all its digits: the edge is neither shorter than the tolerance nor
  /// shorter than kLeastUnitLength.
  bool hasUnit;
};

struct PreparedEdges {
  PreparedEdge edge[3];

  PreparedEdges(const SourcedTriangle& tri, double linearTolerance) {
    for (int i = 0; i < 3; ++i) {
      const Coord3& start = tri.p[i].c;
      const Coord3& end = tri.p[(i + 1) % 3].c;
      const Line line = LineThrough(start, end);
      edge[i] = {start, end, line,
                 gsl_arithmetic::NormalizedCopy(line.direction, linearTolerance).c,
                 line.direction.magnitude >= linearTolerance &&
                     line.direction.magnitude > kLeastUnitLength};
    }
  }

  /// Returns a number that no coordinate, difference of coordinates or length exceeds, for both.
  static double ReachOf(const PreparedEdges& a, const PreparedEdges& b) {
    const auto squares = [](const PreparedEdges& edges) {
      return Dot(edges.edge[0].start, edges.edge[0].start) +
             edges.edge[0].line.direction.magnitude * edges.edge[0].line.direction.magnitude +
             edges.edge[2].line.direction.magnitude * edges.edge[2].line.direction.magnitude;
    };
    return std::sqrt(8.0 * (squares(a) + squares(b)));
  }
};

/// Returns true when the lines of two edges cross so far beyond one of them that CrossEdges returns
/// false. `margin` is kCrossingMargin of the reach, and two tolerances.
inline bool CrossBeyond(const PreparedEdge& first, const PreparedEdge& second, double margin) {
  const double c = Dot(first.unit, second.unit);
  const double sine2 = 1.0 - c * c;
  const Coord3 w = Subtract(second.start, first.start);
  const double wu = Dot(w, first.unit), wv = Dot(w, second.unit);
  // The positions along the edges, times the square of the sine.
  const double s = wu - wv * c, t = wu * c - wv;
  const double before = -margin * sine2;
  const bool isBeyond = (s < before) | (t < before) |
                        (s > (first.line.direction.magnitude + margin) * sine2) |
                        (t > (second.line.direction.magnitude + margin) * sine2);
  return isBeyond & (sine2 > kCrossingSineSquare) & first.hasUnit & second.hasUnit;
}

/// Finds where two edges cross. p lies on the line of the first edge. The weights locate p along
/// the second edge.
///
/// The lines must be neither skew nor parallel, and p must be within both edges. The four tests can
/// run in any order, so the cheap tests, which reject most, come first.
inline bool CrossEdges(const PreparedEdge& first, const PreparedEdge& second,
                       double linearTolerance, Coord3& p, double* weights) {
  if (IsParallel(first.line.direction, second.line.direction, kLineParallelTolerance)) {
    return false;
  }
  p = ClosestOfNonParallel(first.start, first.unit, second.start, second.unit).onFirst;
  return PointSegmentParameters(p, first.start, first.end, first.line.direction.magnitude,
                                linearTolerance, weights) &&
         PointSegmentParameters(p, second.start, second.end, second.line.direction.magnitude,
                                linearTolerance, weights) &&
         !LinesAreSkew(first.line, second.line, linearTolerance);
}

/// Calls visit(j, p, weights) for every edge i of `first` and j of `second` that cross, in (i, j)
/// order.
template <class Visit>
inline void ForEachEdgeCrossing(const SourcedTriangle& first, const SourcedTriangle& second,
                                double linearTolerance, const Visit& visit) {
  const PreparedEdges firstEdges(first, linearTolerance);
  const PreparedEdges secondEdges(second, linearTolerance);
  const double margin = kCrossingMargin * PreparedEdges::ReachOf(firstEdges, secondEdges) +
                        2.0 * std::fabs(linearTolerance);
  for (const PreparedEdge& edge : firstEdges.edge) {
    for (int j = 0; j < 3; ++j) {
      if (CrossBeyond(edge, secondEdges.edge[j], margin)) continue;
      Coord3 p;
      double weights[2];
      if (CrossEdges(edge, secondEdges.edge[j], linearTolerance, p, weights)) {
        visit(j, p, weights);
      }
    }
  }
}

/// Sweeps a triangle that is edge-on to d against a face. A vertex counts as found only when it
/// improves the distance; an edge crossing always counts.
inline bool EdgeOnTriangleDist(const SourcedTriangle& edgeTri, const SourcedTriangle& faceTri,
                               const Plane& facePlane, const Measured3& d, int side,
                               const SweepTolerances& tol, SweepContacts& contacts) {
  const int k = SlotOf(side);
  bool found = false;
  const SourcedTriangle shadow = ProjectTriangleAlong(edgeTri, facePlane, d, tol);
  const TriangleTest face = InsideTest(faceTri, tol.linear);
  for (int i = 0; i < 3; ++i) {
    if (!face.Contains(shadow.p[i].c)) continue;
    const double g = std::fabs(Distance(edgeTri.p[i].c, shadow.p[i].c));
    if (!(contacts.distance > g)) continue;
    // A vertex counts only when it is closer; a crossing always counts.
    found = true;
    contacts.Accept(k, edgeTri.p[i], shadow.p[i], g);
  }
  ForEachEdgeCrossing(faceTri, shadow, tol.linear, [&](int j, const Coord3& p, const double* w) {
    // edge-on-crossing-always-counts: a vertex counts only when it is closer.
    found = true;
    const Coord3& e0 = edgeTri.p[j].c;
    const Coord3& e1 = edgeTri.p[(j + 1) % 3].c;
    const Coord3 q = Add(Multiply(e0, w[1]), Multiply(e1, w[0]));
    const double g = std::fabs(Distance(p, q));
    if (contacts.distance > g) {
      contacts.Accept(k, {q, kComputed}, {p, kComputed}, g);
    }
  });
  return found;
}

/// Sweeps two triangles that are edge-on and in one plane. Tries vertex i of the first triangle
/// against edge i of the second.
inline bool CoplanarVertexEdgeDist(const SourcedTriangle& tri1, const SourcedTriangle& tri2,
                                   const Measured3& d, int side, const SweepTolerances& tol,
                                   SweepContacts& contacts) {
  const int k = SlotOf(side);
  bool found = false;
  for (int i = 0; i < 3; ++i) {
    const Line line = {tri1.p[i].c, d};
    for (int j = 0; j < 3; ++j) {
      // coplanar-edge-i-three-times: the edge follows i, not j.
      const Segment edge = {tri2.p[i].c, tri2.p[(i + 1) % 3].c};
      Coord3 p;
      if (CrossSegmentLine(edge, line, tol.linear, p) != SegmentCrossing::Crossing) continue;
      const double g = std::fabs(Dot(d.c, Subtract(p, tri1.p[i].c)));
      if (!(contacts.distance > g)) continue;
      found = true;
      contacts.Accept(k, tri1.p[i], {p, kComputed}, g);
    }
  }
  return found;
}

/// Sweeps two triangles that are not edge-on. Tries the vertices of A over B, the vertices of B
/// under A, and the crossings of edges.
template <class CallerContact>
inline bool FaceToFaceDist(const SourcedTriangle& a, const SourcedTriangle& b, const Plane& planeA,
                           const Plane& planeB, const Measured3& d, const SweepTolerances& tol,
                           const CallerContact& callerContact, SweepContacts& contacts) {
  bool found = false;
  const auto consider = [&](const SourcedPoint& onA) {
    found = true;
    // distances-are-unsigned: the way back counts like the way ahead.
    const double g = std::fabs(PlaneDistanceAlong(onA.c, planeB, d));
    if (!(contacts.distance > g)) return;
    contacts.point[0] = onA;
    contacts.written[0] = true;
    contacts.distance = g;
  };
  const auto considerCornersInside = [&](const SourcedTriangle& corners,
                                         const SourcedTriangle& face) {
    const TriangleTest inside = InsideTest(face, tol.linear);
    for (const SourcedPoint& corner : corners.p) {
      if (inside.Contains(corner.c)) consider(corner);
    }
  };
  const SourcedTriangle shadow = ProjectTriangleAlong(b, planeA, d, tol);
  considerCornersInside(a, shadow);
  considerCornersInside(shadow, a);
  ForEachEdgeCrossing(a, shadow, tol.linear, [&](int, const Coord3& p, const double*) {
    consider({p, kComputed});
  });
  if (!found) return false;
  // second-contact-follows-first: the first contact may still be what the caller passed in.
  const Coord3 first = contacts.written[0] ? contacts.point[0].c : callerContact();
  contacts.point[1] = ShadowOf({first, kFirstContact}, planeB, d, tol);
  contacts.written[1] = true;
  return true;
}

struct Slab {
  double min, max;
};

/// Returns the parameters of the vertices on the axis through `origin` along the unit vector d.
inline Slab SlabAlong(const Coord3& origin, const Coord3& d, const SourcedTriangle& tri) {
  const double t0 = ParameterAlong(tri.p[0].c, origin, d);
  Slab slab = {t0, t0};
  for (int i = 1; i < 3; ++i) {
    const double t = ParameterAlong(tri.p[i].c, origin, d);
    if (t < slab.min) slab.min = t;
    if (t > slab.max) slab.max = t;
  }
  return slab;
}

/// Returns true when B lies wholly behind A along d, or farther ahead than `reach`. No rejection
/// writes anything, so this rejection, the cheapest, comes first.
inline bool SlabsReject(const SourcedTriangle& a, const SourcedTriangle& b, const Measured3& d,
                        double reach, double linearTolerance) {
  const Coord3 axis = gsl_arithmetic::NormalizedCopy(d, linearTolerance).c;
  const Slab slabA = SlabAlong(a.p[0].c, axis, a);
  const Slab slabB = SlabAlong(a.p[0].c, axis, b);
  return slabA.min > slabB.max || slabB.min - slabA.max > reach;
}

enum class Facing { Right, EdgeOn, Wrong };

/// Returns whether the normal points with `sense` * d.
inline Facing FacingOf(const Measured3& normal, const Measured3& d, double sense,
                       double cosineTolerance) {
  if (gsl_arithmetic::IsOrthogonal(normal, d, cosineTolerance)) return Facing::EdgeOn;
  return sense * Dot(normal.c, d.c) < 0.0 ? Facing::Wrong : Facing::Right;
}

/// Error of the length of a normal that is present, in unit roundoffs.
// The length is m (1 / m). The reciprocal is rounded, and so is the product. A length that
// overflows results in NaN, and a subnormal length can result in infinity: both count as present.
constexpr double kUnitNormalRoundoffs = 1.0 + 1.0;

/// Length below which a triangle has no normal.
// The length of a normal is exactly 0, or within kUnitNormalRoundoffs of 1. Every number between
// the two separates them.
constexpr double kNormalPresent = 0.5;

inline Measured3 NormalOf(const SourcedTriangle& tri, double cosineTolerance) {
  return UnitNormal(tri.p[0].c, tri.p[1].c, tri.p[2].c, cosineTolerance);
}

/// Turns the normal of a triangle that faces the wrong way. Returns false when the caller does not
/// allow the turn. Does not read the flag of a triangle that faces the right way.
inline bool Turn(Measured3& normal, Facing facing, const bool* twoSided) {
  if (facing != Facing::Wrong) return true;
  if (!*twoSided) return false;
  normal.c = Negated(normal.c);
  return true;
}

/// Sweeps a pair that SlabsReject keeps along d, a unit vector or the zero vector. A triangle
/// without a normal ends the sweep before anything is written, and so does a triangle that faces
/// the wrong way. `callerContact` returns what the caller passed in as contacts[0]. It is called
/// only where this contact counts.
template <class CallerContact>
inline bool SweepTriangle(const Measured3& d, const SourcedTriangle& a, const SourcedTriangle& b,
                          const bool* twoSided, const SweepTolerances& tol,
                          const CallerContact& callerContact, SweepContacts& contacts) {
  Measured3 normalA = NormalOf(a, tol.cosine);
  if (normalA.magnitude < kNormalPresent) return false;
  Measured3 normalB = NormalOf(b, tol.cosine);
  if (normalB.magnitude < kNormalPresent) return false;
  const Facing facingA = FacingOf(normalA, d, 1.0, tol.cosine);
  if (!Turn(normalA, facingA, &twoSided[0])) return false;
  const Facing facingB = FacingOf(normalB, d, -1.0, tol.cosine);
  if (!Turn(normalB, facingB, &twoSided[1])) return false;

  const Plane planeA = {a.p[0].c, normalA};
  const Plane planeB = {b.p[0].c, normalB};
  const bool edgeOnA = facingA == Facing::EdgeOn;
  const bool edgeOnB = facingB == Facing::EdgeOn;
  if (!edgeOnA && edgeOnB) return EdgeOnTriangleDist(b, a, planeA, d, -1, tol, contacts);
  if (edgeOnA && !edgeOnB) return EdgeOnTriangleDist(a, b, planeB, d, +1, tol, contacts);
  if (edgeOnA) {
    // crossing-planes-count-as-one: planes that are not parallel have the distance 0.
    if (DistanceBetweenParallelPlanes(planeA, planeB, tol.cosine) > tol.linear) return false;
    // coplanar-b-only-without-a: after a contact of A's vertices, B's vertices are not tried.
    return CoplanarVertexEdgeDist(a, b, d, +1, tol, contacts) ||
           CoplanarVertexEdgeDist(b, a, d, -1, tol, contacts);
  }
  return FaceToFaceDist(a, b, planeA, planeB, d, tol, callerContact, contacts);
}

} // namespace gsl_kernel

#endif
