#ifndef GSL_WIDE_TRIANGLE_FACE_LANES_H
#define GSL_WIDE_TRIANGLE_FACE_LANES_H

#include "kernel/TriangleSweepBounds.h"
#include "wide/LaneCoords.h"

/// gsl_kernel::FaceToFaceDist, one pair of triangles in each lane. A lane in which a step is not
/// certain is left to the scalar kernel. The tolerance must not be negative.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

struct LaneTriangle {
  Coords p[3];
};

/// The edges of a triangle: edge i leads from corner i to the next.
struct LaneEdges {
  Coords unit[3];
  Doubles length[3];
};

GSL_ALWAYS_INLINE LaneEdges EdgesOf(const LaneTriangle& tri) {
  LaneEdges edges;
#pragma GCC unroll 3
  for (int i = 0; i < 3; ++i) {
    const Coords way = Subtract(tri.p[(i + 1) % 3], tri.p[i]);
    edges.length[i] = Length(way);
    edges.unit[i] = Multiply(way, Splat(1.0) / edges.length[i]);
  }
  return edges;
}

/// A triangle that faces the other: its normal after the turn, and the way along it of the
/// direction.
struct LaneFace {
  Coords normal;
  Doubles magnitude, along;
};

GSL_ALWAYS_INLINE Doubles Smaller(Doubles a, Doubles b) {
  return a < b ? a : b;
}

/// Returns the largest of three, and ignores a NaN of the first two.
GSL_ALWAYS_INLINE Doubles LargestOf(Doubles a, Doubles b, Doubles c) {
  return Larger(a, Larger(b, c));
}
GSL_ALWAYS_INLINE Doubles SmallestOf(Doubles a, Doubles b, Doubles c) {
  return Smaller(a, Smaller(b, c));
}

/// The shadow of B on the plane of A.
struct LaneShadow {
  LaneTriangle tri;
  Doubles longest; ///< the longest way along the direction
  Bits isCertain;  ///< every corner is as the steps compute it
  Bits isMoved;    ///< every corner is off the plane, and has moved onto it
};

/// Returns gsl_kernel::ProjectTriangleAlong where the direction counts as neither short nor
/// parallel to the plane.
GSL_ALWAYS_INLINE LaneShadow ShadowOf(const LaneTriangle& b, const Coords& a0, const LaneFace& a,
                                      const Coords& d, double linearTolerance) {
  LaneShadow shadow;
  shadow.isCertain = shadow.isMoved = SplatBits(-1);
  shadow.longest = Splat(0.0);
  const Doubles least = Splat(2.0 * linearTolerance) * a.magnitude;
  Doubles away[3];
#pragma GCC unroll 3
  for (int j = 0; j < 3; ++j) {
    away[j] = Dot(Subtract(b.p[j], a0), a.normal);
    const Doubles s = -away[j] / a.along;
    shadow.longest = Larger(Magnitude(s), shadow.longest);
    shadow.tri.p[j] = Add(b.p[j], Multiply(d, s));
    // Twice the tolerance is more than any rounding of the distance.
    shadow.isMoved &= (Magnitude(away[j]) > least) & (least > Splat(1e-280));
  }
  if (AllLanes(shadow.isMoved)) return shadow;
#pragma GCC unroll 3
  for (int j = 0; j < 3; ++j) {
    const Bits isOn = Splat(linearTolerance) > Magnitude(away[j] / a.magnitude);
    shadow.tri.p[j] = Choose(isOn, b.p[j], shadow.tri.p[j]);
    // The way back from a point at no distance can be a zero of either sign.
    shadow.isCertain &= isOn | (away[j] != Splat(0.0));
  }
  return shadow;
}

/// The extent of a triangle along one axis.
struct LaneSpan {
  Doubles low, high;
};

GSL_ALWAYS_INLINE LaneSpan SpanOf(Doubles p0, Doubles p1, Doubles p2) {
  return {SmallestOf(p0, p1, p2), LargestOf(p0, p1, p2)};
}

/// The boxes of two triangles: their gap, their size and how far they are from the origin.
struct LaneBoxes {
  Doubles gap = Splat(0.0), size = Splat(0.0), reach = Splat(0.0);

  GSL_ALWAYS_INLINE void Add(const LaneSpan& a, const LaneSpan& b) {
    const Doubles low = Smaller(a.low, b.low), high = Larger(a.high, b.high);
    gap = LargestOf(a.low - b.high, b.low - a.high, gap);
    size += high - low;
    reach += Larger(Magnitude(low), Magnitude(high));
  }
};

/// Returns where the gap is wide enough for a triangle of this doubled area and longest edge.
GSL_ALWAYS_INLINE Bits AreWeightsBelow(const LaneBoxes& boxes, Doubles area2, Doubles longest2,
                                       double tolerance2) {
  using namespace gsl_kernel;
  const Doubles error = Splat(kApartWeight) * boxes.size * boxes.size * longest2;
  return (boxes.gap * area2 > Splat(8.0) * boxes.size * (Splat(tolerance2) + error)) &
         (area2 > Splat(kApartArea * kApartArea) * longest2 * longest2);
}

/// Returns where the shadow is so far aside of A that no step finds a contact. `areaA` is the
/// length of the cross product of two edges of A.
GSL_ALWAYS_INLINE Bits AreApart(const LaneTriangle& a, const LaneEdges& edgesA, Doubles areaA,
                                const LaneShadow& shadow, double linearTolerance) {
  using namespace gsl_kernel;
  const LaneTriangle& s = shadow.tri;
  LaneBoxes boxes;
  boxes.Add(SpanOf(a.p[0].x, a.p[1].x, a.p[2].x), SpanOf(s.p[0].x, s.p[1].x, s.p[2].x));
  boxes.Add(SpanOf(a.p[0].y, a.p[1].y, a.p[2].y), SpanOf(s.p[0].y, s.p[1].y, s.p[2].y));
  boxes.Add(SpanOf(a.p[0].z, a.p[1].z, a.p[2].z), SpanOf(s.p[0].z, s.p[1].z, s.p[2].z));
  boxes.reach += shadow.longest;
  const Coords u = Subtract(s.p[1], s.p[0]), v = Subtract(s.p[2], s.p[1]);
  const Coords w = Subtract(s.p[0], s.p[2]);
  const Coords cross = Cross(u, v);
  const Doubles uu = Dot(u, u), vv = Dot(v, v), ww = Dot(w, w);
  const Doubles* const lengths = edgesA.length;
  const Doubles shortA = SmallestOf(lengths[0], lengths[1], lengths[2]);
  const Doubles longA = LargestOf(lengths[0], lengths[1], lengths[2]);
  const Doubles shortest2 = Smaller(shortA * shortA, SmallestOf(uu, vv, ww));
  const double tolerance2 = linearTolerance * linearTolerance;
  const Bits isWide =
      (boxes.gap > Splat(kApartGap) * boxes.size) & (boxes.gap > Splat(4.0 * linearTolerance));
  const Doubles least = Splat(kApartTurn) * boxes.size * boxes.size * longA * longA +
                        Splat(kApartFromOrigin) * boxes.size * boxes.reach * areaA;
  const Doubles product = boxes.gap * areaA;
  const Bits isOrdinary = (product * product * shortest2 > least * least) &
                          (shortest2 > Splat(4.0 * tolerance2 + kLeastApart * kLeastApart)) &
                          (boxes.size + boxes.reach < Splat(kLargestApart));
  return isWide & isOrdinary & shadow.isMoved &
         AreWeightsBelow(boxes, areaA * areaA, longA * longA, tolerance2) &
         AreWeightsBelow(boxes, Dot(cross, cross), LargestOf(uu, vv, ww), tolerance2);
}

/// Is gsl_kernel::TriangleTest.
struct LaneTriangleTest {
  Coords normal[3];
  Bits isCertain;
  const LaneTriangle& tri;
  double above, below;

  GSL_ALWAYS_INLINE LaneTriangleTest(const LaneTriangle& tested, double linearTolerance)
      : tri(tested) {
    using namespace gsl_kernel;
    const Coords edge[3] = {Subtract(tri.p[1], tri.p[0]), Subtract(tri.p[2], tri.p[1]),
                            Subtract(tri.p[0], tri.p[2])};
    isCertain = SplatBits(-1);
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i) {
      normal[i] = Cross(edge[i], edge[(i + 2) % 3]);
      const Doubles square = Dot(normal[i], normal[i]);
      isCertain &= (square > Splat(kLeastDecidedSquare)) & (square < Splat(kLargestDecidedSquare));
    }
    const double tolerance2 = linearTolerance * linearTolerance;
    // The quotient of a smaller weight loses its digits, and can be rounded up.
    below = tolerance2 > kLeastDecidedWeight ? (1.0 - kWeightSlack) * tolerance2 : 0.0;
    const double limit = (1.0 + kWeightSlack) * tolerance2;
    above = limit > kLeastDecidedWeight ? limit : kLeastDecidedWeight;
  }

  /// Returns where the triangle holds x. Clears isCertain where a quotient would have to decide.
  GSL_ALWAYS_INLINE Bits Contains(const Coords& x) {
    const Coords to[3] = {Subtract(tri.p[0], x), Subtract(tri.p[1], x), Subtract(tri.p[2], x)};
    Doubles outward = Splat(0.0); // the opposite of the least weight; a NaN does not count
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i)
      outward = Larger(Dot(Cross(to[(i + 1) % 3], to[(i + 2) % 3]), normal[i]), outward);
    const Bits isOutside = outward > Splat(above);
    isCertain &= isOutside | (outward < Splat(below)) | (outward <= Splat(0.0));
    return ~isOutside;
  }
};

/// The contact of each lane that is closest along the direction: the first of equal ones.
struct LaneContacts {
  Coords b0;
  const LaneFace& faceB;
  double length; ///< of the direction
  Coords point;
  Doubles away; ///< how far the point is from the plane of B, times the length of the normal
  Bits isFound, isCertain;

  GSL_ALWAYS_INLINE LaneContacts(const Coords& firstOfB, const LaneFace& b, double directionLength)
      : b0(firstOfB), faceB(b), length(directionLength), point(firstOfB),
        away(Splat(__builtin_inf())), isFound(SplatBits(0)), isCertain(SplatBits(0)) {}

  /// Is the magnitude of gsl_kernel::PlaneDistanceAlong.
  GSL_ALWAYS_INLINE Doubles DistanceOf(Doubles way) const {
    return Magnitude(way / faceB.magnitude * Splat(length) * faceB.magnitude / faceB.along);
  }

  GSL_ALWAYS_INLINE void Consider(Bits isContact, const Coords& p) {
    const Doubles way = Magnitude(Dot(Subtract(p, b0), faceB.normal));
    // The distances keep the order of the ways, unless they round to the same number.
    Bits isCloser = isContact & (way < away);
    const Bits isClear = way < away * Splat(1.0 - gsl_kernel::kDistanceRounding) - Splat(1e-280);
    if (AnyBit(isCloser & ~isClear)) isCloser &= isClear | (DistanceOf(way) < DistanceOf(away));
    away = isCloser ? way : away;
    point = Choose(isCloser, p, point);
    isFound |= isContact;
  }
};

/// The edges of A against the edges of the shadow.
struct LaneCrossings {
  Doubles reach, margin;
  Bits isCertain;
  const LaneTriangle &a, &s;
  const LaneEdges &edgesA, &edgesS;
  double tolerance;

  GSL_ALWAYS_INLINE LaneCrossings(const LaneTriangle& triA, const LaneEdges& ofA,
                                  const LaneTriangle& triS, const LaneEdges& ofS,
                                  double linearTolerance)
      : a(triA), s(triS), edgesA(ofA), edgesS(ofS), tolerance(linearTolerance) {
    using namespace gsl_kernel;
    reach = SquareRoot(Splat(8.0) * (Squares(a, edgesA) + Squares(s, edgesS)));
    margin = Splat(kCrossingMargin) * reach + Splat(2.0 * tolerance);
    Doubles shortest = edgesA.length[0];
#pragma GCC unroll 3
    for (int i = 0; i < 3; ++i)
      shortest = SmallestOf(edgesA.length[i], edgesS.length[i], shortest);
    isCertain = (shortest >= Splat(linearTolerance)) & (shortest > Splat(kLeastUnitLength)) &
                (reach < Splat(kLargestApart));
  }

  static GSL_ALWAYS_INLINE Doubles Squares(const LaneTriangle& tri, const LaneEdges& edges) {
    return Dot(tri.p[0], tri.p[0]) + edges.length[0] * edges.length[0] +
           edges.length[2] * edges.length[2];
  }

  /// Considers where edge i of A crosses edge j of the shadow.
  GSL_ALWAYS_INLINE void Cross(int i, int j, Bits isOpen, LaneContacts& contacts) {
    using namespace gsl_kernel;
    const Coords &u = edgesA.unit[i], &v = edgesS.unit[j];
    const Coords w = Subtract(s.p[j], a.p[i]);
    const Doubles c = Dot(u, v), sine2 = Splat(1.0) - c * c;
    const Doubles wu = Dot(w, u), wv = Dot(w, v);
    // How far the crossing is from the middle of each edge, beyond the half of it.
    const Doubles halfU = Splat(0.5) * edgesA.length[i] * sine2;
    const Doubles halfV = Splat(0.5) * edgesS.length[j] * sine2;
    const Doubles beyondU = Magnitude(wu - wv * c - halfU) - halfU;
    const Doubles beyondV = Magnitude(wu * c - wv - halfV) - halfV;
    const Doubles beyond = Larger(beyondU, beyondV), border = margin * sine2;
    const Bits isOblique = sine2 > Splat(kCrossingSineSquare);
    const Bits isMissed = (isOblique & (beyond > border)) | (sine2 < Splat(kParallelSineSquare));
    const Bits isLeft = isOpen & ~isMissed;
    if (!AnyBit(isLeft)) return;
    const Doubles skew =
        Magnitude(Dot(w, GSL_LANES_NAMESPACE::Cross(u, v))) + Splat(kSkewRounding) * reach;
    const Bits isCrossing = isLeft & isOblique & (beyond < -border) &
                            (skew * skew < Splat(0.25 * tolerance * tolerance) * sine2);
    isCertain &= isCrossing | ~isLeft;
    const Doubles t = (wv * c - wu) / (c * c - Splat(1.0));
    contacts.Consider(isCrossing, Add(a.p[i], Multiply(u, t)));
  }
};

/// Finds the contacts of the pairs where isOpen holds, and where they are certain. This is a
/// function of its own, which keeps the code of each way to read triangles small.
[[gnu::noinline]] inline void FindContacts(const LaneTriangle& a, const LaneEdges& edgesA,
                                           const LaneTriangle& s, const Bits& isOpen,
                                           double linearTolerance, LaneContacts& contacts) {
  LaneTriangleTest onShadow(s, linearTolerance);
  for (const Coords& corner : a.p)
    contacts.Consider(isOpen & onShadow.Contains(corner), corner);
  LaneTriangleTest onA(a, linearTolerance);
  for (const Coords& corner : s.p)
    contacts.Consider(isOpen & onA.Contains(corner), corner);
  const LaneEdges edgesS = EdgesOf(s);
  LaneCrossings crossings(a, edgesA, s, edgesS, linearTolerance);
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j)
      crossings.Cross(i, j, isOpen, contacts);
  }
  contacts.isCertain = isOpen & onShadow.isCertain & onA.isCertain & crossings.isCertain;
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
