#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <utime.h>

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

class TrcImport : public testing::Test {
 protected:
  TrcRun Import(const std::vector<std::string>& options, const std::string& log) {
    std::vector<std::string> line = {"import", "--zone", "UTC"};
    line.insert(line.end(), options.begin(), options.end());
    line.push_back(m_directory.File("in.log", log));
    line.push_back(m_out);
    return RunTrc(line);
  }
  std::vector<std::string> Texts() const {
    std::vector<std::string> texts;
    for (const auto& trace : DumpedTraces(m_out)) texts.push_back(trace.at("text"));
    return texts;
  }
  using Lines = std::vector<std::string>;

  const TempDir m_directory;
  const std::string m_in = m_directory.File("in.log"), m_out = m_directory.File("out.trc");
};

const std::vector<std::string> kByExpression = {
    "--regex", R"(^(?<time>\S+ \S+) (?<level>\w+) (?<logger>\S+) (?<text>.*))"};

TEST_F(TrcImport, ADumpComesBackByteForByte) {
  const std::string sample = m_directory.File("sample.trc");
  ASSERT_EQ(RunTrc({"gen", "-n", "20000", "-s", "5", sample}).status, 0);
  const std::string dumped = RunTrc({"dump", "-f", "jsonl", sample}).out;
  const TrcRun run = Import({"--jsonl"}, dumped);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, m_out + ": 20,000 traces\n");
  EXPECT_EQ(RunTrc({"dump", "-f", "jsonl", m_out}).out, dumped);
}

TEST_F(TrcImport, ADumpOfStrangeTracesComesBackByteForByte) {
  TrcImage image;
  image.Name(7, "web").Name(8, "").Name(9, "\xFF\"\\\n");
  image.Trace("up\tand \xFF down \x01 \xC3\xA9").Trace(std::string(65535, '\x01'));
  const std::string strange = image.WriteTo(m_directory.File("strange.trc"));
  const std::string dumped = RunTrc({"dump", "-f", "jsonl", strange}).out;
  ASSERT_EQ(LinesOf(dumped).size(), 2u);
  EXPECT_EQ(Import({"--jsonl"}, dumped).status, 0);
  EXPECT_EQ(RunTrc({"dump", "-f", "jsonl", m_out}).out, dumped);
}

TEST_F(TrcImport, ALineThatIsNotUnderstoodIsKeptWithTheTimeBeforeAndCounted) {
  const TrcRun run = Import(kByExpression,
                            "2026-11-21 09:41:07,123 INFO a.b one\nstrange\n"
                            "2026-11-21 09:41:08 WARN a.c two\nstrange too\n");
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err, "trc: 2 lines were not understood; the first is line 2 of " + m_in + "\n");
  EXPECT_EQ(run.out, m_out + ": 4 traces\n");
  const auto traces = DumpedTraces(m_out);
  ASSERT_EQ(traces.size(), 4u);
  EXPECT_EQ(Texts(), (Lines{"one", "strange", "two", "strange too"}));
  EXPECT_EQ(traces[1].at("time"), "2026-11-21T09:41:07.123000Z");
  EXPECT_EQ(traces[1].at("attributes"), 1);
  EXPECT_EQ(traces[2].at("attributes"), 2);
  EXPECT_EQ(traces[2].at("component"), "a");
  EXPECT_EQ(traces[2].at("category"), "c");
  EXPECT_EQ(traces[3].at("count"), 3);
}

TEST_F(TrcImport, LinesOfAStackBelongToTheTextBeforeThem) {
  const std::string log =
      "2026-11-21 09:41:07 ERROR a.b failed\njava.lang.Exception: x\n\tat a.b(C.java:1)\n\n"
      "2026-11-21 09:41:08 INFO a.b next\n";
  EXPECT_EQ(Import(kByExpression, log).status, 3);
  EXPECT_EQ(Texts(), (Lines{"failed", "java.lang.Exception: x\n\tat a.b(C.java:1)", "next"}));
  std::vector<std::string> all = kByExpression, none = kByExpression;
  all.insert(all.end(), {"--join", "all"});
  const TrcRun run = Import(all, log);
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(Texts(), (Lines{"failed\njava.lang.Exception: x\n\tat a.b(C.java:1)\n", "next"}));
  none.insert(none.end(), {"--join", "none"});
  EXPECT_EQ(Import(none, log).status, 3);
  EXPECT_EQ(Texts(), (Lines{"failed", "java.lang.Exception: x", "\tat a.b(C.java:1)", "next"}));
}

TEST_F(TrcImport, TheYearOfSyslogIsThatOfTheFileAndSaid) {
  const std::string log = "Dec 31 23:59:59 web cron[1]: old\nJan  1 00:00:01 web cron[1]: new\n";
  m_directory.File("in.log", log);
  tm written = {};
  written.tm_year = 2020 - 1900;
  written.tm_mday = 5;
  const utimbuf times = {timegm(&written), timegm(&written)};
  ASSERT_EQ(utime(m_in.c_str(), &times), 0);
  const TrcRun run = RunTrc({"import", "--zone", "UTC", "--syslog", m_in, m_out});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out,
            m_out +
                ": 2 traces\n2 times have no year: it is the last one before the end of their "
                "input\n");
  const auto traces = DumpedTraces(m_out);
  EXPECT_EQ(traces[0].at("time"), "2019-12-31T23:59:59.000000Z");
  EXPECT_EQ(traces[1].at("time"), "2020-01-01T00:00:01.000000Z");
  EXPECT_EQ(traces[1].at("pid"), "1");
}

TEST_F(TrcImport, TheExportFormOfAJournalGivesTheTracesOfItsJson) {
  const std::string objects =
      R"({"__REALTIME_TIMESTAMP":"1795305667123456","_HOSTNAME":"web","SYSLOG_IDENTIFIER":"cron",)"
      R"("_PID":"12","PRIORITY":"3","MESSAGE":"two\nlines"})"
      "\n"
      R"({"__REALTIME_TIMESTAMP":"1795305667124456","MESSAGE":[98,255]})"
      "\n";
  ASSERT_EQ(Import({"--journal"}, objects).status, 0);
  const auto traces = DumpedTraces(m_out);
  const std::string zeros(7, '\0');
  const std::string first =
      "__REALTIME_TIMESTAMP=1795305667123456\n_HOSTNAME=web\nSYSLOG_IDENTIFIER=cron\n_PID=12\n"
      "PRIORITY=3\nMESSAGE\n\x09" +
      zeros + "two\nlines\n\n";
  const std::string second =
      "__REALTIME_TIMESTAMP=1795305667124456\nMESSAGE\n\x02" + zeros + "b\xff\n";
  const std::string secondAsJson = objects.substr(objects.find('\n') + 1);
  for (const std::string& log : {first + second, first + secondAsJson}) {
    const TrcRun run = Import({"--journal"}, log);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(DumpedTraces(m_out), traces);
  }
  EXPECT_EQ(traces.front().at("text"), "two\nlines");
}

TEST_F(TrcImport, SeveralInputsFollowEachOtherAndStandardInputMayBeOne) {
  const std::string one = m_directory.File("one", "{\"msg\":\"one\"}");
  const std::string two = m_directory.File("two", "{\"msg\":\"two\"}\n");
  EXPECT_EQ(RunTrc({"import", "--jsonl", one, two, "/dev/null", m_out}).status, 0);
  EXPECT_EQ(Texts(), (Lines{"one", "two"}));
}

TEST_F(TrcImport, AByteOrderMarkAndLineEndsOfWindowsAreNoText) {
  const std::string log =
      "\xEF\xBB\xBF"
      "2026-11-21 09:41:07 INFO a.b one\r\n2026-11-21 09:41:08 WARN a.c two\r\n";
  EXPECT_EQ(Import(kByExpression, log).status, 0);
  EXPECT_EQ(Texts(), (Lines{"one", "two"}));
  EXPECT_EQ(Import({"--syslog"},
                   "\xEF\xBB\xBF"
                   "Nov 21 09:41:07 web cron: one\r\n")
                .status,
            0);
  EXPECT_EQ(Texts(), (Lines{"one"}));
}

TEST_F(TrcImport, WhatTheLogDoesNotSayTheOptionsSay) {
  EXPECT_EQ(Import({"--jsonl", "--component", "Shop", "--application", "shop", "--machine", "web",
                    "--map", "who=pid", "--levels", "python"},
                   R"({"msg":"m","logger":"a.b","who":"5","level":40,"host":"h"})")
                .status,
            0);
  const auto trace = DumpedTraces(m_out).at(0);
  EXPECT_EQ(trace.at("component"), "Shop");
  EXPECT_EQ(trace.at("category"), "a.b");
  EXPECT_EQ(trace.at("application"), "shop");
  EXPECT_EQ(trace.at("machine"), "h");
  EXPECT_EQ(trace.at("pid"), "5");
  EXPECT_EQ(trace.at("attributes"), 4);
}

TEST_F(TrcImport, ALevelThatIsNotKnownIsTold) {
  const TrcRun run = Import({"--jsonl"}, "{\"level\":\"loud\",\"msg\":\"m\"}\n");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "trc: 1 level is not known, and its trace is Info: \"loud\"\n");
}

TEST_F(TrcImport, AnInputThatIsCutAtAnyByteKeepsEveryByte) {
  const std::string log = "2026-11-21 09:41:07 INFO a.b one\n2026-11-21 09:41:08 WARN a.c two\n";
  for (std::size_t length = 0; length <= log.size(); length += 5) {
    const TrcRun run = Import(kByExpression, log.substr(0, length));
    EXPECT_TRUE(run.status == 0 || run.status == 3) << length;
    const std::size_t whole = length >= 33 ? 1 : 0;
    const Lines texts = Texts();
    ASSERT_EQ(texts.size(), whole + (length % 33 != 0 ? 1 : 0)) << length;
    if (length == 0) continue;
    EXPECT_NE(log.substr(0, length).find(texts.back()), std::string::npos) << texts.back();
    EXPECT_FALSE(texts.back().empty()) << length;
  }
}

TEST_F(TrcImport, AHugeLineTakesLittleMemoryAndTheNextIsWhole) {
  {
    std::ofstream log(m_in);
    log << "2026-11-21 09:41:07 INFO a.b ";
    const std::string piece(std::size_t{1} << 20, 'x');
    for (int number = 0; number < 200; ++number) log << piece;
    log << "\n2026-11-21 09:41:08 WARN a.c two\n";
  }
  std::vector<std::string> line = {"import"};
  line.insert(line.end(), kByExpression.begin(), kByExpression.end());
  line.insert(line.end(), {m_in, m_out});
  const TrcRun run = RunTrc(line);
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.err,
            "trc: 1 line was cut: of a longer one 4 MiB are read\n"
            "trc: 1 text was cut: a trace file holds 65535 bytes of each\n");
  // A sanitizer keeps what was freed.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
  EXPECT_LT(run.mostKilobytes, 64 * 1024);
#endif
  EXPECT_EQ(Texts(), (Lines{std::string(65535, 'x'), "two"}));
}

TEST_F(TrcImport, TheInputIsNotReplacedAndABadOneLeavesNoFile) {
  const std::string log = m_directory.File("in.log", "{\"msg\":\"m\"}\n");
  const TrcRun over = RunTrc({"import", "--jsonl", log, log});
  EXPECT_EQ(over.status, 2);
  EXPECT_EQ(over.err, "trc: " + log + ": it is the input, and would be lost\n");
  EXPECT_EQ(ReadAll(log), "{\"msg\":\"m\"}\n");
  const std::string none = m_directory.File("none");
  EXPECT_EQ(RunTrc({"import", "--jsonl", log, none, m_out}).err,
            "trc: " + none + ": No such file or directory\n");
  EXPECT_EQ(RunTrc({"import", "--jsonl", m_directory.Path(), m_out}).err,
            "trc: " + m_directory.Path() + ": Is a directory\n");
  EXPECT_FALSE(std::filesystem::exists(m_out));
}

TEST_F(TrcImport, APipeIsOpenedOnceAndLosesNothing) {
  const std::string pipe = m_directory.File("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  signal(SIGPIPE, SIG_IGN);
  TrcProcess process(
      {.arguments = {"import", "--jsonl", m_directory.File("in.log", ""), pipe, m_out}});
  const int end = open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_GE(end, 0);
  std::string line = "{\"msg\":\"m\"}\n";
  for (int number = 0; number < 20000; ++number)
    ASSERT_EQ(write(end, line.data(), line.size()), static_cast<ssize_t>(line.size()));
  close(end);
  EXPECT_EQ(process.Finish().out, m_out + ": 20,000 traces\n");
}

TEST_F(TrcImport, AnInterruptLeavesNoFileAndAnExistingOneAsItWas) {
  const std::string pipe = m_directory.File("pipe");
  m_directory.File("out.trc", "precious");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  signal(SIGPIPE, SIG_IGN);
  TrcProcess process({.arguments = {"import", "--jsonl", pipe, m_out}, .errIsTerminal = true});
  const int end = open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_GE(end, 0);
  ASSERT_EQ(write(end, "{\"msg\":\"m\"}\n", 12), 12);
  process.ReadErrUntil("Importing...");
  process.Interrupt();
  const TrcRun run = process.Finish();
  close(end);
  EXPECT_EQ(run.status, 130);
  EXPECT_NE(run.err.find("interrupted after "), std::string::npos) << run.err;
  EXPECT_EQ(ReadAll(m_out), "precious");
  for (const auto& file : std::filesystem::directory_iterator(m_directory.Path()))
    EXPECT_NE(file.path().extension(), ".part");
}

TEST_F(TrcImport, AFullDiskIsReportedAndLeavesNoFile) {
  std::string log;
  for (int line = 0; line < 5000; ++line) log += "{\"msg\":\"" + std::string(100, 'x') + "\"}\n";
  const std::string in = m_directory.File("in.log", log);
  const TrcRun run =
      RunTrc({.arguments = {"import", "--jsonl", in, m_out}, .fileBytesMax = 100000});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "trc: " + m_out + ": Error writing to file. File too large\n");
  EXPECT_FALSE(std::filesystem::exists(m_out));
}

constexpr const char* kChrome =
    R"([{"ph":"X","name":"frame","cat":"gfx","pid":1,"tid":2,"ts":1000,"dur":5000,"args":{"n":1}},)";
constexpr const char* kOtlp =
    R"({"resourceLogs":[{"scopeLogs":[{"logRecords":[{"timeUnixNano":"1000000",)"
    R"("severityNumber":17,"body":{"stringValue":"no stock"}}]}]}]})";

TEST_F(TrcImport, EventsOfOtherProgramsAreKnownByTheirFirstBytes) {
  EXPECT_EQ(Import({}, kChrome).status, 0);
  EXPECT_EQ(Texts(), (Lines{"Begin: frame n=1", "End: frame"}));
  EXPECT_EQ(Import({}, std::string("\xEF\xBB\xBF") + kOtlp).status, 0);
  EXPECT_EQ(Texts(), Lines{"no stock"});
  EXPECT_EQ(DumpedTraces(m_out)[0].at("attributes"), 4);
  const std::string chrome = m_directory.File("chrome.json", kChrome);
  const std::string otlp = m_directory.File("otlp.jsonl", kOtlp);
  EXPECT_EQ(
      RunTrc({"import", "--component", "Own", "--application", "shop", chrome, otlp, m_out}).out,
      m_out + ": 3 traces\n");
  const auto traces = DumpedTraces(m_out);
  ASSERT_EQ(traces.size(), 3u);
  EXPECT_EQ(traces[0].at("component"), "Own");
  EXPECT_EQ(traces[0].at("category"), "gfx");
  EXPECT_EQ(traces[0].at("application"), "shop");
  EXPECT_EQ(traces[2].at("component"), "Own");
}

TEST_F(TrcImport, EventsThatAreCutAreKeptAsFarAsTheyAreWhole) {
  const TrcRun run = Import({}, std::string(kChrome) + R"({"ph":"X","na)");
  EXPECT_EQ(run.status, 3);
  EXPECT_NE(run.err.find("in.log: line 1, byte "), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("ends here, within a value; what is before it was kept"),
            std::string::npos)
      << run.err;
  EXPECT_EQ(Texts(), (Lines{"Begin: frame n=1", "End: frame"}));
  EXPECT_EQ(Import({"--otlp"}, std::string(kOtlp) + "\n{\"resourceLogs").status, 3);
  EXPECT_EQ(Texts(), Lines{"no stock"});
}

TEST_F(TrcImport, AFormThatCannotBeToldIsAskedFor) {
  for (const char* log : {"", "plain text\n", "\n\nplain text\n", R"({"msg":"a"})", "{}"}) {
    const TrcRun run = Import({}, log);
    EXPECT_EQ(run.status, 2) << log;
    EXPECT_NE(run.err.find("its first bytes do not tell its form"), std::string::npos) << run.err;
    EXPECT_FALSE(std::filesystem::exists(m_out));
  }
}

TEST_F(TrcImport, WrongUseIsNamed) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> lines = {
      {{"--chrome", "--otlp", "in", "out"}, "takes one of --journal, --syslog, --jsonl, --regex, "},
      {{"--levels", "otel", "in", "out"}, "goes with the lines of a log only"},
      {{"--jsonl", "--syslog", "in", "out"}, "takes one of --journal, "},
      {{"--jsonl", "in"}, "IN... OUT is required"},
      {{"--jsonl", "in", "-"}, "OUT: is a file, not standard output"},
      {{"--syslog", "--map", "a=b", "in", "out"}, "--map: goes with --jsonl only"},
      {{"--jsonl", "--map", "a", "in", "out"}, "\"a\" is not KEY=FIELD"},
      {{"--jsonl", "--map", "a=txt", "in", "out"}, "\"txt\" is no field; did you mean \"text\"?"},
      {{"--jsonl", "--join", "all", "in", "out"}, "--join: goes with --syslog and --regex only"},
      {{"--regex", "(?<lvel>x)", "in", "out"},
       "--regex: \"lvel\" is no field; did you mean \"level\"?"},
      {{"--jsonl", "--zone", "Mars", "in", "out"}, "--zone: there is no zone \"Mars\""},
      {{"--jsonl", "--levels", "pinoo", "in", "out"}, "did you mean \"pino\"?"}};
  for (const auto& [words, told] : lines) {
    std::vector<std::string> line = {"import"};
    line.insert(line.end(), words.begin(), words.end());
    const TrcRun run = RunTrc(line);
    EXPECT_EQ(run.status, 2) << told;
    EXPECT_NE(run.err.find(told), std::string::npos) << run.err;
  }
}

}  // namespace
