#include "commands/dump.h"
#include "records/json/trace_json.h"

void DumpAsJsonl(const DumpRange& range, bool utc, Output& output, ProgressLine& progress) {
  TraceMoments moments(utc);
  moments.Learn(range.traces.Document().m_traces);
  TraceJson json(range.Names(), moments);
  for (std::size_t i = range.from; range.Has(i); ++i) {
    json.Append(output.Buffer(), range.traces.PlaceOf(i), range.traces.At(i),
                range.traces.IsBeside(i));
    if (!output.EndLine()) return;
    if ((i - range.from) % kTracesPerLook == 0)
      progress.Show("Writing...", range.traces.PlaceOf(i), range.traces.All());
  }
}
