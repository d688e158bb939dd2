#include "readers/MeshReadFormats.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <charconv>
#include <limits>

#include <unistd.h>

namespace gsl_sweep {

namespace {

constexpr std::size_t longestQuote = 40;

char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

/// Number without its sign, in a spelling of the Microsoft C library: 1.#QNAN, 1.#IND, 1.#INF.
bool ParseHashName(std::string_view text, double& value) {
  if (!BeginsWithNoCase(text, "1.#")) return false;
  text.remove_prefix(3);
  if (BeginsWithNoCase(text, "inf")) {
    value = std::numeric_limits<double>::infinity();
    return true;
  }
  for (const std::string_view name : {"ind", "qnan", "snan"}) {
    if (!BeginsWithNoCase(text, name)) continue;
    value = std::numeric_limits<double>::quiet_NaN();
    return true;
  }
  return false;
}

} // namespace

void FailRead(const MeshSource& source, const std::string& message) {
  throw MeshError(OneLine(source.file) + ": " + message);
}

void FailReadAt(const MeshSource& source, const char* position, const std::string& message) {
  FailRead(source, "line " + std::to_string(LineOf(source.bytes, position)) + ": " + message);
}

void FailUnknownFormat(const MeshSource& source) {
  FailRead(source, "unknown mesh format (STL, OBJ, PLY, OFF, 3MF, glTF and what Assimp reads)");
}

std::string Quoted(std::string_view text) {
  const bool tooLong = text.size() > longestQuote;
  std::string shown = OneLine(std::string(text.substr(0, longestQuote)));
  // The message stays readable whatever bytes a damaged file holds.
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return !IsAscii(c); }, '?');
  return "'" + shown + (tooLong ? "...'" : "'");
}

std::size_t LineOf(std::string_view bytes, const char* position) {
  std::size_t line = 1;
  const char* const end = bytes.data() + bytes.size();
  for (const char* p = bytes.data(); p < position; ++p) {
    const bool lone = *p == '\r' && (p + 1 == end || p[1] != '\n');
    if (*p == '\n' || lone) ++line;
  }
  return line;
}

bool ParseReal(std::string_view token, double& value) {
  if (!token.empty() && token.front() == '+') {
    token.remove_prefix(1);
    if (!token.empty() && token.front() == '-') return false;
  }
  const char* const end = token.data() + token.size();
  const auto result = fast_float::from_chars(token.data(), end, value);
  if (result.ec == std::errc() && result.ptr == end) return true;
  const bool negative = !token.empty() && token.front() == '-';
  if (!ParseHashName(token.substr(negative ? 1 : 0), value)) return false;
  if (negative) value = -value;
  return true;
}

bool ParseInteger(std::string_view token, std::int64_t& value) {
  if (!token.empty() && token.front() == '+') {
    token.remove_prefix(1);
    if (!token.empty() && token.front() == '-') return false;
  }
  const char* const end = token.data() + token.size();
  const auto result = std::from_chars(token.data(), end, value);
  return result.ec == std::errc() && result.ptr == end;
}

bool BeginsWithNoCase(std::string_view text, std::string_view lowerCase) {
  return text.size() >= lowerCase.size() &&
         std::equal(lowerCase.begin(), lowerCase.end(), text.begin(),
                    [](char expected, char c) { return expected == LowerCase(c); });
}

std::uint64_t MemoryOfMachine() {
  const auto pages = sysconf(_SC_PHYS_PAGES);
  const auto pageSize = sysconf(_SC_PAGESIZE);
  if (pages <= 0 || pageSize <= 0) return 0;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

std::string_view WithoutByteOrderMark(std::string_view bytes) {
  if (bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
  return bytes;
}

void WordScanner::SkipSpace(bool stayOnLine) {
  while (m_next < m_end) {
    if (m_comments && *m_next == '#') {
      while (m_next < m_end && *m_next != '\n' && *m_next != '\r')
        ++m_next;
    } else if (!IsSpace(*m_next) || (stayOnLine && (*m_next == '\n' || *m_next == '\r'))) {
      return;
    } else {
      ++m_next;
    }
  }
}

std::string_view WordScanner::Word() {
  m_word = m_next;
  while (m_next < m_end && !IsSpace(*m_next) && !(m_comments && *m_next == '#'))
    ++m_next;
  return {m_word, static_cast<std::size_t>(m_next - m_word)};
}

std::string_view WordScanner::Next() {
  SkipSpace(false);
  return Word();
}

std::string_view WordScanner::NextOnLine() {
  SkipSpace(true);
  if (m_next == m_end || *m_next == '\n' || *m_next == '\r') return {};
  return Word();
}

void WordScanner::SkipLine() {
  while (m_next < m_end && *m_next != '\n' && *m_next != '\r')
    ++m_next;
}

bool WordScanner::AtEnd() {
  SkipSpace(false);
  return m_next == m_end;
}

double WordScanner::Real(const char* what) {
  const std::string_view word = Next();
  double value = 0.0;
  if (word.empty()) Fail(std::string("the file ends before ") + what);
  if (!ParseReal(word, value)) Fail(std::string(what) + " is not a number: " + Quoted(word));
  return value;
}

std::int64_t WordScanner::Integer(const char* what) {
  const std::string_view word = Next();
  std::int64_t value = 0;
  if (word.empty()) Fail(std::string("the file ends before ") + what);
  if (!ParseInteger(word, value)) {
    Fail(std::string(what) + " is not a whole number: " + Quoted(word));
  }
  return value;
}

void FaceCollector::Add(const gsl_arithmetic::Coord3* ring, std::size_t count,
                        const char* position) {
  if (count < 3) {
    if (m_leftOut++ == 0) m_firstLeftOut = m_faces;
    ++m_faces;
    return;
  }
  ++m_faces;
  if (count == 3) {
    m_mesh.corners.insert(m_mesh.corners.end(), ring, ring + 3);
    return;
  }
  const auto* triangles = m_triangulator.Triangulate(ring, count);
  if (triangles == nullptr) {
    const std::string message =
        "a face with " + std::to_string(count) + " corners is too winding to be cut into triangles";
    if (position == nullptr) FailRead(m_source, message);
    FailReadAt(m_source, position, message);
  }
  for (const auto& triangle : *triangles) {
    for (const std::size_t k : triangle)
      m_mesh.corners.push_back(ring[k]);
  }
}

void FaceCollector::Finish() {
  if (m_leftOut == 0) return;
  m_mesh.warnings.push_back(OneLine(m_source.file) + ": left out " + std::to_string(m_leftOut) +
                            (m_leftOut == 1 ? " face" : " faces") +
                            " of fewer than three corners, the first is face " +
                            std::to_string(m_firstLeftOut) + " (counted from 0)");
}

} // namespace gsl_sweep
