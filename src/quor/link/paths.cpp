#include "quor/link/paths.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "base/fail_with.h"
#include "quor/link/machine_place.h"

namespace {

constexpr const char* kProgram = "quord";

std::string Environment(const char* name) {
  const char* const value = secure_getenv(name);
  return value ? value : "";
}

bool IsProgram(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
}

std::string BesideThisExecutable(const char* name) {
  char path[4096];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  if (length <= 0) return {};
  const std::string program =
      FolderOf(std::string(path, static_cast<std::size_t>(length))) + "/" + name;
  return IsProgram(program) ? program : std::string();
}

std::string OnPath(const std::string& paths, const char* name) {
  for (std::size_t begin = 0; begin <= paths.size();) {
    std::size_t end = paths.find(':', begin);
    if (end == std::string::npos) end = paths.size();
    // An empty or relative entry would start a program of the current folder.
    if (end > begin && paths[begin] == '/') {
      std::string program = paths.substr(begin, end - begin) + "/" + name;
      if (IsProgram(program)) return program;
    }
    begin = end + 1;
  }
  return {};
}

}  // namespace

std::string FolderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

ServiceEnvironment ReadServiceEnvironment() {
  const std::string machine = Environment("QUOR_MACHINE_SOCKET");
  return {Environment("QUOR_SOCKET"), Environment("XDG_RUNTIME_DIR"),
          Environment("QUOR_QUORD"),  Environment("QUOR_AUTOSTART"),
          Environment("PATH"),        machine.empty() ? kMachineSocket : machine};
}

std::string ServiceSocketPath(const ServiceEnvironment& environment) {
  if (!environment.chosen.empty()) return environment.chosen;
  if (environment.socket.empty() && HasMachineSocket(environment.machineSocket))
    return environment.machineSocket;
  return OwnServiceSocketPath(environment);
}

bool IsMachineSocket(const std::string& socketPath, const ServiceEnvironment& environment) {
  return socketPath == environment.machineSocket;
}

uid_t TrustedOwner(const std::string& socketPath, const ServiceEnvironment& environment) {
  if (!IsMachineSocket(socketPath, environment)) return 0;
  return OwnerOfMachinePlace(socketPath).value_or(0);
}

std::string OwnServiceSocketPath(const ServiceEnvironment& environment) {
  if (!environment.socket.empty()) return environment.socket;
  if (!environment.runtimeFolder.empty()) return environment.runtimeFolder + "/quor/quord.sock";
  return "/tmp/quor-" + std::to_string(geteuid()) + "/quord.sock";
}

bool PrepareSocketFolder(const std::string& socketPath, std::string* why,
                         const ServiceEnvironment& environment) {
  const std::string folder = FolderOf(socketPath);
  if (IsMachineSocket(socketPath, environment))
    return SocketFolderIsSafe(socketPath, why, environment);
  if (socketPath != environment.socket && mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST)
    return FailOn(why, folder);
  struct stat status {};
  if (stat(folder.c_str(), &status) != 0) return FailOn(why, folder);
  return SocketFolderIsSafe(socketPath, why, environment);
}

bool SocketFolderIsSafe(const std::string& socketPath, std::string* why,
                        const ServiceEnvironment& environment) {
  const std::string folder = FolderOf(socketPath);
  if (socketPath == environment.socket) return true;
  if (IsMachineSocket(socketPath, environment))
    return OwnerOfMachinePlace(socketPath, why).has_value();
  struct stat status {};
  // lstat: a link in /tmp may be anybody's.
  if (lstat(folder.c_str(), &status) != 0) return errno == ENOENT;
  if (!S_ISDIR(status.st_mode)) return FailWith(why, folder + ": not a folder");
  if (status.st_uid != geteuid()) return FailWith(why, folder + ": belongs to another user");
  if ((status.st_mode & 022) != 0) return FailWith(why, folder + ": others may write to it");
  return true;
}

std::string WhyNotStarted(const ServiceEnvironment& environment) {
  if (environment.autostart == "0" || environment.autostart == "1" ||
      IsMachineSocket(ServiceSocketPath(environment), environment))
    return {};
  const std::string service = SurroundingService();
  if (service.empty()) return {};
  return "no trace service was started: this program runs inside the service " + service +
         ", with which it would end; enable quord.socket, or set QUOR_AUTOSTART=1";
}

std::string ServiceProgram(const ServiceEnvironment& environment) {
  if (environment.autostart == "0" || !WhyNotStarted(environment).empty()) return {};
  if (IsMachineSocket(ServiceSocketPath(environment), environment)) return {};
  if (!environment.program.empty())
    return IsProgram(environment.program) ? environment.program : std::string();
  return ProgramOfThese(kProgram, environment);
}

std::string ProgramOfThese(const char* name, const ServiceEnvironment& environment) {
  std::string program = BesideThisExecutable(name);
  return program.empty() ? OnPath(environment.path, name) : program;
}
