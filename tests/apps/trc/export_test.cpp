// trc export: the desktop's format byte for byte, and the clean formats.
#include <gmock/gmock.h>

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;
using testing::MatchesRegex;

class TrcExport : public testing::Test {
 protected:
  // Three traces: with a quote and a name, with several lines and no severity, of another process.
  static TrcImage Image() {
    TrcImage image;
    image.Name(1, "we\"b").Name(2, "812").Name(3, "C:\\a.c");
    image.Trace({.text = "say \"hi\", \\o/",
                 .machine = 1,
                 .app = 1,
                 .tic = 100,
                 .pid = 2,
                 .tid = 2,
                 .attributes = kAttributeInfo | kAttributeDeveloper,
                 .file = 3,
                 .line = 17});
    image.Trace({.text = "two\nlines",
                 .stack = "f\ng",
                 .count = kNoSequenceNumber,
                 .tic = 130,
                 .pid = 2,
                 .attributes = 0});
    image.Trace({.text = "", .tic = 150, .attributes = kAttributeError});
    return image;
  }
  std::string Export(std::vector<std::string> more) {
    const std::string out = m_directory.File("out.csv");
    std::vector<std::string> arguments = {"export", m_in, out};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const TrcRun run = RunTrc(arguments);
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out + run.err, "");
    return ReadAll(out);
  }

  const TempDir m_directory;
  const std::string m_in = Image().WriteTo(m_directory.File("in.trc"));
};

TEST_F(TrcExport, WritesTheColumnsThatAListShowsAtFirst) {
  EXPECT_EQ(Export({}),
            "\"Sev\",\"Application\",\"Component\",\"Category\",\"Trace\"\n"
            "\"Info\",\"we\"b\",\"\",\"\",\"say \\\"hi\\\", \\\\o/\"\n"
            ",\"\",\"\",\"\",\"two\nlines\"\n"
            "\"Error\",\"\",\"\",\"\",\"\"\n");
}

TEST_F(TrcExport, HiddenWritesAllFifteenInTheDefaultOrder) {
  const std::vector<std::string> lines = LinesOf(Export({"--hidden", "--utc"}));
  EXPECT_EQ(lines.at(0),
            "\"Sev\",\"Count\",\"Tic Count\",\"Tic Diff\",\"Time\",\"Machine\",\"Application\","
            "\"Component\",\"Category\",\"Attributes\",\"PID\",\"TID\",\"Stack\",\"Trace\","
            "\"Source\"");
  EXPECT_THAT(lines.at(1),
              MatchesRegex("\"Info\",1,0x[0-9a-f]+,0x[0-9a-f]+,\"2026-11-21 09:41:07\\.123\","
                           "\"we\"b\",\"we\"b\",\"\",\"\",\"0x[0-9a-f]+\",\"812\",\"812\",\"\","
                           "\"say .*\",\"C:\\\\\\\\a\\.c:17\""));
}

TEST_F(TrcExport, ColumnsAreTheShownOnesInTheDefaultOrder) {
  EXPECT_EQ(Export({"--columns", "trace, Source,Count"}),
            "\"Count\",\"Trace\",\"Source\"\n"
            "1,\"say \\\"hi\\\", \\\\o/\",\"C:\\\\a.c:17\"\n"
            "-1,\"two\nlines\",\":0\"\n"
            "3,\"\",\":0\"\n");
}

TEST_F(TrcExport, TheFilterLeavesRowsOut) {
  EXPECT_EQ(Export({"--columns", "Count", "--uncheck", "All Severities/Info"}), "\"Count\"\n3\n");
}

TEST_F(TrcExport, AFileWithoutTracesGivesTheHeaderLineOnly) {
  const std::string in = TrcImage().WriteTo(m_directory.File("empty.trc"));
  const std::string out = m_directory.File("empty.csv");
  EXPECT_EQ(RunTrc({"export", in, out, "--columns", "Count"}).status, 0);
  EXPECT_EQ(ReadAll(out), "\"Count\"\n");
}

TEST_F(TrcExport, Rfc4180HasValuesInEveryColumnAndDoublesQuotes) {
  EXPECT_EQ(
      Export({"--format", "csv-rfc4180", "--utc"}),
      "Sev,Count,Tic Count,Tic Diff,Time,Machine,Application,Component,Category,Attributes,"
      "PID,TID,Stack,Trace,Source\r\n"
      "Info,1,100,,2026-11-21T09:41:07.123000Z,\"we\"\"b\",\"we\"\"b\",,,\"Info, Developer\",812,"
      "812,,\"say \"\"hi\"\", \\o/\",C:\\a.c:17\r\n"
      ",,130,30,2026-11-21T09:41:07.123000Z,,,,,,812,,\"f\ng\",\"two\nlines\",\r\n"
      "Error,3,150,,2026-11-21T09:41:07.123000Z,,,,,Error,,,,,\r\n");
}

TEST_F(TrcExport, Rfc4180TakesColumnsToo) {
  EXPECT_EQ(Export({"--format", "csv-rfc4180", "--columns", "Count,Sev"}),
            "Sev,Count\r\nInfo,1\r\n,\r\nError,3\r\n");
}

TEST_F(TrcExport, TheDifferenceIsThatToTheShownRowAbove) {
  TrcImage image;
  image.Trace({.tic = 100}).Trace({.tic = 130, .attributes = kAttributeWarn}).Trace({.tic = 150});
  const std::string in = image.WriteTo(m_directory.File("tics.trc"));
  EXPECT_EQ(RunTrc({"export", in, "-", "--format", "csv-rfc4180", "--columns", "Tic Diff",
                    "--uncheck", "All Severities/Warn"})
                .out,
            "Tic Diff\r\n\r\n50\r\n");
}

TEST_F(TrcExport, JsonLinesAreKeyedByTheHeaders) {
  const std::vector<std::string> lines = LinesOf(Export({"--format", "jsonl", "--utc"}));
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(json::parse(lines[0]), json({{"Sev", "Info"},
                                         {"Count", 1},
                                         {"Tic Count", 100},
                                         {"Tic Diff", nullptr},
                                         {"Time", "2026-11-21T09:41:07.123000Z"},
                                         {"Machine", "we\"b"},
                                         {"Application", "we\"b"},
                                         {"Component", ""},
                                         {"Category", ""},
                                         {"Attributes", "Info, Developer"},
                                         {"PID", "812"},
                                         {"TID", "812"},
                                         {"Stack", ""},
                                         {"Trace", "say \"hi\", \\o/"},
                                         {"Source", "C:\\a.c:17"}}));
  const json second = json::parse(lines[1]);
  EXPECT_EQ(second["Sev"], nullptr);
  EXPECT_EQ(second["Count"], nullptr);
  EXPECT_EQ(second["Tic Diff"], 30);
  EXPECT_EQ(second["Source"], nullptr);
  EXPECT_EQ(second["Stack"], "f\ng");
}

TEST_F(TrcExport, AMinusIsStandardOutput) {
  const TrcRun run = RunTrc({"export", m_in, "-", "--columns", "Count"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "\"Count\"\n1\n-1\n3\n");
  EXPECT_EQ(run.err, "");
}

TEST_F(TrcExport, TextsThatAreNotUtf8StayInCsvAndAreHexInJson) {
  const std::string in =
      TrcImage().Trace(std::string("a\xFF")).WriteTo(m_directory.File("bytes.trc"));
  EXPECT_EQ(RunTrc({"export", in, "-", "--columns", "Trace"}).out, "\"Trace\"\n\"a\xFF\"\n");
  EXPECT_EQ(RunTrc({"export", in, "-", "--columns", "Trace", "--format", "jsonl"}).out,
            "{\"Trace\":{\"hex\":\"61ff\"}}\n");
}

TEST_F(TrcExport, TheWholeSampleHasALinePerTraceThatAParserReads) {
  const std::string in = m_directory.File("sample.trc");
  ASSERT_EQ(RunTrc({"gen", "-n", "2000", "-s", "5", in}).status, 0);
  const std::vector<std::string> lines =
      LinesOf(RunTrc({"export", in, "-", "--format", "jsonl"}).out);
  const std::vector<json> dumped = DumpedTraces(in);
  ASSERT_EQ(dumped.size(), 2000u);
  ASSERT_EQ(lines.size(), dumped.size());
  for (std::size_t i = 0; i < lines.size(); ++i)
    EXPECT_EQ(json::parse(lines[i])["Trace"], dumped[i]["text"]);
}

TEST_F(TrcExport, AFolderThatIsNotThereGivesTheExportsMessage) {
  const TrcRun run = RunTrc({"export", m_in, "/nowhere/out.csv"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err,
            "trc: /nowhere/out.csv: Error opening output file. No such file or directory\n");
}

TEST_F(TrcExport, OverTheFileItselfFailsAndLeavesItAsItWas) {
  const TrcRun run = RunTrc({"export", m_in, m_in});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(ReadAll(m_in), Image().Bytes());
}

TEST_F(TrcExport, AFullDiskIsReported) {
  const TrcRun run = RunTrc({"export", m_in, "/dev/full"});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "trc: /dev/full: Error writing to file. No space left on device\n");
}

TEST_F(TrcExport, UnknownColumnsFormatsAndPathsAreRefused) {
  const std::string out = m_directory.File("out.csv");
  EXPECT_EQ(RunTrc({"export", m_in, out, "--columns", "Colour"}).status, 2);
  EXPECT_EQ(RunTrc({"export", m_in, out, "--format", "xml"}).status, 2);
  EXPECT_EQ(RunTrc({"export", m_in, out, "--uncheck", "All Severities/Wran"}).status, 2);
  EXPECT_EQ(RunTrc({"export", m_in}).status, 2);
  EXPECT_FALSE(std::filesystem::exists(out));
}

}  // namespace
