#include "MeshSamples.h"
#include "RandomNumbers.h"
#include "readers/MeshReaders.h"

#include <limits>
#include <random>

using namespace gsl_mesh_samples;
using gsl_mesh::ReadMeshFromMemory;

namespace {

Mesh Read(std::string_view bytes) {
  return ReadMeshFromMemory(bytes, "sample", MeshFormat::Stl);
}

std::string ErrorOfStl(std::string_view bytes) {
  return ErrorOf(MeshFormat::Stl, bytes);
}

const std::string facet = "facet normal 0 0 1 outer loop vertex 0 0 0 vertex 1 0 0 vertex 0 1 0 "
                          "endloop endfacet\n";

/// Returns a text of one solid that holds `words`.
std::string TextWith(const std::string& words) {
  return "solid a\n" + words + "\nendsolid a\n";
}

std::string WithCount(std::uint32_t count) {
  std::string bytes = StlBinary(TetrahedronCorners());
  std::memcpy(bytes.data() + 80, &count, sizeof count);
  return bytes;
}

} // namespace

TEST(MeshReadStl, BinaryKeepsTheFilesOrder) {
  const Mesh mesh = Read(StlBinary(TetrahedronCorners()));
  ExpectCorners(mesh, TetrahedronCorners());
  EXPECT_EQ(mesh.TriangleCount(), 4U);
  EXPECT_EQ(mesh.file, "sample");
  EXPECT_TRUE(mesh.warnings.empty());
  EXPECT_EQ(mesh.precision, gsl_mesh::Precision::Single);
  EXPECT_EQ(Read(StlText(TetrahedronCorners())).precision, gsl_mesh::Precision::Unknown);
}

TEST(MeshReadStl, TextKeepsEveryDigitOfADouble) {
  std::mt19937_64 random(11);
  RealsIn number(-10.0, 10.0);
  std::vector<Coord3> corners;
  for (int k = 0; k < 300; ++k)
    corners.push_back({number(random), number(random), number(random)});
  ExpectCorners(Read(StlText(corners)), corners);
}

TEST(MeshReadStl, BinaryWhoseHeaderBeginsWithSolidIsBinary) {
  ExpectCorners(Read(StlBinary(TetrahedronCorners(), "solid part")), TetrahedronCorners());
  ExpectCorners(Read(StlBinary(TetrahedronCorners(), "solid part\nfacet normal 0 0 1\n")),
                TetrahedronCorners());
}

TEST(MeshReadStl, HeaderOfTheRightSizeMayBeginWithFacet) {
  std::string bytes = StlBinary(TetrahedronCorners());
  bytes.replace(0, 6, "facet ");
  ExpectCorners(Read(bytes), TetrahedronCorners());
}

TEST(MeshReadStl, TruncatedBinaryIsRefusedWithAnyHeader) {
  for (const char* header : {"", "solid part"}) {
    std::string bytes = StlBinary(TetrahedronCorners(), header);
    bytes.resize(84 + 50 * 3 + 49);
    EXPECT_EQ(ErrorOfStl(bytes),
              "sample: truncated: the count says 4 triangles, the file has room for 3");
  }
}

TEST(MeshReadStl, AbsurdCountIsRefusedBeforeItIsAllocated) {
  EXPECT_EQ(ErrorOfStl(WithCount(0xffffffffU)),
            "sample: truncated: the count says 4294967295 triangles, the file has room for 4");
}

TEST(MeshReadStl, CountThatLosesTrianglesIsRefused) {
  EXPECT_EQ(ErrorOfStl(WithCount(3)), "sample: the count of 3 triangles leaves 50 bytes at the end "
                                      "of the file; the count or the file is damaged");
}

TEST(MeshReadStl, TrailingBytesThatCannotHoldATriangleAreIgnoredWithAWarning) {
  const std::string bytes = StlBinary(TetrahedronCorners());
  for (const std::string& tail : {std::string(49, 'x'), std::string(4096, '\0')}) {
    const Mesh mesh = Read(bytes + tail);
    ExpectCorners(mesh, TetrahedronCorners());
    ASSERT_EQ(mesh.warnings.size(), 1U);
    EXPECT_EQ(mesh.warnings[0],
              "sample: ignored " + std::to_string(tail.size()) + " bytes after the last triangle");
  }
}

TEST(MeshReadStl, ShorterThanAHeaderIsRefused) {
  EXPECT_EQ(ErrorOfStl("abc"), "sample: is too short for an STL file (3 bytes); a binary file has "
                               "at least 84, a text begins with 'solid'");
}

TEST(MeshReadStl, NoTrianglesIsRefused) {
  EXPECT_EQ(ErrorOfStl(StlBinary({})), "sample: holds no triangles");
  EXPECT_EQ(ErrorOfStl("solid a\nendsolid a\n"), "sample: holds no triangles");
  EXPECT_EQ(ErrorOfStl("solid a\nendsolid a"), "sample: holds no triangles");
}

TEST(MeshReadStl, NonFiniteTrianglesStayInTheList) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<Coord3> corners = TetrahedronCorners();
  corners[4].y = nan;
  corners[6].x = std::numeric_limits<double>::infinity();
  for (const std::string& bytes : {StlBinary(corners), StlText(corners)}) {
    const Mesh mesh = Read(bytes);
    ASSERT_EQ(mesh.TriangleCount(), 4U);
    EXPECT_TRUE(std::isnan(mesh.corners[4].y));
    EXPECT_TRUE(std::isinf(mesh.corners[6].x));
    EXPECT_EQ(mesh.corners[11].z, corners[11].z);
  }
}

TEST(MeshReadStl, TextMayHaveOddWhiteSpaceAndUpperCase) {
  const std::string text = "\xEF\xBB\xBF \r\n SOLID\tname of it\r\nFACET\r\nNormal 0 0\t1 "
                           "Outer\r\rLOOP vertex 1 2\v3 VERTEX +4 5. 6e0 vertex 7 8 9\f"
                           "EndLoop endFACET\r\nENDSOLID name of it\r\n\r\n";
  ExpectCorners(Read(text), {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
}

TEST(MeshReadStl, TextMayHoldSeveralSolids) {
  EXPECT_EQ(Read(TextWith(facet) + TextWith(facet + facet) + "solid\nendsolid").TriangleCount(),
            3U);
}

TEST(MeshReadStl, NormalsAreNotRead) {
  const std::string text = TextWith("facet normal -nan(ind) 1,0 x outer loop vertex 0 0 0 "
                                    "vertex 1 0 0 vertex 0 1 0 endloop endfacet");
  EXPECT_EQ(Read(text).TriangleCount(), 1U);
}

TEST(MeshReadStl, BrokenTextIsRefusedWithItsLine) {
  const auto corners = [](const std::string& words) {
    return TextWith("facet normal 0 0 1\nouter loop\n" + words);
  };
  const struct {
    std::string text, message;
  } rows[] = {
      {corners("vertex 0 0 0\nvertex 1 0 0\nvertex 1 1 0\nvertex 0 1 0\nendloop\nendfacet"),
       "line 7: expected 'endloop', found 'vertex' (a facet has three corners)"},
      {corners("vertex 0 0 0\nvertex 1 0 0\nvertex 1 1 0\nendfacet"),
       "line 7: expected 'endloop', found 'endfacet'"},
      {corners("vertex 0 0 0\nvertex 1 0 0\nendloop\nendfacet"),
       "line 6: expected 'vertex', found 'endloop'"},
      {corners("vertex 0 0\nvertex 1 0 0"), "line 5: a coordinate is not a number: 'vertex'"},
      {corners("vertex 0 0,5 0"), "line 4: a coordinate is not a number: '0,5'"},
      {TextWith("facet normal 0 0 outer loop"), "line 2: expected three components of a normal"},
      {TextWith("facet normal 0 0 OUTER loop"), "line 2: expected three components of a normal"},
      {TextWith("face normal"), "line 2: expected 'facet' or 'endsolid', found 'face'"},
      {"solid a\n" + facet, "line 3: the file ends before 'endsolid'"},
      {"solid a\nfacet normal 0 0 1\nouter", "line 3: the file ends here; expected 'loop'"},
      {TextWith(facet) + "more", "line 5: expected 'solid', found 'more'"},
      {facet, "line 1: expected 'solid' before the first facet"}};
  for (const auto& row : rows)
    EXPECT_EQ(ErrorOfStl(row.text), "sample: " + row.message);
}

TEST(MeshReadStl, SizeOfABinaryFileIsThatOfItsCountExactly) {
  const auto hasSize = [](const std::string& file) {
    return gsl_mesh::HasSizeOfBinaryStl(file.substr(0, 84), file.size());
  };
  const std::string bytes = StlBinary(TetrahedronCorners());
  ASSERT_EQ(bytes.size(), 84U + 4 * 50);
  EXPECT_TRUE(hasSize(bytes));
  EXPECT_FALSE(hasSize(bytes + '\0'));
  EXPECT_FALSE(hasSize(bytes.substr(0, bytes.size() - 1)));
  EXPECT_FALSE(hasSize(bytes.substr(0, 83)));
  EXPECT_FALSE(hasSize(""));
  std::string most = bytes;
  most.replace(80, 4, "\xff\xff\xff\xff"); // 50 times that leaves 32 bits
  EXPECT_FALSE(hasSize(most));
}
