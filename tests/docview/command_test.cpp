#include "docview/commands/command.h"

#include "docview_fixture.h"

namespace {

constexpr unsigned kCommand = 40000;

class Target : public CCmdTarget {
 public:
  using CCmdTarget::MapCommand;
  using CCmdTarget::MapUpdate;
};

class ProbeApp : public FakeApp {
 public:
  using CCmdTarget::MapCommand;
  using FakeApp::FakeApp;
};

bool EnabledIn(CCmdTarget& target, unsigned id, bool before = false) {
  CCmdUI ui(id, before, false);
  UpdateCommand(target, ui);
  return ui.IsEnabled();
}

TEST(Command, ACommandThatNobodyTakesDoesNothingAndItsItemIsDisabled) {
  Target target;
  EXPECT_FALSE(target.OnCommand(kCommand));
  EXPECT_FALSE(target.HasCommand(kCommand));
  EXPECT_FALSE(EnabledIn(target, kCommand, true));
}

TEST(Command, AHandlerWithoutAnUpdateHandlerEnablesTheItem) {
  Target target;
  int runs = 0;
  target.MapCommand(kCommand, [&runs] { ++runs; });
  EXPECT_TRUE(target.OnCommand(kCommand));
  EXPECT_EQ(runs, 1);
  EXPECT_TRUE(EnabledIn(target, kCommand));
}

TEST(Command, AnUpdateHandlerThatCallsNothingLeavesTheStateAsItWas) {
  Target target;
  target.MapCommand(
      kCommand, [] {}, [](CCmdUI&) {});
  EXPECT_FALSE(EnabledIn(target, kCommand, false));
  EXPECT_TRUE(EnabledIn(target, kCommand, true));
}

TEST(Command, AnUpdateHandlerAloneShowsAStateButTakesNoCommand) {
  Target target;
  target.MapUpdate(kCommand, [](CCmdUI& ui) { ui.SetCheck(); });
  CCmdUI ui(kCommand, true, false);
  UpdateCommand(target, ui);
  EXPECT_TRUE(ui.IsChecked());
  EXPECT_FALSE(target.OnCommand(kCommand));
  EXPECT_FALSE(target.HasCommand(kCommand));
}

TEST(Command, AHandlerMayDestroyItsTarget) {
  auto target = std::make_unique<Target>();
  const std::string name = "a text too long to live inside the handler itself";
  std::string seen;
  target->MapCommand(kCommand, [&target, &seen, name] {
    target.reset();
    seen = name;  // what the handler holds is still there
  });
  EXPECT_TRUE(target->OnCommand(kCommand));
  EXPECT_EQ(seen, name);
}

TEST(Command, MappingACommandAgainReplacesItsHandlers) {
  Target target;
  std::string runs;
  target.MapCommand(
      kCommand, [&runs] { runs += "old"; }, [](CCmdUI& ui) { ui.Enable(false); });
  target.MapCommand(kCommand, [&runs] { runs += "new"; });
  EXPECT_TRUE(target.OnCommand(kCommand));
  EXPECT_EQ(runs, "new");
  EXPECT_TRUE(EnabledIn(target, kCommand));
}

// View, document, child frame, main frame, application: the first taker wins.
class CommandRoute : public testing::Test {
 protected:
  CommandRoute() : m_app(m_host, m_log) {
    auto made = std::make_unique<ProbeFrame>(m_app.m_frame, m_log);
    m_child = static_cast<ProbeFrame*>(m_app.m_frame.AddChild(std::move(made)));
    m_view = static_cast<ProbeView*>(
        m_child->AddView(std::make_unique<ProbeView>(m_document, m_log, "view")));
    m_child->InitialUpdateFrame(&m_document, true);
    m_child->OnActivate(true);
  }
  std::function<void()> Taken(const char* by) {
    return [this, by] { m_taken += by; };
  }
  std::string Run() {
    m_taken.clear();
    return m_app.m_frame.OnCommand(kCommand) ? m_taken : "nobody";
  }

  RecordingHost m_host;
  FrameLog m_log;
  ProbeApp m_app;
  ProbeDoc m_document{m_host, m_log};
  ProbeFrame* m_child;
  ProbeView* m_view;
  std::string m_taken;
};

TEST_F(CommandRoute, GoesFromTheViewOverDocumentAndFramesToTheApplication) {
  EXPECT_EQ(Run(), "nobody");
  m_app.MapCommand(kCommand, Taken("application"));
  EXPECT_EQ(Run(), "application");
  m_child->MapCommand(kCommand, Taken("child frame"));
  EXPECT_EQ(Run(), "child frame");
  m_document.MapCommand(kCommand, Taken("document"));
  EXPECT_EQ(Run(), "document");
  m_view->MapCommand(kCommand, Taken("view"));
  EXPECT_EQ(Run(), "view");
}

TEST_F(CommandRoute, TheMainFrameTakesItsOwnCommandsBeforeTheApplication) {
  m_app.MapCommand(ID_WINDOW_CASCADE, Taken("application"));
  m_log.Clear();
  EXPECT_TRUE(m_app.m_frame.OnCommand(ID_WINDOW_CASCADE));
  EXPECT_EQ(m_log.Reported(), "layout cascade\n");
  EXPECT_EQ(m_taken, "");
}

TEST_F(CommandRoute, TheUpdateHandlerIsSearchedOnTheSameRouteBeforeTheHandlers) {
  m_view->MapCommand(kCommand, Taken("view"));
  EXPECT_TRUE(EnabledIn(m_app.m_frame, kCommand));
  m_document.MapUpdate(kCommand, [](CCmdUI& ui) { ui.Enable(false); });
  EXPECT_FALSE(EnabledIn(m_app.m_frame, kCommand, true));
  m_view->MapUpdate(kCommand, [](CCmdUI& ui) { ui.Enable(true); });
  EXPECT_TRUE(EnabledIn(m_app.m_frame, kCommand));
}

TEST_F(CommandRoute, AFrameThatIsNotActiveIsNotAsked) {
  m_view->MapCommand(kCommand, Taken("view"));
  m_child->OnActivate(false);
  EXPECT_EQ(Run(), "nobody");
  EXPECT_FALSE(EnabledIn(m_app.m_frame, kCommand));
}

TEST_F(CommandRoute, WindowCommandsNeedAWindow) {
  for (const unsigned id : {ID_WINDOW_CASCADE, ID_WINDOW_TILE_HORZ, ID_WINDOW_ARRANGE}) {
    EXPECT_TRUE(EnabledIn(m_app.m_frame, id)) << id;
  }
  m_child->Destroy();
  for (const unsigned id : {ID_WINDOW_CASCADE, ID_WINDOW_TILE_HORZ, ID_WINDOW_ARRANGE}) {
    EXPECT_FALSE(EnabledIn(m_app.m_frame, id)) << id;
  }
}

}  // namespace
