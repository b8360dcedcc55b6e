#include "import/fields/import_field.h"

#include <charconv>

#include "base/text.h"

namespace {

struct FieldWord {
  const char* word;
  ImportField field;
};

constexpr FieldWord kFieldWords[] = {{"time", ImportField::Time},
                                     {"level", ImportField::Level},
                                     {"logger", ImportField::Logger},
                                     {"text", ImportField::Text},
                                     {"component", ImportField::Component},
                                     {"category", ImportField::Category},
                                     {"location", ImportField::Location},
                                     {"file", ImportField::File},
                                     {"line", ImportField::Line},
                                     {"pid", ImportField::Pid},
                                     {"tid", ImportField::Tid},
                                     {"application", ImportField::Application},
                                     {"machine", ImportField::Machine},
                                     {"stack", ImportField::Stack},
                                     {"attributes", ImportField::Attributes}};

constexpr std::size_t kWordKept = 40;  // bytes of a level that is told

template <class Number>
bool ReadWhole(std::string_view text, Number& number) {
  Number read = 0;
  const char* const end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, read);
  if (error != std::errc() || at != end || text.empty()) return false;
  number = read;
  return true;
}

ImportName NameOfField(ImportField field) {
  switch (field) {
    case ImportField::Machine:
      return ImportName::Machine;
    case ImportField::Application:
      return ImportName::App;
    case ImportField::Component:
      return ImportName::Component;
    case ImportField::Category:
      return ImportName::Category;
    case ImportField::Pid:
      return ImportName::Pid;
    case ImportField::Tid:
      return ImportName::Tid;
    default:
      return ImportName::File;
  }
}

bool SetLocation(std::string_view value, ImportedTrace& trace) {
  const std::size_t colon = value.rfind(':');
  std::uint32_t line = 0;
  const bool hasLine = colon != std::string_view::npos && ReadWhole(value.substr(colon + 1), line);
  trace[ImportName::File] = hasLine ? value.substr(0, colon) : value;
  if (hasLine) trace.line = line;
  return true;
}

}  // namespace

std::optional<ImportField> FieldNamed(std::string_view word) {
  for (const FieldWord& known : kFieldWords)
    if (word == known.word) return known.field;
  return std::nullopt;
}

const std::vector<std::string>& FieldWords() {
  static const std::vector<std::string> words = [] {
    std::vector<std::string> all;
    for (const FieldWord& known : kFieldWords) all.emplace_back(known.word);
    return all;
  }();
  return words;
}

ImportedTrace ImportFields::Begin() const {
  ImportedTrace trace;
  if (m_rules.component) trace[ImportName::Component] = *m_rules.component;
  return trace;
}

void ImportFields::Complete(ImportedTrace& trace) const {
  if (m_rules.application && !trace[ImportName::App].data())
    trace[ImportName::App] = *m_rules.application;
  if (m_rules.machine && !trace[ImportName::Machine].data())
    trace[ImportName::Machine] = *m_rules.machine;
}

bool ImportFields::Set(ImportField field, std::string_view value, ImportedTrace& trace) {
  switch (field) {
    case ImportField::Time:
      return m_clock.Read(value, trace);
    case ImportField::Level:
      return SetLevel(value, m_rules.levels, trace);
    case ImportField::LevelOfPython:
      return SetLevel(value, LevelNumbers::Python, trace);
    case ImportField::LevelOfSyslog:
      return SetLevel(value, LevelNumbers::Syslog, trace);
    case ImportField::LevelOfOtel:
      return SetLevel(value, LevelNumbers::Otel, trace);
    case ImportField::Attributes:
      return ReadWhole(value, trace.attributes) || SetLevel(value, LevelNumbers::Any, trace);
    case ImportField::Logger:
      SetLogger(value, trace);
      return true;
    case ImportField::Location:
      return SetLocation(value, trace);
    case ImportField::Line:
      return ReadWhole(value, trace.line);
    case ImportField::Count:
      return ReadWhole(value, trace.count.emplace(kNoSequenceNumber));
    case ImportField::Tic:
      return ReadWhole(value, trace.tic);
    case ImportField::Text:
      trace.text = value;
      return true;
    case ImportField::Stack:
      trace.stack = value;
      return true;
    default:
      if (field == ImportField::Component && m_rules.component) return true;
      trace[NameOfField(field)] = value;
      return true;
  }
}

// A level that is not known is no reason to refuse the trace: it is Info, and told at the end.
bool ImportFields::SetLevel(std::string_view value, LevelNumbers numbers, ImportedTrace& trace) {
  if (const auto attributes = AttributesOfLevel(value, numbers)) {
    trace.attributes = *attributes;
    return true;
  }
  if (m_strangeLevels++ == 0) m_firstStrange = CutUtf8(value, kWordKept);
  return false;
}

void ImportFields::SetLogger(std::string_view value, ImportedTrace& trace) const {
  if (m_rules.component) {
    trace[ImportName::Category] = value;
    return;
  }
  const std::size_t end = value.find_first_of("./");
  trace[ImportName::Component] = value.substr(0, end);
  if (end != std::string_view::npos) trace[ImportName::Category] = value.substr(end + 1);
}
