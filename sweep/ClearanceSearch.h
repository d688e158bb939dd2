#ifndef GSL_SWEEP_CLEARANCE_SEARCH_H
#define GSL_SWEEP_CLEARANCE_SEARCH_H

#include "ClearancePair.h"
#include "FirstContact.h"

namespace gsl_sweep {

/// Finds the least travel at which a pair comes within the clearance, by judging the pairs of a
/// walk. The boxes of the moving body are enlarged by the clearance, see Placement. The walk ends
/// early when a pair is within it at the start.
///
/// The limit only falls. A pair that is left out has a greater travel than the best pair. So the
/// result is the first of all pairs with the least rounded travel, in whatever order they are
/// judged.
template <class Scalar>
class ClearanceSearch {
public:
  static constexpr bool kFromEnd = false;

  ClearanceSearch(const Scene<Scalar>& scene, double maxDistance, LeafCache<Scalar>& movingCache,
                  LeafCache<Scalar>& fixedCache);

  TravelRange<Scalar> Range() const { return {0, m_limit}; }
  bool IsSettled(const NodePair<Scalar>&) const { return false; }
  bool Judge(const NodePair<Scalar>& leaves);

  /// Returns the pair with its contact; its exact travel is not set.
  const FoundPair& Best() const { return m_best; }

private:
  using Leaf = LeafTriangles<Scalar>;

  bool JudgeTriangles(const LeafPair<Scalar>& leaves, std::size_t fixedBody, int i, int j);
  void SetLimit(double multiple);

  const Scene<Scalar>& m_scene;
  LeafCache<Scalar>& m_movingCache;
  LeafCache<Scalar>& m_fixedCache;
  double m_maxDistance;
  double m_multiple; ///< of the direction, in the kernel's coordinates, which is at least the best
  Scalar m_limit;    ///< the same, in the walk
  FoundPair m_best;
};

extern template class ClearanceSearch<float>;
extern template class ClearanceSearch<double>;

} // namespace gsl_sweep

#endif
