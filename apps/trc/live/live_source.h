// The traces of a running service, one after the other, until enough have come.
//
// Owner    Its connection and its names.
// Threads  One.
#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "live/live.h"
#include "quor/client/trace_thread.h"

class LiveSource {
 public:
  LiveSource() = default;
  ~LiveSource();
  LiveSource(const LiveSource&) = delete;
  LiveSource& operator=(const LiveSource&) = delete;

  // False when the machine cannot be reached, and standard error says why.
  bool Connect(const std::string& machine);
  // Gives each trace that passes the filter to `take`, which owns it and gives false to end;
  // `pause` is called when nothing waits, and gives false to end. A path of the filter whose names
  // never came is told on standard error. Also ends at the limits and at SIGINT, which still hands
  // over what has arrived.
  void Run(const LiveLimits& limits, const std::function<bool(TraceEvent_i*)>& take,
           const std::function<bool()>& pause);
  NameMap& Names() { return m_names; }
  bool IsUp() const { return m_connection->IsUp(); }
  TraceThread_i::Counts Counts() const { return m_connection->GetCounts(); }

 private:
  NameMap m_names;
  TraceThread_i* m_connection = nullptr;
};
