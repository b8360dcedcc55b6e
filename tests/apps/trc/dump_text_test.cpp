#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

std::string TextDump(const TrcImage& image, std::vector<std::string> options,
                     std::vector<std::string> environment = {"TZ=UTC"}) {
  const TempDir directory;
  std::vector<std::string> arguments = {"dump", image.WriteTo(directory.File("a.trc"))};
  arguments.insert(arguments.end(), options.begin(), options.end());
  const TrcRun run = RunTrc({.arguments = arguments, .environment = environment});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
  return run.out;
}

TrcImage ShopImage() {
  TrcImage image;
  image.Name(1, "web").Name(2, "shop").Name(3, "Http").Name(4, "Request").Name(5, "12");
  image.Name(6, "13").Name(7, "a.cpp").Name(8, "Configuration");
  image.Trace({.text = "up",
               .machine = 1,
               .app = 2,
               .component = 3,
               .category = 4,
               .tic = 1000,
               .pid = 5,
               .tid = 6,
               .file = 7,
               .line = 42});
  image.Trace({.text = "slow",
               .stack = "f\ng",
               .count = kNoSequenceNumber,
               .app = 2,
               .component = 8,
               .category = 4,
               .tic = 123456,
               .pid = 5,
               .tid = 6,
               .attributes = kAttributeWarn | kAttributeDeveloper});
  image.Trace({.text = "down", .attributes = kAttributeError});
  return image;
}

TEST(TrcDumpText, WithoutColumnsItShowsThoseThatTheListShowsAtFirstAndTheTime) {
  EXPECT_EQ(TextDump(ShopImage(), {}),
            "Sev    Time                     Application  Component      Category  Trace\n"
            "Info   2026-11-21 09:41:07.123  shop         Http           Request   up\n"
            "Warn   2026-11-21 09:41:07.123  shop         Configuration  Request   slow\n"
            "Error  2026-11-21 09:41:07.123                                        down\n");
}

TEST(TrcDumpText, NumbersAlignRight) {
  EXPECT_EQ(TextDump(ShopImage(), {"--columns", "Count,Tic Count,Tic Diff"}),
            "Count  Tic Count  Tic Diff\n"
            "    1       1000       n/a\n"
            "          123456    122456\n"
            "    3        n/a       n/a\n");
}

TEST(TrcDumpText, EveryOtherColumnIsTheCellOfTheList) {
  EXPECT_EQ(TextDump(ShopImage(), {"--columns", "Machine,PID,TID,Attributes,Source,Stack"}),
            "Machine  PID  TID  Attributes       Source    Stack\n"
            "web      12   13   Info             a.cpp:42\n"
            "         12   13   Warn, Developer  :0        f\\ng\n"
            "                   Error            :0\n");
}

TEST(TrcDumpText, ColumnsStandInTheOrderAskedForInAnyCaseAndWithBlanks) {
  EXPECT_EQ(TextDump(ShopImage(), {"-c", "trace, COUNT ,tic count", "--count", "1"}),
            "Trace  Count  Tic Count\n"
            "up         1       1000\n");
}

TEST(TrcDumpText, AnUnknownSeverityHasNoWord) {
  TrcImage image;
  image.Trace({.text = "a", .attributes = 0}).Trace({.text = "b", .attributes = 3});
  EXPECT_EQ(TextDump(image, {"--columns", "Sev,Trace"}), "Sev  Trace\n     a\n     b\n");
}

TEST(TrcDumpText, TimesAreLocalUnlessUtcIsAskedFor) {
  TrcImage image;
  image.Trace({.date = PackDate(2026, 12, 31), .time = PackTime(22, 30, 0, 5)});
  const std::vector<std::string> zone = {"TZ=XST-5"};
  EXPECT_EQ(TextDump(image, {"--columns", "Time"}, zone), "Time\n2027-01-01 03:30:00.005\n");
  for (const char* utc : {"--utc", "-u"}) {
    EXPECT_EQ(TextDump(image, {"--columns", "Time", utc}, zone), "Time\n2026-12-31 22:30:00.005\n");
  }
}

TEST(TrcDumpText, ALineEndInsideATextIsMadeVisible) {
  TrcImage image;
  image.Trace("one\ntwo\r\nthree\tfour\x1b[31m\u0085\u2028.");
  EXPECT_EQ(TextDump(image, {"--columns", "Trace"}),
            "Trace\none\\ntwo\\r\\nthree\\tfour\\x1b[31m\\x85\\u2028.\n");
}

TEST(TrcDumpText, BytesThatAreNotUtf8AreReplaced) {
  EXPECT_EQ(TextDump(TrcImage().Trace("a\xFF!"), {"--columns", "Trace"}), "Trace\na\uFFFD!\n");
}

TEST(TrcDumpText, WideAndAccentedCharactersAlignByTheColumnsTheyTake) {
  TrcImage image;
  image.Name(1, "büro-03").Name(2, "支払い").Name(3, "web");
  for (const NameId machine : {1, 2, 3}) image.Trace({.text = "x", .machine = machine});
  EXPECT_EQ(TextDump(image, {"--columns", "Machine,Trace"}),
            "Machine  Trace\n"
            "büro-03  x\n"
            "支払い   x\n"
            "web      x\n");
}

TEST(TrcDumpText, AVeryLongCellMovesOnlyItsOwnLine) {
  TrcImage image;
  image.Trace({.text = std::string(5000, 'x'), .stack = "f"}).Trace({.text = "y", .stack = "g"});
  const auto lines = LinesOf(TextDump(image, {"--columns", "Trace,Stack"}));
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1], std::string(5000, 'x') + "  f");
  EXPECT_EQ(lines[2], "y" + std::string(201, ' ') + "g");
}

TEST(TrcDumpText, TicDiffOfTheFirstTraceAskedForLooksAtTheTraceBeforeIt) {
  EXPECT_EQ(TextDump(ShopImage(), {"--columns", "Tic Diff", "--from", "1", "--count", "1"}),
            "Tic Diff\n  122456\n");
}

TEST(TrcDumpText, WithoutTracesOnlyTheHeadersStand) {
  EXPECT_EQ(TextDump(TrcImage(), {"--format", "text"}),
            "Sev  Time  Application  Component  Category  Trace\n");
  EXPECT_EQ(TextDump(ShopImage(), {"--columns", "Trace", "--from", "3"}), "Trace\n");
}

TEST(TrcDumpText, ATextWithANulByteInsideShowsOnlyWhatComesBeforeIt) {
  TrcImage image;
  image.Trace({.text = std::string("a\0b", 3)});
  EXPECT_EQ(TextDump(image, {"--columns", "Trace"}), "Trace\na\n");
}

// The first row must not wait until all are measured.
TEST(TrcDumpText, AColumnWidensWhereAWiderCellComesFarAfterTheFirstRows) {
  const TempDir directory;
  TrcImage image;
  image.Name(1, "Net").Name(2, "a component of a long name");
  for (int i = 0; i < 3000; ++i) image.Trace({.text = "x", .component = 1});
  image.Trace({.text = "x", .component = 2}).Trace({.text = "x", .component = 1});
  const std::string path = image.WriteTo(directory.File("a.trc"));
  const auto lines = LinesOf(RunTrc({"dump", path, "--columns", "Component,Trace"}).out);
  ASSERT_EQ(lines.size(), 3003u);
  EXPECT_EQ(lines[0], "Component  Trace");
  EXPECT_EQ(lines[3000], "Net        x");
  EXPECT_EQ(lines[3001], "a component of a long name  x");
  EXPECT_EQ(lines[3002], "Net                         x");
}

TEST(TrcDumpText, SeveritiesAreColouredWhenToldAndTheTextNever) {
  const TempDir directory;
  const std::string path = TrcImage()
                               .Trace({.text = "i", .attributes = kAttributeInfo})
                               .Trace({.text = "w\x1b[31m", .attributes = kAttributeWarn})
                               .Trace({.text = "e", .attributes = kAttributeError})
                               .WriteTo(directory.File("a.trc"));
  const auto out = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"dump", path, "--columns", "Sev,Trace"});
    const TrcRun run = RunTrc(more);
    EXPECT_EQ(run.err, "");
    return run.out;
  };
  const std::string plain = "Sev    Trace\nInfo   i\nWarn   w\\x1b[31m\nError  e\n";
  EXPECT_EQ(out({}), plain) << "not to a pipe";
  EXPECT_EQ(out({"--color", "never"}), plain);
  EXPECT_EQ(out({"--color", "always"}),
            "Sev    Trace\nInfo   i\n\x1b[1;38;5;166mWarn\x1b[0m   w\\x1b[31m\n"
            "\x1b[1;38;5;196mError\x1b[0m  e\n");
  EXPECT_EQ(RunTrc({"dump", path, "--color", "always", "--format", "jsonl"}).out.find('\x1b'),
            std::string::npos);
  EXPECT_NE(RunTrc({"dump", path, "--color", "sometimes"}).err.find("--color"), std::string::npos);
}

}  // namespace
