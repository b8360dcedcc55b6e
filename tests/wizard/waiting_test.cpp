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

  static constexpr int kMany = 10000;
  void RunMany() {
    for (int app = 0; app < kMany; ++app)
      m_program.Machine("localhost").m_apps["app" + std::to_string(app)].instances = 1;
  }
  int Calls() { return Window().applications.TakeCalls(); }

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

TEST_F(WaitingTest, ThousandsOfApplicationsAreListedWithTwoCallsForEach) {
  RunMany();
  Walk("next next local next");
  EXPECT_EQ(Window().applications.Count(), kMany + 2);
  EXPECT_LE(Calls(), 2 * kMany);
}

TEST_F(WaitingTest, AClickAmongThousandsOfApplicationsLooksAtNoneOfThem) {
  RunMany();
  Walk("next next local next");
  FakeListBox& list = Window().applications;
  for (const bool control : {false, true, true}) {
    Calls();
    list.Click(3, control);
    list.Click(4, control);
    m_host.RunPosted();
    EXPECT_LE(Calls(), 20) << "the clicks look where they hit";
  }
}

TEST_F(WaitingTest, NextLooksAtEachOfThousandsOfApplicationsAFewTimes) {
  RunMany();
  Walk("next next local next");
  Window().applications.SetPage(2 * kMany);
  Walk("pick:app1,app2");
  Calls();
  Walk("next");
  EXPECT_EQ(Where(), "Traces for app1");
  EXPECT_LE(Calls(), 4 * kMany);
  Walk("back");
  Calls();
  m_program.Machine("localhost").m_refusesOpen = true;
  Walk("pick:app3 next");
  EXPECT_EQ(Where(), "Applications on THIS");
  EXPECT_LE(Calls(), 8 * kMany);
}
