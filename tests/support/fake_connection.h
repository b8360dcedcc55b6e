// A live connection without a service: a test adds traces, and checks what the document does.
//
// Shape    FakeService makes the connections of its Connector() and outlives them. Its log has a
//          line per operation, in order: "connect web", "pause", "resume", "filter pid == 1",
//          "disconnect".
// Owner    A trace that was not taken is released with its connection.
// Threads  One.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "quor/client/trace_thread.h"

class FakeService;

class FakeConnection final : public TraceThread_i {
 public:
  FakeConnection(FakeService& service, NameMap& names) : m_names(names), m_service(service) {}

  void Disconnect() override;
  int HasTraces() override {
    ++m_looks;
    return m_waiting.empty() ? 0 : 1;
  }
  TraceEvent_i* NextTrace() override {
    if (m_waiting.empty()) return nullptr;
    TraceEvent_i* const event = m_waiting.front();
    m_waiting.pop_front();
    if (m_onTaken) m_onTaken();
    return event;
  }
  void Pause() override;
  void Resume() override;
  Counts GetCounts() const override { return m_counts; }
  void FilterAtSource(const std::string& text) override;
  SourceFilterState GetSourceFilter() const override { return m_sourceFilter; }
  bool IsUp() const override { return m_isUp ? m_isUp() : m_up; }

  // A trace with the text, with every id 1; it waits for the document.
  TraceEvent_i* Send(const std::string& text = "up") { return Send(text, 1); }
  TraceEvent_i* Send(const std::string& text, NameId id) {
    ++m_count;
    m_waiting.push_back(TraceEvent_i::Create(m_count, id, id, id, id, PackDate(2026, 11, 21),
                                             PackTime(9, 41, 7, 123), std::uint64_t{1000} * m_count,
                                             id, id, kAttributeInfo, id, 1, text, ""));
    return m_waiting.back();
  }
  void SendMany(int traces) {
    for (int i = 0; i < traces; ++i) Send();
  }

  NameMap& m_names;
  std::deque<TraceEvent_i*> m_waiting;
  bool m_up = true;
  Counts m_counts;
  SourceFilterState m_sourceFilter;
  std::function<bool()> m_isUp;     // in place of m_up
  std::function<void()> m_onTaken;  // after each NextTrace
  int m_looks = 0;                  // calls of HasTraces

 private:
  ~FakeConnection() override {
    for (TraceEvent_i* const event : m_waiting) event->Release();
  }
  FakeService& m_service;
  std::uint32_t m_count = 0;
};

class FakeService {
 public:
  // For CTraceRealtimeDoc and CTesseraApp.
  std::function<TraceThread_i*(const std::string&, NameMap&)> Connector() {
    return [this](const std::string& machine, NameMap& names) -> TraceThread_i* {
      Log("connect " + machine);
      if (m_refuse) return nullptr;
      m_connections.push_back(new FakeConnection(*this, names));
      return m_connections.back();
    };
  }
  void Log(const std::string& line) {
    m_log += line + "\n";
    if (m_onLog) m_onLog(line);
  }
  FakeConnection& Last() { return *m_connections.back(); }

  bool m_refuse = false;
  std::vector<FakeConnection*> m_connections;  // the open ones
  std::string m_log;
  std::function<void(const std::string&)> m_onLog;
};

inline void FakeConnection::Disconnect() {
  m_service.Log("disconnect");
  std::erase(m_service.m_connections, this);
  delete this;
}
inline void FakeConnection::Pause() {
  m_service.Log("pause");
}
inline void FakeConnection::FilterAtSource(const std::string& text) {
  m_service.Log("filter " + text);
}
inline void FakeConnection::Resume() {
  m_service.Log("resume");
}
