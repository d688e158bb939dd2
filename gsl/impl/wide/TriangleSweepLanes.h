#ifndef GSL_WIDE_TRIANGLE_SWEEP_LANES_H
#define GSL_WIDE_TRIANGLE_SWEEP_LANES_H

#include "wide/TriangleFaceLanes.h"

/// gsl_kernel::SlabsReject and gsl_kernel::SweepTriangle, one pair of triangles in each lane. The
/// pairs that the lanes do not decide, such as a triangle edge-on, go to the scalar kernel.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

GSL_ALWAYS_INLINE Coords SplatCoords(const double (&c)[3]) {
  return {Splat(c[0]), Splat(c[1]), Splat(c[2])};
}

/// The unit normal as gsl_kernel::UnitNormal scales it, and the lengths that decide whether there
/// is one.
struct LaneNormal {
  Coords unit;
  Doubles magnitude, area, length0, length1;
};

/// Triangles that are read by their corners. Everything else is computed.
struct PlainTriangles {
  const PointsIn (&in)[3];

  GSL_ALWAYS_INLINE LaneTriangle Corners(std::size_t k) const {
    return {{LoadPoints(in[0], k), LoadPoints(in[1], k), LoadPoints(in[2], k)}};
  }
  GSL_ALWAYS_INLINE LaneNormal Normal(const LaneTriangle& tri, std::size_t) const {
    const Coords u = Subtract(tri.p[1], tri.p[0]), v = Subtract(tri.p[2], tri.p[1]);
    const Coords cross = Cross(u, v);
    const Doubles area = Length(cross);
    const Doubles inverse = Splat(1.0) / area;
    return {Multiply(cross, inverse), area * inverse, area, Length(u), Length(v)};
  }
  GSL_ALWAYS_INLINE LaneEdges Edges(const LaneTriangle& tri, std::size_t) const {
    return EdgesOf(tri);
  }
};

/// Triangles that are prepared: one for every lane where the step is 0.
template <int Step>
struct ReadyTriangles {
  const PreparedIn& in;

  GSL_ALWAYS_INLINE Doubles Number(int i, std::size_t k) const {
    const double* const at = in.first + static_cast<std::size_t>(i) * in.pitch;
    return Step == 0 ? Splat(*at) : Load(at + k);
  }
  GSL_ALWAYS_INLINE Coords Three(int i, std::size_t k) const {
    return {Number(i, k), Number(i + 1, k), Number(i + 2, k)};
  }
  GSL_ALWAYS_INLINE LaneTriangle Corners(std::size_t k) const {
    return {{Three(kPreparedCorners, k), Three(kPreparedCorners + 3, k),
             Three(kPreparedCorners + 6, k)}};
  }
  GSL_ALWAYS_INLINE LaneNormal Normal(const LaneTriangle&, std::size_t k) const {
    return {Three(kPreparedNormal, k), Number(kPreparedMagnitude, k), Number(kPreparedArea, k),
            Number(kPreparedLengths, k), Number(kPreparedLengths + 1, k)};
  }
  GSL_ALWAYS_INLINE LaneEdges Edges(const LaneTriangle&, std::size_t k) const {
    return {{Three(kPreparedUnits, k), Three(kPreparedUnits + 3, k), Three(kPreparedUnits + 6, k)},
            {Number(kPreparedLengths, k), Number(kPreparedLengths + 1, k),
             Number(kPreparedLengths + 2, k)}};
  }
};

struct LaneSlab {
  Doubles min, max;
};

GSL_ALWAYS_INLINE LaneSlab SlabAlong(const Coords& origin, const Coords& d,
                                     const LaneTriangle& tri) {
  const Doubles t0 = Dot(d, Subtract(tri.p[0], origin));
  const Doubles t1 = Dot(d, Subtract(tri.p[1], origin));
  const Doubles t2 = Dot(d, Subtract(tri.p[2], origin));
  LaneSlab slab = {t1 < t0 ? t1 : t0, t1 > t0 ? t1 : t0};
  slab.min = t2 < slab.min ? t2 : slab.min;
  slab.max = t2 > slab.max ? t2 : slab.max;
  return slab;
}

/// Where triangles are turned to the direction: is gsl_kernel::Turn.
struct LaneFacing {
  LaneFace face;
  Bits isRejected; ///< there is no normal, or it points the wrong way and must not be reversed
  Bits isEdgeOn;

  GSL_ALWAYS_INLINE LaneFacing(const LaneNormal& normal, const TriangleSweepBatch& batch,
                               double sense, bool mayReverse)
      : face{normal.unit, normal.magnitude, Dot(normal.unit, SplatCoords(batch.direction))} {
    const Doubles cosine = Splat(batch.cosineTolerance);
    isRejected = cosine * normal.length0 * normal.length1 >= normal.area;
    isEdgeOn = cosine * normal.magnitude * Splat(batch.length) > Magnitude(face.along);
    const Bits isWrong = Splat(sense) * face.along < Splat(0.0);
    if (!mayReverse) {
      isRejected |= ~isEdgeOn & isWrong;
      return;
    }
    const Coords& n = face.normal;
    face.normal = Choose(isWrong, Coords{-n.x, -n.y, -n.z}, n);
    face.along = isWrong ? -face.along : face.along;
  }
};

/// Returns whether the face lanes know this direction and these tolerances.
GSL_ALWAYS_INLINE bool AreLanesCertain(const TriangleSweepBatch& batch) {
  // The length is 1 but for rounding, unless the direction has a stale length. A much shorter
  // direction makes all distances 0, and then their order is not the order of the ways.
  return batch.linearTolerance >= 0.0 && batch.linearTolerance <= batch.length &&
         batch.length > 0.5 && batch.length < 2.0;
}

/// Takes the contacts that are certain. The pairs of isLeft go to the scalar kernel.
GSL_ALWAYS_INLINE void TakeGroup(const TriangleSweepBatch& batch, std::size_t k, Bits isLeft,
                                 Doubles ahead, const LaneContacts& contacts) {
  TriangleGroup group;
  group.k = k;
  group.left = MaskOf(isLeft);
  group.found = MaskOf(contacts.isCertain & contacts.isFound);
  if ((group.left | group.found) == 0) return;
  Store(group.ahead, ahead);
  Store(group.distance, contacts.DistanceOf(contacts.away));
  Store(group.contact[0], contacts.point.x);
  Store(group.contact[1], contacts.point.y);
  Store(group.contact[2], contacts.point.z);
  batch.take(batch, group);
}

/// Sweeps a group. Each rejection that holds in every lane ends it.
template <class TrianglesA, class TrianglesB>
GSL_ALWAYS_INLINE void SweepGroup(const TriangleSweepBatch& batch, const TrianglesA& inA,
                                  const TrianglesB& inB, bool areLanesCertain, std::size_t k) {
  const LaneTriangle a = inA.Corners(k), b = inB.Corners(k);
  const Coords axis = SplatCoords(batch.axis);
  const LaneSlab slabA = SlabAlong(a.p[0], axis, a), slabB = SlabAlong(a.p[0], axis, b);
  const Doubles ahead = slabB.min - slabA.max;
  // The distance only falls, so a pair out of reach now is out of reach when its turn comes.
  Bits isRejected = (slabA.min > slabB.max) | (ahead > Splat(*batch.distance + batch.margin));
  if (AllLanes(isRejected)) return;
  const LaneNormal normalA = inA.Normal(a, k);
  const LaneFacing facingA(normalA, batch, 1.0, batch.twoSided[0]);
  const LaneFacing facingB(inB.Normal(b, k), batch, -1.0, batch.twoSided[1]);
  isRejected |= facingA.isRejected | facingB.isRejected;
  if (AllLanes(isRejected)) return;
  const LaneFace &faceA = facingA.face, &faceB = facingB.face;
  const Coords d = SplatCoords(batch.direction);
  const Bits isParallel =
      Splat(batch.cosineTolerance * batch.length) * faceA.magnitude > Magnitude(faceA.along);
  Bits isOpen = ~(isRejected | facingA.isEdgeOn | facingB.isEdgeOn | isParallel) &
                (Magnitude(faceA.along) > Splat(0.0)) & (Magnitude(faceB.along) > Splat(0.0));
  if (!areLanesCertain || !AnyBit(isOpen)) {
    RunOthers(batch, k, isRejected);
    return;
  }
  const LaneShadow shadow = ShadowOf(b, a.p[0], faceA, d, batch.linearTolerance);
  const LaneEdges edgesA = inA.Edges(a, k);
  isRejected |= isOpen & AreApart(a, edgesA, normalA.area, shadow, batch.linearTolerance);
  isOpen &= ~isRejected & shadow.isCertain;
  if (!AnyBit(isOpen)) {
    RunOthers(batch, k, isRejected);
    return;
  }
  LaneContacts contacts(b.p[0], faceB, batch.length);
  FindContacts(a, edgesA, shadow.tri, isOpen, batch.linearTolerance, contacts);
  TakeGroup(batch, k, ~isRejected & ~contacts.isCertain, ahead, contacts);
}

template <class TrianglesA, class TrianglesB>
GSL_ALWAYS_INLINE void SweepGroups(const TriangleSweepBatch& batch, const TrianglesA& a,
                                   const TrianglesB& b) {
  const bool areLanesCertain = AreLanesCertain(batch);
  ForGroups(
      batch, [&batch, &a, &b, areLanesCertain ](std::size_t k)
                 __attribute__((always_inline)) { SweepGroup(batch, a, b, areLanesCertain, k); });
}

inline void SweepTriangles(const TriangleSweepBatch& batch) {
  const PreparedIn &a = batch.preparedA, &b = batch.preparedB;
  if (a.first == nullptr) {
    SweepGroups(batch, PlainTriangles{batch.a}, PlainTriangles{batch.b});
  } else if (a.step != 0 && b.step != 0) {
    SweepGroups(batch, ReadyTriangles<1>{a}, ReadyTriangles<1>{b});
  } else if (b.step != 0) {
    SweepGroups(batch, ReadyTriangles<0>{a}, ReadyTriangles<1>{b});
  } else if (a.step != 0) {
    SweepGroups(batch, ReadyTriangles<1>{a}, ReadyTriangles<0>{b});
  } else {
    // Nobody sweeps one pair often.
    for (std::size_t k = 0; k < batch.count; ++k)
      batch.one(batch, k);
  }
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
