#include "panes/row_mark.h"

#include "base/text.h"
#include "notes/mark_colours.h"

RowMark RowMarkOf(const WhereMark& said) {
  RowMark mark{{kMarkInk, kMarkGrounds[said.colour]}, said.colour, std::string(said.note)};
  if (mark.note.size() > kShownNoteBytes)
    mark.note = std::string(CutUtf8(mark.note, kShownNoteBytes)) + "...";
  return mark;
}

std::optional<RowMark> RowMarkOf(CTraceDoc& document, const TraceEvent_i& trace) {
  const DocNotes& notes = document.Notes();
  if (notes.Notes().empty()) return std::nullopt;
  const WhereMark said = notes.Of(trace);
  if (said.colour == 0 && said.note.empty()) return std::nullopt;
  return RowMarkOf(said);
}
