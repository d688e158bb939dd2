#include "gsl_LinearEqnLUDSolver.h"

#include "mem_Memory.h"
#include "wide/LuSubstitution.h"
#include "wide/gsl_LUDecomposition.h"

#include <algorithm>
#include <cstddef>

using gsl_wide::LuResult;
using gsl_wide::LuSystem;

namespace {

/// Row numbers, padded to whole blocks, are 32-bit integers.
constexpr std::uint32_t kLargestSize = 2147483640;

/// Returns null without memory. A system without rows has a block too.
std::int32_t* AllocatePivots(std::uint32_t size) {
  const std::size_t entries = std::max<std::size_t>(size, 1);
  return static_cast<std::int32_t*>(mem_Malloc(entries * sizeof(std::int32_t)));
}

} // namespace

gsl_LinearEqnLUDSolver::gsl_LinearEqnLUDSolver()
    : m_matrix(nullptr), m_size(0), m_pivots(nullptr), m_parity(1), m_isSingular(false),
      m_isDecomposed(false) {}

gsl_LinearEqnLUDSolver::~gsl_LinearEqnLUDSolver() {
  mem_Free(m_pivots);
}

void gsl_LinearEqnLUDSolver::Reset() {
  mem_Free(m_pivots);
  m_pivots = nullptr;
  m_parity = 1;
  m_isSingular = false;
  m_isDecomposed = false;
}

void gsl_LinearEqnLUDSolver::SetMatrix(double** a, unsigned int n) {
  if (m_matrix != nullptr) Reset();
  m_matrix = a;
  m_size = n;
}

bool gsl_LinearEqnLUDSolver::Decompose() {
  if (m_matrix == nullptr) return false;
  if (m_isDecomposed) return true;
  if (m_size > kLargestSize) return false;
  if (m_pivots == nullptr) m_pivots = AllocatePivots(m_size);
  if (m_pivots == nullptr) return false;
  LuSystem system = {m_matrix, static_cast<std::int32_t>(m_size), m_pivots, 1};
  const LuResult result = gsl_LUDecompose(system, gsl_BestWideKernels());
  if (result == LuResult::ZeroRow) m_isSingular = true;
  m_isDecomposed = result == LuResult::Decomposed;
  m_parity = system.parity;
  return m_isDecomposed;
}

bool gsl_LinearEqnLUDSolver::Solve(double* b, double* x) {
  if (!Decompose()) return false;
  if (x != b) std::copy(b, b + m_size, x);
  const LuSystem system = {m_matrix, static_cast<std::int32_t>(m_size), m_pivots, m_parity};
  gsl_wide::PermuteRightSide(system, x);
  gsl_wide::SubstituteForward(system, x);
  gsl_wide::SubstituteBackward(system, x);
  return true;
}
