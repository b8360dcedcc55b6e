// The configuration file: where it is, what it says together with the command line, and its check.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "base/fail_with.h"
#include "commands.h"
#include "quor/link/paths.h"
#include "quor/listeners/local_listener.h"
#include "quor/options/config_file.h"
#include "quor/protocol/tls.h"

namespace {

// None and no reason: there is no usual file.
std::optional<ConfigFile> OpenConfig(const std::string& given, std::string* path,
                                     std::string* why) {
  *path = given.empty() ? UsualConfigPath() : given;
  if (given.empty() && access(path->c_str(), F_OK) != 0) {
    path->clear();
    return std::nullopt;
  }
  return ConfigFile::Open(*path, why);
}

}  // namespace

bool SettingsFor(const ServeCommand& command, ServiceSettings* settings, std::string* file,
                 std::string* why) {
  std::string reason;
  const auto config = OpenConfig(command.config, file, &reason);
  if (!config && !reason.empty()) return FailWith(why, reason);
  if (config && !config->faults.empty()) {
    for (const std::string& fault : config->faults)
      reason += (reason.empty() ? "" : "; ") + *file + ": " + fault;
    return FailWith(why, reason);
  }
  if (config) settings->Take(config->options);
  settings->Take(command.given);
  return true;
}

std::string SocketPathIn(const std::string& folder) {
  if (!folder.empty()) return folder + "/quord.sock";
  ServiceSettings settings;
  std::string file;
  // A faulty file does not hide a service that runs.
  if (SettingsFor({}, &settings, &file, nullptr)) {
    if (settings.machine) return ReadServiceEnvironment().machineSocket;
    if (!settings.socketFolder.empty()) return settings.socketFolder + "/quord.sock";
  }
  return ServiceSocketPath();
}

std::string KeysFolderFor(const ServiceSettings& settings) {
  if (!settings.keysFolder.empty()) return settings.keysFolder;
  // The user of a service of the machine has no home.
  const bool isNamed = std::getenv("QUOR_KEYS") != nullptr;
  return settings.machine && !isNamed ? "/etc/quor/keys" : KeysFolder();
}

int CheckConfig(const CheckConfigCommand& command) {
  std::string path, why;
  const auto config = OpenConfig(command.config, &path, &why);
  if (!config && !why.empty()) return Fail(why);
  if (!config) {
    std::printf("%s: there is no such file, the defaults apply\n", UsualConfigPath().c_str());
    return kExitGood;
  }
  const std::string before = path + ": ";
  for (const std::string& fault : config->faults) Fail(before + fault);
  if (!config->faults.empty()) return kExitNo;
  ServiceSettings settings;
  settings.Take(config->options);
  const TlsRules rules{KeysFolderFor(settings), settings.revoked, settings.roles};
  if (!settings.listen.empty() && !MakeServerTls(rules, &why)) return Fail(path + ": " + why);
  if (!settings.group.empty() && !GroupNamed(settings.group, &why)) return Fail(path + ": " + why);
  for (const GivenOption& option : config->options)
    std::printf("%s = %s\n", option.word.c_str(), option.value.c_str());
  std::printf("%s: good\n", path.c_str());
  return kExitGood;
}
