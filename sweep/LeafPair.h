#ifndef GSL_SWEEP_LEAF_PAIR_H
#define GSL_SWEEP_LEAF_PAIR_H

#include "Scene.h"

namespace gsl_sweep {

/// The triangles of a leaf, side by side, in the coordinates of the walk.
template <class Scalar>
struct LeafTriangles {
  double corner[9][kLeafSize]; ///< x, y, z of the first, of the second, of the third
  /// The plane of each triangle, as a height along the direction: offset - normal . p is how far p
  /// has to travel to it, within error times the reaches of both leaves. All zero where the plane
  /// is too nearly along the direction: then every height is 0.
  double normal[3][kLeafSize], offset[kLeafSize], error[kLeafSize];
  Scalar low[3][kLeafSize], high[3][kLeafSize];
  std::uint32_t number[kLeafSize];
  double reach;
  int count = 0;
  std::uint64_t key = kNoKey; ///< body and leaf

  static constexpr std::uint64_t kNoKey = ~std::uint64_t{0};

  Coord3 Corner(int k, int c) const {
    return {corner[3 * c][k], corner[3 * c + 1][k], corner[3 * c + 2][k]};
  }
  Boxes<Scalar> BoxesFrom(int k) const;
  Box<Scalar> BoxOf(int k) const {
    return {{low[0][k], low[1][k], low[2][k]}, {high[0][k], high[1][k], high[2][k]}};
  }
  Box<double> ExactBoxOf(int k) const;
};

/// Leaves that were used last, one of few places each.
template <class Scalar>
class LeafCache {
public:
  LeafCache() : m_leaves(kPlaces) {}

  void Forget() {
    for (LeafTriangles<Scalar>& leaf : m_leaves)
      leaf.key = LeafTriangles<Scalar>::kNoKey;
  }

  /// A leaf of the moving body, or of a fixed one; without triangles that a one-sided question
  /// leaves out.
  const LeafTriangles<Scalar>& Moving(const Scene<Scalar>& scene, std::size_t leaf);
  const LeafTriangles<Scalar>& Fixed(const Scene<Scalar>& scene, std::size_t body,
                                     std::size_t leaf);

private:
  static constexpr std::size_t kPlaces = 32;

  std::vector<LeafTriangles<Scalar>> m_leaves;
};

/// Pairs of triangles of two leaves.
template <class Scalar>
class LeafPair {
public:
  LeafPair(const Scene<Scalar>& scene, const LeafTriangles<Scalar>& movingLeaf,
           const LeafTriangles<Scalar>& fixedLeaf)
      : m_scene(scene), moving(movingLeaf), fixed(fixedLeaf) {}

  /// Bit k: triangle k of one leaf can reach the box around the other within the limit.
  unsigned MovingThatReach(const Box<Scalar>& fixedBox, Scalar limit) const;
  unsigned FixedThatReach(const Box<Scalar>& movingBox, Scalar limit) const;
  /// The same against the slab around the other leaf, `limit` a travel.
  unsigned MovingThatReach(const Slab& fixedSlab, double limit) const;
  unsigned FixedThatReach(const Slab& movingSlab, double limit) const;

  /// Bit k: the moving triangle can reach triangle first + k within the limit, as far as boxes
  /// tell; `from` is how soon.
  unsigned Reached(int movingTriangle, int first, Scalar limit, Four<Scalar>& from) const;
  /// Bit k: as far as the heights over each other's planes tell.
  unsigned ReachedByHeight(int movingTriangle, int first, double limit) const;
  /// True when the triangles touch at no travel: a line along an edge separates their shadows.
  bool AreShadowsApart(int movingTriangle, int fixedTriangle) const;
  /// True when they do not touch where they are: by their boxes, or one of them is all on one side
  /// of the other's plane.
  bool AreApartAtStart(int movingTriangle, int fixedTriangle) const;

private:
  template <bool kMoves>
  unsigned BeyondSlab(const LeafTriangles<Scalar>& leaf, const Slab& slab, double otherReach,
                      double limit) const;

  const Scene<Scalar>& m_scene;

public:
  const LeafTriangles<Scalar>& moving;
  const LeafTriangles<Scalar>& fixed;
};

extern template struct LeafTriangles<float>;
extern template struct LeafTriangles<double>;
extern template class LeafCache<float>;
extern template class LeafCache<double>;
extern template class LeafPair<float>;
extern template class LeafPair<double>;

} // namespace gsl_sweep

#endif
