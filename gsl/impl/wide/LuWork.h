#ifndef GSL_WIDE_LU_WORK_H
#define GSL_WIDE_LU_WORK_H

#include <cstddef>
#include <cstdint>

/// What the forms of the LU elimination share.
namespace gsl_wide {

/// A row whose largest magnitude is below this is a zero row, and no pivot is smaller.
// dependent-column-gets-the-tiny-pivot: a singular matrix without a zero row is solved.
constexpr double kTinyPivot = 1e-16;

/// The system as the caller gave it, and what is found out about it.
struct LuSystem {
  double** matrix; ///< `size` row pointers; replaced by the factors
  std::int32_t size;
  std::int32_t* pivots;
  std::int32_t parity;
};

enum class LuResult { Decomposed, ZeroRow, NoMemory };

/// Columns of a leaf, and rows of a block.
constexpr std::ptrdiff_t kLeaf = 8;

/// Scratch of the blocked elimination. Sizes are padded to whole blocks; padding is zero, and its
/// scale is NaN so that no padding row becomes a pivot.
struct LuWork {
  std::ptrdiff_t size;
  std::ptrdiff_t padded; ///< rows and columns, a multiple of kLeaf
  std::ptrdiff_t panel;  ///< columns of a panel, a multiple of kLeaf
  std::ptrdiff_t strip;  ///< columns updated before the next ones are looked at
  std::ptrdiff_t whole;  ///< columns that `rows` reach, a multiple of kLeaf; the rest is in `tails`
  std::ptrdiff_t leafStride; ///< from one leaf to the next
  double** rows;             ///< in pivoted order
  double** tails;            ///< in pivoted order; used when whole < padded
  double* scale;
  double* leaves; ///< columns of the panel: leaf by leaf, block by block, column by column
  double* upper;  ///< rows of U right of the panel: tile by tile, row by row
  std::int32_t* pivots;
  std::int32_t parity;
};

} // namespace gsl_wide

#endif
