#ifndef GSL_SWEEP_FIRST_CONTACT_H
#define GSL_SWEEP_FIRST_CONTACT_H

#include "LargeLeaves.h"
#include "LeafPair.h"
#include "RayCount.h"
#include "TiePlane.h"
#include "Walk.h"

namespace gsl_sweep {

/// A pair of triangles that was found, in the coordinates of the pair kernel.
struct FoundTriangles {
  std::uint32_t moving = 0;
  std::uint64_t fixed = 0; ///< body and triangle
  Triangle movingTriangle, fixedTriangle;
};

/// A pair that was found, with its contact.
struct FoundPair : FoundTriangles {
  bool any = false;
  PairContact contact{};
  ExactRatio travel; ///< of the contact, as a multiple of the direction vector

  /// Returns true when no pair whose numbers are at least these comes before this one.
  bool PrecedesAll(std::uint32_t leastMoving, std::uint64_t leastFixed) const {
    if (!any || leastMoving < moving) return false;
    return leastMoving > moving || leastFixed >= fixed;
  }
};

/// The first contact ahead, found by judging the pairs of a walk. The walk ends early when a pair
/// touches at the start.
///
/// The limit only falls. A pair that is left out lies beyond the limit, or follows the best pair at
/// the same travel. So the result is the first of all pairs with the least travel, in whatever
/// order they are judged.
template <class Scalar>
class FirstContact {
public:
  /// `watch`, which must outlive the search, is called now and then where a pair takes long.
  FirstContact(const Scene<Scalar>& scene, double maxDistance, LeafCache<Scalar>& movingCache,
               LeafCache<Scalar>& fixedCache, const Watch& watch);

  static constexpr bool kFromEnd = false;

  TravelRange<Scalar> Range() const { return {m_least, m_limit}; }
  bool IsSettled(const NodePair<Scalar>& pair);
  template <bool kMoving>
  unsigned Raise(const NodePair<Scalar>& pair, const Boxes<Scalar>& boxes, unsigned mask,
                 Four<Scalar>& from) {
    const TravelRange<double> range{0.0, m_doubleLimit};
    return m_largeLeaves.template Raise<kMoving, kFromEnd>(pair, boxes, mask, range, from);
  }
  /// Returns false when the pair touches at the start, or when the question is cancelled.
  bool Judge(const NodePair<Scalar>& leaves);
  /// Returns true when the watch has returned false.
  bool IsCancelled() const { return m_isCancelled; }

  const FoundPair& Best() const { return m_best; }
  /// Returns how many pairs of triangles were judged exactly.
  std::size_t Judgements() const { return m_judgements; }
  /// Returns true when the best pair, of solids that meet after a positive travel, does not stop
  /// them. The travel is right, and another pair has it too. The result is arbitrary when the
  /// question is cancelled.
  bool IsBestTurnedOver();
  /// Begins again, for a walk within the same travel that leaves out all such pairs, which takes
  /// time.
  void BeginAgain();
  /// Goes back to the pair of the walk before, unless this walk found one with the same travel.
  /// There may be none where triangles are turned over in a part of them alone.
  void KeepTravel();

private:
  using Leaf = LeafTriangles<Scalar>;

  /// What a look from a point of a triangle into its own solid shows.
  enum class Look { TurnedOver, NotTurnedOver, PutOff };

  /// Two triangles of a pair of leaves that no filter keeps apart.
  struct Candidate {
    int moving, fixed;
    Scalar from;  ///< by their boxes
    double first; ///< before this travel they do not touch
  };
  struct Candidates {
    Candidate sorted[kLeafSize * kLeafSize]; ///< the earliest first
    int count = 0;

    void Add(const Candidate& candidate);
  };
  /// A pair of leaves, with the triangles that the plane holds.
  struct PairOfLeaves {
    LeafPair<Scalar> leaves;
    std::size_t fixedBody;
    unsigned movingHeld, fixedHeld;
    bool areUnequal; ///< one leaf is far larger than the other
  };

  void ReachedLeaves(const NodePair<Scalar>& pair, const LeafPair<Scalar>& leaves,
                     unsigned& movingMask, unsigned& fixedMask) const;
  bool IsSettled(const PairOfLeaves& pair, int i, int j, Scalar from);
  bool JudgeOrCollect(const PairOfLeaves& pair, int i, int j, Scalar from, Candidates& candidates);
  bool JudgeCandidates(const PairOfLeaves& pair, const Candidates& candidates);
  bool JudgeTriangles(const LeafPair<Scalar>& leaves, std::size_t fixedBody, int i, int j);
  bool Goes();
  Look LookAlong(const InnerRay& ray, const PlacedSolid<Scalar>& solid, std::size_t most);
  bool AreTurnedOver(const FoundPair& pair);
  void Lower(const FoundPair& found);
  void CountTie();
  void ForgetTies();
  void SetLimit(double travel);
  bool IsNotBefore(const Box<double>& moving, const Box<double>& fixed);

  const Scene<Scalar>& m_scene;
  LeafCache<Scalar>& m_movingCache;
  LeafCache<Scalar>& m_fixedCache;
  LargeLeaves<Scalar> m_largeLeaves;
  ScaledLength m_maxDistance;            ///< decides
  Scalar m_least;                        ///< pairs that part before this travel do not count
  Scalar m_limit;                        ///< travels of the walk beyond it do not matter
  double m_doubleLimit;                  ///< the same, in double
  double m_kernelLimit;                  ///< the same, as a rounded length for the pair kernel
  Scalar m_tieFloor = Box<Scalar>::kFar; ///< from here on a first travel may be the best one
  FoundPair m_best;
  /// The differences of extents that gave the best travel, along each axis.
  DoubleDouble m_tied[3];
  bool m_hasTied[3] = {};
  TiePlane m_tiePlane;
  unsigned m_tiePlaneNumber = 0; ///< of the last plane
  int m_tieCount = 0;            ///< at the best travel
  bool m_leavesOutTurnedOver = false;
  FoundPair m_earlier; ///< of the walk before
  const Watch& m_watch;
  std::size_t m_judgements = 0;
  std::size_t m_looks = 0; ///< at nodes of solids
  bool m_isCancelled = false;
};

extern template class FirstContact<float>;
extern template class FirstContact<double>;

} // namespace gsl_sweep

#endif
