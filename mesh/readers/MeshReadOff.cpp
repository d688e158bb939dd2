#include "MachineMemory.h"
#include "readers/FaceCollector.h"
#include "readers/MeshReaders.h"
#include "readers/WordScanner.h"

#include <algorithm>

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

namespace {

/// Returns the keyword at the beginning of `word`, [ST][C][N][4][n]OFF, or an empty text. A count
/// may follow without a space.
std::string_view KeywordOf(std::string_view word) {
  std::size_t size = 0;
  for (const std::string_view letters : {"ST", "C", "N", "4", "n"}) {
    if (word.substr(size, letters.size()) == letters) size += letters.size();
  }
  if (word.substr(size, 3) != "OFF") return {};
  size += 3;
  const bool countFollows = size < word.size() && word[size] >= '0' && word[size] <= '9';
  return size == word.size() || countFollows ? word.substr(0, size) : std::string_view{};
}

/// Returns the words after the keyword.
WordScanner AfterKeyword(const MeshSource& source) {
  const std::string_view text = WithoutByteOrderMark(source.bytes);
  WordScanner words(source, text, true);
  const std::string_view keyword = KeywordOf(words.Next());
  if (keyword.empty()) return {source, text, true};
  if (keyword.find_first_of("4n") != std::string_view::npos) {
    words.Fail("only three-dimensional OFF files are supported, not " + Quoted(keyword));
  }
  const char* const end = keyword.data() + keyword.size();
  const auto left = static_cast<std::size_t>(text.data() + text.size() - end);
  WordScanner rest(source, {end, left}, true);
  if (WordScanner ahead = rest; ahead.NextOnLine() == "BINARY") {
    ahead.Fail("binary OFF files are not supported");
  }
  return rest;
}

/// Reads a count of things; each takes at least `leastBytes` of the rest of the text.
std::size_t ReadCount(WordScanner& words, const char* what, std::size_t leastBytes) {
  const std::int64_t count = words.Integer(what);
  const std::size_t room = words.BytesLeft() / leastBytes + 1;
  if (count < 0 || static_cast<std::uint64_t>(count) > room) {
    words.Fail(std::string(what) + " is " + std::to_string(count) + ", which the file cannot hold");
  }
  return static_cast<std::size_t>(count);
}

/// The count of edges is not used. Some writers leave it out, and some write it on its own line.
void SkipEdgeCount(WordScanner& words) {
  std::int64_t count = 0;
  WordScanner ahead = words;
  std::string_view word = ahead.NextOnLine();
  if (word.empty()) {
    word = ahead.Next();
    if (!ParseInteger(word, count) || !ahead.NextOnLine().empty()) return;
  }
  words.Integer("the count of edges");
}

Coord3 ReadVertex(WordScanner& words) {
  const double x = words.Real("a coordinate");
  const double y = words.Real("a coordinate");
  const double z = words.Real("a coordinate");
  words.SkipLine(); // a normal, a colour or a texture coordinate
  return {x, y, z};
}

const Coord3& ReadCorner(WordScanner& words, const std::vector<Coord3>& vertices) {
  const std::int64_t index = words.Integer("the corner of a face");
  if (index < 0 || static_cast<std::uint64_t>(index) >= vertices.size()) {
    words.Fail("vertex " + std::to_string(index) + " does not exist (the file has " +
               std::to_string(vertices.size()) + " vertices, the first is 0)");
  }
  return vertices[static_cast<std::size_t>(index)];
}

} // namespace

bool BeginsWithOffKeyword(std::string_view bytes) {
  const std::string_view text = WithoutByteOrderMark(bytes);
  const MeshSource source{text, {}};
  WordScanner words(source, text, true);
  return !KeywordOf(words.Next()).empty();
}

Mesh ReadOff(const MeshSource& source) {
  WordScanner words = AfterKeyword(source);
  const std::size_t vertexCount = ReadCount(words, "the count of vertices", 6);
  const std::size_t faceCount = ReadCount(words, "the count of faces", 2);
  SkipEdgeCount(words);

  std::vector<Coord3> vertices;
  ReserveLarge(vertices, vertexCount);
  for (std::size_t k = 0; k < vertexCount; ++k)
    vertices.push_back(ReadVertex(words));

  Mesh mesh;
  ReserveLarge(mesh.corners, 3 * std::min(faceCount, source.bytes.size() / 8));
  FaceCollector collector(source, mesh);
  std::vector<Coord3> ring;
  for (std::size_t k = 0; k < faceCount; ++k) {
    const std::size_t corners = ReadCount(words, "the count of corners", 2);
    const char* const position = words.Position();
    ring.clear();
    for (std::size_t c = 0; c < corners; ++c)
      ring.push_back(ReadCorner(words, vertices));
    words.SkipLine(); // a colour
    collector.Add(ring.data(), ring.size(), position);
  }
  if (!words.AtEnd()) {
    words.Next();
    words.Fail("the counts leave data at the end of the file");
  }
  collector.Finish();
  return mesh;
}

} // namespace gsl_mesh
