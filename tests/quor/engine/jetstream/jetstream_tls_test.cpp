// A server that asks for a certificate, and clients with the right one, a wrong one and none.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "quor/engine/jetstream/jetstream_fixture.h"
#include "quor/protocol/keys.h"

using namespace std::chrono_literals;

namespace {

class JetStreamTls : public ::testing::Test {
 protected:
  // The server's certificate is for these names.
  void Serve(const ServerNames& names = {{"localhost"}, {"127.0.0.1"}}) {
    std::string why;
    ASSERT_TRUE(InitKeys(Folder("ca"), names, &why)) << why;
    Issue("ca", "mon");
    m_server =
        std::make_unique<NatsServer>(m_folder.Path(), "n1", Tls("ca", Folder("ca") + "/ca.crt"));
    ASSERT_EQ(m_server->Start(), "");
  }
  void Issue(const std::string& authority, const std::string& name, int days = kKeyDays) {
    std::string why;
    ASSERT_TRUE(
        IssueKeys(Folder(authority), name, quor::wire::ROLE_MONITOR, Folder(name), &why, days))
        << why;
  }
  void MakeAlien() {
    std::string why;
    ASSERT_TRUE(InitKeys(Folder("other"), {{"localhost"}, {"127.0.0.1"}}, &why)) << why;
    Issue("other", "alien");
  }
  std::string Tls(const std::string& authority, const std::string& clients) const {
    const std::string own = Folder(authority) + "/server.";
    return "tls { cert_file: \"" + own + "crt\", key_file: \"" + own + "key\", ca_file: \"" +
           clients + "\", verify: true }";
  }
  std::string Folder(const std::string& name) const { return m_folder.Path() + "/" + name; }
  NatsAddress Address(const std::string& client) const {
    NatsAddress address;
    address.servers = {m_server->Address()};
    address.certificate = Folder(client) + "/client.crt";
    address.key = Folder(client) + "/client.key";
    address.authority = Folder(client) + "/ca.crt";
    return address;
  }
  // What is said to somebody who does not get in; empty: it is connected.
  std::string Refusal(const NatsAddress& address) {
    RecordingEngineUser user;
    std::string why;
    const auto engine = JetStream::Make(address, "S1", user, &why);
    if (!engine) return why.empty() ? "no reason" : why;
    user.Wait([&] { return !user.Ups().empty() || !user.Downs().empty(); });
    // A server that refuses a certificate may do so when the client takes itself for connected.
    user.Wait([&] { return !user.Downs().empty(); }, 300ms);
    if (!user.Downs().empty()) {
      EXPECT_TRUE(user.Ups().empty());
      return user.Downs()[0].empty() ? "no reason" : user.Downs()[0];
    }
    return user.Ups().empty() ? "nothing was said" : "";
  }

  TempDir m_folder;
  std::unique_ptr<NatsServer> m_server;
};

constexpr char kHangsUp[] =
    "no server can be reached: the server hangs up, as it does when it refuses a certificate";

TEST_F(JetStreamTls, TheRightCertificateGetsInAndPublishes) {
  Serve();
  EXPECT_EQ(Refusal(Address("mon")), "");
  std::string why;
  const auto setup = StreamSetup::Make(Address("mon"), &why);
  ASSERT_TRUE(setup) << why;
  StreamPlan plan{"S1", {"t.>"}, 1};
  ASSERT_EQ(setup->MakeStream(plan, false, 20s, &why), StreamSetup::Made::New) << why;
  RecordingEngineUser user;
  const auto engine = JetStream::Make(Address("mon"), "S1", user, &why);
  ASSERT_TRUE(engine) << why;
  ASSERT_TRUE(engine->Publish("t.a", "1", {}, 7, &why)) << why;
  ASSERT_TRUE(user.Wait([&] { return !user.Acks().empty(); }));
  EXPECT_TRUE(user.Acks()[0].second.stored);
}

TEST_F(JetStreamTls, AnotherAuthoritysServerIsNotTrusted) {
  Serve();
  MakeAlien();
  const std::string said = Refusal(Address("alien"));
  EXPECT_NE(said.find("certificate"), said.npos) << said;
}

TEST_F(JetStreamTls, AServerWithAnotherNameIsNotTrusted) {
  Serve({{"other.example.org"}, {"10.0.0.1"}});
  const std::string said = Refusal(Address("mon"));
  EXPECT_NE(said.find("mismatch"), said.npos) << said;
}

TEST_F(JetStreamTls, TheServerRefusesNoCertificateAnExpiredOneAndAnAliens) {
  Serve();
  NatsAddress none = Address("mon");
  none.certificate = none.key = "";
  EXPECT_EQ(Refusal(none), kHangsUp);
  Issue("ca", "old", -1);
  EXPECT_EQ(Refusal(Address("old")), kHangsUp);
  MakeAlien();
  NatsAddress alien = Address("alien");
  alien.authority = Address("mon").authority;
  EXPECT_EQ(Refusal(alien), kHangsUp);
}

TEST_F(JetStreamTls, NothingIsSaidToAServerThatWantsTlsWithoutIt) {
  Serve();
  NatsAddress plain;
  plain.servers = {m_server->Address()};
  const std::string said = Refusal(plain);
  EXPECT_NE(said.find("certificate"), said.npos) << said;
}

TEST_F(JetStreamTls, AServerWithoutTlsIsRefused) {
  m_server = std::make_unique<NatsServer>(m_folder.Path());
  ASSERT_EQ(m_server->Start(), "");
  MakeAlien();
  EXPECT_NE(Refusal(Address("alien")), "");
}

TEST_F(JetStreamTls, FilesThatAreNoneOrThatOthersMayReadAreRefused) {
  Serve();
  NatsAddress address = Address("mon");
  ASSERT_EQ(chmod(address.key.c_str(), 0640), 0);
  EXPECT_EQ(Refusal(address), address.key + ": others may read it (chmod 600)");
  ASSERT_EQ(chmod(address.key.c_str(), 0600), 0);
  address.key += ".none";
  EXPECT_EQ(Refusal(address), address.key + ": No such file or directory");
  address = Address("mon");
  address.authority += ".none";
  EXPECT_EQ(Refusal(address), address.authority + ": no certificate of an authority");
  address = Address("mon");
  MakeAlien();
  address.key = Address("alien").key;
  EXPECT_EQ(Refusal(address),
            address.certificate + ": not a certificate with the key " + address.key);
}

// Somebody starts the bridge with a certificate that the server does not know yet.
TEST_F(JetStreamTls, AClientGetsInWhenTheServerTakesItsCertificate) {
  Serve();
  MakeAlien();
  NatsAddress address = Address("alien");
  address.authority = Address("mon").authority;
  RecordingEngineUser user;
  std::string why;
  const auto engine = JetStream::Make(address, "S1", user, &why);
  ASSERT_TRUE(engine) << why;
  ASSERT_TRUE(user.Wait([&] { return !user.Downs().empty(); }));
  m_server->Kill();
  m_server->SetMore(Tls("ca", Folder("alien") + "/ca.crt"));
  ASSERT_EQ(m_server->Start(), "");
  EXPECT_TRUE(user.Wait([&] { return !user.Ups().empty(); }));
}

}  // namespace
