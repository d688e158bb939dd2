#ifndef GSL_SWEEP_SOLID_START_H
#define GSL_SWEEP_SOLID_START_H

#include "FirstContact.h"
#include "RayCount.h"
#include "Walk.h"

namespace gsl_sweep {

/// What solids are at rest.
enum class SolidState {
  Apart,       ///< the interiors share no point
  Overlapping, ///< the interiors overlap
  Inside,      ///< they do, and only components that do not touch the other body show it
  Cancelled
};

/// Decides exactly whether the interiors of solids overlap before any travel.
//
// First all pairs of triangles that may touch are judged. When none of them shows an overlap, no
// surface goes to the inner side of a triangle of the other body from a point inside that triangle.
// So just under a triangle the other body is either everywhere or nowhere. When the interiors
// overlap, their common part has a boundary, which is on triangles of both bodies or of one, and
// just under these the other body is everywhere. So one point under each triangle decides. Where
// an edge does not touch the other body, it is the same under the triangles at that edge. So one
// point under each triangle that may touch, and one for each component, decide.
//
// All this is about triangles that bound their own body. Rounding can turn a thin triangle over,
// within the plane of others that cover it. Its own body is then just over it, and not just under
// it. A triangle of another component, or of another part of its own, can cover a part of it. So a
// pair shows an overlap only where both solids are found next to a point that both triangles share.
// What goes through a triangle that is turned over goes through those that cover it too.
//
// Several fixed bodies are one solid. So the numbers are those of one body that holds them all.
//
// Equal triangles of one body meet others alike. So pairs are made of the first of each, and where
// a solid is summed up, all copies of a triangle count at once, see PreparedBody.
template <class Scalar>
class SolidStart {
public:
  SolidStart(const Scene<Scalar>& scene, const Watch& watch);

  SolidState Run();

  /// After Overlapping: the first pair, by number, that shows the overlap, see MeetAtRest. Without
  /// such a pair, the first pair that touches with the other body just under one of its triangles.
  const FoundPair& Best() const { return m_best; }
  /// After Inside: the contact that names the component. The first component of the moving body, in
  /// the first fixed body that holds it, comes before those of the fixed bodies.
  const Contact& Inside() const { return m_inside; }

private:
  /// A pair of subtrees whose boxes have a point in common.
  struct Visit {
    TreeRef moving, fixed;
    Box<Scalar> movingBox, fixedBox; ///< of the trees
    std::uint32_t leastMoving, leastFixed;
  };
  using Placed = PlacedBody<Scalar>;
  using Solid = PlacedSolid<Scalar>;
  struct LeafAtRest;
  /// What is just under a triangle. It is looked at where the triangle may touch the other body.
  enum class Under : unsigned char { Unknown, ToLookAt, Nothing, OtherBody };
  using UnderEach = std::vector<Under>; ///< by place; empty when nothing may touch

  /// Return the bodies without equal triangles, to which places refer.
  const Placed& Moving() const { return m_distinctMoving.front(); }
  const Placed& Fixed(std::size_t body) const { return m_distinctFixed[body]; }
  /// Returns true when no pair whose numbers in these bodies are at least so low comes before the
  /// best pair.
  bool BestPrecedesAll(std::uint32_t leastMoving, std::size_t fixedBody,
                       std::uint32_t leastFixed) const {
    return m_best.PrecedesAll(
        Moving().body.WholeNumber(leastMoving),
        FixedNumber(fixedBody, Fixed(fixedBody).body.WholeNumber(leastFixed)));
  }
  bool Goes();

  bool VisitAllPairs();
  bool VisitPairs(std::size_t fixedBody);
  template <bool kMoving>
  void Expand(const Visit& visit, std::size_t fixedBody);
  void JudgeLeaves(const Visit& visit, std::size_t fixedBody);
  void JudgePlaces(std::size_t movingPlace, const SurfaceTriangle& moving, std::size_t fixedPlace,
                   const SurfaceTriangle& fixed, std::size_t fixedBody);
  void JudgeTouch(std::size_t movingPlace, std::size_t fixedPlace, std::size_t fixedBody,
                  const FoundPair& pair);
  bool LookUnder(const Placed& one, const Solid& own, const Solid& others, UnderEach& under);
  bool LookUnderAll();
  bool FindInside(const Placed& inner, const Solid& own, const Solid& others, Contact& found);
  bool FindComponentInside();
  bool ShowsOverlap(const SurfaceTriangle& moving, const SurfaceTriangle& fixed);
  bool IsInside(const Placed& one, std::size_t place, const Solid& own, const Solid& others);

  const Scene<Scalar>& m_scene;
  const Watch& m_watch;
  Solid m_moving, m_fixed;
  std::vector<Placed> m_distinctMoving, m_distinctFixed;
  std::vector<Visit> m_stack;
  std::size_t m_visits = 0;
  bool m_isCancelled = false;
  FoundPair m_best;
  UnderEach m_underMoving;
  std::vector<UnderEach> m_underFixed; ///< by fixed body
  bool m_hasLooked = false;            ///< under the triangles; then pairs that touch are named
  Contact m_inside;
};

extern template class SolidStart<float>;
extern template class SolidStart<double>;

} // namespace gsl_sweep

#endif
