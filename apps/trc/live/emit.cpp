// trc emit: a traced application for tests and load.
#include <quor/quor.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <thread>

#include "live/live.h"
#include "sample/sample_random.h"
#include "terminal/exit_status.h"
#include "terminal/interrupt.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr const char* kCategories[] = {"Connect", "Request", "Close"};
constexpr int kFlushMs = 5000;
constexpr std::size_t kDeepestBlock = 5;
constexpr std::uint64_t kEndless = ~std::uint64_t{0};

// The library keeps points and their names for the life of the program and uses them at its end, so
// they must never be destroyed.
std::deque<quor_point>& Points(const EmitOptions& options) {
  static auto* const names = new std::vector<std::string>(options.components);
  static auto* const points = new std::deque<quor_point>;
  for (const std::string& component : *names) {
    for (const char* const category : kCategories) {
      points->push_back(QUOR_POINT_INIT(component.c_str(), category));
      quor_declare(&points->back());
    }
  }
  return *points;
}

// One thread's share of the load: `count` traces, or until SIGINT when that is 0.
class Emitter {
 public:
  Emitter(const EmitOptions& options, std::deque<quor_point>& points, std::uint64_t number,
          std::uint64_t count)
      : m_options(options),
        m_points(points),
        m_number(number),
        m_count(count),
        m_random(options.seed * 1000003 + number) {}

  void Run() {
    const Clock::time_point begin = Clock::now();
    std::uint64_t sent = 0;
    for (; !Interrupted() && (m_options.count == 0 || sent < m_count); ++sent) {
      if (m_options.rate != 0) Wait(begin, sent);
      if (m_options.blocks) {
        TraceInBlocks(sent);
      } else {
        Trace("", sent);
      }
    }
    while (!m_open.empty()) EndBlock();
  }

 private:
  // Each thread has an equal part of the rate and makes up for missed traces.
  void Wait(Clock::time_point begin, std::uint64_t sent) const {
    const double perThread =
        static_cast<double>(m_options.rate) / static_cast<double>(m_options.threads);
    const auto due =
        begin + std::chrono::duration_cast<Clock::duration>(
                    std::chrono::duration<double>(static_cast<double>(sent) / perThread));
    // In short pieces, so that SIGINT works at a low rate too.
    while (!Interrupted() && Clock::now() < due)
      std::this_thread::sleep_until(std::min(due, Clock::now() + std::chrono::milliseconds(50)));
  }
  // With a count, every open block must have a trace left for its end.
  void TraceInBlocks(std::uint64_t sent) {
    const std::uint64_t left = m_options.count == 0 ? kEndless : m_count - sent;  // with this one
    const std::uint32_t step = m_random.Below(4);
    if (left <= m_open.size() || (step == 1 && !m_open.empty())) {
      EndBlock();
    } else if (step == 0 && m_open.size() < kDeepestBlock && left >= m_open.size() + 2) {
      m_open.push_back("block " + std::to_string(sent));
      Send("Begin: " + m_open.back(), QUOR_INFO);
    } else {
      Trace(m_open.empty() ? "" : m_open.back() + ": ", sent);
    }
  }
  void EndBlock() {
    Send("End: " + m_open.back(), QUOR_INFO);
    m_open.pop_back();
  }
  void Trace(const std::string& before, std::uint64_t index) {
    constexpr unsigned kSeverities[] = {QUOR_INFO, QUOR_INFO, QUOR_INFO, QUOR_WARN, QUOR_ERROR};
    std::string text =
        before + "thread " + std::to_string(m_number) + " trace " + std::to_string(index) + " ";
    while (text.size() < m_options.textBytes)
      text.push_back(static_cast<char>('a' + m_random.Below(26)));
    text.resize(m_options.textBytes);
    Send(text, kSeverities[m_random.Below(std::size(kSeverities))]);
  }
  void Send(const std::string& text, unsigned severity) {
    quor_point& point = m_points[m_random.Below(m_points.size())];
    if (quor_on(&point, severity))
      quor_trace(&point, severity, __FILE__, __LINE__, text.data(), text.size());
  }

  const EmitOptions& m_options;
  std::deque<quor_point>& m_points;
  const std::uint64_t m_number;
  const std::uint64_t m_count;
  SampleRandom m_random;
  std::vector<std::string> m_open;  // blocks, innermost last
};

}  // namespace

int RunEmit(const EmitOptions& options) {
  std::deque<quor_point>& points = Points(options);
  quor_application(options.app.c_str());
  std::vector<std::thread> threads;
  for (std::uint64_t i = 0; i < options.threads; ++i) {
    const std::uint64_t share =
        options.count / options.threads + (i < options.count % options.threads ? 1 : 0);
    threads.emplace_back(
        [&options, &points, i, share] { Emitter(options, points, i, share).Run(); });
  }
  for (std::thread& thread : threads) thread.join();
  quor_flush(kFlushMs);
  quor_counts counts{};
  quor_get_counts(&counts);
  Output output;
  output.Line(std::to_string(counts.traced) + " traced, " + std::to_string(counts.lost) + " lost");
  if (output.Finish() == kExitBad) return kExitBad;
  return counts.lost > 0 ? kExitNo : kExitGood;
}
