// The traces of a running service, one by one, until enough have come.
//
// Owner    Owns its connection and its names.
// Threads  One.
#pragma once

#include <functional>
#include <string>

#include "filter/live_choice.h"
#include "live/live.h"
#include "quor/client/trace_thread.h"

// "12 came twice, 3 came late"; empty where neither can be.
std::string RepeatedText(const TraceThread_i::Counts& counts);

class LiveSource {
 public:
  LiveSource() = default;
  ~LiveSource();
  LiveSource(const LiveSource&) = delete;
  LiveSource& operator=(const LiveSource&) = delete;

  // False when the machine cannot be reached, or knows no accounts though one is wanted, after a
  // message on standard error.
  bool Connect(const std::string& machine, const LiveLimits& limits);
  // Passes each chosen trace to `take`. Calls `pause` when no trace waits; it returns false to end.
  // Reports what was asked for and never came on standard error. Also ends at the limits and at
  // SIGINT, after passing on the traces that have arrived, as long as both take more.
  void Run(const LiveLimits& limits, const TraceTaker& take, const std::function<bool()>& pause);
  NameMap& Names() { return m_names; }
  bool IsUp() const { return m_connection->IsUp(); }
  TraceThread_i::Counts Counts() const { return m_connection->GetCounts(); }
  // Of the traces delivered by then, those that Run did not come to. None behind the last one that
  // was wanted.
  std::uint64_t Waiting(const TraceThread_i::Counts& counts) const {
    return m_isFull ? 0 : counts.delivered - m_handled;
  }

 private:
  void TellOfSource();
  bool PassOn(LiveChoice& choice, const TraceTaker& take);

  NameMap m_names;
  TraceThread_i* m_connection = nullptr;
  bool m_toldOfSource = false, m_isFull = false;
  std::uint64_t m_handled = 0;  // without loss reports
};
