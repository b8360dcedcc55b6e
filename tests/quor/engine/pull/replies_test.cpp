// The words of an engine, and what a stranger may make of them.
#include "quor/engine/pull/replies.h"

#include <gtest/gtest.h>

namespace {

Bytes BytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

TEST(EngineReplies, ReadAnAcknowledgement) {
  int error = 0;
  const auto ack = ReadPublishAck(BytesOf(R"({"stream":"S","seq":17,"duplicate":true})"), error);
  EXPECT_TRUE(ack.stored);
  EXPECT_TRUE(ack.duplicate);
  EXPECT_EQ(ack.stream, "S");
  EXPECT_EQ(ack.sequence, 17u);
}

TEST(EngineReplies, TakeNoAcknowledgementThatLacksStreamOrSequence) {
  int error = 0;
  for (const char* text :
       {"", "{}", "[]", "x", "{\"stream\":\"S\"}", "{\"seq\":1}", "{\"stream\":7,\"seq\":1}",
        "{\"stream\":\"S\",\"seq\":-1}", "{\"stream\":\"S\",\"seq\":1.5}",
        "{\"stream\":\"S\",\"seq\":1", "{\"stream\":\"\\ud800\",\"seq\":1}",
        "{\"stream\":\"\xff\",\"seq\":1}"}) {
    const auto ack = ReadPublishAck(BytesOf(text), error);
    EXPECT_FALSE(ack.stored) << text;
    EXPECT_EQ(ack.why, "the engine's answer cannot be read") << text;
  }
}

TEST(EngineReplies, GiveTheWordsAndTheNumberOfARefusal) {
  int error = 0;
  const auto ack = ReadPublishAck(
      BytesOf(R"({"error":{"code":400,"err_code":10071,"description":"wrong last sequence: 3"}})"),
      error);
  EXPECT_FALSE(ack.stored);
  EXPECT_EQ(error, kOtherRevision);
  EXPECT_EQ(ack.why, "the engine says: wrong last sequence: 3");
}

TEST(EngineReplies, ReadTheStateOfAStream) {
  StreamState state;
  std::string why;
  ASSERT_TRUE(ReadStreamState(
      BytesOf(R"({"created":"2026-11-24T00:00:00Z","state":{"first_seq":4,"last_seq":9}})"), state,
      &why))
      << why;
  EXPECT_EQ(state.created, "2026-11-24T00:00:00Z");
  EXPECT_EQ(state.first, 4u);
  EXPECT_EQ(state.last, 9u);
  EXPECT_FALSE(ReadStreamState(BytesOf(R"({"created":"x","state":[]})"), state, &why));
}

TEST(EngineReplies, ReadAStoredValueWithBytesOfAllKinds) {
  EngineValue value;
  int error = 0;
  ASSERT_TRUE(ReadStoredMessage(BytesOf(R"({"message":{"seq":3,"data":"AP+AQQ=="}})"), value, error,
                                nullptr));
  EXPECT_EQ(value.value, (std::vector<std::uint8_t>{0, 255, 128, 65}));
  EXPECT_EQ(value.revision, 3u);
  EngineValue bad;
  EXPECT_FALSE(
      ReadStoredMessage(BytesOf(R"({"message":{"seq":3,"data":"A?"}})"), bad, error, nullptr));
}

TEST(EngineReplies, ReadAPlaceWithNineWordsAndWithTwelve) {
  for (const char* text : {"$JS.ACK.S.c1.1.77.5.1700000000000000001.9",
                           "$JS.ACK.dom.hash.S.c1.1.77.5.1700000000000000001.9.rand",
                           "$JS.ACK._.hash.S.c1.1.77.5.1700000000000000001.9"}) {
    const auto place = ReadDeliveredPlace(text);
    ASSERT_TRUE(place) << text;
    EXPECT_EQ(place->consumer, "c1");
    EXPECT_EQ(place->sequence, 77u);
    EXPECT_EQ(place->ofConsumer, 5u);
    EXPECT_EQ(EngineTimeText(place->arrived), "2023-11-14T22:13:20.000000001Z");
  }
}

TEST(EngineReplies, ReadNoPlaceOutOfAnythingElse) {
  for (const char* text :
       {"", "$JS.ACK", "$JS.ACK.S.c.1.7.5.1", "$JS.ACK.S.c.1.7.5.1.2.3", "$KV.ACK.S.c.1.7.5.1.2",
        "$JS.ACK.S.c.1.-7.5.1.2", "$JS.ACK.S.c.1.7.5.99999999999999999999.2",
        "$JS.ACK.S.c.1..5.1.2", "$JS.ACK.S.c.1.7.5.18446744073709551615.2"})
    EXPECT_FALSE(ReadDeliveredPlace(text)) << text;
}
