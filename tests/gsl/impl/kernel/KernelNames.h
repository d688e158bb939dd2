#ifndef TESTS_KERNEL_NAMES_H
#define TESTS_KERNEL_NAMES_H

#include "Numbers.h"
#include "kernel/Vector.h"

/// Names that the tests of the kernels share.
namespace kernel_names {

using gsl_kernel::Coord3;
using gsl_kernel::Measure;
using gsl_kernel::Measured3;
using numbers::Above;
using numbers::Below;
using numbers::kInfinity;
using numbers::kNaN;
using numbers::kSentinel;

/// A power of two: sums with small whole numbers are exact.
constexpr double kTolerance = 0.25;

} // namespace kernel_names

#endif
