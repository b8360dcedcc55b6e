// Counting all traces of a file by a field, compared with the least work for the same numbers.
#include <array>

#include "bench/counted_traces.h"
#include "bench/ratio.h"
#include "bench/sample_document.h"
#include "statistics/live_counts.h"
#include "statistics/trace_count.h"
#include "workers/piece_threads.h"

namespace {

constexpr int kTurns = 5;
constexpr double kMostOfIds = 1.5, kMostOfTexts = 3.0, kMostOfCore = 0.01;

std::uint64_t ReadIds(const CTraceDoc& document) {
  std::uint64_t sum = 0;
  document.m_traces.ForEach(0, [&](const TraceEvent_i* event) {
    const RawTrace trace(event->Record());
    sum += trace.MachineId() + trace.AppId() + trace.ComponentId() + trace.CategoryId() +
           trace.PidId() + trace.TidId() + static_cast<unsigned>(trace.Attributes());
  });
  return sum;
}

// Each byte of each text, one after the other.
std::uint64_t ReadTexts(const CTraceDoc& document) {
  std::array<std::uint8_t, 256> kinds = {};
  for (std::size_t i = 0; i < kinds.size(); ++i) kinds[i] = i % 7 == 0;
  std::uint64_t sum = 0;
  document.m_traces.ForEach(0, [&](const TraceEvent_i* event) {
    for (const char c : RawTrace(event->Record()).Text())
      sum = sum * 3 + kinds[static_cast<unsigned char>(c)];
  });
  return sum;
}

std::uint64_t CountBy(const CTraceDoc& document, StatField field, std::size_t threads,
                      std::size_t& values) {
  TraceCount count(std::make_shared<AllTraces>(document.m_traces), field, {}, {.threads = threads});
  while (count.Take(TraceCount::Clock::now() + std::chrono::seconds(1)) ==
         TraceCount::State::More) {
  }
  values = count.Table().Size();
  return count.Table().All().count;
}

void Beside(const char* floorName, const CTraceDoc& document, StatField field, double target,
            const std::function<std::uint64_t(const CTraceDoc&)>& floorWork) {
  std::uint64_t sum = 0, counted = 0;
  std::size_t values = 0;
  const Measured measured = MeasureBeside(
      kTurns, [&] { sum += floorWork(document); },
      [&] { counted = CountBy(document, field, 1, values); });
  const double perTrace = 1e9 / static_cast<double>(document.m_traces.size());
  PrintRow("by " + std::string(WordOf(field)) + " / " + floorName, measured.seconds * perTrace,
           "ns/trace", measured.floorSeconds * perTrace, measured.ratio, target);
  std::printf("  %llu traces, %zu values, check %llu\n", static_cast<unsigned long long>(counted),
              values, static_cast<unsigned long long>(sum % 10));
}

void OnAllProcessors(const CTraceDoc& document, StatField field) {
  const double target = 0.3 + 0.7 / static_cast<double>(PieceThreads::Processors());
  std::size_t values = 0;
  const Measured measured = MeasureBeside(
      kTurns, [&] { CountBy(document, field, 1, values); },
      [&] { CountBy(document, field, 0, values); });
  PrintRow("by " + std::string(WordOf(field)) + ", all processors / one", measured.seconds * 1e3,
           "ms", measured.floorSeconds * 1e3, measured.ratio, target);
}

// What a monitor's counts cost at 100,000 traces a second: each is noted, one leaves for each that
// comes, and once a second the table is made.
void Live(const CTraceDoc& document, StatField field) {
  constexpr std::size_t kHeld = 500'000, kPerSecond = 100'000;
  const std::size_t all = std::min(document.m_traces.size(), kHeld + 2 * kPerSecond);
  LiveCounts counts(field);
  std::size_t next = 0;
  const auto add = [&](std::size_t traces) {
    document.m_traces.ForEachIn(next, next + traces,
                                [&](const TraceEvent_i* event) { counts.Add(*event, true); });
    next += traces;
  };
  add(std::min(kHeld, all));
  double most = 0;
  while (next + kPerSecond <= all) {
    const double before = ThreadSeconds();
    add(kPerSecond);
    counts.Remove(kPerSecond);
    counts.Table();
    most = std::max(most, ThreadSeconds() - before);
  }
  PrintRow("a monitor by " + std::string(WordOf(field)) + " / a core", most * 1e2, "%",
           kMostOfCore * 1e2, most / kMostOfCore, 1.0);
}

}  // namespace

int main(int, char** argv) {
  SampleDocument sample(argv[0]);
  CTraceFileDoc& document = sample.document;

  for (const StatField field :
       {StatField::Component, StatField::Application, StatField::Severity, StatField::Thread})
    Beside("reading ids", document, field, kMostOfIds, ReadIds);
  Beside("reading texts", document, StatField::Pattern, kMostOfTexts, ReadTexts);
  for (const StatField field : {StatField::Component, StatField::Pattern})
    OnAllProcessors(document, field);
  for (const StatField field : {StatField::Component, StatField::Pattern}) Live(document, field);
  return 0;
}
