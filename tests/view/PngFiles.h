#ifndef GSL_TESTS_PNG_FILES_H
#define GSL_TESTS_PNG_FILES_H

#include "PageFiles.h"

#include <cairo.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace page_files {

/// Reads the pixels of a PNG.
inline Image ReadPng(const std::string& png) {
  const TemporaryFolder folder;
  cairo_surface_t* const surface =
      cairo_image_surface_create_from_png(folder.Write("page.png", png).c_str());
  Image image;
  image.width = static_cast<std::size_t>(cairo_image_surface_get_width(surface));
  image.height = static_cast<std::size_t>(cairo_image_surface_get_height(surface));
  const unsigned char* const data = cairo_image_surface_get_data(surface);
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(surface));
  for (std::size_t y = 0; y < image.height; ++y) {
    for (std::size_t x = 0; x < image.width; ++x) {
      std::uint32_t pixel = 0;
      std::memcpy(&pixel, data + y * stride + 4 * x, sizeof pixel);
      for (const unsigned shift : {16u, 8u, 0u})
        image.bytes.push_back(static_cast<char>((pixel >> shift) & 0xFFu));
    }
  }
  cairo_surface_destroy(surface);
  return image;
}

} // namespace page_files

#endif
