// The view of a file or a monitor comes back, in the whole program over fakes.
#include <gmock/gmock.h>

#include "listview/columns/options_dialog.h"
#include "shell/views/profiles_dialog.h"
#include "tree/proc/proc_view.h"
#include "views_fixture.h"

namespace {

using testing::HasSubstr;

TEST_F(ViewsComeBack, ColumnsFilterFocusAndTreeOfAFileThatIsOpenedAgain) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  List().Columns().SetState({{"PID", 90, true}, {"Trace", 300, true}, {"Sev", 44, false}});
  const std::string columns = Columns();
  Filter("tid == \"main\"");
  Focus(2);
  ASSERT_EQ(Focused(), "5");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
  OpenAgain();
  EXPECT_EQ(Columns(), columns);
  EXPECT_EQ(InForce(), "tid == \"main\"");
  EXPECT_TRUE(Child().IsTreeShown());
  EXPECT_EQ(Focused(), "5");
  ASSERT_TRUE(m_faces.m_filterLine) << "nobody takes the file for a whole one";
  EXPECT_EQ(Child().Filter().Line().Text(), "tid == \"main\"");
  EXPECT_EQ(Child().Filter().Line().GetState(), FilterLine::State::InForce);
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
  EXPECT_EQ(List().Rows().Size(), 5) << "the list has the filter, too";
}

TEST_F(ViewsComeBack, TheMarksOfTheFilterDialogWithAndWithoutAText) {
  Start();
  m_path = WriteComponents("web.trc");
  OpenFile();
  Hide("Net");
  ASSERT_EQ(List().Rows().Size(), 5);
  OpenAgain();
  EXPECT_EQ(Stored().state.marks, "component != Net");
  EXPECT_EQ(List().Rows().Size(), 5);
  EXPECT_EQ(InForce(), "") << "they are marks again";
  EXPECT_EQ(MarkOf("Net"), 0);
  EXPECT_EQ(MarkOf("Sql"), 1);
  Filter("text != \"1\"");
  OpenAgain();
  EXPECT_EQ(List().Rows().Size(), 4);
  EXPECT_EQ(InForce(), "text != \"1\"");
  EXPECT_EQ(MarkOf("Net"), 0);
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROFILESTANDARD));
  Settle();
  EXPECT_EQ(List().Rows().Size(), 10) << "the standard view shows all";
  EXPECT_EQ(MarkOf("Net"), 1);
}

TEST_F(ViewsComeBack, ANameThatAFileHasGotMeanwhileIsShownAsTheMarksSay) {
  Start();
  m_path = WriteComponents("web.trc");
  OpenFile();
  Hide("Net");
  Close();
  WriteComponents("web.trc", 2000, "Cache");
  OpenFile();
  EXPECT_EQ(MarkOf("Net"), 0);
  EXPECT_EQ(MarkOf("Cache"), 1);
  EXPECT_EQ(List().Rows().Size(), 5 + 1990);
}

TEST_F(ViewsComeBack, AProfileHasTheMarksToo) {
  Start();
  m_path = WriteComponents("web.trc");
  OpenFile();
  Profile profile{"no net", {}};
  profile.state.marks = "component != Net";
  ASSERT_TRUE(KeepProfile(profile, nullptr));
  Filter("text != \"1\"");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROFILE1));
  Settle();
  EXPECT_EQ(List().Rows().Size(), 4);
  EXPECT_EQ(InForce(), "text != \"1\"") << "a profile that says nothing about the text";
  EXPECT_EQ(MarkOf("Net"), 0);
}

TEST_F(ViewsComeBack, MarksThatAreNoTreeBecomeAPartOfTheText) {
  Start();
  m_path = WriteComponents("web.trc");
  OpenFile();
  Profile profile{"odd", {}};
  profile.state.marks = "text != \"3\"";
  profile.state.filter = "component == Sql";
  ASSERT_TRUE(KeepProfile(profile, nullptr));
  Hide("Net");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROFILE1));
  Settle();
  EXPECT_EQ(InForce(), "component == Sql and text != \"3\"");
  EXPECT_EQ(List().Rows().Size(), 4);
  EXPECT_EQ(MarkOf("Net"), 1);
}

TEST_F(ViewsComeBack, TheFocusAloneAndTheListAlone) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  Focus(7);
  OpenAgain();
  EXPECT_EQ(Focused(), "7");
  EXPECT_FALSE(Child().IsTreeShown());
  EXPECT_EQ(m_faces.m_filterLine, nullptr);
  EXPECT_EQ(List().Rows().Size(), 10);
}

TEST_F(ViewsComeBack, TheColoursOfItsWindowAndOfNoOther) {
  Start();
  m_path = Write("web.trc");
  const std::string other = Write("other.trc");
  const ColourRules red = {{"red", "pid == 1", {255, 0, 0}, {}}};
  ASSERT_TRUE(UseColours({true, red}, nullptr));
  OpenFile();
  Close();
  ASSERT_TRUE(UseColours({}, nullptr));
  OpenFile();
  ASSERT_TRUE(Open(other));
  EXPECT_EQ(List(0).Colours().State(), (ViewColours{true, red}));
  EXPECT_EQ(List(1).Colours().State(), ViewColours());
  EXPECT_EQ(ActiveColours(), nullptr);
}

TEST_F(ViewsComeBack, NothingIsReadKeptOrAppliedWhenItIsOff) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  Filter("tid == \"main\"");
  Close();
  RememberViews(false);
  const StoredView before = Stored();
  OpenFile();
  EXPECT_EQ(InForce(), "");
  EXPECT_EQ(m_faces.m_filterLine, nullptr);
  Focus(3);
  Close();
  EXPECT_EQ(Stored(), before);
  RememberViews(true);
  OpenFile();
  EXPECT_EQ(InForce(), "tid == \"main\"");
}

TEST_F(ViewsComeBack, AnotherFileOfThatNameGetsItsColumnsAlone) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  List().Columns().SetState({{"PID", 90, true}});
  const std::string columns = Columns();
  Filter("tid == \"main\"");
  Focus(2);
  Close();
  Write("web.trc", 10, "x");
  OpenFile();
  EXPECT_EQ(Columns(), columns);
  EXPECT_EQ(InForce(), "");
  EXPECT_EQ(Focused(), "none");
}

TEST_F(ViewsComeBack, AFileThatHasGrownKeepsItsView) {
  Start();
  m_path = Write("web.trc", 10);
  OpenFile();
  Filter("tid == \"main\"");
  Focus(2);
  Close();
  Write("web.trc", 4000);
  OpenFile();
  EXPECT_EQ(InForce(), "tid == \"main\"");
  EXPECT_EQ(Focused(), "5");
}

TEST_F(ViewsComeBack, AFilterTextThatIsNoneAnyMoreStandsInTheLineAndFiltersNothing) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  Close();
  StoredView view = Stored();
  view.state.filter = "tid == ";
  ASSERT_TRUE(StoreView(view, nullptr));
  OpenFile();
  EXPECT_EQ(InForce(), "");
  EXPECT_EQ(List().Rows().Size(), 10);
  ASSERT_TRUE(m_faces.m_filterLine);
  EXPECT_EQ(Child().Filter().Line().Text(), "tid == ");
  EXPECT_EQ(Child().Filter().Line().GetState(), FilterLine::State::Wrong);
}

TEST_F(ViewsComeBack, WhatTheUserDoesWhileTheFileIsLoadedStays) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  Filter("tid == \"main\"");
  Focus(2);
  Close();
  auto* const document = static_cast<CTraceFileDoc*>(m_app->OpenDocumentFile(m_path));
  ASSERT_TRUE(document && document->m_loading);
  FilterLine& line = Child().Filter().Line();
  line.Edit("tid == \"worker\"");
  ASSERT_TRUE(line.Apply());
  ASSERT_TRUE(m_host.RunUntil([&] { return !document->m_loading; }));
  m_host.RunPosted();
  Settle();
  EXPECT_EQ(InForce(), "tid == \"worker\"");
  EXPECT_EQ(Focused(), "none");
}

TEST_F(ViewsComeBack, AWindowThatIsClosedBeforeItsFileIsLoadedKeepsTheViewBefore) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  Filter("tid == \"main\"");
  Close();
  const StoredView before = Stored();
  ASSERT_TRUE(m_app->OpenDocumentFile(m_path));
  Close();
  m_host.RunPosted();
  EXPECT_EQ(Stored(), before);
}

TEST_F(ViewsComeBack, AViewThatWasBeingAppliedWhenTheProgramEndedIsNotAppliedAgain) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  List().Columns().SetState({{"PID", 90, true}});
  const std::string columns = Columns();
  Filter("tid == \"main\"");
  Close();
  // As a program leaves it that crashes while it filters.
  ASSERT_TRUE(Open(m_path));
  EXPECT_TRUE(Stored().onTrial);
  const StoredView onTrial = Stored();
  Settle();
  EXPECT_FALSE(Stored().onTrial);
  Close();
  ASSERT_TRUE(StoreView(onTrial, nullptr));
  OpenFile();
  EXPECT_EQ(InForce(), "");
  EXPECT_EQ(Columns(), columns);
  EXPECT_THAT(Notice(), HasSubstr("ended while it was applied"));
  OpenAgain();
  EXPECT_EQ(Notice(), "") << "told once";
}

TEST_F(ViewsComeBack, ABrokenViewIsToldAboutOnceAndTheFileOpensAsEver) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  Filter("tid == \"main\"");
  Close();
  for (const auto& each : std::filesystem::directory_iterator(m_dir.File("settings.ini.views")))
    std::ofstream(each.path()) << "{";
  OpenFile();
  EXPECT_THAT(Notice(), HasSubstr("no JSON"));
  EXPECT_EQ(InForce(), "");
  EXPECT_EQ(List().Rows().Size(), 10);
}

TEST_F(ViewsComeBack, OfSeveralWindowsTheFirstGetsItAndTheLastOneClosedIsKept) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  Filter("tid == \"main\"");
  Close();
  OpenFile();
  ASSERT_TRUE(Frame().OnCommand(ID_WINDOW_NEW));
  Settle();
  EXPECT_EQ(InForce(0), "tid == \"main\"");
  EXPECT_EQ(InForce(1), "");
  Child(1).OnClose();
  EXPECT_EQ(Stored().state.filter, "");
  Child(0).OnClose();
  EXPECT_EQ(Stored().state.filter, "tid == \"main\"");
}

TEST_F(ViewsComeBack, ClosingTheProgramKeepsTheViewOfEachWindow) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  Filter("tid == \"main\"");
  Frame().OnClose();
  EXPECT_EQ(Stored().state.filter, "tid == \"main\"");
}

TEST_F(ViewsComeBack, OptionsBeginWithTheColumnsInFrontAndHoldForAllWindows) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  List().Columns().SetState({{"PID", 90, true}, {"Sev", 44, false}});
  m_host.AnswerDialog([](CDialog& dialog) {
    auto& options = dynamic_cast<COptionsDlg&>(dialog);
    EXPECT_EQ(options.m_pid, 1);
    EXPECT_EQ(options.m_severity, 0);
    EXPECT_EQ(options.m_remember, 1);
    options.m_tid = 1;
    options.OnOK();
  });
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_OPTIONS));
  m_host.RunPosted();
  EXPECT_FALSE(List().Columns().AreOwn());
  EXPECT_EQ(g_activeColumns[0], 0);
  EXPECT_THAT(Columns(), HasSubstr("PID 90"));
  EXPECT_THAT(Columns(), HasSubstr("TID "));
}

// ---- profiles

TEST_F(ViewsComeBack, AProfileIsSavedFromOneWindowAndAppliedToAnother) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  List().Columns().SetState({{"PID", 90, true}});
  const std::string columns = Columns();
  Filter("tid == \"main\"");
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROC));
  m_host.AnswerDialog([](CDialog& dialog) {
    auto& profiles = dynamic_cast<CProfilesDialog&>(dialog);
    EXPECT_TRUE(profiles.BeginsWithName());
    profiles.m_name = "Main thread";
    profiles.Save();
  });
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROFILESAVE));
  Close();
  m_path = Write("other.trc");
  OpenFile();
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROFILE1));
  Settle();
  EXPECT_EQ(Columns(), columns);
  EXPECT_EQ(InForce(), "tid == \"main\"");
  EXPECT_TRUE(Child().IsTreeShown());
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROFILESTANDARD));
  Settle();
  EXPECT_EQ(InForce(), "");
  EXPECT_FALSE(List().Columns().AreOwn());
}

TEST_F(ViewsComeBack, WhatAProfileCannotGiveIsSaid) {
  Start();
  m_path = Write("web.trc");
  OpenFile();
  Profile profile{"odd", {}};
  profile.state.columns = {{"PID", 90, true}, {"Weight", 90, true}};
  profile.state.filter = "weight > 5";
  profile.state.panes = {"Scales"};
  ASSERT_TRUE(KeepProfile(profile, nullptr));
  m_host.ClearTranscript();
  ASSERT_TRUE(Frame().OnCommand(ID_VIEW_PROFILE1));
  const std::string said = m_host.TakeBoxes();
  EXPECT_THAT(said, HasSubstr("Not all of \"odd\" could be applied."));
  EXPECT_THAT(said, HasSubstr("There are no columns Weight."));
  EXPECT_THAT(said, HasSubstr("There are no panes Scales."));
  EXPECT_THAT(said, HasSubstr("Column 1: "));
  EXPECT_THAT(Columns(), HasSubstr("PID 90"));
  EXPECT_FALSE(Frame().OnCommand(ID_VIEW_PROFILE1 + 1) && !m_host.TakeBoxes().empty());
}

}  // namespace
