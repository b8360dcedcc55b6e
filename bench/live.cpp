// A real monitor window, offscreen, at its limit of traces, with 100,000 traces a second. First
// they come from a thread by the queue's own rules, then from a real application through a real
// service, for `--seconds N` (20).
//
// Printed: the interface thread's share of a core (its own processor time), memory at the start, in
// the middle and at the end of the run, and whether every trace that was sent became one of the
// document's or was reported as lost.
#include <unistd.h>

#include <QApplication>
#include <QEventLoop>
#include <QTimer>
#include <atomic>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <mutex>
#include <thread>

#include "bench/live_service.h"
#include "bench/ratio.h"
#include "documents/trace_realtime_doc.h"
#include "docview/ui/qt_host.h"
#include "settings/globals.h"
#include "settings/registry.h"
#include "shell/tessera_app.h"
#include "shell/ui/qt_main_frame.h"
#include "shell/ui/qt_shell_faces.h"

namespace {

constexpr int kTracesPerSecond = 100000;
constexpr int kBurst = 500;  // traces that arrive together, every 5 ms

// A source of traces at a fixed rate. Its own thread builds them, as a connection's thread does.
class Source final : public TraceThread_i {
 public:
  explicit Source(NameMap& names) {
    for (NameId id = 1; id < 12; ++id) names[id].name = "name " + std::to_string(id);
  }
  ~Source() override {
    Stop();
    for (TraceEvent_i* event : m_arrived) event->Release();
    for (TraceEvent_i* event : m_drain) event->Release();
  }
  void Start() {
    m_thread = std::thread([this] { Send(); });
  }
  void Stop() {
    m_stop = true;
    if (m_thread.joinable()) m_thread.join();
  }
  void Fill(unsigned traces) {
    for (unsigned i = 0; i < traces; ++i) m_arrived.push_back(Next());
  }
  std::uint64_t Sent() const { return m_sent; }

  void Disconnect() override { delete this; }
  int HasTraces() override {
    if (!m_drain.empty()) return 1;
    if (std::exchange(m_draining, false)) return 0;
    const std::lock_guard lock(m_mutex);
    m_drain.swap(m_arrived);
    m_draining = !m_drain.empty();
    return m_draining;
  }
  TraceEvent_i* NextTrace() override {
    if (m_drain.empty()) return nullptr;
    TraceEvent_i* const event = m_drain.front();
    m_drain.pop_front();
    return event;
  }
  void Pause() override {}
  void Resume() override {}
  Counts GetCounts() const override { return {m_sent, 0}; }

 private:
  TraceEvent_i* Next() {
    const auto count = static_cast<unsigned>(++m_sent);
    return TraceEvent_i::Create(
        count, 1, 2, 3, static_cast<unsigned short>(4 + count % 5), PackDate(2026, 11, 21),
        PackTime(9, 41, 7, 5), std::uint64_t{10000000} * count, 9, 10, kAttributeInfo, 11, 99,
        "a request of ordinary length was taken from the queue and handed to a worker", "");
  }
  void Send() {
    auto due = std::chrono::steady_clock::now();
    while (!m_stop) {
      std::deque<TraceEvent_i*> burst;
      for (int i = 0; i < kBurst; ++i) burst.push_back(Next());
      {
        const std::lock_guard lock(m_mutex);
        m_arrived.insert(m_arrived.end(), burst.begin(), burst.end());
      }
      due += std::chrono::microseconds(1000000LL * kBurst / kTracesPerSecond);
      std::this_thread::sleep_until(due);
    }
  }
  std::mutex m_mutex;
  std::deque<TraceEvent_i*> m_arrived;  // guarded
  std::deque<TraceEvent_i*> m_drain;
  bool m_draining = false;
  std::atomic<bool> m_stop = false;
  std::atomic<std::uint64_t> m_sent = 0;
  std::thread m_thread;
};

double ResidentMb() {
  std::ifstream statm("/proc/self/statm");
  double size = 0, resident = 0;
  statm >> size >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

void RunLoop(double seconds) {
  QEventLoop loop;
  QTimer::singleShot(static_cast<int>(seconds * 1000), Qt::PreciseTimer, &loop, &QEventLoop::quit);
  loop.exec();
}

struct Run {
  double share, startMb, middleMb, endMb;
};

Run Measure(double seconds) {
  RunLoop(1);  // the first ticks warm up
  const double busy = ThreadSeconds(), startMb = ResidentMb();
  double middleMb = 0;
  const double wall = Seconds([&] {
    RunLoop(seconds / 2);
    middleMb = ResidentMb();
    RunLoop(seconds / 2);
  });
  return {(ThreadSeconds() - busy) / wall, startMb, middleMb, ResidentMb()};
}

// At a limit, with the list already full. False when a trace is missing.
bool Live(CTesseraApp& tessera, unsigned limit, double seconds, Run& run) {
  g_traceLimit = limit;
  Source* source = nullptr;
  tessera.m_connectMonitor = [&](const std::string&, NameMap& names) {
    return source = new Source(names);
  };
  tessera.OpenMonitor("bench");
  auto& monitor = static_cast<CTraceRealtimeDoc&>(*tessera.MonitorTemplate()->Documents().front());
  source->Fill(limit);
  monitor.Drain();
  source->Start();
  run = Measure(seconds);
  source->Stop();
  monitor.Drain();
  monitor.Drain();
  const bool whole = monitor.m_traces.Popped() + monitor.m_traces.size() == source->Sent();
  std::printf("limit %u: %llu sent, %llu taken, %zu held\n", limit,
              static_cast<unsigned long long>(source->Sent()),
              static_cast<unsigned long long>(monitor.m_traces.Popped() + monitor.m_traces.size()),
              monitor.m_traces.size());
  tessera.MonitorTemplate()->CloseAllDocuments();
  return whole;
}

// The same through every part of the system. False when a loss was not reported.
bool RealLive(CTesseraApp& tessera, unsigned limit, double seconds, Run& run) {
  g_traceLimit = limit;
  LiveService service;
  TraceThread_i* connection = nullptr;
  tessera.m_connectMonitor = [&](const std::string&, NameMap& names) {
    return connection = TraceThread_i::ConnectToTraceService("localhost", names);
  };
  tessera.OpenMonitor("localhost");
  if (!connection) return false;
  auto& monitor = static_cast<CTraceRealtimeDoc&>(*tessera.MonitorTemplate()->Documents().front());
  service.StartTracing(kTracesPerSecond);
  // At its limit a monitor holds up to a hundred fewer.
  for (int i = 0; i < 60 && monitor.m_traces.size() + 100 < limit; ++i) RunLoop(0.5);
  if (monitor.m_traces.size() + 100 < limit) {
    std::fprintf(stderr, "bench_live: only %zu traces in 30 s\n", monitor.m_traces.size());
    return false;
  }
  run = Measure(seconds);
  const std::uint64_t traced = service.StopTracing();
  const auto sum = [&] { return connection->GetCounts().delivered + connection->GetCounts().lost; };
  for (int i = 0; i < 100 && sum() < traced; ++i) RunLoop(0.1);
  const std::uint64_t lost = connection->GetCounts().lost;
  std::printf(
      "application, service, monitor: %llu traced, %llu delivered, %llu told as lost, %lld "
      "not told\n",
      static_cast<unsigned long long>(traced), static_cast<unsigned long long>(sum() - lost),
      static_cast<unsigned long long>(lost), static_cast<long long>(traced - sum()));
  const bool whole = sum() == traced;
  tessera.MonitorTemplate()->CloseAllDocuments();
  return whole;
}

double WantedSeconds(int argc, char** argv) {
  for (int i = 1; i + 1 < argc; ++i)
    if (std::string(argv[i]) == "--seconds") return std::atof(argv[i + 1]);
  return 20;
}

}  // namespace

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  const std::string settings = "/tmp/bench-live-" + std::to_string(getpid()) + ".ini";
  SetSettingsFile(settings);
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 0U);
  const double seconds = WantedSeconds(argc, argv);
  Run few{}, many{}, real{};
  bool whole = false, told = false;
  {
    QtHost host;
    QtShellFaces faces(host);
    CTesseraApp tessera(host, faces);
    if (!tessera.InitInstance({})) return 2;
    static_cast<QtMainFrame&>(*tessera.Frame()->Face()).Window().resize(1400, 900);
    whole = Live(tessera, 5000, 5, few);
    whole = Live(tessera, 500000, 20, many) && whole;
    told = RealLive(tessera, 500000, seconds, real);
  }
  unlink(settings.c_str());
  PrintRow("100,000 traces/s at 500,000 held", many.share * 100, "% of core", 100, many.share,
           0.10);
  PrintRow("the same at 500,000 held / at 5,000 held", many.share * 100, "% of core",
           few.share * 100, many.share / few.share, 1.5);
  PrintRow("memory at the end / in the middle", many.endMb, "MB", many.middleMb,
           many.endMb / many.middleMb, 1.02);
  PrintRow("the same from an application through a service", real.share * 100, "% of core", 100,
           real.share, 0.10);
  PrintRow("its memory at the end / in the middle", real.endMb, "MB", real.middleMb,
           real.endMb / real.middleMb, 1.02);
  std::printf("its memory at the start %.1f MB, in the middle %.1f MB, at the end %.1f MB, %g s\n",
              real.startMb, real.middleMb, real.endMb, seconds);
  std::printf("every trace that was sent was taken: %s; every loss was told: %s\n",
              whole ? "yes" : "NO", told ? "yes" : "NO");
  return whole && told ? 0 : 1;
}
