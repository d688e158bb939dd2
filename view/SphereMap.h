#ifndef GSL_VIEW_SPHERE_MAP_H
#define GSL_VIEW_SPHERE_MAP_H

#include "PictureFormat.h"
#include "ViewScene.h"

#include <string>
#include <vector>

namespace gsl_view {

/// Draws one page, A4 landscape: a map of how far the body can go in each of many directions, and a
/// title block. The map is two Hemispheres, of which each place has the colour of the nearest
/// direction; free directions are striped, and directions in contact from the start are dotted. The
/// answer of the scene is not used.
///
/// Requires   at least one answer. Each has a direction of length one, up to rounding, and none is
///            cancelled.
/// Size       at most kMostPictureBytes; the map becomes coarser until the picture is as small.
/// Same bytes for the same scene, format and version of the drawing library and of the font.
/// Errors     as Page::Finish.
std::string DrawSphereMap(const ViewScene& scene, const std::vector<gsl_sweep::Answer>& answers,
                          PictureFormat format);

} // namespace gsl_view

#endif
