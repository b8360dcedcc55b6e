#include "commands/tree.h"

#include "commands/new_text_file.h"
#include "commands/notes.h"
#include "commands/tree_json.h"
#include "input/trace_input.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "text/visible_text.h"
#include "tree/proc/model/proc_model.h"

namespace {

constexpr unsigned kLinesPerLook = 4096;
constexpr const char* kBuilding = "Building the tree...";

int PrintJson(const ProcModel& model, ShownTraces& traces, std::size_t first,
              const TreeOptions& options) {
  Output output;
  TraceMoments moments(options.traces.utc);
  moments.Learn(traces.Document().m_traces);
  TreeJson json(model, traces.Document().m_names, moments, output);
  for (std::size_t row = first; traces.Has(row); ++row)
    json.Note(traces.At(row), traces.PlaceOf(row));
  const ChildList& machines = model.Root().children;
  for (std::size_t i = 0; i < machines.size(); ++i)
    if (!json.Write(*machines[i], options.depth)) break;
  return output.Finish();
}

int Print(const ProcModel& model, const TreeOptions& options) {
  Output output;
  bool goesOn = true;
  const auto print = [&](int depth, bool closed, const std::string& text) {
    AppendTreeLine(output.Buffer(), depth, closed, VisibleText(text));
    return goesOn = output.EndLine();
  };
  const ChildList& machines = model.Root().children;
  for (std::size_t i = 0; goesOn && i < machines.size(); ++i)
    VisitNodes(model, *machines[i], options.depth, print);
  return output.Finish();
}

int Export(const ProcModel& model, const TraceInput& input, const TreeOptions& options,
           ProgressLine& progress) {
  NewTextFile file;
  if (!file.Open(options.out)) return kExitBad;
  // There are few nodes above the traces, and only the first machine's traces are written: the
  // progress may not reach its end.
  const auto all = static_cast<std::uint64_t>(model.Root().traceCount);
  std::uint64_t lines = 0;
  progress.Show("Writing...");
  const auto write = [&](int depth, bool closed, const std::string& text) {
    AppendTreeLine(file.Lines().Buffer(), depth, closed, text);
    if (++lines % kLinesPerLook == 0) progress.Show("Writing...", lines, all);
    return file.Lines().EndLine() && (lines % kLinesPerLook != 0 || !Interrupted());
  };
  if (!model.Root().children.empty())
    VisitNodes(model, *model.Root().children[0], kAllLevels, write);
  progress.Clear();
  if (!Interrupted() && !input.IsUnchanged(options.out)) return kExitBad;
  return input.StatusWithDamage(file.Finish());
}

// False after an interrupt.
bool Build(ShownTraces& traces, std::size_t first, ProcModel& model, ProgressLine& progress) {
  {
    const ProcModel::Batch batch(model);
    for (std::size_t row = first; traces.Has(row); ++row) {
      model.AddTrace(&traces.At(row), false);
      if (row % kTracesPerLook != 0) continue;
      progress.Show(kBuilding, traces.PlaceOf(row), traces.All());
      if (Interrupted()) break;
    }
    for (std::size_t part = 0; !Interrupted() && model.UpdateDurations(part); ++part) {
    }
  }
  progress.Clear();
  return !Interrupted();
}

}  // namespace

int RunTree(const TreeOptions& options) {
  TerminalHost host;
  TraceInput input(host);
  if (!input.Open(options.files)) return StatusWithoutInput();
  ShownTraces traces(input.Document());
  if (!UseNotes(input, options.traces, traces) || !traces.Filter(options.traces)) return kExitBad;
  CTraceFilter all;
  ProcModel model(input.Document(), all);
  traces.OnLook([&](std::size_t place) {
    host.Progress().Show(kBuilding, place, traces.All());
    return !Interrupted();
  });
  const std::size_t first = traces.Limit(options.traces);
  if (!Build(traces, first, model, host.Progress())) return kExitInterrupted;
  if (!options.out.empty()) return Export(model, input, options, host.Progress());
  const int status =
      options.json ? PrintJson(model, traces, first, options) : Print(model, options);
  return input.StatusOfAnswer(status == kExitGood && Interrupted() ? kExitInterrupted : status);
}
