// A real server that knows its users as "quor-bridge conf" prints them, by certificates of "quord
// keys", and what each of them may do there.
#include <gtest/gtest.h>

#include "apps/bridge/bridge_line.h"
#include "quor/engine/jetstream/jetstream.h"
#include "quor/envelope/envelope.h"
#include "quor/protocol/keys.h"
#include "support/nats_server.h"
#include "support/recording_engine_user.h"
#include "support/temp_dir.h"

using namespace std::chrono_literals;

namespace {

class ConfUsers : public ::testing::Test {
 protected:
  void SetUp() override {
    Quord("init");
    for (const char* const user :
         {"web1 --role forward", "alice --role monitor", "bob --role monitor",
          "carol --role configure", "mallory --role configure"})
      Quord(std::string("issue ") + user + " --out " +
            Folder(std::string(user).substr(0, std::string(user).find(' '))));
    const BridgeSaid conf =
        RunBridge("conf --forward web1 --monitor alice --monitor bob=orders --configure carol");
    ASSERT_EQ(conf.status, 0) << conf.text;
    const std::string own = Folder("ca") + "/";
    m_server.SetMore("tls { cert_file: \"" + own + "server.crt\", key_file: \"" + own +
                     "server.key\", ca_file: \"" + own + "ca.crt\", verify_and_map: true }\n" +
                     conf.text);
    ASSERT_EQ(m_server.Start(), "");
    const BridgeSaid init =
        RunBridge("init --engine tls://" + m_server.Address() +
                  " --replicas 1 --max-bytes 64M --keys-dir " + Folder("carol"));
    ASSERT_EQ(init.status, 0) << init.text;
  }
  std::string Folder(const std::string& name) const { return m_folder.Path() + "/" + name; }
  void Quord(const std::string& words) {
    const char* const program = getenv("QUORD");
    const std::string line = std::string("'") + (program ? program : "no-program") + "' keys " +
                             words + " --keys-dir " + Folder("ca") + " >/dev/null 2>&1";
    ASSERT_EQ(system(line.c_str()), 0) << line;
  }
  NatsAddress Address(const std::string& name) const {
    NatsAddress address;
    address.servers = {m_server.Address()};
    address.name = name;
    address.authority = Folder(name) + "/ca.crt";
    address.certificate = Folder(name) + "/client.crt";
    address.key = Folder(name) + "/client.key";
    address.inbox = UserInbox(CertificateEmail(address.certificate, nullptr).value_or("none"));
    return address;
  }

  // One user's connection.
  struct Client {
    RecordingEngineUser user;
    std::unique_ptr<JetStream> engine;

    // The words of a question's refusal, or its answer.
    std::string Ask(const std::string& subject, const std::string& question = "") {
      std::string why;
      const Bytes body(reinterpret_cast<const std::uint8_t*>(question.data()), question.size());
      const auto answer = engine->Ask(subject, body, 10s, &why);
      return answer ? std::string(answer->begin(), answer->end()) : why;
    }
    bool IsRefused(const std::string& subject, const std::string& question = "") {
      const std::string said = Ask(subject, question);
      const bool refused = said.find("ermissions") != said.npos && said.find(subject) != said.npos;
      EXPECT_TRUE(refused) << subject << ": " << said;
      return refused;
    }
    // The subjects of what is stored for a filter.
    std::string Subjects(const std::string& filter) {
      std::string why, subjects;
      const auto reader = engine->Read(filter, {}, &why);
      if (!reader) return why;
      std::vector<EngineMessage> messages;
      const auto end = std::chrono::steady_clock::now() + 10s;
      while (subjects.empty() && user.Refused().empty() && std::chrono::steady_clock::now() < end) {
        reader->Next(100ms, messages, &why);
        for (const EngineMessage& message : messages) subjects += message.subject + " ";
      }
      return user.Refused().empty() ? subjects : user.Refused().front();
    }
  };
  std::unique_ptr<Client> As(const std::string& name) const {
    auto client = std::make_unique<Client>();
    std::string why;
    client->engine = JetStream::Make(Address(name), "QUOR1", client->user, &why);
    EXPECT_TRUE(client->engine) << why;
    return client;
  }
  // As web1: its applications "orders" and "billing".
  void Store() const {
    const auto web1 = As("web1");
    for (const char* const app : {"orders", "billing"})
      ASSERT_NE(web1->Ask(EnvelopeSubject("web1", app), "x").find("\"seq\""), std::string::npos);
  }

  TempDir m_folder;
  NatsServer m_server{m_folder.Path()};
};

TEST_F(ConfUsers, AMachinePublishesAsItselfOnlyAndReadsNoTraces) {
  Store();
  const auto web1 = As("web1");
  for (const char* const subject :
       {"quor1.web2.orders", "$JS.API.CONSUMER.CREATE.QUOR1.c.quor1.>",
        "$JS.API.STREAM.MSG.GET.QUOR1", "$JS.API.STREAM.DELETE.QUOR1",
        "$JS.API.CONSUMER.MSG.NEXT.QUOR1.c", "$KV.quor1-settings.web1.orders",
        "$KV.quor1-settings.web2.orders.state", "quor1-set.web2",
        "$JS.API.CONSUMER.CREATE.KV_quor1-settings.c.$KV.quor1-settings.>"})
    web1->IsRefused(subject);
  EXPECT_NE(web1->Ask("$KV.quor1-settings.web1.orders.state", "x").find("\"seq\""),
            std::string::npos);
}

TEST_F(ConfUsers, AMonitorReadsWhatItMayAndIsRefusedTheRestInWords) {
  Store();
  EXPECT_EQ(As("alice")->Subjects("quor1.web1.billing"), "quor1.web1.billing ");
  EXPECT_EQ(As("bob")->Subjects("quor1.*.orders"), "quor1.web1.orders ");
  for (const char* const filter : {"quor1.web1.billing", "quor1.>", "quor1.web1.>"}) {
    const std::string said = As("bob")->Subjects(filter);
    EXPECT_NE(said.find("ermissions"), std::string::npos) << said;
    EXPECT_NE(said.find(filter), std::string::npos) << said;
  }
  const auto bob = As("bob");
  for (const char* const subject :
       {"$JS.API.CONSUMER.CREATE.QUOR1.c", "$JS.API.CONSUMER.CREATE.QUOR1",
        "$JS.API.CONSUMER.DURABLE.CREATE.QUOR1.c", "$JS.API.STREAM.MSG.GET.QUOR1",
        "$JS.API.DIRECT.GET.QUOR1", "$JS.API.CONSUMER.INFO.QUOR1.c", "$JS.API.CONSUMER.NAMES.QUOR1",
        "$JS.API.CONSUMER.LIST.QUOR1", "$JS.API.STREAM.NAMES",
        "$JS.API.STREAM.MSG.GET.KV_quor1-settings", "$KV.quor1-settings.web1.orders",
        "quor1.web1.orders", "quor1-set.web1", "quor1-cfg.web1",
        "$JS.API.CONSUMER.CREATE.KV_quor1-settings.c.$KV.quor1-settings.>"})
    bob->IsRefused(subject);
}

TEST_F(ConfUsers, AFilterThatIsNotThatOfTheSubjectMakesNoConsumer) {
  Store();
  const auto bob = As("bob");
  for (const char* const filter : {R"(,"filter_subject":"quor1.>")", ""}) {
    const std::string said =
        bob->Ask("$JS.API.CONSUMER.CREATE.QUOR1.c.quor1.*.orders",
                 std::string(R"({"stream_name":"QUOR1","config":{"name":"c","ack_policy":"none")") +
                     filter + "}}");
    EXPECT_NE(said.find("\"error\""), std::string::npos) << said;
  }
}

TEST_F(ConfUsers, NobodyHearsTheAnswersOfAnotherUser) {
  const auto bob = As("bob");
  for (const std::string& other : {UserInbox("alice@monitor.quor"), std::string("_INBOX")}) {
    std::string why;
    const std::string subject = other + ".>";
    const std::size_t before = bob->user.Refused().size();
    bob->engine->Serve(
        subject, [](Bytes) { return std::vector<std::uint8_t>(); }, &why);
    EXPECT_TRUE(bob->user.Wait([&] { return bob->user.Refused().size() > before; })) << subject;
    ASSERT_FALSE(bob->user.Refused().empty());
    EXPECT_NE(bob->user.Refused().back().find(subject), std::string::npos)
        << bob->user.Refused().back();
  }
}

TEST_F(ConfUsers, WhoConfiguresSetsWhatIsWantedAndNotWhatMachinesSayOfIt) {
  const auto carol = As("carol");
  EXPECT_NE(carol->Ask("$KV.quor1-settings.web1.orders", "x").find("\"seq\""), std::string::npos);
  carol->IsRefused("$KV.quor1-settings.web1.orders.state");
  carol->IsRefused("quor1.web1.orders");
}

TEST_F(ConfUsers, AKeyThatIsNobodysAndNoKeyAreRefused) {
  // Of the same authority, but not among the users.
  const auto mallory = As("mallory");
  EXPECT_TRUE(mallory->user.Wait([&] { return !mallory->user.Downs().empty(); }));
  std::string why;
  EXPECT_FALSE(mallory->engine->Ask("$JS.API.STREAM.INFO.QUOR1", {}, 1s, &why));
  const BridgeSaid none =
      RunBridge("init --engine tls://" + m_server.Address() + " --keys-dir " + Folder("nothing"));
  EXPECT_NE(none.status, 0);
  EXPECT_NE(none.text.find("ca.crt cannot be read"), std::string::npos) << none.text;
}

}  // namespace
