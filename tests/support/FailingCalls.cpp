#include "FailingCalls.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

FailingCalls* active = nullptr;

/// Does the call of the C library, unless it fails.
template <class Result, class... Parameters>
Result Call(const char* name, Parameters... arguments) {
  long failure = 0;
  if (FailingCalls::Fails(name, failure)) return static_cast<Result>(failure);
  Result (*real)(Parameters...) = nullptr;
  void* const symbol = dlsym(RTLD_NEXT, name);
  std::memcpy(&real, &symbol, sizeof real);
  return real(arguments...);
}

} // namespace

FailingCalls::FailingCalls(std::string name, int error, int count, int skipped, long result)
    : m_name(std::move(name)), m_error(error), m_count(count), m_skipped(skipped),
      m_result(result) {
  if (active != nullptr) std::abort();
  active = this;
}

FailingCalls::~FailingCalls() {
  active = nullptr;
}

bool FailingCalls::Fails(const char* name, long& result) {
  if (active == nullptr || active->m_name != name) return false;
  if (active->m_skipped > 0) {
    --active->m_skipped;
    return false;
  }
  if (active->m_failed == active->m_count) return false;
  ++active->m_failed;
  errno = active->m_error;
  result = active->m_result;
  return true;
}

// The calls of shared libraries come here too.
#define REPLACED __attribute__((visibility("default")))

extern "C" {

REPLACED int close(int descriptor) {
  return Call<int>("close", descriptor);
}

REPLACED int fchmod(int descriptor, mode_t mode) noexcept {
  return Call<int>("fchmod", descriptor, mode);
}

REPLACED int fcntl(int descriptor, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  return Call<int>("fcntl", descriptor, command, argument);
}

REPLACED int fstat(int descriptor, struct stat* status) noexcept {
  return Call<int>("fstat", descriptor, status);
}

REPLACED int link(const char* from, const char* to) noexcept {
  return Call<int>("link", from, to);
}

REPLACED int pipe2(int* ends, int flags) noexcept {
  return Call<int>("pipe2", ends, flags);
}

REPLACED int poll(pollfd* waited, nfds_t count, int milliseconds) {
  return Call<int>("poll", waited, count, milliseconds);
}

REPLACED ssize_t read(int descriptor, void* bytes, std::size_t size) {
  return Call<ssize_t>("read", descriptor, bytes, size);
}

REPLACED int rename(const char* from, const char* to) noexcept {
  return Call<int>("rename", from, to);
}

REPLACED int renameat2(int fromFolder, const char* from, int toFolder, const char* to,
                       unsigned flags) noexcept {
  return Call<int>("renameat2", fromFolder, from, toFolder, to, flags);
}

REPLACED long sysconf(int name) noexcept {
  return Call<long>("sysconf", name);
}

REPLACED pid_t waitpid(pid_t process, int* status, int options) {
  return Call<pid_t>("waitpid", process, status, options);
}

REPLACED ssize_t write(int descriptor, const void* bytes, std::size_t size) {
  return Call<ssize_t>("write", descriptor, bytes, size);
}

} // extern "C"
