#ifndef GSL_KERNEL_COMPARISON_H
#define GSL_KERNEL_COMPARISON_H

#include "gsl_Arithmetic.h"

namespace gsl_kernel {

using gsl_arithmetic::WithinBand;

} // namespace gsl_kernel

#endif
