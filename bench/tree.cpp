// The procedure tree's model: building it for a large file, compared with the load of that file,
// and a tick of a live stream with trims. The floor of a tick is the same tick with 50,000 traces
// held, because no step of it may grow with the number of traces.
#include <unistd.h>

#include <fstream>

#include "bench/live_document.h"
#include "bench/ratio.h"
#include "bench/sample_document.h"
#include "docview/view.h"
#include "tree/proc/model/proc_model.h"

namespace {

double ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  double all = 0, resident = 0;
  statm >> all >> resident;
  return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void BuildForFile(BenchHost& host, const std::string& path) {
  CTraceFileDoc document(host);
  LoadInto(host, document, path);
  CTraceFilter filter;
  int count = 0;
  const auto load = [&] {
    CTraceFileDoc another(host);
    LoadInto(host, another, path);
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

// A tree on a monitor's document, without a control. The document is destroyed last.
class Live final : public LiveDocument, public CView {
 public:
  Live(BenchHost& host, std::size_t limit, int threads, bool wholeBlocks = false)
      : LiveDocument(host, limit, threads), CView(Document()), m_model(Document(), m_filter) {
    if (wholeBlocks) {
      FillWithWholeBlocks();
    } else {
      Fill();
    }
  }

  void Refilter(const CTraceFilter& filter) {
    m_filter = filter;
    m_model.Clear();
    m_model.AddAll();
  }
  void OnUpdate(CView*, unsigned hint, CObject* object) override {
    const auto& events = static_cast<const CTraceHint*>(object)->m_events;
    if (hint == kHintTrimmed) {
      m_model.RemoveTraces(events);
      m_model.FindNode(*events.front());  // the view asks where the selection moves
    } else {
      const ProcModel::Batch added(m_model);
      for (TraceEvent_i* const event : events) m_model.AddTrace(event, true);
    }
  }
  ViewControl* Control() override { return nullptr; }

 private:
  CTraceFilter m_filter;
  ProcModel m_model;
};

// A restarted service numbers from 1: until the old traces have been trimmed, the numbers of each
// thread are in two runs. The floor is the same document just before.
void NumbersBegunAnew(BenchHost& host, int threads) {
  constexpr int kTick = 33333, kTicks = 12;
  Live live(host, 500000, threads, true);
  live.Refilter(LiveDocument::HideSome());
  const auto ticks = [&] {
    for (int i = 0; i < kTicks; ++i) live.Tick(kTick);
  };
  ticks();
  const double before = Seconds(ticks);
  live.BeginAnew();
  const double behind = Seconds(ticks);
  const std::string name = std::to_string(threads) + (threads == 1 ? " thread: " : " threads: ");
  PrintRow(name + "tick, numbers begun anew, a filter on", behind * 1000 / kTicks, "ms",
           before * 1000 / kTicks, behind / before, 2.0);
}

void LiveTicks(BenchHost& host, int threads) {
  constexpr int kTick = 33333;  // 100,000 traces a second at 333 ms
  Live few(host, 50000, threads), many(host, 500000, threads);
  const std::string name = std::to_string(threads) + (threads == 1 ? " thread: " : " threads: ");
  const auto measure = [&](const std::string& what) {
    const Measured tick = MeasureBeside(
        15, [&] { few.Tick(kTick); }, [&] { many.Tick(kTick); });
    PrintRow(name + what, tick.seconds * 1000, "ms", tick.floorSeconds * 1000, tick.ratio, 1.5);
    const double share = ShareOfCore(15, 0.333333, [&] { many.Tick(kTick); });
    PrintRow(name + "that tick's share of a core", share * 100, "% of core", 100, share, 0.10);
  };
  measure("tick of 33,333 at 500,000 / at 50,000");
  few.Refilter(LiveDocument::HideMost());
  many.Refilter(LiveDocument::HideMost());
  measure("with a filter that hides most");
}

}  // namespace

int main(int, char** argv) {
  BenchHost host;
  BuildForFile(host, SampleFile(argv[0]));
  LiveTicks(host, 1);
  LiveTicks(host, 100);
  NumbersBegunAnew(host, 1);
  NumbersBegunAnew(host, 100);
  return 0;
}
