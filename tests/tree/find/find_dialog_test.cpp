// The Find dialog: settings offered, kept, and left alone.
#include "tree/find/find_dialog.h"

#include <gtest/gtest.h>

#include "support/recording_host.h"
#include "tree/find/find_search.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class FindDialogTest : public testing::Test {
 protected:
  FindDialogTest() { FindSettings = {}; }
  ~FindDialogTest() override { FindSettings = {}; }
  RecordingHost m_host;
};

CFindDialog& AsFind(CDialog& dialog) {
  return dynamic_cast<CFindDialog&>(dialog);
}

TEST_F(FindDialogTest, StartsEmptyWithAllBoxesClear) {
  const CFindDialog dialog(m_host);
  EXPECT_EQ(dialog.searchText, "");
  EXPECT_EQ(dialog.ignoreCase + dialog.backward + dialog.regularExpression + dialog.wordSearch, 0);
}

TEST_F(FindDialogTest, OffersTheLastSearchAgain) {
  FindSettings = {"web", 1, 0, 1, 1};
  const CFindDialog dialog(m_host);
  EXPECT_EQ(dialog.searchText, "web");
  EXPECT_EQ(dialog.ignoreCase, 1);
  EXPECT_EQ(dialog.backward, 0);
  EXPECT_EQ(dialog.regularExpression, 1);
  EXPECT_EQ(dialog.wordSearch, 1);
}

TEST_F(FindDialogTest, OkIsEnabledExactlyWhileTheTextIsNotEmpty) {
  CFindDialog dialog(m_host);
  dialog.OnInitDialog();
  EXPECT_FALSE(dialog.OkEnabled());
  dialog.OnChangeText("a");
  EXPECT_TRUE(dialog.OkEnabled());
  dialog.OnChangeText("");
  EXPECT_FALSE(dialog.OkEnabled());
  FindSettings.searchText = "web";
  CFindDialog again(m_host);
  again.OnInitDialog();
  EXPECT_TRUE(again.OkEnabled());
}

TEST_F(FindDialogTest, OkKeepsAllFiveSettingsAndMakesThePatternReady) {
  m_host.AnswerDialog([](CDialog& dialog) {
    CFindDialog& find = AsFind(dialog);
    find.searchText = "ERR.R";
    find.ignoreCase = find.backward = find.regularExpression = find.wordSearch = 1;
    find.OnOK();
  });
  EXPECT_TRUE(RunFindDialog(m_host));
  EXPECT_EQ(FindSettings.searchText, "ERR.R");
  EXPECT_EQ(FindSettings.ignoreCase, 1);
  EXPECT_EQ(FindSettings.backward, 1);
  EXPECT_EQ(FindSettings.regularExpression, 1);
  EXPECT_EQ(FindSettings.wordSearch, 1);
  EXPECT_EQ(RegexMatchText("an error"), 1);
  EXPECT_EQ(RegexMatchText("an errors"), 0) << "a whole word";
  EXPECT_EQ(m_host.Reported(), "dialog -> 1\n");
}

TEST_F(FindDialogTest, ATextIsPlainUnlessItIsARegularExpression) {
  for (const int regularExpression : {0, 1}) {
    m_host.AnswerDialog([&](CDialog& dialog) {
      AsFind(dialog).searchText = "a.c";
      AsFind(dialog).regularExpression = regularExpression;
      dialog.OnOK();
    });
    EXPECT_TRUE(RunFindDialog(m_host));
    EXPECT_EQ(RegexMatchText("abc"), regularExpression);
    EXPECT_EQ(RegexMatchText("xa.cx"), 1);
  }
}

TEST_F(FindDialogTest, SearchesNeverGoAcrossLines) {
  m_host.AnswerDialog([](CDialog& dialog) {
    AsFind(dialog).searchText = "a.b";
    AsFind(dialog).regularExpression = 1;
    dialog.OnOK();
  });
  EXPECT_TRUE(RunFindDialog(m_host));
  EXPECT_EQ(RegexMatchText("a\nb"), 0);
}

TEST_F(FindDialogTest, ABadPatternShowsABoxAndLeavesTheDialogOpenAndTheSettingsAsTheyWere) {
  FindSettings = {"web", 1, 1, 0, 0};
  m_host.AnswerDialog([&](CDialog& dialog) {
    AsFind(dialog).searchText = "[abc";
    AsFind(dialog).regularExpression = 1;
    AsFind(dialog).ignoreCase = 0;
    dialog.OnOK();
    EXPECT_FALSE(dialog.Ended());
    m_host.Note("still open");
  });
  EXPECT_FALSE(RunFindDialog(m_host));
  EXPECT_EQ(m_host.Reported(),
            "box Tessera [stop] \"Illegal search pattern.\" (OK) -> OK\n"
            "still open\n"
            "dialog -> 2\n");
  EXPECT_EQ(FindSettings.searchText, "web");
  EXPECT_EQ(FindSettings.ignoreCase, 1);
  EXPECT_EQ(FindSettings.regularExpression, 0);
}

TEST_F(FindDialogTest, CancelCopiesNothing) {
  m_host.AnswerDialog([](CDialog& dialog) {
    AsFind(dialog).searchText = "other";
    dialog.OnCancel();
  });
  EXPECT_FALSE(RunFindDialog(m_host));
  EXPECT_EQ(FindSettings.searchText, "");
  EXPECT_FALSE(MayFindNext());
}

}  // namespace
