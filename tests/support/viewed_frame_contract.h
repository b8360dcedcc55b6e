// What the view that comes back may expect of every window of traces.
//
// Shape    A harness has a window on a file with 10,000 traces "trace 0", "trace 1" ... of one
//          application, and one without a list: Frame(), Bare(). Run() waits until nothing is under
//          way. Cancel() cancels the toggle that it is given. Notice() is what the status bar
//          says. RowsHeight() and LineHeight() are those of the rows as they are seen.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "listview/rows/trace_view.h"
#include "shell/beside/stored_beside.h"
#include "shell/filterline/frame_filter.h"
#include "shell/views/viewed_frame.h"

constexpr int kContractTraces = 10'000;

template <class Harness>
class ViewedFrameContract : public testing::Test {
 protected:
  using Names = std::vector<std::string>;

  ViewedFrame& Frame() { return m_harness.Frame(); }
  Names Opened(const Names& names) {
    Names unknown = Frame().OpenPanes(names);
    m_harness.Run();
    return unknown;
  }
  Names Open() {
    Names open = Frame().OpenPanes();
    std::sort(open.begin(), open.end());
    return open;
  }
  bool Toggle() {
    const bool toggled = Frame().ToggleTree();
    m_harness.Run();
    return toggled;
  }
  std::string InForce() {
    const TracePane& pane = *Frame().ShownPane();
    return pane.m_filter.where ? pane.m_filter.where->Text() : "";
  }

  Harness m_harness;
};
TYPED_TEST_SUITE_P(ViewedFrameContract);

TYPED_TEST_P(ViewedFrameContract, AWindowWithoutAListShowsAndTogglesNothing) {
  ViewedFrame& bare = this->m_harness.Bare();
  EXPECT_EQ(bare.ListView(), nullptr);
  EXPECT_EQ(bare.ShownPane(), nullptr);
  EXPECT_FALSE(bare.IsTreeShown());
  EXPECT_FALSE(bare.ToggleTree());
  const std::vector<std::string> names = {"Details"};
  EXPECT_EQ(bare.OpenPanes(names), names) << "there are no panes without rows";
  EXPECT_TRUE(bare.OpenPanes().empty());
}

TYPED_TEST_P(ViewedFrameContract, ListAndTreeTakeTurnsAndTheListStays) {
  CTraceView* const list = this->Frame().ListView();
  ASSERT_TRUE(list);
  EXPECT_EQ(this->Frame().ShownPane(), list);
  EXPECT_FALSE(this->Frame().IsTreeShown());
  ASSERT_TRUE(this->Toggle());
  EXPECT_TRUE(this->Frame().IsTreeShown());
  EXPECT_NE(this->Frame().ShownPane(), list);
  EXPECT_EQ(this->Frame().ListView(), list);
  ASSERT_TRUE(this->Toggle());
  EXPECT_FALSE(this->Frame().IsTreeShown());
  EXPECT_EQ(this->Frame().ShownPane(), list);
}

TYPED_TEST_P(ViewedFrameContract, AToggleThatTheUserCancelsChangesNothing) {
  CTraceView* const list = this->Frame().ListView();
  this->m_harness.Cancel([this] { EXPECT_FALSE(this->Frame().ToggleTree()); });
  this->m_harness.Run();
  EXPECT_FALSE(this->Frame().IsTreeShown());
  EXPECT_EQ(this->Frame().ShownPane(), list);
  EXPECT_TRUE(this->Toggle()) << "the next one works";
}

TYPED_TEST_P(ViewedFrameContract, AFilterTextHoldsForListAndTree) {
  ASSERT_TRUE(this->Frame().Filter().Restore("text == \"trace 7\""));
  this->m_harness.Run();
  EXPECT_EQ(this->InForce(), "text == \"trace 7\"");
  EXPECT_EQ(this->Frame().ListView()->Rows().Size(), 1);
  ASSERT_TRUE(this->Toggle());
  EXPECT_EQ(this->InForce(), "text == \"trace 7\"");
  ASSERT_TRUE(this->Frame().Filter().Restore(""));
  this->m_harness.Run();
  ASSERT_TRUE(this->Toggle());
  EXPECT_EQ(this->InForce(), "");
  EXPECT_EQ(this->Frame().ListView()->Rows().Size(), kContractTraces);
}

TYPED_TEST_P(ViewedFrameContract, AFilterTextThatIsWrongFiltersNothing) {
  EXPECT_FALSE(this->Frame().Filter().Restore("text == "));
  this->m_harness.Run();
  EXPECT_EQ(this->InForce(), "");
  EXPECT_EQ(this->Frame().Filter().Line().Text(), "text == ");
  EXPECT_EQ(this->Frame().ListView()->Rows().Size(), kContractTraces);
}

TYPED_TEST_P(ViewedFrameContract, ThesePanesOpenAndNoOthersAndNothingIsStored) {
  EXPECT_EQ(this->Open(), typename TestFixture::Names());
  EXPECT_EQ(this->Opened({"Marks", "Scales", "Marks"}), typename TestFixture::Names{"Scales"});
  EXPECT_EQ(this->Open(), typename TestFixture::Names{"Marks"});
  EXPECT_EQ(this->Opened({"Details", "Marks"}), typename TestFixture::Names());
  EXPECT_EQ(this->Open(), (typename TestFixture::Names{"Details", "Marks"}));
  EXPECT_EQ(this->Opened({"Details"}), typename TestFixture::Names());
  EXPECT_EQ(this->Open(), typename TestFixture::Names{"Details"});
  EXPECT_FALSE(IsBesideOpen("Details"));
  EXPECT_EQ(this->Opened({}), typename TestFixture::Names());
  EXPECT_EQ(this->Open(), typename TestFixture::Names());
}

TYPED_TEST_P(ViewedFrameContract, PanesStayOpenWhenListAndTreeChangePlaces) {
  this->Opened({"Details", "Marks"});
  ASSERT_TRUE(this->Toggle());
  EXPECT_EQ(this->Open().size(), 2u);
  EXPECT_EQ(this->Opened({"Marks"}).size(), 0u);
  ASSERT_TRUE(this->Toggle());
  EXPECT_EQ(this->Open(), std::vector<std::string>{"Marks"});
}

TYPED_TEST_P(ViewedFrameContract, RowsAreSeenWhateverIsOpenAroundThem) {
  const auto seesLines = [this] {
    EXPECT_GE(this->m_harness.RowsHeight(), 2 * this->m_harness.LineHeight());
  };
  seesLines();
  this->Opened({"Details", "Marks"});
  ASSERT_TRUE(this->Frame().Filter().Restore("text contains \"trace\""));
  this->m_harness.Run();
  seesLines();
  ASSERT_TRUE(this->Toggle());
  seesLines();
}

TYPED_TEST_P(ViewedFrameContract, ANoticeIsSaidUntilTheNextOne) {
  this->Frame().ShowNotice("The view did not come back: \xC3\xA9 & <b>");
  EXPECT_EQ(this->m_harness.Notice(), "The view did not come back: \xC3\xA9 & <b>");
  this->Frame().ShowNotice("Another one");
  EXPECT_EQ(this->m_harness.Notice(), "Another one");
}

REGISTER_TYPED_TEST_SUITE_P(ViewedFrameContract, AWindowWithoutAListShowsAndTogglesNothing,
                            ListAndTreeTakeTurnsAndTheListStays,
                            AToggleThatTheUserCancelsChangesNothing, AFilterTextHoldsForListAndTree,
                            AFilterTextThatIsWrongFiltersNothing,
                            ThesePanesOpenAndNoOthersAndNothingIsStored,
                            PanesStayOpenWhenListAndTreeChangePlaces,
                            RowsAreSeenWhateverIsOpenAroundThem, ANoticeIsSaidUntilTheNextOne);
