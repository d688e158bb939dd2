#ifndef GSL_SWEEP_FACINGS_H
#define GSL_SWEEP_FACINGS_H

#include "Tree.h"

#include <functional>
#include <memory>
#include <vector>

namespace gsl_sweep {

/// Bounds of the normals of the triangles below the four children of a node. They hold a positive
/// multiple of the normal of each triangle with area. The box of a child without one is empty.
struct FacingNode {
  static constexpr std::uint32_t kNone = 0xffffffffu;

  Boxes<float> normals;
  /// The number of the exact direction that all normals below the child have, if there is one.
  std::uint32_t parallel[4];
};

/// How the triangles of a body face, beside the boxes of its tree. Solids meet where a face along
/// the direction meets a face against it, so whole nodes of other faces are left out.
struct Facings {
  Array<FacingNode> nodes;        ///< as in the tree
  std::vector<Coord3> directions; ///< of whole nodes, of any length; one may be there repeatedly
  /// Along each axis, a power of two of which every coordinate is a whole multiple, and the largest
  /// magnitude of a coordinate.
  double unit[3], reach[3];

  /// Requires comfortable coordinates. Returns null when `goesOn`, which is called now and then,
  /// returns false.
  static std::unique_ptr<const Facings> Of(const Corners& corners, const Leaves& leaves,
                                           const Tree<float>& tree,
                                           const std::function<bool()>& goesOn = {},
                                           Team& team = Team::Alone());

  /// Returns true when each triangle faces along or against a direction as before after an offset,
  /// each sum rounded, because no coordinate that matters is rounded.
  bool Hold(const Coord3& offset, const Coord3& direction) const;

  std::size_t Bytes() const { return nodes.Bytes() + directions.capacity() * sizeof(Coord3); }
};

/// Finds the nodes of a tree below which some triangle faces a direction: its normal has a positive
/// product with the direction. What is found is kept, so that each node is looked at once.
class FacedNodes {
public:
  /// The largest component of the direction is from 1/2 to 1 in magnitude, and none but zero is
  /// below 2^-60. The others outlive this.
  FacedNodes(const Facings& facings, const Tree<float>& tree, const Coord3& direction);

  /// Bit k is clear when no triangle below child k of a node faces the direction. A node that the
  /// facings do not know has all bits set.
  unsigned Of(std::size_t node);

private:
  // Bits 0 to 3 hold the result of Of(), where it is known.
  static constexpr unsigned kIsKnown = 16u;
  static constexpr unsigned kHasSome = 32u; ///< some triangle may face the direction

  unsigned ByBounds(std::size_t node);
  bool HasSome(std::size_t node);
  bool Faces(std::uint32_t parallel);

  const Facings& m_facings;
  const Tree<float>& m_tree;
  Coord3 m_direction;
  int m_sign[3];        ///< of the components
  float m_component[3]; ///< rounded
  std::vector<std::uint8_t> m_known;
  std::vector<std::int8_t> m_signs; ///< of the exact directions; kUnknown where it is not known
  static constexpr std::int8_t kUnknown = 2;
};

} // namespace gsl_sweep

#endif
