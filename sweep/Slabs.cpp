#include "Slabs.h"

#include <cmath>

namespace gsl_sweep {

namespace {

/// Returns (y, z, x) of a vector.
Float4 Turned(const Float4& a) {
  const float all[4] = {a[1], a[2], a[0], 0.0f};
#if defined(__SSE2__)
  (void)all;
  return {{_mm_shuffle_ps(a.part[0], a.part[0], _MM_SHUFFLE(3, 0, 2, 1))}};
#else
  return Float4::At(all);
#endif
}

/// Turns rows into columns.
void Transpose(Float4 (&rows)[4]) {
#if defined(__SSE2__)
  __m128 a = rows[0].part[0];
  __m128 b = rows[1].part[0];
  __m128 c = rows[2].part[0];
  __m128 d = rows[3].part[0];
  _MM_TRANSPOSE4_PS(a, b, c, d);
  rows[0].part[0] = a;
  rows[1].part[0] = b;
  rows[2].part[0] = c;
  rows[3].part[0] = d;
#else
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < i; ++j) {
      const float kept = rows[i][j];
      rows[i].Set(j, rows[j][i]);
      rows[j].Set(i, kept);
    }
  }
#endif
}

/// Sets the slab's normal: the vector at length one, or zero where the length cannot be
/// computed.
void SetNormal(float x, float y, float z, Slab& slab) {
  const float largest = std::max(std::fabs(x), std::max(std::fabs(y), std::fabs(z)));
  slab.normal[0] = slab.normal[1] = slab.normal[2] = 0.0f;
  if (std::isnan(x) || std::isnan(y) || std::isnan(z)) return;
  // Beyond these limits, products of edges may have left the range of float.
  if (!(largest > 1e-30f && largest < 1e30f)) return;
  const float scaled[3] = {x / largest, y / largest, z / largest};
  const float length =
      std::sqrt(scaled[0] * scaled[0] + scaled[1] * scaled[1] + scaled[2] * scaled[2]);
  for (int k = 0; k < 3; ++k)
    slab.normal[k] = scaled[k] / length;
}

float RoundedReach(const Box<float>& box) {
  return RoundedUp(box.Reach());
}

float LeastOf(const Float4& a) {
  return std::min(std::min(a[0], a[1]), std::min(a[2], a[3]));
}
float MostOf(const Float4& a) {
  return std::max(std::max(a[0], a[1]), std::max(a[2], a[3]));
}

/// Makes the slab of a leaf, across the sum of its triangles' normals, each weighed by its area.
template <class Reader>
Slab SlabOfLeaf(const Reader& reader, const Leaves& leaves, std::size_t leaf, float reach) {
  Float4 corner[3 * kLeafSize + 4];
  int count = 0;
  Float4 sum = Float4::Of(0.0f);
  for (std::size_t place = leaves.begin[leaf]; place < leaves.begin[leaf + 1]; ++place) {
    const Float4 a = reader.Single(place, 0);
    const Float4 b = reader.Single(place, 1);
    const Float4 c = reader.Single(place, 2);
    corner[count++] = a;
    corner[count++] = b;
    corner[count++] = c;
    const Float4 u = b - a;
    const Float4 v = c - a;
    sum = sum + Turned(u * Turned(v) - Turned(u) * v);
  }
  Slab slab;
  SetNormal(sum[0], sum[1], sum[2], slab);
  for (; count % 4 != 0; ++count)
    corner[count] = corner[count - 1];
  Float4 from = Float4::Of(Box<float>::kFar);
  Float4 to = -from;
  for (int k = 0; k < count; k += 4) {
    Float4 four[4] = {corner[k], corner[k + 1], corner[k + 2], corner[k + 3]};
    Transpose(four);
    const Float4 extent = Float4::Of(slab.normal[0]) * four[0] +
                          Float4::Of(slab.normal[1]) * four[1] +
                          Float4::Of(slab.normal[2]) * four[2];
    from = Least(extent, from);
    to = Most(extent, to);
  }
  // A corner rounded to float (1 u of its reach), products (1 u), two sums (4 u), this difference
  // (2 u), with u = 2^-24 and every partial sum at most twice the reach: 8 u.
  const float error = reach * 0x1p-20f;
  slab.from = LeastOf(from) - error;
  slab.to = MostOf(to) + error;
  return slab;
}

/// Makes a slab that holds the children of a node, each within its box and its own slab. It is
/// across the sum of their normals, weighed by the squares of their sizes.
Slab SlabOfNode(const TreeNode<float>& node, const SlabNode& slabs) {
  const Boxes<float>& boxes = node.boxes;
  float sum[3] = {0.0f, 0.0f, 0.0f};
  for (int lane = 0; lane < 4; ++lane) {
    if (node.child[lane].IsNone()) continue;
    const float size = boxes.At(lane).Size();
    for (int k = 0; k < 3; ++k)
      sum[k] += size * size * slabs.normal[k][lane];
  }
  Slab slab;
  SetNormal(sum[0], sum[1], sum[2], slab);
  // n . p = alpha (m . p) + (n - alpha m) . p for the normal m of the child, for any alpha.
  const Float4 n[3] = {Float4::Of(slab.normal[0]), Float4::Of(slab.normal[1]),
                       Float4::Of(slab.normal[2])};
  const Float4 alpha = slabs.normal[0] * n[0] + slabs.normal[1] * n[1] + slabs.normal[2] * n[2];
  const Float4 error = slabs.reach * Float4::Of(kSlabError);
  Float4 from = Least(alpha * slabs.from, alpha * slabs.to) - error;
  Float4 to = Most(alpha * slabs.from, alpha * slabs.to) + error;
  for (int k = 0; k < 3; ++k) {
    const Float4 rest = n[k] - alpha * slabs.normal[k];
    from = from + Least(rest * boxes.low[k], rest * boxes.high[k]);
    to = to + Most(rest * boxes.low[k], rest * boxes.high[k]);
  }
  slab.from = Box<float>::kFar;
  slab.to = -Box<float>::kFar;
  for (int lane = 0; lane < 4; ++lane) {
    if (node.child[lane].IsNone()) continue;
    slab.from = std::min(slab.from, from[lane]);
    slab.to = std::max(slab.to, to[lane]);
  }
  return slab;
}

/// Fills the slabs of a tree, from its last node to its first: children come after their parents.
class SlabMaker {
public:
  SlabMaker(const Leaves& leaves, const Tree<float>& tree, Slabs& slabs)
      : m_leaves(leaves), m_tree(tree), m_slabs(slabs), m_slabOf(tree.nodes.size()) {
    slabs.nodes = Array<SlabNode>(tree.nodes.size());
  }

  template <class Reader>
  void Fill(const Reader& reader, std::size_t k) {
    const TreeNode<float>& node = m_tree.nodes[k];
    SlabNode filled{};
    for (int lane = 0; lane < 4; ++lane) {
      const TreeRef child = node.child[lane];
      if (child.IsNone()) continue;
      const float reach = RoundedReach(node.boxes.At(lane));
      const Slab slab = child.IsLeaf() ? SlabOfLeaf(reader, m_leaves, child.Index(), reach)
                                       : m_slabOf[child.Index()];
      for (int axis = 0; axis < 3; ++axis)
        filled.normal[axis].Set(lane, slab.normal[axis]);
      filled.from.Set(lane, slab.from);
      filled.to.Set(lane, slab.to);
      filled.reach.Set(lane, reach);
    }
    m_slabs.nodes[k] = filled;
    m_slabOf[k] = SlabOfNode(node, filled);
    if (k == 0) m_slabs.root = m_slabOf[0];
  }

private:
  const Leaves& m_leaves;
  const Tree<float>& m_tree;
  Slabs& m_slabs;
  Array<Slab> m_slabOf;
};

} // namespace

std::unique_ptr<const Slabs> Slabs::Of(const Corners& corners, const Leaves& leaves,
                                       const Tree<float>& tree,
                                       const std::function<bool()>& goesOn) {
  constexpr std::size_t kAskEvery = 1024;
  auto slabs = std::make_unique<Slabs>();
  bool isWhole = true;
  corners.Read([&](const auto& reader) {
    if (tree.root.IsLeaf() && !tree.root.IsNone()) {
      slabs->root = SlabOfLeaf(reader, leaves, 0, RoundedReach(tree.box));
      return;
    }
    SlabMaker maker(leaves, tree, *slabs);
    for (std::size_t k = tree.nodes.size(); isWhole && k-- > 0;) {
      maker.Fill(reader, k);
      if (goesOn && k % kAskEvery == kAskEvery - 1) isWhole = goesOn();
    }
  });
  if (!isWhole) return nullptr;
  return slabs;
}

} // namespace gsl_sweep
