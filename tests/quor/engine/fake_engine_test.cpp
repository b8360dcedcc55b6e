// The fake engine does what it is told, and the same again for a seed.
#include "support/fake_engine.h"

#include <gtest/gtest.h>

#include "support/recording_engine_user.h"

using std::chrono::milliseconds;

namespace {

std::string Play(unsigned seed) {
  FakeCluster cluster("S", seed);
  cluster.faults = {.lost = 10, .noAck = 10, .doubled = 10, .late = 20, .readSwapped = 20};
  RecordingEngineUser user;
  FakeEngine engine(cluster, user);
  for (unsigned i = 0; i < 100; i++)
    engine.Publish("a.b", "id" + std::to_string(i), {}, i, nullptr), cluster.Deliver();
  std::string played;
  auto reader = engine.Read("a.>", {}, nullptr);
  std::vector<EngineMessage> messages;
  while (reader->Next(milliseconds(30), messages, nullptr) == EngineReader::State::Messages)
    for (const auto& message : messages) played += message.id + " ";
  for (const auto& [token, ack] : user.Acks()) played += std::to_string(token) + ",";
  return played;
}

}  // namespace

TEST(FakeEngine, PlaysTheSameForASeedAndAnotherForAnother) {
  EXPECT_EQ(Play(7), Play(7));
  EXPECT_NE(Play(7), Play(8));
}

TEST(FakeEngine, LosesDoublesAndDelaysAsTold) {
  const std::string played = Play(7);
  std::set<std::string> ids;
  std::size_t count = 0;
  for (std::size_t i = 0; i < 100; i++) {
    const std::string word = "id" + std::to_string(i) + " ";
    for (auto at = played.find(word); at != std::string::npos; at = played.find(word, at + 1))
      ids.insert(word), count++;
  }
  EXPECT_LT(ids.size(), 100u);
  EXPECT_GT(count, ids.size());
}

TEST(FakeEngine, ForgetsAnEngineWhoseAcknowledgementsAreDue) {
  FakeCluster cluster("S");
  RecordingEngineUser user;
  {
    FakeEngine engine(cluster, user);
    EXPECT_TRUE(engine.Publish("a", "1", {}, 1, nullptr));
  }
  cluster.Deliver(10);
  EXPECT_TRUE(user.Acks().empty());
}

TEST(FakeEngine, SaysThatItIsCutAndThatItIsBack) {
  FakeCluster cluster("S");
  RecordingEngineUser user;
  FakeEngine engine(cluster, user);
  cluster.Cut("no way");
  std::string why;
  EXPECT_FALSE(engine.Publish("a", "1", {}, 1, &why));
  EXPECT_EQ(why, "no way");
  auto reader = engine.Read(">", {}, nullptr);
  std::vector<EngineMessage> messages;
  EXPECT_EQ(reader->Next(milliseconds(3), messages, &why), EngineReader::State::Broken);
  cluster.Restore();
  EXPECT_EQ(reader->Next(milliseconds(3), messages, &why), EngineReader::State::Quiet);
  EXPECT_EQ(user.Downs(), std::vector<std::string>{"no way"});
  EXPECT_EQ(user.Ups(), std::vector<std::string>{"fake:1"});
}
