#include "notes/file_notes.h"

#include <algorithm>
#include <utility>

#include "base/fail_with.h"
#include "base/mapped_file.h"
#include "records/trace_event.h"

namespace {

bool IsWhole(const std::uint8_t* record, Bytes file) {
  const auto place = static_cast<std::uint64_t>(record - file.data());
  return place + RawTrace(record).Size() <= file.size();
}

NotedRow RowOf(std::uint64_t number, const std::uint8_t* record, const TraceNotes& notes) {
  const WhereMark said = notes.Of(record);
  return {number, PrintOfRecord(record), said.colour, std::string(said.note)};
}

bool IsBefore(const NotedRow& a, const NotedRow& b) {
  return a.Key() < b.Key();
}

}  // namespace

bool FileNotes::Load(const std::string& tracePath, const NotedTraces& traces, std::string* why) {
  *this = FileNotes();
  m_tracePath = tracePath;
  const std::string path = NotesPath(tracePath);
  m_mark = FileMark::At(path);
  const NotesRead read = ReadNotes(path, m_file, why);
  m_isUnreadable = read == NotesRead::Unreadable;
  m_isOfAnother = read == NotesRead::Read && !IsSameFile(m_file.trace, traces.file);
  std::vector<NotedRow> rows = std::exchange(m_file.rows, {});
  if (!m_isOfAnother) m_notes.Reserve(rows.size());
  for (NotedRow& row : rows) Place(std::move(row), traces);
  m_saved = Changes();
  return !m_isUnreadable;
}

void FileNotes::Place(NotedRow&& row, const NotedTraces& traces) {
  NotePlace place = NotePlace::Stale;
  if (!m_isOfAnother) {
    const std::uint8_t* const record =
        row.row < traces.traces.size() ? traces.traces[static_cast<std::size_t>(row.row)]->Record()
                                       : nullptr;
    if (!record || !IsWhole(record, traces.file))
      place = NotePlace::Beyond;
    else if (PrintOfRecord(record) == row.print)
      return m_notes.Set(row.row, record, row.colour, std::move(row.note));
  }
  m_others.push_back({place, std::move(row)});
}

std::vector<FileNotes::Kept> FileNotes::All() const {
  std::vector<Kept> all = m_others;
  for (const auto& [number, record] : m_notes.Records())
    all.push_back({NotePlace::Here, RowOf(number, record, m_notes)});
  std::stable_sort(all.begin(), all.end(),
                   [](const Kept& a, const Kept& b) { return IsBefore(a.row, b.row); });
  return all;
}

bool FileNotes::IsOutdated() const {
  return FileMark::At(NotesPath(m_tracePath)) != m_mark;
}

void FileNotes::ForgetOthers(const std::vector<std::size_t>& places) {
  auto gone = places.begin();
  std::size_t place = 0;
  m_forgotten += std::erase_if(m_others, [&](const Kept&) {
    const bool isGone = gone != places.end() && *gone == place;
    if (isGone) ++gone;
    ++place;
    return isGone;
  });
}

bool FileNotes::MayReplace(bool replace, std::string* why) const {
  const std::string path = NotesPath(m_tracePath);
  if (m_isUnreadable) return FailWith(why, path + ": could not be read, and is not replaced");
  if (replace) return true;
  if (m_isOfAnother) return FailWith(why, path + ": has the notes of another trace file");
  if (IsOutdated()) return FailWith(why, path + ": another program has written it meanwhile");
  return true;
}

bool FileNotes::Save(const NotedTraces& traces, bool replace, std::string* why,
                     const NotesSteps& steps) {
  if (!MayReplace(replace, why)) return false;
  NoteFile file = m_isOfAnother ? NoteFile() : m_file;
  file.trace = PrintOfFile(traces.file);
  for (const auto& [number, record] : m_notes.Records())
    file.rows.push_back(RowOf(number, record, m_notes));
  const std::size_t here = file.rows.size();
  if (!m_isOfAnother) {
    for (const Kept& other : m_others) {
      const auto end = file.rows.begin() + static_cast<std::ptrdiff_t>(here);
      if (!std::binary_search(file.rows.begin(), end, other.row, IsBefore))
        file.rows.push_back(other.row);
    }
  }
  const std::string path = NotesPath(m_tracePath);
  std::string text, reason;
  if (!NotesText(file, text, &reason)) return FailWith(why, path + ": " + reason);
  if (!ReplaceNotes(path, m_tracePath, text, why, steps)) return false;
  if (m_isOfAnother) m_others.clear();
  m_isOfAnother = false;
  file.rows.clear();
  m_file = std::move(file);
  m_mark = FileMark::At(path);
  m_saved = Changes();
  return true;
}

bool SaveNewNotes(const std::string& tracePath, std::vector<NotedRow> rows,
                  const std::function<bool(const std::string& path)>& mayReplace,
                  std::string* why) {
  const std::string path = NotesPath(tracePath);
  NoteFile notes;
  std::string text, reason;
  const NotesRead read = ReadNotes(path, notes, why);
  if (read == NotesRead::Unreadable) return false;
  if (read == NotesRead::Read && !mayReplace(path))
    return FailWith(why, path + ": has the notes of the file before, and stays");
  notes = {};
  const auto file = MappedFile::Open(tracePath, &reason);
  if (!file) return FailWith(why, tracePath + ": " + reason);
  notes.trace = PrintOfFile(file->View());
  notes.rows = std::move(rows);
  if (!NotesText(notes, text, &reason)) return FailWith(why, path + ": " + reason);
  return ReplaceNotes(path, tracePath, text, why);
}
