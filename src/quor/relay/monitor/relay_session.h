// Serves one monitor with the traces that an engine stores, as a machine's service would.
//
// Shape    Hello, then Welcome once the engine answers, or Refused with the reason why it does not.
//          Behind Subscribe come the traces. The engine is asked for more only while less than
//          kWaitingBytes wait for the monitor, and not during a pause: so a slow monitor costs
//          nobody anything, and loses only what the engine drops meanwhile. Now and then a ledger
//          says from where a later session has to go on.
// Owner    Owns its hub and its feed. `onEnd` is called once, when the monitor has gone.
// Errors   A malformed or unexpected frame ends it.
// Threads  The one that runs the stream's io_context.
#pragma once

#include <optional>

#include "quor/address/relay_address.h"
#include "quor/monitors/monitor_stream.h"
#include "quor/monitors/source_filters.h"
#include "quor/relay/monitor/relay_feed.h"
#include "quor/relay/monitor/relayed_traces.h"
#include "quor/relay/reader/relay_reader.h"

// What the address asks for. `now`: the clock of this machine.
FeedPlan PlanFor(const RelayAddress& address, EngineTime now);

class RelaySession final : public Connection::Handler {
 public:
  static constexpr std::size_t kWaitingBytes = 8u << 20;
  struct Times {
    std::chrono::milliseconds answer{3400};   // of the engine, before the monitor is refused
    std::chrono::milliseconds refusal{600};   // that it has to stay with
    std::chrono::milliseconds place{1000};    // between two places
    std::chrono::milliseconds trouble{3000};  // without an answer, before it is told
    RelayLimits reader;
  };

  RelaySession(const RelayAddress& address, RelayFeed::MakeEngine make, std::function<void()> onEnd,
               const Times& times);
  ~RelaySession();
  void Start(std::shared_ptr<ByteStream> stream);
  // For tests.
  std::size_t WaitingBytes() const { return m_monitor ? m_monitor->WaitingBytes() : 0; }

 private:
  using Clock = std::chrono::steady_clock;
  void OnFrame(const Frame& frame) override;
  void OnWritten() override;
  void OnClosed(const std::string& reason) override;
  void End() { OnClosed({}); }
  void Greet(const Frame& frame);
  void Begin();
  void Welcome();
  void Refuse(quor::wire::ErrorCode code, const std::string& text);
  void Answer(const quor::wire::Request& request);
  void Serve(const quor::wire::Request& request, quor::wire::Response* response);
  void Subscribe(const quor::wire::Subscribe& subscribe);
  void SetFilter(const std::string& text, quor::wire::Response* response);
  void OnPiece(FedPiece piece);
  void Take(FedPiece piece);
  void TellState(const FedPiece& piece);
  void GoOn();
  void SendPlace();
  EngineTime Place() const;

  const RelayAddress m_address;
  const RelayFeed::MakeEngine m_make;
  const std::function<void()> m_onEnd;
  const Times m_times;
  const EngineTime m_now;  // when it was made
  const std::string m_where;
  Hub m_hub;
  SourceFilters m_filters;
  RelayedTraces m_traces;
  RelayReader m_reader;
  std::shared_ptr<Connection> m_connection;
  std::unique_ptr<asio::steady_timer> m_deadline;
  std::unique_ptr<MonitorStream> m_monitor;
  std::shared_ptr<SourceFilter> m_filter;
  std::optional<FedPiece> m_first;  // that waits for Subscribe
  bool m_greeted = false, m_welcomed = false, m_ended = false;
  bool m_feedWaits = false, m_paused = false, m_wantsPlace = false;
  std::string m_broken;  // why the engine does not answer
  std::optional<Clock::time_point> m_brokenSince;
  bool m_toldBroken = false;
  std::optional<EngineTime> m_firstArrival, m_lastArrival;
  EngineTime m_begin{};  // nothing that came before it is wanted
  Clock::time_point m_placedAt{};
  std::unique_ptr<RelayFeed> m_feed;  // last: its thread ends first
};
