#include <cstdio>

#include "commands.h"

int Fail(const std::string& why) {
  std::fprintf(stderr, "quord: %s\n", why.c_str());
  return kExitNo;
}

int main(int argc, char** argv) {
  const ParsedCommandLine parsed = ParseCommandLine(argc, argv);
  if (!parsed.command) return parsed.exitStatus;
  struct Runner {
    int operator()(const ServeCommand& command) const { return Serve(command); }
    int operator()(const KeysInitCommand& command) const { return KeysInit(command); }
    int operator()(const KeysIssueCommand& command) const { return KeysIssue(command); }
    int operator()(const StatusCommand& command) const { return Status(command); }
    int operator()(const StopCommand& command) const { return Stop(command); }
    int operator()(const ReloadCommand& command) const { return Reload(command); }
    int operator()(const CheckConfigCommand& command) const { return CheckConfig(command); }
  };
  return std::visit(Runner(), *parsed.command);
}
