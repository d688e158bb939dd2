#ifndef GSL_WIDE_WIDE_KERNELS_H
#define GSL_WIDE_WIDE_KERNELS_H

#include "wide/AdjacencyRun.h"
#include "wide/BatchWork.h"
#include "wide/LuWork.h"

#include <cstddef>

/// Instruction sets that the wide kernels are compiled for.
enum class gsl_VectorWidth { Baseline, Avx2, Avx512 };

/// The kernels that are compiled once per instruction set. Every set returns the same results.
struct gsl_WideKernels {
  /// Is gsl_wide::LargestOfRow.
  double (*largestOfRow)(const double* row, std::ptrdiff_t n, double* to);
  /// Is gsl_wide::Eliminate.
  void (*eliminate)(gsl_wide::LuWork& work);
  /// Is gsl_wide::SolveSmall, or null where registers are too narrow for it.
  gsl_wide::LuResult (*solveSmall)(gsl_wide::LuSystem& system, const double* rightSide, double* to);
  /// Is gsl_wide::SkipRuns.
  std::size_t (*skipRuns)(const unsigned char* entries, const unsigned char* open,
                          const unsigned char* next, std::size_t runs);
  /// The batches, each as the function of gsl_wide with its name.
  void (*pointSegments)(const gsl_wide::PointSegmentBatch& batch);
  void (*pointTriangles)(const gsl_wide::PointTriangleBatch& batch);
  void (*segmentPairs)(const gsl_wide::SegmentPairBatch& batch);
  void (*transformPoints)(const gsl_wide::TransformBatch& batch);
  void (*transformBoxes)(const gsl_wide::BoxBatch& batch);
  /// Is gsl_wide::BoxOfPoints.
  void (*boxOfPoints)(const gsl_wide::PointsIn& points, std::size_t count, double* box);
  void (*sweepTriangles)(const gsl_wide::TriangleSweepBatch& batch);
  void (*sweepSegments)(const gsl_wide::SegmentSweepBatch& batch);
};

extern const gsl_WideKernels gsl_WideKernelsBaseline;
#if defined(GSL_X86_WIDTHS)
extern const gsl_WideKernels gsl_WideKernelsAvx2;
extern const gsl_WideKernels gsl_WideKernelsAvx512;
#endif

/// Returns null when this processor, or this build, does not have the instruction set.
const gsl_WideKernels* gsl_FindWideKernels(gsl_VectorWidth width);

/// Returns whether this processor computes a vector of eight doubles as two of four.
bool gsl_SplitsWideVectors();

/// Returns the kernels of the widest instruction set of this processor.
const gsl_WideKernels& gsl_BestWideKernels();

#endif
