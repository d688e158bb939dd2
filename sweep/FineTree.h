#ifndef GSL_SWEEP_FINE_TREE_H
#define GSL_SWEEP_FINE_TREE_H

#include "Slabs.h"

namespace gsl_sweep {

/// The most triangles that a leaf of a fine tree holds, unless they are copies of one triangle.
constexpr std::uint32_t kFineLeafSize = 2;

/// The tree of a body, continued below its leaves, with slabs. A slab of two neighbouring triangles
/// is hardly thicker than they are, while a slab of eight is as thick as the surface is curved. It
/// takes time to make and saves time from the second question on.
struct FineTree {
  Leaves leaves;
  Tree<float> tree; ///< its nodes begin with those of the body's first tree
  std::unique_ptr<const Slabs> slabs;
  Array<TreeRef> ofLeaf; ///< replaces each leaf of the body's first tree: a leaf or a node

  /// Returns null when `goesOn`, which is called now and then, returns false.
  static std::unique_ptr<const FineTree> Of(const Corners& corners, const Leaves& leaves,
                                            const Tree<float>& tree,
                                            const std::function<bool()>& goesOn = {},
                                            Team& team = Team::Alone());

  std::size_t Bytes() const {
    return leaves.begin.Bytes() + tree.Bytes() + slabs->Bytes() + ofLeaf.Bytes();
  }
};

} // namespace gsl_sweep

#endif
