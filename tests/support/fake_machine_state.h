// What a machine without a process knows of its applications; FakeMachine makes the handles on it.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "quor/client/trace_config.h"

class FakeMachineState {
 public:
  struct Trace {
    std::string component, category;
    unsigned id = 0, settings = 0;
  };
  struct App {
    std::vector<Trace> traces;  // of one component one after the other
    trc_SinkTypes_e sinkType = trc_SinkSocket;
    std::string sinkName = "localhost", sinkOptions;
    unsigned instances = 0;  // that run
    std::vector<trace_StartNote_t> startNotes;
    std::string sinkTrouble, kept;
    bool prepared = false;   // submitted, and no instance has run since
    std::vector<App> first;  // as it was before the first Submit; empty: nothing was submitted
  };

  // A running application with a trace point per name, "Net/Connect" and such.
  App& Run(const std::string& name, const std::vector<std::string>& traces, unsigned settings = 0) {
    App& app = m_apps[name];
    Begin(name);
    for (const std::string& trace : traces) {
      const std::size_t slash = trace.find('/');
      app.traces.push_back({trace.substr(0, slash), trace.substr(slash + 1), ++m_lastId, settings});
    }
    return app;
  }
  // An instance of an application that the machine knows, and its end.
  void Begin(const std::string& name) {
    m_apps[name].instances = 1;
    m_apps[name].prepared = false;
  }
  void End(const std::string& name) {
    m_apps[name].instances = 0;
    Release(name);
  }
  // "Net/Connect=7 Net/Close=0", as the machine has it in force.
  std::string InForce(const std::string& name) const {
    std::string words;
    for (const Trace& trace : m_apps.at(name).traces)
      words += (words.empty() ? "" : " ") + trace.component + "/" + trace.category + "=" +
               std::to_string(trace.settings);
    return words;
  }

  std::map<std::string, App> m_apps;
  std::string m_host = "?";  // as the last connection gave it
  bool m_away = false;       // nothing can be reached
  bool m_waited = false;     // and a question has found that
  bool m_refuses = false;    // takes no Submit
  int m_refusesNext = 0;     // so many Submits
  bool m_refusesOpen = false;
  int m_openMax = 1024;       // so many handles on applications
  bool m_listIsLate = false;  // the answer to a list comes after its deadline
  std::string m_log;
  std::function<void(const std::string& question)> m_onAsked = [](const std::string&) {};
  std::function<void()> m_onSubmit = [] {};  // what happens while a Submit waits for its answer
  int m_handles = 0;
  std::map<std::string, int> m_open;  // handles by application
  static constexpr std::size_t kSinkTextMax = 4096;

  // A call that a real handle would send.
  void Ask(const std::string& question) {
    m_log += question + "\n";
    m_onAsked(question);
  }
  // A question comes: false when nobody answers.
  bool Answers() {
    m_waited = m_away;
    return !m_away;
  }
  bool Refuses() {
    if (m_refusesNext == 0) return m_refuses;
    --m_refusesNext;
    return true;
  }
  bool RefusesOpen() const {
    int open = 0;
    for (const auto& [name, handles] : m_open) open += handles;
    return m_refusesOpen || open >= m_openMax;
  }
  bool IsSilent() const { return m_away && m_waited; }
  bool IsHeld(const std::string& name) const {
    const auto known = m_apps.find(name);
    return m_open.contains(name) || (known != m_apps.end() && known->second.instances > 0);
  }
  // With the last holder what it first had returns, unless it waits for the next instance.
  void Release(const std::string& name) {
    const auto known = m_apps.find(name);
    if (known == m_apps.end() || IsHeld(name)) return;
    App& app = known->second;
    if (app.prepared || app.first.empty()) return;
    const App first = app.first.front();
    for (Trace& trace : app.traces)
      for (const Trace& had : first.traces)
        if (had.id == trace.id) trace.settings = had.settings;
    app.sinkType = first.sinkType;
    app.sinkName = first.sinkName;
    app.sinkOptions = first.sinkOptions;
    app.first.clear();
  }

 private:
  unsigned m_lastId = 0;
};
