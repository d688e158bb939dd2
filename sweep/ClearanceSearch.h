#ifndef GSL_SWEEP_CLEARANCE_SEARCH_H
#define GSL_SWEEP_CLEARANCE_SEARCH_H

#include "ClearanceFloor.h"
#include "FirstContact.h"

#include <vector>

namespace gsl_sweep {

/// Finds the least travel at which a pair comes within the clearance, by judging the pairs of a
/// walk. The boxes of the moving body are enlarged by the clearance, see Placement. The walk ends
/// early when a pair is within it at the start.
///
/// Rounded numbers bound the travel of each pair. The pairs that these bounds do not exclude wait,
/// and are judged exactly a few at a time. The limit only falls. A pair that is left out has a
/// greater travel than the best pair, or follows it and its rounded travel is not less. So the
/// result is the first of all pairs with the least rounded travel, in whatever order they are
/// judged.
template <class Scalar>
class ClearanceSearch {
public:
  static constexpr bool kFromEnd = false;

  ClearanceSearch(const Scene<Scalar>& scene, double maxDistance, LeafCache<Scalar>& movingCache,
                  LeafCache<Scalar>& fixedCache);

  TravelRange<Scalar> Range() const { return {0, m_limit}; }
  bool IsSettled(const NodePair<Scalar>& pair);
  bool Judge(const NodePair<Scalar>& leaves);
  /// Returns the visits that exact judgements have cost.
  std::size_t ExtraVisits() const { return kVisitsOfJudgement * m_judgements; }

  /// Judges the pairs that still wait, and returns the best pair with its contact. Its exact travel
  /// is not set.
  const FoundPair& Finish();

private:
  /// An exact judgement takes at least as long as this number of visits.
  static constexpr std::size_t kVisitsOfJudgement = 64;

  using Leaf = LeafTriangles<Scalar>;
  struct Waiting {
    FoundTriangles pair;
    double least; ///< multiple of the direction
  };

  template <class Any>
  bool AreBoxesBeyond(const Box<Any>& moving, const Box<Any>& fixed) const;
  unsigned BeyondPlane(const Leaf& fixed, double most, double error) const;
  bool JudgeTriangles(const LeafPair<Scalar>& leaves, std::size_t fixedBody, int i, int j);
  void JudgeWaiting();
  ClearanceOutcome JudgeExactly(const FoundTriangles& pair);
  void Take(const FoundTriangles& pair, const ClearanceContact& first);
  void Lower(double multiple);
  bool IsNotBefore(const FoundTriangles& pair) const;

  const Scene<Scalar>& m_scene;
  LeafCache<Scalar>& m_movingCache;
  LeafCache<Scalar>& m_fixedCache;
  Placement<Scalar> m_movingPlace; ///< without the clearance
  double m_walkClearance;
  double m_maxDistance;
  double m_multiple = Box<double>::kFar; ///< of the direction, at least that of the result
  double m_doubleLimit = 0.0;            ///< the same, in the walk
  Scalar m_limit = 0;                    ///< the same
  Coord3 m_normal{0.0, 0.0, 0.0};        ///< of the pair that lowered the limit
  double m_speed = 0.0;                  ///< at least the normal's product with the direction
  std::vector<Waiting> m_waiting;
  std::size_t m_judgements = 0;
  FoundPair m_best;
  ClearanceFloor m_floor; ///< through the best pair
  ClearanceFloor m_never; ///< keeps pairs apart forever that only twice the precision tells apart
};

extern template class ClearanceSearch<float>;
extern template class ClearanceSearch<double>;

} // namespace gsl_sweep

#endif
