#include "tree.h"

#include "exit_status.h"
#include "interrupt.h"
#include "listview/export/export_file.h"
#include "output.h"
#include "trace_file.h"
#include "visible_text.h"

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
    Complain("there are no traces of a machine \"" + options.machine + "\" in " + options.file);
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

// The words are those of the desktop's export.
int Export(const ProcModel& model, const TreeOptions& options, TerminalHost& host) {
  const auto failed = [&host](const char* text) {
    host.MessageBox({text, BoxIcon::None, BoxButtons::Ok});
    return kExitBad;
  };
  ExportFile file;
  host.SetSubject(options.out);
  if (!file.Open(options.out)) return failed("Error opening output file.");
  unsigned lines = 0;
  const auto write = [&](int depth, bool closed, const std::string& text) {
    AppendTreeLine(file.Buffer(), depth, closed, text);
    return file.EndLine() && (++lines % kLinesPerLook != 0 || !Interrupted());
  };
  if (!model.Root().children.empty())
    VisitNodes(model, *model.Root().children[0], kAllLevels, write);
  return file.Close() ? kExitGood : failed("Error writing to file.");
}

}  // namespace

int RunTree(const TreeOptions& options) {
  TerminalHost host;
  const auto document = OpenTraceFile(host, options.file);
  if (!document) return Interrupted() ? kExitInterrupted : kExitBad;
  CTraceFilter filter;
  std::string why;
  if (!options.filter.Apply(*document, filter, &why)) {
    Complain(why);
    return kExitBad;
  }
  ProcModel model(*document, filter);
  model.AddAll();
  const int status = options.out.empty() ? Print(model, options) : Export(model, options, host);
  return StatusWithDamage(*document,
                          status == kExitGood && Interrupted() ? kExitInterrupted : status);
}
