#include "quor/client/trace_thread.h"

#include <deque>

#include "quor/client/live_reader.h"
#include "quor/client/name_mapper.h"
#include "quor/protocol/machine.h"

namespace {

constexpr std::size_t kQueueBytesMax = 64u << 20;
constexpr std::size_t kTracesPerDrain = 50000;
constexpr std::chrono::milliseconds kConnectDeadline{5000};

class TraceThread final : public TraceThread_i {
 public:
  TraceThread(const std::string& machine, NameMap& names)
      : m_mapper(names),
        m_queue(kQueueBytesMax),
        m_reader(m_queue),
        m_link(machine, quor::wire::ROLE_MONITOR, m_reader) {
    m_reader.Attach(m_link);
  }
  ~TraceThread() override {
    m_link.Stop();
    for (LiveBatch* const batch : m_drain) batch->Forget();
  }
  bool Connect(std::string* why) { return m_link.Start(kConnectDeadline, why); }

  void Disconnect() override { delete this; }
  int HasTraces() override {
    if (SkipEmpty()) return 1;
    // The drain has come to its end; whoever asks again begins the next one.
    if (std::exchange(m_draining, false)) return 0;
    TakeLook();
    return m_draining = SkipEmpty();
  }
  TraceEvent_i* NextTrace() override {
    if (!SkipEmpty() && (m_draining || !HasTraces())) return nullptr;
    LiveBatch& batch = *m_drain.front();
    m_mapper.Map(batch, m_next);
    --m_left;
    return batch.Give(m_next++);
  }
  void Pause() override { m_reader.SetPaused(true); }
  void Resume() override { m_reader.SetPaused(false); }
  Counts GetCounts() const override { return {m_queue.Delivered(), m_reader.Lost()}; }

 private:
  // Another part of what waits, up to the number of traces that a drain gives out.
  void TakeLook() {
    std::size_t held = 0;
    for (const LiveBatch* const batch : m_drain) held += batch->Traces();
    held -= m_next;
    if (held < kTracesPerDrain)
      for (LiveBatch* const batch : m_queue.Take(kTracesPerDrain - held)) m_drain.push_back(batch);
    m_left = kTracesPerDrain;
  }
  // Steps over batches that have been given out, taking up the names behind their last trace. Is
  // there a trace for this drain?
  bool SkipEmpty() {
    while (m_left > 0 && !m_drain.empty()) {
      LiveBatch* const batch = m_drain.front();
      if (m_next < batch->Traces()) return true;
      m_mapper.Map(*batch, m_next);
      m_next = 0;
      m_drain.pop_front();
      batch->Forget();
    }
    return false;
  }

  NameMapper m_mapper;
  LiveQueue m_queue;
  LiveReader m_reader;
  ServiceLink m_link;
  std::deque<LiveBatch*> m_drain;
  std::size_t m_next = 0;  // index of the next trace of the first batch
  std::size_t m_left = 0;  // traces that this drain may still give out
  bool m_draining = false;
};

}  // namespace

TraceThread_i* TraceThread_i::ConnectToTraceService(const QuorStr::String_t& machine,
                                                    NameMap& names, std::string* why) {
  auto connection = std::make_unique<TraceThread>(machine, names);
  return connection->Connect(why) ? connection.release() : nullptr;
}

std::string _trc_GetHostName() {
  return LocalHostName();
}
