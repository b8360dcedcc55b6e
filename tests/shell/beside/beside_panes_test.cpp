#include "shell/beside/beside_panes.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "settings/registry.h"
#include "support/fake_beside_area.h"
#include "support/fake_frame.h"
#include "support/make_event.h"
#include "support/plain_trace_pane.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace {

using Strings = std::vector<std::string>;
constexpr unsigned kDetails = 1, kMarks = 2, kHits = 3;

// Writes down what it is told: "Details made", "Details on list", "Details seen", "Details trace".
class ProbePane final : public BesidePane {
 public:
  ProbePane(Strings& log, std::string title) : m_log(log), m_title(std::move(title)) {
    Note("made");
  }
  ~ProbePane() override { Note("gone"); }
  std::string Title() const override { return m_title; }
  ViewControl& Control() override { return m_control; }
  void OnPane(TracePane& pane) override { Note(pane.GetDlgCtrlID() == 1 ? "on tree" : "on list"); }
  void OnShown(bool seen) override { Note(seen ? "seen" : "unseen"); }
  void OnCurrentTrace() override { Note("trace"); }
  void OnRemoval(const CTraceHint& removed) override {
    Note("loses " + std::to_string(removed.m_events.size()));
  }
  Strings& m_log;
  std::string m_title;
  PlainControl m_control;

 private:
  void Note(const std::string& what) { m_log.push_back(m_title + " " + what); }
};

class BesidePanesTest : public testing::Test {
 protected:
  BesidePanesTest() {
    SetSettingsFile(m_dir.File("settings.ini"));
    m_tree.SetDlgCtrlID(1);
    Make();
  }
  ~BesidePanesTest() override {
    m_panes.reset();
    SetSettingsFile("");
  }
  // The panes of a new window.
  void Make() {
    m_panes = std::make_unique<BesidePanes>(
        m_host,
        [this](BesideAreaOwner& owner) { return std::make_unique<FakeBesideArea>(owner, m_area); },
        [this] { return m_shown; });
    Add(kDetails, "Details", "Details");
    Add(kMarks, "Marks", "Marks");
    Add(kHits, nullptr, "Hits");
    m_panes->OnCreate(m_window);
  }
  void Add(unsigned command, const char* stored, const char* title) {
    m_panes->Add(command, stored,
                 [this, title] { return std::make_unique<ProbePane>(m_log, title); });
  }
  Strings Told() { return std::exchange(m_log, {}); }
  std::string Tabs() const { return m_area ? m_area->Tabs() : "no area"; }
  void ShowTree() {
    m_shown = &m_tree;
    m_panes->OnPane();
  }

  TempDir m_dir;
  RecordingHost m_host;
  FrameLog m_frames;
  FakeApp m_app{m_host, m_frames};
  CMDIChildWnd m_child{m_app.m_frame};
  FakeChildFace m_window{m_frames, m_child, 400, 300};
  CTraceDoc m_document{m_host};
  PlainTracePane m_list{m_document}, m_tree{m_document};
  TracePane* m_shown = &m_list;
  Strings m_log;
  FakeBesideArea* m_area = nullptr;
  std::unique_ptr<BesidePanes> m_panes;
};

TEST_F(BesidePanesTest, NothingIsMadeBeforeTheUserAsksForIt) {
  EXPECT_EQ(Told(), Strings{});
  EXPECT_EQ(Tabs(), "no area");
  EXPECT_EQ(m_window.m_beside, nullptr);
}

TEST_F(BesidePanesTest, ACommandOpensItsPaneAndASecondTimePutsItAway) {
  m_panes->Toggle(kDetails);
  EXPECT_EQ(Told(), (Strings{"Details made", "Details on list", "Details seen"}));
  EXPECT_EQ(Tabs(), "*Details");
  EXPECT_EQ(m_window.m_beside, m_area);
  EXPECT_TRUE(m_panes->IsOpen(kDetails));
  m_panes->Toggle(kDetails);
  EXPECT_EQ(Told(), Strings{"Details unseen"});
  EXPECT_FALSE(m_panes->IsOpen(kDetails));
  EXPECT_EQ(m_window.m_beside, nullptr);
  m_host.RunPosted();
  EXPECT_EQ(Told(), Strings{"Details gone"}) << "after the event that it may be handling";
  EXPECT_EQ(Tabs(), "no area");
}

TEST_F(BesidePanesTest, SeveralAreTabsInTheOrderOfTheirKinds) {
  m_panes->Toggle(kHits);
  m_panes->Toggle(kDetails);
  m_panes->Toggle(kMarks);
  EXPECT_EQ(Tabs(), "Details *Marks Hits");
  EXPECT_EQ(Told(), (Strings{"Hits made", "Hits on list", "Hits seen", "Details made",
                             "Details on list", "Hits unseen", "Details seen", "Marks made",
                             "Marks on list", "Details unseen", "Marks seen"}));
}

TEST_F(BesidePanesTest, ThatOfAnotherTabComesToTheFrontAndIsNotPutAway) {
  m_panes->Toggle(kDetails);
  m_panes->Toggle(kMarks);
  Told();
  m_panes->Toggle(kDetails);
  EXPECT_EQ(Tabs(), "*Details Marks");
  EXPECT_EQ(Told(), (Strings{"Marks unseen", "Details seen"}));
  m_panes->Toggle(kDetails);
  EXPECT_EQ(Tabs(), "*Marks");
  EXPECT_EQ(Told(), (Strings{"Details unseen", "Marks seen"}));
}

TEST_F(BesidePanesTest, TheUserChoosesAndClosesTabs) {
  for (const unsigned command : {kDetails, kMarks, kHits}) m_panes->Toggle(command);
  Told();
  m_area->SetFront(0);
  m_area->m_owner.OnTab(0);
  EXPECT_EQ(Told(), (Strings{"Hits unseen", "Details seen"}));
  m_area->m_owner.OnCloseTab(1);
  EXPECT_EQ(Tabs(), "*Details Hits");
  EXPECT_FALSE(m_panes->IsOpen(kMarks));
  EXPECT_EQ(Told(), Strings{}) << "it was not seen";
}

TEST_F(BesidePanesTest, OnlyWhatIsSeenFollowsTheRows) {
  m_panes->Toggle(kDetails);
  m_panes->Toggle(kMarks);
  Told();
  m_list.GoToTrace(nullptr);
  EXPECT_EQ(Told(), Strings{"Marks trace"});
  m_panes->Toggle(kMarks);
  Told();
  m_list.GoToTrace(nullptr);
  EXPECT_EQ(Told(), Strings{"Details trace"});
  m_panes->Toggle(kDetails);
  Told();
  m_list.GoToTrace(nullptr);
  EXPECT_EQ(Told(), Strings{}) << "it waits for its end";
}

TEST_F(BesidePanesTest, WhatIsTrimmedIsToldBeforeItGoes) {
  m_panes->Toggle(kDetails);
  Told();
  m_document.AddTrace(MakeEvent({.text = "a"}).release());
  CTraceHint hint(m_document.m_traces.back());
  m_list.OnUpdate(nullptr, kHintTrimmed, &hint);
  EXPECT_EQ(Told(), Strings{"Details loses 1"});
}

TEST_F(BesidePanesTest, WhenListAndTreeChangePlacesThePanesFollowTheOther) {
  m_panes->Toggle(kDetails);
  m_panes->Toggle(kMarks);
  Told();
  ShowTree();
  EXPECT_EQ(Told(), (Strings{"Details on tree", "Marks on tree", "Marks seen"}));
  m_list.GoToTrace(nullptr);
  EXPECT_EQ(Told(), Strings{});
  m_tree.GoToTrace(nullptr);
  EXPECT_EQ(Told(), Strings{"Marks trace"});
  m_panes->Toggle(kMarks);
  m_panes->Toggle(kDetails);
  m_host.RunPosted();
  Told();
  m_panes->Toggle(kHits);
  EXPECT_EQ(Told(), (Strings{"Hits made", "Hits on tree", "Hits seen"}));
}

TEST_F(BesidePanesTest, AWindowThatClosesTakesThemAlong) {
  m_panes->Toggle(kDetails);
  m_panes->Toggle(kMarks);
  m_panes->Toggle(kMarks);  // it waits for its end
  Told();
  m_panes.reset();
  EXPECT_EQ(m_window.m_beside, nullptr);
  EXPECT_EQ(m_area, nullptr);
  Strings told = Told();
  std::ranges::sort(told);
  EXPECT_EQ(told, (Strings{"Details gone", "Details unseen", "Marks gone"}));
  m_list.GoToTrace(nullptr);
  m_host.RunPosted();
  EXPECT_EQ(Told(), Strings{});
}

TEST_F(BesidePanesTest, BeforeThereAreRowsNothingOpens) {
  m_shown = nullptr;
  m_panes->Toggle(kDetails);
  m_panes->SwitchFocus();
  m_panes->OnPane();
  EXPECT_EQ(Told(), Strings{});
  EXPECT_EQ(m_panes->Open(99), nullptr) << "no such command";
}

// ---- the focus

TEST_F(BesidePanesTest, TheFocusStaysInTheRowsUntilTheUserGoesThere) {
  m_panes->Toggle(kDetails);
  EXPECT_FALSE(m_panes->HasFocus());
  m_panes->SwitchFocus();
  EXPECT_TRUE(m_panes->HasFocus());
  m_area->m_focus = false;
  m_panes->SwitchFocus();
  EXPECT_TRUE(m_panes->HasFocus());
  m_panes->SwitchFocus();
  EXPECT_EQ(m_list.m_control.m_focused, 1);
}

TEST_F(BesidePanesTest, EscapeGivesTheFocusBackToTheRows) {
  EXPECT_FALSE(m_panes->OnEscape());
  m_panes->Toggle(kDetails);
  EXPECT_FALSE(m_panes->OnEscape()) << "the rows have it";
  m_panes->SwitchFocus();
  EXPECT_TRUE(m_panes->OnEscape());
  EXPECT_EQ(m_list.m_control.m_focused, 1);
}

TEST_F(BesidePanesTest, WhatIsPutAwayWithTheFocusInItPassesItOn) {
  m_panes->Toggle(kDetails);
  m_panes->Toggle(kMarks);
  m_panes->SetFocus();
  m_panes->Toggle(kMarks);
  EXPECT_TRUE(m_panes->HasFocus()) << "the one that is in front now has it";
  EXPECT_EQ(m_list.m_control.m_focused, 0);
  m_panes->Toggle(kDetails);
  EXPECT_EQ(m_list.m_control.m_focused, 1);
  m_panes->Toggle(kDetails);
  m_panes->Toggle(kDetails);
  EXPECT_EQ(m_list.m_control.m_focused, 1) << "the rows had it";
}

// ---- what is stored

TEST_F(BesidePanesTest, TheNextWindowOpensWithWhatWasOpenLast) {
  m_panes->Toggle(kMarks);
  m_panes->Toggle(kHits);
  Make();
  EXPECT_EQ(Tabs(), "*Marks") << "hits belong to one search";
  EXPECT_FALSE(m_panes->HasFocus());
  m_panes->Toggle(kMarks);
  Make();
  EXPECT_EQ(Tabs(), "no area");
}

TEST_F(BesidePanesTest, EachEdgeKeepsTheExtentThatTheUserGaveIt) {
  m_panes->Toggle(kDetails);
  EXPECT_EQ(m_window.m_besideEdge, BesideEdge::Below);
  EXPECT_EQ(m_window.m_besidePx, 0) << "the window chooses";
  m_panes->OnExtent(120);
  m_panes->SetEdge(BesideEdge::Right);
  EXPECT_EQ(m_window.m_besideEdge, BesideEdge::Right);
  EXPECT_EQ(m_window.m_besidePx, 0);
  m_panes->OnExtent(333);
  Make();
  m_panes->SetEdge(BesideEdge::Below);
  EXPECT_EQ(m_window.m_besidePx, 120);
  m_panes->SetEdge(BesideEdge::Right);
  EXPECT_EQ(m_window.m_besidePx, 333);
}

TEST_F(BesidePanesTest, AnotherWindowsChoiceOfTheEdgeDoesNotMixTheExtents) {
  m_panes->Toggle(kDetails);
  NtRegPut(HKEY_CURRENT_USER, std::string(kRegTraceView) + "\\Beside", "Right", 1U);
  m_panes->OnExtent(90);
  m_panes->SetEdge(BesideEdge::Below);
  EXPECT_EQ(m_window.m_besidePx, 90);
  m_panes->SetEdge(BesideEdge::Right);
  EXPECT_EQ(m_window.m_besidePx, 0);
}

TEST_F(BesidePanesTest, AnExtentThatNoWindowHasIsNotTaken) {
  NtRegPut(HKEY_CURRENT_USER, std::string(kRegTraceView) + "\\Beside", "Height", 4000000000U);
  m_panes->Toggle(kDetails);
  EXPECT_EQ(m_window.m_besidePx, 0);
}

TEST_F(BesidePanesTest, ATitleMayChangeWhileItIsOpen) {
  m_panes->Toggle(kHits);
  m_panes->Toggle(kDetails);
  auto* const hits = static_cast<ProbePane*>(m_panes->Find(kHits));
  ASSERT_TRUE(hits);
  hits->m_title = "Hits (3)";
  m_panes->OnTitle(*hits);
  EXPECT_EQ(Tabs(), "*Details Hits (3)");
}

}  // namespace
