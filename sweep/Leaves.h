#ifndef GSL_SWEEP_LEAVES_H
#define GSL_SWEEP_LEAVES_H

#include "Box.h"
#include "Corners.h"

#include <cstdint>

namespace gsl_sweep {

/// The most triangles that a leaf holds.
constexpr int kLeafSize = 8;

/// The number of leaves that a thread works on at a time.
constexpr std::size_t kLeafBlock = std::size_t{1} << 12;

/// Runs of consecutive triangles that lie close together. The tree is built over them.
struct Leaves {
  Array<std::uint32_t>
      begin; ///< place of the first triangle of each run, and the count after the last

  std::size_t Count() const { return begin.size() - 1; }
};

/// The facts about leaves that building the tree needs.
struct LeafBoxes {
  Array<Box<float>> boxes; ///< outward, of numbers within the comfortable range
  Box<double> bounds;      ///< exactly, of all
};

/// Cuts the triangles into leaves. Triangles whose order scatters them are sorted first. The result
/// is the same for any team, as that of all that takes a team.
Leaves MakeLeaves(Corners& corners, LeafBoxes& boxes, Team& team = Team::Alone());

/// Returns the boxes of given leaves.
void MeasureLeaves(const Corners& corners, const Leaves& leaves, LeafBoxes& boxes,
                   Team& team = Team::Alone());

/// Returns the least triangle number of a leaf.
std::uint32_t LeastNumber(const Corners& corners, const Leaves& leaves, std::size_t leaf);

} // namespace gsl_sweep

#endif
