// The option --profile NAME of the commands that print traces as lines: columns, filter text and
// colours of a profile that the desktop has saved, or of the file of an exported one.
//
// Order    Options of the line come first: --columns and --colour-rules replace those of the
//          profile, --where and all that chooses is added to its filter text.
// Left out Columns that this program does not have; Since where no trace is named to count from.
//          Lines for programs have all values, so only the filter text counts there.
// Errors   A profile that there is none of, or whose text is wrong, is a CLI::ValidationError.
// Threads  One.
#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "commands/dump.h"
#include "views/view_text.h"

class ProfileOption {
 public:
  void Add(CLI::App& app);
  // Reads the profile. Before the other options are completed: they may depend on the filter text.
  void TakeFilter(TraceOptions& traces);
  // After that. `choosesColours`: --colour-rules is there.
  void TakeLook(DumpOptions& dump, bool choosesColours) const;

 private:
  std::optional<std::string> m_name;
  Profile m_profile;
};
