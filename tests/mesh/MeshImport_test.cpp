#include "MeshImport.h"

#include "MachineMemory.h"
#include "MeshSamples.h"
#include "TestScale.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace gsl_mesh_samples;
using gsl_mesh::ImportLimits;
using gsl_mesh::ImportLimitsFor;
using gsl_mesh::ImportMesh;
using gsl_mesh::MeshImportProgram;
using testing::ElementsAre;
using testing::EndsWith;
using testing::StartsWith;

namespace {

const std::string probe = GSL_IMPORT_PROBE;
const ImportLimits ample = ImportLimitsFor(1000);

Mesh Import(const std::string& path, const ImportLimits& limits = ample) {
  return ImportMesh(probe, path, limits);
}

std::string ErrorOfImport(const std::string& path, const ImportLimits& limits = ample,
                          const std::string& program = probe) {
  try {
    ImportMesh(program, path, limits);
  } catch (const MeshError& e) {
    return e.what();
  }
  return "no error";
}

void ExpectNoProcessIsLeft() {
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

/// Sets an environment variable during its lifetime.
class Environment {
public:
  Environment(const char* name, const std::string& value) : m_name(name) {
    const char* const old = std::getenv(name);
    m_had = old != nullptr;
    if (m_had) m_old = old;
    setenv(name, value.c_str(), 1);
  }
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  ~Environment() {
    if (m_had) {
      setenv(m_name, m_old.c_str(), 1);
    } else {
      unsetenv(m_name);
    }
  }

private:
  const char* m_name;
  bool m_had = false;
  std::string m_old;
};

/// True when the process that hangs on `path` has written its process id there.
pid_t ProcessNamedIn(const std::string& path) {
  for (int k = 0; k < 3000; ++k) {
    const std::string text = BytesOf(path);
    if (!text.empty() && text.back() == '\n') return static_cast<pid_t>(std::stol(text));
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return 0;
}

} // namespace

TEST(MeshImport, MeshAndWarningsComeBack) {
  const Mesh mesh = Import("mesh");
  ExpectCorners(mesh, {{0.5, -0.25, 0.125}, {3.0, 0.0, 0.0}, {0.0, 2.0, -1.0}});
  EXPECT_THAT(mesh.warnings, ElementsAre("first", "", "third"));
}

TEST(MeshImport, LargeMeshComesBack) {
  const Mesh mesh = Import("large");
  ASSERT_EQ(mesh.corners.size(), 300000U);
  for (int k = 0; k < 300000; k += 7) {
    EXPECT_EQ(mesh.corners[static_cast<std::size_t>(k)].y, 0.1 * k);
  }
}

TEST(MeshImport, ErrorsComeBackAsOneLine) {
  EXPECT_EQ(ErrorOfImport("bad"), "sample: bad");
  EXPECT_EQ(ErrorOfImport("two lines"), "two lines: cannot be read: a?b");
  EXPECT_EQ(ErrorOfImport("no memory"), "no memory: not enough memory to read it");
  EXPECT_EQ(ErrorOfImport("no exception"), "no exception: cannot be read");
}

TEST(MeshImport, CrashesStayInTheProgram) {
  const std::string ended = ": is damaged: the program that imports it ended early (";
  EXPECT_EQ(ErrorOfImport("crash"), "crash" + ended + "Segmentation fault)");
  EXPECT_EQ(ErrorOfImport("abort"), "abort" + ended + "Aborted)");
  EXPECT_EQ(ErrorOfImport("exit"), "exit" + ended + "exit status 7)");
  EXPECT_EQ(ErrorOfImport("early end"), "early end" + ended + "exit status 0)");
}

TEST(MeshImport, ReaderThatHangsIsStopped) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("hang");
  const ImportLimits brief{std::chrono::milliseconds(1200), 0};
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(ErrorOfImport(path, brief), path + ": cannot be read within 1 seconds");
  const auto taken = std::chrono::steady_clock::now() - start;
  EXPECT_GE(taken, std::chrono::milliseconds(1200));
  EXPECT_LT(taken, std::chrono::seconds(30));
  ExpectNoProcessIsLeft();
}

TEST(MeshImport, MemoryIsLimited) {
#if TEST_UNDER_SANITIZER
  GTEST_SKIP() << "sanitizers map more than any limit";
#endif
  const std::chrono::minutes time(1);
  EXPECT_EQ(ErrorOfImport("greedy", {time, 100000000}), "greedy: not enough memory to read it");
  EXPECT_EQ(ErrorOfImport("greedy", {time, 400000000}), "no error");
  // What the program itself takes does not count. It is more than the 2 MB that are left here.
  EXPECT_EQ(ErrorOfImport("greedy", {time, 194000000}), "no error");
  EXPECT_EQ(ErrorOfImport("greedy", {time, 0}), "no error");
}

TEST(MeshImport, LimitsGrowWithTheFile) {
  EXPECT_EQ(ImportLimitsFor(1).time, std::chrono::seconds(60));
  EXPECT_EQ(ImportLimitsFor(100000000).time, std::chrono::seconds(1060));
  const std::uint64_t machine = gsl_mesh::MemoryOfMachine();
  EXPECT_EQ(ImportLimitsFor(0).memory, std::min<std::uint64_t>(4000000000, machine));
  EXPECT_EQ(ImportLimitsFor(100000).memory, std::min<std::uint64_t>(4050000000, machine));
  EXPECT_EQ(ImportLimitsFor(machine).memory, machine);
  EXPECT_EQ(ImportLimitsFor(UINT64_MAX).memory, machine);
}

TEST(MeshImport, OutputStaysInTheProgram) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  Import("chatter");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(MeshImport, ProgramLeavesNoCoreEvenWhereItsCallerWould) {
  rlimit old{};
  ASSERT_EQ(getrlimit(RLIMIT_CORE, &old), 0);
  // Only the superuser may raise the upper limit, which may be zero.
  const rlimit most{RLIM_INFINITY, RLIM_INFINITY};
  const rlimit some{old.rlim_max, old.rlim_max};
  ASSERT_TRUE(setrlimit(RLIMIT_CORE, &most) == 0 || setrlimit(RLIMIT_CORE, &some) == 0);
  const Mesh mesh = Import("surroundings");
  setrlimit(RLIMIT_CORE, &old);
  ASSERT_EQ(mesh.warnings.size(), 6U);
  EXPECT_EQ(mesh.warnings[5], "no core");
}

TEST(MeshImport, ProgramInheritsNothingFromItsCaller) {
  // The caller has an open descriptor and blocks a signal.
  const int forgotten = open("/dev/null", O_RDONLY);
  const int far = dup2(forgotten, 500);
  sigset_t old;
  sigset_t blocked;
  sigemptyset(&blocked);
  sigaddset(&blocked, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &blocked, &old);
  const Mesh mesh = Import("surroundings");
  pthread_sigmask(SIG_SETMASK, &old, nullptr);
  close(far);
  close(forgotten);
  EXPECT_THAT(mesh.warnings, ElementsAre("null", "null", "null", "3 ", "open", "no core"));
}

TEST(MeshImport, WorksWithoutStandardStreams) {
  const pid_t child = fork();
  if (child == 0) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
      close(stream);
    const Mesh mesh = Import("mesh");
    _exit(mesh.corners.size() == 3 && mesh.warnings.size() == 3 ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
}

TEST(MeshImport, ProgramEndsWithItsCaller) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("hang");
  const pid_t caller = fork();
  if (caller == 0) {
    ErrorOfImport(path);
    _exit(0);
  }
  const pid_t program = ProcessNamedIn(path);
  ASSERT_GT(program, 0);
  ASSERT_EQ(kill(program, 0), 0);
  kill(caller, SIGKILL);
  waitpid(caller, nullptr, 0);
  bool gone = false;
  for (int k = 0; k < 3000 && !gone; ++k) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    // The process may remain for a while as an entry that has not been waited for.
    const std::string state = BytesOf("/proc/" + std::to_string(program) + "/stat");
    gone = state.empty() || state.find(") Z ") != std::string::npos;
  }
  EXPECT_TRUE(gone);
}

TEST(MeshImport, ManyThreadsImportAtOnce) {
  std::vector<std::thread> threads;
  std::vector<std::size_t> corners(8);
  for (std::size_t t = 0; t < corners.size(); ++t) {
    threads.emplace_back([&corners, t] {
      for (int k = 0; k < 5; ++k)
        corners[t] += Import(t % 2 == 0 ? "mesh" : "large").corners.size();
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  for (std::size_t t = 0; t < corners.size(); ++t)
    EXPECT_EQ(corners[t], t % 2 == 0 ? 15U : 1500000U);
  ExpectNoProcessIsLeft();
}

TEST(MeshImport, NoProcessIsLeft) {
  ErrorOfImport("abort");
  Import("mesh");
  ExpectNoProcessIsLeft();
}

TEST(MeshImport, MissingProgramIsOneLine) {
  const std::string other = "part.3mf: is not STL, PLY, OBJ or OFF, and the program that reads "
                            "other formats cannot be started: ";
  EXPECT_EQ(ErrorOfImport("part.3mf", ample, "/nowhere/gsl-mesh-import"),
            other + "/nowhere/gsl-mesh-import is missing");
  EXPECT_EQ(ErrorOfImport("part.3mf", ample, "/dev/null"), other + "/dev/null Permission denied");
  ExpectNoProcessIsLeft();
}

TEST(MeshImport, AnotherProgramIsNoticed) {
  const std::string answers = " is not this version of gsl-mesh-import (";
  EXPECT_EQ(ErrorOfImport("mesh", ample, "/bin/true"),
            "mesh: cannot be read: /bin/true" + answers + "exit status 0)");
  const TemporaryFolder folder;
  const std::string older = folder.Write("older", "#!/bin/sh\nprintf gslmesh0x >&3\nexit 5\n");
  chmod(older.c_str(), 0755);
  EXPECT_EQ(ErrorOfImport("mesh", ample, older),
            "mesh: cannot be read: " + older + answers + "exit status 5)");
}

TEST(MeshImport, EnvironmentNamesTheProgram) {
  const Environment named("GSL_MESH_IMPORT", "/some/where");
  EXPECT_EQ(MeshImportProgram(), "/some/where");
}

TEST(MeshImport, ProgramIsLookedForBesideTheRunningOneAndInItsPrefix) {
  const Environment empty("GSL_MESH_IMPORT", "");
  const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const auto beside = folder / "gsl-mesh-import";
  ASSERT_FALSE(std::filesystem::exists(beside));
  EXPECT_THAT(MeshImportProgram(), StartsWith(folder.parent_path().string() + "/"));
  EXPECT_THAT(MeshImportProgram(), EndsWith("/gsl_geometry/gsl-mesh-import"));
}
