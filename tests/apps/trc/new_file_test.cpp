// A file that a command makes gets its name only when it is complete.
#include <sys/stat.h>

#include "run_trc.h"
#include "support/folder_names.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

namespace fs = std::filesystem;

class TrcNewFile : public testing::Test {
 protected:
  // So many that each command still writes when the signal comes: it shows what it does after 100
  // ms only. A conversion is the fastest.
  static constexpr unsigned kGenTraces = 25000000;
#ifdef __SANITIZE_THREAD__
  static constexpr unsigned kTraces = 500000, kOldTraces = 500000;
#else
  static constexpr unsigned kTraces = 2000000, kOldTraces = 3000000;
#endif
  static constexpr char kKept[] = "what stood there before";

  static void SetUpTestSuite() {
    s_samples = new TempDir;
    ASSERT_EQ(RunTrc({"gen", "-n", std::to_string(kTraces), s_samples->File("new.trc")}).status, 0);
    ASSERT_EQ(RunTrc({"gen", "-n", std::to_string(kOldTraces), "--old", s_samples->File("old.trc")})
                  .status,
              0);
  }
  static void TearDownTestSuite() {
    delete std::exchange(s_samples, nullptr);
  }

  // Commands that write m_out for long, with what a terminal shows of each meanwhile.
  std::vector<std::pair<std::vector<std::string>, std::string>> Writers() const {
    const std::string file = s_samples->File("new.trc");
    return {{{"save", file, m_out}, "Saving..."},
            {{"save", file, m_out, "--uncheck", "All Severities/Error"}, "Saving..."},
            {{"export", file, m_out}, "Writing..."},
            {{"export", file, m_out, "-f", "jsonl"}, "Writing..."},
            {{"tree", "--export", file, m_out}, "Writing..."},
            {{"convert", s_samples->File("old.trc"), m_out}, "Converting..."},
            {{"gen", "-n", std::to_string(kGenTraces), m_out}, "Writing traces..."}};
  }
  std::set<std::string> Folder() const {
    return NamesIn(m_temp.Path());
  }
  static unsigned All(const std::string& command) {
    return command == "gen" ? kGenTraces : command == "convert" ? kOldTraces : kTraces;
  }
  static std::string AfterAll(const std::string& command) {
    return "interrupted after " + std::to_string(All(command)) + " ";
  }
  // Signals the command while it writes. On a busy machine it may be ready before: then once more.
  TrcRun SignalWhileItWrites(const std::vector<std::string>& arguments, const std::string& shown,
                             int signal) const {
    const bool kept = fs::exists(m_out);
    for (int tries = 1;; ++tries) {
      TrcProcess trc({.arguments = arguments, .errIsTerminal = true});
      trc.ReadErrUntil(shown);
      trc.Signal(signal);
      TrcRun run = trc.Finish();
      const bool late = run.status == 0 || run.err.find(AfterAll(arguments[0])) != run.err.npos;
      if (!late || tries == kTries) return run;
      fs::remove(m_out);
      if (kept) m_temp.File("out", kKept);
    }
  }

  static constexpr int kTries = 20;
  static inline TempDir* s_samples = nullptr;
  TempDir m_temp;
  const std::string m_out = m_temp.File("out", kKept);
};

TEST_F(TrcNewFile, AnInterruptIsHeardAtOnceAndWhatStoodThereStays) {
  for (const auto& [arguments, shown] : Writers()) {
    const TrcRun run = SignalWhileItWrites(arguments, shown, SIGINT);
    EXPECT_EQ(run.status, 130) << arguments[0];
    EXPECT_NE(run.err.find("and not written"), std::string::npos) << arguments[0];
    // A text's writer counts no traces.
    const std::string_view word = "interrupted after ";
    const std::size_t after = run.err.find(word);
    const bool counts = !shown.starts_with("Writing...");
    ASSERT_EQ(after != std::string::npos, counts) << arguments[0] << run.err;
    if (counts) {
      EXPECT_LT(std::stoul(run.err.substr(after + word.size())), All(arguments[0])) << arguments[0];
    }
    EXPECT_TRUE(ReadAll(m_out) == kKept) << arguments[0];
    EXPECT_EQ(Folder(), std::set<std::string>{"out"}) << arguments[0];
  }
}

TEST_F(TrcNewFile, EndedFromOutsideNoHalfFileStaysAndNothingBesideIt) {
  fs::remove(m_out);
  for (const int signal : {SIGTERM, SIGHUP}) {
    for (const auto& [arguments, shown] : Writers()) {
      const TrcRun run = SignalWhileItWrites(arguments, shown, signal);
      EXPECT_EQ(run.status, 128 + signal) << arguments[0];
      EXPECT_EQ(Folder(), std::set<std::string>{}) << arguments[0];
      fs::remove(m_out);
    }
  }
}

TEST_F(TrcNewFile, KilledInTheMiddleLeavesTheNameAlone) {
  const auto [arguments, shown] = Writers().front();
  const TrcRun run = SignalWhileItWrites(arguments, shown, SIGKILL);
  EXPECT_EQ(run.status, 1000 + SIGKILL);
  EXPECT_EQ(ReadAll(m_out), kKept);
}

TEST_F(TrcNewFile, AFullDiskLeavesTheNameAlone) {
  for (const auto& [arguments, shown] : Writers()) {
    const TrcRun run = RunTrc({.arguments = arguments, .fileBytesMax = 100'000});
    EXPECT_EQ(run.status, 2) << arguments[0];
    EXPECT_NE(run.err.find("Error writing to file. File too large"), std::string::npos) << run.err;
    EXPECT_EQ(ReadAll(m_out), kKept) << arguments[0];
    EXPECT_EQ(Folder(), std::set<std::string>{"out"}) << arguments[0];
  }
}

class TrcSmallNewFile : public testing::Test {
 protected:
  TrcRun Save(const std::string& out) const { return RunTrc({"save", m_in, out}); }

  TempDir m_temp;
  const TrcImage m_image = TrcImage().Trace("up");
  const std::string m_in = m_image.WriteTo(m_temp.File("in.trc"));
};

TEST_F(TrcSmallNewFile, TakesTheRightsOfTheOneWhosePlaceItTakes) {
  const std::string out = m_temp.File("out.trc", "old");
  ASSERT_EQ(chmod(out.c_str(), 0604), 0);
  ASSERT_EQ(Save(out).status, 0);
  struct stat status;
  ASSERT_EQ(stat(out.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0604u);
  EXPECT_EQ(ReadAll(out), m_image.Bytes());
}

TEST_F(TrcSmallNewFile, FollowsASymbolicLink) {
  const std::string out = m_temp.File("out.trc", "old"), link = m_temp.File("link.trc");
  fs::create_symlink("out.trc", link);
  ASSERT_EQ(Save(link).status, 0);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(ReadAll(out), m_image.Bytes());
}

TEST_F(TrcSmallNewFile, AFolderOrAPipeIsRefusedWithTheReason) {
  const std::string folder = m_temp.File("folder"), pipe = m_temp.File("pipe");
  fs::create_directory(folder);
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(Save(folder).err, "trc: " + folder + ": Error creating file. Is a directory\n");
  EXPECT_EQ(Save(pipe).err, "trc: " + pipe + ": Error creating file. No such device or address\n");
}

TEST_F(TrcSmallNewFile, AFileInAFolderThatMayNotBeWrittenIsWrittenInItsPlace) {
  const std::string folder = m_temp.File("folder"), out = folder + "/out.trc";
  fs::create_directory(folder);
  std::ofstream(out) << "old";
  fs::permissions(out, fs::perms(0666));
  fs::permissions(m_temp.Path(), fs::perms(0755));
  // In a process of its own, which gives up the rights that an administrator has.
  EXPECT_EXIT(
      {
        fs::permissions(folder, fs::perms(0555));
        if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
        _exit(Save(out).status);
      },
      testing::ExitedWithCode(0), "");
  fs::permissions(folder, fs::perms(0755));
  EXPECT_EQ(ReadAll(out), m_image.Bytes());
}

}  // namespace
