#ifndef CHILD_PROCESS_H
#define CHILD_PROCESS_H

#include <atomic>
#include <cstdlib>
#include <new>

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

/// A number that this process shares with its children.
class SharedNumber {
public:
  SharedNumber() {
    void* const page = mmap(nullptr, sizeof(std::atomic<int>), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED) std::abort();
    m_number = new (page) std::atomic<int>(0);
  }
  ~SharedNumber() { munmap(m_number, sizeof *m_number); }
  SharedNumber(const SharedNumber&) = delete;
  SharedNumber& operator=(const SharedNumber&) = delete;

  int Get() const { return *m_number; }
  void Set(int number) const { *m_number = number; }

private:
  std::atomic<int>* m_number;
};

/// Returns how often a writer is killed: as often as GSL_KILLS says, otherwise `usual`.
inline long Kills(long usual) {
  const char* const asked = std::getenv("GSL_KILLS");
  return asked != nullptr ? std::atol(asked) : usual;
}

/// Starts a child process that does the work and exits with the status that it returns, and with 1
/// where it throws: no error of the child goes on in a copy of the test program.
template <class Work>
pid_t StartChild(const Work& work) {
  const pid_t child = fork();
  if (child != 0) return child;
  try {
    _exit(work());
  } catch (...) {
    _exit(1);
  }
}

/// Does the work in a child process. Returns how it ended, as waitpid writes it.
template <class Work>
int EndOfChild(const Work& work) {
  const pid_t child = StartChild(work);
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

/// Does the work in a child process. Returns its exit status, or -1.
template <class Work>
int StatusInChild(const Work& work) {
  const int end = EndOfChild(work);
  return WIFEXITED(end) ? WEXITSTATUS(end) : -1;
}

/// Makes this process one without rights over files of others.
[[nodiscard]] inline bool BecomeNobody() {
  constexpr uid_t kNobody = 65534;
  return geteuid() != 0 || (setgid(kNobody) == 0 && setuid(kNobody) == 0);
}

#endif
