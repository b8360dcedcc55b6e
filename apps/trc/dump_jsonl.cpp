#include "dump.h"
#include "trace_json.h"

void DumpAsJsonl(const DumpRange& range, Output& output, ProgressLine& progress) {
  TraceJson json(range.Names());
  for (std::size_t i = range.from; i < range.to; ++i) {
    json.Append(output.Buffer(), range.traces.PlaceOf(i), range.traces.At(i));
    if (!output.EndLine()) return;
    const std::size_t done = i - range.from;
    if (done % kTracesPerLook == 0) progress.Show("Writing...", done, range.to - range.from);
  }
}
