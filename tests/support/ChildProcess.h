#ifndef CHILD_PROCESS_H
#define CHILD_PROCESS_H

#include <sys/wait.h>
#include <unistd.h>

/// Does the work in a child process. Returns its exit status, or -1.
template <class Work>
int StatusInChild(const Work& work) {
  const pid_t child = fork();
  if (child == 0) _exit(work());
  int status = -1;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Makes this process one without rights over files of others.
[[nodiscard]] inline bool BecomeNobody() {
  constexpr uid_t kNobody = 65534;
  return geteuid() != 0 || (setgid(kNobody) == 0 && setuid(kNobody) == 0);
}

#endif
