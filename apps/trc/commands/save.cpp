#include "commands/save.h"

#include "base/new_file.h"
#include "commands/notes.h"
#include "filter/shown_traces.h"
#include "input/trace_input.h"
#include "records/trc_writer.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"

namespace {

// False when a write failed. An interrupt ends it early; `saved` counts the traces.
bool WriteTraces(ShownTraces& traces, const SaveOptions& options, TrcWriter& writer,
                 std::size_t& saved, ProgressLine& progress) {
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
    if (++saved % kTracesPerLook == 0 && !look(traces.PlaceOf(row))) break;
  }
  traces.OnLook({});
  progress.Clear();
  return good;
}

int Save(ShownTraces& traces, const TraceInput& input, const SaveOptions& options,
         ProgressLine& progress) {
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
  const bool good = WriteTraces(traces, options, writer, saved, progress);
  // The last bytes leave the buffer only at the end, and a full disk may show only then.
  if (!writer.Finish() || !good) return failed("Error writing to file.", writer.Why());
  if (Interrupted()) {
    PrintError(path + ": interrupted after " + std::to_string(saved) + " traces, and not written");
    return kExitInterrupted;
  }
  if (!input.IsUnchanged(path)) return kExitBad;
  return file.Finish(&why) ? kExitGood : failed("Error creating file.", why);
}

}  // namespace

int RunSave(const SaveOptions& options) {
  TerminalHost host;
  TraceInput input(host);
  if (!input.Open(options.in)) return StatusWithoutInput();
  ShownTraces traces(input.Document());
  if (!UseNotes(input, options.traces, traces) || !traces.Filter(options.traces)) return kExitBad;
  return input.StatusWithDamage(Save(traces, input, options, host.Progress()));
}
