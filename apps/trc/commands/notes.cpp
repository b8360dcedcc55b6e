#include "commands/notes.h"

#include "base/json_text.h"
#include "notes/file_notes.h"
#include "terminal/exit_status.h"
#include "terminal/output.h"
#include "text/visible_text.h"

namespace {

constexpr std::string_view kBeforeNote = "    ";

NotedTraces TracesOf(const CTraceFileDoc& document) {
  return {document.FileBytes(), document.m_traces};
}

const char* WordOf(NotePlace place) {
  if (place == NotePlace::Here) return "here";
  return place == NotePlace::Beyond ? "beyond the end" : "stale";
}

std::string TextOf(const CTraceFileDoc& document, const NotedRow& row) {
  return document.m_traces[static_cast<std::size_t>(row.row)]->GetText();
}

void AppendText(std::string& to, const CTraceFileDoc& document, const FileNotes::Kept& one) {
  AppendNumber(to, one.row.row);
  to.append(": ").append(one.row.colour == 0 ? "-" : std::to_string(one.row.colour)).append(" ");
  const bool here = one.place == NotePlace::Here;
  to.append(here ? VisibleText(TextOf(document, one.row))
                 : std::string("(") + WordOf(one.place) + ")");
  std::string_view note = one.row.note;
  while (!note.empty()) {
    const std::size_t end = note.find('\n');
    to.append("\n").append(kBeforeNote).append(VisibleText(note.substr(0, end)));
    note.remove_prefix(end == note.npos ? note.size() : end + 1);
  }
}

void AppendJson(std::string& to, const CTraceFileDoc& document, const FileNotes::Kept& one) {
  to.append("{\"index\":");
  AppendNumber(to, one.row.row);
  to.append(",\"state\":\"").append(WordOf(one.place)).append("\"");
  if (one.row.colour != 0) to.append(",\"mark\":").append(std::to_string(one.row.colour));
  if (!one.row.note.empty()) {
    to.append(",\"note\":");
    AppendJsonText(to, one.row.note);
  }
  if (one.place == NotePlace::Here) {
    to.append(",\"text\":");
    AppendJsonText(to, TextOf(document, one.row));
  }
  to.append("}");
}

int Print(const CTraceFileDoc& document, const FileNotes& notes, bool json) {
  Output output;
  const std::vector<FileNotes::Kept> all = notes.All();
  for (const FileNotes::Kept& one : all) {
    if (json)
      AppendJson(output.Buffer(), document, one);
    else
      AppendText(output.Buffer(), document, one);
    if (!output.EndLine()) break;
  }
  const int status = output.Finish();
  return status == kExitGood && all.empty() ? kExitNo : status;
}

// False after a message: the file has no such trace.
bool Change(const NotesOptions& options, const CTraceFileDoc& document, TraceNotes& notes) {
  const TraceList_t& traces = document.m_traces;
  const auto has = [&](std::uint64_t place) {
    if (place < traces.size()) return true;
    PrintError(options.file + ": has no trace " + std::to_string(place));
    return false;
  };
  for (const auto& [place, colour] : options.marks) {
    if (!has(place)) return false;
    notes.Mark(place, traces[static_cast<std::size_t>(place)]->Record(), colour);
  }
  for (const auto& [place, note] : options.notes) {
    if (!has(place)) return false;
    notes.SetNote(place, traces[static_cast<std::size_t>(place)]->Record(), note);
  }
  return true;
}

bool Load(FileNotes& notes, const std::string& path, const CTraceFileDoc& document) {
  std::string why;
  if (notes.Load(path, TracesOf(document), &why)) return true;
  PrintError(why);
  return false;
}

}  // namespace

int RunNotes(const NotesOptions& options) {
  TerminalHost host;
  TraceInput input(host);
  if (!input.Open({options.file})) return StatusWithoutInput();
  const CTraceFileDoc& document = input.Document();
  FileNotes notes;
  if (!Load(notes, options.file, document)) return kExitBad;
  if (options.marks.empty() && options.notes.empty())
    return input.StatusOfAnswer(Print(document, notes, options.json));
  if (!Change(options, document, notes.Notes())) return kExitBad;
  if (!input.IsUnchanged(NotesPath(options.file))) return kExitBad;
  std::string why;
  if (notes.Save(TracesOf(document), options.replace, &why))
    return input.StatusWithDamage(kExitGood);
  PrintError(why + (notes.IsOfAnother() ? "; --replace replaces them" : ""));
  return kExitBad;
}

bool UseNotes(const TraceInput& input, const TraceOptions& options, ShownTraces& traces) {
  if (!options.where || !options.where->UsesMarks()) return true;
  const std::string* const path = input.OnlyPath();
  if (!path) {
    PrintError("--where: \"marked\" and \"note\" need one file, with its notes beside it");
    return false;
  }
  FileNotes notes;
  if (!Load(notes, *path, input.Document())) return false;
  if (notes.IsOfAnother()) PrintError(NotesPath(*path) + ": of another trace file, not applied");
  traces.UseMarks(notes.Notes().Shared());
  return true;
}
