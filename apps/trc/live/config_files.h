// trc config: trace configuration files, .tcf, and the machines that they are saved from, applied
// to and compared with. Only RunConfigApply changes anything on a machine.
//
// Errors   Each returns its exit status, after a message on standard error.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct ConfigCheckOptions {
  std::string file;
  std::optional<std::string> machine;  // also names what that one does not know
};
// kExitGood: the file is good, whatever the machine knows.
int RunConfigCheck(const ConfigCheckOptions& options);

struct ConfigShowOptions {
  std::string file;  // empty: the machine
  std::string machine;
  bool json = false;
};
int RunConfigShow(const ConfigShowOptions& options);

struct ConfigSaveOptions {
  std::string file, machine;
  std::vector<std::string> apps;  // none: all that are registered there
};
int RunConfigSave(const ConfigSaveOptions& options);

struct ConfigApplyOptions {
  std::string file, machine;
};
int RunConfigApply(const ConfigApplyOptions& options);

struct ConfigDiffOptions {
  std::string before, after;  // each a file that exists, else a machine
};
// kExitGood: both say the same; kExitNo: they differ.
int RunConfigDiff(const ConfigDiffOptions& options);
