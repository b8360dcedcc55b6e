// An application's sink and traces as text and as JSON, of a machine or of a .tcf file.
//
// Threads  Pure, but for what asks a handle: one.
#pragma once

#include <list>
#include <optional>
#include <string>
#include <vector>

#include "config/tcf/tcf_config.h"
#include "terminal/output.h"

struct ShownApp {
  struct Trace {
    std::string category;
    unsigned settings = 0;
    std::optional<unsigned> id;  // a file has none
    bool fromStart = false;
  };
  struct Component {
    std::string name;
    std::vector<Trace> traces;
  };
  explicit ShownApp(const trace_App_i& app);
  explicit ShownApp(const TcfApp& app);

  std::string name;
  std::optional<TcfSink> sink;
  bool sinkFromStart = false;
  std::string sinkTrouble, kept;
  std::vector<trace_StartNote_t> startNotes;
  std::vector<Component> components;
};

void ShowAsText(const ShownApp& app, Output& output);
// One object: application, sink (null when a file names none), components.
void AppendAppJson(std::string& json, const ShownApp& app);
// The text as JSON behind the key, which has its own comma and colon.
void AppendField(std::string& json, std::string_view key, const std::string& text);

// "socket "localhost"": its kind, its name and its options if it has some.
std::string SinkText(const std::optional<TcfSink>& sink);
// Visible, in quotes.
std::string Quoted(const std::string& text);
// Messages on standard error, and the exit status.
int Unreachable(const std::string& why);
int NoSuchApp(const std::string& app, const std::list<std::string>& known);
