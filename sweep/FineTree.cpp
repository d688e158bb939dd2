#include "FineTree.h"

namespace gsl_sweep {

namespace {

bool AreEqual(const Coord3& a, const Coord3& b) {
  return a.x == b.x && a.y == b.y && a.z == b.z;
}

/// Cuts every leaf into parts and puts a node over the parts of each leaf that has several.
class Refiner {
public:
  Refiner(const Corners& corners, const Leaves& leaves, const Tree<float>& tree)
      : m_corners(corners), m_leaves(leaves), m_tree(tree) {}

  FineTree Make() {
    Cut();
    LeafBoxes boxes;
    MeasureLeaves(m_corners, m_fine.leaves, boxes);
    CopyNodes();
    std::size_t part = 0;
    for (std::size_t leaf = 0; leaf < m_leaves.Count(); ++leaf) {
      const std::size_t count = PartCount(leaf);
      if (count > 1) m_fine.tree.nodes[m_fine.ofLeaf[leaf].Index()] = NodeOver(part, count, boxes);
      part += count;
    }
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

  void Cut() {
    std::size_t partCount = 0;
    std::size_t nodeCount = m_tree.nodes.size();
    m_fine.ofLeaf = Array<TreeRef>(m_leaves.Count());
    for (std::size_t leaf = 0; leaf < m_leaves.Count(); ++leaf) {
      const std::size_t count = PartCount(leaf);
      m_fine.ofLeaf[leaf] = count > 1 ? TreeRef::Node(nodeCount++) : TreeRef::Leaf(partCount);
      partCount += count;
    }
    m_fine.tree.nodes = Array<TreeNode<float>>(nodeCount);
    m_fine.leaves.begin = Array<std::uint32_t>(partCount + 1);
    std::size_t part = 0;
    for (std::size_t leaf = 0; leaf < m_leaves.Count(); ++leaf) {
      const std::size_t end = part + PartCount(leaf);
      for (std::uint32_t begin = m_leaves.begin[leaf]; part < end; begin += kFineLeafSize)
        m_fine.leaves.begin[part++] = begin;
    }
    m_fine.leaves.begin[part] = m_leaves.begin[m_leaves.Count()];
  }

  TreeRef Replaced(TreeRef ref) const {
    return ref.IsNone() || !ref.IsLeaf() ? ref : m_fine.ofLeaf[ref.Index()];
  }

  void CopyNodes() {
    m_fine.tree.root = Replaced(m_tree.root);
    m_fine.tree.box = m_tree.box;
    m_fine.tree.least = m_tree.least;
    for (std::size_t k = 0; k < m_tree.nodes.size(); ++k) {
      TreeNode<float>& node = m_fine.tree.nodes[k];
      node = m_tree.nodes[k];
      for (TreeRef& child : node.child)
        child = Replaced(child);
    }
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
  FineTree m_fine;
};

} // namespace

std::unique_ptr<const FineTree> FineTree::Of(const Corners& corners, const Leaves& leaves,
                                             const Tree<float>& tree,
                                             const std::function<bool()>& goesOn) {
  if (goesOn && !goesOn()) return nullptr;
  auto fine = std::make_unique<FineTree>(Refiner(corners, leaves, tree).Make());
  fine->slabs = Slabs::Of(corners, fine->leaves, fine->tree, goesOn);
  if (!fine->slabs) return nullptr;
  return fine;
}

} // namespace gsl_sweep
