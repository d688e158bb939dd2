#include "MeshReadChild.h"

#include "MeshSamples.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

using namespace gsl_mesh_samples;
using gsl_sweep::MeshReader;
using gsl_sweep::ReadInChildProcess;
using testing::HasSubstr;

namespace {

std::string ErrorOfReader(MeshReader reader) {
  try {
    ReadInChildProcess("sample", reader);
  } catch (const MeshError& e) {
    return e.what();
  }
  return "no error";
}

} // namespace

TEST(MeshReadChild, MeshAndWarningsComeBack) {
  const Mesh mesh = ReadInChildProcess("sample", [](const std::string& path) {
    return Mesh{path, TetrahedronCorners(), {"first", "", "third"}};
  });
  ExpectCorners(mesh, TetrahedronCorners());
  EXPECT_THAT(mesh.warnings, testing::ElementsAre("first", "", "third"));
}

TEST(MeshReadChild, LargeMeshComesBack) {
  const Mesh mesh = ReadInChildProcess("sample", [](const std::string&) {
    Mesh large;
    for (int k = 0; k < 300000; ++k)
      large.corners.push_back({1.0 * k, 0.1 * k, -1.0 * k});
    return large;
  });
  ASSERT_EQ(mesh.corners.size(), 300000U);
  for (int k = 0; k < 300000; k += 7) {
    EXPECT_EQ(mesh.corners[static_cast<std::size_t>(k)].y, 0.1 * k);
  }
}

TEST(MeshReadChild, ErrorsComeBackAsOneLine) {
  EXPECT_EQ(ErrorOfReader([](const std::string&) -> Mesh { throw MeshError("sample: bad"); }),
            "sample: bad");
  EXPECT_EQ(ErrorOfReader([](const std::string&) -> Mesh { throw std::logic_error("a\nb"); }),
            "sample: cannot be read: a?b");
  EXPECT_EQ(ErrorOfReader([](const std::string&) -> Mesh { throw std::bad_alloc(); }),
            "sample: not enough memory to read it");
  EXPECT_EQ(ErrorOfReader([](const std::string&) -> Mesh { throw 1; }), "sample: cannot be read");
}

TEST(MeshReadChild, CrashesStayInTheChild) {
  EXPECT_EQ(ErrorOfReader([](const std::string&) -> Mesh {
              raise(SIGSEGV);
              return {};
            }),
            "sample: damaged: its reader did not survive it (Segmentation fault)");
  EXPECT_EQ(ErrorOfReader([](const std::string&) -> Mesh { std::abort(); }),
            "sample: damaged: its reader did not survive it (Aborted)");
  EXPECT_EQ(ErrorOfReader([](const std::string&) -> Mesh { _exit(7); }),
            "sample: damaged: its reader did not survive it (exit status 7)");
  EXPECT_EQ(ErrorOfReader([](const std::string&) -> Mesh { _exit(0); }),
            "sample: damaged: its reader did not survive it (exit status 0)");
}

TEST(MeshReadChild, ChatterStaysInTheChild) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  ReadInChildProcess("sample", [](const std::string&) {
    std::fputs("out", stdout);
    std::fflush(stdout);
    std::fputs("err", stderr);
    return Mesh{};
  });
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(MeshReadChild, WorksWithoutStandardStreams) {
  const pid_t child = fork();
  if (child == 0) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
      close(stream);
    const Mesh mesh = ReadInChildProcess("sample", [](const std::string&) {
      return Mesh{"", TetrahedronCorners(), {}};
    });
    _exit(mesh.corners.size() == 12 ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST(MeshReadChild, NoProcessIsLeft) {
  ErrorOfReader([](const std::string&) -> Mesh { std::abort(); });
  ReadInChildProcess("sample", [](const std::string&) { return Mesh{}; });
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}
