#include "LastContact.h"

#include <cmath>

namespace gsl_sweep {

namespace {

/// Last travels within this part of the best are compared exactly. The part is wider than the
/// margin by which they are enlarged. It decides how often pairs are compared, not the result.
constexpr double kTieWindow = 0x1p-19;

/// A plane takes about as long as two pairs, so it is looked for when this many have tied.
constexpr int kTiesBeforePlane = 4;

TravelDirection Backwards(const TravelDirection& direction) {
  const Coord3& d = direction.Vector();
  return TravelDirection({-d.x, -d.y, -d.z});
}

} // namespace

template <class Scalar>
LastContact<Scalar>::LastContact(const Scene<Scalar>& scene, double maxDistance,
                                 LeafCache<Scalar>& movingCache, LeafCache<Scalar>& fixedCache)
    : m_scene(scene), m_movingCache(movingCache), m_fixedCache(fixedCache),
      m_largeLeaves(scene, movingCache, fixedCache),
      m_maxDistance(scene.scale.DownLength(maxDistance)),
      m_range{LeastEnd<Scalar>(scene.rule),
              scene.AtLeast(scene.WalkTravel(scene.MultipleAtLeast(m_maxDistance)))},
      m_gaps(scene.direction), m_backwards(Backwards(scene.direction)) {}

/// Returns true when a pair cannot come before the best pair: it follows the best pair by number,
/// and the best pair is cut, or an axis parts its boxes no later.
template <class Scalar>
bool LastContact<Scalar>::IsSettled(const NodePair<Scalar>& pair) {
  if (!Follows(-pair.from, pair.moving.least, pair.LeastFixed())) return false;
  return m_isCut ||
         (m_scene.hasExactBoxes && m_gaps.ArePartedAfter(m_scene.moving.InKernel(pair.moving.box),
                                                         m_scene.fixed.InKernel(pair.fixed.box)));
}

/// Returns true when a pair whose last travel is at most `to` follows the best pair by number, and
/// may tie with it.
template <class Scalar>
bool LastContact<Scalar>::Follows(Scalar to, std::uint32_t moving, std::uint64_t fixed) const {
  return (m_isCut || to <= m_tieCeiling) && m_best.PrecedesAll(moving, fixed);
}

template <class Scalar>
bool LastContact<Scalar>::Judge(const NodePair<Scalar>& pair) {
  const Leaf& moving = m_movingCache.Moving(m_scene, pair.moving.ref.Index());
  const Leaf& fixed = m_fixedCache.Fixed(m_scene, pair.fixedBody, pair.fixed.ref.Index());
  const bool mayHold = m_tiePlane.IsSet();
  const PairOfLeaves both{
      LeafPair<Scalar>(m_scene, moving, fixed), pair.fixedBody,
      mayHold ? moving.template HeldBy<true>(m_tiePlane, m_tiePlaneNumber, m_scene) : 0,
      mayHold ? fixed.template HeldBy<false>(m_tiePlane, m_tiePlaneNumber, m_scene) : 0};
  if (mayHold && (moving.distinct & ~both.movingHeld) == 0 &&
      (fixed.distinct & ~both.fixedHeld) == 0 &&
      m_best.PrecedesAll(pair.moving.least, pair.LeastFixed())) {
    return true;
  }
  // A copy of the triangle before it never comes first.
  const LeafPair<Scalar>& leaves = both.leaves;
  const unsigned movingMask =
      moving.distinct & leaves.template ThatReach<true>(m_scene.fixed.At(pair.fixed.box), m_range);
  if (movingMask == 0) return true;
  const unsigned fixedMask = fixed.distinct & leaves.template ThatReach<false>(
                                                  m_scene.moving.At(pair.moving.box), m_range);
  // To judge triangles of unequal sizes exactly takes long, so the latest are judged first.
  const bool areUnequal = LargeLeaves<Scalar>::AreUnequal(pair.moving.box, pair.fixed.box);
  Candidates candidates;
  for (int i = 0; i < moving.count; ++i) {
    if ((movingMask >> i & 1u) == 0) continue;
    for (int first = 0; first < fixed.count; first += 4) {
      Four<Scalar> unusedFrom, to;
      unsigned mask = fixedMask >> first & 15u;
      if (mask != 0) mask &= leaves.Reached(i, first, m_range, unusedFrom, to);
      if (mask != 0 && m_scene.filters) mask &= leaves.TouchingByHeight(i, first, m_doubleFrom);
      if (mask != 0) Collect(both, i, first, mask, to, candidates);
      if (!areUnequal) JudgeCandidates(both, candidates);
    }
  }
  JudgeCandidates(both, candidates);
  return true;
}

/// Adds the pairs of triangle i with triangles first to first + 3 that can be the last to touch.
template <class Scalar>
void LastContact<Scalar>::Collect(const PairOfLeaves& pair, int i, int first, unsigned mask,
                                  const Four<Scalar>& to, Candidates& candidates) {
  for (int lane = 0; mask != 0; ++lane, mask >>= 1) {
    const int j = first + lane;
    if ((mask & 1u) == 0 || IsSettled(pair, i, j, to[lane])) continue;
    Candidate candidate{i, j, to[lane], static_cast<double>(to[lane])};
    if (m_scene.filters) {
      if (pair.leaves.AreShadowsApart(i, j)) continue;
      candidate.last = std::min(candidate.last, pair.leaves.LastTravel(i, j));
      if (candidate.last < m_doubleFrom) continue;
    }
    candidates.Add(candidate);
  }
}

/// Judges the candidates, and takes them away.
template <class Scalar>
void LastContact<Scalar>::JudgeCandidates(const PairOfLeaves& pair, Candidates& candidates) {
  for (int k = 0; k < candidates.count; ++k) {
    const Candidate& next = candidates.sorted[k];
    if (next.last < m_doubleFrom || next.to < m_range.from) continue;
    if (k > 0 && IsSettled(pair, next.moving, next.fixed, next.to)) continue;
    JudgeTriangles(pair.leaves, pair.fixedBody, next.moving, next.fixed);
  }
  candidates.count = 0;
}

/// Candidates of equal travels keep their order.
template <class Scalar>
void LastContact<Scalar>::Candidates::Add(const Candidate& candidate) {
  int place = count++;
  for (; place > 0 && sorted[place - 1].last < candidate.last; --place)
    sorted[place] = sorted[place - 1];
  sorted[place] = candidate;
}

/// Returns true when two triangles, whose boxes part at `to`, cannot come before the best pair.
template <class Scalar>
bool LastContact<Scalar>::IsSettled(const PairOfLeaves& pair, int i, int j, Scalar to) {
  const Leaf& moving = pair.leaves.moving;
  const Leaf& fixed = pair.leaves.fixed;
  const std::uint64_t number = FixedNumber(pair.fixedBody, fixed.number[j]);
  if ((pair.movingHeld >> i & pair.fixedHeld >> j & 1u) != 0 &&
      m_best.PrecedesAll(moving.number[i], number)) {
    return true;
  }
  return Follows(to, moving.number[i], number) &&
         (m_isCut || m_gaps.ArePartedAfter(m_scene.moving.ToKernel(moving.ExactBoxOf(i)),
                                           m_scene.fixed.ToKernel(fixed.ExactBoxOf(j))));
}

template <class Scalar>
void LastContact<Scalar>::JudgeTriangles(const LeafPair<Scalar>& leaves, std::size_t fixedBody,
                                         int i, int j) {
  FoundPair found;
  found.moving = leaves.moving.number[i];
  found.fixed = FixedNumber(fixedBody, leaves.fixed.number[j]);
  found.movingTriangle = leaves.moving.InKernel(m_scene, i);
  found.fixedTriangle = leaves.fixed.InKernel(m_scene, j);
  const LastOutcome outcome =
      JudgeLast(m_scene.direction, found.movingTriangle, found.fixedTriangle, m_scene.rule,
                m_maxDistance, m_kernelFrom, found.contact, found.travel);
  if (outcome == LastOutcome::Apart) return;
  const bool isCut = outcome == LastOutcome::Cut;
  if (m_best.any) {
    int order = static_cast<int>(isCut) - static_cast<int>(m_isCut);
    if (order == 0 && !isCut) {
      order = CompareRatios(found.travel, m_best.travel);
      if (order == 0) CountTie();
    }
    if (order < 0 || (order == 0 && m_best.PrecedesAll(found.moving, found.fixed))) return;
    if (order > 0) ForgetTies();
  }
  Take(found, isCut);
}

/// A pair has the same travel as the best pair.
template <class Scalar>
void LastContact<Scalar>::CountTie() {
  if (++m_tieCount != kTiesBeforePlane) return;
  ExactRatio travel = m_best.travel;
  travel.numerator = Minus(travel.numerator);
  travel.rounded = {-travel.rounded.hi, -travel.rounded.lo};
  m_tiePlane.Find(m_backwards, m_best.movingTriangle, m_best.fixedTriangle, m_best.contact, travel);
  ++m_tiePlaneNumber;
}

/// The best travel becomes greater, or the best pair is cut.
template <class Scalar>
void LastContact<Scalar>::ForgetTies() {
  m_tiePlane.Forget();
  m_tieCount = 0;
}

template <class Scalar>
void LastContact<Scalar>::Take(const FoundPair& found, bool isCut) {
  m_best = found;
  m_best.any = true;
  if (isCut) {
    if (!m_isCut) {
      m_kernelFrom = JustBefore(m_maxDistance);
      m_doubleFrom = m_scene.WalkTravel(m_scene.MultipleAtMost(m_maxDistance));
    }
    m_isCut = true;
  } else {
    // Travels are rounded from a hundred bits, which can turn the order of two by one unit.
    m_kernelFrom = std::nextafter(found.contact.travel, 0.0);
    m_doubleFrom = m_scene.WalkTravel(Reduced(found.travel.rounded.hi));
    m_gaps.SetTravel(found.travel);
  }
  m_range.from = std::max(m_range.from, m_scene.AtMost(m_doubleFrom));
  m_tieCeiling = static_cast<Scalar>(m_doubleFrom * (1.0 + kTieWindow));
}

template class LastContact<float>;
template class LastContact<double>;

} // namespace gsl_sweep
