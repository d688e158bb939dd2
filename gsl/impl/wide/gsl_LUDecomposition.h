#ifndef GSL_WIDE_LU_DECOMPOSITION_H
#define GSL_WIDE_LU_DECOMPOSITION_H

#include "wide/LuWork.h"
#include "wide/gsl_WideKernels.h"

/// How a system is cut.
struct gsl_LUBlocking {
  std::ptrdiff_t panel; ///< columns of a panel, a multiple of 8
  std::ptrdiff_t strip; ///< columns updated at a time, a multiple of 8
  bool inPlace;         ///< false: on a copy, which is padded and aligned
};

gsl_LUBlocking gsl_ChooseLUBlocking(std::int32_t size);

/// Replaces the matrix by its factors; untouched unless the result is Decomposed.
gsl_wide::LuResult gsl_LUDecompose(gsl_wide::LuSystem& system, const gsl_WideKernels& kernels);

/// The same without the short cut for small systems.
gsl_wide::LuResult gsl_LUDecomposeBlocked(gsl_wide::LuSystem& system,
                                          const gsl_WideKernels& kernels,
                                          const gsl_LUBlocking& blocking);

#endif
