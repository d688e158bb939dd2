#include "support/EvenDirections.h"

#include <cmath>

namespace gsl_tools {

namespace {

// The golden angle, pi (3 - sqrt(5)).
constexpr double kGoldenCosine = -0.7373688780783199;
constexpr double kGoldenSine = 0.6754902942615236;

} // namespace

std::vector<Coord3> EvenDirections(std::size_t count) {
  std::vector<Coord3> directions;
  directions.reserve(count);
  // Each angle comes from the last by a rotation, because sine and cosine of the C library are not
  // the same bits everywhere. Each step adds an error of a few units in the last place to the
  // angle, and the length is made one again.
  double cosine = 1.0;
  double sine = 0.0;
  for (std::size_t k = 0; k < count; ++k) {
    const double z = 1.0 - static_cast<double>(2 * k + 1) / static_cast<double>(count);
    const double radius = std::sqrt((1.0 - z) * (1.0 + z));
    directions.push_back({radius * cosine, radius * sine, z});
    const double c = cosine * kGoldenCosine - sine * kGoldenSine;
    const double s = cosine * kGoldenSine + sine * kGoldenCosine;
    const double length = std::sqrt(c * c + s * s);
    cosine = c / length;
    sine = s / length;
  }
  return directions;
}

} // namespace gsl_tools
