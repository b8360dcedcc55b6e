// A machine's configuration service without a process: applications with traces, and the handles of
// quor/client on them.
//
// Shape    A FakeMachine outlives its handles. Its log has a line per call that a real handle would
//          send to the machine: "connect", "list", "open orders", "submit orders", "refresh
//          orders".
// Owner    Handles are counted references, like the real ones; m_handles counts those that live.
// Threads  One.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "quor/client/trace_config.h"

class FakeMachine {
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
  };

  // A running application with a trace point per name, "Net/Connect" and such.
  App& Run(const std::string& name, const std::vector<std::string>& traces, unsigned settings = 0) {
    App& app = m_apps[name];
    app.instances = 1;
    for (const std::string& trace : traces) {
      const std::size_t slash = trace.find('/');
      app.traces.push_back({trace.substr(0, slash), trace.substr(slash + 1), ++m_lastId, settings});
    }
    return app;
  }
  // "Net/Connect=7 Net/Close=0", as the machine has it in force.
  std::string InForce(const std::string& name) const {
    std::string words;
    for (const Trace& trace : m_apps.at(name).traces)
      words += (words.empty() ? "" : " ") + trace.component + "/" + trace.category + "=" +
               std::to_string(trace.settings);
    return words;
  }

  // What the document asks in place of the static functions of the client's classes.
  trace_Config_i* Connect(const std::string& host, std::string* why);
  trace_App_i* Open(const std::string& app, std::string* why);

  std::map<std::string, App> m_apps;
  std::string m_host = "?";  // as the last connection gave it
  bool m_away = false;       // nothing can be reached
  bool m_refuses = false;    // a client that may change nothing
  bool m_refusesOpen = false;
  std::string m_log;
  int m_handles = 0;
  std::map<std::string, int> m_open;  // handles by application

 private:
  unsigned m_lastId = 0;
};

class FakeMachineApp final : public trace_App_i {
 public:
  FakeMachineApp(FakeMachine& machine, std::string name)
      : m_machine(machine), m_name(std::move(name)) {
    ++m_machine.m_handles;
    ++m_machine.m_open[m_name];
    Take();
  }
  ~FakeMachineApp() override {
    --m_machine.m_handles;
    if (--m_machine.m_open[m_name] == 0) m_machine.m_open.erase(m_name);
  }

  const std::string& GetAppName() const override { return m_name; }
  const std::list<trace_Component_t>& GetTraceMap() const override { return m_map; }
  unsigned GetSettings(unsigned traceId) const override {
    const auto known = m_settings.find(traceId);
    return known == m_settings.end() ? 0 : known->second;
  }
  void SetSettings(unsigned traceId, unsigned settings) override {
    const auto known = m_settings.find(traceId);
    if (known == m_settings.end()) return;
    known->second = settings;
    m_held.insert(traceId);
  }
  void SetAllTraces(unsigned settings) override {
    for (const auto& [traceId, word] : std::map(m_settings)) SetSettings(traceId, settings);
  }
  unsigned GetTraceId(const std::string& component, const std::string& category) const override {
    for (const trace_Component_t& known : m_map)
      for (const trace_Category_t& trace : known.categories)
        if (known.name == component && trace.name == category) return trace.traceId;
    return TRC_NO_TRACE_ID;
  }
  void GetSink(trc_SinkTypes_e& type, std::string& name, std::string& options) const override {
    type = m_state.sinkType;
    name = m_state.sinkName;
    options = m_state.sinkOptions;
  }
  void SetSink(trc_SinkTypes_e type, const std::string& name, const std::string& options) override {
    m_state.sinkType = type;
    m_state.sinkName = name;
    m_state.sinkOptions = options;
    m_sinkHeld = true;
  }
  bool Submit() const override {
    m_machine.m_log += "submit " + m_name + "\n";
    if (m_machine.m_away || m_machine.m_refuses) return false;
    FakeMachine::App& app = m_machine.m_apps[m_name];
    for (FakeMachine::Trace& trace : app.traces)
      if (m_held.contains(trace.id)) trace.settings = GetSettings(trace.id);
    m_held.clear();
    if (std::exchange(m_sinkHeld, false)) {
      app.sinkType = m_state.sinkType;
      app.sinkName = m_state.sinkName;
      app.sinkOptions = m_state.sinkOptions;
    }
    return true;
  }
  bool Refresh() override {
    m_machine.m_log += "refresh " + m_name + "\n";
    if (m_machine.m_away) return false;
    Take();
    return true;
  }

 private:
  void Take() {
    const auto known = m_machine.m_apps.find(m_name);
    m_state = known == m_machine.m_apps.end() ? FakeMachine::App() : known->second;
    m_map.clear();
    m_settings.clear();
    m_held.clear();
    m_sinkHeld = false;
    for (const FakeMachine::Trace& trace : m_state.traces) {
      if (m_map.empty() || m_map.back().name != trace.component)
        m_map.push_back({trace.component, {}});
      m_map.back().categories.push_back({trace.category, trace.id});
      m_settings[trace.id] = trace.settings;
    }
  }

  FakeMachine& m_machine;
  const std::string m_name;
  FakeMachine::App m_state;
  std::list<trace_Component_t> m_map;
  std::map<unsigned, unsigned> m_settings;
  mutable std::set<unsigned> m_held;
  mutable bool m_sinkHeld = false;
};

class FakeConfig final : public trace_Config_i {
 public:
  FakeConfig(FakeMachine& machine, std::string host) : m_machine(machine), m_host(std::move(host)) {
    ++m_machine.m_handles;
  }
  ~FakeConfig() override { --m_machine.m_handles; }

  const std::string& GetHostName() const override { return m_host; }
  const std::list<std::string>& GetAppList() const override {
    m_machine.m_log += "list\n";
    m_list.clear();
    m_answered = !m_machine.m_away;
    if (!m_answered) return m_list;
    std::set<std::string> names;
    for (const auto& [name, app] : m_machine.m_apps)
      if (app.instances > 0) names.insert(name);
    for (const auto& [name, handles] : m_machine.m_open) names.insert(name);
    m_list.assign(names.begin(), names.end());
    return m_list;
  }
  unsigned GetInstances(const std::string& app) const override {
    const auto known = m_machine.m_apps.find(app);
    return known == m_machine.m_apps.end() ? 0 : known->second.instances;
  }
  bool WasAnswered() const override { return m_answered; }
  bool IsUp() const override { return !m_machine.m_away; }

 private:
  FakeMachine& m_machine;
  const std::string m_host;
  mutable std::list<std::string> m_list;
  mutable bool m_answered = true;
};

inline trace_Config_i* FakeMachine::Connect(const std::string& host, std::string* why) {
  m_log += "connect " + host + "\n";
  m_host = host;
  if (m_away && why) *why = "no trace service there";
  return m_away ? nullptr : new FakeConfig(*this, host);
}

inline trace_App_i* FakeMachine::Open(const std::string& app, std::string* why) {
  m_log += "open " + app + "\n";
  const bool refused = m_away || m_refusesOpen;
  if (refused && why) *why = "no trace service there";
  return refused ? nullptr : new FakeMachineApp(*this, app);
}
