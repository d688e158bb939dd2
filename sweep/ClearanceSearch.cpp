#include "ClearanceSearch.h"

#include "gsl_Arithmetic.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace gsl_sweep {

using gsl_arithmetic::Dot;

namespace {

/// So many pairs wait before they are judged. Judging them earlier sets the floor earlier; judging
/// them later leaves out more.
constexpr std::size_t kMostWaiting = 64;

template <class Scalar>
Double4 Wide(const Four<Scalar>& a) {
  const double all[4] = {a[0], a[1], a[2], a[3]};
  return Double4::At(all);
}

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
  m_wantsLimit = false;
  if (multiple > m_multiple) return;
  m_multiple = multiple;
  m_doubleLimit = m_scene.WalkTravel(multiple);
  m_limit = m_scene.AtLeast(m_doubleLimit);
}

template <class Scalar>
bool ClearanceSearch<Scalar>::IsSettled(const NodePair<Scalar>& pair) {
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

/// Returns multiples before which four pairs of boxes do not come within the clearance, at least
/// those that are passed. A pair that never does has an infinite one. `toMeet` and `toPart` are
/// what lies between the fronts and the backs of the boxes, and `reach` is that of both.
//
// A plane across the shortest vector between the boxes bounds their distance from below, as in
// ClearancePair.cpp, where the errors are derived. Each step begins where the last one ended.
template <class Scalar>
Double4 ClearanceSearch<Scalar>::Approached(const Double4 (&toMeet)[3], const Double4 (&toPart)[3],
                                            double reach, Double4 multiple) const {
  constexpr int kSteps = 3;
  const Coord3& vector = m_scene.direction.Vector();
  const Double4 d[3] = {Double4::Of(vector.x), Double4::Of(vector.y), Double4::Of(vector.z)};
  const Double4 zero = Double4::Of(0.0);
  const Double4 closed = Double4::Of(m_walkClearance + (reach + m_walkClearance) * 0x1p-48);
  for (int step = 0; step < kSteps; ++step) {
    Double4 ahead[3], back[3];
    Double4 square = Double4::Of(0x1p-500);
    for (int k = 0; k < 3; ++k) {
      const Double4 shift = multiple * d[k];
      ahead[k] = Most(toMeet[k] - shift, zero);
      back[k] = Least(toPart[k] - shift, zero);
      square = square + (ahead[k] * ahead[k] + back[k] * back[k]);
    }
    const Double4 scale = Double4::Of(1.0 - 0x1p-49) / Root(square);
    Double4 gap = -closed;
    Double4 speed = Double4::Of(0x1p-49);
    for (int k = 0; k < 3; ++k) {
      gap = gap + scale * ahead[k] * toMeet[k] + scale * back[k] * toPart[k];
      speed = speed + scale * (ahead[k] + back[k]) * d[k];
    }
    const Double4 closes = Choose(zero, speed, gap / speed * Double4::Of(1.0 - 0x1p-48),
                                  Double4::Of(Box<double>::kFar));
    // Where the gap is not a number, the multiple is infinite already, and stays so.
    multiple = Most(Choose(zero, gap, closes, zero), multiple);
  }
  return multiple;
}

template <class Scalar>
unsigned ClearanceSearch<Scalar>::ThoseUpToLimit(const Double4& multiple) const {
  return AtMost(multiple, Double4::Of(std::min(m_doubleLimit, std::numeric_limits<double>::max())));
}

template <class Scalar>
template <bool kMoving>
unsigned ClearanceSearch<Scalar>::Raise(const NodePair<Scalar>& pair, const Boxes<Scalar>& boxes,
                                        unsigned mask, Four<Scalar>& first) {
  const Placement<Scalar>& place = kMoving ? m_movingPlace : m_scene.fixed;
  const Box<Scalar> moving = m_movingPlace.At(pair.moving.box);
  const Box<Scalar> fixed = m_scene.fixed.At(pair.fixed.box);
  const Box<Scalar>& one = kMoving ? fixed : moving;
  Boxes<Scalar> room;
  const Boxes<Scalar>& four = place.At(boxes, room);
  Double4 toMeet[3], toPart[3];
  for (int k = 0; k < 3; ++k) {
    const Double4 low = Wide(four.low[k]);
    const Double4 high = Wide(four.high[k]);
    const Double4 oneLow = Double4::Of(one.low[k]);
    const Double4 oneHigh = Double4::Of(one.high[k]);
    toMeet[k] = kMoving ? oneLow - high : low - oneHigh;
    toPart[k] = kMoving ? oneHigh - low : high - oneLow;
  }
  const double reach = moving.Reach() + fixed.Reach();
  const Double4 multiple = Approached(toMeet, toPart, reach, Wide(first));
  for (int lane = 0; lane < 4; ++lane)
    first.Set(lane, std::max(first[lane], m_scene.AtMost(multiple[lane])));
  mask &= ThoseUpToLimit(multiple);
  if (mask != 0) mask &= ~ApartByPlanes<kMoving>(pair, four, one, reach, multiple);
  return mask;
}

/// Does the same for the exact boxes of a moving triangle and of four fixed triangles.
template <class Scalar>
Double4 ClearanceSearch<Scalar>::ApproachedTriangles(const LeafPair<Scalar>& leaves, int i,
                                                     int first) const {
  const Box<double> box = leaves.moving.ExactBoxOf(i);
  Double4 toMeet[3], toPart[3];
  for (int k = 0; k < 3; ++k) {
    toMeet[k] = leaves.fixed.LowFrom(first, k) - Double4::Of(box.high[k]);
    toPart[k] = leaves.fixed.HighFrom(first, k) - Double4::Of(box.low[k]);
  }
  return Approached(toMeet, toPart, leaves.moving.reach + leaves.fixed.reach, Double4::Of(0.0));
}

/// Bit k is set when the plane keeps triangle first + k of the fixed leaf beyond the limit, or
/// apart from the moving triangle for as long. `most` is the extent of the moving triangle along
/// the normal. The pairs are not within the clearance before the multiples `from`.
template <class Scalar>
unsigned ClearanceSearch<Scalar>::BeyondPlane(const Plane& plane, double most,
                                              const LeafPair<Scalar>& leaves, int first,
                                              const Double4& from) const {
  const auto& corner = leaves.fixed.corner;
  const Coord3& n = plane.normal;
  const auto along = [&](int c) {
    return Double4::Of(n.x) * Double4::At(&corner[3 * c][first]) +
           Double4::Of(n.y) * Double4::At(&corner[3 * c + 1][first]) +
           Double4::Of(n.z) * Double4::At(&corner[3 * c + 2][first]);
  };
  const Double4 gap = Least(along(0), Least(along(1), along(2))) - Double4::Of(most);
  return StaysOpen(plane, gap, leaves.moving.reach + leaves.fixed.reach, from);
}

/// Bit k is set where a gap along the plane's normal does not close to the clearance from the
/// multiple `from` up to the limit. `reach` is that of both sides.
//
// The gap is linear in the travel, so it stays open where it is at both ends.
template <class Scalar>
unsigned ClearanceSearch<Scalar>::StaysOpen(const Plane& plane, const Double4& gap, double reach,
                                            const Double4& from) const {
  const double closed = m_walkClearance + (reach + m_walkClearance) * 0x1p-47;
  const Double4 wide = gap - Double4::Of(closed);
  const Double4 speed = Double4::Of(plane.speed);
  const Double4 open = Double4::Of(std::numeric_limits<double>::min());
  const unsigned atFrom = AtMost(open, wide - from * speed);
  if (plane.speed <= 0.0) return atFrom;
  if (m_doubleLimit == Box<double>::kFar) return 0;
  return atFrom & AtMost(open, wide - Double4::Of(m_doubleLimit) * speed);
}

/// Returns the extent of a box, or of a leaf's triangles, along a normal: the greatest, or the
/// least.
template <class Scalar>
template <bool kMost>
double ClearanceSearch<Scalar>::ExtentAlong(const Coord3& normal, const Box<Scalar>& box,
                                            const Leaf* leaf) const {
  const double sign = kMost ? 1.0 : -1.0;
  const double n[3] = {sign * normal.x, sign * normal.y, sign * normal.z};
  double extent = 0.0;
  for (int k = 0; k < 3; ++k)
    extent += n[k] * static_cast<double>(n[k] > 0.0 ? box.high[k] : box.low[k]);
  if (leaf == nullptr) return sign * extent;
  double ofLeaf = -Box<double>::kFar;
  for (int k = 0; k < leaf->count; ++k) {
    for (int c = 0; c < 3; ++c)
      ofLeaf = std::max(ofLeaf, sign * Dot(normal, leaf->Corner(k, c)));
  }
  return sign * std::min(extent, ofLeaf);
}

/// Returns the children that the planes of the last pairs keep apart, or beyond the limit.
template <class Scalar>
template <bool kMoving>
unsigned ClearanceSearch<Scalar>::ApartByPlanes(const NodePair<Scalar>& pair,
                                                const Boxes<Scalar>& four, const Box<Scalar>& other,
                                                double reach, const Double4& from) {
  // The planes are set in their order, but for the first.
  if (!m_planes[0].isSet && !m_planes[1].isSet) return 0;
  const bool isLeaf = kMoving ? pair.fixed.ref.IsLeaf() : pair.moving.ref.IsLeaf();
  const Leaf* leaf = nullptr;
  if (isLeaf) {
    leaf = kMoving ? &m_fixedCache.Fixed(m_scene, pair.fixedBody, pair.fixed.ref.Index())
                   : &m_movingCache.Moving(m_scene, pair.moving.ref.Index());
  }
  unsigned apart = 0;
  for (const Plane& plane : m_planes) {
    if (!plane.isSet) continue;
    const double n[3] = {plane.normal.x, plane.normal.y, plane.normal.z};
    Double4 extent = Double4::Of(0.0);
    for (int k = 0; k < 3; ++k) {
      const bool isHigh = (n[k] > 0.0) == kMoving;
      extent = extent + Double4::Of(n[k]) * Wide(isHigh ? four.high[k] : four.low[k]);
    }
    const Double4 one = Double4::Of(ExtentAlong<!kMoving>(plane.normal, other, leaf));
    apart |= StaysOpen(plane, kMoving ? one - extent : extent - one, reach, from);
  }
  return apart;
}

/// Clears the bits of the triangles that do not come near the box or the slab of the other leaf.
template <class Scalar>
void ClearanceSearch<Scalar>::ReachedLeaves(const NodePair<Scalar>& pair,
                                            const LeafPair<Scalar>& leaves, unsigned& movingMask,
                                            unsigned& fixedMask) const {
  movingMask &= leaves.template ThatReach<true>(m_scene.fixed.At(pair.fixed.box), Range());
  if (movingMask != 0)
    fixedMask &= leaves.template ThatReach<false>(m_scene.moving.At(pair.moving.box), Range());
  if (!m_scene.filters || m_doubleLimit == Box<double>::kFar) return;
  if (movingMask != 0)
    movingMask &= leaves.template ThatReach<true>(pair.fixed.slab, m_doubleLimit);
  // With an offset the slab of the moving body is at another place.
  if (movingMask != 0 && fixedMask != 0 && !m_scene.moving.HasOffset())
    fixedMask &= leaves.template ThatReach<false>(pair.moving.slab, m_doubleLimit);
}

template <class Scalar>
bool ClearanceSearch<Scalar>::Judge(const NodePair<Scalar>& pair) {
  if (m_doubleLimit == Box<double>::kFar && m_withoutLimit < kMostWithoutLimit) {
    m_wantsLimit = ++m_withoutLimit == kMostWithoutLimit;
    if (m_wantsLimit) return false;
  }
  const Leaf& moving = m_movingCache.Moving(m_scene, pair.moving.ref.Index());
  const Leaf& fixed = m_fixedCache.Fixed(m_scene, pair.fixedBody, pair.fixed.ref.Index());
  const LeafPair<Scalar> leaves(m_scene, moving, fixed);
  const bool followsBest = m_best.PrecedesAll(pair.moving.least, pair.LeastFixed());
  const bool mayHold = followsBest && m_floor.Holds();
  const unsigned movingHeld =
      mayHold ? moving.template HeldBy<true>(m_floor, m_floorNumber, m_scene) : 0;
  const unsigned fixedHeld =
      mayHold ? fixed.template HeldBy<false>(m_floor, m_floorNumber, m_scene) : 0;
  unsigned movingMask = moving.distinct;
  unsigned fixedMask = fixed.distinct;
  if ((movingMask & ~movingHeld) == 0 && (fixedMask & ~fixedHeld) == 0) return true;
  ReachedLeaves(pair, leaves, movingMask, fixedMask);
  if (fixedMask == 0) return true;
  for (int i = 0; i < moving.count; ++i) {
    if ((movingMask >> i & 1u) == 0) continue;
    const unsigned fixedLeft = (movingHeld >> i & 1u) != 0 ? fixedMask & ~fixedHeld : fixedMask;
    if (!JudgeMoving(leaves, pair.fixedBody, i, fixedLeft)) return false;
  }
  return true;
}

/// Judges a moving triangle with those of the fixed triangles whose bits are set. Returns false
/// when some are within the clearance at the start.
template <class Scalar>
bool ClearanceSearch<Scalar>::JudgeMoving(const LeafPair<Scalar>& leaves, std::size_t fixedBody,
                                          int i, unsigned fixedMask) {
  const auto mostAlong = [&](const Plane& plane) {
    const Coord3& n = plane.normal;
    return std::max({Dot(n, leaves.moving.Corner(i, 0)), Dot(n, leaves.moving.Corner(i, 1)),
                     Dot(n, leaves.moving.Corner(i, 2))});
  };
  for (int first = 0; first < leaves.fixed.count; first += 4) {
    Four<Scalar> from, unusedTo;
    unsigned mask = fixedMask >> first & 15u;
    if (mask != 0) mask &= leaves.Reached(i, first, Range(), from, unusedTo);
    if (mask != 0 && m_scene.filters) mask &= leaves.ReachedByHeight(i, first, m_doubleLimit);
    if (mask == 0) continue;
    const Double4 least = ApproachedTriangles(leaves, i, first);
    mask &= ThoseUpToLimit(least);
    for (int lane = 0; mask != 0 && lane < 4; ++lane) {
      // The planes change with each pair that is judged.
      for (const Plane& plane : m_planes) {
        if (mask != 0 && plane.isSet)
          mask &= ~BeyondPlane(plane, mostAlong(plane), leaves, first, least);
      }
      while (lane < 4 && (mask >> lane & 1u) == 0)
        ++lane;
      if (lane == 4) break;
      mask &= ~(1u << lane);
      if (!JudgeTriangles(leaves, fixedBody, i, first + lane, least[lane])) return false;
    }
  }
  return true;
}

/// Returns false when the triangles are within the clearance at the start. They are not within it
/// before the multiple `from`.
template <class Scalar>
bool ClearanceSearch<Scalar>::JudgeTriangles(const LeafPair<Scalar>& leaves, std::size_t fixedBody,
                                             int i, int j, double from) {
  const FoundTriangles pair{leaves.moving.number[i], FixedNumber(fixedBody, leaves.fixed.number[j]),
                            leaves.moving.InKernel(m_scene, i), leaves.fixed.InKernel(m_scene, j)};
  if (IsNotBefore(pair)) return true;
  const ClearanceEstimate estimate =
      EstimateClearance(m_scene.direction, pair.movingTriangle, pair.fixedTriangle,
                        m_scene.clearance, m_multiple, m_scene.KernelTravel(from));
  if (estimate.isApartByPlane) m_never.SetNever(estimate.normal);
  if (estimate.isApart) {
    if (!estimate.isApartByPlane) {
      m_parting = m_parting + 1 < kPlanes ? m_parting + 1 : 1;
      m_planes[m_parting].Set(estimate.normal, m_scene.direction);
    }
    return true;
  }
  if (!estimate.isApartAtRest) return JudgeExactly(pair) != ClearanceOutcome::Within;
  if (estimate.most < m_multiple) {
    Lower(Enlarged(estimate.most));
    m_planes[0].Set(estimate.normal, m_scene.direction);
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
  ++m_floorNumber;
  Lower(Enlarged(first.multiple.hi));
}

template <class Scalar>
const FoundPair& ClearanceSearch<Scalar>::Finish() {
  JudgeWaiting();
  return m_best;
}

template class ClearanceSearch<float>;
template class ClearanceSearch<double>;
template unsigned ClearanceSearch<float>::Raise<true>(const NodePair<float>&, const Boxes<float>&,
                                                      unsigned, Float4&);
template unsigned ClearanceSearch<float>::Raise<false>(const NodePair<float>&, const Boxes<float>&,
                                                       unsigned, Float4&);
template unsigned ClearanceSearch<double>::Raise<true>(const NodePair<double>&,
                                                       const Boxes<double>&, unsigned, Double4&);
template unsigned ClearanceSearch<double>::Raise<false>(const NodePair<double>&,
                                                        const Boxes<double>&, unsigned, Double4&);

} // namespace gsl_sweep
