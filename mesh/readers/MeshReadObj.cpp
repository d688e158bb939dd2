#include "MachineMemory.h"
#include "readers/FaceCollector.h"
#include "readers/MeshReaders.h"
#include "readers/WordScanner.h"

#include <limits>

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

namespace {

/// The vertices and faces of a file.
struct Statements {
  std::vector<Coord3> vertices;
  std::vector<int> corners; ///< of all faces in turn, as numbers of the file
  struct Face {
    std::size_t cornerCount;
    std::size_t verticesBefore; ///< a negative number counts back from here
    const char* position;
  };
  std::vector<Face> faces;
  const char* freeForm = nullptr; ///< the first statement of a curved surface
};

bool EndsLine(char c) {
  return c == '\n' || c == '\r';
}

const char* LineEnd(const char* p, const char* end) {
  while (p < end && !EndsLine(*p))
    ++p;
  return p;
}

const char* BehindLineEnd(const char* p, const char* end) {
  if (p < end && *p == '\r')
    ++p;
  else if (p < end)
    return p + 1;
  if (p < end && *p == '\n') ++p;
  return p;
}

std::string_view Between(const char* begin, const char* end) {
  return {begin, static_cast<std::size_t>(end - begin)};
}

std::string_view TrimmedRight(std::string_view text) {
  while (!text.empty() && IsSpace(text.back()))
    text.remove_suffix(1);
  return text;
}

bool IsContinued(std::string_view line) {
  line = TrimmedRight(line);
  return !line.empty() && line.back() == '\\';
}

/// Returns the statement that begins at `p`, and moves `p` after it. `joined` holds the statement
/// when it has continued lines. A comment ends the statement.
std::string_view TakeStatement(const char*& p, const char* end, std::string& joined) {
  const char* const lineEnd = LineEnd(p, end);
  std::string_view line = Between(p, lineEnd);
  p = BehindLineEnd(lineEnd, end);
  if (const std::size_t comment = line.find('#'); comment != line.npos) {
    return line.substr(0, comment);
  }
  if (!IsContinued(line)) return line;
  joined.clear();
  for (;;) {
    const bool continued = IsContinued(line);
    line = TrimmedRight(line);
    if (continued) line.remove_suffix(1);
    joined.append(line);
    joined.push_back(' ');
    if (!continued || p == end) return joined;
    const char* const nextEnd = LineEnd(p, end);
    line = Between(p, nextEnd);
    p = BehindLineEnd(nextEnd, end);
    if (const std::size_t comment = line.find('#'); comment != line.npos) {
      line = line.substr(0, comment);
    }
  }
}

std::string_view TakeWord(std::string_view& text) {
  std::size_t begin = 0;
  while (begin < text.size() && IsSpace(text[begin]))
    ++begin;
  std::size_t end = begin;
  while (end < text.size() && !IsSpace(text[end]))
    ++end;
  const std::string_view word = text.substr(begin, end - begin);
  text.remove_prefix(end);
  return word;
}

/// Reads the first three numbers; a weight or a colour after them is not used.
Coord3 ReadVertex(const MeshSource& source, std::string_view rest, const char* position) {
  double c[3];
  for (double& value : c) {
    const std::string_view word = TakeWord(rest);
    if (word.empty()) FailReadAt(source, position, "a vertex has fewer than three coordinates");
    if (!ParseReal(word, value)) {
      FailReadAt(source, position, "a coordinate is not a number: " + Quoted(word));
    }
  }
  return {c[0], c[1], c[2]};
}

/// Reads a whole number that an int can hold, either way round.
bool ParseCornerNumber(std::string_view text, std::int64_t& value) {
  constexpr std::int64_t kLargest = std::numeric_limits<int>::max();
  return ParseInteger(text, value) && value <= kLargest && value >= -kLargest;
}

/// Reads v, v/vt, v//vn and v/vt/vn; the second and third part may be missing after their slash.
/// Writes v.
bool ParseCorner(std::string_view word, int& vertex) {
  for (int part = 0; part < 3; ++part) {
    const std::size_t slash = word.find('/');
    const std::string_view number = word.substr(0, slash);
    std::int64_t value = 0;
    const bool mayBeMissing = part > 0 && number.empty();
    if (!mayBeMissing && !ParseCornerNumber(number, value)) return false;
    if (part == 0) vertex = static_cast<int>(value);
    if (slash == word.npos) return true;
    word.remove_prefix(slash + 1);
  }
  return false;
}

void TakeFace(const MeshSource& source, std::string_view rest, const char* position,
              Statements& statements) {
  const std::size_t before = statements.corners.size();
  for (std::string_view word = TakeWord(rest); !word.empty(); word = TakeWord(rest)) {
    int vertex = 0;
    if (!ParseCorner(word, vertex)) {
      FailReadAt(source, position,
                 Quoted(word) + " is not a corner of a face; expected v, v/vt, v//vn or v/vt/vn");
    }
    statements.corners.push_back(vertex);
  }
  const std::size_t count = statements.corners.size() - before;
  if (count == 0) FailReadAt(source, position, "a face has no corners");
  statements.faces.push_back({count, statements.vertices.size(), position});
}

Statements ScanStatements(const MeshSource& source) {
  Statements statements;
  const std::string_view bytes = WithoutByteOrderMark(source.bytes);
  const char* p = bytes.data();
  const char* const end = p + bytes.size();
  std::string joined;
  const char* report = p;
  while (p < end) {
    while (p < end && IsSpace(*p))
      ++p;
    const char* const position = p;
    if (position >= report) {
      ReportPosition(source, position);
      report = position + std::min(kProgressStep, static_cast<std::size_t>(end - position));
    }
    const bool short1 = end - p >= 2 && IsSpace(p[1]) && !EndsLine(p[1]);
    if (short1 && *p == 'v') {
      statements.vertices.push_back(
          ReadVertex(source, TakeStatement(p, end, joined).substr(1), position));
    } else if (short1 && *p == 'f') {
      TakeFace(source, TakeStatement(p, end, joined).substr(1), position, statements);
    } else {
      // No other statement describes triangles. Names may end in a backslash, so other lines are
      // not continued; the rest of a continued line of numbers is not a statement.
      const char* const lineEnd = LineEnd(p, end);
      std::string_view line = Between(p, lineEnd);
      const std::string_view keyword = TakeWord(line);
      if (keyword == "surf" && statements.freeForm == nullptr) statements.freeForm = position;
      if (keyword == "v" || keyword == "f") {
        FailReadAt(source, position,
                   keyword == "v" ? "a vertex has no coordinates" : "a face has no corners");
      }
      p = lineEnd;
    }
  }
  return statements;
}

/// Returns the vertex with a number of the file.
Coord3 VertexOf(const MeshSource& source, const Statements& statements,
                const Statements::Face& face, int number) {
  const auto total = static_cast<std::int64_t>(statements.vertices.size());
  const auto before = static_cast<std::int64_t>(face.verticesBefore);
  const std::int64_t k = number < 0 ? before + number : std::int64_t{number} - 1;
  if (number == 0 || k < 0 || k >= total) {
    FailReadAt(source, face.position,
               "vertex " + std::to_string(number) + " does not exist (the file has " +
                   std::to_string(total) + " vertices, the first is 1)");
  }
  return statements.vertices[static_cast<std::size_t>(k)];
}

} // namespace

Mesh ReadObj(const MeshSource& source) {
  const Statements statements = ScanStatements(source);
  Mesh mesh;
  ReserveLarge(mesh.corners, 3 * statements.faces.size());
  FaceCollector collector(source, mesh);
  std::vector<Coord3> ring;
  const int* number = statements.corners.data();
  for (const Statements::Face& face : statements.faces) {
    ring.clear();
    for (std::size_t k = 0; k < face.cornerCount; ++k)
      ring.push_back(VertexOf(source, statements, face, *number++));
    collector.Add(ring.data(), ring.size(), face.position);
  }
  collector.Finish();
  if (statements.freeForm != nullptr) {
    Warn(mesh, source,
         "left out curved surfaces, the first in line " +
             std::to_string(LineNumberAt(source.bytes, statements.freeForm)));
  }
  return mesh;
}

} // namespace gsl_mesh
