#include "MeshSamples.h"
#include "RandomNumbers.h"

#include <random>

using namespace gsl_mesh_samples;
using gsl_mesh::ReadMeshFromMemory;

namespace {

Mesh Read(std::string_view bytes) {
  return ReadMeshFromMemory(bytes, "sample", MeshFormat::Off);
}

const std::string triangle = "0 0 0\n1 0 0\n1 1 0\n3 0 1 2\n";
const std::vector<Coord3> corners{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}};

} // namespace

TEST(MeshReadOff, KeepsTheFilesOrder) {
  ExpectCorners(Read(OffText()), TetrahedronCorners());
}

TEST(MeshReadOff, TextKeepsEveryDigitOfADouble) {
  std::mt19937_64 random(13);
  RealsIn number(-10.0, 10.0);
  std::vector<Coord3> vertices;
  std::string text = "OFF 300 100 0\n", faces;
  for (int k = 0; k < 300; ++k) {
    vertices.push_back({number(random), number(random), number(random)});
    text += Text(vertices.back()) + "\n";
    if (k % 3 == 2) {
      faces += "3 " + std::to_string(k - 2) + " " + std::to_string(k - 1) + " " +
               std::to_string(k) + "\n";
    }
  }
  ExpectCorners(Read(text + faces), vertices);
}

TEST(MeshReadOff, CountsMayBeAnywhere) {
  for (const char* head :
       {"OFF\n3 1 0\n", "OFF 3 1 0\n", "OFF3 1 0\n", "OFF\n3\n1\n0\n", "OFF 3 1\n",
        "\t OFF # c\n# d\n\n3 1 3\n", "3 1 0\n", "\xEF\xBB\xBFOFF\r\n3 1 0\r\n"}) {
    SCOPED_TRACE(head);
    ExpectCorners(Read(head + triangle), corners);
  }
}

TEST(MeshReadOff, ColoursNormalsAndTextureCoordinatesAreNotRead) {
  const std::string rest = "3 1 0\n0 0 0  0.1 0.2 0.3 1\n1 0 0 9 9 9 9\n1 1 0 x\n3 0 1 2 0.5 0 1\n";
  for (const char* keyword : {"COFF ", "NOFF ", "CNOFF ", "STOFF ", "STCNOFF ", "OFF "}) {
    SCOPED_TRACE(keyword);
    ExpectCorners(Read(keyword + rest), corners);
  }
}

TEST(MeshReadOff, CommentsMayBeAnywhere) {
  ExpectCorners(Read("# a\nOFF # b\n3 1 0 # c\n0 0 0 # d\n# e\n1 0 0\n\n1 1 0#f\n3 0 1 2 # g\n# h"),
                corners);
}

TEST(MeshReadOff, CornersOfAFaceMayBeOnSeveralLines) {
  ExpectCorners(Read("OFF 3 1 0 0 0 0\n1 0\n0\n1 1 0\n3\n0\n1 2\n"), corners);
}

TEST(MeshReadOff, PolygonsAreCutAndSmallFacesLeftOut) {
  const Mesh mesh = Read("OFF 4 3 0\n-1 0 0\n0 1 0\n1 0 0\n0 100 0\n2 0 1\n4 0 1 2 3\n0\n");
  EXPECT_EQ(mesh.TriangleCount(), 2U);
  EXPECT_DOUBLE_EQ(Area(mesh), 99.0);
  ASSERT_EQ(mesh.warnings.size(), 1U);
  EXPECT_EQ(mesh.warnings[0], "sample: left out 2 faces of fewer than three corners, the first is "
                              "face 0 (counted from 0)");
}

TEST(MeshReadOff, BrokenFilesAreRefusedWithTheirLine) {
  const struct {
    std::string text, message;
  } rows[] = {
      {"OFF\n3 1 0\n0 0 0\n1 0 0\n1 1 0\n3 0 1 3\n",
       "line 6: vertex 3 does not exist (the file has 3 vertices, the first is 0)"},
      {"OFF\n3 1 0\n0 0 0\n1 0 0\n1 1 0\n3 0 1 -1\n",
       "line 6: vertex -1 does not exist (the file has 3 vertices, the first is 0)"},
      {"OFF\n3 1 0\n0 0 0\n1 x 0\n1 1 0\n3 0 1 2\n", "line 4: a coordinate is not a number: 'x'"},
      {"OFF\n3 1 0\n0 0 0\n1 0 0\n1 1 0\n3 0 1.5 2\n",
       "line 6: the corner of a face is not a whole number: '1.5'"},
      {"OFF\n3 1 0\n0 0 0\n1 0 0\n", "line 5: the file ends before a coordinate"},
      {"OFF\n3 2 0\n0 0 0\n1 0 0\n1 1 0\n3 0 1 2\n",
       "line 7: the file ends before the count of corners"},
      {"OFF\n3 1 0\n" + triangle + "3 0 1 2\n",
       "line 7: the counts leave data at the end of the file"},
      {"OFF\n999999999999 1 0\n" + triangle,
       "line 2: the count of vertices is 999999999999, which the file cannot hold"},
      {"OFF\n3 999999999 0\n" + triangle,
       "line 2: the count of faces is 999999999, which the file cannot hold"},
      {"OFF\n3 -1 0\n" + triangle, "line 2: the count of faces is -1, which the file cannot hold"},
      {"OFF\n3 1 0\n0 0 0\n1 0 0\n1 1 0\n99999999 0 1 2\n",
       "line 6: the count of corners is 99999999, which the file cannot hold"},
      {"OFF BINARY\n", "line 1: binary OFF files are not supported"},
      {"4OFF\n3 1 0\n", "line 1: only three-dimensional OFF files are supported, not '4OFF'"},
      {"nOFF 3\n3 1 0\n", "line 1: only three-dimensional OFF files are supported, not 'nOFF'"},
      {"OFFX 3 1 0\n" + triangle, "line 1: the count of vertices is not a whole number: 'OFFX'"},
      {"hello", "line 1: the count of vertices is not a whole number: 'hello'"},
      {"OFF", "line 1: the file ends before the count of vertices"},
      {"OFF 0 0 0", "holds no triangles"}};
  for (const auto& row : rows)
    EXPECT_EQ(ErrorOf(MeshFormat::Off, row.text), "sample: " + row.message);
}
