#ifndef GSL_WIDE_TRIANGLE_SWEEP_LANES_H
#define GSL_WIDE_TRIANGLE_SWEEP_LANES_H

#include "wide/LaneCoords.h"

/// The rejections of gsl_kernel::SlabsReject and gsl_kernel::SweepTriangle, one pair of triangles
/// in each lane. A pair that is not rejected goes to the scalar kernel.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

struct LaneTriangles {
  Coords p0, p1, p2;
};

GSL_ALWAYS_INLINE LaneTriangles LoadTriangles(const PointsIn (&in)[3], std::size_t k) {
  return {LoadPoints(in[0], k), LoadPoints(in[1], k), LoadPoints(in[2], k)};
}

GSL_ALWAYS_INLINE Coords SplatCoords(const double (&c)[3]) {
  return {Splat(c[0]), Splat(c[1]), Splat(c[2])};
}

struct LaneSlab {
  Doubles min, max;
};

GSL_ALWAYS_INLINE LaneSlab SlabAlong(const Coords& origin, const Coords& d,
                                     const LaneTriangles& tri) {
  const Doubles t0 = Dot(d, Subtract(tri.p0, origin));
  const Doubles t1 = Dot(d, Subtract(tri.p1, origin));
  const Doubles t2 = Dot(d, Subtract(tri.p2, origin));
  LaneSlab slab = {t1 < t0 ? t1 : t0, t1 > t0 ? t1 : t0};
  slab.min = t2 < slab.min ? t2 : slab.min;
  slab.max = t2 > slab.max ? t2 : slab.max;
  return slab;
}

GSL_ALWAYS_INLINE Bits SlabsReject(const LaneTriangles& a, const LaneTriangles& b,
                                   const Coords& axis, double reach) {
  const LaneSlab slabA = SlabAlong(a.p0, axis, a);
  const LaneSlab slabB = SlabAlong(a.p0, axis, b);
  return (slabA.min > slabB.max) | (slabB.min - slabA.max > Splat(reach));
}

/// Returns where a triangle has no normal, or faces the wrong way and must not be reversed.
GSL_ALWAYS_INLINE Bits FacingRejects(const LaneTriangles& tri, const TriangleSweepBatch& batch,
                                     double sense, bool mayReverse) {
  const Coords u = Subtract(tri.p1, tri.p0), v = Subtract(tri.p2, tri.p1);
  const Coords cross = Cross(u, v);
  const Doubles length = Length(cross);
  const Doubles cosine = Splat(batch.cosineTolerance);
  const Bits hasNoNormal = cosine * Length(u) * Length(v) >= length;
  if (mayReverse) return hasNoNormal;
  const Doubles inverse = Splat(1.0) / length;
  const Doubles along = Dot(Multiply(cross, inverse), SplatCoords(batch.direction));
  const Bits isEdgeOn = cosine * (length * inverse) * Splat(batch.length) > Magnitude(along);
  return hasNoNormal | (~isEdgeOn & (Splat(sense) * along < Splat(0.0)));
}

inline void SweepTriangles(const TriangleSweepBatch& batch) {
  const Coords axis = SplatCoords(batch.axis);
  ForGroups(
      batch, [&batch, &axis ](std::size_t k) __attribute__((always_inline)) {
        const LaneTriangles a = LoadTriangles(batch.a, k);
        const LaneTriangles b = LoadTriangles(batch.b, k);
        // The distance only falls, so a pair out of reach now is out of reach when its turn comes.
        Bits isRejected = SlabsReject(a, b, axis, *batch.distance + batch.margin);
        if (AllLanes(isRejected)) return;
        isRejected |= FacingRejects(a, batch, 1.0, batch.twoSided[0]);
        isRejected |= FacingRejects(b, batch, -1.0, batch.twoSided[1]);
        RunOthers(batch, k, isRejected);
      });
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
