// quord stop and quord reload.
#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <thread>

#include "base/fail_with.h"
#include "commands.h"
#include "question.h"
#include "quor/link/paths.h"
#include "quor/listeners/local_listener.h"

namespace {

using std::chrono::steady_clock;
// Longer than a service waits for its clients before it ends.
constexpr std::chrono::seconds kStopPatience{15};
constexpr std::chrono::milliseconds kStopAgain{20};

int NotRunning(const std::string& path) {
  std::printf("quord does not run at %s\n", path.c_str());
  return kExitNotRunning;
}

// By a descriptor of the process: its number may become another's at any time.
bool SignalService(const std::string& path, pid_t pid, int number) {
  const int process = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
  if (process < 0) return errno == ENOSYS && kill(pid, number) == 0;
  const bool same = ServicePid(path) == pid;
  const bool sent = same && syscall(SYS_pidfd_send_signal, process, number, nullptr, 0) == 0;
  close(process);
  return sent || !same;
}

}  // namespace

int Stop(const StopCommand& command) {
  const std::string path = SocketPathIn(command.socketFolder);
  const pid_t pid = ServicePid(path);
  Question question;
  if (pid <= 0 && IsMachineSocket(path) && geteuid() != 0 && question.Reach(path))
    return Fail("only root and the service manager end the service of this machine");
  if (pid <= 0) return NotRunning(path);
  const std::string process = "process " + std::to_string(pid);
  if (!SignalService(path, pid, SIGTERM)) return Fail(process + ": " + SystemReason());
  const auto until = steady_clock::now() + kStopPatience;
  while (ServicePid(path) == pid) {
    if (steady_clock::now() > until) return Fail(process + " does not end");
    std::this_thread::sleep_for(kStopAgain);
  }
  std::printf("quord has ended (%s)\n", process.c_str());
  return kExitGood;
}

int Reload(const ReloadCommand& command) {
  const std::string path = SocketPathIn(command.socketFolder);
  Question question;
  if (!question.Reach(path)) return NotRunning(path);
  quor::wire::Request request;
  quor::wire::Response response;
  request.mutable_reload();
  if (!question.Ask(request, &response)) return Fail("the service does not answer");
  if (response.error() != quor::wire::ERROR_NONE) return Fail(response.text());
  for (const std::string& note : response.notes()) std::printf("%s\n", note.c_str());
  std::printf("quord has read its configuration again\n");
  return kExitGood;
}
