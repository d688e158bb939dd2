#include "readers/FaceCollector.h"
#include "readers/MeshReaders.h"
#include "readers/WordScanner.h"

#define TINYOBJLOADER_USE_DOUBLE
#define TINYOBJLOADER_IMPLEMENTATION
#include <tiny_obj_loader.h>

#include <istream>
#include <limits>
#include <streambuf>

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

namespace {

/// The face statements of a file, one per line, and the data that resolves their indices.
struct Statements {
  std::vector<Coord3> vertices;
  std::string faces; ///< 'f' and the corners, without comments and continued lines
  struct Face {
    std::size_t verticesBefore; ///< a negative index counts back from here
    const char* position;
  };
  std::vector<Face> places;
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

/// Accepts v, v/vt, v//vn and v/vt/vn; the second and third part may be missing after their slash.
/// The loader accepts the beginning of any other word, and its conversion overflows unnoticed.
bool IsCornerWord(std::string_view word) {
  for (int part = 0; part < 3; ++part) {
    const std::size_t slash = word.find('/');
    const std::string_view number = word.substr(0, slash);
    std::int64_t value = 0;
    const bool present = ParseInteger(number, value);
    if (!present && (part == 0 || !number.empty())) return false;
    constexpr std::int64_t kLargest = std::numeric_limits<int>::max();
    if (value > kLargest || value < -kLargest) return false;
    if (slash == word.npos) return true;
    word.remove_prefix(slash + 1);
  }
  return false;
}

void TakeFace(const MeshSource& source, std::string_view rest, const char* position,
              Statements& statements) {
  bool any = false;
  statements.faces.push_back('f');
  for (std::string_view word = TakeWord(rest); !word.empty(); word = TakeWord(rest)) {
    if (!IsCornerWord(word)) {
      FailReadAt(source, position,
                 Quoted(word) + " is not a corner of a face; expected v, v/vt, v//vn or v/vt/vn");
    }
    statements.faces.push_back(' ');
    statements.faces.append(word);
    any = true;
  }
  if (!any) FailReadAt(source, position, "a face has no corners");
  statements.faces.push_back('\n');
  statements.places.push_back({statements.vertices.size(), position});
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
      // The faces are read after the scan, in about the same time.
      ReportPosition(source, bytes.data() + (position - bytes.data()) / 2);
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

/// A stream that lets the loader read from memory without a copy.
class MemoryBuffer : public std::streambuf {
public:
  explicit MemoryBuffer(std::string& text) {
    setg(text.data(), text.data(), text.data() + text.size());
  }
};

constexpr std::size_t kFacesPerReport = 4096;

/// Receives the loader's faces.
struct Receiver {
  const MeshSource& source;
  const Statements& statements;
  FaceCollector faces;
  std::size_t count = 0;
  std::vector<Coord3> ring;
};

Coord3 Resolve(const Receiver& receiver, const Statements::Face& face, int index) {
  const std::vector<Coord3>& vertices = receiver.statements.vertices;
  const auto total = static_cast<std::int64_t>(vertices.size());
  const auto before = static_cast<std::int64_t>(face.verticesBefore);
  const std::int64_t k = index < 0 ? before + index : std::int64_t{index} - 1;
  if (index == 0 || k < 0 || k >= total) {
    FailReadAt(receiver.source, face.position,
               "vertex " + std::to_string(index) + " does not exist (the file has " +
                   std::to_string(total) + " vertices, the first is 1)");
  }
  return vertices[static_cast<std::size_t>(k)];
}

void ReceiveFace(void* user, tinyobj::index_t* indices, int count) {
  Receiver& receiver = *static_cast<Receiver*>(user);
  const std::vector<Statements::Face>& faces = receiver.statements.places;
  const std::size_t number = receiver.count++;
  const Statements::Face& face = faces.at(number);
  if (number % kFacesPerReport == 0) {
    const std::size_t half = receiver.source.bytes.size() / 2;
    const double part = static_cast<double>(number) / static_cast<double>(faces.size());
    const auto done = static_cast<std::size_t>(static_cast<double>(half) * part);
    ReportPosition(receiver.source, receiver.source.bytes.data() + half + done);
  }
  receiver.ring.clear();
  for (int k = 0; k < count; ++k) {
    receiver.ring.push_back(Resolve(receiver, face, indices[k].vertex_index));
  }
  receiver.faces.Add(receiver.ring.data(), receiver.ring.size(), face.position);
}

} // namespace

// The loader's numbers are wrong in the last digits, and it reads NaN as zero. It does not join
// continued lines, it halves concave quadrangles along the shorter diagonal, and it opens material
// files. So it reads the face statements alone, and returns their corners one face at a time.
Mesh ReadObj(const MeshSource& source) {
  Statements statements = ScanStatements(source);
  Mesh mesh;
  mesh.corners.reserve(3 * statements.places.size());
  Receiver receiver{source, statements, FaceCollector(source, mesh), 0, {}};
  tinyobj::callback_t callback;
  callback.index_cb = ReceiveFace;
  MemoryBuffer buffer(statements.faces);
  std::istream stream(&buffer);
  std::string error;
  const bool read =
      tinyobj::LoadObjWithCallback(stream, callback, &receiver, nullptr, nullptr, &error);
  if (!read || receiver.count != statements.places.size()) {
    FailRead(source, "the face statements cannot be read " + Quoted(error));
  }
  receiver.faces.Finish();
  if (statements.freeForm != nullptr) {
    Warn(mesh, source,
         "left out curved surfaces, the first in line " +
             std::to_string(LineNumberAt(source.bytes, statements.freeForm)));
  }
  return mesh;
}

} // namespace gsl_mesh
