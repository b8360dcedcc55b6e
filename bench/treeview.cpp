// The procedure tree in its real control, offscreen: hidden behind the list of a monitor at its
// limit of traces, and opened at a thread of a million traces.
//
// The floor of an opening is to fill a vector of as many entries of 32 bytes from the same nodes,
// and one paint.
#include <QApplication>

#include "bench/bench_host.h"
#include "bench/live_document.h"
#include "bench/ratio.h"
#include "controls/tree/ui/tree_widget.h"
#include "listview/rows/trace_view.h"
#include "listview/rows/ui/trace_rows.h"
#include "tree/proc/proc_view.h"

namespace {

constexpr int kTick = 33333;  // 100,000 traces a second at 333 ms
constexpr double kTickSeconds = 0.333333;
constexpr double kMostOfCore = 0.07;

std::unique_ptr<TreeControl> MakeQtTree(TreeControlOwner& owner) {
  return std::make_unique<QtTreeControl>(owner, "Procedure tree");
}

template <class Control>
Control& Show(ViewControl& control) {
  auto& widget = static_cast<Control&>(control);
  widget.resize(1200, 800);
  widget.show();
  QApplication::processEvents();
  return widget;
}

// A monitor's window: the list is visible, and the hidden tree is open at its first thread.
struct Live {
  Live(BenchHost& host, std::size_t limit, int threads) : m_source(host, limit, threads) {
    m_list.OnInitialUpdate();
    m_tree.OnInitialUpdate();
    m_source.Fill();
    TreeControl& tree = m_tree.Tree();
    for (TreeItem item = tree.Walk(0, TreeStep::FirstChild); item;
         item = tree.Walk(item, TreeStep::FirstChild))
      tree.Expand(item, true);
    m_rows = &Show<QtRowList>(m_list.List());
  }
  void Tick() {
    m_source.Tick(kTick);
    m_rows->viewport()->grab();
    QApplication::processEvents();
  }
  void Refilter() {
    m_list.SetFilter(LiveDocument::HideMost(m_list.m_filter), true);
    m_tree.SetFilter(LiveDocument::HideMost(m_tree.m_filter), true);
  }

  LiveDocument m_source;
  CTraceView m_list{m_source.Document(), [](RowListOwner& owner) { return MakeTraceRows(owner); }};
  CProcView m_tree{m_source.Document(), MakeQtTree};
  QtRowList* m_rows = nullptr;
};

void Measure(const std::string& what, Live& few, Live& many) {
  const Measured tick = MeasureBeside(
      15, [&] { few.Tick(); }, [&] { many.Tick(); });
  PrintRow(what, tick.seconds * 1000, "ms", tick.floorSeconds * 1000, tick.ratio, 1.5);
  const double share = ShareOfCore(15, kTickSeconds, [&] { many.Tick(); });
  PrintRow(what.substr(0, what.find(", /")) + ": share of a core", share * 100, "% of core", 100,
           share, kMostOfCore);
}

void LiveTicks(BenchHost& host, int threads) {
  Live few(host, 50000, threads), many(host, 500000, threads);
  const std::string name = std::to_string(threads) + (threads == 1 ? " thread" : " threads");
  Measure("list and hidden tree, " + name + ", / 50,000", few, many);
  few.Refilter();
  many.Refilter();
  Measure("  with a filter that hides most", few, many);
}

void OpenAThread(BenchHost& host) {
  constexpr int kTraces = 1000000;
  LiveDocument source(host, kTraces, 1);
  source.FillPlain();
  CProcView view(source.Document(), MakeQtTree);
  view.OnInitialUpdate();
  auto& tree = Show<QtTreeControl>(view.Tree());
  std::vector<double> floors, times, ratios;
  for (int i = 0; i < 9; ++i) {
    view.OnUpdate(nullptr, kHintReady, nullptr);
    TreeItem thread = tree.Walk(0, TreeStep::FirstChild);
    for (int level = 0; level < 3; ++level) {
      tree.Expand(thread, true);
      thread = tree.Walk(thread, TreeStep::FirstChild);
    }
    const auto& node = static_cast<const CExecutionBlock&>(*view.NodeOf(thread));
    floors.push_back(Seconds([&] {
      struct Words {
        const void* words[4];
      };
      std::vector<Words> items(node.children.size());
      for (std::size_t child = 0; child < items.size(); ++child)
        items[child] = {{&node, node.children[child], node.children[child]->event, nullptr}};
      tree.viewport()->grab();
    }));
    times.push_back(Seconds([&] {
      tree.Expand(thread, true);
      tree.viewport()->grab();
    }));
    ratios.push_back(times.back() / floors.back());
  }
  if (tree.Items().Rows() != kTraces + 4) std::exit(2);
  PrintRow("open a thread of a million leaves / vector", Median(times) * 1000, "ms",
           Median(floors) * 1000, Median(ratios), 5.0);
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  BenchHost host;
  OpenAThread(host);
  LiveTicks(host, 1);
  LiveTicks(host, 100);
  return 0;
}
