#include "dump.h"
#include "json_text.h"

namespace {

constexpr std::size_t kTracesPerLook = 4096;

class JsonlDump {
 public:
  explicit JsonlDump(const NameMap& names) : m_names(65536, "null") {
    for (const auto& [id, entry] : names) {
      m_names[id].clear();
      AppendJsonText(m_names[id], entry.name);
    }
  }

  void AppendTrace(std::string& json, std::size_t index, const TraceEvent_i& trace) const {
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

 private:
  static void AppendTime(std::string& json, const TraceEvent_i& trace) {
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
  void AppendName(std::string& json, std::string_view key, NameId id) const {
    json.append(key);
    json.append(m_names[id]);
  }

  std::vector<std::string> m_names;  // as JSON, by id; null for those that the map lacks
};

}  // namespace

void DumpAsJsonl(const DumpRange& range, Output& output, ProgressLine& progress) {
  const JsonlDump dump(range.document.m_names);
  for (std::size_t i = range.from; i < range.to; ++i) {
    dump.AppendTrace(output.Buffer(), i, *range.document.m_traces[i]);
    if (!output.EndLine()) return;
    const std::size_t done = i - range.from;
    if (done % kTracesPerLook == 0) progress.Show("Writing...", done, range.to - range.from);
  }
}
