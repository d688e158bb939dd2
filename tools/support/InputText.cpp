#include "support/InputText.h"

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace gsl_tools {

namespace {

constexpr std::size_t kBufferSize = 65536;

[[noreturn]] void FailInput(const std::string& name, const char* what) {
  throw InputError(name + ": cannot be " + what + ": " + std::strerror(errno));
}

int Open(const std::string& file, const std::string& name) {
  if (file == "-") return -1;
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) FailInput(name, "opened");
  return descriptor;
}

} // namespace

std::string NameOfInput(const std::string& file) {
  return file == "-" ? "standard input" : file;
}

InputText::InputText(const std::string& file)
    : m_name(NameOfInput(file)), m_opened(Open(file, m_name)),
      m_descriptor(file == "-" ? STDIN_FILENO : m_opened.Get()), m_buffer(kBufferSize, '\0') {}

std::string_view InputText::Next() {
  for (;;) {
    const ssize_t got = read(m_descriptor, m_buffer.data(), m_buffer.size());
    if (got >= 0) return {m_buffer.data(), static_cast<std::size_t>(got)};
    if (errno == EAGAIN) {
      // The caller of the program may have left a pipe in this mode.
      pollfd waited{m_descriptor, POLLIN, 0};
      poll(&waited, 1, -1);
    } else if (errno != EINTR) {
      FailInput(m_name, "read");
    }
  }
}

std::size_t InputText::Size() const {
  struct stat status {};
  if (fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return 0;
  return static_cast<std::size_t>(status.st_size);
}

} // namespace gsl_tools
