// A server that dies, stops, is not there yet, or drops what is old.
#include <gtest/gtest.h>

#include "quor/engine/jetstream/jetstream_fixture.h"
#include "quor/engine/jetstream/resending_publisher.h"

using namespace std::chrono_literals;
using State = EngineReader::State;

namespace {

class JetStreamFaults : public JetStreamFixture {
 protected:
  // Takes messages until so many came or the time is over.
  static std::vector<EngineMessage> Take(EngineReader& reader, std::size_t count,
                                         std::chrono::seconds longest) {
    const auto end = std::chrono::steady_clock::now() + longest;
    std::vector<EngineMessage> all, messages;
    while (all.size() < count && std::chrono::steady_clock::now() < end) {
      reader.Next(200ms, messages, nullptr);
      all.insert(all.end(), messages.begin(), messages.end());
    }
    return all;
  }

  static State WaitFor(EngineReader& reader, State wanted, std::string& why) {
    const auto end = std::chrono::steady_clock::now() + 20s;
    std::vector<EngineMessage> messages;
    State state = State::Messages;
    while (state != wanted && std::chrono::steady_clock::now() < end)
      state = reader.Next(200ms, messages, &why);
    return state;
  }
};

}  // namespace

TEST_F(JetStreamFaults, LosesAndDoublesNothingWhenTheServerIsKilledTwice) {
  constexpr unsigned kCount = 10'000;
  RecordingEngineUser user, readerUser;
  auto engine = MakeJetStream(user), other = MakeJetStream(readerUser);
  auto reader = other->Read("t.>", {}, nullptr);
  std::vector<EngineMessage> read;
  std::thread reading([&] { read = Take(*reader, kCount, 60s); });
  unsigned kills = 0;
  ResendingPublisher publisher(*engine, user);
  const bool all = publisher.Publish("t.a", kCount, 60s, [&](unsigned acked) {
    if (acked < (kills + 1) * kCount / 3 || kills == 2) return;
    kills++;
    m_server.Kill();
    ASSERT_EQ(m_server.Start(), "");
  });
  reading.join();
  EXPECT_TRUE(all);
  EXPECT_EQ(kills, 2u);
  EXPECT_GT(publisher.resent, 0u);
  ASSERT_EQ(read.size(), kCount);
  std::set<std::string> ids;
  for (std::size_t i = 0; i < read.size(); i++) {
    ids.insert(read[i].id);
    ASSERT_TRUE(i == 0 || read[i].sequence > read[i - 1].sequence) << i;
    ASSERT_EQ("p:" + ContractText(read[i].body), read[i].id);
  }
  EXPECT_EQ(ids.size(), kCount);
}

TEST_F(JetStreamFaults, SaysThatItIsDownAndSendsNothingLater) {
  RecordingEngineUser user;
  auto engine = MakeJetStream(user);
  m_server.Kill();
  ASSERT_TRUE(user.Wait([&] { return !user.Downs().empty(); }));
  std::string why;
  EXPECT_FALSE(engine->Publish("t.a", "late", {}, 1, &why));
  EXPECT_EQ(why, "no server is connected");
  EXPECT_FALSE(engine->Ask("t.q", {}, kWhile, &why));
  EXPECT_EQ(why, "no server is connected");
  ASSERT_EQ(m_server.Start(), "");
  ASSERT_TRUE(user.Wait([&] { return user.Ups().size() == 2; }));
  auto reader = engine->Read("t.>", {}, nullptr);
  std::vector<EngineMessage> messages;
  EXPECT_EQ(WaitFor(*reader, State::Quiet, why), State::Quiet);
  ASSERT_TRUE(engine->Publish("t.a", "now", {}, 2, &why)) << why;
  const auto read = Take(*reader, 1, 20s);
  ASSERT_EQ(read.size(), 1u);
  EXPECT_EQ(read[0].id, "now");
}

TEST_F(JetStreamFaults, ComesUpWhenTheServerStartsLater) {
  m_server.Kill();
  RecordingEngineUser user;
  auto engine = MakeJetStream(user);
  const std::string said = "no server answers at " + m_server.Address();
  EXPECT_EQ(user.Downs(), std::vector<std::string>{said});
  auto reader = engine->Read("t.>", {}, nullptr);
  std::string why;
  EXPECT_EQ(WaitFor(*reader, State::Broken, why), State::Broken);
  EXPECT_EQ(why, said);
  ASSERT_EQ(m_server.Start(), "");
  EXPECT_EQ(WaitFor(*reader, State::Quiet, why), State::Quiet);
  EXPECT_EQ(user.Ups().size(), 1u);
}

TEST_F(JetStreamFaults, IsBrokenWhileTheServerStandsStillAndReadsOnAfterwards) {
  RecordingEngineUser user;
  auto engine = MakeJetStream(user);
  auto reader = engine->Read("t.>", {}, nullptr);
  std::string why;
  ASSERT_EQ(WaitFor(*reader, State::Quiet, why), State::Quiet);
  m_server.Stop();
  EXPECT_EQ(WaitFor(*reader, State::Broken, why), State::Broken);
  EXPECT_NE(why.find("the engine "), why.npos) << why;
  m_server.Continue();
  ASSERT_EQ(WaitFor(*reader, State::Quiet, why), State::Quiet);
  ASSERT_TRUE(engine->Publish("t.a", "x", {}, 1, &why)) << why;
  EXPECT_EQ(Take(*reader, 1, 20s).size(), 1u);
}

TEST_F(JetStreamFaults, OvertakesAReaderThatDoesNotAsk) {
  DeleteStream();
  auto plan = Plan();
  plan.maxOfSubject = 50;
  MakeStream(plan);
  RecordingEngineUser user;
  auto engine = MakeJetStream(user);
  auto reader = engine->Read("t.a", {}, nullptr);
  ResendingPublisher publisher(*engine, user);
  ASSERT_TRUE(publisher.Publish("t.a", 10, 20s, [](unsigned) {}));
  ASSERT_EQ(Take(*reader, 10, 20s).size(), 10u);
  ASSERT_TRUE(publisher.Publish("t.b", 10, 20s, [](unsigned) {}));
  for (std::uint64_t i = 0; i < 1000; i++)
    ASSERT_TRUE(engine->Publish("t.a", "m" + std::to_string(i), {}, i, nullptr));
  ASSERT_TRUE(user.Wait([&] { return user.Acks().size() == 1010; }));
  // What was asked for before comes; of the rest the newest fifty.
  const auto read = Take(*reader, 1000, 2s);
  ASSERT_FALSE(read.empty());
  EXPECT_LT(read.size(), 1000u);
  EXPECT_EQ(read.back().id, "m999");
  for (std::size_t i = 1; i < read.size(); i++) EXPECT_GT(read[i].sequence, read[i - 1].sequence);
}

TEST_F(JetStreamFaults, MakesNoCallAfterItsEnd) {
  for (int round = 0; round < 20; round++) {
    auto user = std::make_unique<RecordingEngineUser>();
    auto engine = MakeJetStream(*user);
    ASSERT_TRUE(engine->Serve(
        "q.x", [](Bytes) { return std::vector<std::uint8_t>(3); }, nullptr));
    auto reader = engine->Read("t.>", {}, nullptr);
    for (std::uint64_t i = 0; i < 50; i++) engine->Publish("t.a", "", {}, i, nullptr);
    std::vector<EngineMessage> messages;
    reader->Next(std::chrono::milliseconds(round % 3), messages, nullptr);
    reader.reset();
    engine.reset();
    // With the sanitizers a later call is a use after the end.
    user.reset();
  }
}

TEST_F(JetStreamFaults, AServerThatStandsStillAtTheFirstAttemptIsMetLater) {
  m_server.Stop();
  RecordingEngineUser user;
  auto engine = MakeJetStream(user);
  ASSERT_TRUE(engine);
  ASSERT_TRUE(engine->Serve(
      "q.x", [](Bytes) { return std::vector<std::uint8_t>(3); }, nullptr));
  auto reader = engine->Read("t.>", {}, nullptr);
  ASSERT_TRUE(reader);
  EXPECT_TRUE(user.Ups().empty());
  m_server.Continue();
  ASSERT_TRUE(user.Wait([&] { return !user.Ups().empty(); }));
  const std::vector<std::uint8_t> body(9);
  ASSERT_TRUE(user.Wait([&] {
    engine->Publish("t.a", "m1", body, 1, nullptr);
    std::this_thread::sleep_for(20ms);
    return !user.Acks().empty();
  }));
  EXPECT_EQ(Take(*reader, 1, 20s).size(), 1u) << "the reader's subscription was made again";
  EXPECT_TRUE(engine->Ask("q.x", body, 5s, nullptr)) << "so was that of the service";
}

TEST_F(JetStreamFaults, WakesAReaderThatWaits) {
  RecordingEngineUser user;
  auto engine = MakeJetStream(user);
  auto reader = engine->Read("t.>", {}, nullptr);
  std::string why;
  ASSERT_EQ(WaitFor(*reader, State::Quiet, why), State::Quiet);
  std::thread waker([&] {
    std::this_thread::sleep_for(50ms);
    reader->Wake();
  });
  const auto before = std::chrono::steady_clock::now();
  std::vector<EngineMessage> messages;
  EXPECT_EQ(reader->Next(100s, messages, nullptr), State::Quiet);
  waker.join();
  EXPECT_LT(std::chrono::steady_clock::now() - before, 50s);
}
