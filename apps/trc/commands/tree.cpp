#include "commands/tree.h"

#include "commands/new_text_file.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/output.h"
#include "terminal/trace_file.h"
#include "text/visible_text.h"
#include "tree/proc/model/proc_build.h"

namespace {

constexpr unsigned kLinesPerLook = 4096;

std::vector<const CTraceEvent*> MachinesOf(const ProcModel& model, const TreeOptions& options) {
  std::vector<const CTraceEvent*> machines;
  const ChildList& all = model.Root().children;
  for (std::size_t i = 0; i < all.size(); ++i)
    if (options.machine.empty() || model.NodeLabel(*all[i]) == options.machine)
      machines.push_back(all[i]);
  return machines;
}

int Print(const ProcModel& model, const TreeOptions& options) {
  const std::vector<const CTraceEvent*> machines = MachinesOf(model, options);
  if (machines.empty() && !options.machine.empty()) {
    PrintError("there are no traces of a machine \"" + options.machine + "\" in " + options.file);
    return kExitBad;
  }
  Output output;
  bool goesOn = true;
  const auto print = [&](int depth, bool closed, const std::string& text) {
    AppendTreeLine(output.Buffer(), depth, closed, VisibleText(text));
    return goesOn = output.EndLine();
  };
  for (const CTraceEvent* machine : machines)
    if (goesOn) VisitNodes(model, *machine, options.depth, print);
  return output.Finish();
}

int Export(const ProcModel& model, const CTraceFileDoc& document, const TreeOptions& options,
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
  if (!Interrupted() && !IsUnchanged(document, options.file, options.out)) return kExitBad;
  return StatusWithDamage(document, file.Finish());
}

// False after an interrupt.
bool Build(const CTraceDoc& document, ProcModel& model, ProgressLine& progress) {
  constexpr std::uint64_t kWhole = 1000;
  ProcBuild build(document, model);
  while (!Interrupted() && !build.DoPart())
    progress.Show("Building the tree...", static_cast<std::uint64_t>(*build.Progress()), kWhole);
  progress.Clear();
  return !Interrupted();
}

}  // namespace

int RunTree(const TreeOptions& options) {
  TerminalHost host;
  const auto document = OpenTraceFile(host, options.file);
  if (!document) return Interrupted() ? kExitInterrupted : kExitBad;
  CTraceFilter filter;
  std::string why;
  if (!options.filter.Apply(*document, filter, &why)) {
    PrintError(why);
    return kExitBad;
  }
  ProcModel model(*document, filter);
  if (!Build(*document, model, host.Progress())) return kExitInterrupted;
  if (!options.out.empty()) return Export(model, *document, options, host.Progress());
  const int status = Print(model, options);
  return StatusOfAnswer(*document, options.file,
                        status == kExitGood && Interrupted() ? kExitInterrupted : status);
}
