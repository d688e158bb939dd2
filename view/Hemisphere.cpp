#include "Hemisphere.h"

#include <algorithm>
#include <cmath>

namespace gsl_view {

PagePoint Hemisphere::At(const Coord3& direction) const {
  const double side = isUpper ? 1.0 : -1.0;
  // The distance from the centre is radius * sqrt(1 - height), and x and y together have the length
  // sqrt((1 - height) * (1 + height)).
  const double factor = radius / std::sqrt(1.0 + side * direction.z);
  return {centre.x + side * factor * direction.x, centre.y - factor * direction.y};
}

std::optional<Coord3> Hemisphere::DirectionAt(const PagePoint& place) const {
  const double side = isUpper ? 1.0 : -1.0;
  const double u = (place.x - centre.x) / radius, v = (centre.y - place.y) / radius;
  const double square = u * u + v * v;
  if (!(square <= 1.0)) return std::nullopt;
  const double factor = std::sqrt(2.0 - square);
  return Coord3{side * u * factor, v * factor, side * (1.0 - square)};
}

} // namespace gsl_view
