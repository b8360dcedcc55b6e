// Runs the real program to its end, and returns its output.
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

inline std::vector<nlohmann::json> JsonLinesOf(const std::string& text) {
  std::vector<nlohmann::json> objects;
  for (const std::string& line : LinesOf(text)) objects.push_back(nlohmann::json::parse(line));
  return objects;
}

// "a0 a1": the texts of such lines.
inline std::string Texts(const std::string& lines) {
  std::string texts;
  for (const nlohmann::json& trace : JsonLinesOf(lines))
    texts += (texts.empty() ? "" : " ") + trace.at("text").get<std::string>();
  return texts;
}

inline bool Has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// As one word of a shell.
inline std::string Quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// The objects of the jsonl dump of an undamaged file, in UTC.
inline std::vector<nlohmann::json> DumpedTraces(const std::string& path,
                                                std::vector<std::string> more = {}) {
  std::vector<std::string> arguments = {"dump", path, "--format", "jsonl", "--utc"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  const TrcRun run = RunTrc(arguments);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  return JsonLinesOf(run.out);
}

inline nlohmann::json InfoOf(const std::string& path) {
  const TrcRun run = RunTrc({"info", "--json", path});
  const nlohmann::json info = nlohmann::json::parse(run.out);
  const bool damaged = info.at("skippedBytes") != 0 || info.at("lastRecordCut") == true;
  EXPECT_EQ(run.status, damaged ? 3 : 0) << run.err;
  return info;
}
