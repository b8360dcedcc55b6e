// The command to serve: runs the service, in the foreground or in the background.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>

#include "base/fail_with.h"
#include "commands.h"
#include "machine_user.h"
#include "quor/link/machine_place.h"
#include "quor/link/paths.h"
#include "quor/listeners/local_listener.h"
#include "quor/protocol/tls.h"
#include "quor/service/manager_notice.h"
#include "quor/service/service.h"

namespace {

std::string Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value ? value : "";
}

constexpr const char* kMachineState = "/var/lib/quord";

// A service on a socket of its own has a state of its own.
std::string StateFolder(const ServiceSettings& settings, const std::string& socketPath) {
  if (!settings.stateFolder.empty()) return settings.stateFolder;
  if (std::string given = Environment("STATE_DIRECTORY"); !given.empty()) return given;
  if (settings.machine)
    return socketPath == kMachineSocket ? kMachineState : FolderOf(socketPath) + "/state";
  const bool ownSocket = !settings.socketFolder.empty() || !Environment("QUOR_SOCKET").empty();
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

// The paths of a service of the machine do not depend on who starts it.
bool PutMachine(const ServiceSettings& settings, ServiceOptions* options, std::string* why) {
  options->ofMachine = settings.machine;
  if (!settings.machine) return true;
  if (!settings.socketFolder.empty())
    return FailWith(why, "a service of the machine has its own place: socket-dir is not for it");
  const std::string place = ReadServiceEnvironment().machineSocket;
  if (options->inheritedSocket >= 0 && options->socketPath != place)
    return FailWith(
        why, "a service of the machine serves at " + place + ", not at " + options->socketPath);
  options->socketPath = place;
  return true;
}

// What the settings say of the options; the socket has been chosen before.
bool PutSettings(const ServeCommand& command, ServiceOptions* options, std::string* why) {
  ServiceSettings settings;
  if (!SettingsFor(command, &settings, &options->configFile, why)) return false;
  if (options->inheritedSocket < 0)
    options->socketPath =
        Absolute(settings.socketFolder.empty() ? OwnServiceSocketPath()
                                               : settings.socketFolder + "/quord.sock");
  if (!PutMachine(settings, options, why)) return false;
  options->stateFolder = Absolute(StateFolder(settings, options->socketPath));
  options->listen = settings.listen;
  options->tls.keysFolder = Absolute(KeysFolderFor(settings));
  options->tls.revoked = settings.revoked;
  options->tls.roles = settings.roles;
  options->group = settings.group;
  options->defaultSettings = settings.defaultSettings;
  options->takers.streams = settings.takers;
  options->takers.storeBytes = std::size_t{settings.takerStore} << 20;
  options->logLevel = settings.logLevel;
  return true;
}

bool MakeOptions(const ServeCommand& command, ServiceOptions* options, std::string* why) {
  options->inheritedSocket = TakeInheritedSocket(&options->socketPath);
  options->version = TESSERA_VERSION;
  options->endsWithTerminal = isatty(STDERR_FILENO) == 1;
  if (!PutSettings(command, options, why)) return false;
  const ServiceOptions first = *options;
  options->again = [command, first](std::string* reason) -> std::optional<ServiceOptions> {
    ServiceOptions fresh = first;
    if (!PutSettings(command, &fresh, reason)) return std::nullopt;
    return fresh;
  };
  SetLogLevel(options->logLevel);
  return true;
}

// From where it is started, also when it reads them again in the background.
ServeCommand WithWholePaths(ServeCommand command) {
  if (!command.config.empty()) command.config = Absolute(command.config);
  for (GivenOption& option : command.given)
    if (FindServiceWord(option.word)->isPath) option.value = Absolute(option.value);
  return command;
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
int ServeInBackground(ServiceOptions options) {
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
  options.endsWithTerminal = false;
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

// Makes the place of a service of the machine and gives up the rights of root, before anything is
// opened.
bool PrepareMachine(ServeCommand* command, std::string* why) {
  ServiceSettings settings;
  std::string file;
  if (!SettingsFor(*command, &settings, &file, nullptr) || !settings.machine) return true;
  // The user that it becomes would look for another file.
  if (command->config.empty()) command->config = file;
  command->given.push_back({"machine", "yes"});
  if (geteuid() != 0) return true;
  const std::string socket = ReadServiceEnvironment().machineSocket;
  const MachineUser user{settings.user.empty() ? kMachineUser : settings.user, FolderOf(socket),
                         StateFolder(settings, socket)};
  return BecomeMachineUser(user, why);
}

}  // namespace

int Serve(const ServeCommand& command) {
  umask(077);  // only this user may read state, log and sockets
  // What root has open is not for the user that it becomes.
  if (geteuid() == 0 && !CloseInherited())
    return Fail("cannot close what was left open: " + SystemReason());
  const bool isActivated = !Environment("LISTEN_FDS").empty();
  ServiceOptions options;
  std::string why;
  ServeCommand whole = WithWholePaths(command);
  if (!PrepareMachine(&whole, &why)) return Fail(why);
  if (!MakeOptions(whole, &options, &why)) {
    Fail(why);
    return kExitWrongUse;
  }
  if (!command.foreground && !isActivated) return ServeInBackground(std::move(options));
  Service service(std::move(options));
  if (!service.Open(&why)) return Fail(why);
  NotifyManager("READY=1");
  service.Run();
  return kExitGood;
}
