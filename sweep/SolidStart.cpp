#include "SolidStart.h"

#include <algorithm>
#include <limits>

namespace gsl_sweep {

namespace {

/// Common tips are looked for when more pairs than so many for each triangle may touch.
constexpr std::size_t kTouchesForEach = 16;
constexpr std::size_t kLeastTouches = 1024;

/// The nodes of a solid that a first look from a point may take, and the factor of the next look.
constexpr std::size_t kFirstLook = 64;
constexpr std::size_t kNextLook = 4;

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
  const PreparedBody& moving = scene.bodies.moving->Distinct();
  for (const PreparedBody* body : scene.bodies.fixed) {
    const PreparedBody& fixed = body->Distinct();
    Division division;
    division.moving.emplace_back(moving, scene.moving);
    division.fixed.emplace_back(fixed, scene.fixed);
    division.triangles = moving.TriangleCount() + fixed.TriangleCount();
    m_divisions.push_back(std::move(division));
  }
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

/// Looks for common tips where far more pairs touch than there are triangles, and begins again.
template <class Scalar>
bool SolidStart<Scalar>::VisitPairs(std::size_t fixedBody) {
  Division& division = m_divisions[fixedBody];
  m_touchesLeft = std::numeric_limits<std::size_t>::max();
  if (!division.isLookedAt) m_touchesLeft = kLeastTouches + kTouchesForEach * division.triangles;
  if (VisitDivision(fixedBody)) return true;
  if (m_isCancelled) return false;
  Divide(fixedBody);
  m_touchesLeft = std::numeric_limits<std::size_t>::max();
  return VisitDivision(fixedBody);
}

/// Returns false when the question is cancelled, or too many pairs touch.
template <class Scalar>
bool SolidStart<Scalar>::VisitDivision(std::size_t fixedBody) {
  const Division& division = m_divisions[fixedBody];
  for (std::size_t i = 0; i < division.moving.size(); ++i) {
    for (std::size_t j = 0; j < division.fixed.size(); ++j) {
      const bool goesOn = i > 0 && i == j
                              ? VisitFan(i - 1, fixedBody)
                              : VisitParts(division.moving[i], division.fixed[j], fixedBody);
      if (!goesOn) return false;
    }
  }
  return true;
}

/// The triangles of a leaf, with their boxes.
template <class Scalar>
struct SolidStart<Scalar>::LeafAtRest {
  LeafAtRest(const Placed& placed, std::size_t leaf) {
    const Array<std::uint32_t>& runs = placed.body.Runs().begin;
    for (std::size_t k = runs[leaf]; k < runs[leaf + 1]; ++k) {
      item[count] = {placed.body.WholeNumber(placed.corners.Number(k)), placed.TriangleAt(k)};
      box[count] = BoxAround(item[count].triangle);
      all.Include(box[count++]);
    }
  }

  Numbered item[kLeafSize];
  Box<double> box[kLeafSize], all = Box<double>::Empty();
  int count = 0;
};

template <class Scalar>
bool SolidStart<Scalar>::VisitParts(const Placed& moving, const Placed& fixed,
                                    std::size_t fixedBody) {
  if (moving.body.IsEmpty() || fixed.body.IsEmpty()) return true;
  const Tree<Scalar>& ofMoving = moving.TreeOf();
  const Tree<Scalar>& ofFixed = fixed.TreeOf();
  m_stack.clear();
  m_stack.push_back(
      {ofMoving.root, ofFixed.root, ofMoving.box, ofFixed.box, ofMoving.least, ofFixed.least});
  while (!m_stack.empty()) {
    const Visit visit = m_stack.back();
    m_stack.pop_back();
    if (!Goes() || m_touchesLeft == 0) return false;
    if (!ShareAPoint(m_scene.moving.At(visit.movingBox), m_scene.fixed.At(visit.fixedBox)))
      continue;
    if (BestPrecedesAll(moving, visit.leastMoving, fixed, fixedBody, visit.leastFixed)) continue;
    if (visit.moving.IsLeaf() && visit.fixed.IsLeaf()) {
      JudgeLeaves({moving, visit.moving.Index()}, {fixed, visit.fixed.Index()}, fixedBody);
    } else if (visit.fixed.IsLeaf() ||
               (!visit.moving.IsLeaf() && visit.movingBox.Size() > visit.fixedBox.Size())) {
      Expand<true>(visit, moving);
    } else {
      Expand<false>(visit, fixed);
    }
  }
  return true;
}

/// Puts the children with the lowest numbers on top: few pairs then come before the best so far.
template <class Scalar>
template <bool kMoving>
void SolidStart<Scalar>::Expand(const Visit& visit, const Placed& side) {
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

template <class Scalar>
void SolidStart<Scalar>::JudgeLeaves(const LeafAtRest& moving, const LeafAtRest& fixed,
                                     std::size_t fixedBody) {
  for (int i = 0; i < moving.count; ++i) {
    if (!ShareAPoint(moving.box[i], fixed.all)) continue;
    for (int j = 0; j < fixed.count; ++j) {
      if (ShareAPoint(moving.box[i], fixed.box[j])) Judge(moving.item[i], fixed.item[j], fixedBody);
    }
  }
}

/// The triangles with area of a fan, in the order of their numbers, with their directions.
template <class Scalar>
struct SolidStart<Scalar>::FanAtRest {
  FanAtRest(const Placed& part, const Coord3& tip) {
    for (std::size_t k = 0; k < part.corners.Count(); ++k) {
      const SurfaceTriangle triangle = part.TriangleAt(k);
      if (triangle.HasArea())
        items.push_back({part.body.WholeNumber(part.corners.Number(k)), triangle});
    }
    std::sort(items.begin(), items.end(),
              [](const Numbered& a, const Numbered& b) { return a.number < b.number; });
    for (const Numbered& item : items) {
      int corner = 0;
      while (!IsAt(item.triangle.corner[corner], tip))
        ++corner;
      directions.push_back(DirectionsFrom(item.triangle, corner));
    }
  }
  static bool IsAt(const Coord3& p, const Coord3& q) {
    return p.x == q.x && p.y == q.y && p.z == q.z;
  }

  std::vector<Numbered> items;
  std::vector<Box<double>> directions;
};

/// Visits the pairs of triangles at a common tip. All of them touch, and those whose directions
/// differ show no overlap.
template <class Scalar>
bool SolidStart<Scalar>::VisitFan(std::size_t fan, std::size_t fixedBody) {
  const Division& division = m_divisions[fixedBody];
  const FanAtRest moving(division.moving[fan + 1], division.tips[fan]);
  const FanAtRest fixed(division.fixed[fan + 1], division.tips[fan]);
  if (moving.items.empty() || fixed.items.empty()) return true;
  const BoxIndex index(fixed.directions);
  const auto goesOn = [this] { return Goes(); };
  for (std::size_t k = 0; k < moving.items.size(); ++k) {
    index.EachMeeting(moving.directions[k], goesOn, [&](std::size_t other) {
      Judge(moving.items[k], fixed.items[other], fixedBody);
    });
    if (m_isCancelled) return false;
  }
  if (m_hasLooked) {
    NameInFan(moving, fixed, fixedBody);
  } else if (!m_best.any) {
    for (const Numbered& item : moving.items)
      UnderMoving()[item.number] = Under::ToLookAt;
    for (const Numbered& item : fixed.items)
      UnderFixed(fixedBody)[item.number] = Under::ToLookAt;
  }
  return !m_isCancelled;
}

/// Judges the first pair of a fan, by number, with the other body under one of its triangles.
template <class Scalar>
void SolidStart<Scalar>::NameInFan(const FanAtRest& moving, const FanAtRest& fixed,
                                   std::size_t fixedBody) {
  const UnderEach& underMoving = UnderMoving();
  const UnderEach& underFixed = UnderFixed(fixedBody);
  std::vector<const Numbered*> all;
  std::vector<const Numbered*> under;
  for (const Numbered& item : fixed.items) {
    all.push_back(&item);
    if (underFixed[item.number] == Under::OtherBody) under.push_back(&item);
  }
  for (const Numbered& item : moving.items) {
    const bool isUnder = underMoving[item.number] == Under::OtherBody;
    for (const Numbered* other : isUnder ? all : under) {
      if (!Goes() || m_best.PrecedesAll(item.number, FixedNumber(fixedBody, other->number))) break;
      Judge(item, *other, fixedBody);
    }
    if (m_isCancelled || (m_best.any && m_best.moving <= item.number)) return;
  }
}

/// Divides a fixed body and the moving body at their common tips.
template <class Scalar>
void SolidStart<Scalar>::Divide(std::size_t fixedBody) {
  Division& division = m_divisions[fixedBody];
  division.isLookedAt = true;
  const Placed moving = division.moving.front();
  const Placed fixed = division.fixed.front();
  const std::vector<SharedFan> fans =
      FindSharedFans(CornersOf(moving), CornersOf(fixed), kTouchesForEach / 2 * division.triangles);
  if (fans.empty()) return;
  std::vector<const std::vector<std::uint32_t>*> ofMoving;
  std::vector<const std::vector<std::uint32_t>*> ofFixed;
  for (const SharedFan& fan : fans) {
    division.tips.push_back(fan.tip);
    ofMoving.push_back(&fan.moving);
    ofFixed.push_back(&fan.fixed);
  }
  division.moving.clear();
  division.fixed.clear();
  AddParts(moving.body, m_scene.moving, ofMoving, division.moving);
  AddParts(fixed.body, m_scene.fixed, ofFixed, division.fixed);
}

/// Returns the corners of the triangles of a body. Triangles with equal corners have no area.
template <class Scalar>
std::vector<PlacedCorner> SolidStart<Scalar>::CornersOf(const Placed& placed) const {
  std::vector<PlacedCorner> corners;
  for (std::uint32_t place = 0; place < placed.corners.Count(); ++place) {
    for (const Coord3& p : placed.TriangleAt(place).corner)
      corners.push_back({p, place});
  }
  return corners;
}

/// Adds the part of a body with the triangles of no fan, and a part for each fan.
template <class Scalar>
void SolidStart<Scalar>::AddParts(const PreparedBody& body, const Placement<Scalar>& placement,
                                  const std::vector<const std::vector<std::uint32_t>*>& fans,
                                  std::vector<Placed>& parts) {
  std::vector<bool> isInFan(body.TriangleCount(), false);
  for (const std::vector<std::uint32_t>* fan : fans)
    for (const std::uint32_t place : *fan)
      isInFan[place] = true;
  std::vector<std::uint32_t> others;
  for (std::uint32_t place = 0; place < isInFan.size(); ++place)
    if (!isInFan[place]) others.push_back(place);
  const auto add = [&](const std::vector<std::uint32_t>& places) {
    m_parts.push_back(body.PartOf(places));
    parts.emplace_back(*m_parts.back(), placement);
  };
  add(others);
  for (const std::vector<std::uint32_t>* fan : fans)
    add(*fan);
}

template <class Scalar>
void SolidStart<Scalar>::Judge(const Numbered& moving, const Numbered& fixed,
                               std::size_t fixedBody) {
  FoundPair pair;
  pair.any = true;
  pair.moving = moving.number;
  pair.fixed = FixedNumber(fixedBody, fixed.number);
  if (m_best.PrecedesAll(pair.moving, pair.fixed)) return;
  if (m_touchesLeft > 0) --m_touchesLeft;
  const SolidMeeting meeting = MeetAtRest(moving.triangle, fixed.triangle);
  if (meeting == SolidMeeting::Apart) return;
  const bool seemsToOverlap = meeting == SolidMeeting::Overlapping;
  m_anySeemsToOverlap = m_anySeemsToOverlap || seemsToOverlap;
  const bool overlaps = seemsToOverlap && ShowsOverlap(moving.triangle, fixed.triangle);
  const auto triangle = [this](const SurfaceTriangle& t) {
    return MakeTriangle(m_scene.direction, t.corner[0], t.corner[1], t.corner[2]);
  };
  pair.movingTriangle = triangle(moving.triangle);
  pair.fixedTriangle = triangle(fixed.triangle);
  if (overlaps) {
    m_best = pair;
  } else {
    JudgeTouch(fixedBody, pair);
  }
}

template <class Scalar>
typename SolidStart<Scalar>::UnderEach& SolidStart<Scalar>::UnderMoving() {
  const PreparedBody& body = *m_scene.bodies.moving;
  m_underMoving.resize(body.TriangleCount() + body.SkippedCount(), Under::Unknown);
  return m_underMoving;
}

template <class Scalar>
typename SolidStart<Scalar>::UnderEach& SolidStart<Scalar>::UnderFixed(std::size_t fixedBody) {
  const PreparedBody& body = *m_scene.bodies.fixed[fixedBody];
  m_underFixed[fixedBody].resize(body.TriangleCount() + body.SkippedCount(), Under::Unknown);
  return m_underFixed[fixedBody];
}

/// Judges a pair that may touch and does not show an overlap.
template <class Scalar>
void SolidStart<Scalar>::JudgeTouch(std::size_t fixedBody, const FoundPair& pair) {
  if (!m_hasLooked && m_best.any) return;
  Under& underMoving = UnderMoving()[pair.moving];
  Under& underFixed = UnderFixed(fixedBody)[static_cast<std::uint32_t>(pair.fixed)];
  if (!m_hasLooked) {
    underMoving = underFixed = Under::ToLookAt;
    return;
  }
  if (underMoving != Under::OtherBody && underFixed != Under::OtherBody) return;
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
  if (under.empty()) return any;
  for (std::size_t place = 0; place < one.corners.Count(); ++place) {
    if (m_isCancelled) return any;
    Under& found = under[one.body.WholeNumber(one.corners.Number(place))];
    if (found != Under::ToLookAt) continue;
    found = IsInside(one, place, own, others) ? Under::OtherBody : Under::Nothing;
    any = any || found == Under::OtherBody;
  }
  return any;
}

template <class Scalar>
bool SolidStart<Scalar>::LookUnderAll() {
  const SceneBodies& bodies = m_scene.bodies;
  bool any =
      LookUnder({bodies.moving->Distinct(), m_scene.moving}, m_moving, m_fixed, m_underMoving);
  for (std::size_t body = 0; body < m_fixed.size(); ++body) {
    any = LookUnder({bodies.fixed[body]->Distinct(), m_scene.fixed}, m_fixed, m_moving,
                    m_underFixed[body]) ||
          any;
  }
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

/// Returns how often the others wind around the points just under a triangle, near the first
/// corner.
//
// Where no pair seems to overlap, no surface goes to the inner side of the triangle from a point
// inside it. So the others wind as often around all points just under it. Then a point near another
// corner will do, and a look that takes long is put off: at the tip of a fan it meets all triangles
// of the fan.
template <class Scalar>
int SolidStart<Scalar>::TurnsUnder(const SurfaceTriangle& face, const Solid& others) {
  for (std::size_t most = kFirstLook;; most *= kNextLook) {
    for (int first = 0; first < (m_anySeemsToOverlap ? 1 : 3); ++first) {
      InnerPoint point;
      for (int k = 0; k < 3; ++k)
        point.Add(face.corner[(first + k) % 3]);
      std::size_t left = m_anySeemsToOverlap ? std::numeric_limits<std::size_t>::max() : most;
      bool isPutOff = false;
      const auto goesOn = [&] {
        isPutOff = isPutOff || left == 0;
        if (!isPutOff) --left;
        return !isPutOff && Goes();
      };
      const int turns = TurnsAround(InnerRay(face, point), others, goesOn);
      if (m_isCancelled || !isPutOff) return turns;
    }
  }
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
  const int turnsUnder = TurnsUnder(face, others);
  if (turnsUnder <= 0) return false;
  const int turnsOver = turnsUnder - LayersAt(under, others, goesOn);
  return turnsOver > 0 || SideOfOwn(under, own, goesOn) != OwnSide::TurnedOver;
}

template class SolidStart<float>;
template class SolidStart<double>;

} // namespace gsl_sweep
