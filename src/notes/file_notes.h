// The marks and notes of an open trace file, and their file beside it.
//
// Rule     A row is applied (Here) only if the file is the one that was known (notes/fingerprint.h)
//          and the trace with its number has the same record. So no mark ever stands at another
//          trace. A row behind the last whole trace of a file that was cut is kept as Beyond. All
//          others are Stale: the file was replaced, or changed in that place. Both are kept and
//          written again, and apply again when the file fits again.
// Saved    Never over a file that could not be read. Over one that is of another trace file, or
//          that another program has written since it was read, only when `replace` says so; the
//          stale rows of another file go then.
// Owner    Borrows nothing between the calls but the addresses of records (notes/trace_notes.h).
// Errors   False and a reason with the path.
// Threads  One.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/file_mark.h"
#include "notes/new_notes.h"
#include "notes/note_file.h"
#include "notes/trace_notes.h"
#include "records/trace_list.h"

// The bytes of the file, with the guard behind them, and all its traces: they lie in these bytes.
struct NotedTraces {
  Bytes file;
  const TraceList_t& traces;
};

enum class NotePlace { Here, Beyond, Stale };

class FileNotes {
 public:
  struct Kept {
    NotePlace place;
    NotedRow row;
  };

  // Forgets all, then reads the notes of the file. True also when there are none.
  bool Load(const std::string& tracePath, const NotedTraces& traces, std::string* why);

  // Those that are Here. A number is the place in the file.
  TraceNotes& Notes() { return m_notes; }
  const TraceNotes& Notes() const { return m_notes; }
  // The others, by their rows.
  const std::vector<Kept>& Others() const { return m_others; }
  // All, by their rows. REQUIRES: the file has not given up its traces.
  std::vector<Kept> All() const;

  // Was the notes file made for another trace file?
  bool IsOfAnother() const { return m_isOfAnother; }
  bool IsUnreadable() const { return m_isUnreadable; }
  // Has another program written the notes file since it was read or saved?
  bool IsOutdated() const;
  // Counts the changes.
  std::uint64_t Changes() const { return m_notes.Changes() + m_forgotten; }
  bool IsModified() const { return Changes() != m_saved; }
  // Takes away the Others() at these places. REQUIRES: ascending.
  void ForgetOthers(const std::vector<std::size_t>& places);
  bool Save(const NotedTraces& traces, bool replace, std::string* why,
            const NotesSteps& steps = {});

 private:
  void Place(NotedRow&& row, const NotedTraces& traces);
  bool MayReplace(bool replace, std::string* why) const;

  std::string m_tracePath;
  TraceNotes m_notes;
  std::vector<Kept> m_others;
  NoteFile m_file;  // without its rows
  std::optional<FileMark> m_mark;
  bool m_isOfAnother = false, m_isUnreadable = false;
  std::uint64_t m_forgotten = 0;
  std::uint64_t m_saved = 0;  // the changes that are in the file
};

// Writes the notes of a trace file that was just written. A notes file that is there is of the
// trace file that had the name before: it is replaced if `mayReplace` says so. False also where it
// stays.
bool SaveNewNotes(const std::string& tracePath, std::vector<NotedRow> rows,
                  const std::function<bool(const std::string& path)>& mayReplace, std::string* why);
