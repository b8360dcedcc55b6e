#include "quor/client/trace_thread.h"

#include <poll.h>

#include <deque>

#include "quor/client/stream/live_reader.h"
#include "quor/client/stream/name_mapper.h"
#include "quor/protocol/machine.h"

namespace {

// Two ticks of a million traces a second, each.
constexpr std::size_t kQueueBytesMax = 128u << 20;
// A drain gives out traces for this long at most, so that the window stays responsive. The clock is
// read only now and then.
constexpr std::chrono::milliseconds kDrainTime{50};
constexpr std::size_t kTracesPerClock = 256;
constexpr std::size_t kTracesPerLook = 8192;  // taken out of the queue at a time
constexpr std::chrono::milliseconds kConnectDeadline{5000};

class TraceThread final : public TraceThread_i {
 public:
  TraceThread(const std::string& machine, NameMap& names, const std::string& atSource)
      : m_mapper(names),
        m_queue(kQueueBytesMax),
        m_reader(m_queue),
        m_link(machine, quor::wire::ROLE_MONITOR, m_reader) {
    m_reader.Attach(m_link);
    if (!atSource.empty()) m_reader.FilterAtSource(atSource);
  }
  ~TraceThread() override {
    m_link.Stop();
    for (LiveBatch* const batch : m_drain) batch->Forget();
  }
  bool Connect(std::string* why) { return m_link.Start(kConnectDeadline, why); }

  void Disconnect() override { delete this; }
  int HasTraces() override {
    if (m_paused) return m_draining = false;
    const bool over = m_draining && m_given % kTracesPerClock == 0 && Clock::now() >= m_endBy;
    if (!m_draining) Begin();
    return m_draining = !over && Offers();
  }
  TraceEvent_i* NextTrace() override {
    if (m_paused || (!m_draining && !HasTraces())) return nullptr;
    if (!(m_draining = Offers())) return nullptr;
    LiveBatch& batch = *m_drain.front();
    m_mapper.Map(batch, m_next);
    --m_left;
    ++m_given;
    return batch.Give(m_next++);
  }
  // Traces that have arrived already wait as well: nothing is given out until Resume.
  void Pause() override { m_reader.SetPaused(m_paused = true); }
  void Resume() override { m_reader.SetPaused(m_paused = false); }
  Counts GetCounts() const override {
    return {m_queue.Delivered(), m_reader.Lost(), m_reader.Withheld(), m_reader.Twice(),
            m_reader.Late()};
  }
  void FilterAtSource(const std::string& text) override { m_reader.FilterAtSource(text); }
  SourceFilterState GetSourceFilter() const override { return m_reader.GetSourceFilter(); }
  void AwaitTraces(int milliseconds) override {
    if (m_paused)
      poll(nullptr, 0, milliseconds);
    else if (Held() == 0)
      m_queue.Await(milliseconds);
  }
  bool IsUp() const override { return m_reader.IsUp(); }

 private:
  using Clock = std::chrono::steady_clock;

  // Traces that were taken out of the queue and not given out.
  std::size_t Held() const {
    std::size_t held = 0;
    for (const LiveBatch* const batch : m_drain) held += batch->Traces();
    return held - m_next;
  }
  void Begin() {
    m_left = Held() + m_queue.Traces();
    m_given = 0;
    m_endBy = Clock::now() + kDrainTime;
  }
  // Is there a trace for this drain? Skips batches that have been given out, after entering the
  // names that follow their last trace.
  bool Offers() {
    while (m_left > 0) {
      if (m_drain.empty()) {
        m_drain = m_queue.Take(kTracesPerLook);
        m_reader.LookForRoom();
      }
      if (m_drain.empty()) return false;
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
  std::size_t m_left = 0;  // traces that this drain may still give out: those present when it began
  std::size_t m_given = 0;
  Clock::time_point m_endBy;
  bool m_draining = false, m_paused = false;
};

}  // namespace

TraceThread_i* TraceThread_i::ConnectToTraceService(const QuorStr::String_t& machine,
                                                    NameMap& names, std::string* why,
                                                    const std::string& atSource) {
  auto connection = std::make_unique<TraceThread>(machine, names, atSource);
  return connection->Connect(why) ? connection.release() : nullptr;
}

std::string _trc_GetHostName() {
  return LocalHostName();
}
