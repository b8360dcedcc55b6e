#include "commands/save.h"

#include "base/new_file.h"
#include "commands/notes.h"
#include "filter/shown_traces.h"
#include "input/trace_input.h"
#include "notes/kept/saved_notes.h"
#include "records/trc_writer.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"

namespace {

// Reads the notes of the traces. False after a message: there are some, and those that are beside
// the new file would be lost.
bool ReadNotesToSave(const TraceInput& input, const SaveOptions& options, FileNotes& notes) {
  const std::string* const path = input.OnlyPath();
  if (!path) return true;
  const CTraceFileDoc& document = input.Document();
  std::string why;
  if (!notes.Load(*path, {document.FileBytes(), document.m_traces}, &why))
    PrintError(why + "; the traces are saved without them");
  if (notes.IsOfAnother())
    PrintError(NotesPath(*path) + ": of another trace file, not saved along");
  if (notes.Notes().empty() || options.replaceNotes) return true;
  const std::string there = NotesPath(options.out);
  if (!FileMark::At(there)) return true;
  PrintError(there + ": has marks and notes already; --replace-notes replaces them");
  return false;
}

// False when a write failed. An interrupt ends it early; `saved` counts the traces.
bool WriteTraces(ShownTraces& traces, const SaveOptions& options, TrcWriter& writer,
                 SavedNotes& notes, std::size_t& saved, ProgressLine& progress) {
  NameMap& names = traces.Document().m_names;
  ClearWrittenMarks(names);
  bool good = writer.WriteHeader();
  progress.Show("Saving...");
  const auto look = [&](std::size_t place) {
    progress.Show("Saving...", place, traces.All());
    return !Interrupted();
  };
  traces.OnLook(look);
  for (std::size_t row = traces.Limit(options.traces); good && traces.Has(row); ++row) {
    good = writer.Write(traces.At(row), names);
    notes.Add(traces.At(row));
    if (++saved % kTracesPerLook == 0 && !look(traces.PlaceOf(row))) break;
  }
  traces.OnLook({});
  progress.Clear();
  return good;
}

// The traces are there, whatever becomes of their notes.
int SaveNotes(const SaveOptions& options, SavedNotes& notes) {
  if (notes.empty()) return kExitGood;
  std::string why;
  const auto mayReplace = [&options](const std::string&) { return options.replaceNotes; };
  if (SaveNewNotes(options.out, notes.Take(), mayReplace, &why)) return kExitGood;
  PrintError(why + "; the traces are saved without their marks and notes");
  return kExitBad;
}

int Save(ShownTraces& traces, const TraceInput& input, const SaveOptions& options,
         const TraceNotes& of, ProgressLine& progress) {
  const std::string& path = options.out;
  const auto failed = [&path](const char* text, const std::string& why) {
    PrintError(path + ": " + text + (why.empty() ? "" : " " + why));
    return kExitBad;
  };
  std::string why;
  NewFile file;
  TrcWriter writer(TrcWriter::kBlockBytes);
  CatchEndSignals();
  if (!file.Begin(path, &why) || !writer.Create(file.WriteTo(), &why))
    return failed("Error creating file.", why);
  std::size_t saved = 0;
  SavedNotes notes(of);
  const bool good = WriteTraces(traces, options, writer, notes, saved, progress);
  // The last bytes leave the buffer only at the end, and a full disk may show only then.
  if (!writer.Finish() || !good) return failed("Error writing to file.", writer.Why());
  if (Interrupted()) {
    PrintError(path + ": interrupted after " + std::to_string(saved) + " traces, and not written");
    return kExitInterrupted;
  }
  if (!input.IsUnchanged(path)) return kExitBad;
  if (!file.Finish(&why)) return failed("Error creating file.", why);
  return SaveNotes(options, notes);
}

}  // namespace

int RunSave(const SaveOptions& options) {
  TerminalHost host;
  TraceInput input(host);
  if (!input.Open(options.in)) return StatusWithoutInput();
  ShownTraces traces(input.Document());
  if (!UseNotes(input, options.traces, traces) || !traces.Filter(options.traces)) return kExitBad;
  FileNotes notes;
  if (!ReadNotesToSave(input, options, notes)) return kExitBad;
  return input.StatusWithDamage(Save(traces, input, options, notes.Notes(), host.Progress()));
}
