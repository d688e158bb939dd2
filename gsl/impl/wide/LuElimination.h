#ifndef GSL_WIDE_LU_ELIMINATION_H
#define GSL_WIDE_LU_ELIMINATION_H

#include "wide/Lanes.h"
#include "wide/LuWork.h"

/// Blocked LU elimination with scaled partial pivoting.
///
/// Eight columns, a slice, are eliminated together. The columns of a panel are halved down to
/// slices (S. Toledo, Locality of reference in LU decomposition with partial pivoting, 1997). The
/// rest of the matrix is updated once per panel.
///
/// Every blocking subtracts the terms l_ik * u_kj from an element in the order of increasing k, and
/// rounds each product and each difference. So the results are the bits of the column-by-column
/// form.
///
/// Exchanges move the pointers to rows, not the rows.
namespace gsl_wide {
namespace GSL_LANES_NAMESPACE {

/// The best figure of merit so far in each lane, and its row.
class PivotSearch {
public:
  explicit PivotSearch(std::ptrdiff_t firstRow)
      : m_best(Splat(0.0)), m_row(Splat(-1.0)),
        m_next(Splat(static_cast<double>(firstRow)) + ZeroToLast()) {}

  GSL_ALWAYS_INLINE void See(Doubles merit) {
    // equal-merits-take-the-last-row: a tie is better, and a NaN is not.
    const auto better = merit >= m_best;
    m_best = better ? merit : m_best;
    m_row = better ? m_next : m_row;
    m_next += Splat(kLanes);
  }

  /// Returns the row with the best merit, or -1 when every merit was NaN.
  GSL_ALWAYS_INLINE std::ptrdiff_t Row() const {
    const Doubles winner = Splat(Largest(m_best));
    return static_cast<std::ptrdiff_t>(Largest(m_best == winner ? m_row : Splat(-1.0)));
  }

private:
  Doubles m_best;
  Doubles m_row;
  Doubles m_next;
};

template <Broadcast kBroadcast>
class LuElimination {
public:
  explicit LuElimination(LuWork& work) : m_work(work), m_panelFirst(0) {}

  void Run() {
    for (std::ptrdiff_t first = 0; first < m_work.padded; first += m_work.panel) {
      const std::ptrdiff_t width = Least(m_work.panel, m_work.padded - first);
      m_panelFirst = first;
      Factor(first, width);
      Update(first, width, first + width, m_work.padded);
    }
  }

private:
  /// The size of a tile of the update. A tile fits in the registers.
  static constexpr int kTileRows = kLanes == 8 ? 8 : 4;
  static constexpr int kTileVectors = kLanes == 8 ? 3 : 2;
  /// The least number of terms for which the next tile is fetched. A tile of fewer terms ends
  /// before the next tile arrives.
  static constexpr std::ptrdiff_t kDepthToFetch = 32;

  LuWork& m_work;
  std::ptrdiff_t m_panelFirst;

  static GSL_ALWAYS_INLINE std::ptrdiff_t Least(std::ptrdiff_t a, std::ptrdiff_t b) {
    return a < b ? a : b;
  }

  GSL_ALWAYS_INLINE std::ptrdiff_t SliceStride() const { return m_work.sliceStride; }

  /// Returns rows row .. row + 7 of the slice that starts at `column`. Requires multiples of
  /// kSlice.
  GSL_ALWAYS_INLINE double* Block(std::ptrdiff_t column, std::ptrdiff_t row) const {
    return m_work.slices + (column - m_panelFirst) / kSlice * SliceStride() + row * kSlice;
  }

  struct RowsFrom {
    double* const* rows;
    std::ptrdiff_t offset;
  };
  /// Returns where rows row, row + 1, ... hold column `column`.
  GSL_ALWAYS_INLINE RowsFrom Rows(std::ptrdiff_t row, std::ptrdiff_t column) const {
    if (column < m_work.whole) return {m_work.rows + row, column};
    return {m_work.tails + row, column - m_work.whole};
  }

  void Factor(std::ptrdiff_t first, std::ptrdiff_t width) {
    if (width == kSlice) {
      FactorSlice(first);
      return;
    }
    const std::ptrdiff_t half = width / (2 * kSlice) * kSlice;
    Factor(first, half);
    Update(first, half, first + half, first + width);
    Factor(first + half, width - half);
  }

  void FactorSlice(std::ptrdiff_t first) {
    FetchSlice(first);
    const std::ptrdiff_t columns = Least(kSlice, m_work.size - first);
    std::ptrdiff_t p = FirstPivot(first);
    for (std::ptrdiff_t c = 0; c < columns; ++c) {
      const std::ptrdiff_t j = first + c;
      if (p < 0) p = j;
      if (p != j) Exchange(j, p);
      m_work.pivots[j] = static_cast<std::int32_t>(p);
      double& pivot = Block(first, first)[c * kSlice + c];
      // small-negative-pivot-becomes-positive: the sign of a tiny pivot is rounding.
      if (kTinyPivot > __builtin_fabs(pivot)) pivot = kTinyPivot;
      p = EliminateColumn(first, c);
    }
    StoreSlice(first);
  }

  void FetchSlice(std::ptrdiff_t first) {
    double* block = Block(first, first);
    for (std::ptrdiff_t row = first; row < m_work.padded; row += kSlice, block += kSlice * kSlice) {
      const RowsFrom from = Rows(row, first);
      for (int i = 0; i < kSlice; i += kLanes) {
        for (int j = 0; j < kSlice; j += kLanes) {
          Doubles t[kLanes];
#pragma GCC unroll 8
          for (int k = 0; k < kLanes; ++k)
            t[k] = Load(from.rows[i + k] + from.offset + j);
          Transpose(t);
#pragma GCC unroll 8
          for (int k = 0; k < kLanes; ++k)
            Store(block + (j + k) * kSlice + i, t[k]);
        }
      }
    }
  }

  void StoreSlice(std::ptrdiff_t first) {
    const double* block = Block(first, first);
    for (std::ptrdiff_t row = first; row < m_work.padded; row += kSlice, block += kSlice * kSlice) {
      const RowsFrom to = Rows(row, first);
      for (int i = 0; i < kSlice; i += kLanes) {
        for (int j = 0; j < kSlice; j += kLanes) {
          Doubles t[kLanes];
#pragma GCC unroll 8
          for (int k = 0; k < kLanes; ++k)
            t[k] = Load(block + (j + k) * kSlice + i);
          Transpose(t);
#pragma GCC unroll 8
          for (int k = 0; k < kLanes; ++k)
            Store(to.rows[i + k] + to.offset + j, t[k]);
        }
      }
    }
  }

  std::ptrdiff_t FirstPivot(std::ptrdiff_t first) const {
    PivotSearch search(first);
    const double* block = Block(first, first);
    for (std::ptrdiff_t row = first; row < m_work.padded; row += kSlice, block += kSlice * kSlice) {
      for (int h = 0; h < kSlice; h += kLanes) {
        search.See(Load(m_work.scale + row + h) * Magnitude(Load(block + h)));
      }
    }
    return search.Row();
  }

  void Exchange(std::ptrdiff_t j, std::ptrdiff_t p) {
    for (std::ptrdiff_t column = m_panelFirst; column <= j; column += kSlice) {
      double* a = Block(column, j / kSlice * kSlice) + j % kSlice;
      double* b = Block(column, p / kSlice * kSlice) + p % kSlice;
#pragma GCC unroll 8
      for (int c = 0; c < kSlice; ++c) {
        const double t = a[c * kSlice];
        a[c * kSlice] = b[c * kSlice];
        b[c * kSlice] = t;
      }
    }
    SwapPointers(m_work.rows, j, p);
    if (m_work.whole < m_work.padded) SwapPointers(m_work.tails, j, p);
    m_work.scale[p] = m_work.scale[j];
    m_work.parity = -m_work.parity;
  }

  static GSL_ALWAYS_INLINE void SwapPointers(double** rows, std::ptrdiff_t j, std::ptrdiff_t p) {
    double* const t = rows[j];
    rows[j] = rows[p];
    rows[p] = t;
  }

  /// Divides column c of the slice by its pivot and subtracts the column from the columns to its
  /// right. Returns the pivot row of the next column.
  std::ptrdiff_t EliminateColumn(std::ptrdiff_t first, std::ptrdiff_t c) {
    switch (c) {
    case 0:
      return EliminateColumn<0>(first);
    case 1:
      return EliminateColumn<1>(first);
    case 2:
      return EliminateColumn<2>(first);
    case 3:
      return EliminateColumn<3>(first);
    case 4:
      return EliminateColumn<4>(first);
    case 5:
      return EliminateColumn<5>(first);
    case 6:
      return EliminateColumn<6>(first);
    default:
      return EliminateColumn<7>(first);
    }
  }

  template <int c>
  std::ptrdiff_t EliminateColumn(std::ptrdiff_t first) {
    double* block = Block(first, first);
    Doubles u[kSlice];
#pragma GCC unroll 8
    for (int k = c; k < kSlice; ++k)
      u[k] = Splat(block[k * kSlice + c]);
    PivotSearch search(first);
#pragma GCC unroll 8
    for (int h = 0; h < kSlice; h += kLanes) {
      const auto below = Splat(h) + ZeroToLast() > Splat(c); // the rows above keep their U
      const Doubles old = Load(block + c * kSlice + h);
      const Doubles l = below ? old / u[c] : old;
      Store(block + c * kSlice + h, l);
#pragma GCC unroll 8
      for (int k = c + 1; k < kSlice; ++k) {
        const Doubles a = Load(block + k * kSlice + h);
        const Doubles updated = below ? a - l * u[k] : a;
        Store(block + k * kSlice + h, updated);
        if (k == c + 1) {
          const Doubles merit = Load(m_work.scale + first + h) * Magnitude(updated);
          search.See(below ? merit : Splat(-1.0));
        }
      }
    }
    block += kSlice * kSlice;
    for (std::ptrdiff_t row = first + kSlice; row < m_work.padded;
         row += kSlice, block += kSlice * kSlice) {
#pragma GCC unroll 8
      for (int h = 0; h < kSlice; h += kLanes) {
        const Doubles l = Load(block + c * kSlice + h) / u[c];
        Store(block + c * kSlice + h, l);
#pragma GCC unroll 8
        for (int k = c + 1; k < kSlice; ++k) {
          const Doubles updated = Load(block + k * kSlice + h) - l * u[k];
          Store(block + k * kSlice + h, updated);
          if (k == c + 1) search.See(Load(m_work.scale + row + h) * Magnitude(updated));
        }
      }
    }
    return search.Row();
  }

  /// Turns rows first .. first + width - 1 of columns begin .. end - 1 into U. Subtracts L * U from
  /// the rows below them.
  void Update(std::ptrdiff_t first, std::ptrdiff_t width, std::ptrdiff_t begin,
              std::ptrdiff_t end) {
    for (std::ptrdiff_t strip = begin, next; strip < end; strip = next) {
      next = Least(end, strip + m_work.strip);
      if (strip < m_work.whole) next = Least(next, m_work.whole);
      for (std::ptrdiff_t done = 0; done < width; done += kSlice) {
        Tiles<true>(first, width, done, first + done, strip, next);
      }
      for (std::ptrdiff_t row = first + width; row < m_work.padded; row += kSlice) {
        Tiles<false>(first, width, width, row, strip, next);
      }
    }
  }

  /// Subtracts the first `depth` terms of L * U from one block of rows. With kSolve, solves the
  /// block with the slice's own triangle after that, and packs the block.
  template <bool kSolve>
  void Tiles(std::ptrdiff_t first, std::ptrdiff_t width, std::ptrdiff_t depth, std::ptrdiff_t row,
             std::ptrdiff_t begin, std::ptrdiff_t end) const {
    const double* lower = Block(first, row);
    const RowsFrom from = Rows(row, begin);
    for (std::ptrdiff_t j = 0; j < end - begin;) {
      double* upper = m_work.upper + j * width;
      const std::ptrdiff_t left = end - begin - j;
      if (left >= kTileVectors * kLanes) {
        if (!kSolve && depth >= kDepthToFetch) FetchTileAfter(row, from, j, left);
        Tile<kTileVectors, kSolve>(lower, depth, upper, from.rows, from.offset + j);
        j += kTileVectors * kLanes;
      } else {
        LastTile<kSolve>(left, lower, depth, upper, from.rows, from.offset + j);
        j = end - begin;
      }
    }
  }

  /// Asks memory for the next tile while this tile is computed. The next tile is to the right, or
  /// is the first tile of the rows below.
  GSL_ALWAYS_INLINE void FetchTileAfter(std::ptrdiff_t row, const RowsFrom& from, std::ptrdiff_t j,
                                        std::ptrdiff_t left) const {
    constexpr std::ptrdiff_t kColumns = kTileVectors * kLanes;
    const bool right = left >= 2 * kColumns || row + kSlice >= m_work.padded;
    double* const* const rows = right ? from.rows : from.rows + kSlice;
    const std::ptrdiff_t column = right ? from.offset + j + kColumns : from.offset;
#pragma GCC unroll 8
    for (int r = 0; r < kSlice; ++r) {
#pragma GCC unroll 8
      for (std::ptrdiff_t k = 0; k < kColumns; k += kSlice)
        Prefetch(rows[r], column + k);
    }
  }

#if GSL_LANES == 8
  template <bool kSolve>
  GSL_ALWAYS_INLINE void LastTile(std::ptrdiff_t columns, const double* lower, std::ptrdiff_t depth,
                                  double* upper, double* const* rows, std::ptrdiff_t j) const {
    if (columns == 2 * kLanes)
      Tile<2, kSolve>(lower, depth, upper, rows, j);
    else
      Tile<1, kSolve>(lower, depth, upper, rows, j);
  }
#else
  /// Does nothing: the tiles divide every number of columns.
  template <bool kSolve>
  GSL_ALWAYS_INLINE void LastTile(std::ptrdiff_t, const double*, std::ptrdiff_t, double*,
                                  double* const*, std::ptrdiff_t) const {}
#endif

  template <int kVectors, bool kSolve>
  GSL_ALWAYS_INLINE void Tile(const double* lower, std::ptrdiff_t depth, double* upper,
                              double* const* rows, std::ptrdiff_t j) const {
    if constexpr (kSolve) {
      SolveRows<kVectors, 0>(lower, SliceStride(), depth, upper, rows, j);
      if constexpr (kTileRows < kSlice) {
        SolveRows<kVectors, kTileRows>(lower, SliceStride(), depth, upper, rows, j);
      }
    } else {
      for (int r = 0; r < kSlice; r += kTileRows) {
        SubtractProduct<kVectors>(lower + r, SliceStride(), depth, upper, rows + r, j);
      }
    }
  }

  template <int kVectors>
  static __attribute__((noinline)) void
  SubtractProduct(const double* lower, std::ptrdiff_t sliceStride, std::ptrdiff_t depth,
                  const double* upper, double* const* rows, std::ptrdiff_t j) {
    Doubles a[kTileRows][kVectors];
    LoadTile(a, rows, j);
    SubtractTerms(a, lower, sliceStride, depth, upper);
    StoreTile(a, rows, j);
  }

  /// Solves rows kSolved .. kSolved + kTileRows - 1 of a diagonal block. Requires that the rows
  /// above them are solved.
  template <int kVectors, int kSolved>
  static __attribute__((noinline)) void SolveRows(const double* lower, std::ptrdiff_t sliceStride,
                                                  std::ptrdiff_t depth, double* upper,
                                                  double* const* rows, std::ptrdiff_t j) {
    Doubles a[kTileRows][kVectors];
    LoadTile(a, rows + kSolved, j);
    SubtractTerms(a, lower + kSolved, sliceStride, depth, upper);
    const double* triangle = lower + depth / kSlice * sliceStride;
    double* solved = upper + depth * kVectors * kLanes;
    for (int k = 0; k < kSolved; ++k) {
      SubtractTerm(a, triangle + k * kSlice + kSolved, solved + k * kVectors * kLanes);
    }
#pragma GCC unroll 8
    for (int k = 0; k < kTileRows; ++k) {
      const double* column = triangle + (kSolved + k) * kSlice + kSolved;
#pragma GCC unroll 8
      for (int v = 0; v < kVectors; ++v) {
        Store(solved + ((kSolved + k) * kVectors + v) * kLanes, a[k][v]);
#pragma GCC unroll 8
        for (int r = k + 1; r < kTileRows; ++r)
          a[r][v] -= Times<kBroadcast>(column + r, a[k][v]);
      }
    }
    StoreTile(a, rows + kSolved, j);
  }

  template <int kVectors>
  static GSL_ALWAYS_INLINE void LoadTile(Doubles (&a)[kTileRows][kVectors], double* const* rows,
                                         std::ptrdiff_t j) {
#pragma GCC unroll 8
    for (int r = 0; r < kTileRows; ++r) {
#pragma GCC unroll 8
      for (int v = 0; v < kVectors; ++v)
        a[r][v] = Load(rows[r] + j + v * kLanes);
    }
  }

  template <int kVectors>
  static GSL_ALWAYS_INLINE void StoreTile(const Doubles (&a)[kTileRows][kVectors],
                                          double* const* rows, std::ptrdiff_t j) {
#pragma GCC unroll 8
    for (int r = 0; r < kTileRows; ++r) {
#pragma GCC unroll 8
      for (int v = 0; v < kVectors; ++v)
        Store(rows[r] + j + v * kLanes, a[r][v]);
    }
  }

  template <int kVectors>
  static GSL_ALWAYS_INLINE void SubtractTerms(Doubles (&a)[kTileRows][kVectors],
                                              const double* lower, std::ptrdiff_t sliceStride,
                                              std::ptrdiff_t depth, const double* upper) {
    for (std::ptrdiff_t k = 0; k < depth; k += kSlice, lower += sliceStride) {
      // Otherwise the compiler hoists the broadcasts of all terms, and spills them to memory where
      // registers are few.
#pragma GCC unroll 1
      for (int c = 0; c < kSlice; ++c, upper += kVectors * kLanes) {
        SubtractTerm(a, lower + c * kSlice, upper);
      }
    }
  }

  template <int kVectors>
  static GSL_ALWAYS_INLINE void SubtractTerm(Doubles (&a)[kTileRows][kVectors], const double* l,
                                             const double* upper) {
    Doubles u[kVectors];
#pragma GCC unroll 8
    for (int v = 0; v < kVectors; ++v)
      u[v] = Load(upper + v * kLanes);
#pragma GCC unroll 8
    for (int r = 0; r < kTileRows; ++r) {
#pragma GCC unroll 8
      for (int v = 0; v < kVectors; ++v)
        a[r][v] -= Times<kBroadcast>(l + r, u[v]);
    }
  }
};

/// Eliminates in the way that the work asks for, where there are two.
inline void Eliminate(LuWork& work) {
#if GSL_LANES == 8 && defined(__x86_64__)
  if (work.broadcast == Broadcast::InOperand) {
    LuElimination<Broadcast::InOperand>(work).Run();
    return;
  }
#endif
  LuElimination<Broadcast::InRegister>(work).Run();
}

/// Returns the largest magnitude of a row, and ignores NaN. Copies the row to `to` unless `to` is
/// null.
inline double LargestOfRow(const double* row, std::ptrdiff_t n, double* to) {
  Doubles largest = Splat(0.0);
  std::ptrdiff_t j = 0;
  for (; j + kLanes <= n; j += kLanes) {
    const Doubles v = Load(row + j);
    if (to != nullptr) Store(to + j, v);
    largest = Larger(Magnitude(v), largest);
  }
  double big = Largest(largest);
  for (; j < n; ++j) {
    if (to != nullptr) to[j] = row[j];
    const double magnitude = __builtin_fabs(row[j]);
    if (magnitude > big) big = magnitude;
  }
  return big;
}

} // namespace GSL_LANES_NAMESPACE
} // namespace gsl_wide

#endif
