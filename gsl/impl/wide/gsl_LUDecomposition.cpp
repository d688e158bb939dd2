#include "wide/gsl_LUDecomposition.h"

#include "wide/LuUnblocked.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace {

using gsl_kernel::kLeaf;
using gsl_kernel::LuResult;
using gsl_kernel::LuSystem;
using gsl_kernel::LuWork;

/// Up to here blocks cost more than they save.
constexpr std::int32_t kUnblockedSize = 16;
/// From here the matrix itself is cheaper to work on than a copy.
constexpr std::int32_t kInPlaceSize = 1024;

constexpr std::size_t kCacheLine = 64;

struct Release {
  void operator()(double* p) const { ::operator delete[](p, std::align_val_t{kCacheLine}); }
};
using Scratch = std::unique_ptr<double[], Release>;

Scratch Allocate(std::size_t doubles) {
  if (doubles > std::numeric_limits<std::size_t>::max() / (2 * sizeof(double))) return nullptr;
  return Scratch(static_cast<double*>(
      ::operator new[](doubles * sizeof(double), std::align_val_t{kCacheLine}, std::nothrow)));
}

std::ptrdiff_t RoundUp(std::ptrdiff_t n) {
  return (n + kLeaf - 1) / kLeaf * kLeaf;
}

/// Hands out pieces of the scratch block, each on a cache line of its own.
class Pieces {
public:
  explicit Pieces(double* block) : next(block) {}
  double* Take(std::ptrdiff_t doubles) {
    double* const piece = next;
    next += RoundUp(doubles);
    return piece;
  }
  double** TakePointers(std::ptrdiff_t count) {
    static_assert(sizeof(double*) <= sizeof(double), "a pointer fits in a double's place");
    return ::new (static_cast<void*>(Take(count))) double*[static_cast<std::size_t>(count)];
  }

private:
  double* next;
};

/// Blocked elimination of one system, from its scratch to the factors.
class Blocked {
public:
  Blocked(LuSystem& s, const gsl_WideKernels& k, const gsl_LUBlocking& b)
      : system(s), kernels(k), n(s.size), inPlace(b.inPlace) {
    work.size = n;
    work.padded = RoundUp(n);
    work.panel = std::min(b.panel, work.padded);
    work.strip = std::min(b.strip, work.padded);
    work.whole = inPlace ? n / kLeaf * kLeaf : work.padded;
    work.pivots = system.pivots;
    work.parity = 1;
    // Odd numbers of cache lines, and of blocks of lines: neither the columns of the copy nor the
    // blocks of one row crowd into few cache sets.
    stride = (work.padded / kLeaf | 1) * kLeaf;
    work.leafStride = stride * kLeaf;
  }

  bool AllocateScratch() {
    const std::ptrdiff_t copy = inPlace ? RoundUp(n) * kLeaf + work.padded : work.padded * stride;
    const std::ptrdiff_t total =
        copy + 3 * work.padded + LeavesOf(work.panel) + work.panel * work.strip;
    scratch = Allocate(static_cast<std::size_t>(total));
    if (scratch == nullptr) return false;
    Pieces pieces(scratch.get());
    work.rows = pieces.TakePointers(work.padded);
    work.tails = pieces.TakePointers(work.padded);
    work.scale = pieces.Take(work.padded);
    work.leaves = pieces.Take(LeavesOf(work.panel));
    work.upper = pieces.Take(work.panel * work.strip);
    if (inPlace) {
      spare = pieces.Take(work.padded);
      tail = pieces.Take(work.padded * kLeaf);
    } else {
      tail = pieces.Take(work.padded * stride);
    }
    return true;
  }

  /// False for a zero row.
  bool FetchRows() {
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      double* const copy = inPlace ? nullptr : tail + i * stride;
      const double big = kernels.largestOfRow(system.matrix[i], n, copy);
      if (gsl_kernel::kTinyPivot > big) return false;
      work.scale[i] = 1.0 / big;
      work.rows[i] = inPlace ? system.matrix[i] : copy;
    }
    if (inPlace) {
      FetchTails();
    } else {
      for (std::ptrdiff_t i = 0; i < n; ++i)
        Clear(work.rows[i] + n, work.padded - n);
    }
    PadRows();
    return true;
  }

  void Eliminate() { kernels.eliminate(work); }

  void StoreRows() {
    if (inPlace) {
      MoveRows();
      for (std::ptrdiff_t i = 0; i < n; ++i)
        Copy(system.matrix[i] + work.whole, work.tails[i], n - work.whole);
    } else {
      for (std::ptrdiff_t i = 0; i < n; ++i)
        Copy(system.matrix[i], work.rows[i], n);
    }
    system.parity = work.parity;
  }

private:
  LuSystem& system;
  const gsl_WideKernels& kernels;
  const std::ptrdiff_t n;
  const bool inPlace;
  std::ptrdiff_t stride;
  LuWork work;
  Scratch scratch;
  double* spare = nullptr; ///< in place: one row
  double* tail = nullptr;  ///< the copy; in place: of the last columns

  std::ptrdiff_t LeavesOf(std::ptrdiff_t columns) const {
    return columns / kLeaf * work.leafStride;
  }
  static void Clear(double* p, std::ptrdiff_t count) { std::fill(p, p + count, 0.0); }
  static void Copy(double* to, const double* from, std::ptrdiff_t count) {
    std::memcpy(to, from, static_cast<std::size_t>(count) * sizeof(double));
  }

  void FetchTails() {
    for (std::ptrdiff_t i = 0; i < work.padded; ++i) {
      work.tails[i] = tail + i * kLeaf;
      Clear(work.tails[i], kLeaf);
      if (i < n) Copy(work.tails[i], system.matrix[i] + work.whole, n - work.whole);
    }
  }

  /// In place the rows below the last are all the spare row: nobody reads what is computed there.
  void PadRows() {
    if (inPlace) Clear(spare, work.padded);
    for (std::ptrdiff_t i = n; i < work.padded; ++i) {
      work.scale[i] = std::numeric_limits<double>::quiet_NaN();
      work.rows[i] = inPlace ? spare : tail + i * stride;
      if (!inPlace) Clear(work.rows[i], work.padded);
    }
  }

  /// Moves the contents of the caller's rows into pivoted order, one cycle after the other.
  void MoveRows() {
    // where[i]: the caller's row that holds what belongs in row i
    std::ptrdiff_t* const where = OriginOfRows();
    for (std::ptrdiff_t i = 0; i < n; ++i) {
      if (where[i] == i) continue;
      Copy(spare, system.matrix[i], work.whole);
      std::ptrdiff_t to = i;
      while (where[to] != i) {
        Copy(system.matrix[to], system.matrix[where[to]], work.whole);
        const std::ptrdiff_t from = where[to];
        where[to] = to;
        to = from;
      }
      Copy(system.matrix[to], spare, work.whole);
      where[to] = to;
    }
  }

  /// Replays the exchanges on row numbers, in the memory of the leaves, which are done with.
  std::ptrdiff_t* OriginOfRows() {
    static_assert(sizeof(std::ptrdiff_t) <= sizeof(double),
                  "a row number fits in a double's place");
    std::ptrdiff_t* const where =
        ::new (static_cast<void*>(work.leaves)) std::ptrdiff_t[static_cast<std::size_t>(n)];
    for (std::ptrdiff_t i = 0; i < n; ++i)
      where[i] = i;
    for (std::ptrdiff_t i = 0; i < n; ++i)
      std::swap(where[i], where[system.pivots[i]]);
    return where;
  }
};

} // namespace

gsl_LUBlocking gsl_ChooseLUBlocking(std::int32_t size) {
  // The wider a panel, the less often the rest of the matrix is read and written, and the more of
  // the work is done inside the panel, in smaller pieces.
  const std::ptrdiff_t panel = size < kInPlaceSize ? 64 : size < 1536 ? 128 : 256;
  return {panel, 384, size >= kInPlaceSize};
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
  if (system.size <= kUnblockedSize) {
    double scale[kUnblockedSize];
    return gsl_kernel::DecomposeUnblocked(system, scale);
  }
  const LuResult result =
      gsl_LUDecomposeBlocked(system, kernels, gsl_ChooseLUBlocking(system.size));
  if (result != LuResult::NoMemory) return result;
  const Scratch scale = Allocate(static_cast<std::size_t>(system.size));
  if (scale == nullptr) return LuResult::NoMemory;
  return gsl_kernel::DecomposeUnblocked(system, scale.get());
}
