// trc config on files alone; tests/quor/live has it on machines.
#include "run_trc.h"
#include "support/sanitizer_slowdown.h"
#include "support/temp_dir.h"

namespace {

using nlohmann::json;

constexpr char kOrders[] =
    "TCF Version 3.2\n"
    "APP: \"orders\"\n"
    "SINK: File \"/var/log/orders.trc\" \"flush=1;maxfiles=10;maxsize=5;\"\n"
    "TRACE: \"Net\" \"Connect\" Info Warn\n"
    "TRACE: \"Database\" \"Query\" Error Stack\n"
    "TRACE: \"Net\" \"Close\" Info\n"
    "APP: \"billing\"\n";

// Processor time of the programs that have ended: what else runs on the machine does not count.
double ChildrenSeconds() {
  rusage used{};
  getrusage(RUSAGE_CHILDREN, &used);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return seconds(used.ru_utime) + seconds(used.ru_stime);
}

class TrcConfigTest : public testing::Test {
 protected:
  TrcConfigTest() {
    // Nothing here may look for a service.
    setenv("QUOR_SOCKET", m_dir.File("none.sock").c_str(), 1);
    setenv("QUOR_AUTOSTART", "0", 1);
  }
  ~TrcConfigTest() override { unsetenv("QUOR_SOCKET"); }
  TrcRun Config(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "config");
    return RunTrc(std::move(arguments));
  }
  // Words of a check that finds the file bad.
  std::string Bad(const std::string& text) {
    const std::string path = m_dir.File("bad.tcf", text);
    const TrcRun run = Config({"check", path});
    EXPECT_EQ(run.status, 2) << text;
    EXPECT_EQ(run.out, "");
    const std::string head = "trc: " + path;
    EXPECT_EQ(run.err.substr(0, head.size()), head) << run.err;
    return run.err.substr(std::min(head.size(), run.err.size()));
  }

  const TempDir m_dir;
  const std::string m_orders = m_dir.File("orders.tcf", kOrders);
};

TEST_F(TrcConfigTest, CheckOfAGoodFileSaysWhatItHolds) {
  TrcRun run = Config({"check", m_orders});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, m_orders + ": good, 2 applications, 3 traces\n");
  const std::string empty = m_dir.File("empty.tcf", "TCF Version 3.2\r\n");
  run = Config({"check", empty});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, empty + ": good, 0 applications, 0 traces\n");
}

TEST_F(TrcConfigTest, CheckTellsTheFirstBadLineByNumberReasonAndText) {
  EXPECT_EQ(Bad("TCF Version 3.2\n\nAPP: \"a\"\nTRACE: \"b\" \"c\" Nonsense\nSNIK: x\n"),
            ":4: \"Nonsense\" is no setting: TRACE: \"b\" \"c\" Nonsense\n");
  EXPECT_EQ(Bad("TCF Version 3.2\nTRACE: \"b\" \"c\" Info\n"),
            ":2: no APP: line stands in front of it: TRACE: \"b\" \"c\" Info\n");
  EXPECT_EQ(Bad("TCF Version 3.1\n"),
            ":1: the first line is not \"TCF Version 3.2\": TCF Version 3.1\n");
  EXPECT_EQ(Bad(""), ":1: the file is empty\n");
}

TEST_F(TrcConfigTest, WhatABadLineHoldsIsShownShortAndVisible) {
  EXPECT_EQ(Bad(std::string("TCF\0\x1B[2J\n", 9)),
            ":1: the first line is not \"TCF Version 3.2\": TCF\\x00\\x1b[2J\n");
  const std::string long_word(300'000, 'x');
  EXPECT_LT(Bad("TCF Version 3.2\nAPP: \"a\"\nTRACE: \"b\" \"c\" " + long_word + "\n").size(),
            1000u);
}

TEST_F(TrcConfigTest, AFileThatIsNotThereIsNoConfiguration) {
  for (const char* const command : {"check", "show", "apply"}) {
    const TrcRun run = Config({command, m_dir.File("none.tcf")});
    EXPECT_EQ(run.status, 2) << command;
    EXPECT_EQ(run.err, "trc: " + m_dir.File("none.tcf") + ": No such file or directory\n");
    EXPECT_EQ(Config({command, m_dir.Path()}).err, "trc: " + m_dir.Path() + ": Is a directory\n");
  }
}

TEST_F(TrcConfigTest, ShowOfAFileIsATablePerApplication) {
  const TrcRun run = Config({"show", m_orders});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            "Application  orders\n"
            "Sink         file \"/var/log/orders.trc\" \"flush=1;maxfiles=10;maxsize=5;\"\n"
            "Net/Connect     Info, Warn\n"
            "Net/Close       Info\n"
            "Database/Query  Error, Stack\n"
            "\n"
            "Application  billing\n"
            "Sink         stays as it is\n");
}

TEST_F(TrcConfigTest, ShowAsJsonIsAnArrayOfApplications) {
  const TrcRun run = Config({"show", m_orders, "--json"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(json::parse(run.out), json::parse(R"([
    {"application": "orders",
     "sink": {"type": "file", "name": "/var/log/orders.trc",
              "options": "flush=1;maxfiles=10;maxsize=5;"},
     "components": [
       {"name": "Net", "categories": [
         {"name": "Connect", "settings": 3, "words": "Info, Warn"},
         {"name": "Close", "settings": 1, "words": "Info"}]},
       {"name": "Database", "categories": [
         {"name": "Query", "settings": 516, "words": "Error, Stack"}]}]},
    {"application": "billing", "sink": null, "components": []}])"));
  EXPECT_EQ(json::parse(Config({"show", "-j", m_dir.File("e.tcf", "TCF Version 3.2")}).out),
            json::array());
}

TEST_F(TrcConfigTest, DiffOfFilesEndsWithWhetherTheyDiffer) {
  const std::string other = m_dir.File("other.tcf",
                                       "TCF Version 3.2\r\nAPP: \"billing\"\r\nAPP: \"orders\"\r\n"
                                       "SINK: Socket \"localhost\" \"\"\r\n"
                                       "TRACE: \"Net\" \"Close\" Info\r\n"
                                       "TRACE: \"Net\" \"Connect\" Warn\r\n");
  TrcRun run = Config({"diff", m_orders, other});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out,
            "  APP: \"orders\"\n"
            "- SINK: File \"/var/log/orders.trc\" \"flush=1;maxfiles=10;maxsize=5;\"\n"
            "+ SINK: Socket \"localhost\" \"\"\n"
            "- TRACE: \"Net\" \"Connect\" Info Warn\n"
            "+ TRACE: \"Net\" \"Connect\" Warn\n"
            "- TRACE: \"Database\" \"Query\" Error Stack\n");
  run = Config({"diff", m_orders, m_orders});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
}

TEST_F(TrcConfigTest, DiffHasTroubleWithABadFileAndAMachineThatIsNotThere) {
  const std::string bad = m_dir.File("bad.tcf", "x\n");
  for (const std::vector<std::string>& sides :
       {std::vector{m_orders, bad}, std::vector{bad, m_orders}}) {
    const TrcRun run = Config({"diff", sides[0], sides[1]});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.out, "");
  }
  const TrcRun run = Config({"diff", m_orders, "127.0.0.1:1"});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("trc: 127.0.0.1:1 was taken for a machine: there is no such file\n"),
            run.err.npos)
      << run.err;
}

TEST_F(TrcConfigTest, WrongUseIsRefusedWithTheHelpOfTheCommand) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{}, "trc: a command is needed\nTry 'trc config --help'.\n"},
      {{"chek"},
       "trc: there is no command \"chek\"; did you mean \"check\"?\nTry 'trc config --help'.\n"},
      {{"show"}, "trc: show: takes a FILE or --machine MACHINE\nTry 'trc config show --help'.\n"},
      {{"show", "a", "-m", "b"},
       "trc: show: takes a FILE or --machine MACHINE\nTry 'trc config show --help'.\n"},
      {{"show", ""}, "trc: show: the name of the file is empty\nTry 'trc config show --help'.\n"},
      {{"diff", "a"}, "trc: B is required\nTry 'trc config diff --help'.\n"},
      {{"diff", "", "a"}, "trc: diff: A is empty\nTry 'trc config diff --help'.\n"},
      {{"diff", "a", ""}, "trc: diff: B is empty\nTry 'trc config diff --help'.\n"},
      {{"check", "a", "b"},
       "trc: \"b\" is one argument too many\nTry 'trc config check --help'.\n"},
      {{"show", "a", "--json=1"}, "trc: --json takes no value\nTry 'trc config show --help'.\n"}};
  for (const auto& [arguments, words] : cases) {
    const TrcRun run = Config(arguments);
    EXPECT_EQ(run.status, 2) << words;
    EXPECT_EQ(run.err, words);
  }
}

TEST_F(TrcConfigTest, AFileOfAHundredThousandLinesIsCheckedInLessThanASecond) {
  std::string text = "TCF Version 3.2\n";
  for (int line = 0; line < 100'000; ++line)
    text += line % 1000 == 0 ? "APP: \"application " + std::to_string(line) + "\"\n"
                             : "TRACE: \"Net\" \"Category " + std::to_string(line) + "\" Info\n";
  const std::string path = m_dir.File("many.tcf", text);
  const double began = ChildrenSeconds();
  const TrcRun run = Config({"check", path});
  EXPECT_LT(ChildrenSeconds() - began, kSanitizerSlowdown);
  EXPECT_EQ(run.out, path + ": good, 100 applications, 99900 traces\n");
}

}  // namespace
