// NAME.trc.notes: the marks and notes of a trace file, as JSON beside it. docs/formats.md has the
// form.
//
// Shape    Rows are sorted by their number, then by their print; no two have both the same. Notes
//          are UTF-8. Members that this version does not know are kept and written again.
// Errors   A file is read whole or not at all. A file that is no regular file (a symbolic link is
//          none), too large, malformed, or of another version is Unreadable, with a reason that
//          begins with its path.
// Threads  Pure.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "notes/fingerprint.h"
#include "where/where_marks.h"

constexpr std::size_t kNotesBytesMax = 128 * 1024 * 1024;
constexpr std::size_t kNotesDepthMax = 32;
constexpr std::size_t kUnknownNotesMax = 64 * 1024;  // values of members that are not known

struct NotedRow {
  std::uint64_t row = 0;    // the place of the trace in its file, from 0
  std::uint64_t print = 0;  // of its record
  std::uint8_t colour = 0;  // 1 to kMarkColours; 0: not marked
  std::string note = {};    // empty: none

  bool operator==(const NotedRow&) const = default;
  std::pair<std::uint64_t, std::uint64_t> Key() const { return {row, print}; }
};

struct NoteFile {
  FilePrint trace;
  std::vector<NotedRow> rows;
  // Members that are not known, as JSON texts: "\"a\":1,\"b\":[2]"; those of rows by their Key.
  std::string more, moreOfTrace;
  std::map<std::pair<std::uint64_t, std::uint64_t>, std::string> moreOfRows;

  bool operator==(const NoteFile&) const = default;
};

// "orders.trc.notes".
std::string NotesPath(const std::string& tracePath);

enum class NotesRead { Absent, Read, Unreadable };
NotesRead ReadNotes(const std::string& path, NoteFile& notes, std::string* why);
// False and a reason without a path; `notes` has nothing then.
bool ParseNotes(std::string_view text, NoteFile& notes, std::string* why);
// Sorts the rows. False: the text would be too large to be read again.
bool NotesText(NoteFile& notes, std::string& text, std::string* why);
