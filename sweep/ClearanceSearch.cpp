#include "ClearanceSearch.h"

#include <cmath>

namespace gsl_sweep {

template <class Scalar>
ClearanceSearch<Scalar>::ClearanceSearch(const Scene<Scalar>& scene, double maxDistance,
                                         LeafCache<Scalar>& movingCache,
                                         LeafCache<Scalar>& fixedCache)
    : m_scene(scene), m_movingCache(movingCache), m_fixedCache(fixedCache),
      m_maxDistance(maxDistance) {
  SetLimit(scene.MultipleAtLeast(scene.scale.DownLength(maxDistance)));
}

template <class Scalar>
void ClearanceSearch<Scalar>::SetLimit(double multiple) {
  m_multiple = multiple;
  m_limit = m_scene.AtLeast(m_scene.WalkTravel(multiple));
}

template <class Scalar>
bool ClearanceSearch<Scalar>::Judge(const NodePair<Scalar>& pair) {
  const Leaf& moving = m_movingCache.Moving(m_scene, pair.moving.ref.Index());
  const Leaf& fixed = m_fixedCache.Fixed(m_scene, pair.fixedBody, pair.fixed.ref.Index());
  const LeafPair<Scalar> leaves(m_scene, moving, fixed);
  unsigned movingMask = leaves.template ThatReach<true>(m_scene.fixed.At(pair.fixed.box), Range());
  if (movingMask == 0) return true;
  const unsigned fixedMask =
      leaves.template ThatReach<false>(m_scene.moving.At(pair.moving.box), Range());
  for (int i = 0; i < moving.count; ++i) {
    if ((movingMask >> i & 1u) == 0) continue;
    for (int first = 0; first < fixed.count; first += 4) {
      Four<Scalar> from, unusedTo;
      unsigned mask = fixedMask >> first & 15u;
      if (mask != 0) mask &= leaves.Reached(i, first, Range(), from, unusedTo);
      for (int lane = 0; mask != 0; ++lane, mask >>= 1) {
        if ((mask & 1u) == 0 || from[lane] > m_limit) continue;
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
  FoundPair found;
  found.any = true;
  found.moving = leaves.moving.number[i];
  found.fixed = FixedNumber(fixedBody, leaves.fixed.number[j]);
  found.movingTriangle = leaves.moving.InKernel(m_scene, i);
  found.fixedTriangle = leaves.fixed.InKernel(m_scene, j);
  ClearanceContact first{};
  switch (JudgeClearance(m_scene.direction, found.movingTriangle, found.fixedTriangle,
                         m_scene.clearance, m_multiple, first)) {
  case ClearanceOutcome::Apart:
    return true;
  case ClearanceOutcome::Within:
    return false;
  case ClearanceOutcome::Ahead:
    break;
  }
  found.contact = first.contact;
  const double travel = found.contact.travel;
  if (std::ldexp(travel, m_scene.scale.Exponent()) > m_maxDistance) return true;
  if (m_best.any &&
      (travel > m_best.contact.travel ||
       (travel == m_best.contact.travel && m_best.PrecedesAll(found.moving, found.fixed)))) {
    return true;
  }
  m_best = found;
  SetLimit(Enlarged(first.multiple));
  return true;
}

template class ClearanceSearch<float>;
template class ClearanceSearch<double>;

} // namespace gsl_sweep
