#include "MeshSamples.h"
#include "RandomNumbers.h"
#include "readers/MeshReaders.h"

#include <random>

using namespace gsl_mesh_samples;
using gsl_mesh::ReadMeshFromMemory;

namespace {

Mesh Read(std::string_view bytes) {
  return ReadMeshFromMemory(bytes, "sample", MeshFormat::Ply);
}

std::string ErrorOfPly(std::string_view bytes) {
  return ErrorOf(MeshFormat::Ply, bytes);
}

/// Appends a value as one of the types of the format; text when `format` is 'a', else binary,
/// little ('l') or big ('b') endian.
void AppendAs(std::string& bytes, const std::string& type, double value, char format) {
  const bool big = format == 'b';
  const auto whole = static_cast<std::int64_t>(value);
  if (format == 'a')
    bytes += Text(value) + " ";
  else if (type == "char" || type == "int8")
    AppendNumber(bytes, static_cast<std::int8_t>(whole), big);
  else if (type == "uchar" || type == "uint8")
    AppendNumber(bytes, static_cast<std::uint8_t>(whole), big);
  else if (type == "short" || type == "int16")
    AppendNumber(bytes, static_cast<std::int16_t>(whole), big);
  else if (type == "ushort" || type == "uint16")
    AppendNumber(bytes, static_cast<std::uint16_t>(whole), big);
  else if (type == "int" || type == "int32")
    AppendNumber(bytes, static_cast<std::int32_t>(whole), big);
  else if (type == "uint" || type == "uint32")
    AppendNumber(bytes, static_cast<std::uint32_t>(whole), big);
  else if (type == "float" || type == "float32")
    AppendNumber(bytes, static_cast<float>(value), big);
  else
    AppendNumber(bytes, value, big);
}

std::string FormatName(char format) {
  if (format == 'a') return "ascii";
  return format == 'l' ? "binary_little_endian" : "binary_big_endian";
}

const std::vector<std::string> wholeTypes{"char", "uchar", "short", "ushort", "int",   "uint",
                                          "int8", "uint8", "int16", "uint16", "int32", "uint32"};

/// Returns a text file of one triangle with `lines` before the end of the header.
std::string TextWith(const std::string& header, const std::string& body) {
  return "ply\nformat ascii 1.0\n" + header + "end_header\n" + body;
}

const std::string vertexHeader =
    "element vertex 3\nproperty float x\nproperty float y\nproperty float z\n";
const std::string faceHeader = "element face 1\nproperty list uchar int vertex_indices\n";
const std::string vertices = "0 0 0\n1 0 0\n1 1 0\n";
const std::vector<Coord3> corners{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}};

} // namespace

TEST(MeshReadPly, EveryEncodingKeepsTheFilesOrder) {
  ExpectCorners(Read(PlyText()), TetrahedronCorners());
  ExpectCorners(Read(PlyBinary(false)), TetrahedronCorners());
  ExpectCorners(Read(PlyBinary(true)), TetrahedronCorners());
}

TEST(MeshReadPly, CoordinatesMayHaveEveryType) {
  std::vector<std::string> types = wholeTypes;
  types.insert(types.end(), {"float", "double", "float32", "float64"});
  for (const char format : {'a', 'l', 'b'}) {
    for (const std::string& type : types) {
      SCOPED_TRACE(type + " " + format);
      const bool isSigned = type[0] != 'u';
      const bool isReal = type[0] == 'f' || type[0] == 'd';
      const double a = isSigned ? -5.0 : 200.0, b = isReal ? 0.375 : 7.0;
      std::string bytes = "ply\nformat " + FormatName(format) + " 1.0\nelement vertex 3\n";
      for (const char axis : {'x', 'y', 'z'})
        bytes += "property " + type + " " + axis + "\n";
      bytes += faceHeader + "end_header\n";
      for (const Coord3& v : {Coord3{a, b, 0}, Coord3{1, a, b}, Coord3{b, 0, a}}) {
        for (const double c : {v.x, v.y, v.z})
          AppendAs(bytes, type, c, format);
      }
      AppendAs(bytes, "uchar", 3, format);
      for (const int k : {2, 0, 1})
        AppendAs(bytes, "int", k, format);
      const Mesh mesh = Read(bytes);
      ExpectCorners(mesh, {{b, 0, a}, {a, b, 0}, {1, a, b}});
      const bool isDouble = type[0] == 'd' || type == "float64";
      const gsl_mesh::Precision ofReal =
          isDouble ? (format == 'a' ? gsl_mesh::Precision::Unknown : gsl_mesh::Precision::Double)
                   : gsl_mesh::Precision::Single;
      EXPECT_EQ(mesh.precision, isReal ? ofReal : gsl_mesh::Precision::Unknown);
    }
  }
}

/// Returns the precision of a binary file whose coordinates have these types.
gsl_mesh::Precision PrecisionOfBinary(const std::vector<std::string>& types) {
  std::string bytes = "ply\nformat binary_little_endian 1.0\nelement vertex 3\n";
  for (std::size_t c = 0; c < 3; ++c)
    bytes += "property " + types[c] + " " + "xyz"[c] + "\n";
  bytes += "property double quality\n";
  bytes += faceHeader + "end_header\n";
  for (const Coord3& v : {Coord3{0, 0, 0}, Coord3{1, 0, 0}, Coord3{1, 1, 0}}) {
    AppendAs(bytes, types[0], v.x, 'l');
    AppendAs(bytes, types[1], v.y, 'l');
    AppendAs(bytes, types[2], v.z, 'l');
    AppendAs(bytes, "double", 0.5, 'l');
  }
  AppendAs(bytes, "uchar", 3, 'l');
  for (const int k : {0, 1, 2})
    AppendAs(bytes, "int", k, 'l');
  return Read(bytes).precision;
}

TEST(MeshReadPly, PrecisionIsThatOfTheWidestCoordinate) {
  using gsl_mesh::Precision;
  EXPECT_EQ(PrecisionOfBinary({"float", "float", "float"}), Precision::Single);
  EXPECT_EQ(PrecisionOfBinary({"double", "float", "float"}), Precision::Double);
  EXPECT_EQ(PrecisionOfBinary({"float", "double", "float"}), Precision::Double);
  EXPECT_EQ(PrecisionOfBinary({"int", "float", "double"}), Precision::Double);
  EXPECT_EQ(PrecisionOfBinary({"float", "int", "float"}), Precision::Unknown);
}

TEST(MeshReadPly, ListsMayHaveEveryWholeType) {
  for (const char format : {'a', 'l', 'b'}) {
    for (const std::string& countType : wholeTypes) {
      for (const std::string& type : wholeTypes) {
        SCOPED_TRACE(countType + " " + type + " " + format);
        std::string bytes = "ply\nformat " + FormatName(format) + " 1.0\n" + vertexHeader +
                            "element face 1\nproperty list " + countType + " " + type +
                            " vertex_index\nend_header\n";
        for (const Coord3& v : corners) {
          for (const double c : {v.x, v.y, v.z})
            AppendAs(bytes, "float", c, format);
        }
        AppendAs(bytes, countType, 3, format);
        for (const int k : {0, 1, 2})
          AppendAs(bytes, type, k, format);
        ExpectCorners(Read(bytes), corners);
      }
    }
  }
}

TEST(MeshReadPly, OtherPropertiesAndElementsAreSkipped) {
  for (const char format : {'a', 'l', 'b'}) {
    SCOPED_TRACE(format);
    std::string bytes = "ply\nformat " + FormatName(format) +
                        " 1.0\nobj_info a\ncomment b\nelement camera 2\nproperty double a\n"
                        "property list uchar short b\nelement nothing 7\n"
                        "element face 1\nproperty uchar red\n"
                        "property list uchar int vertex_indices\nproperty list int float uv\n"
                        "element vertex 3\nproperty list uchar uchar q\nproperty float z\n"
                        "property short t\nproperty float y\nproperty float x\n"
                        "element edge 1\nproperty int v1\nend_header\n";
    for (const int length : {0, 2}) {
      AppendAs(bytes, "double", 4, format);
      AppendAs(bytes, "uchar", length, format);
      for (int k = 0; k < length; ++k)
        AppendAs(bytes, "short", k, format);
    }
    AppendAs(bytes, "uchar", 255, format);
    AppendAs(bytes, "uchar", 3, format);
    for (const int k : {0, 1, 2})
      AppendAs(bytes, "int", k, format);
    AppendAs(bytes, "int", 1, format);
    AppendAs(bytes, "float", 0.5, format);
    for (const Coord3& v : corners) {
      AppendAs(bytes, "uchar", 1, format);
      AppendAs(bytes, "uchar", 9, format);
      AppendAs(bytes, "float", v.z, format);
      AppendAs(bytes, "short", 9, format);
      AppendAs(bytes, "float", v.y, format);
      AppendAs(bytes, "float", v.x, format);
    }
    AppendAs(bytes, "int", 1, format);
    ExpectCorners(Read(bytes), corners);
  }
}

TEST(MeshReadPly, TextKeepsEveryDigitOfADouble) {
  std::mt19937_64 random(14);
  RealsIn number(-10.0, 10.0);
  std::vector<Coord3> ring;
  std::string body;
  for (int k = 0; k < 3; ++k) {
    ring.push_back({number(random), number(random), number(random)});
    body += Text(ring.back()) + "\n";
  }
  ExpectCorners(Read(TextWith(vertexHeader + faceHeader, body + "3 0 1 2")), ring);
}

TEST(MeshReadPly, OnlyTheNameOfAnAxisAloneIsACoordinate) {
  const std::string header = "element vertex 3\nproperty float x\nproperty float xn\n"
                             "property float y\nproperty list uchar float y\n"
                             "property float w\nproperty float z\nproperty float {\n"
                             "property float zeta\n";
  const std::string body = "0 9 0 1 9 9 0 9 9\n1 9 0 0 9 0 9 9\n1 9 1 2 9 9 9 0 9 9\n3 0 1 2\n";
  ExpectCorners(Read(TextWith(header + faceHeader, body)), corners);
}

TEST(MeshReadPly, ElementWithoutPropertiesHasNoValuesWhateverItsCount) {
  const std::string header = "element nothing 9000000000000000000\n" + vertexHeader + faceHeader;
  ExpectCorners(Read(TextWith(header, vertices + "3 0 1 2\n")), corners);
}

TEST(MeshReadPly, HeaderMayHoldEmptyLines) {
  ExpectCorners(
      Read(TextWith("\n" + vertexHeader + " \t\n" + faceHeader + "\n", vertices + "3 0 1 2\n")),
      corners);
}

TEST(MeshReadPly, FirstReportOfBinaryDataIsWhereTheyBegin) {
  const std::string bytes = PlyBinary(false);
  const std::size_t header = bytes.find("end_header\n") + 11;
  std::vector<double> parts;
  const gsl_mesh::MeshProgress progress = [&](double part) { parts.push_back(part); };
  ExpectCorners(gsl_mesh::ReadPly({bytes, "sample", &progress}), TetrahedronCorners());
  ASSERT_FALSE(parts.empty());
  EXPECT_EQ(parts[0], static_cast<double>(header) / static_cast<double>(bytes.size()));
}

TEST(MeshReadPly, TextMayHaveOddWhiteSpace) {
  ExpectCorners(Read(TextWith(vertexHeader + faceHeader, " 0 0\n0 1 0 0\r\n1\t1 0 3 0 1\n2\n\n")),
                corners);
}

TEST(MeshReadPly, HeaderLinesMayEndInEveryWay) {
  for (const char* lineBreak : {"\n", "\r\n", "\r"}) {
    for (const bool bigEndian : {false, true}) {
      std::string bytes = PlyBinary(bigEndian), changed;
      const std::size_t header = bytes.find("end_header\n") + 11;
      for (const char c : bytes.substr(0, header))
        changed += c == '\n' ? lineBreak : std::string(1, c);
      ExpectCorners(Read(changed + bytes.substr(header)), TetrahedronCorners());
    }
  }
}

TEST(MeshReadPly, DataMayBeginWithTheByteOfALineBreak) {
  std::string bytes = "ply\rformat binary_little_endian 1.0\relement vertex 3\rproperty char x\r"
                      "property char y\rproperty char z\relement face 1\r"
                      "property list uchar uchar vertex_indices\rend_header\r";
  bytes += std::string("\x0a\x00\x00\x01\x00\x00\x01\x01\x00\x03\x00\x01\x02", 13);
  ExpectCorners(Read(bytes), {{10, 0, 0}, {1, 0, 0}, {1, 1, 0}});
}

TEST(MeshReadPly, PolygonsAreCutAndSmallFacesLeftOut) {
  const std::string header = "element vertex 4\nproperty float x\nproperty float y\n"
                             "property float z\nelement face 3\n"
                             "property list uchar int vertex_indices\n";
  const Mesh mesh =
      Read(TextWith(header, "-1 0 0\n0 1 0\n1 0 0\n0 100 0\n4 0 1 2 3\n2 0 1\n3 0 1 2\n"));
  EXPECT_EQ(mesh.TriangleCount(), 3U);
  EXPECT_DOUBLE_EQ(TriangleArea(mesh, 0) + TriangleArea(mesh, 1), 99.0);
  ASSERT_EQ(mesh.warnings.size(), 1U);
  EXPECT_EQ(mesh.warnings[0], "sample: left out 1 face of fewer than three corners, the first is "
                              "face 1 (counted from 0)");
}

TEST(MeshReadPly, PaddingMayFollowBinaryData) {
  ExpectCorners(Read(PlyBinary(false) + std::string(100, '\0') + "\r\n"), TetrahedronCorners());
}

TEST(MeshReadPly, TruncatedBinaryIsRefused) {
  const std::string bytes = PlyBinary(false);
  const std::size_t header = bytes.find("end_header\n") + 11;
  for (std::size_t size = header; size < bytes.size(); ++size) {
    EXPECT_THAT(ErrorOfPly(bytes.substr(0, size)),
                testing::AnyOf(testing::StartsWith("sample: truncated: "),
                               testing::StartsWith("sample: a list 'vertex_indices' of 3 values "
                                                   "does not fit into the file")));
  }
}

TEST(MeshReadPly, AbsurdCountsAreRefusedBeforeTheyAreAllocated) {
  for (const char* count : {"4294967296", "9223372036854775807", "6000000000000000000"}) {
    for (std::string bytes : {PlyText(), PlyBinary(false)}) {
      for (const std::string element : {"vertex", "face"}) {
        std::string changed = bytes;
        changed.replace(changed.find("element " + element + " 4") + element.size() + 9, 1, count);
        EXPECT_EQ(ErrorOfPly(changed), "sample: truncated: the header says " + std::string(count) +
                                           " elements '" + element +
                                           "', more than the file can hold");
      }
    }
  }
}

TEST(MeshReadPly, CountsThatLeaveDataAreRefused) {
  EXPECT_EQ(ErrorOfPly(PlyText() + "3 0 1 2\n"),
            "sample: line 19: the header's counts leave data at the end of the file: '3'");
  EXPECT_EQ(ErrorOfPly(PlyBinary(true) + "\x03"),
            "sample: the header's counts leave 1 bytes at the end of the file");
}

TEST(MeshReadPly, BrokenTextIsRefusedWithItsLine) {
  const auto face = [](const std::string& words) {
    return TextWith(vertexHeader + faceHeader, vertices + words);
  };
  const struct {
    std::string text, message;
  } rows[] = {{face("3 0 1 3"), "face 0 (counted from 0): vertex 3 does not exist (the file has 3 "
                                "vertices, the first is 0)"},
              {face("3 0 1 -1"),
               "face 0 (counted from 0): vertex -1 does not exist (the file has 3 "
               "vertices, the first is 0)"},
              {face("3 0 1 x"), "line 13: a value is not a whole number: 'x'"},
              {face("3 0 1"), "line 13: the file ends before a value"},
              {face("-3 0 1 2"),
               "line 13: a list 'vertex_indices' of -3 values does not fit into the file"},
              {face("300 0 1 2"),
               "line 13: a list 'vertex_indices' of 300 values does not fit into the file"},
              {TextWith(vertexHeader + faceHeader, "0 0 0\n1 a 0\n1 1 0\n3 0 1 2"),
               "line 11: a value is not a number: 'a'"},
              {TextWith(vertexHeader, vertices), "holds no triangles"},
              {TextWith(vertexHeader + "element face 0\n", vertices), "holds no triangles"}};
  for (const auto& row : rows)
    EXPECT_EQ(ErrorOfPly(row.text), "sample: " + row.message);
}

TEST(MeshReadPly, BrokenHeadersAreRefused) {
  const std::string tail = "end_header\n";
  const std::string start = "ply\nformat ascii 1.0\n";
  const struct {
    std::string text, message;
  } rows[] = {
      {"hello\n" + tail, "line 1: expected 'ply'"},
      {"ply\nformat ascii 1.0\n", "the PLY header has no 'end_header'"},
      {"ply\n" + tail, "the PLY header has no 'format'"},
      {"ply\nformat ascii 2.0\n" + tail, "line 2: expected 'format', one of ascii, "
                                         "binary_little_endian, binary_big_endian, and '1.0'"},
      {start + "element vertex\n" + tail, "line 3: expected 'element', a name and a count"},
      {start + "element vertex -1\n" + tail, "line 3: expected 'element', a name and a count"},
      {start + "element vertex 99999999999999999999\n" + tail,
       "line 3: expected 'element', a name and a count"},
      {start + "property float x\n" + tail,
       "line 3: a 'property' comes before the first 'element'"},
      {start + "element vertex 1\nproperty float\n" + tail,
       "line 4: expected 'property', a type and a name"},
      {start + "element vertex 1\nproperty half x\n" + tail, "line 4: unknown PLY type 'half'"},
      {start + "element vertex 1\nproperty list float int a\n" + tail,
       "line 4: the length of a list cannot be a real number"},
      {start + "elements vertex 1\n" + tail, "line 3: unknown word in a PLY header: 'elements'"},
      {start + "element vertex 0\nproperty float x\nproperty float y\n" + tail,
       "the PLY vertices need exactly one property 'z'"},
      {start + vertexHeader + "property float x\n" + tail,
       "truncated: the header says 3 elements 'vertex', more than the file can hold"},
      {start + vertexHeader + "property float x\n" + tail + "0 0 0 0\n0 0 0 0\n0 0 0 0\n",
       "the PLY vertices need exactly one property 'x'"},
      {start + vertexHeader + vertexHeader + tail + vertices + vertices,
       "the PLY header has two elements 'vertex'"},
      {start + "element face 0\nelement face 0\n" + tail, "the PLY header has two elements 'face'"},
      {start + "element face 1\nproperty int a\n" + tail + "1",
       "the PLY faces have no list 'vertex_indices'"},
      {start + "element face 1\nproperty list int float vertex_indices\n" + tail + "1 1",
       "the PLY vertex indices are real numbers"},
      {start + "element tristrips 1\nproperty list int int vertex_indices\n" + tail + "3 0 1 2",
       "PLY triangle strips are not supported; export faces"}};
  for (const auto& row : rows)
    EXPECT_EQ(ErrorOfPly(row.text), "sample: " + row.message);
}
