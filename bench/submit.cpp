// From a Submit to the first trace of the point that it switches on, in a running application: for
// a monitor and a configuration of this machine, and for both over a loopback TLS link. Each 100
// times, median and worst, beside the 100 ms that users are promised. The first also beside a bare
// message of 64 bytes to another process and back, as often.
#include <poll.h>

#include "bench/live_service.h"
#include "bench/ratio.h"
#include "quor/client/trace_config.h"
#include "quor/client/trace_thread.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kTimes = 100;
constexpr int kTracesPerSecond = 20000;
constexpr double kPromisedMs = 100;
// Longer than the service collects traces for a batch, as before a click of a user.
constexpr std::chrono::milliseconds kSilence{100}, kPatience{10000};

[[noreturn]] void Fail(const std::string& why) {
  std::fprintf(stderr, "bench_submit: %s\n", why.c_str());
  std::exit(2);
}

// A monitor of one application. Reports of losses are no traces.
class Monitor {
 public:
  explicit Monitor(const std::string& machine) {
    std::string why;
    m_connection = TraceThread_i::ConnectToTraceService(machine, m_names, &why);
    if (!m_connection) Fail(why);
  }
  ~Monitor() { m_connection->Disconnect(); }
  Monitor(const Monitor&) = delete;
  Monitor& operator=(const Monitor&) = delete;

  void Await() { m_connection->AwaitTraces(1000); }
  // Takes what has come. Is a trace of the category among it?
  bool Takes(const std::string& category) {
    bool taken = false;
    while (m_connection->HasTraces()) {
      TraceEvent_i* const trace = m_connection->NextTrace();
      const bool report = trace->GetComponentName(m_names) == "Quor";
      if (!report) m_last = Clock::now();
      taken = taken || (!report && trace->GetCategoryName(m_names) == category);
      trace->Release();
    }
    return taken;
  }
  void AwaitSilence() {
    for (m_last = Clock::now(); Clock::now() - m_last < kSilence; poll(nullptr, 0, 1)) Takes("");
  }

 private:
  NameMap m_names;
  TraceThread_i* m_connection = nullptr;
  Clock::time_point m_last;
};

QuorPtr<trace_App_i> OpenRunning(const std::string& machine) {
  std::string why;
  const auto until = Clock::now() + kPatience;
  for (QuorPtr<trace_App_i> app; Clock::now() < until; poll(nullptr, 0, 10)) {
    app = trace_App_i::Create(machine, "load", &why);
    if (app && app->GetTraceMap().size() == 2) return app;
  }
  Fail(why.empty() ? "the application does not come" : why);
}

double OnceMs(trace_App_i& app, Monitor& monitor, const trace_Category_t& trace) {
  app.SetAllTraces(0);
  if (!app.Submit()) Fail("a Submit is refused");
  monitor.AwaitSilence();
  app.SetSettings(trace.traceId, 7);
  const auto start = Clock::now();
  if (!app.Submit()) Fail("a Submit is refused");
  while (!monitor.Takes(trace.name)) {
    if (Clock::now() - start > kPatience) Fail("a trace that was switched on does not come");
    monitor.Await();
  }
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The median of a bare message and its answer on a socket of this machine.
double RoundTripMs() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) Fail("no socket");
  char message[64] = {};
  const pid_t echo = fork();
  if (echo == 0) {
    close(ends[0]);
    while (read(ends[1], message, sizeof message) > 0)
      if (write(ends[1], message, sizeof message) < 0) break;
    _exit(0);
  }
  close(ends[1]);
  std::vector<double> times;
  for (int i = 0; i < kTimes; ++i) {
    poll(nullptr, 0, 1);  // both sleep, as they do before a Submit
    times.push_back(1e3 * Seconds([&] {
                      if (write(ends[0], message, sizeof message) < 0 ||
                          read(ends[0], message, sizeof message) <= 0)
                        Fail("no answer");
                    }));
  }
  close(ends[0]);
  waitpid(echo, nullptr, 0);
  return Median(times);
}

double Measure(const std::string& machine, const std::string& where) {
  Monitor monitor(machine);
  const QuorPtr<trace_App_i> app = OpenRunning(machine);
  std::vector<const trace_Category_t*> traces;
  for (const trace_Component_t& component : app->GetTraceMap())
    for (const trace_Category_t& category : component.categories) traces.push_back(&category);
  std::vector<double> times;
  for (int i = 0; i < kTimes; ++i)
    times.push_back(OnceMs(*app, monitor, *traces[static_cast<std::size_t>(i) % traces.size()]));
  const double median = Median(times), worst = *std::max_element(times.begin(), times.end());
  PrintRow("Submit to the first trace, " + where, median, "ms", kPromisedMs, median / kPromisedMs,
           1);
  PrintRow("the same, worst of " + std::to_string(kTimes), worst, "ms", kPromisedMs,
           worst / kPromisedMs, 1);
  return median;
}

}  // namespace

int main() {
  LiveService service(LiveService::Listens::OnLoopback);
  service.StartTracing(kTracesPerSecond);
  const double floor = RoundTripMs(), median = Measure("localhost", "on this machine");
  PrintRow("the same beside a bare round trip", median, "ms", floor, median / floor, 3);
  Measure(service.Address(), "over loopback TLS");
  service.StopTracing();
  return 0;
}
