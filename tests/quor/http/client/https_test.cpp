// Posts over TLS, to services with good keys, and with those of somebody else.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <asio/ip/tcp.hpp>
#include <asio/read_until.hpp>
#include <asio/ssl/stream.hpp>
#include <asio/write.hpp>
#include <atomic>
#include <fstream>
#include <thread>

#include "quor/http/client/http_client.h"
#include "quor/protocol/keys.h"
#include "support/temp_dir.h"

namespace {

using namespace std::chrono_literals;
using asio::ip::tcp;
using ::testing::HasSubstr;

// Answers each request, on connections that come one after the other.
class TlsService {
 public:
  TlsService(const std::string& keys, bool asksForCertificate)
      : m_acceptor(m_io, {asio::ip::address_v4::loopback(), 0}) {
    m_context.use_certificate_chain_file(keys + "/server.crt");
    m_context.use_private_key_file(keys + "/server.key", asio::ssl::context::pem);
    if (asksForCertificate) {
      m_context.load_verify_file(keys + "/ca.crt");
      m_context.set_verify_mode(asio::ssl::verify_peer | asio::ssl::verify_fail_if_no_peer_cert);
    }
    m_thread = std::thread([this] {
      while (!m_ends) Serve();
    });
  }
  ~TlsService() {
    m_ends = true;
    tcp::socket last(m_io);
    std::error_code ignored;
    last.connect(m_acceptor.local_endpoint(), ignored);
    m_thread.join();
  }
  std::uint16_t Port() const { return m_acceptor.local_endpoint().port(); }
  int Connections() const { return m_connections; }

 private:
  // REQUIRES: the client hangs up before the service is ended.
  void Serve() {
    std::error_code error;
    asio::ssl::stream<tcp::socket> stream(m_acceptor.accept(error), m_context);
    if (error || m_ends) return;
    stream.handshake(asio::ssl::stream_base::server, error);
    if (error) return Drain(stream.next_layer());
    ++m_connections;
    for (std::string text; !error; text.clear()) {
      asio::read_until(stream, asio::dynamic_buffer(text), "end.", error);
      if (!error)
        asio::write(stream, asio::buffer("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok", 40),
                    error);
    }
  }
  // A socket that is closed with unread bytes takes back what it has said.
  static void Drain(tcp::socket& socket) {
    char bytes[1024];
    for (std::error_code error; !error;) socket.read_some(asio::buffer(bytes), error);
  }

  asio::io_context m_io;
  asio::ssl::context m_context{asio::ssl::context::tls_server};
  tcp::acceptor m_acceptor;
  std::atomic<bool> m_ends = false;
  std::atomic<int> m_connections = 0;
  std::thread m_thread;
};

class HttpsTest : public testing::Test {
 protected:
  void SetUp() override {
    std::string why;
    ASSERT_TRUE(InitKeys(m_keys, {{"localhost"}, {}}, &why)) << why;
    ASSERT_TRUE(InitKeys(m_others, {{"localhost"}, {"127.0.0.1"}}, &why)) << why;
    ASSERT_TRUE(IssueKeys(m_keys, "web1", quor::wire::ROLE_FORWARD, m_client, &why)) << why;
  }
  // Several posts over one client.
  HttpResult Post(const TlsService& service, const WebTrust& trust, int posts = 1,
                  const std::string& host = "localhost") {
    std::string why;
    const auto tls = MakeWebTls(trust, &why);
    if (!tls) return {0, "before anything was sent: " + why, {}};
    asio::io_context io;
    HttpClient client(io, {true, host, service.Port(), ""}, tls, 10s);
    HttpResult last;
    for (int i = 0; i < posts; ++i) {
      std::optional<HttpResult> result;
      client.Post({"/v1/logs", "", "the end."}, [&](HttpResult got) { result = std::move(got); });
      io.restart();
      while (!result && io.run_one_for(30s) > 0) {
      }
      last = result.value_or(HttpResult{0, "nothing was called back", {}});
    }
    return last;
  }
  WebTrust Client() const {
    return {m_keys + "/ca.crt", m_client + "/client.crt", m_client + "/client.key"};
  }
  TempDir m_folder;
  const std::string m_keys = m_folder.File("keys"), m_others = m_folder.File("others"),
                    m_client = m_folder.File("client");
};

TEST_F(HttpsTest, OneConnectionIsKeptForAllPosts) {
  const TlsService service(m_keys, false);
  const HttpResult result = Post(service, {m_keys + "/ca.crt", "", ""}, 5);
  EXPECT_EQ(result.status, 200) << result.why;
  EXPECT_EQ(std::string(result.response.body.begin(), result.response.body.end()), "ok");
  EXPECT_EQ(service.Connections(), 1);
}

TEST_F(HttpsTest, ACertificateOfAnotherAuthorityIsRefused) {
  const TlsService service(m_others, false);
  const HttpResult result = Post(service, {m_keys + "/ca.crt", "", ""});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.why, HasSubstr("the certificate is refused"));
  EXPECT_EQ(Post(service, {m_others + "/ca.crt", "", ""}).status, 200);
}

TEST_F(HttpsTest, AnAuthorityThatTheSystemDoesNotKnowIsRefusedWhenNoneIsNamed) {
  const TlsService service(m_keys, false);
  EXPECT_THAT(Post(service, {}).why, HasSubstr("the certificate is refused"));
}

TEST_F(HttpsTest, ACertificateForAnotherNameOrAddressIsRefused) {
  const TlsService service(m_keys, false);
  const HttpResult result = Post(service, {m_keys + "/ca.crt", "", ""}, 1, "127.0.0.1");
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.why, HasSubstr("the certificate is refused"));
  std::string why;
  const std::string named = m_folder.File("named");
  ASSERT_TRUE(InitKeys(named, {{"collector.example"}, {}}, &why)) << why;
  const TlsService other(named, false);
  EXPECT_THAT(Post(other, {named + "/ca.crt", "", ""}).why,
              HasSubstr("the certificate is refused"));
}

TEST_F(HttpsTest, AServiceThatAsksForACertificateGetsOurs) {
  const TlsService service(m_keys, true);
  const HttpResult result = Post(service, Client(), 2);
  EXPECT_EQ(result.status, 200) << result.why;
  EXPECT_EQ(service.Connections(), 1);
}

TEST_F(HttpsTest, AServiceThatAsksInVainSaysWhy) {
  const TlsService service(m_keys, true);
  const HttpResult result = Post(service, {m_keys + "/ca.crt", "", ""});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.why, HasSubstr("certificate required"));
}

TEST_F(HttpsTest, FilesThatCannotBeUsedAreNamed) {
  std::string why;
  EXPECT_FALSE(MakeWebTls({m_folder.File("none"), "", ""}, &why));
  EXPECT_THAT(why, HasSubstr(m_folder.File("none")));
  EXPECT_FALSE(MakeWebTls({"", m_client + "/client.crt", ""}, &why));
  EXPECT_THAT(why, HasSubstr("belong together"));
  WebTrust mixed = Client();
  mixed.key = m_keys + "/server.key";
  EXPECT_FALSE(MakeWebTls(mixed, &why));
  EXPECT_THAT(why, HasSubstr("server.key: key values mismatch"));
  std::ofstream(m_folder.File("text.key")) << "no key\n";
  chmod(m_folder.File("text.key").c_str(), 0600);
  mixed.key = m_folder.File("text.key");
  EXPECT_FALSE(MakeWebTls(mixed, &why));
  EXPECT_THAT(why, HasSubstr("text.key"));
}

TEST_F(HttpsTest, AKeyThatOthersMayReadIsRefused) {
  chmod((m_client + "/client.key").c_str(), 0640);
  std::string why;
  EXPECT_FALSE(MakeWebTls(Client(), &why));
  EXPECT_THAT(why, HasSubstr("others may read it"));
}

}  // namespace
