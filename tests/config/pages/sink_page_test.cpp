#include "config/pages/sink_page.h"

#include "config/machine_browser.h"
#include "support/config_sheet_fixture.h"
#include "support/fake_config_sheet.h"

namespace {

using Sink = CAppSinkCfgPropertyPage;

class SinkPageTest : public ConfigSheetFixture {
 protected:
  void HasSink(trc_SinkTypes_e type, const std::string& name, const std::string& options) {
    Orders().sinkType = type;
    Orders().sinkName = name;
    Orders().sinkOptions = options;
  }
  // Opens the sheet and brings this page to the front.
  Sink& Open() {
    m_window.reset();  // it refers to the sheet
    m_sheet = std::make_unique<CConfigPropertySheet>(m_host, *m_doc, *m_app);
    m_window = std::make_unique<FakeConfigSheet>(*m_sheet);
    m_window->ChooseTab(1);
    Asked();
    m_host.ClearTranscript();
    return m_sheet->SinkPage();
  }
  Sink& OpenFile(const std::string& options = "flush=0;maxfiles=10;maxsize=0;") {
    HasSink(trc_SinkFile, "/logs/orders.trc", options);
    return Open();
  }
  // "1 /logs/orders.trc localhost 0 10 <none>"
  static std::string Shown(const Sink& page) {
    return std::to_string(page.m_nSinkType) + " " + page.m_strFileName + " " + page.m_strMachine +
           " " + std::to_string(page.m_bForceFlush) + " " + page.m_strHistoricFiles + " " +
           page.m_strMaxSize;
  }
  // May the page be left with this text in a field?
  bool Leaves(unsigned field, const std::string& text) {
    m_window->Type(field, text);
    m_window->Type(Sink::kMachine, m_window->Text(Sink::kMachine));  // the focus is elsewhere
    m_window->ChooseTab(0);
    const bool left = m_window->Front() == 0;
    if (left) m_window->ChooseTab(1);
    return left;
  }

  std::unique_ptr<CConfigPropertySheet> m_sheet;
  std::unique_ptr<FakeConfigSheet> m_window;
};

constexpr char kNotNumeric[] = "Number of log files must be numeric";
constexpr char kFilesRange[] = "Number of log files must be from 0 to 100";
constexpr char kSizeNotNumeric[] = "Max file size must be '<none>' or numeric";
constexpr char kSizeRange[] = "Max file size must be from 1 to 1000 or '<none>'";

}  // namespace

TEST_F(SinkPageTest, TheFileNameOfAnApplicationOfAnAccountNamesNoFolder) {
  FakeMachine::App& shop = m_machine.Run("alice/shop", {"Net/Open"});
  m_app = m_doc->AddApplication("alice/shop");
  EXPECT_EQ(Shown(Open()), "0 alice_shop.trc localhost 0 10 <none>");
  shop.sinkType = trc_SinkFile;
  shop.sinkName = "";
  m_app->Refresh();
  EXPECT_EQ(Open().m_strFileName, "alice_shop.trc");
  shop.sinkName = "logs/shop.trc";
  m_app->Refresh();
  EXPECT_EQ(Open().m_strFileName, "logs/shop.trc") << "what somebody chose stays";
}

TEST_F(SinkPageTest, ShowsAFileSink) {
  HasSink(trc_SinkFile, "/logs/a.trc", "flush=1;maxfiles=3;maxsize=20;");
  EXPECT_EQ(Shown(Open()), "1 /logs/a.trc localhost 1 3 20");
}

TEST_F(SinkPageTest, AFileSinkWithoutANameAndOptionsShowsTheApplicationsNameAndDefaults) {
  HasSink(trc_SinkFile, "", "");
  EXPECT_EQ(Shown(Open()), "1 orders.trc localhost 0 10 <none>");
}

TEST_F(SinkPageTest, OptionsAreReadInAnyOrderAmongOtherKeys) {
  HasSink(trc_SinkFile, "a.trc", "x=1;maxsize=5;flush=7;other;maxfiles=0;");
  EXPECT_EQ(Shown(Open()), "1 a.trc localhost 1 0 5");
}

TEST_F(SinkPageTest, ASizeOfZeroShowsAsNoneAndNumbersFollowTheRulesOfAtoi) {
  HasSink(trc_SinkFile, "a.trc", "flush=x;maxfiles= 12y;maxsize=0;");
  EXPECT_EQ(Shown(Open()), "1 a.trc localhost 0 12 <none>");
}

TEST_F(SinkPageTest, ShowsAServerSinkWithDefaultsForAFile) {
  HasSink(trc_SinkSocket, "mars", "node=mars;");
  EXPECT_EQ(Shown(Open()), "0 orders.trc mars 0 10 <none>");
}

TEST_F(SinkPageTest, ASinkOfAnotherTypeLeavesTheFieldsAsTheyStart) {
  HasSink(static_cast<trc_SinkTypes_e>(9), "x", "flush=1;");
  const Sink& page = Open();
  EXPECT_EQ(Shown(page), "-1   0  ");
  EXPECT_TRUE(page.MachineEnabled());
  EXPECT_TRUE(page.FileEnabled());
}

TEST_F(SinkPageTest, ASinkOfAnotherTypeIsCheckedAndSentAsAFile) {
  HasSink(static_cast<trc_SinkTypes_e>(9), "x", "flush=1;");
  Open();
  m_window->Type(Sink::kFileName, "/logs/new");
  m_window->Press(SheetButton::Ok);
  EXPECT_EQ(Boxes(), Refusal(kSizeRange)) << "the size is still empty";
  EXPECT_TRUE(Leaves(Sink::kMaxSize, "50"));
  m_window->Press(SheetButton::Ok);
  EXPECT_TRUE(m_sheet->Ended());
  EXPECT_EQ(SinkInForce(), "file /logs/new.trc flush=0;maxfiles=0;maxsize=50;");
}

TEST_F(SinkPageTest, TheRadioButtonsEnableTheirControls) {
  Sink& page = OpenFile();
  EXPECT_FALSE(page.MachineEnabled());
  EXPECT_TRUE(page.FileEnabled());
  page.OnTraceServer();
  EXPECT_TRUE(page.MachineEnabled());
  EXPECT_FALSE(page.FileEnabled());
  page.OnFile();
  EXPECT_FALSE(page.MachineEnabled());
  EXPECT_TRUE(page.FileEnabled());
}

TEST_F(SinkPageTest, SwitchingToAServerAndBackKeepsWhatWasTyped) {
  Sink& page = OpenFile();
  m_window->Type(Sink::kFileName, "typed.trc");
  m_window->Type(Sink::kMaxSize, "77");
  page.OnTraceServer();
  m_window->Type(Sink::kMachine, "mars");
  page.OnFile();
  EXPECT_EQ(Shown(page), "1 typed.trc mars 0 10 77");
  EXPECT_EQ(m_window->Text(Sink::kFileName), "typed.trc");
  EXPECT_TRUE(m_window->CanPress(SheetButton::Apply));
}

TEST_F(SinkPageTest, OkSendsTheThreeOptionsInTheirOrderInsteadOfThoseThatWereThere) {
  Sink& page = OpenFile("maxsize=0;more=1;flush=0;");
  page.m_bForceFlush = 1;
  m_window->Type(Sink::kHistoricFiles, "5");
  m_window->Press(SheetButton::Ok);
  EXPECT_EQ(SinkInForce(), "file /logs/orders.trc flush=1;maxfiles=5;maxsize=0;");
  EXPECT_EQ(Asked(), "submit orders\nsubmit orders\n") << "each page submits on its own";
  EXPECT_TRUE(m_doc->IsModified());
  EXPECT_TRUE(m_sheet->Ended());
}

TEST_F(SinkPageTest, OkSendsUnderAWaitCursor) {
  // On this page, so that the other one has nothing to apply.
  CConfigPropertySheet sheet(m_host, *m_doc, *m_app, 1);
  FakeConfigSheet window(sheet);
  m_host.ClearTranscript();
  m_machine.m_onSubmit = [this] { m_host.Note("submit"); };
  window.Press(SheetButton::Ok);
  EXPECT_EQ(m_host.Reported(), "wait cursor on\nsubmit\nwait cursor off\n");
}

TEST_F(SinkPageTest, ASinkThatTheMachineHasNotTakenIsNotInForce) {
  Orders().traces.clear();  // only this page submits
  OpenFile();
  m_machine.m_refuses = true;
  m_sheet->SinkPage().OnEdit();
  m_window->Press(SheetButton::Apply);
  EXPECT_EQ(m_doc->NotInForce(), std::set<std::string>{"orders"});
  EXPECT_EQ(m_sheet->Note(), "web has refused these changes.");
  m_machine.m_refuses = false;
  m_sheet->SinkPage().OnEdit();
  m_window->Press(SheetButton::Apply);
  EXPECT_TRUE(m_doc->NotInForce().empty());
  EXPECT_EQ(m_sheet->Note(), "");
}

TEST_F(SinkPageTest, AServerSinkIsNotCheckedAndAnEmptyMachineIsSent) {
  Sink& page = OpenFile();
  page.OnTraceServer();
  m_window->Type(Sink::kMachine, "");
  m_window->Type(Sink::kHistoricFiles, "many");
  m_window->Type(Sink::kMaxSize, "");
  m_window->Type(Sink::kFileName, "a.txt");
  m_window->Press(SheetButton::Ok);
  EXPECT_EQ(SinkInForce(), "server  ");
  EXPECT_EQ(Boxes(), "");
}

TEST_F(SinkPageTest, AFileNameWithoutAnExtensionGetsOneWhenThePageIsLeft) {
  OpenFile();
  EXPECT_TRUE(Leaves(Sink::kFileName, "/var/log.d/orders"));
  EXPECT_EQ(m_window->Text(Sink::kFileName), "/var/log.d/orders.trc");
  EXPECT_EQ(Boxes(), "");
  m_window->Type(Sink::kFileName, "new");
  EXPECT_FALSE(Leaves(Sink::kMaxSize, "0"));
  EXPECT_EQ(m_window->Text(Sink::kFileName), "new.trc") << "also if another field holds the page";
}

TEST_F(SinkPageTest, AnEmptyFileNameBecomesAnExtensionAlone) {
  OpenFile();
  EXPECT_TRUE(Leaves(Sink::kFileName, ""));
  EXPECT_EQ(m_window->Text(Sink::kFileName), ".trc");
  EXPECT_EQ(Boxes(), "");
}

TEST_F(SinkPageTest, AnExtensionInCapitalsPasses) {
  OpenFile();
  EXPECT_TRUE(Leaves(Sink::kFileName, "ORDERS.TRC"));
  EXPECT_EQ(m_window->Text(Sink::kFileName), "ORDERS.TRC");
  EXPECT_EQ(Boxes(), "");
}

TEST_F(SinkPageTest, AnotherExtensionIsWarnedOf) {
  OpenFile();
  const std::string warning =
      "box Warning [warning] \"Warning: File will not be recognized as a tracing file if you use a "
      "file extension other than \".trc\".  Do you want to continue?\" (Yes, No) -> ";
  m_host.AnswerBox(BoxAnswer::No);
  EXPECT_FALSE(Leaves(Sink::kFileName, "orders.log"));
  EXPECT_EQ(Boxes(), warning + "No\n");
  m_host.AnswerBox(BoxAnswer::Yes);
  EXPECT_TRUE(Leaves(Sink::kFileName, "orders.log"));
  EXPECT_EQ(Boxes(), warning + "Yes\n");
}

TEST_F(SinkPageTest, ADotAtTheEndIsAnotherExtension) {
  OpenFile();
  m_host.AnswerBox(BoxAnswer::No);
  EXPECT_FALSE(Leaves(Sink::kFileName, "orders."));
  EXPECT_NE(Boxes().find("(Yes, No) -> No"), std::string::npos);
  EXPECT_EQ(m_window->Text(Sink::kFileName), "orders.");
}

TEST_F(SinkPageTest, HistoricFilesAreFromZeroToAHundredOrEmpty) {
  OpenFile();
  for (const char* const good : {"0", "100", "", "007"})
    EXPECT_TRUE(Leaves(Sink::kHistoricFiles, good)) << good;
  EXPECT_EQ(Boxes(), "");
  EXPECT_FALSE(Leaves(Sink::kHistoricFiles, "101"));
  EXPECT_EQ(Boxes(), Refusal(kFilesRange));
  EXPECT_EQ(m_window->Focus(), Sink::kHistoricFiles);
  for (const char* const bad : {"1x", "-1", " 1", "1.0"}) {
    EXPECT_FALSE(Leaves(Sink::kHistoricFiles, bad)) << bad;
    EXPECT_EQ(Boxes(), Refusal(kNotNumeric));
    EXPECT_EQ(m_window->Focus(), Sink::kHistoricFiles);
  }
}

TEST_F(SinkPageTest, AnEmptyNumberOfFilesCountsAsNone) {
  OpenFile();
  m_window->Type(Sink::kHistoricFiles, "");
  m_window->Press(SheetButton::Ok);
  EXPECT_EQ(SinkInForce(), "file /logs/orders.trc flush=0;maxfiles=0;maxsize=0;");
}

TEST_F(SinkPageTest, TheSizeIsFromOneToAThousandOrNone) {
  OpenFile();
  for (const char* const good : {"1", "1000", "<none>"})
    EXPECT_TRUE(Leaves(Sink::kMaxSize, good)) << good;
  EXPECT_EQ(Boxes(), "");
  for (const char* const outside : {"0", "1001", ""}) {
    EXPECT_FALSE(Leaves(Sink::kMaxSize, outside)) << outside;
    EXPECT_EQ(Boxes(), Refusal(kSizeRange));
    EXPECT_EQ(m_window->Focus(), Sink::kMaxSize);
  }
  for (const char* const bad : {"none", "<None>", "5 MB"}) {
    EXPECT_FALSE(Leaves(Sink::kMaxSize, bad)) << bad;
    EXPECT_EQ(Boxes(), Refusal(kSizeNotNumeric));
    EXPECT_EQ(m_window->Focus(), Sink::kMaxSize);
  }
}

TEST_F(SinkPageTest, LongNumbersWrapAroundBeforeTheirLimitIsCompared) {
  OpenFile();
  EXPECT_TRUE(Leaves(Sink::kHistoricFiles, "4294967296")) << "0";
  EXPECT_TRUE(Leaves(Sink::kHistoricFiles, "4294967299")) << "3";
  EXPECT_FALSE(Leaves(Sink::kMaxSize, "4294967296")) << "0";
  EXPECT_EQ(Boxes(), Refusal(kSizeRange));
  m_window->Type(Sink::kMaxSize, "4294967301");
  m_window->Press(SheetButton::Ok);
  EXPECT_EQ(SinkInForce(), "file /logs/orders.trc flush=0;maxfiles=3;maxsize=5;");
}

TEST_F(SinkPageTest, TheChecksComeInTheirOrderAndTheFirstFailureHoldsThePage) {
  OpenFile();
  m_window->Type(Sink::kFileName, "orders.log");
  m_window->Type(Sink::kHistoricFiles, "x");
  m_window->Type(Sink::kMaxSize, "x");
  m_host.AnswerBox(BoxAnswer::No);
  m_window->Press(SheetButton::Ok);
  const std::string boxes = Boxes();
  EXPECT_NE(boxes.find("file extension"), boxes.npos);
  EXPECT_EQ(boxes.find("log files"), boxes.npos);
  m_window->Type(Sink::kFileName, "orders.trc");
  m_window->Press(SheetButton::Ok);
  EXPECT_EQ(Boxes(), Refusal(kNotNumeric));
  m_window->Type(Sink::kHistoricFiles, "");
  m_window->Press(SheetButton::Ok);
  EXPECT_EQ(Boxes(), Refusal(kSizeNotNumeric));
  EXPECT_EQ(Asked(), "");
  EXPECT_FALSE(m_sheet->Ended());
}

TEST_F(SinkPageTest, AFieldThatRefusesItsTextHoldsThePageBeforeAnythingIsChecked) {
  constexpr unsigned kField = 999;
  OpenFile();
  int number = 0;
  m_window->Page(1).Bind(kField, number);
  m_window->Type(Sink::kFileName, "orders.log");
  m_window->Type(kField, "x");
  m_window->ChooseTab(0);
  EXPECT_EQ(m_window->Front(), 1u);
  EXPECT_EQ(m_window->Focus(), kField);
  m_window->Press(SheetButton::Ok);
  EXPECT_FALSE(m_sheet->Ended());
  EXPECT_EQ(Boxes(), "") << "not of the extension";
  EXPECT_EQ(Asked(), "");
}

TEST_F(SinkPageTest, CancelChangesNothing) {
  OpenFile();
  m_window->Type(Sink::kFileName, "other.trc");
  m_window->Press(SheetButton::Cancel);
  EXPECT_EQ(Asked(), "");
  EXPECT_EQ(SinkInForce(), "file /logs/orders.trc flush=0;maxfiles=10;maxsize=0;");
  EXPECT_FALSE(m_doc->IsModified());
}

TEST_F(SinkPageTest, TheComboBoxesOfferTheirChoices) {
  EXPECT_EQ(
      Sink::HistoricFilesChoices(),
      (std::vector<std::string>{"0",  "1",  "2",  "3",  "4",  "5",  "6",  "7",  "8",  "9",
                                "10", "20", "30", "40", "50", "60", "70", "80", "90", "100"}));
  EXPECT_EQ(Sink::MaxSizeChoices(), (std::vector<std::string>{"<none>", "5", "10", "20", "50",
                                                              "100", "200", "500", "1000"}));
}

TEST_F(SinkPageTest, TheBrowserWritesItsChoiceIntoTheFieldAndACancelLeavesIt) {
  HasSink(trc_SinkSocket, "mars", "");
  Sink& page = Open();
  m_window->Type(Sink::kMachine, "typed");
  std::string chosen;
  m_host.AnswerDialog([&](CDialog& dialog) {
    auto& browser = dynamic_cast<CMachineBrowser&>(dialog);
    browser.OnSelect(0);
    chosen = browser.Chosen();
    browser.OnOK();
  });
  page.OnBrowse();
  EXPECT_EQ(m_window->Text(Sink::kMachine), chosen);
  EXPECT_NE(chosen, "typed");
  EXPECT_TRUE(m_window->CanPress(SheetButton::Apply));
  m_window->Type(Sink::kMachine, "typed");
  m_host.AnswerDialog([](CDialog& dialog) { dialog.OnCancel(); });
  page.OnBrowse();
  EXPECT_EQ(m_window->Text(Sink::kMachine), "typed");
  EXPECT_STREQ(CMachineBrowser::kTitle, "Select a machine and press OK.");
}
