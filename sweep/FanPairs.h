#ifndef GSL_SWEEP_FAN_PAIRS_H
#define GSL_SWEEP_FAN_PAIRS_H

#include "Box.h"
#include "SolidPair.h"

#include <cstdint>
#include <vector>

namespace gsl_sweep {

/// Returns a box that holds the directions in which a triangle is, seen from one of its corners. A
/// direction is a vector whose largest coordinate is 1 or -1. Triangles with area that have a
/// corner in common, and whose boxes share no point, share nothing but that corner.
Box<double> DirectionsFrom(const SurfaceTriangle& t, int corner);

/// Boxes in a tree, to find those that share a point with a box.
class BoxIndex {
public:
  explicit BoxIndex(std::vector<Box<double>> boxes);

  /// Calls use(k) for the number of each box that shares a point with a given box, in no order,
  /// until `goesOn`, which is called for each node, returns false.
  template <class GoesOn, class Use>
  void EachMeeting(const Box<double>& box, const GoesOn& goesOn, const Use& use) const;

private:
  struct Node {
    std::size_t first = 0, count = 0;
    std::uint32_t children = 0; ///< the first of two, which are side by side; 0 for few boxes
    Box<double> box = Box<double>::Empty();
  };
  static constexpr std::size_t kFew = 4;

  void Divide(std::uint32_t node);

  std::vector<Box<double>> m_boxes;
  std::vector<std::uint32_t> m_order;
  std::vector<Node> m_nodes;
};

/// A corner at which many triangles of both bodies meet.
struct SharedFan {
  Coord3 tip;
  std::vector<std::uint32_t> moving, fixed; ///< places of the triangles
};

/// A corner of a triangle, at the place of its body.
struct PlacedCorner {
  Coord3 p;
  std::uint32_t place;
};

/// Returns the corners that so many triangles of each body share that the pairs of these triangles
/// are at least `leastPairs`. A triangle belongs to one fan at most, the one with the most pairs.
/// The time is n log n.
std::vector<SharedFan> FindSharedFans(std::vector<PlacedCorner> moving,
                                      std::vector<PlacedCorner> fixed, std::size_t leastPairs);

template <class GoesOn, class Use>
void BoxIndex::EachMeeting(const Box<double>& box, const GoesOn& goesOn, const Use& use) const {
  std::vector<std::uint32_t> stack{0};
  while (!stack.empty() && goesOn()) {
    const Node& node = m_nodes[stack.back()];
    stack.pop_back();
    if (!ShareAPoint(node.box, box)) continue;
    if (node.children != 0) {
      stack.push_back(node.children);
      stack.push_back(node.children + 1);
      continue;
    }
    for (std::size_t k = node.first; k < node.first + node.count; ++k)
      if (ShareAPoint(m_boxes[m_order[k]], box)) use(m_order[k]);
  }
}

} // namespace gsl_sweep

#endif
