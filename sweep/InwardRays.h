#ifndef GSL_SWEEP_INWARD_RAYS_H
#define GSL_SWEEP_INWARD_RAYS_H

#include "InwardRay.h"
#include "RayCount.h"

#include <cstdint>
#include <deque>
#include <vector>

namespace gsl_sweep {

/// An inward ray with its triangle.
struct FaceRay {
  FaceRay(const SurfaceTriangle& triangle, std::size_t itsNumber);
  FaceRay(const FaceRay&) = delete;
  FaceRay& operator=(const FaceRay&) = delete;

  SurfaceTriangle face;
  InwardRay ray;
  Box<double> begin; ///< holds the point where the ray begins
  std::size_t number;
};

/// Rays along one axis, in one sense, in a tree over the points where they begin.
class RayTree {
public:
  /// Requires a ray; all rays must outlive the tree.
  explicit RayTree(std::vector<const FaceRay*> rays);

  /// Counts the crossings of all rays with a body, until `goesOn`, which is called for each node
  /// and for each group of rays that a triangle is compared with, returns false.
  template <class Scalar, class GoesOn>
  void Count(const PlacedBody<Scalar>& body, const GoesOn& goesOn);
  /// Calls take(ray, turns) with the sum of the crossings that were counted for each ray.
  template <class Take>
  void EachSum(const Take& take) const;

private:
  struct Node {
    std::size_t first = 0, count = 0; ///< of the rays
    std::uint32_t children = 0;       ///< the first of two, which are side by side; 0 for one ray
    int turns = 0;                    ///< crossings that all rays of the node have
    bool isColumn = false;            ///< all rays are on one line
    bool isRow = false;               ///< all rays are in one plane
    Coord3 ends[2] = {};              ///< where two rays of the plane begin, far from each other
    Box<double> begin = Box<double>::Empty();
  };

  /// As many rays of each line are divided along it last.
  static constexpr std::size_t kRaysOfLine = 4;
  static constexpr std::size_t kFewHeights = 4;

  void Divide(std::uint32_t node);
  std::size_t HalfOf(const Node& node);
  template <class IsBefore>
  std::vector<std::size_t> SortedCuts(const Node& node, const IsBefore& isBefore);
  void FindRow(Node& node) const;
  bool IsAlongRays(const SurfaceTriangle& t) const;
  bool Meets(const Node& node, const Box<double>& box) const;
  bool IsWider(const Node& node, const Box<double>& box) const;
  bool CrossesAlike(const Node& node, const SurfaceTriangle& t, int& crossing) const;
  template <class GoesOn>
  void CountTriangle(std::uint32_t rays, const SurfaceTriangle& t, const Box<double>& box,
                     const GoesOn& goesOn);

  std::vector<const FaceRay*> m_rays;
  std::vector<Node> m_nodes; ///< every child comes after its parent
  int m_axis, m_sense;
};

/// Many inward rays whose crossings with a body are counted together: those that a triangle is
/// certain to cross alike are counted at once. So n rays among n triangles that lie over each other
/// take n log n steps in place of n squared. The sums are exact.
class InwardRays {
public:
  /// Adds the inward ray of a triangle with area. Range: see Determinant.h.
  void Add(const SurfaceTriangle& face) { m_rays.emplace_back(face, m_rays.size()); }

  /// Returns how often the surface of a body winds around the points at the beginning of each ray,
  /// in the order in which they were added. The result is arbitrary when `goesOn`, which is called
  /// for each step, has returned false.
  template <class Scalar, class GoesOn>
  std::vector<int> TurnsAround(const PlacedBody<Scalar>& body, const GoesOn& goesOn) const;

private:
  /// Rays along one axis, in one sense, in an order in which equal rays follow each other.
  using Group = std::vector<const FaceRay*>;
  std::vector<Group> Groups() const;
  /// Returns the first of each run of equal rays.
  static Group Distinct(const Group& group);
  /// Gives equal rays the number of turns of the first of them.
  static void Spread(const Group& group, std::vector<int>& turns);

  std::deque<FaceRay> m_rays;
};

template <class Scalar, class GoesOn>
void RayTree::Count(const PlacedBody<Scalar>& body, const GoesOn& goesOn) {
  struct Visit {
    TreeRef ref;
    Box<double> box; // in the coordinates of the pair kernel
    std::uint32_t rays;
  };
  const auto inKernel = [&body](const Box<Scalar>& ofTree) {
    const Box<Scalar> box = body.placement.At(ofTree);
    return body.placement.ToKernel(
        Box<double>{{box.low[0], box.low[1], box.low[2]}, {box.high[0], box.high[1], box.high[2]}});
  };
  const Tree<Scalar>& tree = body.TreeOf();
  const Array<std::uint32_t>& runs = body.body.Runs().begin;
  std::vector<Visit> stack{{tree.root, inKernel(tree.box), 0}};
  while (!stack.empty() && goesOn()) {
    const Visit visit = stack.back();
    stack.pop_back();
    if (!Meets(m_nodes[visit.rays], visit.box)) continue;
    if (visit.ref.IsLeaf()) {
      for (std::size_t k = runs[visit.ref.Index()]; k < runs[visit.ref.Index() + 1]; ++k) {
        const SurfaceTriangle t = body.TriangleAt(k);
        if (!IsAlongRays(t)) CountTriangle(visit.rays, t, BoxAround(t), goesOn);
      }
    } else if (IsWider(m_nodes[visit.rays], visit.box)) {
      const std::uint32_t child = m_nodes[visit.rays].children;
      stack.push_back({visit.ref, visit.box, child});
      stack.push_back({visit.ref, visit.box, child + 1});
    } else {
      const TreeNode<Scalar>& node = tree.nodes[visit.ref.Index()];
      for (int lane = 0; lane < 4; ++lane) {
        if (node.child[lane].IsNone()) continue;
        stack.push_back({node.child[lane], inKernel(node.boxes.At(lane)), visit.rays});
      }
    }
  }
}

template <class GoesOn>
void RayTree::CountTriangle(std::uint32_t rays, const SurfaceTriangle& t, const Box<double>& box,
                            const GoesOn& goesOn) {
  Node& node = m_nodes[rays];
  int crossing = 0;
  if (!goesOn() || !Meets(node, box)) return;
  if (node.children == 0) {
    node.turns += m_rays[node.first]->ray.Crossing(t);
  } else if (CrossesAlike(node, t, crossing)) {
    node.turns += crossing;
  } else {
    CountTriangle(node.children, t, box, goesOn);
    CountTriangle(node.children + 1, t, box, goesOn);
  }
}

template <class Take>
void RayTree::EachSum(const Take& take) const {
  std::vector<int> sums(m_nodes.size(), 0);
  for (std::size_t k = 0; k < m_nodes.size(); ++k) {
    const Node& node = m_nodes[k];
    sums[k] += node.turns;
    if (node.children == 0) {
      take(*m_rays[node.first], sums[k]);
    } else {
      sums[node.children] = sums[node.children + 1] = sums[k];
    }
  }
}

template <class Scalar, class GoesOn>
std::vector<int> InwardRays::TurnsAround(const PlacedBody<Scalar>& body,
                                         const GoesOn& goesOn) const {
  std::vector<int> turns(m_rays.size(), 0);
  for (const Group& group : Groups()) {
    RayTree tree(Distinct(group));
    tree.Count(body, goesOn);
    tree.EachSum([&turns](const FaceRay& ray, int sum) { turns[ray.number] = sum; });
    Spread(group, turns);
  }
  return turns;
}

} // namespace gsl_sweep

#endif
