// What an address asks of an engine, and what comes of it piece by piece.
#include "quor/relay/monitor/relay_feed.h"

#include <gtest/gtest.h>

#include "quor/relay/monitor/relay_session.h"
#include "support/fake_engine.h"

namespace {

using namespace std::chrono_literals;
using At = EngineStart::At;

FeedPlan Plan(const std::string& wishes) {
  const EngineTime now{std::chrono::hours(1000)};
  return PlanFor(*ParseRelayAddress("nats://localhost/S" + wishes), now);
}

TEST(FeedPlan, AsksForWhatTheAddressNames) {
  EXPECT_EQ(Plan("").messages, "quor1.*.>");
  EXPECT_EQ(Plan("").words, "");
  EXPECT_EQ(Plan("?machine=we.b").messages, "quor1.we=2Eb.>");
  const FeedPlan plan = Plan("?machine=web1&app=orders");
  EXPECT_EQ(plan.messages, "quor1.web1.orders");
  EXPECT_EQ(plan.words, "quor1.web1._") << "an application's subject has no words";
  EXPECT_EQ(plan.app, "orders");
}

TEST(FeedPlan, BeginsAWhileBeforeATimeBecauseClocksDiffer) {
  EXPECT_EQ(Plan("").start.at, At::Next);
  EXPECT_EQ(Plan("?since=start").start.at, At::Oldest);
  EXPECT_EQ(Plan("?since=1h").start.at, At::Time);
  EXPECT_EQ(Plan("?since=1h").start.time.time_since_epoch(), std::chrono::hours(999) - 30s);
  EXPECT_EQ(Plan("?since=3650d").start.time, EngineTime{}) << "no time before 1970";
}

TEST(RelayFeed, AWordComesBehindTheMessagesThatWereStoredBeforeIt) {
  FakeCluster cluster("S");
  const auto store = [&cluster](const std::string& subject, std::vector<std::uint8_t> body) {
    cluster.stream.Store({subject, {}, std::move(body), 0, cluster.now});
  };
  std::vector<std::uint8_t> body;
  for (std::uint64_t serial = 1; serial <= 3; ++serial) {
    const Envelope told{std::string(16, 'i'), "web1", "orders", 7, serial, 0, 1, {}};
    ASSERT_TRUE(WriteEnvelope(told, body, nullptr));
    store("quor1.web1.orders", body);
    const std::string instance(16, 'i');
    ASSERT_TRUE(
        WriteWord({"web1", {{instance, "orders", serial}, {instance, "other", 9}}}, body, nullptr));
    store("quor1.web1._", body);
  }
  store("quor1.web1.orders", {1, 2, 3});
  cluster.RunThread();

  std::mutex mutex;
  std::condition_variable came;
  std::string said;
  std::uint64_t malformed = 0;
  RelayFeed* self = nullptr;
  FeedPlan plan = Plan("?machine=web1&app=orders&since=start");
  const auto take = [&](const FedPiece& piece) {
    std::unique_lock lock(mutex);
    came.wait(lock, [&] { return self != nullptr; });
    for (const FedItem& item : piece.items)
      said += item.message ? "m" + std::to_string(item.message->envelope.serial) + " "
                           : "w" + std::to_string(item.word.sources.at(0).serial) + "/" +
                                 std::to_string(item.word.sources.size()) + " ";
    malformed += piece.malformed;
    self->GoOn();
    came.notify_all();
  };
  RelayFeed feed(
      [&](EngineUser& user, std::string*) { return std::make_unique<FakeEngine>(cluster, user); },
      plan, take);
  std::unique_lock lock(mutex);
  self = &feed;
  came.notify_all();
  EXPECT_TRUE(came.wait_for(lock, 20s, [&] { return said.find("w3") != said.npos; })) << said;
  EXPECT_EQ(said, "m1 m2 m3 w1/1 w2/1 w3/1 ");
  EXPECT_EQ(malformed, 1u);
}

}  // namespace
