#include "symbols/worker/stack_resolver.h"

#include <algorithm>

namespace {

std::string HexText(std::uint64_t number) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  do text.insert(text.begin(), kDigits[number % 16]);
  while ((number /= 16) != 0);
  return text;
}

std::string TextOf(const Function& function, const StackModule& module, const StackFrame& frame) {
  std::string text = function.name.empty() ? "?" : function.name;
  if (!function.file.empty())
    text += " at " + function.file + ":" + std::to_string(function.line);
  else if (!function.inlined)
    text += "+0x" + HexText(function.offset);
  text.append(" (").append(module.Name());
  if (function.inlined) text += ", inlined";
  if (frame.interrupted) text += ", interrupted";
  return text + ")";
}

}  // namespace

StackNames StackResolver::Names(std::string_view stack) {
  const RecordedStack recorded = ReadStack(stack);
  StackNames names;
  bool atTop = true;
  for (const StackFrame& frame : recorded.frames) {
    const std::vector<Function>* functions = nullptr;
    if (frame.IsKnown()) {
      Module& module = Open(recorded.modules[frame.module]);
      functions = &Find(module, frame);
      const std::string& missing = module.symbols.Missing();
      if (!missing.empty() &&
          std::find(names.missing.begin(), names.missing.end(), missing) == names.missing.end())
        names.missing.push_back(missing);
    }
    if (!functions || functions->empty()) {
      names.frames.push_back({frame.line, frame.line, {}, 0});
      atTop = false;
      continue;
    }
    for (const Function& function : *functions) {
      atTop = atTop && function.ofLibrary;
      if (atTop) continue;
      names.frames.push_back({TextOf(function, recorded.modules[frame.module], frame), frame.line,
                              function.file, function.line});
    }
  }
  return names;
}

StackResolver::Module& StackResolver::Open(const StackModule& module) {
  const auto found = std::find_if(m_modules.begin(), m_modules.end(),
                                  [&](const Module& open) { return open.key == module; });
  if (found != m_modules.end()) {
    m_modules.splice(m_modules.begin(), m_modules, found);
    return m_modules.front();
  }
  if (m_modules.size() == kModulesMax) m_modules.pop_back();
  m_modules.emplace_front(module, m_folders);
  return m_modules.front();
}

// A return address may be behind the last instruction of its function, and belongs to the line
// after that of the call.
const std::vector<Function>& StackResolver::Find(Module& module, const StackFrame& frame) {
  const std::uint64_t address =
      frame.exact || frame.address == 0 ? frame.address : frame.address - 1;
  const auto known = module.known.find(address);
  if (known != module.known.end()) return known->second;
  if (module.known.size() == kAddressesMax) module.known.clear();
  std::vector<Function>& found = module.known[address] = module.symbols.At(address);
  // The offset is that of the recorded address, as in other tools.
  for (Function& function : found) function.offset += frame.address - address;
  return found;
}
