#include "support/VectorText.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace gsl_tools {

using gsl_arithmetic::Coord3;

namespace {

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// Removes and returns the next word, with the spaces before it; a word ends at a space or a comma.
std::string_view TakeWord(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  const std::string_view word = text.substr(0, text.find_first_of(" \t,"));
  text.remove_prefix(word.size());
  return word;
}

/// Removes the spaces after a word, and a comma.
void SkipSeparator(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  if (!text.empty() && text.front() == ',') text.remove_prefix(1);
}

/// Reads x, y or z, with or without a sign.
std::optional<Coord3> ParseAxis(std::string_view text) {
  const bool isSigned = !text.empty() && (text[0] == '+' || text[0] == '-');
  const double one = isSigned && text[0] == '-' ? -1.0 : 1.0;
  if (isSigned) text.remove_prefix(1);
  if (text == "x" || text == "X") return Coord3{one, 0.0, 0.0};
  if (text == "y" || text == "Y") return Coord3{0.0, one, 0.0};
  if (text == "z" || text == "Z") return Coord3{0.0, 0.0, one};
  return std::nullopt;
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
  double c[3];
  for (int k = 0; k < 3; ++k) {
    if (k > 0) SkipSeparator(text);
    const auto number = ParseNumber(TakeWord(text));
    if (!number) return std::nullopt;
    c[k] = *number;
  }
  if (!Trimmed(text).empty()) return std::nullopt;
  return Coord3{c[0], c[1], c[2]};
}

std::optional<Coord3> ParseDirection(std::string_view text) {
  if (const auto axis = ParseAxis(Trimmed(text))) return axis;
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

} // namespace gsl_tools
