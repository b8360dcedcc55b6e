// The page that asks for the task.
#include "support/wizard_fixture.h"

namespace {

class SelectPageTest : public WizardFixture {
 protected:
  std::string Settings(const std::string& name, const std::string& lines) {
    return m_folder.File(name, "TCF Version 3.2\n" + lines);
  }
};

}  // namespace

TEST_F(SelectPageTest, LoadingASavedConfigurationPutsItInForceHereAndOpensTheMonitorAndEnds) {
  const std::string path = Settings("a.tcf", "APP: \"orders\"\nTRACE: \"Net\" \"Open\" Info\n");
  Walk("next task:1 file:" + path);
  EXPECT_EQ(m_host.Transcript(), std::vector<std::string>{}) << "nothing is asked before Next";
  Walk("next");
  EXPECT_EQ(Where(), "ended");
  ASSERT_EQ(m_program.Configs(), 1U);
  EXPECT_EQ(m_program.Config(0).GetMachineName(), _trc_GetHostName()) << "nobody is asked for it";
  EXPECT_EQ(m_program.Config(0).GetPathName(), path);
  EXPECT_FALSE(m_program.Config(0).IsModified());
  EXPECT_EQ(m_program.Machine("localhost").InForce("orders"), "Net/Open=1 Disk/Read=0");
  EXPECT_EQ(m_log.Reported("child show"), "child show\n");
  EXPECT_EQ(m_log.Lines().back(), "monitor") << "after the window";
  EXPECT_FALSE(g_bWizardLocalConfig);
  EXPECT_EQ(Window().Front(), 1U) << "no other page comes after the end";
  EXPECT_EQ(Boxes(), "");
}

TEST_F(SelectPageTest, AsksForFilesOfTheTasksOwnKind) {
  Walk("next task:1 nofile next");
  ASSERT_EQ(m_host.m_fileRequests.size(), 1U);
  const FileDialogRequest& configs = m_host.m_fileRequests[0];
  EXPECT_FALSE(configs.save) << "the file must exist";
  EXPECT_EQ(configs.title, "Open");
  ASSERT_EQ(configs.filters.size(), 2U);
  EXPECT_EQ(configs.filters[0].patterns, "*.tcf");
  EXPECT_EQ(configs.filters[1].patterns, "*");
  Walk("task:2 nofile next");
  ASSERT_EQ(m_host.m_fileRequests.size(), 2U);
  EXPECT_EQ(m_host.m_fileRequests[1].filters[0].patterns, "*.trc");
}

TEST_F(SelectPageTest, AConfigurationThatDoesNotOpenKeepsTheUserThere) {
  Walk("next task:1 file:" + Settings("bad.tcf", "nonsense\n") + " next");
  EXPECT_EQ(Where(), "Mode");
  EXPECT_EQ(Boxes(), Box("Invalid format."));
  EXPECT_EQ(m_program.Configs(), 0U);
  EXPECT_EQ(m_log.Reported("monitor"), "");
  EXPECT_EQ(m_log.Lines().back(), "not opened " + m_folder.File("bad.tcf"));
  EXPECT_FALSE(g_bWizardLocalConfig) << "the next file that is opened asks for its machine again";
  EXPECT_EQ(Window().Text(CWizSelectPage::kTask), "1") << "and the user can try another file";
}

TEST_F(SelectPageTest, AConfigurationWhoseServiceIsAwayKeepsTheUserThere) {
  m_program.Machine("localhost").m_away = true;
  Walk("next task:1 file:" + Settings("a.tcf", "APP: \"orders\"\n") + " next");
  EXPECT_EQ(Where(), "Mode");
  EXPECT_EQ(Boxes(), Box("Error trying to connect to configuration server."));
  EXPECT_EQ(m_log.Reported("monitor"), "");
}

TEST_F(SelectPageTest, LoadingSavedTracesOpensTheFileAndEndsWithoutAMonitor) {
  Walk("next task:2 file:/tmp/old.trc next");
  EXPECT_EQ(Where(), "ended");
  EXPECT_EQ(m_log.Reported("open"), "open /tmp/old.trc\n");
  EXPECT_EQ(m_log.Reported("monitor"), "");
  EXPECT_EQ(m_program.FileTemplate()->Documents().size(), 1U);
  EXPECT_EQ(Window().Front(), 1U);
}

TEST_F(SelectPageTest, ATraceFileThatDoesNotOpenKeepsTheUserThere) {
  Walk("next task:2 file:/tmp/bad.trc next");
  EXPECT_EQ(Where(), "Mode");
  EXPECT_EQ(m_program.FileTemplate()->Documents().size(), 0U);
  EXPECT_EQ(m_log.Lines().back(), "not opened /tmp/bad.trc") << "no box has said anything";
}

TEST_F(SelectPageTest, APromptThatIsCancelledKeepsTheUserThere) {
  for (const char* task : {"task:1", "task:2"}) {
    Walk("cancel");
    Open();
    Walk("next " + std::string(task) + " nofile next");
    EXPECT_EQ(Where(), "Mode") << task;
  }
  EXPECT_EQ(m_log.Reported("monitor"), "");
  EXPECT_EQ(m_program.Configs(), 0U);
}
