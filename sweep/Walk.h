#ifndef GSL_SWEEP_WALK_H
#define GSL_SWEEP_WALK_H

#include "Scene.h"

#include <functional>
#include <vector>

namespace gsl_sweep {

/// One side of a pair of nodes: a lane of its parent. Box and slab are those of the tree.
template <class Scalar>
struct WalkSide {
  TreeRef ref;
  std::uint32_t least; ///< triangle number
  Box<Scalar> box;
  Slab slab;
  std::uint32_t side = Slabs::kNoSide; ///< the number of its side slab
  /// The larger node of a pair is replaced by its children. A bundle of needles is as large as it
  /// is wide: its children are as long as it is.
  Scalar size = 0;
};

template <class Scalar>
struct NodePair {
  WalkSide<Scalar> moving, fixed;
  std::uint32_t fixedBody;
  float share; ///< of the whole work
  /// No travel before this one lets them touch. In a walk from the end: the negative of the travel
  /// after which none lets them touch.
  Scalar from;

  std::uint64_t LeastFixed() const { return FixedNumber(fixedBody, fixed.least); }
};

/// Receives the part of the walk that is done, now and then. Returning false ends the walk.
using Watch = std::function<bool(double part)>;

enum class WalkEnd { Done, Stopped, Cancelled };

/// Visits the pairs of leaves of two trees that can touch: the first to touch first, or from the
/// end, the last to part first.
///
/// Judgement offers
///   bool kFromEnd                    the order, a constant
///   TravelRange<Scalar> Range()      travels outside do not matter; it only narrows
///   bool IsSettled(const NodePair&)  nothing in the pair can change the result
///   bool Judge(const NodePair&)      looks at a pair of leaves; false ends the walk
///   std::size_t ExtraVisits()        optional: so many visits Judge() has cost so far, beside its
///                                    own; they count towards calling the watch
///   unsigned Raise<bool>(pair, boxes, mask, from)
///                                    optional: raises `from` (see NodePair) of the children in
///                                    `mask`, which have these boxes; returns those that are left
template <class Scalar, class Judgement>
class Walk {
public:
  Walk(const Scene<Scalar>& scene, Judgement& judgement, const Watch& watch,
       std::vector<NodePair<Scalar>>& stack)
      : m_scene(scene), m_judgement(judgement), m_watch(watch), m_stack(stack) {}

  WalkEnd Run();

private:
  static constexpr std::size_t kWatchEvery = 1024;
  /// Slabs cost about as much as this number of visits, so a walk that reaches it makes them.
  static constexpr std::size_t kSlabsAfter = 5000;

  /// Short walks end before it is worth looking how triangles face.
  static constexpr std::size_t kFacingsAfter = 50;
  /// Finding out how so many triangles face costs about as much as one visit.
  static constexpr std::size_t kTrianglesPerVisit = 64;

  void PushRoots();
  void Visit(const NodePair<Scalar>& pair);
  template <bool kMoving>
  void Expand(const NodePair<Scalar>& pair);
  template <bool kMoving>
  unsigned Narrow(const NodePair<Scalar>& pair, const Boxes<Scalar>& boxes, std::size_t node,
                  const Box<Scalar>& other, unsigned mask, Four<Scalar>& first,
                  Four<Scalar>& last) const;
  template <bool kMoving>
  void NarrowBySlabs(const Boxes<float>& boxes, const SlabNode& slabs, const Box<float>& other,
                     const Slab& slab, Float4& first, Float4& last) const;
  template <bool kMoving>
  void NarrowBySides(const Boxes<float>& boxes, const SlabNode& slabs, const SlabLanes& sides,
                     bool haveSides, const Box<float>& other, const Slab& slab, const Slab& side,
                     Float4& first, Float4& last) const;
  template <bool kMoving>
  void PushSurvivors(const NodePair<Scalar>& pair, std::size_t index, unsigned mask,
                     const Four<Scalar>& from);
  bool Goes();
  bool GoesAfterJudging();
  bool CallWatch() const { return !m_watch || m_watch(std::min(m_done, 1.0)); }
  template <class Any>
  static auto ExtraVisits(const Any& judgement, int) -> decltype(judgement.ExtraVisits()) {
    return judgement.ExtraVisits();
  }
  template <class Any>
  static std::size_t ExtraVisits(const Any&, long) {
    return 0;
  }
  template <bool kMoving, class Any>
  static auto Raised(Any& judgement, const NodePair<Scalar>& pair, const Boxes<Scalar>& boxes,
                     unsigned mask, Four<Scalar>& from, int)
      -> decltype(judgement.template Raise<kMoving>(pair, boxes, mask, from)) {
    return judgement.template Raise<kMoving>(pair, boxes, mask, from);
  }
  template <bool kMoving, class Any>
  static unsigned Raised(Any&, const NodePair<Scalar>&, const Boxes<Scalar>&, unsigned mask,
                         Four<Scalar>&, long) {
    return mask;
  }
  /// A patch as long as it is wide is twice as large as that.
  static Scalar SizeOf(const WalkSide<Scalar>& side, const TreeInUse<Scalar>& used) {
    if (side.side == Slabs::kNoSide) return side.box.Size();
    const Slab across = used.slabs->SideAt(side.side);
    return 2.0f * (across.to - across.from);
  }
  /// Fetches a node that will be visited soon.
  static void Fetch(TreeRef ref, const TreeInUse<Scalar>& used) {
    if (ref.IsLeaf()) return;
    FetchLines(used.tree->nodes[ref.Index()]);
    if (used.slabs != nullptr) FetchLines(used.slabs->nodes[ref.Index()]);
  }
  template <class T>
  static void FetchLines(const T& object) {
    constexpr std::size_t kCacheLine = 64;
    for (std::size_t at = 0; at < sizeof(T); at += kCacheLine)
      __builtin_prefetch(reinterpret_cast<const char*>(&object) + at);
  }
  template <bool kMoving, class GoesOn>
  void Improve(std::size_t fixedBody, const GoesOn& goesOn);
  template <class GoesOn>
  bool LearnFacings(const PreparedBody& body, const GoesOn& goesOn);
  void LeaveOutAside();
  /// Returns true when the pair touches at no travel that matters.
  bool IsBeyond(const NodePair<Scalar>& pair) const {
    const TravelRange<Scalar> range = m_judgement.Range();
    return pair.from > (kFromEnd ? -range.from : range.to);
  }

  static constexpr bool kFromEnd = Judgement::kFromEnd;

  const Scene<Scalar>& m_scene;
  Judgement& m_judgement;
  const Watch& m_watch;
  std::vector<NodePair<Scalar>>& m_stack;
  std::size_t m_visits = 0;
  std::size_t m_extraWatched = 0;
  double m_done = 0.0;
};

template <class Scalar, class Judgement>
WalkEnd Walk<Scalar, Judgement>::Run() {
  m_stack.clear();
  PushRoots();
  while (!m_stack.empty()) {
    if (++m_visits % kWatchEvery == 0) {
      if (!Goes()) return WalkEnd::Cancelled;
      if (m_stack.empty()) break;
    }
    const NodePair<Scalar> pair = m_stack.back();
    m_stack.pop_back();
    if (IsBeyond(pair) || m_judgement.IsSettled(pair)) {
      m_done += static_cast<double>(pair.share);
      continue;
    }
    if (pair.moving.ref.IsLeaf() && pair.fixed.ref.IsLeaf()) {
      if (!m_judgement.Judge(pair)) return WalkEnd::Stopped;
      m_done += static_cast<double>(pair.share);
      if (!GoesAfterJudging()) return WalkEnd::Cancelled;
      continue;
    }
    Visit(pair);
  }
  return WalkEnd::Done;
}

template <class Scalar, class Judgement>
bool Walk<Scalar, Judgement>::GoesAfterJudging() {
  const std::size_t extra = ExtraVisits(m_judgement, 0);
  if (extra - m_extraWatched < kWatchEvery) return true;
  m_extraWatched = extra;
  return CallWatch();
}

template <class Scalar, class Judgement>
bool Walk<Scalar, Judgement>::Goes() {
  bool isCancelled = false;
  const auto goesOn = [&] {
    isCancelled = isCancelled || !CallWatch();
    return !isCancelled;
  };
  if constexpr (sizeof(Scalar) == sizeof(float)) {
    Improve<true>(0, goesOn);
    // A fixed body that the walk does not come to is not hard to search.
    const std::size_t fixedBody = m_stack.back().fixedBody;
    Improve<false>(fixedBody, goesOn);
    if (m_scene.rule == Rule::Solid) {
      const bool isNew = LearnFacings(*m_scene.bodies.moving, goesOn);
      if (LearnFacings(*m_scene.bodies.fixed[fixedBody], goesOn) || isNew) LeaveOutAside();
    }
  }
  return goesOn();
}

/// Makes known how the triangles of a body face, once the walk has taken about as long as that
/// takes. Returns true when it was not known before.
template <class Scalar, class Judgement>
template <class GoesOn>
bool Walk<Scalar, Judgement>::LearnFacings(const PreparedBody& body, const GoesOn& goesOn) {
  if (body.FacingsIfMade() != nullptr || m_visits < body.TriangleCount() / kTrianglesPerVisit)
    return false;
  body.MakeFacings(goesOn, m_scene.team);
  return body.FacingsIfMade() != nullptr;
}

/// Drops the pairs that wait and have a node by which a solid meets nothing.
template <class Scalar, class Judgement>
void Walk<Scalar, Judgement>::LeaveOutAside() {
  const auto isAside = [this](const NodePair<Scalar>& pair) {
    const bool meetsNothing =
        (!pair.moving.ref.IsLeaf() &&
         m_scene.template ThatMayMeet<true>(pair.fixedBody, pair.moving.ref.Index()) == 0) ||
        (!pair.fixed.ref.IsLeaf() &&
         m_scene.template ThatMayMeet<false>(pair.fixedBody, pair.fixed.ref.Index()) == 0);
    if (meetsNothing) m_done += static_cast<double>(pair.share);
    return meetsNothing;
  };
  m_stack.erase(std::remove_if(m_stack.begin(), m_stack.end(), isAside), m_stack.end());
}

/// Makes what a body deserves by now, and goes on with the best tree that it has.
template <class Scalar, class Judgement>
template <bool kMoving, class GoesOn>
void Walk<Scalar, Judgement>::Improve(std::size_t fixedBody, const GoesOn& goesOn) {
  if (m_scene.template TreeOf<kMoving>(fixedBody).isFine) return;
  const PreparedBody& body = m_scene.template BodyOf<kMoving>(fixedBody);
  Team& team = m_scene.team;
  body.CountVisits(kWatchEvery);
  if (m_visits > kSlabsAfter && body.SlabsIfMade() == nullptr) body.MakeSlabs(goesOn, team);
  if (body.DeservesFine() && body.FineIfMade() == nullptr) body.MakeFine(goesOn, team);
  const FineTree* fine = m_scene.template UseBestTree<kMoving>(fixedBody);
  if (fine == nullptr) return;
  for (NodePair<Scalar>& pair : m_stack) {
    if (!kMoving && pair.fixedBody != fixedBody) continue;
    WalkSide<Scalar>& side = kMoving ? pair.moving : pair.fixed;
    if (side.ref.IsLeaf()) side.ref = fine->ofLeaf[side.ref.Index()];
    side.side = Slabs::kNoSide; // a number of the slabs that were in use
  }
}

template <class Scalar, class Judgement>
void Walk<Scalar, Judgement>::PushRoots() {
  const auto sideOf = [](const TreeInUse<Scalar>& used) {
    WalkSide<Scalar> side{used.tree->root, used.tree->least,     used.tree->box, {},
                          Slabs::kNoSide,  used.tree->box.Size()};
    if (used.slabs != nullptr) side.slab = used.slabs->root;
    return side;
  };
  const std::size_t count = m_scene.bodies.fixed.size();
  if (m_scene.bodies.moving->IsEmpty()) return;
  const WalkSide<Scalar> moving = sideOf(m_scene.template TreeOf<true>(0));
  for (std::size_t body = 0; body < count; ++body) {
    if (m_scene.bodies.fixed[body]->IsEmpty()) continue;
    NodePair<Scalar> pair{moving, sideOf(m_scene.template TreeOf<false>(body)),
                          static_cast<std::uint32_t>(body), 1.0f / static_cast<float>(count), 0};
    Scalar first, last;
    if (!m_scene.test.CanTouch(m_scene.moving.At(pair.moving.box), m_scene.fixed.At(pair.fixed.box),
                               m_judgement.Range(), first, last)) {
      continue;
    }
    pair.from = kFromEnd ? -last : first;
    m_stack.push_back(pair);
  }
  // The nearest pair is on top; among equals the first.
  std::reverse(m_stack.begin(), m_stack.end());
  std::stable_sort(
      m_stack.begin(), m_stack.end(),
      [](const NodePair<Scalar>& a, const NodePair<Scalar>& b) { return a.from > b.from; });
}

/// Replaces the larger node of a pair by its children.
template <class Scalar, class Judgement>
void Walk<Scalar, Judgement>::Visit(const NodePair<Scalar>& pair) {
  const bool expandsMoving =
      pair.fixed.ref.IsLeaf() || (!pair.moving.ref.IsLeaf() && pair.moving.size > pair.fixed.size);
  if (expandsMoving) {
    Expand<true>(pair);
  } else {
    Expand<false>(pair);
  }
}

template <class Scalar, class Judgement>
template <bool kMoving>
void Walk<Scalar, Judgement>::Expand(const NodePair<Scalar>& pair) {
  const std::size_t index = kMoving ? pair.moving.ref.Index() : pair.fixed.ref.Index();
  const TreeNode<Scalar>& node =
      m_scene.template TreeOf<kMoving>(pair.fixedBody).tree->nodes[index];
  const Placement<Scalar>& placement = kMoving ? m_scene.moving : m_scene.fixed;
  Boxes<Scalar> room;
  const Boxes<Scalar>& boxes = placement.At(node.boxes, room);
  const Box<Scalar> other =
      kMoving ? m_scene.fixed.At(pair.fixed.box) : m_scene.moving.At(pair.moving.box);
  Four<Scalar> first, last;
  unsigned mask =
      m_scene.test.template Survivors<kMoving>(boxes, other, m_judgement.Range(), first, last);
  if (mask != 0 && m_scene.rule == Rule::Solid) {
    mask &= m_scene.test.SharingShadow(boxes, other);
    if (mask != 0 && m_visits > kFacingsAfter)
      mask &= m_scene.template ThatMayMeet<kMoving>(pair.fixedBody, index);
  }
  if (mask != 0) mask = Narrow<kMoving>(pair, boxes, index, other, mask, first, last);
  Four<Scalar> from = kFromEnd ? -last : first;
  if (mask != 0) mask = Raised<kMoving>(m_judgement, pair, node.boxes, mask, from, 0);
  if (mask == 0) {
    m_done += static_cast<double>(pair.share);
    return;
  }
  PushSurvivors<kMoving>(pair, index, mask, from);
}

/// Applies the slabs, in float, where they are made.
template <class Scalar, class Judgement>
template <bool kMoving>
unsigned Walk<Scalar, Judgement>::Narrow(const NodePair<Scalar>& pair, const Boxes<Scalar>& boxes,
                                         std::size_t node, const Box<Scalar>& other, unsigned mask,
                                         Four<Scalar>& first, Four<Scalar>& last) const {
  if constexpr (sizeof(Scalar) == sizeof(float)) {
    const TreeInUse<Scalar>& used = m_scene.template TreeOf<kMoving>(pair.fixedBody);
    if (used.slabs == nullptr) return mask;
    const SlabNode& slabs = used.slabs->nodes[node];
    const SlabLanes* sides = used.slabs->SidesOf(node);
    const WalkSide<Scalar>& one = kMoving ? pair.fixed : pair.moving;
    if (sides == nullptr && one.side == Slabs::kNoSide) {
      NarrowBySlabs<kMoving>(boxes, slabs, other, one.slab, first, last);
    } else {
      const TreeInUse<Scalar>& ofOne = m_scene.template TreeOf<!kMoving>(pair.fixedBody);
      const Slab side = ofOne.slabs != nullptr ? ofOne.slabs->SideAt(one.side) : Slab{};
      NarrowBySides<kMoving>(boxes, slabs, sides != nullptr ? *sides : SlabLanes{},
                             sides != nullptr, other, one.slab, side, first, last);
    }
    return mask & AtMost(first, last);
  } else {
    return mask;
  }
}

template <class Scalar, class Judgement>
template <bool kMoving>
void Walk<Scalar, Judgement>::NarrowBySlabs(const Boxes<float>& boxes, const SlabNode& slabs,
                                            const Box<float>& other, const Slab& slab,
                                            Float4& first, Float4& last) const {
  const Float4 reach = slabs.reach + Float4::Of(RoundedUp(other.Reach()));
  const Float4 margin = Float4::Of(m_scene.slabMargin);
  const SlabTest& test = m_scene.slabTest;
  if (!m_scene.moving.HasOffset()) {
    test.template Narrow<kMoving>(boxes, slabs, other, slab,
                                  reach * Float4::Of(kSlabError) + margin, first, last);
    return;
  }
  const SlabShift shift(m_scene.moving.Offset());
  const Float4 error = (reach + Float4::Of(shift.Reach())) * Float4::Of(kShiftedSlabError) + margin;
  if constexpr (kMoving) {
    test.template Narrow<true>(boxes, shift.Of(slabs), other, slab, error, first, last);
  } else {
    test.template Narrow<false>(boxes, slabs, other, shift.Of(slab), error, first, last);
  }
}

template <class Scalar, class Judgement>
template <bool kMoving>
void Walk<Scalar, Judgement>::NarrowBySides(const Boxes<float>& boxes, const SlabNode& slabs,
                                            const SlabLanes& sides, bool haveSides,
                                            const Box<float>& other, const Slab& slab,
                                            const Slab& side, Float4& first, Float4& last) const {
  const Float4 reach = slabs.reach + Float4::Of(RoundedUp(other.Reach()));
  const Float4 margin = Float4::Of(m_scene.slabMargin);
  const SlabTest& test = m_scene.slabTest;
  if (!m_scene.moving.HasOffset()) {
    test.template NarrowBySides<kMoving>(boxes, slabs, sides, haveSides, other, slab, side,
                                         reach * Float4::Of(kSideError) + margin, first, last);
    return;
  }
  const SlabShift shift(m_scene.moving.Offset());
  const Float4 error = (reach + Float4::Of(shift.Reach())) * Float4::Of(kShiftedSideError) + margin;
  if constexpr (kMoving) {
    test.template NarrowBySides<true>(boxes, shift.Of(slabs), shift.Of(sides), haveSides, other,
                                      slab, side, error, first, last);
  } else {
    test.template NarrowBySides<false>(boxes, slabs, sides, haveSides, other, shift.Of(slab),
                                       shift.Of(side), error, first, last);
  }
}

template <class Scalar, class Judgement>
template <bool kMoving>
void Walk<Scalar, Judgement>::PushSurvivors(const NodePair<Scalar>& pair, std::size_t index,
                                            unsigned mask, const Four<Scalar>& from) {
  const TreeInUse<Scalar>& used = m_scene.template TreeOf<kMoving>(pair.fixedBody);
  const TreeNode<Scalar>& node = used.tree->nodes[index];
  int order[4];
  int count = 0;
  Scalar first[4];
  from.Store(first);
  for (int lane = 0; lane < 4; ++lane) {
    if ((mask >> lane & 1u) == 0 || node.child[lane].IsNone()) continue;
    int place = count++;
    const auto goesBelow = [&](int other) {
      return first[lane] > first[other] ||
             (first[lane] == first[other] && node.least[lane] > node.least[other]);
    };
    for (; place > 0 && goesBelow(order[place - 1]); --place)
      order[place] = order[place - 1];
    order[place] = lane;
  }
  if (count == 0) {
    m_done += static_cast<double>(pair.share);
    return;
  }
  for (int k = 0; k < count; ++k) {
    const int lane = order[k];
    m_stack.push_back(pair);
    NodePair<Scalar>& pushed = m_stack.back();
    WalkSide<Scalar>& side = kMoving ? pushed.moving : pushed.fixed;
    side.ref = node.child[lane];
    side.least = node.least[lane];
    side.box = node.boxes.At(lane);
    side.slab = used.slabs != nullptr ? used.slabs->nodes[index].At(lane) : Slab{};
    side.side = used.slabs != nullptr ? used.slabs->SideNumber(index, lane) : Slabs::kNoSide;
    Fetch(side.ref, used);
    side.size = SizeOf(side, used);
    pushed.from = first[lane];
    pushed.share = pair.share / static_cast<float>(count);
  }
}

} // namespace gsl_sweep

#endif
