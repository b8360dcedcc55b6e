// The view of a configuration: its list, its commands and keys, what it says of the connection.
#include "config/view/config_view.h"

#include <gtest/gtest.h>

#include "config/pages/config_sheet.h"
#include "config/view/add_app_dialog.h"
#include "docview/commands/command_ids.h"
#include "settings/globals.h"
#include "support/fake_config_client.h"
#include "support/fake_config_pane.h"
#include "support/fake_frame.h"
#include "support/recording_host.h"

namespace {

constexpr char kPlaceholder[] = "<add applications to trace>";

class ConfigFrameProbe final : public CMDIChildWnd {
 public:
  ConfigFrameProbe(CMDIFrameWnd& parent, FrameLog& log) : CMDIChildWnd(parent), m_log(log) {}
  void OnContextMenu(int xPx, int yPx) override {
    m_log.Add("context menu " + std::to_string(xPx) + " " + std::to_string(yPx));
  }

 private:
  FrameLog& m_log;
};

class ConfigViewTest : public testing::Test {
 protected:
  ConfigViewTest()
      : m_template(131, "\n\nTrace Config\nTrace Config Files (*.tcf)\n.tcf\nTraceConfigFile\n",
                   m_main,
                   {[this] { return std::make_unique<CConfigDoc>(m_host, ClientOf(m_machine)); },
                    [this] { return std::make_unique<ConfigFrameProbe>(m_app.m_frame, m_log); },
                    [this](CDocument& document) {
                      return std::make_unique<CConfigView>(
                          static_cast<CConfigDoc&>(document), [this](ListBoxOwner& owner) {
                            auto pane = std::make_unique<FakeConfigPane>(owner);
                            m_pane = pane.get();
                            return pane;
                          });
                    }}) {
    m_main = &m_app.m_frame;
  }
  ~ConfigViewTest() override {
    g_quickClose = true;
    m_template.CloseAllDocuments();
    g_quickClose = false;
  }
  // A window on the machine "web".
  void Open() {
    m_doc = static_cast<CConfigDoc*>(m_template.OpenDocumentFile(nullptr, false));
    ASSERT_TRUE(m_doc->ConnectToMachine("web"));
    auto& frame = static_cast<CMDIChildWnd&>(*m_doc->Views().front()->GetParentFrame());
    m_template.InitialUpdateFrame(frame, *m_doc, true);
    m_host.ClearTranscript();
    m_machine.m_log.clear();
    m_log.Clear();
  }
  CConfigView& View() { return static_cast<CConfigView&>(*m_doc->Views().front()); }
  FakeListBox& List() { return m_pane->List(); }
  bool Enabled(unsigned id) {
    CCmdUI ui(id, true, false);
    UpdateCommand(m_app.m_frame, ui);
    return ui.IsEnabled();
  }
  bool Run(unsigned id) { return m_app.m_frame.OnCommand(id); }
  // "billing *orders": a star before the current item.
  std::string Shown() {
    std::string shown;
    for (int item = 0; item < List().Count(); ++item)
      shown +=
          (item ? " " : "") + std::string(List().CurSel() == item ? "*" : "") + List().Text(item);
    return shown;
  }
  // The next Add dialog: notes what it offers and chooses these.
  void Choose(const std::set<std::string>& names) {
    m_host.AnswerDialog([this, names](CDialog& asked) {
      auto& dialog = dynamic_cast<CAddAppDialog&>(asked);
      m_offered.clear();
      m_note = dialog.m_note;
      std::set<std::size_t> chosen;
      std::size_t number = 0;
      for (const std::string& name : dialog.m_names) {
        m_offered += name + " ";
        if (names.contains(name)) chosen.insert(number);
        ++number;
      }
      dialog.OnSelect(chosen);
      dialog.OnOK();
    });
  }
  // The next dialog is a sheet: notes its title, and what is current meanwhile; then cancels it.
  void CancelSheet() {
    m_host.AnswerDialog([this](CDialog& asked) {
      m_sheets += dynamic_cast<CConfigPropertySheet&>(asked).Title() + " (" + Shown() + ")\n";
    });
  }
  void Add(const std::set<std::string>& names) {
    Choose(names);
    for (std::size_t sheet = 0; sheet < names.size(); ++sheet) CancelSheet();
    EXPECT_TRUE(Run(ID_CONFIG_ADD));
  }

  FakeMachine m_machine;
  RecordingHost m_host;
  FrameLog m_log;
  FakeApp m_app{m_host, m_log};
  CMDIFrameWnd* m_main = nullptr;
  CMultiDocTemplate m_template;
  CConfigDoc* m_doc = nullptr;
  FakeConfigPane* m_pane = nullptr;
  std::string m_offered, m_note, m_sheets;
};

TEST_F(ConfigViewTest, AnEmptyListShowsThePlaceholderForWhichDeleteAndPropertiesAreDisabled) {
  Open();
  EXPECT_EQ(Shown(), kPlaceholder);
  EXPECT_EQ(List().Data(0), 0U);
  List().SetCurSel(0);
  EXPECT_TRUE(Enabled(ID_CONFIG_ADD));
  EXPECT_FALSE(Enabled(ID_CONFIG_DELETE));
  EXPECT_FALSE(Enabled(ID_VIEW_PROPERTIES));
}

TEST_F(ConfigViewTest, TheListIsAlphabeticWhileTheDocumentKeepsTheOrderOfAddition) {
  m_machine.Run("orders", {});
  m_machine.Run("Billing", {});
  Open();
  Add({"orders"});
  Add({"Billing"});
  EXPECT_EQ(Shown(), "*Billing orders");
  std::string order;
  for (const QuorPtr<trace_App_i>& app : m_doc->GetApplications()->m_apps)
    order += app->GetAppName() + " ";
  EXPECT_EQ(order, "orders Billing ");
  for (const QuorPtr<trace_App_i>& app : m_doc->GetApplications()->m_apps) {
    const int item = List().FindStringExact(app->GetAppName());
    EXPECT_EQ(List().Data(item), reinterpret_cast<std::uintptr_t>(app.Get()));
  }
}

TEST_F(ConfigViewTest, DeleteAndPropertiesNeedACurrentItem) {
  m_machine.Run("orders", {});
  Open();
  Add({"orders"});
  EXPECT_TRUE(Enabled(ID_CONFIG_DELETE));
  EXPECT_TRUE(Enabled(ID_VIEW_PROPERTIES));
  List().SetCurSel(-1);
  EXPECT_FALSE(Enabled(ID_CONFIG_DELETE));
  EXPECT_FALSE(Enabled(ID_VIEW_PROPERTIES));
  List().SetFocus();
  EXPECT_TRUE(List().Press(ListBoxKey::Delete));
  EXPECT_TRUE(List().Press(ListBoxKey::Enter));
  EXPECT_EQ(Shown(), "orders");
}

TEST_F(ConfigViewTest, OnlyApplicationsThatAreNotInTheListYetAreOffered) {
  m_machine.Run("orders", {});
  m_machine.Run("Orders", {});
  m_machine.Run("billing", {});
  Open();
  Add({"orders"});
  EXPECT_EQ(m_offered, "Orders billing orders ");
  Choose({});
  Run(ID_CONFIG_ADD);
  EXPECT_EQ(m_offered, "Orders billing ") << "the exact name only";
}

TEST_F(ConfigViewTest, WhenAllRegisteredApplicationsAreInTheListTheDialogOpensEmpty) {
  m_machine.Run("orders", {});
  Open();
  Add({"orders"});
  m_offered = "?";
  Choose({});
  Run(ID_CONFIG_ADD);
  EXPECT_EQ(m_offered, "");
  EXPECT_EQ(Shown(), "*orders");
}

TEST_F(ConfigViewTest, AnEmptyDialogSaysWhyItIsEmpty) {
  Open();
  Choose({});
  Run(ID_CONFIG_ADD);
  EXPECT_EQ(m_note, "No application that can be traced runs on web.");
  m_machine.Run("orders", {});
  Add({"orders"});
  EXPECT_EQ(m_note, "");
  Choose({});
  Run(ID_CONFIG_ADD);
  EXPECT_EQ(m_note, "All applications of web are in the list.");
  m_machine.m_away = true;
  Choose({});
  Run(ID_CONFIG_ADD);
  EXPECT_EQ(m_note, "web does not answer.");
}

TEST_F(ConfigViewTest, AddingThreeAtOnceOpensThreeSheetsInSequenceInTheOrderOfBytes) {
  for (const char* const name : {"b", "A", "c", "a"}) m_machine.Run(name, {});
  Open();
  Add({"b", "A", "a"});
  EXPECT_EQ(m_sheets,
            "Configuration for A (*A)\n"
            "Configuration for a (A *a)\n"
            "Configuration for b (A a *b)\n");
  EXPECT_EQ(Shown(), "A a *b") << "cancelling a sheet leaves the application in the list";
  EXPECT_TRUE(m_doc->IsModified());
}

TEST_F(ConfigViewTest, OfTwoNamesThatDifferInCaseTheAddedOneIsMadeCurrent) {
  m_machine.Run("web", {});
  m_machine.Run("WEB", {});
  Open();
  Add({"web"});
  Add({"WEB"});
  EXPECT_EQ(m_sheets, "Configuration for web (*web)\nConfiguration for WEB (web *WEB)\n");
}

TEST_F(ConfigViewTest, ACancelledAddDialogAddsNothing) {
  m_machine.Run("orders", {});
  Open();
  EXPECT_TRUE(Run(ID_CONFIG_ADD));
  EXPECT_EQ(Shown(), kPlaceholder);
  EXPECT_EQ(m_machine.m_log, "list\n");
  EXPECT_EQ(m_host.Reported(), "wait cursor on\nwait cursor off\ndialog -> 2\n");
}

TEST_F(ConfigViewTest, AMachineThatGoesAwayIsToldOnceAndOpensNoSheet) {
  for (const char* const name : {"a", "b", "c"}) m_machine.Run(name, {});
  Open();
  Choose({"a", "b", "c"});
  m_host.AnswerDialog([this](CDialog& asked) {  // a's sheet
    m_sheets += dynamic_cast<CConfigPropertySheet&>(asked).Title();
    m_machine.m_away = true;
  });
  Run(ID_CONFIG_ADD);
  EXPECT_EQ(m_sheets, "Configuration for a");
  EXPECT_EQ(m_machine.m_log, "list\nopen a\nrefresh a\nopen b\n") << "c would wait as long again";
  EXPECT_EQ(Shown(), "*a");
}

TEST_F(ConfigViewTest, AMachineThatLeftASheetWithoutAnAnswerIsNotAskedForTheNextName) {
  for (const char* const name : {"a", "b"}) m_machine.Run(name, {});
  Open();
  Choose({"a", "b"});
  m_host.AnswerDialog([this](CDialog&) {  // a's sheet
    m_machine.m_away = true;
    m_doc->GetApplications()->m_apps.front()->Submit();
  });
  Run(ID_CONFIG_ADD);
  EXPECT_EQ(m_machine.m_log, "list\nopen a\nrefresh a\nsubmit a\n") << "b would wait once more";
  EXPECT_NE(m_host.Reported().find("Error trying to connect to configuration server."),
            std::string::npos);
  EXPECT_EQ(Shown(), "*a");
}

TEST_F(ConfigViewTest, AMachineWithoutRoomForAnotherHandleIsToldOnce) {
  for (const char* const name : {"a", "b", "c"}) m_machine.Run(name, {});
  Open();
  Choose({"a", "b", "c"});
  m_machine.m_refusesOpen = true;
  Run(ID_CONFIG_ADD);
  EXPECT_EQ(m_machine.m_log, "list\nopen a\n");
  EXPECT_EQ(m_host.TakeBoxes(),
            "dialog -> 1\n"
            "box Tessera [none] \"Error trying to connect to configuration server.\" (OK) -> OK\n");
}

// A late answer makes the connection live again, and the list is still empty.
TEST_F(ConfigViewTest, AListThatWasNotAnsweredIsNotTakenForAnEmptyOne) {
  m_machine.Run("orders", {});
  Open();
  m_machine.m_listIsLate = true;
  Choose({});
  Run(ID_CONFIG_ADD);
  EXPECT_EQ(m_note, "web does not answer.");
  EXPECT_TRUE(m_doc->IsLive());
}

TEST_F(ConfigViewTest, AFailedAddLeavesThePlaceholder) {
  m_machine.Run("a", {});
  Open();
  Choose({"a"});
  m_machine.m_refusesOpen = true;
  Run(ID_CONFIG_ADD);
  EXPECT_EQ(Shown(), kPlaceholder);
  EXPECT_FALSE(Enabled(ID_CONFIG_DELETE));
}

TEST_F(ConfigViewTest, DeletingTheLastApplicationBringsThePlaceholderBack) {
  m_machine.Run("a", {});
  m_machine.Run("b", {});
  Open();
  Add({"a", "b"});
  EXPECT_TRUE(Run(ID_CONFIG_DELETE));
  EXPECT_EQ(Shown(), "a");
  List().Click(0);
  EXPECT_TRUE(Run(ID_CONFIG_DELETE));
  EXPECT_EQ(Shown(), kPlaceholder);
  EXPECT_FALSE(Enabled(ID_CONFIG_DELETE));
}

TEST_F(ConfigViewTest, ADeletionThatIsCancelledLeavesTheItemCurrent) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  Open();
  Add({"a"});
  m_host.AnswerBox(BoxAnswer::Cancel);
  Run(ID_CONFIG_DELETE);
  EXPECT_EQ(Shown(), "*a");
}

TEST_F(ConfigViewTest, OnThePlaceholderDelDoesNothingAndEnterAndADoubleClickOpenTheAddDialog) {
  m_machine.Run("orders", {});
  Open();
  List().Click(0);
  List().Press(ListBoxKey::Delete);
  EXPECT_EQ(m_host.Reported(), "");
  for (const bool key : {true, false}) {
    m_offered.clear();
    Choose({});
    if (key)
      List().Press(ListBoxKey::Enter);
    else
      List().DoubleClick(0);
    EXPECT_EQ(m_offered, "orders ") << key;
  }
}

TEST_F(ConfigViewTest, OnAnApplicationDelDeletesAndEnterAndADoubleClickOpenItsSheet) {
  m_machine.Run("a", {});
  m_machine.Run("b", {});
  Open();
  Add({"a", "b"});
  m_sheets.clear();
  List().Click(0);
  CancelSheet();
  List().Press(ListBoxKey::Enter);
  CancelSheet();
  List().DoubleClick(1);
  CancelSheet();
  Run(ID_VIEW_PROPERTIES);
  EXPECT_EQ(m_sheets,
            "Configuration for a (*a b)\nConfiguration for b (a *b)\nConfiguration for b (a *b)\n");
  List().Press(ListBoxKey::Delete);
  EXPECT_EQ(Shown(), "a");
}

TEST_F(ConfigViewTest, DelWorksOnlyWithTheFocusInTheList) {
  m_machine.Run("a", {});
  Open();
  Add({"a"});
  List().LoseFocus();
  EXPECT_FALSE(List().Press(ListBoxKey::Delete));
  EXPECT_EQ(Shown(), "*a");
}

TEST_F(ConfigViewTest, ARightClickSelectsTheItemUnderItAndOneBesideAllItemsLeavesTheCurrentOne) {
  m_machine.Run("a", {});
  m_machine.Run("b", {});
  Open();
  Add({"a", "b"});
  m_log.Clear();
  List().RightClick(0);
  EXPECT_EQ(Shown(), "*a b");
  List().RightClick(-1);
  EXPECT_EQ(Shown(), "*a b");
  EXPECT_EQ(m_log.Reported("context"), "context menu 10 0\ncontext menu 10 -20\n");
}

TEST_F(ConfigViewTest, OnActivationBothPanesAreBlankedAndTheListGetsTheFocus) {
  Open();
  auto& frame = static_cast<CMDIChildWnd&>(*View().GetParentFrame());
  frame.OnActivate(false);
  List().LoseFocus();
  m_log.Clear();
  frame.OnActivate(true);
  EXPECT_EQ(m_log.Reported("main 11"),
            "main 1125 18446744073709551615 0\n"
            "main 1126 18446744073709551615 0\n");
  EXPECT_TRUE(List().HasFocus());
}

TEST_F(ConfigViewTest, OtherHintsRebuildNothing) {
  m_machine.Run("a", {});
  Open();
  Add({"a"});
  for (const unsigned hint : {0U, 1001U, 1003U}) m_doc->UpdateAllViews(nullptr, hint);
  EXPECT_EQ(Shown(), "*a");
  m_doc->UpdateAllViews(nullptr, 1002);
  EXPECT_EQ(Shown(), "a") << "a rebuilt list has no current item";
  EXPECT_TRUE(List().IsPainted());
}

TEST_F(ConfigViewTest, TheListIsNotPaintedWhileItIsRebuilt) {
  for (const char* const name : {"a", "b"}) m_machine.Run(name, {});
  Open();
  Add({"a", "b"});
  const int paints = List().Paints();
  m_doc->UpdateAllViews(nullptr, CConfigDoc::kHintApplications);
  EXPECT_EQ(List().Paints(), paints + 1) << "once, when it is complete";
}

TEST_F(ConfigViewTest, ClearOfTheDocumentEmptiesTheList) {
  m_machine.Run("a", {});
  Open();
  EXPECT_FALSE(Enabled(ID_EDIT_CLEAR_ALL));
  Add({"a"});
  EXPECT_TRUE(Enabled(ID_EDIT_CLEAR_ALL));
  m_host.AnswerBox(BoxAnswer::No);  // save changes
  Run(ID_EDIT_CLEAR_ALL);
  EXPECT_EQ(Shown(), kPlaceholder);
}

TEST_F(ConfigViewTest, ALineTellsThatTheConnectionIsGoneAndLeavesWhenItIsBack) {
  Open();
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(), "");
  m_machine.m_away = true;
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(), "Not connected to web. Trying again.");
  m_machine.m_away = false;
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(), "");
}

TEST_F(ConfigViewTest, ALineTellsWhoseChangesTheMachineHasNotTaken) {
  for (const char* const name : {"a", "b"}) m_machine.Run(name, {});
  Open();
  Add({"a", "b"});
  const trace_App_i& first = *m_doc->GetApplications()->m_apps.front();
  m_doc->NoteSubmit(first, false);
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(), "The last changes of a are not in force.");
  m_doc->NoteSubmit(first, true);
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(), "");
  m_doc->NoteSubmit(first, false);
  m_doc->RemoveApplication(m_doc->GetApplications()->m_apps.front().Get());
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(), "The last changes of a are not in force.") << "it left, they did not";
  Add({"a"});
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(), "");
}

TEST_F(ConfigViewTest, ALineTellsThatTracesCouldNotBeTurnedOff) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  Open();
  Add({"a"});
  m_machine.m_away = true;
  m_host.AnswerBox(BoxAnswer::Yes);
  EXPECT_TRUE(List().Press(ListBoxKey::Delete));
  EXPECT_EQ(Shown(), kPlaceholder);
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(), "Not connected to web. Trying again. Traces of a may still be on.");
  m_machine.m_away = false;
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(), "Traces of a may still be on.")
      << "the connection alone changes nothing";
  Add({"a"});
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(), "");
}

TEST_F(ConfigViewTest, TheLineNamesThreeApplicationsHoweverManyThereAre) {
  Open();
  for (int app = 0; app < 50; ++app) {
    const std::string name = "app " + std::to_string(10 + app);
    m_machine.Run(name, {"Net/Connect"}, 7);
    m_doc->NoteSubmit(*m_doc->AddApplication(name), false);
  }
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(),
            "The last changes of app 10, app 11, app 12 and 47 more are not in force.");
  m_machine.m_refuses = true;
  for (int app = 0; app < 50; ++app) m_host.AnswerBox(BoxAnswer::Yes);
  m_doc->DeleteContents();
  m_host.TickTimers();
  EXPECT_EQ(m_pane->Note(), "Traces of app 10, app 11, app 12 and 47 more may still be on.");
}

TEST_F(ConfigViewTest, TheTimerEndsWithTheView) {
  Open();
  EXPECT_EQ(m_host.Timers().size(), 1U);
  m_doc->OnCloseDocument();
  EXPECT_EQ(m_host.Timers().size(), 0U);
}

TEST_F(ConfigViewTest, AnEndOfTheProgramBehindASheetAddsNothingMore) {
  for (const char* const name : {"a", "b"}) m_machine.Run(name, {});
  Open();
  Choose({"a", "b"});
  m_host.AnswerDialog([](CDialog&) { g_quickClose = true; });
  Run(ID_CONFIG_ADD);
  EXPECT_EQ(m_machine.m_log, "list\nopen a\nrefresh a\n");
}

}  // namespace
