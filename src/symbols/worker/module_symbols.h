// The functions and source lines of one module, read by elfutils.
//
// Errors   A file that elfutils cannot read has no names. A file that was made to do harm may end
//          the process or keep it busy: that is why it has a process of its own.
// Threads  One.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "symbols/recorded_stack.h"

struct Function {
  std::string name;  // demangled
  std::string file;  // empty if it is not known
  unsigned line = 0;
  std::uint64_t offset = 0;  // in the function; only where there is no line
  bool inlined = false;
  bool ofLibrary = false;  // of the tracing library's headers
};

class ModuleSymbols {
 public:
  ModuleSymbols(const StackModule& module, const std::vector<std::string>& folders);
  ~ModuleSymbols();
  ModuleSymbols(const ModuleSymbols&) = delete;
  ModuleSymbols& operator=(const ModuleSymbols&) = delete;

  // Those that are at the address, the innermost first; none if it is not known.
  std::vector<Function> At(std::uint64_t address) const;
  // What is missing of the module, or empty.
  const std::string& Missing() const { return m_missing; }

 private:
  struct Reader;
  std::unique_ptr<Reader> m_reader;  // null: no file was found
  std::string m_missing;
};
