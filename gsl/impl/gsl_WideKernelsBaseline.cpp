#include "gsl_WideKernels.h"
#include "kernel/EdgeScan.h"
#include "kernel/LuElimination.h"

namespace wide = gsl_kernel::GSL_LANES_NAMESPACE;

namespace {

void Eliminate(gsl_kernel::LuWork& work) {
  wide::LuElimination(work).Run();
}

} // namespace

const gsl_WideKernels gsl_WideKernelsBaseline = {wide::LargestOfRow, Eliminate, wide::SkipLines};
