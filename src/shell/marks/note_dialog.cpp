#include "shell/marks/note_dialog.h"

#include <utility>

CNoteDialog::CNoteDialog(Host& host, DocNotes& notes, std::uint64_t number, std::string trace)
    : CDialog(host),
      m_notes(notes),
      m_number(number),
      m_generation(notes.Generation()),
      m_trace(std::move(trace)) {
  if (const TraceEvent_i* const noted = notes.TraceAt(number))
    m_text = std::string(notes.Of(*noted).note);
}

// After a clear the number is another trace's.
void CNoteDialog::OnOK() {
  const bool there = m_generation == m_notes.Generation() && m_notes.TraceAt(m_number);
  if (!there) {
    GetHost().MessageBox({"The trace has gone meanwhile, and its note has no place any more.",
                          BoxIcon::Warning, BoxButtons::Ok});
    return;
  }
  if (m_notes.SetNote(m_number, m_text)) CDialog::OnOK();
}
