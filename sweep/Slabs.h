#ifndef GSL_SWEEP_SLABS_H
#define GSL_SWEEP_SLABS_H

#include "Tree.h"

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>

namespace gsl_sweep {

/// The space between two parallel planes: from <= n . p <= to for every corner p in it. The normal
/// has length one, up to rounding, or is zero where no normal was found.
struct Slab {
  float normal[3] = {0.0f, 0.0f, 0.0f};
  float from = 0.0f, to = 0.0f;

  bool IsNone() const { return normal[0] == 0.0f && normal[1] == 0.0f && normal[2] == 0.0f; }
};

/// The slabs of the four children of a node.
struct SlabLanes {
  Float4 normal[3], from, to;

  Slab At(int lane) const {
    return {{normal[0][lane], normal[1][lane], normal[2][lane]}, from[lane], to[lane]};
  }
  void Set(int lane, const Slab& slab) {
    for (int axis = 0; axis < 3; ++axis)
      normal[axis].Set(lane, slab.normal[axis]);
    from.Set(lane, slab.from);
    to.Set(lane, slab.to);
  }
};

/// The same, with the reach of the children's boxes, rounded up.
struct alignas(32) SlabNode : SlabLanes {
  Float4 reach;
};

/// Thin slabs beside the boxes of a tree. They separate two surfaces that face each other closely
/// by their thickness (size^2 * curvature), and not by the size of their boxes.
///
/// Leaves and nodes whose triangles lie in a narrow strip that is turned against the axes have a
/// side slab too: its normal lies in their surface, across the strip. It bounds the width of
/// needles, whose boxes are as wide as the needles are long.
struct Slabs {
  static constexpr std::uint32_t kNoSide = 0xffffffffu;

  Array<SlabNode> nodes; ///< as in the tree
  Slab root;
  Array<SlabLanes> sides;       ///< of the nodes with a child that has a side slab
  Array<std::uint32_t> sidesOf; ///< for each node, its place in `sides` or kNoSide; empty without
                                ///< any side slab

  /// Returns the side slabs of the children of a node, or null.
  const SlabLanes* SidesOf(std::size_t node) const {
    if (sides.size() == 0 || sidesOf[node] == kNoSide) return nullptr;
    return &sides[sidesOf[node]];
  }
  /// Returns a number of the side slab of a child, or kNoSide. Only the first 2^30 nodes that have
  /// any have numbers.
  std::uint32_t SideNumber(std::size_t node, int lane) const {
    const SlabLanes* found = SidesOf(node);
    if (found == nullptr || sidesOf[node] > kNoSide / 4 || found->At(lane).IsNone()) return kNoSide;
    return 4 * sidesOf[node] + static_cast<std::uint32_t>(lane);
  }
  /// Returns the side slab with this number; its normal is zero for kNoSide.
  Slab SideAt(std::uint32_t number) const {
    return number == kNoSide ? Slab{} : sides[number / 4].At(static_cast<int>(number % 4));
  }

  /// Returns null when `goesOn`, which is called now and then, returns false.
  static std::unique_ptr<const Slabs> Of(const Corners& corners, const Leaves& leaves,
                                         const Tree<float>& tree,
                                         const std::function<bool()>& goesOn = {},
                                         Team& team = Team::Alone());

  std::size_t Bytes() const { return nodes.Bytes() + sides.Bytes() + sidesOf.Bytes(); }
};

// The roundings that extents along a normal suffer, in units of 2^-24 of the reaches involved
// (u = 2^-24; every normal has a length of at most 1 + 2^-20, a factor alpha between two normals is
// at most that, and a rest n - alpha n' at most twice that):
//   a rest, as it is computed               3 u, times the point
//   its product with a side of a box        2 u
//   four sums of at most 3.1 reaches       12.4 u
//   alpha times an extent                   1.1 u
//   the difference to the other extent      3.1 u
// together less than 22 u. 32 u = 2^-19 leaves room for the rounding of the reach and of the bound.
// No extent is larger than 1.03 reaches here. Where the triangles of a node are large beside it,
// its slab may be, but it is looser by the excess, which is more than the roundings that the excess
// adds.
constexpr float kSlabError = 0x1p-19f;

// With a side slab m' beside n', a rest is n - alpha n' - beta m':
//   a rest, as it is computed               7 u, times the point: two products and two differences
//                                           of at most 1, 2 and 3
//   its product with a side of a box        3.1 u
//   five sums of at most 5.1 reaches       25.5 u
//   alpha and beta times an extent          2.2 u
//   the difference to the other extent      6.1 u
// together less than 44 u. 64 u = 2^-18 leaves the same room.
constexpr float kSideError = 0x1p-18f;

// Slabs that go with an offset: n . offset is off by 5 u of the reach of the offset (its rounding,
// the products, the sums), the shifted plane by 1 u of both reaches, and so are the corners. For
// each of the two slabs that is less than 16 u more, which makes 54 u; 64 u = 2^-18.
constexpr float kShiftedSlabError = 0x1p-18f;
// With side slabs three slabs take part in a test: 44 u and three times 16 u make 92 u; 128 u =
// 2^-17.
constexpr float kShiftedSideError = 0x1p-17f;

/// The parts that the normals of slabs and of side slabs have in a vector.
struct SlabShares {
  Float4 ofSlab, ofSide;
};

/// Returns them for the slabs of four boxes. Normals are zero where there is no slab.
inline SlabShares SharesOf(const SlabLanes& slabs, const SlabLanes& sides, const Float4 (&n)[3]) {
  return {slabs.normal[0] * n[0] + slabs.normal[1] * n[1] + slabs.normal[2] * n[2],
          sides.normal[0] * n[0] + sides.normal[1] * n[1] + sides.normal[2] * n[2]};
}

/// Writes bounds of n . p for the points p of four boxes, each within its slab and its side slab
/// too. `error` is added on each side: at least kSideError of the reach of the boxes, or kSlabError
/// without side slabs.
// n . p = alpha (m . p) + beta (s . p) + (n - alpha m - beta s) . p for any alpha and beta.
inline void ExtentOfFour(const Boxes<float>& boxes, const SlabLanes& slabs, const SlabLanes& sides,
                         const Float4 (&n)[3], const SlabShares& shares, const Float4& error,
                         Float4& from, Float4& to) {
  const Float4& alpha = shares.ofSlab;
  const Float4& beta = shares.ofSide;
  from = Least(alpha * slabs.from, alpha * slabs.to) - error;
  to = Most(alpha * slabs.from, alpha * slabs.to) + error;
  from = from + Least(beta * sides.from, beta * sides.to);
  to = to + Most(beta * sides.from, beta * sides.to);
  for (int k = 0; k < 3; ++k) {
    const Float4 rest = (n[k] - alpha * slabs.normal[k]) - beta * sides.normal[k];
    const Float4 low = rest * boxes.low[k];
    const Float4 high = rest * boxes.high[k];
    from = from + Least(low, high);
    to = to + Most(low, high);
  }
}

/// Moves slabs by an offset.
class SlabShift {
public:
  explicit SlabShift(const Coord3& offset)
      : m_offset{static_cast<float>(offset.x), static_cast<float>(offset.y),
                 static_cast<float>(offset.z)} {}

  float Reach() const {
    return (std::fabs(m_offset[0]) + std::fabs(m_offset[1]) + std::fabs(m_offset[2])) * 1.000001f;
  }
  Slab Of(const Slab& slab) const {
    const float shift =
        slab.normal[0] * m_offset[0] + slab.normal[1] * m_offset[1] + slab.normal[2] * m_offset[2];
    Slab result = slab;
    result.from += shift;
    result.to += shift;
    return result;
  }
  template <class Lanes>
  Lanes Of(const Lanes& slabs) const {
    const Float4 shift = slabs.normal[0] * Float4::Of(m_offset[0]) +
                         slabs.normal[1] * Float4::Of(m_offset[1]) +
                         slabs.normal[2] * Float4::Of(m_offset[2]);
    Lanes result = slabs;
    result.from = slabs.from + shift;
    result.to = slabs.to + shift;
    return result;
  }

private:
  float m_offset[3];
};

} // namespace gsl_sweep

#endif
