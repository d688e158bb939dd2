#include "ClearanceSearch.h"

#include "gsl_Arithmetic.h"

#include <algorithm>
#include <cmath>

namespace gsl_sweep {

using gsl_arithmetic::Dot;

namespace {

/// So many pairs wait before they are judged. Judging them earlier sets the floor earlier; judging
/// them later leaves out more.
constexpr std::size_t kMostWaiting = 64;

} // namespace

template <class Scalar>
ClearanceSearch<Scalar>::ClearanceSearch(const Scene<Scalar>& scene, double maxDistance,
                                         LeafCache<Scalar>& movingCache,
                                         LeafCache<Scalar>& fixedCache)
    : m_scene(scene), m_movingCache(movingCache), m_fixedCache(fixedCache),
      m_movingPlace(scene.moving.Offset(), scene.scale),
      m_walkClearance(scene.WalkTravel(scene.clearance)), m_maxDistance(maxDistance),
      m_floor(scene.direction, scene.clearance), m_never(scene.direction, scene.clearance) {
  Lower(scene.MultipleAtLeast(scene.scale.DownLength(maxDistance)));
}

template <class Scalar>
void ClearanceSearch<Scalar>::Lower(double multiple) {
  if (multiple > m_multiple) return;
  m_multiple = multiple;
  m_doubleLimit = m_scene.WalkTravel(multiple);
  m_limit = m_scene.AtLeast(m_doubleLimit);
}

template <class Scalar>
bool ClearanceSearch<Scalar>::IsSettled(const NodePair<Scalar>& pair) {
  if (AreBoxesBeyond(m_movingPlace.At(pair.moving.box), m_scene.fixed.At(pair.fixed.box)))
    return true;
  if (!m_scene.hasExactBoxes) return false;
  const Box<double> moving = m_movingPlace.InKernel(pair.moving.box);
  const Box<double> fixed = m_scene.fixed.InKernel(pair.fixed.box);
  const auto corner = [](const Box<double>& box, unsigned high) {
    return Coord3{(high & 1u) != 0 ? box.high[0] : box.low[0],
                  (high & 2u) != 0 ? box.high[1] : box.low[1],
                  (high & 4u) != 0 ? box.high[2] : box.low[2]};
  };
  // The corners of the boxes that are nearest to each other along the normal.
  const auto isBeyond = [&](const ClearanceFloor& floor) {
    const unsigned signs = floor.Signs();
    return floor.IsNotBefore<1, 1>({corner(moving, signs)}, {corner(fixed, ~signs)});
  };
  return isBeyond(m_never) ||
         (m_best.PrecedesAll(pair.moving.least, pair.LeastFixed()) && isBeyond(m_floor));
}

/// Returns true when two boxes, without the clearance, do not come within it up to the limit. The
/// enlarged boxes meet earlier where the clearance is oblique to the axes.
//
// A plane across the shortest vector between the boxes bounds their distance from below, as in
// ClearancePair.cpp, where the errors are derived.
template <class Scalar>
template <class Any>
bool ClearanceSearch<Scalar>::AreBoxesBeyond(const Box<Any>& moving, const Box<Any>& fixed) const {
  constexpr int kSteps = 3;
  const Coord3& vector = m_scene.direction.Vector();
  const double d[3] = {vector.x, vector.y, vector.z};
  const double error = (moving.Reach() + fixed.Reach()) * 0x1p-48 + m_walkClearance * 0x1p-48;
  double toMeet[3], toPart[3];
  for (int k = 0; k < 3; ++k) {
    toMeet[k] = static_cast<double>(fixed.low[k]) - static_cast<double>(moving.high[k]);
    toPart[k] = static_cast<double>(fixed.high[k]) - static_cast<double>(moving.low[k]);
  }
  double multiple = 0.0;
  for (int step = 0; step < kSteps; ++step) {
    double n[3];
    double square = 0.0;
    for (int k = 0; k < 3; ++k) {
      const double shift = multiple * d[k];
      n[k] = std::max(toMeet[k] - shift, 0.0) + std::min(toPart[k] - shift, 0.0);
      square += n[k] * n[k];
    }
    if (!(square > 0x1p-500)) return false;
    const double scale = (1.0 - 0x1p-49) / std::sqrt(square);
    double gap = -m_walkClearance - error;
    double speed = 0x1p-49;
    for (int k = 0; k < 3; ++k) {
      gap += scale * n[k] * (n[k] > 0.0 ? toMeet[k] : toPart[k]);
      speed += scale * n[k] * d[k];
    }
    if (!(gap > 0.0)) return false;
    if (speed <= 0.0 || gap * (1.0 - 0x1p-50) > m_doubleLimit * speed) return true;
    multiple = gap / speed;
  }
  return false;
}

/// Bit k is set when a plane across the normal keeps triangle k of the fixed leaf beyond the limit.
/// `most` is the extent of the moving triangle along the normal.
template <class Scalar>
unsigned ClearanceSearch<Scalar>::BeyondPlane(const Leaf& fixed, double most, double error) const {
  const double closed = m_doubleLimit * m_speed + most + m_walkClearance + error;
  unsigned beyond = 0;
  for (int k = 0; k < fixed.count; ++k) {
    const double least =
        std::min({Dot(m_normal, fixed.Corner(k, 0)), Dot(m_normal, fixed.Corner(k, 1)),
                  Dot(m_normal, fixed.Corner(k, 2))});
    beyond |= least > closed ? 1u << k : 0u;
  }
  return beyond;
}

template <class Scalar>
bool ClearanceSearch<Scalar>::Judge(const NodePair<Scalar>& pair) {
  const Leaf& moving = m_movingCache.Moving(m_scene, pair.moving.ref.Index());
  const Leaf& fixed = m_fixedCache.Fixed(m_scene, pair.fixedBody, pair.fixed.ref.Index());
  const LeafPair<Scalar> leaves(m_scene, moving, fixed);
  const unsigned movingMask =
      leaves.template ThatReach<true>(m_scene.fixed.At(pair.fixed.box), Range());
  if (movingMask == 0) return true;
  const unsigned fixedMask =
      leaves.template ThatReach<false>(m_scene.moving.At(pair.moving.box), Range());
  const double reach = moving.reach + fixed.reach + m_walkClearance;
  for (int i = 0; i < moving.count; ++i) {
    if ((movingMask >> i & 1u) == 0) continue;
    unsigned fixedLeft = fixedMask;
    if (m_speed > 0.0) {
      const double most =
          std::max({Dot(m_normal, moving.Corner(i, 0)), Dot(m_normal, moving.Corner(i, 1)),
                    Dot(m_normal, moving.Corner(i, 2))});
      fixedLeft &= ~BeyondPlane(fixed, most, (reach + m_doubleLimit) * 0x1p-47);
    }
    for (int first = 0; first < fixed.count; first += 4) {
      Four<Scalar> from, unusedTo;
      unsigned mask = fixedLeft >> first & 15u;
      if (mask != 0) mask &= leaves.Reached(i, first, Range(), from, unusedTo);
      for (int lane = 0; mask != 0; ++lane, mask >>= 1) {
        if ((mask & 1u) == 0 || from[lane] > m_limit) continue;
        if (AreBoxesBeyond(moving.ExactBoxOf(i), fixed.ExactBoxOf(first + lane))) continue;
        if (!JudgeTriangles(leaves, pair.fixedBody, i, first + lane)) return false;
      }
    }
  }
  return true;
}

/// Returns false when the triangles are within the clearance at the start.
template <class Scalar>
bool ClearanceSearch<Scalar>::JudgeTriangles(const LeafPair<Scalar>& leaves, std::size_t fixedBody,
                                             int i, int j) {
  const FoundTriangles pair{leaves.moving.number[i], FixedNumber(fixedBody, leaves.fixed.number[j]),
                            leaves.moving.InKernel(m_scene, i), leaves.fixed.InKernel(m_scene, j)};
  if (IsNotBefore(pair)) return true;
  const ClearanceEstimate estimate = EstimateClearance(
      m_scene.direction, pair.movingTriangle, pair.fixedTriangle, m_scene.clearance, m_multiple);
  if (estimate.isApartByPlane) m_never.SetNever(estimate.normal);
  if (estimate.isApart) return true;
  if (!estimate.isApartAtRest) return JudgeExactly(pair) != ClearanceOutcome::Within;
  if (estimate.most < m_multiple) {
    Lower(Enlarged(estimate.most));
    m_normal = estimate.normal;
    m_speed = Dot(m_normal, m_scene.direction.Vector()) + 0x1p-49;
  }
  m_waiting.push_back({pair, estimate.least});
  if (m_waiting.size() >= kMostWaiting) {
    const auto isLate = [this](const Waiting& waiting) { return waiting.least > m_multiple; };
    m_waiting.erase(std::remove_if(m_waiting.begin(), m_waiting.end(), isLate), m_waiting.end());
    if (m_waiting.size() >= kMostWaiting / 2) JudgeWaiting();
  }
  return true;
}

template <class Scalar>
bool ClearanceSearch<Scalar>::IsNotBefore(const FoundTriangles& pair) const {
  const auto isBeyond = [&pair](const ClearanceFloor& floor) {
    return floor.IsNotBefore(pair.movingTriangle.corner, pair.fixedTriangle.corner);
  };
  return isBeyond(m_never) || (m_best.PrecedesAll(pair.moving, pair.fixed) && isBeyond(m_floor));
}

/// The first pairs, by number, set the floor for those that follow.
template <class Scalar>
void ClearanceSearch<Scalar>::JudgeWaiting() {
  std::sort(m_waiting.begin(), m_waiting.end(), [](const Waiting& a, const Waiting& b) {
    return a.pair.moving != b.pair.moving ? a.pair.moving < b.pair.moving
                                          : a.pair.fixed < b.pair.fixed;
  });
  for (const Waiting& waiting : m_waiting) {
    if (waiting.least > m_multiple || IsNotBefore(waiting.pair)) continue;
    JudgeExactly(waiting.pair);
  }
  m_waiting.clear();
}

template <class Scalar>
ClearanceOutcome ClearanceSearch<Scalar>::JudgeExactly(const FoundTriangles& pair) {
  ++m_judgements;
  ClearanceContact first{};
  const ClearanceOutcome outcome =
      JudgeClearance(m_scene.direction, pair.movingTriangle, pair.fixedTriangle, m_scene.clearance,
                     m_multiple, first);
  if (outcome == ClearanceOutcome::Ahead) Take(pair, first);
  return outcome;
}

template <class Scalar>
void ClearanceSearch<Scalar>::Take(const FoundTriangles& pair, const ClearanceContact& first) {
  const double travel = first.contact.travel;
  if (std::ldexp(travel, m_scene.scale.Exponent()) > m_maxDistance) return;
  if (m_best.any &&
      (travel > m_best.contact.travel ||
       (travel == m_best.contact.travel && m_best.PrecedesAll(pair.moving, pair.fixed)))) {
    return;
  }
  static_cast<FoundTriangles&>(m_best) = pair;
  m_best.any = true;
  m_best.contact = first.contact;
  m_floor.Set(pair.movingTriangle, pair.fixedTriangle, first);
  Lower(Enlarged(first.multiple.hi));
}

template <class Scalar>
const FoundPair& ClearanceSearch<Scalar>::Finish() {
  JudgeWaiting();
  return m_best;
}

template class ClearanceSearch<float>;
template class ClearanceSearch<double>;

} // namespace gsl_sweep
