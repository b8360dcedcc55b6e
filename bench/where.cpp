// Asking every trace of a file a filter text, compared with the least work for the same answers.
#include <cstring>

#include "bench/pcre2_peer.h"
#include "bench/ratio.h"
#include "bench/sample_document.h"
#include "panes/trace_scan.h"
#include "tree/filter/filter_pass.h"
#include "where/text/where_writer.h"
#include "where/where_matcher.h"
#include "workers/piece_threads.h"

namespace {

constexpr int kTurns = 5;
constexpr double kMostOfIds = 1.5, kMostOfMemmem = 1.5, kMostOfPcre2 = 1.2, kMostOfMarks = 1.5,
                 kMostOfDelta = 3.0;
constexpr std::size_t kTick = 33'333;  // traces

template <class Test>
std::size_t Count(const CTraceDoc& document, Test test) {
  std::size_t hits = 0;
  document.m_traces.ForEach(0,
                            [&](TraceEvent_i* event) { hits += test(RawTrace(event->Record())); });
  return hits;
}

std::uint64_t ReadIds(const CTraceDoc& document) {
  std::uint64_t sum = 0;
  Count(document, [&](const RawTrace& trace) {
    sum += trace.MachineId() + trace.AppId() + trace.ComponentId() + trace.CategoryId() +
           trace.PidId() + trace.TidId() + static_cast<unsigned>(trace.Attributes());
    return false;
  });
  return sum;
}

CTraceFilter FilterOf(const std::string& text) {
  CTraceFilter filter;
  WhereError error;
  filter.where = WhereProgram::Compile(text, error);
  if (filter.where) return filter;
  std::fprintf(stderr, "%s: %s\n", text.c_str(), error.reason.c_str());
  std::exit(2);
}

std::size_t CountOurs(const CTraceDoc& document, CTraceFilter& filter) {
  std::size_t hits = 0;
  FilterPass pass(filter, document);
  document.m_traces.ForEach(0, [&](const TraceEvent_i* event) { hits += pass.Matches(*event); });
  return hits;
}

void Report(const std::string& what, const CTraceDoc& document, const Measured& measured,
            double target, std::size_t hits, std::size_t floorHits) {
  const double perTrace = 1e9 / static_cast<double>(document.m_traces.size());
  PrintRow(what, measured.seconds * perTrace, "ns/trace", measured.floorSeconds * perTrace,
           measured.ratio, target);
  std::printf("  %zu of %zu traces%s\n", hits, document.m_traces.size(),
              hits == floorHits ? "" : ", NOT THE SAME AS THE FLOOR'S");
}

void BesideIds(const char* what, const CTraceDoc& document, const std::string& text,
               double target = kMostOfIds) {
  CTraceFilter filter = FilterOf(text);
  std::uint64_t sum = 0;
  std::size_t hits = 0;
  const Measured measured = MeasureBeside(
      kTurns, [&] { sum += ReadIds(document); }, [&] { hits = CountOurs(document, filter); });
  Report(std::string(what) + " / reading ids", document, measured, target, hits,
         sum == 0 ? hits + 1 : hits);
}

void BesideMemmem(const CTraceDoc& document, const std::string& wanted) {
  CTraceFilter filter = FilterOf("text contains \"" + wanted + "\"");
  std::size_t hits = 0, floorHits = 0;
  const auto has = [&wanted](const RawTrace& trace) {
    const std::string_view text = trace.Text();
    return memmem(text.data(), text.size(), wanted.data(), wanted.size()) != nullptr;
  };
  const Measured measured = MeasureBeside(
      kTurns, [&] { floorHits = Count(document, has); },
      [&] { hits = CountOurs(document, filter); });
  Report("contains " + wanted + " / memmem", document, measured, kMostOfMemmem, hits, floorHits);
}

void BesidePcre2(const CTraceDoc& document, const char* expression) {
  CTraceFilter filter = FilterOf("text matches \"" + std::string(expression) + "\"");
  const Pcre2Peer alone(expression);
  std::size_t hits = 0, floorHits = 0;
  const auto finds = [&alone](const RawTrace& trace) { return alone.Finds(trace.Text()); };
  const Measured measured = MeasureBeside(
      kTurns, [&] { floorHits = Count(document, finds); },
      [&] { hits = CountOurs(document, filter); });
  Report("matches " + std::string(expression) + " / PCRE2-JIT", document, measured, kMostOfPcre2,
         hits, floorHits);
}

// What a live tick makes anew each time: the pass, and all that it learns.
void BesideMarks(const CTraceDoc& document, const std::string& text) {
  CTraceFilter ours = FilterOf(text), marks;
  marks.MergeDocumentNames(document);
  marks.allTraces = marks.allSeverities = marks.allComponents = 0;
  marks.severities[0] = 0;
  const std::size_t from = document.m_traces.size() - std::min(kTick, document.m_traces.size());
  const auto tick = [&](CTraceFilter& filter) {
    std::size_t hits = 0;
    FilterPass pass(filter, document);
    document.m_traces.ForEach(from,
                              [&](const TraceEvent_i* event) { hits += pass.Matches(*event); });
    return hits;
  };
  constexpr int kTicks = 200;
  std::size_t hits = 0;
  const auto many = [&](CTraceFilter& filter) {
    for (int i = 0; i < kTicks; ++i) hits += tick(filter);
  };
  const Measured measured = MeasureBeside(
      kTurns, [&] { many(marks); }, [&] { many(ours); });
  constexpr double kMs = 1e3 / kTicks;
  PrintRow("a live tick's text / the same marks", measured.seconds * kMs, "ms",
           measured.floorSeconds * kMs, measured.ratio, kMostOfMarks);
  std::printf("  check %zu\n", hits % 1000);
}

// The pass of a window: what it finds, when the first page was there, how long its longest step
// was.
struct InWindow {
  std::size_t hits = 0;
  double firstPageMs = 0, longestStepMs = 0;
};

InWindow ScanInWindow(BenchHost& host, CTraceDoc& document, const CTraceFilter& filter) {
  constexpr std::size_t kPage = 50;
  constexpr std::chrono::milliseconds kStep(10);
  using Clock = TraceScan::Clock;
  const auto msSince = [](Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  };
  InWindow all;
  bool whole = false;
  std::function<void()> step;
  PostedStep posted(host, [&step] { step(); });
  const Clock::time_point begun = Clock::now();
  TraceScan scan(document, filter, {}, posted.GetLine());
  step = [&] {
    const Clock::time_point start = Clock::now();
    whole =
        scan.Take(start + kStep, [&all](TraceEvent_i*) { ++all.hits; }) == TraceScan::State::Whole;
    if (all.firstPageMs == 0 && (whole || all.hits >= kPage)) all.firstPageMs = msSince(begun);
    if (!whole && !scan.GoOn()) posted.Ask();
    all.longestStepMs = std::max(all.longestStepMs, msSince(start));
  };
  step();
  host.RunUntil([&whole] { return whole; });
  return all;
}

// On all processors, beside the same pass on one.
void OnAllProcessors(BenchHost& host, CTraceDoc& document, const std::string& text) {
  const CTraceFilter filter = FilterOf(text);
  // What each further processor brings is less than all of itself: the memory is shared.
  const double target = 0.3 + 0.7 / static_cast<double>(PieceThreads::Processors());
  std::size_t floorHits = 0;
  InWindow all, worst;
  const Measured measured = MeasureBeside(
      kTurns,
      [&] {
        CTraceFilter own = filter;
        floorHits = CountOurs(document, own);
      },
      [&] {
        all = ScanInWindow(host, document, filter);
        worst.firstPageMs = std::max(worst.firstPageMs, all.firstPageMs);
        worst.longestStepMs = std::max(worst.longestStepMs, all.longestStepMs);
      });
  Report(text + ", all processors / one", document, measured, target, all.hits, floorHits);
  PrintRow("  its first page", worst.firstPageMs, "ms", 100.0, worst.firstPageMs / 100, 1.0);
  PrintRow("  its longest step", worst.longestStepMs, "ms", 50.0, worst.longestStepMs / 50, 1.0);
}

// The longest search of one text: until it is given up, a Cancel waits.
void Pathological() {
  WhereError error;
  const auto program = WhereProgram::Compile("text matches \"(x+x+)+y|(.*)*z\"", error);
  const NameMap names;
  WhereMatcher matcher(program, names);
  TraceEvent_i* const event =
      TraceEvent_i::Create(1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, std::string(65'535, 'x'), "");
  bool found = false;
  const double seconds = Seconds([&] { found = matcher.Matches(event->Record()); });
  ReleaseTrace(event);
  PrintRow("a text of 64 KiB, pathological expression", seconds * 1e3, "ms", 50.0,
           seconds * 1e3 / 50, 1.0);
  std::printf("  %s, %llu given up\n", found ? "found" : "not found",
              static_cast<unsigned long long>(matcher.LimitsReached()));
}

// The names of the first components, as a list of values.
std::string SomeComponents(const CTraceDoc& document) {
  std::string list;
  std::size_t left = 3;
  for (const NameId id : document.m_indexes.components.Ids()) {
    if (left-- == 0) break;
    list += (list.empty() ? "" : ", ") + WhereQuoted(NameOf(document.m_names, id));
  }
  return list;
}

}  // namespace

int main(int, char** argv) {
  SampleDocument sample(argv[0]);
  CTraceFileDoc& document = sample.document;

  const std::string components = SomeComponents(document);
  const std::string ids = "severity >= warn and component in {" + components + "}";
  BesideIds("severity and component", document, ids);
  BesideIds("seven fields", document,
            ids +
                " and not verbose and machine != none and application != none and category "
                "!= none and pid != 1 and tid != 1");
  BesideIds(
      "an or of ands", document,
      "(severity == error and pid != 1) or (component in {" + components + "} and not developer)");
  BesideIds("count and line", document, "count > 1000 and line < 100");
  BesideIds("time and tic", document, "time > 2001-01-01 and tic > 1000");
  BesideIds("delta", document, "delta > 1ms", kMostOfDelta);
  for (const char* const wanted : {"snapshot", "mandatory", "e", "cart"})
    BesideMemmem(document, wanted);
  for (const char* const expression :
       {"snapshot", "order [0-9]+|cart", "^order", "hit.*rate [0-9]*", "[a-z]+ [0-9]+ taken"})
    BesidePcre2(document, expression);
  BesideMarks(document, ids);
  for (const char* const text :
       {"severity >= warn", "text contains \"snapshot\"", "text matches \"order [0-9]+|cart\"",
        "delta > 1ms", "text contains \"no trace has this\""})
    OnAllProcessors(sample.host, document, text);
  Pathological();
  return 0;
}
