// A reader of a stream meets an engine that stops, forgets and drops messages.
#include <gtest/gtest.h>

#include "quor/engine/pull/scripted_bus.h"

using namespace std::chrono_literals;

TEST(PullLoop, AsksForTheStreamThenAConsumerThenMessages) {
  PulledStream stream;
  ASSERT_TRUE(stream.SayState(7));
  const auto config = stream.SayMade();
  EXPECT_EQ(config["ack_policy"], "none");
  EXPECT_EQ(config["deliver_policy"], "all");
  EXPECT_EQ(config["filter_subject"], "t.>");
  EXPECT_EQ(config["num_replicas"], 1);
  EXPECT_EQ(config["mem_storage"], true);
  EXPECT_EQ(config["inactive_threshold"], 10'000'000'000);
  const auto request = stream.Sent();
  EXPECT_EQ(request.subject, "$JS.API.CONSUMER.MSG.NEXT.S." + stream.consumer);
  EXPECT_EQ(request.body["batch"], 256);
  EXPECT_EQ(request.body["max_bytes"], 4 * 1024 * 1024);
  EXPECT_EQ(request.body["idle_heartbeat"], 500'000'000);
  EXPECT_EQ(stream.loop.Broken(), "");
}

TEST(PullLoop, GivesWhatComesAndAsksAgainWhenHalfOfItIsThere) {
  PulledStream stream;
  stream.Begin();
  for (unsigned i = 1; i <= 127; i++) stream.Deliver(i + 10, i, stream.consumer);
  EXPECT_EQ(stream.Sent().subject, "");
  stream.Deliver(138, 128, stream.consumer);
  EXPECT_EQ(stream.Sent().subject, "$JS.API.CONSUMER.MSG.NEXT.S." + stream.consumer);
  std::vector<EngineMessage> messages;
  ASSERT_TRUE(stream.loop.Take(messages));
  EXPECT_EQ(messages.size(), 128u);
  EXPECT_EQ(messages.front().sequence, 11u);
  EXPECT_EQ(messages.back().sequence, 138u);
}

TEST(PullLoop, AsksForNothingWhileNobodyTakesWhatCame) {
  PulledStream stream;
  stream.Begin();
  for (unsigned i = 1; i <= 250; i++) stream.Deliver(i, i, stream.consumer, 20'000);
  EXPECT_EQ(stream.Sent().subject, "");
  std::vector<EngineMessage> messages;
  stream.loop.Take(messages);
  EXPECT_NE(stream.Sent().subject, "");
}

TEST(PullLoop, GoesOnBehindTheLastMessageWhenItMissesHeartbeats) {
  PulledStream stream;
  const auto request = stream.Begin();
  stream.Deliver(41, 1, stream.consumer);
  stream.Pass(1200ms);
  stream.SayStatus(request.reply, 100);
  stream.Pass(1200ms);
  EXPECT_EQ(stream.Sent().subject, "");
  stream.Pass(100ms);
  ASSERT_TRUE(stream.SayState(100));
  EXPECT_EQ(stream.loop.Broken(), "the engine is silent");
  const auto config = stream.SayMade();
  EXPECT_EQ(config["deliver_policy"], "by_start_sequence");
  EXPECT_EQ(config["opt_start_seq"], 42);
  EXPECT_EQ(stream.loop.Broken(), "");
  EXPECT_EQ(stream.Taken(), "41 ");
}

TEST(PullLoop, MissesNoHeartbeatsWhileItHasAskedForNothing) {
  PulledStream stream;
  const auto request = stream.Begin();
  stream.SayStatus(request.reply, 408, "Request Timeout");
  stream.Pass(60s);
  EXPECT_EQ(stream.Sent().subject, "$JS.API.CONSUMER.MSG.NEXT.S." + stream.consumer);
}

TEST(PullLoop, MakesANewConsumerWhenItsNumbersJump) {
  PulledStream stream;
  stream.Begin();
  stream.Deliver(41, 1, stream.consumer);
  stream.Deliver(44, 3, stream.consumer);
  stream.Deliver(45, 4, stream.consumer);
  const std::string old = stream.consumer;
  ASSERT_TRUE(stream.SayState(100));
  EXPECT_EQ(stream.SayMade()["opt_start_seq"], 42);
  stream.Deliver(46, 5, old);
  stream.Deliver(43, 1, stream.consumer);
  EXPECT_EQ(stream.Taken(), "41 43 ");
}

TEST(PullLoop, MakesANewConsumerWhenAMessageComesTwice) {
  PulledStream stream;
  stream.Begin();
  stream.Deliver(41, 1, stream.consumer);
  stream.Deliver(41, 2, stream.consumer);
  ASSERT_TRUE(stream.SayState(100));
  EXPECT_EQ(stream.SayMade()["opt_start_seq"], 42);
  EXPECT_EQ(stream.Taken(), "41 ");
}

TEST(PullLoop, SeesInAHeartbeatThatTheLastMessageWasDropped) {
  PulledStream stream;
  const auto request = stream.Begin();
  stream.Deliver(41, 1, stream.consumer);
  stream.SayStatus(request.reply, 100, "Idle Heartbeat", 1);
  EXPECT_EQ(stream.Sent().subject, "");
  stream.SayStatus(request.reply, 100, "Idle Heartbeat", 2);
  ASSERT_TRUE(stream.SayState(100));
  EXPECT_EQ(stream.SayMade()["opt_start_seq"], 42);
}

TEST(PullLoop, MakesANewConsumerOnEveryStatusThatItDoesNotKnow) {
  for (const auto& [status, words] : {std::pair(409, "Consumer Deleted"),
                                      {503, ""},
                                      {500, "x"},
                                      {409, "Leadership Change"},
                                      {423, "NotKnownYet"}}) {
    PulledStream stream;
    const auto request = stream.Begin();
    stream.SayStatus(request.reply, status, words);
    EXPECT_EQ(stream.loop.Broken(), "the engine says: " + std::to_string(status) + " " + words);
    EXPECT_TRUE(stream.SayState(100)) << status;
  }
}

TEST(PullLoop, AsksForOneMessageOfAnySizeWhenItIsTooLarge) {
  PulledStream stream;
  auto request = stream.Begin();
  stream.Deliver(41, 1, stream.consumer);
  stream.SayStatus(request.reply, 409, "Message Size Exceeds MaxBytes");
  request = stream.Sent();
  EXPECT_EQ(request.body["batch"], 256);
  stream.SayStatus(request.reply, 409, "Message Size Exceeds MaxBytes");
  request = stream.Sent();
  EXPECT_EQ(request.body["batch"], 1);
  EXPECT_FALSE(request.body.contains("max_bytes"));
  stream.Deliver(42, 2, stream.consumer, 5'000'000);
  stream.Taken();
  EXPECT_EQ(stream.Sent().body["batch"], 256);
}

TEST(PullLoop, WaitsLongerEachTimeWhileNobodyAnswers) {
  PulledStream stream;
  std::vector<long> pauses;
  for (int i = 0; i < 8; i++) {
    const auto asked = stream.Sent();
    ASSERT_EQ(asked.subject, "$JS.API.STREAM.INFO.S");
    const auto before = stream.now;
    stream.SayStatus(asked.reply, 503);
    while (stream.bus.sent.empty()) {
      stream.Tick();
      if (stream.bus.sent.empty()) stream.Pass(10ms);
    }
    pauses.push_back(long((stream.now - before) / 1ms));
  }
  EXPECT_EQ(pauses, (std::vector<long>{0, 100, 200, 400, 800, 1600, 2000, 2000}));
  EXPECT_EQ(stream.loop.Broken(), "no server of the engine has the stream now");
}

TEST(PullLoop, SaysWhyItCannotBeSent) {
  PulledStream stream;
  stream.bus.refuses = "no server is connected";
  stream.Tick();
  EXPECT_EQ(stream.loop.Broken(), "no server is connected");
  stream.bus.refuses.clear();
  stream.Pass(2s);
  EXPECT_TRUE(stream.SayState(1));
}

TEST(PullLoop, SaysTheEnginesWordsWhenItRefusesAConsumer) {
  PulledStream stream;
  ASSERT_TRUE(stream.SayState(1));
  const auto asked = stream.Sent();
  stream.Say(asked.reply, R"({"error":{"err_code":10131,"description":"not yours"}})");
  EXPECT_EQ(stream.loop.Broken(), "the engine says: not yours");
}

TEST(PullLoop, TakesNoAnswerToAnEarlierQuestion) {
  PulledStream stream;
  const auto first = stream.Sent();
  stream.Pass(3s);
  stream.Tick();
  const auto second = stream.Sent();
  ASSERT_EQ(second.subject, first.subject);
  stream.Say(first.reply, R"({"created":"x","state":{"first_seq":1,"last_seq":1}})");
  EXPECT_EQ(stream.Sent().subject, "");
  stream.Say(second.reply, R"({"created":"x","state":{"first_seq":1,"last_seq":1}})");
  EXPECT_NE(stream.Sent().subject, "");
}

TEST(PullLoop, SaysThatTheStreamWasMadeAgainBehindWhatItHasRead) {
  PulledStream stream;
  const auto request = stream.Begin();
  stream.Deliver(41, 1, stream.consumer);
  stream.SayStatus(request.reply, 409, "Consumer Deleted");
  ASSERT_TRUE(stream.SayState(900, "tuesday"));
  std::string why;
  EXPECT_FALSE(stream.loop.TakeAnew(&why));
  EXPECT_EQ(stream.Taken(), "41 ");
  ASSERT_TRUE(stream.loop.TakeAnew(&why));
  EXPECT_EQ(why, "the stream was made again");
  ASSERT_TRUE(stream.SayState(900, "tuesday"));
  EXPECT_EQ(stream.SayMade()["deliver_policy"], "all");
  stream.Deliver(1, 1, stream.consumer);
  EXPECT_EQ(stream.Taken(), "1 ");
}

TEST(PullLoop, BelievesThatAStreamLostItsEndOnlyAfterAWhile) {
  PulledStream stream;
  const auto request = stream.Begin();
  stream.Deliver(41, 1, stream.consumer);
  stream.Taken();
  stream.SayStatus(request.reply, 409, "Leadership Change");
  std::string why;
  ASSERT_TRUE(stream.SayState(40));
  EXPECT_FALSE(stream.loop.TakeAnew(&why));
  stream.Pass(2900ms);
  ASSERT_TRUE(stream.SayState(40));
  EXPECT_FALSE(stream.loop.TakeAnew(&why));
  stream.Pass(2000ms);
  ASSERT_TRUE(stream.SayState(40));
  ASSERT_TRUE(stream.loop.TakeAnew(&why));
  EXPECT_EQ(why, "the stream has lost its end");
}

TEST(PullLoop, ReadsOnWhenTheEndOfTheStreamIsThereAgain) {
  PulledStream stream;
  const auto request = stream.Begin();
  stream.Deliver(41, 1, stream.consumer);
  stream.SayStatus(request.reply, 409, "Leadership Change");
  ASSERT_TRUE(stream.SayState(40));
  stream.Pass(2s);
  ASSERT_TRUE(stream.SayState(41));
  EXPECT_EQ(stream.SayMade()["opt_start_seq"], 42);
}

TEST(PullLoop, BeginsWhereItIsTold) {
  using At = EngineStart::At;
  PulledStream next(PulledStream::Target({At::Next, {}, 0}));
  ASSERT_TRUE(next.SayState(17));
  EXPECT_EQ(next.SayMade()["opt_start_seq"], 18);
  PulledStream at(PulledStream::Target({At::Sequence, {}, 5}));
  ASSERT_TRUE(at.SayState(17));
  EXPECT_EQ(at.SayMade()["opt_start_seq"], 5);
  PulledStream time(PulledStream::Target({At::Time, EngineTime(1500ms), 0}));
  ASSERT_TRUE(time.SayState(17));
  EXPECT_EQ(time.SayMade()["opt_start_time"], "1970-01-01T00:00:01.500000000Z");
  auto target = PulledStream::Target();
  target.lastOfEach = true;
  PulledStream last(target);
  ASSERT_TRUE(last.SayState(17));
  EXPECT_EQ(last.SayMade()["deliver_policy"], "last_per_subject");
}

TEST(PullLoop, KeepsItsPlaceWhenTheNextMessageHasNotComeYet) {
  PulledStream stream(PulledStream::Target({EngineStart::At::Next, {}, 0}));
  const auto request = stream.Begin(17);
  stream.SayStatus(request.reply, 409, "Consumer Deleted");
  ASSERT_TRUE(stream.SayState(25));
  EXPECT_EQ(stream.SayMade()["opt_start_seq"], 18);
}

TEST(PullLoop, TakesNothingFromStrangers) {
  PulledStream stream;
  stream.Begin();
  BusMessage message;
  message.subject = "t.a";
  for (const char* reply : {"", "_INBOX.y", "$JS.ACK.S.other.1.1.1.1.0", "$JS.ACK.S"}) {
    message.reply = reply;
    stream.loop.OnMessage(stream.now, message);
  }
  stream.SayStatus("_INBOX.x.r1.p999", 409, "Consumer Deleted");
  stream.Say("_INBOX.x.r1.", "x");
  stream.Say("_INBOX.x.r1.i1", "{}");
  EXPECT_EQ(stream.Taken(), "");
  EXPECT_EQ(stream.Sent().subject, "");
  EXPECT_EQ(stream.loop.Broken(), "");
}
