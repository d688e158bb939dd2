#ifndef GSL_SWEEP_PREPARED_BODY_H
#define GSL_SWEEP_PREPARED_BODY_H

#include "Corners.h"
#include "Leaves.h"
#include "Slabs.h"
#include "Tree.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace gsl_sweep {

/// What bodies share: their triangles, and the trees over them, which are made when they are first
/// asked for, once, by whichever thread comes first.
class PreparedBody {
public:
  explicit PreparedBody(const TriangleView& view);
  /// The same triangles with other vertices, three numbers each, in the order of Triangles().
  PreparedBody(const PreparedBody& other, const Array<double>& vertices);

  const Corners& Triangles() const { return m_corners; }
  const Leaves& Runs() const { return m_leaves; }
  bool IsEmpty() const { return m_corners.Count() == 0; }
  /// Exact; empty for an empty body.
  const Box<double>& Bounds() const { return m_bounds; }

  /// Whether single-precision boxes serve: coordinates are zero or from 2^-100 to 2^120 in
  /// magnitude. Then no difference or product of them leaves the range in which rounding is
  /// relative.
  bool IsComfortable() const { return m_isComfortable; }

  const Tree<float>& SingleTree() const;
  /// Over the exact coordinates, wherever they are.
  const Tree<double>& DoubleTree() const;

  /// Null until they have been made.
  const Slabs* SlabsIfMade() const { return m_slabs.load(std::memory_order_acquire); }
  /// Returns at once where another thread is making them.
  void MakeSlabs() const;

  std::size_t Bytes() const;

private:
  void Measure(const LeafBoxes& boxes);

  Corners m_corners;
  Leaves m_leaves;
  Box<double> m_bounds = Box<double>::Empty();
  bool m_isComfortable = true;
  mutable Array<Box<float>> m_leafBoxes; ///< until the tree is made
  mutable std::once_flag m_singleOnce, m_doubleOnce;
  mutable Tree<float> m_single;
  mutable Tree<double> m_double;
  mutable std::atomic<bool> m_hasSingle{false}, m_hasDouble{false};
  mutable std::atomic<bool> m_slabsBegun{false};
  mutable std::unique_ptr<Slabs> m_ownSlabs;
  mutable std::atomic<const Slabs*> m_slabs{nullptr};
};

/// The vertices of a body where a matrix puts them, and where an offset does.
Array<double> MovedVertices(const PreparedBody& body, const gsl_Matrix& matrix);
Array<double> ShiftedVertices(const PreparedBody& body, const Coord3& offset);

} // namespace gsl_sweep

#endif
