// trc gen: a sample trace file.
#pragma once

#include <cstdint>
#include <string>

struct GenOptions {
  std::uint64_t records = 0;  // traces
  std::uint64_t seed = 1;
  std::string out;
};

int RunGen(const GenOptions& options);
