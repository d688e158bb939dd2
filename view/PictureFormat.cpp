#include "PictureFormat.h"

#include "MeshFormat.h"

namespace gsl_view {

std::optional<PictureFormat> PictureFormatOf(const std::string& path) {
  const std::string extension = gsl_mesh::ExtensionOf(path);
  if (extension == "svg") return PictureFormat::Svg;
  if (extension == "png") return PictureFormat::Png;
  if (extension == "pdf") return PictureFormat::Pdf;
  return std::nullopt;
}

bool CanDrawPictures() {
#ifdef GSL_WITHOUT_PICTURES
  return false;
#else
  return true;
#endif
}

} // namespace gsl_view
