#ifndef GSL_SWEEP_LEAVES_H
#define GSL_SWEEP_LEAVES_H

#include "Box.h"
#include "Corners.h"

#include <cstdint>

namespace gsl_sweep {

/// The most triangles that a leaf holds.
constexpr int kLeafSize = 8;

/// Runs of consecutive triangles that lie close together: what the tree is built over.
struct Leaves {
  Array<std::uint32_t> begin; ///< place of the first triangle of each, and the count after the last

  std::size_t Count() const { return begin.size() - 1; }
};

/// What is known of leaves while the tree is built.
struct LeafBoxes {
  Array<Box<float>> boxes; ///< outward, of numbers within the comfortable range
  Box<double> bounds;      ///< exactly, of all
};

/// Cuts the triangles into leaves; triangles whose order scatters them are sorted first.
Leaves MakeLeaves(Corners& corners, LeafBoxes& boxes);

/// The boxes of given leaves.
void MeasureLeaves(const Corners& corners, const Leaves& leaves, LeafBoxes& boxes);

/// The least triangle number of a leaf.
std::uint32_t LeastNumber(const Corners& corners, const Leaves& leaves, std::size_t leaf);

} // namespace gsl_sweep

#endif
