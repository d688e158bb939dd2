#include "ChildProcess.h"
#include "FailingCalls.h"
#include "MachineMemory.h"
#include "MeshImport.h"
#include "MeshImportProtocol.h"
#include "MeshImporter.h"
#include "MeshSamples.h"
#include "MeshWrite.h"
#include "OutputFile.h"

#include <cerrno>
#include <chrono>
#include <filesystem>

#include <fcntl.h>
#include <unistd.h>

// Calls of the system that are interrupted, fail, or return what they seldom return.

using namespace gsl_mesh_samples;
using gsl_mesh::ImportLimits;
using gsl_mesh::ImportMesh;
using gsl_mesh::MemoryOfMachine;
using gsl_mesh::OutputError;
using gsl_mesh::ReadMesh;
using gsl_mesh::ReadMeshFromStream;
using gsl_mesh::RunMeshImporter;
using gsl_mesh::WriteTextFile;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

namespace protocol = gsl_mesh::import_protocol;

const std::string probe = GSL_IMPORT_PROBE;

std::string ErrorOfImport(const std::string& path) {
  try {
    const Mesh mesh = ImportMesh(probe, path, {std::chrono::minutes(1), 0});
    return std::to_string(mesh.TriangleCount());
  } catch (const MeshError& e) {
    return e.what();
  }
}

std::string ErrorOfWriting(const std::string& path, bool force) {
  try {
    WriteTextFile(path, "text", force);
  } catch (const OutputError& e) {
    return e.what();
  }
  return BytesOf(path);
}

class FailingCallsOfOutput : public testing::Test {
protected:
  const TemporaryFolder m_folder;
  const std::string m_path = m_folder.Path("out");
};

} // namespace

TEST(FailingCalls, InterruptedReadOfAMeshIsRepeated) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("part.off", OffText());
  const FailingCalls calls("read", EINTR, 3);
  ExpectCorners(ReadMesh(path), TetrahedronCorners());
  EXPECT_EQ(calls.Failed(), 3);
}

TEST(FailingCalls, FileWhoseSizeIsUnknownIsRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("part.off", OffText());
  const FailingCalls calls("fstat", EIO);
  EXPECT_EQ(ErrorOfFile(path), path + ": cannot be read: Input/output error");
}

TEST(FailingCalls, FileThatBecomesShorterIsRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("part.off", OffText());
  const FailingCalls calls("read", 0, 1, 0, 0);
  EXPECT_EQ(ErrorOfFile(path), path + ": became shorter while it was read");
}

TEST(FailingCalls, MemoryOfAMachineThatDoesNotSayItIsUnknown) {
  {
    const FailingCalls calls("sysconf", EINVAL);
    EXPECT_EQ(MemoryOfMachine(), 0U);
  }
  const FailingCalls calls("sysconf", EINVAL, 1, 1);
  EXPECT_EQ(MemoryOfMachine(), 0U);
}

TEST(FailingCalls, MemoryOfTheLeastMachineIsOneByte) {
  const FailingCalls calls("sysconf", 0, 2, 0, 1);
  EXPECT_EQ(MemoryOfMachine(), 1U);
}

TEST(FailingCalls, FileLargerThanTheMemoryIsRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("part.off", std::string(65, ' '));
  const FailingCalls calls("sysconf", 0, 2, 0, 8); // eight pages of eight bytes
  EXPECT_EQ(ErrorOfFile(path), path + ": has 65 bytes, more than the memory of this machine");
}

TEST(FailingCalls, StreamIsReadWhereTheMemoryIsUnknown) {
  const TemporaryFolder folder;
  const int file = open(folder.Write("part.off", OffText()).c_str(), O_RDONLY);
  const FailingCalls calls("sysconf", EINVAL, 2);
  ExpectCorners(ReadMeshFromStream(file, "stream", MeshFormat::Off), TetrahedronCorners());
  EXPECT_EQ(calls.Failed(), 2);
  close(file);
}

TEST(FailingCalls, StreamLargerThanTheMemoryIsRefused) {
  const TemporaryFolder folder;
  const int file = open(folder.Write("part.off", std::string(1 << 17, ' ')).c_str(), O_RDONLY);
  const FailingCalls calls("sysconf", 0, 2, 0, 8); // eight pages of eight bytes
  try {
    ReadMeshFromStream(file, "stream", MeshFormat::Off);
    ADD_FAILURE() << "no error";
  } catch (const MeshError& e) {
    EXPECT_STREQ(e.what(), "stream: is larger than the memory of this machine");
  }
  close(file);
}

TEST(FailingCalls, ImportWithoutDescriptorsSaysSo) {
  const std::string message =
      "mesh: is not STL, PLY, OBJ or OFF, and the program that reads other formats cannot be "
      "started: " +
      probe + " Too many open files";
  {
    const FailingCalls calls("pipe2", EMFILE);
    EXPECT_EQ(ErrorOfImport("mesh"), message);
  }
  for (const int skipped : {0, 1}) {
    const FailingCalls calls("fcntl", EMFILE, 1, skipped);
    EXPECT_EQ(ErrorOfImport("mesh"), message);
  }
}

TEST(FailingCalls, InterruptedCallsOfTheImportAreRepeated) {
  for (const char* const name : {"poll", "read", "waitpid"}) {
    const FailingCalls calls(name, EINTR, 2);
    EXPECT_EQ(ErrorOfImport("mesh"), "1") << name;
    EXPECT_EQ(calls.Failed(), 2) << name;
  }
}

TEST(FailingCalls, PipeThatCannotBeReadEndsTheImport) {
  for (int skipped = 1; skipped < 10; ++skipped) {
    const FailingCalls calls("read", EIO, 1, skipped);
    EXPECT_THAT(ErrorOfImport("mesh"), HasSubstr("mesh: is damaged: the program that imports it"))
        << skipped;
  }
  // The read after the wait reports what is wrong.
  const FailingCalls calls("poll", EINVAL);
  EXPECT_EQ(ErrorOfImport("mesh"), "1");
}

TEST(FailingCalls, EndOfTheImportMayBeUnknown) {
  const FailingCalls calls("waitpid", ECHILD);
  EXPECT_THAT(ErrorOfImport("exit"), EndsWith("ended early (exit status unknown)"));
  EXPECT_GT(waitpid(-1, nullptr, 0), 0);
}

TEST(FailingCalls, InterruptedAnswerOfTheImporterIsRepeated) {
  const auto importer = [](int error, long result = -1) {
    return StatusInChild([error, result] {
      dup2(open("/dev/null", O_WRONLY), protocol::kAnswerDescriptor);
      const std::string parent = std::to_string(getppid());
      const char* const arguments[protocol::Count] = {"program", protocol::kGreeting, "0",
                                                      parent.c_str(), "file"};
      const FailingCalls calls("write", error, 2, 0, result);
      return RunMeshImporter(protocol::Count, arguments, [](const std::string&) { return Mesh(); });
    });
  };
  EXPECT_EQ(importer(EINTR), 0);
  EXPECT_EQ(importer(EPIPE), 1);
  // A call that writes nothing is no interrupted call, whatever it leaves in errno.
  EXPECT_EQ(importer(EINTR, 0), 1);
}

TEST_F(FailingCallsOfOutput, InterruptedWriteIsRepeated) {
  const FailingCalls calls("write", EINTR, 3);
  EXPECT_EQ(ErrorOfWriting(m_path, false), "text");
  EXPECT_EQ(calls.Failed(), 3);
}

TEST_F(FailingCallsOfOutput, DiskThatIsFullOnlyAtTheCloseIsReported) {
  const FailingCalls calls("close", EIO);
  EXPECT_EQ(ErrorOfWriting(m_path, false), m_path + ": cannot be written: Input/output error");
  EXPECT_THAT(m_folder.Names(), IsEmpty());
}

TEST_F(FailingCallsOfOutput, InterruptedCloseHasClosedTheFile) {
  const FailingCalls calls("close", EINTR);
  EXPECT_EQ(ErrorOfWriting(m_path, false), "text");
}

TEST_F(FailingCallsOfOutput, FileThatCannotBeReplacedIsKept) {
  m_folder.Write("out", "old");
  const FailingCalls calls("rename", EIO);
  EXPECT_EQ(ErrorOfWriting(m_path, true), m_path + ": cannot be written: Input/output error");
  EXPECT_EQ(BytesOf(m_path), "old");
  EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
}

TEST_F(FailingCallsOfOutput, HardLinkTakesThePlaceOfARenameThatIsUnknown) {
  for (const int error : {EINVAL, ENOSYS}) {
    const FailingCalls calls("renameat2", error);
    EXPECT_EQ(ErrorOfWriting(m_path, false), "text");
    EXPECT_THAT(m_folder.Names(), ElementsAre("out"));
    std::filesystem::remove(m_path);
  }
}

TEST_F(FailingCallsOfOutput, RenameThatFailsOtherwiseIsReported) {
  {
    const FailingCalls calls("renameat2", EIO);
    EXPECT_EQ(ErrorOfWriting(m_path, false), m_path + ": cannot be written: Input/output error");
  }
  const FailingCalls calls("renameat2", EEXIST);
  EXPECT_EQ(ErrorOfWriting(m_path, false),
            m_path + ": was created by another process meanwhile and is kept");
  EXPECT_THAT(m_folder.Names(), IsEmpty());
}
