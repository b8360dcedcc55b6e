// Lines in the colours of rules: trc dump, find and --follow with --colour-rules.
#include <gtest/gtest.h>

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"
#include "text/line_colours.h"
#include "where/colours/shipped_colours.h"

namespace {

const std::string kPlain = "\x1b[0m";

std::string FileOf(const std::vector<std::string>& texts) {
  ColourRules rules;
  for (const std::string& text : texts)
    rules.push_back({"rule of " + text, text, {0x87, 0, 0}, {0xff, 0xd7, 0xd7}});
  return ColourRulesText(rules);
}
// That of FileOf, in 256 colours.
const std::string kRed = "\x1b[38;5;88;48;5;224m";

struct Files {
  Files() {
    image.Name(1, "Sql").Name(2, "web").Name(3, "812");
    const auto add = [&](const char* text, unsigned attributes, std::uint64_t tic) {
      image.Trace({.text = text,
                   .machine = 2,
                   .component = 1,
                   .tic = tic,
                   .pid = 3,
                   .attributes = static_cast<std::uint16_t>(attributes)});
    };
    add("one", kAttributeInfo, 1'000'000'000'000);
    add("two", kAttributeWarn, 2'000'000'000'000);
    add("three", kAttributeInfo, 9'000'000'000'000);
    trc = image.WriteTo(directory.File("a.trc"));
  }
  TrcRun Run(std::vector<std::string> arguments, std::vector<std::string> environment = {}) const {
    environment.insert(environment.begin(), "COLORTERM=");
    return RunTrc(TrcStart{.arguments = std::move(arguments), .environment = environment});
  }
  std::string Dump(const std::string& rules, std::vector<std::string> more = {},
                   std::vector<std::string> environment = {}) const {
    more.insert(more.begin(), {"dump", trc, "--columns", "Sev,Trace", "--colour-rules", rules});
    const TrcRun run = Run(more, environment);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    return run.out;
  }

  TempDir directory;
  TrcImage image;
  std::string trc;
};

const std::vector<std::string> kAlways = {"--color", "always"};

TEST(TrcColourRules, ALineHasTheColoursOfTheFirstRuleThatHolds) {
  const Files files;
  const std::string rules = files.directory.File("x.colours", FileOf({"text == \"two\""}));
  EXPECT_EQ(files.Dump(rules, kAlways),
            "Sev   Trace\nInfo  one\n" + kRed + "Warn  two" + kPlain + "\nInfo  three\n");
  EXPECT_EQ(files.Dump(rules), "Sev   Trace\nInfo  one\nWarn  two\nInfo  three\n") << "to a pipe";
  EXPECT_EQ(files.Dump(rules, {"--color", "never"}),
            "Sev   Trace\nInfo  one\nWarn  two\nInfo  three\n");
}

TEST(TrcColourRules, ATerminalThatTakes24BitsGetsTheColoursAsTheyAre) {
  const Files files;
  const std::string rules = files.directory.File("x.colours", FileOf({"text == \"one\""}));
  const std::string exact = "\x1b[38;2;135;0;0;48;2;255;215;215mInfo  one" + kPlain;
  for (const char* said : {"COLORTERM=truecolor", "COLORTERM=24bit"})
    EXPECT_NE(files.Dump(rules, kAlways, {said}).find(exact), std::string::npos) << said;
  EXPECT_EQ(files.Dump(rules, kAlways, {"COLORTERM=yes"}).find(exact), std::string::npos);
}

TEST(TrcColourRules, DeltaIsToTheTraceBeforeInTheFileWhetherItIsShownOrNot) {
  const Files files;
  const std::string rules = files.directory.File("x.colours", FileOf({"delta > 5s"}));
  const std::string shown = "Sev   Trace\nInfo  one\n" + kRed + "Info  three" + kPlain + "\n";
  EXPECT_EQ(files.Dump(rules, {"--color", "always", "--severity", "info"}), shown);
  // From "one" it would be 8 s too, so a second bound tells the two apart.
  const std::string near = files.directory.File("y.colours", FileOf({"delta < 7500ms"}));
  EXPECT_EQ(files.Dump(near, {"--color", "always", "--severity", "info"}), shown);
}

TEST(TrcColourRules, EndIsTheLastTraceOfTheFile) {
  Files files;
  files.image.Trace({.text = "late", .time = PackTime(9, 51, 7, 123)});
  files.image.WriteTo(files.trc);
  const std::string rules = files.directory.File("x.colours", FileOf({"time > end - 5m"}));
  const std::string out = files.Dump(rules, kAlways);
  EXPECT_EQ(out.find(kRed), out.find("Info  late") - kRed.size()) << out;
}

TEST(TrcColourRules, FindAndFollowPrintLinesAsDumpDoes) {
  const Files files;
  const std::string rules =
      files.directory.File("x.colours", FileOf({"delta > 5s and text contains \"e\""}));
  const std::string line = kRed + "Info  three" + kPlain + "\n";
  const std::vector<std::string> shown = {"--columns", "Sev,Trace",      "--color",
                                          "always",    "--colour-rules", rules};
  const auto run = [&](std::vector<std::string> arguments) {
    arguments.insert(arguments.end(), shown.begin(), shown.end());
    const TrcRun done = files.Run(arguments);
    EXPECT_EQ(done.err, "");
    return done.out;
  };
  EXPECT_EQ(run({"find", "e", files.trc}), "Sev   Trace\nInfo  one\n" + line);
  EXPECT_EQ(run({"dump", "--follow", "--count", "3", files.trc}),
            "Sev   Trace\nInfo  one\n\x1b[1;38;5;166mWarn" + kPlain + "  two\n" + line);
  EXPECT_EQ(run({"dump", "--follow", "--severity", "info", "--count", "2", files.trc}),
            "Sev   Trace\nInfo  one\n" + line);
}

TEST(TrcColourRules, AWrongFileOrRuleIsToldWithItsPlace) {
  const Files files;
  const auto why = [&](const std::string& rules, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"dump", files.trc, "--colour-rules", rules});
    const TrcRun run = files.Run(more);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    return run.err;
  };
  EXPECT_NE(why("/none").find("/none: No such file or directory"), std::string::npos);
  const std::string wrong = files.directory.File("wrong.colours", "{\n\n]");
  EXPECT_NE(why(wrong).find("wrong.colours: line 3: this is no JSON"), std::string::npos);
  const std::string text = files.directory.File("text.colours", FileOf({"severity >= wran"}));
  const std::string told = why(text, {"--color", "never"});
  EXPECT_NE(told.find("\"rule of severity >= wran\": "), std::string::npos) << told;
  EXPECT_NE(told.find("did you mean \"warn\"?"), std::string::npos) << told;
  EXPECT_NE(told.find("              ^~~~"), std::string::npos) << told;
  EXPECT_NE(why("dark", {"--format", "jsonl"}).find("goes with the text format"),
            std::string::npos);
}

TEST(TrcColourRules, ARuleThatIsOffMayBeWrong) {
  const Files files;
  ColourRules rules = {{"a", "severity >= wran", {}, {}, false}};
  const std::string path = files.directory.File("x.colours", ColourRulesText(rules));
  EXPECT_EQ(files.Dump(path, kAlways).find("\x1b[38"), std::string::npos);
}

TEST(TrcColourRules, TheShippedSetsCanBeReadIn256Colours) {
  const Files files;
  for (const char* name : {"light", "dark"})
    EXPECT_NE(files.Dump(name, kAlways).find("\x1b[38;5;"), std::string::npos) << name;
  for (const ColourGround ground : {ColourGround::Light, ColourGround::Dark}) {
    for (const ColourRule& rule : ShippedColours(ground)) {
      const Colour ink = ColourOf256(NearestOf256(rule.ink));
      EXPECT_GE(Contrast(ink, ColourOf256(NearestOf256(rule.ground))), kLeastContrast) << rule.name;
    }
  }
}

TEST(TrcColourRules, TheNearestOf256ColoursIsTheColourItselfIfItIsOneOfThem) {
  for (unsigned number = 16; number < 256; ++number)
    EXPECT_EQ(ColourOf256(NearestOf256(ColourOf256(number))), ColourOf256(number)) << number;
  EXPECT_EQ(NearestOf256({0xfe, 0xff, 0xff}), 231u);
  EXPECT_EQ(NearestOf256({0x09, 0x08, 0x07}), 232u);
}

}  // namespace
