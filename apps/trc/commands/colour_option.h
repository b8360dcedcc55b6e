// The option --colour-rules FILE|light|dark of the commands that print traces as lines.
//
// Errors   A wrong file, a rule whose text is wrong, or another format than text is a
//          CLI::ValidationError.
// Threads  Pure, but for the file.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "commands/dump.h"

void AddColourRules(CLI::App& app, std::optional<std::string>& path);
// Null: none are to be used. The file is read and checked also where no colours are shown.
ColourProgramPtr ReadColourOption(const std::optional<std::string>& path, DumpFormat format,
                                  bool coloured);
