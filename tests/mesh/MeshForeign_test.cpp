#include "MeshForeign.h"

#include "MeshSamples.h"

using namespace gsl_mesh_samples;
using gsl_mesh::ForeignFile;
using gsl_mesh::ReadMesh;

namespace {

const std::string stepText = "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
                             "FILE_NAME('bolt','2024-01-01',(''),(''),'','','');\n"
                             "FILE_SCHEMA(('AUTOMOTIVE_DESIGN'));\nENDSEC;\nDATA;\n"
                             "#1=CARTESIAN_POINT('IFC',(0.,0.,0.));\nENDSEC;\n";
const std::string buildingText = "ISO-10303-21;\nHEADER;\nFILE_SCHEMA (('IFC2X3'));\nENDSEC;\n";

const std::string isStep = "is a STEP file, not a mesh; export a mesh from the CAD program, for "
                           "example as STL";
const std::string isIges = "is an IGES file, not a mesh; export a mesh from the CAD program, for "
                           "example as STL";
const std::string isGzip = "is compressed with gzip; unpack it first, for example with gunzip";
const std::string isUtf16 = "is text in UTF-16; convert it to UTF-8 first, for example with iconv "
                            "-f UTF-16 -t UTF-8";

/// Returns a record of an IGES file: 72 columns, the section, the number.
std::string IgesRecord(const std::string& text, const std::string& sectionAndNumber) {
  std::string record = text;
  record.resize(72, ' ');
  return record + sectionAndNumber + "\n";
}

std::string Utf16(const std::string& text, bool bigEndian) {
  std::string bytes;
  for (const char c : text) {
    if (bigEndian) bytes.push_back('\0');
    bytes.push_back(c);
    if (!bigEndian) bytes.push_back('\0');
  }
  return bytes;
}

} // namespace

TEST(MeshForeign, StepIsKnownByItsContentsOrItsExtension) {
  for (const char* name : {"part.step", "part.stl", "part", "part.txt"}) {
    EXPECT_EQ(ForeignFile(stepText, name), isStep) << name;
  }
  EXPECT_EQ(ForeignFile("\xEF\xBB\xBF \r\n" + stepText, "part.obj"), isStep);
  for (const char* name : {"part.step", "part.STP", "part.p21"}) {
    EXPECT_EQ(ForeignFile("anything", name), isStep) << name;
  }
  EXPECT_EQ(ForeignFile("ISO-10303-2", "part.obj"), "");
}

TEST(MeshForeign, BuildingModelsAreNotForeign) {
  EXPECT_EQ(ForeignFile(buildingText, "house.ifc"), "");
  EXPECT_EQ(ForeignFile(buildingText, "house.step"), "");
}

TEST(MeshForeign, IgesIsKnownByItsContentsOrItsExtension) {
  EXPECT_EQ(ForeignFile(IgesRecord("A bracket", "S      1"), "part.stl"), isIges);
  EXPECT_EQ(ForeignFile(IgesRecord("", "S0000001"), "part"), isIges);
  EXPECT_EQ(ForeignFile("anything", "part.igs"), isIges);
  EXPECT_EQ(ForeignFile("anything", "part.IGES"), isIges);
  EXPECT_EQ(ForeignFile(IgesRecord("A bracket", "G      1"), "part.stl"), "");
  EXPECT_EQ(ForeignFile(IgesRecord("A bracket", "S      2"), "part.stl"), "");
  EXPECT_EQ(ForeignFile(IgesRecord("A bracket", "S     11"), "part.stl"), "");
  EXPECT_EQ(ForeignFile(IgesRecord("Two\nlines", "S      1"), "part.stl"), "");
  EXPECT_EQ(ForeignFile(IgesRecord("A bracket", "S      1").substr(0, 79), "part.stl"), "");
}

TEST(MeshForeign, GzipIsKnownByItsContentsOrItsExtension) {
  const std::string packed("\x1F\x8B\x08\0\0\0", 6);
  for (const char* name : {"part.stl.gz", "part.stl", "part.off", "part", "part.GZ"}) {
    EXPECT_EQ(ForeignFile(packed, name), isGzip) << name;
  }
  EXPECT_EQ(ForeignFile("anything", "part.stl.gz"), isGzip);
  // Assimp unpacks some formats itself.
  EXPECT_EQ(ForeignFile(packed, "part.blend"), "");
  EXPECT_EQ(ForeignFile("\x1F", "part.stl"), "");
}

TEST(MeshForeign, Utf16IsKnownByItsMarkOrItsZeros) {
  const std::string text = "solid part\nfacet";
  for (const bool bigEndian : {false, true}) {
    const std::string mark = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char* name : {"part.stl", "part.obj", "part"}) {
      EXPECT_EQ(ForeignFile(mark + Utf16(text, bigEndian), name), isUtf16) << name;
      EXPECT_EQ(ForeignFile(Utf16(text, bigEndian), name), isUtf16) << name;
    }
    EXPECT_EQ(ForeignFile(Utf16(text, bigEndian) + "x", "part.stl"), isUtf16);
    EXPECT_EQ(ForeignFile(Utf16("v 0\n", bigEndian), "part.obj"), isUtf16);
    EXPECT_EQ(ForeignFile(Utf16("v 0", bigEndian), "part.obj"), "");
    EXPECT_EQ(ForeignFile(Utf16("v \x01 0 0 0\n", bigEndian), "part.obj"), "");
    // Assimp reads some formats in UTF-16.
    EXPECT_EQ(ForeignFile(mark + Utf16(text, bigEndian), "part.dae"), "");
  }
  EXPECT_EQ(ForeignFile(std::string(80, '\0'), "part.stl"), "");
}

TEST(MeshForeign, MeshesAreNotForeign) {
  for (const Sample& sample : AllSamples())
    EXPECT_EQ(ForeignFile(sample.bytes, sample.name), "") << sample.name;
}

TEST(MeshForeign, ReadingNamesTheFileAndItsFormat) {
  const TemporaryFolder folder;
  for (const auto& [name, bytes, expected] :
       {std::array<std::string, 3>{"part.stl", stepText, isStep},
        {"part.iges", "x", isIges},
        {"part.obj", IgesRecord("", "S      1"), isIges},
        {"part.stl.gz", "\x1F\x8B", isGzip},
        {"part.ply", Utf16("ply\nformat", false), isUtf16}}) {
    const std::string path = folder.Write(name, bytes);
    EXPECT_EQ(ErrorOfFile(path), path + ": " + expected);
  }
}

TEST(MeshForeign, ContentsOfAMeshWinOverTheExtension) {
  const TemporaryFolder folder;
  const std::string stl = StlBinary(TetrahedronCorners(), "\xFF\xFE");
  for (const char* name : {"part.step", "part.igs", "part.gz", "part.stl"}) {
    ExpectCorners(ReadMesh(folder.Write(name, stl)), TetrahedronCorners());
    ExpectCorners(ReadMesh(folder.Write(name, PlyText())), TetrahedronCorners());
  }
}
