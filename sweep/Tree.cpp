#include "Tree.h"

#include "KeySort.h"
#include "Morton.h"

#include <utility>

namespace gsl_sweep {

namespace {

/// A team takes ranges of at most so many leaves, and runs of at most so many nodes, side by side.
constexpr std::size_t kLeavesOfJob = 2048;
constexpr std::size_t kNodesOfJob = 2048;

template <class Scalar>
Array<Key> SortedLeaves(const Array<Box<Scalar>>& boxes, Team& team) {
  // The corners are halved before they are added, so that the middle of a large box is finite.
  const auto middle = [&boxes](std::size_t leaf, int axis) {
    return 0.5 * static_cast<double>(boxes[leaf].low[axis]) +
           0.5 * static_cast<double>(boxes[leaf].high[axis]);
  };
  const MortonCurve curve(boxes.size(), middle);
  KeySort<10, 3> sort(boxes.size(), team);
  return sort.Sorted([&](std::size_t leaf) {
    return curve.Number(middle(leaf, 0), middle(leaf, 1), middle(leaf, 2));
  });
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
///
/// A team builds small ranges side by side, each in an array of its own, and copies them into the
/// order in which one thread would have built them.
template <class Scalar>
class Builder {
public:
  Builder(const Corners& corners, const Leaves& leaves, const Array<Box<Scalar>>& boxes, Team& team,
          Tree<Scalar>& tree)
      : m_corners(corners), m_leaves(leaves), m_boxes(boxes), m_keys(SortedLeaves(boxes, team)),
        m_team(team), m_tree(tree) {}

  void Run() {
    const Range all{0, m_keys.size()};
    const Built built =
        m_team.IsAlone() || all.Count() <= kLeavesOfJob ? BuildAlone(all) : BuildOnTeam(all);
    m_tree.root = built.ref;
    m_tree.box = built.box;
    m_tree.least = built.least;
    m_tree.orderedCount = m_tree.nodes.size();
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
  struct Nodes {
    Array<TreeNode<Scalar>> array;
    std::size_t count = 0;
  };
  struct Part {
    Range range;
    Nodes nodes;
    std::size_t at =
        0; ///< of its first node in the tree; until it is built, the nodes above before
    Built built{};
  };

  Built BuildAlone(Range range) {
    // There are fewer nodes than leaves. Pages that are not touched cost nothing.
    Nodes nodes{Array<TreeNode<Scalar>>(range.Count())};
    const Built built = Build(range, nodes);
    nodes.array.Shorten(nodes.count);
    m_tree.nodes = std::move(nodes.array);
    return built;
  }
  Built BuildOnTeam(Range range);
  void Divide(Range range, std::size_t& above);
  void BuildPart(Part& part);
  void Place(Part& part);
  Built Join(Range range, std::size_t& next, Nodes& nodes);

  Built Build(Range range, Nodes& nodes);
  template <class BuildBelow>
  Built BuildNode(Range range, Nodes& nodes, const BuildBelow& below) const;
  std::size_t Split(Range range) const;
  int Parts(Range range, Range (&parts)[4]) const;

  const Corners& m_corners;
  const Leaves& m_leaves;
  const Array<Box<Scalar>>& m_boxes;
  const Array<Key> m_keys;
  Team& m_team;
  Tree<Scalar>& m_tree;
  std::vector<Part> m_parts; ///< the small ranges of a team, in order
};

/// Returns the first leaf of the second part, or the middle where the numbers are equal.
template <class Scalar>
std::size_t Builder<Scalar>::Split(Range range) const {
  const std::uint32_t first = NumberOf(m_keys[range.begin]);
  const std::uint32_t last = NumberOf(m_keys[range.end - 1]);
  if (first == last) return range.begin + range.Count() / 2;
  std::uint32_t low = first ^ last; // filled with ones below its highest bit
  for (const int shift : {1, 2, 4, 8, 16})
    low |= low >> shift;
  const std::uint32_t wanted = last & ~(low >> 1);
  const Key* found =
      std::lower_bound(m_keys.begin() + range.begin, m_keys.begin() + range.end, wanted,
                       [](Key key, std::uint32_t number) { return NumberOf(key) < number; });
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
typename Builder<Scalar>::Built Builder<Scalar>::Build(Range range, Nodes& nodes) {
  if (range.Count() == 1) {
    const std::size_t leaf = PlaceOf(m_keys[range.begin]);
    if (range.begin + kFetchAhead < m_keys.size()) {
      const std::size_t next = PlaceOf(m_keys[range.begin + kFetchAhead]);
      __builtin_prefetch(&m_boxes[next]);
      __builtin_prefetch(&m_leaves.begin[next]);
    }
    return {TreeRef::Leaf(leaf), m_boxes[leaf], LeastNumber(m_corners, m_leaves, leaf)};
  }
  return BuildNode(range, nodes, [&](Range part) { return Build(part, nodes); });
}

/// Builds the node of several leaves, and with `below` what is below it.
template <class Scalar>
template <class BuildBelow>
typename Builder<Scalar>::Built Builder<Scalar>::BuildNode(Range range, Nodes& nodes,
                                                           const BuildBelow& below) const {
  Range parts[4];
  const int count = Parts(range, parts);
  const std::size_t node = nodes.count++;
  nodes.array[node] = EmptyNode<Scalar>();
  Built all{TreeRef::Node(node), Box<Scalar>::Empty(), TreeRef::kNone};
  for (int lane = 0; lane < count; ++lane) {
    const Built built = below(parts[lane]);
    TreeNode<Scalar>& filled = nodes.array[node];
    filled.boxes.Set(lane, built.box);
    filled.child[lane] = built.ref;
    filled.least[lane] = built.least;
    all.box.Include(built.box);
    all.least = std::min(all.least, built.least);
  }
  return all;
}

template <class Scalar>
typename Builder<Scalar>::Built Builder<Scalar>::BuildOnTeam(Range range) {
  std::size_t nodeCount = 0;
  Divide(range, nodeCount);
  m_team.ForEach(m_parts.size(), [&](std::size_t k) { BuildPart(m_parts[k]); });
  std::size_t below = 0;
  for (Part& part : m_parts) {
    part.at += below;
    below += part.nodes.count;
  }
  m_tree.nodes = Array<TreeNode<Scalar>>(nodeCount + below);
  Blocks(m_parts.size(), 1).ForEach(m_team, [&](std::size_t k) { Place(m_parts[k]); });
  Nodes nodes{std::move(m_tree.nodes)};
  std::size_t next = 0;
  const Built built = Join(range, next, nodes);
  m_tree.nodes = std::move(nodes.array);
  return built;
}

/// Collects the small ranges, and counts the nodes above them.
template <class Scalar>
void Builder<Scalar>::Divide(Range range, std::size_t& above) {
  if (range.Count() <= kLeavesOfJob) {
    m_parts.push_back({range, {}, above});
    return;
  }
  ++above;
  Range parts[4];
  const int count = Parts(range, parts);
  for (int lane = 0; lane < count; ++lane)
    Divide(parts[lane], above);
}

template <class Scalar>
void Builder<Scalar>::BuildPart(Part& part) {
  part.nodes.array = Array<TreeNode<Scalar>>(part.range.Count());
  part.built = Build(part.range, part.nodes);
}

/// Builds the nodes above the small ranges, which are in their places.
template <class Scalar>
typename Builder<Scalar>::Built Builder<Scalar>::Join(Range range, std::size_t& next,
                                                      Nodes& nodes) {
  if (range.Count() > kLeavesOfJob)
    return BuildNode(range, nodes, [&](Range part) { return Join(part, next, nodes); });
  const Part& part = m_parts[next++];
  nodes.count += part.nodes.count;
  Built built = part.built;
  if (!built.ref.IsLeaf()) built.ref = TreeRef::Node(part.at);
  return built;
}

/// Copies the nodes of a small range to their place, and gives their memory back.
template <class Scalar>
void Builder<Scalar>::Place(Part& part) {
  const Array<TreeNode<Scalar>> from = std::move(part.nodes.array);
  for (std::size_t k = 0; k < part.nodes.count; ++k) {
    TreeNode<Scalar>& node = m_tree.nodes[part.at + k];
    node = from[k];
    for (TreeRef& child : node.child) {
      if (!child.IsNone() && !child.IsLeaf()) child = TreeRef::Node(part.at + child.Index());
    }
  }
}

/// Collects the runs at and below a node, of which `end` is the end.
template <class Scalar>
void CollectRuns(const Tree<Scalar>& tree, std::size_t node, std::size_t end,
                 std::vector<NodeRun>& runs) {
  constexpr int kBelow = 1;
  if (end - node <= kNodesOfJob) {
    const bool joins = !runs.empty() && runs.back().stage == kBelow && runs.back().end == node &&
                       end - runs.back().begin <= kNodesOfJob;
    if (joins) {
      runs.back().end = end;
    } else {
      runs.push_back({node, end, kBelow});
    }
    return;
  }
  runs.push_back({node, node + 1, kLastStage});
  std::size_t children[5];
  int count = 0;
  for (const TreeRef child : tree.nodes[node].child) {
    if (!child.IsNone() && !child.IsLeaf() && child.Index() < tree.orderedCount)
      children[count++] = child.Index();
  }
  children[count] = end;
  for (int k = 0; k < count; ++k)
    CollectRuns(tree, children[k], children[k + 1], runs);
}

} // namespace

template <class Scalar>
Tree<Scalar> Tree<Scalar>::Over(const Corners& corners, const Leaves& leaves,
                                const Array<Box<Scalar>>& boxes, Team& team) {
  Tree tree;
  if (leaves.Count() > 0) Builder<Scalar>(corners, leaves, boxes, team, tree).Run();
  return tree;
}

template <class Scalar>
std::vector<NodeRun> Tree<Scalar>::RunsUpwards(const Team& team) const {
  if (team.IsAlone() || nodes.size() <= kNodesOfJob) return {{0, nodes.size(), kLastStage}};
  std::vector<NodeRun> runs;
  if (orderedCount > 0) CollectRuns(*this, 0, orderedCount, runs);
  for (std::size_t begin = orderedCount; begin < nodes.size(); begin += kNodesOfJob)
    runs.push_back({begin, std::min(begin + kNodesOfJob, nodes.size()), 0});
  std::reverse(runs.begin(), runs.end());
  return runs;
}

void EachUpwards(const std::vector<NodeRun>& runs, Team& team,
                 const std::function<void(std::size_t)>& work) {
  for (int stage = 0; stage <= kLastStage; ++stage) {
    std::vector<std::size_t> ofStage;
    for (std::size_t k = 0; k < runs.size(); ++k) {
      if (runs[k].stage == stage) ofStage.push_back(k);
    }
    const auto workOn = [&](std::size_t k) { work(ofStage[k]); };
    if (stage < kLastStage) {
      Blocks(ofStage.size(), 1).ForEach(team, workOn);
    } else {
      for (std::size_t k = 0; k < ofStage.size(); ++k)
        workOn(k);
    }
  }
}

template <class Scalar>
Tree<Scalar> Tree<Scalar>::Refitted(const Array<Box<Scalar>>& leafBoxes) const {
  Tree result;
  result.nodes = nodes.Copy();
  result.orderedCount = orderedCount;
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

Array<Box<double>> ExactBoxes(const Corners& corners, const Leaves& leaves, Team& team) {
  Array<Box<double>> boxes(leaves.Count());
  const Blocks blocks(leaves.Count(), kLeafBlock);
  blocks.ForEach(team, [&](std::size_t block) {
    for (std::size_t leaf = blocks.Begin(block); leaf < blocks.End(block); ++leaf) {
      Box<double> box = Box<double>::Empty();
      for (std::size_t place = leaves.begin[leaf]; place < leaves.begin[leaf + 1]; ++place) {
        for (int corner = 0; corner < 3; ++corner) {
          const Coord3 p = corners.At(place, corner);
          box.Include({{p.x, p.y, p.z}, {p.x, p.y, p.z}});
        }
      }
      boxes[leaf] = box;
    }
  });
  return boxes;
}

template struct Tree<float>;
template struct Tree<double>;

} // namespace gsl_sweep
