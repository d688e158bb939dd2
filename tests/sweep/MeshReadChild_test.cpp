#include "MeshReadChild.h"

#include "MeshReadFormats.h"
#include "MeshSamples.h"
#include "TestScale.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include <sys/wait.h>
#include <unistd.h>

using namespace gsl_mesh_samples;
using gsl_sweep::MeshReader;
using gsl_sweep::ReadInChildProcess;
using gsl_sweep::ReadLimits;
using gsl_sweep::ReadLimitsFor;
using testing::HasSubstr;

namespace {

const ReadLimits ample = ReadLimitsFor(1000);

std::string ErrorOfReader(MeshReader reader, const ReadLimits& limits = ample) {
  try {
    ReadInChildProcess("sample", reader, limits);
  } catch (const MeshError& e) {
    return e.what();
  }
  return "no error";
}

} // namespace

TEST(MeshReadChild, MeshAndWarningsComeBack) {
  const Mesh mesh = ReadInChildProcess(
      "sample",
      [](const std::string& path) {
        return Mesh{path, TetrahedronCorners(), {"first", "", "third"}};
      },
      ample);
  ExpectCorners(mesh, TetrahedronCorners());
  EXPECT_THAT(mesh.warnings, testing::ElementsAre("first", "", "third"));
}

TEST(MeshReadChild, LargeMeshComesBack) {
  const Mesh mesh = ReadInChildProcess(
      "sample",
      [](const std::string&) {
        Mesh large;
        for (int k = 0; k < 300000; ++k)
          large.corners.push_back({1.0 * k, 0.1 * k, -1.0 * k});
        return large;
      },
      ample);
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

TEST(MeshReadChild, ReaderThatHangsIsGivenUp) {
  const ReadLimits brief{std::chrono::milliseconds(1200), 0};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(ErrorOfReader(
                [](const std::string&) -> Mesh {
                  for (;;)
                    pause();
                },
                brief),
            "sample: given up: not read within 1 seconds");
  const auto taken = std::chrono::steady_clock::now() - start;
  EXPECT_GE(taken, std::chrono::milliseconds(1200));
  EXPECT_LT(taken, std::chrono::seconds(30));
  // Nothing goes on behind.
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST(MeshReadChild, MemoryIsLimited) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) ||                               \
    TEST_HAS_FEATURE(address_sanitizer) || TEST_HAS_FEATURE(thread_sanitizer)
  GTEST_SKIP() << "sanitizers map more than any limit";
#endif
  const MeshReader greedy = [](const std::string&) {
    Mesh mesh;
    mesh.corners.resize(8000000); // 192 MB
    return Mesh{"", TetrahedronCorners(), {}};
  };
  const std::chrono::minutes time(1);
  EXPECT_EQ(ErrorOfReader(greedy, {time, 100000000}), "sample: not enough memory to read it");
  EXPECT_EQ(ErrorOfReader(greedy, {time, 400000000}), "no error");
  EXPECT_EQ(ErrorOfReader(greedy, {time, 0}), "no error");
}

TEST(MeshReadChild, LimitsGrowWithTheFile) {
  EXPECT_EQ(ReadLimitsFor(1).time, std::chrono::seconds(60));
  EXPECT_EQ(ReadLimitsFor(100000000).time, std::chrono::seconds(1060));
  const std::uint64_t machine = gsl_sweep::MemoryOfMachine();
  EXPECT_EQ(ReadLimitsFor(0).memory, std::min<std::uint64_t>(4000000000, machine));
  EXPECT_EQ(ReadLimitsFor(100000).memory, std::min<std::uint64_t>(4050000000, machine));
  EXPECT_EQ(ReadLimitsFor(machine).memory, machine);
  EXPECT_EQ(ReadLimitsFor(UINT64_MAX).memory, machine);
}

TEST(MeshReadChild, ChatterStaysInTheChild) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  ReadInChildProcess(
      "sample",
      [](const std::string&) {
        std::fputs("out", stdout);
        std::fflush(stdout);
        std::fputs("err", stderr);
        return Mesh{};
      },
      ample);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(MeshReadChild, WorksWithoutStandardStreams) {
  const pid_t child = fork();
  if (child == 0) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
      close(stream);
    const Mesh mesh = ReadInChildProcess(
        "sample",
        [](const std::string&) {
          return Mesh{"", TetrahedronCorners(), {}};
        },
        ample);
    _exit(mesh.corners.size() == 12 ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST(MeshReadChild, NoProcessIsLeft) {
  ErrorOfReader([](const std::string&) -> Mesh { std::abort(); });
  ReadInChildProcess(
      "sample", [](const std::string&) { return Mesh{}; }, ample);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}
