#include "PatchSearch.h"

#include <algorithm>

namespace gsl_sweep {

namespace {

/// So many more pairs than the capacity are kept before the surplus is dropped, or as many as the
/// capacity where that is more. So each pair costs a constant number of steps.
constexpr std::size_t kLeastSurplus = 64;

bool Precedes(const FoundTriangles& a, const FoundTriangles& b) {
  return a.moving != b.moving ? a.moving < b.moving : a.fixed < b.fixed;
}

} // namespace

template <class Scalar>
PatchSearch<Scalar>::PatchSearch(const Scene<Scalar>& scene, const FoundPair& first, bool isStart,
                                 std::size_t capacity, LeafCache<Scalar>& movingCache,
                                 LeafCache<Scalar>& fixedCache)
    : m_scene(scene), m_movingCache(movingCache), m_fixedCache(fixedCache), m_first(first),
      m_isStart(isStart), m_capacity(capacity) {
  if (isStart) return;
  const double travel = first.travel.rounded.hi;
  m_doubleLimit = scene.WalkTravel(Enlarged(travel));
  m_range = {scene.AtMost(scene.WalkTravel(Reduced(travel))), scene.AtLeast(m_doubleLimit)};
}

template <class Scalar>
bool PatchSearch<Scalar>::Judge(const NodePair<Scalar>& pair) {
  const Leaf& moving = m_movingCache.Moving(m_scene, pair.moving.ref.Index());
  const Leaf& fixed = m_fixedCache.Fixed(m_scene, pair.fixedBody, pair.fixed.ref.Index());
  const LeafPair<Scalar> leaves(m_scene, moving, fixed);
  const unsigned movingMask =
      leaves.template ThatReach<true>(m_scene.fixed.At(pair.fixed.box), m_range);
  if (movingMask == 0) return true;
  const unsigned fixedMask =
      leaves.template ThatReach<false>(m_scene.moving.At(pair.moving.box), m_range);
  for (int i = 0; i < moving.count; ++i) {
    if ((movingMask >> i & 1u) == 0) continue;
    for (int first = 0; first < fixed.count; first += 4) {
      Four<Scalar> unusedFrom, unusedTo;
      unsigned mask = fixedMask >> first & 15u;
      if (mask != 0) mask &= leaves.Reached(i, first, m_range, unusedFrom, unusedTo);
      if (mask != 0 && m_scene.filters) mask &= leaves.ReachedByHeight(i, first, m_doubleLimit);
      for (int lane = 0; mask != 0; ++lane, mask >>= 1) {
        if ((mask & 1u) == 0 || AreApart(leaves, i, first + lane)) continue;
        JudgeTriangles(leaves, pair.fixedBody, i, first + lane);
      }
    }
  }
  return true;
}

template <class Scalar>
bool PatchSearch<Scalar>::AreApart(const LeafPair<Scalar>& leaves, int i, int j) const {
  return (m_isStart && leaves.AreApartAtStart(i, j)) ||
         (m_scene.filters && leaves.AreShadowsApart(i, j));
}

template <class Scalar>
void PatchSearch<Scalar>::JudgeTriangles(const LeafPair<Scalar>& leaves, std::size_t fixedBody,
                                         int i, int j) {
  const FoundTriangles pair{leaves.moving.number[i], FixedNumber(fixedBody, leaves.fixed.number[j]),
                            leaves.moving.InKernel(m_scene, i), leaves.fixed.InKernel(m_scene, j)};
  const bool touches = m_isStart ? MeetAtStart(m_scene.direction, pair.movingTriangle,
                                               pair.fixedTriangle, m_scene.rule, m_points)
                                 : MeetFirstAt(m_scene.direction, pair.movingTriangle,
                                               pair.fixedTriangle, m_first.travel, m_points);
  if (!touches) return;
  ++m_count;
  Keep(pair);
}

template <class Scalar>
void PatchSearch<Scalar>::Keep(const FoundTriangles& pair) {
  if (m_capacity == 0) return;
  // After the surplus was dropped, the last pair that stays has the greatest number.
  if (m_hasDropped && !Precedes(pair, m_kept[m_capacity - 1])) return;
  m_kept.push_back(pair);
  if (m_kept.size() - std::min(m_kept.size(), m_capacity) >= std::max(m_capacity, kLeastSurplus))
    DropSurplus();
}

template <class Scalar>
void PatchSearch<Scalar>::DropSurplus() {
  const auto last = m_kept.begin() + static_cast<std::ptrdiff_t>(m_capacity - 1);
  std::nth_element(m_kept.begin(), last, m_kept.end(), Precedes);
  m_kept.resize(m_capacity);
  m_hasDropped = true;
}

template <class Scalar>
const std::vector<FoundTriangles>& PatchSearch<Scalar>::Kept() {
  std::sort(m_kept.begin(), m_kept.end(), Precedes);
  if (m_kept.size() > m_capacity) m_kept.resize(m_capacity);
  return m_kept;
}

template class PatchSearch<float>;
template class PatchSearch<double>;

} // namespace gsl_sweep
