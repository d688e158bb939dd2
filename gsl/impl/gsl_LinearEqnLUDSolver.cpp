#include "gsl_LinearEqnLUDSolver.h"

#include "wide/LuSubstitution.h"
#include "wide/gsl_LUDecomposition.h"

#include <algorithm>
#include <new>

using gsl_kernel::LuResult;
using gsl_kernel::LuSystem;

namespace {

/// Row numbers, padded to whole blocks, are 32-bit integers.
constexpr std::uint32_t kLargestSize = 2147483640;

} // namespace

gsl_LinearEqnLUDSolver::gsl_LinearEqnLUDSolver()
    : matrix(nullptr), size(0), pivots(nullptr), parity(1), isSingular(false), isDecomposed(false) {
}

gsl_LinearEqnLUDSolver::~gsl_LinearEqnLUDSolver() {
  delete[] pivots;
}

void gsl_LinearEqnLUDSolver::Reset() {
  delete[] pivots;
  pivots = nullptr;
  parity = 1;
  isSingular = false;
  isDecomposed = false;
}

void gsl_LinearEqnLUDSolver::SetMatrix(double** a, unsigned int n) {
  if (matrix != nullptr) Reset();
  matrix = a;
  size = n;
}

bool gsl_LinearEqnLUDSolver::Decompose() {
  if (matrix == nullptr) return false;
  // failed-decomposition-is-tried-again
  if (isDecomposed) return true;
  if (size > kLargestSize) return false;
  if (pivots == nullptr) pivots = new (std::nothrow) std::int32_t[size];
  if (pivots == nullptr) return false;
  LuSystem system = {matrix, static_cast<std::int32_t>(size), pivots, 1};
  const LuResult result = gsl_LUDecompose(system, gsl_BestWideKernels());
  if (result == LuResult::ZeroRow) isSingular = true;
  isDecomposed = result == LuResult::Decomposed;
  parity = system.parity;
  return isDecomposed;
}

bool gsl_LinearEqnLUDSolver::Solve(double* b, double* x) {
  if (!Decompose()) return false;
  if (x != b) std::copy(b, b + size, x);
  const LuSystem system = {matrix, static_cast<std::int32_t>(size), pivots, parity};
  gsl_kernel::PermuteRightSide(system, x);
  gsl_kernel::SubstituteForward(system, x);
  gsl_kernel::SubstituteBackward(system, x);
  return true;
}
