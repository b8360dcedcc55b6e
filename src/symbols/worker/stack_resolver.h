// Finds the names for recorded call stacks.
//
// Owner    Keeps the last modules open, and what was found in them.
// Errors   A frame without a name stays as it was recorded, and `missing` says why.
// Threads  One. Call it in a process of its own (symbols/worker/symbol_worker.h).
#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "symbols/recorded_stack.h"
#include "symbols/stack_names.h"
#include "symbols/worker/module_symbols.h"

class StackResolver {
 public:
  explicit StackResolver(std::vector<std::string> folders) : m_folders(std::move(folders)) {}

  StackNames Names(std::string_view stack);

 private:
  static constexpr std::size_t kModulesMax = 16, kAddressesMax = 4096;

  struct Module {
    Module(const StackModule& recorded, const std::vector<std::string>& folders)
        : key(recorded), symbols(recorded, folders) {}
    StackModule key;
    ModuleSymbols symbols;
    std::map<std::uint64_t, std::vector<Function>> known;
  };
  Module& Open(const StackModule& module);
  const std::vector<Function>& Find(Module& module, const StackFrame& frame);

  const std::vector<std::string> m_folders;
  std::list<Module> m_modules;  // the last used one first
};
