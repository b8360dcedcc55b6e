#include "import/log_import.h"

#include "base/fail_with.h"
#include "base/text.h"
#include "import/journal_export.h"

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

bool LogImport::Read(LineReader& reader, const std::string& name, std::string* why) {
  InputLine line;
  JournalExport entries(reader);
  const bool exported = m_format.MayBeExported();
  for (std::uint64_t number = 1; exported ? entries.Next(line) : reader.Next(line); ++number) {
    if (exported) number = entries.Number();
    if (number == 1 && line.text.starts_with(kByteOrderMark))
      line.text.remove_prefix(kByteOrderMark.size());
    if (line.text.empty()) {
      if (m_join == JoinLines::All) m_parts.AddLine({});
    } else if (!Take(line, number, name, why)) {
      return false;
    }
  }
  if (reader.Stopped()) return FailWith(why, "interrupted");
  if (reader.Error() != 0) return FailWith(why, name + ": " + SystemReason(reader.Error()));
  return true;
}

bool LogImport::Take(const InputLine& line, std::uint64_t number, const std::string& name,
                     std::string* why) {
  ++m_counts.lines;
  if (line.cut) ++m_counts.cutLines;
  ImportedTrace trace = m_fields.Begin();
  if (!m_format.Read(line.text, trace)) return PutStrange(line.text, number, name, why);
  ++m_counts.understood;
  if (trace.hasTime) {
    m_date = trace.date;
    m_time = trace.time;
  } else {
    trace.date = m_date;
    trace.time = m_time;
  }
  m_fields.Complete(trace);
  return m_parts.Put(trace, why);
}

// Does the line continue the text of the trace before it?
bool LogImport::Belongs(std::string_view line) const {
  const bool indented = line[0] == ' ' || line[0] == '\t';
  return m_join == JoinLines::All || (m_join == JoinLines::Indented && indented);
}

bool LogImport::PutStrange(std::string_view line, std::uint64_t number, const std::string& name,
                           std::string* why) {
  if (Belongs(line) && m_parts.AddLine(line)) {
    ++m_counts.joined;
    return true;
  }
  if (m_counts.strange++ == 0) {
    m_counts.firstStrange = number;
    m_counts.firstStrangeIn = name;
  }
  ImportedTrace trace = m_fields.Begin();
  trace.date = m_date;
  trace.time = m_time;
  trace.text = line;
  m_fields.Complete(trace);
  return m_parts.Put(trace, why);
}

std::vector<std::string> ImportTexts(const ImportCounts& counts, const ImportLosses& losses,
                                     const ImportFields& fields) {
  std::vector<std::string> texts;
  const auto tell = [&texts](std::uint64_t number, const char* one, const char* many,
                             const std::string& more = {}) {
    if (number != 0) texts.push_back(GroupDigits(number) + " " + (number == 1 ? one : many) + more);
  };
  if (counts.strange == 1) {
    texts.push_back("1 line was not understood: line " + std::to_string(counts.firstStrange) +
                    " of " + counts.firstStrangeIn);
  } else {
    tell(counts.strange, "", "lines were not understood; the first is line ",
         std::to_string(counts.firstStrange) + " of " + counts.firstStrangeIn);
  }
  tell(counts.cutLines, "line was cut: of a longer one 4 MiB are read",
       "lines were cut: of a longer one 4 MiB are read");
  tell(losses.cutTexts, "text was cut: a trace file holds 65535 bytes of each",
       "texts were cut: a trace file holds 65535 bytes of each");
  tell(losses.cutNames, "name was cut: a trace file holds 65535 bytes of each",
       "names were cut: a trace file holds 65535 bytes of each");
  tell(losses.nulBytes, "NUL byte is shown as \xE2\x90\x80", "NUL bytes are shown as \xE2\x90\x80");
  tell(fields.StrangeLevels(), "level is not known, and its trace is Info: \"",
       "levels are not known, and their traces are Info; the first is \"",
       fields.FirstStrangeLevel() + "\"");
  return texts;
}
