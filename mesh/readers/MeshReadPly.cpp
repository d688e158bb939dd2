#include "MachineMemory.h"
#include "readers/FaceCollector.h"
#include "readers/MeshReaders.h"
#include "readers/WordScanner.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

namespace {

enum class Scalar { Int8, Uint8, Int16, Uint16, Int32, Uint32, Float32, Float64 };

struct ScalarName {
  std::string_view name;
  Scalar type;
};

constexpr ScalarName kScalarNames[] = {
    {"char", Scalar::Int8},      {"int8", Scalar::Int8},       {"uchar", Scalar::Uint8},
    {"uint8", Scalar::Uint8},    {"short", Scalar::Int16},     {"int16", Scalar::Int16},
    {"ushort", Scalar::Uint16},  {"uint16", Scalar::Uint16},   {"int", Scalar::Int32},
    {"int32", Scalar::Int32},    {"uint", Scalar::Uint32},     {"uint32", Scalar::Uint32},
    {"float", Scalar::Float32},  {"float32", Scalar::Float32}, {"double", Scalar::Float64},
    {"float64", Scalar::Float64}};

constexpr std::size_t SizeOf(Scalar type) {
  switch (type) {
  case Scalar::Int8:
  case Scalar::Uint8:
    return 1;
  case Scalar::Int16:
  case Scalar::Uint16:
    return 2;
  case Scalar::Int32:
  case Scalar::Uint32:
  case Scalar::Float32:
    return 4;
  case Scalar::Float64:
    break;
  }
  return 8;
}

bool IsReal(Scalar type) {
  return type == Scalar::Float32 || type == Scalar::Float64;
}

struct Property {
  std::string_view name;
  Scalar type;
  bool isList;
  Scalar countType;
};

struct Element {
  std::string_view name;
  std::uint64_t count;
  std::vector<Property> properties;
};

enum class Encoding { Text, LittleEndian, BigEndian };

struct Header {
  Encoding encoding = Encoding::Text;
  std::vector<Element> elements;
  std::size_t size = 0; ///< bytes before the data
};

/// The lines of the header. Binary data may begin with the byte of a line break, so all lines must
/// end as the first line does.
class HeaderLines {
public:
  explicit HeaderLines(const MeshSource& source) : m_source(source) {
    const std::size_t end = source.bytes.find_first_of("\r\n");
    if (end != std::string_view::npos && source.bytes[end] == '\r') {
      m_break = source.bytes.substr(end, 2) == "\r\n" ? "\r\n" : "\r";
    }
  }

  std::string_view Next() {
    const std::size_t end = m_source.bytes.find(m_break, m_next);
    if (end == std::string_view::npos) FailRead(m_source, "the PLY header has no 'end_header'");
    const std::string_view line = m_source.bytes.substr(m_next, end - m_next);
    m_next = end + m_break.size();
    return line;
  }

  std::size_t BytesTaken() const { return m_next; }

private:
  const MeshSource& m_source;
  std::string_view m_break = "\n";
  std::size_t m_next = 0;
};

std::vector<std::string_view> WordsOf(std::string_view line) {
  std::vector<std::string_view> words;
  for (std::size_t k = 0; k < line.size();) {
    while (k < line.size() && IsSpace(line[k]))
      ++k;
    const std::size_t begin = k;
    while (k < line.size() && !IsSpace(line[k]))
      ++k;
    if (k > begin) words.push_back(line.substr(begin, k - begin));
  }
  return words;
}

Scalar ParseScalar(const MeshSource& source, std::string_view word) {
  for (const ScalarName& row : kScalarNames) {
    if (row.name == word) return row.type;
  }
  FailReadAt(source, word.data(), "unknown PLY type " + Quoted(word));
}

Encoding ParseEncoding(const MeshSource& source, const std::vector<std::string_view>& words) {
  if (words.size() == 3 && words[2] == "1.0") {
    if (words[1] == "ascii") return Encoding::Text;
    if (words[1] == "binary_little_endian") return Encoding::LittleEndian;
    if (words[1] == "binary_big_endian") return Encoding::BigEndian;
  }
  FailReadAt(source, words[0].data(),
             "expected 'format', one of ascii, binary_little_endian, "
             "binary_big_endian, and '1.0'");
}

Element ParseElement(const MeshSource& source, const std::vector<std::string_view>& words) {
  std::int64_t count = 0;
  if (words.size() != 3 || !ParseInteger(words[2], count) || count < 0) {
    FailReadAt(source, words[0].data(), "expected 'element', a name and a count");
  }
  return {words[1], static_cast<std::uint64_t>(count), {}};
}

Property ParseProperty(const MeshSource& source, const std::vector<std::string_view>& words) {
  if (words.size() == 5 && words[1] == "list") {
    const Property property{words[4], ParseScalar(source, words[3]), true,
                            ParseScalar(source, words[2])};
    if (IsReal(property.countType)) {
      FailReadAt(source, words[0].data(), "the length of a list cannot be a real number");
    }
    return property;
  }
  if (words.size() == 3) return {words[2], ParseScalar(source, words[1]), false, Scalar::Uint8};
  FailReadAt(source, words[0].data(), "expected 'property', a type and a name");
}

Header ParseHeader(const MeshSource& source) {
  HeaderLines lines(source);
  if (WordsOf(lines.Next()) != std::vector<std::string_view>{"ply"}) {
    FailRead(source, "line 1: expected 'ply'");
  }
  Header header;
  bool formatSeen = false;
  for (;;) {
    const std::vector<std::string_view> words = WordsOf(lines.Next());
    if (words.empty() || words[0] == "comment" || words[0] == "obj_info") continue;
    if (words[0] == "end_header") break;
    if (words[0] == "format") {
      header.encoding = ParseEncoding(source, words);
      formatSeen = true;
    } else if (words[0] == "element") {
      header.elements.push_back(ParseElement(source, words));
    } else if (words[0] == "property") {
      if (header.elements.empty()) {
        FailReadAt(source, words[0].data(), "a 'property' comes before the first 'element'");
      }
      header.elements.back().properties.push_back(ParseProperty(source, words));
    } else {
      FailReadAt(source, words[0].data(), "unknown word in a PLY header: " + Quoted(words[0]));
    }
  }
  if (!formatSeen) FailRead(source, "the PLY header has no 'format'");
  header.size = lines.BytesTaken();
  return header;
}

/// Reads the values of a text body.
class TextValues {
public:
  /// The decimals of a text say more than the declared type.
  static constexpr Precision kOfDoubles = Precision::Unknown;

  TextValues(const MeshSource& source, std::size_t begin)
      : m_words(source, source.bytes.substr(begin), false) {}

  double Real(Scalar) { return m_words.Real("a value"); }
  std::int64_t Integer(Scalar) { return m_words.Integer("a value"); }
  void Skip(Scalar, std::uint64_t count) {
    for (std::uint64_t k = 0; k < count; ++k) {
      if (m_words.Next().empty()) m_words.Fail("the file ends before a value");
    }
  }
  /// Each value except the last takes at least a digit and a space.
  bool HasRoom(Scalar, std::uint64_t count) const {
    return count == 0 || count - 1 <= m_words.BytesLeft() / 2;
  }
  const char* Position() const { return m_words.Position(); }
  void Report() {} // the scanner reports its own progress
  void CheckEnd() {
    const std::string_view word = m_words.Next();
    if (!word.empty()) {
      m_words.Fail("the header's counts leave data at the end of the file: " + Quoted(word));
    }
  }

private:
  WordScanner m_words;
};

/// Reads the values of a binary body.
class BinaryValues {
public:
  static constexpr Precision kOfDoubles = Precision::Double;

  BinaryValues(const MeshSource& source, std::size_t begin, bool bigEndian)
      : m_source(source), m_next(source.bytes.data() + begin),
        m_end(source.bytes.data() + source.bytes.size()), m_bigEndian(bigEndian) {}

  double Real(Scalar type) {
    if (!IsReal(type)) return static_cast<double>(Integer(type));
    const std::uint64_t bits = Bits(SizeOf(type));
    if (type == Scalar::Float64) {
      double value = 0.0;
      std::memcpy(&value, &bits, sizeof value);
      return value;
    }
    const auto narrow = static_cast<std::uint32_t>(bits);
    float value = 0.0F;
    std::memcpy(&value, &narrow, sizeof value);
    return static_cast<double>(value);
  }

  /// Requires an integer type.
  std::int64_t Integer(Scalar type) {
    const std::uint64_t bits = Bits(SizeOf(type));
    switch (type) {
    case Scalar::Int8:
      return static_cast<std::int8_t>(bits);
    case Scalar::Int16:
      return static_cast<std::int16_t>(bits);
    case Scalar::Int32:
      return static_cast<std::int32_t>(bits);
    default:
      return static_cast<std::int64_t>(bits);
    }
  }

  void Skip(Scalar type, std::uint64_t count) {
    if (!HasRoom(type, count)) FailEnd();
    m_next += count * SizeOf(type);
  }
  bool HasRoom(Scalar type, std::uint64_t count) const {
    return count <= static_cast<std::uint64_t>(m_end - m_next) / SizeOf(type);
  }
  const char* Position() const { return nullptr; }
  void Report() {
    if (m_next < m_report) return;
    ReportPosition(m_source, m_next);
    m_report = m_next + std::min(kProgressStep, static_cast<std::size_t>(m_end - m_next));
  }

  /// Padding may follow; anything else means that a count is wrong.
  void CheckEnd() const {
    if (std::all_of(m_next, m_end, [](char c) { return c == '\0' || IsSpace(c); })) return;
    FailRead(m_source, "the header's counts leave " + std::to_string(m_end - m_next) +
                           " bytes at the end of the file");
  }

private:
  [[noreturn]] void FailEnd() const { FailRead(m_source, "truncated: the data end too early"); }

  std::uint64_t Bits(std::size_t size) {
    if (static_cast<std::size_t>(m_end - m_next) < size) FailEnd();
    std::uint64_t bits = 0;
    for (std::size_t k = 0; k < size; ++k) {
      const std::size_t shift = 8 * (m_bigEndian ? size - 1 - k : k);
      bits |= std::uint64_t{static_cast<unsigned char>(m_next[k])} << shift;
    }
    m_next += size;
    return bits;
  }

  const MeshSource& m_source;
  const char* m_next;
  const char* m_end;
  const char* m_report = m_next; ///< progress is reported from this place on
  bool m_bigEndian;
};

/// The corners of all faces, as indices of vertices, which may be after the faces in the file.
struct Faces {
  std::vector<std::int64_t> indices;
  struct Face {
    std::size_t count;
    const char* position; ///< null in a binary file
  };
  std::vector<Face> faces;
};

template <typename Values>
class BodyReader {
public:
  BodyReader(const MeshSource& source, Values values) : m_source(source), m_values(values) {}

  Mesh Read(const Header& header) {
    for (const Element& element : header.elements)
      ReadElement(element);
    m_values.CheckEnd();
    return Assemble();
  }

private:
  void ReadElement(const Element& element) {
    CheckRoom(element);
    if (element.name == "vertex") {
      ReadVertices(element);
    } else if (element.name == "face") {
      ReadFaces(element);
    } else if (element.name == "tristrips" && element.count > 0) {
      FailRead(m_source, "PLY triangle strips are not supported; export faces");
    } else {
      SkipElement(element);
    }
  }

  /// Refuses a count that the file cannot hold before anything is allocated for it.
  void CheckRoom(const Element& element) const {
    if (element.properties.empty()) return;
    std::uint64_t least = 0;
    for (const Property& p : element.properties)
      least += SizeOf(p.isList ? p.countType : p.type);
    const bool text = m_values.Position() != nullptr;
    const std::uint64_t values = element.properties.size();
    const bool fits = text ? element.count <= m_source.bytes.size() / values &&
                                 m_values.HasRoom(Scalar::Uint8, element.count * values)
                           : element.count <= m_source.bytes.size() / least &&
                                 m_values.HasRoom(Scalar::Uint8, element.count * least);
    if (fits) return;
    FailRead(m_source, "truncated: the header says " + std::to_string(element.count) +
                           " elements " + Quoted(element.name) + ", more than the file can hold");
  }

  void SkipProperty(const Property& property) {
    m_values.Skip(property.type, property.isList ? ListLength(property) : 1);
  }

  void SkipElement(const Element& element) {
    if (element.properties.empty()) return;
    for (std::uint64_t k = 0; k < element.count; ++k) {
      for (const Property& property : element.properties)
        SkipProperty(property);
    }
  }

  std::uint64_t ListLength(const Property& property) {
    const std::int64_t length = m_values.Integer(property.countType);
    if (length < 0 || !m_values.HasRoom(property.type, static_cast<std::uint64_t>(length))) {
      Fail("a list " + Quoted(property.name) + " of " + std::to_string(length) +
           " values does not fit into the file");
    }
    return static_cast<std::uint64_t>(length);
  }

  void ReadVertices(const Element& element) {
    if (m_verticesSeen) FailRead(m_source, "the PLY header has two elements 'vertex'");
    m_verticesSeen = true;
    std::vector<int> axes;
    for (const Property& p : element.properties) {
      const bool isAxis = !p.isList && p.name.size() == 1 && p.name[0] >= 'x' && p.name[0] <= 'z';
      axes.push_back(isAxis ? p.name[0] - 'x' : -1);
    }
    for (const int axis : {0, 1, 2}) {
      if (std::count(axes.begin(), axes.end(), axis) != 1) {
        FailRead(m_source, std::string("the PLY vertices need exactly one property '") +
                               static_cast<char>('x' + axis) + "'");
      }
    }
    m_precision = PrecisionOf(element, axes);
    ReserveLarge(m_vertices, element.count);
    for (std::uint64_t k = 0; k < element.count; ++k) {
      m_values.Report();
      double c[3] = {0.0, 0.0, 0.0};
      for (std::size_t p = 0; p < axes.size(); ++p) {
        const Property& property = element.properties[p];
        if (axes[p] < 0)
          SkipProperty(property);
        else
          c[axes[p]] = m_values.Real(property.type);
      }
      m_vertices.push_back({c[0], c[1], c[2]});
    }
  }

  /// Returns the precision of the coordinates, which is that of the widest.
  static Precision PrecisionOf(const Element& element, const std::vector<int>& axes) {
    Precision precision = Precision::Single;
    for (std::size_t p = 0; p < axes.size(); ++p) {
      if (axes[p] < 0) continue;
      const Scalar type = element.properties[p].type;
      if (type == Scalar::Float64) return Values::kOfDoubles;
      if (type != Scalar::Float32) precision = Precision::Unknown;
    }
    return precision;
  }

  void ReadFaces(const Element& element) {
    if (m_facesSeen) FailRead(m_source, "the PLY header has two elements 'face'");
    m_facesSeen = true;
    const auto isCorners = [](const Property& p) {
      return p.isList && (p.name == "vertex_indices" || p.name == "vertex_index");
    };
    const auto corners =
        std::find_if(element.properties.begin(), element.properties.end(), isCorners);
    if (corners == element.properties.end()) {
      if (element.count == 0) return;
      FailRead(m_source, "the PLY faces have no list 'vertex_indices'");
    }
    if (IsReal(corners->type)) FailRead(m_source, "the PLY vertex indices are real numbers");
    ReserveLarge(m_faces.faces, element.count);
    for (std::uint64_t k = 0; k < element.count; ++k) {
      m_values.Report();
      for (auto p = element.properties.begin(); p != element.properties.end(); ++p) {
        if (p == corners)
          ReadCorners(*p);
        else
          SkipProperty(*p);
      }
    }
  }

  void ReadCorners(const Property& property) {
    const char* const position = m_values.Position();
    const std::uint64_t length = ListLength(property);
    for (std::uint64_t k = 0; k < length; ++k) {
      m_faces.indices.push_back(m_values.Integer(property.type));
    }
    m_faces.faces.push_back({length, position});
  }

  Mesh Assemble() const {
    Mesh mesh;
    mesh.precision = m_precision;
    ReserveLarge(mesh.corners, 3 * m_faces.faces.size());
    FaceCollector collector(m_source, mesh);
    std::vector<Coord3> ring;
    const std::int64_t* index = m_faces.indices.data();
    for (std::size_t f = 0; f < m_faces.faces.size(); ++f) {
      ring.clear();
      for (std::size_t k = 0; k < m_faces.faces[f].count; ++k)
        ring.push_back(Vertex(*index++, f));
      collector.Add(ring.data(), ring.size(), m_faces.faces[f].position);
    }
    collector.Finish();
    return mesh;
  }

  Coord3 Vertex(std::int64_t index, std::size_t face) const {
    if (index < 0 || index >= static_cast<std::int64_t>(m_vertices.size())) {
      FailRead(m_source, "face " + std::to_string(face) + " (counted from 0): vertex " +
                             std::to_string(index) + " does not exist (the file has " +
                             std::to_string(m_vertices.size()) + " vertices, the first is 0)");
    }
    return m_vertices[static_cast<std::size_t>(index)];
  }

  [[noreturn]] void Fail(const std::string& message) const {
    if (m_values.Position() == nullptr) FailRead(m_source, message);
    FailReadAt(m_source, m_values.Position(), message);
  }

  const MeshSource& m_source;
  Values m_values;
  std::vector<Coord3> m_vertices;
  Faces m_faces;
  Precision m_precision = Precision::Unknown;
  bool m_verticesSeen = false;
  bool m_facesSeen = false;
};

} // namespace

Mesh ReadPly(const MeshSource& source) {
  const Header header = ParseHeader(source);
  if (header.encoding == Encoding::Text) {
    return BodyReader<TextValues>(source, TextValues(source, header.size)).Read(header);
  }
  const bool bigEndian = header.encoding == Encoding::BigEndian;
  return BodyReader<BinaryValues>(source, BinaryValues(source, header.size, bigEndian))
      .Read(header);
}

} // namespace gsl_mesh
