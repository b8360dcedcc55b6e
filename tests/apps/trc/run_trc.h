// Runs the real program to its end, and reads what it prints.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "trc_process.h"

inline TrcRun RunTrc(const TrcStart& start) {
  return TrcProcess(start).Finish();
}
inline TrcRun RunTrc(std::vector<std::string> arguments) {
  return RunTrc(TrcStart{.arguments = std::move(arguments)});
}

inline std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find('\n', start), text.size());
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

// The objects of a file's jsonl dump.
inline std::vector<nlohmann::json> DumpedTraces(const std::string& path,
                                                std::vector<std::string> more = {}) {
  std::vector<std::string> arguments = {"dump", path, "--format", "jsonl"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  const TrcRun run = RunTrc(arguments);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  std::vector<nlohmann::json> traces;
  for (const std::string& line : LinesOf(run.out)) traces.push_back(nlohmann::json::parse(line));
  return traces;
}

inline nlohmann::json InfoOf(const std::string& path) {
  const TrcRun run = RunTrc({"info", "--json", path});
  EXPECT_EQ(run.status, 0) << run.err;
  return nlohmann::json::parse(run.out);
}
