#include "config/document/config_doc.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "config/machine_dialog.h"
#include "docview/commands/command_ids.h"
#include "docview/view.h"
#include "quor/client/trace_thread.h"
#include "settings/globals.h"
#include "support/fake_config_client.h"
#include "support/file_limit.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace {

using testing::HasSubstr;

// Counts the hints.
class HintedView final : public CView {
 public:
  using CView::CView;
  void OnUpdate(CView*, unsigned hint, CObject* object) override {
    if (hint == 1002 && !object) ++m_hints;
  }
  ViewControl* Control() override { return nullptr; }
  int m_hints = 0;
};

// A program that is told to end while a box is up.
class EndingHost final : public RecordingHost {
 public:
  BoxAnswer MessageBox(const MessageBoxRequest& request) override {
    if (m_endsTheProgram) g_quickClose = true;
    return RecordingHost::MessageBox(request);
  }
  bool m_endsTheProgram = false;
};

class ConfigDocTest : public testing::Test {
 protected:
  ~ConfigDocTest() override {
    g_quickClose = false;
    g_bWizardLocalConfig = false;
  }
  std::unique_ptr<CConfigDoc> Document() {
    ConfigClient client = ClientOf(m_machine);
    client.open = [this](const std::string& host, const std::string& app) {
      m_machine.m_log += "on " + host + " ";
      return m_machine.Open(app, nullptr);
    };
    return std::make_unique<CConfigDoc>(m_host, std::move(client));
  }
  std::unique_ptr<CConfigDoc> Connected() {
    std::unique_ptr<CConfigDoc> doc = Document();
    EXPECT_TRUE(doc->ConnectToMachine("web"));
    return doc;
  }
  // Opens a file with these lines after the header.
  bool Open(CConfigDoc& doc, const std::string& lines) {
    return doc.OnOpenDocument(m_folder.File("a.tcf", "TCF Version 3.2\n" + lines));
  }
  static std::string Names(const CConfigDoc& doc) {
    std::string names;
    for (const QuorPtr<trace_App_i>& app : doc.GetApplications()->m_apps)
      names += app->GetAppName() + " ";
    return names;
  }
  std::string Boxes() { return m_host.TakeBoxes(); }
  static std::string Question(const std::string& app, const std::string& answer) {
    return "box Tessera [question] \"Some traces are still active in " + app +
           ".  Do you want to turn them off?\" (Yes, No, Cancel) -> " + answer + "\n";
  }
  static std::string Error(const std::string& text) {
    return "box Tessera [none] \"" + text + "\" (OK) -> OK\n";
  }

  FakeMachine m_machine;
  EndingHost m_host;
  TempDir m_folder;
};

constexpr char kNoConnection[] = "Error trying to connect to configuration server.";

TEST_F(ConfigDocTest, AConnectionNamesTheWindowByItsMachine) {
  const auto doc = Connected();
  EXPECT_EQ(doc->GetTitle(), "Configuration on web");
  EXPECT_EQ(doc->GetPathName(), "Configuration on web");
  EXPECT_EQ(doc->GetMachineName(), "web");
  EXPECT_TRUE(doc->IsLive());
  EXPECT_FALSE(doc->IsModified());
  EXPECT_EQ(Boxes(), "");
}

TEST_F(ConfigDocTest, AMachineThatCannotBeReachedIsReportedAndLeavesNoConnection) {
  m_machine.m_away = true;
  const auto doc = Document();
  HintedView view(*doc);
  EXPECT_FALSE(doc->ConnectToMachine("web"));
  EXPECT_EQ(Boxes(), Error(kNoConnection));
  EXPECT_EQ(view.m_hints, 1) << "DeleteContents tells its views";
  EXPECT_FALSE(doc->GetConfig());
  EXPECT_FALSE(doc->IsLive());
}

TEST_F(ConfigDocTest, TheTitleStaysTheMachinesAfterAFileWasNamed) {
  const auto doc = Connected();
  doc->SetPathName("/tmp/web.tcf", false);
  EXPECT_EQ(doc->GetTitle(), "Configuration on web");
  EXPECT_EQ(doc->GetPathName(), "/tmp/web.tcf");
}

TEST_F(ConfigDocTest, AnAddedApplicationStandsLastAndNothingIsSubmitted) {
  m_machine.Run("orders", {"Net/Connect"}, 7);
  const auto doc = Connected();
  HintedView view(*doc);
  doc->AddApplication("orders");
  const trace_App_i* const added = doc->AddApplication("billing");
  ASSERT_TRUE(added);
  EXPECT_EQ(added->GetAppName(), "billing");
  EXPECT_EQ(Names(*doc), "orders billing ");
  EXPECT_TRUE(doc->IsModified());
  EXPECT_EQ(view.m_hints, 2);
  EXPECT_EQ(m_machine.m_log, "connect web\non web open orders\non web open billing\n");
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Connect=7");
}

TEST_F(ConfigDocTest, AnApplicationThatCannotBeReachedIsReportedAndNotAdded) {
  const auto doc = Connected();
  m_machine.m_away = true;
  EXPECT_FALSE(doc->AddApplication("orders"));
  EXPECT_EQ(Boxes(), Error(kNoConnection));
  EXPECT_EQ(Names(*doc), "");
  EXPECT_FALSE(doc->IsModified());
}

TEST_F(ConfigDocTest, RemovingAnApplicationWhoseTracesAreAllOffAsksNothing) {
  m_machine.Run("orders", {"Net/Connect", "Net/Close"}, 0);
  const auto doc = Connected();
  trace_App_i* const app = doc->AddApplication("orders");
  doc->SetModifiedFlag(false);
  HintedView view(*doc);
  EXPECT_TRUE(doc->RemoveApplication(app));
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(Names(*doc), "");
  EXPECT_TRUE(doc->IsModified());
  EXPECT_EQ(view.m_hints, 1);
  EXPECT_EQ(m_machine.m_open.size(), 0u) << "the document's reference is dropped";
}

TEST_F(ConfigDocTest, YesTurnsActiveTracesOffAndRemoves) {
  m_machine.Run("orders", {"Net/Connect", "Net/Close"}, 0).traces[1].settings = 7;
  const auto doc = Connected();
  m_host.AnswerBox(BoxAnswer::Yes);
  EXPECT_TRUE(doc->RemoveApplication(doc->AddApplication("orders")));
  EXPECT_EQ(Boxes(), Question("orders", "Yes"));
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Connect=0 Net/Close=0");
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigDocTest, NoLeavesTheTracesRunningWhileItDisappears) {
  m_machine.Run("orders", {"Net/Connect"}, 7);
  const auto doc = Connected();
  m_host.AnswerBox(BoxAnswer::No);
  EXPECT_TRUE(doc->RemoveApplication(doc->AddApplication("orders")));
  EXPECT_EQ(Boxes(), Question("orders", "No"));
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Connect=7");
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigDocTest, CancelLeavesEverythingAsItWas) {
  m_machine.Run("orders", {"Net/Connect"}, 7);
  const auto doc = Connected();
  trace_App_i* const app = doc->AddApplication("orders");
  doc->SetModifiedFlag(false);
  m_host.AnswerBox(BoxAnswer::Cancel);
  EXPECT_FALSE(doc->RemoveApplication(app));
  EXPECT_EQ(Names(*doc), "orders ");
  EXPECT_FALSE(doc->IsModified());
  EXPECT_EQ(m_machine.InForce("orders"), "Net/Connect=7");
}

TEST_F(ConfigDocTest, AnApplicationThatIsNotInTheListIsNotRemoved) {
  m_machine.Run("orders", {"Net/Connect"}, 7);
  const auto doc = Connected();
  const QuorPtr<trace_App_i> other = m_machine.Open("orders", nullptr);
  EXPECT_FALSE(doc->RemoveApplication(other.Get()));
  doc->AddApplication("orders");
  EXPECT_FALSE(doc->RemoveApplication(other.Get()));
  EXPECT_FALSE(doc->RemoveApplication(nullptr));
  EXPECT_EQ(Boxes(), "");
}

TEST_F(ConfigDocTest, ClosingAsksForEachApplicationInListOrderAndCancelBringsTheQuestionBack) {
  m_machine.Run("b", {"Net/Connect"}, 7);
  m_machine.Run("a", {"Net/Connect"}, 7);
  const auto doc = Connected();
  doc->AddApplication("b");
  doc->AddApplication("a");
  for (const BoxAnswer answer :
       {BoxAnswer::Cancel, BoxAnswer::Cancel, BoxAnswer::No, BoxAnswer::Yes})
    m_host.AnswerBox(answer);
  doc->DeleteContents();
  EXPECT_EQ(Boxes(), Question("b", "Cancel") + Question("b", "Cancel") + Question("b", "No") +
                         Question("a", "Yes"));
  EXPECT_EQ(m_machine.InForce("b") + m_machine.InForce("a"), "Net/Connect=7Net/Connect=0");
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigDocTest, AnEndOfTheProgramEndsTheQuestionsThatCannotBeEscaped) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  const auto doc = Connected();
  doc->AddApplication("a");
  m_host.m_endsTheProgram = true;
  m_host.AnswerBox(BoxAnswer::Cancel);
  doc->DeleteContents();
  EXPECT_EQ(Boxes(), Question("a", "Cancel"));
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigDocTest, AQuickCloseTurnsAllTracesOffAsksNothingAndWritesNoFile) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  m_machine.Run("b", {"Net/Connect", "Db/Query"}, 799);
  const auto doc = Connected();
  doc->AddApplication("a");
  doc->AddApplication("b");
  doc->SetPathName(m_folder.File("web.tcf"), false);
  g_quickClose = true;
  EXPECT_TRUE(doc->SaveModified());
  doc->DeleteContents();
  EXPECT_EQ(m_machine.InForce("a") + " " + m_machine.InForce("b"),
            "Net/Connect=0 Net/Connect=0 Db/Query=0");
  EXPECT_EQ(Boxes(), "");
  EXPECT_EQ(Names(*doc), "");
  EXPECT_FALSE(std::filesystem::exists(m_folder.File("web.tcf")));
}

TEST_F(ConfigDocTest, AQuickCloseWaitsOnceForAMachineThatIsAway) {
  const auto doc = Connected();
  doc->AddApplication("a");
  doc->AddApplication("b");
  m_machine.m_away = true;
  m_machine.m_log.clear();
  g_quickClose = true;
  EXPECT_TRUE(doc->SaveModified());
  EXPECT_EQ(m_machine.m_log, "refresh a\n");
  m_machine.m_away = false;
  m_machine.m_refuses = true;
  EXPECT_TRUE(doc->SaveModified());
  EXPECT_EQ(m_machine.m_log, "refresh a\nrefresh a\nsubmit a\nrefresh b\nsubmit b\n")
      << "one that refuses is there";
}

TEST_F(ConfigDocTest, AQuickCloseOfSeveralWindowsWaitsOnceForTheirMachine) {
  const auto one = Connected(), two = Connected();
  one->AddApplication("a");
  two->AddApplication("b");
  m_machine.m_away = true;
  m_machine.m_log.clear();
  g_quickClose = true;
  EXPECT_TRUE(one->SaveModified());
  EXPECT_TRUE(two->SaveModified());
  EXPECT_EQ(m_machine.m_log, "refresh a\n");
  m_machine.m_away = false;
  EXPECT_TRUE(two->SaveModified());
  EXPECT_EQ(m_machine.m_log, "refresh a\nrefresh b\nsubmit b\n") << "it is back";
}

TEST_F(ConfigDocTest, YesWaitsOnceForAMachineThatIsAway) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  m_machine.Run("b", {"Net/Connect"}, 7);
  const auto doc = Connected();
  doc->AddApplication("a");
  doc->AddApplication("b");
  m_machine.m_away = true;
  m_machine.m_log.clear();
  m_host.AnswerBox(BoxAnswer::Yes);
  m_host.AnswerBox(BoxAnswer::Yes);
  doc->DeleteContents();
  EXPECT_EQ(m_machine.m_log, "refresh a\n");
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigDocTest, AModifiedDocumentAsksToSaveByItsTitle) {
  const auto doc = Connected();
  EXPECT_TRUE(doc->SaveModified());
  doc->SetModifiedFlag(true);
  m_host.AnswerBox(BoxAnswer::Cancel);
  EXPECT_FALSE(doc->SaveModified());
  EXPECT_THAT(Boxes(), HasSubstr("\"Save changes to Configuration on web?\" (Yes, No, Cancel)"));
}

TEST_F(ConfigDocTest, ClearIsForAListThatIsNotEmptyAndAsksAboutActiveTracesWithoutChangesToo) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  const auto doc = Connected();
  CCmdUI empty(ID_EDIT_CLEAR_ALL, true, false);
  EXPECT_TRUE(doc->OnUpdateCommand(empty));
  EXPECT_FALSE(empty.IsEnabled());
  doc->AddApplication("a");
  CCmdUI filled(ID_EDIT_CLEAR_ALL, false, false);
  doc->OnUpdateCommand(filled);
  EXPECT_TRUE(filled.IsEnabled());
  doc->SetModifiedFlag(false);
  m_host.AnswerBox(BoxAnswer::No);
  EXPECT_TRUE(doc->OnCommand(ID_EDIT_CLEAR_ALL));
  EXPECT_EQ(Boxes(), Question("a", "No"));
  EXPECT_EQ(Names(*doc) + doc->GetPathName(), "");
  EXPECT_FALSE(doc->IsModified());
  EXPECT_EQ(doc->GetTitle(), "Configuration on web");
  EXPECT_TRUE(doc->GetConfig());
}

TEST_F(ConfigDocTest, ClearOfAChangedDocumentMayBeCancelled) {
  const auto doc = Connected();
  doc->AddApplication("a");
  m_host.AnswerBox(BoxAnswer::Cancel);
  doc->OnCommand(ID_EDIT_CLEAR_ALL);
  EXPECT_EQ(Names(*doc), "a ");
}

TEST_F(ConfigDocTest, OpeningAsksForTheMachineAndReadsTheFileInItsOrder) {
  m_machine.Run("b", {"Net/Connect", "Net/Close"}, 799);
  const auto doc = Document();
  std::string prompt;
  m_host.AnswerDialog([&](CDialog& dialog) {
    auto& query = dynamic_cast<CMachineDlg&>(dialog);
    prompt = query.m_strPrompt;
    query.SetMachine("db");
    query.OnOK();
  });
  EXPECT_TRUE(Open(*doc,
                   "APP: \"b\"\nSINK: File \"/tmp/b.trc\" \"flush=1;\"\n"
                   "TRACE: \"Net\" \"Close\" Warn\nTRACE: \"Net\" \"Nothing\" Info\n"
                   "APP: \"a\"\n"));
  EXPECT_EQ(prompt, "What machine do you want to configure?");
  EXPECT_EQ(Names(*doc), "b a ");
  EXPECT_EQ(m_machine.m_log, "connect db\non db open b\nsubmit b\non db open a\nsubmit a\n");
  EXPECT_EQ(m_machine.InForce("b"), "Net/Connect=0 Net/Close=2") << "what no line names is off";
  EXPECT_EQ(m_machine.m_apps["b"].sinkName + m_machine.m_apps["b"].sinkOptions,
            "/tmp/b.trcflush=1;");
  EXPECT_EQ(m_machine.m_apps["a"].sinkName, "localhost") << "no line: the sink stays";
  EXPECT_FALSE(doc->IsModified());
}

TEST_F(ConfigDocTest, ForTheWizardOpeningUsesThisMachineAndAsksNothing) {
  const auto doc = Document();
  g_bWizardLocalConfig = true;
  EXPECT_TRUE(Open(*doc, ""));
  EXPECT_EQ(m_machine.m_log, "connect " + _trc_GetHostName() + "\n");
  EXPECT_EQ(Boxes(), "");
}

TEST_F(ConfigDocTest, OpeningOnAStandingConnectionKeepsIt) {
  const auto doc = Connected();
  EXPECT_TRUE(Open(*doc, "APP: \"a\"\n"));
  EXPECT_EQ(m_machine.m_log, "connect web\non web open a\nsubmit a\n");
}

TEST_F(ConfigDocTest, OpeningFailsWithoutAMessageWhenTheMachineQuestionIsCancelled) {
  const auto doc = Document();
  EXPECT_FALSE(Open(*doc, "APP: \"a\"\n"));
  EXPECT_EQ(Boxes(), "dialog -> 2\n");
  EXPECT_EQ(m_machine.m_log, "");
}

TEST_F(ConfigDocTest, OpeningFailsWithAMessageWhenTheMachineOrAFileCannotBeReached) {
  const auto doc = Document();
  EXPECT_FALSE(doc->OnOpenDocument(m_folder.File("none.tcf")));
  EXPECT_EQ(Boxes(), Error("Error opening file."));
  m_machine.m_away = true;
  g_bWizardLocalConfig = true;
  EXPECT_FALSE(Open(*doc, "APP: \"a\"\n"));
  EXPECT_EQ(Boxes(), Error(kNoConnection));
}

TEST_F(ConfigDocTest, AnApplicationThatCannotBeReachedWhileAFileIsReadEmptiesTheDocument) {
  const auto doc = Connected();
  m_machine.m_away = true;
  EXPECT_FALSE(Open(*doc, "APP: \"a\"\nAPP: \"b\"\n"));
  EXPECT_EQ(Boxes(), Error(kNoConnection)) << "told once";
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigDocTest, AMachineThatLeavesWhileAFileIsReadIsWaitedForOnce) {
  ConfigClient client = ClientOf(m_machine);
  client.open = [this](const std::string&, const std::string& app) {
    trace_App_i* const opened = m_machine.Open(app, nullptr);
    m_machine.m_away = true;
    return opened;
  };
  CConfigDoc doc(m_host, std::move(client));
  ASSERT_TRUE(doc.ConnectToMachine("web"));
  m_machine.m_log.clear();
  EXPECT_FALSE(Open(doc, "APP: \"a\"\nAPP: \"b\"\nAPP: \"c\"\n"));
  EXPECT_EQ(m_machine.m_log, "open a\nsubmit a\n");
}

TEST_F(ConfigDocTest, AMachineThatDoesNotTakeWhatAFileSaysIsTold) {
  const auto doc = Connected();
  m_machine.m_refuses = true;
  EXPECT_TRUE(Open(*doc, "APP: \"a\"\nAPP: \"b\"\n"));
  EXPECT_EQ(doc->NotInForce(), (std::set<std::string>{"a", "b"}));
  m_machine.m_refuses = false;
  EXPECT_TRUE(Open(*doc, "APP: \"b\"\n"));
  EXPECT_EQ(doc->NotInForce(), std::set<std::string>{});
}

TEST_F(ConfigDocTest, ABadLineIsReportedAndEmptiesTheDocumentButWhatWasSubmittedStays) {
  m_machine.Run("a", {"Net/Connect"}, 0);
  for (const char* const bad :
       {"TRACE: \"x\"\n", "nonsense", "APP: x\n", "SINK: Pipe \"a\" \"\"\n"}) {
    const auto doc = Connected();
    m_machine.m_apps["a"].traces[0].settings = 0;
    m_host.AnswerBox(BoxAnswer::Ok);
    m_host.AnswerBox(BoxAnswer::No);  // a's traces are on
    EXPECT_FALSE(Open(*doc, std::string("APP: \"a\"\nTRACE: \"Net\" \"Connect\" Info\n"
                                        "APP: \"b\"\n") +
                                bad));
    EXPECT_EQ(Boxes(), Error("Invalid format.") + Question("a", "No"));
    EXPECT_EQ(Names(*doc), "");
    EXPECT_EQ(m_machine.InForce("a"), "Net/Connect=1");
  }
}

TEST_F(ConfigDocTest, LinesInFrontOfTheFirstApplicationAndAnotherHeaderAreInvalid) {
  const auto doc = Connected();
  for (const char* const lines : {"SINK: File \"a\" \"\"\n", "TRACE: \"a\" \"b\" Info\n"}) {
    EXPECT_FALSE(Open(*doc, lines));
    EXPECT_EQ(Boxes(), Error("Invalid format."));
  }
  EXPECT_FALSE(doc->OnOpenDocument(m_folder.File("old.tcf", "TCF Version 3.1\n")));
  EXPECT_EQ(Boxes(), Error("Invalid format."));
}

TEST_F(ConfigDocTest, ASavedFileOpenedInASecondWindowMakesTheSameApplicationsThere) {
  FakeMachine::App& orders = m_machine.Run("orders", {"Net/Connect", "Net/Close"}, 0);
  orders.traces[1].settings = 0x31F;
  orders.sinkType = trc_SinkFile;
  orders.sinkName = "c:\\logs\\o.trc";
  m_machine.Run("billing", {"Net/Connect"}, 7);
  const auto doc = Connected();
  doc->AddApplication("orders");
  doc->AddApplication("billing");
  EXPECT_TRUE(doc->OnSaveDocument(m_folder.File("b.tcf")));
  EXPECT_FALSE(doc->IsModified());
  FakeMachine second;
  second.Run("billing", {"Net/Connect"}, 0);
  second.Run("orders", {"Net/Connect", "Net/Close"}, 1);
  std::swap(m_machine, second);
  const auto other = Connected();
  EXPECT_TRUE(other->OnOpenDocument(m_folder.File("b.tcf")));
  EXPECT_EQ(Names(*other), "orders billing ");
  EXPECT_EQ(m_machine.InForce("orders") + " " + m_machine.InForce("billing"),
            "Net/Connect=0 Net/Close=799 Net/Connect=7");
  EXPECT_EQ(m_machine.m_apps["orders"].sinkName, "c:\\logs\\o.trc");
  EXPECT_EQ(m_machine.m_apps["orders"].sinkType, trc_SinkFile);
}

TEST_F(ConfigDocTest, AFailedSaveIsReportedAndTheDocumentStaysModified) {
  const auto doc = Connected();
  doc->AddApplication("a");
  Boxes();
  const std::string path = m_folder.File("a.tcf", "before");
  EXPECT_FALSE(doc->OnSaveDocument(m_folder.File("none/a.tcf")));
  EXPECT_EQ(Boxes(), Error("Error opening file."));
  EXPECT_FALSE(doc->OnSaveDocument("/dev/full"));
  EXPECT_EQ(Boxes(), Error("Error opening file.")) << "the header cannot be written";
  {
    const FileLimit limit(20);
    EXPECT_FALSE(doc->OnSaveDocument(path));
  }
  EXPECT_EQ(Boxes(), Error("Error writing to file."));
  EXPECT_EQ(ReadAll(path), "TCF Version 3.2\nAPP:") << "as far as it came";
  doc->GetApplications()->m_apps.front()->SetSink(static_cast<trc_SinkTypes_e>(7), "", "");
  EXPECT_FALSE(doc->OnSaveDocument(path));
  EXPECT_EQ(Boxes(), Error("Unsupported Sink Type."));
  EXPECT_EQ(ReadAll(path), "TCF Version 3.2\nAPP: \"a\"\nSINK: ");
  EXPECT_TRUE(doc->IsModified());
}

// Opening it would block until another program uses its other end.
TEST_F(ConfigDocTest, APipeIsNeitherReadNorWritten) {
  const std::string pipe = m_folder.File("pipe.tcf");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const auto doc = Connected();
  doc->AddApplication("a");
  Boxes();
  EXPECT_FALSE(doc->OnSaveDocument(pipe));
  EXPECT_THAT(Boxes(), HasSubstr("\"Error opening file.\""));
  EXPECT_FALSE(doc->OnOpenDocument(pipe));
  EXPECT_THAT(Boxes(), HasSubstr("\"Error opening file.\""));
  EXPECT_EQ(Names(*doc), "a ");
}

TEST_F(ConfigDocTest, SaveOfAWindowWithoutAFileAsksForOne) {
  const auto doc = Connected();
  doc->AddApplication("a");
  const std::string path = m_folder.File("new.tcf");
  m_host.AnswerFileDialog(path);
  EXPECT_TRUE(doc->OnCommand(ID_FILE_SAVE));
  EXPECT_THAT(Boxes(), HasSubstr("save dialog \"Save As\""));
  EXPECT_EQ(doc->GetPathName(), path);
  EXPECT_EQ(doc->GetTitle(), "Configuration on web");
  doc->SetModifiedFlag(true);
  EXPECT_TRUE(doc->OnCommand(ID_FILE_SAVE)) << "in place";
  EXPECT_EQ(Boxes(), "");
  EXPECT_FALSE(doc->IsModified());
  EXPECT_TRUE(doc->OnCommand(ID_FILE_SAVE_AS));
  EXPECT_THAT(Boxes(), HasSubstr("save dialog \"Save As\""));
}

TEST_F(ConfigDocTest, SaveAsksAlsoWhereAFileHasTheNameOfTheUnnamedWindow) {
  const std::string other = m_folder.File("Configuration on web", "another file");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(std::filesystem::path(other).parent_path());
  const auto doc = Connected();
  doc->AddApplication("a");
  EXPECT_TRUE(doc->OnCommand(ID_FILE_SAVE));
  std::filesystem::current_path(before);
  EXPECT_THAT(Boxes(), HasSubstr("save dialog \"Save As\""));
  EXPECT_EQ(ReadAll(other), "another file");
}

TEST_F(ConfigDocTest, AQuickCloseTurnsOffWhatTheHandleHasNotReadYet) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  const auto doc = Connected();
  doc->AddApplication("a");
  doc->AddApplication("late");
  m_machine.Run("a", {"Net/Late"}, 7);
  m_machine.Run("late", {"Db/Query"}, 7);
  g_quickClose = true;
  EXPECT_TRUE(doc->SaveModified());
  EXPECT_EQ(m_machine.InForce("a") + " " + m_machine.InForce("late"),
            "Net/Connect=0 Net/Late=0 Db/Query=0");
}

TEST_F(ConfigDocTest, YesTurnsOffWhatTheHandleHasNotReadYet) {
  m_machine.Run("a", {"Net/Connect"}, 7);
  const auto doc = Connected();
  trace_App_i* const app = doc->AddApplication("a");
  // Another handle keeps what is in force.
  const QuorPtr<trace_App_i> other = m_machine.Open("a", nullptr);
  m_machine.Run("a", {"Net/Late"}, 7);
  m_host.AnswerBox(BoxAnswer::Yes);
  EXPECT_TRUE(doc->RemoveApplication(app));
  EXPECT_EQ(m_machine.InForce("a"), "Net/Connect=0 Net/Late=0");
}

TEST_F(ConfigDocTest, ReferencesAreDroppedWithTheDocument) {
  auto doc = Connected();
  doc->AddApplication("a");
  QuorPtr<trace_Config_i> config = doc->GetConfig();
  const QuorPtr<trace_AppList_i> list = doc->GetApplications();
  doc.reset();
  EXPECT_EQ(m_machine.m_handles, 2) << "ours";
  list->m_apps.clear();
  config = nullptr;
  EXPECT_EQ(m_machine.m_handles, 0);
}

}  // namespace
