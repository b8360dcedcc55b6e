#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

TrcImage TwoMachines() {
  TrcImage image;
  image.Name(7, "web").Name(2, "db").Name(30, "shop").Name(31, "Http").Name(32, "Request");
  image.Trace({.machine = 7,
               .app = 30,
               .component = 31,
               .category = 32,
               .date = PackDate(2026, 3, 9),
               .time = PackTime(10, 0, 0, 1),
               .pid = 50,
               .tid = 61,
               .file = 9});
  image.Raw(12).Raw(0);
  image.Trace({.machine = 2,
               .app = 30,
               .component = 33,
               .category = 32,
               .date = PackDate(2026, 3, 9),
               .time = PackTime(9, 59, 59, 999),
               .pid = 40,
               .tid = 62,
               .attributes = kAttributeError,
               .file = 8});
  image.Trace({.machine = 7,
               .app = 30,
               .component = 31,
               .category = 32,
               .date = PackDate(2026, 3, 10),
               .time = PackTime(0, 0, 0, 0),
               .pid = 50,
               .tid = 60,
               .attributes = kAttributeWarn | kAttributeVerbose,
               .file = 9});
  image.Name(2, "db-new").Trace({.machine = 2, .date = PackDate(2026, 3, 9), .attributes = 0});
  return image;
}

json InfoOfImage(const TrcImage& image) {
  const TempDir directory;
  return InfoOf(image.WriteTo(directory.File("a.trc")));
}

TEST(TrcInfo, JsonTellsWhatIsInTheFile) {
  const TempDir directory;
  const TrcImage image = TwoMachines();
  const std::string path = image.WriteTo(directory.File("a.trc"));
  EXPECT_EQ(InfoOf(path),
            json({{"path", path},
                  {"size", image.Size()},
                  {"records", 10},
                  {"traces", 4},
                  {"skippedBytes", 2},
                  {"skippedPlaces", 1},
                  {"lastRecordCut", false},
                  {"firstTime", "2026-03-09T09:41:07.123000Z"},
                  {"lastTime", "2026-03-10T00:00:00.000000Z"},
                  {"severities", {{"info", 1}, {"warn", 1}, {"error", 1}, {"other", 1}}},
                  {"names",
                   {{{"id", 2}, {"name", "db-new"}},
                    {{"id", 7}, {"name", "web"}},
                    {{"id", 30}, {"name", "shop"}},
                    {{"id", 31}, {"name", "Http"}},
                    {{"id", 32}, {"name", "Request"}}}},
                  {"machines", {7, 2}},
                  {"applications", {30, 0}},
                  {"components", {31, 33, 0}},
                  {"categories", {32, 0}},
                  {"processes", {50, 40, 0}},
                  {"threads", {61, 62, 60, 0}},
                  {"files", {9, 8, 0}},
                  {"processMap", {{"7", {{"50", {60, 61}}}}, {"2", {{"40", {62}}, {"0", {0}}}}}},
                  {"tracesOf",
                   {{"machines", {{"7", 2}, {"2", 2}}},
                    {"applications", {{"30", 3}, {"0", 1}}},
                    {"components", {{"31", 2}, {"33", 1}, {"0", 1}}},
                    {"categories", {{"32", 3}, {"0", 1}}}}}}));
}

TEST(TrcInfo, JsonOfAFileWithoutTraces) {
  const json info = InfoOfImage(TrcImage());
  EXPECT_EQ(info.at("size"), 16);
  EXPECT_EQ(info.at("traces"), 0);
  EXPECT_EQ(info.at("records"), 0);
  EXPECT_EQ(info.at("firstTime"), nullptr);
  EXPECT_EQ(info.at("lastTime"), nullptr);
  EXPECT_EQ(info.at("processMap"), json::object());
  for (const char* list : {"names", "machines", "applications", "components", "categories",
                           "processes", "threads", "files"}) {
    EXPECT_EQ(info.at(list), json::array()) << list;
  }
}

TEST(TrcInfo, ANameThatIsNotUtf8IsHex) {
  EXPECT_EQ(InfoOfImage(TrcImage().Name(3, "a\xFF")).at("names"),
            json::parse(R"([{"id":3,"name":{"hex":"61ff"}}])"));
}

TEST(TrcInfo, APathThatIsNotUtf8IsHex) {
  const TempDir directory;
  const std::string path = TrcImage().WriteTo(directory.File("\xFF.trc"));
  const json reported = InfoOf(path).at("path");
  ASSERT_TRUE(reported.is_object()) << reported;
  const std::string hex = reported.at("hex");
  EXPECT_EQ(hex.substr(hex.size() - 10), "ff2e747263");
}

TEST(TrcInfo, ARecordCutByTheEndOfTheFileCounts) {
  const json info = InfoOfImage(TrcImage().Trace("one").Trace("two").Cut(5));
  EXPECT_EQ(info.at("traces"), 2);
  EXPECT_EQ(info.at("skippedBytes"), 0);
  EXPECT_EQ(info.at("lastRecordCut"), true);
}

TEST(TrcInfo, SeveralFilesAreOneLineOfJsonEach) {
  const TempDir directory;
  const std::string a = TrcImage().Trace("x").WriteTo(directory.File("a.trc"));
  const std::string b = TrcImage().WriteTo(directory.File("b.trc"));
  const TrcRun run = RunTrc({"info", "-j", a, b});
  EXPECT_EQ(run.status, 0);
  const auto lines = LinesOf(run.out);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(json::parse(lines[0]).at("path"), a);
  EXPECT_EQ(json::parse(lines[1]).at("path"), b);
}

TEST(TrcInfo, AmongSeveralFilesABadOneIsReportedAndTheOthersAreStillReported) {
  const TempDir directory;
  const std::string good = TrcImage().Trace("x").WriteTo(directory.File("good.trc"));
  const std::string bad = directory.File("bad.trc", "no trace file, clearly");
  const std::string last = TrcImage().WriteTo(directory.File("last.trc"));
  const TrcRun run = RunTrc({"info", "--json", good, bad, directory.File("none.trc"), last});
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "trc: " + bad + ": Invalid format.\ntrc: " + directory.File("none.trc") +
                         ": No such file or directory\n");
  const auto lines = LinesOf(run.out);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(json::parse(lines[0]).at("path"), good);
  EXPECT_EQ(json::parse(lines[1]).at("path"), last);
}

TEST(TrcInfo, TheSameFileMayBeNamedTwice) {
  const TempDir directory;
  const std::string path = TrcImage().WriteTo(directory.File("a.trc"));
  EXPECT_EQ(RunTrc({"info", path, path}).status, 0);
}

TEST(TrcInfo, PlainTextTellsTheSame) {
  const TempDir directory;
  const TrcImage image = TwoMachines();
  const std::string path = image.WriteTo(directory.File("a.trc"));
  const TrcRun run = RunTrc({"info", path});
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.out, path + "\n  size:          " + std::to_string(image.Size()) +
                         " bytes\n"
                         "  records:       10\n"
                         "  traces:        4\n"
                         "  names:         5\n"
                         "  skipped bytes: 2\n"
                         "  last record:   whole\n"
                         "  first time:    2026-03-09 09:41:07.123 UTC\n"
                         "  last time:     2026-03-10 00:00:00.000 UTC\n"
                         "  severities:\n"
                         "              1  Info\n"
                         "              1  Warn\n"
                         "              1  Error\n"
                         "              1  other\n"
                         "  machines:\n"
                         "              2  web\n"
                         "              2  db-new\n"
                         "  applications:\n"
                         "              3  shop\n"
                         "              1  (id 0, no name)\n"
                         "  components:\n"
                         "              2  Http\n"
                         "              1  (id 33, no name)\n"
                         "              1  (id 0, no name)\n"
                         "  categories:\n"
                         "              3  Request\n"
                         "              1  (id 0, no name)\n");
}

// A file is in memory once: info needs little more than the command that prints one trace of it.
TEST(TrcInfo, HoldsTheFileOnce) {
  const TempDir directory;
  const std::string path = directory.File("a.trc");
  ASSERT_EQ(RunTrc({"gen", "-n", "400000", path}).status, 0);
  const long dump = RunTrc({"dump", "-n", "1", path}).mostKilobytes;
  const long info = RunTrc({"info", path}).mostKilobytes;
  const auto file = static_cast<long>(std::filesystem::file_size(path) / 1024);
  ASSERT_GT(dump, file);
  EXPECT_LT(info, dump + file / 3);
}

}  // namespace
