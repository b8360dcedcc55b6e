// Profiles of the desktop: trc dump and find with --profile.
#include <gtest/gtest.h>

#include <filesystem>

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"
#include "views/view_text.h"

namespace {

const std::string kRed = "\x1b[38;5;88;48;5;224m", kPlain = "\x1b[0m";

class TrcProfile : public testing::Test {
 protected:
  TrcProfile() {
    TrcImage image;
    image.Name(1, "Sql").Name(2, "web").Name(3, "812");
    for (const char* text : {"one", "two", "three"})
      image.Trace({.text = text, .machine = 2, .component = 1, .pid = 3});
    m_trc = image.WriteTo(m_dir.File("a.trc"));
  }
  // Saved by the desktop.
  void Keep(const Profile& profile) {
    const std::string folder = m_dir.File("config/tessera/profiles");
    std::filesystem::create_directories(folder);
    ASSERT_TRUE(SaveProfile(folder + "/" + std::to_string(++m_files) + ".json", profile, nullptr));
  }
  static Profile Of(const std::string& name) {
    Profile profile{name, {}};
    profile.state.columns = {
        {"Trace", 300, true}, {"Sev", 40, false}, {"No such", 40, true}, {"PID", 50, true}};
    profile.state.filter = "text contains \"t\"";
    profile.state.colours =
        ViewColours{true, {{"two", "text == \"two\"", {0x87, 0, 0}, {0xff, 0xd7, 0xd7}}}};
    return profile;
  }
  TrcRun Run(std::vector<std::string> arguments) const {
    return RunTrc(
        TrcStart{.arguments = std::move(arguments),
                 .environment = {"COLORTERM=", "XDG_CONFIG_HOME=" + m_dir.File("config")}});
  }
  std::string Dump(std::vector<std::string> more) const {
    more.insert(more.begin(), {"dump", m_trc});
    const TrcRun run = Run(more);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    return run.out;
  }
  std::string WhyNot(std::vector<std::string> more) const {
    more.insert(more.begin(), {"dump", m_trc});
    const TrcRun run = Run(more);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
    return run.err;
  }

  TempDir m_dir;
  std::string m_trc;
  int m_files = 0;
};

TEST_F(TrcProfile, GivesItsColumnsInTheirOrderItsFilterTextAndItsColours) {
  Keep(Of("Slow orders"));
  const std::string plain = "Trace  PID\ntwo    812\nthree  812\n";
  EXPECT_EQ(Dump({"--profile", "Slow orders"}), plain);
  EXPECT_EQ(Dump({"--profile", "slow ORDERS"}), plain);
  EXPECT_EQ(Dump({"--profile", "Slow orders", "--color", "always"}),
            "Trace  PID\n" + kRed + "two    812" + kPlain + "\nthree  812\n");
  EXPECT_EQ(Run({"find", "o", m_trc, "--profile", "Slow orders"}).out, "Trace  PID\ntwo    812\n");
}

TEST_F(TrcProfile, WhatTheLineSaysReplacesColumnsAndColoursAndIsAddedToTheText) {
  Keep(Of("a"));
  EXPECT_EQ(Dump({"--profile", "a", "--columns", "Trace"}), "Trace\ntwo\nthree\n");
  EXPECT_EQ(Dump({"--where", "text != \"two\"", "--profile", "a", "--columns", "Trace"}),
            "Trace\nthree\n");
  ColourRules none;
  const std::string rules = m_dir.File("none.colours", ColourRulesText(none));
  EXPECT_EQ(Dump({"--profile", "a", "--color", "always", "--colour-rules", rules}),
            "Trace  PID\ntwo    812\nthree  812\n");
}

TEST_F(TrcProfile, TheMarksOfTheFilterDialogChooseToo) {
  Profile profile = Of("a");
  profile.state.marks = "text != \"three\"";
  Keep(profile);
  EXPECT_EQ(Dump({"--profile", "a", "--columns", "Trace"}), "Trace\ntwo\n");
}

TEST_F(TrcProfile, LinesForProgramsHaveAllValuesOfTheTracesThatItsTextChooses) {
  Keep(Of("a"));
  EXPECT_EQ(Texts(Dump({"--profile", "a", "--format", "jsonl"})), "two three");
}

TEST_F(TrcProfile, ThatSaysNothingChangesNothing) {
  Keep({"empty", {}});
  EXPECT_EQ(Dump({"--profile", "empty"}), Dump({}));
}

TEST_F(TrcProfile, TheColumnSinceIsLeftOutWhereNoTraceIsNamedToCountFrom) {
  Profile profile{"a", {}};
  profile.state.columns = {{"Since", 50, true}, {"Trace", 300, true}};
  Keep(profile);
  EXPECT_EQ(Dump({"--profile", "a", "--count", "1"}), "Trace\none\n");
  const std::string with = Dump({"--profile", "a", "--count", "1", "--since-row", "0"});
  EXPECT_EQ(with, "    Since  Trace\nreference  one\n");
}

TEST_F(TrcProfile, AnExportedOneIsReadFromItsFile) {
  const std::string path = m_dir.File("x.profile");
  ASSERT_TRUE(SaveProfile(path, Of("x"), nullptr));
  EXPECT_EQ(Dump({"--profile", path}), "Trace  PID\ntwo    812\nthree  812\n");
  EXPECT_TRUE(
      Has(WhyNot({"--profile", m_dir.File("bad", "{}")}), "bad: not of the form tessera-profile"));
}

TEST_F(TrcProfile, AnUnknownNameIsToldWithThoseThatThereAre) {
  EXPECT_TRUE(Has(WhyNot({"--profile", "slow"}), "there is no profile \"slow\"; there are none"));
  Keep(Of("Slow"));
  Keep(Of("errors\x1b[31m"));
  const std::string why = WhyNot({"--profile", "slwo"});
  EXPECT_TRUE(Has(why, "there is no profile \"slwo\"; did you mean \"Slow\"?")) << why;
  EXPECT_TRUE(Has(why, "there are errors")) << why;
  EXPECT_FALSE(Has(why, "\x1b")) << "a name is no command to the terminal";
}

TEST_F(TrcProfile, AFilterTextThatIsWrongIsToldWithItsProfile) {
  Profile profile{"odd", {}};
  profile.state.filter = "weight > 5";
  Keep(profile);
  const std::string why = WhyNot({"--profile", "odd"});
  EXPECT_TRUE(Has(why, "--profile: odd: there is no field \"weight\"")) << why;
}

}  // namespace
