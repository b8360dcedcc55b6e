// StartService: a double fork that the rest of the process does not notice.
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "quor/ring/paths.h"

// The two steps below run on this process's memory while their parent is stopped in the kernel, as
// posix_spawn does it: they call nothing but the system, and a sanitizer must not watch them.
#define QUOR_CHILD_CODE __attribute__((no_sanitize("address", "thread", "undefined")))

namespace {

constexpr std::size_t kStackBytes = 64 * 1024;

struct Launch {
  const char* program;
  char* const* arguments;
  char* const* environment;
  char* secondStack;
  volatile int error;
};

QUOR_CHILD_CODE int RunProgram(void* context) {
  auto* const launch = static_cast<Launch*>(context);
  struct sigaction byDefault {};
  byDefault.sa_handler = SIG_DFL;
  for (int number = 1; number < 32; ++number) sigaction(number, &byDefault, nullptr);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  const int nothing = open("/dev/null", O_RDWR);
  for (int descriptor = 0; descriptor < 3; ++descriptor) dup2(nothing, descriptor);
  if (syscall(SYS_close_range, 3u, ~0u, 0u) != 0)
    for (int descriptor = 3; descriptor < 1024; ++descriptor) close(descriptor);
  if (chdir("/") == 0) execve(launch->program, launch->arguments, launch->environment);
  launch->error = errno;
  _exit(127);
}

QUOR_CHILD_CODE int RunDetacher(void* context) {
  auto* const launch = static_cast<Launch*>(context);
  setsid();
  if (clone(RunProgram, launch->secondStack + kStackBytes, CLONE_VM | CLONE_VFORK | SIGCHLD,
            launch) < 0)
    launch->error = errno;
  _exit(0);
}

}  // namespace

bool StartService(const std::string& program) {
  void* const stacks = mmap(nullptr, 2 * kStackBytes, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
  if (stacks == MAP_FAILED) return false;
  char name[] = "quord";
  char* const arguments[] = {name, nullptr};
  Launch launch{program.c_str(), arguments, environ, static_cast<char*>(stacks) + kStackBytes, 0};
  // Every signal waits: a handler of the application must not run in the child.
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  // No exit signal: the application neither gets SIGCHLD nor finds the child in a wait of its own.
  const pid_t child =
      clone(RunDetacher, static_cast<char*>(stacks) + kStackBytes, CLONE_VM | CLONE_VFORK, &launch);
  if (child > 0)
    while (waitpid(child, nullptr, __WCLONE) < 0 && errno == EINTR) {
    }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  munmap(stacks, 2 * kStackBytes);
  return child > 0 && launch.error == 0;
}
