#ifndef GSL_SWEEP_LEAF_PAIR_H
#define GSL_SWEEP_LEAF_PAIR_H

#include "Scene.h"
#include "WithinEdge.h"

#include <algorithm>
#include <memory>

namespace gsl_sweep {

/// The triangles of a leaf, side by side, in the coordinates of the walk.
template <class Scalar>
struct LeafTriangles {
  double corner[9][kLeafSize]; ///< x, y, z of the first, of the second, of the third
  /// The plane of each triangle, as a height along the direction. offset - normal . p is the
  /// distance that p has to travel to the plane, within error times the sum of planeReach and the
  /// reach of p. All numbers are zero where the plane is too nearly along the direction: then every
  /// height is 0.
  double normal[3][kLeafSize], offset[kLeafSize], error[kLeafSize];
  /// How much earlier than the plane the clearance around it is met, at most.
  double lift[kLeafSize];
  /// For solids, the extents of each triangle across the direction, along two axes of its shadow.
  /// Extents that are not exact are wider.
  double shadowLow[2][kLeafSize], shadowHigh[2][kLeafSize];
  Scalar low[3][kLeafSize], high[3][kLeafSize];
  std::uint32_t number[kLeafSize];
  std::uint32_t place[kLeafSize]; ///< in the body
  double reach;
  double planeReach; ///< of the corners at which the planes begin
  int count = 0;
  /// Bit k is set unless triangle k has the corners of the triangle before it, whose number is
  /// less.
  unsigned distinct;
  /// The triangles that the plane of this number holds: a tie plane of FirstContact or a floor of
  /// ClearanceSearch. Both number from 1, so a cache of leaves is forgotten between their walks.
  mutable unsigned held = 0;
  mutable unsigned heldBy = 0;

  /// Returns the triangles, of the moving body or of a fixed body, that a plane holds. The number
  /// tells planes apart.
  template <bool kMoves, class Plane>
  unsigned HeldBy(const Plane& plane, unsigned planeNumber, const Scene<Scalar>& scene) const {
    if (heldBy == planeNumber) return held;
    heldBy = planeNumber;
    held = 0;
    for (int k = 0; k < count; ++k) {
      const Coord3 corners[3] = {scene.moving.ToKernel(Corner(k, 0)),
                                 scene.moving.ToKernel(Corner(k, 1)),
                                 scene.moving.ToKernel(Corner(k, 2))};
      const bool isHeld = kMoves ? plane.HoldsMoving(corners) : plane.HoldsFixed(corners);
      if (isHeld) held |= 1u << k;
    }
    return held;
  }

  Coord3 Corner(int k, int c) const {
    return {corner[3 * c][k], corner[3 * c + 1][k], corner[3 * c + 2][k]};
  }
  /// Returns triangle k in the coordinates of the pair kernel.
  Triangle InKernel(const Scene<Scalar>& scene, int k) const;
  Boxes<Scalar> BoxesFrom(int k) const;
  Box<Scalar> BoxOf(int k) const {
    return {{low[0][k], low[1][k], low[2][k]}, {high[0][k], high[1][k], high[2][k]}};
  }
  Box<double> ExactBoxOf(int k) const;
  /// Return the exact extents of triangles k to k + 3 along an axis.
  Double4 LowFrom(int k, int axis) const {
    return Least(Double4::At(&corner[axis][k]),
                 Least(Double4::At(&corner[3 + axis][k]), Double4::At(&corner[6 + axis][k])));
  }
  Double4 HighFrom(int k, int axis) const {
    return Most(Double4::At(&corner[axis][k]),
                Most(Double4::At(&corner[3 + axis][k]), Double4::At(&corner[6 + axis][k])));
  }
};

/// Tests the triangles of a leaf, moving or fixed, against a box of the other body that is far
/// smaller. The box of a large triangle says little about where the triangle is.
template <class Scalar, bool kMoves>
class LeafBeforeBox {
public:
  LeafBeforeBox(const Scene<Scalar>& scene, const LeafTriangles<Scalar>& leaf,
                const Box<Scalar>& box);

  /// Returns a travel before which no triangle touches the box within the range. It is infinity
  /// where none ever does, loose after the range, and minus infinity where it would be at most
  /// `enough`.
  double FirstTravel(const TravelRange<double>& range, double enough = -Box<double>::kFar) const;
  /// Returns a travel after which no triangle touches the box within the range. It is minus
  /// infinity where none ever does, loose before the range, and infinity where it would be at least
  /// `enough`.
  double LastTravel(const TravelRange<double>& range, double enough = Box<double>::kFar) const;

private:
  /// The side of an edge of a triangle on which a point is, as seen along the direction.
  struct Side : Linear {
    double least, most; ///< of the triangle, up to its own error
  };

  template <bool kNegative>
  double GreatestTravel(const TravelRange<double>& range, double enough) const;
  template <bool kNegative>
  double GreatestTravelOf(int k, const TravelRange<double>& range) const;
  template <bool kNegative>
  Linear HeightsOf(int k) const;
  void SidesOf(int k, Side (&sides)[3]) const;
  bool IsApart(const Side& side) const;

  const Scene<Scalar>& m_scene;
  const LeafTriangles<Scalar>& m_leaf;
  double m_middle[3], m_half[3];
  double m_reach = 0.0; ///< of the box
};

/// The leaves that were used last, each in one of a few places. A place takes memory when it is
/// used first, because a question about small bodies uses few.
template <class Scalar>
class LeafCache {
public:
  LeafCache() : m_leaves(kPlaces), m_keys(kPlaces, kNoKey) {}

  void Forget() { std::fill(m_keys.begin(), m_keys.end(), kNoKey); }

  /// Returns a leaf of the moving body or of a fixed body, without the triangles that a one-sided
  /// question leaves out.
  const LeafTriangles<Scalar>& Moving(const Scene<Scalar>& scene, std::size_t leaf);
  const LeafTriangles<Scalar>& Fixed(const Scene<Scalar>& scene, std::size_t body,
                                     std::size_t leaf);

private:
  static constexpr int kPlaceBits = 8;
  static constexpr std::size_t kPlaces = std::size_t{1} << kPlaceBits;
  static constexpr std::uint64_t kNoKey = ~std::uint64_t{0};

  /// Neighbouring leaves differ by any number, so every bit of the key takes part.
  static std::size_t Place(std::uint64_t key) {
    return static_cast<std::size_t>(key * 0x9e3779b97f4a7c15u >> (64 - kPlaceBits));
  }
  template <bool kMoving>
  const LeafTriangles<Scalar>& Get(const Scene<Scalar>& scene, std::size_t body, std::size_t leaf);

  std::vector<std::unique_ptr<LeafTriangles<Scalar>>> m_leaves;
  std::vector<std::uint64_t> m_keys; ///< fixed body and leaf
};

/// The pairs of triangles of two leaves.
template <class Scalar>
class LeafPair {
public:
  LeafPair(const Scene<Scalar>& scene, const LeafTriangles<Scalar>& movingLeaf,
           const LeafTriangles<Scalar>& fixedLeaf)
      : m_scene(scene), moving(movingLeaf), fixed(fixedLeaf) {}

  /// Bit k is set when triangle k of the moving leaf (kMoves), or of the fixed leaf, can touch the
  /// box around the other leaf within the range.
  template <bool kMoves>
  unsigned ThatReach(const Box<Scalar>& otherBox, const TravelRange<Scalar>& range) const;
  /// Tests in the same way against the slab around the other leaf, enlarged by the clearance.
  /// `limit` is a travel.
  template <bool kMoves>
  unsigned ThatReach(const Slab& otherSlab, double limit) const;

  /// Bit k is set when the boxes do not exclude that the moving triangle touches triangle first + k
  /// within the range. `from` and `to` receive the least and the greatest travel that the boxes
  /// allow.
  unsigned Reached(int movingTriangle, int first, const TravelRange<Scalar>& range,
                   Four<Scalar>& from, Four<Scalar>& to) const;
  /// Bit k is set when the heights over each other's planes do not exclude a contact, or that the
  /// triangles come within the clearance.
  unsigned ReachedByHeight(int movingTriangle, int first, double limit) const;
  /// Bit k is set when these heights do not exclude a contact at the travel `from` or later.
  unsigned TouchingByHeight(int movingTriangle, int first, double from) const;
  /// For solids, bit k is set when the extents of the shadows do not exclude that the moving
  /// triangle and triangle first + k share area there.
  unsigned SharingShadow(int movingTriangle, int first) const;
  /// Returns true when the triangles touch at no travel: a line along an edge separates their
  /// shadows.
  bool AreShadowsApart(int movingTriangle, int fixedTriangle) const;
  /// Returns a travel before which the triangles do not touch, or minus infinity where the planes
  /// of both are along the direction.
  double FirstTravel(int movingTriangle, int fixedTriangle) const;
  /// Returns a travel after which the triangles do not touch, or infinity where the planes of both
  /// are along the direction.
  double LastTravel(int movingTriangle, int fixedTriangle) const;
  /// Returns true when the triangles do not touch at travel zero: their boxes are apart, or one
  /// triangle lies on one side of the other's plane.
  bool AreApartAtStart(int movingTriangle, int fixedTriangle) const;

private:
  /// Where the corners are this many times as far apart as the smaller triangle is large, the bound
  /// for all of them together decides little.
  static constexpr double kUnequal = 0x1p12;

  struct Shadows {
    double u[6], v[6], reach[6];
  };

  template <bool kMoves>
  const LeafTriangles<Scalar>& Side() const {
    return kMoves ? moving : fixed;
  }
  void WriteShadows(int movingTriangle, int fixedTriangle, int origin, Shadows& shadows) const;
  bool AreUnequalShadowsApart(int movingTriangle, int fixedTriangle) const;
  template <bool kNegative>
  double GreatestTravel(int movingTriangle, int fixedTriangle) const;
  static bool WriteInnerSides(const Shadows& shadows, int own, int edge, double (&side)[3]);

  const Scene<Scalar>& m_scene;

public:
  const LeafTriangles<Scalar>& moving;
  const LeafTriangles<Scalar>& fixed;
};

extern template struct LeafTriangles<float>;
extern template struct LeafTriangles<double>;
extern template class LeafCache<float>;
extern template class LeafCache<double>;
extern template class LeafBeforeBox<float, true>;
extern template class LeafBeforeBox<float, false>;
extern template class LeafBeforeBox<double, true>;
extern template class LeafBeforeBox<double, false>;
extern template class LeafPair<float>;
extern template class LeafPair<double>;

} // namespace gsl_sweep

#endif
