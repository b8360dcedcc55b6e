// Posts over real sockets, to services that answer, refuse, lie, dawdle and hang up.
#include "quor/http/client/http_client.h"

#include <gmock/gmock.h>

#include <future>

#include "support/played_web_service.h"

namespace {

using namespace std::chrono_literals;
using asio::ip::tcp;
using ::testing::HasSubstr;
using ::testing::SizeIs;

constexpr char kGood[] = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok";

class HttpClientTest : public testing::Test {
 protected:
  void Serve(PlayedService::Play play) { m_service.emplace(std::move(play)); }
  HttpClient& Client(std::chrono::milliseconds deadline = 10s) {
    if (!m_client) {
      std::string why;
      const auto address = ReadWebAddress(m_service->Address(), 4318, &why);
      m_client.emplace(m_io, *address, nullptr, deadline);
    }
    return *m_client;
  }
  HttpResult Post(const std::string& body) {
    std::optional<HttpResult> result;
    Client().Post({"/v1/logs", "Content-Type: a/b\r\n", body},
                  [&](HttpResult got) { result = std::move(got); });
    m_io.restart();
    while (!result && m_io.run_one_for(30s) > 0) {
    }
    return result.value_or(HttpResult{0, "nothing was called back", {}});
  }
  asio::io_context m_io;
  std::optional<PlayedService> m_service;
  std::optional<HttpClient> m_client;
};

TEST_F(HttpClientTest, OneConnectionIsKeptForAllPosts) {
  Serve([this](tcp::socket& socket, int) {
    while (!m_service->ReadRequest(socket).empty()) PlayedService::Say(socket, kGood);
  });
  for (int i = 0; i < 5; ++i) EXPECT_EQ(Post("body " + std::to_string(i)).status, 200);
  EXPECT_EQ(m_service->Connections(), 1);
  const auto requests = m_service->Requests();
  ASSERT_THAT(requests, SizeIs(5));
  EXPECT_EQ(requests[4].substr(0, requests[4].find("Host")), "POST /base/v1/logs HTTP/1.1\r\n");
  EXPECT_THAT(requests[4], HasSubstr("Content-Length: 6\r\nContent-Type: a/b\r\n\r\nbody 4"));
}

TEST_F(HttpClientTest, AKeptConnectionThatWasClosedIsMadeAgain) {
  Serve([this](tcp::socket& socket, int) {
    if (!m_service->ReadRequest(socket).empty()) PlayedService::Say(socket, kGood);
  });
  EXPECT_EQ(Post("a").status, 200);
  EXPECT_EQ(Post("b").status, 200);
  EXPECT_EQ(m_service->Connections(), 2);
}

TEST_F(HttpClientTest, AServiceThatHangsUpAtOnceIsAskedOnlyOnce) {
  Serve([](tcp::socket&, int) {});
  const HttpResult result = Post("a");
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.why, "");
  EXPECT_EQ(m_service->Connections(), 1);
}

TEST_F(HttpClientTest, AnAnswerThatIsCutGarbledOrEndlessIsNone) {
  const std::string endless = "HTTP/1.1 200 OK\r\nX: " + std::string(100'000, 'x');
  // A copy for the service, which ends after this body.
  const std::vector<std::string> answers = {"HTTP/1.1 200 OK\r\nContent-Length: 20\r\n\r\nok",
                                            "garbage\r\n\r\n", endless,
                                            "HTTP/1.1 200 OK\r\nContent-Length: x\r\n\r\n"};
  Serve([this, answers](tcp::socket& socket, int connection) {
    if (!m_service->ReadRequest(socket).empty())
      PlayedService::Say(socket, answers[connection % 4]);
  });
  for (int i = 0; i < 4; ++i) {
    const HttpResult result = Post("x");
    EXPECT_EQ(result.status, 0) << i;
    EXPECT_NE(result.why, "") << i;
  }
}

// Bytes that nobody asked for would be the answer to the next request.
TEST_F(HttpClientTest, AConnectionWithStrayBytesIsNotUsedAgain) {
  const auto said = std::make_shared<std::promise<void>>();
  Serve([this, said](tcp::socket& socket, int connection) {
    while (!m_service->ReadRequest(socket).empty()) {
      PlayedService::Say(socket, kGood);
      if (connection > 0) continue;
      std::this_thread::sleep_for(20ms);
      PlayedService::Say(socket, "HTTP/1.1 400 Lie\r\nContent-Length: 0\r\n\r\n");
      said->set_value();
      return;
    }
  });
  EXPECT_EQ(Post("a").status, 200);
  said->get_future().wait();
  EXPECT_EQ(Post("b").status, 200);
}

TEST_F(HttpClientTest, AnEarlyRefusalOfALongBodyIsAnAnswer) {
  Serve([](tcp::socket& socket, int) {
    PlayedService::Say(socket, "HTTP/1.1 413 Too Long\r\nContent-Length: 0\r\n\r\n");
    std::array<char, 65536> bytes;
    std::error_code error;
    for (std::size_t read = 0; read < 20'000'000 && !error;)
      read += socket.read_some(asio::buffer(bytes), error);
  });
  EXPECT_EQ(Post(std::string(20'000'000, 'x')).status, 413);
}

TEST_F(HttpClientTest, AServiceThatDawdlesIsGivenUpInTime) {
  Serve([this](tcp::socket& socket, int) {
    m_service->ReadRequest(socket);
    for (const char byte : std::string(kGood)) {
      if (m_service->Ends()) return;
      PlayedService::Say(socket, std::string(1, byte));
      std::this_thread::sleep_for(50ms);
    }
  });
  Client(300ms);
  const HttpResult result = Post("x");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.why, "no answer in time");
}

TEST_F(HttpClientTest, NothingIsCalledBackAfterStop) {
  Serve([this](tcp::socket& socket, int) {
    while (!m_service->ReadRequest(socket).empty()) {
    }
  });
  bool called = false;
  const std::string body = "x";
  Client().Post({"", "", body}, [&](HttpResult) { called = true; });
  m_io.run_for(20ms);
  m_client->Stop();
  m_io.run_for(200ms);
  EXPECT_FALSE(called);
}

TEST_F(HttpClientTest, AClosedPortIsAReason) {
  Serve([](tcp::socket&, int) {});
  Client();
  m_service.reset();
  EXPECT_EQ(Post("x").why, "Connection refused");
}

}  // namespace
