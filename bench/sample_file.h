// The file that the benchmarks read: 7,000,000 records, about 1 GiB, made once by `trc gen`. In the
// older format it has 2,000,000.
//
// $BENCH_RECORDS changes its size. The file is read once in advance, so that the first measurement
// has a warm cache like the others.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

inline std::string SampleFile(const char* program, bool old = false) {
  const char* wanted = std::getenv("BENCH_RECORDS");
  const std::string records = wanted ? wanted : old ? "2000000" : "7000000";
  const std::filesystem::path bin = std::filesystem::absolute(program).parent_path();
  const std::string path =
      (bin.parent_path() / ((old ? "bench-old-" : "bench-") + records + ".trc")).string();
  if (!std::filesystem::exists(path)) {
    std::fprintf(stderr, "making %s\n", path.c_str());
    const std::string trc = (bin / "trc").string();
    const std::string command = "'" + trc + "' gen " + (old ? "--old " : "") + "--records " +
                                records + " --seed 1 '" + path + "'";
    if (std::system(command.c_str()) != 0) {
      std::fprintf(stderr, "cannot make the sample file: %s\n", command.c_str());
      std::exit(2);
    }
  }
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) std::exit(2);
  std::vector<char> buffer(1 << 20);
  while (std::fread(buffer.data(), 1, buffer.size(), file) == buffer.size()) {
  }
  std::fclose(file);
  return path;
}
