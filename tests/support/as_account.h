// Code in a process of another account. Only root can be several accounts.
#pragma once

#include <grp.h>
#include <signal.h>
#include <unistd.h>

#include <functional>

#include "support/wait_for_exit.h"

// Drops all rights but those of the account, whose group has the same number. Ends the process if
// that is not possible.
inline void BecomeAccount(uid_t account) {
  if (setgroups(0, nullptr) != 0 || setresgid(account, account, account) != 0 ||
      setresuid(account, account, account) != 0)
    _exit(90);
}

// `body` in a child of that account; its exit status is what `body` returns.
inline pid_t AsAccount(uid_t account, const std::function<int()>& body) {
  const pid_t pid = fork();
  if (pid != 0) return pid;
  BecomeAccount(account);
  _exit(body());
}

inline int RunAsAccount(uid_t account, const std::function<int()>& body) {
  return WaitForExit(AsAccount(account, body));
}
