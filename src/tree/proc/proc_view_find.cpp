// Find and Find Next in the tree.
#include "tree/find/find_settings.h"
#include "tree/proc/counted_tree_traces.h"
#include "tree/proc/proc_view.h"

namespace {

// From the item after the selected one, around to the selected one, which is never tested.
class TreeWalk final : public FindWalk {
 public:
  TreeWalk(CProcView& view, TreeItem selected, bool backward)
      : m_view(view), m_selected(selected), m_item(selected), m_backward(backward) {}

  // Makes the items of a node that the next step enters.
  bool Prepare() override {
    if (m_fill) {
      if (!m_fill->DoPart()) return true;
      m_fill.reset();
    }
    const TreeItem item = m_backward ? ToFillBefore(m_item) : m_item;
    // Only once for each item, because an insertion may fail.
    if (item == m_filled || !m_view.Lacks(item)) return false;
    m_filled = item;
    m_fill.emplace(m_view.FillOf(item));
    return true;
  }
  std::optional<std::string_view> NextText() override {
    do {
      Step();
      if (m_item == m_selected) return std::nullopt;
    } while (!m_view.NodeOf(m_item));
    m_text = m_view.TreeItemText(m_view.Tree().ItemData(m_item));
    return m_text;
  }
  TreeItem Item() const { return m_item; }

 private:
  // The item to fill on the way to the previous item; 0 if none is missing.
  TreeItem ToFillBefore(TreeItem item) const {
    item = m_view.Tree().Walk(item, TreeStep::PreviousSibling);
    while (item && !m_view.Lacks(item)) item = m_view.Tree().Walk(item, TreeStep::LastChild);
    return item;
  }
  void Step() {
    m_item = m_backward ? m_view.PrevTreeItem(m_item) : m_view.NextTreeItem(m_item);
    if (m_item) return;
    m_item = m_backward ? m_view.LastTreeItem() : m_view.Tree().Walk(0, TreeStep::FirstChild);
  }

  CProcView& m_view;
  const TreeItem m_selected;
  TreeItem m_item;
  const bool m_backward;
  std::optional<ItemFill> m_fill;
  TreeItem m_filled = 0;
  std::string m_text;
};

}  // namespace

FindResult CProcView::FindInTree() {
  const TreeItem selected = m_tree->SelectedItem();
  if (!selected) return FindResult::NotFound;
  TreeWalk walk(*this, selected, FindSettings.backward != 0);
  const FindResult result = RunSearch(GetHost(), &m_document, walk);
  const auto goTo = [this](const TraceEvent_i& trace) {
    FollowTrace(this, trace);
    ShowHits(true);
    Follow(CurrentEvent());
  };
  if (result != FindResult::Cancelled)
    CountHits(m_document, std::make_unique<CountedTreeTraces>(*this, goTo));
  if (result == FindResult::Hit) {
    Show(walk.Item());
    ShowHits(true);
    m_tree->ShowHit(walk.Item());
  }
  return result;
}

std::vector<HitRange> CProcView::TreeTextHits(const std::string& text) {
  return m_hits ? m_hits->In(text, FindHits::kStepsToPaint) : std::vector<HitRange>();
}

void CProcView::Find(bool) {
  if (!FinishFilter()) return;
  FindResult result = FindResult::NotFound;
  {
    const CWaitCursor wait(GetHost());
    result = FindInTree();
  }
  if (result == FindResult::NotFound) ReportNotFound(GetHost());
}
