#ifndef GSL_WIDE_SEGMENT_SWEEP_LANES_H
#define GSL_WIDE_SEGMENT_SWEEP_LANES_H

#include "kernel/SegmentSweepBounds.h"
#include "wide/LaneCoords.h"

/// The rejections of gsl_kernel::PassAside and gsl_kernel::SweepSegment, one pair of segments in
/// each lane. A pair that is not rejected goes to the scalar kernel.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

struct LaneSweptSegment {
  Coords p[2];
  Coords edge;
};

GSL_ALWAYS_INLINE LaneSweptSegment LoadSweptSegment(const PointsIn (&in)[2], std::size_t k) {
  LaneSweptSegment segment = {{LoadPoints(in[0], k), LoadPoints(in[1], k)}, {}};
  segment.edge = Subtract(segment.p[1], segment.p[0]);
  return segment;
}

GSL_ALWAYS_INLINE Doubles SumOfSizes(const Coords& c) {
  return Magnitude(c.x) + Magnitude(c.y) + Magnitude(c.z);
}

/// What the numbers of one segment span, along or aside of the direction.
struct LaneReach {
  Doubles low, high;

  GSL_ALWAYS_INLINE LaneReach(Doubles t0, Doubles t1)
      : low(t0 < t1 ? t0 : t1), high(t0 > t1 ? t0 : t1) {}
};

/// Is gsl_kernel::TurnSegment: returns where the segment must be turned.
GSL_ALWAYS_INLINE Bits MustTurn(const LaneSweptSegment& segment, const Coords& d, double sense) {
  const Coords z = {Splat(0.0), Splat(0.0), Splat(1.0)};
  return Splat(sense) * Dot(Cross(segment.edge, z), d) < Splat(0.0);
}

/// Is gsl_kernel::GapAside.
GSL_ALWAYS_INLINE Doubles GapAside(const LaneSweptSegment& a, const LaneSweptSegment& b,
                                   const Coords& d) {
  const auto aside = [&d](const Coords& p) __attribute__((always_inline)) {
    return d.y * p.x - d.x * p.y;
  };
  const LaneReach ofA(aside(a.p[0]), aside(a.p[1])), ofB(aside(b.p[0]), aside(b.p[1]));
  return Larger(ofB.low - ofA.high, ofA.low - ofB.high);
}

/// Returns where no step accepts a contact, because the pair is too far aside, or too far ahead to
/// be closer than `limit`.
GSL_ALWAYS_INLINE Bits PassOrLater(const SegmentSweepBatch& batch, const LaneSweptSegment& a,
                                   const LaneSweptSegment& b, const Coords& d, Doubles limit) {
  using namespace gsl_kernel;
  const Doubles sizeA = SumOfSizes(a.p[0]) + SumOfSizes(a.p[1]);
  const Doubles sizeB = SumOfSizes(b.p[0]) + SumOfSizes(b.p[1]);
  const Bits areOrdinary = (SumOfSizes(a.edge) > Splat(kLeastOrdinarySize)) &
                           (SumOfSizes(b.edge) > Splat(kLeastOrdinarySize)) &
                           (sizeA < Splat(kLargestOrdinarySize)) &
                           (sizeB < Splat(kLargestOrdinarySize));
  const Doubles size = sizeA + sizeB;
  const Doubles tolerance =
      Splat(batch.linearTolerance < 0.0 ? -batch.linearTolerance : batch.linearTolerance);
  const double cosine =
      batch.cosineTolerance < 0.0 ? -batch.cosineTolerance : batch.cosineTolerance;
  const Doubles length = Splat(batch.length);
  const LaneReach alongA(Dot(d, a.p[0]), Dot(d, a.p[1])), alongB(Dot(d, b.p[0]), Dot(d, b.p[1]));
  const Doubles least =
      alongB.low - alongA.high - (tolerance + Splat(kGapRounding) * (tolerance + size)) * length;
  const Bits isLater = least > limit;
  if (!(batch.direction[2] == 0.0)) return areOrdinary & isLater;
  const Doubles height = a.p[0].z;
  const Bits isFlat = (a.p[1].z == height) & (b.p[0].z == height) & (b.p[1].z == height);
  const Doubles widest = tolerance + Splat(cosine) * size;
  const Doubles reach = (widest + Splat(kCrossingRounding) * (widest + size)) * length;
  const Doubles gap = GapAside(a, b, d);
  return areOrdinary & (isLater | (isFlat & (gap > reach) & (gap > Splat(kLeastDecidedGap))));
}

/// Returns what a distance must be less than, now and when the turn of any later pair comes.
GSL_ALWAYS_INLINE double LimitOf(const SegmentSweepBatch& batch) {
  // A negative margin lets the distance rise.
  return batch.margin >= 0.0 ? *batch.distance - batch.margin : __builtin_inf();
}

inline void SweepSegments(const SegmentSweepBatch& batch) {
  const Coords d = {Splat(batch.direction[0]), Splat(batch.direction[1]),
                    Splat(batch.direction[2])};
  // With a tolerance above |d| no line is crossed: an end meets its foot on the other segment.
  const bool isOrdinary = batch.length >= batch.linearTolerance &&
                          batch.length > gsl_kernel::kLeastOrdinarySize &&
                          batch.length < gsl_kernel::kLargestOrdinarySize;
  ForGroups(
      batch, [&batch, &d, isOrdinary ](std::size_t k) __attribute__((always_inline)) {
        const LaneSweptSegment a = LoadSweptSegment(batch.a, k);
        const LaneSweptSegment b = LoadSweptSegment(batch.b, k);
        Bits isRejected = SplatBits(0);
        if (!batch.twoSided[0]) isRejected |= MustTurn(a, d, 1.0);
        if (!batch.twoSided[1]) isRejected |= MustTurn(b, d, -1.0);
        if (isOrdinary) isRejected |= PassOrLater(batch, a, b, d, Splat(LimitOf(batch)));
        if (!AllLanes(isRejected)) RunOthers(batch, k, isRejected);
      });
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
