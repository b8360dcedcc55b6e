// The marks and notes of traces that are written to a new trace file, with their places there.
//
// Owner    Borrows the notes of the traces.
// Threads  One.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "notes/file_notes.h"

class SavedNotes {
 public:
  explicit SavedNotes(const TraceNotes& notes) : m_notes(notes) {}

  // The next trace of the new file.
  void Add(const TraceEvent_i& trace);
  bool empty() const { return m_rows.empty(); }
  std::vector<NotedRow> Take() { return std::move(m_rows); }

 private:
  const TraceNotes& m_notes;
  std::uint64_t m_row = 0;
  std::vector<NotedRow> m_rows;
};
