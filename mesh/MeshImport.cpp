#include "MeshImport.h"

#include "FileDescriptor.h"
#include "MachineMemory.h"
#include "MeshImportProtocol.h"
#include "MeshSource.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

namespace {

namespace protocol = import_protocol;

const char* const kProgramName = "gsl-mesh-import";

/// The end of the pipe that the result comes from, and the program. The destructor closes the pipe
/// and ends the program.
class ImportProcess {
public:
  ImportProcess(int pipeEnd, pid_t process, std::chrono::milliseconds time)
      : m_pipe(pipeEnd), m_process(process), m_end(Clock::now() + time) {}
  ImportProcess(const ImportProcess&) = delete;
  ImportProcess& operator=(const ImportProcess&) = delete;
  ~ImportProcess() {
    close(m_pipe);
    if (m_process > 0) {
      // The process may still be writing to the closed pipe.
      kill(m_process, SIGKILL);
      Wait();
    }
  }

  bool Read(void* data, std::size_t size) {
    char* next = static_cast<char*>(data);
    while (size > 0) {
      if (!WaitForData()) return false;
      const ssize_t got = read(m_pipe, next, size);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) return false;
      next += got;
      size -= static_cast<std::size_t>(got);
    }
    return true;
  }

  bool ReadText(std::string& text) {
    std::uint64_t size = 0;
    if (!Read(&size, sizeof size)) return false;
    text.resize(size);
    return Read(text.data(), size);
  }

  bool IsOutOfTime() const { return m_outOfTime; }

  /// Returns how the process ended, in words.
  std::string Wait() {
    int status = 0;
    pid_t ended = 0;
    do {
      ended = waitpid(m_process, &status, 0);
    } while (ended < 0 && errno == EINTR);
    m_process = 0;
    if (ended < 0) return "exit status unknown";
    if (WIFSIGNALED(status)) return strsignal(WTERMSIG(status));
    return "exit status " + std::to_string(WEXITSTATUS(status));
  }

private:
  using Clock = std::chrono::steady_clock;

  /// False when the time is up; true when there is data to read, or the end of the data.
  bool WaitForData() {
    constexpr std::int64_t kLongest = 1000; // milliseconds; then the clock is read again
    for (;;) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - Clock::now()).count();
      if (left <= 0) {
        m_outOfTime = true;
        return false;
      }
      pollfd waited{m_pipe, POLLIN, 0};
      const int ready = poll(&waited, 1, static_cast<int>(std::min(left, kLongest)));
      if (ready > 0) return true;
      if (ready < 0 && errno != EINTR) return true; // the read reports what is wrong
    }
  }

  int m_pipe;
  pid_t m_process;
  Clock::time_point m_end;
  bool m_outOfTime = false;
};

/// Returns a copy of a descriptor above all descriptors that the new process uses. The low
/// descriptor would be closed there if the caller has closed its own standard streams.
FileDescriptor MovedUp(const FileDescriptor& low) {
  return FileDescriptor(fcntl(low.Get(), F_DUPFD_CLOEXEC, protocol::kAnswerDescriptor + 1));
}

/// What is done in the new process before the program starts.
class SpawnPlan {
public:
  explicit SpawnPlan(int answer) {
    posix_spawn_file_actions_init(&m_actions);
    posix_spawnattr_init(&m_attributes);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
      Note(posix_spawn_file_actions_addopen(&m_actions, stream, "/dev/null", O_RDWR, 0));
    Note(posix_spawn_file_actions_adddup2(&m_actions, answer, protocol::kAnswerDescriptor));
#ifdef __GLIBC_PREREQ
#if __GLIBC_PREREQ(2, 34)
    Note(posix_spawn_file_actions_addclosefrom_np(&m_actions, protocol::kAnswerDescriptor + 1));
#endif
#endif
    // Signals that the caller's thread blocks would stay blocked.
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&m_attributes, &signals);
    posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK);
  }
  SpawnPlan(const SpawnPlan&) = delete;
  SpawnPlan& operator=(const SpawnPlan&) = delete;
  ~SpawnPlan() {
    posix_spawnattr_destroy(&m_attributes);
    posix_spawn_file_actions_destroy(&m_actions);
  }

  /// Returns the error, or 0.
  int Start(pid_t& process, std::vector<std::string> arguments) const {
    if (m_error != 0) return m_error;
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
      pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    return posix_spawn(&process, pointers[0], &m_actions, &m_attributes, pointers.data(), environ);
  }

private:
  /// Keeps the first error: a program that starts without a part of the plan would misbehave.
  void Note(int error) {
    if (m_error == 0) m_error = error;
  }

  posix_spawn_file_actions_t m_actions;
  posix_spawnattr_t m_attributes;
  int m_error = 0;
};

[[noreturn]] void FailStart(const MeshSource& source, const std::string& program, int error) {
  if (error == ENOMEM) throw std::bad_alloc();
  const std::string what = error == ENOENT ? "is missing" : std::strerror(error);
  FailRead(source, "is not STL, PLY, OBJ or OFF, and the program that reads other formats cannot "
                   "be started: " +
                       program + " " + what);
}

ImportProcess StartImport(const MeshSource& source, const std::string& program,
                          const ImportLimits& limits) {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) FailStart(source, program, errno);
  const FileDescriptor lowFrom(ends[0]);
  const FileDescriptor lowTo(ends[1]);
  FileDescriptor from = MovedUp(lowFrom);
  const FileDescriptor to = MovedUp(lowTo);
  if (from.Get() < 0 || to.Get() < 0) FailStart(source, program, errno);
  pid_t process = 0;
  const int error = SpawnPlan(to.Get()).Start(process, {program, protocol::kGreeting,
                                                        std::to_string(limits.memory),
                                                        std::to_string(getpid()), source.file});
  if (error != 0) FailStart(source, program, error);
  return {from.Release(), process, limits.time};
}

bool ReadGreeting(ImportProcess& process) {
  char greeting[sizeof protocol::kGreeting] = {};
  return process.Read(greeting, sizeof greeting) &&
         std::memcmp(greeting, protocol::kGreeting, sizeof greeting) == 0;
}

bool ReadMeshOf(ImportProcess& process, Mesh& mesh) {
  std::uint64_t warnings = 0;
  if (!process.Read(&warnings, sizeof warnings)) return false;
  mesh.warnings.resize(warnings);
  for (std::string& warning : mesh.warnings) {
    if (!process.ReadText(warning)) return false;
  }
  std::uint64_t corners = 0;
  if (!process.Read(&corners, sizeof corners)) return false;
  mesh.corners.resize(corners);
  return process.Read(mesh.corners.data(), corners * sizeof(Coord3));
}

} // namespace

ImportLimits ImportLimitsFor(std::uint64_t fileSize) {
  constexpr std::uint64_t kMegabyte = 1000000;
  const std::uint64_t seconds = 60 + fileSize / kMegabyte * 10;
  const std::uint64_t machine = MemoryOfMachine();
  const std::uint64_t wanted =
      fileSize < machine / 500 ? 4000 * kMegabyte + 500 * fileSize : machine;
  return {std::chrono::seconds(seconds), std::min(wanted, machine)};
}

std::string MeshImportProgram() {
  if (const char* const named = secure_getenv("GSL_MESH_IMPORT"); named != nullptr && *named != 0) {
    return named;
  }
  std::error_code error;
  const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  const auto beside = folder / kProgramName;
  if (access(beside.c_str(), X_OK) == 0) return beside.string();
  return (folder / GSL_LIBEXEC_FROM_BIN / kProgramName).lexically_normal().string();
}

Mesh ImportMesh(const std::string& program, const std::string& path, const ImportLimits& limits) {
  const MeshSource source{{}, path};
  ImportProcess process = StartImport(source, program, limits);
  const bool greeted = ReadGreeting(process);
  std::string error;
  Mesh mesh;
  if (greeted && process.ReadText(error)) {
    if (!error.empty()) throw MeshError(error);
    if (ReadMeshOf(process, mesh)) return mesh;
  }
  if (process.IsOutOfTime()) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limits.time).count();
    FailRead(source, "cannot be read within " + std::to_string(seconds) + " seconds");
  }
  if (!greeted) {
    FailRead(source, "cannot be read: " + program + " is not this version of " + kProgramName +
                         " (" + process.Wait() + ")");
  }
  FailRead(source, "is damaged: the program that imports it ended early (" + process.Wait() + ")");
}

} // namespace gsl_mesh
