// The hub compared with a bare relay. The hub takes an application's traces through ring,
// numbering, names, ledgers and frames to monitors on unix sockets. The relay reads the same bytes
// from one unix socket and writes them to as many others. Also: what a monitor that reads nothing
// costs the one that reads, while its queue fills once and then for as long as it stalls. And what
// a filter text costs that withholds 999 of 1,000 traces, its monitor and the one beside it.
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <asio/io_context.hpp>
#include <cstdlib>
#include <memory>
#include <string>

#include "base/page_storage.h"
#include "bench/ratio.h"
#include "quor/monitors/monitor_stream.h"
#include "quor/monitors/source_filters.h"
#include "quor/protocol/connection.h"
#include "quor/ring/ring_producer.h"
#include "quor/traced/traced_app.h"
#include "records/name_record.h"
#include "records/record_fields.h"

namespace {

constexpr std::uint64_t kTraces = 1'000'000;
constexpr std::size_t kTextBytes = 100;
constexpr std::size_t kRecordBytes = kTraceFixedBytes + kTextBytes;
// More than enough traces to fill the queue of a monitor that stalls.
constexpr std::uint64_t kFilling = StreamLimits().queueBytes / kRecordBytes * 5 / 4;
constexpr std::size_t kBehindBytes = 1u << 20;  // the hub waits for a monitor that is so far behind
constexpr std::size_t kReadBytes = 256u << 10;

struct Pair {
  int near = -1, far = -1;
};
Pair MakePair() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) std::abort();
  return {ends[0], ends[1]};
}

template <class Body>
pid_t Fork(Body body) {
  const pid_t pid = fork();
  if (pid != 0) return pid;
  body();
  _exit(0);
}

void Reap(const std::vector<pid_t>& children) {
  for (const pid_t child : children) waitpid(child, nullptr, 0);
}

// A process that reads to the end.
pid_t Reader(const Pair& pair, const std::vector<Pair>& all) {
  return Fork([&] {
    for (const Pair& other : all) close(other.near);
    std::vector<char> room(kReadBytes);
    while (read(pair.far, room.data(), room.size()) > 0) {
    }
  });
}

std::vector<Pair> MakePairs(std::size_t count) {
  std::vector<Pair> pairs(count);
  for (Pair& pair : pairs) pair = MakePair();
  return pairs;
}

void WriteAll(int to, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t written = write(to, bytes, size);
    if (written <= 0) std::abort();
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
}

void Relay(std::size_t monitors) {
  const std::vector<Pair> pairs = MakePairs(monitors);
  std::vector<pid_t> children;
  for (const Pair& pair : pairs) children.push_back(Reader(pair, pairs));
  const Pair in = MakePair();
  children.push_back(Fork([&] {
    close(in.far);
    const std::vector<char> frame(kBatchBytes, 'x');
    for (std::uint64_t left = kTraces * (kRecordBytes + 1); left > 0;) {
      const std::size_t now = std::min<std::uint64_t>(left, frame.size());
      WriteAll(in.near, frame.data(), now);
      left -= now;
    }
  }));
  close(in.near);
  std::vector<char> room(kBatchBytes);
  for (ssize_t got; (got = read(in.far, room.data(), room.size())) > 0;)
    for (const Pair& pair : pairs) WriteAll(pair.near, room.data(), static_cast<std::size_t>(got));
  close(in.far);
  for (const Pair& pair : pairs) {
    close(pair.near);
    close(pair.far);
  }
  Reap(children);
}

struct Silent final : Connection::Handler {
  MonitorStream* stream = nullptr;
  void OnFrame(const Frame&) override {}
  void OnWritten() override {
    if (stream) stream->Pump();
  }
  void OnClosed(const std::string&) override {}
};

class HubRun {
 public:
  // The last `stalled` of the monitors read nothing, the last `filtered` have a filter text.
  HubRun(std::size_t monitors, std::size_t stalled, std::size_t filtered = 0)
      : m_pairs(MakePairs(monitors)) {
    m_segment.Create({16, 4096, 8u << 20}, 1, 42);
    std::uint32_t used = 0;
    for (const char* const name : {"", "here", "bench", "Net", "Connect", "4711"})
      used += static_cast<std::uint32_t>(
          StoreNameBody(m_segment.Names() + used, AppNameId(used == 0 ? 0 : ++m_names), name));
    m_segment.Header()->nameBytesUsed.store(used);
    for (std::size_t i = 0; i + stalled < monitors; ++i)
      m_children.push_back(Reader(m_pairs[i], m_pairs));
    for (const Pair& pair : m_pairs) {
      AddMonitor(pair, m_streams.size() + stalled < monitors);
      if (m_streams.size() + filtered > monitors) Filter(*m_streams.back());
    }
  }

  // This thread's time for the first `filling` traces, and for as many as kTraces after them.
  struct Times {
    double filling, rest;
  };
  Times Run(std::uint64_t filling) {
    SegmentMap view;
    const char* why = "";
    if (!view.Open(dup(m_segment.Descriptor()), &why)) std::abort();
    const pid_t producer = Fork([this, filling] { Produce(filling + kTraces); });
    TracedApp app(std::move(view), "bench", "here", 1);
    app.Enter(m_hub);
    app.Begin();
    const double begin = ThreadSeconds();
    TakeUntil(app, filling);
    const double filled = ThreadSeconds();
    TakeUntil(app, filling + kTraces);
    Finish(app, producer);
    return {filled - begin, ThreadSeconds() - filled};
  }

 private:
  void TakeUntil(TracedApp& app, std::uint64_t taken) {
    while (m_hub.Taken() < taken) {
      m_io.poll();
      if (IsBehind()) {
        m_io.run_one();
      } else if (app.Drain(1024, false) == TracedApp::Step::Empty) {
        m_io.run_one_for(std::chrono::microseconds(200));  // leaves the core to the producer
      }
    }
  }
  void Finish(TracedApp& app, pid_t producer) {
    m_hub.Seal();
    m_hub.Deliver();
    waitpid(producer, nullptr, 0);
    for (std::size_t i = 0; i < m_streams.size(); ++i)
      while (m_reads[i] && m_connections[i]->QueuedBytes() > 0) m_io.run_one();
    app.Leave();
    End();
  }
  void AddMonitor(const Pair& pair, bool reads) {
    LocalSocket socket(m_io);
    socket.assign(asio::local::stream_protocol(), pair.near);
    if (reads) close(pair.far);
    m_handlers.push_back(std::make_unique<Silent>());
    ConnectionLimits limits;
    limits.silenceDeadline = limits.writeDeadline = std::chrono::minutes(10);
    m_connections.push_back(
        Connection::Start(MakeStream(std::move(socket)), *m_handlers.back(), limits));
    m_streams.push_back(
        std::make_unique<MonitorStream>(m_hub, *m_connections.back(), StreamLimits()));
    m_handlers.back()->stream = m_streams.back().get();
    m_streams.back()->Start();
    m_reads.push_back(reads);
  }
  void Filter(MonitorStream& stream) {
    WhereError error;
    const auto filter = m_filters.Open({}, "component == Net and text startswith x", error);
    if (!filter) std::abort();
    stream.SetFilter(filter);
  }
  bool IsBehind() const {
    for (std::size_t i = 0; i < m_streams.size(); ++i)
      if (m_reads[i] && m_streams[i]->WaitingBytes() > kBehindBytes) return true;
    return false;
  }
  void Produce(std::uint64_t traces) {
    RingProducer ring(m_segment);
    std::string text(kTextBytes, 't');
    const RecordFieldsOf<AppNameId> fields{.count = 1,
                                           .machine = AppNameId{1},
                                           .app = AppNameId{2},
                                           .component = AppNameId{3},
                                           .category = AppNameId{4},
                                           .pid = AppNameId{5},
                                           .tid = AppNameId{5},
                                           .attributes = 1,
                                           .text = text};
    for (std::uint64_t i = 0; i < traces; ++i) {
      RingProducer::Slot slot;
      // Waits for room and takes its drop back instead of dropping, because every trace must
      // arrive.
      while (!ring.Reserve(kRecordBytes, slot)) {
        m_segment.Header()->pendingDrops.store(0);
        usleep(50);
      }
      text[0] = i % 1000 == 0 ? 'x' : 't';
      StoreRecord(slot.record, fields);
      ring.Commit(slot);
    }
  }
  void End() {
    for (std::size_t i = 0; i < m_streams.size(); ++i) {
      m_handlers[i]->stream = nullptr;
      m_streams[i].reset();
      m_connections[i]->Close();
      m_connections[i].reset();
      if (!m_reads[i]) close(m_pairs[i].far);
    }
    m_io.restart();
    m_io.poll();
    Reap(m_children);
  }

  SegmentMap m_segment;
  unsigned m_names = 0;
  std::vector<Pair> m_pairs;
  std::vector<pid_t> m_children;
  asio::io_context m_io{1};
  Hub m_hub;
  SourceFilters m_filters{m_hub.Names()};
  std::vector<std::unique_ptr<Silent>> m_handlers;
  std::vector<std::shared_ptr<Connection>> m_connections;
  std::vector<std::unique_ptr<MonitorStream>> m_streams;
  std::vector<bool> m_reads;
};

double PerTraceNs(double seconds, std::uint64_t traces = kTraces) {
  return seconds * 1e9 / static_cast<double>(traces);
}

// The kernel's time for as much new memory as the queue of one monitor holds.
double FreshMemorySeconds() {
  constexpr std::size_t kBlock = BatchMemory::kBlockBytes, kPage = 4096;
  std::vector<void*> blocks;
  const double before = ThreadSeconds();
  for (std::size_t held = 0; held < StreamLimits().queueBytes; held += kBlock) {
    blocks.push_back(NewHugePages(kBlock));
    for (std::size_t at = 0; at < kBlock; at += kPage)
      static_cast<volatile char*>(blocks.back())[at] = 1;
  }
  const double seconds = ThreadSeconds() - before;
  for (void* const block : blocks) FreePages(block, kBlock);
  return seconds;
}

// The service's own time: the wall clock would include other programs.
void MeasureStall() {
  std::vector<double> filled, filledFloor, fillRatios, alone, beside, ratios;
  for (int i = 0; i < 9; ++i) {
    const HubRun::Times one = HubRun(1, 0).Run(kFilling), two = HubRun(2, 1).Run(kFilling);
    filled.push_back(two.filling);
    filledFloor.push_back(one.filling + FreshMemorySeconds());
    fillRatios.push_back(filled.back() / filledFloor.back());
    alone.push_back(one.rest);
    beside.push_back(two.rest);
    ratios.push_back(two.rest / one.rest);
  }
  PrintRow("hub, a stall fills its queue, to 1 alone + memory",
           PerTraceNs(Median(filled), kFilling), "ns/trace",
           PerTraceNs(Median(filledFloor), kFilling), Median(fillRatios), 1.10);
  PrintRow("hub, 1 monitor and one that stalls, to 1 alone", PerTraceNs(Median(beside)), "ns/trace",
           PerTraceNs(Median(alone)), Median(ratios), 1.05);
}

void MeasureFilter() {
  std::vector<double> alone, filtered, two, both, filteredRatios, bothRatios;
  for (int i = 0; i < 9; ++i) {
    alone.push_back(HubRun(1, 0).Run(0).rest);
    filtered.push_back(HubRun(1, 0, 1).Run(0).rest);
    two.push_back(HubRun(2, 0).Run(0).rest);
    both.push_back(HubRun(2, 0, 1).Run(0).rest);
    filteredRatios.push_back(filtered.back() / alone.back());
    bothRatios.push_back(both.back() / two.back());
  }
  PrintRow("hub, 1 monitor with 1 of 1,000 by a text, to 1 without", PerTraceNs(Median(filtered)),
           "ns/trace", PerTraceNs(Median(alone)), Median(filteredRatios), 2.0);
  PrintRow("hub, 1 monitor and one with a text, to 2 without", PerTraceNs(Median(both)), "ns/trace",
           PerTraceNs(Median(two)), Median(bothRatios), 1.50);
}

}  // namespace

int main() {
  signal(SIGPIPE, SIG_IGN);
  for (const std::size_t monitors : {1, 4}) {
    const Measured measured = MeasureBeside(
        5, [monitors] { Relay(monitors); }, [monitors] { HubRun(monitors, 0).Run(0); });
    PrintRow("hub, " + std::to_string(monitors) + " monitors, unix socket, to a bare relay",
             PerTraceNs(measured.seconds), "ns/trace", PerTraceNs(measured.floorSeconds),
             measured.ratio, 2.0);
  }
  MeasureStall();
  MeasureFilter();
  return 0;
}
