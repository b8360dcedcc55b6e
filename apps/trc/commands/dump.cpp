#include "commands/dump.h"

#include <unistd.h>

#include "commands/follow.h"
#include "commands/notes.h"
#include "input/trace_input.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"

int RunDump(const DumpOptions& options) {
  if (options.traces.follow) return RunFollow(options);
  TerminalHost host;
  TraceInput input(host);
  if (!input.Open(options.files)) return StatusWithoutInput();

  ShownTraces traces(input.Document());
  if (!UseNotes(input, options.traces, traces) || !traces.Filter(options.traces)) return kExitBad;
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
  return input.StatusOfAnswer(output.Finish());
}
