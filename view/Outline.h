#ifndef GSL_VIEW_OUTLINE_H
#define GSL_VIEW_OUTLINE_H

#include "FeatureEdges.h"
#include "Raster.h"

#include <vector>

namespace gsl_view {

/// A straight line on the page.
struct PageLine {
  PagePoint from, to;
};

/// The outline of a body in a view. Its coordinates are multiples of 1/8 of a point (0.044 mm).
struct Outline {
  std::vector<PageLine> visible, hidden; ///< each line once
};

/// Returns the visible and the hidden lines of the edges that are drawn, in the panel of the view.
/// Corners are moved by `shift` first. A line is hidden where it is behind a surface of `own`, and
/// is left out; where it is behind one of `others` it is in `hidden`. Either may be the same
/// raster.
Outline OutlineOf(const std::vector<BodyEdge>& edges, const std::vector<Coord3>& corners,
                  const Coord3& shift, const View& view, const Raster& own, const Raster& others);

} // namespace gsl_view

#endif
