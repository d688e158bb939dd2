#include "support/Program.h"

#include "Mesh.h"
#include "OutputFile.h"
#include "Printable.h"
#include "support/InputText.h"
#include "support/UsageError.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

#include <poll.h>
#include <unistd.h>

namespace gsl_tools {

void WriteStdout(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
    if (written >= 0) {
      text.remove_prefix(static_cast<std::size_t>(written));
    } else if (errno == EAGAIN) {
      // The caller of the program may have left a pipe in this mode.
      pollfd waited{STDOUT_FILENO, POLLOUT, 0};
      poll(&waited, 1, -1);
    } else if (errno != EINTR) {
      throw gsl_mesh::OutputError(std::string("standard output: cannot be written: ") +
                                  std::strerror(errno));
    }
  }
}

void PrintLine(const std::string& program, const std::string& line) {
  std::fprintf(stderr, "%s: %s\n", program.c_str(), gsl_mesh::Printable(line).c_str());
}

int Guarded(const std::string& program, const std::function<int()>& work) {
  const auto fail = [&](const char* why, FailureStatus status) {
    PrintLine(program, why);
    return static_cast<int>(status);
  };
  try {
    return work();
  } catch (const UsageError& error) {
    return fail(error.what(), kUsage);
  } catch (const gsl_mesh::MeshError& error) {
    return fail(error.what(), kBadInput);
  } catch (const InputError& error) {
    return fail(error.what(), kBadInput);
  } catch (const std::bad_alloc&) {
    return fail("out of memory", kFailure);
  } catch (const std::exception& error) {
    return fail(error.what(), kFailure);
  }
}

} // namespace gsl_tools
