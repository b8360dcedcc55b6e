// Configurations in the program: New Config, files, their windows, the way out.
#include "config/machine_dialog.h"
#include "config/used_machines.h"
#include "shell/config_frame.h"
#include "shell/menus/menu_resources.h"
#include "shell_fixture.h"

namespace {

class ConfigWindowsTest : public ShellTest {
 protected:
  // Answers the machine question and notes its prompt.
  void AnswerMachine(const std::string& machine) {
    m_host.AnswerDialog([this, machine](CDialog& asked) {
      auto& query = dynamic_cast<CMachineDlg&>(asked);
      m_prompt = query.m_strPrompt;
      query.SetMachine(machine);
      query.OnOK();
    });
  }
  std::string WriteConfig(const std::string& name, const std::string& lines = "") {
    return m_dir.File(name, "TCF Version 3.2\n" + lines);
  }
  std::string Titles() {
    std::string titles;
    for (const auto& child : Frame().Children()) titles += child->Title() + "\n";
    return titles;
  }
  // The boxes of the transcript.
  std::string Boxes() {
    std::string boxes;
    for (const std::string& line : m_host.Transcript())
      if (line.rfind("box ", 0) == 0) boxes += line + "\n";
    m_host.ClearTranscript();
    return boxes;
  }
  static std::string ActiveQuestion(const std::string& app, const std::string& answer) {
    return "box Tessera [question] \"Some traces are still active in " + app +
           ".  Do you want to turn them off?\" (Yes, No, Cancel) -> " + answer + "\n";
  }
  std::string m_prompt;
};

constexpr char kNoConnection[] =
    "box Tessera [none] \"Error trying to connect to configuration server.\" (OK) -> OK\n";

TEST_F(ConfigWindowsTest, NewConfigAsksWithAPromptOfItsOwnAndOpensTheMachinesWindow) {
  Start();
  EXPECT_TRUE(State(ID_FILE_NEWCONFIG).IsEnabled());
  AnswerMachine("web");
  EXPECT_TRUE(Frame().OnCommand(ID_FILE_NEWCONFIG));
  EXPECT_EQ(m_prompt, "What machine to you want to configure?");
  EXPECT_EQ(m_machine.m_log, "connect web\n");
  ASSERT_EQ(Titles(), "Configuration on web\n");
  EXPECT_EQ(UsedMachines(), std::vector<std::string>{"web"});
  EXPECT_EQ(Face().m_menu, 131U);
  EXPECT_EQ(Face().m_panes[kPaneRowCount] + Face().m_panes[kPaneFiltered], "");
  EXPECT_FALSE(m_app->ConfigTemplate()->Documents().front()->IsModified());
}

TEST_F(ConfigWindowsTest, NewConfigEndsOnCancelAndOnAnEmptyMachine) {
  Start();
  m_host.AnswerDialog([](CDialog& dialog) { dialog.OnCancel(); });
  Frame().OnCommand(ID_FILE_NEWCONFIG);
  m_host.AnswerDialog([](CDialog& dialog) {
    dynamic_cast<CMachineDlg&>(dialog).SetMachine("");
    dialog.EndDialog(CDialog::kIdOk);
  });
  Frame().OnCommand(ID_FILE_NEWCONFIG);
  EXPECT_EQ(m_machine.m_log + Titles(), "");
}

TEST_F(ConfigWindowsTest, AMachineThatCannotBeReachedIsToldAndLeavesNoWindow) {
  Start();
  m_machine.m_away = true;
  AnswerMachine("web");
  Frame().OnCommand(ID_FILE_NEWCONFIG);
  EXPECT_EQ(Boxes(), kNoConnection);
  EXPECT_EQ(Titles(), "");
  EXPECT_TRUE(m_app->ConfigTemplate()->Documents().empty());
  EXPECT_EQ(m_log.Reported("child show"), "");
  EXPECT_EQ(Face().m_panes[kPaneMessage], "Cannot configure web: no trace service there");
  Frame().OnCommand(ID_VIEW_STATUS_BAR);
  AnswerMachine("web");
  Frame().OnCommand(ID_FILE_NEWCONFIG);
  EXPECT_EQ(Boxes(), kNoConnection) << "no second box for the reason";
}

TEST_F(ConfigWindowsTest, TheTemplateIsRegisteredBehindThatOfTraceFiles) {
  Start();
  ASSERT_EQ(m_app->Templates().size(), 2U);
  const CMultiDocTemplate& configs = *m_app->Templates()[1];
  EXPECT_EQ(&configs, m_app->ConfigTemplate());
  EXPECT_EQ(configs.Resource(), 131U);
  std::string parts;
  for (int part = CMultiDocTemplate::windowTitle; part <= CMultiDocTemplate::regFileTypeName;
       ++part)
    parts += "[" + configs.GetDocString(static_cast<CMultiDocTemplate::DocStringIndex>(part)) + "]";
  EXPECT_EQ(parts,
            "[][][Trace Config][Trace Config Files (*.tcf)][.tcf][TraceConfigFile]"
            "[Trace Config File]");
}

TEST_F(ConfigWindowsTest, FileOpenOffersConfigurationsAndOpensOneOnTheMachineThatItAsksFor) {
  m_machine.Run("orders", {"Net/Connect"});
  Start();
  const std::string path = WriteConfig("web.tcf", "APP: \"orders\"\n");
  m_host.AnswerFileDialog(path);
  AnswerMachine("db");
  Frame().OnCommand(ID_FILE_OPEN);
  ASSERT_EQ(m_host.m_fileRequests.size(), 1U);
  EXPECT_EQ(m_host.m_fileRequests[0].filters[1].label, "Trace Config Files (*.tcf)");
  EXPECT_EQ(m_host.m_fileRequests[0].filters[1].patterns, "*.tcf");
  EXPECT_EQ(m_prompt, "What machine do you want to configure?");
  EXPECT_EQ(Titles(), "Configuration on db\n");
  EXPECT_EQ(m_app->RecentFiles(), std::vector<std::string>{path});
  Frame().OnIdle();
  EXPECT_EQ(Face().m_panes[kPaneMessage], path) << "the title does not name it";
}

TEST_F(ConfigWindowsTest, DroppedFilesOpenByTheirKind) {
  Start();
  AnswerMachine("web");
  Frame().OnDropFiles({WriteConfig("a.TCF"), WriteTraces("a.trc", 1)});
  m_host.RunPosted();
  EXPECT_EQ(Titles(), "Configuration on web\na.trc\n");
}

TEST_F(ConfigWindowsTest, ARecentFileOpensAgainAndOneThatIsOpenComesToTheFront) {
  Start();
  AnswerMachine("web");
  Frame().OnDropFiles({WriteConfig("a.tcf")});
  ASSERT_TRUE(Open(WriteTraces("a.trc", 1)));
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "a.trc");
  Frame().OnCommand(ID_FILE_MRU_FILE1 + 1);
  EXPECT_EQ(Frame().MDIGetActive()->Title(), "Configuration on web");
  m_app->CloseAllDocuments();
  AnswerMachine("db");
  Frame().OnCommand(ID_FILE_MRU_FILE1);
  EXPECT_EQ(Titles(), "Configuration on db\n");
}

TEST_F(ConfigWindowsTest, AFileOnTheCommandLineOpensAndOffersNoWizard) {
  m_app->MapWizard();
  AnswerMachine("web");
  EXPECT_TRUE(m_app->InitInstance({WriteConfig("a.tcf")}));
  m_host.RunPosted();
  EXPECT_EQ(Titles(), "Configuration on web\n");
  EXPECT_EQ(m_log.Reported("wizard"), "");
}

TEST_F(ConfigWindowsTest, AFileOnTheCommandLineWhoseMachineNobodyNamesEndsTheProgram) {
  m_host.AnswerDialog([](CDialog& dialog) { dialog.OnCancel(); });
  EXPECT_FALSE(m_app->InitInstance({WriteConfig("a.tcf")}));
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(m_log.Reported("main show"), "");
}

TEST_F(ConfigWindowsTest, ABadFileIsToldInABoxAndItsLineInTheStatusBar) {
  Start();
  AnswerMachine("web");
  const std::string path = WriteConfig("a.tcf", "APP: \"orders\"\nAPP: orders\n");
  EXPECT_FALSE(m_app->OpenDocumentFile(path));
  EXPECT_EQ(Boxes(), "box Tessera [none] \"Invalid format.\" (OK) -> OK\n");
  EXPECT_EQ(Titles(), "");
  EXPECT_EQ(Face().m_panes[kPaneMessage].rfind("Cannot open a.tcf: line 3: ", 0), 0U)
      << Face().m_panes[kPaneMessage];
}

TEST_F(ConfigWindowsTest, WithoutAStatusBarAFileThatDoesNotOpenIsToldInOneBox) {
  Start();
  Frame().OnCommand(ID_VIEW_STATUS_BAR);
  AnswerMachine("web");
  EXPECT_FALSE(m_app->OpenDocumentFile(WriteConfig("bad.tcf", "nonsense\n")));
  EXPECT_EQ(Boxes(), "box Tessera [none] \"Invalid format.\" (OK) -> OK\n");
  EXPECT_FALSE(m_app->OpenDocumentFile(m_dir.File("missing.tcf")));
  EXPECT_EQ(Boxes(), "box Tessera [none] \"Error opening file.\" (OK) -> OK\n");
}

TEST_F(ConfigWindowsTest, AFileThatCannotBeOpenedIsToldInABoxAndTheReasonInTheStatusBar) {
  Start();
  EXPECT_FALSE(m_app->OpenDocumentFile(m_dir.File("missing.tcf")));
  EXPECT_EQ(Boxes(), "box Tessera [none] \"Error opening file.\" (OK) -> OK\n");
  EXPECT_EQ(Face().m_panes[kPaneMessage], "Cannot open missing.tcf: No such file or directory");
}

TEST_F(ConfigWindowsTest, WithoutAMachineNothingIsSaidOfAFileAndItStaysARecentOne) {
  Start();
  const std::string path = WriteConfig("bad.tcf", "nonsense\n");
  m_app->AddToRecentFileList(path);
  const auto cancel = [](CDialog& dialog) { dialog.OnCancel(); };
  for (const bool bar : {true, false}) {
    if (!bar) Frame().OnCommand(ID_VIEW_STATUS_BAR);
    m_host.AnswerDialog(cancel);
    Frame().OnCommand(ID_FILE_MRU_FILE1);
    EXPECT_EQ(Boxes() + Face().m_panes[kPaneMessage], "") << bar;
    EXPECT_EQ(m_app->RecentFiles(), std::vector<std::string>{path});
  }
  m_machine.m_away = true;
  AnswerMachine("web");
  Frame().OnCommand(ID_FILE_MRU_FILE1);
  EXPECT_EQ(Boxes(), kNoConnection);
  EXPECT_EQ(m_app->RecentFiles(), std::vector<std::string>{path}) << "the file is not the reason";
  m_machine.m_away = false;
  AnswerMachine("web");
  Frame().OnCommand(ID_FILE_MRU_FILE1);
  EXPECT_EQ(m_app->RecentFiles(), std::vector<std::string>{}) << "now it is";
  Boxes();
}

TEST_F(ConfigWindowsTest, OfSeveralDroppedFilesOneWithoutAMachineIsNamed) {
  Start();
  m_host.AnswerDialog([](CDialog& dialog) { dialog.OnCancel(); });
  Frame().OnDropFiles({WriteConfig("a.tcf"), WriteTraces("a.trc", 1)});
  EXPECT_EQ(Face().m_panes[kPaneMessage], "1 of 2 files did not open: a.tcf (not opened)");
}

TEST_F(ConfigWindowsTest, ItsWindowIs300By300AndKeepsThePlainSizeItIsGiven) {
  Start();
  OpenConfig();
  CMDIChildWnd& frame = *Frame().Children().front();
  const auto& face = static_cast<FakeChildFace&>(*frame.Face());
  EXPECT_EQ(face.m_widthPx, 300);
  EXPECT_EQ(face.m_heightPx, 300);
  frame.OnSize(SizeType::Restored, 410, 320);
  frame.OnSize(SizeType::Maximised, 900, 800);
  frame.OnSize(SizeType::Minimised, 100, 20);
  frame.OnSize(SizeType::Restored, 0, 200);
  EXPECT_EQ(Stored(kRegConfigView, "Window Width"), 410U);
  EXPECT_EQ(Stored(kRegConfigView, "Window Height"), 320U);
  EXPECT_EQ(Stored(kRegTraceView, "Window Width"), 0U) << "trace windows have a size of their own";
  OpenConfig("db");
  EXPECT_EQ(static_cast<FakeChildFace&>(*Frame().Children()[1]->Face()).m_widthPx, 410);
}

TEST_F(ConfigWindowsTest, TheContextMenuIs143WithClear) {
  Start();
  OpenConfig();
  m_log.Clear();
  Frame().Children().front()->OnContextMenu(10, 20);
  EXPECT_EQ(m_log.Reported("main popup"), "main popup 143 10 20\n");
  std::string ids;
  for (const MenuItem& item : MenuOf(IDR_CONFIG_POPUP).front().items)
    ids += std::to_string(item.id) + " ";
  EXPECT_EQ(ids, "32811 32812 32813 0 57633 ");
}

TEST_F(ConfigWindowsTest, HelpIsAboutConfigurations) {
  Start();
  OpenConfig();
  m_log.Clear();
  Frame().OnCommand(ID_HELP);
  m_host.AnswerDialog([this](CDialog&) { Frame().OnCommand(ID_HELP); });
  Frame().OnCommand(ID_FILE_NEWCONFIG);
  EXPECT_EQ(m_log.Reported("help"), "help \"configuration\"\nhelp \"configuration\"\n");
}

TEST_F(ConfigWindowsTest, TheStatusBarTellsABrokenConnection) {
  Start();
  OpenConfig();
  Frame().OnIdle();
  EXPECT_EQ(Face().m_panes[kPaneMessage], "");
  m_machine.m_away = true;
  Frame().OnIdle();
  EXPECT_EQ(Face().m_panes[kPaneMessage], "not connected");
}

TEST_F(ConfigWindowsTest, AQuickCloseTurnsAllTracesOffInEveryWindowAndWritesNoFile) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  m_machine.Run("b", {"Net/Connect"}, 799);
  Start();
  const std::string path = WriteConfig("a.tcf");
  AnswerMachine("web");
  ASSERT_TRUE(m_app->OpenDocumentFile(path));
  static_cast<CConfigDoc&>(*m_app->ConfigTemplate()->Documents().front()).AddApplication("a");
  OpenConfig("db").AddApplication("b");
  m_host.ClearTranscript();
  m_host.AnswerBox(BoxAnswer::Yes);
  Frame().OnClose();
  EXPECT_EQ(Boxes(), std::string(kQuickClose) + "Yes\n");
  EXPECT_EQ(m_machine.InForce("a") + " " + m_machine.InForce("b"), "Net/Connect=0 Net/Connect=0");
  EXPECT_EQ(ReadAll(path), "TCF Version 3.2\n");
  EXPECT_TRUE(Face().m_closed);
  EXPECT_EQ(m_machine.m_handles, 0);
}

TEST_F(ConfigWindowsTest, AtNoItAsksToSaveAndThenAboutEachApplicationWithActiveTraces) {
  m_machine.Run("b", {"Net/Connect"}, 7);
  m_machine.Run("a", {"Net/Connect"}, 7);
  m_machine.Run("off", {"Net/Connect"}, 0);
  Start();
  CConfigDoc& config = OpenConfig();
  for (const char* const app : {"b", "off", "a"}) config.AddApplication(app);
  m_host.ClearTranscript();
  for (const BoxAnswer answer :
       {BoxAnswer::No, BoxAnswer::No, BoxAnswer::Cancel, BoxAnswer::Yes, BoxAnswer::No})
    m_host.AnswerBox(answer);
  Frame().OnClose();
  EXPECT_EQ(Boxes(), std::string(kQuickClose) + "No\n" +
                         "box Tessera [warning] \"Save changes to Configuration on web?\" "
                         "(Yes, No, Cancel) -> No\n" +
                         ActiveQuestion("b", "Cancel") + ActiveQuestion("b", "Yes") +
                         ActiveQuestion("a", "No"));
  EXPECT_EQ(m_machine.InForce("b") + " " + m_machine.InForce("a"), "Net/Connect=0 Net/Connect=7");
  EXPECT_TRUE(Face().m_closed);
}

TEST_F(ConfigWindowsTest, CancelOfTheSaveQuestionKeepsTheWindow) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  Start();
  OpenConfig().AddApplication("a");
  m_host.ClearTranscript();
  m_host.AnswerBox(BoxAnswer::Cancel);
  Frame().Children().front()->OnClose();
  EXPECT_EQ(Titles(), "Configuration on web\n");
  EXPECT_EQ(m_machine.InForce("a"), "Net/Connect=7");
}

TEST_F(ConfigWindowsTest, TracesThatAClosedWindowCouldNotTurnOffAreToldInTheStatusBar) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  Start();
  ASSERT_TRUE(Open(WriteTraces("a.trc", 1)));
  for (const bool bar : {true, false}) {
    OpenConfig().AddApplication("a");
    m_app->ConfigTemplate()->Documents().front()->SetModifiedFlag(false);
    m_host.ClearTranscript();
    m_machine.m_refuses = true;
    if (!bar) Frame().OnCommand(ID_VIEW_STATUS_BAR);
    m_host.AnswerBox(BoxAnswer::Yes);
    Frame().Children().back()->OnClose();
    Frame().Children().front()->ActivateFrame();
    m_host.RunPosted();
    EXPECT_EQ(Boxes(), ActiveQuestion("a", "Yes")) << "no further box";
    EXPECT_EQ(Face().m_panes[kPaneMessage], bar ? "Traces of a on web may still be on." : "");
    m_machine.m_refuses = false;
  }
}

TEST_F(ConfigWindowsTest, ASaveOfAnUnnamedWindowAsksForAFileAndKeepsTheMachineInTheTitle) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  Start();
  OpenConfig().AddApplication("a");
  const std::string path = m_dir.File("new.tcf");
  m_host.AnswerFileDialog(path);
  Frame().OnCommand(ID_FILE_SAVE);
  ASSERT_EQ(m_host.m_fileRequests.size(), 1U);
  EXPECT_EQ(m_host.m_fileRequests[0].defaultExtension, ".tcf");
  EXPECT_EQ(ReadAll(path),
            "TCF Version 3.2\nAPP: \"a\"\nSINK: Socket \"localhost\" \"\"\n"
            "TRACE: \"Net\" \"Connect\" Info Warn Error\n");
  EXPECT_EQ(Titles(), "Configuration on web\n");
  EXPECT_EQ(m_app->RecentFiles(), std::vector<std::string>{path});
}

TEST_F(ConfigWindowsTest, PrintStaysGreyAndCopyHasNoTaker) {
  Start();
  OpenConfig();
  for (const unsigned id : {ID_FILE_PRINT, ID_FILE_PRINT_PREVIEW, ID_EDIT_COPY, ID_EDIT_FIND})
    EXPECT_FALSE(State(id).IsEnabled()) << id;
}

}  // namespace
