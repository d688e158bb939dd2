#ifndef GSL_WIDE_POINT_TRIANGLE_LANES_H
#define GSL_WIDE_POINT_TRIANGLE_LANES_H

#include "kernel/TriangleDistanceBounds.h"
#include "wide/PointSegmentLanes.h"

/// gsl_kernel::TriangleDistance, one point and triangle in each lane. A lane whose region is not
/// certain is left to the scalar kernel.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

/// The lanes of each region. An edge or a vertex is `first`, `second` or else the third.
struct LaneRegions {
  Bits face, vertex, edge;
  Bits vertexA, vertexB, edgeAb, edgeBc;
};

/// Returns where both ways along the edges of a vertex lead back, farther than any error.
GSL_ALWAYS_INLINE Bits LeadsBack(Doubles x, Doubles y, Doubles beyond2) {
  const Doubles shorter = x > y ? x : y;
  return shorter * Magnitude(shorter) < -beyond2;
}

/// Returns where a foot is certainly between the ends of an edge.
GSL_ALWAYS_INLINE Bits IsWithin(Doubles fromStart, Doubles toEnd) {
  const Doubles shorter = fromStart < toEnd ? fromStart : toEnd;
  return shorter > Splat(gsl_kernel::kEdgeMargin) * (fromStart + toEnd);
}

/// Is gsl_kernel::RegionOf, for tolerances that it decides.
GSL_ALWAYS_INLINE LaneRegions RegionsOf(const Coords& p, const Coords& a, const Coords& b,
                                        const Coords& c, double linearTolerance) {
  using namespace gsl_kernel;
  const Coords ab = Subtract(b, a), ac = Subtract(c, a), ap = Subtract(p, a);
  const Doubles abab = Dot(ab, ab), abac = Dot(ab, ac), acac = Dot(ac, ac);
  const Doubles abap = Dot(ab, ap), acap = Dot(ac, ap);
  const Doubles edge2 = Splat(2.0) * (abab + acac);
  const Doubles reach2 = Splat(4.0) * (Dot(p, p) + Dot(a, a) + edge2);
  const double tolerance2 = linearTolerance * linearTolerance;
  const Doubles area2 = abab * acac - abac * abac;
  const Doubles leastHeight2 =
      Splat(kLeastHeightSquare) * reach2 + Splat(kLeastToleranceSquares * tolerance2);
  const Bits isDecided = (area2 > edge2 * leastHeight2 + Splat(kLeastDecidedArea)) &
                         (reach2 < Splat(kLargestDecidedReach));

  const Doubles wb = acac * abap - abac * acap;
  const Doubles wc = abab * acap - abac * abap;
  const Doubles wa = area2 - wb - wc;
  const Doubles band = Splat(kWeightRounding) * reach2 * edge2 + Splat(tolerance2);
  const Doubles lesser = wb < wc ? wb : wc;
  const Doubles least = wa < lesser ? wa : lesser;
  const Bits isOutside = isDecided & (least < -band);

  const Doubles abbp = abap - abab, accp = acap - acac; // ab . bp and ac . cp
  const Doubles bcbp = acap - abac - abbp, bccp = accp - (abap - abac);
  const Doubles beyond2 =
      edge2 * (Splat(8.0 * tolerance2) + Splat(2.0 * kProductRounding * kProductRounding) * reach2);
  const Bits isA = LeadsBack(abap, acap, beyond2);
  const Bits isB = LeadsBack(-abbp, bcbp, beyond2);
  const Bits isC = LeadsBack(-accp, -bccp, beyond2);
  const Bits isVertex = isA | isB | isC;
  const Bits isAb = (wc < -band) & IsWithin(abap, -abbp);
  const Bits isBc = (wa < -band) & IsWithin(bcbp, -bccp);
  const Bits isCa = (wb < -band) & IsWithin(-accp, acap);
  return {isDecided & (least > band),
          isOutside & isVertex,
          isOutside & ~isVertex & (isAb | isBc | isCa),
          isA,
          isB,
          isAb,
          isBc};
}

/// Returns the foot of p on the plane of a triangle that certainly has a normal.
GSL_ALWAYS_INLINE Coords FootOnPlane(const Coords& p, const Coords& p1, const Coords& p2,
                                     const Coords& p3) {
  const Coords c = Cross(Subtract(p2, p1), Subtract(p3, p2));
  const Doubles length = Length(c);
  const Doubles inverse = Splat(1.0) / length;
  const Coords normal = Multiply(c, inverse);
  const Doubles magnitude = length * inverse;
  const Coords unit = Multiply(normal, Splat(1.0) / magnitude);
  const Doubles signedDistance = Dot(Subtract(p, p1), normal) / magnitude;
  return Subtract(p, Multiply(unit, signedDistance));
}

GSL_ALWAYS_INLINE void PointTriangleGroup(const PointTriangleBatch& batch, std::size_t k) {
  const Coords p = LoadPoints(batch.p, k);
  const Coords a = LoadPoints(batch.p1, k);
  const Coords b = LoadPoints(batch.p2, k);
  const Coords c = LoadPoints(batch.p3, k);
  const LaneRegions at = RegionsOf(p, a, b, c, batch.linearTolerance);
  Coords nearest = Choose(at.vertexA, a, Choose(at.vertexB, b, c));
  if (AnyBit(at.edge)) {
    const Coords from = Choose(at.edgeAb, a, Choose(at.edgeBc, b, c));
    const Coords to = Choose(at.edgeAb, b, Choose(at.edgeBc, c, a));
    nearest = Choose(at.edge, FootOnSegment(p, from, to).point, nearest);
  }
  if (AnyBit(at.face)) nearest = Choose(at.face, FootOnPlane(p, a, b, c), nearest);
  Store(batch.distances + k, Distance(p, nearest));
  const Bits isDone = at.face | at.vertex | at.edge;
  if (!AllLanes(isDone)) RunOthers(batch, k, isDone);
}

/// Requires tolerances for which RegionsAreDecided returns true.
inline void PointTriangles(const PointTriangleBatch& batch) {
  ForGroups(
      batch, [&batch](std::size_t k)
                 __attribute__((always_inline)) { PointTriangleGroup(batch, k); });
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
