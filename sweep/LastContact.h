#ifndef GSL_SWEEP_LAST_CONTACT_H
#define GSL_SWEEP_LAST_CONTACT_H

#include "AxisGaps.h"
#include "FirstContact.h"
#include "LargeLeaves.h"
#include "TiePlane.h"

namespace gsl_sweep {

/// The last contact within the greatest distance, found by judging the pairs of a walk from its
/// end.
///
/// A pair that still touches at the greatest distance is cut there. The range only narrows. A pair
/// that is left out parts before the range, or follows the best pair at the same travel. So the
/// result is the first of all pairs with the greatest travel, in whatever order they are judged.
template <class Scalar>
class LastContact {
public:
  static constexpr bool kFromEnd = true;

  LastContact(const Scene<Scalar>& scene, double maxDistance, LeafCache<Scalar>& movingCache,
              LeafCache<Scalar>& fixedCache);

  TravelRange<Scalar> Range() const { return m_range; }
  bool IsSettled(const NodePair<Scalar>& pair);
  template <bool kMoving>
  unsigned Raise(const NodePair<Scalar>& pair, const Boxes<Scalar>& boxes, unsigned mask,
                 Four<Scalar>& from) {
    const TravelRange<double> range{m_doubleFrom, m_range.to};
    return m_largeLeaves.template Raise<kMoving, kFromEnd>(pair, boxes, mask, range, from);
  }
  bool Judge(const NodePair<Scalar>& leaves);

  /// Returns the pair with its last contact. Of a pair that is cut only the numbers and the
  /// triangles are set.
  const FoundPair& Best() const { return m_best; }
  bool IsCut() const { return m_isCut; }

private:
  using Leaf = LeafTriangles<Scalar>;

  /// Two triangles of a pair of leaves that no filter keeps apart.
  struct Candidate {
    int moving, fixed;
    Scalar to;   ///< by their boxes
    double last; ///< after this travel they do not touch
  };
  struct Candidates {
    Candidate sorted[kLeafSize * kLeafSize]; ///< the latest first
    int count = 0;

    void Add(const Candidate& candidate);
  };
  /// A pair of leaves, with the triangles that the plane holds.
  struct PairOfLeaves {
    LeafPair<Scalar> leaves;
    std::size_t fixedBody;
    unsigned movingHeld, fixedHeld;
  };

  bool Follows(Scalar to, std::uint32_t moving, std::uint64_t fixed) const;
  void Collect(const PairOfLeaves& pair, int i, int first, unsigned mask, const Four<Scalar>& to,
               Candidates& candidates);
  void JudgeCandidates(const PairOfLeaves& pair, Candidates& candidates);
  bool IsSettled(const PairOfLeaves& pair, int i, int j, Scalar to);
  void JudgeTriangles(const LeafPair<Scalar>& leaves, std::size_t fixedBody, int i, int j);
  void Take(const FoundPair& found, bool isCut);
  void CountTie();
  void ForgetTies();

  const Scene<Scalar>& m_scene;
  LeafCache<Scalar>& m_movingCache;
  LeafCache<Scalar>& m_fixedCache;
  LargeLeaves<Scalar> m_largeLeaves;
  ScaledLength m_maxDistance; ///< decides
  TravelRange<Scalar> m_range;
  double m_doubleFrom = 0.0; ///< the beginning of the range, in double
  double m_kernelFrom = 0.0; ///< the same, as a rounded length for the pair kernel
  Scalar m_tieCeiling = -1;  ///< up to here a last travel may be the best one
  bool m_isCut = false;
  FoundPair m_best;
  AxisGaps m_gaps; ///< against the best travel
  /// The motion backwards. What it brings together first is what parts last.
  TravelDirection m_backwards;
  TiePlane m_tiePlane;           ///< of the motion backwards
  unsigned m_tiePlaneNumber = 0; ///< of the last plane
  int m_tieCount = 0;            ///< at the best travel
};

extern template class LastContact<float>;
extern template class LastContact<double>;

} // namespace gsl_sweep

#endif
