// trc dump --follow: many names, damage before a cut, zero bytes in place of a header.
#include "followed_file.h"
#include "input/growing_file.h"

namespace {

class TrcFollowLimits : public TrcFollow {
 protected:
  // Names of one file; three have more than there are ids. Some traces have the line 0.
  static constexpr unsigned kEach = 23'000, kStep = 100, kOnLine0 = kEach / kStep;

  // Each trace is of a source file that has its text as name, and all of one component.
  static TrcImage Named(const std::string& name) {
    TrcImage image;
    image.Name(kEach, name);
    for (unsigned i = 0; i < kEach; ++i) {
      TraceFields trace;
      trace.text = name + std::to_string(i);
      trace.component = kEach;
      trace.file = static_cast<NameId>(i);
      trace.line = i % kStep;
      image.Name(trace.file, trace.text).Trace(trace);
    }
    return image;
  }
  // The file is numbered away, and those before it move on.
  void Rotate() const {
    const std::string first = m_directory.File("web.1.trc");
    if (std::filesystem::exists(first))
      std::filesystem::rename(first, m_directory.File("web.2.trc"));
    std::filesystem::rename(File(), first);
  }
  // What comes of three such files, with these options. The first one has so many lines.
  TrcRun OfThree(const std::vector<std::string>& more, std::size_t ofFirst, std::size_t ofAll) {
    Named("a").WriteTo(File());
    TrcProcess trc({.arguments = Follow(File(), more)});
    while (!IsReading(trc) && !trc.Late()) Rest(5);
    EXPECT_EQ(Lines(trc, ofFirst), ofFirst);
    for (const char* name : {"b", "c"}) {
      WhileStopped(trc, [&] {
        Rotate();
        Named(name).WriteTo(File());
      });
      // It must not find both at once: that is another test.
      while (!IsReading(trc) && !trc.Late()) Rest(5);
    }
    Lines(trc, ofAll);
    return ofAll == 0 ? trc.Finish() : End(trc);
  }
  // Has it the file that has the name now?
  bool IsReading(const TrcProcess& trc) const {
    struct stat named {
    }, status{};
    if (stat(File().c_str(), &named) != 0) return false;
    std::error_code gone;
    const std::string all = "/proc/" + std::to_string(trc.Id()) + "/fd";
    for (const auto& one : std::filesystem::directory_iterator(all, gone))
      if (stat(one.path().c_str(), &status) == 0 && status.st_ino == named.st_ino) return true;
    return false;
  }
  static void ExpectOwnNames(const std::string& out) {
    for (const nlohmann::json& trace : JsonLinesOf(out)) {
      const auto text = trace.at("text").get<std::string>();
      ASSERT_EQ(trace.at("file"), text);
      ASSERT_EQ(trace.at("component"), text.substr(0, 1));
    }
  }
};

TEST_F(TrcFollowLimits, NamesOfFilesThatAreGoneTakeNoRoom) {
  const std::size_t all = std::size_t{3} * kOnLine0;
  const TrcRun run = OfThree({"--where", "line == 0"}, kOnLine0, all);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  ExpectOwnNames(run.out);
  EXPECT_EQ(LinesOf(run.out).size(), all);
  EXPECT_EQ(LastOf(run.out).at("text"), "c22900");
}

TEST_F(TrcFollowLimits, WhatIsChosenByNamesStaysChosenWhereTheirIdsAreUsedAgain) {
  const std::string wanted =
      "line == 0 and (component == a or text == \"c22000\" and file == c22000)";
  const TrcRun run = OfThree({"--where", wanted, "--context", "500", "--component", "c",
                              "--component", "a", "--uncheck", "All Components/a"},
                             0, 1001);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  ExpectOwnNames(run.out);
  const auto traces = LinesOf(run.out);
  ASSERT_EQ(traces.size(), 1001u);
  EXPECT_EQ(nlohmann::json::parse(traces.front()).at("text"), "c21500");
  EXPECT_EQ(nlohmann::json::parse(traces.back()).at("text"), "c22500");
}

// A trace that is held still has its names.
TEST_F(TrcFollowLimits, MoreNamesAtOnceThanThereAreIdsAreToldAndNotMixedUp) {
  const TrcRun run = OfThree({"--where", "text == none", "--context", "90000"}, 0, 0);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "trc: " + File() + ": together the files have more than 65,536 names\n");
}

TEST_F(TrcFollowLimits, DamageBeforeACutIsTold) {
  TrcImage damaged = Image("a", 2);
  damaged.Raw(12).WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 2), 2u);
  Rest();
  WhileStopped(trc, [&] { Image("b", 1).WriteTo(File()); });
  EXPECT_EQ(Lines(trc, 3), 3u);
  const TrcRun run = End(trc);
  EXPECT_EQ(run.status, 3);
  const std::string name = "trc: " + File() + ": ";
  EXPECT_EQ(run.err, name + "damaged: 1 byte skipped from byte " +
                         std::to_string(damaged.Size() - 1) + " on\n" + name +
                         "cut short; it is read from its beginning again\n");
}

// A program that writes on where it was leaves zero bytes before what it writes.
TEST_F(TrcFollowLimits, ZeroBytesInPlaceOfTheHeaderAreWaitedFor) {
  const std::string said =
      "trc: " + File() + ": zero bytes stand where its header belongs; waiting for the header\n";
  const TrcImage begin = Image("a", 2), whole = Image("a", 3);
  for (const bool comesBack : {true, false}) {
    begin.WriteTo(File());
    TrcProcess trc({.arguments = Follow(File())});
    EXPECT_EQ(Lines(trc, 2), 2u);
    WhileStopped(trc, [&] {
      m_directory.File("web.trc", std::string(begin.Size(), '\0') + Behind(whole, begin));
    });
    trc.ReadErrUntil("waiting");
    if (comesBack) {
      Image("b", 2).WriteTo(File());
      EXPECT_EQ(Lines(trc, 4), 4u);
    }
    const TrcRun run = End(trc);
    EXPECT_EQ(Texts(run.out), comesBack ? "a0 a1 b0 b1" : "a0 a1");
    EXPECT_EQ(run.err,
              "trc: " + File() + ": cut short; it is read from its beginning again\n" + said);
    EXPECT_EQ(run.status, comesBack ? 0 : 3);
  }
}

TEST_F(TrcFollowLimits, AFileWhoseRoomIsMadeBeforeItIsWrittenIsWaitedFor) {
  const TrcImage image = Image("a", 2);
  for (const std::size_t bytes : {std::size_t{1}, std::size_t{15}, image.Size()}) {
    m_directory.File("web.trc", std::string(bytes, '\0'));
    TrcProcess trc({.arguments = Follow(File())});
    trc.ReadErrUntil("waiting");
    image.WriteTo(File());
    EXPECT_EQ(Lines(trc, 2), 2u);
    const TrcRun run = End(trc);
    EXPECT_EQ(Texts(run.out), "a0 a1");
    EXPECT_EQ(run.status, 0);
  }
}

TEST_F(TrcFollowLimits, AFileOfWhichOnlyTheBeginningIsTheSameIsAnotherOneAlsoAfterTheFirstPass) {
  TrcImage old = Image("a", 100), other = Image("a", 50);
  ASSERT_GT(other.Size(), 1000u);
  old.WriteTo(File());
  GrowingFile file(File());
  std::string why;
  ASSERT_EQ(file.Open(&why), GrowingFile::Opened::Yes);
  ASSERT_EQ(file.Read(&why), GrowingFile::Seen::Good);
  file.Take(file.Piece().size());
  EXPECT_EQ(file.Position(), old.Size());
  file.Rewind();
  EXPECT_EQ(file.Read(&why), GrowingFile::Seen::Good) << "nothing has changed";
  other.Trace("other").WriteTo(File());
  EXPECT_EQ(file.Read(&why), GrowingFile::Seen::Anew);
  EXPECT_EQ(file.Position(), 0u);
}

}  // namespace
