#include "text/text_line.h"

#include "text/visible_text.h"

std::string_view SeverityColour(const TraceEvent_i& trace) {
  constexpr std::string_view kColours[] = {"", "\x1b[1;38;5;166m", "\x1b[1;38;5;196m"};
  const int icon = SeverityIcon(trace);
  return icon < 0 ? std::string_view() : kColours[icon];
}

std::string VisibleCell(Column column, const TraceEvent_i& trace, const TraceEvent_i* previous,
                        const NameMap& names, bool utc) {
  if (column == Column::Sev) return std::string(SeverityWord(trace));
  return VisibleText(CellText(column, trace, previous, names, utc));
}
