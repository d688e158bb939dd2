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

  /// Returns true when the walk was ended because no pair that it judged set a limit. Bodies that
  /// pass nearly have many such pairs. The walk goes on after Lower(), from its beginning.
  bool WantsLimit() const { return m_wantsLimit; }
  /// Says that some pair is within the clearance at this multiple of the direction, or before it.
  void Lower(double multiple);

  TravelRange<Scalar> Range() const { return {0, m_limit}; }
  bool IsSettled(const NodePair<Scalar>& pair);
  /// Raises the first travels of children of one side, by the distance of their boxes, without the
  /// clearance, from the box of the other side. The enlarged boxes meet earlier where the clearance
  /// is oblique to the axes.
  template <bool kMoving>
  unsigned Raise(const NodePair<Scalar>& pair, const Boxes<Scalar>& boxes, unsigned mask,
                 Four<Scalar>& first);
  bool Judge(const NodePair<Scalar>& leaves);
  /// Returns the visits that exact judgements have cost.
  std::size_t ExtraVisits() const { return kVisitsOfJudgement * m_judgements; }

  /// Judges the pairs that still wait, and returns the best pair with its contact. Its exact travel
  /// is not set.
  const FoundPair& Finish();

private:
  /// An exact judgement takes at least as long as this number of visits.
  static constexpr std::size_t kVisitsOfJudgement = 64;
  /// So many pairs of leaves are judged without a limit.
  static constexpr int kMostWithoutLimit = 256;
  static constexpr int kPlanes = 4;

  using Leaf = LeafTriangles<Scalar>;
  /// The normal of a plane between two triangles. Its length is at most 1.
  struct Plane {
    bool isSet = false;
    Coord3 normal{0.0, 0.0, 0.0};
    /// At least the normal's product with the direction; the rest covers the rounding of a product
    /// of the speed and a travel.
    double speed = 0.0;

    void Set(const Coord3& across, const TravelDirection& direction) {
      isSet = true;
      normal = across;
      speed = gsl_arithmetic::Dot(normal, direction.Vector()) + 0x1p-46;
    }
  };
  struct Waiting {
    FoundTriangles pair;
    double least; ///< multiple of the direction
  };

  Double4 Approached(const Double4 (&toMeet)[3], const Double4 (&toPart)[3], double reach,
                     Double4 multiple) const;
  unsigned ThoseUpToLimit(const Double4& multiple) const;
  Double4 ApproachedTriangles(const LeafPair<Scalar>& leaves, int i, int first) const;
  unsigned BeyondPlane(const Plane& plane, double most, const LeafPair<Scalar>& leaves, int first,
                       const Double4& from) const;
  unsigned StaysOpen(const Plane& plane, const Double4& gap, double reach,
                     const Double4& from) const;
  template <bool kMost>
  double ExtentAlong(const Coord3& normal, const Box<Scalar>& box, const Leaf* leaf) const;
  template <bool kMoving>
  unsigned ApartByPlanes(const NodePair<Scalar>& pair, const Boxes<Scalar>& four,
                         const Box<Scalar>& other, double reach, const Double4& from);
  bool JudgeMoving(const LeafPair<Scalar>& leaves, std::size_t fixedBody, int i,
                   unsigned fixedMask);
  void ReachedLeaves(const NodePair<Scalar>& pair, const LeafPair<Scalar>& leaves,
                     unsigned& movingMask, unsigned& fixedMask) const;
  bool JudgeTriangles(const LeafPair<Scalar>& leaves, std::size_t fixedBody, int i, int j,
                      double from);
  void JudgeWaiting();
  ClearanceOutcome JudgeExactly(const FoundTriangles& pair);
  void Take(const FoundTriangles& pair, const ClearanceContact& first);
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
  /// Between the pair that lowered the limit, and between the last pairs that were found to stay
  /// apart. Their neighbours are mostly kept apart by the same planes.
  Plane m_planes[kPlanes];
  int m_parting = 0; ///< the last plane that was set
  std::vector<Waiting> m_waiting;
  std::size_t m_judgements = 0;
  int m_withoutLimit = 0;
  bool m_wantsLimit = false;
  FoundPair m_best;
  ClearanceFloor m_floor;     ///< through the best pair
  unsigned m_floorNumber = 0; ///< of the last floor
  ClearanceFloor m_never; ///< keeps pairs apart forever that only twice the precision tells apart
};

extern template class ClearanceSearch<float>;
extern template class ClearanceSearch<double>;

} // namespace gsl_sweep

#endif
