#include "symbols/recorded_stack.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace {

constexpr std::size_t kPathBytesMax = 4096;
constexpr std::size_t kBuildIdDigitsMin = 4, kBuildIdDigitsMax = 128;

bool TakeEnd(std::string_view& text, std::string_view end) {
  if (text.size() < end.size() || text.substr(text.size() - end.size()) != end) return false;
  text.remove_suffix(end.size());
  return true;
}

bool IsBuildId(std::string_view id) {
  const auto isDigit = [](char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f'); };
  return id.size() >= kBuildIdDigitsMin && id.size() <= kBuildIdDigitsMax && id.size() % 2 == 0 &&
         std::all_of(id.begin(), id.end(), isDigit);
}

// Takes " [0a1b]" or " [no build id]" from the end of the line. False: there is neither.
bool TakeBuildId(std::string_view& line, std::string& id) {
  std::string_view rest = line;
  if (!TakeEnd(rest, "]")) return false;
  const std::size_t open = rest.rfind(" [");
  if (open == rest.npos) return false;
  const std::string_view inside = rest.substr(open + 2);
  if (inside != "no build id" && !IsBuildId(inside)) return false;
  if (inside != "no build id") id = inside;
  line = rest.substr(0, open);
  return true;
}

// Takes "+0x12ab" from the end of the line.
bool TakeAddress(std::string_view& line, std::uint64_t& address) {
  const std::size_t plus = line.rfind("+0x");
  if (plus == line.npos || plus == 0 || plus > kPathBytesMax) return false;
  const char* const end = line.data() + line.size();
  const auto [stop, error] = std::from_chars(line.data() + plus + 3, end, address, 16);
  if (error != std::errc() || stop != end) return false;
  line = line.substr(0, plus);
  return true;
}

class StackReader {
 public:
  void Add(std::string_view line) {
    StackFrame frame;
    frame.line = line;
    StackModule module;
    const bool names = TakeBuildId(line, module.buildId);
    frame.interrupted = TakeEnd(line, " (interrupted)");
    // Before it comes the code to which the signal's handler returns, which was not called.
    if (frame.interrupted && !m_stack.frames.empty()) m_stack.frames.back().exact = true;
    frame.exact = frame.interrupted;
    if (TakeAddress(line, frame.address)) {
      module.path = line;
      frame.module = names ? Named(module) : Earlier(line);
    }
    m_stack.frames.push_back(std::move(frame));
  }
  RecordedStack Take() { return std::move(m_stack); }

 private:
  std::size_t Named(const StackModule& module) {
    auto& modules = m_stack.modules;
    const auto at = static_cast<std::size_t>(std::find(modules.begin(), modules.end(), module) -
                                             modules.begin());
    if (at == modules.size()) modules.push_back(module);
    m_lastOfName[std::string(module.Name())] = at;
    return at;
  }
  std::size_t Earlier(std::string_view name) const {
    const auto found = m_lastOfName.find(name);
    return found == m_lastOfName.end() ? StackFrame::kNoModule : found->second;
  }

  RecordedStack m_stack;
  std::map<std::string, std::size_t, std::less<>> m_lastOfName;
};

}  // namespace

std::string_view StackModule::Name() const {
  const std::size_t slash = path.rfind('/');
  return slash == path.npos ? std::string_view(path) : std::string_view(path).substr(slash + 1);
}

RecordedStack ReadStack(std::string_view text) {
  StackReader reader;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    reader.Add(text.substr(0, end));
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
  }
  return reader.Take();
}
