// Opens a .tcf file as a configuration.
#include "config/machine_dialog.h"
#include "config/used_machines.h"
#include "config_doc_fixture.h"
#include "quor/client/trace_thread.h"

namespace {

using ConfigOpenTest = ConfigDocTest;

TEST_F(ConfigOpenTest, OpeningAsksForTheMachineAndReadsTheFileInItsOrder) {
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

TEST_F(ConfigOpenTest, ForTheWizardOpeningUsesThisMachineAndAsksNothing) {
  const auto doc = Document();
  g_bWizardLocalConfig = true;
  EXPECT_TRUE(Open(*doc, ""));
  EXPECT_EQ(m_machine.m_log, "connect " + _trc_GetHostName() + "\n");
  EXPECT_EQ(Boxes(), "");
}

TEST_F(ConfigOpenTest, TheDocumentIsModifiedAndEmptyWhileTheMachineIsAskedFor) {
  const auto doc = Document();
  m_host.AnswerDialog([&](CDialog& dialog) {
    EXPECT_TRUE(doc->IsModified());
    EXPECT_EQ(Names(*doc), "");
    dialog.OnCancel();
  });
  EXPECT_FALSE(Open(*doc, "APP: \"a\"\n"));
  EXPECT_TRUE(doc->IsModified());
}

TEST_F(ConfigOpenTest, AFileIsReadUnderAWaitCursor) {
  const auto doc = Connected();
  Shown();
  EXPECT_TRUE(Open(*doc, "APP: \"a\"\n"));
  EXPECT_EQ(Shown(), kWaited);
}

TEST_F(ConfigOpenTest, TheMachineIsKeptAmongTheUsedOnesWhenItWasReached) {
  const auto open = [this](const std::string& machine) {
    const auto doc = Document();
    m_host.AnswerDialog([&](CDialog& dialog) {
      dynamic_cast<CMachineDlg&>(dialog).SetMachine(machine);
      dialog.OnOK();
    });
    return Open(*doc, "");
  };
  EXPECT_TRUE(open("db"));
  m_machine.m_away = true;
  EXPECT_FALSE(open("away"));
  EXPECT_EQ(UsedMachines(), std::vector<std::string>{"db"});
}

TEST_F(ConfigOpenTest, AnApplicationIsSubmittedWhenTheNextOnesKeywordWasReadAndNotAtABadLine) {
  const auto doc = Connected();
  m_machine.m_log.clear();
  EXPECT_FALSE(Open(*doc, "APP: \"a\"\nAPP: unquoted\n"));
  EXPECT_EQ(m_machine.m_log, "on web open a\nsubmit a\n");
  for (const char* const bad : {"TRACE: \"x\"\n", "SINK: Pipe \"a\" \"\"\n", "nonsense"}) {
    m_machine.m_log.clear();
    EXPECT_FALSE(Open(*doc, std::string("APP: \"a\"\n") + bad));
    EXPECT_EQ(m_machine.m_log, "on web open a\n") << bad;
  }
}

TEST_F(ConfigOpenTest, OpeningOnAStandingConnectionKeepsIt) {
  const auto doc = Connected();
  EXPECT_TRUE(Open(*doc, "APP: \"a\"\n"));
  EXPECT_EQ(m_machine.m_log, "connect web\non web open a\nsubmit a\n");
}

TEST_F(ConfigOpenTest, OpeningFailsWithoutAMessageWhenTheMachineQuestionIsCancelled) {
  const auto doc = Document();
  EXPECT_FALSE(Open(*doc, "APP: \"a\"\n"));
  EXPECT_EQ(Boxes(), "dialog -> 2\n");
  EXPECT_EQ(m_machine.m_log, "");
}

TEST_F(ConfigOpenTest, OpeningFailsWithAMessageWhenTheMachineOrAFileCannotBeReached) {
  const auto doc = Document();
  EXPECT_FALSE(doc->OnOpenDocument(m_folder.File("none.tcf")));
  EXPECT_EQ(Boxes(), Error("Error opening file."));
  EXPECT_EQ(doc->LastRefusal().why, "No such file or directory");
  std::filesystem::create_directory(m_folder.File("folder.tcf"));
  EXPECT_FALSE(doc->OnOpenDocument(m_folder.File("folder.tcf")));
  EXPECT_EQ(Boxes(), Error("Error opening file.")) << "and no machine is asked for";
  EXPECT_EQ(doc->LastRefusal().why, "Is a directory");
  EXPECT_FALSE(doc->LastRefusal().fileIsGood);
  m_machine.m_away = true;
  g_bWizardLocalConfig = true;
  EXPECT_FALSE(Open(*doc, "APP: \"a\"\n"));
  EXPECT_EQ(Boxes(), Error(kNoConnection));
}

TEST_F(ConfigOpenTest, AnApplicationThatCannotBeReachedWhileAFileIsReadEmptiesTheDocument) {
  const auto doc = Connected();
  m_machine.m_away = true;
  EXPECT_FALSE(Open(*doc, "APP: \"a\"\nAPP: \"b\"\n"));
  EXPECT_EQ(Boxes(), Error(kNoConnection)) << "told once";
  EXPECT_EQ(Names(*doc), "");
}

TEST_F(ConfigOpenTest, AMachineThatLeavesWhileAFileIsReadIsWaitedForOnce) {
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

TEST_F(ConfigOpenTest, AMachineThatDoesNotTakeWhatAFileSaysIsTold) {
  const auto doc = Connected();
  m_machine.m_refuses = true;
  EXPECT_TRUE(Open(*doc, "APP: \"a\"\nAPP: \"b\"\n"));
  EXPECT_EQ(doc->NotInForce(), (std::set<std::string>{"a", "b"}));
  m_machine.m_refuses = false;
  EXPECT_TRUE(Open(*doc, "APP: \"b\"\n"));
  EXPECT_EQ(doc->NotInForce(), std::set<std::string>{});
}

TEST_F(ConfigOpenTest, ABadLineIsReportedAndEmptiesTheDocumentButWhatWasSubmittedStays) {
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

TEST_F(ConfigOpenTest, LinesInFrontOfTheFirstApplicationAndAnotherHeaderAreInvalid) {
  const auto doc = Connected();
  for (const char* const lines : {"SINK: File \"a\" \"\"\n", "TRACE: \"a\" \"b\" Info\n"}) {
    EXPECT_FALSE(Open(*doc, lines));
    EXPECT_EQ(Boxes(), Error("Invalid format."));
  }
  EXPECT_FALSE(doc->OnOpenDocument(m_folder.File("old.tcf", "TCF Version 3.1\n")));
  EXPECT_EQ(Boxes(), Error("Invalid format."));
}

}  // namespace
