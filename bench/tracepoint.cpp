// The cost of a trace point for the application: off, on with a ready text, on with a formatted
// one.
//
// Bursts that fit into the ring are timed. Between them the ring is emptied, as a service on
// another core would do. The floors write the same bytes into a ring of the same size.
#include <fmt/format.h>
#include <time.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <thread>

#include "bench/ratio.h"
#include "bench/ring_end.h"
#include "quor/quor.hpp"

#if QUOR_BENCH_SPDLOG
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#endif

namespace {

constexpr int kPoints = 4096;
constexpr int kOffLaps = 200;  // shorter than a time slice, so that neighbours are comparable
constexpr int kOffTurns = 201;
constexpr int kBurst = 20000;
constexpr int kBursts = 20;
constexpr int kTurns = 9;
constexpr std::size_t kTextBytes = 100;

QUOR_POINT(bench_point, "Bench", "Point");
quor_point g_points[kPoints];
volatile unsigned g_seen;  // keeps a floor's result from being optimised away

double PerTraceNs(double seconds, double traces) {
  return seconds * 1e9 / traces;
}

// A ring in plain memory, in the size of the real one.
class FloorRing {
 public:
  void Write(const void* bytes, std::size_t size) {
    if (m_at + size > sizeof m_bytes) m_at = 0;
    std::memcpy(m_bytes + m_at, bytes, size);
    m_at += (size + 7) / 8 * 8;
  }

 private:
  std::size_t m_at = 0;
  alignas(64) char m_bytes[8 << 20];
};
FloorRing g_floorRing;

std::uint64_t FloorClock() {
  timespec time{};
  clock_gettime(CLOCK_REALTIME, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000u +
         static_cast<std::uint64_t>(time.tv_nsec);
}

void MeasureOff(RingEnd& end) {
  for (quor_point& point : g_points) {
    point = QUOR_POINT_INIT("Bench", "Off");
    quor_register(&point);
  }
  end.Await(LinkType::Points);
  end.SetAll(0);
  while (quor_on(&g_points[0], QUOR_INFO)) std::this_thread::yield();
  unsigned evaluated = 0;
  const Measured off = MeasureBeside(
      kOffTurns,
      [] {
        unsigned on = 0;
        for (int lap = 0; lap < kOffLaps; ++lap)
          for (quor_point& point : g_points)
            if (__builtin_expect(__atomic_load_n(&point.settings, __ATOMIC_RELAXED) & QUOR_INFO, 0))
              g_seen = ++on;
      },
      [&] {
        for (int lap = 0; lap < kOffLaps; ++lap)
          for (quor_point& point : g_points) QUOR_TRACE_INFO(point, "{}", ++evaluated);
      });
  const double traces = 1.0 * kOffLaps * kPoints;
  PrintRow("trace point off", PerTraceNs(off.seconds, traces), "ns",
           PerTraceNs(off.floorSeconds, traces), off.ratio, 1.2);
  if (evaluated != 0) std::printf("  an argument was evaluated: WRONG\n");
  end.SetAll(QUOR_INFO | QUOR_WARN | QUOR_ERROR);
  while (!quor_on(&bench_point, QUOR_INFO)) std::this_thread::yield();
}

// Runs bursts of both alternately; only the bursts are timed.
template <class Floor, class Work>
Measured MeasureBursts(RingEnd& end, const Floor& floorOne, const Work& one) {
  std::vector<double> floors, times, ratios;
  for (int turn = -1; turn < kTurns; ++turn) {
    double floorSeconds = 0, seconds = 0;
    for (int burst = 0; burst < kBursts; ++burst) {
      floorSeconds += Seconds([&] {
        for (int i = 0; i < kBurst; ++i) floorOne(i);
      });
      seconds += Seconds([&] {
        for (int i = 0; i < kBurst; ++i) one(i);
      });
      end.Empty();
    }
    if (turn < 0) continue;  // warm-up
    floors.push_back(floorSeconds);
    times.push_back(seconds);
    ratios.push_back(seconds / floorSeconds);
  }
  return {Median(times), Median(floors), Median(ratios)};
}

double MeasureReady(RingEnd& end) {
  const std::string text(kTextBytes, 'x');
  std::array<char, 150> record{};
  const Measured ready = MeasureBursts(
      end,
      [&](int) {
        const std::uint64_t now = FloorClock();
        std::memcpy(record.data(), &now, sizeof now);
        g_floorRing.Write(record.data(), record.size());
      },
      [&](int) {
        if (quor_on(&bench_point, QUOR_INFO))
          quor_trace(&bench_point, QUOR_INFO, __FILE__, __LINE__, text.data(), text.size());
      });
  const double traces = 1.0 * kBursts * kBurst, ns = PerTraceNs(ready.seconds, traces);
  PrintRow("trace point on, text ready", ns, "ns", PerTraceNs(ready.floorSeconds, traces),
           ready.ratio, 1.3);
  return ns;
}

void MeasureFormatted(RingEnd& end) {
  const std::string host = "db.example.com";
  const Measured formatted = MeasureBursts(
      end,
      [&](int i) {
        char record[256];
        const std::uint64_t now = FloorClock();
        std::memcpy(record, &now, sizeof now);
        const auto out = fmt::format_to_n(
            record + kTraceFixedBytes, sizeof record - kTraceFixedBytes,
            "request {} from {} answered in {} ms with code {}", i, host, i * 0.25, 200u);
        g_floorRing.Write(record, kTraceFixedBytes + out.size);
      },
      [&](int i) {
        QUOR_TRACE_INFO(bench_point, "request {} from {} answered in {} ms with code {}", i, host,
                        i * 0.25, 200u);
      });
  const double traces = 1.0 * kBursts * kBurst;
  PrintRow("trace point on, 4 arguments", PerTraceNs(formatted.seconds, traces), "ns",
           PerTraceNs(formatted.floorSeconds, traces), formatted.ratio, 1.25);
}

#if QUOR_BENCH_SPDLOG
void MeasureSpdlog(RingEnd& end, double readyNs) {
  const std::string path = end.Folder() + "/spdlog.txt", text(kTextBytes, 'x');
  {
    const auto log = spdlog::basic_logger_mt("bench", path, true);
    std::vector<double> times;
    for (int turn = 0; turn < 5; ++turn)
      times.push_back(Seconds([&] {
        for (int i = 0; i < 200'000; ++i) log->info(text);
      }));
    const double ns = PerTraceNs(Median(times), 200'000);
    std::printf("  peer: spdlog to a file %.1f ns; Quor is %.2f of it\n", ns, readyNs / ns);
  }
  spdlog::shutdown();
  unlink(path.c_str());
}
#endif

// The other tracer needs its daemon before it is loaded, so it is a separate program, run by a
// script.
void MeasureLttng(double readyNs, const std::string& script) {
  FILE* const peer =
      popen(("sh '" + script + "/lttng_peer.sh' '" + QUOR_BENCH_LTTNG + "'").c_str(), "r");
  double ns = 0;
  const bool measured = peer && std::fscanf(peer, "%lf", &ns) == 1 && ns > 0;
  if (peer) pclose(peer);
  if (measured)
    PrintRow("trace point on, text ready, beside LTTng-UST", readyNs, "ns", ns, readyNs / ns, 0.35);
  else
    std::printf("  peer: LTTng-UST could not be measured (no session daemon)\n");
}

}  // namespace

int main() {
  RingEnd end;
  quor_application("bench");
  end.Take();
  MeasureOff(end);
  const double readyNs = MeasureReady(end);
  MeasureFormatted(end);
#if QUOR_BENCH_SPDLOG
  MeasureSpdlog(end, readyNs);
#endif
  if (*QUOR_BENCH_LTTNG != '\0') MeasureLttng(readyNs, QUOR_BENCH_SOURCE);
  quor_counts counts{};
  quor_get_counts(&counts);
  std::printf("  traced %llu, lost %llu\n", static_cast<unsigned long long>(counts.traced),
              static_cast<unsigned long long>(counts.lost));
  return counts.lost == 0 ? 0 : 1;
}
