// One trace as a line of another program's log gives it.
//
// Shape    A text that is null (not empty) is missing; a missing name gets an id without a name.
//          `line` and `tic` are 0 when they are missing.
// Owner    Borrows its texts: they are valid until its format reads the next line.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "records/raw_trace.h"

// Texts that become names, in the order in which a record has their ids.
enum class ImportName { Machine, App, Component, Category, Pid, Tid, File };
constexpr std::size_t kImportNames = 7;

struct ImportedTrace {
  bool hasTime = false;
  std::uint32_t date = 0, time = 0;    // packed, UTC
  std::optional<std::uint32_t> count;  // missing: its place in the file
  std::uint64_t tic = 0;
  std::uint16_t attributes = kAttributeInfo;
  std::string_view names[kImportNames];
  std::uint32_t line = 0;
  std::string_view text, stack;

  std::string_view& operator[](ImportName name) { return names[static_cast<std::size_t>(name)]; }
};
