// Counting all traces of a file into slices of time, compared with reading what is counted; and
// what the slices of a monitor cost.
#include "bench/counted_traces.h"
#include "bench/ratio.h"
#include "bench/sample_document.h"
#include "overview/far_times.h"
#include "overview/slice_count.h"
#include "workers/piece_threads.h"

namespace {

constexpr int kTurns = 7;
constexpr double kMostOfReading = 1.5, kMostOfCore = 0.01;

std::uint64_t ReadAll(const CTraceDoc& document) {
  std::uint64_t sum = 0;
  document.m_traces.ForEach(0, [&](const TraceEvent_i* event) {
    const RawTrace trace(event->Record());
    sum += trace.Date() + trace.Time() + static_cast<unsigned>(trace.Attributes()) +
           trace.ComponentId() + trace.CategoryId();
  });
  return sum;
}

void CountAll(SliceCount& count) {
  while (count.Take(SliceCount::Clock::now() + std::chrono::seconds(1)) ==
         SliceCount::State::More) {
  }
}

std::uint64_t CountBy(const CTraceDoc& document, std::size_t threads, PieceTimesPtr& times) {
  SliceCountSetup setup;
  setup.threads = threads;
  SliceCount count(std::make_shared<AllTraces>(document.m_traces), LossNames(document.m_names),
                   setup);
  CountAll(count);
  times = count.Times();
  return count.Slices().All().Traces();
}

void Whole(const CTraceDoc& document, PieceTimesPtr& times) {
  std::uint64_t sum = 0, counted = 0;
  const double perTrace = 1e9 / static_cast<double>(document.m_traces.size());
  const Measured one = MeasureBeside(
      kTurns, [&] { sum += ReadAll(document); }, [&] { counted = CountBy(document, 1, times); });
  PrintRow("slices of time / reading times and ids", one.seconds * perTrace, "ns/trace",
           one.floorSeconds * perTrace, one.ratio, kMostOfReading);
  std::printf("  %llu traces, 7 million on one processor: %.0f ms, check %llu\n",
              static_cast<unsigned long long>(counted), one.seconds * perTrace * 7,
              static_cast<unsigned long long>(sum % 10));
  const Measured all = MeasureBeside(
      kTurns, [&] { CountBy(document, 1, times); }, [&] { CountBy(document, 0, times); });
  PrintRow("slices of time, all processors / one", all.seconds * 1e3, "ms", all.floorSeconds * 1e3,
           all.ratio, 0.3 + 0.7 / static_cast<double>(PieceThreads::Processors()));
}

// A twentieth of the time in the middle: only the pieces near it are read.
void Zoomed(const CTraceDoc& document, const PieceTimesPtr& times) {
  std::int64_t first = times->front().first, last = times->front().last;
  for (const PieceTimes& piece : *times) {
    first = std::min(first, piece.first);
    last = std::max(last, piece.last);
  }
  SliceCountSetup setup;
  setup.threads = 1;
  setup.known = times;
  const std::int64_t middle = first + (last - first) / 2, part = (last - first) / 40 + 1;
  setup.limits = TimeLimits{middle - part, middle + part};
  PieceTimesPtr again;
  const Measured measured = MeasureBeside(
      kTurns, [&] { CountBy(document, 1, again); },
      [&] {
        SliceCount count(std::make_shared<AllTraces>(document.m_traces), {}, setup);
        CountAll(count);
      });
  PrintRow("a twentieth of the time anew / all", measured.seconds * 1e3, "ms",
           measured.floorSeconds * 1e3, measured.ratio, 0.2);
}

// At 10,000 traces a second: each is counted, one leaves for each that comes, and twenty times a
// second the slices are looked at.
void Live(const CTraceDoc& document) {
  constexpr std::size_t kHeld = 500'000, kPerSecond = 10'000, kLooks = 20;
  const std::size_t all = std::min(document.m_traces.size(), kHeld + 20 * kPerSecond);
  TimeSlices slices;
  SlicedReader reader{LossNames(document.m_names)};
  std::size_t next = 0, gone = 0;
  const auto add = [&](std::size_t traces) {
    document.m_traces.ForEachIn(
        next, next + traces, [&](const TraceEvent_i* event) { slices.Add(reader.Read(*event)); });
    next += traces;
  };
  const auto remove = [&](std::size_t traces) {
    document.m_traces.ForEachIn(gone, gone + traces, [&](const TraceEvent_i* event) {
      slices.Remove(reader.Read(*event));
    });
    gone += traces;
  };
  add(std::min(kHeld, all));
  double most = 0;
  std::size_t narrower = 0;
  while (next + kPerSecond <= all) {
    const double before = ThreadSeconds();
    for (std::size_t i = 0; i < kLooks; ++i) {
      add(kPerSecond / kLooks);
      remove(kPerSecond / kLooks);
      narrower += BetterLimits(slices) ? 1 : 0;
    }
    most = std::max(most, ThreadSeconds() - before);
  }
  PrintRow("slices of a monitor, 10,000 traces a second / a core", most * 1e2, "%",
           kMostOfCore * 1e2, most / kMostOfCore, 1.0);
  std::printf("  %zu slices, counted anew %zu times\n", slices.Size(), narrower);
}

}  // namespace

int main(int, char** argv) {
  SampleDocument sample(argv[0]);
  CTraceFileDoc& document = sample.document;
  PieceTimesPtr times;
  Whole(document, times);
  Zoomed(document, times);
  Live(document);
  return 0;
}
