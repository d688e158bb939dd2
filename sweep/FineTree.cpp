#include "FineTree.h"

#include <utility>

namespace gsl_sweep {

namespace {

bool AreEqual(const Coord3& a, const Coord3& b) {
  return a.x == b.x && a.y == b.y && a.z == b.z;
}

/// Cuts every leaf into parts and puts a node over the parts of each leaf that has several.
class Refiner {
public:
  Refiner(const Corners& corners, const Leaves& leaves, const Tree<float>& tree, Team& team)
      : m_corners(corners), m_leaves(leaves), m_tree(tree), m_team(team),
        m_blocks(leaves.Count(), kLeafBlock), m_begin(m_blocks.Count()) {}

  FineTree Make() {
    Cut();
    LeafBoxes boxes;
    MeasureLeaves(m_corners, m_fine.leaves, boxes, m_team);
    CopyNodes();
    m_blocks.ForEach(m_team, [&](std::size_t block) { AddNodes(block, boxes); });
    return std::move(m_fine);
  }

private:
  static_assert(kLeafSize <= 4 * kFineLeafSize, "the parts of a leaf fit into a node");

  /// Copies of one triangle stay together: smaller leaves would have the same boxes and slabs.
  std::size_t PartCount(std::size_t leaf) const {
    const std::size_t begin = m_leaves.begin[leaf];
    const std::size_t end = m_leaves.begin[leaf + 1];
    std::size_t copy = begin + 1;
    while (copy < end && IsCopy(begin, copy))
      ++copy;
    return copy == end ? 1 : (end - begin + kFineLeafSize - 1) / kFineLeafSize;
  }

  bool IsCopy(std::size_t first, std::size_t second) const {
    for (int corner = 0; corner < 3; ++corner) {
      if (!AreEqual(m_corners.At(first, corner), m_corners.At(second, corner))) return false;
    }
    return true;
  }

  /// Where the parts and the new nodes of a block of leaves begin.
  struct Begin {
    std::size_t part = 0, node = 0;
  };

  void Cut() {
    m_blocks.ForEach(m_team, [&](std::size_t block) {
      Begin counts;
      for (std::size_t leaf = m_blocks.Begin(block); leaf < m_blocks.End(block); ++leaf) {
        const std::size_t count = PartCount(leaf);
        counts.part += count;
        counts.node += count > 1 ? 1 : 0;
      }
      m_begin[block] = counts;
    });
    Begin at{0, m_tree.nodes.size()};
    for (Begin& begin : m_begin) {
      const Begin counts = std::exchange(begin, at);
      at.part += counts.part;
      at.node += counts.node;
    }
    m_fine.ofLeaf = Array<TreeRef>(m_leaves.Count());
    m_fine.tree.nodes = Array<TreeNode<float>>(at.node);
    m_fine.leaves.begin = Array<std::uint32_t>(at.part + 1);
    m_fine.leaves.begin[at.part] = m_leaves.begin[m_leaves.Count()];
    m_blocks.ForEach(m_team, [&](std::size_t block) { CutBlock(block); });
  }

  void CutBlock(std::size_t block) {
    Begin at = m_begin[block];
    for (std::size_t leaf = m_blocks.Begin(block); leaf < m_blocks.End(block); ++leaf) {
      const std::size_t count = PartCount(leaf);
      m_fine.ofLeaf[leaf] = count > 1 ? TreeRef::Node(at.node++) : TreeRef::Leaf(at.part);
      std::uint32_t begin = m_leaves.begin[leaf];
      for (const std::size_t end = at.part + count; at.part < end; begin += kFineLeafSize)
        m_fine.leaves.begin[at.part++] = begin;
    }
  }

  /// Fills the nodes over the parts of leaves.
  void AddNodes(std::size_t block, const LeafBoxes& boxes) {
    std::size_t part = m_begin[block].part;
    const std::size_t end = m_blocks.End(block);
    for (std::size_t leaf = m_blocks.Begin(block); leaf < end; ++leaf) {
      const std::size_t first = part;
      const std::uint32_t next = m_leaves.begin[leaf + 1];
      while (m_fine.leaves.begin[part] < next)
        ++part;
      const TreeRef ref = m_fine.ofLeaf[leaf];
      if (!ref.IsLeaf()) m_fine.tree.nodes[ref.Index()] = NodeOver(first, part - first, boxes);
    }
  }

  TreeRef Replaced(TreeRef ref) const {
    return ref.IsNone() || !ref.IsLeaf() ? ref : m_fine.ofLeaf[ref.Index()];
  }

  void CopyNodes() {
    m_fine.tree.root = Replaced(m_tree.root);
    m_fine.tree.box = m_tree.box;
    m_fine.tree.least = m_tree.least;
    m_fine.tree.orderedCount = m_tree.nodes.size();
    const Blocks blocks(m_tree.nodes.size(), kLeafBlock);
    blocks.ForEach(m_team, [&](std::size_t block) {
      for (std::size_t k = blocks.Begin(block); k < blocks.End(block); ++k) {
        TreeNode<float>& node = m_fine.tree.nodes[k];
        node = m_tree.nodes[k];
        for (TreeRef& child : node.child)
          child = Replaced(child);
      }
    });
  }

  TreeNode<float> NodeOver(std::size_t part, std::size_t count, const LeafBoxes& boxes) const {
    TreeNode<float> node{};
    for (int lane = 0; lane < 4; ++lane) {
      const bool isUsed = static_cast<std::size_t>(lane) < count;
      const std::size_t leaf = part + static_cast<std::size_t>(lane);
      node.boxes.Set(lane, isUsed ? boxes.boxes[leaf] : Box<float>::Empty());
      node.child[lane] = isUsed ? TreeRef::Leaf(leaf) : TreeRef();
      node.least[lane] = isUsed ? LeastNumber(m_corners, m_fine.leaves, leaf) : TreeRef::kNone;
    }
    return node;
  }

  const Corners& m_corners;
  const Leaves& m_leaves;
  const Tree<float>& m_tree;
  Team& m_team;
  const Blocks m_blocks;      ///< of leaves
  std::vector<Begin> m_begin; ///< of each block
  FineTree m_fine;
};

} // namespace

std::unique_ptr<const FineTree> FineTree::Of(const Corners& corners, const Leaves& leaves,
                                             const Tree<float>& tree,
                                             const std::function<bool()>& goesOn, Team& team) {
  if (goesOn && !goesOn()) return nullptr;
  auto fine = std::make_unique<FineTree>(Refiner(corners, leaves, tree, team).Make());
  fine->slabs = Slabs::Of(corners, fine->leaves, fine->tree, goesOn, team);
  if (!fine->slabs) return nullptr;
  return fine;
}

} // namespace gsl_sweep
