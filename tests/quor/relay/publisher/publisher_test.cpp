// What a publisher does of the engine's answers, one at a time; and random runs with an engine that
// lies: what was confirmed to the service is stored, and all of it comes in the end.
#include "quor/relay/publisher/publisher.h"

#include <gtest/gtest.h>

#include "quor/relay/publisher/parted_frame.h"
#include "support/fake_engine.h"
#include "taken_frames.h"

namespace {

using std::chrono::milliseconds;

const std::string kStream = std::string(16, '\x01');

std::string SourceName(unsigned number) {
  return std::string(15, 's') + static_cast<char>('a' + number);
}

// An engine that only writes down what is published.
class Noted final : public FakeEngine {
 public:
  struct Sent {
    std::string subject, id;
    std::uint64_t token;
    std::vector<std::uint8_t> body;
  };
  explicit Noted(FakeCluster& cluster, EngineUser& user) : FakeEngine(cluster, user) {}
  bool Publish(const std::string& subject, const std::string& id, Bytes body, std::uint64_t token,
               std::string* why) override {
    if (!refuses.empty()) return FailWith(why, refuses);
    if (WordSubject("web1") == subject || WordSubject("here") == subject) {
      words.push_back({subject, id, token, {body.begin(), body.end()}});
      return true;
    }
    sent.push_back({subject, id, token, {body.begin(), body.end()}});
    return true;
  }
  std::vector<Sent> sent, words;
  std::string refuses;
};

class PublisherSteps : public ::testing::Test, public EngineUser {
 protected:
  PublisherSteps() { publisher.BeginStream(kStream); }
  void OnAck(std::uint64_t, const EngineAck&) override {}
  void OnRefused(const std::string&) override {}
  void OnDown(const std::string&) override {}
  void OnUp(const std::string&) override {}

  void Add(std::uint64_t number, unsigned traces = 1, unsigned lost = 0, unsigned source = 0) {
    std::uint64_t& serial = m_serials[source];
    serial += traces + lost;
    MadeFrame frame(number, SourceName(source), serial);
    for (unsigned i = 0; i < traces; ++i) frame.Trace("t");
    publisher.Add(PartsOf(frame.Lost(lost).Get()), now);
    publisher.Go(now);
  }
  void Ack(std::size_t sent, std::uint64_t sequence, bool duplicate = false,
           const std::string& stream = "S") {
    publisher.OnAck(engine.sent[sent].token, {true, duplicate, stream, sequence, ""}, now);
    publisher.Go(now);
  }
  void Refuse(std::size_t sent) {
    publisher.OnAck(engine.sent[sent].token, {false, false, "", 0, "no room"}, now);
    publisher.Go(now);
  }
  void Wait(int ms) {
    for (int i = 0; i < ms; ++i) publisher.Go(now += milliseconds(1));
  }
  // The frame that a message is of, as its id says.
  std::string FrameOf(std::size_t sent) const {
    const std::string& id = engine.sent[sent].id;
    return id.substr(id.find(':') + 1);
  }
  std::string Frames(std::size_t from = 0) const {
    std::string list;
    for (std::size_t i = from; i < engine.sent.size(); ++i)
      list.append(list.empty() ? "" : " ").append(FrameOf(i));
    return list;
  }
  std::uint64_t Taken() const { return publisher.Taken().frames; }

  FakeCluster cluster{"S"};
  Noted engine{cluster, *this};
  static PublisherLimits RareWords() {
    PublisherLimits limits;
    limits.word = std::chrono::hours(1);
    return limits;
  }
  Publisher publisher{engine, "S", "here", "run", RareWords()};
  Publisher::Time now{std::chrono::hours(1)};

 private:
  std::map<unsigned, std::uint64_t> m_serials;
};

TEST_F(PublisherSteps, AFrameIsTakenWhenItAndAllBeforeItAreStored) {
  Add(1), Add(2), Add(3);
  EXPECT_EQ(Frames(), "1.0 2.0 3.0");
  EXPECT_EQ(engine.sent[0].subject, "quor1.web1.orders");
  Ack(1, 11);
  EXPECT_EQ(Taken(), 0u);
  Ack(0, 12);
  EXPECT_EQ(Taken(), 2u);
  Ack(2, 13);
  EXPECT_EQ(Taken(), 3u);
}

TEST_F(PublisherSteps, AtTheFirstErrorAllThatIsNotAcknowledgedIsSentAgainInOrderUnderItsIds) {
  for (int i = 1; i <= 5; ++i) Add(static_cast<std::uint64_t>(i));
  Ack(0, 1), Ack(2, 2);
  Refuse(1);
  Add(6);
  EXPECT_EQ(engine.sent.size(), 5u) << "nothing goes out while it is stopped";
  EXPECT_EQ(publisher.Trouble(), "no room");
  Refuse(3);
  Wait(100);
  EXPECT_EQ(Frames(5), "2.0 4.0 5.0 6.0");
  EXPECT_EQ(engine.sent[5].id, engine.sent[1].id);
  EXPECT_EQ(Taken(), 1u);
  Ack(5, 3), Ack(6, 4), Ack(7, 5);
  EXPECT_EQ(Taken(), 5u);
  EXPECT_EQ(publisher.Trouble(), "");
}

TEST_F(PublisherSteps, NoAnswerIsAnErrorAndTheWaitingGrows) {
  Add(1);
  Wait(2999);
  EXPECT_EQ(engine.sent.size(), 1u);
  Wait(1 + 100);
  EXPECT_EQ(engine.sent.size(), 2u);
  engine.refuses = "not reached";
  Wait(20000);
  engine.refuses.clear();
  const auto down = now;
  while (engine.sent.size() == 2) Wait(1);
  EXPECT_LE(now - down, milliseconds(2000));
  Ack(2, 1);
  EXPECT_EQ(Taken(), 1u);
}

TEST_F(PublisherSteps, AnAnswerThatComesLateStillCounts) {
  Add(1);
  Wait(3200);
  ASSERT_EQ(engine.sent.size(), 2u);
  Ack(0, 1);
  EXPECT_EQ(Taken(), 1u);
}

TEST_F(PublisherSteps, AnErrorOfAnEarlierSendingStopsNothing) {
  Add(1);
  Wait(3200);
  ASSERT_EQ(engine.sent.size(), 2u);
  Refuse(0);
  Add(2);
  EXPECT_EQ(Frames(2), "2.0");
}

TEST_F(PublisherSteps, AnotherStreamsAnswerIsNotBelieved) {
  Add(1);
  Ack(0, 1, false, "OTHER");
  EXPECT_EQ(Taken(), 0u);
  EXPECT_NE(publisher.Trouble().find("OTHER"), std::string::npos);
  Wait(100);
  Ack(1, 1);
  EXPECT_EQ(Taken(), 1u);
}

TEST_F(PublisherSteps, ADuplicateThatWasNeverSentGoesAgainUnderAnotherId) {
  Add(1);
  Ack(0, 8);
  Add(2);
  Ack(1, 9, true);
  EXPECT_EQ(Taken(), 1u);
  Wait(100);
  ASSERT_EQ(engine.sent.size(), 3u);
  EXPECT_NE(engine.sent[2].id, engine.sent[1].id);
  Ack(2, 10, true);
  EXPECT_EQ(Taken(), 1u) << "it lies again";
  Wait(200);
  Ack(3, 11);
  EXPECT_EQ(Taken(), 2u);
}

TEST_F(PublisherSteps, ADuplicateOfWhatWasSentBeforeIsBelieved) {
  Add(1);
  Ack(0, 4);
  Add(2);
  Wait(3200);
  Ack(2, 5, true);
  EXPECT_EQ(Taken(), 2u);
}

TEST_F(PublisherSteps, ADuplicateIsNotBelievedBeforeAnySequenceIsKnown) {
  Add(1);
  Wait(3200);
  Ack(1, 5, true);
  EXPECT_EQ(Taken(), 0u);
  Wait(200);
  ASSERT_EQ(engine.sent.size(), 3u);
  EXPECT_NE(engine.sent[2].id, engine.sent[0].id);
}

TEST_F(PublisherSteps, ASequenceThatFallsIsNotBelievedUntilItIsTheStreamThatBeganAnew) {
  Add(1);
  Ack(0, 100);
  Add(2);
  for (std::size_t i = 1; i <= 3; ++i) {
    Ack(i, i);
    EXPECT_EQ(Taken(), 1u);
    Wait(1000);
    ASSERT_EQ(engine.sent.size(), i + 2);
  }
  Ack(4, 4);
  EXPECT_EQ(Taken(), 2u);
}

TEST_F(PublisherSteps, NoMoreThanAWindowIsUnderWay) {
  for (std::uint64_t i = 1; i <= 100; ++i) Add(i);
  EXPECT_EQ(engine.sent.size(), 64u);
  Ack(0, 1);
  EXPECT_EQ(engine.sent.size(), 65u);
}

TEST_F(PublisherSteps, AnEarlierRunsFramesAreNotPublishedTwiceAndItsDuplicatesAreBelieved) {
  publisher.BeginStream(kStream, Publisher::Kept{kStream, 2, 50});
  Add(1), Add(2), Add(3), Add(4);
  EXPECT_EQ(Taken(), 2u);
  EXPECT_EQ(Frames(), "3.0 4.0");
  Ack(0, 51, true);
  EXPECT_EQ(Taken(), 3u);
  Ack(1, 40, true);
  EXPECT_EQ(Taken(), 3u) << "it is older than what the earlier run had seen";
  Wait(100);
  EXPECT_NE(engine.sent[2].id, engine.sent[1].id);
}

TEST_F(PublisherSteps, AFrameWithoutTracesIsTakenWithWhatGoesBeforeIt) {
  MadeFrame nothing(1, "", 0);
  publisher.Add(PartsOf(nothing.Get()), now);
  EXPECT_EQ(Taken(), 1u);
  Add(2);
  MadeFrame more(3, "", 0);
  publisher.Add(PartsOf(more.Get()), now);
  EXPECT_EQ(Taken(), 1u);
  Ack(0, 1);
  EXPECT_EQ(Taken(), 3u);
}

TEST_F(PublisherSteps, ALossInFrontOfItsFirstTraceWaitsForTheName) {
  Add(1, 0, 5);
  EXPECT_TRUE(engine.sent.empty());
  Add(2, 1, 0);
  ASSERT_EQ(engine.sent.size(), 2u);
  EXPECT_EQ(engine.sent[0].subject, "quor1.web1.orders");
  Envelope loss;
  ASSERT_TRUE(ReadEnvelope(engine.sent[0].body, loss, nullptr));
  EXPECT_EQ(loss.lost, 5u);
  EXPECT_EQ(loss.app, "orders");
}

TEST_F(PublisherSteps, ALossThatNobodyNamesGoesOutAfterASecond) {
  Add(1, 0, 5);
  Wait(1000);
  ASSERT_EQ(engine.sent.size(), 1u);
  EXPECT_EQ(engine.sent[0].subject, "quor1.here.=");
}

TEST_F(PublisherSteps, WordsSayWhereSourcesStandAndThatTheyHaveEnded) {
  Add(1, 3);
  publisher.SayWord();
  publisher.Go(now);
  ASSERT_EQ(engine.words.size(), 1u);
  MachineWord word;
  ASSERT_TRUE(ReadWord(engine.words[0].body, word, nullptr));
  EXPECT_EQ(word.machine, "web1");
  ASSERT_EQ(word.sources.size(), 1u);
  EXPECT_EQ(word.sources[0].app, "orders");
  EXPECT_EQ(word.sources[0].serial, 3u);
  EXPECT_FALSE(word.sources[0].ended);
  MadeFrame end(2, "", 0);
  publisher.Add(PartsOf(end.Forgotten(SourceName(0)).Get()), now);
  publisher.Go(now);
  EXPECT_EQ(engine.words.size(), 1u) << "one word at a time";
  Ack(0, 1);
  publisher.OnAck(engine.words[0].token, {true, false, "S", 2, ""}, now);
  EXPECT_EQ(Taken(), 2u);
  publisher.Go(now);
  ASSERT_EQ(engine.words.size(), 2u);
  EXPECT_NE(engine.words[1].id, engine.words[0].id);
  ASSERT_TRUE(ReadWord(engine.words[1].body, word, nullptr));
  EXPECT_TRUE(word.sources.at(0).ended);
}

TEST_F(PublisherSteps, WordsComeByThemselvesWhenSourcesHaveChanged) {
  Publisher often(engine, "S", "here", "often");
  often.BeginStream(kStream);
  for (int i = 0; i < 100; ++i) often.Go(now += milliseconds(100));
  EXPECT_TRUE(engine.words.empty());
  MadeFrame frame(1, SourceName(0), 1);
  often.Add(PartsOf(frame.Trace("t").Get()), now);
  for (int i = 0; i < 11; ++i) often.Go(now += milliseconds(100));
  EXPECT_EQ(engine.words.size(), 1u);
}

TEST_F(PublisherSteps, WhatItKnowsOfSourcesSurvivesAsLines) {
  Add(1, 3);
  PublishedSources other;
  for (const std::string& line : publisher.Sources().Lines()) ASSERT_TRUE(other.Restore(line));
  ASSERT_NE(other.Find(SourceName(0)), nullptr);
  EXPECT_EQ(other.Find(SourceName(0))->app, "orders");
  EXPECT_EQ(other.Find(SourceName(0))->pid, 4711u);
  for (const std::string line : {"", "x 1 2 x x", "x00 1 2 x x", "nonsense"})
    EXPECT_FALSE(other.Restore(line)) << line;
}

}  // namespace
