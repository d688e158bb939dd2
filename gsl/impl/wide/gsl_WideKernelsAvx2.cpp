#include "wide/BoxLanes.h"
#include "wide/EdgeScan.h"
#include "wide/LuElimination.h"
#include "wide/LuSmall.h"
#include "wide/PointTriangleLanes.h"
#include "wide/SegmentPairLanes.h"
#include "wide/SegmentSweepLanes.h"
#include "wide/TransformLanes.h"
#include "wide/TriangleSweepLanes.h"
#include "wide/gsl_WideKernels.h"

namespace wide = gsl_wide::GSL_LANES_NAMESPACE;

const gsl_WideKernels gsl_WideKernelsAvx2 = {
    wide::LargestOfRow,   wide::Eliminate,      wide::SolveSmall,     wide::SkipRuns,
    wide::PointSegments,  wide::PointTriangles, wide::SegmentPairs,   wide::TransformPoints,
    wide::TransformBoxes, wide::BoxOfPoints,    wide::SweepTriangles, wide::SweepSegments};
