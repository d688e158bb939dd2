#ifndef GSL_WIDE_LU_DECOMPOSITION_H
#define GSL_WIDE_LU_DECOMPOSITION_H

#include "wide/LuWork.h"
#include "wide/gsl_WideKernels.h"

/// How a system is cut into blocks.
struct gsl_LUBlocking {
  std::ptrdiff_t panel; ///< columns of a panel, a multiple of 8
  std::ptrdiff_t strip; ///< columns that are updated together, a multiple of 8
  bool inPlace;         ///< false for a padded and aligned copy of the matrix
  gsl_wide::Broadcast broadcast = gsl_wide::Broadcast::InOperand; ///< matters with AVX-512 alone
};

/// Returns the blocks that are fastest for a system of this size on this processor.
gsl_LUBlocking gsl_ChooseLUBlocking(std::int32_t size);

/// Replaces the matrix by its factors. Leaves the matrix untouched unless it returns Decomposed.
gsl_wide::LuResult gsl_LUDecompose(gsl_wide::LuSystem& system, const gsl_WideKernels& kernels);

/// Does the same for a system of 1 to kLargestSmall rows, without memory, and writes its solution
/// unless it returns ZeroRow. The right side may be the solution.
gsl_wide::LuResult gsl_LUSolveSmall(gsl_wide::LuSystem& system, const gsl_WideKernels& kernels,
                                    const double* rightSide, double* to);

/// Does the same as gsl_LUDecompose in blocks for every size. Returns NoMemory when there is no
/// memory for the blocks.
gsl_wide::LuResult gsl_LUDecomposeBlocked(gsl_wide::LuSystem& system,
                                          const gsl_WideKernels& kernels,
                                          const gsl_LUBlocking& blocking);

#endif
