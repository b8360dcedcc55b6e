// Runs quor-bridge with words, to its end.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <string>

struct BridgeSaid {
  int status = -1;
  std::string text;  // both outputs
};

// `words`: as in a shell.
inline BridgeSaid RunBridge(const std::string& words) {
  const char* const program = getenv("QUOR_BRIDGE");
  BridgeSaid said;
  FILE* const pipe = popen((std::string("timeout 60 '") + (program ? program : "no-program") +
                            "' " + words + " 2>&1 </dev/null")
                               .c_str(),
                           "r");
  if (!pipe) return said;
  for (char piece[4096]; const std::size_t got = std::fread(piece, 1, sizeof piece, pipe);)
    said.text.append(piece, got);
  const int status = pclose(pipe);
  said.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return said;
}
