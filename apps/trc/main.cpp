#include "command_line.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"

int main(int argc, char** argv) {
  CatchSignals();
  const ParsedCommandLine line = ParseCommandLine(argc, argv);
  if (!line.command) return line.status;
  struct Run {
    int operator()(const GenOptions& options) const { return RunGen(options); }
    int operator()(const InfoOptions& options) const { return RunInfo(options); }
    int operator()(const DumpOptions& options) const { return RunDump(options); }
    int operator()(const SaveOptions& options) const { return RunSave(options); }
    int operator()(const ConvertOptions& options) const { return RunConvert(options); }
    int operator()(const ExportOptions& options) const { return RunExport(options); }
    int operator()(const FindOptions& options) const { return RunFind(options); }
    int operator()(const TreeOptions& options) const { return RunTree(options); }
    int operator()(const LiveCommand& run) const { return run(); }
  };
  const int status = std::visit(Run{}, *line.command);
  return status == kExitInterrupted && Interrupted() ? InterruptedStatus() : status;
}
