#include "MeshSource.h"

#include "Printable.h"

#include <algorithm>

namespace gsl_mesh {

namespace {

constexpr std::size_t kLongestQuote = 40;

} // namespace

void ReportPosition(const MeshSource& source, const char* position) {
  if (source.progress == nullptr) return;
  (*source.progress)(static_cast<double>(position - source.bytes.data()) /
                     static_cast<double>(source.bytes.size()));
}

void FailRead(const MeshSource& source, const std::string& message) {
  throw MeshError(source.file + ": " + message);
}

void FailReadAt(const MeshSource& source, const char* position, const std::string& message) {
  FailRead(source, "line " + std::to_string(LineNumberAt(source.bytes, position)) + ": " + message);
}

void FailUnknownFormat(const MeshSource& source) {
  FailRead(source, "is not of a known mesh format; expected STL, OBJ, PLY, OFF, 3MF, glTF or "
                   "another format that Assimp reads");
}

void Warn(Mesh& mesh, const MeshSource& source, const std::string& message) {
  mesh.warnings.push_back(Printable(source.file + ": " + message));
}

std::string Quoted(std::string_view text) {
  const bool tooLong = text.size() > kLongestQuote;
  std::string shown(text.substr(0, kLongestQuote));
  // The message stays readable for all bytes that a damaged file may hold.
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
  return "'" + shown + (tooLong ? "...'" : "'");
}

std::size_t LineNumberAt(std::string_view bytes, const char* position) {
  std::size_t line = 1;
  const char* const end = bytes.data() + bytes.size();
  for (const char* p = bytes.data(); p < position; ++p) {
    const bool lone = *p == '\r' && (p + 1 == end || p[1] != '\n');
    if (*p == '\n' || lone) ++line;
  }
  return line;
}

std::string_view WithoutByteOrderMark(std::string_view bytes) {
  if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
  return bytes;
}

} // namespace gsl_mesh
