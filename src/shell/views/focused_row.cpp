#include "shell/views/focused_row.h"

#include "notes/fingerprint.h"
#include "records/trace_event.h"

namespace {

// So many on each side: some milliseconds.
constexpr std::size_t kNear = 20'000;

bool IsSame(const TraceEvent_i& trace, std::uint64_t print) {
  return trace.Record() && PrintOfRecord(trace.Record()) == print;
}

}  // namespace

// The records of a mapped file are in the order of their addresses.
std::optional<ViewRow> RowOf(const TraceEvent_i* trace, const TraceList_t& traces) {
  const std::uint8_t* const record = trace ? trace->Record() : nullptr;
  if (!record) return std::nullopt;
  std::size_t from = 0, end = traces.size();
  while (from < end) {
    const std::size_t middle = from + (end - from) / 2;
    const std::uint8_t* const other = traces[middle]->Record();
    if (!other) return std::nullopt;
    if (other < record)
      from = middle + 1;
    else
      end = middle;
  }
  if (from == traces.size() || traces[from] != trace) return std::nullopt;
  return ViewRow{from, PrintOfRecord(record)};
}

TraceEvent_i* FindRow(const ViewRow& row, const TraceList_t& traces) {
  if (row.row >= traces.size()) return nullptr;
  const auto number = static_cast<std::size_t>(row.row);
  for (std::size_t away = 0; away <= kNear; ++away) {
    if (number + away < traces.size() && IsSame(*traces[number + away], row.print))
      return traces[number + away];
    if (away <= number && IsSame(*traces[number - away], row.print)) return traces[number - away];
  }
  return traces[number];
}
