#include "quor/protocol/tls.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>

#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <fstream>

#include "quor/protocol/connection.h"
#include "quor/protocol/keys.h"
#include "support/temp_dir.h"

namespace {

using namespace std::chrono_literals;
using quor::wire::ROLE_CONFIGURE;
using quor::wire::ROLE_FORWARD;
using quor::wire::ROLE_MONITOR;
using quor::wire::ROLE_NONE;

struct Ends final : Connection::Handler {
  void OnFrame(const Frame&) override { ++frames; }
  void OnClosed(const std::string& reason) override { why = reason; }
  int frames = 0;
  std::string why;
};

// A server and a client with keys folders of their own, over the loopback.
class TlsTest : public testing::Test {
 protected:
  static void Make(const std::string& folder, const ServerNames& names = OwnNames(),
                   int days = kKeyDays) {
    std::string why;
    ASSERT_TRUE(InitKeys(folder, names, &why, days)) << why;
  }
  static void Issue(const std::string& folder, const std::string& to,
                    quor::wire::Role role = ROLE_MONITOR, int days = kKeyDays) {
    std::string why;
    ASSERT_TRUE(IssueKeys(folder, "someone", role, to, &why, days)) << why;
  }

  struct Outcome {
    std::string client;  // "" when a frame went through both ways, else why not
    bool served = false;
    TlsPeer peer;
  };
  Outcome Meet(const std::string& serverKeys, std::shared_ptr<asio::ssl::context> client,
               const std::string& host = "127.0.0.1") {
    std::string why;
    auto server = MakeServerTls({serverKeys}, &why);
    EXPECT_TRUE(server) << why;
    if (!server) return {};
    asio::io_context io;
    asio::ip::tcp::acceptor acceptor(io, {asio::ip::make_address("127.0.0.1"), 0});
    Outcome outcome;
    auto accepted = std::make_unique<TlsSocket>(io, *server);
    Ends serverEnds, clientEnds;
    std::shared_ptr<Connection> serving, speaking;
    bool ended = false;
    acceptor.async_accept(accepted->lowest_layer(), [&](const std::error_code& error) {
      if (error) return;
      accepted->async_handshake(asio::ssl::stream_base::server, [&](const std::error_code& failed) {
        if (failed) {
          accepted->lowest_layer().close();
          return;
        }
        outcome.served = true;
        outcome.peer = PeerOf(accepted->native_handle());
        serving = Connection::Start(MakeStream(std::move(accepted)), serverEnds);
        serving->Send(FrameType::Welcome, quor::wire::Welcome());
      });
    });
    ConnectTls(io.get_executor(), std::move(client), host, acceptor.local_endpoint().port(), 5000ms,
               [&](std::shared_ptr<ByteStream> stream, const std::string& reason) {
                 ended = !stream;
                 outcome.client = reason;
                 if (!stream) return;
                 speaking = Connection::Start(std::move(stream), clientEnds);
                 speaking->Send(FrameType::Hello, quor::wire::Hello());
               });
    const auto until = std::chrono::steady_clock::now() + 5s;
    const auto done = [&] {
      return ended || !clientEnds.why.empty() || (clientEnds.frames > 0 && serverEnds.frames > 0);
    };
    while (!done() && std::chrono::steady_clock::now() < until) io.run_one_for(10ms);
    EXPECT_TRUE(done());
    if (outcome.client.empty()) outcome.client = clientEnds.why;
    if (serving) serving->Close();
    if (speaking) speaking->Close();
    io.run_for(100ms);
    return outcome;
  }
  std::shared_ptr<asio::ssl::context> Client(const std::string& keys) {
    std::string why;
    auto context = MakeClientTls(keys, &why);
    EXPECT_TRUE(context) << why;
    return context;
  }

  TempDir m_dir;
  const std::string m_server = m_dir.File("server"), m_client = m_dir.File("client");
};

TEST_F(TlsTest, WhoWasIssuedACertificateIsServedUnderItsNameAndRole) {
  Make(m_server);
  for (const auto role : {ROLE_MONITOR, ROLE_CONFIGURE, ROLE_FORWARD}) {
    const std::string keys = m_client + RoleName(role);
    Issue(m_server, keys, role);
    const Outcome outcome = Meet(m_server, Client(keys));
    EXPECT_EQ(outcome.client, "");
    EXPECT_EQ(outcome.peer.name, "someone");
    EXPECT_EQ(outcome.peer.role, role);
  }
}

TEST_F(TlsTest, TheServersNamesAndAddressesAreChecked) {
  Make(m_server, {{"far-away"}, {"10.9.8.7"}});
  Issue(m_server, m_client);
  for (const std::string host : {"127.0.0.1", "localhost"}) {
    const Outcome outcome = Meet(m_server, Client(m_client), host);
    EXPECT_NE(outcome.client.find("the certificate is refused"), std::string::npos)
        << outcome.client;
    EXPECT_FALSE(outcome.served);
  }
  const std::string good = m_dir.File("good");
  Make(good);
  Issue(good, m_client + "2");
  EXPECT_EQ(Meet(good, Client(m_client + "2"), "localhost").client, "");
}

TEST_F(TlsTest, WhoIsIssuedNamesCanServeUnderThemAndUnderNoOthers) {
  Make(m_server);
  const std::string second = m_dir.File("second");
  std::string why;
  ASSERT_TRUE(IssueKeys(m_server, "shop1", ROLE_FORWARD, second, &why, kKeyDays,
                        {{"localhost"}, {"10.9.8.7"}}))
      << why;
  Issue(m_server, m_client);
  EXPECT_EQ(Meet(second, Client(m_client), "localhost").client, "");
  const Outcome refused = Meet(second, Client(m_client), "127.0.0.1");
  EXPECT_NE(refused.client.find("the certificate is refused"), std::string::npos) << refused.client;
  // It is a client of the first as well.
  EXPECT_EQ(Meet(m_server, Client(second)).peer.role, ROLE_FORWARD);
  struct stat status {};
  ASSERT_EQ(stat((second + "/server.key").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777u, 0600u);
  EXPECT_FALSE(
      IssueKeys(m_server, "x", ROLE_FORWARD, m_dir.File("odd"), &why, kKeyDays, {{"a,DNS:b"}, {}}));
  EXPECT_EQ(why, "a name or address of the server cannot be used");
}

TEST_F(TlsTest, AForeignAuthoritysClientIsRefused) {
  Make(m_server);
  const std::string foreign = m_dir.File("foreign");
  Make(foreign);
  Issue(foreign, m_client);
  // It believes in our server, and still has a certificate that ours does not know.
  std::filesystem::copy_file(m_server + "/ca.crt", m_client + "/ca.crt",
                             std::filesystem::copy_options::overwrite_existing);
  const Outcome outcome = Meet(m_server, Client(m_client));
  EXPECT_NE(outcome.client, "");
  EXPECT_FALSE(outcome.served);
}

TEST_F(TlsTest, ACertificateForListeningMayCallButHasNoRole) {
  Make(m_server);
  std::string why;
  ASSERT_TRUE(
      IssueKeys(m_server, "n1", ROLE_CONFIGURE, m_client, &why, kKeyDays, {{"n1.example.org"}, {}}))
      << why;
  for (const std::string ending : {".crt", ".key"})
    std::filesystem::copy_file(m_client + "/server" + ending, m_client + "/client" + ending,
                               std::filesystem::copy_options::overwrite_existing);
  const Outcome outcome = Meet(m_server, Client(m_client));
  EXPECT_EQ(outcome.peer.name, "n1") << outcome.client;
  EXPECT_EQ(outcome.peer.role, ROLE_NONE);
}

TEST_F(TlsTest, AForeignAuthoritysServerIsRefused) {
  Make(m_server);
  const std::string foreign = m_dir.File("foreign");
  Make(foreign);
  Issue(foreign, m_client);
  const Outcome outcome = Meet(m_server, Client(m_client));
  EXPECT_NE(outcome.client.find("the certificate is refused"), std::string::npos) << outcome.client;
  EXPECT_FALSE(outcome.served);
}

TEST_F(TlsTest, AnExpiredClientIsRefused) {
  Make(m_server);
  Issue(m_server, m_client, ROLE_MONITOR, -1);
  const Outcome outcome = Meet(m_server, Client(m_client));
  EXPECT_NE(outcome.client, "");
  EXPECT_FALSE(outcome.served);
}

TEST_F(TlsTest, AnExpiredServerIsRefused) {
  Make(m_server, OwnNames(), -1);
  Issue(m_server, m_client);
  const Outcome outcome = Meet(m_server, Client(m_client));
  EXPECT_NE(outcome.client.find("certificate has expired"), std::string::npos) << outcome.client;
  EXPECT_FALSE(outcome.served);
}

TEST_F(TlsTest, AClientWithoutACertificateIsRefused) {
  Make(m_server);
  auto context = std::make_shared<asio::ssl::context>(asio::ssl::context::tls_client);
  context->load_verify_file(m_server + "/ca.crt");
  context->set_verify_mode(asio::ssl::verify_peer);
  const Outcome outcome = Meet(m_server, context);
  EXPECT_NE(outcome.client, "");
  EXPECT_FALSE(outcome.served);
}

TEST_F(TlsTest, AClientsCertificateMakesNoServer) {
  Make(m_server);
  Issue(m_server, m_client);
  const std::string posing = m_dir.File("posing");
  std::filesystem::create_directory(posing);
  for (const char* kind : {".crt", ".key"})
    std::filesystem::copy_file(m_client + "/client" + kind, posing + "/server" + kind);
  std::filesystem::copy_file(m_client + "/ca.crt", posing + "/ca.crt");
  EXPECT_NE(Meet(posing, Client(m_client)).client, "");
}

TEST_F(TlsTest, OldVersionsOfTheProtocolAreRefused) {
  Make(m_server);
  Issue(m_server, m_client);
  auto context = Client(m_client);
  SSL_CTX_set_security_level(context->native_handle(), 0);
  SSL_CTX_set_min_proto_version(context->native_handle(), TLS1_VERSION);
  SSL_CTX_set_max_proto_version(context->native_handle(), TLS1_1_VERSION);
  EXPECT_FALSE(Meet(m_server, context).served);
  // A client without such keys is refused for its ciphers too: the lower end itself counts.
  std::string why;
  const auto server = MakeServerTls({m_server}, &why);
  ASSERT_TRUE(server) << why;
  EXPECT_EQ(SSL_CTX_get_min_proto_version(server->native_handle()), TLS1_2_VERSION);
  EXPECT_EQ(SSL_CTX_get_min_proto_version(Client(m_client)->native_handle()), TLS1_2_VERSION);
}

TEST_F(TlsTest, AKeyThatOthersMayReadIsNotUsed) {
  Make(m_server);
  ASSERT_EQ(chmod((m_server + "/server.key").c_str(), 0640), 0);
  std::string why;
  EXPECT_FALSE(MakeServerTls({m_server}, &why));
  EXPECT_EQ(why, m_server + "/server.key: others may read it (chmod 600)");
}

TEST_F(TlsTest, MissingAndBrokenKeysAreReportedByTheirPath) {
  std::string why;
  EXPECT_FALSE(MakeClientTls(m_client, &why));
  EXPECT_EQ(why, m_client + "/client.key: No such file or directory");
  Make(m_server);
  std::ofstream(m_server + "/server.crt") << "nonsense";
  EXPECT_FALSE(MakeServerTls({m_server}, &why));
  EXPECT_EQ(why.rfind(m_server + "/server.crt: ", 0), 0u) << why;
}

TEST_F(TlsTest, AKeyThatIsNotThatOfTheCertificateIsRefusedAlsoIfItIsOfAnotherKind) {
  Make(m_server);
  const std::string path = m_server + "/server.key";
  for (const char* kind : {"RSA", "EC"}) {
    EVP_PKEY* const other = kind == std::string("RSA")
                                ? EVP_PKEY_Q_keygen(nullptr, nullptr, "RSA", std::size_t{2048})
                                : EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256");
    ASSERT_TRUE(other);
    FILE* const file = std::fopen(path.c_str(), "w");
    ASSERT_TRUE(file);
    EXPECT_EQ(PEM_write_PrivateKey(file, other, nullptr, nullptr, 0, nullptr, nullptr), 1);
    std::fclose(file);
    EVP_PKEY_free(other);
    std::string why;
    EXPECT_FALSE(MakeServerTls({m_server}, &why)) << kind;
    EXPECT_EQ(why.rfind(path + ": ", 0), 0u) << why;
  }
}

TEST_F(TlsTest, KeysAreMadeForTheirOwnerAloneAndNeverOverwritten) {
  Make(m_server);
  Issue(m_server, m_client);
  for (const std::string& key :
       {m_server + "/ca.key", m_server + "/server.key", m_client + "/client.key"}) {
    struct stat status {};
    ASSERT_EQ(stat(key.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u) << key;
  }
  struct stat status {};
  ASSERT_EQ(stat(m_server.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777u, 0700u);
  const std::string before = ReadAll(m_server + "/ca.crt") + ReadAll(m_client + "/client.crt");
  std::string why;
  EXPECT_FALSE(InitKeys(m_server, OwnNames(), &why));
  EXPECT_EQ(why, m_server + "/ca.crt exists already");
  EXPECT_FALSE(IssueKeys(m_server, "other", ROLE_MONITOR, m_client, &why));
  EXPECT_EQ(why, m_client + "/ca.crt exists already");
  EXPECT_EQ(ReadAll(m_server + "/ca.crt") + ReadAll(m_client + "/client.crt"), before);
}

// "" for none, "?" for several names.
std::string EmailOf(const std::string& path) {
  FILE* const file = std::fopen(path.c_str(), "re");
  X509* const certificate = file ? PEM_read_X509(file, nullptr, nullptr, nullptr) : nullptr;
  if (file) std::fclose(file);
  EXPECT_NE(certificate, nullptr) << path;
  auto* const names = static_cast<GENERAL_NAMES*>(
      X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr));
  std::string email;
  if (names && sk_GENERAL_NAME_num(names) == 1) {
    int type = 0;
    const auto* const text = static_cast<const ASN1_IA5STRING*>(
        GENERAL_NAME_get0_value(sk_GENERAL_NAME_value(names, 0), &type));
    if (type == GEN_EMAIL)
      email.assign(reinterpret_cast<const char*>(ASN1_STRING_get0_data(text)),
                   static_cast<std::size_t>(ASN1_STRING_length(text)));
  } else if (names) {
    email = "?";
  }
  GENERAL_NAMES_free(names);
  X509_free(certificate);
  return email;
}

TEST_F(TlsTest, OtherServersKnowAClientByAnAddressOfItsNameAndRole) {
  Make(m_server);
  std::string why;
  const auto emailFor = [&](const std::string& name, quor::wire::Role role) {
    const std::string to = m_dir.File("of-" + std::to_string(role) + "-" + name.substr(0, 2));
    EXPECT_TRUE(IssueKeys(m_server, name, role, to, &why)) << why;
    return EmailOf(to + "/client.crt");
  };
  EXPECT_EQ(emailFor("web1", ROLE_FORWARD), "web1@forward.quor");
  EXPECT_EQ(emailFor("alice", ROLE_MONITOR), "alice@monitor.quor");
  EXPECT_EQ(emailFor("a,email:root@configure.quor", ROLE_MONITOR),
            "a,email:root@configure.quor@monitor.quor")
      << "a name says no more than one name";
  EXPECT_EQ(emailFor("J\xC3\xBCrgen", ROLE_MONITOR), "") << "such an address is not allowed";
}

TEST_F(TlsTest, TheAddressInACertificateIsReadAndItsLackIsSaid) {
  Make(m_server);
  std::string why;
  const std::string plain = m_dir.File("plain"), umlaut = m_dir.File("umlaut");
  ASSERT_TRUE(IssueKeys(m_server, "a.b*>", ROLE_MONITOR, plain, &why)) << why;
  ASSERT_TRUE(IssueKeys(m_server, "J\xC3\xBCrgen", ROLE_MONITOR, umlaut, &why)) << why;
  EXPECT_EQ(CertificateEmail(plain + "/client.crt", &why), "a.b*>@monitor.quor");
  for (const std::string& file : {umlaut + "/client.crt", m_server + "/server.crt"}) {
    EXPECT_EQ(CertificateEmail(file, &why), std::nullopt);
    EXPECT_EQ(why.find(file + ": has no e-mail address"), 0u) << why;
  }
  EXPECT_EQ(CertificateEmail(plain + "/client.key", &why), std::nullopt);
  EXPECT_EQ(why, plain + "/client.key: has no usable content");
  EXPECT_EQ(CertificateEmail(plain + "/none", &why), std::nullopt);
  EXPECT_EQ(why.find(plain + "/none: "), 0u) << why;
}

TEST_F(TlsTest, NamesThatWouldSayMoreThanANameAreRefused) {
  std::string why;
  EXPECT_FALSE(InitKeys(m_server, {{"a,DNS:b"}, {}}, &why));
  EXPECT_EQ(why, "a name or address of the server cannot be used");
  Make(m_server);
  EXPECT_FALSE(IssueKeys(m_server, "", ROLE_MONITOR, m_client, &why));
  EXPECT_FALSE(IssueKeys(m_server, std::string(65, 'a'), ROLE_MONITOR, m_client, &why));
  EXPECT_FALSE(IssueKeys(m_server, "x", ROLE_NONE, m_client, &why));
  EXPECT_EQ(why, "there is no such role");
}

TEST(Roles, WhoMayConfigureMayAlsoMonitorAndNobodyElseMayMoreThanTheirs) {
  EXPECT_TRUE(RoleAllows(ROLE_MONITOR, ROLE_MONITOR));
  EXPECT_TRUE(RoleAllows(ROLE_CONFIGURE, ROLE_MONITOR));
  EXPECT_TRUE(RoleAllows(ROLE_CONFIGURE, ROLE_CONFIGURE));
  EXPECT_TRUE(RoleAllows(ROLE_FORWARD, ROLE_FORWARD));
  EXPECT_FALSE(RoleAllows(ROLE_MONITOR, ROLE_CONFIGURE));
  EXPECT_FALSE(RoleAllows(ROLE_FORWARD, ROLE_MONITOR));
  EXPECT_FALSE(RoleAllows(ROLE_CONFIGURE, ROLE_FORWARD));
  EXPECT_FALSE(RoleAllows(ROLE_NONE, ROLE_NONE));
}

TEST(Roles, TheNamesAreReadAsTheyAreWritten) {
  const std::pair<const char*, quor::wire::Role> words[] = {
      {"monitor", ROLE_MONITOR}, {"configure", ROLE_CONFIGURE}, {"forward", ROLE_FORWARD}};
  for (const auto& [word, role] : words) {
    EXPECT_EQ(RoleOf(word), role);
    EXPECT_EQ(RoleName(role), std::string(word));
  }
  EXPECT_FALSE(RoleOf(""));
  EXPECT_FALSE(RoleOf("Monitor"));
}

}  // namespace
