// The options of trc tree.
//
// Errors   Wrong use is a CLI::ParseError.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <optional>

#include "tree.h"

class TreeParser {
 public:
  using ReadNumber = std::function<std::uint64_t(const char* option, const std::string& text)>;

  TreeParser(CLI::App& app, ReadNumber readNumber);
  std::optional<TreeOptions> Chosen();

 private:
  CLI::App* m_app;
  const ReadNumber m_readNumber;
  TreeOptions m_options;
  bool m_export = false;
};
