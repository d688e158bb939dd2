#include "MeshReadChild.h"

#include "MeshReadFormats.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <new>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using gsl_arithmetic::Coord3;

namespace gsl_sweep {

namespace {

void WriteAll(int file, const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = write(file, next, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) _exit(1);
    next += written;
    size -= static_cast<std::size_t>(written);
  }
}

void WriteText(int file, const std::string& text) {
  const std::uint64_t size = text.size();
  WriteAll(file, &size, sizeof size);
  WriteAll(file, text.data(), text.size());
}

/// Address space that this process has mapped, in bytes; 0 when it is not known.
std::uint64_t MappedBytes() {
  std::uint64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

/// Sanitizers map more than any machine has; what they map is no measure.
void LimitMemory(std::uint64_t bytes) {
  const std::uint64_t mapped = MappedBytes();
  if (bytes == 0 || mapped > MemoryOfMachine()) return;
  const rlimit limit{mapped + bytes, mapped + bytes};
  setrlimit(RLIMIT_AS, &limit);
}

/// An importer that goes astray is held to its share of memory and leaves no trace.
void ConfineChild(const ReadLimits& limits) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGSEGV, SIGBUS, SIGFPE, SIGABRT}) {
    std::signal(signal, SIG_DFL);
  }
  const rlimit noCore{0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  LimitMemory(limits.memory);
  const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (nowhere >= 0) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
      dup2(nowhere, stream);
  }
}

/// Sends either an error text, or an empty one, the warnings and the corners.
[[noreturn]] void RunChild(const std::string& path, MeshReader read, const ReadLimits& limits,
                           int answer) {
  ConfineChild(limits);
  std::string error;
  Mesh mesh;
  try {
    mesh = read(path);
  } catch (const MeshError& e) {
    error = e.what();
  } catch (const std::bad_alloc&) {
    error = OneLine(path) + ": not enough memory to read it";
  } catch (const std::exception& e) {
    error = OneLine(path + ": cannot be read: " + e.what());
  } catch (...) {
    // Nothing may leave this function: the caller's own handlers must not run in the child.
    error = OneLine(path) + ": cannot be read";
  }
  WriteText(answer, error);
  if (error.empty()) {
    const std::uint64_t warnings = mesh.warnings.size();
    WriteAll(answer, &warnings, sizeof warnings);
    for (const std::string& warning : mesh.warnings)
      WriteText(answer, warning);
    const std::uint64_t corners = mesh.corners.size();
    WriteAll(answer, &corners, sizeof corners);
    WriteAll(answer, mesh.corners.data(), mesh.corners.size() * sizeof(Coord3));
  }
  _exit(0);
}

/// The parent's end of the pipe and the child itself; both are gone when it is destroyed.
class Child {
public:
  Child(int pipeEnd, pid_t process, std::chrono::milliseconds time)
      : m_pipe(pipeEnd), m_process(process), m_end(Clock::now() + time) {}
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;
  ~Child() {
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

  /// How the child ended, in words.
  std::string Wait() {
    int status = 0;
    while (waitpid(m_process, &status, 0) < 0 && errno == EINTR) {
    }
    m_process = 0;
    if (WIFSIGNALED(status)) return strsignal(WTERMSIG(status));
    return "exit status " + std::to_string(WEXITSTATUS(status));
  }

private:
  using Clock = std::chrono::steady_clock;

  /// False when the time is up; true when there is something to read, if only the end.
  bool WaitForData() {
    constexpr std::int64_t longest = 1000; // milliseconds; the clock is looked at again
    for (;;) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_end - Clock::now()).count();
      if (left <= 0) {
        m_outOfTime = true;
        return false;
      }
      pollfd waited{m_pipe, POLLIN, 0};
      const int ready = poll(&waited, 1, static_cast<int>(std::min(left, longest)));
      if (ready > 0) return true;
      if (ready < 0 && errno != EINTR) return true; // reading tells what is wrong
    }
  }

  int m_pipe;
  pid_t m_process;
  Clock::time_point m_end;
  bool m_outOfTime = false;
};

/// The child's standard streams are replaced, so the ends must not be among them even when the
/// caller has closed its own.
bool OpenPipe(int (&ends)[2]) {
  int low[2];
  if (pipe2(low, O_CLOEXEC) != 0) return false;
  for (int k = 0; k < 2; ++k) {
    ends[k] = fcntl(low[k], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(low[k]);
  }
  if (ends[0] >= 0 && ends[1] >= 0) return true;
  for (const int end : ends) {
    if (end >= 0) close(end);
  }
  return false;
}

Child StartChild(const MeshSource& source, MeshReader read, const ReadLimits& limits) {
  int ends[2] = {-1, -1};
  if (!OpenPipe(ends)) {
    FailRead(source, std::string("its reader cannot be started: ") + std::strerror(errno));
  }
  const pid_t process = fork();
  if (process == 0) {
    close(ends[0]);
    RunChild(source.file, read, limits, ends[1]);
  }
  close(ends[1]);
  if (process < 0) {
    const int error = errno;
    close(ends[0]);
    FailRead(source, std::string("its reader cannot be started: ") + std::strerror(error));
  }
  return {ends[0], process, limits.time};
}

bool ReadAnswer(Child& child, Mesh& mesh) {
  std::uint64_t warnings = 0;
  if (!child.Read(&warnings, sizeof warnings)) return false;
  mesh.warnings.resize(warnings);
  for (std::string& warning : mesh.warnings) {
    if (!child.ReadText(warning)) return false;
  }
  std::uint64_t corners = 0;
  if (!child.Read(&corners, sizeof corners)) return false;
  mesh.corners.resize(corners);
  return child.Read(mesh.corners.data(), corners * sizeof(Coord3));
}

} // namespace

ReadLimits ReadLimitsFor(std::uint64_t fileSize) {
  constexpr std::uint64_t megabyte = 1000000;
  const std::uint64_t seconds = 60 + fileSize / megabyte * 10;
  const std::uint64_t machine = MemoryOfMachine();
  const std::uint64_t wanted =
      fileSize < machine / 500 ? 4000 * megabyte + 500 * fileSize : machine;
  return {std::chrono::seconds(seconds), std::min(wanted, machine)};
}

Mesh ReadInChildProcess(const std::string& path, MeshReader read, const ReadLimits& limits) {
  const MeshSource source{{}, path};
  Child child = StartChild(source, read, limits);
  std::string error;
  Mesh mesh;
  if (child.ReadText(error)) {
    if (!error.empty()) throw MeshError(error);
    if (ReadAnswer(child, mesh)) return mesh;
  }
  if (child.IsOutOfTime()) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limits.time).count();
    FailRead(source, "given up: not read within " + std::to_string(seconds) + " seconds");
  }
  FailRead(source, "damaged: its reader did not survive it (" + child.Wait() + ")");
}

} // namespace gsl_sweep
