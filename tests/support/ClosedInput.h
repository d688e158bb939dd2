#ifndef GSL_TESTS_CLOSED_INPUT_H
#define GSL_TESTS_CLOSED_INPUT_H

#include <fcntl.h>
#include <unistd.h>

/// Closes the standard input, so that the next file that is opened has the descriptor 0. Gives the
/// input back at the end.
class ClosedInput {
public:
  ClosedInput() : m_kept(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3)) { close(STDIN_FILENO); }
  ClosedInput(const ClosedInput&) = delete;
  ClosedInput& operator=(const ClosedInput&) = delete;
  ~ClosedInput() {
    close(STDIN_FILENO);
    if (m_kept < 0) return; // it was closed before
    dup2(m_kept, STDIN_FILENO);
    close(m_kept);
  }

  bool IsStillClosed() const { return fcntl(STDIN_FILENO, F_GETFD) < 0; }

private:
  int m_kept;
};

#endif
