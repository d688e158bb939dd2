#ifndef GSL_SWEEP_RAY_COUNT_H
#define GSL_SWEEP_RAY_COUNT_H

#include "InnerPoint.h"
#include "Placement.h"
#include "PreparedBody.h"
#include "Scene.h"

#include <vector>

namespace gsl_sweep {

/// A body where it is while a question is answered.
template <class Scalar>
struct PlacedBody {
  PlacedBody(const PreparedBody& preparedBody, const Placement<Scalar>& itsPlacement)
      : body(preparedBody), placement(itsPlacement), corners(preparedBody.Triangles()) {}

  const Tree<Scalar>& TreeOf() const {
    if constexpr (sizeof(Scalar) == sizeof(float)) {
      return body.SingleTree();
    } else {
      return body.DoubleTree();
    }
  }
  /// Returns a corner in the coordinates of the walk.
  Coord3 Corner(std::size_t place, int corner) const {
    return placement.At(corners.At(place, corner));
  }
  /// Returns a triangle in the coordinates of the pair kernel.
  SurfaceTriangle TriangleAt(std::size_t place) const {
    return {{placement.ToKernel(Corner(place, 0)), placement.ToKernel(Corner(place, 1)),
             placement.ToKernel(Corner(place, 2))}};
  }

  const PreparedBody& body;
  const Placement<Scalar>& placement;
  const Corners& corners; ///< of the body
};

inline Box<double> BoxAround(const SurfaceTriangle& t) {
  Box<double> box = Box<double>::Empty();
  for (const Coord3& p : t.corner)
    box.Include({{p.x, p.y, p.z}, {p.x, p.y, p.z}});
  return box;
}

/// Calls use(place) for the triangles of a body whose boxes `meets` accepts, until `goesOn`, which
/// is called for each node, returns false. Boxes are in the coordinates of the walk.
template <class Scalar, class Meets, class GoesOn, class Use>
void EachTriangle(const PlacedBody<Scalar>& body, const Meets& meets, const GoesOn& goesOn,
                  const Use& use) {
  const Tree<Scalar>& tree = body.TreeOf();
  const Array<std::uint32_t>& runs = body.body.Runs().begin;
  std::vector<TreeRef> stack;
  if (meets(body.placement.At(tree.box))) stack.push_back(tree.root);
  while (!stack.empty() && goesOn()) {
    const TreeRef ref = stack.back();
    stack.pop_back();
    if (ref.IsLeaf()) {
      for (std::size_t k = runs[ref.Index()]; k < runs[ref.Index() + 1]; ++k) {
        const SurfaceTriangle t{{body.Corner(k, 0), body.Corner(k, 1), body.Corner(k, 2)}};
        if (meets(BoxAround(t))) use(k);
      }
      continue;
    }
    const TreeNode<Scalar>& node = tree.nodes[ref.Index()];
    for (int lane = 0; lane < 4; ++lane) {
      if (node.child[lane].IsNone()) continue;
      if (meets(body.placement.At(node.boxes.At(lane)))) stack.push_back(node.child[lane]);
    }
  }
}

/// The moving body, or all fixed bodies. Several bodies are one solid. Copies of triangles count
/// together, see PreparedBody::Counted.
template <class Scalar>
using PlacedSolid = std::vector<PlacedBody<Scalar>>;

template <class Scalar>
PlacedSolid<Scalar> MovingSolid(const Scene<Scalar>& scene) {
  return {{scene.bodies.moving->Counted(), scene.moving}};
}
template <class Scalar>
PlacedSolid<Scalar> FixedSolid(const Scene<Scalar>& scene) {
  PlacedSolid<Scalar> solid;
  for (const PreparedBody* body : scene.bodies.fixed)
    solid.emplace_back(body->Counted(), scene.fixed);
  return solid;
}

/// Adds countOf(triangle) for the triangles of a solid whose boxes, in the coordinates of the
/// kernel, `meets` accepts.
template <class Scalar, class Meets, class CountOf, class GoesOn>
int SumOver(const PlacedSolid<Scalar>& solid, const Meets& meets, const CountOf& countOf,
            const GoesOn& goesOn) {
  int count = 0;
  for (const PlacedBody<Scalar>& body : solid) {
    const auto inKernel = [&](const auto& box) {
      return meets(body.placement.ToKernel(Box<double>{{box.low[0], box.low[1], box.low[2]},
                                                       {box.high[0], box.high[1], box.high[2]}}));
    };
    EachTriangle(body, inKernel, goesOn, [&](std::size_t k) {
      count += body.body.WeightOf(k) * countOf(body.TriangleAt(k));
    });
  }
  return count;
}

/// Returns how often a solid winds around the points just after the beginning of a ray.
template <class Scalar, class GoesOn>
int TurnsAround(const InnerRay& ray, const PlacedSolid<Scalar>& solid, const GoesOn& goesOn) {
  return SumOver(
      solid, [&ray](const Box<double>& box) { return ray.Meets(box); },
      [&ray](const SurfaceTriangle& t) { return ray.Crossing(t); }, goesOn);
}

/// What a solid is beside a point inside one of its triangles.
enum class OwnSide {
  Under,      ///< the solid is just under the point
  Wall,       ///< it is on neither side: a wall of zero thickness, which counts as material
  TurnedOver, ///< it is just over the point alone: others cover the triangle and face the other way
};

/// Returns how many more times a solid winds around the points just after the beginning of a ray
/// than around those just before it: the number of its triangles that hold the beginning and face
/// as the face of the ray does, less those that face the other way.
template <class Scalar, class GoesOn>
int LayersAt(const InnerRay& ray, const PlacedSolid<Scalar>& solid, const GoesOn& goesOn) {
  return SumOver(
      solid, [&ray](const Box<double>& box) { return ray.BeginsIn(box); },
      [&ray](const SurfaceTriangle& t) { return ray.Layer(t); }, goesOn);
}

/// Returns what the solid of a face is where a ray to the inner side of the face begins. The result
/// is arbitrary when `goesOn`, which is called for each node, has returned false.
//
// A solid winds around no point a negative number of times. So where there are more layers that
// face as the face does, the solid is under it.
template <class Scalar, class GoesOn>
OwnSide SideOfOwn(const InnerRay& ray, const PlacedSolid<Scalar>& solid, const GoesOn& goesOn) {
  const int layers = LayersAt(ray, solid, goesOn);
  if (layers > 0 || TurnsAround(ray, solid, goesOn) > 0) return OwnSide::Under;
  return layers < 0 ? OwnSide::TurnedOver : OwnSide::Wall;
}

} // namespace gsl_sweep

#endif
