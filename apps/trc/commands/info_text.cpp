#include <fmt/format.h>

#include <iterator>

#include "commands/info.h"
#include "text/visible_text.h"

namespace {

class TextReport {
 public:
  template <class... Arguments>
  void Line(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    if (!m_text.empty()) m_text.push_back('\n');
    fmt::format_to(std::back_inserter(m_text), format, std::forward<Arguments>(arguments)...);
  }

  // How many traces each name of one kind has.
  void Section(const char* title, const IdList& ids, const IdCounts& counts, const NameMap& names) {
    Line("  {}:", title);
    for (const NameId id : ids.Ids()) {
      const auto entry = names.find(id);
      Line("    {:>11}  {}", counts[id],
           entry == names.end() ? fmt::format("(id {}, no name)", id)
                                : VisibleText(entry->second.name));
    }
  }

  std::string Take() { return std::move(m_text); }

 private:
  std::string m_text;
};

std::string TimeOf(const TraceEvent_i* trace) {
  return trace ? trace->GetTimeString(false) + " UTC" : "none";
}

std::string LastRecordOf(const TrcDamage& damage) {
  return damage.cutAt ? fmt::format("cut, at byte {}", *damage.cutAt) : "whole";
}

}  // namespace

std::string InfoAsText(const FileInfo& info) {
  const CTraceFileDoc& document = *info.document;
  const TraceIndexes& seen = document.m_indexes;
  TextReport report;
  report.Line("{}", VisibleText(info.path));
  report.Line("  size:          {} bytes", document.FileSize());
  report.Line("  records:       {}", info.records);
  report.Line("  traces:        {}", document.m_traces.size());
  report.Line("  names:         {}", document.m_names.size());
  report.Line("  skipped bytes: {}", document.Damage().skippedBytes);
  report.Line("  last record:   {}", LastRecordOf(document.Damage()));
  report.Line("  first time:    {}", TimeOf(info.earliest));
  report.Line("  last time:     {}", TimeOf(info.latest));
  report.Line("  severities:");
  constexpr const char* kSeverities[] = {"Info", "Warn", "Error"};
  for (std::size_t i = 0; i < info.severities.size(); ++i) {
    report.Line("    {:>11}  {}", info.severities[i], kSeverities[i]);
  }
  report.Line("    {:>11}  other", info.otherSeverities);
  report.Section("machines", seen.machines, info.machines, document.m_names);
  report.Section("applications", seen.applications, info.applications, document.m_names);
  report.Section("components", seen.components, info.components, document.m_names);
  report.Section("categories", seen.categories, info.categories, document.m_names);
  return report.Take();
}
