// The command to serve: runs the service, in the foreground or in the background.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "base/fail_with.h"
#include "commands.h"
#include "quor/link/paths.h"
#include "quor/protocol/tls.h"
#include "quor/service/local_listener.h"
#include "quor/service/service.h"

namespace {

std::string Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

// A service on a socket of its own has a state of its own.
std::string StateFolder(const ServeCommand& command, const std::string& socketPath) {
  if (!command.stateFolder.empty()) return command.stateFolder;
  if (std::string given = Environment("STATE_DIRECTORY"); !given.empty()) return given;
  const bool ownSocket = !command.socketFolder.empty() || !Environment("QUOR_SOCKET").empty();
  if (!ownSocket) {
    if (const std::string home = Environment("XDG_STATE_HOME"); !home.empty())
      return home + "/quor";
    if (const std::string home = Environment("HOME"); !home.empty())
      return home + "/.local/state/quor";
  }
  return FolderOf(socketPath) + "/state";
}

// In the background the service changes its working directory.
std::string Absolute(const std::string& path) {
  std::error_code ignored;
  const std::string absolute = std::filesystem::absolute(path, ignored).string();
  return absolute.empty() ? path : absolute;
}

ServiceOptions OptionsOf(const ServeCommand& command) {
  ServiceOptions options;
  options.inheritedSocket = TakeInheritedSocket(&options.socketPath);
  if (options.inheritedSocket < 0) options.socketPath = SocketPathIn(command.socketFolder);
  options.socketPath = Absolute(options.socketPath);
  options.stateFolder = Absolute(StateFolder(command, options.socketPath));
  options.listen = command.listen;
  options.keysFolder = Absolute(command.keysFolder.empty() ? KeysFolder() : command.keysFolder);
  options.defaultSettings = command.defaultSettings;
  return options;
}

// Notifies the service manager, if one waits for it.
void NotifyReady() {
  const std::string path = Environment("NOTIFY_SOCKET");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return;
  std::memcpy(address.sun_path, path.data(), path.size());
  if (path.front() == '@') address.sun_path[0] = '\0';
  const int socket = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  constexpr char kReady[] = "READY=1";
  sendto(socket, kReady, sizeof kReady - 1, MSG_NOSIGNAL,
         reinterpret_cast<const sockaddr*>(&address),
         static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size()));
  close(socket);
}

// Redirects standard error to a file in the state folder or, if there is none, beside the socket.
void Detach(const ServiceOptions& options) {
  setsid();
  const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
  dup2(nothing, STDIN_FILENO);
  dup2(nothing, STDOUT_FILENO);
  if (!LogToFile(options.stateFolder + "/quord.log") &&
      !LogToFile(FolderOf(options.socketPath) + "/quord.log"))
    dup2(nothing, STDERR_FILENO);
  if (chdir("/") != 0) return;
}

// The parent waits until the child serves or has reported a failure.
int ServeInBackground(const ServeCommand& command) {
  int ready[2];
  if (pipe2(ready, O_CLOEXEC) != 0) return Fail(SystemReason());
  const pid_t child = fork();
  if (child < 0) return Fail(SystemReason());
  if (child > 0) {
    close(ready[1]);
    char byte = 0;
    return read(ready[0], &byte, 1) == 1 ? kExitGood : kExitNo;
  }
  close(ready[0]);
  const ServiceOptions options = OptionsOf(command);
  Service service(options);
  std::string why;
  if (!service.Open(&why)) return Fail(why);
  for (const std::string& trouble : service.Troubles())
    std::fprintf(stderr, "quord: %s\n", trouble.c_str());
  Detach(options);
  [[maybe_unused]] const ssize_t written = write(ready[1], "r", 1);
  close(ready[1]);
  service.Run();
  return kExitGood;
}

}  // namespace

std::string SocketPathIn(const std::string& folder) {
  return folder.empty() ? ServiceSocketPath() : folder + "/quord.sock";
}

int Serve(const ServeCommand& command) {
  SetLogLevel(command.logLevel);
  umask(077);  // only this user may read state, log and sockets
  if (!command.foreground && Environment("LISTEN_FDS").empty()) return ServeInBackground(command);
  Service service(OptionsOf(command));
  std::string why;
  if (!service.Open(&why)) return Fail(why);
  NotifyReady();
  service.Run();
  return kExitGood;
}
