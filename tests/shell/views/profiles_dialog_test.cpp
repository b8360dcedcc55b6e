// The dialog of the profiles.
#include "shell/views/profiles_dialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "settings/registry.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "views/stored_views.h"

namespace {

using Dialog = CProfilesDialog;
using testing::HasSubstr;
using Strings = std::vector<std::string>;

class ProfilesDialog : public testing::Test {
 protected:
  ProfilesDialog() { SetSettingsFile(m_dir.File("settings.ini")); }
  ~ProfilesDialog() override { SetSettingsFile(""); }

  void Run(const std::function<void(Dialog&)>& user, bool saves = false) {
    m_host.AnswerDialog([&](CDialog& dialog) { user(dynamic_cast<Dialog&>(dialog)); });
    Dialog(
        m_host, [this] { return m_shown; },
        [this](const ViewState& state) {
          m_applied.push_back(state.filter.value_or("none"));
          return m_missed;
        },
        saves)
        .DoModal();
  }
  void Keep(const std::string& name, const std::string& filter) {
    Profile profile{name, {}};
    profile.state.filter = filter;
    ASSERT_TRUE(KeepProfile(profile, nullptr));
  }
  static std::string FilterOf(const std::string& name) {
    const auto profile = FindProfile(name);
    return profile ? profile->state.filter.value_or("none") : "no profile";
  }

  TempDir m_dir;
  RecordingHost m_host;
  ViewState m_shown;
  Strings m_applied;
  std::string m_missed;
};

TEST_F(ProfilesDialog, SavesWhatTheWindowShowsAsksBeforeItReplacesAndKeepsNoRow) {
  m_shown.filter = "pid == 1";
  m_shown.row = ViewRow{3, 4};
  Run(
      [this](Dialog& dialog) {
        EXPECT_TRUE(dialog.BeginsWithName());
        EXPECT_FALSE(dialog.HasName());
        dialog.m_name = " a ";
        dialog.Save();
        EXPECT_EQ(dialog.Names(), Strings{"a"});
        EXPECT_EQ(dialog.Current(), 0);
        m_shown.filter = "pid == 2";
        dialog.m_name = "A";
        m_host.AnswerBox(BoxAnswer::No);
        dialog.Save();
        EXPECT_EQ(FilterOf("a"), "pid == 1");
        m_host.AnswerBox(BoxAnswer::Yes);
        dialog.Save();
        EXPECT_EQ(FilterOf("a"), "pid == 2");
      },
      true);
  EXPECT_FALSE(FindProfile("a")->state.row);
  EXPECT_THAT(m_host.TakeBoxes(), HasSubstr("There is a profile \"A\". Replace it?"));
}

TEST_F(ProfilesDialog, AppliesTheCurrentOneAndSaysWhatItMissed) {
  Keep("a", "pid == 1");
  Keep("b", "pid == 2");
  Run([this](Dialog& dialog) {
    EXPECT_EQ(dialog.Current(), 0);
    EXPECT_EQ(dialog.m_name, "a");
    dialog.Select(1);
    dialog.ApplyCurrent();
    EXPECT_EQ(m_host.TakeBoxes(), "");
    m_missed = "There are no columns X.\n";
    dialog.ApplyCurrent();
    EXPECT_THAT(m_host.TakeBoxes(), HasSubstr("There are no columns X."));
    dialog.Select(7);
    EXPECT_EQ(dialog.Current(), 1);
  });
  EXPECT_EQ(m_applied, (Strings{"pid == 2", "pid == 2"}));
}

TEST_F(ProfilesDialog, RenamesAndDeletesAfterAQuestion) {
  Keep("a", "pid == 1");
  Keep("b", "pid == 2");
  Run([this](Dialog& dialog) {
    dialog.m_name = "b";
    dialog.Rename();
    EXPECT_THAT(m_host.TakeBoxes(), HasSubstr("There is a profile of this name already."));
    dialog.m_name = "c";
    dialog.Rename();
    EXPECT_EQ(dialog.Names(), (Strings{"b", "c"}));
    EXPECT_EQ(dialog.Current(), 1);
    m_host.AnswerBox(BoxAnswer::No);
    dialog.Delete();
    EXPECT_EQ(dialog.Names(), (Strings{"b", "c"}));
    m_host.AnswerBox(BoxAnswer::Yes);
    dialog.Delete();
    EXPECT_EQ(dialog.Names(), Strings{"b"});
    EXPECT_EQ(dialog.m_name, "b");
    m_host.AnswerBox(BoxAnswer::Yes);
    dialog.Delete();
    EXPECT_EQ(dialog.Current(), -1);
    EXPECT_EQ(dialog.m_name, "");
    dialog.Delete();
    dialog.Rename();
    dialog.Export();
  });
  EXPECT_EQ(FilterOf("c"), "no profile");
}

TEST_F(ProfilesDialog, AProfileGoesToAFileAndComesFromOne) {
  Keep("a/b", "pid == 1");
  const std::string path = m_dir.File("out.profile");
  Run([&](Dialog& dialog) {
    m_host.AnswerFileDialog(path);
    dialog.Export();
    EXPECT_EQ(m_host.m_fileRequests.back().suggestedName, "a-b.profile");
    m_host.AnswerBox(BoxAnswer::Yes);
    dialog.Delete();
    m_host.AnswerFileDialog(path);
    dialog.Import();
    EXPECT_EQ(dialog.Names(), Strings{"a/b"});
    m_host.AnswerFileDialog(path);
    m_host.AnswerBox(BoxAnswer::No);
    dialog.Import();
    m_host.TakeBoxes();
    m_host.AnswerFileDialog(m_dir.File("bad", "{}"));
    dialog.Import();
    EXPECT_THAT(m_host.TakeBoxes(), HasSubstr("bad: not of the form tessera-profile"));
  });
  EXPECT_EQ(FilterOf("a/b"), "pid == 1");
}

TEST_F(ProfilesDialog, SaysWhatAProfileHas) {
  Profile profile{"a", {}};
  profile.state.columns = {{"Sev", 40, true}, {"PID", 40, false}};
  profile.state.filter = "pid == 1";
  profile.state.colours.emplace();
  profile.state.tree = true;
  profile.state.panes = {"Details"};
  ASSERT_TRUE(KeepProfile(profile, nullptr));
  Run([](Dialog& dialog) {
    EXPECT_EQ(dialog.Description(), "1 column, filter pid == 1, no colours, tree, Details");
    dialog.Select(-1);
    EXPECT_EQ(dialog.Description(), "");
  });
}

}  // namespace
