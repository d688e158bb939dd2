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

/// Returns the place of the first triangle with area of each component, by number. An offset may
/// have made the first ones flat, and given area to components that had none.
template <class Scalar>
std::vector<std::uint32_t> ComponentsWithArea(const PlacedBody<Scalar>& placed) {
  constexpr std::uint32_t kNone = 0xffffffffu;
  const std::vector<std::uint32_t>& components = placed.body.Components();
  const auto hasArea = [&](std::uint32_t place) { return placed.TriangleAt(place).HasArea(); };
  const bool mayHaveMore = placed.placement.HasOffset() && placed.body.HasFlatComponent();
  if (!mayHaveMore && std::all_of(components.begin(), components.end(), hasArea)) return components;
  const Corners& corners = placed.corners;
  std::vector<std::uint32_t> lowest(corners.Count(), kNone);
  for (std::size_t k = 0; k < corners.Count(); ++k) {
    const auto place = static_cast<std::uint32_t>(k);
    std::uint32_t& best = lowest[placed.body.ComponentOf(place)];
    if (best != kNone && corners.Number(best) < corners.Number(place)) continue;
    if (hasArea(place)) best = place;
  }
  lowest.erase(std::remove(lowest.begin(), lowest.end(), kNone), lowest.end());
  std::sort(lowest.begin(), lowest.end(), [&corners](std::uint32_t a, std::uint32_t b) {
    return corners.Number(a) < corners.Number(b);
  });
  return lowest;
}

} // namespace

template <class Scalar>
SolidStart<Scalar>::SolidStart(const Scene<Scalar>& scene, const Watch& watch)
    : m_scene(scene), m_watch(watch), m_moving(MovingSolid(scene)), m_fixed(FixedSolid(scene)),
      m_underFixed(scene.bodies.fixed.size()) {
  m_distinctMoving.emplace_back(scene.bodies.moving->Distinct(), scene.moving);
  for (const PreparedBody* body : scene.bodies.fixed)
    m_distinctFixed.emplace_back(body->Distinct(), scene.fixed);
}

/// Returns false when the question is cancelled.
template <class Scalar>
bool SolidStart<Scalar>::Goes() {
  constexpr std::size_t kWatchEvery = 1024;
  if (m_isCancelled) return false;
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
  const bool isInside = FindComponentInside();
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
    if (BestPrecedesAll(visit.leastMoving, fixedBody, visit.leastFixed)) continue;
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

/// Puts the children with the lowest numbers on top: few pairs then come before the best so far.
template <class Scalar>
template <bool kMoving>
void SolidStart<Scalar>::Expand(const Visit& visit, std::size_t fixedBody) {
  const Placed& side = kMoving ? Moving() : Fixed(fixedBody);
  const TreeNode<Scalar>& node =
      side.TreeOf().nodes[kMoving ? visit.moving.Index() : visit.fixed.Index()];
  const auto before = static_cast<std::ptrdiff_t>(m_stack.size());
  for (int lane = 3; lane >= 0; --lane) {
    if (node.child[lane].IsNone()) continue;
    Visit child = visit;
    (kMoving ? child.moving : child.fixed) = node.child[lane];
    (kMoving ? child.movingBox : child.fixedBox) = node.boxes.At(lane);
    (kMoving ? child.leastMoving : child.leastFixed) = node.least[lane];
    m_stack.push_back(child);
  }
  std::sort(m_stack.begin() + before, m_stack.end(), [](const Visit& a, const Visit& b) {
    return kMoving ? a.leastMoving > b.leastMoving : a.leastFixed > b.leastFixed;
  });
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
  const auto number = [](const Placed& placed, std::size_t place) {
    return placed.body.WholeNumber(placed.corners.Number(place));
  };
  FoundPair pair;
  pair.any = true;
  pair.moving = number(Moving(), movingPlace);
  pair.fixed = FixedNumber(fixedBody, number(Fixed(fixedBody), fixedPlace));
  if (m_best.PrecedesAll(pair.moving, pair.fixed)) return;
  const SolidMeeting meeting = MeetAtRest(moving, fixed);
  if (meeting == SolidMeeting::Apart) return;
  const bool overlaps = meeting == SolidMeeting::Overlapping && ShowsOverlap(moving, fixed);
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
  UnderEach& underMoving = m_underMoving;
  UnderEach& underFixed = m_underFixed[fixedBody];
  if (!m_hasLooked) {
    if (m_best.any) return;
    underMoving.resize(Moving().corners.Count(), Under::Unknown);
    underFixed.resize(Fixed(fixedBody).corners.Count(), Under::Unknown);
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

/// Returns true when, next to a point that two triangles share, both solids are just under one of
/// the triangles. Requires triangles that overlap, see MeetAtRest.
//
// Other triangles may cover a part of what they share. So the point is near each corner of it in
// turn.
template <class Scalar>
bool SolidStart<Scalar>::ShowsOverlap(const SurfaceTriangle& moving, const SurfaceTriangle& fixed) {
  const auto goesOn = [this] { return Goes(); };
  SharedPoints points = PointsAtMeeting(moving, fixed);
  for (std::size_t k = 0; k < points.count; ++k, points.Rotate()) {
    const InnerRay ofMoving(moving, points.onFirst);
    const InnerRay ofFixed(fixed, points.onSecond);
    const OwnSide movingSide = SideOfOwn(ofMoving, m_moving, goesOn);
    const OwnSide fixedSide = SideOfOwn(ofFixed, m_fixed, goesOn);
    const bool isMovingThere = movingSide != OwnSide::TurnedOver;
    const bool isFixedThere = fixedSide != OwnSide::TurnedOver;
    if (points.areEqual && isMovingThere && isFixedThere) return true;
    if (points.areEqual) continue;
    if (movingSide == OwnSide::Wall && fixedSide == OwnSide::Wall) return true;
    if (isMovingThere && TurnsAround(ofMoving, m_fixed, goesOn) > 0) return true;
    if (isFixedThere && TurnsAround(ofFixed, m_moving, goesOn) > 0) return true;
  }
  return false;
}

/// Looks under the triangles of one body that may touch the others. Returns true when one of these
/// is under some of them.
template <class Scalar>
bool SolidStart<Scalar>::LookUnder(const Placed& one, const Solid& own, const Solid& others,
                                   UnderEach& under) {
  bool any = false;
  for (std::size_t place = 0; place < under.size(); ++place) {
    if (m_isCancelled) return any;
    if (under[place] != Under::ToLookAt) continue;
    under[place] = IsInside(one, place, own, others) ? Under::OtherBody : Under::Nothing;
    any = any || under[place] == Under::OtherBody;
  }
  return any;
}

template <class Scalar>
bool SolidStart<Scalar>::LookUnderAll() {
  bool any = LookUnder(Moving(), m_moving, m_fixed, m_underMoving);
  for (std::size_t body = 0; body < m_fixed.size(); ++body)
    any = LookUnder(Fixed(body), m_fixed, m_moving, m_underFixed[body]) || any;
  return any;
}

/// Looks for the first component of a body that is inside others.
template <class Scalar>
bool SolidStart<Scalar>::FindInside(const Placed& inner, const Solid& own, const Solid& others,
                                    Contact& found) {
  for (const std::uint32_t place : ComponentsWithArea(inner)) {
    if (m_isCancelled) return false;
    if (!IsInside(inner, place, own, others)) continue;
    const bool isMoving = &own == &m_moving;
    found.kind = ContactKind::Inside;
    found.overlapsAtStart = true;
    found.movingIsInside = isMoving;
    (isMoving ? found.movingTriangle : found.fixedTriangle) = inner.body.Triangles().Number(place);
    found.movingPoint = m_scene.scale.UpPoint(inner.TriangleAt(place).corner[0]);
    found.fixedPoint = found.movingPoint;
    if (!isMoving) return true;
    while (found.fixedBody + 1 < m_fixed.size() &&
           !IsInside(inner, place, own, {m_fixed[found.fixedBody]}) && Goes())
      ++found.fixedBody;
    return true;
  }
  return false;
}

/// Looks for a component that is inside the moving body or inside a fixed body.
template <class Scalar>
bool SolidStart<Scalar>::FindComponentInside() {
  const SceneBodies& bodies = m_scene.bodies;
  if (FindInside({*bodies.moving, m_scene.moving}, m_moving, m_fixed, m_inside)) return true;
  for (std::size_t body = 0; body < m_fixed.size(); ++body) {
    m_inside.fixedBody = body;
    if (FindInside({*bodies.fixed[body], m_scene.fixed}, m_fixed, m_moving, m_inside)) return true;
  }
  return false;
}

/// Returns true when the points beside a triangle that are inside its own solid are inside the
/// others. They are just under it, or just over it when it is turned over. A triangle that an
/// offset has made flat has no such points. The point is near the first corner, and on no edge of
/// another triangle.
//
// Nearly always the others are on both sides of the triangle or on neither, and then the side of
// its own solid does not matter. To find that side takes a look at every triangle that meets the
// corner, and a fan has as many as it has corners to ask about.
template <class Scalar>
bool SolidStart<Scalar>::IsInside(const Placed& one, std::size_t place, const Solid& own,
                                  const Solid& others) {
  const auto goesOn = [this] { return Goes(); };
  const SurfaceTriangle face = one.TriangleAt(place);
  if (!face.HasArea()) return false;
  InnerPoint point;
  for (const Coord3& corner : face.corner)
    point.Add(corner);
  const InnerRay under(face, point);
  const int turnsUnder = TurnsAround(under, others, goesOn);
  if (turnsUnder <= 0) return false;
  const int turnsOver = turnsUnder - LayersAt(under, others, goesOn);
  return turnsOver > 0 || SideOfOwn(under, own, goesOn) != OwnSide::TurnedOver;
}

template class SolidStart<float>;
template class SolidStart<double>;

} // namespace gsl_sweep
