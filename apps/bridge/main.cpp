#include <cstdio>

#include "command_line.h"

int Fail(const std::string& why, ExitStatus status) {
  std::fprintf(stderr, "quor-bridge: %s\n", why.c_str());
  return status;
}

int main(int argc, char** argv) {
  CommandLine line;
  Verb* const verb = line.Read(argc, argv);
  return verb ? verb->Run() : line.Status();
}
