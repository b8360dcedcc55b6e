#include "quor/relay/publisher/published_sources.h"

#include <sstream>

namespace {

constexpr std::size_t kInstanceBytes = 16;
// Of a word: far below what an engine takes.
constexpr std::size_t kWordBytes = 128 * 1024;
constexpr std::size_t kLineBytes = 48;  // of a source without its name

constexpr char kHex[] = "0123456789abcdef";

std::string ToHex(const std::string& bytes) {
  std::string text = "x";  // so that no text is empty
  for (const char byte : bytes) {
    text.push_back(kHex[static_cast<std::uint8_t>(byte) >> 4]);
    text.push_back(kHex[static_cast<std::uint8_t>(byte) & 15]);
  }
  return text;
}

bool FromHex(const std::string& text, std::string& bytes) {
  bytes.clear();
  if (text.empty() || text[0] != 'x' || text.size() % 2 == 0) return false;
  const std::string_view digits = kHex;
  for (std::size_t i = 1; i < text.size(); i += 2) {
    const std::size_t high = digits.find(text[i]), low = digits.find(text[i + 1]);
    if (high >= 16 || low >= 16) return false;
    bytes.push_back(static_cast<char>(high << 4 | low));
  }
  return true;
}

}  // namespace

void PublishedSources::Learn(const Envelope& envelope, bool isNamed) {
  Known& known = m_sources[envelope.instance];
  if (isNamed) {
    known.naming = {envelope.machine, envelope.app, envelope.pid};
    known.isNamed = true;
  }
  known.serial = envelope.serial;
  known.hasEnded = false;
  known.hasChanged = m_changed = true;
}

void PublishedSources::Forget(const std::string& instance) {
  const auto found = m_sources.find(instance);
  if (found == m_sources.end()) return;
  found->second.hasEnded = found->second.hasChanged = m_changed = true;
}

const SourceNaming* PublishedSources::Find(const std::string& instance) const {
  const auto found = m_sources.find(instance);
  return found == m_sources.end() || !found->second.isNamed ? nullptr : &found->second.naming;
}

std::vector<MachineWord> PublishedSources::Words(bool all, const std::string& machine) {
  std::map<std::string, std::vector<MachineWord>> words;
  std::map<std::string, std::size_t> bytes;
  for (auto at = m_sources.begin(); at != m_sources.end();) {
    Known& known = at->second;
    if (all || known.hasChanged) {
      const std::string& of = known.isNamed ? known.naming.machine : machine;
      std::vector<MachineWord>& list = words[of];
      const std::size_t size = kLineBytes + known.naming.app.size();
      if (list.empty() || bytes[of] + size > kWordBytes) {
        list.push_back({of, {}});
        bytes[of] = of.size();
      }
      bytes[of] += size;
      list.back().sources.push_back({at->first, known.naming.app, known.serial, known.hasEnded});
      known.hasChanged = false;
    }
    at = known.hasEnded ? m_sources.erase(at) : std::next(at);
  }
  m_changed = false;
  std::vector<MachineWord> result;
  for (auto& [of, list] : words)
    for (MachineWord& word : list) result.push_back(std::move(word));
  return result;
}

std::vector<std::string> PublishedSources::Lines() const {
  std::vector<std::string> lines;
  for (const auto& [instance, known] : m_sources) {
    if (!known.isNamed) continue;
    std::ostringstream line;
    line << ToHex(instance) << ' ' << known.serial << ' ' << known.naming.pid << ' '
         << ToHex(known.naming.machine) << ' ' << ToHex(known.naming.app);
    lines.push_back(line.str());
  }
  return lines;
}

bool PublishedSources::Restore(const std::string& line) {
  std::istringstream from(line);
  std::string instance, machine, app, rest, id;
  Known known;
  if (!(from >> instance >> known.serial >> known.naming.pid >> machine >> app) || from >> rest)
    return false;
  if (!FromHex(instance, id) || id.size() != kInstanceBytes ||
      !FromHex(machine, known.naming.machine) || !FromHex(app, known.naming.app))
    return false;
  known.isNamed = true;
  m_sources[id] = known;
  m_changed = true;
  return true;
}
