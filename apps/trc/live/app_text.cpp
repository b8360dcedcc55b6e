#include "live/app_text.h"

#include <algorithm>
#include <map>

#include "base/json_text.h"
#include "base/near/near_word.h"
#include "terminal/exit_status.h"
#include "text/visible_text.h"

namespace {

const char* WordOf(trc_SinkTypes_e type) {
  switch (type) {
    case trc_SinkFile:
      return "file";
    case trc_SinkSocket:
      return "socket";
    default:
      return "unknown";
  }
}

void AppendSink(std::string& json, const std::optional<TcfSink>& sink, bool fromStart) {
  json.append(",\"sink\":");
  if (!sink) {
    json.append("null");
    return;
  }
  AppendField(json, "{\"type\":", WordOf(sink->type));
  AppendField(json, ",\"name\":", sink->name);
  AppendField(json, ",\"options\":", sink->options);
  if (fromStart) json.append(",\"from\":\"QUOR_SINK\"");
  json.push_back('}');
}

void AppendStart(std::string& json, const std::vector<trace_StartNote_t>& notes) {
  json.append(",\"start\":[");
  const char* between = "";
  for (const trace_StartNote_t& note : notes) {
    json.append(std::exchange(between, ",")).append("{\"process\":");
    AppendNumber(json, note.pid);
    AppendField(json, ",\"text\":", note.text);
    json.push_back('}');
  }
  json.push_back(']');
}

void AppendTrace(std::string& json, const ShownApp::Trace& trace) {
  AppendField(json, "{\"name\":", trace.category);
  if (trace.id) {
    json.append(",\"id\":");
    AppendNumber(json, *trace.id);
  }
  json.append(",\"settings\":");
  AppendNumber(json, trace.settings);
  AppendField(json, ",\"words\":", SettingsToLabel(trace.settings));
  if (trace.fromStart) json.append(",\"from\":\"QUOR_SETTINGS\"");
  json.push_back('}');
}

}  // namespace

ShownApp::ShownApp(const trace_App_i& app)
    : name(app.GetAppName()),
      sink(TcfSink()),
      sinkFromStart(app.IsSinkFromStart()),
      sinkTrouble(app.WhySinkFails()),
      kept(app.GetKept()),
      startNotes(app.GetStartNotes()) {
  app.GetSink(sink->type, sink->name, sink->options);
  for (const trace_Component_t& component : app.GetTraceMap()) {
    components.push_back({component.name, {}});
    for (const trace_Category_t& category : component.categories)
      components.back().traces.push_back({category.name, app.GetSettings(category.traceId),
                                          category.traceId, app.IsFromStart(category.traceId)});
  }
}

// The lines of a component may be apart in a file.
ShownApp::ShownApp(const TcfApp& app) : name(app.name), sink(app.sink) {
  std::map<std::string, std::size_t> places;
  for (const TcfTrace& trace : app.traces) {
    const auto [place, first] = places.emplace(trace.component, components.size());
    if (first) components.push_back({trace.component, {}});
    components[place->second].traces.push_back({trace.category, trace.settings, std::nullopt});
  }
}

void ShowAsText(const ShownApp& app, Output& output) {
  std::size_t width = 0;
  std::vector<std::pair<std::string, std::string>> rows;
  for (const ShownApp::Component& component : app.components) {
    for (const ShownApp::Trace& trace : component.traces) {
      rows.emplace_back(
          VisibleText(component.name + "/" + trace.category),
          SettingsToLabel(trace.settings) + (trace.fromStart ? "  from QUOR_SETTINGS" : ""));
      width = std::max(width, ScreenWidth(rows.back().first));
    }
  }
  output.Line("Application  " + VisibleText(app.name));
  output.Line("Sink         " + SinkText(app.sink) + (app.sinkFromStart ? "  from QUOR_SINK" : ""));
  if (!app.sinkTrouble.empty())
    output.Line("             cannot be reached: " + VisibleText(app.sinkTrouble));
  if (!app.kept.empty()) output.Line("Kept         " + VisibleText(app.kept));
  for (const trace_StartNote_t& note : app.startNotes)
    output.Line("Process " + std::to_string(note.pid) + "  " + VisibleText(note.text));
  for (const auto& [trace, words] : rows) {
    std::string line = trace;
    line.append(width - ScreenWidth(trace) + 2, ' ').append(words);
    output.Line(line);
  }
}

void AppendAppJson(std::string& json, const ShownApp& app) {
  AppendField(json, "{\"application\":", app.name);
  AppendSink(json, app.sink, app.sinkFromStart);
  if (!app.sinkTrouble.empty()) AppendField(json, ",\"sinkTrouble\":", app.sinkTrouble);
  if (!app.kept.empty()) AppendField(json, ",\"kept\":", app.kept);
  if (!app.startNotes.empty()) AppendStart(json, app.startNotes);
  json.append(",\"components\":[");
  const char* between = "";
  for (const ShownApp::Component& component : app.components) {
    json.append(std::exchange(between, ","));
    AppendField(json, "{\"name\":", component.name);
    json.append(",\"categories\":[");
    const char* comma = "";
    for (const ShownApp::Trace& trace : component.traces) {
      json.append(std::exchange(comma, ","));
      AppendTrace(json, trace);
    }
    json.append("]}");
  }
  json.append("]}");
}

void AppendField(std::string& json, std::string_view key, const std::string& text) {
  json.append(key);
  AppendJsonText(json, text);
}

std::string SinkText(const std::optional<TcfSink>& sink) {
  if (!sink) return "stays as it is";
  return std::string(WordOf(sink->type)) + " " + Quoted(sink->name) +
         (sink->options.empty() ? "" : " " + Quoted(sink->options));
}

std::string Quoted(const std::string& text) {
  return "\"" + VisibleText(text) + "\"";
}

int Unreachable(const std::string& why) {
  PrintError(why);
  return kExitBad;
}

int NoSuchApp(const std::string& app, const std::list<std::string>& known) {
  std::vector<std::string> shown;
  for (const std::string& other : known) shown.push_back(VisibleText(other));
  PrintError("there is no application " + Quoted(app) + DidYouMean(VisibleText(app), shown));
  return kExitNo;
}
