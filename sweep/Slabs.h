#ifndef GSL_SWEEP_SLABS_H
#define GSL_SWEEP_SLABS_H

#include "Tree.h"

#include <cmath>
#include <functional>
#include <memory>

namespace gsl_sweep {

/// The space between two parallel planes: from <= n . p <= to for every corner p in it. The normal
/// has length one, up to rounding, or is zero where no normal was found.
struct Slab {
  float normal[3] = {0.0f, 0.0f, 0.0f};
  float from = 0.0f, to = 0.0f;
};

/// The slabs of the four children of a node, and the reach of their boxes, rounded up.
struct alignas(32) SlabNode {
  Float4 normal[3], from, to, reach;

  Slab At(int lane) const {
    return {{normal[0][lane], normal[1][lane], normal[2][lane]}, from[lane], to[lane]};
  }
};

/// Thin slabs beside the boxes of a tree. They separate two surfaces that face each other closely
/// by their thickness (size^2 * curvature), and not by the size of their boxes.
struct Slabs {
  Array<SlabNode> nodes; ///< as in the tree
  Slab root;

  /// Returns null when `goesOn`, which is called now and then, returns false.
  static std::unique_ptr<const Slabs> Of(const Corners& corners, const Leaves& leaves,
                                         const Tree<float>& tree,
                                         const std::function<bool()>& goesOn = {});

  std::size_t Bytes() const { return nodes.Bytes(); }
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
constexpr float kSlabError = 0x1p-19f;

// Slabs that go with an offset: n . offset is off by 5 u of the reach of the offset (its rounding,
// the products, the sums), the shifted plane by 1 u of both reaches, and so are the corners. For
// each of the two slabs that is less than 16 u more, which makes 54 u; 64 u = 2^-18.
constexpr float kShiftedSlabError = 0x1p-18f;

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
  SlabNode Of(const SlabNode& slabs) const {
    const Float4 shift = slabs.normal[0] * Float4::Of(m_offset[0]) +
                         slabs.normal[1] * Float4::Of(m_offset[1]) +
                         slabs.normal[2] * Float4::Of(m_offset[2]);
    SlabNode result = slabs;
    result.from = slabs.from + shift;
    result.to = slabs.to + shift;
    return result;
  }

private:
  float m_offset[3];
};

} // namespace gsl_sweep

#endif
