// What every engine does for those who use it, when nothing goes wrong.
//
// Shape    TYPED_TEST_P over a fixture with `MakeEngine(user)`, whose engines share one empty
// stream
//          of the name kStream and the bucket kBucket, and `MakeAnew()`, which begins the stream
//          anew.
#pragma once

#include <gtest/gtest.h>

#include "support/recording_engine_user.h"

constexpr char kContractStream[] = "S1";
constexpr char kContractBucket[] = "b1";

inline Bytes ContractBytes(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
inline std::string ContractText(const std::vector<std::uint8_t>& bytes) {
  return {bytes.begin(), bytes.end()};
}

template <class Fixture>
class EngineContract : public Fixture {
 protected:
  using State = EngineReader::State;
  static constexpr std::chrono::milliseconds kLong{15'000};

  void PublishAll(Engine& engine, RecordingEngineUser& user, std::vector<std::string> subjects) {
    const auto before = user.Acks().size();
    for (const auto& subject : subjects) {
      m_published++;
      std::string why;
      ASSERT_TRUE(engine.Publish(subject, "id" + std::to_string(m_published),
                                 ContractBytes("body" + std::to_string(m_published)), m_published,
                                 &why))
          << why;
    }
    ASSERT_TRUE(user.Wait([&] { return user.Acks().size() == before + subjects.size(); }));
  }

  // "subject=body@sequence " of so many messages, or of what came in time.
  std::string Take(EngineReader& reader, std::size_t count) {
    const auto end = std::chrono::steady_clock::now() + kLong;
    std::string taken;
    std::vector<EngineMessage> messages;
    for (std::size_t got = 0; got < count && std::chrono::steady_clock::now() < end;) {
      std::string why;
      const auto state = reader.Next(std::chrono::milliseconds(500), messages, &why);
      if (state == State::BegunAnew) taken += "anew ";
      for (const auto& message : messages)
        taken += message.subject + "=" + ContractText(message.body) + "@" +
                 std::to_string(message.sequence) + " ";
      got += messages.size();
    }
    return taken;
  }

  unsigned m_published = 0;
};
TYPED_TEST_SUITE_P(EngineContract);

TYPED_TEST_P(EngineContract, AcknowledgesInTheOrderOfSendingWithSequencesOfTheStream) {
  RecordingEngineUser user;
  auto engine = this->MakeEngine(user);
  this->PublishAll(*engine, user, {"t.a", "t.b", "t.a"});
  const auto acks = user.Acks();
  ASSERT_EQ(acks.size(), 3u);
  for (unsigned i = 0; i < 3; i++) {
    EXPECT_EQ(acks[i].first, i + 1);
    EXPECT_TRUE(acks[i].second.stored) << acks[i].second.why;
    EXPECT_FALSE(acks[i].second.duplicate);
    EXPECT_EQ(acks[i].second.stream, kContractStream);
    EXPECT_EQ(acks[i].second.sequence, i + 1);
  }
}

TYPED_TEST_P(EngineContract, TellsADuplicateByItsId) {
  RecordingEngineUser user;
  auto engine = this->MakeEngine(user);
  ASSERT_TRUE(engine->Publish("t.a", "same", {}, 1, nullptr));
  ASSERT_TRUE(engine->Publish("t.a", "same", {}, 2, nullptr));
  ASSERT_TRUE(user.Wait([&] { return user.Acks().size() == 2; }));
  EXPECT_FALSE(user.Acks()[0].second.duplicate);
  EXPECT_TRUE(user.Acks()[1].second.duplicate);
  EXPECT_EQ(user.Acks()[1].second.sequence, 1u);
}

TYPED_TEST_P(EngineContract, ReadsWhatAFilterLetsThroughFromWhereItBegins) {
  RecordingEngineUser user;
  auto engine = this->MakeEngine(user);
  this->PublishAll(*engine, user, {"t.a", "t.b", "t.a", "t.a"});
  const EngineStart third{EngineStart::At::Sequence, {}, 3}, next{EngineStart::At::Next, {}, 0};
  auto all = engine->Read("t.a", {}, nullptr), late = engine->Read("t.>", third, nullptr);
  EXPECT_EQ(this->Take(*all, 3), "t.a=body1@1 t.a=body3@3 t.a=body4@4 ");
  EXPECT_EQ(this->Take(*late, 2), "t.a=body3@3 t.a=body4@4 ");
  auto live = engine->Read("t.*", next, nullptr);
  std::vector<EngineMessage> messages;
  EXPECT_EQ(live->Next(std::chrono::milliseconds(300), messages, nullptr),
            EngineReader::State::Quiet);
  this->PublishAll(*engine, user, {"t.b"});
  EXPECT_EQ(this->Take(*live, 1), "t.b=body5@5 ");
}

TYPED_TEST_P(EngineContract, GivesIdAndTimeOfAMessage) {
  RecordingEngineUser user;
  auto engine = this->MakeEngine(user);
  this->PublishAll(*engine, user, {"t.a", "t.a"});
  auto reader = engine->Read("t.a", {}, nullptr);
  std::vector<EngineMessage> messages, all;
  for (int i = 0; i < 50 && all.size() < 2; i++) {
    reader->Next(std::chrono::milliseconds(300), messages, nullptr);
    all.insert(all.end(), messages.begin(), messages.end());
  }
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].id, "id1");
  EXPECT_LE(all[0].arrived, all[1].arrived);
  auto later = engine->Read("t.a", {EngineStart::At::Time, all[1].arrived, 0}, nullptr);
  EXPECT_NE(this->Take(*later, 1).find("t.a=body2@2 "), std::string::npos);
}

TYPED_TEST_P(EngineContract, SaysThatAStreamWasBegunAnewAndReadsIt) {
  RecordingEngineUser user;
  auto engine = this->MakeEngine(user);
  this->PublishAll(*engine, user, {"t.a", "t.a"});
  auto reader = engine->Read("t.a", {}, nullptr);
  EXPECT_EQ(this->Take(*reader, 2), "t.a=body1@1 t.a=body2@2 ");
  this->MakeAnew();
  this->PublishAll(*engine, user, {"t.a"});
  EXPECT_EQ(this->Take(*reader, 1), "anew t.a=body3@1 ");
}

TYPED_TEST_P(EngineContract, PutsAValueOnlyOnTheRevisionThatItHas) {
  RecordingEngineUser user;
  auto engine = this->MakeEngine(user);
  std::string why;
  const auto none = engine->Get(kContractBucket, "m.k", this->kLong, &why);
  ASSERT_TRUE(none) << why;
  EXPECT_EQ(none->revision, 0u);
  std::uint64_t mine = 0, other = 0;
  EXPECT_EQ(engine->PutValue(kContractBucket, "m.k", ContractBytes("1"), mine, this->kLong, &why),
            Engine::Put::Done)
      << why;
  EXPECT_EQ(engine->PutValue(kContractBucket, "m.k", ContractBytes("2"), other, this->kLong, &why),
            Engine::Put::Changed);
  EXPECT_EQ(why, "\"m.k\" was changed by someone else");
  EXPECT_EQ(engine->PutValue(kContractBucket, "m.k", ContractBytes("3"), mine, this->kLong, &why),
            Engine::Put::Done)
      << why;
  const auto got = engine->Get(kContractBucket, "m.k", this->kLong, &why);
  ASSERT_TRUE(got) << why;
  EXPECT_EQ(ContractText(got->value), "3");
  EXPECT_EQ(got->revision, mine);
}

TYPED_TEST_P(EngineContract, WatchesTheKeysOfABucket) {
  RecordingEngineUser user;
  auto engine = this->MakeEngine(user);
  std::uint64_t one = 0, two = 0;
  ASSERT_EQ(engine->PutValue(kContractBucket, "m.k", ContractBytes("1"), one, this->kLong, nullptr),
            Engine::Put::Done);
  ASSERT_EQ(engine->PutValue(kContractBucket, "x.k", ContractBytes("x"), two, this->kLong, nullptr),
            Engine::Put::Done);
  auto watch = engine->Watch(kContractBucket, "m.>", nullptr);
  EXPECT_EQ(this->Take(*watch, 1), "m.k=1@1 ");
  ASSERT_EQ(engine->PutValue(kContractBucket, "m.k", ContractBytes("2"), one, this->kLong, nullptr),
            Engine::Put::Done);
  EXPECT_EQ(this->Take(*watch, 1), "m.k=2@3 ");
}

TYPED_TEST_P(EngineContract, AnswersQuestionsAndSaysAtOnceThatNobodyDoes) {
  RecordingEngineUser user;
  auto one = this->MakeEngine(user), other = this->MakeEngine(user);
  std::string why;
  EXPECT_FALSE(other->Ask("q.m", {}, this->kLong, &why));
  EXPECT_EQ(why, "nobody answers \"q.m\"");
  ASSERT_TRUE(one->Serve(
      "q.m",
      [](Bytes question) {
        std::vector<std::uint8_t> answer{question.begin(), question.end()};
        answer.push_back('!');
        return answer;
      },
      &why))
      << why;
  const auto answer = other->Ask("q.m", ContractBytes("who"), this->kLong, &why);
  ASSERT_TRUE(answer) << why;
  EXPECT_EQ(ContractText(*answer), "who!");
}

REGISTER_TYPED_TEST_SUITE_P(EngineContract, AcknowledgesInTheOrderOfSendingWithSequencesOfTheStream,
                            TellsADuplicateByItsId, ReadsWhatAFilterLetsThroughFromWhereItBegins,
                            GivesIdAndTimeOfAMessage, SaysThatAStreamWasBegunAnewAndReadsIt,
                            PutsAValueOnlyOnTheRevisionThatItHas, WatchesTheKeysOfABucket,
                            AnswersQuestionsAndSaysAtOnceThatNobodyDoes);
