#include "symbols/stack_names.h"

#include <charconv>

#include "symbols/recorded_stack.h"

namespace {

// Takes the text up to `end`, which it leaves out. False: it is not there.
bool TakeUpTo(std::string_view& rest, char end, std::string_view& part) {
  const std::size_t at = rest.find(end);
  if (at == rest.npos) return false;
  part = rest.substr(0, at);
  rest.remove_prefix(at + 1);
  return true;
}

bool ReadFrame(std::string_view line, NamedFrame& frame) {
  std::string_view number, file, recorded;
  if (!TakeUpTo(line, '\t', number) || !TakeUpTo(line, '\t', file) ||
      !TakeUpTo(line, '\t', recorded))
    return false;
  const char* const end = number.data() + number.size();
  const auto [stop, error] = std::from_chars(number.data(), end, frame.line);
  if (error != std::errc() || stop != end) return false;
  frame.file = file;
  frame.recorded = recorded;
  frame.text = line;
  return true;
}

}  // namespace

std::string OnOneLine(std::string text) {
  for (char& c : text)
    if (static_cast<unsigned char>(c) < ' ' || c == '\x7F') c = '?';
  return text;
}

std::string WriteNames(const StackNames& names) {
  std::string written;
  for (const NamedFrame& frame : names.frames) {
    written.append("f").append(std::to_string(frame.line)).append("\t");
    written.append(OnOneLine(frame.file)).append("\t").append(OnOneLine(frame.recorded));
    written.append("\t").append(OnOneLine(frame.text)).append("\n");
  }
  for (const std::string& missing : names.missing)
    written.append("m").append(OnOneLine(missing)).append("\n");
  return written;
}

std::optional<StackNames> ReadNames(std::string_view written) {
  StackNames names;
  std::string_view line;
  while (!written.empty()) {
    if (!TakeUpTo(written, '\n', line) || line.empty()) return std::nullopt;
    const char kind = line.front();
    line.remove_prefix(1);
    if (kind == 'm') {
      names.missing.emplace_back(line);
      continue;
    }
    NamedFrame frame;
    if (kind != 'f' || !ReadFrame(line, frame)) return std::nullopt;
    names.frames.push_back(std::move(frame));
  }
  return names;
}

StackNames WithoutNames(std::string_view stack) {
  StackNames names;
  for (const StackFrame& frame : ReadStack(stack).frames)
    names.frames.push_back({frame.line, frame.line, {}, 0});
  return names;
}
