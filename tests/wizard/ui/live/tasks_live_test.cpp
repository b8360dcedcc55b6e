// The tasks of the page "Mode" that load a file, and files of the page of applications, in the
// wizard's window and over a real service.
#include "wizard/ui/live/wizard_live_fixture.h"

namespace {

constexpr char kHeader[] = "TCF Version 3.2\n";
constexpr char kOrders[] =
    "APP: \"orders\"\nTRACE: \"Net\" \"Close\" Warn Stack\nTRACE: \"Db\" \"Close\" Info\n";

class TasksTest : public WizardFleet {
 protected:
  std::string Notice() {
    Settle();
    return Face().Panes().PaneText(kPaneMessage).toStdString();
  }
  void ExpectMonitorWithRows() {
    CMDIChildWnd& monitor = *Frame().Children().back();
    EXPECT_EQ(monitor.Title(), "Traces sent to " + _trc_GetHostName());
    EXPECT_TRUE(Until([&] { return View(monitor)->List().ItemCount() > 0; }));
  }
};

}  // namespace

TEST_F(TasksTest, ASavedConfigurationIsInForceHereAndTheMonitorHasRows) {
  m_dir.File("saved.tcf", std::string(kHeader) + kOrders);
  const std::string before = Settings("localhost", "billing");
  RunWizard([](WizardUser& user) {
    user.Do("next task:1 file:saved.tcf next");
    EXPECT_EQ(user.Where(), "ended");
  });
  EXPECT_EQ(Settings("localhost", "orders"),
            "Db/Close Info\nDb/Connect Off\nDb/Request Off\n"
            "Net/Close Warn, Stack\nNet/Connect Off\nNet/Request Off\n");
  EXPECT_EQ(Settings("localhost", "billing"), before);
  ASSERT_EQ(Windows().size(), 2U) << "the configuration and the monitor";
  EXPECT_EQ(Windows().front(), "Configuration on " + _trc_GetHostName());
  EXPECT_EQ(m_app->ConfigTemplate()->Documents().front()->GetPathName(), m_dir.File("saved.tcf"));
  ExpectMonitorWithRows();
}

TEST_F(TasksTest, AConfigurationThatCannotBeHadLeavesThePageAndAnotherFileEndsIt) {
  m_dir.File("bad.tcf", std::string(kHeader) + "APP: \"orders\"\nnonsense\n");
  m_dir.File("saved.tcf", std::string(kHeader) + kOrders);
  const std::string before = Settings("localhost", "orders");
  RunWizard([&](WizardUser& user) {
    user.Do("next task:1 file:bad.tcf next");
    EXPECT_EQ(user.Boxes(), "Invalid format.");
    EXPECT_EQ(user.Where(), "Mode");
    EXPECT_NE(Notice().find("line 3"), std::string::npos) << Notice();
    EXPECT_TRUE(Windows().empty());
    EXPECT_EQ(Settings("localhost", "orders"), before) << "nothing of the file is in force";
    user.Do("away:localhost file:saved.tcf next");
    EXPECT_EQ(user.Boxes(), "Error trying to connect to configuration server.");
    EXPECT_EQ(user.Where(), "Mode");
    EXPECT_TRUE(Windows().empty());
    m_fleet.StartAgain(0);
    ASSERT_NO_FATAL_FAILURE(AwaitApps());
    user.Do("file:saved.tcf next");
    EXPECT_EQ(user.Where(), "ended");
  });
  EXPECT_NE(Settings("localhost", "orders"), before);
  ExpectMonitorWithRows();
}

TEST_F(TasksTest, SavedTracesOpenWithoutAMonitorAndAFileThatIsNoneLeavesThePage) {
  TraceFile("good.trc", 3);
  m_dir.File("bad.trc", "");
  RunWizard([&](WizardUser& user) {
    user.Do("next task:2 file:bad.trc next");
    EXPECT_EQ(user.Where(), "Mode");
    EXPECT_EQ(user.Boxes(), "");
    EXPECT_EQ(Notice(), "Cannot open bad.trc: The file is empty");
    EXPECT_TRUE(Windows().empty());
    user.Do("file:good.trc next");
    EXPECT_EQ(user.Where(), "ended");
  });
  EXPECT_EQ(Windows(), std::vector<std::string>{"good.trc"});
  EXPECT_TRUE(Until([this] { return View(*Frame().Children()[0])->List().ItemCount() == 3; }));
}

TEST_F(TasksTest, AfterALoadThatFailedNextStaysAndAnotherFileIsConfigured) {
  m_dir.File("bad.tcf", std::string(kHeader) + "APP: \"gone\"\nnonsense\n");
  m_dir.File("good.tcf", std::string(kHeader) + kOrders + "TRACE: \"Old\" \"One\" Info\n");
  RunWizard([](WizardUser& user) {
    user.Do("next next local next pick:billing,orders load:bad.tcf");
    EXPECT_EQ(user.Boxes(), "Invalid format.");
    EXPECT_EQ(user.Items("applications"), "*billing *orders") << "the list is as it was";
    EXPECT_EQ(user.Walk("next"), "Applications on THIS\n");
    EXPECT_EQ(user.Items("applications"), "billing orders");
    EXPECT_FALSE(user.CanPress(SheetButton::Next));
    user.Do("load:good.tcf");
    EXPECT_EQ(user.Items("applications"), "*orders");
    EXPECT_EQ(user.Walk("next"), "Traces for orders\n");
    EXPECT_NE(user.Traces().find("Old|One|Info\n"), std::string::npos) << user.Traces();
    EXPECT_EQ(user.Walk("back back next"),
              "Applications on THIS\nNetworking\nApplications on THIS\n");
    EXPECT_EQ(user.Items("applications"), "billing orders");
    EXPECT_EQ(user.Walk("load:good.tcf next give:max next"), "Traces for orders\nFinish\n");
    user.Do("finish");
  });
  EXPECT_EQ(Settings("localhost", "orders").find("Off"), std::string::npos);
  EXPECT_EQ(Windows().size(), 2U);
}

// The file leaves one of the names that the machines have together.
TEST_F(TasksTest, MachinesThatAreTheSameGetTheTableThatAFileHasCut) {
  m_dir.File("good.tcf", std::string(kHeader) + kOrders);
  RunWizard([](WizardUser& user) {
    user.Do("next next remote next add:web add:db same next");
    EXPECT_EQ(user.Items("applications"), "orders shop store");
    EXPECT_EQ(user.Walk("pick:shop,store next next back back"),
              "Traces for shop\nTraces for store\nTraces for shop\nApplications\n");
    user.Do("load:good.tcf");
    EXPECT_EQ(user.Items("applications"), "*orders");
    EXPECT_EQ(user.Walk("next next back back back"),
              "Traces for orders\nFinish\nTraces for orders\nApplications\nMachines\n");
    EXPECT_EQ(user.Walk("each next next next next"),
              "Applications on db\nTraces for orders on db\nApplications on web\n"
              "Traces for orders on web\n");
    EXPECT_EQ(user.Walk("give:max next"), "Finish\n");
    user.Do("finish");
  });
  EXPECT_EQ(Settings("web", "orders").find("Off"), std::string::npos) << "all traces of its own:\n"
                                                                      << Settings("web", "orders");
  EXPECT_NE(Settings("web", "orders").find("Stack"), std::string::npos);
  EXPECT_EQ(Windows().size(), 3U);
}
