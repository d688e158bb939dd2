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
  /// A travel that would be raised by less than this part of it is left alone.
  static constexpr double kLeastRaise = 0x1p-10;

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
  const WalkSide<Scalar>& own = kMoving ? pair.moving : pair.fixed;
  const bool isOneLeaf = one.ref.IsLeaf();
  const Scalar ownSize = own.box.Size();
  const Scalar size = one.box.Size();
  // Children are seldom smaller than a quarter of their parent, and theirs are tested later.
  if (isOneLeaf ? !(4 * size > kFactor * ownSize) : !(ownSize > kFactor * size)) return mask;
  const Four<Scalar> sizes = (boxes.high[0] - boxes.low[0]) + (boxes.high[1] - boxes.low[1]) +
                             (boxes.high[2] - boxes.low[2]);
  const Four<Scalar> oneSize = Four<Scalar>::Of(size);
  const Four<Scalar> factor = Four<Scalar>::Of(kFactor);
  const unsigned unequal =
      mask & ~(isOneLeaf ? AtMost(oneSize, factor * sizes) : AtMost(sizes, factor * oneSize));
  if (unequal == 0) return mask;
  const Placement<Scalar>& place = kMoving ? m_scene.moving : m_scene.fixed;
  const Placement<Scalar>& otherPlace = kMoving ? m_scene.fixed : m_scene.moving;
  const auto& nodes = m_scene.template TreeOf<kMoving>(pair.fixedBody).tree->nodes;
  const auto& node = nodes[own.ref.Index()];
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
    const double enough = std::max(-known * (1.0 - kLeastRaise), range.from);
    const double last = before.LastTravel(range, enough);
    if (last < range.from) {
      mask &= ~(1u << lane);
    } else if (last < -known) {
      from.Set(lane, std::max(from[lane], -m_scene.AtLeast(last)));
    }
    return;
  }
  const double enough = std::min(known * (1.0 + kLeastRaise), range.to);
  const double first = before.FirstTravel(range, enough);
  // It is infinite where nothing touches, and the range can be infinite too.
  if (first > range.to || first == Box<double>::kFar) {
    mask &= ~(1u << lane);
  } else if (first > known) {
    from.Set(lane, std::max(from[lane], m_scene.AtMost(first)));
  }
}

} // namespace gsl_sweep

#endif
