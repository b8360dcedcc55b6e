#include "dump.h"

#include <unistd.h>

#include <algorithm>

#include "exit_status.h"
#include "interrupt.h"
#include "trace_file.h"

int RunDump(const DumpOptions& options) {
  TerminalHost host;
  const auto document = OpenTraceFile(host, options.file);
  if (!document) return Interrupted() ? kExitInterrupted : kExitBad;

  const std::uint64_t traces = document->m_traces.size();
  const std::uint64_t from = std::min(options.from, traces);
  const std::uint64_t to = from + std::min(options.count, traces - from);
  const DumpRange range{*document, static_cast<std::size_t>(from), static_cast<std::size_t>(to)};

  if (isatty(STDOUT_FILENO) != 0) host.Progress().Silence();
  Output output;
  if (options.format == DumpFormat::Jsonl) {
    DumpAsJsonl(range, output, host.Progress());
  } else {
    DumpAsText(range, options, output, host.Progress());
  }
  host.Progress().Clear();
  return output.Finish();
}
