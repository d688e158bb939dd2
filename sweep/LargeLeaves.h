#ifndef GSL_SWEEP_LARGE_LEAVES_H
#define GSL_SWEEP_LARGE_LEAVES_H

#include "LeafPair.h"
#include "Walk.h"

namespace gsl_sweep {

/// Bounds the travels of pairs of nodes by leaves that are far larger than what they meet. The box
/// of such a leaf says little about when its triangles touch.
template <class Scalar>
class LargeLeaves {
public:
  LargeLeaves(const Scene<Scalar>& scene, LeafCache<Scalar>& movingCache,
              LeafCache<Scalar>& fixedCache)
      : m_scene(scene), m_movingCache(movingCache), m_fixedCache(fixedCache) {}

  /// Returns true when one of the boxes is far larger than the other.
  static bool AreUnequal(const Box<Scalar>& a, const Box<Scalar>& b) {
    return a.Size() > kFactor * b.Size() || b.Size() > kFactor * a.Size();
  }

  /// Raises `from` of the children of one side (see NodePair) that a large leaf bounds, and returns
  /// those in `mask` that are left. Of these `range` says which travels matter; the children have
  /// these boxes.
  template <bool kMoving, bool kFromEnd>
  unsigned Raise(const NodePair<Scalar>& pair, const Boxes<Scalar>& boxes, unsigned mask,
                 const TravelRange<double>& range, Four<Scalar>& from);

private:
  /// A leaf that is this many times as large as a box is tested against it.
  static constexpr Scalar kFactor = 16;

  template <bool kMoves>
  const LeafTriangles<Scalar>& LeafOf(const NodePair<Scalar>& pair, TreeRef ref) {
    return kMoves ? m_movingCache.Moving(m_scene, ref.Index())
                  : m_fixedCache.Fixed(m_scene, pair.fixedBody, ref.Index());
  }
  template <bool kMoves, bool kFromEnd>
  void RaiseOne(const LeafTriangles<Scalar>& leaf, const Box<Scalar>& box, int lane, unsigned& mask,
                const TravelRange<double>& range, Four<Scalar>& from) const;

  const Scene<Scalar>& m_scene;
  LeafCache<Scalar>& m_movingCache;
  LeafCache<Scalar>& m_fixedCache;
};

template <class Scalar>
template <bool kMoving, bool kFromEnd>
unsigned LargeLeaves<Scalar>::Raise(const NodePair<Scalar>& pair, const Boxes<Scalar>& boxes,
                                    unsigned mask, const TravelRange<double>& range,
                                    Four<Scalar>& from) {
  if (!m_scene.filters) return mask;
  const WalkSide<Scalar>& one = kMoving ? pair.fixed : pair.moving;
  const bool isOneLeaf = one.ref.IsLeaf();
  const Four<Scalar> sizes = (boxes.high[0] - boxes.low[0]) + (boxes.high[1] - boxes.low[1]) +
                             (boxes.high[2] - boxes.low[2]);
  const Four<Scalar> oneSize = Four<Scalar>::Of(one.box.Size());
  const Four<Scalar> factor = Four<Scalar>::Of(kFactor);
  const unsigned unequal =
      mask & ~(isOneLeaf ? AtMost(oneSize, factor * sizes) : AtMost(sizes, factor * oneSize));
  if (unequal == 0) return mask;
  const Placement<Scalar>& place = kMoving ? m_scene.moving : m_scene.fixed;
  const Placement<Scalar>& otherPlace = kMoving ? m_scene.fixed : m_scene.moving;
  const auto& nodes = m_scene.template TreeOf<kMoving>(pair.fixedBody).tree->nodes;
  const auto& node = nodes[kMoving ? pair.moving.ref.Index() : pair.fixed.ref.Index()];
  for (int lane = 0; lane < 4; ++lane) {
    const TreeRef child = node.child[lane];
    if ((unequal >> lane & 1u) == 0 || child.IsNone()) continue;
    if (isOneLeaf) {
      RaiseOne<!kMoving, kFromEnd>(LeafOf<!kMoving>(pair, one.ref), place.At(boxes.At(lane)), lane,
                                   mask, range, from);
    } else if (child.IsLeaf()) {
      RaiseOne<kMoving, kFromEnd>(LeafOf<kMoving>(pair, child), otherPlace.At(one.box), lane, mask,
                                  range, from);
    }
  }
  return mask;
}

/// Raises `from` of one lane, or clears its bit, by a leaf, moving or fixed, before a box.
template <class Scalar>
template <bool kMoves, bool kFromEnd>
void LargeLeaves<Scalar>::RaiseOne(const LeafTriangles<Scalar>& leaf, const Box<Scalar>& box,
                                   int lane, unsigned& mask, const TravelRange<double>& range,
                                   Four<Scalar>& from) const {
  const LeafBeforeBox<Scalar, kMoves> before(m_scene, leaf, box);
  const double known = from[lane];
  if (kFromEnd) {
    const double last = before.LastTravel({range.from, -known});
    if (last < range.from) {
      mask &= ~(1u << lane);
    } else if (last < -known) {
      from.Set(lane, std::max(from[lane], -m_scene.AtLeast(last)));
    }
    return;
  }
  const double first = before.FirstTravel({known, range.to});
  // It is infinite where nothing touches, and the range can be infinite too.
  if (first > range.to || first == Box<double>::kFar) {
    mask &= ~(1u << lane);
  } else if (first > known) {
    from.Set(lane, std::max(from[lane], m_scene.AtMost(first)));
  }
}

} // namespace gsl_sweep

#endif
