#ifndef GSL_SWEEP_TREE_H
#define GSL_SWEEP_TREE_H

#include "Box.h"
#include "Lanes.h"
#include "Leaves.h"

#include <cstdint>

namespace gsl_sweep {

/// The target of a lane of a node: a node, a leaf, or nothing.
class TreeRef {
public:
  static constexpr std::uint32_t kNone = 0xffffffffu;

  TreeRef() = default;
  static TreeRef Node(std::size_t node) { return TreeRef(static_cast<std::uint32_t>(node)); }
  static TreeRef Leaf(std::size_t leaf) {
    return TreeRef(static_cast<std::uint32_t>(leaf) | kLeafBit);
  }

  bool IsNone() const { return m_value == kNone; }
  bool IsLeaf() const { return (m_value & kLeafBit) != 0; }
  std::uint32_t Index() const { return m_value & ~kLeafBit; }

private:
  static constexpr std::uint32_t kLeafBit = 0x80000000u;

  explicit TreeRef(std::uint32_t value) : m_value(value) {}

  std::uint32_t m_value = kNone;
};

/// Four boxes side by side.
template <class Scalar>
struct Boxes {
  Four<Scalar> low[3], high[3];

  Box<Scalar> At(int lane) const {
    return {{low[0][lane], low[1][lane], low[2][lane]},
            {high[0][lane], high[1][lane], high[2][lane]}};
  }
  void Set(int lane, const Box<Scalar>& box) {
    for (int k = 0; k < 3; ++k) {
      low[k].Set(lane, box.low[k]);
      high[k].Set(lane, box.high[k]);
    }
  }
};

/// Four children. A lane without a child has an empty box.
template <class Scalar>
struct alignas(64) TreeNode {
  Boxes<Scalar> boxes;
  TreeRef child[4];
  std::uint32_t least[4]; ///< triangle number below each child
};

/// Nodes that follow each other, from `begin` to before `end`, for one thread at a time.
struct NodeRun {
  std::size_t begin, end;
  int stage; ///< the nodes below belong to runs of earlier stages or to the run itself
};

/// The stage that takes its runs one after the other.
constexpr int kLastStage = 2;

/// Calls work(k) for each of some runs, stage by stage. All runs of a tree are in such an order
/// that children come before their parents when each run is taken from its end.
void EachUpwards(const std::vector<NodeRun>& runs, Team& team,
                 const std::function<void(std::size_t)>& work);

/// A tree of boxes over the leaves of a body. Every child comes after its parent, and the nodes
/// below a node follow it without a gap, apart from the last ones, which have leaves alone.
template <class Scalar>
struct Tree {
  Array<TreeNode<Scalar>> nodes;
  std::size_t orderedCount = 0; ///< of the nodes before those last ones
  TreeRef root;                 ///< none for a body without triangles
  Box<Scalar> box = Box<Scalar>::Empty();
  std::uint32_t least = 0;

  /// Returns the box of each leaf, which MakeLeaves computes for float.
  static Tree Over(const Corners& corners, const Leaves& leaves, const Array<Box<Scalar>>& boxes,
                   Team& team = Team::Alone());

  /// Builds the same tree with other boxes of its leaves.
  Tree Refitted(const Array<Box<Scalar>>& leafBoxes) const;

  /// Returns runs that hold each node once, the last nodes first. A team of one thread gets one
  /// run.
  std::vector<NodeRun> RunsUpwards(const Team& team) const;

  std::size_t Bytes() const { return nodes.Bytes(); }
};

/// Returns the exact boxes of leaves.
Array<Box<double>> ExactBoxes(const Corners& corners, const Leaves& leaves,
                              Team& team = Team::Alone());

extern template struct Tree<float>;
extern template struct Tree<double>;

} // namespace gsl_sweep

#endif
