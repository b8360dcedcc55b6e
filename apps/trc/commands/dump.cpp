#include "commands/dump.h"

#include <unistd.h>

#include "terminal/exit_status.h"
#include "terminal/interrupt.h"
#include "terminal/trace_file.h"

int RunDump(const DumpOptions& options) {
  TerminalHost host;
  const auto document = OpenTraceFile(host, options.file);
  if (!document) return Interrupted() ? kExitInterrupted : kExitBad;

  ShownTraces traces(*document);
  if (!traces.Filter(options.traces)) return kExitBad;
  if (isatty(STDOUT_FILENO) != 0) host.Progress().Silence();
  Output output;
  traces.OnLook([&](std::size_t place) {
    host.Progress().Show("Writing...", place, traces.All());
    return output.FlushWhenOld() && !Interrupted();
  });
  const DumpRange range{traces, traces.Limit(options.traces)};
  if (options.format == DumpFormat::Jsonl) {
    DumpAsJsonl(range, options.traces.utc, output, host.Progress());
  } else {
    DumpAsText(range, options, output, host.Progress());
  }
  host.Progress().Clear();
  return StatusOfAnswer(*document, options.file, output.Finish());
}
