// The options of trc tree.
//
// Errors   Wrong use is a CLI::ParseError.
#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <functional>
#include <optional>

#include "commands/tree.h"

class TreeParser {
 public:
  explicit TreeParser(CLI::App& app);
  std::optional<TreeOptions> Chosen();

 private:
  CLI::App* m_app;
  TreeOptions m_options;
  bool m_export = false;
};
