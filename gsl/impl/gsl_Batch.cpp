#include "gsl_Batch.h"

#include "gsl_BatchRun.h"
#include "gsl_Matrix.h"
#include "gsl_Settings.h"
#include "gsl_Vector.h"

namespace {

using gsl_kernel::SegmentPart;

static_assert(static_cast<int>(gsl_BatchPart::None) == static_cast<int>(SegmentPart::None) &&
                  static_cast<int>(gsl_BatchPart::Foot) == static_cast<int>(SegmentPart::Foot) &&
                  static_cast<int>(gsl_BatchPart::First) == static_cast<int>(SegmentPart::First) &&
                  static_cast<int>(gsl_BatchPart::Second) == static_cast<int>(SegmentPart::Second),
              "the batches write the parts of the kernels");

gsl_wide::PointsIn In(const gsl_BatchPoints& points) {
  return {points.first, points.stride};
}

gsl_wide::PreparedIn In(const gsl_PreparedTriangles& triangles) {
  return {triangles.numbers + triangles.first, gsl_batch::PreparedPitch(triangles.count),
          triangles.isShared ? std::size_t{0} : std::size_t{1}};
}

unsigned char* Bytes(gsl_BatchPart* parts) {
  return reinterpret_cast<unsigned char*>(parts);
}

/// Returns the terms of a sweep, without its inputs.
template <class Batch>
Batch BatchOf(std::size_t count, const bool* twoSided, double margin) {
  const gsl_Util& settings = Settings();
  Batch batch = {};
  batch.count = count;
  batch.linearTolerance = settings.linearTolerance;
  batch.cosineTolerance = settings.cosineTolerance;
  batch.twoSided[0] = twoSided[0];
  batch.twoSided[1] = twoSided[1];
  batch.margin = margin;
  return batch;
}

/// Calls run(best) from what the contact holds, and writes what it finds.
template <class Run>
bool Sweep(gsl_BatchContact& contact, const Run& run) {
  gsl_batch::SweptPairs best = {contact.distance,
                                {{contact.onA[0], contact.onA[1], contact.onA[2]},
                                 {contact.onB[0], contact.onB[1], contact.onB[2]}},
                                contact.pair,
                                false};
  run(best);
  contact.distance = best.distance;
  gsl_batch::WritePoint(contact.onA, best.contact[0]);
  gsl_batch::WritePoint(contact.onB, best.contact[1]);
  contact.pair = best.pair;
  return best.found;
}

} // namespace

void gsl_PointSegmentDistances(std::size_t count, const gsl_BatchPoints& points,
                               const gsl_BatchPoints& p1, const gsl_BatchPoints& p2,
                               double* distances, double* nearest, gsl_BatchPart* parts) {
  gsl_batch::PointSegments(gsl_BestWideKernels(),
                           {count, In(points), In(p1), In(p2), Settings().linearTolerance,
                            distances, nearest, Bytes(parts), nullptr});
}

void gsl_PointTriangleDistances(std::size_t count, const gsl_BatchPoints& points,
                                const gsl_BatchPoints& p1, const gsl_BatchPoints& p2,
                                const gsl_BatchPoints& p3, double* distances) {
  const gsl_Util& settings = Settings();
  gsl_batch::PointTriangles(gsl_BestWideKernels(),
                            {count, In(points), In(p1), In(p2), In(p3), settings.linearTolerance,
                             settings.cosineTolerance, distances, nullptr});
}

void gsl_SegmentDistances(std::size_t count, const gsl_BatchPoints& a1, const gsl_BatchPoints& a2,
                          const gsl_BatchPoints& b1, const gsl_BatchPoints& b2, double* distances,
                          double* onA, double* onB, gsl_BatchPart* partsA, gsl_BatchPart* partsB) {
  gsl_batch::SegmentPairs(gsl_BestWideKernels(),
                          {count, In(a1), In(a2), In(b1), In(b2), Settings().linearTolerance,
                           distances, onA, onB, Bytes(partsA), Bytes(partsB), nullptr});
}

void gsl_TransformPoints(std::size_t count, const gsl_Matrix& matrix, const gsl_BatchPoints& points,
                         double* moved) {
  gsl_batch::TransformPoints(gsl_BestWideKernels(), {count, In(points), &matrix.m, moved, nullptr});
}

void gsl_TransformBoxes(std::size_t count, const gsl_Matrix& matrix, const gsl_BatchPoints& min,
                        const gsl_BatchPoints& max, double* moved) {
  gsl_batch::TransformBoxes(gsl_BestWideKernels(),
                            {count, In(min), In(max), &matrix.m, moved, nullptr});
}

void gsl_BoxOfPoints(std::size_t count, const gsl_BatchPoints& points, double* box) {
  gsl_batch::BoxOfPoints(gsl_BestWideKernels(), In(points), count, box);
}

std::size_t gsl_CountPreparedNumbers(std::size_t count) {
  return gsl_wide::kPreparedNumbers * gsl_batch::PreparedPitch(count);
}

void gsl_PrepareTriangles(std::size_t count, const gsl_BatchTriangles& triangles, double* numbers) {
  gsl_batch::PrepareTriangles(
      count, {In(triangles.corners[0]), In(triangles.corners[1]), In(triangles.corners[2])},
      numbers);
}

bool gsl_SweepTriangles(std::size_t count, const gsl_Vector& direction, const gsl_BatchTriangles& a,
                        const gsl_BatchTriangles& b, const bool* twoSided, double margin,
                        gsl_BatchContact& contact) {
  if (count == 0) return false;
  auto batch = BatchOf<gsl_wide::TriangleSweepBatch>(count, twoSided, margin);
  for (int i = 0; i < 3; ++i) {
    batch.a[i] = In(a.corners[i]);
    batch.b[i] = In(b.corners[i]);
  }
  return Sweep(contact, [&](gsl_batch::SweptPairs& best) {
    gsl_batch::SweepTriangles(gsl_BestWideKernels(), batch, direction.Measured(), best);
  });
}

bool gsl_SweepPreparedTriangles(std::size_t count, const gsl_Vector& direction,
                                const gsl_PreparedTriangles& a, const gsl_PreparedTriangles& b,
                                const bool* twoSided, double margin, gsl_BatchContact& contact) {
  if (count == 0) return false;
  auto batch = BatchOf<gsl_wide::TriangleSweepBatch>(count, twoSided, margin);
  batch.preparedA = In(a);
  batch.preparedB = In(b);
  return Sweep(contact, [&](gsl_batch::SweptPairs& best) {
    gsl_batch::SweepTriangles(gsl_BestWideKernels(), batch, direction.Measured(), best);
  });
}

bool gsl_SweepSegments(std::size_t count, const gsl_Vector& direction, const gsl_BatchSegments& a,
                       const gsl_BatchSegments& b, const bool* twoSided, double margin,
                       gsl_BatchContact& contact) {
  if (count == 0) return false;
  auto batch = BatchOf<gsl_wide::SegmentSweepBatch>(count, twoSided, margin);
  for (int i = 0; i < 2; ++i) {
    batch.a[i] = In(a.ends[i]);
    batch.b[i] = In(b.ends[i]);
  }
  return Sweep(contact, [&](gsl_batch::SweptPairs& best) {
    gsl_batch::SweepSegments(gsl_BestWideKernels(), batch, direction.Measured(), best);
  });
}
