#ifndef GSL_VIEW_COLOUR_H
#define GSL_VIEW_COLOUR_H

#include <cstdint>

namespace gsl_view {

/// A colour; each part is from 0 to 1.
struct Colour {
  double red = 0.0, green = 0.0, blue = 0.0;
};

/// Returns the colour as 0xRRGGBB.
std::uint32_t PixelOf(const Colour& colour);

} // namespace gsl_view

#endif
