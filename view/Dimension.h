#ifndef GSL_VIEW_DIMENSION_H
#define GSL_VIEW_DIMENSION_H

#include "Page.h"

#include <string>

namespace gsl_view {

/// A distance as on an engineering drawing: two extension lines, a line between them with
/// arrowheads, and its number.
struct Dimension {
  PagePoint from, to;    ///< the places that are measured
  bool isUpright = true; ///< measured along y, with the line beside; else along x
  double line = 0.0;     ///< x of an upright line, or y of a line across
  std::string text;
  bool isBroken = false; ///< drawn shorter than it is: the line has a zigzag
  Rect bounds;           ///< in which the text stays
};

/// Draws an arrow whose head, 2.6 mm long, ends at `tip`. An arrow that is shorter than its head
/// has no line.
void DrawArrow(Page& page, const PagePoint& tail, const PagePoint& tip, const Pen& pen);

/// Draws the dimension. Where there is no room between the extension lines, the arrowheads are
/// outside them.
void DrawDimension(Page& page, const Dimension& dimension);

} // namespace gsl_view

#endif
