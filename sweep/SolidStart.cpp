#include "SolidStart.h"

#include <algorithm>
#include <cmath>

namespace gsl_sweep {

namespace {

template <class Scalar>
bool ShareAPoint(const Box<Scalar>& a, const Box<Scalar>& b) {
  for (int k = 0; k < 3; ++k) {
    if (a.high[k] < b.low[k] || b.high[k] < a.low[k]) return false;
  }
  return true;
}

} // namespace

template <class Scalar>
SolidStart<Scalar>::SolidStart(const Scene<Scalar>& scene, const Watch& watch)
    : m_scene(scene), m_watch(watch), m_underMoving(scene.bodies.fixed.size()),
      m_underFixed(scene.bodies.fixed.size()) {}

/// Returns false when the question is cancelled.
template <class Scalar>
bool SolidStart<Scalar>::Goes() {
  constexpr std::size_t kWatchEvery = 1024;
  if (++m_visits % kWatchEvery == 0 && m_watch && !m_watch(0.0)) m_isCancelled = true;
  return !m_isCancelled;
}

template <class Scalar>
SolidState SolidStart<Scalar>::Run() {
  if (!VisitAllPairs()) return SolidState::Cancelled;
  if (!m_best.any && LookUnderAll()) {
    m_hasLooked = true;
    if (!VisitAllPairs()) return SolidState::Cancelled;
  }
  if (m_best.any) return SolidState::Overlapping;
  bool isInside = false;
  for (const bool movingInside : {true, false}) {
    for (std::size_t body = 0; body < m_scene.bodies.fixed.size() && !isInside; ++body)
      isInside = FindComponentInside(body, movingInside);
  }
  if (m_isCancelled) return SolidState::Cancelled;
  return isInside ? SolidState::Inside : SolidState::Apart;
}

template <class Scalar>
bool SolidStart<Scalar>::VisitAllPairs() {
  for (std::size_t body = 0; body < m_scene.bodies.fixed.size(); ++body)
    if (!VisitPairs(body)) return false;
  return !m_isCancelled;
}

template <class Scalar>
bool SolidStart<Scalar>::VisitPairs(std::size_t fixedBody) {
  const Tree<Scalar>& moving = Moving().TreeOf();
  const Tree<Scalar>& fixed = Fixed(fixedBody).TreeOf();
  m_stack.push_back({moving.root, fixed.root, moving.box, fixed.box, moving.least, fixed.least});
  while (!m_stack.empty()) {
    const Visit visit = m_stack.back();
    m_stack.pop_back();
    if (!Goes()) return false;
    if (!ShareAPoint(m_scene.moving.At(visit.movingBox), m_scene.fixed.At(visit.fixedBox)))
      continue;
    if (m_best.PrecedesAll(visit.leastMoving, FixedNumber(fixedBody, visit.leastFixed))) continue;
    if (visit.moving.IsLeaf() && visit.fixed.IsLeaf()) {
      JudgeLeaves(visit, fixedBody);
    } else if (visit.fixed.IsLeaf() ||
               (!visit.moving.IsLeaf() && visit.movingBox.Size() > visit.fixedBox.Size())) {
      Expand<true>(visit, fixedBody);
    } else {
      Expand<false>(visit, fixedBody);
    }
  }
  return true;
}

template <class Scalar>
template <bool kMoving>
void SolidStart<Scalar>::Expand(const Visit& visit, std::size_t fixedBody) {
  const Placed side = kMoving ? Moving() : Fixed(fixedBody);
  const TreeNode<Scalar>& node =
      side.TreeOf().nodes[kMoving ? visit.moving.Index() : visit.fixed.Index()];
  for (int lane = 3; lane >= 0; --lane) {
    if (node.child[lane].IsNone()) continue;
    Visit child = visit;
    (kMoving ? child.moving : child.fixed) = node.child[lane];
    (kMoving ? child.movingBox : child.fixedBox) = node.boxes.At(lane);
    (kMoving ? child.leastMoving : child.leastFixed) = node.least[lane];
    m_stack.push_back(child);
  }
}

/// The triangles of a leaf, with their boxes.
template <class Scalar>
struct SolidStart<Scalar>::LeafAtRest {
  LeafAtRest(const Placed& placed, std::size_t leaf) {
    const Array<std::uint32_t>& runs = placed.body.Runs().begin;
    for (std::size_t k = runs[leaf]; k < runs[leaf + 1]; ++k) {
      place[count] = k;
      triangle[count] = placed.TriangleAt(k);
      box[count] = BoxAround(triangle[count]);
      all.Include(box[count++]);
    }
  }

  std::size_t place[kLeafSize];
  SurfaceTriangle triangle[kLeafSize];
  Box<double> box[kLeafSize], all = Box<double>::Empty();
  int count = 0;
};

template <class Scalar>
void SolidStart<Scalar>::JudgeLeaves(const Visit& visit, std::size_t fixedBody) {
  const LeafAtRest moving(Moving(), visit.moving.Index());
  const LeafAtRest fixed(Fixed(fixedBody), visit.fixed.Index());
  for (int i = 0; i < moving.count; ++i) {
    if (!ShareAPoint(moving.box[i], fixed.all)) continue;
    for (int j = 0; j < fixed.count; ++j) {
      if (!ShareAPoint(moving.box[i], fixed.box[j])) continue;
      JudgePlaces(moving.place[i], moving.triangle[i], fixed.place[j], fixed.triangle[j],
                  fixedBody);
    }
  }
}

template <class Scalar>
void SolidStart<Scalar>::JudgePlaces(std::size_t movingPlace, const SurfaceTriangle& moving,
                                     std::size_t fixedPlace, const SurfaceTriangle& fixed,
                                     std::size_t fixedBody) {
  FoundPair pair;
  pair.any = true;
  pair.moving = m_scene.bodies.moving->Triangles().Number(movingPlace);
  pair.fixed =
      FixedNumber(fixedBody, m_scene.bodies.fixed[fixedBody]->Triangles().Number(fixedPlace));
  if (m_best.PrecedesAll(pair.moving, pair.fixed)) return;
  const SolidMeeting meeting = MeetAtRest(moving, fixed);
  if (meeting == SolidMeeting::Apart) return;
  const bool overlaps = meeting == SolidMeeting::Overlapping && !IsTurned(Moving(), movingPlace) &&
                        !IsTurned(Fixed(fixedBody), fixedPlace);
  const auto triangle = [this](const SurfaceTriangle& t) {
    return MakeTriangle(m_scene.direction, t.corner[0], t.corner[1], t.corner[2]);
  };
  pair.movingTriangle = triangle(moving);
  pair.fixedTriangle = triangle(fixed);
  if (overlaps) {
    m_best = pair;
  } else {
    JudgeTouch(movingPlace, fixedPlace, fixedBody, pair);
  }
}

/// Judges a pair that may touch and does not show an overlap.
template <class Scalar>
void SolidStart<Scalar>::JudgeTouch(std::size_t movingPlace, std::size_t fixedPlace,
                                    std::size_t fixedBody, const FoundPair& pair) {
  UnderEach& underMoving = m_underMoving[fixedBody];
  UnderEach& underFixed = m_underFixed[fixedBody];
  if (!m_hasLooked) {
    if (m_best.any) return;
    underMoving.resize(m_scene.bodies.moving->Triangles().Count(), Under::Unknown);
    underFixed.resize(m_scene.bodies.fixed[fixedBody]->Triangles().Count(), Under::Unknown);
    underMoving[movingPlace] = underFixed[fixedPlace] = Under::ToLookAt;
    return;
  }
  if (underMoving[movingPlace] != Under::OtherBody && underFixed[fixedPlace] != Under::OtherBody)
    return;
  PairContact unused{};
  ExactRatio unusedTravel;
  if (JudgePair(m_scene.direction, pair.movingTriangle, pair.fixedTriangle, Rule::Touch, 0.0,
                unused, unusedTravel) == PairOutcome::Touching) {
    m_best = pair;
  }
}

/// Looks under the triangles of one body that may touch the other. Returns true when the other body
/// is under some of them.
template <class Scalar>
bool SolidStart<Scalar>::LookUnder(const Placed& one, const Placed& other, UnderEach& under) {
  bool any = false;
  for (std::size_t place = 0; place < under.size(); ++place) {
    if (m_isCancelled) return any;
    if (under[place] != Under::ToLookAt) continue;
    under[place] = IsInside(one, place, other) ? Under::OtherBody : Under::Nothing;
    any = any || under[place] == Under::OtherBody;
  }
  return any;
}

template <class Scalar>
bool SolidStart<Scalar>::LookUnderAll() {
  bool any = false;
  for (std::size_t body = 0; body < m_scene.bodies.fixed.size(); ++body) {
    any = LookUnder(Moving(), Fixed(body), m_underMoving[body]) || any;
    any = LookUnder(Fixed(body), Moving(), m_underFixed[body]) || any;
  }
  return any;
}

/// Looks for a component that is inside the moving body or inside a fixed body.
template <class Scalar>
bool SolidStart<Scalar>::FindComponentInside(std::size_t fixedBody, bool movingInside) {
  const Placed inner = movingInside ? Moving() : Fixed(fixedBody);
  const Placed outer = movingInside ? Fixed(fixedBody) : Moving();
  for (const std::uint32_t place : inner.body.Components()) {
    if (!IsInside(inner, place, outer)) continue;
    m_inside.kind = ContactKind::Inside;
    m_inside.overlapsAtStart = true;
    m_inside.movingIsInside = movingInside;
    m_inside.fixedBody = fixedBody;
    (movingInside ? m_inside.movingTriangle : m_inside.fixedTriangle) =
        inner.body.Triangles().Number(place);
    m_inside.movingPoint = m_scene.scale.UpPoint(inner.TriangleAt(place).corner[0]);
    m_inside.fixedPoint = m_inside.movingPoint;
    return true;
  }
  return false;
}

/// Returns true when a body is just beside a triangle with area.
template <class Scalar>
bool SolidStart<Scalar>::IsBeside(Beside beside, const Placed& one, std::size_t place,
                                  const Placed& other) {
  return TurnsAround(beside, one, place, other, [this] { return Goes(); }) > 0;
}

/// Returns true when a triangle with area is turned over.
template <class Scalar>
bool SolidStart<Scalar>::IsTurned(const Placed& one, std::size_t place) {
  return IsTurnedOver(one, place, [this] { return Goes(); });
}

/// Returns true when the points beside a triangle that are inside its own body are inside the other
/// body. They are just under it, or just over it when it is turned over. A triangle that an offset
/// has made flat has no such points.
template <class Scalar>
bool SolidStart<Scalar>::IsInside(const Placed& one, std::size_t place, const Placed& other) {
  if (!one.TriangleAt(place).HasArea() || !IsBeside(Beside::Under, one, place, other)) return false;
  return !IsTurned(one, place) || IsBeside(Beside::Over, one, place, other);
}

template class SolidStart<float>;
template class SolidStart<double>;

} // namespace gsl_sweep
