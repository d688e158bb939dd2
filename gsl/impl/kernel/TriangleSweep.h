#ifndef GSL_KERNEL_TRIANGLE_SWEEP_H
#define GSL_KERNEL_TRIANGLE_SWEEP_H

#include "kernel/SegmentPair.h"
#include "kernel/SweepContacts.h"
#include "kernel/Triangle.h"
#include "kernel/TriangleSweepBounds.h"
#include "kernel/TrianglesApart.h"
#include "kernel/TwoDoubles.h"

/// One triangle swept along a direction onto another, on bare coordinates.
namespace gsl_kernel {

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

/// The edges of a triangle, with the values that all their crossings use. Edge i leads from corner
/// i. Edges 0 and 1 are in the first lanes, and edge 2 is in both lanes of the second.
struct PreparedEdges {
  const SourcedTriangle& tri;
  TwoCoords start[2], way[2], unit[2];
  TwoDoubles length[2];
  /// No unit is zero, and all have their digits: no edge is shorter than the tolerance or shorter
  /// than kLeastUnitLength.
  bool haveUnits;

  PreparedEdges(const SourcedTriangle& triangle, double linearTolerance) : tri(triangle) {
    const Coord3 &p0 = tri.p[0].c, &p1 = tri.p[1].c, &p2 = tri.p[2].c;
    start[0] = Together(p0, p1);
    start[1] = Both(p2);
    way[0] = Subtract(Together(p1, p2), start[0]);
    way[1] = Subtract(Both(p0), start[1]);
    for (int k = 0; k < 2; ++k) {
      length[k] = SquareRoot(Dot(way[k], way[k]));
      // Is NormalizedCopy.
      unit[k] = Multiply(way[k], Both(1.0) / length[k]);
      const auto isShort = Both(linearTolerance) > length[k];
      unit[k] = {isShort ? Both(0.0) : unit[k].x, isShort ? Both(0.0) : unit[k].y,
                 isShort ? Both(0.0) : unit[k].z};
    }
    haveUnits =
        HasUnit(0, linearTolerance) && HasUnit(1, linearTolerance) && HasUnit(2, linearTolerance);
  }

  const Coord3& Start(int i) const { return tri.p[i].c; }
  const Coord3& End(int i) const { return tri.p[(i + 1) % 3].c; }
  Coord3 Unit(int i) const { return At(unit, i); }
  double Length(int i) const { return length[i / 2][i % 2]; }
  Line LineOf(int i) const { return {Start(i), {At(way, i), Length(i)}}; }

  /// Returns a number that no coordinate, difference of coordinates or length exceeds, for both.
  static double ReachOf(const PreparedEdges& a, const PreparedEdges& b) {
    const auto squares = [](const PreparedEdges& edges) {
      return Dot(edges.Start(0), edges.Start(0)) + edges.Length(0) * edges.Length(0) +
             edges.Length(2) * edges.Length(2);
    };
    return std::sqrt(8.0 * (squares(a) + squares(b)));
  }

private:
  static Coord3 At(const TwoCoords (&c)[2], int i) {
    return {c[i / 2].x[i % 2], c[i / 2].y[i % 2], c[i / 2].z[i % 2]};
  }
  bool HasUnit(int i, double linearTolerance) const {
    return Length(i) >= linearTolerance && Length(i) > kLeastUnitLength;
  }
};

/// Where the lines of edge i of one triangle and of every edge of another cross, in the lanes of
/// the other.
struct CrossingRow {
  /// Positive where the lines cross so far beyond one of the edges that CrossEdges returns false.
  TwoDoubles missed[2];
  TwoDoubles cosine[2];    ///< between the edges
  TwoDoubles wu[2], wv[2]; ///< the way from start to start, along both edges

  CrossingRow() = default;
  /// `margin` is kCrossingMargin of the reach, and two tolerances.
  CrossingRow(const PreparedEdges& first, int i, const PreparedEdges& second, double margin) {
    const TwoCoords p = Both(first.Start(i)), u = Both(first.Unit(i));
    const TwoDoubles halfLength = Both(0.5 * first.Length(i));
    for (int k = 0; k < 2; ++k) {
      const TwoCoords w = Subtract(second.start[k], p), &v = second.unit[k];
      const TwoDoubles c = Dot(u, v), sine2 = Both(1.0) - c * c;
      cosine[k] = c;
      wu[k] = Dot(w, u);
      wv[k] = Dot(w, v);
      // How far the positions along the edges are from the middles, beyond the halves of the edges.
      // All is times the square of the sine.
      const TwoDoubles halfU = halfLength * sine2, halfV = Both(0.5) * second.length[k] * sine2;
      const TwoDoubles beyondU = Magnitude(wu[k] - wv[k] * c - halfU) - halfU;
      const TwoDoubles beyondV = Magnitude(wu[k] * c - wv[k] - halfV) - halfV;
      const TwoDoubles beyond = Larger(beyondU, beyondV) - Both(margin) * sine2;
      missed[k] = sine2 > Both(kCrossingSineSquare) ? beyond : Both(0.0);
    }
  }
};

/// Finds where edge i of `first` and edge j of `second` cross. p lies on the line of the first
/// edge. The weights locate p along the second edge.
///
/// The lines must be neither skew nor parallel, and p must be within both edges. The four tests can
/// run in any order, so the cheap tests, which reject most, come first.
inline bool CrossEdges(const PreparedEdges& first, int i, const PreparedEdges& second, int j,
                       double linearTolerance, Coord3& p, double* weights) {
  const Line line1 = first.LineOf(i), line2 = second.LineOf(j);
  if (IsParallel(line1.direction, line2.direction, kLineParallelTolerance)) return false;
  p = ClosestOfNonParallel(line1.point, first.Unit(i), line2.point, second.Unit(j)).onFirst;
  return PointSegmentParameters(p, line1.point, first.End(i), first.Length(i), linearTolerance,
                                weights) &&
         PointSegmentParameters(p, line2.point, second.End(j), second.Length(j), linearTolerance,
                                weights) &&
         !LinesAreSkew(line1, line2, linearTolerance);
}

/// The crossings of the edges of two triangles, as far as no division decides them.
struct EdgeCrossings {
  PreparedEdges first, second;
  double reach, margin;
  CrossingRow row[3];
  unsigned open; ///< a bit 3 i + j for each pair that may cross

  EdgeCrossings(const SourcedTriangle& a, const SourcedTriangle& b, double linearTolerance)
      : first(a, linearTolerance), second(b, linearTolerance),
        reach(PreparedEdges::ReachOf(first, second)),
        margin(kCrossingMargin * reach + 2.0 * std::fabs(linearTolerance)), open(0) {
    // The pairs are judged without a branch, because no branch could be predicted.
    for (int i = 0; i < 3; ++i) {
      row[i] = CrossingRow(first, i, second, margin);
      for (int j = 0; j < 3; ++j)
        open |= static_cast<unsigned>(!(row[i].missed[j / 2][j % 2] > 0.0)) << (3 * i + j);
    }
    if (!(first.haveUnits & second.haveUnits)) open = kEveryPair;
  }

  static constexpr unsigned kEveryPair = (1u << 9) - 1;
};

/// Calls visit(j, p, weights) for every edge i of `a` and j of `b` that cross, in (i, j) order.
template <class Visit>
inline void ForEachEdgeCrossing(const SourcedTriangle& a, const SourcedTriangle& b,
                                double linearTolerance, const Visit& visit) {
  const EdgeCrossings crossings(a, b, linearTolerance);
  for (unsigned open = crossings.open; open != 0; open &= open - 1) {
    const auto pair = static_cast<int>(LowestBit(open));
    const int i = pair / 3, j = pair % 3;
    Coord3 p;
    double weights[2];
    if (CrossEdges(crossings.first, i, crossings.second, j, linearTolerance, p, weights)) {
      visit(j, p, weights);
    }
  }
}

/// Returns whether CrossEdges certainly returns true for edge i of the first triangle and edge j of
/// the second. It may return false for edges that cross.
inline bool AreCertainToCross(const EdgeCrossings& crossings, int i, int j,
                              double linearTolerance) {
  const PreparedEdges &first = crossings.first, &second = crossings.second;
  const CrossingRow& row = crossings.row[i];
  const int k = j / 2, lane = j % 2;
  const double c = row.cosine[k][lane], wu = row.wu[k][lane], wv = row.wv[k][lane];
  const double sine2 = 1.0 - c * c;
  const double halfU = 0.5 * first.Length(i) * sine2, halfV = 0.5 * second.Length(j) * sine2;
  const double beyondU = std::fabs(wu - wv * c - halfU) - halfU;
  const double beyondV = std::fabs(wu * c - wv - halfV) - halfV;
  const double border = -crossings.margin * sine2;
  const double skew = std::fabs(Dot(Subtract(second.Start(j), first.Start(i)),
                                    Cross(first.Unit(i), second.Unit(j)))) +
                      kSkewRounding * crossings.reach;
  return (beyondU < border) & (beyondV < border) & (sine2 > kCrossingSineSquare) &
         (skew * skew < 0.25 * linearTolerance * linearTolerance * sine2) &
         (crossings.reach < kLargestApart) & first.haveUnits & second.haveUnits &
         (linearTolerance >= 0.0);
}

/// Finds where two faces' edges cross, as CrossEdges does, without its divisions where they are not
/// needed.
inline bool CrossOpenPair(const EdgeCrossings& crossings, int pair, double linearTolerance,
                          Coord3& p) {
  const int i = pair / 3, j = pair % 3;
  const PreparedEdges &first = crossings.first, &second = crossings.second;
  if (!AreCertainToCross(crossings, i, j, linearTolerance)) {
    double weights[2];
    return CrossEdges(first, i, second, j, linearTolerance, p, weights);
  }
  const CrossingRow& row = crossings.row[i];
  const int k = j / 2, lane = j % 2;
  const double c = row.cosine[k][lane], wu = row.wu[k][lane], wv = row.wv[k][lane];
  // Is ClosestOfNonParallel.
  p = Add(first.Start(i), Multiply(first.Unit(i), (wv * c - wu) / (c * c - 1.0)));
  return true;
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

/// The candidates for the contact on A: corners of A, corners of the shadow, crossings of edges.
struct ContactsOnA {
  SourcedPoint point[3 + 3 + 9];
  unsigned count; ///< the points that are filled
  unsigned closest = kNone;
  double distance; ///< the least distance so far

  static constexpr unsigned kNone = 3 + 3 + 9;

  ContactsOnA(const SourcedTriangle& a, const SourcedTriangle& shadow, double reach)
      : count(6), distance(reach) {
    for (int i = 0; i < 3; ++i) {
      point[i] = a.p[i];
      point[i + 3] = shadow.p[i];
    }
  }

  /// Takes point k where it is closer to the plane of B along d. The first of equal ones stays.
  void Consider(unsigned k, const Plane& planeB, const Measured3& d) {
    // distances-are-unsigned: the way back counts like the way ahead.
    const double g = std::fabs(PlaneDistanceAlong(point[k].c, planeB, d));
    // The point is chosen without a branch, because no branch could be predicted.
    closest ^= (closest ^ k) & (0u - static_cast<unsigned>(distance > g));
    distance = Smaller(g, distance);
  }
};

/// Returns whether the sweep is certain to find no contact of two faces. `shadow` is the shadow of
/// B on the plane of A.
inline bool ShadowPassesAside(const SourcedTriangle& a, const SourcedTriangle& b,
                              const SourcedTriangle& shadow, const Plane& planeA,
                              const Measured3& d, double linearTolerance) {
  // The bounds are derived for a direction of the length 1, which only a stale length changes.
  if (!(linearTolerance >= 0.0) || !(d.magnitude > 0.5) || !(d.magnitude < 2.0)) return false;
  double longest = 0.0;
  for (int i = 0; i < 3; ++i) {
    if (shadow.p[i].source != kComputed) return false;
    longest = Larger(std::fabs(Dot(Subtract(b.p[i].c, planeA.point), planeA.normal.c)), longest);
  }
  return AreApart(a, shadow, longest / std::fabs(Dot(d.c, planeA.normal.c)), linearTolerance);
}

/// Sweeps two triangles that are not edge-on. Tries the vertices of A over B, the vertices of B
/// under A, and the crossings of edges.
template <class CallerContact>
inline bool FaceToFaceDist(const SourcedTriangle& a, const SourcedTriangle& b, const Plane& planeA,
                           const Plane& planeB, const Measured3& d, const SweepTolerances& tol,
                           const CallerContact& callerContact, SweepContacts& contacts) {
  const SourcedTriangle shadow = ProjectTriangleAlong(b, planeA, d, tol);
  if (ShadowPassesAside(a, b, shadow, planeA, d, tol.linear)) return false;
  ContactsOnA found(a, shadow, contacts.distance);
  unsigned inside =
      InsideTest(shadow, tol.linear).ContainsCorners(a.p[0].c, a.p[1].c, a.p[2].c) |
      InsideTest(a, tol.linear).ContainsCorners(shadow.p[0].c, shadow.p[1].c, shadow.p[2].c) << 3;
  bool isFound = inside != 0;
  for (; inside != 0; inside &= inside - 1)
    found.Consider(LowestBit(inside), planeB, d);
  const EdgeCrossings crossings(a, shadow, tol.linear);
  for (unsigned open = crossings.open; open != 0; open &= open - 1) {
    SourcedPoint& at = found.point[found.count];
    if (!CrossOpenPair(crossings, static_cast<int>(LowestBit(open)), tol.linear, at.c)) continue;
    at.source = kComputed;
    isFound = true;
    found.Consider(found.count++, planeB, d);
  }
  if (!isFound) return false;
  if (found.closest != ContactsOnA::kNone) {
    contacts.point[0] = found.point[found.closest];
    contacts.written[0] = true;
    contacts.distance = found.distance;
  }
  // second-contact-follows-first: the first contact may still be what the caller passed in.
  const Coord3 first = contacts.written[0] ? contacts.point[0].c : callerContact();
  contacts.point[1] = ShadowOf({first, kFirstContact}, planeB, d, tol);
  contacts.written[1] = true;
  return true;
}

/// The extents along an axis of A, in the first lane, and of B, in the second.
struct Slabs {
  TwoDoubles min, max;
};

/// Returns the parameters of the vertices on the axis through the first vertex of A along the unit
/// vector d.
inline Slabs SlabsAlong(const Coord3& d, const SourcedTriangle& a, const SourcedTriangle& b) {
  const TwoCoords origin = Both(a.p[0].c), axis = Both(d);
  // Is ParameterAlong.
  const TwoDoubles t0 = Dot(axis, Subtract(Together(a.p[0].c, b.p[0].c), origin));
  const TwoDoubles t1 = Dot(axis, Subtract(Together(a.p[1].c, b.p[1].c), origin));
  const TwoDoubles t2 = Dot(axis, Subtract(Together(a.p[2].c, b.p[2].c), origin));
  return {Smaller(t2, Smaller(t1, t0)), Larger(t2, Larger(t1, t0))};
}

/// Returns true when B lies wholly behind A along d, or farther ahead than `reach`. No rejection
/// writes anything, so this rejection, the cheapest, comes first.
inline bool SlabsReject(const SourcedTriangle& a, const SourcedTriangle& b, const Measured3& d,
                        double reach, double linearTolerance) {
  const Coord3 axis = gsl_arithmetic::NormalizedCopy(d, linearTolerance).c;
  const Slabs slabs = SlabsAlong(axis, a, b);
  return slabs.min[0] > slabs.max[1] || slabs.min[1] - slabs.max[0] > reach;
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
  // The flag and the sign are chosen without a branch, because no branch could be predicted.
  constexpr bool kUnread = true;
  const auto isWrong = static_cast<std::size_t>(facing == Facing::Wrong);
  const bool* const flags[2] = {&kUnread, twoSided};
  if (!*flags[isWrong]) return false;
  constexpr double kSigns[2] = {1.0, -1.0};
  normal.c = Multiply(normal.c, kSigns[isWrong]);
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
