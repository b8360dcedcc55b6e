// What one monitor receives: the hub's batches from its Subscribe on, with names and ledgers.
//
// Shape    One write is under way at a time; what is behind it waits in the bounded queue, so that
//          a pause takes effect at once and a slow monitor costs its own queue only.
// Owner    Borrows hub and connection, which outlive it.
// Threads  The service's one thread.
#pragma once

#include "quor/hub/hub.h"
#include "quor/hub/stream_queue.h"
#include "quor/protocol/connection.h"

class MonitorStream final : public HubStream {
 public:
  MonitorStream(Hub& hub, Connection& connection, const StreamLimits& limits);
  ~MonitorStream();
  MonitorStream(const MonitorStream&) = delete;
  MonitorStream& operator=(const MonitorStream&) = delete;

  // Right behind the answer to Subscribe.
  void Start();
  void Pause();
  void Resume();
  void OnBatch(const SharedBatch& batch) override;
  void Pump() { PumpUpTo(kInFlightBytes); }
  std::size_t WaitingBytes() const { return m_queue.WaitingBytes(); }
  // At an orderly end: as much as the connection takes.
  void Flush();

 private:
  static constexpr std::size_t kInFlightBytes = 256u << 10;
  void PumpUpTo(std::size_t bytes);

  Hub& m_hub;
  Connection& m_connection;
  StreamQueue m_queue;
};
