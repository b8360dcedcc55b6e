#include "config/document/config_window.h"

#include "docview/doc_template.h"
#include "support/fake_config_client.h"
#include "support/fake_frame.h"
#include "support/recording_host.h"

#include <gtest/gtest.h>

namespace {

class ConfigWindowTest : public testing::Test {
 protected:
  ConfigWindowTest() {
    CMultiDocTemplate::Makers makers;
    makers.document = [this] { return std::make_unique<CConfigDoc>(m_host, ClientOf(m_machine)); };
    makers.frame = [this] { return std::make_unique<CMDIChildWnd>(m_app.m_frame); };
    makers.view = [this](CDocument& each) { return std::make_unique<ProbeView>(each, m_log); };
    m_configs = m_app.AddDocTemplate(std::make_unique<CMultiDocTemplate>(
        131, "\n\nTrace Config\n\n\n\n", m_app.MainFrame(), std::move(makers)));
  }

  FakeMachine m_machine;
  RecordingHost m_host;
  FrameLog m_log;
  FakeApp m_app{m_host, m_log};
  CMultiDocTemplate* m_configs = nullptr;
};

}  // namespace

TEST_F(ConfigWindowTest, ANewWindowIsConnectedBeforeItIsShown) {
  const CConfigDoc* const config = OpenConfigWindow(*m_configs, "web");
  ASSERT_TRUE(config);
  EXPECT_EQ(config->GetTitle(), "Configuration on web");
  EXPECT_EQ(m_log.Reported("view initial"), "view initial update\n");
  EXPECT_EQ(m_log.Reported("child show"), "child show\n");
  EXPECT_EQ(m_machine.m_log, "connect web\n");
}

TEST_F(ConfigWindowTest, AMachineThatCannotBeReachedLeavesNoWindowAndAReason) {
  m_machine.m_away = true;
  std::string why;
  EXPECT_FALSE(OpenConfigWindow(*m_configs, "web", &why));
  EXPECT_EQ(why, "no trace service there");
  EXPECT_FALSE(OpenConfigWindow(*m_configs, "web"));
  EXPECT_TRUE(m_configs->Documents().empty());
  EXPECT_EQ(m_log.Reported("child show"), "");
  EXPECT_EQ(m_log.Reported("child gone"), "child gone\nchild gone\n");
}

TEST_F(ConfigWindowTest, AnOpenWindowIsFoundByItsMachineInAnyCase) {
  m_configs->OpenDocumentFile(nullptr);  // without a connection
  CConfigDoc* const web = OpenConfigWindow(*m_configs, "web");
  OpenConfigWindow(*m_configs, "WEB");
  EXPECT_EQ(FindConfigWindow(*m_configs, "Web"), web) << "the first";
  EXPECT_FALSE(FindConfigWindow(*m_configs, "db"));
}
