#include "FailEachAllocation.h"
#include "MeshSamples.h"
#include "MeshWrite.h"
#include "OpenDescriptors.h"
#include "OutputFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include <fcntl.h>
#include <unistd.h>

// Each allocation of reading and writing a mesh fails in turn.

namespace {

using namespace gsl_mesh_samples;
using gsl_mesh::OutputError;
using gsl_mesh::ReadMesh;

constexpr Failing kAll = {WithoutMemory::Refuses, Allocations::All};

/// Returns what the work returns, or false for an error that names the lack of memory.
template <class Work>
bool UnlessOutOfMemory(const Work& work) {
  try {
    return work();
  } catch (const MeshError& error) {
    const std::string text = error.what();
    EXPECT_NE(text.find("not enough memory to read it"), std::string::npos) << text;
  }
  return false;
}

/// Returns text that no short string holds.
std::string LongName(const std::string& extension) {
  return "a part with a name that is longer than a short string." + extension;
}

void ExpectReading(const std::string& extension, const std::string& bytes,
                   const Failing& failing = kAll) {
  const TemporaryFolder folder;
  const std::string path = folder.Write(LongName(extension), bytes);
  const std::vector<Coord3> expected = ReadMesh(path).corners;
  ASSERT_EQ(expected.size(), 12u) << extension;
  const auto isRead = [&](const Mesh& mesh) {
    return mesh.file.size() > 20 &&
           std::equal(mesh.corners.begin(), mesh.corners.end(), expected.begin(), expected.end(),
                      [](const Coord3& a, const Coord3& b) { return a == b; });
  };
  const auto reads = [&] { return UnlessOutOfMemory([&] { return isRead(ReadMesh(path)); }); };
  const int open = OpenDescriptors();
  const auto isClosed = [&] { return OpenDescriptors() == open; };
  EXPECT_GT(FailEachAllocation(extension.c_str(), reads, isClosed, failing), 2);
}

void ExpectReadingFromStream(const std::string& bytes, MeshFormat format) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("stream", bytes);
  const auto reads = [&] {
    const int descriptor = open(path.c_str(), O_RDONLY);
    const bool isRead = UnlessOutOfMemory([&] {
      return gsl_mesh::ReadMeshFromStream(descriptor, LongName(""), format).corners.size() == 12;
    });
    close(descriptor);
    return isRead;
  };
  EXPECT_GT(FailEachAllocation("stream", reads, kAll), 2);
}

Mesh Tetrahedron() {
  Mesh mesh;
  mesh.corners = TetrahedronCorners();
  return mesh;
}

void ExpectWriting(const std::string& extension) {
  const TemporaryFolder folder;
  const std::string path = folder.Path(LongName(extension));
  const Mesh mesh = Tetrahedron();
  const int open = OpenDescriptors();
  const auto isAbsent = [&] { return folder.Names().empty() && OpenDescriptors() == open; };
  const auto writes = [&] {
    ChangeOrLeave([&] { gsl_mesh::WriteMesh(path, mesh, false); }, isAbsent);
    // The next run finds no file.
    const bool isWritten = unlink(path.c_str()) == 0;
    return isWritten;
  };
  EXPECT_GT(FailEachAllocation(extension.c_str(), writes, isAbsent, kAll), 2);

  const std::string old = folder.Write("target", "old contents");
  const std::string link = folder.Path("link" + extension);
  ASSERT_EQ(symlink(old.c_str(), link.c_str()), 0);
  const auto replaces = [&] {
    ChangeOrLeave([&] { gsl_mesh::WriteMesh(link, mesh, true); },
                  [&] { return BytesOf(old) == "old contents" && folder.Names().size() == 2; });
    return true;
  };
  const auto restores = [&] {
    char to[2] = "";
    const bool isLink = readlink(link.c_str(), to, sizeof to) > 0;
    folder.Write("target", "old contents");
    return isLink && folder.Names().size() == 2 && OpenDescriptors() == open;
  };
  EXPECT_GT(FailEachAllocation(extension.c_str(), replaces, restores, kAll), 2);
}

} // namespace

TEST(FailingMesh, FilesOfOurReadersAreReadOrRefused) {
  ExpectReading(".stl", StlBinary(TetrahedronCorners()));
  ExpectReading(".stl", StlText(TetrahedronCorners()));
  ExpectReading(".obj", ObjText());
  ExpectReading(".off", OffText());
  ExpectReading(".ply", PlyText());
  ExpectReading(".ply", PlyBinary(true));
  ExpectReading(".ply", PlyBinary(false));
}

TEST(FailingMesh, StreamsAreReadOrRefused) {
  ExpectReadingFromStream(StlBinary(TetrahedronCorners()), MeshFormat::Stl);
  ExpectReadingFromStream(ObjText(), MeshFormat::Obj);
}

TEST(FailingMesh, FilesOfTheImportProgramAreReadOrRefused) {
  // Each run starts the program.
  ExpectReading(".glb", Glb(), {WithoutMemory::Refuses, Allocations::All, 25, 3});
  ExpectReading(".3mf", ThreeMf(), {WithoutMemory::Refuses, Allocations::All, 10, 11});
}

TEST(FailingMesh, DamagedFilesAreRefusedOrMemoryIs) {
  const TemporaryFolder folder;
  const std::string path = folder.Write(LongName(".ply"), PlyText().substr(0, 200));
  const std::string expected = ErrorOfFile(path);
  const auto refuses = [&] {
    try {
      ReadMesh(path);
    } catch (const MeshError& error) {
      return error.what() == expected;
    }
    return false;
  };
  EXPECT_GT(FailEachAllocation("damaged", refuses, kAll), 2);
}

TEST(FailingMesh, FilesAppearWholeOrNotAtAll) {
  for (const char* const extension : {".stl", ".ply", ".obj", ".off"})
    ExpectWriting(extension);
}
