#include "config/tcf/tcf_config.h"

#include <algorithm>
#include <string_view>

#include "config/tcf/tcf_write.h"
#include "quor/settings/settings_words.h"

namespace {

unsigned KeptInFile(unsigned settings) {
  unsigned kept = 0;
  for (const SettingsWord& known : kSettingsWords) kept |= settings & known.bit;
  return kept;
}

std::string SinkLine(const TcfSink& sink) {
  return TcfSinkLine(sink.type, sink.name, sink.options);
}
std::string TraceLine(const TcfTrace& trace) {
  return TcfTraceLine(trace.component, trace.category, trace.settings);
}

// The lines of one application that differ.
class Difference {
 public:
  explicit Difference(std::vector<std::string>& lines) : m_lines(lines), m_begin(lines.size()) {}

  // A null stands for an application that one side lacks.
  void Take(const TcfApp* before, const TcfApp* after) {
    const std::string& name = (before ? before : after)->name;
    if (!before || !after) Line(before ? "- " : "+ ", TcfAppLine(name));
    TakeSinks(before, after);
    TakeTraces(before, after);
    if (before && after && m_lines.size() > m_begin)
      m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(m_begin),
                     "  " + TcfAppLine(name));
  }

 private:
  void Line(const char* mark, const std::string& line) { m_lines.push_back(mark + line); }

  void TakeSinks(const TcfApp* before, const TcfApp* after) {
    const std::optional<TcfSink> none;
    const std::optional<TcfSink>& had = before ? before->sink : none;
    const std::optional<TcfSink>& has = after ? after->sink : none;
    if (had == has) return;
    if (had) Line("- ", SinkLine(*had));
    if (has) Line("+ ", SinkLine(*has));
  }

  void TakeTraces(const TcfApp* before, const TcfApp* after) {
    const std::vector<TcfTrace> none;
    const std::vector<TcfTrace>& has = after ? after->traces : none;
    std::map<std::pair<std::string_view, std::string_view>, std::size_t> places;
    for (std::size_t i = 0; i < has.size(); ++i)
      places.emplace(
          std::pair<std::string_view, std::string_view>(has[i].component, has[i].category), i);
    std::vector<bool> seen(has.size());
    for (const TcfTrace& trace : before ? before->traces : none) {
      const auto place = places.find({trace.component, trace.category});
      const TcfTrace* const other = place == places.end() ? nullptr : &has[place->second];
      if (other) seen[place->second] = true;
      if (other && other->settings == trace.settings) continue;
      Line("- ", TraceLine(trace));
      if (other) Line("+ ", TraceLine(*other));
    }
    for (std::size_t i = 0; i < has.size(); ++i)
      if (!seen[i]) Line("+ ", TraceLine(has[i]));
  }

  std::vector<std::string>& m_lines;
  const std::size_t m_begin;
};

std::map<std::string, const TcfApp*> ByName(const TcfConfig& config) {
  std::map<std::string, const TcfApp*> apps;
  for (const TcfApp& app : config) apps.emplace(app.name, &app);
  return apps;
}

}  // namespace

bool TcfCollector::OnApp(const std::string& name) {
  m_current = m_apps.emplace(name, m_config.size()).first->second;
  if (m_current == m_config.size()) m_config.push_back({name, std::nullopt, {}});
  m_config[m_current].traces.clear();
  m_traces.clear();
  return true;
}

bool TcfCollector::OnSink(unsigned char type, const std::string& name, const std::string& options) {
  m_config[m_current].sink = {static_cast<trc_SinkTypes_e>(type), name, options};
  return true;
}

bool TcfCollector::OnTrace(const std::string& component, const std::string& category,
                           unsigned short settings) {
  std::vector<TcfTrace>& traces = m_config[m_current].traces;
  const auto [place, first] = m_traces.emplace(std::pair(component, category), traces.size());
  if (first) traces.push_back({component, category, 0});
  traces[place->second].settings = settings;
  return true;
}

void TcfCollector::OnAppEnd() {
  std::erase_if(m_config[m_current].traces,
                [](const TcfTrace& trace) { return trace.settings == 0; });
}

TcfConfig TcfConfigOf(const std::list<QuorPtr<trace_App_i>>& apps) {
  TcfConfig config;
  for (const QuorPtr<trace_App_i>& app : apps) {
    TcfSink sink;
    app->GetSink(sink.type, sink.name, sink.options);
    sink.options = TcfSinkOptions(sink.type, sink.name, std::move(sink.options));
    config.push_back({app->GetAppName(), std::move(sink), {}});
    for (const trace_Component_t& component : app->GetTraceMap())
      for (const trace_Category_t& category : component.categories)
        if (const unsigned settings = KeptInFile(app->GetSettings(category.traceId)))
          config.back().traces.push_back({component.name, category.name, settings});
  }
  return config;
}

bool ReplayTcf(const TcfConfig& config, TcfHandler& handler) {
  for (const TcfApp& app : config) {
    if (!handler.OnApp(app.name)) return false;
    if (app.sink && !handler.OnSink(static_cast<unsigned char>(app.sink->type), app.sink->name,
                                    app.sink->options))
      return false;
    for (const TcfTrace& trace : app.traces)
      if (!handler.OnTrace(trace.component, trace.category,
                           static_cast<unsigned short>(trace.settings)))
        return false;
    handler.OnAppEnd();
  }
  return true;
}

std::vector<TcfTrace> TracesUnknownTo(const trace_App_i& app, const TcfApp& config) {
  std::vector<TcfTrace> unknown;
  for (const TcfTrace& trace : config.traces)
    if ((app.GetTraceId(trace.component, trace.category) & TRC_NO_TRACE_ID) == TRC_NO_TRACE_ID)
      unknown.push_back(trace);
  return unknown;
}

std::vector<std::string> TcfDifference(const TcfConfig& before, const TcfConfig& after) {
  std::vector<std::string> lines;
  const std::map<std::string, const TcfApp*> had = ByName(before), has = ByName(after);
  for (const TcfApp& app : before) {
    const auto other = has.find(app.name);
    Difference(lines).Take(&app, other == has.end() ? nullptr : other->second);
  }
  for (const TcfApp& app : after)
    if (!had.contains(app.name)) Difference(lines).Take(nullptr, &app);
  return lines;
}
