// The option --where of all commands that give traces.
#include "filter/where_option.h"

#include "run_trc.h"
#include "support/make_event.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

class TrcWhere : public testing::Test {
 protected:
  TrcWhere() {
    TrcImage image;
    image.Name(1, "desk")
        .Name(2, "shop")
        .Name(3, "100 alice")
        .Name(4, "7")
        .Name(5, "Net")
        .Name(6, "Db");
    for (unsigned second = 0; second < 10; ++second)
      image.Trace({.text = "order " + std::to_string(second),
                   .stack = second == 4 ? "main" : "",
                   .machine = 1,
                   .app = 2,
                   .component = static_cast<NameId>(second % 2 == 0 ? 5 : 6),
                   .time = PackTime(9, 41, second, 0),
                   .tic = std::uint64_t{1'000'000'000} * (second == 7 ? 19 : second + 1),
                   .pid = 3,
                   .tid = 4,
                   .attributes = second % 4 == 2   ? std::uint16_t{kAttributeWarn}
                                 : second % 4 == 3 ? std::uint16_t{kAttributeError}
                                                   : std::uint16_t{kAttributeInfo}});
    m_file = image.WriteTo(m_directory.File("in.trc"));
  }
  // "2 3": the last characters of the texts that are given.
  std::string Given(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"dump", m_file, "--format", "jsonl", "--utc"});
    const TrcRun run = RunTrc(arguments);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    std::string given;
    for (const json& trace : JsonLinesOf(run.out)) {
      given += given.empty() ? "" : " ";
      given += trace["text"].get<std::string>().back();
    }
    return given;
  }
  std::string Where(const char* text) { return Given({"--where", text}); }

  TempDir m_directory;
  std::string m_file;
};

TEST_F(TrcWhere, ATextChoosesTheTracesThatItHoldsFor) {
  EXPECT_EQ(Where("severity >= warn and component in {Db, \"Cache\"}"), "3 7");
  EXPECT_EQ(Where("not text contains \"order\" or text matches \"[27]$\""), "2 7");
  EXPECT_EQ(Where("stack"), "4");
  EXPECT_EQ(Where("pid == 100 and account == alice and count < 3"), "0 1");
  EXPECT_EQ(Where("  "), "0 1 2 3 4 5 6 7 8 9");
}

TEST_F(TrcWhere, SeveralTextsAndTheOtherOptionsMustAllHold) {
  EXPECT_EQ(Given({"--where", "severity >= warn", "--where", "component == Net"}), "2 6");
  EXPECT_EQ(Given({"--where", "component == Net", "--uncheck", "All Severities/Info"}), "2 6");
  EXPECT_EQ(Given({"--where", "component == Net", "--severity", "warn", "--invert"}), "0 4 8");
  EXPECT_EQ(Given({"--where", "severity == error", "--context", "1"}), "2 3 4 6 7 8");
}

TEST_F(TrcWhere, TheTraceBeforeIsThatOfTheFileWhereverTheRowsBegin) {
  EXPECT_EQ(Where("delta > 5ms"), "7");
  EXPECT_EQ(Where("delta < 0s"), "8");
  EXPECT_EQ(Given({"--where", "delta > 5ms", "--from", "7"}), "7");
  EXPECT_EQ(Given({"--where", "delta == 1ms", "--from", "3", "--count", "2"}), "3 4");
  EXPECT_EQ(Given({"--where", "delta == 1ms", "--tail", "3"}), "5 6 9");
  EXPECT_EQ(Given({"--where", "delta > 5ms", "--severity", "error"}), "7");
}

TEST_F(TrcWhere, TimesAreRelativeToTheNewestTraceAndInTheZoneThatIsShown) {
  EXPECT_EQ(Where("time > end - 3s"), "7 8 9");
  EXPECT_EQ(Where("time >= 2026-11-21T09:41:08"), "8 9");
  const TrcRun local = RunTrc({.arguments = {"dump", m_file, "--columns", "Trace", "--where",
                                             "time >= \"2026-11-21 10:41:08\""},
                               .environment = {"TZ=CET-1"}});
  EXPECT_EQ(local.out, "Trace\norder 8\norder 9\n");
}

TEST_F(TrcWhere, EveryCommandThatGivesTracesTakesIt) {
  const auto run = [this](std::vector<std::string> words, int status = 0) {
    words.insert(words.end(), {"--where", "severity == error and text contains 3"});
    const TrcRun done = RunTrc(words);
    EXPECT_EQ(done.status, status) << testing::PrintToString(words) << done.err;
    return done.out;
  };
  const std::string saved = m_directory.File("saved.trc");
  EXPECT_EQ(run({"find", "order", m_file, "--total"}), "1\n");
  EXPECT_EQ(run({"find", "order 7", m_file, "--total"}, 1), "0\n");
  run({"save", m_file, saved});
  ASSERT_EQ(DumpedTraces(saved).size(), 1u);
  EXPECT_EQ(DumpedTraces(saved)[0]["text"], "order 3");
  EXPECT_EQ(run({"export", m_file, "-", "--format", "csv-rfc4180", "--columns", "Trace"}),
            "Trace\r\norder 3\r\n");
  const std::string tree = run({"tree", m_file});
  EXPECT_NE(tree.find("|- order 3\n"), std::string::npos);
  EXPECT_EQ(tree.find("|- order 7\n"), std::string::npos);
  EXPECT_EQ(run({"stack", "--recorded", m_file}, 1), "");
  const TrcRun stack = RunTrc({"stack", "--recorded", m_file, "--where", "text contains 4"});
  EXPECT_EQ(stack.out, "4: order 4\n    main\n");
}

TEST_F(TrcWhere, AMistakeIsToldWithItsPlaceInTheText) {
  for (const std::vector<std::string>& command :
       std::vector<std::vector<std::string>>{{"dump", m_file},
                                             {"find", "x", m_file},
                                             {"tree", m_file},
                                             {"stack", m_file},
                                             {"save", m_file, m_directory.File("no.trc")},
                                             {"export", m_file, "-"},
                                             {"tail"},
                                             {"capture", "-o", m_directory.File("no.trc")}}) {
    std::vector<std::string> words = command;
    words.insert(words.end(), {"--where", "severity >= warn and componet == Net"});
    const TrcRun run = RunTrc({.arguments = words, .environment = {"QUOR_AUTOSTART=0"}});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    const auto lines = LinesOf(run.err);
    ASSERT_EQ(lines.size(), 4u) << run.err;
    EXPECT_EQ(lines[0].substr(0, 53), "trc: --where: there is no field \"componet\"; did you m");
    EXPECT_EQ(lines[1], "  severity >= warn and componet == Net");
    EXPECT_EQ(lines[2], "                       ^~~~~~~~");
    EXPECT_EQ(lines[3], "Try 'trc " + command[0] + " --help'.");
  }
  EXPECT_EQ(ReadAll(m_directory.File("no.trc")).substr(0, 8), "(no file");
}

TEST_F(TrcWhere, AnExpressionThatTakesTooLongIsTold) {
  const std::string file = TrcImage()
                               .Trace(std::string(60, 'a') + "b")
                               .Trace("aa")
                               .WriteTo(m_directory.File("long.trc"));
  const TrcRun run =
      RunTrc({"dump", file, "--columns", "Trace", "--where", "text matches \"^(a+)+$\""});
  EXPECT_EQ(run.out, "Trace\naa\n");
  EXPECT_EQ(run.err,
            "trc: --where: the search of \"matches\" was given up in 1 trace: the expression takes "
            "too many steps\n");
}

TEST_F(TrcWhere, ATraceWhoseSearchIsGivenUpCountsOnceAlsoForTheLastOnes) {
  const std::string slow = std::string(60, 'a') + "b";
  const std::string file = TrcImage().Trace(slow).Trace("aa").Trace(slow).Trace("a").WriteTo(
      m_directory.File("long.trc"));
  for (const char* tail : {"1", "2", "5"}) {
    const TrcRun run = RunTrc({"dump", file, "--columns", "Trace", "--tail", tail, "--where",
                               "text matches \"^(a+)+$\""});
    const std::string given = *tail == '1' ? "a" : "aa\na", count = *tail == '1' ? "1" : "2";
    EXPECT_EQ(run.out, "Trace\n" + given + "\n");
    EXPECT_NE(run.err.find(" given up in " + count + " trace"), std::string::npos) << run.err;
  }
}

// The three lines of a mistake.
std::vector<std::string> Told(const std::string& text) {
  WhereProgramPtr program;
  std::string why;
  EXPECT_FALSE(AddWhere(program, text, &why));
  EXPECT_FALSE(program);
  return LinesOf(why);
}

TEST(TrcWhereError, TheMarkStandsBelowThePlaceWhateverTheTextHolds) {
  const auto wide = Told("text == \"\xe6\xbc\xa2\xc3\xa9\" and componet == x");
  ASSERT_EQ(wide.size(), 3u);
  EXPECT_EQ(wide[2], "                    ^~~~~~~~") << "two columns for the first character";
  const auto hostile = Told("component == a\n\x1b[31m");
  ASSERT_EQ(hostile.size(), 3u);
  EXPECT_EQ(hostile[1].find('\x1b'), std::string::npos);
  EXPECT_EQ(hostile[1].substr(0, 25), "  component == a\\n\\x1b[31");
}

TEST(TrcWhereError, OfALongTextThePartAroundThePlaceIsShown) {
  std::string text;
  for (int i = 0; i < 300; ++i) text += "line == " + std::to_string(i) + " or ";
  const auto told = Told(text + "lines == 7 or " + text + "line == 1");
  ASSERT_EQ(told.size(), 3u);
  EXPECT_LE(told[1].size(), 140u);
  EXPECT_EQ(told[1].substr(0, 5), "  ...");
  EXPECT_EQ(told[1].substr(told[1].size() - 3), "...");
  EXPECT_EQ(told[1].substr(told[2].find('^'), 5), "lines");
  EXPECT_EQ(Told("line ==").back(), "         ^");
}

TEST(TrcLiveWhere, NamesComeLaterAndEveryTraceIsTheOneBeforeTheNext) {
  WhereProgramPtr program;
  ASSERT_TRUE(AddWhere(program, "component == Net and (delta == 1ms or time < end)", nullptr));
  NameMap names;
  LiveWhere live(program, names, true);
  const auto trace = [](NameId component, std::uint64_t ms) {
    return MakeEvent({.component = component, .tic = ms * 1'000'000'000});
  };
  EXPECT_FALSE(live.Passes(*trace(5, 1))) << "without a name, and without one before";
  names[5].name = "Net";
  EXPECT_TRUE(live.Passes(*trace(5, 2)));
  EXPECT_FALSE(live.Passes(*trace(6, 3)));
  EXPECT_TRUE(live.Passes(*trace(5, 4)));
  EXPECT_FALSE(live.Passes(*trace(5, 6)));
  LiveWhere all(nullptr, names, true);
  EXPECT_TRUE(all.Passes(*trace(6, 3)));
}

}  // namespace
