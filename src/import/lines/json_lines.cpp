#include "import/lines/json_lines.h"

#include <charconv>

#include "base/text.h"

namespace {

struct KnownKey {
  const char* key;
  ImportField field;
};

constexpr KnownKey kKnownKeys[] = {{"time", ImportField::Time},
                                   {"timestamp", ImportField::Time},
                                   {"ts", ImportField::Time},
                                   {"@timestamp", ImportField::Time},
                                   {"datetime", ImportField::Time},
                                   {"asctime", ImportField::Time},
                                   {"created", ImportField::Time},
                                   {"level", ImportField::Level},
                                   {"severity", ImportField::Level},
                                   {"lvl", ImportField::Level},
                                   {"levelname", ImportField::Level},
                                   {"loglevel", ImportField::Level},
                                   {"log.level", ImportField::Level},
                                   {"sev", ImportField::Level},
                                   {"levelno", ImportField::LevelOfPython},
                                   {"severitynumber", ImportField::LevelOfOtel},
                                   {"severity_number", ImportField::LevelOfOtel},
                                   {"logger", ImportField::Logger},
                                   {"name", ImportField::Logger},
                                   {"logger_name", ImportField::Logger},
                                   {"loggername", ImportField::Logger},
                                   {"log.logger", ImportField::Logger},
                                   {"component", ImportField::Component},
                                   {"category", ImportField::Category},
                                   {"msg", ImportField::Text},
                                   {"message", ImportField::Text},
                                   {"text", ImportField::Text},
                                   {"event", ImportField::Text},
                                   {"body", ImportField::Text},
                                   {"trace", ImportField::Text},
                                   {"caller", ImportField::Location},
                                   {"source", ImportField::Location},
                                   {"file", ImportField::File},
                                   {"filename", ImportField::File},
                                   {"pathname", ImportField::File},
                                   {"source.file", ImportField::File},
                                   {"log.origin.file.name", ImportField::File},
                                   {"line", ImportField::Line},
                                   {"lineno", ImportField::Line},
                                   {"line_number", ImportField::Line},
                                   {"source.line", ImportField::Line},
                                   {"log.origin.file.line", ImportField::Line},
                                   {"pid", ImportField::Pid},
                                   {"process", ImportField::Pid},
                                   {"process.pid", ImportField::Pid},
                                   {"tid", ImportField::Tid},
                                   {"thread", ImportField::Tid},
                                   {"thread_id", ImportField::Tid},
                                   {"thread_name", ImportField::Tid},
                                   {"threadname", ImportField::Tid},
                                   {"process.thread.name", ImportField::Tid},
                                   {"hostname", ImportField::Machine},
                                   {"host", ImportField::Machine},
                                   {"host.name", ImportField::Machine},
                                   {"machine", ImportField::Machine},
                                   {"application", ImportField::Application},
                                   {"app", ImportField::Application},
                                   {"service", ImportField::Application},
                                   {"service.name", ImportField::Application},
                                   {"program", ImportField::Application},
                                   {"stack", ImportField::Stack},
                                   {"stacktrace", ImportField::Stack},
                                   {"stack_trace", ImportField::Stack},
                                   {"error.stack_trace", ImportField::Stack},
                                   {"err.stack", ImportField::Stack},
                                   {"exc_info", ImportField::Stack},
                                   {"exception", ImportField::Stack},
                                   {"attributes", ImportField::Attributes}};

constexpr std::string_view kOwnKeys[] = {"i", "count", "tic", "account", "context"};

// All keys of one kind are one field: the first of them counts.
std::uint64_t BitOf(ImportField field) {
  switch (field) {
    case ImportField::LevelOfPython:
    case ImportField::LevelOfSyslog:
    case ImportField::LevelOfOtel:
      field = ImportField::Level;
      break;
    default:
      break;
  }
  return std::uint64_t{1} << static_cast<unsigned>(field);
}

bool DecodeHex(std::string_view hex, std::string& bytes) {
  bytes.clear();
  if (hex.size() % 2 != 0) return false;
  for (std::size_t at = 0; at < hex.size(); at += 2) {
    unsigned byte = 0;
    const char* const end = hex.data() + at + 2;
    if (std::from_chars(hex.data() + at, end, byte, 16).ptr != end) return false;
    bytes.push_back(static_cast<char>(byte));
  }
  return true;
}

void AppendQuoted(std::string& to, std::string_view value) {
  const bool plain =
      !value.empty() && value.find_first_of(" \t\r\n\"=\\") == std::string_view::npos;
  if (plain) {
    to += value;
    return;
  }
  to.push_back('"');
  for (const char byte : value) {
    if (byte == '"' || byte == '\\') to.push_back('\\');
    if (byte == '\n')
      to += "\\n";
    else
      to.push_back(byte);
  }
  to.push_back('"');
}

}  // namespace

JsonLines::JsonLines(ImportFields& fields,
                     const std::vector<std::pair<std::string, ImportField>>& keys)
    : m_fields(fields) {
  for (const auto& [key, field] : keys) m_keys[ToLowerAscii(key)] = {Role::Field, field, 0};
  for (const KnownKey& known : kKnownKeys)
    m_keys.try_emplace(known.key, Target{Role::Field, known.field, 0});
  for (unsigned part = 0; part < 3; ++part)
    m_keys.try_emplace("date." + std::to_string(part), Target{Role::DatePart, {}, part});
  for (unsigned part = 0; part < 4; ++part)
    m_keys.try_emplace("time." + std::to_string(part), Target{Role::TimePart, {}, part});
  m_keys.try_emplace("i", Target{Role::Index, {}, 0});
  m_keys.try_emplace("count", Target{Role::Count, ImportField::Count, 1});
  m_keys.try_emplace("tic", Target{Role::Tic, ImportField::Tic, 2});
  m_keys.try_emplace("account", Target{Role::Account, {}, 3});
  m_keys.try_emplace("context", Target{Role::Context, {}, 4});
}

bool JsonLines::Read(std::string_view line, ImportedTrace& trace) {
  m_trace = &trace;
  m_again = false;
  m_levelsBefore = m_fields.StrangeLevels();
  Begin();
  if (!ReadFlatJson(line, *this) || !Finish()) return false;
  if (m_again) ++m_mended;
  return true;
}

void JsonLines::Begin() {
  m_place = 0;
  m_set = 0;
  m_dateParts = m_timeParts = 0;
  m_hasBadTime = false;
  for (std::string& value : m_own) value.clear();
  m_extra.clear();
}

void JsonLines::OnAgain() {
  m_again = true;
  m_fields.ForgetLevels(m_levelsBefore);
  Begin();
}

// Lines of one log mostly have the same keys in the same order.
const JsonLines::Target& JsonLines::TargetOf(const std::string& path) {
  constexpr std::size_t kMetMax = 256;
  const std::size_t place = m_place++ % kMetMax;
  if (place >= m_met.size()) m_met.resize(place + 1);
  Met& met = m_met[place];
  if (met.path != path) met = {path, Find(path)};
  return met.target;
}

JsonLines::Target JsonLines::Find(const std::string& path) const {
  const std::string key = ToLowerAscii(path);
  if (const auto known = m_keys.find(key); known != m_keys.end()) return known->second;
  constexpr std::string_view kHex = ".hex";
  if (!key.ends_with(kHex)) return {};
  const auto known = m_keys.find(key.substr(0, key.size() - kHex.size()));
  if (known == m_keys.end() || known->second.role != Role::Field) return {};
  return {Role::Hex, known->second.field, 0};
}

bool JsonLines::OnValue(const std::string& path, JsonKind kind, std::string_view value) {
  const Target target = TargetOf(path);
  bool taken = false;
  switch (target.role) {
    case Role::Field:
    case Role::Hex:
      if (kind == JsonKind::Null) return true;
      SetField(target, value, taken);
      break;
    case Role::DatePart:
    case Role::TimePart:
      if (!SetPart(target, value)) return false;
      taken = true;
      break;
    case Role::Index:
    case Role::Count:
    case Role::Tic:
      taken = kind == JsonKind::Number && m_own[target.part].empty();
      if (taken) m_own[target.part] = value;
      break;
    case Role::Account:
      taken = kind == JsonKind::String && m_own[target.part].empty();
      if (taken) m_own[target.part] = value;
      break;
    case Role::Context:
      taken = kind == JsonKind::Bool && m_own[target.part].empty();
      if (taken) m_own[target.part] = value;
      break;
    case Role::Extra:
      break;
  }
  if (!taken) AddExtra(path, kind, value);
  return true;
}

// `taken` stays false for a value that its field cannot have. Another key may have the time.
void JsonLines::SetField(const Target& target, std::string_view value, bool& taken) {
  const std::uint64_t bit = BitOf(target.field);
  if ((m_set & bit) != 0) return;
  std::string& own = m_values[static_cast<std::size_t>(target.field)];
  if (target.role != Role::Hex)
    own = value;
  else if (!DecodeHex(value, own))
    return;
  taken = m_fields.Set(target.field, own, *m_trace);
  if (taken) m_set |= bit;
  if (!taken && target.field == ImportField::Time) m_hasBadTime = true;
}

// Any number that a record can hold, also if no calendar has it.
bool JsonLines::SetPart(const Target& target, std::string_view value) {
  constexpr std::uint32_t kDateMax[] = {(1u << 21) - 1, 31, 63}, kTimeMax[] = {127, 127, 127, 2047};
  const bool isDate = target.role == Role::DatePart;
  std::uint32_t& part = isDate ? m_date[target.part] : m_time[target.part];
  const char* const end = value.data() + value.size();
  const auto read = std::from_chars(value.data(), end, part);
  const std::uint32_t most = isDate ? kDateMax[target.part] : kTimeMax[target.part];
  if (read.ec != std::errc() || read.ptr != end || part > most) return false;
  (isDate ? m_dateParts : m_timeParts) |= 1u << target.part;
  return true;
}

// The account stands behind the process again, as it did in the file that was dumped.
bool JsonLines::TakeOwn() {
  if (m_dateParts != 0) {
    m_trace->date = PackDate(m_date[0], m_date[1], m_date[2]);
    m_trace->time = PackTime(m_time[0], m_time[1], m_time[2], m_time[3]);
    m_trace->hasTime = true;
  }
  if (!m_own[1].empty() && !m_fields.Set(ImportField::Count, m_own[1], *m_trace)) return false;
  if (!m_own[2].empty() && !m_fields.Set(ImportField::Tic, m_own[2], *m_trace)) return false;
  if (m_own[3].empty()) return true;
  std::string& process = m_values[static_cast<std::size_t>(ImportField::Pid)];
  if (!(*m_trace)[ImportName::Pid].data()) process.clear();
  process += " " + m_own[3];
  return m_fields.Set(ImportField::Pid, process, *m_trace);
}

bool JsonLines::IsOwn() const {
  if (m_dateParts != 0 || m_timeParts != 0) return m_dateParts == 7 && m_timeParts == 15;
  return (m_set & BitOf(ImportField::Time)) != 0 && !m_own[0].empty() && !m_own[1].empty() &&
         !m_own[2].empty();
}

bool JsonLines::Finish() {
  if (m_hasBadTime && (m_set & BitOf(ImportField::Time)) == 0) return false;
  if (IsOwn()) {
    if (!TakeOwn()) return false;
  } else {
    if (m_dateParts != 0 || m_timeParts != 0) return false;
    for (std::size_t at = 0; at < kOwn; ++at)
      if (!m_own[at].empty())
        AddExtra(kOwnKeys[at], at == 3 ? JsonKind::String : JsonKind::Number, m_own[at]);
  }
  if (m_extra.empty()) return true;
  std::string& text = m_values[static_cast<std::size_t>(ImportField::Text)];
  if (!m_trace->text.data()) text.clear();
  if (!text.empty()) text.push_back(' ');
  text += m_extra;
  m_trace->text = text;
  return true;
}

void JsonLines::AddExtra(std::string_view path, JsonKind kind, std::string_view value) {
  if (!m_extra.empty()) m_extra.push_back(' ');
  AppendQuoted(m_extra, path);
  m_extra.push_back('=');
  if (kind == JsonKind::String)
    AppendQuoted(m_extra, value);
  else
    m_extra += value;
}
