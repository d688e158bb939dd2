// An import program for tests. The name of the file decides what its reader does.

#include "MeshImporter.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using gsl_mesh::Mesh;
using gsl_mesh::MeshError;

Mesh OneTriangle() {
  return {"", {{0.5, -0.25, 0.125}, {3.0, 0.0, 0.0}, {0.0, 2.0, -1.0}}, {}};
}

Mesh Large() {
  Mesh mesh;
  for (int k = 0; k < 300000; ++k)
    mesh.corners.push_back({1.0 * k, 0.1 * k, -1.0 * k});
  return mesh;
}

Mesh Greedy() {
  const std::vector<char> bytes(192000000);
  return bytes.back() == 0 ? OneTriangle() : Mesh{};
}

/// Adds one warning for each open descriptor and blocked signal that the process has from its
/// caller.
Mesh Surroundings() {
  Mesh mesh = OneTriangle();
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    struct stat seen {};
    struct stat null {};
    const bool isNull =
        fstat(stream, &seen) == 0 && stat("/dev/null", &null) == 0 && seen.st_rdev == null.st_rdev;
    mesh.warnings.push_back(isNull ? "null" : "other");
  }
  std::string open;
  for (int descriptor = 3; descriptor < 1000; ++descriptor) {
    struct stat seen {};
    if (fstat(descriptor, &seen) == 0) open += std::to_string(descriptor) + " ";
  }
  mesh.warnings.push_back(open);
  sigset_t blocked;
  sigprocmask(SIG_BLOCK, nullptr, &blocked);
  mesh.warnings.push_back(sigismember(&blocked, SIGTERM) == 1 ? "blocked" : "open");
  rlimit core{};
  getrlimit(RLIMIT_CORE, &core);
  mesh.warnings.push_back(core.rlim_cur == 0 ? "no core" : "core");
  return mesh;
}

/// Writes its process id to the file and waits for ever.
[[noreturn]] void Hang(const std::string& path) {
  std::ofstream(path) << getpid() << std::endl;
  for (;;)
    pause();
}

/// Ends by a signal, also where a sanitizer handles the signal.
[[noreturn]] void Crash() {
  std::signal(SIGSEGV, SIG_DFL);
  std::raise(SIGSEGV);
  std::abort();
}

Mesh Read(const std::string& path) {
  const std::string name = path.substr(path.rfind('/') + 1);
  if (name == "mesh") return {path, OneTriangle().corners, {"first", "", "third"}};
  if (name == "large") return Large();
  if (name == "greedy") return Greedy();
  if (name == "surroundings") return Surroundings();
  if (name == "bad") throw MeshError("sample: bad");
  if (name == "two lines") throw std::logic_error("a\nb");
  if (name == "no memory") throw std::bad_alloc();
  if (name == "no exception") throw 1;
  if (name == "crash") Crash();
  if (name == "abort") std::abort();
  if (name == "exit") std::_Exit(7);
  if (name == "early end") std::_Exit(0);
  if (name == "hang") Hang(path);
  if (name == "chatter") {
    std::fputs("out", stdout);
    std::fflush(stdout);
    std::fputs("err", stderr);
    return OneTriangle();
  }
  throw MeshError("the probe does not know " + path);
}

} // namespace

int main(int argc, char** argv) {
  return gsl_mesh::RunMeshImporter(argc, argv, Read);
}
