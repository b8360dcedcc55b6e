#include <fmt/format.h>

#include <memory>

#include "base/json_text.h"
#include "commands/stats.h"
#include "records/moments/trace_moments.h"
#include "terminal/output.h"

void AppendJsonTime(std::string& json, WhereStamp stamp, TraceMoments& moments) {
  const std::unique_ptr<TraceEvent_i, void (*)(TraceEvent_i*)> trace(
      TraceEvent_i::Create(0, 0, 0, 0, 0, static_cast<std::uint32_t>(stamp >> 32),
                           static_cast<std::uint32_t>(stamp), 0, 0, 0, 0, 0, 0, {}, {}),
      ReleaseTrace);
  std::string time;
  if (moments.Append(time, 0, *trace))
    json.append("\"").append(time).append("\"");
  else
    json.append("null");
}

namespace {

void AppendRow(std::string& json, const StatsTable& table, const StatRow& row,
               TraceMoments& moments) {
  json.append("{\"by\":\"").append(WordOf(table.field)).append("\",\"value\":");
  if (row.isOthers)
    json.append("null");
  else
    AppendJsonText(json, row.value);
  json.append(",\"count\":");
  AppendNumber(json, row.tally.count);
  json.append(fmt::format(",\"share\":{}", row.share));
  json.append(",\"perSecond\":").append(row.rate ? fmt::format("{}", *row.rate) : "null");
  json.append(",\"first\":");
  AppendJsonTime(json, row.tally.first, moments);
  json.append(",\"last\":");
  AppendJsonTime(json, row.tally.last, moments);
  json.append(",\"where\":");
  const std::optional<std::string> where =
      row.isOthers ? std::nullopt : OnlyThisValue(table.field, row.key, table.names);
  if (where)
    AppendJsonText(json, *where);
  else
    json.append("null");
  json.push_back('}');
}

}  // namespace

bool WriteStatsAsJson(const StatsTable& table, const StatsOptions& options, Output& output) {
  TraceMoments moments(options.traces.utc);
  for (std::size_t i = 0; i < table.rows.size(); ++i) {
    if (options.top > 0 && i >= options.top) break;
    AppendRow(output.Buffer(), table, table.rows[i], moments);
    if (!output.EndLine()) return false;
  }
  return true;
}
