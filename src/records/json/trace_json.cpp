#include "records/json/trace_json.h"

#include <initializer_list>
#include <utility>

#include "base/json_text.h"
#include "records/process_name.h"

namespace {

void AppendArray(std::string& json, std::string_view key, std::initializer_list<unsigned> numbers) {
  json.append(key);
  char before = '[';
  for (const unsigned number : numbers) {
    json.push_back(std::exchange(before, ','));
    AppendNumber(json, number);
  }
  json.push_back(']');
}

}  // namespace

void TraceJson::Append(std::string& json, std::uint64_t index, const TraceEvent_i& trace,
                       bool beside) {
  json.append("{\"i\":");
  AppendNumber(json, index);
  json.append(",\"count\":");
  AppendNumber(json, trace.GetSequenceNumber());
  AppendTime(json, index, trace);
  json.append(",\"tic\":");
  AppendNumber(json, trace.GetTicCount());
  AppendName(json, ",\"machine\":", trace.GetMachineId());
  AppendName(json, ",\"application\":", trace.GetAppId());
  AppendName(json, ",\"component\":", trace.GetComponentId());
  AppendName(json, ",\"category\":", trace.GetCategoryId());
  AppendProcess(json, trace.GetPidId());
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
  json.append(beside ? ",\"context\":true}" : "}");
}

void TraceJson::ForgetIds() {
  m_known.assign(kNameIds, {});
  m_processes.clear();
}

// What no calendar has is given as it is stored, so that nothing is lost.
void TraceJson::AppendTime(std::string& json, std::uint64_t index, const TraceEvent_i& trace) {
  const std::size_t before = json.size();
  json.append(",\"time\":\"");
  if (m_moments.Append(json, index, trace)) {
    json.push_back('"');
    return;
  }
  json.resize(before);
  const auto [year, month, day] = UnpackDate(trace.GetDate());
  const auto [hour, minute, second, ms] = UnpackTime(trace.GetTime());
  AppendArray(json, ",\"date\":", {year, month, day});
  AppendArray(json, ",\"time\":", {hour, minute, second, ms});
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

void TraceJson::AppendProcess(std::string& json, NameId id) {
  if (m_processes.size() <= id) m_processes.resize(id + std::size_t{1});
  std::string& known = m_processes[id];
  if (known.empty()) {
    const auto entry = m_names.find(id);
    if (entry == m_names.end()) {
      json.append(",\"pid\":null");
      return;
    }
    const ProcessName name = ProcessName::Of(entry->second.name);
    known.append(",\"pid\":");
    AppendJsonText(known, name.process);
    if (!name.account.empty()) {
      known.append(",\"account\":");
      AppendJsonText(known, name.account);
    }
  }
  json.append(known);
}
