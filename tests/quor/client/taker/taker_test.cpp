// A client that takes a stream, against a service that the test plays: breaks, restarts, lies.
#include "quor/client/taker/taker.h"

#include <gmock/gmock.h>

#include "../fake_service.h"
#include "records/name_record.h"
#include "records/record_fields.h"

namespace {

using namespace std::chrono_literals;
using quor::wire::Request;
using quor::wire::Response;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

// What it was told, in lines; from any thread.
class Told final : public Taker::User {
 public:
  void OnStream(const std::string& id) override {
    const std::lock_guard lock(m_mutex);
    m_id = id;
    m_lines.push_back("stream");
  }
  void OnFrame(const TakenFrame& frame) override {
    const std::lock_guard lock(m_mutex);
    std::string line = std::to_string(frame.number) + ":" + frame.instance.substr(0, 1) + " " +
                       std::to_string(frame.serial) + " " + std::to_string(frame.delivered) + " " +
                       std::to_string(frame.lost);
    for (const auto& [id, text] : *frame.names) line += " " + text;
    m_lines.push_back(line);
  }
  void OnGap(std::uint64_t traces) override {
    const std::lock_guard lock(m_mutex);
    m_lines.push_back("gap " + std::to_string(traces));
  }
  void OnBroken(const std::string& why) override {
    const std::lock_guard lock(m_mutex);
    m_broken.push_back(why);
  }
  std::vector<std::string> Lines() const {
    const std::lock_guard lock(m_mutex);
    return m_lines;
  }
  std::string LastBreak() const {
    const std::lock_guard lock(m_mutex);
    return m_broken.empty() ? "" : m_broken.back();
  }
  std::string Id() const {
    const std::lock_guard lock(m_mutex);
    return m_id;
  }

 private:
  mutable std::mutex m_mutex;
  std::string m_id;
  std::vector<std::string> m_lines, m_broken;
};

class TakerTest : public testing::Test {
 protected:
  void Start(const std::string& id = {}) {
    m_taker = std::make_unique<Taker>("localhost", m_told, id);
    std::string why;
    EXPECT_TRUE(WhileServed([&] { return m_taker->Start(5000ms, &why); },
                            [this] {
                              m_peer = m_service.Accept();
                              m_peer->instance = std::string(16, 'r');
                              m_peer->Welcome();
                            }))
        << why;
  }
  // The service ends the connection and gets the next one.
  void Again(char run = 'r') {
    m_peer.reset();
    m_peer = m_service.Accept();
    ASSERT_NE(m_peer, nullptr);
    m_peer->instance = std::string(16, run);
    m_peer->Welcome();
  }
  // Answers its Take.
  quor::wire::Take Agree(std::uint64_t taken = 0) {
    const Request request = m_peer->ExpectRequest();
    EXPECT_TRUE(request.has_take());
    Response response;
    response.set_taken(taken);
    m_peer->Answer(request, response);
    return request.take();
  }
  void Refuse(quor::wire::ErrorCode code) {
    Response response;
    response.set_error(code);
    m_peer->Answer(m_peer->ExpectRequest(), response);
  }
  // So many traces, one with a name.
  static std::string Body(int traces) {
    std::vector<std::uint8_t> body, record;
    AppendNameRecord(body, HubNameId{9}, "nine");
    for (int i = 0; i < traces; ++i) {
      RecordFieldsOf<HubNameId> fields;
      fields.count = 7;
      fields.app = HubNameId{9};
      MakeRecord(fields, record);
      body.push_back(kTagTrace);
      body.insert(body.end(), record.begin(), record.end());
    }
    return {body.begin(), body.end()};
  }
  void Send(int traces, FakePeer::Source word) {
    if (traces > 0) m_peer->Data(Body(traces));
    m_peer->Ledger({word});
  }
  std::uint64_t ExpectTaken() {
    return m_peer->Expect<quor::wire::Taken>(FrameType::Taken).frames();
  }
  bool Tells(const std::vector<std::string>& lines) {
    const bool good = Eventually([&] { return m_told.Lines() == lines; });
    EXPECT_EQ(m_told.Lines(), lines);
    return good;
  }

  FakeService m_service;
  Told m_told;
  std::unique_ptr<FakePeer> m_peer;
  std::unique_ptr<Taker> m_taker;
};

TEST_F(TakerTest, GetsEachFrameOnceAlsoIfItComesAgain) {
  Start();
  const quor::wire::Take first = Agree();
  EXPECT_TRUE(first.begins());
  EXPECT_EQ(first.stream().size(), 16u);
  m_peer->Ledger({{'a', 5, 0, 0}}, 0);
  Send(2, {'a', 7, 2, 0});
  Send(1, {'a', 11, 3, 3});
  Send(0, {'a', 12, 3, 4});
  const std::vector<std::string> lines = {"stream", "1:a 7 2 0 nine", "2:a 11 1 3 nine",
                                          "3:a 12 0 1 nine"};
  ASSERT_TRUE(Tells(lines));
  m_taker->Taken(m_told.Id(), 1);
  EXPECT_EQ(ExpectTaken(), 1u);
  // It is safe now, and the service does not learn it over this connection.
  Again();
  const quor::wire::Take second = Agree(1);
  EXPECT_FALSE(second.begins());
  EXPECT_EQ(second.stream(), first.stream());
  EXPECT_EQ(second.taken(), 1u);
  m_peer->Ledger({{'a', 7, 0, 0}}, 0);
  // No number that this connection has not brought yet.
  m_taker->Taken(m_told.Id(), 3);
  Send(1, {'a', 11, 1, 3});
  EXPECT_EQ(ExpectTaken(), 2u);
  Send(0, {'a', 12, 1, 4});
  EXPECT_EQ(ExpectTaken(), 3u);
  Send(1, {'a', 13, 2, 4});
  auto more = lines;
  more.push_back("4:a 13 1 0 nine");
  EXPECT_TRUE(Tells(more));
  ASSERT_TRUE(Eventually([&] { return m_taker->GetCounts().delivered == 4; }));
  EXPECT_EQ(m_taker->GetCounts().lost, 4u);
}

TEST_F(TakerTest, AServiceThatWasStartedAnewGetsAnotherStreamAndTheGapIsTold) {
  Start();
  const std::string id = Agree().stream();
  m_peer->Ledger({{'a', 5, 0, 0}}, 0);
  Send(2, {'a', 7, 2, 0});
  ASSERT_TRUE(Tells({"stream", "1:a 7 2 0 nine"}));
  Again('s');
  Refuse(quor::wire::ERROR_UNKNOWN_STREAM);
  const quor::wire::Take next = Agree();
  EXPECT_TRUE(next.begins());
  EXPECT_NE(next.stream(), id);
  EXPECT_EQ(next.taken(), 0u);
  m_peer->Ledger({{'a', 10, 0, 0}, {'b', 4, 0, 0}}, 0);
  Send(1, {'a', 11, 1, 0});
  EXPECT_TRUE(Tells({"stream", "1:a 7 2 0 nine", "stream", "gap 7", "1:a 11 1 0 nine"}));
  ASSERT_TRUE(Eventually([&] { return m_taker->GetCounts().delivered == 3; }));
  EXPECT_EQ(m_taker->GetCounts().lost, 7u) << "3 of a, and b came and went meanwhile";
  // What was got of the stream before stays with the user, and is not said here.
  m_taker->Taken(id, 1);
  m_taker->Taken(next.stream(), 1);
  EXPECT_EQ(ExpectTaken(), 1u);
}

TEST_F(TakerTest, GoesOnWithTheStreamOfAnEarlierProcess) {
  const std::string id(16, 'k');
  Start(id);
  const quor::wire::Take take = Agree(40);
  EXPECT_EQ(take.stream(), id);
  EXPECT_FALSE(take.begins());
  m_peer->Ledger({{'a', 100, 0, 0}}, 0);
  Send(1, {'a', 101, 1, 0});
  EXPECT_TRUE(Tells({"stream", "41:a 101 1 0 nine"}));
}

TEST_F(TakerTest, AnEarlierStreamThatIsGoneGivesANewOneWithoutAGap) {
  Start(std::string(16, 'k'));
  Refuse(quor::wire::ERROR_UNKNOWN_STREAM);
  EXPECT_TRUE(Agree().begins());
  m_peer->Ledger({{'a', 100, 0, 0}}, 50);
  Send(1, {'a', 101, 1, 0});
  EXPECT_TRUE(Tells({"stream", "1:a 101 1 0 nine"}));
}

TEST_F(TakerTest, ARefusalIsABreakAndIsTriedAgain) {
  Start();
  Response response;
  response.set_error(quor::wire::ERROR_LIMIT);
  response.set_text("there are 4 takers already");
  m_peer->Answer(m_peer->ExpectRequest(), response);
  ASSERT_TRUE(Eventually([&] { return !m_told.LastBreak().empty(); }));
  EXPECT_EQ(m_told.LastBreak(), "it refuses the stream: there are 4 takers already");
  Again();
  EXPECT_TRUE(Agree().begins());
  EXPECT_TRUE(Tells({"stream"}));
}

TEST_F(TakerTest, WhatContradictsItselfEndsTheConnectionAndNothingOfItIsGiven) {
  Start();
  const auto begin = [this] {
    Agree();
    m_peer->Ledger({{'a', 5, 0, 0}}, 0);
  };
  const std::vector<std::pair<std::string, std::function<void()>>> lies = {
      {"a ledger does not count what came",
       [this] {
         Send(2, {'a', 6, 1, 0});
       }},
      {"a ledger does not count what came",
       [this] {
         Send(0, {'a', 6, 1, 0});
       }},
      {"a ledger leaves out a part of its source",
       [this] {
         Send(1, {'a', 8, 1, 0});
       }},
      {"a ledger counts more than there was",
       [this] {
         Send(1, {'b', 1, 1, 1});
       }},
      {"a frame of more than one source",
       [this] {
         m_peer->Ledger({{'a', 5, 0, 0}, {'b', 0, 0, 0}});
       }},
      {"a data frame without a ledger before it",
       [this] {
         m_peer->Data(Body(1));
         m_peer->Data(Body(1));
       }},
      {"an empty data frame", [this] { m_peer->Data(""); }},
      {"a record of unknown kind 33", [this] { m_peer->Data("!"); }},
      {"an unexpected frame", [this] { m_peer->SendRaw(FrameType::Taken, ""); }}};
  for (const auto& [why, lie] : lies) {
    begin();
    lie();
    ASSERT_TRUE(Eventually([&, &words = why] {
      return m_told.LastBreak() == "malformed: " + words;
    })) << why
        << ", not " << m_told.LastBreak();
    EXPECT_EQ(m_told.Lines(), std::vector<std::string>{"stream"});
    Again();
  }
  begin();
  Send(1, {'a', 6, 1, 0});
  EXPECT_TRUE(Tells({"stream", "1:a 6 1 0 nine"}));
}

TEST_F(TakerTest, TheFirstLedgerCountsNothing) {
  Start();
  Agree();
  m_peer->Ledger({{'a', 5, 1, 0}}, 0);
  EXPECT_TRUE(Eventually([&] {
    return m_told.LastBreak() == "malformed: the first ledger counts what has not come";
  }));
}

}  // namespace
