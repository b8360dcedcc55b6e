// Any bytes as a notes file: what is read is written again and must read back the same.
#include <cstdint>
#include <cstdlib>

#include "notes/note_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  NoteFile first, second;
  std::string text, why;
  if (!ParseNotes({reinterpret_cast<const char*>(data), size}, first, &why)) {
    if (why.empty() || !(first == NoteFile())) std::abort();
    return 0;
  }
  for (const NotedRow& row : first.rows)
    if (row.colour > kMarkColours) std::abort();
  if (!NotesText(first, text, &why) || !ParseNotes(text, second, &why)) std::abort();
  if (!(first == second)) std::abort();
  return 0;
}
