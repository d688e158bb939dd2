#ifndef GSL_VIEW_DETAIL_H
#define GSL_VIEW_DETAIL_H

#include "DrawnScene.h"
#include "Page.h"
#include "ViewScene.h"

#include <vector>

namespace gsl_view {

/// Returns the part of a convex polygon within a box. Coordinates may be infinite or NaN, and the
/// polygon is then empty.
std::vector<PagePoint> Clipped(const std::vector<PagePoint>& polygon, const Rect& box);

/// Returns the view of the contact enlarged, in the square at the left of the panel. Requires a
/// contact. It shows the triangles that touch; of one that is far larger than the other only the
/// surroundings of the contact; and at most what is smaller than the panel in a view of the scale
/// `sideScale`.
View DetailView(const ViewScene& scene, const DrawnScene& drawn, const Rect& panel,
                double sideScale);

/// Returns the radius, in units of the scene, of what the view shows.
double DetailRadius(const View& detail);

/// Draws the contact over the bodies that the view shows already: cuts them to a circle, and adds
/// both triangles, the contact point, the normal and a legend beside the circle. `sideScale` is the
/// scale of the side view, with which the enlargement is compared.
void DrawDetail(Page& page, const ViewScene& scene, const DrawnScene& drawn, const View& view,
                const Rect& panel, double sideScale);

} // namespace gsl_view

#endif
