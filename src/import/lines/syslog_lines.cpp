#include "import/lines/syslog_lines.h"

#include <algorithm>

namespace {

constexpr std::string_view kFacilities[] = {
    "kern",   "user",   "mail",     "daemon", "auth",   "syslog",   "lpr",     "news",
    "uucp",   "cron",   "authpriv", "ftp",    "ntp",    "security", "console", "clock",
    "local0", "local1", "local2",   "local3", "local4", "local5",   "local6",  "local7"};
constexpr unsigned kPriorityMax = 191;

// Takes the text before the next blank, and the blank.
std::string_view TakeWord(std::string_view& line) {
  const std::size_t end = std::min(line.find(' '), line.size());
  const std::string_view word = line.substr(0, end);
  line.remove_prefix(std::min(end + 1, line.size()));
  return word;
}

bool IsDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// The length of the structured data: "-" or elements in brackets, whose values are in quotes.
std::size_t DataBytes(std::string_view line) {
  if (line.starts_with('-')) return 1;
  std::size_t at = 0;
  while (at < line.size() && line[at] == '[') {
    bool quoted = false;
    for (++at; at < line.size() && (quoted || line[at] != ']'); ++at) {
      if (quoted && line[at] == '\\')
        ++at;
      else if (line[at] == '"')
        quoted = !quoted;
    }
    if (at >= line.size()) return 0;
    ++at;
  }
  return at;
}

}  // namespace

std::string_view FacilityName(unsigned number) {
  return number < std::size(kFacilities) ? kFacilities[number] : std::string_view("syslog");
}

bool SyslogLines::Read(std::string_view line, ImportedTrace& trace) {
  SetName(ImportField::Component, "syslog", trace);
  if (line.starts_with('<') && !ReadPriority(line, trace)) return false;
  if (line.starts_with("1 ")) return ReadCurrent(line.substr(2), trace);
  return ReadTraditional(line, trace);
}

bool SyslogLines::ReadPriority(std::string_view& line, ImportedTrace& trace) {
  const std::size_t end = line.find('>');
  if (end > 4 || !IsDigits(line.substr(1, end - 1))) return false;  // or there is none
  unsigned priority = 0;
  for (const char digit : line.substr(1, end - 1))
    priority = priority * 10 + static_cast<unsigned>(digit - '0');
  if (priority > kPriorityMax) return false;
  trace.attributes = AttributesOfSyslog(priority & 7);
  SetName(ImportField::Component, FacilityName(priority >> 3), trace);
  line.remove_prefix(end + 1);
  return true;
}

bool SyslogLines::ReadCurrent(std::string_view line, ImportedTrace& trace) {
  constexpr std::string_view kMark = "\xEF\xBB\xBF";  // before a text in UTF-8
  const std::string_view time = TakeWord(line);
  if (time != "-" && m_clock.ReadBeginning(time, trace) != time.size()) return false;
  for (const ImportField field :
       {ImportField::Machine, ImportField::Application, ImportField::Pid, ImportField::Category}) {
    const std::string_view word = TakeWord(line);
    if (word.empty()) return false;
    if (word != "-") SetName(field, word, trace);
  }
  const std::size_t bytes = DataBytes(line);
  if (bytes == 0) return false;
  const std::string_view data = line.substr(0, bytes);
  line.remove_prefix(bytes);
  if (line.starts_with(' ')) line.remove_prefix(1);
  if (line.starts_with(kMark)) line.remove_prefix(kMark.size());
  trace.text = line;
  if (data == "-") return true;
  m_text = line;
  if (!m_text.empty()) m_text.push_back(' ');
  trace.text = m_text += data;
  return true;
}

bool SyslogLines::ReadTraditional(std::string_view line, ImportedTrace& trace) {
  const std::size_t length = m_clock.ReadBeginning(line, trace);
  if (length == 0 || length == line.size() || line[length] != ' ') return false;
  line.remove_prefix(length + 1);
  // What a program sends to the daemon of its own machine names no host.
  const std::size_t end = std::min(line.find(' '), line.size());
  const bool isHost = end > 0 && end < line.size() && line[end - 1] != ':';
  if (isHost) SetName(ImportField::Machine, TakeWord(line), trace);
  ReadTag(line, trace);
  return true;
}

// "cron[42]: text", "kernel: text"; a text without a tag is all text.
void SyslogLines::ReadTag(std::string_view line, ImportedTrace& trace) {
  trace.text = line;
  const std::size_t end = std::min(line.find(' '), line.size());
  if (end < 2 || line[end - 1] != ':') return;
  std::string_view tag = line.substr(0, end - 1);
  trace.text = line.substr(std::min(end + 1, line.size()));
  const std::size_t bracket = tag.rfind('[');
  if (tag.ends_with(']') && bracket != std::string_view::npos && bracket > 0) {
    SetName(ImportField::Pid, tag.substr(bracket + 1, tag.size() - bracket - 2), trace);
    tag = tag.substr(0, bracket);
  }
  SetName(ImportField::Application, tag, trace);
}

void SyslogLines::SetName(ImportField field, std::string_view value, ImportedTrace& trace) {
  m_fields.Set(field, value, trace);
}
