// The tree view over the control on the screen: what grows, what scrolls, what stays.
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QImage>
#include <chrono>

#include "controls/tree/ui/tree_widget.h"
#include "support/make_event.h"
#include "support/qt_test_main.h"
#include "support/recording_host.h"
#include "tree/proc/proc_view.h"

namespace {

class ProcViewOnTheScreen : public testing::Test {
 protected:
  ProcViewOnTheScreen() {
    m_document.m_loading = false;
    m_view = std::make_unique<CProcView>(m_document, [this](TreeControlOwner& owner) {
      auto tree = std::make_unique<QtTreeControl>(owner, "Procedure tree");
      m_tree = tree.get();
      return tree;
    });
    m_tree->resize(500, 400);
    m_tree->show();
  }
  TraceEvent_i* Add(const std::string& text) {
    m_document.AddTrace(MakeEvent({.text = text, .count = ++m_number, .machine = 1}).release());
    return m_document.m_traces.back();
  }
  void Drain(int traces) {
    CTraceHint hint;
    for (int i = 0; i < traces; ++i) hint.m_events.push_back(Add(std::to_string(m_number + 1)));
    m_document.UpdateAllViews(nullptr, kHintAdded, &hint);
  }
  void Trim(std::size_t traces) {
    CTraceHint hint;
    for (std::size_t i = 0; i < traces; ++i) hint.m_events.push_back(m_document.m_traces[i]);
    m_document.UpdateAllViews(nullptr, kHintTrimmed, &hint);
    for (std::size_t i = 0; i < traces; ++i) m_document.m_traces.PopFront();
  }
  void Open() { m_view->OnInitialUpdate(); }
  void Follow(TraceEvent_i* event) {
    CTraceHint hint(event);
    m_view->OnUpdate(nullptr, kHintFollow, &hint);
  }
  std::string Selected() {
    const TraceEvent_i* const event = m_view->CurrentEvent();
    return event ? event->GetText() : std::string();
  }
  std::string LastOnView() {
    const TreeItem item = m_tree->Items().At(m_tree->TopRow() + m_tree->RowsPerPage() - 1);
    return m_view->TreeItemText(m_tree->ItemData(item));
  }

  RecordingHost m_host;
  CTraceDoc m_document{m_host};
  std::unique_ptr<CProcView> m_view;
  QtTreeControl* m_tree = nullptr;
  std::uint32_t m_number = 0;
};

TEST_F(ProcViewOnTheScreen, TheTailIsFollowedWhileItIsOnViewAlsoThroughTrims) {
  Drain(200);
  Open();
  Follow(m_document.m_traces.back());
  Drain(300);
  EXPECT_EQ(LastOnView(), "500");
  m_tree->ScrollTo(100);
  const TreeItem top = m_tree->ItemAt(0);
  Drain(300);
  EXPECT_EQ(m_tree->ItemAt(0), top);
}

TEST_F(ProcViewOnTheScreen, ATrimMovesSelectionAndViewToTheOldestThatIsLeft) {
  Drain(500);
  Open();
  Follow(m_document.m_traces.back());
  Trim(100);
  QCoreApplication::processEvents();
  EXPECT_EQ(Selected(), "101");
  EXPECT_TRUE(m_tree->IsOnScreen(m_tree->SelectedItem()));
}

TEST_F(ProcViewOnTheScreen, ATraceInThousandsOfNestedBlocksIsShown) {
  for (int i = 0; i < 20000; ++i) Add("Begin: deeper");
  TraceEvent_i* const inside = Add("inside");
  Open();
  Follow(inside);
  EXPECT_EQ(Selected(), "inside");
  QCoreApplication::processEvents();
  const QRect label = m_tree->Painter().LabelRect(m_tree->SelectedItem(),
                                                  m_tree->Items().RowOf(m_tree->SelectedItem()));
  EXPECT_TRUE(m_tree->viewport()->rect().intersects(label));
  EXPECT_FALSE(m_tree->grab().toImage().isNull());
}

// A generous bound, so that no step goes by the number of traces held: a tick is a third of a
// second, and takes a small part of it.
TEST_F(ProcViewOnTheScreen, ATickWithTrimsAtALongHistoryIsShort) {
  Drain(200000);
  Open();
  Follow(m_document.m_traces.back());
  Trim(100);  // opens what the oldest lies in
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 100; ++i) {
    Trim(100);
    Drain(100);
  }
  m_tree->grab();
  const auto took = std::chrono::steady_clock::now() - start;
  RecordProperty("milliseconds", static_cast<int>(took / std::chrono::milliseconds(1)));
  EXPECT_LT(took, std::chrono::seconds(2));
}

}  // namespace
