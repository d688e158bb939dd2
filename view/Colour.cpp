#include "Colour.h"

#include <algorithm>
#include <cmath>

namespace gsl_view {

namespace {

std::uint32_t ByteOf(double part) {
  return static_cast<std::uint32_t>(std::lround(255.0 * std::clamp(part, 0.0, 1.0)));
}

} // namespace

std::uint32_t PixelOf(const Colour& colour) {
  return (ByteOf(colour.red) << 16u) | (ByteOf(colour.green) << 8u) | ByteOf(colour.blue);
}

} // namespace gsl_view
