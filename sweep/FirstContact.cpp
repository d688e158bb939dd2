#include "FirstContact.h"

#include <cmath>

namespace gsl_sweep {

using gsl_exact::Expansion;
using gsl_exact::TwoDifference;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// First travels within this part of the best are compared exactly. The part is wider than the
/// margin by which they are reduced. It decides how often pairs are compared, not the result.
constexpr double kTieWindow = 0x1p-19;

/// A plane takes about as long as two pairs, so it is looked for when this many have tied.
constexpr int kTiesBeforePlane = 4;

/// The nodes of a solid that a first look from a point may take, and the factor of the next look.
constexpr std::size_t kFirstLook = 64;
constexpr std::size_t kNextLook = 4;

/// Returns true for solids that meet nothing by a pair of leaves: their shadows share no area.
template <class Scalar>
bool AreAside(const Scene<Scalar>& scene, const NodePair<Scalar>& pair) {
  if (scene.rule != Rule::Solid || !scene.filters) return false;
  const ShadowExtent moving = scene.shadowAxes.Of(scene.moving.At(pair.moving.box));
  return !moving.MayShareArea(scene.shadowAxes.Of(scene.fixed.At(pair.fixed.box)));
}

} // namespace

template <class Scalar>
FirstContact<Scalar>::FirstContact(const Scene<Scalar>& scene, double maxDistance,
                                   LeafCache<Scalar>& movingCache, LeafCache<Scalar>& fixedCache,
                                   const Watch& watch)
    : m_scene(scene), m_movingCache(movingCache), m_fixedCache(fixedCache),
      m_largeLeaves(scene, movingCache, fixedCache),
      m_maxDistance(scene.scale.DownLength(maxDistance)), m_least(LeastEnd<Scalar>(scene.rule)),
      m_kernelLimit(JustBeyond(m_maxDistance)), m_watch(watch) {
  SetLimit(scene.MultipleAtLeast(m_maxDistance));
}

/// The travel is a multiple of the direction in the kernel's coordinates, and not less than the
/// true travel.
template <class Scalar>
void FirstContact<Scalar>::SetLimit(double travel) {
  m_doubleLimit = m_scene.WalkTravel(travel);
  m_limit = m_scene.AtLeast(m_doubleLimit);
}

/// Returns true when a pair cannot come before the best pair: it follows the best pair by number,
/// and an axis keeps its boxes apart for as long.
template <class Scalar>
bool FirstContact<Scalar>::IsSettled(const NodePair<Scalar>& pair) {
  if (!m_scene.hasExactBoxes || !(pair.from >= m_tieFloor)) return false;
  if (!m_best.PrecedesAll(pair.moving.least, pair.LeastFixed())) return false;
  return IsNotBefore(m_scene.moving.InKernel(pair.moving.box),
                     m_scene.fixed.InKernel(pair.fixed.box));
}

/// Decides exactly, for exact boxes in the kernel's coordinates, whether some axis keeps them apart
/// at all travels below the best travel.
template <class Scalar>
bool FirstContact<Scalar>::IsNotBefore(const Box<double>& moving, const Box<double>& fixed) {
  const Coord3& vector = m_scene.direction.Vector();
  const double d[3] = {vector.x, vector.y, vector.z};
  const double best = m_best.travel.rounded.hi;
  for (int k = 0; k < 3; ++k) {
    if (d[k] == 0.0) continue;
    const DoubleDouble gap = d[k] > 0.0 ? TwoDifference(fixed.low[k], moving.high[k])
                                        : TwoDifference(fixed.high[k], moving.low[k]);
    if (gap.hi == 0.0 || (gap.hi > 0.0) != (d[k] > 0.0)) continue;
    if (m_hasTied[k] && gap.hi == m_tied[k].hi && gap.lo == m_tied[k].lo) return true;
    const double travel = gap.hi / d[k];
    if (travel < best * (1.0 - 0x1p-45)) continue;
    if (travel > best * (1.0 + 0x1p-45)) return true;
    ExactRatio exact;
    Expansion<192> over;
    Expansion<192> under;
    over.Append(gap.lo);
    over.Append(gap.hi);
    under.Append(d[k]);
    exact.Set(over, under);
    const int order = CompareRatios(exact, m_best.travel);
    if (order == 0) {
      m_tied[k] = gap;
      m_hasTied[k] = true;
    }
    if (order >= 0) return true;
  }
  return false;
}

template <class Scalar>
bool FirstContact<Scalar>::Judge(const NodePair<Scalar>& pair) {
  if (AreAside(m_scene, pair)) return true;
  const Leaf& moving = m_movingCache.Moving(m_scene, pair.moving.ref.Index());
  const Leaf& fixed = m_fixedCache.Fixed(m_scene, pair.fixedBody, pair.fixed.ref.Index());
  const bool mayHold = m_tiePlane.IsSet();
  const PairOfLeaves both{
      LeafPair<Scalar>(m_scene, moving, fixed), pair.fixedBody,
      mayHold ? moving.template HeldBy<true>(m_tiePlane, m_tiePlaneNumber, m_scene) : 0,
      mayHold ? fixed.template HeldBy<false>(m_tiePlane, m_tiePlaneNumber, m_scene) : 0,
      m_scene.filters && LargeLeaves<Scalar>::AreUnequal(pair.moving.box, pair.fixed.box)};
  const bool followsBest = m_best.PrecedesAll(pair.moving.least, pair.LeastFixed());
  if (followsBest && (moving.distinct & ~both.movingHeld) == 0 &&
      (fixed.distinct & ~both.fixedHeld) == 0)
    return true;
  const LeafPair<Scalar>& leaves = both.leaves;
  unsigned movingMask = moving.distinct;
  unsigned fixedMask = fixed.distinct;
  // A few pairs are looked at more cheaply than the two leaves.
  if (moving.count * fixed.count > 4) ReachedLeaves(pair, leaves, movingMask, fixedMask);
  if (fixedMask == 0) return true;
  Candidates candidates;
  for (int i = 0; i < moving.count; ++i) {
    if ((movingMask >> i & 1u) == 0) continue;
    for (int first = 0; first < fixed.count; first += 4) {
      Four<Scalar> from, unusedTo;
      unsigned mask = fixedMask >> first & 15u;
      if (mask != 0) mask &= leaves.Reached(i, first, Range(), from, unusedTo);
      if (mask != 0 && m_scene.filters && m_scene.rule == Rule::Solid)
        mask &= leaves.SharingShadow(i, first);
      if (mask != 0 && m_scene.filters) mask &= leaves.ReachedByHeight(i, first, m_doubleLimit);
      if (mask != 0 && both.areUnequal) mask &= leaves.TouchingByHeight(i, first, 0.0);
      for (int lane = 0; mask != 0; ++lane, mask >>= 1) {
        if ((mask & 1u) == 0) continue;
        if (!JudgeOrCollect(both, i, first + lane, from[lane], candidates)) return false;
      }
    }
  }
  return JudgeCandidates(both, candidates);
}

/// Clears the bits of the triangles that do not reach the box or the slab of the other leaf.
template <class Scalar>
void FirstContact<Scalar>::ReachedLeaves(const NodePair<Scalar>& pair,
                                         const LeafPair<Scalar>& leaves, unsigned& movingMask,
                                         unsigned& fixedMask) const {
  movingMask &= leaves.template ThatReach<true>(m_scene.fixed.At(pair.fixed.box), Range());
  fixedMask &= leaves.template ThatReach<false>(m_scene.moving.At(pair.moving.box), Range());
  if (!m_scene.filters || !(m_doubleLimit < kInfinity)) return;
  if (movingMask != 0)
    movingMask &= leaves.template ThatReach<true>(pair.fixed.slab, m_doubleLimit);
  // With an offset the slab of the moving body is at another place.
  if (movingMask != 0 && fixedMask != 0 && !m_scene.moving.HasOffset())
    fixedMask &= leaves.template ThatReach<false>(pair.moving.slab, m_doubleLimit);
}

/// Returns true when two triangles, whose boxes touch at `from`, cannot come before the best pair.
template <class Scalar>
bool FirstContact<Scalar>::IsSettled(const PairOfLeaves& pair, int i, int j, Scalar from) {
  if (from > m_limit) return true;
  const bool isHeld = (pair.movingHeld >> i & pair.fixedHeld >> j & 1u) != 0;
  if (!isHeld && !(from >= m_tieFloor)) return false;
  const Leaf& moving = pair.leaves.moving;
  const Leaf& fixed = pair.leaves.fixed;
  return m_best.PrecedesAll(moving.number[i], FixedNumber(pair.fixedBody, fixed.number[j])) &&
         (isHeld || IsNotBefore(m_scene.moving.ToKernel(moving.ExactBoxOf(i)),
                                m_scene.fixed.ToKernel(fixed.ExactBoxOf(j))));
}

/// To judge triangles of unequal sizes exactly takes long, so they are bounded, and the earliest
/// are judged first. Returns false when the triangles touch at the start, or when the question is
/// cancelled.
template <class Scalar>
bool FirstContact<Scalar>::JudgeOrCollect(const PairOfLeaves& pair, int i, int j, Scalar from,
                                          Candidates& candidates) {
  if (IsSettled(pair, i, j, from)) return true;
  if (m_scene.filters && pair.leaves.AreShadowsApart(i, j)) return true;
  if (!pair.areUnequal) return JudgeTriangles(pair.leaves, pair.fixedBody, i, j);
  const double first = pair.leaves.FirstTravel(i, j);
  if (!(first > m_doubleLimit)) candidates.Add({i, j, from, first});
  return true;
}

template <class Scalar>
bool FirstContact<Scalar>::JudgeCandidates(const PairOfLeaves& pair, const Candidates& candidates) {
  for (int k = 0; k < candidates.count; ++k) {
    const Candidate& next = candidates.sorted[k];
    if (next.first > m_doubleLimit) continue;
    if (k > 0 && IsSettled(pair, next.moving, next.fixed, next.from)) continue;
    if (!JudgeTriangles(pair.leaves, pair.fixedBody, next.moving, next.fixed)) return false;
  }
  return true;
}

/// Candidates of equal travels keep their order.
template <class Scalar>
void FirstContact<Scalar>::Candidates::Add(const Candidate& candidate) {
  int place = count++;
  for (; place > 0 && sorted[place - 1].first > candidate.first; --place)
    sorted[place] = sorted[place - 1];
  sorted[place] = candidate;
}

/// Returns false when the triangles touch at the start, or when the question is cancelled.
template <class Scalar>
bool FirstContact<Scalar>::JudgeTriangles(const LeafPair<Scalar>& leaves, std::size_t fixedBody,
                                          int i, int j) {
  ++m_judgements;
  FoundPair found;
  found.moving = leaves.moving.number[i];
  found.fixed = FixedNumber(fixedBody, leaves.fixed.number[j]);
  found.movingTriangle = leaves.moving.InKernel(m_scene, i);
  found.fixedTriangle = leaves.fixed.InKernel(m_scene, j);
  switch (JudgePair(m_scene.direction, found.movingTriangle, found.fixedTriangle, m_scene.rule,
                    m_kernelLimit, found.contact, found.travel)) {
  case PairOutcome::Apart:
    return true;
  case PairOutcome::Touching:
    return false;
  case PairOutcome::Ahead:
    break;
  }
  // Under Rule::Solid the travel may be zero, which is always within the greatest distance.
  const bool isSolidAtRest = found.travel.numerator.Sign() == 0;
  if (!isSolidAtRest &&
      CompareLength(found.travel, m_scene.direction.Vector(), m_maxDistance) > 0) {
    return true;
  }
  if (m_best.any) {
    const int order = CompareRatios(found.travel, m_best.travel);
    if (order == 0) CountTie();
    if (order > 0 || (order == 0 && m_best.PrecedesAll(found.moving, found.fixed))) return true;
    if (order < 0) ForgetTies();
  }
  const bool mayCount = !(isSolidAtRest || m_leavesOutTurnedOver) || !AreTurnedOver(found);
  if (m_isCancelled) return false;
  if (mayCount) Lower(found);
  return true;
}

/// Returns false when the question is cancelled.
template <class Scalar>
bool FirstContact<Scalar>::Goes() {
  constexpr std::size_t kWatchEvery = 1024;
  if (m_isCancelled) return false;
  if (++m_looks % kWatchEvery == 0 && m_watch && !m_watch(0.0)) m_isCancelled = true;
  return !m_isCancelled;
}

/// Puts a look off that needs more than so many nodes of the solid.
template <class Scalar>
typename FirstContact<Scalar>::Look
FirstContact<Scalar>::LookAlong(const InnerRay& ray, const PlacedSolid<Scalar>& solid,
                                std::size_t most) {
  bool isPutOff = false;
  const auto goesOn = [&] {
    isPutOff = isPutOff || most == 0;
    if (!isPutOff) --most;
    return !isPutOff && Goes();
  };
  const OwnSide side = SideOfOwn(ray, solid, goesOn);
  if (isPutOff) return Look::PutOff;
  return side == OwnSide::TurnedOver ? Look::TurnedOver : Look::NotTurnedOver;
}

/// Returns true when both triangles of a pair of solids are turned over, so that they do not stop
/// the solids where they meet.
//
// On a line along the direction, the moving solid is then just beyond its triangle and the fixed
// solid just before its own. At travel 0 the one rests on the other, and leaves it. After a
// positive travel the solids meet no later than the triangles do: the moving solid is in the way
// with its own front, or the fixed solid with its own back. So only the number of the pair is
// wrong. When one triangle alone is turned over, its solid is on the same side as the other.
//
// One point that shows the contrary decides. At the tip of a fan a look meets every triangle of the
// fan, while another point is at few triangles. So a look that takes long is put off.
template <class Scalar>
bool FirstContact<Scalar>::AreTurnedOver(const FoundPair& pair) {
  const auto surface = [](const Triangle& t) {
    return SurfaceTriangle{{t.corner[0], t.corner[1], t.corner[2]}};
  };
  const SurfaceTriangle moving = surface(pair.movingTriangle);
  const SurfaceTriangle fixed = surface(pair.fixedTriangle);
  const PlacedSolid<Scalar> movingSolid = MovingSolid(m_scene);
  PlacedSolid<Scalar> fixedSolid; // it is seldom needed
  SharedPoints points = PointsInShadow(moving, fixed, m_scene.direction.Vector());
  bool isPutOff = true;
  for (std::size_t most = kFirstLook; isPutOff; most *= kNextLook) {
    isPutOff = false;
    for (std::size_t k = 0; k < points.count; ++k, points.Rotate()) {
      Look look = LookAlong(InnerRay(moving, points.onFirst), movingSolid, most);
      if (look == Look::TurnedOver) {
        if (fixedSolid.empty()) fixedSolid = FixedSolid(m_scene);
        look = LookAlong(InnerRay(fixed, points.onSecond), fixedSolid, most);
      }
      if (look == Look::NotTurnedOver) return false;
      isPutOff = isPutOff || look == Look::PutOff;
    }
  }
  return true;
}

template <class Scalar>
bool FirstContact<Scalar>::IsBestTurnedOver() {
  return m_scene.rule == Rule::Solid && m_best.any && AreTurnedOver(m_best);
}

template <class Scalar>
void FirstContact<Scalar>::BeginAgain() {
  m_leavesOutTurnedOver = true;
  m_earlier = m_best;
  m_best = FoundPair();
  ForgetTies();
}

template <class Scalar>
void FirstContact<Scalar>::KeepTravel() {
  if (!m_best.any || CompareRatios(m_best.travel, m_earlier.travel) != 0) m_best = m_earlier;
}

template <class Scalar>
void FirstContact<Scalar>::Lower(const FoundPair& found) {
  m_best = found;
  m_best.any = true;
  // Travels are rounded from a hundred bits, which can turn the order of two by one unit.
  m_kernelLimit = std::nextafter(found.contact.travel, kInfinity);
  SetLimit(Enlarged(found.travel.rounded.hi));
  m_tieFloor = static_cast<Scalar>(m_doubleLimit * (1.0 - kTieWindow));
}

/// A pair has the same travel as the best pair.
template <class Scalar>
void FirstContact<Scalar>::CountTie() {
  if (++m_tieCount != kTiesBeforePlane) return;
  m_tiePlane.Find(m_scene.direction, m_best.movingTriangle, m_best.fixedTriangle, m_best.contact,
                  m_best.travel);
  ++m_tiePlaneNumber;
}

/// The best travel becomes less.
template <class Scalar>
void FirstContact<Scalar>::ForgetTies() {
  m_tiePlane.Forget();
  m_tieCount = 0;
  for (bool& tied : m_hasTied)
    tied = false;
}

template class FirstContact<float>;
template class FirstContact<double>;

} // namespace gsl_sweep
