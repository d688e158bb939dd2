#include "MeshImporter.h"

#include "MachineMemory.h"
#include "MeshImportProtocol.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string_view>
#include <system_error>

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

using gsl_arithmetic::Coord3;

namespace gsl_mesh {

namespace {

namespace protocol = import_protocol;

void Send(const void* data, std::size_t size) {
  const char* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = write(protocol::kAnswerDescriptor, next, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) std::_Exit(1); // no process reads any more
    next += written;
    size -= static_cast<std::size_t>(written);
  }
}

void Send(std::uint64_t number) {
  Send(&number, sizeof number);
}

void Send(const std::string& text) {
  Send(std::uint64_t{text.size()});
  Send(text.data(), text.size());
}

void Send(const Mesh& mesh) {
  Send(std::uint64_t{mesh.warnings.size()});
  for (const std::string& warning : mesh.warnings)
    Send(warning);
  Send(std::uint64_t{mesh.corners.size()});
  Send(mesh.corners.data(), mesh.corners.size() * sizeof(Coord3));
}

/// Address space that this process has mapped, in bytes; 0 when it is not known.
std::uint64_t MappedBytes() {
  std::uint64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

/// Sanitizers map more memory than any machine has, so no limit can be computed from it.
void LimitMemory(std::uint64_t bytes) {
  const std::uint64_t mapped = MappedBytes();
  if (bytes == 0 || mapped > MemoryOfMachine()) return;
  const rlimit limit{mapped + bytes, mapped + bytes};
  setrlimit(RLIMIT_AS, &limit);
}

/// An importer that fails leaves no core file and does not outlive its caller.
void Confine(std::uint64_t memory, std::uint64_t caller) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (static_cast<std::uint64_t>(getppid()) != caller)
    std::_Exit(1); // the caller ended before the prctl
  const rlimit noCore{0, 0};
  setrlimit(RLIMIT_CORE, &noCore);
  LimitMemory(memory);
}

bool ParseWhole(const char* text, std::uint64_t& number) {
  const std::string_view view = text;
  const char* const end = view.data() + view.size();
  const auto result = std::from_chars(view.data(), end, number);
  return result.ec == std::errc() && result.ptr == end;
}

} // namespace

int RunMeshImporter(int argc, const char* const* argv, MeshReader read) {
  std::uint64_t memory = 0;
  std::uint64_t caller = 0;
  if (argc != protocol::Count ||
      argv[protocol::Greeting] != std::string_view(protocol::kGreeting) ||
      !ParseWhole(argv[protocol::Memory], memory) || !ParseWhole(argv[protocol::Caller], caller)) {
    std::fprintf(stderr,
                 "gsl-mesh-import: only gsl-sweep starts this program; expected gsl-sweep\n");
    return 2;
  }
  Confine(memory, caller);
  Send(protocol::kGreeting, sizeof protocol::kGreeting);
  const std::string path = argv[protocol::Path];
  std::string error;
  Mesh mesh;
  try {
    mesh = read(path);
  } catch (const MeshError& e) {
    error = e.what();
  } catch (const std::bad_alloc&) {
    error = path + ": not enough memory to read it";
  } catch (const std::exception& e) {
    error = path + ": cannot be read: " + e.what();
  } catch (...) {
    error = path + ": cannot be read";
  }
  Send(error);
  if (error.empty()) Send(mesh);
  // Destructors could crash on what a damaged file left in memory.
  std::_Exit(0);
}

} // namespace gsl_mesh
