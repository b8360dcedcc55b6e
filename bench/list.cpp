// The list in its real control, offscreen: showing a large file, appending and trimming rows.
//
// The floor of showing is one paint of the same page; the floor of a live tick is the same tick
// with 5,000 traces held, because no step of it may grow with the number of traces.
#include <QApplication>

#include "bench/bench_host.h"
#include "bench/ratio.h"
#include "bench/sample_file.h"
#include "documents/trace_file_doc.h"
#include "listview/rows/trace_view.h"
#include "listview/rows/ui/row_list_widget.h"

namespace {

RowListMaker MakeQtList() {
  return [](RowListOwner& owner) { return std::make_unique<QtRowList>(owner); };
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
  if (!document.OnOpenDocument(path)) std::exit(2);
  host.RunUntil([&] { return !document.m_loading; });
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

// A monitor's document and view without the connection: adds and trims as a drain does.
struct Live {
  explicit Live(BenchHost& host, std::size_t limit)
      : m_document(host), m_view(m_document, MakeQtList()), m_limit(limit) {
    m_document.m_loading = false;
    m_view.OnInitialUpdate();
    m_list = &Show(m_view);
    Tick(static_cast<int>(limit));
  }

  void Tick(int traces) {
    CTraceHint batch;
    for (int i = 0; i < traces; ++i) {
      if (m_document.m_traces.size() >= m_limit) Trim(batch);
      ++m_count;
      TraceEvent_i* event = TraceEvent_i::Create(
          m_count, 1, 2, 3, static_cast<unsigned short>(4 + m_count % 7), PackDate(2026, 11, 21),
          PackTime(9, 41, 7, 5), std::uint64_t{1000} * m_count, 20, 21, kAttributeInfo, 30, 99,
          "a request of ordinary length was taken from the queue and handed to a worker", "");
      m_document.AddTrace(event);
      batch.m_events.push_back(event);
    }
    m_document.UpdateAllViews(nullptr, kHintAdded, &batch);
  }

  void Trim(CTraceHint& batch) {
    CTraceHint oldest;
    for (std::size_t i = 0; i < 100; ++i) oldest.m_events.push_back(m_document.m_traces[i]);
    m_document.UpdateAllViews(nullptr, kHintTrimmed, &oldest);
    for (std::size_t i = 0; i < 100; ++i) {
      if (!batch.m_events.empty() && batch.m_events.front() == m_document.m_traces[0]) {
        batch.m_events.pop_front();
      }
      m_document.m_traces.PopFront();
    }
  }

  CTraceDoc m_document;
  CTraceView m_view;
  QtRowList* m_list;
  std::size_t m_limit;
  unsigned m_count = 0;
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
  std::vector<double> busy;
  for (int i = 0; i < 9; ++i) {
    busy.push_back(Seconds([&] {
      many.Tick(33333);
      many.m_list->viewport()->grab();
    }));
  }
  const double share = Median(busy) / 0.333333;
  PrintRow("100,000 traces/s: the list's share of a core", share * 100, "% of core", 100, share,
           0.10);

  CTraceFilter hideMost = many.m_view.m_filter;
  hideMost.allTraces = hideMost.allCategories = 0;
  for (NameId id = 4; id < 11; ++id) hideMost.categories[id] = id == 4;
  few.m_view.SetFilter(hideMost, true);
  many.m_view.SetFilter(hideMost, true);
  const Measured filtered = MeasureBeside(
      15, [&] { few.Tick(kTick); }, [&] { many.Tick(kTick); });
  PrintRow("the same with a filter that hides most", filtered.seconds * 1000, "ms",
           filtered.floorSeconds * 1000, filtered.ratio, 1.5);
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  BenchHost host;
  ShowLargeFile(host, SampleFile(argv[0]));
  LiveTicks(host);
  return 0;
}
