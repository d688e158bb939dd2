#ifndef GSL_SWEEP_PATCH_SEARCH_H
#define GSL_SWEEP_PATCH_SEARCH_H

#include "FirstContact.h"

#include <vector>

namespace gsl_sweep {

/// Finds all pairs that touch at the travel of the first contact, by judging the pairs of a walk.
/// It counts all, and keeps those with the lowest numbers.
template <class Scalar>
class PatchSearch {
public:
  static constexpr bool kFromEnd = false;

  /// `first` is the first contact, whose travel is zero at the start.
  PatchSearch(const Scene<Scalar>& scene, const FoundPair& first, bool isStart,
              std::size_t capacity, LeafCache<Scalar>& movingCache, LeafCache<Scalar>& fixedCache);

  TravelRange<Scalar> Range() const { return m_range; }
  bool IsSettled(const NodePair<Scalar>&) const { return false; }
  bool Judge(const NodePair<Scalar>& leaves);

  std::size_t Count() const { return m_count; }
  /// Returns the bounds of the points at which the pairs touch, in the kernel's coordinates.
  const PointBounds& Points() const { return m_points; }

  /// Returns the pairs with the lowest numbers, in their order: as many as the capacity allows.
  const std::vector<FoundTriangles>& Kept();

private:
  using Leaf = LeafTriangles<Scalar>;

  bool AreApart(const LeafPair<Scalar>& leaves, int i, int j) const;
  void JudgeTriangles(const LeafPair<Scalar>& leaves, std::size_t fixedBody, int i, int j);
  void Keep(const FoundTriangles& pair);
  void DropSurplus();

  const Scene<Scalar>& m_scene;
  LeafCache<Scalar>& m_movingCache;
  LeafCache<Scalar>& m_fixedCache;
  const FoundPair& m_first;
  bool m_isStart;
  TravelRange<Scalar> m_range{0, 0};
  double m_doubleLimit = 0.0; ///< the end of the range, in double
  std::size_t m_capacity;
  std::size_t m_count = 0;
  PointBounds m_points;
  std::vector<FoundTriangles> m_kept; ///< up to twice the capacity, or a little more
  bool m_hasDropped = false;
};

extern template class PatchSearch<float>;
extern template class PatchSearch<double>;

} // namespace gsl_sweep

#endif
