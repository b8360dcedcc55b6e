// The handles of a FakeMachine: counted references, like the real ones.
#pragma once

#include <algorithm>
#include <list>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "quor/client/trace_config.h"
#include "support/fake_machine_state.h"

class FakeMachineApp final : public trace_App_i {
 public:
  // `holds`: else it only looks.
  FakeMachineApp(FakeMachineState& machine, std::string name, bool holds)
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
    m_machine.Ask("submit " + m_name);
    m_machine.m_onSubmit();
    if (!m_machine.Answers() || m_machine.Refuses() || !m_machine.IsHeld(m_name)) return false;
    if (m_sinkHeld && std::max(m_state.sinkName.size(), m_state.sinkOptions.size()) >
                          FakeMachineState::kSinkTextMax)
      return false;
    FakeMachineState::App& app = m_machine.m_apps[m_name];
    if (app.first.empty()) app.first = {FakeMachineState::App(app)};
    app.prepared = app.instances == 0;
    for (FakeMachineState::Trace& trace : app.traces)
      if (m_held.contains(trace.id)) trace.settings = GetSettings(trace.id);
    m_held.clear();
    if (std::exchange(m_sinkHeld, false)) {
      app.sinkType = m_state.sinkType;
      app.sinkName = m_state.sinkName;
      app.sinkOptions = m_state.sinkOptions;
    }
    return true;
  }
  std::vector<trace_StartNote_t> GetStartNotes() const override { return m_state.startNotes; }
  std::string WhySinkFails() const override { return m_state.sinkTrouble; }
  std::string GetKept() const override { return m_state.kept; }
  bool Refresh() override {
    m_machine.Ask("refresh " + m_name);
    if (!m_machine.Answers()) return false;
    Take();
    return true;
  }

 private:
  void Take() {
    const auto known = m_machine.m_apps.find(m_name);
    m_state = known == m_machine.m_apps.end() ? FakeMachineState::App() : known->second;
    m_map.clear();
    m_settings.clear();
    m_held.clear();
    m_sinkHeld = false;
    for (const FakeMachineState::Trace& trace : m_state.traces) {
      if (m_map.empty() || m_map.back().name != trace.component)
        m_map.push_back({trace.component, {}});
      m_map.back().categories.push_back({trace.category, trace.id});
      m_settings[trace.id] = trace.settings;
    }
  }

  FakeMachineState& m_machine;
  const std::string m_name;
  const bool m_holds;
  FakeMachineState::App m_state;
  std::list<trace_Component_t> m_map;
  std::map<unsigned, unsigned> m_settings;
  mutable std::set<unsigned> m_held;
  mutable bool m_sinkHeld = false;
};

class FakeConfig final : public trace_Config_i {
 public:
  FakeConfig(FakeMachineState& machine, std::string host)
      : m_machine(machine), m_host(std::move(host)) {
    ++m_machine.m_handles;
  }
  ~FakeConfig() override { --m_machine.m_handles; }

  const std::string& GetHostName() const override { return m_host; }
  const std::list<std::string>& GetAppList() const override {
    m_machine.Ask("list");
    m_list.clear();
    m_answered = m_machine.Answers() && !m_machine.m_listIsLate;
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
  bool IsSilent() const override { return m_machine.IsSilent(); }

 private:
  FakeMachineState& m_machine;
  const std::string m_host;
  mutable std::list<std::string> m_list;
  mutable bool m_answered = true;
};
