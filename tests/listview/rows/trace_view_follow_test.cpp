// Focus, selection and Synchronize of the list view.
#include <gtest/gtest.h>

#include <random>

#include "listview/rows/trace_view_fixture.h"

namespace {

using Strings = std::vector<std::string>;

class Follow : public TraceViewTest {
 protected:
  // The state of the rows after hint 1006 for a trace of this number that no row shows.
  std::string After(std::uint32_t number) {
    const EventPtr target = MakeEvent({.count = number});
    FollowTo(target.get());
    return States();
  }
};

TEST_F(Follow, TheTargetsOwnRowIsSelectedAndGetsTheFocus) {
  AddNumbers({10, 20, 30});
  Open();
  FollowTo(m_document.m_traces[1]);
  EXPECT_EQ(States(), "1 focused selected");
  EXPECT_EQ(m_view->CurrentEvent(), m_document.m_traces[1]);
}

TEST_F(Follow, AHiddenTargetSelectsTheNearestRowByNumber) {
  AddNumbers({10, 20, 30});
  Open();
  EXPECT_EQ(After(21), "1 focused selected");
  EXPECT_EQ(After(29), "2 focused selected");
  EXPECT_EQ(After(11), "0 focused selected");
}

TEST_F(Follow, ATieGoesToTheEarlierRow) {
  AddNumbers({10, 20, 30});
  Open();
  EXPECT_EQ(After(25), "1 focused selected");
  EXPECT_EQ(After(15), "0 focused selected");
}

TEST_F(Follow, ATargetBeforeAllRowsSelectsTheFirst) {
  AddNumbers({10, 20, 30});
  Open();
  EXPECT_EQ(After(1), "0 focused selected");
}

TEST_F(Follow, ATargetAfterAllRowsSelectsNoneAndTheOldSelectionGoes) {
  AddNumbers({10, 20, 30});
  Open();
  Focus(1);
  m_list->SetItemState(2, kRowSelected, kRowSelected);
  EXPECT_EQ(After(31), "");
  EXPECT_EQ(m_view->CurrentEvent(), nullptr);
}

TEST_F(Follow, TheOldFocusAndAllOldSelectionsGo) {
  AddNumbers({10, 20, 30, 40, 50});
  Open();
  Focus(3);
  m_list->SetItemState(0, kRowSelected, kRowSelected);
  m_list->SetItemState(4, kRowSelected, kRowSelected);
  EXPECT_EQ(After(21), "1 focused selected");
  EXPECT_EQ(m_view->CurrentEvent(), m_document.m_traces[1]);
}

TEST_F(Follow, ARowThatHasTheFocusAlreadyIsTheCurrentOneAfterwards) {
  AddNumbers({10, 20, 30});
  Open();
  Focus(1);
  FollowTo(m_document.m_traces[1]);
  EXPECT_EQ(States(), "1 focused selected");
  EXPECT_EQ(m_view->CurrentEvent(), m_document.m_traces[1]);
}

TEST_F(Follow, TracesWithoutANumberAreComparedAsNumbers) {
  AddNumbers({10, 0xFFFFFFFF, 20, 0xFFFFFFFF});
  Open();
  EXPECT_EQ(After(15), "0 focused selected") << "the row behind is very far";
  EXPECT_EQ(After(0xFFFFFFF0), "1 focused selected");
  EXPECT_EQ(After(0xFFFFFFFF), "") << "no row lies behind it";
  FollowTo(m_document.m_traces[3]);
  EXPECT_EQ(States(), "3 focused selected");
}

TEST_F(Follow, NumbersOutOfOrderEndTheSearchAtTheFirstGreaterOne) {
  AddNumbers({10, 40, 20, 30});
  Open();
  EXPECT_EQ(After(22), "0 focused selected");
  FollowTo(m_document.m_traces[2]);
  EXPECT_EQ(States(), "0 focused selected") << "the row of the target lies behind a greater one";
}

TEST_F(Follow, WithoutRowsNothingHappens) {
  Open();
  EXPECT_EQ(After(5), "");
}

TEST_F(Follow, TheRowIsShownAtOnceForAnotherSenderAndPostedForTheViewItself) {
  AddMany(100);
  Open();
  FollowTo(m_document.m_traces[5]);
  EXPECT_EQ(m_list->TopIndex(), 5);
  EXPECT_EQ(m_host.PostedCount(), 0u);
  FollowTo(m_document.m_traces[80], m_view.get());
  EXPECT_EQ(m_list->TopIndex(), 5);
  m_host.RunPosted();
  EXPECT_EQ(m_list->TopIndex(), 71);
}

TEST_F(Follow, APostedRowOfAViewThatHasGoneIsDropped) {
  AddMany(100);
  Open();
  FollowTo(m_document.m_traces[5], m_view.get());
  EXPECT_EQ(m_host.PostedCount(), 1u);
  // Another view in the same memory would get what was posted for the first.
  std::destroy_at(m_view.get());
  std::construct_at(m_view.get(), m_document,
                    [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); });
  m_list = static_cast<FakeRowList*>(&m_view->List());
  Open();
  m_list->EnsureVisible(99);
  ASSERT_GT(m_list->TopIndex(), 5);
  const int top = m_list->TopIndex();
  m_host.RunPosted();
  EXPECT_EQ(m_list->TopIndex(), top);
}

TEST_F(Follow, APostedRowThatHasGoneIsIgnored) {
  AddMany(20);
  Open();
  FollowTo(m_document.m_traces[19], m_view.get());
  Trim(15);
  m_host.RunPosted();
  EXPECT_EQ(m_list->TopIndex(), 0);
}

// The walk in its simplest form, row by row; returns the row with the focus, -1 for none.
int FollowSlowly(const std::vector<std::uint32_t>& rows, int targetRow, std::uint32_t target) {
  int current = -1;
  for (int row = 0; row < static_cast<int>(rows.size()) && current == -1; ++row) {
    const std::uint32_t number = rows[static_cast<std::size_t>(row)];
    if (row == targetRow) {
      current = row;
    } else if (number > target) {
      if (row == 0) {
        current = 0;
      } else {
        const std::uint32_t d1 = target - rows[static_cast<std::size_t>(row - 1)];
        const std::uint32_t d2 = number - target;
        current = d1 <= d2 ? row - 1 : row;
      }
    }
  }
  return current;
}

TEST_F(Follow, RandomNumbersGiveWhatTheWalkOverAllRowsGives) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    m_document.DeleteContents();
    std::vector<std::uint32_t> numbers;
    for (unsigned i = random() % 8; i > 0; --i) numbers.push_back(random() % 12);
    AddNumbers(numbers);
    Open();
    m_document.UpdateAllViews(nullptr, kHintReady);
    if (!numbers.empty() && random() % 2) Focus(static_cast<int>(random() % numbers.size()));
    const bool shown = !numbers.empty() && random() % 2;
    const std::size_t at = shown ? random() % numbers.size() : 0;
    const EventPtr hidden = MakeEvent({.count = random() % 12});
    TraceEvent_i* target = shown ? m_document.m_traces[at] : hidden.get();
    FollowTo(target);
    const int expected =
        FollowSlowly(numbers, shown ? static_cast<int>(at) : -1, target->GetSequenceNumber());
    ASSERT_EQ(m_list->NextItem(-1, kRowFocused), expected);
    ASSERT_EQ(m_list->SelectedCount(), expected == -1 ? 0 : 1);
    ASSERT_EQ(m_view->CurrentEvent(),
              expected == -1 ? nullptr : m_document.m_traces[static_cast<std::size_t>(expected)]);
  }
}

TEST_F(TraceViewTest, TheCurrentTraceFollowsWhatTheListTellsOfTheFocus) {
  AddMany(5);
  Open();
  Focus(1);
  EXPECT_EQ(m_view->CurrentEvent(), m_document.m_traces[1]);
  m_list->SetItemState(3, kRowFocused, kRowFocused);
  EXPECT_EQ(m_view->CurrentEvent(), m_document.m_traces[3]);
  m_list->SetItemState(3, 0, kRowFocused);
  EXPECT_EQ(m_view->CurrentEvent(), nullptr);
  m_list->SetItemState(2, kRowSelected, kRowSelected);
  EXPECT_EQ(m_view->CurrentEvent(), nullptr) << "selected is not focused";
}

TEST_F(TraceViewTest, AChangeOfTheSelectionOfTheFocusedRowKeepsItCurrent) {
  AddMany(5);
  Open();
  Focus(1);
  m_list->SetItemState(1, 0, kRowSelected);
  EXPECT_EQ(m_view->CurrentEvent(), m_document.m_traces[1]);
}

TEST_F(TraceViewTest, ComingBackFromTheTreeSelectsWhatTheTreeHadSelected) {
  AddMany(100);
  Open();
  m_view->m_currentEvent = m_document.m_traces[7];
  m_view->OnInitialUpdate();
  EXPECT_EQ(States(), "7 focused selected");
  EXPECT_EQ(m_list->columns.size(), 15u) << "the columns are made once";
  m_host.RunPosted();
  EXPECT_EQ(m_list->TopIndex(), 7);
}

TEST_F(TraceViewTest, ComingBackWithNothingSelectedInTheTreeLeavesTheRows) {
  AddMany(10);
  Open();
  Focus(4);
  m_view->OnInitialUpdate();
  EXPECT_EQ(States(), "4 focused selected");
}

class Synchronize : public TraceViewTest {
 protected:
  void SetUp() override {
    AddMany(10);
    Open();
  }
  using Events = std::vector<TraceEvent_i*>;
  FollowProbe m_other{m_document};
};

TEST_F(Synchronize, AClickOnARowSendsItsTraceToTheOtherViewsOnly) {
  m_document.m_synchronize = true;
  m_list->calls.clear();
  m_view->OnRowClicked(3);
  EXPECT_EQ(m_other.followed, Events{m_document.m_traces[3]});
  EXPECT_EQ(m_list->calls, Strings{}) << "the sender is not told";
}

TEST_F(Synchronize, AClickBesideTheRowsOrWithoutTheFlagSendsNothing) {
  m_view->OnRowClicked(3);
  m_document.m_synchronize = true;
  m_view->OnRowClicked(-1);
  m_view->OnRowClicked(10);
  EXPECT_EQ(m_other.followed, Events{});
}

TEST_F(Synchronize, SwitchedOnItSendsTheTraceOfTheFirstFocusedRow) {
  Focus(4);
  EXPECT_TRUE(m_view->OnCommand(ID_VIEW_SYNCHRONIZE));
  EXPECT_TRUE(m_document.m_synchronize);
  EXPECT_EQ(m_other.followed, Events{m_document.m_traces[4]});
  EXPECT_TRUE(m_view->OnCommand(ID_VIEW_SYNCHRONIZE));
  EXPECT_FALSE(m_document.m_synchronize);
  EXPECT_EQ(m_other.followed.size(), 1u) << "switched off it sends nothing";
}

TEST_F(Synchronize, SwitchedOnWithoutAFocusItSendsNothing) {
  m_list->SetItemState(4, kRowSelected, kRowSelected);
  m_view->OnCommand(ID_VIEW_SYNCHRONIZE);
  EXPECT_TRUE(m_document.m_synchronize);
  EXPECT_EQ(m_other.followed, Events{});
}

TEST_F(Synchronize, TheStateOfItsMenuItemIsTheDocuments) {
  CCmdUI ui(ID_VIEW_SYNCHRONIZE, false, false);
  m_document.m_synchronize = true;
  EXPECT_TRUE(m_view->OnUpdateCommand(ui));
  EXPECT_TRUE(ui.IsEnabled()) << "there are two views";
  EXPECT_TRUE(ui.IsChecked());
}

TEST_F(Synchronize, TwoListsOfOneDocumentFollowEachOther) {
  const std::unique_ptr<CTraceView> second = MakeView();
  second->OnInitialUpdate();
  m_document.m_synchronize = true;
  m_view->OnRowClicked(6);
  EXPECT_EQ(second->CurrentEvent(), m_document.m_traces[6]);
  EXPECT_EQ(m_view->CurrentEvent(), nullptr);
}

TEST_F(Synchronize, CopyIsTakenByNobody) {
  EXPECT_FALSE(m_view->HasCommand(ID_EDIT_COPY));
}

}  // namespace
