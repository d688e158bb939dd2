#include "gsl_Batch.h"

#include "gsl_BatchRun.h"
#include "gsl_Matrix.h"
#include "gsl_Settings.h"

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

unsigned char* Bytes(gsl_BatchPart* parts) {
  return reinterpret_cast<unsigned char*>(parts);
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
