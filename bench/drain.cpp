// How many traces a monitor's document can take: traces at a fixed rate through a real socket into
// the client's queue, and the document's drain at each tick of its timer.
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "bench/bench_host.h"
#include "bench/ratio.h"
#include "documents/trace_realtime_doc.h"
#include "quor/protocol/frames.h"
#include "quor/protocol/quor.pb.h"
#include "records/name_record.h"
#include "records/record_fields.h"
#include "settings/globals.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::uint64_t kPerSecond = 1'000'000;
constexpr std::uint64_t kPerFrame = 500;
constexpr std::size_t kTextBytes = 80;
constexpr std::chrono::milliseconds kTick{333};
constexpr int kTicks = 30;
constexpr double kTickBudgetMs = 50;

// The service's end of one monitor's connection.
class Sender {
 public:
  explicit Sender(std::string path) : m_path(std::move(path)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    m_path.copy(address.sun_path, sizeof address.sun_path - 1);
    unlink(m_path.c_str());
    m_listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(m_listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(m_listener, 1) != 0)
      std::abort();
    m_thread = std::thread([this] { Run(); });
  }
  ~Sender() {
    m_thread.join();
    close(m_listener);
    unlink(m_path.c_str());
  }
  std::uint64_t Sent() const { return m_sent; }
  void Begin() { m_begin = true; }
  void Stop() { m_stop = true; }
  void End() { m_end = true; }

 private:
  void Run() {
    m_socket = accept(m_listener, nullptr, nullptr);
    quor::wire::Welcome welcome;
    welcome.set_version(kProtocolVersion);
    welcome.set_machine("bench");
    Send(EncodeFrame(FrameType::Welcome, welcome.SerializeAsString()));
    quor::wire::Response subscribed;
    subscribed.set_id(1);
    Send(EncodeFrame(FrameType::Response, subscribed.SerializeAsString()));
    while (!m_begin) usleep(1000);
    std::vector<std::uint8_t> names;
    for (std::uint16_t id = 1; id < 12; ++id)
      AppendNameRecord(names, HubNameId{id}, "name " + std::to_string(id));
    const std::vector<std::uint8_t> records = Records();
    auto due = Clock::now();
    while (!m_stop) {
      std::vector<std::uint8_t> body = records;
      if (m_sent == 0) body.insert(body.begin(), names.begin(), names.end());
      Send(EncodeFrame(FrameType::Data, body));
      m_sent += kPerFrame;
      quor::wire::Ledger ledger;
      auto* const line = ledger.add_sources();
      line->set_instance(std::string(16, 'i'));
      line->set_serial(m_sent);
      line->set_delivered(m_sent);
      Send(EncodeFrame(FrameType::Ledger, ledger.SerializeAsString()));
      due += std::chrono::nanoseconds(1'000'000'000 / kPerSecond * kPerFrame);
      std::this_thread::sleep_until(due);
    }
    while (!m_end) usleep(1000);
    close(m_socket);
  }
  static std::vector<std::uint8_t> Records() {
    const std::string text(kTextBytes, 't');
    std::vector<std::uint8_t> records;
    for (std::uint32_t i = 1; i <= kPerFrame; ++i) {
      const RecordFieldsOf<HubNameId> fields{.count = i,
                                             .machine = HubNameId{1},
                                             .app = HubNameId{2},
                                             .component = HubNameId{3},
                                             .category = HubNameId(4 + i % 5),
                                             .pid = HubNameId{9},
                                             .tid = HubNameId{10},
                                             .attributes = 1,
                                             .text = text};
      const std::size_t at = records.size();
      records.resize(at + kTagBytes + kTraceFixedBytes + text.size());
      records[at] = kTagTrace;
      StoreRecord(records.data() + at + kTagBytes, fields);
    }
    return records;
  }
  void Send(const std::vector<std::uint8_t>& frame) const {
    for (std::size_t at = 0; at < frame.size();) {
      const ssize_t sent = send(m_socket, frame.data() + at, frame.size() - at, MSG_NOSIGNAL);
      if (sent <= 0) std::abort();
      at += static_cast<std::size_t>(sent);
    }
  }

  const std::string m_path;
  int m_listener = -1, m_socket = -1;
  std::atomic<std::uint64_t> m_sent{0};
  std::atomic<bool> m_begin{false}, m_stop{false}, m_end{false};
  std::thread m_thread;
};

}  // namespace

int main() {
  const std::string path = "/tmp/bench-drain-" + std::to_string(getpid()) + ".sock";
  setenv("QUOR_SOCKET", path.c_str(), 1);
  setenv("QUOR_AUTOSTART", "0", 1);
  g_traceLimit = 500000;
  Sender sender(path);
  TraceThread_i* connection = nullptr;
  std::vector<double> ticks;
  double busy = 0;  // of this thread
  std::uint64_t taken = 0;
  bool whole = false;
  {
    BenchHost host;
    CTraceRealtimeDoc document(host, [&](const QuorStr::String_t& machine, NameMap& names) {
      return connection = CTraceRealtimeDoc::ConnectToTraceService(machine, names);
    });
    if (!document.ConnectToMachine("localhost")) return 2;
    sender.Begin();
    const auto count = [&document] {
      return document.m_traces.Popped() + document.m_traces.size();
    };
    auto due = Clock::now();
    std::uint64_t steady = 0;
    for (int i = 0; i < kTicks; ++i) {
      std::this_thread::sleep_until(due += kTick);
      if (i == kTicks / 3) steady = count();
      const double before = ThreadSeconds();
      const double seconds = Seconds([&] { document.Drain(); });
      if (i >= kTicks / 3) busy += ThreadSeconds() - before;
      if (i >= kTicks / 3) ticks.push_back(seconds * 1e3);
    }
    taken = count() - steady;
    sender.Stop();
    const std::uint64_t behind = sender.Sent() - count();
    for (int i = 0; i < 100 && count() < sender.Sent(); ++i) document.Drain(), usleep(10000);
    whole = count() == sender.Sent() && connection->GetCounts().lost == 0;
    std::printf("behind after the last tick: %llu of %llu, lost %llu\n",
                static_cast<unsigned long long>(behind),
                static_cast<unsigned long long>(sender.Sent()),
                static_cast<unsigned long long>(connection->GetCounts().lost));
    sender.End();
  }
  double sum = 0;
  for (const double ms : ticks) sum += ms;
  const double perTick = sum / static_cast<double>(ticks.size());
  PrintRow("a tick's drain at 1,000,000 traces/s", perTick, "ms", kTickBudgetMs,
           perTick / kTickBudgetMs, 1.0);
  PrintRow("the longest of them", *std::max_element(ticks.begin(), ticks.end()), "ms",
           kTickBudgetMs, *std::max_element(ticks.begin(), ticks.end()) / kTickBudgetMs, 1.1);
  std::printf("%.0f ns a trace, %.0f of this thread; nothing was lost: %s\n",
              sum * 1e6 / static_cast<double>(taken), busy * 1e9 / static_cast<double>(taken),
              whole ? "yes" : "NO");
  return whole ? 0 : 1;
}
