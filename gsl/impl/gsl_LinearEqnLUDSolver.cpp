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

bool IsSmall(std::uint32_t size) {
  return size <= static_cast<std::uint32_t>(gsl_wide::kLargestSmall);
}

/// Returns null without memory. Every small system has a block of the same size, so that the next
/// small system can use it.
std::int32_t* AllocatePivots(std::uint32_t size) {
  const std::size_t entries = std::max<std::size_t>(size, gsl_wide::kLargestSmall);
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
  m_parity = 1;
  m_isSingular = false;
  m_isDecomposed = false;
}

void gsl_LinearEqnLUDSolver::SetMatrix(double** a, unsigned int n) {
  if (m_matrix != nullptr) Reset();
  if (m_pivots != nullptr && !(IsSmall(m_size) && IsSmall(n))) {
    mem_Free(m_pivots);
    m_pivots = nullptr;
  }
  m_matrix = a;
  m_size = n;
}

bool gsl_LinearEqnLUDSolver::Decompose() {
  if (m_isDecomposed) return true;
  LuSystem system = {m_matrix, static_cast<std::int32_t>(m_size), m_pivots, 1};
  const LuResult result = gsl_LUDecompose(system, gsl_BestWideKernels());
  if (result == LuResult::ZeroRow) m_isSingular = true;
  m_isDecomposed = result == LuResult::Decomposed;
  m_parity = system.parity;
  return m_isDecomposed;
}

bool gsl_LinearEqnLUDSolver::Solve(double* b, double* x) {
  if (m_matrix == nullptr || m_size > kLargestSize) return false;
  if (m_pivots == nullptr) m_pivots = AllocatePivots(m_size);
  if (m_pivots == nullptr) return false;
  LuSystem system = {m_matrix, static_cast<std::int32_t>(m_size), m_pivots, m_parity};
  if (!m_isDecomposed && m_size > 0 && IsSmall(m_size)) {
    m_isDecomposed = gsl_LUSolveSmall(system, gsl_BestWideKernels(), b, x) == LuResult::Decomposed;
    if (!m_isDecomposed) m_isSingular = true;
    m_parity = system.parity;
    return m_isDecomposed;
  }
  if (!Decompose()) return false;
  if (x != b) std::copy(b, b + m_size, x);
  gsl_wide::PermuteRightSide(system, x);
  gsl_wide::SubstituteForward(system, x);
  gsl_wide::SubstituteBackward(system, x);
  return true;
}
