// Files of a service that traces a whole machine: its traces name the account of their process.
#include <pwd.h>
#include <unistd.h>

#include <fstream>

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

std::string OwnName() {
  const passwd* const entry = getpwuid(getuid());
  return entry ? entry->pw_name : std::to_string(getuid());
}

class TrcAccount : public testing::Test {
 protected:
  // Two traces of alice's, one of a process without an account, one of ours.
  TrcAccount() {
    TrcImage image;
    image.Name(1, "web-1").Name(2, "shop").Name(3, "Net").Name(4, "4711 alice").Name(5, "812");
    image.Name(6, "12 " + OwnName()).Name(7, "13");
    image.Trace({.text = "a", .machine = 1, .app = 2, .component = 3, .pid = 4, .tid = 7});
    image.Trace({.text = "b", .machine = 1, .app = 2, .component = 3, .pid = 5, .tid = 7});
    image.Trace({.text = "c", .machine = 1, .app = 2, .component = 3, .pid = 6, .tid = 7});
    image.Trace({.text = "d", .machine = 1, .app = 2, .component = 3, .pid = 4, .tid = 7});
    m_file = image.WriteTo(m_directory.File("in.trc"));
  }
  std::string Dumped(const std::vector<std::string>& options) {
    std::string dumped;
    for (const json& trace : DumpedTraces(m_file, options)) dumped += trace["text"];
    return dumped;
  }
  std::string Exported(std::vector<std::string> options) {
    options.insert(options.begin(), {"export", m_file, "-"});
    const TrcRun run = RunTrc(options);
    EXPECT_EQ(run.status, 0) << run.err;
    return run.out;
  }

  TempDir m_directory;
  std::string m_file;
};

TEST_F(TrcAccount, JsonLinesHaveItBesideTheNumberOfTheProcess) {
  const auto traces = DumpedTraces(m_file);
  ASSERT_EQ(traces.size(), 4u);
  EXPECT_EQ(traces[0]["pid"], "4711");
  EXPECT_EQ(traces[0]["account"], "alice");
  EXPECT_EQ(traces[1]["pid"], "812");
  EXPECT_FALSE(traces[1].contains("account"));
  EXPECT_EQ(traces[3], [&] {
    json same = traces[0];
    same["i"] = 3;
    same["count"] = 4;
    same["text"] = "d";
    return same;
  }());
}

TEST_F(TrcAccount, ADumpComesBackWithIt) {
  const std::string dumped = RunTrc({"dump", "-f", "jsonl", m_file}).out;
  const std::string lines = m_directory.File("lines.jsonl"), back = m_directory.File("back.trc");
  std::ofstream(lines) << dumped;
  const TrcRun run = RunTrc({"import", "--jsonl", lines, back});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(RunTrc({"dump", "-f", "jsonl", back}).out, dumped);
}

TEST_F(TrcAccount, ANameThatIsAProcessAndSomethingElseIsWholeElsewhere) {
  TrcImage image;
  image.Name(1, "4711 alice");
  image.Trace({.text = "x", .app = 1, .pid = 1, .tid = 1});
  const auto traces = DumpedTraces(image.WriteTo(m_directory.File("same.trc")));
  ASSERT_EQ(traces.size(), 1u);
  EXPECT_EQ(traces[0]["application"], "4711 alice");
  EXPECT_EQ(traces[0]["pid"], "4711");
  EXPECT_EQ(traces[0]["tid"], "4711 alice");
}

TEST_F(TrcAccount, ItIsAColumnForThoseWhoNameIt) {
  const TrcRun run = RunTrc({"dump", m_file, "--columns", "pid,ACCOUNT,Trace"});
  EXPECT_EQ(run.status, 0) << run.err;
  const auto lines = LinesOf(run.out);
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_TRUE(lines[0].starts_with("PID         Account")) << lines[0];
  EXPECT_TRUE(lines[1].starts_with("4711 alice  alice  ")) << lines[1];
  EXPECT_TRUE(lines[2].starts_with("812                ")) << lines[2];
  EXPECT_TRUE(lines[2].ends_with("b")) << lines[2];
}

TEST_F(TrcAccount, AnExportHasItBehindTheColumnsOfTheListWhenItIsNamed) {
  EXPECT_EQ(LinesOf(Exported({"--columns", "Account,PID"}))[1], "\"4711 alice\",\"alice\"");
  EXPECT_EQ(Exported({"-f", "csv-rfc4180", "--columns", "Account,Trace"}),
            "Trace,Account\r\na,alice\r\nb,\r\nc," + OwnName() + "\r\nd,alice\r\n");
  const auto rows = JsonLinesOf(Exported({"-f", "jsonl", "--columns", "PID,Account"}));
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0], json({{"PID", "4711 alice"}, {"Account", "alice"}}));
  EXPECT_EQ(rows[1], json({{"PID", "812"}, {"Account", ""}}));
  EXPECT_FALSE(JsonLinesOf(Exported({"-f", "jsonl"}))[0].contains("Account"))
      << "all columns are those of the list";
}

TEST_F(TrcAccount, UserKeepsTheTracesOfOneAccount) {
  EXPECT_EQ(Dumped({"--user", "alice"}), "ad");
  EXPECT_EQ(Dumped({"--user", OwnName()}), "c");
  EXPECT_EQ(Dumped({"--user", std::to_string(getuid())}), "c") << "by its number";
  EXPECT_EQ(Dumped({"--user", "alice", "--uncheck", "All Threads/web-1/PID:4711 alice/TID:13"}),
            "");
  EXPECT_EQ(Dumped({"--user", "alice", "--check", ""}), "ad") << "also before --check";
  EXPECT_EQ(Dumped({"--check", "All Threads/web-1/PID:4711 alice", "--user", "alice"}), "ad");
  const std::string out = m_directory.File("hers.trc");
  EXPECT_EQ(RunTrc({"save", m_file, out, "--user", "alice"}).status, 0);
  EXPECT_EQ(DumpedTraces(out).size(), 2u);
  const TrcRun tree = RunTrc({"tree", m_file, "--user", "alice", "--depth", "3"});
  EXPECT_EQ(tree.status, 0) << tree.err;
  EXPECT_NE(tree.out.find("PID 4711 alice - "), std::string::npos) << tree.out;
  EXPECT_EQ(tree.out.find("PID 812"), std::string::npos) << tree.out;
}

TEST_F(TrcAccount, UserMeansTheWholeNameOfAnAccount) {
  TrcImage image;
  image.Name(1, "web-1").Name(2, "1 al").Name(3, "2 alice").Name(4, "3 malice");
  image.Trace({.text = "short", .machine = 1, .pid = 2});
  image.Trace({.text = "long", .machine = 1, .pid = 3});
  image.Trace({.text = "other", .machine = 1, .pid = 4});
  m_file = image.WriteTo(m_directory.File("alike.trc"));
  EXPECT_EQ(Dumped({"--user", "al"}), "short");
  EXPECT_EQ(Dumped({"--user", "alice"}), "long");
}

TEST_F(TrcAccount, AnAccountThatNoTraceHasIsAnErrorThatNamesThoseThatThereAre) {
  const TrcRun run = RunTrc({"dump", m_file, "--user", "nobody-at-all"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  const std::string own = "\"" + OwnName() + "\"";
  EXPECT_EQ(run.err, "trc: no trace is of the account \"nobody-at-all\"; there is " +
                         (own < "\"alice\"" ? own + ", \"alice\"" : "\"alice\", " + own) + "\n");
  TrcImage image;
  image.Name(1, "812").Trace({.text = "x", .pid = 1});
  const TrcRun plain =
      RunTrc({"dump", image.WriteTo(m_directory.File("plain.trc")), "--user", "alice"});
  EXPECT_EQ(plain.status, 2);
  EXPECT_EQ(plain.err,
            "trc: no trace is of the account \"alice\"; none names one, as with a service that is "
            "for one account\n");
}

TEST_F(TrcAccount, AMistypedPathNamesTheProcessWithItsAccount) {
  const TrcRun run = RunTrc({"dump", m_file, "--uncheck", "All Threads/web-1/PID:4711"});
  EXPECT_EQ(run.status, 2);
  EXPECT_NE(run.err.find("\"All Threads/web-1/PID:4711 alice\""), std::string::npos) << run.err;
}

}  // namespace
