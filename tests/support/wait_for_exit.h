// Waits for the end of a process that the test has started.
#pragma once

#include <sys/wait.h>

#include "support/wait_for.h"

// The exit status, or 1000 + the signal; -1 when it does not end in time.
inline int WaitForExit(pid_t pid, int milliseconds = 20000) {
  int status = 0;
  if (!WaitFor([&] { return waitpid(pid, &status, WNOHANG) == pid; }, milliseconds)) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}
