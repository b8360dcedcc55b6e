// What a filter text that is being applied costs the interface thread, and what a cancel leaves.
#include <algorithm>
#include <chrono>
#include <thread>

#include "documents/trace_file_doc.h"
#include "support/short_pieces.h"
#include "support/trc_image.h"
#include "support/zone_guard.h"
#include "trace_view_fixture.h"

namespace {

class TraceViewFilteringSteps : public TraceViewTest {
 protected:
  static constexpr std::size_t kTraces = 40;

  // The first trace passes, each of the others takes long, and the last one has the focus.
  void OpenSlowFile(std::size_t traces = kTraces) {
    TrcImage image;
    const std::string slow = std::string(60, 'a') + "b";
    for (std::uint32_t i = 0; i < traces; ++i)
      image.Trace({.text = i == 0 ? "here" : slow, .count = i});
    ASSERT_TRUE(m_file.OnOpenDocument(image.WriteTo(m_directory.File("slow.trc"))));
    ASSERT_TRUE(m_fileHost.RunUntil([this] { return !m_file.m_loading; }));
    m_fileHost.RunPosted();
    m_fileView = std::make_unique<CTraceView>(
        m_file, [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); });
    auto& list = static_cast<FakeRowList&>(m_fileView->List());
    list.pageRows = 1;
    m_fileView->m_scanSetup = {.perLook = 1, .perPiece = 1, .threads = 1};
    m_fileView->OnInitialUpdate();
    list.SetItemState(static_cast<int>(traces) - 1, kRowFocused, kRowFocused);
  }

  RecordingHost m_fileHost;  // has no main window that a load would tell
  CTraceFileDoc m_file{m_fileHost};
  std::unique_ptr<CTraceView> m_fileView;
};

TEST_F(TraceViewFilteringSteps, TheSearchForTheFocusedTraceWaitsForRowsWithoutWork) {
  ASSERT_NO_FATAL_FAILURE(OpenSlowFile());
  WhereError error;
  const auto text = WhereProgram::Compile("text == here or text matches \"(a|aa)+$\"", error);
  ASSERT_TRUE(text) << error.reason;
  ASSERT_TRUE(m_fileView->SetWhere(text));
  std::size_t steps = 0;
  while (m_fileView->FilterProgress()) {
    ASSERT_TRUE(m_fileHost.WaitForPost());
    ASSERT_TRUE(m_fileHost.RunOnePosted());
    ++steps;
  }
  EXPECT_EQ(m_fileView->Rows().Size(), 1);
  EXPECT_EQ(m_fileView->CurrentEvent(), nullptr) << "no later trace is shown";
  // A piece asks for one, and a step that runs out of time for another one.
  EXPECT_LE(steps, 2 * kTraces + 5);
}

// No posted step runs here: the traces behind the first one may take as long as they take.
TEST_F(TraceViewFilteringSteps, AFewRowsShowAfterAMomentThoughNoMoreCome) {
  constexpr std::size_t kLong = 2000;
  ASSERT_NO_FATAL_FAILURE(OpenSlowFile(kLong));
  auto& list = static_cast<FakeRowList&>(m_fileView->List());
  list.pageRows = 10;
  WhereError error;
  ASSERT_TRUE(m_fileView->SetWhere(
      WhereProgram::Compile("text == here or text matches \"(a|aa)+$\"", error)));
  ASSERT_EQ(m_fileHost.Timers(), (std::vector<unsigned>{90}));
  std::this_thread::sleep_for(std::chrono::milliseconds(120));
  EXPECT_EQ(list.ItemCount(), static_cast<int>(kLong));
  m_fileHost.TickTimers();
  EXPECT_EQ(list.ItemCount(), 1);
  EXPECT_EQ(m_fileView->RowListText(0, Column::Trace), "here");
  EXPECT_TRUE(m_fileView->FilterProgress());
  EXPECT_TRUE(m_fileHost.Timers().empty()) << "once";
  m_fileView->CancelFilter();
  EXPECT_EQ(list.ItemCount(), static_cast<int>(kLong));
}

// Half of the traces are of an hour that is hidden in UTC and shown in the local zone.
TEST_F(TraceViewTest, ATextWithATimeWithoutAZoneIsAppliedAnewWhenTheZoneOfTheTimesChanges) {
  const ZoneGuard zone("CET-1");
  const ShortPieces pieces(m_host);
  m_view->m_scanSetup.perLook = 1;
  for (int i = 0; i < 20; ++i)
    Add({.date = PackDate(2026, 11, 23), .time = PackTime(i % 2 ? 12 : 11, 30, 0, 0)});
  Open();
  const auto settle = [this] {
    return m_host.RunUntil([this] { return !m_view->FilterProgress(); });
  };
  const auto options = [this](bool utc) {
    g_useUtc = utc;
    m_document.UpdateAllViews(nullptr, kHintOptions);
  };
  WhereError error;
  ASSERT_TRUE(m_view->SetWhere(WhereProgram::Compile("time >= 2026-11-23T12:00", error)));
  for (int i = 0; i < 8; ++i) ASSERT_TRUE(m_host.RunOnePosted());
  ASSERT_TRUE(m_view->FilterProgress());
  options(false);
  ASSERT_TRUE(settle());
  EXPECT_EQ(m_view->Rows().Size(), 20) << "no trace is asked about in the zone from before";
  options(true);
  ASSERT_TRUE(settle());
  EXPECT_EQ(m_view->Rows().Size(), 10);
  ASSERT_TRUE(m_view->SetWhere(WhereProgram::Compile("time >= 2026-11-23T12:00Z", error)));
  ASSERT_TRUE(settle());
  options(false);
  EXPECT_FALSE(m_view->FilterProgress()) << "that says its zone";
}

TEST_F(TraceViewTest, ATextThatIsTakenBackIsAppliedInTheZoneOfNow) {
  const ZoneGuard zone("CET-1");
  const ShortPieces pieces(m_host);
  m_list->pageRows = 4;
  m_view->m_scanSetup.perLook = 1;
  for (int i = 0; i < 40; ++i)
    Add({.date = PackDate(2026, 11, 23), .time = PackTime(i % 2 ? 12 : 11, 30, 0, 0)});
  Open();
  const auto settle = [this] {
    return m_host.RunUntil([this] { return !m_view->FilterProgress(); });
  };
  const auto options = [this](bool utc) {
    g_useUtc = utc;
    m_document.UpdateAllViews(nullptr, kHintOptions);
  };
  WhereError error;
  options(true);
  ASSERT_TRUE(m_view->SetWhere(WhereProgram::Compile("time >= 2026-11-23T12:00", error)));
  ASSERT_TRUE(settle());
  ASSERT_EQ(m_view->Rows().Size(), 20);
  ASSERT_TRUE(m_view->SetWhere(WhereProgram::Compile("count < 1000", error)));
  ASSERT_TRUE(m_host.RunOnePosted());
  options(false);
  m_view->CancelFilter();
  ASSERT_TRUE(m_view->FilterProgress());
  ASSERT_TRUE(settle());
  EXPECT_EQ(m_view->Rows().Size(), 40);
  options(true);
  ASSERT_TRUE(m_view->FilterProgress());
  m_view->CancelFilter();
  EXPECT_FALSE(m_view->FilterProgress()) << "the user wants no other rows";
  EXPECT_EQ(m_view->Rows().Size(), 40);
  options(false);
  EXPECT_FALSE(m_view->FilterProgress()) << "the rows are of this zone";
}

class TraceViewCancel : public TraceViewTest {
 protected:
  // Replaces the rows by some of the new ones, while the others are still looked for.
  void ShowSomeRows() {
    WhereError error;
    ASSERT_TRUE(m_view->SetWhere(WhereProgram::Compile("count < 1000", error)));
    m_list->calls.clear();
    while (std::ranges::count(m_list->calls, "count 0") == 0)
      ASSERT_TRUE(m_host.RunOnePosted()) << "the rows were complete before they were shown";
    ASSERT_TRUE(m_view->FilterProgress());
  }
  void OpenRows(int count) {
    m_list->pageRows = 4;
    m_view->m_scanSetup.perLook = 1;
    AddMany(count);
    Open();
  }

  const ShortPieces m_pieces{m_host};
};

TEST_F(TraceViewCancel, AListThatFollowedTheLastTraceFollowsItAgain) {
  OpenRows(20);
  ASSERT_EQ(m_list->TopIndex(), 16);
  ASSERT_NO_FATAL_FAILURE(ShowSomeRows());
  DrainMany(3);
  m_view->CancelFilter();
  EXPECT_EQ(m_list->TopIndex(), 19);
  DrainMany(2);
  EXPECT_EQ(m_list->TopIndex(), 21);
}

TEST_F(TraceViewCancel, AListThatTheUserScrolledComesBackWhereItWas) {
  OpenRows(20);
  m_list->ScrollTo(7);
  ASSERT_NO_FATAL_FAILURE(ShowSomeRows());
  DrainMany(3);
  m_view->CancelFilter();
  EXPECT_EQ(m_list->TopIndex(), 7);
}

TEST_F(TraceViewCancel, SeveralSelectedRowsAreSelectedAgainWithoutThoseThatWereTrimmed) {
  OpenRows(20);
  for (const int row : {1, 5, 6, 9}) m_list->SetItemState(row, kRowSelected, kRowSelected);
  m_list->SetItemState(12, kRowFocused, kRowFocused);
  ASSERT_NO_FATAL_FAILURE(ShowSomeRows());
  EXPECT_EQ(m_list->SelectedCount(), 0);
  Trim(3);
  m_view->CancelFilter();
  EXPECT_EQ(States(), "2 selected 3 selected 6 selected 9 focused");
  ASSERT_TRUE(m_view->CurrentEvent());
  EXPECT_EQ(m_view->RowListText(9, Column::Count), "13");
}

TEST_F(TraceViewCancel, ATraceThatTheUserChoseMeanwhileStaysTheOnlySelectedOne) {
  OpenRows(20);
  for (const int row : {1, 5, 6}) m_list->SetItemState(row, kRowSelected, kRowSelected);
  ASSERT_NO_FATAL_FAILURE(ShowSomeRows());
  Focus(2);
  m_view->CancelFilter();
  m_host.RunPosted();
  EXPECT_EQ(States(), "2 focused selected");
}

TEST_F(TraceViewCancel, AWindowBehindAnotherOneIsToldThatAClearEndsThePass) {
  OpenRows(20);
  ASSERT_NO_FATAL_FAILURE(ShowSomeRows());
  std::optional<int> progress = m_view->FilterProgress();
  m_view->m_onStatus = [&] { progress = m_view->FilterProgress(); };
  m_document.DeleteContents();
  EXPECT_EQ(progress, std::nullopt);
}

}  // namespace
