// The procedure tree's model: building it for a large file beside the load of that file, and a tick
// of a live stream with trims. The floor of a tick is the same tick with 5,000 traces held, because
// no step of it may grow with the number of traces.
#include <unistd.h>

#include <fstream>

#include "bench/bench_host.h"
#include "bench/ratio.h"
#include "bench/sample_file.h"
#include "documents/trace_file_doc.h"
#include "tree/proc/proc_model.h"

namespace {

void Load(BenchHost& host, CTraceFileDoc& document, const std::string& path) {
  if (!document.OnOpenDocument(path)) std::exit(2);
  host.RunUntil([&] { return !document.m_loading; });
}

double ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  double all = 0, resident = 0;
  statm >> all >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void BuildForFile(BenchHost& host, const std::string& path) {
  CTraceFileDoc document(host);
  Load(host, document, path);
  CTraceFilter filter;
  int count = 0;
  const auto load = [&] {
    CTraceFileDoc another(host);
    Load(host, another, path);
  };
  const auto build = [&] {
    ProcModel model(document, filter);
    model.AddAll();
    count = model.TraceCount();
  };
  const Measured built = MeasureBeside(7, load, build);
  PrintRow("tree of " + std::to_string(count) + " traces / load", built.seconds * 1000, "ms",
           built.floorSeconds * 1000, built.ratio, 3.0);
  filter.allTraces = filter.allSeverities = 0;
  const Measured filtered = MeasureBeside(7, load, build);
  PrintRow("the same with a filter on (" + std::to_string(count) + ")", filtered.seconds * 1000,
           "ms", filtered.floorSeconds * 1000, filtered.ratio, 3.0);
  filter = {};
  const double before = ResidentBytes();
  ProcModel model(document, filter);
  model.AddAll();
  const double perTrace = (ResidentBytes() - before) / model.TraceCount();
  PrintRow("memory of the tree, a leaf's 32 bytes and word", perTrace, "B/trace", 40, perTrace / 40,
           2.0);
}

// A monitor's document and tree without the connection: adds and trims as a drain does.
class Live {
 public:
  Live(BenchHost& host, std::size_t limit, int threads)
      : m_document(host), m_model(m_document, m_filter), m_limit(limit), m_threads(threads) {
    m_document.m_loading = false;
    Tick(static_cast<int>(limit));
  }

  void Tick(int traces) {
    std::deque<TraceEvent_i*> batch;
    for (int i = 0; i < traces; ++i) {
      if (m_document.m_traces.size() >= m_limit) Trim(batch);
      m_document.AddTrace(Next());
      batch.push_back(m_document.m_traces.back());
    }
    const ProcModel::Batch added(m_model);
    for (TraceEvent_i* const event : batch) m_model.AddTrace(event, true);
  }

  void Refilter(const CTraceFilter& filter) {
    m_filter = filter;
    m_model.Clear();
    m_model.AddAll();
  }

 private:
  TraceEvent_i* Next() {
    const unsigned n = ++m_count;
    // A thread sends some traces before another one does: two plain ones to each block of three.
    const unsigned step = n % 5;
    const char* const text = step == 1   ? "Begin: handle a request"
                             : step == 4 ? "End: handle a request"
                                         : "a request of ordinary length was taken from the queue";
    const auto thread = static_cast<unsigned short>(n / 20 % static_cast<unsigned>(m_threads));
    return TraceEvent_i::Create(
        n, 1, 2, 3, static_cast<unsigned short>(4 + n % 7), PackDate(2026, 11, 21),
        PackTime(9, 41, 7, 5), std::uint64_t{1000} * n,
        static_cast<unsigned short>(20 + thread / 4), static_cast<unsigned short>(100 + thread),
        kAttributeInfo, 30, 99, text, "");
  }

  void Trim(std::deque<TraceEvent_i*>& batch) {
    std::deque<TraceEvent_i*> oldest;
    for (std::size_t i = 0; i < 100; ++i) oldest.push_back(m_document.m_traces[i]);
    m_model.RemoveTraces(oldest);
    m_model.FindNode(*oldest.front());  // the view asks where the selection goes
    for (const TraceEvent_i* const event : oldest) {
      if (!batch.empty() && batch.front() == event) batch.pop_front();
      m_document.m_traces.PopFront();
    }
  }

  CTraceDoc m_document;
  CTraceFilter m_filter;
  ProcModel m_model;
  const std::size_t m_limit;
  const int m_threads;
  unsigned m_count = 0;
};

CTraceFilter HideMost() {
  CTraceFilter filter;
  filter.allTraces = filter.allCategories = 0;
  for (NameId id = 4; id < 11; ++id) filter.categories[id] = id == 4;
  return filter;
}

void LiveTicks(BenchHost& host, int threads) {
  constexpr int kTick = 33333;  // 100,000 traces a second at 333 ms
  Live few(host, 5000, threads), many(host, 500000, threads);
  const std::string name = std::to_string(threads) + " threads: ";
  const auto tickFew = [&] { few.Tick(kTick); };
  const auto tickMany = [&] { many.Tick(kTick); };
  const Measured tick = MeasureBeside(15, tickFew, tickMany);
  PrintRow(name + "tick of 33,333 at 500,000 / at 5,000", tick.seconds * 1000, "ms",
           tick.floorSeconds * 1000, tick.ratio, 1.5);
  PrintRow(name + "that tick's share of a core", tick.seconds / 0.333333 * 100, "% of core", 100,
           tick.seconds / 0.333333, 0.10);
  few.Refilter(HideMost());
  many.Refilter(HideMost());
  const Measured filtered = MeasureBeside(15, tickFew, tickMany);
  PrintRow(name + "with a filter that hides most", filtered.seconds * 1000, "ms",
           filtered.floorSeconds * 1000, filtered.ratio, 1.5);
  PrintRow(name + "that tick's share of a core", filtered.seconds / 0.333333 * 100, "% of core",
           100, filtered.seconds / 0.333333, 0.10);
}

}  // namespace

int main(int, char** argv) {
  BenchHost host;
  BuildForFile(host, SampleFile(argv[0]));
  LiveTicks(host, 1);
  LiveTicks(host, 100);
  return 0;
}
