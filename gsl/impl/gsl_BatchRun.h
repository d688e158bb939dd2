#ifndef GSL_BATCH_RUN_H
#define GSL_BATCH_RUN_H

#include "kernel/Box.h"
#include "kernel/SegmentDistance.h"
#include "kernel/SegmentSweep.h"
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

/// What a sweep of pairs has found: the running minimum, its contacts and its pair.
struct SweptPairs {
  double distance;
  Coord3 contact[2];
  std::size_t pair;
  bool found;
};

/// What a sweep of triangles finds on the way.
struct SweptTriangles {
  SweptPairs& best;
  /// The contact on B follows from the contact on A and this pair, which found a contact last. It
  /// is computed once, at the end. No pair: the contact on B is written.
  std::size_t lastFound = 0;
  bool isLastFound = false;
};

inline gsl_kernel::SourcedTriangle TriangleAt(const gsl_wide::PointsIn (&points)[3],
                                              const gsl_wide::PreparedIn& prepared, std::size_t k,
                                              int firstSource) {
  gsl_kernel::SourcedTriangle tri = {};
  for (int i = 0; i < 3; ++i) {
    const auto number = [&](int axis) {
      const auto row = static_cast<std::size_t>(gsl_wide::kPreparedCorners + 3 * i + axis);
      return prepared.first[row * prepared.pitch + k * prepared.step];
    };
    tri.p[i] = {prepared.first == nullptr ? PointOf(points[i], k)
                                          : Coord3{number(0), number(1), number(2)},
                firstSource + i};
  }
  return tri;
}

inline gsl_kernel::Measured3 DirectionOf(const gsl_wide::TriangleSweepBatch& batch) {
  return {{batch.direction[0], batch.direction[1], batch.direction[2]}, batch.length};
}

/// Sweeps one pair as gsl_TriTriMinDirectionalDist does.
inline void OneTrianglePair(const gsl_wide::TriangleSweepBatch& batch, std::size_t k) {
  SweptTriangles& swept = *static_cast<SweptTriangles*>(batch.contact);
  SweptPairs& best = swept.best;
  const gsl_kernel::SourcedTriangle a =
      TriangleAt(batch.a, batch.preparedA, k, gsl_kernel::kFirstOfA);
  const gsl_kernel::SourcedTriangle b =
      TriangleAt(batch.b, batch.preparedB, k, gsl_kernel::kFirstOfB);
  const gsl_kernel::Measured3 d = DirectionOf(batch);
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
  if (found.written[1]) swept.isLastFound = false;
  // The first contact is written whenever the distance falls.
  if (!found.written[0]) return;
  best.distance = found.distance;
  best.pair = k;
}

/// Takes the pairs of a group in order, each with the distance of its turn.
inline void TakeTriangles(const gsl_wide::TriangleSweepBatch& batch,
                          const gsl_wide::TriangleGroup& group) {
  SweptTriangles& swept = *static_cast<SweptTriangles*>(batch.contact);
  SweptPairs& best = swept.best;
  for (unsigned lane = 0; (group.left | group.found) >> lane != 0; ++lane) {
    const std::size_t k = group.k + lane;
    if ((group.left >> lane & 1u) != 0) batch.one(batch, k);
    if ((group.found >> lane & 1u) == 0) continue;
    if (group.ahead[lane] > best.distance + batch.margin) continue;
    best.found = true;
    swept.lastFound = k;
    swept.isLastFound = true;
    if (!(best.distance > group.distance[lane])) continue;
    best.distance = group.distance[lane];
    best.contact[0] = {group.contact[0][lane], group.contact[1][lane], group.contact[2][lane]};
    best.pair = k;
  }
}

/// Computes the contact on B that follows from the contact on A.
inline void WriteContactOnB(const gsl_wide::TriangleSweepBatch& batch,
                            const SweptTriangles& swept) {
  if (!swept.isLastFound) return;
  const gsl_kernel::SourcedTriangle b =
      TriangleAt(batch.b, batch.preparedB, swept.lastFound, gsl_kernel::kFirstOfB);
  const gsl_kernel::Measured3 d = DirectionOf(batch);
  gsl_kernel::Measured3 normal = gsl_kernel::NormalOf(b, batch.cosineTolerance);
  const gsl_kernel::Facing facing = gsl_kernel::FacingOf(normal, d, -1.0, batch.cosineTolerance);
  gsl_kernel::Turn(normal, facing, &batch.twoSided[1]);
  SweptPairs& best = swept.best;
  best.contact[1] =
      gsl_kernel::ShadowOf({best.contact[0], gsl_kernel::kFirstContact}, {b.p[0].c, normal}, d,
                           {batch.linearTolerance, batch.cosineTolerance})
          .c;
}

/// Sweeps the pairs in order. `direction` may have any length.
inline void SweepTriangles(const gsl_WideKernels& kernels, gsl_wide::TriangleSweepBatch batch,
                           const gsl_kernel::Measured3& direction, SweptPairs& best) {
  const gsl_kernel::Measured3 d = gsl_arithmetic::NormalizedCopy(direction, batch.linearTolerance);
  WritePoint(batch.direction, d.c);
  batch.length = d.magnitude;
  WritePoint(batch.axis, gsl_arithmetic::NormalizedCopy(d, batch.linearTolerance).c);
  SweptTriangles swept = {best};
  batch.distance = &best.distance;
  batch.contact = &swept;
  batch.one = OneTrianglePair;
  batch.take = TakeTriangles;
  kernels.sweepTriangles(batch);
  WriteContactOnB(batch, swept);
}

/// Returns the way from one number of a prepared triangle to the next.
// Eight more than the count, so that the numbers of a triangle do not share the lines of a cache.
inline std::size_t PreparedPitch(std::size_t count) {
  return (count + 7) / 8 * 8 + 8;
}

/// Writes the numbers of each triangle. None depends on a tolerance or on a direction.
inline void PrepareTriangles(std::size_t count, const gsl_wide::PointsIn (&corners)[3],
                             double* prepared) {
  const std::size_t pitch = PreparedPitch(count);
  for (std::size_t k = 0; k < count; ++k) {
    const Coord3 p[3] = {PointOf(corners[0], k), PointOf(corners[1], k), PointOf(corners[2], k)};
    const auto write = [prepared, pitch, k](int row, double number) {
      prepared[static_cast<std::size_t>(row) * pitch + k] = number;
    };
    const auto writeThree = [&write](int row, const Coord3& c) {
      write(row, c.x);
      write(row + 1, c.y);
      write(row + 2, c.z);
    };
    gsl_kernel::Measured3 edges[3] = {};
    for (int i = 0; i < 3; ++i) {
      edges[i] = gsl_kernel::Between(p[i], p[(i + 1) % 3]);
      const double length = edges[i].magnitude;
      writeThree(gsl_wide::kPreparedCorners + 3 * i, p[i]);
      write(gsl_wide::kPreparedLengths + i, length);
      writeThree(gsl_wide::kPreparedUnits + 3 * i, gsl_kernel::Multiply(edges[i].c, 1.0 / length));
    }
    const gsl_kernel::Measured3 normal =
        gsl_kernel::Measure(gsl_kernel::Cross(edges[0].c, edges[1].c));
    const gsl_kernel::Measured3 unit = gsl_arithmetic::Scaled(normal, 1.0 / normal.magnitude);
    writeThree(gsl_wide::kPreparedNormal, unit.c);
    write(gsl_wide::kPreparedMagnitude, unit.magnitude);
    write(gsl_wide::kPreparedArea, normal.magnitude);
  }
}

inline gsl_kernel::SweptSegment SegmentAt(const gsl_wide::PointsIn (&points)[2], std::size_t k,
                                          int firstSource) {
  return gsl_kernel::SweptSegmentBetween({PointOf(points[0], k), firstSource},
                                         {PointOf(points[1], k), firstSource + 1});
}

/// Sweeps one pair as gsl_InPlaneSegSegMinDirectionalDist does.
inline void OneSweptSegment(const gsl_wide::SegmentSweepBatch& batch, std::size_t k) {
  SweptPairs& best = *static_cast<SweptPairs*>(batch.contact);
  const gsl_kernel::SweptSegment a = SegmentAt(batch.a, k, gsl_kernel::kFirstOfA);
  const gsl_kernel::SweptSegment b = SegmentAt(batch.b, k, gsl_kernel::kFirstOfB);
  const gsl_kernel::Measured3 d = {{batch.direction[0], batch.direction[1], batch.direction[2]},
                                   batch.length};
  const gsl_kernel::SweepTolerances tol = {batch.linearTolerance, batch.cosineTolerance};
  if (gsl_kernel::PassAside(a, b, d, tol)) return;
  gsl_kernel::SweepContacts found = {};
  found.distance = best.distance;
  best.found |= gsl_kernel::SweepSegment(d, a, b, batch.twoSided, batch.margin, tol, found);
  // Both contacts are written whenever the distance changes.
  if (!found.written[0]) return;
  best.distance = found.distance;
  best.contact[0] = found.point[0].c;
  best.contact[1] = found.point[1].c;
  best.pair = k;
}

/// Sweeps the pairs in order. `direction` may have any length.
inline void SweepSegments(const gsl_WideKernels& kernels, gsl_wide::SegmentSweepBatch batch,
                          const gsl_kernel::Measured3& direction, SweptPairs& best) {
  const gsl_kernel::Measured3 d = gsl_arithmetic::NormalizedCopy(direction, batch.linearTolerance);
  WritePoint(batch.direction, d.c);
  batch.length = d.magnitude;
  batch.distance = &best.distance;
  batch.contact = &best;
  batch.one = OneSweptSegment;
  kernels.sweepSegments(batch);
}

} // namespace gsl_batch

#endif
