#ifndef GSL_SWEEP_RAY_COUNT_H
#define GSL_SWEEP_RAY_COUNT_H

#include "InwardRay.h"
#include "Placement.h"
#include "PreparedBody.h"

#include <cmath>
#include <utility>
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

/// The boxes that a ray can reach, in the coordinates of the walk.
//
// The beginning of the ray is computed with three roundings of numbers of at most four times the
// largest coordinate, divided by four: it is off by less than 2^-51 of that coordinate.
class RayReach {
public:
  RayReach(const InwardRay& ray, const Coord3& a, const Coord3& b, const Coord3& c)
      : m_axis(ray.Axis()), m_sense(ray.Sense()) {
    const double coordinates[3][3] = {{a.x, b.x, c.x}, {a.y, b.y, c.y}, {a.z, b.z, c.z}};
    for (int k = 0; k < 3; ++k) {
      const double* p = coordinates[k];
      const double at = 0.25 * (2.0 * p[0] + p[1] + p[2]);
      const double error = 0x1p-50 * (std::fabs(p[0]) + std::fabs(p[1]) + std::fabs(p[2]));
      m_low[k] = at - error;
      m_high[k] = at + error;
    }
  }

  template <class Scalar>
  bool Meets(const Box<Scalar>& box) const {
    for (int k = 0; k < 3; ++k) {
      const bool isOpenAbove = k == m_axis && m_sense > 0;
      const bool isOpenBelow = k == m_axis && m_sense < 0;
      if (!isOpenAbove && m_high[k] < static_cast<double>(box.low[k])) return false;
      if (!isOpenBelow && m_low[k] > static_cast<double>(box.high[k])) return false;
    }
    return true;
  }

private:
  int m_axis, m_sense;
  double m_low[3], m_high[3];
};

/// The points just inside a triangle of a surface, and just outside it.
enum class Beside { Under, Over };

/// Returns how often those triangles of `other` whose place `counts` accepts wind around points
/// beside a triangle of `one`, which may be the same body. Requires a triangle with area. The
/// result is arbitrary when `goesOn`, which is called for each node, has returned false.
template <class Scalar, class GoesOn, class Counts>
int TurnsAround(Beside beside, const PlacedBody<Scalar>& one, std::size_t place,
                const PlacedBody<Scalar>& other, const GoesOn& goesOn, const Counts& counts) {
  SurfaceTriangle face = one.TriangleAt(place);
  if (beside == Beside::Over) std::swap(face.corner[1], face.corner[2]);
  const InwardRay ray(face);
  const RayReach reach(ray, one.Corner(place, 0), one.Corner(place, 1), one.Corner(place, 2));
  const Tree<Scalar>& tree = other.TreeOf();
  const Array<std::uint32_t>& runs = other.body.Runs().begin;
  int turns = 0;
  std::vector<TreeRef> stack;
  if (reach.Meets(other.placement.At(tree.box))) stack.push_back(tree.root);
  while (!stack.empty() && goesOn()) {
    const TreeRef ref = stack.back();
    stack.pop_back();
    if (ref.IsLeaf()) {
      for (std::size_t k = runs[ref.Index()]; k < runs[ref.Index() + 1]; ++k) {
        const SurfaceTriangle t{{other.Corner(k, 0), other.Corner(k, 1), other.Corner(k, 2)}};
        if (reach.Meets(BoxAround(t)) && counts(k)) turns += ray.Crossing(other.TriangleAt(k));
      }
      continue;
    }
    const TreeNode<Scalar>& node = tree.nodes[ref.Index()];
    for (int lane = 0; lane < 4; ++lane) {
      if (node.child[lane].IsNone()) continue;
      if (reach.Meets(other.placement.At(node.boxes.At(lane)))) stack.push_back(node.child[lane]);
    }
  }
  return turns;
}

/// Returns how often the whole surface of `other` does.
template <class Scalar, class GoesOn>
int TurnsAround(Beside beside, const PlacedBody<Scalar>& one, std::size_t place,
                const PlacedBody<Scalar>& other, const GoesOn& goesOn) {
  return TurnsAround(beside, one, place, other, goesOn, [](std::size_t) { return true; });
}

/// Returns true when other triangles of its own component cover a triangle of a solid and face the
/// other way. Other components, and walls that touch each other, do not turn a triangle over. But
/// where its component has nothing on either side, other components may cover the triangle: two
/// triangles with the same corners can be a component.
/// Requires a triangle with area. The result is arbitrary when `goesOn` has returned false.
template <class Scalar, class GoesOn>
bool IsTurnedOver(const PlacedBody<Scalar>& one, std::size_t place, const GoesOn& goesOn) {
  const auto ofComponent = [&](Beside beside) {
    return TurnsAround(beside, one, place, one, goesOn,
                       [&](std::size_t other) { return one.body.AreOfOneComponent(place, other); });
  };
  const int under = ofComponent(Beside::Under);
  const int over = ofComponent(Beside::Over);
  if (under != 0 || over != 0) return under < over;
  return TurnsAround(Beside::Under, one, place, one, goesOn) <
         TurnsAround(Beside::Over, one, place, one, goesOn);
}

} // namespace gsl_sweep

#endif
