// trc dump --follow and trc find --follow: a file that grows.
#include "followed_file.h"

namespace {

TEST_F(TrcFollow, WhatIsThereComesFirstAndThenWhatIsAppended) {
  const TrcImage begin = Image("a", 2), whole = Image("a", 5);
  begin.WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 2), 2u);
  Append(Behind(whole, begin));
  EXPECT_EQ(Lines(trc, 5), 5u);
  const TrcRun run = End(trc);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, RunTrc({"dump", File(), "--format", "jsonl"}).out);
}

TEST_F(TrcFollow, AFileThatIsCutAnywhereAndThenGoesOnGivesWhatItGivesWhole) {
  TrcImage whole = Image("a", 1);
  whole.Name(8, "stacked").Raw(12);
  TraceFields trace = At(9, "with a stack");
  trace.stack = "main < run";
  trace.component = 8;
  whole.Trace(trace).Trace("last");
  whole.WriteTo(File());
  const std::string wanted = RunTrc({"dump", File(), "--format", "jsonl"}).out;
  for (std::size_t cut = 0; cut < whole.Size(); cut += 3) {
    const std::string path = m_directory.File("cut.trc", whole.Bytes().substr(0, cut));
    const auto there = static_cast<std::size_t>(LinesOf(wanted).size());
    TrcProcess trc({.arguments = Follow(path, {"--count", std::to_string(there)})});
    Rest(40);
    AppendTo(path, whole.Bytes().substr(cut));
    const TrcRun run = trc.Finish();
    EXPECT_EQ(run.out, wanted) << "cut at " << cut;
    EXPECT_EQ(run.status, 3) << "a byte of it is no record";
  }
}

TEST_F(TrcFollow, ByteByByteNoTraceComesBeforeItIsWhole) {
  const TrcImage begin = Image("a", 1), whole = Image("a", 4);
  begin.WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 1), 1u);
  std::size_t ends = begin.Size();
  const std::string rest = Behind(whole, begin);
  for (unsigned traces = 2; traces <= 4; ++traces) {
    const std::size_t end = Image("a", traces).Size();
    for (; ends < end - 1; ++ends) Append(whole.Bytes().substr(ends, 1));
    Rest(50);
    EXPECT_EQ(Lines(trc, traces - 1), traces - 1) << "its last byte is not there";
    Append(whole.Bytes().substr(ends++, 1));
    EXPECT_EQ(Lines(trc, traces), traces);
  }
  EXPECT_EQ(Texts(End(trc).out), "a0 a1 a2 a3");
}

TEST_F(TrcFollow, EveryOptionChoosesWhatItChoosesOfAWholeFile) {
  const TrcImage image = Image("a", 40);
  image.WriteTo(File());
  const std::vector<std::vector<std::string>> options = {
      {},
      {"--tail", "3"},
      {"--tail", "0"},
      {"--tail", "100"},
      {"--count", "5"},
      {"--count", "0"},
      {"--from", "7"},
      {"--from", "7", "--count", "2"},
      {"--tail", "9", "--count", "2"},
      {"--severity", "error"},
      {"--severity", "error", "--context", "1"},
      {"--severity", "error", "--tail", "4"},
      {"--severity", "error", "--tail", "4", "--context", "1"},
      {"--severity", "error", "--from", "20", "--context", "4"},
      {"--severity", "error", "-v"},
      {"--component", "a", "--count", "3"},
      {"--where", "text matches \"a[12]5\""},
      {"--where", "time > end - 5s"},
      {"--where", "severity >= warn", "--tail", "2"},
      {"--since", "2001-01-01 09:00:30", "--utc"},
      {"--uncheck", "All Severities/Info"},
  };
  for (const auto& option : options) {
    std::vector<std::string> words = {"dump", File(), "--until", "2001-06-01", "-f", "jsonl"};
    words.insert(words.end(), option.begin(), option.end());
    const TrcRun whole = RunTrc(words);
    EXPECT_EQ(whole.status, 0) << whole.err;
    words.emplace_back("--follow");
    const TrcRun followed = RunTrc(words);
    EXPECT_EQ(followed.status, 0) << followed.err;
    EXPECT_EQ(followed.out, whole.out) << testing::PrintToString(words);
  }
}

TEST_F(TrcFollow, LinesForUsersHaveTheChosenColumnsAndMarkWhatIsLeftOut) {
  Image("a", 12).WriteTo(File());
  const TrcRun run = RunTrc({"dump", "-F", File(), "--until", "2001-06-01", "-c", "Time,Sev,Trace",
                             "--utc", "--where", "text matches \"a[28]$\"", "--context", "1"});
  EXPECT_EQ(run.out,
            "Time                     Sev   Trace\n"
            "2001-01-01 09:00:01.000  Warn  a1\n"
            "2001-01-01 09:00:02.000  Error  a2\n"
            "2001-01-01 09:00:03.000  Info   a3\n"
            "--\n"
            "2001-01-01 09:00:07.000  Warn   a7\n"
            "2001-01-01 09:00:08.000  Error  a8\n"
            "2001-01-01 09:00:09.000  Info   a9\n");
}

TEST_F(TrcFollow, TheOptionsChooseOfWhatIsAppendedToo) {
  const TrcImage begin = Image("a", 3), whole = Image("a", 30);
  begin.WriteTo(File());
  TrcProcess trc({.arguments = Follow(File(), {"--severity", "error", "--context", "1", "--where",
                                               "not text startswith \"a5\"", "--count", "3"})});
  EXPECT_EQ(Lines(trc, 2), 2u);
  Append(Behind(whole, begin));
  EXPECT_EQ(Texts(trc.Finish().out), "a1 a2 a3 a7 a8 a9 a10 a11 a12") << "it ends by itself";
}

TEST_F(TrcFollow, TheLastOnesAreOfWhatIsThereAtTheBeginning) {
  const TrcImage begin = Image("a", 20), whole = Image("a", 25);
  begin.WriteTo(File());
  TrcProcess trc({.arguments = Follow(File(), {"--tail", "2"})});
  EXPECT_EQ(Lines(trc, 2), 2u);
  Append(Behind(whole, begin));
  EXPECT_EQ(Lines(trc, 7), 7u);
  EXPECT_EQ(Texts(End(trc).out), "a18 a19 a20 a21 a22 a23 a24");
}

TEST_F(TrcFollow, NamesThatComeLateStandForWhatIsThereAndForWhatComesWithThem) {
  TrcImage image;
  image.Trace({.text = "one", .component = 5}).Name(5, "Late").WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 1), 1u);
  const std::size_t before = image.Size();
  image.Trace({.text = "two", .component = 6}).Name(6, "Later").Name(5, "New");
  Append(image.Bytes().substr(before));
  EXPECT_EQ(Lines(trc, 2), 2u);
  const std::size_t second = image.Size();
  image.Trace({.text = "three", .component = 5});
  Append(image.Bytes().substr(second));
  EXPECT_EQ(Lines(trc, 3), 3u);
  const auto traces = JsonLinesOf(End(trc).out);
  ASSERT_EQ(traces.size(), 3u);
  EXPECT_EQ(traces[0]["component"], "Late");
  EXPECT_EQ(traces[1]["component"], "Later");
  EXPECT_EQ(traces[2]["component"], "New");
}

TEST_F(TrcFollow, ANameThatNoTraceHasYetIsWaitedFor) {
  const TrcImage begin = Image("a", 2);
  begin.WriteTo(File());
  TrcProcess trc({.arguments = Follow(File(), {"--component", "b", "--count", "1"})});
  TrcImage more = begin;
  more.Name(9, "b").Trace({.text = "here", .component = 9});
  Append(Behind(more, begin));
  const TrcRun run = trc.Finish();
  EXPECT_EQ(Texts(run.out), "here");
  EXPECT_EQ(run.err, "");
  begin.WriteTo(File());
  const TrcRun never = RunTrc(Follow(File(), {"--component", "b", "--until", "2001-06-01"}));
  EXPECT_EQ(never.err, "trc: no trace came of the component \"b\"\n");
}

TEST_F(TrcFollow, FindGoesOnToo) {
  const TrcImage begin = Image("a", 12), whole = Image("a", 13);
  begin.WriteTo(File());
  TrcProcess trc({.arguments = {"find", "--follow", "-e", "a[0-9]*2", File(), "-f", "jsonl"}});
  EXPECT_EQ(Lines(trc, 1), 1u);
  Append(Behind(whole, begin));
  EXPECT_EQ(Lines(trc, 2), 2u);
  const TrcRun run = End(trc);
  EXPECT_EQ(Texts(run.out), "a2 a12");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(RunTrc({"find", "-F", "-P", "x", File(), "--until", "2001-06-01"}).status, 1);
}

TEST_F(TrcFollow, AFileThatIsNotThereIsWaitedFor) {
  TrcProcess trc({.arguments = Follow(File(), {"--tail", "1", "--count", "3"})});
  const std::string said = "trc: " + File() + ": not there yet; waiting for it\n";
  EXPECT_EQ(trc.ReadErrUntil("waiting"), said);
  Image("a", 3).WriteTo(File());
  const TrcRun run = trc.Finish();
  EXPECT_EQ(Texts(run.out), "a0 a1 a2") << "they are all new";
  EXPECT_EQ(run.err, said);
}

TEST_F(TrcFollow, WithoutNotesOfTheSystemItLooksEachSecond) {
  const TrcImage begin = Image("a", 1), whole = Image("a", 2);
  begin.WriteTo(File());
  TrcProcess trc({.arguments = Follow(File(), {"--count", "2"}), .withoutNotify = true});
  EXPECT_EQ(Lines(trc, 1), 1u);
  Append(Behind(whole, begin));
  EXPECT_EQ(Texts(trc.Finish().out), "a0 a1");
}

TEST_F(TrcFollow, AReaderWhoGoesAwayEndsItThoughNothingComes) {
  Image("a", 1).WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  EXPECT_EQ(Lines(trc, 1), 1u);
  trc.CloseOut();
  const TrcRun run = trc.Finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
}

TEST_F(TrcFollow, AnInterruptIsTheUsualEndAndLeavesWholeLines) {
  const TrcImage image = Image("a", 60000);
  image.WriteTo(File());
  TrcProcess trc({.arguments = Follow(File())});
  trc.ReadOut(1000);  // the rest waits for us
  trc.Interrupt();
  const TrcRun run = trc.Finish();
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out.back(), '\n');
  const auto lines = std::count(run.out.begin(), run.out.end(), '\n');
  EXPECT_LT(lines, 60000);
  EXPECT_EQ(LastOf(run.out).at("i"), lines - 1);
}

TEST_F(TrcFollow, APipeIsGivenAsItComesAndToItsEnd) {
  const std::string fifo = m_directory.File("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  TrcProcess trc({.arguments = Follow(fifo)});
  const TrcImage begin = Image("a", 2), whole = Image("a", 3);
  const int writer = open(fifo.c_str(), O_WRONLY);
  ASSERT_GE(writer, 0);
  const std::string first = begin.Bytes() + Behind(whole, begin).substr(0, 20);
  EXPECT_EQ(write(writer, first.data(), first.size()), static_cast<ssize_t>(first.size()));
  EXPECT_EQ(Lines(trc, 2), 2u);
  const std::string rest = Behind(whole, begin).substr(20);
  EXPECT_EQ(write(writer, rest.data(), rest.size()), static_cast<ssize_t>(rest.size()));
  EXPECT_EQ(Lines(trc, 3), 3u);
  close(writer);
  const TrcRun run = trc.Finish();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(Texts(run.out), "a0 a1 a2");
}

TEST_F(TrcFollow, StandardInputEndsWhereItEnds) {
  const TrcImage image = Image("a", 3);
  image.WriteTo(File());
  const std::string out = m_directory.File("out"), trc = getenv("TRC");
  const std::string follow = trc + " dump --follow - --format jsonl > '" + out + "' 2>&1";
  EXPECT_EQ(system(("cat '" + File() + "' | " + follow).c_str()), 0);
  EXPECT_EQ(Texts(ReadAll(out)), "a0 a1 a2");
  const std::string cut = "head -c " + std::to_string(image.Size() - 1) + " '" + File() + "' | ";
  EXPECT_EQ(WEXITSTATUS(system((cut + follow).c_str())), 3);
  EXPECT_NE(ReadAll(out).find("last record cut at byte"), std::string::npos);
  EXPECT_EQ(WEXITSTATUS(system((": | " + follow).c_str())), 2);
  EXPECT_EQ(ReadAll(out), "trc: standard input: The file is empty\n");
}

TEST_F(TrcFollow, AnInterruptEndsTheWaitForTheWriterOfAPipe) {
  const std::string fifo = m_directory.File("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const bool follows : {false, true}) {
    TrcProcess trc({.arguments = {"dump", fifo, follows ? "--follow" : "--utc"}});
    Rest(300);
    trc.Interrupt();
    EXPECT_EQ(trc.Finish().status, follows ? 0 : 130);
  }
}

TEST_F(TrcFollow, WhatCannotBeFollowedIsRefusedWithTheReason) {
  Image("a", 1).WriteTo(File());
  const std::string packed = m_directory.File("web.gz"), odd = m_directory.File("odd", "no trace");
  ASSERT_EQ(system(("gzip -c '" + File() + "' > '" + packed + "'").c_str()), 0);
  const std::string fifo = m_directory.File("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  const std::pair<std::vector<std::string>, std::string> cases[] = {
      {{"dump", "-F", File(), File()}, "--follow: goes with one file"},
      {{"dump", "-F", packed}, packed + ": --follow is not for packed files"},
      {{"dump", "-F", odd}, odd + ": Invalid format."},
      {{"dump", "-F", m_directory.Path()}, m_directory.Path() + ": Not a regular file"},
      {{"dump", "-F", fifo, "--tail", "1"}, fifo + ": --tail goes with no pipe"},
      {{"dump", "-F", File(), "--uncheck", "All Severitys"}, "there is no \"All Severitys\""},
      {{"find", "-F", "x", File(), "--total"}, "--total: goes with no --follow"},
      {{"tree", "-F", File()}, "--follow: goes with dump and find"},
      {{"stack", "--follow", File()}, "--follow: goes with dump and find"},
      {{"save", "-F", File(), odd}, "--follow: goes with dump and find"},
      {{"export", "-F", File(), "-"}, "--follow: goes with dump and find"},
      {{"tail", "-F"}, "--follow: live traces come as they are made"},
      {{"capture", "-F", "-o", odd}, "--follow: live traces come as they are made"}};
  for (const auto& [words, reason] : cases) {
    const TrcRun run = RunTrc(words);
    EXPECT_EQ(run.status, 2) << testing::PrintToString(words);
    EXPECT_EQ(run.err.substr(0, 5 + reason.size()), "trc: " + reason);
    EXPECT_EQ(run.out, "");
  }
}

}  // namespace
