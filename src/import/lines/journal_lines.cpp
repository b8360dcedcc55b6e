#include "import/lines/journal_lines.h"

#include <charconv>

#include "base/text.h"
#include "import/lines/syslog_lines.h"

namespace {

// Places in the list below.
enum JournalKey : std::size_t {
  kSourceTime,
  kJournalTime,
  kMessage,
  kPriority,
  kFacility,
  kHost,
  kIdentifier,
  kComm,
  kPid,
  kSyslogPid,
  kTid,
  kThreadName,
  kUnit,
  kUserUnit,
  kTransport,
  kLogger,
  kCodeFile,
  kCodeLine,
  kTraceback,
  kCodeLogger,
  kObjectPid
};

constexpr std::string_view kJournalKeys[] = {"_SOURCE_REALTIME_TIMESTAMP",
                                             "__REALTIME_TIMESTAMP",
                                             "MESSAGE",
                                             "PRIORITY",
                                             "SYSLOG_FACILITY",
                                             "_HOSTNAME",
                                             "SYSLOG_IDENTIFIER",
                                             "_COMM",
                                             "_PID",
                                             "SYSLOG_PID",
                                             "TID",
                                             "THREAD_NAME",
                                             "_SYSTEMD_UNIT",
                                             "_SYSTEMD_USER_UNIT",
                                             "_TRANSPORT",
                                             "LOGGER",
                                             "CODE_FILE",
                                             "CODE_LINE",
                                             "TRACEBACK",
                                             "CODE_MODULE",
                                             "OBJECT_PID"};

}  // namespace

bool JournalLines::Read(std::string_view line, ImportedTrace& trace) {
  m_again = false;
  Begin();
  if (!ReadFlatJson(line, *this)) return false;
  if (!SetFirst(ImportField::Time, {kSourceTime, kJournalTime}, trace)) return false;
  SetNames(trace);
  SetFirst(ImportField::LevelOfSyslog, {kPriority}, trace);
  SetFirst(ImportField::Pid, {kPid, kSyslogPid, kObjectPid}, trace);
  SetFirst(ImportField::Tid, {kThreadName, kTid}, trace);
  SetFirst(ImportField::File, {kCodeFile}, trace);
  SetFirst(ImportField::Line, {kCodeLine}, trace);
  SetFirst(ImportField::Text, {kMessage}, trace);
  SetFirst(ImportField::Stack, {kTraceback}, trace);
  if (m_textIsMissing) ++m_missingTexts;
  if (m_again) ++m_mended;
  return true;
}

void JournalLines::Begin() {
  for (bool& has : m_has) has = false;
  for (std::string& list : m_list) list.clear();
  m_textIsMissing = false;
}

void JournalLines::OnAgain() {
  m_again = true;
  Begin();
}

std::vector<std::string> JournalLines::Notes() const {
  std::vector<std::string> notes = MendedNote(m_mended);
  if (m_missingTexts > 0)
    notes.push_back(GroupDigits(m_missingTexts) +
                    (m_missingTexts == 1 ? " text is" : " texts are") +
                    " missing: journalctl leaves out long ones without --all");
  return notes;
}

void JournalLines::SetNames(ImportedTrace& trace) {
  SetFirst(ImportField::Machine, {kHost}, trace);
  SetFirst(ImportField::Application, {kIdentifier, kComm}, trace);
  if (SetFirst(ImportField::Logger, {kLogger, kCodeLogger}, trace)) return;
  SetFirst(ImportField::Component, {kUserUnit, kUnit, kTransport}, trace);
  const std::string* const facility = Value(kFacility);
  if (!facility) return;
  unsigned number = 0;
  const char* const end = facility->data() + facility->size();
  const auto read = std::from_chars(facility->data(), end, number);
  if (read.ec == std::errc() && read.ptr == end)
    m_fields.Set(ImportField::Category, FacilityName(number), trace);
}

// The first of these keys that has a value which the field can have.
bool JournalLines::SetFirst(ImportField field, std::initializer_list<std::size_t> keys,
                            ImportedTrace& trace) {
  for (const std::size_t key : keys)
    if (const std::string* const value = Value(key); value && m_fields.Set(field, *value, trace))
      return true;
  return false;
}

// A value of bytes is an array of numbers, several values are an array of strings or of arrays.
bool JournalLines::OnValue(const std::string& path, JsonKind kind, std::string_view value) {
  const std::string_view name = std::string_view(path).substr(0, path.find('.'));
  for (std::size_t key = 0; key < kKeys; ++key) {
    if (kJournalKeys[key] != name) continue;
    if (kind == JsonKind::Null) {
      m_textIsMissing = m_textIsMissing || key == kMessage;
      return true;
    }
    std::string& own = m_values[key];
    const bool inArray = name.size() != path.size();
    const std::string_view list = std::string_view(path).substr(0, path.rfind('.'));
    if (!m_has[key])
      own.clear();
    else if (kind != JsonKind::Number || list != m_list[key])
      own.push_back('\n');
    m_has[key] = true;
    m_list[key] = list;
    unsigned byte = 0;
    const bool isByte =
        inArray && kind == JsonKind::Number &&
        std::from_chars(value.data(), value.data() + value.size(), byte).ec == std::errc() &&
        byte < 256;
    if (isByte)
      own.push_back(static_cast<char>(byte));
    else
      own += value;
    return true;
  }
  return true;
}
