// The traces of the selected item of the tree and of what is below it, to copy.
#include "listview/columns/columns.h"
#include "listview/copy/copied_traces.h"
#include "settings/globals.h"
#include "tree/proc/proc_view.h"

namespace {

// In the order of the tree, opened or not; the trace above is the one before in that order.
class TracesBelow final : public CopiedTraces {
 public:
  explicit TracesBelow(const CTraceEvent& top) : m_top(top) { TracesBelow::Rewind(); }

  void Rewind() override {
    m_path.assign(1, {&m_top, 0});
    m_before = nullptr;
    m_given = 0;
  }
  bool Next(CopiedTrace& trace) override {
    while (!m_path.empty()) {
      auto& [node, child] = m_path.back();
      const CTraceEvent& here = *node;
      if (child++ == 0 && here.event && here.Kind() <= NodeKind::Block) {
        trace = {here.event, std::exchange(m_before, here.event), -1};
        ++m_given;
        return true;
      }
      GoDown(here);
    }
    return false;
  }
  int Progress() const override {
    return m_path.empty() ? 1000 : Thousandths(m_path.front().child, ChildrenOf(m_top) + 1);
  }
  std::vector<Column> Columns() const override {
    const ColumnOrder order = ReadColumnOrder();
    std::vector<Column> columns;
    for (const std::int32_t index : order)
      if (g_activeColumns[static_cast<std::size_t>(index)] != 0)
        columns.push_back(static_cast<Column>(index));
    return columns;
  }

 private:
  struct Step {
    const CTraceEvent* node;
    std::size_t child;  // 0: the node itself, then its children from 1
  };
  static std::size_t ChildrenOf(const CTraceEvent& node) {
    return node.Kind() == NodeKind::Leaf
               ? 0
               : static_cast<const CExecutionBlock&>(node).children.size();
  }
  // To the next child, which the step of the node has counted, or up.
  void GoDown(const CTraceEvent& here) {
    const std::size_t child = m_path.back().child - 1;
    if (child >= 1 && child <= ChildrenOf(here))
      m_path.push_back({static_cast<const CExecutionBlock&>(here).children[child - 1], 0});
    else if (child > ChildrenOf(here))
      m_path.pop_back();
  }

  const CTraceEvent& m_top;
  std::vector<Step> m_path;
  const TraceEvent_i* m_before = nullptr;
  std::uint64_t m_given = 0;
};

}  // namespace

std::unique_ptr<CopiedTraces> CProcView::Selected() {
  const CTraceEvent* const node = NodeOf(m_tree->SelectedItem());
  return node ? std::make_unique<TracesBelow>(*node) : nullptr;
}
