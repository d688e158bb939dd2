#ifndef GSL_SWEEP_EDGE_FAN_H
#define GSL_SWEEP_EDGE_FAN_H

#include "gsl_Arithmetic.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace gsl_sweep {

using gsl_arithmetic::Coord3;

/// How a triangle uses an edge.
struct EdgeUse {
  Coord3 apex;  ///< the corner of the triangle that is not on the edge
  bool isAlong; ///< from the first end of the edge to the second, else back
};

/// The triangles at an edge that more than two use. Seen from the edge they are around it like the
/// leaves of a book. A leaf along the edge ends a part of the solid, a leaf back begins one. So
/// each beginning is paired with the end that closes it. At one angle ends come first: solids that
/// touch in a face stay apart. The order of the angles is decided exactly.
///
/// Requires  as many uses along the edge as back; ends that differ; coordinates that gsl_exact can
///           multiply without a loss.
class EdgeFan {
public:
  EdgeFan(const Coord3& from, const Coord3& to, const std::vector<EdgeUse>& uses);

  /// Returns false where a triangle has no area, so that it has no angle.
  bool HasAngles() const { return m_hasAngles; }
  /// Returns whether no two triangles of one direction have the same angle. Where two have, either
  /// may be paired first.
  bool IsCertain() const { return m_isCertain; }

  /// Returns the number of the other use for each use. Requires angles.
  ///
  /// `sheets` has a number for each use, which is the same for triangles that are joined already. A
  /// beginning and an end of one sheet are paired first, so that the pairs join as few sheets as
  /// can be. The time is n log n for n uses.
  std::vector<std::size_t> Pair(const std::vector<std::uint32_t>& sheets) const;

private:
  struct Leaf {
    std::size_t use;
    std::size_t angle; ///< the number of its angle, which equal angles share
    bool isEnd;
  };

  /// Calls join(begin, end) for pairs of one sheet, as many as there are.
  template <class Join>
  void PairWithinSheets(const std::vector<std::uint32_t>& sheets, const Join& join) const;

  std::vector<Leaf> m_leaves; ///< by angle, ends first
  bool m_hasAngles = true, m_isCertain = true;
};

} // namespace gsl_sweep

#endif
