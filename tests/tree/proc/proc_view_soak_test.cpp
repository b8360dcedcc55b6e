// The tree view under everything together: live traces, trims in the middle of a drain, filters,
// rebuilds, the user's hands and an open properties dialog. After each step no item, no selection
// and no cursor holds anything that has gone.
#include <random>

#include "live_items.h"
#include "proc_view_fixture.h"
#include "tree/proc/proc_view_iterator.h"

namespace {

class ProcViewSoak : public ProcViewTest, public testing::WithParamInterface<unsigned> {
 protected:
  static constexpr std::size_t kLimit = 90;

  std::size_t Below(std::size_t bound) { return m_random() % bound; }
  TreeItem AnyItem() {
    const std::vector<TreeItem> items = ItemsThatExist(*m_tree);
    return items.empty() ? 0 : items[Below(items.size())];
  }

  TraceFields Fields() {
    TraceFields fields;
    const std::size_t dice = Below(10);
    fields.text = dice < 3 ? "Begin: work" : dice < 6 ? "End: work" : "plain";
    fields.tid = static_cast<NameId>(4 + Below(2));
    fields.machine = Below(8) == 0 ? 6 : 1;
    fields.category = Below(4) == 0 ? 9 : 10;
    if (Below(60) == 0) fields.count = kNoSequenceNumber;
    return fields;
  }
  // A drain that trims as it goes.
  void DrainAndTrim() {
    CTraceHint batch;
    for (std::size_t left = 1 + Below(40); left > 0; --left) {
      if (m_document.m_traces.size() >= kLimit) {
        const std::size_t count = 1 + Below(20);
        for (std::size_t i = 0; i < count && !batch.m_events.empty(); ++i)
          if (batch.m_events.front() == m_document.m_traces[i]) batch.m_events.pop_front();
        Trim(count);
      }
      batch.m_events.push_back(Add(Fields()));
    }
    m_document.UpdateAllViews(nullptr, kHintAdded, &batch);
  }
  void UserActs() {
    const TreeItem item = AnyItem();
    switch (Below(6)) {
      case 0:
        m_tree->Expand(item, !(m_tree->ItemState(item) & kTreeExpanded));
        break;
      case 1:
        m_tree->SelectItem(item);
        break;
      case 2:
        if (item) m_view->NextTreeItem(item);
        break;
      case 3:
        if (item) m_view->PrevTreeItem(item);
        break;
      case 4:
        if (m_cursor && m_cursor->HasNext()) m_cursor->Next();
        break;
      default:
        if (m_cursor && m_cursor->HasPrev()) m_cursor->Prev();
        break;
    }
  }
  void Step() {
    switch (Below(24)) {
      case 0: {
        CTraceFilter filter;
        if (Below(2)) HideNine(filter);
        m_view->SetFilter(filter, true);
        break;
      }
      case 1:
        if (Below(8) == 0) Clear();
        break;
      case 2:
        m_cursor.reset();
        if (m_view->CurrentEvent())
          m_cursor = std::make_unique<CProcViewIterator>(*m_view, m_tree->SelectedItem());
        break;
      case 3:
        m_view->m_currentEvent = m_view->CurrentEvent();
        m_view->OnInitialUpdate();
        break;
      case 4:
        if (!m_document.m_traces.empty())
          FollowTo(m_document.m_traces[Below(m_document.m_traces.size())]);
        break;
      default:
        if (Below(3))
          UserActs();
        else
          DrainAndTrim();
    }
  }

  void ExpectAllLive() {
    ASSERT_NO_FATAL_FAILURE(ExpectLiveItems(*m_view));
    if (!m_cursor || !m_cursor->current) return;
    bool lives = false;
    m_document.m_traces.ForEach(
        0, [&](const TraceEvent_i* event) { lives = lives || event == m_cursor->current; });
    ASSERT_TRUE(lives);
  }

  std::mt19937 m_random{GetParam()};
  std::unique_ptr<CProcViewIterator> m_cursor;
};

TEST_P(ProcViewSoak, NothingThatHasGoneIsHeldByItemsSelectionOrCursor) {
  Open();
  for (int step = 0; step < 400; ++step) {
    Step();
    ASSERT_NO_FATAL_FAILURE(ExpectAllLive()) << "step " << step;
    if (HasFailure()) return;
  }
  m_cursor.reset();
}

INSTANTIATE_TEST_SUITE_P(Seeds, ProcViewSoak, testing::Range(1u, 13u));

}  // namespace
