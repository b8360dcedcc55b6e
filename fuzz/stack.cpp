// The recorded text of a call stack: every text has a reading that keeps all its lines.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "symbols/recorded_stack.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const RecordedStack stack = ReadStack(text);
  std::string lines;
  for (const StackFrame& frame : stack.frames) {
    if (frame.IsKnown() && frame.module >= stack.modules.size()) std::abort();
    lines.append(frame.line).push_back('\n');
  }
  if (!text.empty() && text.back() != '\n') lines.pop_back();
  if (lines != text) std::abort();
  return 0;
}
