// The times that are given to other programs.
#include "records/moments/trace_moments.h"
#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"

namespace {

using nlohmann::json;

constexpr std::uint64_t kMsPs = 1'000'000'000, kUsPs = 1'000'000;

class TrcMoments : public testing::Test {
 protected:
  // Traces of one process, each with its true microseconds behind 09:41:07.000, as a clock of
  // milliseconds and a counter that began `began` microseconds before see them.
  void Add(NameId process, std::uint64_t began, std::vector<unsigned> microseconds) {
    for (const unsigned us : microseconds)
      m_image.Trace({.text = std::to_string(us),
                     .time = PackTime(9, 41, 7, us / 1000),
                     .tic = (began + us) * kUsPs,
                     .pid = process});
  }
  std::vector<std::string> Times(const std::vector<std::string>& more = {}) {
    std::vector<std::string> times;
    for (const json& trace : DumpedTraces(m_image.WriteTo(m_directory.File("a.trc")), more))
      times.push_back(trace.at("time"));
    return times;
  }
  TempDir m_directory;
  TrcImage m_image;
};

std::string At(const char* fraction) {
  return "2026-11-21T09:41:07." + std::string(fraction) + "Z";
}

TEST_F(TrcMoments, MicrosecondsComeFromTheTicCountsOfTheWholeProcess) {
  Add(1, 5'000'000, {500, 1400, 2000, 3999});  // the third begins its millisecond
  EXPECT_EQ(Times(),
            (std::vector<std::string>{At("000500"), At("001400"), At("002000"), At("003999")}));
}

TEST_F(TrcMoments, ATraceHasTheSameTimeWhereverACommandBegins) {
  Add(1, 5'000'000, {500, 1400, 2000, 3999});
  EXPECT_EQ(Times({"--from", "1", "--count", "1"}), std::vector<std::string>{At("001400")});
}

TEST_F(TrcMoments, EachProcessHasItsOwnCounter) {
  m_image.Name(1, "1").Name(2, "2");
  Add(1, 5'000'000, {500, 2000});
  Add(2, 77'000, {700, 3000});
  EXPECT_EQ(Times(),
            (std::vector<std::string>{At("000500"), At("002000"), At("000700"), At("003000")}));
}

TEST_F(TrcMoments, AClockThatIsSetBeginsAnotherMoment) {
  Add(1, 5'000'000, {500, 2000});
  Add(1, 1'000'000, {10'300, 12'000});  // the counter goes on as if the clock had jumped
  EXPECT_EQ(Times(),
            (std::vector<std::string>{At("000500"), At("002000"), At("010300"), At("012000")}));
}

TEST_F(TrcMoments, WithoutATicCountOrWithAStrangeOneThereAreMilliseconds) {
  m_image.Trace({.text = "none", .tic = 0});
  for (unsigned i = 0; i < 100; ++i) m_image.Trace({.text = "odd", .tic = i * 977 * kMsPs + 123});
  for (const std::string& time : Times()) EXPECT_EQ(time, At("123000"));
}

TEST_F(TrcMoments, TheMillisecondsAreAlwaysThoseOfTheTrace) {
  TraceMoments moments(true);
  std::uint64_t seed = 1;
  for (std::uint64_t place = 0; place < 5000; ++place) {
    seed = seed * 6364136223846793005u + 1442695040888963407u;
    const auto ms = static_cast<unsigned>(seed >> 33) % 1000;
    TraceEvent_i* const trace =
        TraceEvent_i::Create(1, 0, 0, 0, 0, PackDate(2026, 11, 21), PackTime(9, 41, 7, ms), seed, 0,
                             0, kAttributeInfo, 0, 0, "", "");
    moments.Learn(place, *trace);
    std::string time;
    ASSERT_TRUE(moments.Append(time, place, *trace));
    char wanted[40];
    std::snprintf(wanted, sizeof wanted, "2026-11-21T09:41:07.%03u", ms);
    EXPECT_EQ(time.substr(0, 23), wanted);
    EXPECT_EQ(time.size(), 27u);
    trace->Release();
  }
}

TEST_F(TrcMoments, TheZoneIsThatOfTheMachineAndIsSaid) {
  const std::string path = TrcImage().Trace("x").WriteTo(m_directory.File("b.trc"));
  const auto in = [&](const char* zone) {
    const TrcRun run = RunTrc({.arguments = {"dump", path, "--format", "jsonl"},
                               .environment = {std::string("TZ=") + zone}});
    return json::parse(run.out).at("time").get<std::string>();
  };
  EXPECT_EQ(in("XST-5:30"), "2026-11-21T15:11:07.123000+05:30");
  EXPECT_EQ(in("XST9:45"), "2026-11-20T23:56:07.123000-09:45");
  EXPECT_EQ(in("UTC0"), "2026-11-21T09:41:07.123000+00:00");
}

TEST_F(TrcMoments, AllFormsForProgramsHaveTheSameTime) {
  Add(1, 5'000'000, {500, 2000});
  const std::string path = m_image.WriteTo(m_directory.File("a.trc")), time = At("000500");
  const auto out = [&](std::vector<std::string> words) {
    words.push_back("--utc");
    return RunTrc(words).out;
  };
  EXPECT_EQ(json::parse(LinesOf(RunTrc({"info", "--json", path}).out)[0]).at("firstTime"), time);
  EXPECT_EQ(json::parse(LinesOf(out({"export", path, "-", "--format", "jsonl"}))[0]).at("Time"),
            time);
  EXPECT_EQ(LinesOf(out({"export", path, "-", "--format", "csv-rfc4180", "-c", "Time"}))[1],
            time + "\r");
  for (const json& node : JsonLinesOf(out({"tree", path, "--json"})))
    if (node.at("kind") == "trace" && node.at("i") == 0) {
      EXPECT_EQ(node.at("time"), time);
    }
  EXPECT_EQ(LinesOf(out({"export", path, "-", "-c", "Time"}))[1], "\"2026-11-21 09:41:07.000\"")
      << "the text of the window stays";
}

TEST_F(TrcMoments, AFileComesBackFromItsDump) {
  m_image.Name(1, "Net");
  Add(1, 5'000'000, {500, 2000});
  m_image.Trace({.text = "no date", .date = 0xFFFFFFFF, .time = 0xFFFFFFFF});
  const std::string path = m_image.WriteTo(m_directory.File("a.trc"));
  const std::string back = m_directory.File("back.trc"), dump = m_directory.File("a.jsonl");
  m_directory.File("a.jsonl",
                   RunTrc({"dump", path, "--format", "jsonl", "--severity", "other", "-v"}).out);
  const TrcRun run = RunTrc({"import", "--jsonl", dump, back});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(DumpedTraces(back), DumpedTraces(path));
}

TEST_F(TrcMoments, TheNodesOfATreeHaveTheirParentsAndTheirDurations) {
  m_image.Name(1, "desk").Name(2, "shop").Name(3, "100").Name(4, "one");
  for (const auto& [text, tic] : std::vector<std::pair<const char*, std::uint64_t>>{
           {"Begin: work - hard", 1000}, {"in\x1b[0m", 2500}, {"End: ", 4001}})
    m_image.Trace({.text = text, .machine = 1, .app = 2, .tic = tic, .pid = 3, .tid = 4});
  const TrcRun run =
      RunTrc({"tree", "--json", "--utc", m_image.WriteTo(m_directory.File("tree.trc"))});
  const auto nodes = JsonLinesOf(run.out);
  ASSERT_EQ(nodes.size(), 8u) << run.out << run.err;
  const char* const kinds[] = {"machine", "application", "process", "thread",
                               "block",   "trace",       "trace",   "trace"};
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    EXPECT_EQ(nodes[i].at("id"), i);
    EXPECT_EQ(nodes[i].at("kind"), kinds[i]);
    EXPECT_EQ(nodes[i].at("depth"), std::min<std::size_t>(i, 5));
    EXPECT_EQ(nodes[i].at("parent"), i == 0 ? json() : json(std::min<std::size_t>(i - 1, 4)));
    EXPECT_EQ(nodes[i].contains("durationNs"), i >= 2 && i <= 4);
    EXPECT_EQ(nodes[i].contains("i"), i >= 5);
  }
  EXPECT_EQ(nodes[2].at("name"), "100");
  EXPECT_EQ(nodes[4].at("name"), "work - hard");
  EXPECT_EQ(nodes[4].at("durationNs"), 3.001);
  EXPECT_EQ(nodes[6].at("name"), "in\x1b[0m");
  EXPECT_EQ(run.out.find('\x1b'), std::string::npos);
  EXPECT_EQ(
      JsonLinesOf(RunTrc({"tree", "--json", "--depth", "1", m_directory.File("tree.trc")}).out)
          .size(),
      2u);
}

}  // namespace
