#include "trace_json.h"

#include "json_text.h"

void TraceJson::Append(std::string& json, std::uint64_t index, const TraceEvent_i& trace) {
  json.append("{\"i\":");
  AppendNumber(json, index);
  json.append(",\"count\":");
  AppendNumber(json, trace.GetSequenceNumber());
  AppendTime(json, trace);
  json.append(",\"tic\":");
  AppendNumber(json, trace.GetTicCount());
  AppendName(json, ",\"machine\":", trace.GetMachineId());
  AppendName(json, ",\"application\":", trace.GetAppId());
  AppendName(json, ",\"component\":", trace.GetComponentId());
  AppendName(json, ",\"category\":", trace.GetCategoryId());
  AppendName(json, ",\"pid\":", trace.GetPidId());
  AppendName(json, ",\"tid\":", trace.GetTidId());
  json.append(",\"attributes\":");
  AppendNumber(json, trace.GetAttributes());
  AppendName(json, ",\"file\":", trace.GetSourceFileId());
  json.append(",\"line\":");
  AppendNumber(json, trace.GetSourceLine());
  json.append(",\"text\":");
  AppendJsonText(json, trace.GetText());
  json.append(",\"stack\":");
  AppendJsonText(json, trace.GetStack());
  json.push_back('}');
}

void TraceJson::AppendTime(std::string& json, const TraceEvent_i& trace) {
  const UnpackedDate date = UnpackDate(trace.GetDate());
  const UnpackedTime time = UnpackTime(trace.GetTime());
  json.append(",\"date\":[");
  AppendNumber(json, date.year);
  json.push_back(',');
  AppendNumber(json, date.month);
  json.push_back(',');
  AppendNumber(json, date.day);
  json.append("],\"time\":[");
  AppendNumber(json, time.hour);
  json.push_back(',');
  AppendNumber(json, time.minute);
  json.push_back(',');
  AppendNumber(json, time.second);
  json.push_back(',');
  AppendNumber(json, time.ms);
  json.push_back(']');
}

void TraceJson::AppendName(std::string& json, std::string_view key, NameId id) {
  json.append(key);
  std::string& known = m_known[id];
  if (known.empty()) {
    const auto entry = m_names.find(id);
    if (entry == m_names.end()) {
      json.append("null");
      return;
    }
    AppendJsonText(known, entry->second.name);
  }
  json.append(known);
}
