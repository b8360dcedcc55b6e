// Views and profiles in folders that other programs, and people, write too.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "settings/registry.h"
#include "support/temp_dir.h"
#include "views/kept_files.h"
#include "views/stored_views.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class SharedViews : public testing::Test {
 protected:
  SharedViews() { SetSettingsFile(m_dir.File("settings.ini")); }
  ~SharedViews() override { SetSettingsFile(""); }

  static StoredView Of(const std::string& source, const std::string& filter) {
    StoredView view{.source = source};
    view.state.filter = filter;
    return view;
  }
  static std::string FilterOf(const std::string& source) {
    std::string why;
    const auto view = ReadStoredView(source, &why);
    return view ? view->state.filter.value_or("none") : "no view, " + why;
  }
  static std::string FilterOfProfile(const std::string& name) {
    const auto profile = FindProfile(name);
    return profile ? profile->state.filter.value_or("none") : "no profile";
  }
  static std::string Names() {
    std::string names;
    for (const Profile& profile : ReadProfiles()) names += profile.name + ";";
    return names;
  }
  // As somebody puts it there by hand.
  void Place(const std::string& file, const Profile& profile) {
    std::string text;
    ASSERT_TRUE(ProfileText(profile, text, nullptr));
    fs::create_directories(ProfileFolder());
    std::ofstream(ProfileFolder() + "/" + file) << text;
  }
  std::string ProfileFolder() const { return m_dir.File("settings.ini.profiles"); }
  std::string ViewFolder() const { return m_dir.File("settings.ini.views"); }

  TempDir m_dir;
  std::string m_why;
};

TEST_F(SharedViews, AFileWhoseNameIsNoUtf8HasAViewLikeAnyOther) {
  const std::string latin1 = "/logs/caf\xe9.trc", other = "/logs/caf\xe8.trc";
  ASSERT_TRUE(StoreView(Of(latin1, "pid == 1"), &m_why)) << m_why;
  EXPECT_EQ(FilterOf(latin1), "pid == 1");
  EXPECT_EQ(FilterOf(other), "no view, ");
}

TEST_F(SharedViews, AViewThatIsTooLongLeavesTheOneBeforeAsItWas) {
  ASSERT_TRUE(StoreView(Of("/a.trc", "pid == 1"), nullptr));
  StoredView long_ = Of("/a.trc", "pid == 2");
  long_.state.colours = ViewColours{true, {}};
  for (int i = 0; i < 600; ++i)
    long_.state.colours->rules.push_back({"a", std::string(kColourTextBytes, 'x'), {}, {}, true});
  EXPECT_FALSE(StoreView(long_, &m_why));
  EXPECT_THAT(m_why, HasSubstr("too long"));
  EXPECT_EQ(FilterOf("/a.trc"), "pid == 1");
}

// While one program reads a broken file, another one replaces it.
TEST_F(SharedViews, AFileThatIsWholeAgainIsNotPutAside) {
  const KeptFiles files(m_dir.File("kept"), 10, 100);
  ASSERT_TRUE(files.Write("a", "broken", &m_why)) << m_why;
  std::string broken;
  ASSERT_EQ(files.Read("a", broken, nullptr), KeptFiles::Found::Text);
  ASSERT_TRUE(files.Write("a", "whole", &m_why)) << m_why;
  files.PutAside("a", broken);
  std::string text;
  EXPECT_EQ(files.Read("a", text, nullptr), KeptFiles::Found::Text);
  EXPECT_EQ(text, "whole");
  files.PutAside("a", text);
  EXPECT_EQ(files.Read("a", text, nullptr), KeptFiles::Found::Nothing);
}

TEST_F(SharedViews, TwoProgramsThatWriteTheSameViewLeaveAWholeOneAndAllOthers) {
  ASSERT_TRUE(StoreView(Of("/other.trc", "pid == 9"), nullptr));
  constexpr int kPrograms = 4, kRounds = 40;
  std::vector<pid_t> programs;
  for (int program = 0; program < kPrograms; ++program) {
    programs.push_back(fork());
    if (programs.back() != 0) continue;
    const std::string filter(static_cast<std::size_t>(1000 * (program + 1)), 'x');
    bool written = true;
    for (int round = 0; round < kRounds; ++round)
      written = StoreView(Of("/a.trc", filter), nullptr) && written;
    _exit(written ? 0 : 1);
  }
  int reads = 0;
  for (; reads < kRounds; ++reads) {
    const std::string filter = FilterOf("/a.trc");
    if (filter.starts_with("no view, ")) {
      EXPECT_EQ(filter, "no view, ");
      continue;
    }
    EXPECT_EQ(filter.size() % 1000, 0u);
  }
  for (const pid_t program : programs) {
    int status = 0;
    ASSERT_EQ(waitpid(program, &status, 0), program);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(FilterOf("/a.trc").find_first_not_of('x'), std::string::npos);
  EXPECT_EQ(FilterOf("/other.trc"), "pid == 9");
  EXPECT_EQ(std::distance(fs::directory_iterator(ViewFolder()), fs::directory_iterator()), 2);
}

TEST_F(SharedViews, ADiskThatIsFullLeavesTheViewBefore) {
  ASSERT_TRUE(StoreView(Of("/a.trc", "pid == 1"), nullptr));
  const pid_t program = fork();
  if (program == 0) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit full = {100, 100};
    setrlimit(RLIMIT_FSIZE, &full);
    std::string why;
    const bool written = StoreView(Of("/a.trc", std::string(10'000, 'x')), &why);
    _exit(written || why.empty() ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(program, &status, 0), program);
  EXPECT_EQ(status, 0) << "it fails with a reason";
  EXPECT_EQ(FilterOf("/a.trc"), "pid == 1");
  EXPECT_EQ(std::distance(fs::directory_iterator(ViewFolder()), fs::directory_iterator()), 1);
}

// ---- profiles

TEST_F(SharedViews, AProfileIsFoundByItsNameWhateverItsFileIsCalled) {
  Profile profile{"Slow", {}};
  profile.state.filter = "pid == 1";
  Place("from-a-friend.json", profile);
  EXPECT_EQ(Names(), "Slow;");
  EXPECT_EQ(FilterOfProfile("slow"), "pid == 1");
  profile.state.filter = "pid == 2";
  EXPECT_TRUE(KeepProfile(profile, &m_why)) << m_why;
  EXPECT_EQ(Names(), "Slow;") << "in its place";
  EXPECT_EQ(FilterOfProfile("slow"), "pid == 2");
  EXPECT_TRUE(RenameProfile("Slow", "Fast", &m_why)) << m_why;
  EXPECT_EQ(Names(), "Fast;");
  Place("again.json", {"Fast", {}});
  DeleteProfile("FAST");
  EXPECT_EQ(Names(), "");
}

TEST_F(SharedViews, AProfileWhoseNameWasEditedIsFoundByTheNewNameAlone) {
  ASSERT_TRUE(KeepProfile({"a", {}}, &m_why)) << m_why;
  const std::string path = fs::directory_iterator(ProfileFolder())->path();
  std::string text;
  ASSERT_TRUE(ProfileText({"b", {}}, text, nullptr));
  std::ofstream(path) << text;
  EXPECT_EQ(Names(), "b;");
  EXPECT_FALSE(FindProfile("a"));
  EXPECT_TRUE(FindProfile("b"));
  EXPECT_TRUE(KeepProfile({"a", {}}, &m_why)) << m_why;
  EXPECT_EQ(Names(), "a;b;");
}

TEST_F(SharedViews, FilesThatAreNoProfilesHideNone) {
  fs::create_directories(ProfileFolder());
  for (int i = 0; i < 300; ++i)
    std::ofstream(ProfileFolder() + "/x" + std::to_string(i) + ".json") << "{}";
  for (int i = 0; i < 20; ++i)
    ASSERT_TRUE(KeepProfile({"p" + std::to_string(i), {}}, &m_why)) << m_why;
  EXPECT_EQ(ReadProfiles().size(), 20u);
}

TEST_F(SharedViews, ANameOfAProfileMayHaveAnyBytes) {
  const std::string names[] = {"../x",
                               "/etc/passwd",
                               ".",
                               "\xF0\x9F\x90\x8C snail",
                               "a\xff",
                               "\xE2\x80\xAE",
                               std::string("a\0b", 3),
                               std::string(256, 'n')};
  for (const std::string& name : names) {
    ASSERT_TRUE(KeepProfile({name, {}}, &m_why)) << name << m_why;
    EXPECT_TRUE(FindProfile(name)) << name;
  }
  const std::vector<Profile> kept = ReadProfiles();
  EXPECT_EQ(kept.size(), std::size(names));
  for (const Profile& profile : kept) {
    EXPECT_TRUE(FindProfile(profile.name)) << profile.name << " as it is listed";
    DeleteProfile(profile.name);
  }
  EXPECT_EQ(Names(), "");
  EXPECT_FALSE(KeepProfile({std::string(300, 'n'), {}}, &m_why));
  EXPECT_EQ(m_why, "This name is too long.");
  EXPECT_EQ(fs::exists(m_dir.File("x.json")) || fs::exists(m_dir.File("x")), false);
}

}  // namespace
