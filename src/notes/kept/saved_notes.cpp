#include "notes/kept/saved_notes.h"

#include "notes/fingerprint.h"
#include "records/trace_event.h"

void SavedNotes::Add(const TraceEvent_i& trace) {
  const std::uint64_t row = m_row++;
  if (m_notes.empty()) return;
  const std::uint8_t* const record = trace.Record();
  const WhereMark said = m_notes.Of(record);
  if (said.colour == 0 && said.note.empty()) return;
  m_rows.push_back({row, PrintOfRecord(record), said.colour, std::string(said.note)});
}
