// The stream to one monitor: the hub's batches since its Subscribe, with names and ledgers.
//
// Shape    Only one write is in progress at a time. Everything after it waits in the bounded queue.
//          So a pause takes effect immediately, and a slow monitor costs only its own queue. What
//          the filter withholds never gets into the queue, so it is no loss of a slow monitor.
// Owner    Borrows hub and connection, which outlive it. Shares the filter.
// Threads  The service's one thread.
#pragma once

#include "quor/hub/hub.h"
#include "quor/hub/stream_queue.h"
#include "quor/monitors/source_filter.h"
#include "quor/protocol/connection.h"

class MonitorStream final : public HubStream {
 public:
  // `only`: of sources of this account, as if there were no others.
  MonitorStream(Hub& hub, Connection& connection, const StreamLimits& limits,
                std::optional<uid_t> only = {});
  ~MonitorStream();
  MonitorStream(const MonitorStream&) = delete;
  MonitorStream& operator=(const MonitorStream&) = delete;

  // Call it right after the answer to Subscribe.
  void Start();
  void Pause();
  void Resume();
  // Of what is taken from now on; null: everything.
  void SetFilter(std::shared_ptr<SourceFilter> filter);
  void OnBatch(const SharedBatch& batch) override;
  void OnDelivered() override {
    if (m_filter) m_filter->ForgetBatch();
  }
  void Pump() { PumpUpTo(kInFlightBytes); }
  std::size_t WaitingBytes() const { return m_queue.WaitingBytes(); }
  std::uint64_t Dropped() const { return m_queue.Dropped(); }
  std::uint64_t Withheld() const { return m_withheld; }
  // At a clean end: sends as much as the connection accepts.
  void Flush();

 private:
  static constexpr std::size_t kInFlightBytes = 256u << 10;
  void PumpUpTo(std::size_t bytes);
  void SealNow();
  std::vector<std::shared_ptr<Source>> Sources() const;

  Hub& m_hub;
  Connection& m_connection;
  StreamQueue m_queue;
  const std::optional<uid_t> m_only;
  std::shared_ptr<SourceFilter> m_filter;
  std::uint64_t m_withheld = 0;
};
