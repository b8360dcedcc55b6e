// The list in its real control, offscreen: showing a large file, appending and trimming rows.
//
// The floor of showing is one paint of the same page; the floor of a live tick is the same tick
// with 5,000 traces held, because no step of it may grow with the number of traces.
#include <QApplication>
#include <numeric>

#include "bench/live_document.h"
#include "bench/ratio.h"
#include "bench/sample_document.h"
#include "listview/rows/trace_view.h"
#include "listview/rows/ui/trace_rows.h"

namespace {

RowListMaker MakeQtList() {
  return [](RowListOwner& owner) { return MakeTraceRows(owner); };
}

QtRowList& Show(CTraceView& view) {
  auto& list = static_cast<QtRowList&>(view.List());
  list.resize(1200, 800);
  list.show();
  QApplication::processEvents();
  return list;
}

void ShowLargeFile(BenchHost& host, const std::string& path) {
  CTraceFileDoc document(host);
  LoadInto(host, document, path);
  CTraceView view(document, MakeQtList());
  view.OnInitialUpdate();
  QtRowList& list = Show(view);
  const Measured shown = MeasureBeside(
      9, [&] { list.viewport()->grab(); },
      [&] {
        view.OnUpdate(nullptr, kHintReady, nullptr);
        list.viewport()->grab();
      });
  PrintRow("show a file of " + std::to_string(document.m_traces.size()) + " traces / paint",
           shown.seconds * 1000, "ms", shown.floorSeconds * 1000, shown.ratio, 3.0);
  int row = 0;
  const Measured scrolled = MeasureBeside(
      9, [&] { list.viewport()->grab(); },
      [&] {
        row = (row + 1234567) % list.ItemCount();
        list.ScrollTo(row);
        list.viewport()->grab();
      });
  PrintRow("jump to another page / paint", scrolled.seconds * 1000, "ms",
           scrolled.floorSeconds * 1000, scrolled.ratio, 2.0);
}

// The list on a monitor's document.
struct Live {
  Live(BenchHost& host, std::size_t limit) : m_source(host, limit, 1) {
    m_view.OnInitialUpdate();
    m_list = &Show(m_view);
    m_source.Fill();
  }
  void Tick(int traces) { m_source.Tick(traces); }

  LiveDocument m_source;
  CTraceView m_view{m_source.Document(), MakeQtList()};
  QtRowList* m_list;
};

void LiveTicks(BenchHost& host) {
  constexpr int kTick = 3333;  // 10,000 traces a second at 333 ms
  Live few(host, 5000), many(host, 500000);
  const Measured tick = MeasureBeside(
      15,
      [&] {
        few.Tick(kTick);
        few.m_list->viewport()->grab();
      },
      [&] {
        many.Tick(kTick);
        many.m_list->viewport()->grab();
      });
  PrintRow("tick of 3,333 at 500,000 held / at 5,000 held", tick.seconds * 1000, "ms",
           tick.floorSeconds * 1000, tick.ratio, 1.5);
  const double share = ShareOfCore(9, 0.333333, [&] {
    many.Tick(33333);
    many.m_list->viewport()->grab();
  });
  PrintRow("100,000 traces/s: the list's share of a core", share * 100, "% of core", 100, share,
           0.10);

  const CTraceFilter hideMost = LiveDocument::HideMost(many.m_view.m_filter);
  few.m_view.SetFilter(hideMost, true);
  many.m_view.SetFilter(hideMost, true);
  const Measured filtered = MeasureBeside(
      15, [&] { few.Tick(kTick); }, [&] { many.Tick(kTick); });
  PrintRow("the same with a filter that hides most", filtered.seconds * 1000, "ms",
           filtered.floorSeconds * 1000, filtered.ratio, 1.5);
}

void Marks(BenchHost& host) {
  constexpr std::size_t kMarked = DocNotes::kMost;
  Live without(host, kMarked), with(host, kMarked);
  DocNotes& notes = with.m_source.Document().Notes();
  const std::uint64_t first = with.m_source.Document().m_traces.Popped();
  std::vector<std::uint64_t> numbers(with.m_source.Document().m_traces.size());
  std::iota(numbers.begin(), numbers.end(), first);
  if (!notes.Mark(numbers, 1)) std::exit(2);
  int row = 0;
  const auto paint = [&](Live& live) {
    row = (row + 1234567) % live.m_list->ItemCount();
    live.m_list->ScrollTo(row);
    live.m_list->viewport()->grab();
  };
  const Measured page = MeasureBeside(
      25, [&] { paint(without); }, [&] { paint(with); });
  PrintRow("a page with " + std::to_string(notes.Notes().size()) + " marks / without",
           page.seconds * 1000, "ms", page.floorSeconds * 1000, page.ratio, 1.5);
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  BenchHost host;
  ShowLargeFile(host, SampleFile(argv[0]));
  LiveTicks(host);
  Marks(host);
  return 0;
}
