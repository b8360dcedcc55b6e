// The recorded text of a call stack, read: which address of which module each line names.
//
// Shape    The lines that quor/runtime/process/stack.h writes. Any other line is kept and names
//          nothing: those of older files, those of other writers, and damaged ones.
// Errors   None: every text has a reading.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct StackModule {
  std::string path;
  std::string buildId;  // in hexadecimal digits, lower case; empty: it was linked without one

  std::string_view Name() const;  // without the folder
  bool operator==(const StackModule&) const = default;
};

struct StackFrame {
  static constexpr std::size_t kNoModule = static_cast<std::size_t>(-1);
  std::string line;  // as it was recorded
  std::size_t module = kNoModule;
  std::uint64_t address = 0;  // in the module's file
  bool interrupted = false;   // by a signal
  bool exact = false;         // the address is that of code; otherwise that to which a call returns

  bool IsKnown() const { return module != kNoModule; }
};

struct RecordedStack {
  std::vector<StackModule> modules;  // each once, in the order of the lines
  std::vector<StackFrame> frames;
};

RecordedStack ReadStack(std::string_view text);
