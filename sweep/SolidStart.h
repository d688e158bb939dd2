#ifndef GSL_SWEEP_SOLID_START_H
#define GSL_SWEEP_SOLID_START_H

#include "FanPairs.h"
#include "FirstContact.h"
#include "RayCount.h"
#include "Walk.h"

#include <memory>
#include <vector>

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
//
// Where many triangles of both bodies have a corner in common, all pairs of them touch there. Seen
// from that corner most are in different directions. They share no other point, so that they show
// no overlap. So the bodies are divided, and the triangles of both at such a corner are compared by
// their directions.
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
  struct FanAtRest;
  /// A triangle with its number in the whole body.
  struct Numbered {
    std::uint32_t number;
    SurfaceTriangle triangle;
  };
  /// The moving body and a fixed body without equal triangles. Each is in parts: first the
  /// triangles at no common tip, and then those at each.
  struct Division {
    std::vector<Placed> moving, fixed;
    std::vector<Coord3> tips;
    std::size_t triangles = 0;
    bool isLookedAt = false; ///< for common tips
  };
  /// What is just under a triangle. It is looked at where the triangle may touch the other body.
  enum class Under : unsigned char { Unknown, ToLookAt, Nothing, OtherBody };
  using UnderEach = std::vector<Under>; ///< by number; empty when nothing may touch

  /// Returns true when no pair whose numbers in parts of the bodies are at least so low comes
  /// before the best pair.
  bool BestPrecedesAll(const Placed& moving, std::uint32_t leastMoving, const Placed& fixed,
                       std::size_t fixedBody, std::uint32_t leastFixed) const {
    return m_best.PrecedesAll(moving.body.WholeNumber(leastMoving),
                              FixedNumber(fixedBody, fixed.body.WholeNumber(leastFixed)));
  }
  bool Goes();

  bool VisitAllPairs();
  bool VisitPairs(std::size_t fixedBody);
  bool VisitDivision(std::size_t fixedBody);
  bool VisitParts(const Placed& moving, const Placed& fixed, std::size_t fixedBody);
  template <bool kMoving>
  void Expand(const Visit& visit, const Placed& side);
  bool VisitFan(std::size_t fan, std::size_t fixedBody);
  void NameInFan(const FanAtRest& moving, const FanAtRest& fixed, std::size_t fixedBody);
  void Divide(std::size_t fixedBody);
  std::vector<PlacedCorner> CornersOf(const Placed& placed) const;
  void AddParts(const PreparedBody& body, const Placement<Scalar>& placement,
                const std::vector<const std::vector<std::uint32_t>*>& fans,
                std::vector<Placed>& parts);
  void JudgeLeaves(const LeafAtRest& moving, const LeafAtRest& fixed, std::size_t fixedBody);
  void Judge(const Numbered& moving, const Numbered& fixed, std::size_t fixedBody);
  void JudgeTouch(std::size_t fixedBody, const FoundPair& pair);
  UnderEach& UnderMoving();
  UnderEach& UnderFixed(std::size_t fixedBody);
  bool LookUnder(const Placed& one, const Solid& own, const Solid& others, UnderEach& under);
  bool LookUnderAll();
  bool FindInside(const Placed& inner, const Solid& own, const Solid& others, Contact& found);
  bool FindComponentInside();
  bool ShowsOverlap(const SurfaceTriangle& moving, const SurfaceTriangle& fixed);
  int TurnsUnder(const SurfaceTriangle& face, const Solid& others);
  bool IsInside(const Placed& one, std::size_t place, const Solid& own, const Solid& others);

  const Scene<Scalar>& m_scene;
  const Watch& m_watch;
  Solid m_moving, m_fixed;
  std::vector<Division> m_divisions; ///< by fixed body
  std::vector<std::unique_ptr<PreparedBody>> m_parts;
  std::size_t m_touchesLeft = 0;    ///< before common tips are looked for
  bool m_anySeemsToOverlap = false; ///< a pair overlaps by itself
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
