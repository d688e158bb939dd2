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

/// The slab of a leaf or of a node, and its side slab, whose normal is zero where it has none.
struct TwoSlabs {
  Slab slab, side;
};

/// A side slab is made where it is less than this part as wide as the box along the same normal.
constexpr float kSlim = 0.5f;

/// Returns how far the box reaches along the normal of a slab.
float WidthAlong(const Slab& slab, const Box<float>& box) {
  float width = 0.0f;
  for (int k = 0; k < 3; ++k)
    width += std::fabs(slab.normal[k]) * (box.high[k] - box.low[k]);
  return width;
}

bool IsSlim(const Slab& side, const Box<float>& box) {
  return side.to - side.from < kSlim * WidthAlong(side, box);
}

/// The corners of the triangles of a leaf, rounded to float, up to a multiple of four.
class LeafCorners {
public:
  template <class Reader>
  LeafCorners(const Reader& reader, const Leaves& leaves, std::size_t leaf) {
    m_area = Float4::Of(0.0f);
    for (std::size_t place = leaves.begin[leaf]; place < leaves.begin[leaf + 1]; ++place) {
      const Float4 a = reader.Single(place, 0);
      const Float4 b = reader.Single(place, 1);
      const Float4 c = reader.Single(place, 2);
      m_corner[m_count++] = a;
      m_corner[m_count++] = b;
      m_corner[m_count++] = c;
      const Float4 u = b - a;
      const Float4 v = c - a;
      m_area = m_area + Turned(u * Turned(v) - Turned(u) * v);
    }
    for (; m_count % 4 != 0; ++m_count)
      m_corner[m_count] = m_corner[m_count - 1];
  }

  /// Returns the sum of the triangles' normals, each twice as long as its area.
  const Float4& Area() const { return m_area; }

  /// Writes the extent along the normal of a slab. `reach` is the reach of the leaf's box.
  void Measure(Slab& slab, float reach) const {
    Float4 from = Float4::Of(Box<float>::kFar);
    Float4 to = -from;
    for (int k = 0; k < m_count; k += 4) {
      Float4 four[4] = {m_corner[k], m_corner[k + 1], m_corner[k + 2], m_corner[k + 3]};
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
  }

  /// Sums the squares and the products of the corners' distances from their middle.
  void Spread(Float4& squares, Float4& products) const {
    Float4 middle = Float4::Of(0.0f);
    for (int k = 0; k < m_count; ++k)
      middle = middle + m_corner[k];
    middle = middle * Float4::Of(1.0f / static_cast<float>(m_count));
    squares = products = Float4::Of(0.0f);
    for (int k = 0; k < m_count; ++k) {
      const Float4 way = m_corner[k] - middle;
      squares = squares + way * way;
      products = products + way * Turned(way);
    }
  }

private:
  Float4 m_corner[3 * kLeafSize + 4];
  int m_count = 0;
  Float4 m_area;
};

/// Returns true when the triangles of a leaf may be much narrower than their box: along each axis,
/// their shadow covers at most half of the box's. `area` is twice the area of the shadows.
bool MayBeSlim(const Float4& area, const Box<float>& box) {
  float side[3];
  for (int k = 0; k < 3; ++k)
    side[k] = box.high[k] - box.low[k];
  return std::fabs(area[0]) <= side[1] * side[2] && std::fabs(area[1]) <= side[2] * side[0] &&
         std::fabs(area[2]) <= side[0] * side[1];
}

/// Finds the normal of a side slab: in the surface, where the corners of a leaf spread least. It
/// stays zero where they spread alike.
void SetSideNormal(const LeafCorners& corners, const Slab& slab, Slab& side) {
  Float4 squares, products; // products of y and z, of z and x, and of x and y come at 1, 2 and 0
  corners.Spread(squares, products);
  const float(&n)[3] = slab.normal;
  // Two vectors that span the surface.
  const int least = std::fabs(n[0]) < std::fabs(n[1]) ? (std::fabs(n[0]) < std::fabs(n[2]) ? 0 : 2)
                                                      : (std::fabs(n[1]) < std::fabs(n[2]) ? 1 : 2);
  const int y = least == 2 ? 0 : least + 1;
  const int z = 3 - least - y;
  const float length = std::sqrt(n[y] * n[y] + n[z] * n[z]);
  float p[3];
  p[least] = 0.0f;
  p[y] = n[z] / length;
  p[z] = -n[y] / length;
  const float q[3] = {n[1] * p[2] - n[2] * p[1], n[2] * p[0] - n[0] * p[2],
                      n[0] * p[1] - n[1] * p[0]};
  const auto spread = [&](const float(&a)[3], const float(&b)[3]) {
    return a[0] * b[0] * squares[0] + a[1] * b[1] * squares[1] + a[2] * b[2] * squares[2] +
           (a[0] * b[1] + a[1] * b[0]) * products[0] + (a[1] * b[2] + a[2] * b[1]) * products[1] +
           (a[2] * b[0] + a[0] * b[2]) * products[2];
  };
  // The least principal axis of the two-by-two matrix of these.
  const float difference = 0.5f * (spread(p, p) - spread(q, q));
  const float product = spread(p, q);
  // Their squares may leave the range of float where those of the corners do not.
  const float largest = std::max(std::fabs(difference), std::fabs(product));
  if (!(largest > 0.0f)) return;
  const float half = difference / largest;
  const float mixed = product / largest;
  const float root = std::sqrt(half * half + mixed * mixed);
  const float alongP = half >= 0.0f ? -mixed : half - root;
  const float alongQ = half >= 0.0f ? half + root : mixed;
  SetNormal(alongP * p[0] + alongQ * q[0], alongP * p[1] + alongQ * q[1],
            alongP * p[2] + alongQ * q[2], side);
}

/// Makes the slabs of a leaf. The first is across the sum of its triangles' normals.
template <class Reader>
TwoSlabs SlabsOfLeaf(const Reader& reader, const Leaves& leaves, std::size_t leaf,
                     const Box<float>& box) {
  const LeafCorners corners(reader, leaves, leaf);
  const Float4& area = corners.Area();
  const float reach = RoundedReach(box);
  TwoSlabs slabs;
  SetNormal(area[0], area[1], area[2], slabs.slab);
  corners.Measure(slabs.slab, reach);
  if (slabs.slab.IsNone() || !MayBeSlim(area, box)) return slabs;
  SetSideNormal(corners, slabs.slab, slabs.side);
  corners.Measure(slabs.side, reach);
  if (slabs.side.IsNone() || !IsSlim(slabs.side, box)) slabs.side = Slab{};
  return slabs;
}

/// The children of a node, from which its own slabs are made.
class SlabChildren {
public:
  SlabChildren(const TreeNode<float>& node, const SlabNode& slabs, const SlabLanes* sides)
      : m_node(node), m_slabs(slabs), m_sides(sides) {}

  /// Makes a slab that holds the children, each within its box and its own slabs. It is across the
  /// sum of their normals, weighed by the squares of their sizes.
  Slab Make() const {
    float sum[3] = {0.0f, 0.0f, 0.0f};
    for (int lane = 0; lane < 4; ++lane) {
      if (m_node.child[lane].IsNone()) continue;
      const float size = m_node.boxes.At(lane).Size();
      for (int k = 0; k < 3; ++k)
        sum[k] += size * size * m_slabs.normal[k][lane];
    }
    Slab slab;
    SetNormal(sum[0], sum[1], sum[2], slab);
    Measure(slab);
    return slab;
  }

  /// Makes the side slab beside the slab `slab`, or none. The normals of side slabs have no side of
  /// their own, so each is turned towards the first.
  Slab MakeSide(const Slab& slab) const {
    Slab side;
    if (m_sides == nullptr || slab.IsNone()) return side;
    float sum[3] = {0.0f, 0.0f, 0.0f};
    Box<float> box = Box<float>::Empty();
    for (int lane = 0; lane < 4; ++lane) {
      if (m_node.child[lane].IsNone()) continue;
      box.Include(m_node.boxes.At(lane));
      const Slab child = m_sides->At(lane);
      const float size = m_node.boxes.At(lane).Size();
      const float weight = Dot(sum, child.normal) < 0.0f ? -size * size : size * size;
      for (int k = 0; k < 3; ++k)
        sum[k] += weight * child.normal[k];
    }
    const float rest = Dot(sum, slab.normal);
    SetNormal(sum[0] - rest * slab.normal[0], sum[1] - rest * slab.normal[1],
              sum[2] - rest * slab.normal[2], side);
    if (side.IsNone()) return side;
    Measure(side);
    return IsSlim(side, box) ? side : Slab{};
  }

private:
  static float Dot(const float (&a)[3], const float (&b)[3]) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
  }

  /// Writes the extent of the children along the normal of a slab.
  void Measure(Slab& slab) const {
    const Float4 n[3] = {Float4::Of(slab.normal[0]), Float4::Of(slab.normal[1]),
                         Float4::Of(slab.normal[2])};
    const SlabLanes none{};
    const SlabLanes& sides = m_sides == nullptr ? none : *m_sides;
    const float part = m_sides == nullptr ? kSlabError : kSideError;
    Float4 from, to;
    ExtentOfFour(m_node.boxes, m_slabs, sides, n, SharesOf(m_slabs, sides, n),
                 m_slabs.reach * Float4::Of(part), from, to);
    slab.from = Box<float>::kFar;
    slab.to = -Box<float>::kFar;
    for (int lane = 0; lane < 4; ++lane) {
      if (m_node.child[lane].IsNone()) continue;
      slab.from = std::min(slab.from, from[lane]);
      slab.to = std::max(slab.to, to[lane]);
    }
  }

  const TreeNode<float>& m_node;
  const SlabNode& m_slabs;
  const SlabLanes* m_sides;
};

/// Fills the slabs of a tree, from its last node to its first: children come after their parents.
/// Several threads fill runs of nodes side by side.
class SlabMaker {
public:
  SlabMaker(const Leaves& leaves, const Tree<float>& tree, Team& team, Slabs& slabs)
      : m_leaves(leaves), m_tree(tree), m_team(team), m_slabs(slabs),
        m_runs(tree.RunsUpwards(team)), m_sidesOf(m_runs.size()), m_slabsOf(tree.nodes.size()) {
    slabs.nodes = Array<SlabNode>(tree.nodes.size());
    slabs.sidesOf = Array<std::uint32_t>(tree.nodes.size());
  }

  /// Returns false when `goesOn` stops the work.
  template <class Reader>
  bool Fill(const Reader& reader, GoesOn& goesOn) {
    constexpr std::size_t kAskEvery = 1024;
    EachUpwards(m_runs, m_team, [&](std::size_t run) {
      const NodeRun& nodes = m_runs[run];
      // Pages that are not touched cost nothing.
      m_sidesOf[run].sides = Array<SlabLanes>(nodes.end - nodes.begin);
      for (std::size_t k = nodes.end; !goesOn.IsStopped() && k-- > nodes.begin;) {
        FillNode(reader, k, m_sidesOf[run]);
        if (k % kAskEvery == kAskEvery - 1) goesOn.Ask();
      }
    });
    if (goesOn.IsStopped()) return false;
    m_slabs.root = m_slabsOf[0].slab;
    NumberSides();
    return true;
  }

private:
  /// The side slabs of a run of nodes. Until all runs are done, numbers begin at 0 in each.
  struct RunSides {
    Array<SlabLanes> sides;
    std::size_t count = 0, at = 0;
  };

  template <class Reader>
  void FillNode(const Reader& reader, std::size_t k, RunSides& of) {
    const TreeNode<float>& node = m_tree.nodes[k];
    SlabNode filled{};
    SlabLanes sides{};
    bool hasSide = false;
    for (int lane = 0; lane < 4; ++lane) {
      const TreeRef child = node.child[lane];
      if (child.IsNone()) continue;
      const Box<float> box = node.boxes.At(lane);
      const TwoSlabs slabs = child.IsLeaf() ? SlabsOfLeaf(reader, m_leaves, child.Index(), box)
                                            : m_slabsOf[child.Index()];
      filled.Set(lane, slabs.slab);
      filled.reach.Set(lane, RoundedReach(box));
      if (slabs.side.IsNone()) continue;
      sides.Set(lane, slabs.side);
      hasSide = true;
    }
    m_slabs.nodes[k] = filled;
    m_slabs.sidesOf[k] = hasSide ? static_cast<std::uint32_t>(of.count) : Slabs::kNoSide;
    if (hasSide) of.sides[of.count++] = sides;
    const SlabChildren children(node, filled, hasSide ? &sides : nullptr);
    m_slabsOf[k].slab = children.Make();
    m_slabsOf[k].side = children.MakeSide(m_slabsOf[k].slab);
  }

  /// Numbers the side slabs through, and leaves out what is not needed.
  void NumberSides() {
    std::size_t count = 0;
    for (RunSides& of : m_sidesOf) {
      of.at = count;
      count += of.count;
    }
    if (count == 0) {
      m_slabs.sidesOf = Array<std::uint32_t>();
    } else if (m_runs.size() == 1) {
      m_slabs.sides = std::move(m_sidesOf[0].sides);
      m_slabs.sides.Shorten(count);
    } else {
      m_slabs.sides = Array<SlabLanes>(count);
      Blocks(m_runs.size(), 1).ForEach(m_team, [&](std::size_t run) { PlaceSides(run); });
    }
  }

  void PlaceSides(std::size_t run) {
    const RunSides of = std::move(m_sidesOf[run]);
    std::copy_n(of.sides.data(), of.count, m_slabs.sides.data() + of.at);
    for (std::size_t k = m_runs[run].begin; k < m_runs[run].end; ++k) {
      std::uint32_t& number = m_slabs.sidesOf[k];
      if (number != Slabs::kNoSide) number += static_cast<std::uint32_t>(of.at);
    }
  }

  const Leaves& m_leaves;
  const Tree<float>& m_tree;
  Team& m_team;
  Slabs& m_slabs;
  const std::vector<NodeRun> m_runs;
  std::vector<RunSides> m_sidesOf; ///< of each run
  Array<TwoSlabs> m_slabsOf;
};

} // namespace

std::unique_ptr<const Slabs> Slabs::Of(const Corners& corners, const Leaves& leaves,
                                       const Tree<float>& tree, const std::function<bool()>& goesOn,
                                       Team& team) {
  auto slabs = std::make_unique<Slabs>();
  bool isWhole = true;
  corners.Read([&](const auto& reader) {
    if (tree.root.IsLeaf()) {
      if (!tree.root.IsNone()) slabs->root = SlabsOfLeaf(reader, leaves, 0, tree.box).slab;
      return;
    }
    GoesOn asked(goesOn);
    isWhole = SlabMaker(leaves, tree, team, *slabs).Fill(reader, asked);
  });
  if (!isWhole) return nullptr;
  return slabs;
}

} // namespace gsl_sweep
