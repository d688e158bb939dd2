#ifndef GSL_WIDE_LU_WORK_H
#define GSL_WIDE_LU_WORK_H

#include "wide/Broadcast.h"

#include <cstddef>
#include <cstdint>

/// The parts that the forms of the LU elimination share.
namespace gsl_wide {

/// A row whose largest magnitude is below this number is a zero row. Every pivot has at least this
/// size.
// dependent-column-gets-the-tiny-pivot: a singular matrix without a zero row is solved.
constexpr double kTinyPivot = 1e-16;

/// The system of the caller, and the pivots and the parity of its factors.
struct LuSystem {
  double** matrix; ///< `size` row pointers; replaced by the factors
  std::int32_t size;
  std::int32_t* pivots;
  std::int32_t parity;
};

enum class LuResult { Decomposed, ZeroRow, NoMemory };

/// The largest size that is not cut into blocks. Up to it, blocks cost more than they save.
constexpr std::int32_t kLargestSmall = 16;

/// The columns of a slice, and the rows of a block.
constexpr std::ptrdiff_t kSlice = 8;

/// The scratch memory of the blocked elimination. Sizes are padded to whole blocks with zeros. The
/// scale of a padding row is NaN, so that no padding row becomes a pivot.
struct LuWork {
  std::ptrdiff_t size;
  std::ptrdiff_t padded; ///< rows and columns, a multiple of kSlice
  std::ptrdiff_t panel;  ///< columns of a panel, a multiple of kSlice
  std::ptrdiff_t strip;  ///< columns that are updated together
  std::ptrdiff_t whole; ///< columns that `rows` reach, a multiple of kSlice; the rest is in `tails`
  std::ptrdiff_t sliceStride; ///< from one slice to the next
  double** rows;              ///< in pivoted order
  double** tails;             ///< in pivoted order; used when whole < padded
  double* scale;
  double* slices; ///< columns of the panel: slice by slice, block by block, column by column
  double* upper;  ///< rows of U right of the panel: tile by tile, row by row
  std::int32_t* pivots;
  std::int32_t parity;
  Broadcast broadcast;
};

} // namespace gsl_wide

#endif
