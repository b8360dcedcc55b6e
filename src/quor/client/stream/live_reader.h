// Processes the frames of a monitor's connection: reads data into batches, holds them until their
// ledger has arrived, and reports what is missing.
//
// Owner    Puts batches into a queue that outlives it.
// Errors   An unexpected frame or malformed data breaks the connection.
// Threads  The link's; SetPaused, FilterAtSource, GetSourceFilter, LookForRoom, IsUp and the
//          counts from any.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "quor/client/link/service_link.h"
#include "quor/client/stream/gap_ledger.h"
#include "quor/client/stream/live_queue.h"
#include "quor/client/stream/source_filter_asker.h"

class LiveReader final : public ServiceLink::User {
 public:
  explicit LiveReader(LiveQueue& queue) : m_queue(queue) {}
  ~LiveReader() { DropStaged(); }

  // REQUIRES: before the link starts.
  void Attach(ServiceLink& link) {
    m_link = &link;
    m_filter.Attach(link);
  }
  void SetPaused(bool paused);
  // See TraceThread_i.
  void FilterAtSource(const std::string& text) { m_filter.Set(text); }
  SourceFilterState GetSourceFilter() const { return m_filter.GetState(); }
  // Traces were taken out of the queue: turned away traces can be reported now.
  void LookForRoom();
  std::uint64_t Lost() const { return m_lost.load(std::memory_order_relaxed); }
  std::uint64_t Withheld() const { return m_withheld.load(std::memory_order_relaxed); }
  // Of a cluster's traces: those that came twice, and those that came after they were told as lost.
  std::uint64_t Twice() const { return m_twice.load(std::memory_order_relaxed); }
  std::uint64_t Late() const { return m_late.load(std::memory_order_relaxed); }
  bool IsUp() const { return m_up.load(std::memory_order_relaxed); }

  void OnUp(Connection& connection, const quor::wire::Welcome& welcome) override;
  void OnFrame(const Frame& frame) override;
  void OnRested() override { AwaitRoom(); }
  void OnDown(const std::string& reason) override;

 private:
  // Data that waits for its ledger: the service sends the two right after each other.
  static constexpr std::size_t kStagedBytesMax = 8u << 20;
  static constexpr std::size_t kKeptNameBytesMax = 64u << 20;

  void SendState(Connection& connection);
  void TakeData(const Frame& frame);
  void TakeLedger(const Frame& frame);
  void TakeResponse(const Frame& frame);
  void Deliver(LiveBatch* batch);
  void DropTraces(LiveBatch* batch);
  void CatchUp();  // if there is room again
  void TakeRelay(const quor::wire::Ledger::Relay& relay);
  void AwaitRoom();
  void ReportLost(std::uint64_t traces, const char* reason);
  void DropStaged();

  LiveQueue& m_queue;
  ServiceLink* m_link = nullptr;
  std::string m_machine;
  GapLedger m_ledger;
  std::vector<LiveBatch*> m_staged;
  std::size_t m_stagedBytes = 0;
  bool m_firstOfStream = false;
  // Where a cluster's traces have to go on after a break, and the counts of the streams before.
  Connection* m_connection = nullptr;
  bool m_isRelay = false;
  std::string m_place;
  std::uint64_t m_twiceBefore = 0, m_lateBefore = 0;
  std::atomic<bool> m_paused{false};
  std::atomic<bool> m_up{false};
  std::uint32_t m_lastRequest = 0;
  // While the queue is full: names and counts of the batches that were turned away.
  std::atomic<bool> m_dropping{false};
  bool m_droppedWhilePaused = false, m_keptFirst = false;
  std::map<HubNameId, std::string> m_keptNames;
  std::size_t m_keptNameBytes = 0;
  std::uint64_t m_dropped = 0;
  std::uint64_t m_gaps = 0, m_allDropped = 0;
  std::atomic<std::uint64_t> m_lost{0}, m_withheld{0}, m_twice{0}, m_late{0};
  SourceFilterAsker m_filter{m_ledger, m_lastRequest};
};
