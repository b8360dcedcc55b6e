// A machine's configuration service without a process: applications with traces, and the handles of
// quor/client on them.
//
// Shape    A FakeMachine outlives its handles. Its log has a line per call that a real handle would
//          send to the machine: "connect", "list", "open orders", "look orders", "submit orders",
//          "refresh orders". What was submitted is in force as long as an instance runs or a handle
//          is open, as on a real machine: tests/quor/config runs the contract for both.
// Owner    Handles are counted references, like the real ones; m_handles counts those that live.
// Threads  One.
#pragma once

#include <algorithm>
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

  // What the document asks in place of the static functions of the client's classes.
  trace_Config_i* Connect(const std::string& host, std::string* why);
  trace_App_i* Open(const std::string& app, std::string* why);
  trace_App_i* Look(const std::string& app, std::string* why);

  std::map<std::string, App> m_apps;
  std::string m_host = "?";  // as the last connection gave it
  bool m_away = false;       // nothing can be reached
  bool m_refuses = false;    // takes no Submit
  bool m_refusesOpen = false;
  std::string m_log;
  int m_handles = 0;
  std::map<std::string, int> m_open;  // handles by application
  static constexpr std::size_t kSinkTextMax = 4096;

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

class FakeMachineApp final : public trace_App_i {
 public:
  // `holds`: else it only looks.
  FakeMachineApp(FakeMachine& machine, std::string name, bool holds)
      : m_machine(machine), m_name(std::move(name)), m_holds(holds) {
    ++m_machine.m_handles;
    if (m_holds) ++m_machine.m_open[m_name];
    Take();
  }
  ~FakeMachineApp() override {
    --m_machine.m_handles;
    if (!m_holds || --m_machine.m_open[m_name] > 0) return;
    m_machine.m_open.erase(m_name);
    m_machine.Release(m_name);
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
    if (m_machine.m_away || m_machine.m_refuses || !m_machine.IsHeld(m_name)) return false;
    if (m_sinkHeld &&
        std::max(m_state.sinkName.size(), m_state.sinkOptions.size()) > FakeMachine::kSinkTextMax)
      return false;
    FakeMachine::App& app = m_machine.m_apps[m_name];
    if (app.first.empty()) app.first = {FakeMachine::App(app)};
    app.prepared = app.instances == 0;
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
  const bool m_holds;
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
  return refused ? nullptr : new FakeMachineApp(*this, app, true);
}

inline trace_App_i* FakeMachine::Look(const std::string& app, std::string* why) {
  m_log += "look " + app + "\n";
  if (m_away && why) *why = "no trace service there";
  return m_away ? nullptr : new FakeMachineApp(*this, app, false);
}
