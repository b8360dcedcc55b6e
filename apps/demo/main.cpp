// An example of a traced application.
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <thread>
#include <vector>

#include "options.h"
#include "quor/quor.hpp"
#include "shop.h"

namespace {

constexpr int kExitLost = 1;
constexpr int kExitWrong = 2;
constexpr unsigned kFlushMs = 500;

// Returns when the time is over (0: never) or the program is interrupted. REQUIRES: the signals are
// blocked in all threads.
void WaitForEnd(const sigset_t& signals, double seconds) {
  if (seconds == 0) {
    int number = 0;
    sigwait(&signals, &number);
    return;
  }
  const auto end =
      std::chrono::steady_clock::now() +
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
  for (;;) {
    const auto left = end - std::chrono::steady_clock::now();
    if (left <= left.zero()) return;
    const auto whole = std::chrono::duration_cast<std::chrono::seconds>(left);
    const timespec wait = {static_cast<time_t>(whole.count()),
                           static_cast<long>(std::chrono::nanoseconds(left - whole).count())};
    if (sigtimedwait(&signals, nullptr, &wait) > 0) return;
    if (errno != EAGAIN && errno != EINTR) return;
  }
}

int Run(const DemoOptions& options) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  quor_application(options.name.c_str());
  std::fprintf(stderr, "quor-demo: tracing as \"%s\" with %u worker%s, %s\n", options.name.c_str(),
               options.threads, options.threads == 1 ? "" : "s",
               options.seconds > 0 ? "for a while" : "until Ctrl+C");
  StopSign stop;
  std::vector<std::thread> workers;
  for (unsigned number = 1; number <= options.threads; ++number) {
    workers.emplace_back([&options, &stop, number] {
      Pace pace(stop, options.rate / options.threads);
      RunWorker(number, pace);
    });
  }
  WaitForEnd(signals, options.seconds);
  stop.Ask();
  for (std::thread& worker : workers) worker.join();
  quor_flush(kFlushMs);
  quor_counts counts;
  quor_get_counts(&counts);
  std::fprintf(stderr, "quor-demo: %llu traces, %llu lost\n",
               static_cast<unsigned long long>(counts.traced),
               static_cast<unsigned long long>(counts.lost));
  return counts.lost > 0 ? kExitLost : 0;
}

}  // namespace

int main(int argc, char** argv) {
  const DemoOptions options = ParseDemoOptions({argv + 1, argv + argc});
  if (!options.wrong.empty()) {
    std::fprintf(stderr, "quor-demo: %s\n%s", options.wrong.c_str(), DemoUsage());
    return kExitWrong;
  }
  if (options.help) std::printf("%s", DemoUsage());
  if (options.version) std::printf("quor-demo " TESSERA_VERSION "\n");
  return options.help || options.version ? 0 : Run(options);
}
