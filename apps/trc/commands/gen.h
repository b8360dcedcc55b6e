// trc gen: a sample trace file.
#pragma once

#include <cstdint>
#include <string>

struct GenOptions {
  std::uint64_t records = 0;  // traces
  std::uint64_t seed = 1;
  bool old = false;  // the older format
  std::string out;
};

int RunGen(const GenOptions& options);
