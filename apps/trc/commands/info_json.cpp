#include <nlohmann/json.hpp>

#include "base/json_text.h"
#include "base/text.h"
#include "commands/info.h"
#include "records/moments/trace_moments.h"

namespace {

using Json = nlohmann::ordered_json;

Json Text(const std::string& bytes) {
  if (IsUtf8(bytes)) return bytes;
  std::string hex;
  AppendHex(hex, bytes);
  return {{"hex", hex}};
}

Json Time(TraceMoments& moments, std::uint64_t place, const TraceEvent_i* trace) {
  std::string time;
  return trace && moments.Append(time, place, *trace) ? Json(time) : Json();
}

Json Names(const NameMap& names) {
  Json list = Json::array();
  for (const auto& [id, entry] : names) list.push_back({{"id", id}, {"name", Text(entry.name)}});
  return list;
}

Json Processes(const ProcessMap& machines) {
  Json map = Json::object();
  for (const auto& [machine, processes] : machines) {
    Json& ofMachine = map[std::to_string(machine)] = Json::object();
    for (const auto& [process, threads] : processes) {
      ofMachine[std::to_string(process)] = threads;
    }
  }
  return map;
}

// {"id": traces}, in the order of first use.
Json Counts(const IdList& ids, const IdCounts& counts) {
  Json map = Json::object();
  for (const NameId id : ids.Ids()) map[std::to_string(id)] = counts[id];
  return map;
}

Json Severities(const FileInfo& info) {
  return {{"info", info.severities[0]},
          {"warn", info.severities[1]},
          {"error", info.severities[2]},
          {"other", info.otherSeverities}};
}

}  // namespace

std::string InfoAsJson(const FileInfo& info) {
  const CTraceFileDoc& document = *info.document;
  const TraceIndexes& seen = document.m_indexes;
  Json json;
  json["path"] = Text(info.path);
  json["size"] = document.FileSize();
  json["records"] = info.records;
  json["traces"] = document.m_traces.size();
  json["skippedBytes"] = document.Damage().skippedBytes;
  json["skippedPlaces"] = document.Damage().skippedPlaces;
  json["lastRecordCut"] = document.Damage().cutAt.has_value();
  TraceMoments moments(true);
  moments.Learn(document.m_traces);
  json["firstTime"] = Time(moments, info.earliestPlace, info.earliest);
  json["lastTime"] = Time(moments, info.latestPlace, info.latest);
  json["severities"] = Severities(info);
  json["names"] = Names(document.m_names);
  json["machines"] = seen.machines.Ids();
  json["applications"] = seen.applications.Ids();
  json["components"] = seen.components.Ids();
  json["categories"] = seen.categories.Ids();
  json["processes"] = seen.processIds.Ids();
  json["threads"] = seen.threadIds.Ids();
  json["files"] = seen.sourceFiles.Ids();
  json["processMap"] = Processes(seen.processes);
  json["tracesOf"] = {{"machines", Counts(seen.machines, info.machines)},
                      {"applications", Counts(seen.applications, info.applications)},
                      {"components", Counts(seen.components, info.components)},
                      {"categories", Counts(seen.categories, info.categories)}};
  return json.dump();
}
