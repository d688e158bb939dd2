#include "MeshSamples.h"
#include "RandomNumbers.h"

#include <random>

using namespace gsl_mesh_samples;
using gsl_mesh::ReadMeshFromMemory;

namespace {

Mesh Read(std::string_view bytes) {
  return ReadMeshFromMemory(bytes, "sample", MeshFormat::Obj);
}

const std::string square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";
const std::vector<Coord3> firstHalf{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}};

} // namespace

TEST(MeshReadObj, KeepsTheFilesOrderAcrossObjectsGroupsAndMaterials) {
  const Mesh mesh = Read("mtllib none.mtl\n" + square +
                         "o a\nusemtl m\nf 1 2 3\ng b\nf 2 3 4\nusemtl n\nf 3 4 1\no c\nf 4 1 2\n");
  ASSERT_EQ(mesh.TriangleCount(), 4U);
  EXPECT_TRUE((mesh.corners[0] == Coord3{0, 0, 0}));
  EXPECT_TRUE((mesh.corners[3] == Coord3{1, 0, 0}));
  EXPECT_TRUE((mesh.corners[6] == Coord3{1, 1, 0}));
  EXPECT_TRUE((mesh.corners[9] == Coord3{0, 1, 0}));
}

TEST(MeshReadObj, TextKeepsEveryDigitOfADouble) {
  std::mt19937_64 random(12);
  RealsIn number(-10.0, 10.0);
  std::vector<Coord3> corners;
  std::string text;
  for (int k = 0; k < 300; ++k) {
    corners.push_back({number(random), number(random), 1e-7 * number(random)});
    text += "v " + Text(corners.back()) + "\n";
    if (k % 3 == 2) text += "f -3 -2 -1\n";
  }
  ExpectCorners(Read(text), corners);
}

TEST(MeshReadObj, CornersMayCarryOtherIndices) {
  for (const char* face :
       {"f 1 2 3", "f 1/1 2/2 3/3", "f 1//1 2//2 3//3", "f 1/9/9 2/9/9 3/9/9", "f 1/ 2/ 3/",
        "f 1// 2// 3//", "f 1/2/ 2/2/ 3/2/", "  f\t1  2\t3  ", "f +1 +2 +3"}) {
    ExpectCorners(Read(square + face + "\n"), firstHalf);
  }
}

TEST(MeshReadObj, NegativeIndicesCountBackFromTheirFace) {
  ExpectCorners(Read("v 0 0 0\nv 1 0 0\nv 1 1 0\nf -3 -2 -1\nv 5 5 5\n"), firstHalf);
}

TEST(MeshReadObj, PositiveIndicesMayPointForward) {
  ExpectCorners(Read("f 1 2 3\n" + square), firstHalf);
}

TEST(MeshReadObj, LinesMayBeContinued) {
  ExpectCorners(Read("v 0 0 \\\n0\nv 1 \\ \r\n 0 \\\r\n 0\nv 1 1 0\nf 1 \\\n2 \\\n\\\n3 # end\n"),
                firstHalf);
}

TEST(MeshReadObj, EmptyLineEndsAContinuedStatement) {
  for (const char* empty : {"\n\n", "\r\n\r\n", "\r\r"}) {
    SCOPED_TRACE(empty);
    ExpectCorners(Read("v 0 0 0 \\" + std::string(empty) + "v 1 0 0\nv 1 1 0\nf 1 2 3\n"),
                  firstHalf);
  }
}

TEST(MeshReadObj, NamesAndCommentsAreNotContinued) {
  ExpectCorners(Read("# C:\\parts\\\nv 0 0 0\no name\\\nv 1 0 0\nv 1 1 0 # \\\nf 1 2 3\n"),
                firstHalf);
}

TEST(MeshReadObj, LinesMayEndInEveryWay) {
  ExpectCorners(Read("v 0 0 0\rv 1 0 0\r\nv 1 1 0\n\rf 1 2 3"), firstHalf);
  ExpectCorners(Read("\xEF\xBB\xBFv 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3"), firstHalf);
}

TEST(MeshReadObj, WeightsAndColoursAreNotRead) {
  ExpectCorners(Read("v 0 0 0 1\nv 1 0 0 nan nan nan\nv 1 1 0 0.5 x y\nf 1 2 3\n"), firstHalf);
}

TEST(MeshReadObj, NonFiniteVerticesStayInTheList) {
  const Mesh mesh = Read(square + "v nan 1e999 0\nf 1 2 5\nf 1 2 3\n");
  ASSERT_EQ(mesh.TriangleCount(), 2U);
  EXPECT_TRUE(std::isnan(mesh.corners[2].x));
  EXPECT_TRUE(std::isinf(mesh.corners[2].y));
}

TEST(MeshReadObj, ConcaveQuadrangleKeepsItsArea) {
  const Mesh mesh = Read("v -1 0 0\nv 0 1 0\nv 1 0 0\nv 0 100 0\nf 1 2 3 4\n");
  ASSERT_EQ(mesh.TriangleCount(), 2U);
  EXPECT_DOUBLE_EQ(Area(mesh), 99.0);
}

TEST(MeshReadObj, PolygonOfManyCornersKeepsItsArea) {
  std::string text, face = "f";
  constexpr int count = 1000;
  for (int k = 0; k < count; ++k) {
    const double angle = 2 * 3.14159265358979323846 * k / count;
    const double radius = k % 2 == 0 ? 2.0 : 1.0;
    text += "v " + Text(Coord3{radius * std::cos(angle), radius * std::sin(angle), 0}) + "\n";
    face += " " + std::to_string(k + 1);
  }
  const Mesh mesh = Read(text + face + "\n");
  EXPECT_EQ(mesh.TriangleCount(), 998U);
  // Sectors between radii 2 and 1: half of 2 * 1 * sin of the step each.
  const double expected = count * 0.5 * 2.0 * std::sin(2 * 3.14159265358979323846 / count);
  EXPECT_NEAR(Area(mesh), expected, 1e-11);
}

TEST(MeshReadObj, FacesOfFewerThanThreeCornersAreLeftOutWithAWarning) {
  const Mesh mesh = Read(square + "f 1 2 3\nf 1 2\nf 4\nf 1 3 4\n");
  EXPECT_EQ(mesh.TriangleCount(), 2U);
  ASSERT_EQ(mesh.warnings.size(), 1U);
  EXPECT_EQ(mesh.warnings[0], "sample: left out 2 faces of fewer than three corners, the first is "
                              "face 1 (counted from 0)");
}

TEST(MeshReadObj, CurvedSurfacesAreLeftOutWithAWarning) {
  const Mesh mesh = Read(square + "f 1 2 3\nsurf 0 1 0 1 1 2 3 4\nend\n");
  ASSERT_EQ(mesh.warnings.size(), 1U);
  EXPECT_EQ(mesh.warnings[0], "sample: left out curved surfaces, the first in line 6");
}

TEST(MeshReadObj, PointsAndLinesAreNotTriangles) {
  EXPECT_EQ(ErrorOf(MeshFormat::Obj, square + "p 1\nl 1 2 3\n"), "sample: holds no triangles");
  EXPECT_EQ(ErrorOf(MeshFormat::Obj, "g a f b\nv 0 0 0"), "sample: holds no triangles");
}

TEST(MeshReadObj, IndicesThatDoNotExistAreRefusedWithTheirLine) {
  for (const int index : {5, 0, -5, 2147483647, -2147483647}) {
    EXPECT_EQ(ErrorOf(MeshFormat::Obj, square + "f 1 2 " + std::to_string(index) + "\n"),
              "sample: line 5: vertex " + std::to_string(index) +
                  " does not exist (the file has 4 vertices, the first is 1)");
  }
}

TEST(MeshReadObj, BrokenStatementsAreRefusedWithTheirLine) {
  const std::string noCorner = " is not a corner of a face; expected v, v/vt, v//vn or v/vt/vn";
  const struct {
    std::string text, message;
  } rows[] = {{"f 1 2 x\n", "line 5: 'x'" + noCorner},
              {"f 1 2 3.0\n", "line 5: '3.0'" + noCorner},
              {"f 1/2/3/4 2 3\n", "line 5: '1/2/3/4'" + noCorner},
              {"f /1 2 3\n", "line 5: '/1'" + noCorner},
              {"f 1 2 99999999999\n", "line 5: '99999999999'" + noCorner},
              {"f 1 2 99999999999999999999\n", "line 5: '99999999999999999999'" + noCorner},
              {"f\n", "line 5: a face has no corners"},
              {"f # 1 2 3\n", "line 5: a face has no corners"},
              {"v\n", "line 5: a vertex has no coordinates"},
              {"v 1 2\nf 1 2 3\n", "line 5: a vertex has fewer than three coordinates"},
              {"v 1 2 1,5\n", "line 5: a coordinate is not a number: '1,5'"}};
  for (const auto& row : rows) {
    EXPECT_EQ(ErrorOf(MeshFormat::Obj, square + row.text), "sample: " + row.message);
  }
}
