// The dialog of colour rules without its window.
#include "shell/colours/colour_rules_dialog.h"

#include <gtest/gtest.h>

#include "settings/registry.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace {

using Dialog = CColourRulesDialog;

class ColourRulesDialogTest : public testing::Test {
 protected:
  ColourRulesDialogTest() {
    SetSettingsFile(m_directory.File("settings.ini"));
    ReadActiveColours();
  }
  ~ColourRulesDialogTest() override {
    SetSettingsFile(m_directory.File("none.ini"));
    ReadActiveColours();
    SetSettingsFile("");
  }
  int Run(const std::function<void(Dialog&)>& person) {
    m_host.AnswerDialog([&](CDialog& dialog) { person(dynamic_cast<Dialog&>(dialog)); });
    return Dialog(m_host).DoModal();
  }
  static std::string Names(const Dialog& dialog) {
    std::string names;
    for (const ColourRule& rule : dialog.Rules()) names += rule.name + (rule.on ? " " : "- ");
    return names + "@" + std::to_string(dialog.Current());
  }
  static void Name(Dialog& dialog, const std::vector<std::string>& names) {
    for (const std::string& name : names) {
      dialog.Add();
      dialog.SetName(name);
    }
  }

  TempDir m_directory;
  RecordingHost m_host;
};

TEST_F(ColourRulesDialogTest, OkPutsTheRulesIntoUseAndCancelDoesNot) {
  EXPECT_EQ(Run([](Dialog& dialog) {
              EXPECT_EQ(Names(dialog), "@-1");
              EXPECT_FALSE(dialog.m_shown);
              dialog.UseShipped(ColourGround::Light);
              EXPECT_TRUE(dialog.m_shown) << "who asks for a set wants to see it";
              dialog.Switch(1, false);
            }),
            CDialog::kIdCancel);
  EXPECT_FALSE(ActiveColours());
  EXPECT_EQ(Run([](Dialog& dialog) {
              Name(dialog, {"a", "b"});
              dialog.m_shown = true;
              dialog.OnOK();
            }),
            CDialog::kIdOk);
  ASSERT_TRUE(ActiveColours());
  EXPECT_EQ(ActiveColours()->Rules().size(), 2u);
  Run([](Dialog& dialog) {
    EXPECT_EQ(Names(dialog), "a b @0");
    EXPECT_TRUE(dialog.m_shown);
  });
}

TEST_F(ColourRulesDialogTest, RulesAreAddedMovedSwitchedAndRemoved) {
  Run([](Dialog& dialog) {
    Name(dialog, {"a", "b", "c"});
    EXPECT_EQ(Names(dialog), "a b c @2");
    EXPECT_FALSE(dialog.MayMove(1));
    dialog.Move(1);
    dialog.Move(-1);
    EXPECT_EQ(Names(dialog), "a c b @1");
    dialog.Switch(0, false);
    dialog.Remove();
    EXPECT_EQ(Names(dialog), "a- b @1");
    dialog.Remove();
    EXPECT_EQ(Names(dialog), "a- @0");
    dialog.Select(7);
    EXPECT_EQ(dialog.Current(), 0);
    dialog.Remove();
    dialog.Remove();
    dialog.Move(1);
    dialog.SetName("x");
    EXPECT_EQ(Names(dialog), "@-1");
    dialog.Add();
    EXPECT_EQ(dialog.Current(), 0);
  });
}

TEST_F(ColourRulesDialogTest, SaysWhatIsWrongWithTheTextAndWhatIsHardToRead) {
  Run([](Dialog& dialog) {
    dialog.Add();
    EXPECT_EQ(dialog.Notice(), "");
    dialog.SetText("severity >= wran");
    ASSERT_TRUE(dialog.ErrorOf(0));
    EXPECT_EQ(dialog.ErrorOf(0)->place, 12u);
    EXPECT_NE(dialog.Notice().find("did you mean \"warn\"?"), std::string::npos);
    EXPECT_EQ(dialog.Rules()[0].where, "severity >= wran");
    dialog.SetText("severity >= warn");
    EXPECT_EQ(dialog.Notice(), "");
    EXPECT_FALSE(dialog.SetInk("#77777"));
    EXPECT_TRUE(dialog.SetInk("#777777"));
    EXPECT_TRUE(dialog.SetGround("#FFFFFF"));
    EXPECT_EQ(dialog.Notice(), "Hard to read: the contrast is 4.4, and should be 4.5 at least");
    EXPECT_TRUE(dialog.SetInk("#767676"));
    EXPECT_EQ(dialog.Notice(), "");
  });
}

TEST_F(ColourRulesDialogTest, HalfAColourIsToldAndHoldsTheDialogOpenOnce) {
  EXPECT_EQ(Run([this](Dialog& dialog) {
              Name(dialog, {"a", "b"});
              dialog.SetInk("#12345");
              EXPECT_TRUE(dialog.Notice().starts_with("A colour is written as #rrggbb"));
              dialog.SetGround("#ffffff");
              EXPECT_NE(dialog.Notice(), "") << "the ink is still no colour";
              dialog.SetInk("#123456");
              EXPECT_EQ(dialog.Notice(), "");
              dialog.SetInk("#");
              dialog.Select(0);
              EXPECT_EQ(dialog.Notice(), "") << "the other rule has its colours";
              dialog.SetGround("white");
              m_host.AnswerBox(BoxAnswer::Ok);
              dialog.OnOK();
              EXPECT_FALSE(dialog.Ended());
              dialog.OnOK();
            }),
            CDialog::kIdOk);
  EXPECT_NE(m_host.TakeBoxes().find("The rule keeps the one that it had."), std::string::npos);
}

TEST_F(ColourRulesDialogTest, ARuleThatCannotBeKeptHoldsTheDialogOpen) {
  EXPECT_EQ(Run([this](Dialog& dialog) {
              Name(dialog, {"a", " ", "c"});
              m_host.AnswerBox(BoxAnswer::Ok);
              dialog.OnOK();
              EXPECT_FALSE(dialog.Ended());
              EXPECT_EQ(dialog.Current(), 1) << "the rule that it is about";
              dialog.SetName("b");
              dialog.OnOK();
            }),
            CDialog::kIdOk);
  EXPECT_NE(m_host.TakeBoxes().find("Rule 2: a rule needs a name."), std::string::npos);
}

TEST_F(ColourRulesDialogTest, SetsAreSavedLoadedAndDeletedAndChangedRulesAreAskedAbout) {
  Run([this](Dialog& dialog) {
    Name(dialog, {"a", "b"});
    dialog.SaveSet("mine");
    EXPECT_EQ(dialog.SetNames(), std::vector<std::string>{"mine"});
    dialog.UseShipped(ColourGround::Dark);
    EXPECT_EQ(dialog.Rules(), ShippedColours(ColourGround::Dark)) << "nothing was changed";
    dialog.SetName("changed");
    m_host.AnswerBox(BoxAnswer::No);
    dialog.LoadSet("mine");
    EXPECT_EQ(dialog.Rules().size(), 8u);
    m_host.AnswerBox(BoxAnswer::Yes);
    dialog.LoadSet("MINE");
    EXPECT_EQ(Names(dialog), "a b @0");
    m_host.AnswerBox(BoxAnswer::No);
    dialog.DeleteSet("mine");
    EXPECT_EQ(dialog.SetNames(), std::vector<std::string>{"mine"});
    m_host.AnswerBox(BoxAnswer::Yes);
    dialog.DeleteSet("Mine");
    EXPECT_TRUE(dialog.SetNames().empty());
    m_host.AnswerBox(BoxAnswer::Ok);
    dialog.LoadSet("mine");
    EXPECT_EQ(Names(dialog), "a b @0");
  });
}

TEST_F(ColourRulesDialogTest, RulesGoToAFileAndComeFromOne) {
  Run([this](Dialog& dialog) {
    Name(dialog, {"a", "b"});
    m_host.AnswerFileDialog(m_directory.File("x.colours"));
    dialog.Export();
    std::string why;
    EXPECT_EQ(LoadColourRules(m_directory.File("x.colours"), &why), dialog.Rules()) << why;
    dialog.Remove();
    m_host.AnswerFileDialog(m_directory.File("x.colours"));
    m_host.AnswerBox(BoxAnswer::Yes);
    dialog.Import();
    EXPECT_EQ(Names(dialog), "a b @0");
    m_host.AnswerFileDialog(m_directory.File("wrong.colours", "{\n]"));
    m_host.AnswerBox(BoxAnswer::Ok);
    dialog.Import();
    EXPECT_EQ(Names(dialog), "a b @0") << "a wrong file changes nothing";
    m_host.AnswerFileDialog(std::nullopt);
    dialog.Import();
  });
  EXPECT_NE(m_host.TakeBoxes().find("line 2: this is no JSON"), std::string::npos);
}

}  // namespace
