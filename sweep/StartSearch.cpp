#include "StartSearch.h"

#include "ClearancePair.h"

#include <algorithm>

namespace gsl_sweep {

template <class Scalar>
WalkEnd StartSearch<Scalar>::Run() {
  constexpr std::size_t kWatchEvery = 1024;
  m_stack.clear();
  PushRoots();
  for (std::size_t visits = 1; !m_stack.empty(); ++visits) {
    const NodePair<Scalar> pair = m_stack.back();
    m_stack.pop_back();
    if (visits % kWatchEvery == 0 && m_watch && !m_watch(1.0)) return WalkEnd::Cancelled;
    if (m_best.PrecedesAll(pair.moving.least, pair.LeastFixed())) continue;
    const bool isMovingLeaf = pair.moving.ref.IsLeaf();
    const bool isFixedLeaf = pair.fixed.ref.IsLeaf();
    if (isMovingLeaf && isFixedLeaf) {
      Judge(pair);
    } else if (isFixedLeaf || (!isMovingLeaf && pair.moving.box.Size() > pair.fixed.box.Size())) {
      Expand<true>(pair);
    } else {
      Expand<false>(pair);
    }
  }
  return WalkEnd::Done;
}

template <class Scalar>
void StartSearch<Scalar>::PushRoots() {
  const auto sideOf = [](const TreeInUse<Scalar>& used) {
    return WalkSide<Scalar>{used.tree->root, used.tree->least, used.tree->box, {}};
  };
  if (m_scene.bodies.moving->IsEmpty()) return;
  // The first body is on top.
  for (std::size_t body = m_scene.bodies.fixed.size(); body-- > 0;) {
    if (m_scene.bodies.fixed[body]->IsEmpty()) continue;
    m_stack.push_back({sideOf(m_scene.template TreeOf<true>(body)),
                       sideOf(m_scene.template TreeOf<false>(body)),
                       static_cast<std::uint32_t>(body), 0.0f, 0});
  }
}

/// Pushes the children that overlap the other side, least numbers on top.
template <class Scalar>
template <bool kMoving>
void StartSearch<Scalar>::Expand(const NodePair<Scalar>& pair) {
  const std::size_t index = kMoving ? pair.moving.ref.Index() : pair.fixed.ref.Index();
  const TreeNode<Scalar>& node =
      m_scene.template TreeOf<kMoving>(pair.fixedBody).tree->nodes[index];
  const Placement<Scalar>& placement = kMoving ? m_scene.moving : m_scene.fixed;
  const Box<Scalar> other =
      kMoving ? m_scene.fixed.At(pair.fixed.box) : m_scene.moving.At(pair.moving.box);
  Boxes<Scalar> room;
  const Boxes<Scalar>& boxes = placement.At(node.boxes, room);
  unsigned mask = 15u;
  for (int k = 0; k < 3; ++k) {
    mask &= AtMost(boxes.low[k], Four<Scalar>::Of(other.high[k]));
    mask &= AtMost(Four<Scalar>::Of(other.low[k]), boxes.high[k]);
  }
  int order[4];
  int count = 0;
  for (int lane = 0; lane < 4; ++lane) {
    if ((mask >> lane & 1u) == 0 || node.child[lane].IsNone()) continue;
    int place = count++;
    for (; place > 0 && node.least[lane] > node.least[order[place - 1]]; --place)
      order[place] = order[place - 1];
    order[place] = lane;
  }
  for (int k = 0; k < count; ++k) {
    const int lane = order[k];
    m_stack.push_back(pair);
    WalkSide<Scalar>& side = kMoving ? m_stack.back().moving : m_stack.back().fixed;
    side.ref = node.child[lane];
    side.least = node.least[lane];
    side.box = node.boxes.At(lane);
  }
}

/// Returns true when the boxes of triangles i and j are farther apart than the clearance.
//
// A gap between two numbers is off by less than 2^-50 of their reach.
template <class Scalar>
bool StartSearch<Scalar>::AreBoxesApart(const LeafPair<Scalar>& leaves, int i, int j) const {
  const Box<double> a = leaves.moving.ExactBoxOf(i);
  const Box<double> b = leaves.fixed.ExactBoxOf(j);
  const double error = (leaves.moving.reach + leaves.fixed.reach) * 0x1p-50;
  const double clearance = m_scene.WalkTravel(m_scene.clearance);
  double square = 0.0;
  for (int k = 0; k < 3; ++k) {
    const double gap = std::max(b.low[k] - a.high[k], a.low[k] - b.high[k]) - error;
    if (gap > 0.0) square += gap * gap;
  }
  return square > clearance * clearance * (1.0 + 0x1p-40);
}

/// Returns true when triangles i and j of the leaves touch, or are within the clearance, at the
/// start.
template <class Scalar>
bool StartSearch<Scalar>::Counts(const LeafPair<Scalar>& leaves, int i, int j) const {
  const bool hasClearance = m_scene.moving.HasMargin();
  if (hasClearance && AreBoxesApart(leaves, i, j)) return false;
  if (!hasClearance && leaves.AreApartAtStart(i, j)) return false;
  if (!hasClearance && m_scene.filters && leaves.AreShadowsApart(i, j)) return false;
  const Triangle a = leaves.moving.InKernel(m_scene, i);
  const Triangle b = leaves.fixed.InKernel(m_scene, j);
  if (hasClearance) return AreWithin(m_scene.direction, a, b, m_scene.clearance);
  PairContact unused{};
  ExactRatio unusedTravel;
  return JudgePair(m_scene.direction, a, b, m_scene.rule, 0.0, unused, unusedTravel) ==
         PairOutcome::Touching;
}

template <class Scalar>
void StartSearch<Scalar>::Judge(const NodePair<Scalar>& pair) {
  using Leaf = LeafTriangles<Scalar>;
  const Leaf& moving = m_movingCache.Moving(m_scene, pair.moving.ref.Index());
  const Leaf& fixed = m_fixedCache.Fixed(m_scene, pair.fixedBody, pair.fixed.ref.Index());
  const LeafPair<Scalar> leaves(m_scene, moving, fixed);
  for (int i = 0; i < moving.count; ++i) {
    for (int j = 0; j < fixed.count; ++j) {
      const std::uint64_t number = FixedNumber(pair.fixedBody, fixed.number[j]);
      if (m_best.PrecedesAll(moving.number[i], number)) continue;
      if (!Counts(leaves, i, j)) continue;
      m_best.any = true;
      m_best.moving = moving.number[i];
      m_best.fixed = number;
      m_best.movingTriangle = moving.InKernel(m_scene, i);
      m_best.fixedTriangle = fixed.InKernel(m_scene, j);
    }
  }
}

template class StartSearch<float>;
template class StartSearch<double>;

} // namespace gsl_sweep
