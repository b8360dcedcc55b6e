#include "notes/note_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

#include "base/fail_with.h"
#include "base/text.h"
#include "notes/note_parser.h"

namespace {

constexpr std::size_t kPieceBytes = 256 * 1024;

std::string Hex(std::uint64_t print) {
  std::string text(16, '0');
  char digits[16];
  const auto end = std::to_chars(digits, digits + sizeof digits, print, 16).ptr;
  std::copy(digits, end, text.end() - (end - digits));
  return text;
}

bool ReadAllOf(int descriptor, std::string& text, std::string* why) {
  struct stat status;
  if (fstat(descriptor, &status) != 0) return FailWith(why, SystemReason());
  if (!S_ISREG(status.st_mode)) return FailWith(why, "no regular file");
  std::size_t size = 0;
  for (;;) {
    if (size > kNotesBytesMax) return FailWith(why, "larger than 128 MiB");
    text.resize(size + kPieceBytes);
    const ssize_t count = read(descriptor, text.data() + size, kPieceBytes);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return FailWith(why, SystemReason());
    size += static_cast<std::size_t>(count);
    text.resize(size);
    if (count == 0) return true;
  }
}

// Sorts them; false if two are the same.
bool Sort(std::vector<NotedRow>& rows) {
  const auto before = [](const NotedRow& a, const NotedRow& b) { return a.Key() < b.Key(); };
  if (!std::is_sorted(rows.begin(), rows.end(), before))
    std::sort(rows.begin(), rows.end(), before);
  return std::adjacent_find(rows.begin(), rows.end(), [](const NotedRow& a, const NotedRow& b) {
           return a.Key() == b.Key();
         }) == rows.end();
}

void AddTrace(std::string& text, const NoteFile& notes) {
  text.append(" \"trace\": {\"bytes\": ").append(std::to_string(notes.trace.size));
  text.append(", \"heads\": [");
  for (const FilePrint::Head& head : notes.trace.heads) {
    if (text.back() != '[') text.append(", ");
    text.append("[").append(std::to_string(head.bytes)).append(", \"");
    text.append(Hex(head.print)).append("\"]");
  }
  text.append("]");
  if (!notes.moreOfTrace.empty()) text.append(", ").append(notes.moreOfTrace);
  text.append("},\n");
}

void AddRow(std::string& text, const NotedRow& row) {
  text.append("  {\"row\": ").append(std::to_string(row.row));
  text.append(", \"print\": \"").append(Hex(row.print)).append("\"");
  if (row.colour != 0) text.append(", \"mark\": ").append(std::to_string(row.colour));
  if (!row.note.empty()) text.append(", \"note\": ").append(JsonQuoted(ReplaceMalformed(row.note)));
}

}  // namespace

std::string NotesPath(const std::string& tracePath) {
  return tracePath + ".notes";
}

bool ParseNotes(std::string_view text, NoteFile& notes, std::string* why) {
  notes = {};
  NoteParser parser(notes);
  const bool parsed = nlohmann::json::sax_parse(text.begin(), text.end(), &parser);
  if (parsed && parser.Finish() && Sort(notes.rows)) return true;
  notes = {};
  return FailWith(why, parser.Why().empty() ? "one row twice" : parser.Why());
}

NotesRead ReadNotes(const std::string& path, NoteFile& notes, std::string* why) {
  notes = {};
  const int descriptor =
      open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
  if (descriptor < 0 && errno == ENOENT) return NotesRead::Absent;
  if (descriptor < 0) {
    const bool isLink = errno == ELOOP;
    FailWith(why,
             path + ": " + (isLink ? "a symbolic link, which is not followed" : SystemReason()));
    return NotesRead::Unreadable;
  }
  std::string text, reason;
  const bool read = ReadAllOf(descriptor, text, &reason);
  close(descriptor);
  if (read && ParseNotes(text, notes, &reason)) return NotesRead::Read;
  FailWith(why, path + ": " + reason);
  return NotesRead::Unreadable;
}

bool NotesText(NoteFile& notes, std::string& text, std::string* why) {
  if (!Sort(notes.rows)) return FailWith(why, "one row twice");
  text = "{\"format\": \"tessera-notes\", \"version\": 1,\n";
  AddTrace(text, notes);
  text.append(" \"rows\": [");
  for (const NotedRow& row : notes.rows) {
    text.append(text.back() == '[' ? "\n" : ",\n");
    AddRow(text, row);
    if (const auto more = notes.moreOfRows.find(row.Key()); more != notes.moreOfRows.end())
      text.append(", ").append(more->second);
    text.append("}");
    if (text.size() > kNotesBytesMax) break;
  }
  text.append("]");
  if (!notes.more.empty()) text.append(",\n ").append(notes.more);
  text.append("}\n");
  return text.size() <= kNotesBytesMax || FailWith(why, "the notes take more than 128 MiB");
}
