#include "VectorText.h"

#include <fast_float/fast_float.h>

#include <charconv>
#include <cmath>

namespace gsl_sweep {

using gsl_arithmetic::Coord3;

namespace {

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

} // namespace

std::optional<double> ParseNumber(std::string_view text) {
  text = Trimmed(text);
  if (text.size() > 1 && text[0] == '+' && text[1] != '-' && text[1] != '+') text.remove_prefix(1);
  double value = 0.0;
  const char* const end = text.data() + text.size();
  const auto result = fast_float::from_chars(text.data(), end, value);
  if (result.ec != std::errc() || result.ptr != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::optional<Coord3> ParseVector(std::string_view text) {
  const std::size_t first = text.find(',');
  if (first == std::string_view::npos) return std::nullopt;
  const std::size_t second = text.find(',', first + 1);
  if (second == std::string_view::npos) return std::nullopt;
  const auto x = ParseNumber(text.substr(0, first));
  const auto y = ParseNumber(text.substr(first + 1, second - first - 1));
  const auto z = ParseNumber(text.substr(second + 1));
  if (!x || !y || !z) return std::nullopt;
  return Coord3{*x, *y, *z};
}

std::optional<Coord3> ParseDirection(std::string_view text) {
  if (text.size() == 2 && (text[0] == '+' || text[0] == '-')) {
    const double one = text[0] == '+' ? 1.0 : -1.0;
    switch (text[1]) {
    case 'x':
    case 'X':
      return Coord3{one, 0.0, 0.0};
    case 'y':
    case 'Y':
      return Coord3{0.0, one, 0.0};
    case 'z':
    case 'Z':
      return Coord3{0.0, 0.0, one};
    default:
      return std::nullopt;
    }
  }
  const auto vector = ParseVector(text);
  if (!vector || (vector->x == 0.0 && vector->y == 0.0 && vector->z == 0.0)) return std::nullopt;
  return vector;
}

std::string NumberText(double value) {
  char text[32];
  const auto result = std::to_chars(text, text + sizeof text, value);
  return std::string(text, result.ptr);
}

std::string VectorText(const Coord3& v) {
  return "(" + NumberText(v.x) + ", " + NumberText(v.y) + ", " + NumberText(v.z) + ")";
}

} // namespace gsl_sweep
