// trc dump --follow: a file that is rotated, cut, removed or replaced.
#include "followed_file.h"

namespace {

class TrcFollowRotation : public TrcFollow {
 protected:
  // A traced program whose library writes the file, and numbers it away at each megabyte.
  TrcStart Program(const std::string& count, const std::string& options,
                   const std::string& rate = "0") const {
    return {.arguments = {"emit", "--app", "load", "--count", count, "--text-bytes", "3000",
                          "--rate", rate},
            .environment = {"QUOR_AUTOSTART=0", "QUOR_SOCKET=" + m_directory.File("none"),
                            "QUOR_SETTINGS=*=max",
                            "QUOR_SINK=file:" + File() + "?maxsize=1" + options}};
  }
  // The numbers of the traces, in the order in which they were printed. Reports of losses have
  // none.
  static std::vector<std::uint32_t> Numbers(const std::string& out) {
    constexpr std::string_view kKey = "\"count\":";
    std::vector<std::uint32_t> numbers;
    // The key stands before all texts. The whole output as JSON would take much memory.
    for (std::size_t line = 0; line < out.size(); line = out.find('\n', line) + 1) {
      const std::size_t key = out.find(kKey, line) + kKey.size();
      const auto number = static_cast<std::uint32_t>(std::stoul(out.substr(key, 10)));
      if (number != kNoSequenceNumber) numbers.push_back(number);
    }
    return numbers;
  }
  static void ExpectFrom1(const std::vector<std::uint32_t>& numbers, std::size_t last) {
    ASSERT_EQ(numbers.size(), last);
    for (std::size_t i = 0; i < last; ++i) ASSERT_EQ(numbers[i], i + 1);
  }
  // The traces in all files that the program has left.
  std::size_t InAllFiles() const {
    std::size_t traces = 0;
    for (const auto& file : std::filesystem::directory_iterator(m_directory.Path()))
      if (file.path().extension() == ".trc")
        traces += Numbers(RunTrc({"dump", file.path(), "-f", "jsonl"}).out).size();
    return traces;
  }
  std::size_t Files() const {
    const auto files = std::filesystem::directory_iterator(m_directory.Path());
    return static_cast<std::size_t>(std::count_if(begin(files), end(files), [](const auto& file) {
      return file.path().extension() == ".trc";
    }));
  }
  static void WaitForNumbers(TrcProcess& trc, std::size_t wanted) {
    std::size_t lines = Lines(trc, wanted);
    while (!trc.Late() && Numbers(trc.ReadOut(0)).size() < wanted) lines = Lines(trc, lines + 1);
  }
};

TEST_F(TrcFollowRotation, NothingIsMissedAndNothingComesTwiceWhileTheLibraryRotates) {
  TrcProcess trc({.arguments = Follow(File())});
  trc.ReadErrUntil("waiting");
  EXPECT_EQ(RunTrc(Program("4000", "", "4000")).status, 0);
  const std::size_t written = InAllFiles();
  EXPECT_GT(Files(), 9u);
  WaitForNumbers(trc, written);
  const TrcRun run = End(trc);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "trc: " + File() + ": not there yet; waiting for it\n");
  ExpectFrom1(Numbers(run.out), written);
  EXPECT_EQ(LastOf(run.out).at("i"), std::count(run.out.begin(), run.out.end(), '\n') - 1);
}

TEST_F(TrcFollowRotation, AReaderWhoIsSlowerThanManyRotationsMissesNothing) {
  EXPECT_EQ(RunTrc(Program("100", "")).status, 0);
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_GE(Lines(trc, 100), 100u);
  const std::size_t first = Numbers(trc.ReadOut(0)).size();
  std::size_t written = 0;
  WhileStopped(trc, [&] {
    EXPECT_EQ(RunTrc(Program("4000", "")).status, 0);
    written = InAllFiles();
  });
  EXPECT_GT(Files(), 9u);
  WaitForNumbers(trc, written);
  const TrcRun run = End(trc);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  std::vector<std::uint32_t> numbers = Numbers(run.out);
  ASSERT_EQ(numbers.size(), written);
  numbers.erase(numbers.begin(), numbers.begin() + static_cast<std::ptrdiff_t>(first));
  ExpectFrom1(numbers, written - first);
}

TEST_F(TrcFollowRotation, FilesThatWereRemovedBeforeTheyWereReadAreTold) {
  EXPECT_EQ(RunTrc(Program("100", "")).status, 0);
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_GE(Lines(trc, 100), 100u);
  const std::size_t first = Numbers(trc.ReadOut(0)).size();
  std::size_t left = 0;
  WhileStopped(trc, [&] {
    EXPECT_EQ(RunTrc(Program("4000", "&maxfiles=3")).status, 0);
    EXPECT_EQ(Files(), 4u);
    left = InAllFiles();
  });
  WaitForNumbers(trc, first + left);
  const TrcRun run = End(trc);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "trc: " + File() +
                         ": files were removed before they could be read; traces may be missing\n");
  const std::vector<std::uint32_t> numbers = Numbers(run.out);
  ASSERT_EQ(numbers.size(), first + left);
  for (std::size_t i = first + 1; i < numbers.size(); ++i)
    ASSERT_EQ(numbers[i], numbers[i - 1] + 1) << "the oldest that is left comes first";
}

TEST_F(TrcFollowRotation, TheRestOfAFileThatIsNumberedAwayComesBeforeTheNext) {
  for (const std::string& numbered :
       {m_directory.File("web.1.trc"), File() + ".1", File() + ".1.trc"}) {
    const TrcImage begin = Image("a", 2), whole = Image("a", 4);
    begin.WriteTo(File());
    TrcProcess trc({.arguments = Follow(File())});
    EXPECT_EQ(Lines(trc, 2), 2u);
    WhileStopped(trc, [&] {
      std::filesystem::rename(File(), numbered);
      AppendTo(numbered, Behind(whole, begin));
      Image("b", 2).WriteTo(File());
    });
    EXPECT_EQ(Lines(trc, 6), 6u);
    const TrcRun run = End(trc);
    EXPECT_EQ(Texts(run.out), "a0 a1 a2 a3 b0 b1");
    EXPECT_EQ(JsonLinesOf(run.out).back().at("component"), "b") << "each file has its own ids";
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    std::filesystem::remove(numbered);
  }
}

TEST_F(TrcFollowRotation, AnIdThatTheNextFileHasNoNameForHasNotThatOfTheOldFile) {
  Image("a", 1).WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 1), 1u);
  WhileStopped(trc, [&] {
    std::filesystem::rename(File(), m_directory.File("web.1.trc"));
    TrcImage().Trace({.text = "nameless", .component = 7}).WriteTo(File());
  });
  EXPECT_EQ(Lines(trc, 2), 2u);
  const auto traces = JsonLinesOf(End(trc).out);
  ASSERT_EQ(traces.size(), 2u);
  EXPECT_EQ(traces[0].at("component"), "a");
  EXPECT_TRUE(traces[1].at("component").is_null());
}

TEST_F(TrcFollowRotation, AMomentWithoutASuccessorIsNothingToSay) {
  Image("a", 1).WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 1), 1u);
  std::filesystem::rename(File(), m_directory.File("web.1.trc"));
  Rest();
  Image("b", 1).WriteTo(File());
  EXPECT_EQ(Lines(trc, 2), 2u);
  EXPECT_EQ(End(trc).err, "");
}

TEST_F(TrcFollowRotation, AFileWithoutASuccessorIsReadOn) {
  const TrcImage begin = Image("a", 1), whole = Image("a", 3), longer = Image("a", 2);
  begin.WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 1), 1u);
  std::filesystem::rename(File(), m_directory.File("aside"));
  AppendTo(m_directory.File("aside"), Behind(longer, begin));
  EXPECT_EQ(Lines(trc, 2), 2u);
  trc.ReadErrUntil("gone");
  std::filesystem::rename(m_directory.File("aside"), File());
  Append(Behind(whole, longer));
  EXPECT_EQ(Lines(trc, 3), 3u);
  const TrcRun run = End(trc);
  EXPECT_EQ(Texts(run.out), "a0 a1 a2");
  EXPECT_EQ(run.err, "trc: " + File() + ": gone; waiting for it to come back\n");
}

TEST_F(TrcFollowRotation, AFileThatIsRemovedMayComeBackAndThatItIsGoneIsSaidOnce) {
  Image("a", 2).WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 2), 2u);
  std::filesystem::remove(File());
  trc.ReadErrUntil("gone");
  Rest(2500);
  Image("b", 1).WriteTo(File());
  EXPECT_EQ(Lines(trc, 3), 3u);
  const TrcRun run = End(trc);
  EXPECT_EQ(Texts(run.out), "a0 a1 b0");
  EXPECT_EQ(run.err, "trc: " + File() + ": gone; waiting for it to come back\ntrc: " + File() +
                         ": another file has taken its place; it is read from its beginning\n");
  EXPECT_EQ(run.status, 0);
}

TEST_F(TrcFollowRotation, AFileThatIsCutIsReadFromItsBeginningAgain) {
  const std::string told = "trc: " + File() + ": cut short; it is read from its beginning again\n";
  for (const unsigned traces : {0u, 1u, 5u, 500u}) {
    Image("a", 3).WriteTo(File());
    TrcProcess trc({.arguments = Follow(File())});
    EXPECT_EQ(Lines(trc, 3), 3u);
    // With 5 it is longer at once than it was before.
    WhileStopped(trc, [&] { Image("b", traces).WriteTo(File()); });
    trc.ReadErrUntil("cut short");
    if (traces < 2) Append(Behind(Image("b", 2), Image("b", traces)));
    const unsigned now = std::max(traces, 2u);
    EXPECT_EQ(Lines(trc, 3 + now), 3u + now);
    const TrcRun run = End(trc);
    const auto given = JsonLinesOf(run.out);
    EXPECT_EQ(given[3].at("text"), "b0");
    EXPECT_EQ(given[3].at("component"), "b");
    EXPECT_EQ(given.back().at("text"), "b" + std::to_string(now - 1));
    EXPECT_EQ(run.err, told);
    EXPECT_EQ(run.status, 0);
  }
}

// Of the passes over what is there, the second counts it for --tail, and the third leaves it out.
TEST_F(TrcFollowRotation, WhatIsCountedOfAFileThatIsCutLeavesNothingOutOfTheNewOne) {
  constexpr std::size_t kBytes = std::size_t{24} << 20;
  const TrcImage begin = Image("a", 1);
  const std::string record = Behind(Image("a", 2), begin);
  std::string old = begin.Bytes();
  while (old.size() < kBytes) old += record;
  for (const std::uint64_t passes : {1u, 2u}) {
    bool isInPass = false;
    for (int attempt = 0; attempt < 20 && !isInPass; ++attempt) {
      m_directory.File("web.trc", old);
      TrcProcess trc({.arguments = Follow(File(), {"--tail", "2"})});
      while (BytesRead(trc) < passes * kBytes + kBytes / 4 && !trc.Late()) Rest(1);
      WhileStopped(trc, [&] {
        isInPass = BytesRead(trc) < (passes + 1) * kBytes;
        Image("b", 5).WriteTo(File());
      });
      const std::size_t wanted = passes == 1 ? 2 : 5;
      if (!isInPass) continue;
      EXPECT_EQ(Lines(trc, wanted), wanted);
      EXPECT_EQ(Texts(End(trc).out), passes == 1 ? "b3 b4" : "b0 b1 b2 b3 b4");
    }
    EXPECT_TRUE(isInPass);
  }
}

TEST_F(TrcFollowRotation, AWriterMayTakeBackTheHalfOfARecord) {
  const TrcImage begin = Image("a", 1), whole = Image("a", 2);
  begin.WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 1), 1u);
  Append(Behind(whole, begin).substr(0, 30));
  Rest();
  std::filesystem::resize_file(File(), begin.Size());
  Rest();
  Append(Behind(whole, begin));
  EXPECT_EQ(Lines(trc, 2), 2u);
  const TrcRun run = End(trc);
  EXPECT_EQ(Texts(run.out), "a0 a1");
  EXPECT_EQ(run.err, "");
}

TEST_F(TrcFollowRotation, AWriterWhoIsKilledInTheMiddleOfARecordLeavesItToNobody) {
  const TrcImage begin = Image("a", 1), whole = Image("a", 2);
  begin.WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 1), 1u);
  const std::string half = Behind(whole, begin).substr(0, 30);
  const pid_t writer = fork();
  if (writer == 0) {
    const int file = open(File().c_str(), O_WRONLY | O_APPEND);
    if (write(file, half.data(), half.size()) > 0) raise(SIGKILL);
    _exit(1);
  }
  int status = 0;
  EXPECT_EQ(waitpid(writer, &status, 0), writer);
  ASSERT_TRUE(WIFSIGNALED(status));
  Rest();
  EXPECT_EQ(Lines(trc, 1), 1u);
  // The next writer numbers the file away, as the library does.
  EXPECT_EQ(RunTrc(Program("5", "")).status, 0);
  EXPECT_GE(Lines(trc, 6), 6u);
  const TrcRun run = End(trc);
  EXPECT_EQ(run.status, 3);
  EXPECT_NE(run.err.find("damaged: last record cut at byte"), std::string::npos) << run.err;
  ASSERT_GE(Numbers(run.out).size(), 2u);
  EXPECT_EQ(Numbers(run.out)[1], 1u);
}

TEST_F(TrcFollowRotation, WhatIsPutInThePlaceOfTheFileMustBeATraceFile) {
  Image("a", 1).WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 1), 1u);
  std::filesystem::rename(m_directory.File("other", "no traces, but a text"), File());
  const TrcRun run = trc.Finish();
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find(File() + ": Invalid format.\n"), std::string::npos) << run.err;
  EXPECT_EQ(Texts(run.out), "a0");
}

}  // namespace
