// Each step of the walk through the wizard's pages, in its window and over real services.
#include "support/qt_test_main.h"
#include "wizard/ui/live/wizard_live_fixture.h"
#include "wizard/walk_steps.h"

namespace {

class WalkLiveTest : public WizardFleet {
 protected:
  void Take(const WalkStep& step) {
    RunWizard([&](WizardUser& user) {
      user.Do(step.words);
      EXPECT_EQ(user.Where().substr(0, step.from.size()), step.from);
      user.Do(step.by);
      EXPECT_TRUE(user.Sees(step.to)) << user.Where();
      EXPECT_EQ(user.Boxes(), step.says);
    });
    CloseWindows();
  }
};

}  // namespace

TEST_F(WalkLiveTest, TheFirstPages) {
  m_dir.File("good.tcf", "TCF Version 3.2\nAPP: \"orders\"\n");
  m_dir.File("bad.tcf", "nonsense\n");
  TraceFile("good.trc", 3);
  m_dir.File("bad.trc", "");
  for (const WalkStep& step : FirstPages()) {
    SCOPED_TRACE(testing::PrintToString(step));
    Take(step);
  }
}

TEST_F(WalkLiveTest, Forward) {
  for (const WalkStep& step : Forward()) {
    SCOPED_TRACE(testing::PrintToString(step));
    Take(step);
  }
}

TEST_F(WalkLiveTest, Backward) {
  for (const WalkStep& step : Backward()) {
    SCOPED_TRACE(testing::PrintToString(step));
    Take(step);
  }
}
