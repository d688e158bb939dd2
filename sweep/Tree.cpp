#include "Tree.h"

#include "Morton.h"

#include <utility>

namespace gsl_sweep {

namespace {

/// A leaf and its number along the curve.
using Key = std::uint64_t;

std::uint32_t CurveNumber(Key key) {
  return static_cast<std::uint32_t>(key >> 32);
}

std::size_t LeafOf(Key key) {
  return static_cast<std::size_t>(key & 0xffffffffu);
}

/// Sorts by the number along the curve, ten bits at a time.
class CurveSort {
public:
  explicit CurveSort(std::size_t count) : m_keys(count) {}

  void Add(std::uint32_t number, std::size_t leaf) {
    m_keys[m_count++] = static_cast<Key>(number) << 32 | leaf;
    for (int pass = 0; pass < kPasses; ++pass)
      ++m_begin[pass][(number >> (pass * kDigitBits)) % kDigits];
  }

  Array<Key> Sorted() {
    Array<Key> other(m_keys.size());
    for (int pass = 0; pass < kPasses; ++pass) {
      std::uint32_t sum = 0;
      for (std::uint32_t& begin : m_begin[pass])
        sum += std::exchange(begin, sum);
      for (const Key key : m_keys)
        other[m_begin[pass][(key >> (32 + pass * kDigitBits)) % kDigits]++] = key;
      m_keys.swap(other);
    }
    return std::move(m_keys);
  }

private:
  static constexpr int kDigitBits = 10;
  static constexpr int kPasses = 3;
  static constexpr std::uint32_t kDigits = 1u << kDigitBits;

  Array<Key> m_keys;
  std::size_t m_count = 0;
  std::uint32_t m_begin[kPasses][kDigits] = {};
};

template <class Scalar>
Array<Key> SortedLeaves(const Array<Box<Scalar>>& boxes) {
  // The corners are halved before they are added, so that the middle of a large box is finite.
  const auto middle = [&boxes](std::size_t leaf, int axis) {
    return 0.5 * static_cast<double>(boxes[leaf].low[axis]) +
           0.5 * static_cast<double>(boxes[leaf].high[axis]);
  };
  const MortonCurve curve(boxes.size(), middle);
  CurveSort sort(boxes.size());
  for (std::size_t leaf = 0; leaf < boxes.size(); ++leaf)
    sort.Add(curve.Number(middle(leaf, 0), middle(leaf, 1), middle(leaf, 2)), leaf);
  return sort.Sorted();
}

template <class Scalar>
TreeNode<Scalar> EmptyNode() {
  TreeNode<Scalar> node{};
  for (int lane = 0; lane < 4; ++lane)
    node.boxes.Set(lane, Box<Scalar>::Empty());
  for (std::uint32_t& least : node.least)
    least = TreeRef::kNone;
  return node;
}

/// Splits ranges of the sorted leaves at the highest bit in which their ends differ, two levels at
/// a time.
template <class Scalar>
class Builder {
public:
  Builder(const Corners& corners, const Leaves& leaves, const Array<Box<Scalar>>& boxes,
          Tree<Scalar>& tree)
      : m_corners(corners), m_leaves(leaves), m_boxes(boxes), m_keys(SortedLeaves(boxes)),
        m_tree(tree) {}

  void Run() {
    // There are fewer nodes than leaves. Pages that are not touched cost nothing.
    m_tree.nodes = Array<TreeNode<Scalar>>(m_keys.size());
    const Built built = Build({0, m_keys.size()});
    m_tree.root = built.ref;
    m_tree.box = built.box;
    m_tree.least = built.least;
    m_tree.nodes.Shorten(m_nodeCount);
  }

private:
  struct Range {
    std::size_t begin, end;
    std::size_t Count() const { return end - begin; }
  };
  struct Built {
    TreeRef ref;
    Box<Scalar> box;
    std::uint32_t least;
  };

  Built Build(Range range);
  std::size_t Split(Range range) const;
  int Parts(Range range, Range (&parts)[4]) const;

  const Corners& m_corners;
  const Leaves& m_leaves;
  const Array<Box<Scalar>>& m_boxes;
  const Array<Key> m_keys;
  Tree<Scalar>& m_tree;
  std::size_t m_nodeCount = 0;
};

/// Returns the first leaf of the second part, or the middle where the numbers are equal.
template <class Scalar>
std::size_t Builder<Scalar>::Split(Range range) const {
  const std::uint32_t first = CurveNumber(m_keys[range.begin]);
  const std::uint32_t last = CurveNumber(m_keys[range.end - 1]);
  if (first == last) return range.begin + range.Count() / 2;
  std::uint32_t low = first ^ last; // filled with ones below its highest bit
  for (const int shift : {1, 2, 4, 8, 16})
    low |= low >> shift;
  const std::uint32_t wanted = last & ~(low >> 1);
  const Key* found =
      std::lower_bound(m_keys.begin() + range.begin, m_keys.begin() + range.end, wanted,
                       [](Key key, std::uint32_t number) { return CurveNumber(key) < number; });
  return static_cast<std::size_t>(found - m_keys.begin());
}

template <class Scalar>
int Builder<Scalar>::Parts(Range range, Range (&parts)[4]) const {
  int count = 0;
  if (range.Count() <= 4) {
    for (std::size_t k = range.begin; k < range.end; ++k)
      parts[count++] = {k, k + 1};
    return count;
  }
  const std::size_t middle = Split(range);
  for (const Range half : {Range{range.begin, middle}, Range{middle, range.end}}) {
    if (half.Count() == 1) {
      parts[count++] = half;
      continue;
    }
    const std::size_t quarter = Split(half);
    parts[count++] = {half.begin, quarter};
    parts[count++] = {quarter, half.end};
  }
  return count;
}

template <class Scalar>
typename Builder<Scalar>::Built Builder<Scalar>::Build(Range range) {
  if (range.Count() == 1) {
    const std::size_t leaf = LeafOf(m_keys[range.begin]);
    if (range.begin + kFetchAhead < m_keys.size()) {
      const std::size_t next = LeafOf(m_keys[range.begin + kFetchAhead]);
      __builtin_prefetch(&m_boxes[next]);
      __builtin_prefetch(&m_leaves.begin[next]);
    }
    return {TreeRef::Leaf(leaf), m_boxes[leaf], LeastNumber(m_corners, m_leaves, leaf)};
  }
  Range parts[4];
  const int count = Parts(range, parts);
  const std::size_t node = m_nodeCount++;
  m_tree.nodes[node] = EmptyNode<Scalar>();
  Built all{TreeRef::Node(node), Box<Scalar>::Empty(), TreeRef::kNone};
  for (int lane = 0; lane < count; ++lane) {
    const Built built = Build(parts[lane]);
    TreeNode<Scalar>& filled = m_tree.nodes[node];
    filled.boxes.Set(lane, built.box);
    filled.child[lane] = built.ref;
    filled.least[lane] = built.least;
    all.box.Include(built.box);
    all.least = std::min(all.least, built.least);
  }
  return all;
}

} // namespace

template <class Scalar>
Tree<Scalar> Tree<Scalar>::Over(const Corners& corners, const Leaves& leaves,
                                const Array<Box<Scalar>>& boxes) {
  Tree tree;
  if (leaves.Count() > 0) Builder<Scalar>(corners, leaves, boxes, tree).Run();
  return tree;
}

template <class Scalar>
Tree<Scalar> Tree<Scalar>::Refitted(const Array<Box<Scalar>>& leafBoxes) const {
  Tree result;
  result.nodes = nodes.Copy();
  result.root = root;
  result.box = box;
  result.least = least;
  if (root.IsLeaf() && !root.IsNone()) result.box = leafBoxes[root.Index()];
  // Children come after their parents.
  Array<Box<Scalar>> boxOf(nodes.size());
  for (std::size_t k = nodes.size(); k-- > 0;) {
    TreeNode<Scalar>& node = result.nodes[k];
    boxOf[k] = Box<Scalar>::Empty();
    for (int lane = 0; lane < 4; ++lane) {
      const TreeRef child = node.child[lane];
      if (child.IsNone()) continue;
      const Box<Scalar>& bounds = child.IsLeaf() ? leafBoxes[child.Index()] : boxOf[child.Index()];
      node.boxes.Set(lane, bounds);
      boxOf[k].Include(bounds);
    }
  }
  if (nodes.size() > 0) result.box = boxOf[0];
  return result;
}

Array<Box<double>> ExactBoxes(const Corners& corners, const Leaves& leaves) {
  Array<Box<double>> boxes(leaves.Count());
  for (std::size_t leaf = 0; leaf < leaves.Count(); ++leaf) {
    Box<double> box = Box<double>::Empty();
    for (std::size_t place = leaves.begin[leaf]; place < leaves.begin[leaf + 1]; ++place) {
      for (int corner = 0; corner < 3; ++corner) {
        const Coord3 p = corners.At(place, corner);
        box.Include({{p.x, p.y, p.z}, {p.x, p.y, p.z}});
      }
    }
    boxes[leaf] = box;
  }
  return boxes;
}

template struct Tree<float>;
template struct Tree<double>;

} // namespace gsl_sweep
