#include "config/traces/modify_trace_dialog.h"

#include <gtest/gtest.h>

#include "config/traces/trace_item.h"
#include "support/recording_host.h"

namespace {

using Dialog = CModifyTraceDialog;

class ModifyTraceTest : public testing::Test {
 protected:
  // "mode severity developer verbose location stack", as the opened dialog shows them.
  static std::string Shown(const Dialog& dialog) {
    std::string text;
    for (const int value : {dialog.m_nMode, dialog.m_nSeverity, dialog.m_bDeveloper,
                            dialog.m_bVerbose, dialog.m_bLocation, dialog.m_bStack})
      text += (text.empty() ? "" : " ") + std::to_string(value);
    return text;
  }
  std::string Opened(unsigned settings) {
    Dialog dialog(m_host, settings);
    dialog.OnInitDialog();
    return Shown(dialog);
  }

  RecordingHost m_host;
};

}  // namespace

TEST_F(ModifyTraceTest, ThePresetsHaveTheirValues) {
  EXPECT_EQ(TRC_PRESET_OFF, 0u);
  EXPECT_EQ(TRC_PRESET_SUPPORT, 7u);
  EXPECT_EQ(TRC_PRESET_DEVELOPER, 0x0Fu);
  EXPECT_EQ(TRC_PRESET_MAX, 0x031Fu);
}

TEST_F(ModifyTraceTest, OpensInTheModeOfItsSettings) {
  EXPECT_EQ(Opened(0), "0 -1 0 0 0 0") << "all rows off";
  EXPECT_EQ(Opened(799), "2 2 1 1 1 1");
  EXPECT_EQ(Opened(798), "1 1 1 1 1 1") << "one bit less than the maximum is custom";
}

TEST_F(ModifyTraceTest, ShowsTheThreeNestedSeverities) {
  EXPECT_EQ(Opened(4), "1 0 0 0 0 0");
  EXPECT_EQ(Opened(6), "1 1 0 0 0 0") << "4 and 2";
  EXPECT_EQ(Opened(7), "1 2 0 0 0 0");
  EXPECT_EQ(Opened(0x04 | 0x08 | 0x100), "1 0 1 0 1 0");
  EXPECT_EQ(Opened(0x06 | 0x10 | 0x200), "1 1 0 1 0 1");
}

TEST_F(ModifyTraceTest, OtherSeveritiesComeUpAsAllThreeWithoutTheRest) {
  for (const unsigned severity : {1u, 2u, 3u, 5u}) {
    EXPECT_EQ(Opened(severity), "1 2 0 0 0 0") << severity;
    EXPECT_EQ(Opened(severity | 0x0318), "1 2 0 0 0 0") << severity;
  }
  EXPECT_EQ(Opened(0x0308), "1 2 0 0 0 0") << "no severity at all";
}

TEST_F(ModifyTraceTest, OnlyCustomEnablesTheControls) {
  Dialog dialog(m_host, 0);
  dialog.OnInitDialog();
  EXPECT_FALSE(dialog.CustomEnabled());
  dialog.OnMode(Dialog::kCustom);
  EXPECT_TRUE(dialog.CustomEnabled());
  dialog.OnMode(Dialog::kMaximum);
  EXPECT_FALSE(dialog.CustomEnabled());
}

TEST_F(ModifyTraceTest, FromMaximumToCustomAllBoxesAreKept) {
  Dialog dialog(m_host, 4);
  dialog.OnMode(Dialog::kMaximum);
  dialog.OnMode(Dialog::kCustom);
  EXPECT_EQ(Shown(dialog), "1 2 1 1 1 1");
}

TEST_F(ModifyTraceTest, FromOffToCustomTheSeverityIsAllThreeAndTheBoxesStayClear) {
  Dialog dialog(m_host, 4 | 0x18);
  dialog.OnMode(Dialog::kOff);
  EXPECT_EQ(Shown(dialog), "0 -1 0 0 0 0");
  dialog.OnMode(Dialog::kCustom);
  EXPECT_EQ(Shown(dialog), "1 2 0 0 0 0");
}

TEST_F(ModifyTraceTest, ASecondClickOnCustomKeepsWhatWasChosen) {
  Dialog dialog(m_host, 7);
  dialog.OnInitDialog();
  dialog.m_nSeverity = 0;
  dialog.m_bVerbose = 1;
  dialog.OnMode(Dialog::kCustom);
  EXPECT_EQ(Shown(dialog), "1 0 0 1 0 0");
}

TEST_F(ModifyTraceTest, GivesTheSettingsOfItsControls) {
  Dialog dialog(m_host, 7);
  dialog.m_nSeverity = 0;
  EXPECT_EQ(dialog.GetDialogSettings(), 4u) << "errors only, all boxes clear";
  dialog.m_nSeverity = 1;
  EXPECT_EQ(dialog.GetDialogSettings(), 6u);
  dialog.m_nSeverity = -1;
  EXPECT_EQ(dialog.GetDialogSettings(), 0u);
  dialog.m_bDeveloper = 1;
  EXPECT_EQ(dialog.GetDialogSettings(), 0x08u);
  dialog.m_bVerbose = 1;
  EXPECT_EQ(dialog.GetDialogSettings(), 0x18u);
  dialog.m_bLocation = 1;
  EXPECT_EQ(dialog.GetDialogSettings(), 0x118u);
  dialog.m_bStack = 1;
  EXPECT_EQ(dialog.GetDialogSettings(), 0x318u);
  dialog.OnMode(Dialog::kMaximum);
  EXPECT_EQ(dialog.GetDialogSettings(), 799u);
  dialog.OnMode(Dialog::kOff);
  EXPECT_EQ(dialog.GetDialogSettings(), 0u);
}
