#ifndef GSL_SWEEP_EDGE_FAN_H
#define GSL_SWEEP_EDGE_FAN_H

#include "gsl_Arithmetic.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace gsl_sweep {

using gsl_arithmetic::Coord3;

/// How a triangle uses an edge.
struct EdgeUse {
  Coord3 apex;  ///< the corner of the triangle that is not on the edge
  bool isAlong; ///< from the first end of the edge to the second, else back
};

/// The triangles at an edge that more than two use. Seen from the edge they stand around it like
/// the pages of a book. A page along the edge ends a part of the solid, a page back begins one. So
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

  /// Returns the number of the other use for each use. Where there is a choice, triangles are
  /// paired that are joined already, as this function says of the numbers of a beginning and an
  /// end. Requires angles.
  std::vector<std::size_t>
  Pair(const std::function<bool(std::size_t begin, std::size_t end)>& areJoined) const;

private:
  struct Page {
    std::size_t use;
    std::size_t angle; ///< the number of its angle, which equal angles share
    bool isEnd;
  };

  std::vector<Page> m_pages; ///< by angle, ends first
  bool m_hasAngles = true, m_isCertain = true;
};

} // namespace gsl_sweep

#endif
