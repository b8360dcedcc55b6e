// The batches that wait for one stream, a monitor's or a forwarder's. Bounded, and exact about what
// it drops.
//
// Shape    Batches in order. Where batches were dropped, a batch of losses replaces them. Each
//          outgoing batch comes with the names that this stream has not sent yet, and with the
//          ledger of its sources: serial = where the stream began + delivered + withheld + lost.
// Owner    Shares the batches.
// Errors   A full queue drops its oldest batches, but none that comes again: the other side knows
//          its place in the stream. The record of these losses is bounded as well.
// Threads  One.
#pragma once

#include <deque>
#include <unordered_map>

#include "quor/hub/batch.h"
#include "quor/hub/stream_losses.h"
#include "quor/protocol/connection.h"
#include "quor/protocol/quor.pb.h"

struct StreamLimits {
  std::size_t queueBytes = 32u << 20;
  std::uint64_t pausedTraces = 10'000;
  const char* tooSlow = "the monitor is too slow";
  bool oneSourceEach = false;  // also of the batches of losses
};

struct Outgoing {
  SharedBatch batch;
  SharedBytes names, records;
  quor::wire::Ledger ledger;
};

class StreamQueue {
 public:
  StreamQueue(HubNames& names, const StreamLimits& limits) : m_names(names), m_limits(limits) {}

  // The stream begins with these sources.
  void Begin(const std::vector<std::shared_ptr<Source>>& sources);
  // The current ledger line of each source.
  quor::wire::Ledger WholeLedger() const;

  void Push(SharedBatch batch);
  // False when nothing waits or the stream is paused.
  bool Next(Outgoing& out);
  void Pause() { m_paused = true; }
  void Resume() { m_paused = false; }
  bool IsPaused() const { return m_paused; }
  bool IsEmpty() const { return m_batches.empty() && m_losses.IsEmpty() && m_again.empty(); }
  bool HasAgain() const { return !m_again.empty(); }
  std::size_t WaitingBytes() const { return m_bytes; }
  std::uint64_t WaitingTraces() const { return m_traces; }
  std::uint64_t Dropped() const { return m_dropped; }  // traces, since it was made
  // The other side knows nothing of this stream any more: it starts again, with these batches,
  // which were sent and did not arrive. They come first, also before what was dropped after them.
  void Restart(const std::vector<SharedBatch>& again);
  // The ids of the hub's names begin anew. REQUIRES: it is empty.
  void ForgetNames() { m_sent.Clear(); }

 private:
  struct Entry {
    std::shared_ptr<Source> source;
    std::uint64_t began = 0, delivered = 0, lost = 0, withheld = 0;
  };
  static void PutLine(const Entry& entry, quor::wire::Ledger::Source* line);
  SharedBytes NamesFor(const Batch& batch);
  void DropOldest();
  Entry& EntryOf(const std::shared_ptr<Source>& source);
  SharedBatch TakeNext();
  void PutLines(const Batch& batch, quor::wire::Ledger& ledger);

  HubNames& m_names;
  const StreamLimits m_limits;
  std::deque<SharedBatch> m_again;
  std::deque<SharedBatch> m_batches;
  StreamLosses m_losses;  // dropped before the first batch
  const char* m_gapReason = "";
  std::size_t m_bytes = 0;
  std::uint64_t m_traces = 0, m_dropped = 0;
  bool m_paused = false;
  IdSet<HubNameId> m_sent;
  std::unordered_map<const Source*, Entry> m_ledger;
};
