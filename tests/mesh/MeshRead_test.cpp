#include "MeshRead.h"

#include "ChildProcess.h"
#include "MeshImportProtocol.h"
#include "MeshSamples.h"
#include "MeshWrite.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace gsl_mesh_samples;
using gsl_mesh::DetectMeshFormat;
using gsl_mesh::ReadMesh;
using testing::HasSubstr;

namespace {

/// Restores the rights that the tests change.
class Chmod {
public:
  Chmod(std::string path, mode_t mode) : m_path(std::move(path)) { chmod(m_path.c_str(), mode); }
  Chmod(const Chmod&) = delete;
  Chmod& operator=(const Chmod&) = delete;
  ~Chmod() { chmod(m_path.c_str(), 0700); }

private:
  std::string m_path;
};

/// The superuser may read every file, so the process is another user during the lifetime of this
/// object.
class OrdinaryUser {
public:
  OrdinaryUser() { EXPECT_TRUE(!m_wasSuperuser || seteuid(65534) == 0); }
  OrdinaryUser(const OrdinaryUser&) = delete;
  OrdinaryUser& operator=(const OrdinaryUser&) = delete;
  ~OrdinaryUser() { EXPECT_TRUE(!m_wasSuperuser || seteuid(0) == 0); }

private:
  const bool m_wasSuperuser = geteuid() == 0;
};

} // namespace

namespace {

/// Returns the parts that are reported while a mesh is read.
std::vector<double> ReportedFor(const std::function<Mesh(const gsl_mesh::MeshProgress&)>& read,
                                const std::vector<gsl_arithmetic::Coord3>& corners) {
  std::vector<double> parts;
  const Mesh mesh = read([&](double part) { parts.push_back(part); });
  ExpectCorners(mesh, corners);
  return parts;
}

/// Expects parts from about `first` to nearly 1 that never fall.
void ExpectProgress(const std::vector<double>& parts, double first) {
  ASSERT_GE(parts.size(), 5u);
  EXPECT_TRUE(std::is_sorted(parts.begin(), parts.end()));
  EXPECT_GE(parts.front(), first);
  EXPECT_LE(parts.front(), 0.26);
  EXPECT_GT(parts.back(), 0.85);
  EXPECT_LE(parts.back(), 1.0);
  for (std::size_t k = 1; k < parts.size(); ++k)
    EXPECT_LE(parts[k] - parts[k - 1], 0.5) << k;
}

} // namespace

TEST(MeshRead, ProgressCoversEveryFormat) {
  const TemporaryFolder folder;
  Mesh mesh;
  for (int k = 0; k < 30000; ++k) {
    const double x = 0.125 * k;
    mesh.corners.insert(mesh.corners.end(), {{x, 1.0, 0.0}, {x, 2.0, 0.5}, {x, 0.0, 1.0}});
  }
  std::string text = "solid a\n";
  for (std::size_t k = 0; k < mesh.TriangleCount(); ++k) {
    text += "facet normal 0 0 0\nouter loop\n";
    for (std::size_t c = 0; c < 3; ++c) {
      const auto& p = mesh.corners[3 * k + c];
      text += "vertex " + std::to_string(p.x) + " " + std::to_string(p.y) + " " +
              std::to_string(p.z) + "\n";
    }
    text += "endloop\nendfacet\n";
  }
  folder.Write("text.stl", text + "endsolid a\n");
  for (const char* name : {"binary.stl", "binary.ply", "a.obj", "a.off"})
    gsl_mesh::WriteMesh(folder.Path(name), mesh, false);
  for (const char* name : {"text.stl", "binary.stl", "binary.ply", "a.obj", "a.off"}) {
    SCOPED_TRACE(name);
    const std::string path = folder.Path(name);
    ExpectProgress(
        ReportedFor([&](const auto& report) { return ReadMesh(path, report); }, mesh.corners),
        std::string_view(name) == "binary.stl" ? 0.0 : 0.25); // which is not loaded first
    const int stream = open(path.c_str(), O_RDONLY);
    const auto format = gsl_mesh::DetectMeshFormat(BytesOf(path), path);
    ExpectProgress(ReportedFor(
                       [&](const auto& report) {
                         return gsl_mesh::ReadMeshFromStream(stream, "stream", format, report);
                       },
                       mesh.corners),
                   0.0);
    close(stream);
  }
}

TEST(MeshRead, LoadingAFileIsAQuarterOfTheProgress) {
  const TemporaryFolder folder;
  // Five steps of 8 MiB, then an error of the reader.
  const std::string path = folder.Write("large.off", std::string(std::size_t{5} << 23, ' '));
  std::vector<double> parts;
  EXPECT_THROW(ReadMesh(path, [&](double part) { parts.push_back(part); }), MeshError);
  ASSERT_GE(parts.size(), 5u);
  for (std::size_t k = 0; k < 5; ++k)
    EXPECT_DOUBLE_EQ(parts[k], 0.05 * static_cast<double>(k + 1));
}

TEST(MeshRead, EverySampleReadsAsTheSameTriangles) {
  const TemporaryFolder folder;
  for (const Sample& sample : AllSamples()) {
    SCOPED_TRACE(sample.name);
    const std::string path = folder.Write(sample.name, sample.bytes);
    const Mesh mesh = ReadMesh(path);
    ExpectCorners(mesh, TetrahedronCorners());
    EXPECT_EQ(mesh.file, path);
    EXPECT_TRUE(mesh.warnings.empty());
  }
}

TEST(MeshRead, ExtensionsMayBeInAnyCase) {
  const TemporaryFolder folder;
  ExpectCorners(ReadMesh(folder.Write("PART.OBJ", ObjText())), TetrahedronCorners());
  ExpectCorners(ReadMesh(folder.Write("PART.3MF", ThreeMf())), TetrahedronCorners());
  ExpectCorners(ReadMesh(folder.Write("PART.Stl", StlText(TetrahedronCorners()))),
                TetrahedronCorners());
}

TEST(MeshRead, UnambiguousContentsWinOverTheExtension) {
  const TemporaryFolder folder;
  for (const Sample& sample : AllSamples()) {
    if (sample.name == "text.obj" || sample.name == "text.gltf" || sample.name == "zipped.3mf") {
      continue;
    }
    // Assimp requires the usual extension for its files.
    if (sample.name == "binary.glb") continue;
    for (const char* name : {"part", "part.txt", "part.obj", "part.stl", "part.ply", "part.3mf"}) {
      SCOPED_TRACE(sample.name + " as " + name);
      ExpectCorners(ReadMesh(folder.Write(name, sample.bytes)), TetrahedronCorners());
    }
  }
}

TEST(MeshRead, AmbiguousContentsFollowTheExtension) {
  EXPECT_EQ(DetectMeshFormat("solid ground\nv 0 0 0\n", "part.obj"), MeshFormat::Obj);
  EXPECT_EQ(DetectMeshFormat("OFFICE", "part.obj"), MeshFormat::Obj);
  EXPECT_EQ(DetectMeshFormat("3 1 0\n", "part.off"), MeshFormat::Off);
  EXPECT_EQ(DetectMeshFormat("ply with", "part.stl"), MeshFormat::Stl);
  EXPECT_EQ(DetectMeshFormat("", "a.stl/part"), MeshFormat::Unknown);
}

TEST(MeshRead, UnknownFormatsAreRefused) {
  const TemporaryFolder folder;
  for (const char* name : {"part", "part.txt", "part.", ".stl.", "part.zae"}) {
    const std::string path = folder.Write(name, "hello");
    EXPECT_EQ(ErrorOfFile(path),
              path + ": is not of a known mesh format; expected STL, OBJ, PLY, OFF, "
                     "3MF, glTF or another format that Assimp reads");
  }
}

TEST(MeshRead, FilesThatAreNotMeshFilesAreRefused) {
  const TemporaryFolder folder;
  const std::string missing = folder.Path("missing.stl");
  EXPECT_EQ(ErrorOfFile(missing), missing + ": cannot be opened: No such file or directory");
  EXPECT_EQ(ErrorOfFile(""), ": cannot be opened: No such file or directory");
  const std::string directory = folder.Path("directory.stl");
  std::filesystem::create_directory(directory);
  EXPECT_EQ(ErrorOfFile(directory), directory + ": is a directory, not a mesh file");
  const std::string below = folder.Write("file", "x") + "/part.stl";
  EXPECT_EQ(ErrorOfFile(below), below + ": cannot be opened: Not a directory");
  for (const char* name : {"empty.stl", "empty.obj", "empty.ply", "empty.off", "empty.3mf"}) {
    const std::string empty = folder.Write(name, "");
    EXPECT_EQ(ErrorOfFile(empty), empty + ": is empty");
  }
  EXPECT_EQ(ErrorOfFile("/dev/null"), "/dev/null: is a device, not a mesh file");
  EXPECT_EQ(ErrorOfFile("/dev/zero"), "/dev/zero: is a device, not a mesh file");
}

TEST(MeshRead, PipesAreRefusedWithoutWaitingForThem) {
  const TemporaryFolder folder;
  const std::string pipe = folder.Path("pipe.stl");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(ErrorOfFile(pipe), pipe + ": is a pipe, not a mesh file");
}

TEST(MeshRead, SocketsAreRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("s.stl");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  ASSERT_LT(path.size(), sizeof address.sun_path);
  std::memcpy(address.sun_path, path.c_str(), path.size());
  const int socketFile = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(socketFile, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_THAT(ErrorOfFile(path), HasSubstr(": cannot be opened: "));
  close(socketFile);
}

TEST(MeshRead, UnreadableFilesAreRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("part.stl", StlBinary(TetrahedronCorners()));
  const Chmod locked(path, 0);
  const Chmod open(folder.Path(""), 0755);
  const OrdinaryUser reader;
  EXPECT_EQ(ErrorOfFile(path), path + ": cannot be opened: Permission denied");
}

TEST(MeshRead, FilesLargerThanTheMemoryAreRefused) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("part.stl", "solid");
  const auto pages = static_cast<std::uintmax_t>(sysconf(_SC_PHYS_PAGES));
  const std::uintmax_t size = pages * static_cast<std::uintmax_t>(sysconf(_SC_PAGESIZE)) + 1;
  std::error_code error;
  std::filesystem::resize_file(path, size, error); // takes no room: the file has a hole
  if (error) GTEST_SKIP() << "no file of " << size << " bytes here: " << error.message();
  EXPECT_EQ(ErrorOfFile(path), path + ": has " + std::to_string(size) +
                                   " bytes, more than the memory of this machine");
}

TEST(MeshRead, WorksWithoutStandardInput) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("part.off", OffText());
  const int status = StatusInChild([&] {
    close(STDIN_FILENO); // the file takes its descriptor
    return ReadMesh(path).corners.size() == TetrahedronCorners().size() ? 0 : 2;
  });
  EXPECT_EQ(status, 0);
}

TEST(MeshRead, AnswerThatNoMemoryHoldsIsRefused) {
  const TemporaryFolder folder;
  // No error, then 2^64 - 1 warnings.
  const std::string answer =
      folder.Write("answer", std::string(gsl_mesh::import_protocol::kGreeting) +
                                 std::string(9, '\0') + std::string(8, '\xff'));
  const std::string program = folder.Write("program", "#!/bin/sh\ncat '" + answer + "' >&3\n");
  const Chmod executable(program, 0755);
  const std::string path = folder.Write("part.glb", Glb());
  const std::string expected = path + ": not enough memory to read it";
  const int status = StatusInChild([&] {
    setenv("GSL_MESH_IMPORT", program.c_str(), 1);
    return ErrorOfFile(path) == expected ? 0 : 2;
  });
  EXPECT_EQ(status, 0);
}

TEST(MeshRead, MessagesAreOneLineForEveryFileName) {
  const TemporaryFolder folder;
  EXPECT_EQ(ErrorOfFile(folder.Path("a\nb.stl")),
            folder.Path("a?b.stl") + ": cannot be opened: No such file or directory");
}

TEST(MeshRead, FromMemoryRefusesFormatsThatNeedAFile) {
  EXPECT_THAT(ErrorOf(MeshFormat::Assimp, Glb()),
              HasSubstr("sample: is not of a known mesh format"));
  EXPECT_THAT(ErrorOf(MeshFormat::Unknown, "x"),
              HasSubstr("sample: is not of a known mesh format"));
}

namespace {

/// Reads bytes that another thread sends through a pipe.
class Stream {
public:
  explicit Stream(std::string bytes) {
    EXPECT_EQ(pipe(m_ends), 0);
    std::signal(SIGPIPE, SIG_IGN); // a reader may give up
    m_sender = std::thread([this, sent = std::move(bytes)] {
      for (std::size_t done = 0; done < sent.size();) {
        const ssize_t written = write(m_ends[1], sent.data() + done, sent.size() - done);
        if (written < 0) break;
        done += static_cast<std::size_t>(written);
      }
      close(m_ends[1]);
    });
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    close(m_ends[0]);
    m_sender.join();
  }

  Mesh Read(MeshFormat format) { return gsl_mesh::ReadMeshFromStream(m_ends[0], "a pipe", format); }
  int End() const { return m_ends[0]; }

private:
  int m_ends[2] = {-1, -1};
  std::thread m_sender;
};

std::string ErrorOfStream(const std::string& bytes, MeshFormat format) {
  try {
    Stream(bytes).Read(format);
  } catch (const MeshError& e) {
    return e.what();
  }
  return "no error";
}

} // namespace

TEST(MeshRead, StreamIsReadToItsEnd) {
  const std::pair<std::string, MeshFormat> samples[] = {
      {StlText(TetrahedronCorners()), MeshFormat::Stl},
      {StlBinary(TetrahedronCorners()), MeshFormat::Stl},
      {PlyText(), MeshFormat::Ply},
      {PlyBinary(true), MeshFormat::Ply},
      {OffText(), MeshFormat::Off}};
  for (const auto& [bytes, format] : samples) {
    for (const MeshFormat asked : {format, MeshFormat::Unknown}) {
      const Mesh mesh = Stream(bytes).Read(asked);
      ExpectCorners(mesh, TetrahedronCorners());
      EXPECT_EQ(mesh.file, "a pipe");
    }
  }
  ExpectCorners(Stream(ObjText()).Read(MeshFormat::Obj), TetrahedronCorners());
  std::vector<Coord3> many;
  for (int k = 0; k < 3 * 50000; ++k)
    many.push_back({0.5 * k, 1.0, 2.0});
  ExpectCorners(Stream(StlBinary(many)).Read(MeshFormat::Stl),
                many); // more bytes than a pipe holds
}

TEST(MeshRead, StreamThatDoesNotBlockIsWaitedFor) {
  Stream stream(ObjText() + std::string(1 << 20, '\n'));
  ASSERT_EQ(fcntl(stream.End(), F_SETFL, O_NONBLOCK), 0);
  ExpectCorners(stream.Read(MeshFormat::Obj), TetrahedronCorners());
}

TEST(MeshRead, StreamOfNoClearFormatIsRefused) {
  const std::string names = "stl, ply, obj or off";
  EXPECT_EQ(ErrorOfStream(ObjText(), MeshFormat::Unknown),
            "a pipe: its contents do not show the format; expected --format with " + names);
  EXPECT_EQ(ErrorOfStream(PlyText(), MeshFormat::Stl),
            "a pipe: its contents are ply, but --format says stl");
  EXPECT_EQ(ErrorOfStream(Glb(), MeshFormat::Unknown),
            "a pipe: is of a format that is read from files only; expected " + names + " here");
  EXPECT_EQ(ErrorOfStream(Glb(), MeshFormat::Stl), ErrorOfStream(Glb(), MeshFormat::Unknown));
  EXPECT_EQ(ErrorOfStream("", MeshFormat::Stl), "a pipe: is empty");
  EXPECT_THAT(ErrorOfStream("\x1F\x8B\x08", MeshFormat::Obj),
              testing::StartsWith("a pipe: is compressed with gzip; "));
  EXPECT_THAT(ErrorOfStream("v 0 0\n", MeshFormat::Obj), testing::StartsWith("a pipe: line 1: "));
}

TEST(MeshRead, StreamThatCannotBeReadIsRefused) {
  try {
    gsl_mesh::ReadMeshFromStream(-1, "a pipe", MeshFormat::Stl);
    ADD_FAILURE() << "not refused";
  } catch (const MeshError& e) {
    EXPECT_STREQ(e.what(), "a pipe: cannot be read: Bad file descriptor");
  }
}

TEST(MeshRead, HundredThousandTrianglesTakeAFractionOfASecond) {
  const TemporaryFolder folder;
  std::string text;
  for (int k = 0; k < 50000; ++k) {
    text += "v " + std::to_string(k) + ".123456 -0.7654321 1.5e-3\n";
  }
  for (int k = 1; k + 2 <= 50000; ++k) {
    for (int twice = 0; twice < 2; ++twice) {
      text += "f " + std::to_string(k) + " " + std::to_string(k + 1) + " " + std::to_string(k + 2) +
              "\n";
    }
  }
  const std::string path = folder.Write("part.obj", text);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(ReadMesh(path).TriangleCount(), 99996U);
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  std::printf("%.3f s\n", time.count());
  EXPECT_LT(time.count(), 3.0); // under sanitizers too; without them it is about 0.05 s
}
