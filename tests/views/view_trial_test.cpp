// A view that is on trial: by this program, by another one that runs, and by one that has ended.
#include "views/view_trial.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "settings/registry.h"
#include "support/temp_dir.h"
#include "views/stored_views.h"

namespace {

constexpr char kSource[] = "/a.trc";

class ViewTrial : public testing::Test {
 protected:
  ViewTrial() {
    SetSettingsFile(m_dir.File("settings.ini"));
    Store("pid == 1");
  }
  ~ViewTrial() override { SetSettingsFile(""); }

  static void Store(const std::string& filter) {
    StoredView view{.source = kSource};
    view.state.filter = filter;
    ASSERT_TRUE(StoreView(view, nullptr));
  }
  static StoredView Stored() {
    return ReadStoredView(kSource, nullptr).value_or(StoredView{.source = "none"});
  }
  // Another instance that has begun a trial; it waits until it is ended.
  static pid_t BeginInAnother() {
    const pid_t program = fork();
    if (program == 0) {
      BeginViewTrial(kSource);
      for (;;) pause();
    }
    while (!Stored().onTrial) usleep(1000);
    return program;
  }
  static void End(pid_t program) {
    kill(program, SIGKILL);
    int status = 0;
    EXPECT_EQ(waitpid(program, &status, 0), program);
  }

  TempDir m_dir;
};

TEST_F(ViewTrial, OnlyTheMarkChanges) {
  BeginViewTrial(kSource);
  EXPECT_TRUE(Stored().onTrial);
  EXPECT_EQ(Stored().program, static_cast<std::uint64_t>(getpid()));
  EXPECT_EQ(Stored().state.filter, "pid == 1");
  EndViewTrial(kSource);
  EXPECT_FALSE(Stored().onTrial);
  EXPECT_EQ(Stored().program, 0u);
  EXPECT_EQ(Stored().state.filter, "pid == 1");
  BeginViewTrial("/none.trc");
  EXPECT_FALSE(ReadStoredView("/none.trc", nullptr));
}

TEST_F(ViewTrial, WhatAnotherProgramKeepsDuringTheTrialStays) {
  BeginViewTrial(kSource);
  Store("pid == 2");
  EndViewTrial(kSource);
  EXPECT_EQ(Stored().state.filter, "pid == 2");
}

TEST_F(ViewTrial, AnotherProgramThatStillRunsHasNotFailed) {
  const pid_t other = BeginInAnother();
  EXPECT_FALSE(HasFailedTrial(Stored()));
  EndViewTrial(kSource);
  EXPECT_TRUE(Stored().onTrial) << "its trial goes on";
  End(other);
  EXPECT_TRUE(HasFailedTrial(Stored()));
}

TEST_F(ViewTrial, ANumberThatIsThatOfSomethingElseByNowHasFailed) {
  for (const std::uint64_t program : {std::uint64_t{0}, std::uint64_t{1}, ~std::uint64_t{0},
                                      static_cast<std::uint64_t>(getppid())}) {
    StoredView view = Stored();
    view.onTrial = true;
    view.program = program;
    EXPECT_TRUE(HasFailedTrial(view)) << program;
  }
  EXPECT_FALSE(HasFailedTrial(Stored())) << "not on trial";
}

}  // namespace
