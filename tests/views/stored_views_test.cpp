// Views and profiles are kept in files of their own, whatever is in the folder and whenever the
// program is killed.
#include "views/stored_views.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "settings/registry.h"
#include "support/folder_names.h"
#include "support/temp_dir.h"
#include "views/kept_files.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class StoredViews : public testing::Test {
 protected:
  StoredViews() { SetSettingsFile(m_dir.File("settings.ini")); }
  ~StoredViews() override { SetSettingsFile(""); }

  static StoredView Of(const std::string& source, const std::string& filter) {
    StoredView view{.source = source};
    view.state.filter = filter;
    return view;
  }
  void Store(const StoredView& view) { ASSERT_TRUE(StoreView(view, &m_why)) << m_why; }
  std::string FilterOf(const std::string& source) {
    const auto view = ReadStoredView(source, &m_why);
    return view ? view->state.filter.value_or("none") : "no view";
  }
  std::string PathOf(const std::string& source) const {
    return KeptFiles(Folder(), 1, 1).PathOf(source);
  }
  std::string Folder() const { return m_dir.File("settings.ini.views"); }
  std::size_t Files() const {
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& each : fs::directory_iterator(Folder())) ++files;
    return files;
  }

  TempDir m_dir;
  std::string m_why;
};

TEST_F(StoredViews, EachSourceHasItsOwn) {
  EXPECT_EQ(FilterOf("/a.trc"), "no view");
  Store(Of("/a.trc", "pid == 1"));
  Store(Of("monitor:web", "pid == 2"));
  Store(Of("/a.trc", "pid == 3"));
  EXPECT_EQ(FilterOf("/a.trc"), "pid == 3");
  EXPECT_EQ(FilterOf("monitor:web"), "pid == 2");
  EXPECT_EQ(Files(), 2u);
}

TEST_F(StoredViews, AreTheUsersAlone) {
  Store(Of("/a.trc", ""));
  struct stat status {};
  ASSERT_EQ(stat(Folder().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);
  ASSERT_EQ(stat(PathOf("/a.trc").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST_F(StoredViews, BeyondTwoHundredTheOneThatWasWrittenLongestAgoGoes) {
  for (std::size_t i = 0; i < kStoredViewsMax; ++i) {
    const std::string source = "/" + std::to_string(i);
    Store(Of(source, source));
    // In the order of their numbers, whatever the clock of the file system can tell apart.
    fs::last_write_time(PathOf(source), fs::file_time_type::clock::now() -
                                            std::chrono::hours(1000 - static_cast<int>(i)));
  }
  EXPECT_EQ(Files(), kStoredViewsMax);
  Store(Of("/0", "again"));
  Store(Of("/new", "new"));
  EXPECT_EQ(Files(), kStoredViewsMax);
  EXPECT_EQ(FilterOf("/0"), "again");
  EXPECT_EQ(FilterOf("/1"), "no view");
  EXPECT_EQ(FilterOf("/2"), "/2");
  EXPECT_EQ(FilterOf("/new"), "new");
}

TEST_F(StoredViews, ABrokenFileIsToldAboutOnceAndKeptAside) {
  Store(Of("/a.trc", "pid == 1"));
  const std::string path = PathOf("/a.trc");
  std::ofstream(path) << "{\"format\": \"tessera-view\", ";
  EXPECT_EQ(FilterOf("/a.trc"), "no view");
  EXPECT_THAT(m_why, testing::AllOf(testing::StartsWith(path), HasSubstr("no JSON")));
  m_why.clear();
  EXPECT_EQ(FilterOf("/a.trc"), "no view");
  EXPECT_EQ(m_why, "");
  EXPECT_EQ(Files(), 1u) << "the broken one";
  Store(Of("/a.trc", "pid == 2"));
  EXPECT_EQ(FilterOf("/a.trc"), "pid == 2");
}

TEST_F(StoredViews, WhatHasTheNameOfAViewMayBeAnything) {
  Store(Of("/a.trc", ""));
  const std::string path = PathOf("/a.trc"), secret = m_dir.File("secret", "{}");
  for (const auto& make : std::vector<std::function<void()>>{
           [&] { fs::create_directory(path); }, [&] { fs::create_symlink(secret, path); },
           [&] { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); },
           [&] { std::ofstream(path) << std::string(kViewBytesMax + 1, ' '); }}) {
    fs::remove_all(path);
    make();
    m_why.clear();
    EXPECT_EQ(FilterOf("/a.trc"), "no view");
    EXPECT_NE(m_why, "");
  }
  EXPECT_EQ(ReadAll(secret), "{}");
}

TEST_F(StoredViews, AnotherSourceThatHasTheSamePrintCountsAsNone) {
  Store(Of("/a.trc", "pid == 1"));
  std::string text;
  ASSERT_TRUE(ViewText(Of("/b.trc", "pid == 2"), text, nullptr));
  std::ofstream(PathOf("/a.trc")) << text;
  EXPECT_EQ(FilterOf("/a.trc"), "no view");
  EXPECT_EQ(m_why, "");
}

TEST_F(StoredViews, AProgramThatIsKilledAtAnyByteLeavesTheOldViewOrTheNewOne) {
  Store(Of("/a.trc", "old"));
  const std::string old = ReadAll(PathOf("/a.trc"));
  int steps = 0, news = 0;
  for (bool killed = true; killed; ++steps) {
    std::ofstream(PathOf("/a.trc")) << old;
    const pid_t child = fork();
    if (child == 0) {
      NotesSteps at{.pieceBytes = 1, .before = {}};
      at.before = [left = steps]() mutable {
        if (left-- == 0) kill(getpid(), SIGKILL);
      };
      _exit(StoreView(Of("/a.trc", "new"), nullptr, at) ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    killed = WIFSIGNALED(status);
    const std::string filter = FilterOf("/a.trc");
    EXPECT_TRUE(filter == "old" || filter == "new") << steps << ": " << filter;
    news += filter == "new";
  }
  EXPECT_GT(steps, 50) << "each byte is a step";
  EXPECT_EQ(news, 2) << "after the rename, and at the end";
}

TEST_F(StoredViews, PartsOfKilledProgramsGoAfterADay) {
  Store(Of("/a.trc", ""));
  const std::string fresh = Folder() + "/.x.1.part", old = Folder() + "/.x.2.part";
  std::ofstream(fresh) << "x";
  std::ofstream(old) << "x";
  fs::last_write_time(old, fs::file_time_type::clock::now() - std::chrono::hours(25));
  Store(Of("/a.trc", ""));
  EXPECT_TRUE(fs::exists(fresh));
  EXPECT_FALSE(fs::exists(old));
}

TEST_F(StoredViews, WhereNothingCanBeWrittenTheReasonHasThePath) {
  m_dir.File("settings.ini.views", "a file");
  EXPECT_FALSE(StoreView(Of("/a.trc", ""), &m_why));
  EXPECT_THAT(m_why, HasSubstr("settings.ini.views"));
}

TEST_F(StoredViews, AreOnUntilTheUserSwitchesThemOff) {
  EXPECT_TRUE(AreViewsRemembered());
  RememberViews(false);
  EXPECT_FALSE(AreViewsRemembered());
  RememberViews(true);
  EXPECT_TRUE(AreViewsRemembered());
}

TEST_F(StoredViews, OfTheDefaultSettingsAreInTheStateFolder) {
  SetSettingsFile("");
  setenv("XDG_STATE_HOME", m_dir.File("state").c_str(), 1);
  setenv("XDG_CONFIG_HOME", m_dir.File("config").c_str(), 1);
  Store(Of("/a.trc", "pid == 1"));
  EXPECT_TRUE(KeepProfile({"a", {}}, &m_why)) << m_why;
  EXPECT_TRUE(fs::exists(m_dir.File("state/tessera/views")));
  EXPECT_TRUE(fs::exists(m_dir.File("config/tessera/profiles")));
  unsetenv("XDG_STATE_HOME");
  unsetenv("XDG_CONFIG_HOME");
}

// ---- profiles

std::string Names() {
  std::string names;
  for (const Profile& profile : ReadProfiles()) names += profile.name + ";";
  return names;
}

TEST_F(StoredViews, ProfilesAreListedByNameWithoutRegardToCapitals) {
  for (const char* name : {"slow", "Errors", " b\n", "errors"})
    EXPECT_TRUE(KeepProfile({name, {}}, &m_why)) << m_why;
  EXPECT_EQ(Names(), "b;errors;slow;");
  EXPECT_TRUE(FindProfile("SLOW"));
  EXPECT_FALSE(KeepProfile({" \t", {}}, &m_why));
  EXPECT_EQ(m_why, "A profile needs a name.");
  DeleteProfile("Slow");
  EXPECT_EQ(Names(), "b;errors;");
}

TEST_F(StoredViews, ARenamedProfileKeepsItsStateAndTakesNoNameOfAnother) {
  Profile profile{"a", {}};
  profile.state.filter = "pid == 1";
  ASSERT_TRUE(KeepProfile(profile, &m_why));
  ASSERT_TRUE(KeepProfile({"b", {}}, &m_why));
  EXPECT_FALSE(RenameProfile("a", "B", &m_why));
  EXPECT_EQ(m_why, "There is a profile of this name already.");
  EXPECT_FALSE(RenameProfile("c", "d", &m_why));
  EXPECT_FALSE(RenameProfile("a", "", &m_why));
  EXPECT_EQ(Names(), "a;b;");
  EXPECT_TRUE(RenameProfile("a", "A", &m_why)) << m_why;
  EXPECT_EQ(Names(), "A;b;");
  EXPECT_TRUE(RenameProfile("A", "z", &m_why)) << m_why;
  EXPECT_EQ(Names(), "b;z;");
  EXPECT_EQ(FindProfile("z")->state.filter, "pid == 1");
}

TEST_F(StoredViews, ThereAreAHundredProfilesAtTheMost) {
  for (std::size_t i = 0; i < kProfilesMax; ++i)
    ASSERT_TRUE(KeepProfile({std::to_string(i), {}}, &m_why)) << m_why;
  EXPECT_FALSE(KeepProfile({"one more", {}}, &m_why));
  EXPECT_THAT(m_why, HasSubstr("100 profiles"));
  EXPECT_TRUE(KeepProfile({"7", {}}, &m_why)) << "in place of another";
  EXPECT_TRUE(RenameProfile("7", "seven", &m_why)) << m_why;
  EXPECT_EQ(ReadProfiles().size(), kProfilesMax);
}

TEST_F(StoredViews, AProfileThatCannotBeReadIsNotListed) {
  ASSERT_TRUE(KeepProfile({"a", {}}, &m_why));
  std::ofstream(m_dir.File("settings.ini.profiles/x.json")) << "{";
  EXPECT_EQ(Names(), "a;");
}

}  // namespace
