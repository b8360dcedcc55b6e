// trc setup while something changes between its reading and its configuring.
#include <quor/quor.h>

#include "live_fixture.h"
#include "support/traced_child.h"

namespace {

constexpr int kMany = 3000;

class SetupRacesTest : public LiveProgramsTest {
 protected:
  void SetUp() override { StartService(); }
  // Registers a trace each millisecond.
  static int Grow(TracedChild& child) {
    constexpr int kTracesMax = 60000;
    std::vector<std::string> names(kTracesMax);
    std::vector<quor_point> points(kTracesMax);
    quor_application("growing");
    for (int trace = 0; trace < kTracesMax; ++trace) {
      names[trace] = std::to_string(trace);
      points[trace] = QUOR_POINT_INIT("Net", names[trace].c_str());
      quor_first_use(&points[trace], QUOR_INFO);
      usleep(1000);
    }
    child.AwaitGo();
    return 0;
  }
  // This application and many others, which are read and configured after it.
  std::string File(const std::string& app) {
    std::string lines = "TCF Version 3.2\nAPP: \"" + app + "\"\n";
    for (int i = 0; i < kMany; ++i) lines += "APP: \"later " + std::to_string(i) + "\"\n";
    return m_dir.File("a.tcf", lines);
  }
  // It reads as soon as it is connected, and has many to read. Each attempt kills a little later.
  TrcRun KillWhenConnected(const std::string& path, int attempt) {
    if (m_service < 0) StartService();
    const std::size_t before = Log().size();
    TrcProcess setup({.arguments = {"setup", path}});
    EXPECT_TRUE(Eventually([&] {
      return Log().find("connected to configure", before) != std::string::npos;
    })) << Log();
    setup.WaitForWork(std::chrono::milliseconds(5 * attempt));
    StopService(SIGKILL);
    return setup.Finish();
  }
  // Neither was the connection still being made, nor was it configured already.
  static bool WasBeingRead(const TrcRun& run) {
    return run.status != -1 && run.out.empty() && run.err.find("local") == std::string::npos;
  }
};

}  // namespace

TEST_F(SetupRacesTest, TracesThatCameWhileTheOthersWereReadAreOffAndTold) {
  TracedChild growing(Grow);
  ASSERT_TRUE(Eventually([] { return RunTrc({"show", "growing"}).status == 0; }));
  const std::string path = File("growing"), head = _trc_GetHostName() + ": \"growing\": ";
  for (const std::string would : {"would be ", ""}) {
    TrcStart setup{.arguments = {"setup", path}};
    if (!would.empty()) setup.arguments.push_back("--dry-run");
    const TrcRun run = RunTrc(setup);
    EXPECT_EQ(run.status, 1);
    const std::vector<std::string> told = LinesOf(run.err);
    ASSERT_EQ(told.size(), 1U) << run.err;
    const std::uint64_t newer = std::stoull(told[0].substr(("trc: " + head).size()));
    EXPECT_EQ(told[0], "trc: " + head + std::to_string(newer) + " traces " + would +
                           "off, because they are newer than the choice");
    EXPECT_EQ(LinesOf(run.out).size(), kMany + 1U);
    ASSERT_EQ(run.out.find(head), 0U) << run.out.substr(0, 200);
    const std::uint64_t traces = std::stoull(run.out.substr(head.size()));
    EXPECT_GT(traces, newer);
    EXPECT_EQ(run.out.find(" traces, 0 on, "), head.size() + std::to_string(traces).size());
  }
}

TEST_F(SetupRacesTest, AServiceThatDiesWhileItIsReadIsToldOnceAndNothingIsConfigured) {
  const std::string path = File("first");
  TrcRun run;
  for (int attempt = 0; attempt < 20 && !WasBeingRead(run); ++attempt)
    run = KillWhenConnected(path, attempt);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.out, "");
  const std::vector<std::string> told = LinesOf(run.err);
  ASSERT_EQ(told.size(), 3U) << run.err;
  const std::string head = "trc: " + _trc_GetHostName() + ": ",
                    words = "Error trying to connect to configuration server. (";
  EXPECT_TRUE(told[0].starts_with(head + "\"") && told[0].find(words) != std::string::npos)
      << "the one that was asked for: " << told[0];
  const std::string left = head + "the machine does not answer, and ";
  ASSERT_TRUE(told[1].starts_with(left)) << told[1];
  const std::uint64_t others = std::stoull(told[1].substr(left.size()));
  EXPECT_EQ(told[1], left + std::to_string(others) + " more applications could not be configured");
  EXPECT_LE(others, kMany + 0U);
  EXPECT_TRUE(told[2].starts_with(head + words)) << told[2];
}
