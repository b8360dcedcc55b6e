// trc config with a real service and real applications.
#include "live_fixture.h"

namespace {

using nlohmann::json;

class LiveConfigTest : public LiveProgramsTest {
 protected:
  void SetUp() override { StartService(); }
  static TrcRun Config(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "config");
    return RunTrc(std::move(arguments));
  }
  // Of an application "orders" with the traces Net and Db, each Connect, Close and Request.
  TrcStart Orders(const std::string& name = "orders") {
    return {.arguments = {"emit", "--app", name, "--rate", "100"}};
  }
  bool IsTraced(const std::string& app) {
    return Eventually([&] { return IsHere(app); });
  }
  std::string File(const std::string& lines) {
    return m_dir.File("a.tcf", "TCF Version 3.2\n" + lines);
  }
};

TEST_F(LiveConfigTest, WhatWasSavedIsBackAfterItWasApplied) {
  TrcProcess orders(Orders());
  ASSERT_TRUE(IsTraced("orders"));
  ASSERT_EQ(RunTrc({"set", "orders", "--all", "off"}).status, 0);
  ASSERT_EQ(RunTrc({"set", "orders", "Net/Close", "Warn", "Stack"}).status, 0);
  const std::string path = m_dir.File("orders.tcf");
  TrcRun run = Config({"save", path, "orders"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out + run.err, "");
  EXPECT_EQ(ReadAll(path),
            "TCF Version 3.2\n"
            "APP: \"orders\"\n"
            "SINK: Socket \"localhost\" \"\"\n"
            "TRACE: \"Net\" \"Close\" Warn Stack\n");
  EXPECT_EQ(Config({"diff", "localhost", path}).status, 0);
  ASSERT_EQ(RunTrc({"set", "orders", "Net/Close", "off"}).status, 0);
  ASSERT_EQ(RunTrc({"set", "orders", "Db/Close", "Info"}).status, 0);
  ASSERT_EQ(RunTrc({"sink", "orders", "--file", m_dir.File("own.trc")}).status, 0);
  run = Config({"diff", "localhost", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "  APP: \"orders\"\n- SINK: File \"" + m_dir.File("own.trc") +
                         "\" \"flush=0;maxfiles=0;maxsize=0;\"\n"
                         "+ SINK: Socket \"localhost\" \"\"\n"
                         "- TRACE: \"Db\" \"Close\" Info\n"
                         "+ TRACE: \"Net\" \"Close\" Warn Stack\n");
  run = Config({"apply", path});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out + run.err, "");
  run = Config({"diff", path, "localhost"});
  EXPECT_EQ(run.status, 0) << run.out;
}

TEST_F(LiveConfigTest, AFileAppliedBeforeItsApplicationRunsWaitsForIt) {
  {
    TrcProcess orders(Orders());
    ASSERT_TRUE(IsTraced("orders"));
  }
  ASSERT_TRUE(Eventually([] { return RunTrc({"apps"}).out.empty(); }));
  ASSERT_EQ(Config({"apply", File("APP: \"orders\"\nTRACE: \"Db\" \"Close\" Error\n")}).status, 0);
  TrcProcess orders(Orders());
  EXPECT_TRUE(Eventually([&] {
    return RunTrc({"apps"}).out == "orders\n" &&
           Config({"show", "--machine", "localhost"}).out.find("Db/Close     Error\n") !=
               std::string::npos;
  }));
}

TEST_F(LiveConfigTest, SaveWithoutNamesTakesAllAndWithNamesTheirOrder) {
  TrcProcess one(Orders("b")), two(Orders("a"));
  ASSERT_TRUE(IsTraced("a") && IsTraced("b"));
  const std::string path = m_dir.File("all.tcf");
  const auto apps = [&] {
    std::string names;
    for (const json& app : json::parse(Config({"show", path, "--json"}).out))
      names += app["application"].get<std::string>() + " ";
    return names;
  };
  EXPECT_EQ(Config({"save", path}).status, 0);
  EXPECT_EQ(apps(), "a b ");
  EXPECT_EQ(Config({"save", path, "b", "a", "b"}).status, 0);
  EXPECT_EQ(apps(), "b a ");
}

TEST_F(LiveConfigTest, ShowOfAMachineHasEveryTraceOfItsApplications) {
  TrcProcess orders(Orders());
  ASSERT_TRUE(IsTraced("orders"));
  ASSERT_EQ(RunTrc({"set", "orders", "Net", "off"}).status, 0);
  EXPECT_EQ(Config({"show", "-m", "localhost"}).out, RunTrc({"show", "orders"}).out);
  EXPECT_EQ(json::parse(Config({"show", "-m", "localhost", "--json"}).out),
            json::array({json::parse(RunTrc({"show", "orders", "--json"}).out)}));
}

TEST_F(LiveConfigTest, CheckWithAMachineNamesWhatItDoesNotKnowAndTheFileStaysGood) {
  TrcProcess orders(Orders());
  ASSERT_TRUE(IsTraced("orders"));
  const std::string path = File(
      "APP: \"orders\"\nTRACE: \"Net\" \"Close\" Info\nTRACE: \"Net\" \"Gone\" Info\n"
      "APP: \"nobody\"\nTRACE: \"Net\" \"Close\" Info\n");
  const TrcRun run = Config({"check", path, "--machine", "localhost"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, path +
                         ": good, 2 applications, 3 traces\n"
                         "unknown trace \"Net/Gone\" of \"orders\"\n"
                         "unknown application \"nobody\"\n");
}

TEST_F(LiveConfigTest, ApplyTellsTracesThatItPassesOver) {
  TrcProcess orders(Orders());
  ASSERT_TRUE(IsTraced("orders"));
  std::string lines = "APP: \"orders\"\nTRACE: \"Net\" \"Close\" Info\n";
  for (int i = 0; i < 12; ++i) lines += "TRACE: \"Old\" \"" + std::to_string(i) + "\" Info\n";
  const TrcRun run = Config({"apply", File(lines)});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err.substr(0, run.err.find('\n') + 1),
            "trc: unknown trace \"Old/0\" of \"orders\", passed over\n");
  EXPECT_NE(run.err.find("trc: and 2 more unknown traces, passed over\n"), run.err.npos) << run.err;
  EXPECT_NE(RunTrc({"show", "orders"}).out.find("Net/Close    Info\n"), std::string::npos);
}

TEST_F(LiveConfigTest, ApplyNamesAnApplicationWhoseChangesAreRefused) {
  const std::string tooLong(5000, 'x');
  const TrcRun run =
      Config({"apply", File("APP: \"a\"\nSINK: File \"" + tooLong + "\" \"\"\nAPP: \"b\"\n")});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err,
            "trc: only 1 of 2 applications could be configured: the machine has not accepted the "
            "change of \"a\"\n");
}

// A window that opened a file holds it before it runs.
TEST_F(LiveConfigTest, AnApplicationThatHasNotTracedYetIsThereAndHasNoTraceToSet) {
  const QuorPtr<trace_App_i> held = trace_App_i::Create("", "early");
  ASSERT_TRUE(held);
  ASSERT_EQ(RunTrc({"apps"}).out, "early\n");
  const TrcRun run = RunTrc({"set", "early", "--all", "max"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "trc: \"early\" has no traces yet\n");
}

TEST_F(LiveConfigTest, AFileWithABadLineChangesNothing) {
  TrcProcess orders(Orders());
  ASSERT_TRUE(IsTraced("orders"));
  const std::string before = RunTrc({"show", "orders"}).out;
  const TrcRun run =
      Config({"apply", File("APP: \"orders\"\nTRACE: \"Net\" \"Close\" Stack\nAPP: \"b\"\nbad\n")});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find(":5: "), run.err.npos) << run.err;
  EXPECT_EQ(RunTrc({"show", "orders"}).out, before);
  EXPECT_EQ(RunTrc({"apps"}).out, "orders\n");
}

// Not even the service's memory of who holds an application.
TEST_F(LiveConfigTest, LookingChangesNothingOnTheMachine) {
  TrcProcess orders(Orders());
  ASSERT_TRUE(IsTraced("orders"));
  ASSERT_EQ(RunTrc({"set", "orders", "Net/Close", "Info"}).status, 0);
  const std::string path = File("APP: \"orders\"\nAPP: \"nobody\"\nTRACE: \"N\" \"x\" Info\n");
  const auto before = State();
  ASSERT_FALSE(before.empty());
  EXPECT_EQ(Config({"check", path, "-m", "localhost"}).status, 0);
  EXPECT_EQ(Config({"show", "-m", "localhost"}).status, 0);
  EXPECT_EQ(Config({"diff", path, "localhost"}).status, 1);
  EXPECT_EQ(Config({"save", m_dir.File("x.tcf")}).status, 0);
  EXPECT_EQ(RunTrc({"show", "orders"}).status, 0);
  EXPECT_EQ(RunTrc({"show", "nobody"}).status, 1);
  EXPECT_TRUE(State() == before);
}

TEST_F(LiveConfigTest, AnApplicationThatIsNotThereIsNotSaved) {
  TrcProcess orders(Orders());
  ASSERT_TRUE(IsTraced("orders"));
  const std::string path = m_dir.File("x.tcf");
  const TrcRun run = Config({"save", path, "orders", "Order"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "trc: there is no application \"Order\"; did you mean \"orders\"?\n");
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(LiveConfigTest, WithoutAnApplicationAnExistingFileStays) {
  const std::string path = m_dir.File("x.tcf", "before");
  const TrcRun run = Config({"save", path});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "trc: no application is registered there, and " + path + " is not written\n");
  EXPECT_EQ(ReadAll(path), "before");
}

TEST_F(LiveConfigTest, ASaveGoesBehindALinkAndAFailedOneLeavesTheFile) {
  TrcProcess orders(Orders());
  ASSERT_TRUE(IsTraced("orders"));
  const std::string path = m_dir.File("real.tcf", "before"), link = m_dir.File("link.tcf");
  std::filesystem::create_symlink("real.tcf", link);
  const TrcRun full = RunTrc({.arguments = {"config", "save", link}, .fileBytesMax = 20});
  EXPECT_EQ(full.status, 2);
  EXPECT_EQ(full.err, "trc: " + link + ": not written: File too large\n");
  EXPECT_EQ(ReadAll(path), "before");
  EXPECT_EQ(Config({"save", link}).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(Config({"check", path}).status, 0);
  const TrcRun device = Config({"save", "/dev/full"});
  EXPECT_EQ(device.status, 2);
  EXPECT_EQ(device.err, "trc: /dev/full: not written: No space left on device\n");
  EXPECT_EQ(Config({"save", "/proc/x.tcf"}).status, 2);
  EXPECT_EQ(Config({"save", m_dir.File("none/x.tcf")}).err,
            "trc: " + m_dir.File("none/x.tcf") + ": not written: No such file or directory\n");
  for (const auto& entry : std::filesystem::directory_iterator(m_dir.Path()))
    EXPECT_EQ(entry.path().extension() == ".part", false) << entry.path();
}

// The format has no way to hold the end of a line inside a name.
TEST_F(LiveConfigTest, ANameThatAFileCannotHoldIsToldInsteadOfABadFile) {
  TrcProcess odd(
      {.arguments = {"emit", "--app", "odd", "--components", "N\nx,M", "--rate", "100"}});
  ASSERT_TRUE(Eventually([] {
    return RunTrc({"show", "odd"}).out.find("N\\nx/Close") != std::string::npos;
  }));
  const std::string path = m_dir.File("x.tcf");
  const TrcRun run = Config({"save", path});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("not written: a .tcf file cannot hold this line: TRACE: \"N"),
            run.err.npos)
      << run.err;
  EXPECT_FALSE(std::filesystem::exists(path));
  // Its lines are there only when it is on.
  EXPECT_EQ(RunTrc({"set", "odd", "N\nx", "off"}).status, 0);
  EXPECT_EQ(Config({"save", path}).status, 0);
}

TEST_F(LiveConfigTest, AServiceThatStandsStillIsNoEmptyMachine) {
  const std::string path = m_dir.File("x.tcf", "before");
  kill(m_service, SIGSTOP);
  const auto began = std::chrono::steady_clock::now();
  TrcProcess save({.arguments = {"config", "save", path}});
  TrcProcess apps({.arguments = {"apps"}});
  const TrcRun saved = save.Finish(), listed = apps.Finish();
  kill(m_service, SIGCONT);
  for (const TrcRun& run : {saved, listed}) {
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err, "");
  }
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(20));
  EXPECT_EQ(ReadAll(path), "before");
}

TEST_F(LiveConfigTest, WithoutAServiceNothingIsAppliedOrCompared) {
  StopService(SIGTERM);
  const std::string path = File("APP: \"orders\"\nAPP: \"b\"\n");
  const std::string why = "trc: no trace service runs here; start it with quord (" +
                          m_dir.File("quor/quord.sock") + ": No such file or directory)\n";
  for (const std::vector<std::string>& command : {std::vector<std::string>{"apply", path},
                                                  {"check", path, "-m", "localhost"},
                                                  {"show", "-m", "localhost"},
                                                  {"save", m_dir.File("x.tcf")},
                                                  {"diff", path, "localhost"}}) {
    const TrcRun run = Config(command);
    EXPECT_EQ(run.status, 2) << command[0];
    EXPECT_EQ(run.err.substr(0, why.size()), why) << command[0];
  }
}

}  // namespace
