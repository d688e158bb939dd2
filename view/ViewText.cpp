#include "ViewText.h"

#include "Printable.h"

#include <charconv>
#include <cmath>

namespace gsl_view {

namespace {

/// Returns the length of the UTF-8 character that begins at `at`; 0 for bytes that are not one.
std::size_t LengthAt(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char first = byte(at);
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || at + length > text.size()) return 0;
  for (std::size_t k = 1; k < length; ++k) {
    if ((byte(at + k) & 0xC0u) != 0x80u) return 0;
  }
  // Not the shortest form, a surrogate, or beyond the last character.
  const unsigned char second = byte(at + 1);
  const bool isWrong = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                       (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
  return isWrong ? 0 : length;
}

} // namespace

std::string ShortNumber(double value) {
  char text[32];
  // Drawings have no powers of ten where whole numbers will do.
  const double size = std::fabs(value);
  const auto end =
      size >= 1e6 && size < 1e15
          ? std::to_chars(text, text + sizeof text, std::round(value), std::chars_format::fixed)
          : std::to_chars(text, text + sizeof text, value + 0.0, std::chars_format::general, 6);
  return {text, end.ptr};
}

std::string RoughNumber(double value) {
  const double unit = std::pow(10.0, std::floor(std::log10(value)) - 1.0);
  return ShortNumber(std::round(value / unit) * unit);
}

std::string FullNumber(double value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value + 0.0);
  return {text, end.ptr};
}

std::string ShortVector(const gsl_arithmetic::Coord3& v) {
  return "(" + ShortNumber(v.x) + ", " + ShortNumber(v.y) + ", " + ShortNumber(v.z) + ")";
}

std::string DrawableText(const std::string& text) {
  const std::string printable = gsl_mesh::Printable(text);
  std::string drawable;
  for (std::size_t at = 0; at < printable.size();) {
    const std::size_t length = LengthAt(printable, at);
    if (length == 0)
      drawable += "\xEF\xBF\xBD";
    else
      drawable.append(printable, at, length);
    at += length == 0 ? 1 : length;
  }
  return drawable;
}

std::size_t NextCharacter(const std::string& text, std::size_t at) {
  ++at;
  while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0u) == 0x80u)
    ++at;
  return at;
}

} // namespace gsl_view
