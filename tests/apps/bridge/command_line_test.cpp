// What quor-bridge takes on its command line, and what it says about that.
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <vector>

#include "bridge_line.h"
#include "support/temp_dir.h"

namespace {

std::string WholeFile(const std::string& path) {
  std::ostringstream all;
  all << std::ifstream(path).rdbuf();
  return all.str();
}

std::vector<std::string> Verbs() {
  const std::string help = RunBridge("--help").text;
  const std::size_t begin = help.find("\nCommands:\n");
  std::vector<std::string> verbs;
  const std::regex aVerb("\n  ([a-z][a-z-]*)");
  const std::string list = begin == help.npos ? "" : help.substr(begin + 10);
  const std::string block = list.substr(0, list.find("\n\n"));
  for (std::sregex_iterator found(block.begin(), block.end(), aVerb), end; found != end; ++found)
    verbs.push_back((*found)[1]);
  return verbs;
}

TEST(BridgeCommandLine, WrongUseEndsWithTwoAndNamesTheHelp) {
  for (const std::string words :
       {"", "conff", "conf", "conf --nosuch", "conf --stream 'a b' --monitor m", "--version=5",
        "conf extra --monitor m"}) {
    const BridgeSaid said = RunBridge(words);
    EXPECT_EQ(said.status, 2) << words << "\n" << said.text;
    EXPECT_EQ(said.text.rfind("quor-bridge: ", 0), 0u) << words << "\n" << said.text;
    EXPECT_NE(said.text.find("--help'"), std::string::npos) << words << "\n" << said.text;
  }
  EXPECT_NE(RunBridge("conff").text.find("conf"), std::string::npos);
}

TEST(BridgeCommandLine, HelpAndVersionGoToStandardOutput) {
  EXPECT_EQ(RunBridge("--version 2>/dev/null").text.rfind("quor-bridge ", 0), 0u);
  EXPECT_EQ(RunBridge("--help 2>/dev/null").status, 0);
  EXPECT_NE(RunBridge("--help >/dev/full").status, 0);
}

TEST(BridgeCommandLine, ThePackagedManualAndCompletionsKnowEveryCommandAndOption) {
  const std::string folder = getenv("QUOR_BRIDGE_PACKAGING");
  std::string manual = WholeFile(folder + "/man/quor-bridge.1");
  for (std::size_t at; (at = manual.find("\\-")) != manual.npos;) manual.replace(at, 2, "-");
  const std::vector<std::string> verbs = Verbs();
  ASSERT_GE(verbs.size(), 1u);
  std::set<std::string> options;
  const std::regex anOption("\n  (?:-.,)?--([a-z-]+)");
  for (const std::string& verb : verbs) {
    const std::string help = RunBridge(verb + " --help").text;
    for (std::sregex_iterator found(help.begin(), help.end(), anOption), end; found != end; ++found)
      if ((*found)[1] != "help") options.insert((*found)[1]);
  }
  EXPECT_GE(options.size(), 4u);
  for (const std::string file : {"quor-bridge.bash", "_quor-bridge", "quor-bridge.fish"}) {
    const std::string text = WholeFile(folder + "/completions/" + file);
    const std::string dash = file == "quor-bridge.fish" ? "-l " : "--";
    for (const std::string& option : options)
      EXPECT_NE(text.find(dash + option), text.npos) << file << " " << option;
    for (const std::string& verb : verbs)
      EXPECT_NE(text.find(verb), text.npos) << file << " " << verb;
  }
  for (const std::string& option : options)
    EXPECT_NE(manual.find("--" + option), manual.npos) << option;
  for (const std::string& verb : verbs)
    EXPECT_NE(manual.find(".B " + verb + "\n"), manual.npos) << verb;
}

// The unit with the program where it is here.
TEST(BridgeUnit, IsRightAndExposedLittle) {
  std::string text = WholeFile(std::string(getenv("QUOR_BRIDGE_PACKAGING")) +
                               "/systemd/system/quor-bridge-publish.service");
  const std::string start = "ExecStart=quor-bridge";
  const std::size_t at = text.find(start);
  ASSERT_NE(at, text.npos);
  text.replace(at, start.size(), std::string("ExecStart=") + getenv("QUOR_BRIDGE"));
  const TempDir folder;
  const std::string unit = folder.File("quor-bridge-publish.service");
  std::ofstream(unit) << text;
  const auto said = [&](const std::string& what) {
    FILE* const pipe = popen(("systemd-analyze " + what + " '" + unit + "' 2>&1").c_str(), "r");
    std::string all;
    for (char piece[256]; std::fgets(piece, sizeof piece, pipe);) all += piece;
    EXPECT_EQ(pclose(pipe), 0) << all;
    return all;
  };
  EXPECT_EQ(said("--system --man=no verify"), "");
  const std::string exposed = said("security --offline=true --no-pager");
  const std::string words = "Overall exposure level for quor-bridge-publish.service: ";
  const std::size_t level = exposed.find(words);
  ASSERT_NE(level, exposed.npos) << exposed;
  EXPECT_LE(std::stod(exposed.substr(level + words.size())), 3.0);
}

TEST(BridgeConf, AMachineMayPublishBelowItsOwnNameOnly) {
  const BridgeSaid said = RunBridge("conf --forward web1 --forward 'we.b*2'");
  EXPECT_EQ(said.status, 0);
  EXPECT_NE(said.text.find("user: \"web1@forward.quor\""), std::string::npos) << said.text;
  EXPECT_NE(said.text.find("\"quor1.web1.>\""), std::string::npos);
  EXPECT_NE(said.text.find("\"quor1.we=2Eb=2A2.>\""), std::string::npos) << said.text;
  EXPECT_EQ(said.text.find("CREATE.QUOR1"), std::string::npos) << "a machine reads no traces";
  EXPECT_NE(said.text.find("\"$KV.quor1-settings.we=2Eb=2A2.*.state\""), std::string::npos);
  EXPECT_EQ(said.text.find("\"$KV.quor1-settings.web1.*\""), std::string::npos)
      << "it does not say what is wanted of it";
}

TEST(BridgeConf, EachUserHearsItsOwnAnswersOnly) {
  const BridgeSaid said = RunBridge("conf --forward web1 --monitor 'b.*>' --configure carol");
  for (const char* const inbox :
       {"\"_INBOX_web1=40forward=2Equor.>\"", "\"_INBOX_b=2E=2A=3E=40monitor=2Equor.>\"",
        "\"_INBOX_carol=40configure=2Equor.>\""})
    EXPECT_NE(said.text.find(inbox), std::string::npos) << inbox;
  EXPECT_EQ(said.text.find("_INBOX."), std::string::npos) << said.text;
}

TEST(BridgeConf, AMonitorOfSomeApplicationsMayMakeConsumersOfTheirSubjectsOnly) {
  const BridgeSaid said = RunBridge("conf --stream S --monitor bob=orders,x.y");
  EXPECT_EQ(said.status, 0);
  EXPECT_NE(said.text.find("\"$JS.API.CONSUMER.CREATE.S.*.quor1.*.orders\""), std::string::npos);
  EXPECT_NE(said.text.find("\"$JS.API.CONSUMER.CREATE.S.*.quor1.*.x=2Ey\""), std::string::npos);
  EXPECT_NE(said.text.find("\"$JS.API.CONSUMER.CREATE.S.*.quor1.*._\""), std::string::npos);
  EXPECT_EQ(said.text.find("CREATE.S.*.quor1.>"), std::string::npos) << said.text;
  EXPECT_EQ(said.text.find("STREAM.CREATE"), std::string::npos) << said.text;
}

}  // namespace
