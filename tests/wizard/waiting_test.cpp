// What the user sees and waits for: the wait cursor, and pages with thousands of applications.
#include "support/wizard_fixture.h"

namespace {

class WaitingTest : public WizardFixture {
 protected:
  WaitingTest() {
    for (const char* const name : {"localhost", "web", "db"})
      m_program.Machine(name).m_onAsked = [this](const std::string& question) {
        m_asked += question.substr(0, question.find(' ')) + " ";
        if (m_host.WaitCursors() == 0) m_uncovered += question + "\n";
      };
  }
  // What the machines are asked meanwhile.
  std::string Asked(const std::string& words) {
    m_asked.clear();
    Walk(words);
    EXPECT_EQ(m_host.WaitCursors(), 0) << words;
    return m_asked;
  }

  std::string m_asked, m_uncovered;
};

}  // namespace

TEST_F(WaitingTest, EveryQuestionToAMachineIsUnderAWaitCursor) {
  EXPECT_EQ(Asked("next next local next"), "connect list ");
  EXPECT_EQ(Asked("back remote next add:web add:db"), "connect list connect list ");
  EXPECT_EQ(Asked("del:" + _trc_GetHostName() + " same next pick:orders next next"), "open ");
  EXPECT_EQ(Asked("back back back each next"), "connect list ") << "web has had db's connection";
  EXPECT_EQ(Asked("next next next next"), "refresh open ");
  EXPECT_EQ(Where(), "Finish");
  EXPECT_EQ(Asked("finish"), "connect open submit connect open submit ");
  EXPECT_EQ(m_uncovered, "");
}

TEST_F(WaitingTest, NextOnThePageOfMachinesIsUnderAWaitCursor) {
  Walk("next next remote next add:web");
  m_host.ClearTranscript();
  Walk("next");
  EXPECT_EQ(m_host.Reported(), "wait cursor on\nwait cursor off\n");
}
