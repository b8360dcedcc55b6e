// The marks and notes of an open document, which all its windows share.
//
// Shape    A trace is known by its number: its place in the list + TraceList_t::Popped.
// Kept     Those of a trace file are beside it (notes/file_notes.h): a change is saved after
//          kSaveAfterMs, or after kRest times as long as the last save took, and by Close. Those of
//          other documents live as long as their traces.
// Owner    Owned by the document, whose list it borrows. Holds the file until Close.
// Errors   A save that fails changes nothing: the marks stay, the next change tries again, and
//          MayClose asks. The first one shows a box that blocks nothing.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/mapped_file.h"
#include "docview/host_timer.h"
#include "notes/file_notes.h"

class DocNotes {
 public:
  static constexpr unsigned kSaveAfterMs = 1000;
  static constexpr unsigned kRest = 20;
  static constexpr std::size_t kMost = 1'000'000;  // traces with a mark or a note

  // `changed` is called after each change but ForgetBefore and Close.
  DocNotes(Host& host, const TraceList_t& traces, std::function<void()> changed);
  DocNotes(const DocNotes&) = delete;
  DocNotes& operator=(const DocNotes&) = delete;

  // Reads the notes beside a file. REQUIRES: the list has all traces of the file.
  void Open(const std::string& tracePath, std::shared_ptr<const MappedFile> file);
  bool IsOpen() const { return m_file != nullptr; }
  // Saves what is not saved, and forgets all.
  void Close();
  // Before traces with a lower number are released.
  void ForgetBefore(std::uint64_t number) { m_notes.Notes().ForgetBefore(number); }

  const TraceNotes& Notes() const { return m_notes.Notes(); }
  // Of the notes file: rows beyond the end and stale ones.
  const std::vector<FileNotes::Kept>& Others() const { return m_notes.Others(); }
  bool IsOfAnother() const { return m_notes.IsOfAnother(); }
  // Why the notes file cannot be used; empty: it can, or there is none.
  const std::string& WhyUnreadable() const { return m_unreadable; }
  // Grows with each change of what is above.
  std::uint64_t Changes() const { return m_reads + m_notes.Changes(); }
  WhereMark Of(const TraceEvent_i& trace) const { return Notes().Of(trace.Record()); }

  // Another one after a clear: numbers name other traces then.
  std::uint64_t Generation() const { return m_traces.Generation(); }
  // Null: the trace has gone, or never was.
  TraceEvent_i* TraceAt(std::uint64_t number) const;
  // Changes of traces that have gone are passed over. False, and a box says it: there would be more
  // than kMost.
  bool Mark(const std::vector<std::uint64_t>& numbers, std::uint8_t colour);
  // False: the trace has gone, or as above.
  bool SetNote(std::uint64_t number, const std::string& note);
  // Mark and note.
  void Remove(const std::vector<std::uint64_t>& numbers);
  // By their places in Others(), ascending.
  void RemoveOthers(const std::vector<std::size_t>& places);

  // The marks for filters. Those beside a file are read anew if another program has written them.
  // Null: the document has none, or `why` has the reason.
  std::shared_ptr<const WhereMarks> ForFilters(std::string* why);
  // May the document go? Saves; if that fails the user is asked. False: it stays.
  bool MayClose();
  bool IsUnsaved() const { return m_file && Stand() != m_givenUp && m_notes.IsModified(); }

 private:
  NotedTraces Traces() const { return {m_file->View(), m_traces}; }
  // Says which state was given up.
  std::uint64_t Stand() const { return Changes() + 1; }
  void Read();
  void ReadIfOutdated();
  bool MayHold(std::size_t more);
  void OnChanged();
  void SaveLate();
  bool Save(bool replace, std::string* why);
  bool MayWrite(std::string* why) const;
  bool AskToReplace(const std::string& why);
  bool AskToLose(const std::string& why);

  Host& m_host;
  const TraceList_t& m_traces;
  const std::function<void()> m_changed;
  FileNotes m_notes;
  std::string m_path, m_unreadable;
  std::shared_ptr<const MappedFile> m_file;  // null: nothing is saved
  std::optional<HostTimer> m_timer;          // until the next save
  unsigned m_saveAfterMs = kSaveAfterMs;
  bool m_told = false;          // that a save has failed
  std::uint64_t m_reads = 0;    // so that Changes never goes back
  std::uint64_t m_givenUp = 0;  // the user wants it lost
};
