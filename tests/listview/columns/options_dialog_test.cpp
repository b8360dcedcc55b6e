#include "listview/columns/options_dialog.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "settings/registry.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace {

class Options : public testing::Test {
 protected:
  Options() {
    SetSettingsFile(m_directory.File("settings.ini"));
    g_activeColumns = kDefaultActiveColumns;
    g_traceLimit = 500000;
    g_useUtc = false;
  }
  ~Options() override {
    g_activeColumns = kDefaultActiveColumns;
    g_traceLimit = 500000;
    g_useUtc = false;
    SetSettingsFile("");
  }
  bool Limit(const std::string& text) { return m_dialog->Exchange({}, false, text); }
  COptionsDlg& Make() {
    m_dialog = std::make_unique<COptionsDlg>(m_host);
    return *m_dialog;
  }

  TempDir m_directory;
  RecordingHost m_host;
  std::unique_ptr<COptionsDlg> m_dialog;
};

constexpr char kRange[] =
    "box Tessera [warning] \"Enter an integer between 2500 and 1000000.\" (OK) -> OK\n";
constexpr char kInteger[] = "box Tessera [warning] \"Enter an integer.\" (OK) -> OK\n";

TEST_F(Options, ItsBoxesHaveTheirIdsTextsAndColumns) {
  EXPECT_STREQ(COptionsDlg::Title(), "Options");
  std::string boxes;
  for (const COptionsDlg::Box& box : COptionsDlg::Boxes())
    boxes += std::to_string(box.id) + " " + box.text + " " + std::to_string(box.column) +
             (box.enabled ? "\n" : " disabled\n");
  EXPECT_EQ(boxes,
            "1159 Severity 0\n1041 Count 1\n1072 Tic Count 2\n1078 Tic Difference 3\n1042 Time 4\n"
            "1044 Machine 5\n1045 Application 6\n1066 Component 7\n1067 Category 8\n"
            "1158 Attributes 9\n1046 PID 10\n1047 TID 11\n1071 Trace 14 disabled\n");
}

TEST_F(Options, BeginsWithWhatHolds) {
  g_traceLimit = 7777;
  g_useUtc = true;
  const COptionsDlg& dialog = Make();
  EXPECT_EQ(dialog.m_severity, 1);
  EXPECT_EQ(dialog.m_count, 0);
  EXPECT_EQ(dialog.m_component, 1);
  EXPECT_EQ(dialog.m_limit, 7777u);
  EXPECT_EQ(dialog.m_utc, 1);
}

TEST_F(Options, TheBoxTraceIsBoundToStackAndUntickedThoughTraceShows) {
  EXPECT_EQ(Make().m_stack, 0);
  EXPECT_EQ(g_activeColumns[12], 1);
  g_activeColumns[14] = 1;
  EXPECT_EQ(Make().m_stack, 1);
}

TEST_F(Options, AClickFlipsTheMemberExceptThatOfTicDifference) {
  COptionsDlg& dialog = Make();
  dialog.OnBoxClicked(1041);
  EXPECT_EQ(dialog.m_count, 1);
  dialog.OnBoxClicked(1041);
  EXPECT_EQ(dialog.m_count, 0);
  dialog.OnBoxClicked(1159);
  EXPECT_EQ(dialog.m_severity, 0);
  dialog.OnBoxClicked(1078);
  EXPECT_EQ(dialog.m_ticDifference, 0);
  dialog.OnBoxClicked(1167);
  EXPECT_EQ(dialog.m_utc, 1);
}

TEST_F(Options, AClickOnADisabledOrUnknownBoxChangesNothing) {
  COptionsDlg& dialog = Make();
  dialog.OnBoxClicked(1071);
  dialog.OnBoxClicked(1);
  EXPECT_EQ(dialog.m_stack, 0);
}

TEST_F(Options, TheExchangeReplacesTheMembersWhateverWasClicked) {
  COptionsDlg& dialog = Make();
  dialog.OnBoxClicked(1041);
  EXPECT_TRUE(dialog.Exchange({{1041, false}, {1078, true}, {1042, true}}, true, "2500"));
  EXPECT_EQ(dialog.m_count, 0);
  EXPECT_EQ(dialog.m_ticDifference, 1);
  EXPECT_EQ(dialog.m_time, 1);
  EXPECT_EQ(dialog.m_utc, 1);
  EXPECT_EQ(dialog.m_limit, 2500u);
}

TEST_F(Options, TheLimitsBoundsPass) {
  Make();
  EXPECT_TRUE(Limit("2500"));
  EXPECT_TRUE(Limit("1000000"));
  EXPECT_TRUE(Limit(" 3000 "));
  EXPECT_TRUE(Limit("+3000"));
  EXPECT_EQ(m_host.Reported(), "");
}

TEST_F(Options, ALimitOutsideIsRefusedWithTheRangeAndTheDialogStays) {
  COptionsDlg& dialog = Make();
  for (const char* text : {"2499", "1000001", "0", "-5", "4294967296", "99999999999999999999",
                           "-99999999999999999999"}) {
    m_host.ClearTranscript();
    EXPECT_FALSE(Limit(text)) << text;
    EXPECT_EQ(m_host.Reported(), kRange) << text;
  }
  EXPECT_FALSE(dialog.Ended());
  EXPECT_EQ(dialog.m_limit, 500000u);
}

TEST_F(Options, ALimitThatIsNoNumberIsRefused) {
  Make();
  for (const char* text : {"", "  ", "many", "3000x", "3 000", "3000.5", "+", "-", "+-3000"}) {
    m_host.ClearTranscript();
    EXPECT_FALSE(Limit(text)) << text;
    EXPECT_EQ(m_host.Reported(), kInteger) << text;
  }
}

TEST_F(Options, WithoutOkNothingChanges) {
  COptionsDlg& dialog = Make();
  dialog.OnBoxClicked(1041);
  EXPECT_TRUE(dialog.Exchange({{1042, true}}, true, "2500"));
  EXPECT_EQ(g_activeColumns, kDefaultActiveColumns);
  EXPECT_EQ(g_traceLimit, 500000u);
  EXPECT_FALSE(g_useUtc);
}

TEST_F(Options, AppliedOptionsAreCopiedAndStored) {
  COptionsDlg& dialog = Make();
  ASSERT_TRUE(dialog.Exchange({{1159, false}, {1042, true}}, true, "2500"));
  ApplyOptions(dialog);
  const ColumnFlags expected = {0, 0, 0, 0, 1, 0, 1, 1, 1, 0, 0, 0, 1, 0, 0};
  EXPECT_EQ(g_activeColumns, expected);
  EXPECT_EQ(g_traceLimit, 2500u);
  EXPECT_TRUE(g_useUtc);
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, kRegTraceView, "Trace Limit", 0u), 2500u);
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, kRegTraceView, "Coordinated Universal Time", 7u), 1u);
  ColumnFlags stored;
  NtRegGetBuf(HKEY_CURRENT_USER, kRegColumns, "Active Columns", stored.data(),
              kDefaultActiveColumns.data(), sizeof stored);
  EXPECT_EQ(stored, expected);
}

TEST_F(Options, TheTintOfWarningsAndErrorsIsOnByDefaultAndStored) {
  ReadStartupSettings();
  EXPECT_TRUE(g_tintSeverity);
  COptionsDlg& dialog = Make();
  EXPECT_EQ(dialog.m_tint, 1);
  dialog.OnBoxClicked(1168);
  EXPECT_EQ(dialog.m_tint, 0);
  ASSERT_TRUE(dialog.Exchange({}, false, "2500", false));
  EXPECT_TRUE(g_tintSeverity) << "not before OK";
  ApplyOptions(dialog);
  EXPECT_FALSE(g_tintSeverity);
  g_tintSeverity = true;
  ReadStartupSettings();
  EXPECT_FALSE(g_tintSeverity);
  EXPECT_EQ(Make().m_tint, 0);
  g_tintSeverity = true;
}

TEST_F(Options, ItsLimitsAreShownAsTheyAreChecked) {
  EXPECT_EQ(COptionsDlg::LimitRange(), "2,500 to 1,000,000");
}

TEST_F(Options, WhatWasStoredIsReadAtTheNextStart) {
  COptionsDlg& dialog = Make();
  ASSERT_TRUE(dialog.Exchange({{1046, true}}, true, "4321"));
  ApplyOptions(dialog);
  const ColumnFlags applied = g_activeColumns;
  g_activeColumns = kDefaultActiveColumns;
  g_traceLimit = 1;
  g_useUtc = false;
  ReadStartupSettings();
  ReadActiveColumns();
  EXPECT_EQ(g_activeColumns, applied);
  EXPECT_EQ(g_traceLimit, 4321u);
  EXPECT_TRUE(g_useUtc);
}

TEST_F(Options, TheFlagsOfTraceSourceAndStackStayAsTheyWereRead) {
  g_activeColumns[12] = 0;
  g_activeColumns[13] = 5;
  g_activeColumns[14] = 3;
  COptionsDlg& dialog = Make();
  std::vector<std::pair<unsigned, bool>> boxes;
  for (const COptionsDlg::Box& box : COptionsDlg::Boxes()) boxes.emplace_back(box.id, true);
  ASSERT_TRUE(dialog.Exchange(boxes, false, "2500"));
  ApplyOptions(dialog);
  EXPECT_EQ(g_activeColumns, (ColumnFlags{1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 5, 3}));
}

TEST_F(Options, TheUpdateIntervalIsNeverWritten) {
  COptionsDlg& dialog = Make();
  ASSERT_TRUE(dialog.Exchange({}, false, "2500"));
  ApplyOptions(dialog);
  EXPECT_EQ(NtRegGet(HKEY_CURRENT_USER, kRegTraceView, "Update Interval", 0u), 0u);
}

}  // namespace
