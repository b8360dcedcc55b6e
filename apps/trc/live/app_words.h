// The words "[MACHINE] APP" of a command line.
//
// Threads  Pure.
#pragma once

#include <string>
#include <vector>

inline constexpr const char* kAppHelp =
    "The application, of this machine or of MACHINE, which is name or name:port";

// REQUIRES: one or two words.
inline void TakeMachineAndApp(const std::vector<std::string>& words, std::string& machine,
                              std::string& app) {
  app = words.back();
  if (words.size() == 2) machine = words.front();
}
