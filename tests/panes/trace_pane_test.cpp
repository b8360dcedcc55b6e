// What every pane does, whatever it shows.
#include "panes/trace_pane.h"

#include <gtest/gtest.h>

#include "docview/commands/command_ids.h"
#include "listview/details/trace_iterator.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "support/view_probes.h"
#include "tree/find/find_settings.h"

namespace {

using Strings = std::vector<std::string>;

// Writes down what it is asked for.
class PlainPane final : public TracePane {
 public:
  using TracePane::TracePane;
  ViewControl* Control() override { return nullptr; }
  TraceEvent_i* CurrentEvent() const override { return current; }
  std::vector<std::string> Calls() { return std::exchange(calls, {}); }
  using TracePane::GoTo;
  using TracePane::ReportCount;
  using TracePane::ReportStatus;
  using TracePane::ShowHits;
  using TracePane::Tell;

  TraceEvent_i* current = nullptr;
  bool selection = true, any = true, rebuilds = true;
  Strings calls;

 private:
  int TraceCount() const override { return 7; }
  bool ShowsAny() const override { return any; }
  void RepaintHits() override { calls.push_back("repaint"); }
  bool Rebuild() override {
    calls.push_back("rebuild");
    return rebuilds;
  }
  void OnOptions() override { calls.push_back("options"); }
  void OnReady() override { calls.push_back("ready"); }
  void AddTraces(const CTraceHint& hint) override {
    calls.push_back("add " + std::to_string(hint.m_events.size()));
  }
  void RemoveTraces(const CTraceHint& hint) override {
    calls.push_back("remove " + std::to_string(hint.m_events.size()) +
                    (m_currentEvent ? "" : " without current"));
  }
  void FollowTrace(CView* sender, const TraceEvent_i& target) override {
    calls.push_back((sender == this ? "go to " : "follow ") + target.GetText());
  }
  bool HasSelection() const override { return selection; }
  std::unique_ptr<CTraceIterator> MakeIterator() override {
    calls.push_back("iterator");
    return nullptr;
  }
  void Find(bool asked) override { calls.push_back(asked ? "find" : "find next"); }
  void OnExport() override { calls.push_back("export"); }
};

class WatchProbe final : public PaneWatcher {
 public:
  explicit WatchProbe(PlainPane& pane) : m_pane(pane) {}
  void OnCurrentTrace() override { m_pane.calls.push_back("trace"); }
  void OnShownTraces() override { m_pane.calls.push_back("shown"); }
  void OnRemoval(const CTraceHint& removed) override {
    m_pane.calls.push_back("loses " + removed.m_events.at(0)->GetText());
  }
  PlainPane& m_pane;
};

class TracePaneTest : public testing::Test {
 protected:
  TracePaneTest() { FindSettings = {}; }
  ~TracePaneTest() override { FindSettings = {}; }

  TraceEvent_i* Add(const char* text, NameId file = 0) {
    m_document.AddTrace(MakeEvent({.text = text, .file = file}).release());
    return m_document.m_traces.back();
  }
  void Update(unsigned hint, CObject* object = nullptr) { m_pane.OnUpdate(nullptr, hint, object); }
  CCmdUI State(unsigned id) {
    CCmdUI ui(id, false, false);
    m_pane.OnUpdateCommand(ui);
    return ui;
  }
  bool IsEnabled(unsigned id) { return State(id).IsEnabled(); }

  RecordingHost m_host;
  PaneProbe m_main{m_host};
  CTraceDoc m_document{m_host};
  PlainPane m_pane{m_document};
  FollowProbe m_other{m_document};
};

TEST_F(TracePaneTest, HandsEachHintToWhatIsDoneAtIt) {
  CTraceHint hint(Add("a"));
  Update(kHintOptions);
  Update(kHintReady);
  Update(kHintCleared);
  Update(kHintAdded, &hint);
  Update(kHintFollow, &hint);
  Update(kHintTrimmed, &hint);
  EXPECT_EQ(m_pane.Calls(),
            (Strings{"options", "ready", "add 1", "follow a", "remove 1 without current"}));
}

TEST_F(TracePaneTest, AWatcherHearsOfWhatChangesAndOfRemovedTracesBeforeTheyGo) {
  WatchProbe watcher(m_pane);
  m_pane.Watch(watcher);
  CTraceHint hint(Add("a"));
  Update(kHintAdded, &hint);
  EXPECT_EQ(m_pane.Calls(), (Strings{"add 1", "shown"}));
  Update(kHintTrimmed, &hint);
  EXPECT_EQ(m_pane.Calls(), (Strings{"loses a", "remove 1 without current", "shown"}));
  Update(kHintReady);
  EXPECT_EQ(m_pane.Calls(), (Strings{"ready", "shown"}));
  Update(kHintOptions);
  EXPECT_EQ(m_pane.Calls(), (Strings{"options", "shown"}));
  m_pane.ReportStatus();
  m_pane.Tell(&PaneWatcher::OnCurrentTrace);
  EXPECT_EQ(m_pane.Calls(), (Strings{"shown", "trace"}));
  m_pane.Unwatch(watcher);
  Update(kHintAdded, &hint);
  m_pane.ReportStatus();
  EXPECT_EQ(m_pane.Calls(), Strings{"add 1"});
}

TEST_F(TracePaneTest, AHintThatLacksItsTracesDoesNothing) {
  CTraceHint none;
  for (const unsigned hint : {kHintAdded, kHintTrimmed, kHintFollow}) Update(hint);
  Update(kHintFollow, &none);
  EXPECT_EQ(m_pane.Calls(), Strings{});
}

TEST_F(TracePaneTest, APostedUpdateIsAHintWithoutASender) {
  CTraceHint hint(Add("a"));
  m_pane.OnMessage(WM_TRACE_UPDATE, kHintFollow,
                   reinterpret_cast<std::intptr_t>(static_cast<CObject*>(&hint)));
  EXPECT_EQ(m_pane.Calls(), Strings{"follow a"});
}

TEST_F(TracePaneTest, TheRememberedTraceIsForgottenBeforeItIsTakenOutAndNoOther) {
  CTraceHint first(Add("a"));
  m_pane.m_currentEvent = Add("b");
  Update(kHintTrimmed, &first);
  EXPECT_EQ(m_pane.Calls(), Strings{"remove 1"});
  CTraceHint second(m_pane.m_currentEvent);
  Update(kHintTrimmed, &second);
  EXPECT_EQ(m_pane.Calls(), Strings{"remove 1 without current"});
}

TEST_F(TracePaneTest, GoesToATraceByItselfWhetherOrNotTheDocumentSynchronises) {
  m_pane.GoTo(&m_pane, Add("a"));
  EXPECT_EQ(m_pane.Calls(), Strings{"go to a"});
  EXPECT_TRUE(m_other.followed.empty());
}

TEST_F(TracePaneTest, HasTheOtherViewsFollowOnlyIfTheDocumentSynchronises) {
  TraceEvent_i* const event = Add("a");
  m_pane.Follow(event);
  EXPECT_TRUE(m_other.followed.empty());
  m_pane.current = event;
  m_pane.OnCommand(ID_VIEW_SYNCHRONIZE);
  EXPECT_EQ(m_other.followed, std::vector<TraceEvent_i*>{event});
  EXPECT_EQ(m_pane.Calls(), Strings{}) << "the sender is not told";
  m_pane.OnCommand(ID_VIEW_SYNCHRONIZE);
  EXPECT_EQ(m_other.followed.size(), 1U);
}

TEST_F(TracePaneTest, ACancelledFilterLeavesFilterAndMarkAsTheyWere) {
  CTraceFilter filter;
  filter.allTraces = 0;
  m_pane.m_filterChanged = true;
  m_pane.rebuilds = false;
  EXPECT_FALSE(m_pane.SetFilter(filter, true));
  EXPECT_EQ(m_pane.m_filter.allTraces, 1);
  EXPECT_TRUE(m_pane.m_filterChanged);
  EXPECT_TRUE(m_pane.SetFilter(filter, false)) << "nothing to rebuild, nothing to cancel";
  EXPECT_EQ(m_pane.m_filter.allTraces, 0);
  EXPECT_FALSE(m_pane.m_filterChanged);
  EXPECT_EQ(m_pane.Calls(), Strings{"rebuild"});
}

TEST_F(TracePaneTest, AFilterTextStandsBesideTheMarksAndACancelledOneLeavesTheOneBefore) {
  WhereError error;
  const WhereProgramPtr first = WhereProgram::Compile("verbose", error);
  m_pane.m_filter.allSeverities = 0;
  EXPECT_TRUE(m_pane.SetWhere(first));
  EXPECT_EQ(m_pane.m_filter.where, first);
  EXPECT_EQ(m_pane.m_filter.allSeverities, 0);
  EXPECT_TRUE(std::exchange(m_pane.m_filterChanged, false)) << "the other pane gets it";
  m_pane.rebuilds = false;
  EXPECT_FALSE(m_pane.SetWhere(nullptr));
  EXPECT_EQ(m_pane.m_filter.where, first);
  EXPECT_FALSE(m_pane.m_filterChanged);
  EXPECT_EQ(m_pane.Calls(), (Strings{"rebuild", "rebuild"}));
}

TEST_F(TracePaneTest, TheStatusPanesAreSetByTheActiveViewAndClearedAfterIt) {
  m_pane.ReportCount();
  m_pane.ReportStatus();
  EXPECT_EQ(m_main.Reported(), Strings{});
  m_pane.OnActivateView(true, &m_pane, nullptr);
  m_pane.ReportCount();
  m_pane.OnActivateView(false, nullptr, &m_pane);
  m_pane.ReportCount();
  EXPECT_EQ(m_main.Reported(),
            (Strings{"rows 7", "filtered 0", "rows 7", "rows cleared", "filtered cleared"}));
}

TEST_F(TracePaneTest, FindIsEnabledWhileThereIsSomethingAndFindNextOnceATextIsKnown) {
  EXPECT_TRUE(IsEnabled(ID_EDIT_FIND));
  EXPECT_FALSE(IsEnabled(ID_EDIT_FINDNEXT));
  FindSettings.searchText = "a";
  EXPECT_TRUE(IsEnabled(ID_EDIT_FINDNEXT));
  m_pane.any = false;
  EXPECT_FALSE(IsEnabled(ID_EDIT_FIND));
  EXPECT_FALSE(IsEnabled(ID_EDIT_FINDNEXT));
  m_pane.OnCommand(ID_EDIT_FINDNEXT);
  EXPECT_EQ(m_pane.Calls(), Strings{"find next"});
}

TEST_F(TracePaneTest, PropertiesAndGotoSourceAskForACurrentTraceAndASourceFile) {
  EXPECT_FALSE(IsEnabled(ID_VIEW_PROPERTIES));
  EXPECT_FALSE(IsEnabled(ID_VIEW_GOTOSOURCE));
  m_pane.current = Add("a");
  EXPECT_TRUE(IsEnabled(ID_VIEW_PROPERTIES));
  EXPECT_FALSE(IsEnabled(ID_VIEW_GOTOSOURCE));
  EXPECT_NE(State(ID_VIEW_GOTOSOURCE).WhyNot(), "");
  m_document.m_names[5] = {"b.cpp"};
  m_pane.current = Add("b", 5);
  EXPECT_TRUE(IsEnabled(ID_VIEW_GOTOSOURCE));
  m_pane.OnCommand(ID_VIEW_PROPERTIES);
  EXPECT_EQ(m_pane.Calls(), Strings{"iterator"});
}

TEST_F(TracePaneTest, WithoutASelectionTheirStateStaysAsItWas) {
  m_pane.selection = false;
  for (const unsigned id : {ID_VIEW_PROPERTIES, ID_VIEW_GOTOSOURCE})
    for (const bool before : {true, false}) {
      CCmdUI ui(id, before, false);
      m_pane.OnUpdateCommand(ui);
      EXPECT_EQ(ui.IsEnabled(), before) << id;
    }
}

TEST_F(TracePaneTest, HitsThatAreNotShownAreNotRepainted) {
  m_pane.ShowHits(false);
  EXPECT_EQ(m_pane.Calls(), Strings{});
  m_pane.ShowHits(true);
  m_pane.ShowHits(false);
  m_pane.ShowHits(false);
  EXPECT_EQ(m_pane.Calls(), (Strings{"repaint", "repaint"}));
}

}  // namespace
