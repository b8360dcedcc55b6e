// A filter that takes long: below a box, and what its Cancel leaves behind.
#include "support/short_pieces.h"
#include "trace_view_rig.h"
#include "tree/filter/filter_dialog.h"

namespace {

constexpr int kMany = 10000;  // some parts' worth

class TraceViewLong : public TraceViewTest {
 protected:
  TraceViewLong() {
    for (int i = 0; i < kMany; ++i) Add({.component = static_cast<NameId>(i % 2 ? 8 : 9)});
    m_nine.allTraces = m_nine.allComponents = 0;
    m_nine.components[9] = 0;
  }
  static void Cancel(CDialog& box) { box.OnCancel(); }
  // The person hides everything in the filter dialog.
  void HideAll() {
    m_host.AnswerDialog([](CDialog& dialog) {
      auto& filter = dynamic_cast<CFilterDialog&>(dialog);
      filter.OnTreeClick(&filter.Tree().Root(), true);
      filter.OnOK();
    });
    m_view->OnCommand(ID_VIEW_FILTER);
  }
  CTraceFilter m_nine;  // hides component 9
};

TEST_F(TraceViewLong, AFilterWorksInPartsBelowABox) {
  Open();
  const ShortPieces pieces;
  int ticks = 0;
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Filtering...");
    EXPECT_TRUE(m_document.IsWorkedOn());
    while (!box.Ended()) {
      EXPECT_EQ(m_list->ItemCount(), kMany) << "the rows that stood stand until the end";
      m_host.TickTimers();
      ++ticks;
    }
  });
  EXPECT_TRUE(m_view->SetFilter(m_nine, true));
  EXPECT_GE(ticks, 2);
  EXPECT_EQ(m_list->ItemCount(), kMany / 2);
  EXPECT_EQ(m_view->RowListText(kMany / 2 - 1, Column::Count), "10000");
}

TEST_F(TraceViewLong, NothingHiddenIsNoWork) {
  const ShortPieces pieces;
  m_host.WantNoWorkBox();
  Open();
  EXPECT_EQ(m_list->ItemCount(), kMany);
}

TEST_F(TraceViewLong, ACancelledFilterLeavesRowsFocusFilterAndMarkAsTheyWere) {
  Open();
  m_view->OnActivateView(true, nullptr, nullptr);
  Focus(7);
  m_list->ScrollTo(5);
  const int top = m_list->TopIndex();
  const ShortPieces pieces;
  m_host.AnswerWorkBox(Cancel);
  HideAll();
  EXPECT_EQ(m_list->ItemCount(), kMany);
  EXPECT_EQ(m_view->Rows().Size(), kMany);
  EXPECT_EQ(m_list->NextItem(-1, kRowFocused), 7);
  EXPECT_EQ(m_list->TopIndex(), top);
  EXPECT_EQ(m_view->m_filter.allTraces, 1);
  EXPECT_FALSE(m_view->m_filterChanged);
  HideAll();
  EXPECT_EQ(m_list->ItemCount(), 0);
  EXPECT_TRUE(m_view->m_filterChanged);
}

TEST_F(TraceViewLong, AFilterThatIsHandedOverAndCancelledLeavesFilterAndMark) {
  Open();
  m_view->m_filterChanged = true;
  const ShortPieces pieces;
  m_host.AnswerWorkBox(Cancel);
  EXPECT_FALSE(m_view->SetFilter(m_nine, true));
  EXPECT_EQ(m_view->m_filter.allTraces, 1);
  EXPECT_TRUE(m_view->m_filterChanged);
  EXPECT_EQ(m_list->ItemCount(), kMany);
}

TEST_F(TraceViewLong, TheRowOfAFollowedTraceIsLookedForInPartsAndCancelLeavesTheSelection) {
  AddMany(kMany);
  Open();
  Focus(3);
  const ShortPieces pieces;
  int ticks = 0;
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_STREQ(dynamic_cast<CWorkBox&>(box).Message(), "Looking for the trace...");
    box.OnCancel();
  });
  FollowTo(m_document.m_traces[2 * kMany - 5]);
  EXPECT_EQ(States(), "3 focused selected");
  EXPECT_EQ(m_view->CurrentEvent(), m_document.m_traces[3]);
  m_host.AnswerWorkBox([&](CDialog& box) {
    while (!box.Ended()) {
      m_host.TickTimers();
      ++ticks;
    }
  });
  FollowTo(m_document.m_traces[2 * kMany - 5]);
  EXPECT_GE(ticks, 2);
  EXPECT_EQ(States(), "19995 focused selected");
}

TEST_F(TraceViewLong, NewContentsWhoseFilterIsCancelledShowWholeAndUnfiltered) {
  Open();
  m_view->SetFilter(m_nine, true);
  m_document.m_traces.Clear();
  AddMany(kMany);
  const ShortPieces pieces;
  m_host.AnswerWorkBox([&](CDialog& box) {
    EXPECT_EQ(m_list->ItemCount(), 0) << "the traces of the old rows are gone";
    box.OnCancel();
  });
  m_view->OnUpdate(nullptr, kHintReady, nullptr);
  EXPECT_EQ(m_list->ItemCount(), kMany);
  EXPECT_EQ(m_view->m_filter.allTraces, 1);
  EXPECT_TRUE(m_view->m_filterChanged) << "the other view is to show the same";
}

TEST_F(TraceViewLong, ADocumentThatIsClearedMeanwhileIsFilteredAnew) {
  Open();
  const ShortPieces pieces;
  m_host.AnswerWorkBox([&](CDialog& box) {
    m_document.DeleteContents();
    Add({.count = 1, .component = 8});
    Add({.component = 9});
    m_host.Finish(box);
  });
  EXPECT_TRUE(m_view->SetFilter(m_nine, true));
  EXPECT_EQ(Rows(), "1");
}

}  // namespace
