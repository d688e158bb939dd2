#ifndef GSL_VIEW_PICTURE_FORMAT_H
#define GSL_VIEW_PICTURE_FORMAT_H

#include <optional>
#include <string>

namespace gsl_view {

/// The file formats of a picture.
enum class PictureFormat : unsigned char { Svg, Png, Pdf };

/// Returns the format of the extension .svg, .png or .pdf, in upper or lower case.
std::optional<PictureFormat> PictureFormatOf(const std::string& path);

/// Returns whether this build can draw pictures, which needs Cairo.
bool CanDrawPictures();

} // namespace gsl_view

#endif
