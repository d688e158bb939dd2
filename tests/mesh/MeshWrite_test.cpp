#include "MeshWrite.h"

#include "MeshSamples.h"
#include "OutputFile.h"

#include <limits>
#include <random>

using namespace gsl_mesh_samples;
using gsl_mesh::MeshFormatToWrite;
using gsl_mesh::OutputError;
using gsl_mesh::ReadMesh;
using gsl_mesh::WriteMesh;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Mesh Tetrahedron() {
  return {"", TetrahedronCorners(), {}};
}

/// Doubles of any pattern of bits: large, tiny, subnormal, NaN and infinite numbers.
double AnyDouble(std::mt19937_64& random) {
  const std::uint64_t bits = random();
  double value = 0.0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

void ExpectSameNumber(double read, double written) {
  if (std::isnan(written)) {
    EXPECT_TRUE(std::isnan(read));
    return;
  }
  EXPECT_EQ(read, written);
  EXPECT_EQ(std::signbit(read), std::signbit(written));
}

} // namespace

TEST(MeshWrite, ExtensionChoosesTheFormat) {
  EXPECT_EQ(MeshFormatToWrite("moved.stl"), MeshFormat::Stl);
  EXPECT_EQ(MeshFormatToWrite("a.stl/moved.PLY"), MeshFormat::Ply);
  EXPECT_EQ(MeshFormatToWrite("moved.Obj"), MeshFormat::Obj);
  EXPECT_EQ(MeshFormatToWrite("moved.stl.off"), MeshFormat::Off);
  for (const char* name :
       {"", "-", "moved", "stl", "moved.", "moved.3mf", "moved.step", "a.stl/b"}) {
    EXPECT_EQ(MeshFormatToWrite(name), MeshFormat::Unknown) << name;
  }
}

TEST(MeshWrite, EveryFormatIsReadBackUnderItsName) {
  const TemporaryFolder folder;
  for (const char* name : {"part.stl", "part.ply", "part.obj", "part.OFF"}) {
    const std::string path = folder.Path(name);
    WriteMesh(path, Tetrahedron(), false);
    EXPECT_EQ(gsl_mesh::DetectMeshFormat(BytesOf(path), path), MeshFormatToWrite(path)) << name;
    ExpectCorners(ReadMesh(path), TetrahedronCorners());
  }
  EXPECT_EQ(folder.Names().size(), 4U);
}

TEST(MeshWrite, DoublesComeBackBitForBitFromEveryFormatButStl) {
  const unsigned seed = 16;
  SCOPED_TRACE(testing::Message() << "seed " << seed);
  const TemporaryFolder folder;
  std::mt19937_64 random(seed);
  Mesh mesh;
  for (int k = 0; k < 3 * 3000; ++k) {
    mesh.corners.push_back({AnyDouble(random), AnyDouble(random), AnyDouble(random)});
    // Some corners repeat, and some differ only in one bit or in the sign of zero.
    if (k % 4 == 1) mesh.corners.back() = mesh.corners[random() % mesh.corners.size()];
    if (k % 4 == 2) mesh.corners.back().z = std::nextafter(mesh.corners.back().z, 0.0);
    if (k % 4 == 3) mesh.corners.back() = {random() % 2 == 0 ? 0.0 : -0.0, 0.1, 1.0 / 3.0};
  }
  for (const char* name : {"part.ply", "part.obj", "part.off"}) {
    SCOPED_TRACE(name);
    WriteMesh(folder.Path(name), mesh, false);
    const Mesh read = ReadMesh(folder.Path(name));
    ASSERT_EQ(read.corners.size(), mesh.corners.size());
    for (std::size_t k = 0; k < mesh.corners.size(); ++k) {
      ExpectSameNumber(read.corners[k].x, mesh.corners[k].x);
      ExpectSameNumber(read.corners[k].y, mesh.corners[k].y);
      ExpectSameNumber(read.corners[k].z, mesh.corners[k].z);
    }
  }
}

TEST(MeshWrite, OtherNamesAreRefusedAndNothingIsLeft) {
  const TemporaryFolder folder;
  for (const char* name : {"moved.step", "moved", "moved.gltf"}) {
    const std::string path = folder.Path(name);
    try {
      WriteMesh(path, Tetrahedron(), true);
      ADD_FAILURE() << "not refused";
    } catch (const OutputError& e) {
      EXPECT_EQ(e.what(), path + ": cannot be written in this format; expected a name in "
                                 ".stl, .ply, .obj or .off");
    }
  }
  EXPECT_THAT(folder.Names(), IsEmpty());
}

TEST(MeshWrite, ExistingFileIsKeptUnlessForced) {
  const TemporaryFolder folder;
  for (const char* name : {"part.stl", "part.ply", "part.obj", "part.off"}) {
    const std::string path = folder.Write(name, "old");
    EXPECT_THROW(WriteMesh(path, Tetrahedron(), false), OutputError);
    EXPECT_EQ(BytesOf(path), "old");
    WriteMesh(path, Tetrahedron(), true);
    ExpectCorners(ReadMesh(path), TetrahedronCorners());
  }
  EXPECT_THAT(folder.Names(), ElementsAre("part.obj", "part.off", "part.ply", "part.stl"));
}
