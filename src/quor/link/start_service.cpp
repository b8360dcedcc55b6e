// StartService: a double fork that the rest of the process does not notice.
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "quor/link/paths.h"

// Both children are copies of a process that may have many threads. They only make system calls,
// because any lock of the C library may stay locked in the copy for ever. The forks are raw system
// calls too, so that no fork handler of the application runs.

namespace {

constexpr std::size_t kSignalSetBytes = 8;  // the kernel's
constexpr unsigned kSignals = 64;

struct Launch {
  const char* program;
  char* const* arguments;
  char* const* environment;
  int* error;  // in memory that the children share
};

long KernelFork(unsigned long flags) {
  return syscall(SYS_clone, flags, nullptr, nullptr, nullptr, 0ul);
}

// A signal that the application ignores would stay ignored in the service.
void ForgetSignals() {
  const unsigned long byDefault[4] = {};  // the kernel's struct sigaction: SIG_DFL, nothing else
  for (unsigned number = 1; number <= kSignals; ++number)
    syscall(SYS_rt_sigaction, number, byDefault, nullptr, kSignalSetBytes);
  const unsigned long none = 0;
  syscall(SYS_rt_sigprocmask, SIG_SETMASK, &none, nullptr, kSignalSetBytes);
}

[[noreturn]] void Exit(int status) {
  for (;;) syscall(SYS_exit_group, status);
}

[[noreturn]] void RunProgram(const Launch& launch) {
  ForgetSignals();
  const long nothing = syscall(SYS_openat, AT_FDCWD, "/dev/null", O_RDWR, 0);
  for (int descriptor = 0; descriptor < 3; ++descriptor)
    if (nothing != descriptor) syscall(SYS_dup3, nothing, descriptor, 0);
  if (syscall(SYS_close_range, 3u, ~0u, 0u) != 0)
    for (int descriptor = 3; descriptor < 1024; ++descriptor) syscall(SYS_close, descriptor);
  syscall(SYS_chdir, "/");
  syscall(SYS_execve, launch.program, launch.arguments, launch.environment);
  *launch.error = errno;
  Exit(127);
}

[[noreturn]] void Detach(const Launch& launch) {
  syscall(SYS_setsid);
  // The parent of the program is suspended until the program runs or has failed.
  const long program = KernelFork(CLONE_VFORK | SIGCHLD);
  if (program == 0) RunProgram(launch);
  if (program < 0) *launch.error = errno;
  Exit(0);
}

}  // namespace

bool StartService(const std::string& program) {
  void* const shared =
      mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) return false;
  char name[] = "quord";
  char* const arguments[] = {name, nullptr};
  const Launch launch{program.c_str(), arguments, environ, static_cast<int*>(shared)};
  // Block every signal: a handler of the application must not run in the copy.
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  // No exit signal: the application neither gets SIGCHLD nor finds the child in a wait of its own.
  const long child = KernelFork(0);
  if (child == 0) Detach(launch);
  if (child > 0)
    while (waitpid(static_cast<pid_t>(child), nullptr, __WCLONE) < 0 && errno == EINTR) {
    }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  const bool started = child > 0 && *launch.error == 0;
  munmap(shared, sizeof(int));
  return started;
}
