#ifndef FAILING_CALLS_H
#define FAILING_CALLS_H

#include <string>

/// Makes calls of the system fail in this process while this object lives, which is the only one.
/// Programs that use it link FailingCalls.cpp, whose definitions of the calls come before those of
/// the C library. The calls: close, fchmod, fcntl, fstat, link, pipe2, poll, read, rename,
/// renameat2, sysconf, waitpid and write.
class FailingCalls {
public:
  /// The next `count` calls of that name, after `skipped` others, return `result` and leave `error`
  /// in errno.
  FailingCalls(std::string name, int error, int count = 1, int skipped = 0, long result = -1);
  ~FailingCalls();
  FailingCalls(const FailingCalls&) = delete;
  FailingCalls& operator=(const FailingCalls&) = delete;

  /// How many calls have failed.
  int Failed() const { return m_failed; }

  /// For the calls of the system. Returns whether this call fails; then writes its result and
  /// errno.
  [[nodiscard]] static bool Fails(const char* name, long& result);

private:
  std::string m_name;
  int m_error, m_count, m_skipped;
  long m_result;
  int m_failed = 0;
};

#endif
