// The traces of a real application, through a real service, quor-bridge and a real server into a
// stream, while all of these are killed and stopped.
#include "publish_fixture.h"

namespace {

QUOR_POINT(published_point, "Net", "Published");

using Publishing = PublishFixture;

// Traces "0", "1" ...: `traces` of them each time that it may go on, with pauses.
std::unique_ptr<TracedChild> Numbers(int traces, int times) {
  return std::make_unique<TracedChild>([traces, times](TracedChild& self) {
    quor_application("numbers");
    for (int time = 0, i = 0; time < times; ++time) {
      self.AwaitGo();
      for (; i < traces * (time + 1); ++i) {
        QUOR_TRACE_INFO(published_point, "{}", i);
        if (i % 250 == 0) poll(nullptr, 0, 10);
      }
      if (quor_flush(20000) != 1) return 1;
      self.Report(static_cast<std::uint64_t>(i));
    }
    return 0;
  });
}

TEST_F(Publishing, OverKilledBridgesAndServersEveryTraceIsInTheStreamOnce) {
  constexpr int kTraces = 5000, kTimes = 4;
  quord.Start();
  auto bridge = Publish();
  // What was traced before is not this stream's.
  ASSERT_TRUE(bridge->Says("begins a stream"));
  const auto app = Numbers(kTraces, kTimes);
  app->Go();
  for (int kill = 0; kill < 4; ++kill) {
    poll(nullptr, 0, 60 + 30 * kill);
    EXPECT_EQ(bridge->End(SIGKILL), 1000 + SIGKILL);
    bridge = Publish();
  }
  EXPECT_EQ(app->Reported(), 1u * kTraces);
  EXPECT_TRUE(WaitFor([&] { return bridge->Times("connected to the engine") == 5; }));
  server.Stop();
  app->Go();
  EXPECT_EQ(app->Reported(), 2u * kTraces) << "nothing holds the application up";
  // Longer than the bridge waits for an answer.
  poll(nullptr, 0, 3500);
  server.Continue();
  app->Go();
  poll(nullptr, 0, 50);
  server.Kill();
  EXPECT_TRUE(bridge->Says("the engine is away"));
  EXPECT_EQ(app->Reported(), 3u * kTraces);
  ASSERT_EQ(server.Start(), "");
  app->Go();
  EXPECT_EQ(app->Reported(), 4u * kTraces);
  EXPECT_EQ(app->Wait(), 0);
  constexpr std::uint64_t kAll = std::uint64_t{kTraces} * kTimes;
  StreamContent content;
  EXPECT_TRUE(WaitFor([&] {
    content = Content();
    return content.Delivered() + content.Lost() >= kAll;
  }));
  EXPECT_EQ(content.damage, "");
  EXPECT_EQ(content.sources.size(), 1u);
  EXPECT_EQ(content.High(), kAll);
  EXPECT_EQ(content.Delivered(), kAll) << bridge->Log();
  EXPECT_EQ(content.Lost(), 0u) << "the service holds more than that";
  EXPECT_EQ(content.numbers.size(), kAll);
  EXPECT_EQ(content.again, 0u);
  EXPECT_GT(content.words, 0u);
  EXPECT_EQ(bridge->End(SIGTERM), 0) << bridge->Log();
}

TEST_F(Publishing, WhatIsLostWithAServiceIsAHoleOfItsSource) {
  constexpr int kTraces = 4000;
  quord.Start();
  const auto bridge = Publish();
  ASSERT_TRUE(bridge->Says("begins a stream"));
  const auto app = Numbers(kTraces, 2);
  app->Go();
  poll(nullptr, 0, 40);
  quord.Kill();
  EXPECT_TRUE(bridge->Says("the trace service is away"));
  quord.Start();
  EXPECT_TRUE(bridge->Says("the trace service is back"));
  EXPECT_EQ(app->Reported(), 1u * kTraces);
  app->Go();
  EXPECT_EQ(app->Reported(), 2u * kTraces);
  EXPECT_EQ(app->Wait(), 0);
  StreamContent content;
  const auto isAll = [&] {
    content = Content();
    return content.High() == 2u * kTraces && content.numbers.contains(2 * kTraces - 1);
  };
  EXPECT_TRUE(WaitFor(isAll));
  content.GiveUpHoles();
  EXPECT_EQ(content.damage, "");
  EXPECT_EQ(content.Delivered() + content.Lost(), 2u * kTraces);
  EXPECT_EQ(content.numbers.size(), content.Delivered());
  EXPECT_EQ(content.again, 0u);
}

TEST_F(Publishing, WhoComesFirstDoesNotMatterAndASignalAsksForTheCounts) {
  const auto bridge = Publish();
  EXPECT_TRUE(bridge->Says("the trace service is away"));
  quord.Start();
  EXPECT_TRUE(bridge->Says("the trace service begins a stream"));
  const auto app = Numbers(10, 1);
  app->Go();
  EXPECT_EQ(app->Reported(), 10u);
  ASSERT_TRUE(WaitFor([&] { return Content().Delivered() == 10; }));
  // The counts are behind the answers that the engine gives.
  EXPECT_TRUE(WaitFor([&] {
    bridge->Signal(SIGUSR1);
    poll(nullptr, 0, 20);
    return bridge->Log().find(": 10 traces, 0 lost before") != std::string::npos;
  })) << bridge->Log();
  EXPECT_EQ(bridge->End(SIGINT), 0);
  EXPECT_NE(bridge->Log().find("quor-bridge info: ended"), std::string::npos) << bridge->Log();
}

TEST_F(Publishing, ASecondOneWithTheSameStateIsRefused) {
  quord.Start();
  const auto bridge = Publish();
  ASSERT_TRUE(bridge->Says("begins a stream"));
  const auto second = Publish();
  EXPECT_EQ(second->Wait(), 1);
  EXPECT_TRUE(bridge->Says("another process publishes by it"));
}

TEST_F(Publishing, ADamagedStateBeginsAnotherStreamAndSaysSo) {
  quord.Start();
  auto bridge = Publish();
  ASSERT_TRUE(bridge->Says("begins a stream"));
  EXPECT_EQ(bridge->End(SIGTERM), 0);
  bridge = Publish();
  ASSERT_TRUE(bridge->Says("goes on with its stream"));
  EXPECT_EQ(bridge->End(SIGTERM), 0);
  std::ofstream(folder.File("state"), std::ios::app) << "and more\n";
  std::ofstream(folder.File("state")) << "quor-bridge publish 1\nto QUOR1\nstream 00";
  bridge = Publish();
  EXPECT_TRUE(bridge->Says("state cannot be read, another stream begins"));
  EXPECT_EQ(bridge->End(SIGTERM), 0);
}

TEST_F(Publishing, InitSaysWhatStandsAndChangesOnlyWhenAsked) {
  const auto said = [&] { return ReadIfThere(InitLog()); };
  EXPECT_NE(said().find("the stream QUOR1 is made"), std::string::npos) << said();
  EXPECT_NE(said().find("the settings quor1-settings is made"), std::string::npos) << said();
  EXPECT_EQ(Init({}), 0);
  EXPECT_NE(said().find("the stream QUOR1 stands already"), std::string::npos) << said();
  EXPECT_EQ(Init({"--max-age", "48h"}), 1);
  EXPECT_NE(said().find("max_age is 86400 s, not 172800 s"), std::string::npos) << said();
  EXPECT_EQ(Init({"--max-age", "48h", "--change"}), 0);
  EXPECT_NE(said().find("the stream QUOR1 is changed"), std::string::npos) << said();
  EXPECT_EQ(Init({"--max-age", "2d"}), 0);
  EXPECT_EQ(Init({"--max-age", "2x"}), 2);
  EXPECT_NE(said().find("is not a whole number and one of s, m, h, d"), std::string::npos);
}

TEST_F(Publishing, InitWithoutAServerEndsWithThree) {
  server.Kill();
  EXPECT_EQ(Init({}), 3);
}

}  // namespace
