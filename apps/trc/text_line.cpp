#include "text_line.h"

#include "visible_text.h"

namespace {

std::string SeverityWord(const TraceEvent_i& trace) {
  constexpr const char* kWords[] = {"Info", "Warn", "Error"};
  const int icon = SeverityIcon(trace);
  return icon < 0 ? "" : kWords[icon];
}

}  // namespace

std::string VisibleCell(Column column, const TraceEvent_i& trace, const TraceEvent_i* previous,
                        const NameMap& names, bool utc) {
  return column == Column::Sev ? SeverityWord(trace)
                               : VisibleText(CellText(column, trace, previous, names, utc));
}
