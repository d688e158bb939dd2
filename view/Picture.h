#ifndef GSL_VIEW_PICTURE_H
#define GSL_VIEW_PICTURE_H

#include "Page.h"
#include "ViewScene.h"

#include <cstddef>
#include <string>

namespace gsl_view {

/// The most bytes of a picture.
constexpr std::size_t kMostPictureBytes = 500 * 1024;

/// Draws one page, A4 landscape: an isometric view with the outline of the moving body before its
/// travel and both bodies at the contact, a side view with the travel as a dimension, the contact
/// enlarged, and a title block. Without a contact the bodies are shown before any travel.
///
/// Size       at most kMostPictureBytes; surfaces become coarser, and lines become part of them,
///            until the picture is as small.
/// Same bytes for the same scene, format and version of the drawing library and of the font.
/// Long       travels are drawn shorter than they are, with a zigzag in the dimension.
/// NaN        triangles with a NaN or infinite corner are left out.
/// Errors     as Page::Finish.
std::string DrawPicture(const ViewScene& scene, PictureFormat format);

} // namespace gsl_view

#endif
