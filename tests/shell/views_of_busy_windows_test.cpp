// Views and profiles meet windows that load, filter and close, monitors, and another program that
// has the same file open.
#include <gmock/gmock.h>

#include <filesystem>

#include "documents/trace_realtime_doc.h"
#include "listview/columns/options_dialog.h"
#include "support/fake_connection.h"
#include "support/short_pieces.h"
#include "tree/proc/proc_view.h"
#include "views_fixture.h"

namespace {

using testing::HasSubstr;
using Strings = std::vector<std::string>;

class BusyWindows : public ViewsComeBack {
 protected:
  BusyWindows() { m_app->m_connectMonitor = m_service.Connector(); }
  ~BusyWindows() override { m_app.reset(); }

  CTraceFileDoc& BeginLoading() {
    auto* const document = static_cast<CTraceFileDoc*>(m_app->OpenDocumentFile(m_path));
    EXPECT_TRUE(document && document->m_loading);
    return *document;
  }
  void EndLoading(CTraceFileDoc& document) {
    ASSERT_TRUE(m_host.RunUntil([&] { return !document.m_loading; }));
    m_host.RunPosted();
    Settle();
  }
  void KeepProfileOf(const std::string& name, const ViewState& state) {
    ASSERT_TRUE(KeepProfile({name, state}, nullptr));
  }
  void ApplyFirst() { ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROFILE1)); }
  void StoreFilter(const std::string& filter) {
    StoredView view{.source = m_path};
    view.state.filter = filter;
    ASSERT_TRUE(StoreView(view, nullptr));
  }
  void OpenMonitor(const std::string& machine) { ASSERT_TRUE(m_app->OpenMonitor(machine)); }
  static StoredView StoredOf(const std::string& source) {
    return ReadStoredView(source, nullptr).value_or(StoredView{.source = "none"});
  }

  FakeService m_service;
};

// ---- a profile at a bad moment

TEST_F(BusyWindows, AProfileThatIsAppliedWhileTheFileLoadsStays) {
  Start();
  m_path = Write("web.trc");
  StoreFilter("tid == \"main\"");
  ViewState all;
  all.filter.emplace();
  KeepProfileOf("all", all);
  CTraceFileDoc& document = BeginLoading();
  ApplyFirst();
  EndLoading(document);
  EXPECT_EQ(InForce(), "");
  EXPECT_EQ(List().Rows().Size(), 10);
}

TEST_F(BusyWindows, TheStandardViewThatIsChosenWhileTheFileLoadsStays) {
  Start();
  m_path = Write("web.trc");
  StoreFilter("tid == \"main\"");
  CTraceFileDoc& document = BeginLoading();
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROFILESTANDARD));
  EndLoading(document);
  EXPECT_EQ(InForce(), "");
}

TEST_F(BusyWindows, AProfileWithTheTreeIsAppliedWhileTheFileLoads) {
  Start();
  m_path = Write("web.trc");
  ViewState tree;
  tree.tree = true;
  tree.filter = "tid == \"main\"";
  KeepProfileOf("tree", tree);
  CTraceFileDoc& document = BeginLoading();
  ApplyFirst();
  EndLoading(document);
  EXPECT_TRUE(Child().IsTreeShown());
  EXPECT_EQ(InForce(), "tid == \"main\"");
}

TEST_F(BusyWindows, OfTwoProfilesInARowTheSecondOneCountsAlsoWhileTheFirstOneFilters) {
  Start();
  m_path = Write("web.trc", 10000);
  ViewState main, all;
  main.filter = "tid == \"main\"";
  all.filter.emplace();
  KeepProfileOf("a", main);
  KeepProfileOf("b", all);
  OpenFile();
  std::optional<ShortPieces> pieces(std::in_place, m_host);
  ApplyFirst();
  ASSERT_TRUE(Child().ShownPane()->FilterProgress());
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROFILE1 + 1));
  pieces.reset();
  Settle();
  EXPECT_EQ(InForce(), "");
  EXPECT_EQ(List().Rows().Size(), 10000);
  EXPECT_EQ(Child().Filter().Line().Text(), "");
}

TEST_F(BusyWindows, AWindowThatClosesWhileAProfileFiltersKeepsItsText) {
  Start();
  m_path = Write("web.trc", 10000);
  ViewState main;
  main.filter = "tid == \"main\"";
  KeepProfileOf("a", main);
  OpenFile();
  std::optional<ShortPieces> pieces(std::in_place, m_host);
  ApplyFirst();
  ASSERT_TRUE(Child().ShownPane()->FilterProgress());
  Close();
  EXPECT_EQ(Stored().state.filter, "tid == \"main\"");
}

// ---- a window that closes early

TEST_F(BusyWindows, AWindowThatClosesWhileItsViewIsAppliedKeepsRowAndText) {
  Start();
  m_path = Write("web.trc", 10000);
  OpenFile();
  Filter("tid == \"main\"");
  Focus(2);
  Close();
  const StoredView before = Stored();
  ASSERT_TRUE(before.state.row);
  CTraceFileDoc& document = BeginLoading();
  ASSERT_TRUE(m_host.RunUntil([&] { return !document.m_loading; }));
  const ShortPieces pieces(m_host);
  for (int posted = 0; posted < 20 && !Child().ShownPane()->FilterProgress(); ++posted)
    m_host.RunPosted();
  ASSERT_TRUE(Child().ShownPane()->FilterProgress());
  ASSERT_TRUE(Stored().onTrial);
  Close();
  EXPECT_EQ(Stored().state.row, before.state.row);
  EXPECT_EQ(Stored().state.filter, before.state.filter);
  EXPECT_FALSE(Stored().onTrial);
}

// ---- two programs with the same file

TEST_F(BusyWindows, AViewThatAnotherProgramKeepsMeanwhileIsNotReplacedByTheOlderOne) {
  Start();
  m_path = Write("web.trc");
  StoreFilter("tid == \"main\"");
  CTraceFileDoc& document = BeginLoading();
  StoreFilter("tid == \"worker\"");  // the other program closes its window
  EndLoading(document);
  EXPECT_EQ(Stored().state.filter, "tid == \"worker\"");
  EXPECT_FALSE(Stored().onTrial);
  Close();
  EXPECT_EQ(Stored().state.filter, "tid == \"main\"") << "the last one that closes";
}

TEST_F(BusyWindows, WhereTheViewCannotBeKeptTheStatusBarSaysWhy) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  const std::string folder = m_dir.File("settings.ini.views");
  std::filesystem::remove_all(folder);
  m_dir.File("settings.ini.views", "a file");
  Close();
  EXPECT_THAT(Notice(), HasSubstr("The view was not kept: " + folder));
}

// ---- panes

TEST_F(BusyWindows, AViewBringsBackTheVeryPanesThatItsWindowShowed) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_MARKS));
  ASSERT_EQ(Child().Beside().OpenNames(), Strings{"Marks"});
  Close();
  // The settings say by now that a window opens with the details, and without the marks.
  const std::string other = Write("other.trc");
  ASSERT_TRUE(Open(other));
  ASSERT_EQ(Child().Beside().OpenNames(), Strings{"Marks"}) << "a file without a view";
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_MARKS));
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_DETAILS));
  Close();
  OpenFile();
  EXPECT_EQ(Child().Beside().OpenNames(), Strings{"Marks"});
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_MARKS));
  Close();
  ASSERT_TRUE(Open(other));
  EXPECT_EQ(Child().Beside().OpenNames(), Strings{"Details"});
  Close();
  OpenFile();
  EXPECT_EQ(Child().Beside().OpenNames(), Strings()) << "what the user has put away stays away";
}

TEST_F(BusyWindows, AViewThatSaysNothingAboutPanesLeavesThoseOfTheSettings) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_DETAILS));
  StoreFilter("tid == \"main\"");
  StoredView older = Stored();
  ASSERT_FALSE(older.state.panes);
  Close();
  ASSERT_TRUE(StoreView(older, nullptr));
  OpenFile();
  EXPECT_EQ(Child().Beside().OpenNames(), Strings{"Details"});
  EXPECT_EQ(InForce(), "tid == \"main\"");
}

// ---- monitors

TEST_F(BusyWindows, TheViewOfAMonitorIsThatOfItsMachine) {
  Start();
  OpenMonitor("Web");
  List().Columns().SetState({{"PID", 90, true}, {"Sev", 44, false}});
  const std::string columns = Columns();
  Filter("severity >= warn");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
  Close();
  EXPECT_EQ(StoredOf("monitor:web").state.filter, "severity >= warn");
  OpenMonitor("shop");
  EXPECT_EQ(InForce(), "");
  EXPECT_FALSE(Child().IsTreeShown());
  Close();
  OpenMonitor("WEB");
  Settle();
  EXPECT_EQ(Columns(), columns);
  EXPECT_EQ(InForce(), "severity >= warn");
  EXPECT_TRUE(Child().IsTreeShown());
}

TEST_F(BusyWindows, AMonitorKeepsNoRowWhetherItsConnectionIsUpOrNot) {
  Start();
  OpenMonitor("web");
  m_service.m_connections.back()->SendMany(5);
  m_host.TickTimers();
  ASSERT_EQ(List().Rows().Size(), 5);
  Focus(3);
  m_host.AnswerBox(BoxAnswer::No);  // they are not saved
  Close();
  EXPECT_EQ(StoredOf("monitor:web").source, "monitor:web");
  EXPECT_FALSE(StoredOf("monitor:web").state.row);
}

TEST_F(BusyWindows, AProfileIsAppliedToAMonitorWhileTracesArrive) {
  Start();
  ViewState state;
  state.filter = "text == \"up\"";
  state.tree = false;
  KeepProfileOf("up", state);
  OpenMonitor("web");
  auto& connection = *m_service.m_connections.back();
  connection.SendMany(50);
  m_host.TickTimers();
  connection.Send("down");
  ApplyFirst();
  connection.SendMany(50);
  m_host.TickTimers();
  Settle();
  EXPECT_EQ(InForce(), "text == \"up\"");
  EXPECT_EQ(List().Rows().Size(), 100);
}

// ---- hostile files

TEST_F(BusyWindows, ColumnsThatAreRepeatedUnknownOrOfNoWidthLeaveAListThatCanBeUsed) {
  Start();
  m_path = Write("web.trc");
  StoredView view{.source = m_path};
  for (int i = 0; i < 20; ++i) view.state.columns.push_back({"PID", i, i % 2 == 0});
  view.state.columns.push_back({"Delta", 0, true});
  view.state.columns.push_back({"No such", 70, true});
  view.state.columns.push_back({"Trace", kViewWidthMaxPx, true});
  view.state.row = ViewRow{~std::uint64_t{0}, 0};
  view.state.panes = {"Details", "Details", "No such"};
  ASSERT_TRUE(StoreView(view, nullptr));
  OpenFile();
  EXPECT_THAT(Columns(), HasSubstr("Trace 65535"));
  EXPECT_THAT(Columns(), HasSubstr("Delta "));
  EXPECT_EQ(Focused(), "none");
  EXPECT_EQ(Child().Beside().OpenNames(), Strings{"Details"});
  Close();
  ASSERT_TRUE(Stored().source == m_path);
  EXPECT_EQ(Stored().state.columns.size(), 18u) << "each column once";
}

TEST_F(BusyWindows, AListOfWhichNoColumnIsShownShowsThoseOfTheProgram) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  StoredView view{.source = m_path};
  view.state.columns = List().Columns().State();
  const std::string standard = Columns();
  for (ViewColumn& column : view.state.columns) column.shown = false;
  Close();
  ASSERT_TRUE(StoreView(view, nullptr));
  OpenFile();
  EXPECT_EQ(Columns(), standard);
}

TEST_F(BusyWindows, SwitchedOffNothingIsWrittenEvenThoughAViewIsBeingApplied) {
  Start();
  m_path = Write("web.trc", 10);
  RememberViews(false);
  OpenFile();
  Filter("tid == \"main\"");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_DETAILS));
  Close();
  EXPECT_FALSE(std::filesystem::exists(m_dir.File("settings.ini.views")));
}

}  // namespace
