// The command line of trc.
//
// Errors   Wrong use: a message on standard error, and only the status is set.
#pragma once

#include <functional>
#include <optional>
#include <variant>

#include "commands/convert.h"
#include "commands/dump.h"
#include "commands/export.h"
#include "commands/find.h"
#include "commands/gen.h"
#include "commands/info.h"
#include "commands/save.h"
#include "commands/tree.h"

// A command that talks to a running service, ready to run.
using LiveCommand = std::function<int()>;
using TrcCommand = std::variant<GenOptions, InfoOptions, DumpOptions, SaveOptions, ConvertOptions,
                                ExportOptions, FindOptions, TreeOptions, LiveCommand>;

struct ParsedCommandLine {
  std::optional<TrcCommand> command;  // none: nothing to do
  int status = 0;                     // the exit status then
};

// Also answers --help and --version, on standard output.
ParsedCommandLine ParseCommandLine(int argc, const char* const* argv);
