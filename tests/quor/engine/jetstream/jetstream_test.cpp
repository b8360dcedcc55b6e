// What a server allows, what it says of it, and the streams that are made there.
#include "quor/engine/jetstream/jetstream.h"

#include <gtest/gtest.h>

#include "quor/engine/jetstream/jetstream_fixture.h"

using namespace std::chrono_literals;

namespace {

constexpr char kUsers[] = R"(
authorization {
  users: [
    { user: "all", password: "p" }
    { user: "web1", password: "p", permissions: {
        publish: ["t.web1.>", "$JS.API.STREAM.INFO.S1", "$JS.API.CONSUMER.CREATE.S1.*.t.web1.>",
                  "$JS.API.CONSUMER.MSG.NEXT.S1.*"]
        subscribe: ["_INBOX.>"] } }
  ]
}
)";

class JetStreamUsers : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(m_server.Start(), "");
    std::string why;
    const auto setup = StreamSetup::Make(As("all"), &why);
    ASSERT_TRUE(setup) << why;
    StreamPlan plan;
    plan.name = kContractStream;
    plan.subjects = {"t.>"};
    plan.replicas = 1;
    ASSERT_EQ(setup->MakeStream(plan, false, 20s, &why), StreamSetup::Made::New) << why;
    ASSERT_EQ(setup->MakeBucket(kContractBucket, 1, false, 20s, &why), StreamSetup::Made::New);
    m_engine = JetStream::Make(As("web1"), kContractStream, m_user, &why);
    ASSERT_TRUE(m_engine) << why;
  }

  NatsAddress As(const std::string& name) const {
    NatsAddress address;
    address.servers = {m_server.Address()};
    address.user = name;
    address.password = "p";
    return address;
  }

  TempDir m_folder;
  NatsServer m_server{m_folder.Path(), "n1", kUsers};
  RecordingEngineUser m_user;
  std::unique_ptr<JetStream> m_engine;
};

class JetStreamSetups : public JetStreamFixture {
 protected:
  StreamSetup::Made Set(const StreamPlan& plan, bool change, std::string& why) {
    const auto setup = StreamSetup::Make(Address(), &why);
    if (!setup) return StreamSetup::Made::Failed;
    return setup->MakeStream(plan, change, kWhile, &why);
  }
};

}  // namespace

TEST_F(JetStreamUsers, HearThatTheyMayNotPublishThere) {
  ASSERT_TRUE(m_engine->Publish("t.web2.a", "1", {}, 1, nullptr));
  ASSERT_TRUE(m_user.Wait([&] { return !m_user.Refused().empty(); }));
  EXPECT_NE(m_user.Refused()[0].find("\"t.web2.a\""), std::string::npos) << m_user.Refused()[0];
  EXPECT_TRUE(m_user.Acks().empty());
  ASSERT_TRUE(m_engine->Publish("t.web1.a", "2", {}, 2, nullptr));
  ASSERT_TRUE(m_user.Wait([&] { return m_user.Acks().size() == 1; }));
  EXPECT_EQ(m_user.Acks()[0].first, 2u);
}

// libnats gives a connection up after two such refusals.
TEST_F(JetStreamUsers, ComeBackAfterTheServerDidNotKnowThem) {
  std::string why;
  auto reader = m_engine->Read("t.web1.>", {}, &why);
  ASSERT_TRUE(reader) << why;
  m_server.Kill();
  m_server.SetMore("authorization { users: [ { user: \"all\", password: \"p\" } ] }");
  ASSERT_EQ(m_server.Start(), "");
  const std::string refused = "no server can be reached: Authorization Violation";
  EXPECT_TRUE(m_user.Wait([&] { return m_user.Downs().back() == refused; }))
      << m_user.Downs().back();
  EXPECT_FALSE(m_engine->Publish("t.web1.a", "early", {}, 1, &why));
  EXPECT_EQ(why, refused);
  m_server.Kill();
  m_server.SetMore(kUsers);
  ASSERT_EQ(m_server.Start(), "");
  ASSERT_TRUE(m_user.Wait([&] { return m_user.Ups().size() == 2; }));
  // What listened before listens again: for acknowledgements, and for messages.
  ASSERT_TRUE(m_engine->Publish("t.web1.a", "late", {}, 2, &why)) << why;
  EXPECT_TRUE(m_user.Wait([&] { return m_user.Acks().size() == 1; }));
  std::vector<EngineMessage> messages;
  const auto end = std::chrono::steady_clock::now() + 20s;
  while (messages.empty() && std::chrono::steady_clock::now() < end)
    reader->Next(1s, messages, &why);
  ASSERT_EQ(messages.size(), 1u) << why;
  EXPECT_EQ(messages[0].id, "late");
}

TEST_F(JetStreamUsers, HearThatTheServerTakesNoMessageOfThatSize) {
  m_server.Kill();
  m_server.SetMore(std::string(kUsers) + "max_payload: 64KB");
  ASSERT_EQ(m_server.Start(), "");
  ASSERT_TRUE(m_user.Wait([&] { return m_user.Ups().size() == 2; }));
  std::string why;
  EXPECT_FALSE(m_engine->Publish("t.web1.a", "1", std::vector<std::uint8_t>(70'000), 1, &why));
  EXPECT_EQ(why,
            "the server takes messages of 65536 bytes at most, and one has 70000: raise its "
            "max_payload to 1MB");
}

TEST_F(JetStreamUsers, HearThatTheyMayNotReadThere) {
  std::string why;
  auto reader = m_engine->Read("t.web2.>", {}, &why);
  ASSERT_TRUE(reader) << why;
  std::vector<EngineMessage> messages;
  EXPECT_EQ(reader->Next(500ms, messages, &why), EngineReader::State::Broken);
  ASSERT_TRUE(m_user.Wait([&] { return !m_user.Refused().empty(); }));
  EXPECT_NE(m_user.Refused()[0].find(".t.web2.>\""), std::string::npos) << m_user.Refused()[0];
  auto allowed = m_engine->Read("t.web1.>", {}, &why);
  auto state = EngineReader::State::Broken;
  for (int i = 0; i < 50 && state != EngineReader::State::Quiet; i++)
    state = allowed->Next(300ms, messages, &why);
  EXPECT_EQ(state, EngineReader::State::Quiet) << why;
}

TEST_F(JetStreamUsers, HearAtOnceWhatAQuestionOrAValueIsRefusedFor) {
  const auto before = std::chrono::steady_clock::now();
  std::string why;
  EXPECT_FALSE(m_engine->Ask("q.web1", {}, 60s, &why));
  EXPECT_NE(why.find("ermissions Violation for Publish to \"q.web1\""), why.npos) << why;
  std::uint64_t revision = 0;
  EXPECT_EQ(m_engine->PutValue(kContractBucket, "k", {}, revision, 60s, &why), Engine::Put::Failed);
  EXPECT_NE(why.find("\"$KV.b1.k\""), why.npos) << why;
  EXPECT_FALSE(m_engine->Get(kContractBucket, "k", 60s, &why));
  EXPECT_NE(why.find("STREAM.MSG.GET.KV_b1"), why.npos) << why;
  EXPECT_LT(std::chrono::steady_clock::now() - before, 60s);
}

TEST_F(JetStreamSetups, LeaveAStreamAsItIsAndSayWhatIsOther) {
  auto plan = Plan();
  std::string why;
  EXPECT_EQ(Set(plan, false, why), StreamSetup::Made::Same) << why;
  plan.maxAge = 2h;
  plan.maxBytes = 1 << 20;
  EXPECT_EQ(Set(plan, false, why), StreamSetup::Made::Other);
  EXPECT_EQ(why, "max_age is 0 s, not 7200 s; max_bytes is -1, not 1048576");
  EXPECT_EQ(Set(plan, true, why), StreamSetup::Made::Changed) << why;
  EXPECT_EQ(Set(plan, false, why), StreamSetup::Made::Same) << why;
}

TEST_F(JetStreamSetups, KeepTheMessagesOfAStreamThatTheyChange) {
  RecordingEngineUser user;
  auto engine = MakeJetStream(user);
  ASSERT_TRUE(engine->Publish("t.a", "1", ContractBytes("kept"), 1, nullptr));
  ASSERT_TRUE(user.Wait([&] { return !user.Acks().empty(); }));
  auto plan = Plan();
  plan.maxOfSubject = 100;
  std::string why;
  ASSERT_EQ(Set(plan, true, why), StreamSetup::Made::Changed) << why;
  auto reader = engine->Read("t.a", {}, nullptr);
  std::vector<EngineMessage> messages;
  for (int i = 0; i < 50 && messages.empty(); i++) reader->Next(300ms, messages, nullptr);
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(ContractText(messages[0].body), "kept");
}

TEST_F(JetStreamSetups, SayTheServersWordsWhenItCannotMakeThem) {
  auto plan = Plan();
  plan.name = "S2";
  std::string why;
  EXPECT_EQ(Set(plan, false, why), StreamSetup::Made::Failed);
  EXPECT_EQ(why, "the engine says: subjects overlap with an existing stream");
  plan.subjects = {"u.>"};
  plan.replicas = 3;
  EXPECT_EQ(Set(plan, false, why), StreamSetup::Made::Failed);
  EXPECT_NE(why.find("replicas"), why.npos) << why;
}

TEST_F(JetStreamSetups, SaysThatABucketIsNotThere) {
  RecordingEngineUser user;
  auto engine = MakeJetStream(user);
  std::string why;
  EXPECT_FALSE(engine->Get("none", "k", kWhile, &why));
  EXPECT_EQ(why, "the engine says: stream not found");
}

TEST_F(JetStreamSetups, RefusesAMessageThatIsLargerThanAnEngineTakes) {
  RecordingEngineUser user;
  auto engine = MakeJetStream(user);
  const std::vector<std::uint8_t> large(1'048'577);
  std::string why;
  EXPECT_FALSE(engine->Publish("t.a", "1", {large.data(), large.size()}, 1, &why));
  EXPECT_NE(why, "");
}

TEST(JetStreamAddress, IsPlainOnlyWithinThisMachine) {
  RecordingEngineUser user;
  NatsAddress address;
  address.servers = {"127.0.0.1:1", "192.0.2.1:4222"};
  std::string why;
  EXPECT_FALSE(JetStream::Make(address, "S", user, &why));
  EXPECT_EQ(why, "192.0.2.1:4222: only this machine is reached without TLS");
  address.servers = {"127.0.0.1.example.org:4222"};
  EXPECT_FALSE(JetStream::Make(address, "S", user, &why));
}
