#ifndef GSL_SWEEP_START_SEARCH_H
#define GSL_SWEEP_START_SEARCH_H

#include "FirstContact.h"

namespace gsl_sweep {

/// Finds the first pair, by number, that touches, or is within the clearance, at the start.
template <class Scalar>
class StartSearch {
public:
  StartSearch(const Scene<Scalar>& scene, LeafCache<Scalar>& movingCache,
              LeafCache<Scalar>& fixedCache, const Watch& watch,
              std::vector<NodePair<Scalar>>& stack)
      : m_scene(scene), m_movingCache(movingCache), m_fixedCache(fixedCache), m_watch(watch),
        m_stack(stack) {}

  WalkEnd Run();

  const FoundPair& Best() const { return m_best; }

private:
  void PushRoots();
  template <bool kMoving>
  void Expand(const NodePair<Scalar>& pair);
  void Judge(const NodePair<Scalar>& leaves);
  bool AreBoxesApart(const LeafPair<Scalar>& leaves, int i, int j) const;
  bool Counts(const LeafPair<Scalar>& leaves, int i, int j) const;

  const Scene<Scalar>& m_scene;
  LeafCache<Scalar>& m_movingCache;
  LeafCache<Scalar>& m_fixedCache;
  const Watch& m_watch;
  std::vector<NodePair<Scalar>>& m_stack;
  FoundPair m_best;
};

extern template class StartSearch<float>;
extern template class StartSearch<double>;

} // namespace gsl_sweep

#endif
