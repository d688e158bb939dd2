#include "wide/gsl_LUDecomposition.h"

#include "mem_Memory.h"
#include "wide/LuFixed.h"
#include "wide/LuSubstitution.h"
#include "wide/LuUnblocked.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace {

using gsl_wide::kLargestSmall;
using gsl_wide::kSlice;
using gsl_wide::LuResult;
using gsl_wide::LuSystem;
using gsl_wide::LuWork;

/// The least size that is eliminated in the caller's rows. From it on, a copy costs more.
constexpr std::int32_t kInPlaceSize = 2048;

constexpr std::size_t kCacheLine = 64;

struct Release {
  void operator()(double* p) const { mem_Free(p); }
};
using Scratch = std::unique_ptr<double[], Release>;

Scratch Allocate(std::size_t doubles) {
  if (doubles > std::numeric_limits<std::size_t>::max() / (2 * sizeof(double))) return nullptr;
  return Scratch(static_cast<double*>(mem_Malloc(doubles * sizeof(double))));
}

/// Returns the first cache line of the block. At most one line of the block comes before it.
double* FirstCacheLine(double* block) {
  const std::uintptr_t past = reinterpret_cast<std::uintptr_t>(block) % kCacheLine;
  return past == 0 ? block : block + (kCacheLine - past) / sizeof(double);
}

std::ptrdiff_t RoundUp(std::ptrdiff_t n) {
  return (n + kSlice - 1) / kSlice * kSlice;
}

/// Divides the scratch block into areas, each on a cache line of its own.
class ScratchAreas {
public:
  explicit ScratchAreas(double* block) : m_next(FirstCacheLine(block)) {}
  double* Take(std::ptrdiff_t doubles) {
    double* const area = m_next;
    m_next += RoundUp(doubles);
    return area;
  }
  double** TakePointers(std::ptrdiff_t count) {
    static_assert(sizeof(double*) <= sizeof(double), "a pointer fits in a double's place");
    return ::new (static_cast<void*>(Take(count))) double*[static_cast<std::size_t>(count)];
  }

private:
  double* m_next;
};

/// Blocked elimination of one system, from its scratch to the factors.
class Blocked {
public:
  Blocked(LuSystem& system, const gsl_WideKernels& kernels, const gsl_LUBlocking& blocking)
      : m_system(system), m_kernels(kernels), m_size(system.size), m_inPlace(blocking.inPlace) {
    m_work.size = m_size;
    m_work.padded = RoundUp(m_size);
    m_work.panel = std::min(blocking.panel, m_work.padded);
    m_work.strip = std::min(blocking.strip, m_work.padded);
    m_work.whole = m_inPlace ? m_size / kSlice * kSlice : m_work.padded;
    m_work.pivots = m_system.pivots;
    m_work.parity = 1;
    m_work.broadcast = blocking.broadcast;
    // The numbers of cache lines, and of blocks of lines, are odd. So the columns of the copy and
    // the blocks of one row spread over all cache sets.
    m_stride = (m_work.padded / kSlice | 1) * kSlice;
    m_work.sliceStride = m_stride * kSlice;
  }

  bool AllocateScratch() {
    const std::ptrdiff_t copy =
        m_inPlace ? RoundUp(m_size) * kSlice + m_work.padded : m_work.padded * m_stride;
    constexpr std::ptrdiff_t kToAlign = kCacheLine / sizeof(double);
    const std::ptrdiff_t total =
        kToAlign + copy + 3 * m_work.padded + SlicesOf(m_work.panel) + m_work.panel * m_work.strip;
    m_scratch = Allocate(static_cast<std::size_t>(total));
    if (m_scratch == nullptr) return false;
    ScratchAreas areas(m_scratch.get());
    m_work.rows = areas.TakePointers(m_work.padded);
    m_work.tails = areas.TakePointers(m_work.padded);
    m_work.scale = areas.Take(m_work.padded);
    m_work.slices = areas.Take(SlicesOf(m_work.panel));
    m_work.upper = areas.Take(m_work.panel * m_work.strip);
    if (m_inPlace) {
      m_spare = areas.Take(m_work.padded);
      m_tail = areas.Take(m_work.padded * kSlice);
    } else {
      m_tail = areas.Take(m_work.padded * m_stride);
    }
    return true;
  }

  /// Returns false for a zero row.
  bool FetchRows() {
    for (std::ptrdiff_t i = 0; i < m_size; ++i) {
      double* const copy = m_inPlace ? nullptr : m_tail + i * m_stride;
      const double big = m_kernels.largestOfRow(m_system.matrix[i], m_size, copy);
      if (gsl_wide::kTinyPivot > big) return false;
      m_work.scale[i] = 1.0 / big;
      m_work.rows[i] = m_inPlace ? m_system.matrix[i] : copy;
    }
    if (m_inPlace) {
      FetchTails();
    } else {
      for (std::ptrdiff_t i = 0; i < m_size; ++i)
        Clear(m_work.rows[i] + m_size, m_work.padded - m_size);
    }
    PadRows();
    return true;
  }

  void Eliminate() { m_kernels.eliminate(m_work); }

  void StoreRows() {
    if (m_inPlace) {
      MoveRows();
      for (std::ptrdiff_t i = 0; i < m_size; ++i)
        Copy(m_system.matrix[i] + m_work.whole, m_work.tails[i], m_size - m_work.whole);
    } else {
      for (std::ptrdiff_t i = 0; i < m_size; ++i)
        Copy(m_system.matrix[i], m_work.rows[i], m_size);
    }
    m_system.parity = m_work.parity;
  }

private:
  LuSystem& m_system;
  const gsl_WideKernels& m_kernels;
  const std::ptrdiff_t m_size;
  const bool m_inPlace;
  std::ptrdiff_t m_stride;
  LuWork m_work;
  Scratch m_scratch;
  double* m_spare = nullptr; ///< one row, when the elimination is in place
  double* m_tail = nullptr;  ///< a copy of the matrix, or, in place, of its last columns

  std::ptrdiff_t SlicesOf(std::ptrdiff_t columns) const {
    return columns / kSlice * m_work.sliceStride;
  }
  static void Clear(double* p, std::ptrdiff_t count) { std::fill(p, p + count, 0.0); }
  static void Copy(double* to, const double* from, std::ptrdiff_t count) {
    std::memcpy(to, from, static_cast<std::size_t>(count) * sizeof(double));
  }

  void FetchTails() {
    for (std::ptrdiff_t i = 0; i < m_work.padded; ++i) {
      m_work.tails[i] = m_tail + i * kSlice;
      Clear(m_work.tails[i], kSlice);
      if (i < m_size)
        Copy(m_work.tails[i], m_system.matrix[i] + m_work.whole, m_size - m_work.whole);
    }
  }

  /// Clears the padding. In place, the spare row is every row below the last: nothing reads its
  /// results.
  void PadRows() {
    if (m_inPlace) Clear(m_spare, m_work.padded);
    for (std::ptrdiff_t i = m_size; i < m_work.padded; ++i) {
      m_work.scale[i] = std::numeric_limits<double>::quiet_NaN();
      m_work.rows[i] = m_inPlace ? m_spare : m_tail + i * m_stride;
      if (!m_inPlace) Clear(m_work.rows[i], m_work.padded);
    }
  }

  /// Moves the contents of the caller's rows into pivoted order, cycle by cycle.
  void MoveRows() {
    // where[i] is the caller's row that holds the contents of row i.
    std::ptrdiff_t* const where = OriginOfRows();
    for (std::ptrdiff_t i = 0; i < m_size; ++i) {
      if (where[i] == i) continue;
      Copy(m_spare, m_system.matrix[i], m_work.whole);
      std::ptrdiff_t to = i;
      while (where[to] != i) {
        Copy(m_system.matrix[to], m_system.matrix[where[to]], m_work.whole);
        const std::ptrdiff_t from = where[to];
        where[to] = to;
        to = from;
      }
      Copy(m_system.matrix[to], m_spare, m_work.whole);
      where[to] = to;
    }
  }

  /// Repeats the exchanges on row numbers. Uses the memory of the slices, which are no longer
  /// needed.
  std::ptrdiff_t* OriginOfRows() {
    static_assert(sizeof(std::ptrdiff_t) <= sizeof(double),
                  "a row number fits in a double's place");
    std::ptrdiff_t* const where =
        ::new (static_cast<void*>(m_work.slices)) std::ptrdiff_t[static_cast<std::size_t>(m_size)];
    for (std::ptrdiff_t i = 0; i < m_size; ++i)
      where[i] = i;
    for (std::ptrdiff_t i = 0; i < m_size; ++i)
      std::swap(where[i], where[m_system.pivots[i]]);
    return where;
  }
};

} // namespace

gsl_LUBlocking gsl_ChooseLUBlocking(std::int32_t size) {
  using gsl_wide::Broadcast;
  static const Broadcast kBroadcast =
      gsl_SplitsWideVectors() ? Broadcast::InOperand : Broadcast::InRegister;
  // A wider panel reads and writes the rest of the matrix less often, but does more of the work
  // inside the panel, in smaller tiles. The caller's rows share cache sets, which leaves less room
  // for a strip.
  const std::ptrdiff_t panel = size < 1024 ? 64 : 128;
  const bool inPlace = size >= kInPlaceSize;
  return {panel, inPlace ? 192 : 384, inPlace, kBroadcast};
}

LuResult gsl_LUDecomposeBlocked(LuSystem& system, const gsl_WideKernels& kernels,
                                const gsl_LUBlocking& blocking) {
  Blocked blocked(system, kernels, blocking);
  if (!blocked.AllocateScratch()) return LuResult::NoMemory;
  if (!blocked.FetchRows()) return LuResult::ZeroRow;
  blocked.Eliminate();
  blocked.StoreRows();
  return LuResult::Decomposed;
}

LuResult gsl_LUDecompose(LuSystem& system, const gsl_WideKernels& kernels) {
  system.parity = 1;
  if (system.size <= kLargestSmall) {
    double scale[kLargestSmall];
    return gsl_wide::DecomposeUnblocked(system, scale);
  }
  const LuResult result =
      gsl_LUDecomposeBlocked(system, kernels, gsl_ChooseLUBlocking(system.size));
  if (result != LuResult::NoMemory) return result;
  const Scratch scale = Allocate(static_cast<std::size_t>(system.size));
  if (scale == nullptr) return LuResult::NoMemory;
  return gsl_wide::DecomposeUnblocked(system, scale.get());
}

LuResult gsl_LUSolveSmall(LuSystem& system, const gsl_WideKernels& kernels, const double* rightSide,
                          double* to) {
  system.parity = 1;
  if (system.size <= gsl_wide::kLargestFixed) return gsl_wide::SolveFixed(system, rightSide, to);
  if (kernels.solveSmall != nullptr) return kernels.solveSmall(system, rightSide, to);
  double scale[kLargestSmall];
  const LuResult result = gsl_wide::DecomposeUnblocked(system, scale);
  if (result != LuResult::Decomposed) return result;
  if (to != rightSide) std::copy(rightSide, rightSide + system.size, to);
  gsl_wide::PermuteRightSide(system, to);
  gsl_wide::SubstituteForward(system, to);
  gsl_wide::SubstituteBackward(system, to);
  return result;
}
