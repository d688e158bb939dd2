#ifndef GSL_BATCH_RUN_H
#define GSL_BATCH_RUN_H

#include "kernel/Box.h"
#include "kernel/SegmentDistance.h"
#include "kernel/TriangleDistance.h"
#include "kernel/TriangleSweep.h"
#include "wide/gsl_WideKernels.h"

/// The batches on the kernels of one instruction set, with the scalar kernels for what the lanes
/// leave. They are here so that tests run every instruction set.
namespace gsl_batch {

using gsl_kernel::Coord3;
using gsl_kernel::SegmentPart;

static_assert(gsl_wide::kPartFoot == static_cast<int>(SegmentPart::Foot) &&
                  gsl_wide::kPartFirst == static_cast<int>(SegmentPart::First) &&
                  gsl_wide::kPartSecond == static_cast<int>(SegmentPart::Second),
              "the lanes write the parts of the kernels");

inline Coord3 PointOf(const gsl_wide::PointsIn& points, std::size_t k) {
  const double* const at = points.first + static_cast<std::ptrdiff_t>(k) * points.stride;
  return {at[0], at[1], at[2]};
}

inline void WritePoint(double* to, const Coord3& c) {
  to[0] = c.x;
  to[1] = c.y;
  to[2] = c.z;
}

inline void WritePart(unsigned char* parts, std::size_t k, SegmentPart part) {
  if (parts != nullptr) parts[k] = static_cast<unsigned char>(part);
}

inline void OnePointSegment(const gsl_wide::PointSegmentBatch& batch, std::size_t k) {
  const Coord3 p = PointOf(batch.p, k);
  const gsl_kernel::NearestPoint nearest = gsl_kernel::NearestOnSegment(
      p, PointOf(batch.p1, k), PointOf(batch.p2, k), batch.linearTolerance);
  WritePart(batch.parts, k, nearest.part);
  batch.distances[k] = nearest.distance;
  if (nearest.part != SegmentPart::None) {
    if (batch.nearest != nullptr) WritePoint(batch.nearest + 3 * k, nearest.point);
    return;
  }
  // distance-to-what-closest-held: a degenerate segment leaves the output as it was.
  batch.distances[k] = batch.nearest == nullptr
                           ? std::numeric_limits<double>::quiet_NaN()
                           : gsl_kernel::Distance(p, PointOf({batch.nearest, 3}, k));
}

inline void PointSegments(const gsl_WideKernels& kernels, gsl_wide::PointSegmentBatch batch) {
  batch.one = OnePointSegment;
  kernels.pointSegments(batch);
}

inline void OnePointTriangle(const gsl_wide::PointTriangleBatch& batch, std::size_t k) {
  batch.distances[k] = gsl_kernel::TriangleDistance(PointOf(batch.p, k), PointOf(batch.p1, k),
                                                    PointOf(batch.p2, k), PointOf(batch.p3, k),
                                                    batch.linearTolerance, batch.cosineTolerance);
}

inline void PointTriangles(const gsl_WideKernels& kernels, gsl_wide::PointTriangleBatch batch) {
  batch.one = OnePointTriangle;
  if (gsl_kernel::RegionsAreDecided(batch.linearTolerance, batch.cosineTolerance)) {
    kernels.pointTriangles(batch);
    return;
  }
  for (std::size_t k = 0; k < batch.count; ++k)
    OnePointTriangle(batch, k);
}

inline void OneSegmentPair(const gsl_wide::SegmentPairBatch& batch, std::size_t k) {
  using gsl_kernel::ConnectionKind;
  const gsl_kernel::Connection found = gsl_kernel::ConnectSegments(
      {PointOf(batch.a1, k), PointOf(batch.a2, k)}, {PointOf(batch.b1, k), PointOf(batch.b2, k)},
      batch.linearTolerance);
  WritePart(batch.partsA, k, found.partA);
  WritePart(batch.partsB, k, found.partB);
  if (found.kind == ConnectionKind::None) {
    // far-segments-keep-the-connection: the points stay, and no distance belongs to them.
    batch.distances[k] = std::numeric_limits<double>::quiet_NaN();
    return;
  }
  batch.distances[k] = gsl_kernel::Distance(found.onA, found.onB);
  if (batch.onA != nullptr) WritePoint(batch.onA + 3 * k, found.onA);
  if (batch.onB != nullptr) WritePoint(batch.onB + 3 * k, found.onB);
}

inline void SegmentPairs(const gsl_WideKernels& kernels, gsl_wide::SegmentPairBatch batch) {
  batch.one = OneSegmentPair;
  kernels.segmentPairs(batch);
}

inline void OneTransform(const gsl_wide::TransformBatch& batch, std::size_t k) {
  WritePoint(batch.out + 3 * k, gsl_kernel::TransformPoint(*batch.matrix, PointOf(batch.in, k)));
}

inline void TransformPoints(const gsl_WideKernels& kernels, gsl_wide::TransformBatch batch) {
  batch.one = OneTransform;
  kernels.transformPoints(batch);
}

inline void OneBox(const gsl_wide::BoxBatch& batch, std::size_t k) {
  gsl_kernel::Box box = {PointOf(batch.min, k), PointOf(batch.max, k)};
  const bool isEmpty = box.min.x > box.max.x || box.min.y > box.max.y || box.min.z > box.max.z;
  if (!isEmpty) {
    box = gsl_kernel::TransformBox(box, *batch.matrix);
  }
  WritePoint(batch.out + 6 * k, box.min);
  WritePoint(batch.out + 6 * k + 3, box.max);
}

inline void TransformBoxes(const gsl_WideKernels& kernels, gsl_wide::BoxBatch batch) {
  batch.one = OneBox;
  kernels.transformBoxes(batch);
}

inline void BoxOfPoints(const gsl_WideKernels& kernels, const gsl_wide::PointsIn& points,
                        std::size_t count, double* box) {
  if (count > 0) {
    kernels.boxOfPoints(points, count, box);
    return;
  }
  WritePoint(box, gsl_kernel::kEmptyBox.min);
  WritePoint(box + 3, gsl_kernel::kEmptyBox.max);
}

/// What a sweep of triangles has found: the running minimum, its contacts and its pair.
struct SweptPairs {
  double distance;
  Coord3 contact[2];
  std::size_t pair;
  bool found;
};

inline gsl_kernel::SourcedTriangle TriangleAt(const gsl_wide::PointsIn (&points)[3], std::size_t k,
                                              int firstSource) {
  return {{{PointOf(points[0], k), firstSource},
           {PointOf(points[1], k), firstSource + 1},
           {PointOf(points[2], k), firstSource + 2}}};
}

/// Sweeps one pair as gsl_TriTriMinDirectionalDist does.
inline void OneTrianglePair(const gsl_wide::TriangleSweepBatch& batch, std::size_t k) {
  SweptPairs& best = *static_cast<SweptPairs*>(batch.contact);
  const gsl_kernel::SourcedTriangle a = TriangleAt(batch.a, k, gsl_kernel::kFirstOfA);
  const gsl_kernel::SourcedTriangle b = TriangleAt(batch.b, k, gsl_kernel::kFirstOfB);
  const gsl_kernel::Measured3 d = {{batch.direction[0], batch.direction[1], batch.direction[2]},
                                   batch.length};
  if (gsl_kernel::SlabsReject(a, b, d, best.distance + batch.margin, batch.linearTolerance)) return;
  gsl_kernel::SweepContacts found = {};
  found.distance = best.distance;
  const bool result = gsl_kernel::SweepTriangle(
      d, a, b, batch.twoSided, {batch.linearTolerance, batch.cosineTolerance},
      [&best] { return best.contact[0]; }, found);
  best.found |= result;
  for (int side = 0; side < 2; ++side) {
    if (found.written[side]) best.contact[side] = found.point[side].c;
  }
  // The first contact is written whenever the distance falls.
  if (!found.written[0]) return;
  best.distance = found.distance;
  best.pair = k;
}

/// Sweeps the pairs in order. `direction` may have any length.
inline void SweepTriangles(const gsl_WideKernels& kernels, gsl_wide::TriangleSweepBatch batch,
                           const gsl_kernel::Measured3& direction, SweptPairs& best) {
  const gsl_kernel::Measured3 d = gsl_arithmetic::NormalizedCopy(direction, batch.linearTolerance);
  WritePoint(batch.direction, d.c);
  batch.length = d.magnitude;
  WritePoint(batch.axis, gsl_arithmetic::NormalizedCopy(d, batch.linearTolerance).c);
  batch.distance = &best.distance;
  batch.contact = &best;
  batch.one = OneTrianglePair;
  kernels.sweepTriangles(batch);
}

} // namespace gsl_batch

#endif
