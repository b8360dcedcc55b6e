// The receiver with programs that send what they should, and what they should not.
#include "quor/otlp/receive/otlp_receiver.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <zlib.h>

#include "quor/otlp/otlp.pb.h"
#include "support/http_peer.h"

namespace {

using namespace std::chrono_literals;

int ConnectTo(const std::string& address) {
  const int made = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in to{};
  to.sin_family = AF_INET;
  to.sin_port =
      htons(static_cast<std::uint16_t>(std::stoi(address.substr(address.rfind(':') + 1))));
  to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(connect(made, reinterpret_cast<const sockaddr*>(&to), sizeof to), 0);
  return made;
}

std::string Post(const std::string& path, const std::string& body, const std::string& more = {}) {
  return "POST " + path + " HTTP/1.1\r\nHost: x\r\nContent-Type: application/x-protobuf\r\n" +
         more + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}
std::string Logs(const std::string& body) {
  return Post("/v1/logs", body);
}

std::string GzipOf(const std::string& text) {
  z_stream state{};
  EXPECT_EQ(deflateInit2(&state, 9, Z_DEFLATED, 31, 8, Z_DEFAULT_STRATEGY), Z_OK);
  std::string packed(deflateBound(&state, text.size()) + 64, '\0');
  state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  state.avail_in = static_cast<uInt>(text.size());
  state.next_out = reinterpret_cast<Bytef*>(packed.data());
  state.avail_out = static_cast<uInt>(packed.size());
  EXPECT_EQ(deflate(&state, Z_FINISH), Z_STREAM_END);
  packed.resize(state.total_out);
  deflateEnd(&state);
  return packed;
}

class OtlpReceiverTest : public testing::Test, public OtlpSink {
 protected:
  struct Body {
    OtlpSignal signal;
    std::string bytes, machine;
    Done done;
  };
  void Take(OtlpSignal signal, Bytes body, const std::string& machine, Done done) override {
    m_bodies.push_back({signal, {body.begin(), body.end()}, machine, done});
    if (!m_holds) done(m_verdict);
  }
  void SetUp() override {
    std::string why;
    ASSERT_TRUE(m_receiver.Open({{"127.0.0.1:0"}, {}, {}}, &why)) << why;
    m_receiver.Start();
  }
  std::unique_ptr<HttpPeer> Connect() {
    return std::make_unique<HttpPeer>(ConnectTo(m_receiver.Addresses().at(0)));
  }
  // The answer to the only request of a new connection.
  std::string Ask(const std::string& request) {
    const auto peer = Connect();
    peer->Send(request);
    peer->EndSending();
    EXPECT_TRUE(peer->AwaitEnd(m_io));
    return peer->Got();
  }
  int StatusOf(const std::string& request) {
    const std::string answer = Ask(request);
    return answer.size() > 12 ? std::stoi(answer.substr(9, 3)) : 0;
  }
  template <class Message>
  static Message MessageOf(const std::string& answer) {
    Message message;
    EXPECT_TRUE(message.ParseFromString(answer.substr(answer.find("\r\n\r\n") + 4)));
    return message;
  }

  asio::io_context m_io;
  bool m_holds = false;
  OtlpVerdict m_verdict;
  std::vector<Body> m_bodies;
  OtlpReceiver m_receiver{m_io, *this};
};

TEST_F(OtlpReceiverTest, GivesBodiesToTheSinkAndAnswersThem) {
  EXPECT_EQ(StatusOf(Logs("one")), 200);
  EXPECT_EQ(StatusOf(Post("/v1/traces?x=y", "two")), 200);
  EXPECT_EQ(StatusOf(Post("/v1/logs", GzipOf("three"), "Content-Encoding: gzip\r\n")), 200);
  ASSERT_EQ(m_bodies.size(), 3u);
  EXPECT_EQ(m_bodies[0].bytes, "one");
  EXPECT_EQ(m_bodies[0].signal, OtlpSignal::Logs);
  EXPECT_EQ(m_bodies[1].bytes, "two");
  EXPECT_EQ(m_bodies[1].signal, OtlpSignal::Traces);
  EXPECT_EQ(m_bodies[2].bytes, "three");
  EXPECT_FALSE(m_bodies[2].machine.empty());
  EXPECT_NE(m_bodies[2].machine, "127.0.0.1");
}

TEST_F(OtlpReceiverTest, SaysYesOnlyWhenTheRecordsAreSafe) {
  m_holds = true;
  const auto peer = Connect();
  peer->Send(Logs("one"));
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_bodies.size() == 1; }));
  m_io.restart();
  m_io.run_for(50ms);
  EXPECT_EQ(peer->Got(), "");
  m_bodies[0].done({});
  EXPECT_TRUE(peer->Await(m_io, "200 OK"));
}

TEST_F(OtlpReceiverTest, TheSameBytesAreTakenOnce) {
  EXPECT_EQ(StatusOf(Logs("one")), 200);
  EXPECT_EQ(StatusOf(Logs("one")), 200);
  EXPECT_EQ(m_bodies.size(), 1u);
  EXPECT_EQ(m_receiver.Counts().again, 1u);
  EXPECT_EQ(StatusOf(Post("/v1/traces", "one")), 200);
  EXPECT_EQ(m_bodies.size(), 2u);
}

TEST_F(OtlpReceiverTest, WhoSendsAgainBeforeTheAnswerWaitsForTheSameOne) {
  m_holds = true;
  auto first = Connect();
  first->Send(Logs("one"));
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_bodies.size() == 1; }));
  first.reset();  // the connection is dropped, and the bytes come over a new one
  const auto second = Connect();
  second->Send(Logs("one"));
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_receiver.Counts().again == 1; }));
  EXPECT_EQ(second->Got(), "");
  m_bodies[0].done({});
  EXPECT_TRUE(second->Await(m_io, "200 OK"));
  EXPECT_EQ(m_bodies.size(), 1u);
}

TEST_F(OtlpReceiverTest, WhatWasNotTakenMayComeAgain) {
  m_verdict = {OtlpVerdict::Kind::Full, 0, "no room", 9};
  const std::string answer = Ask(Logs("one"));
  EXPECT_EQ(answer.substr(9, 3), "503");
  // A client gives a batch up that it should send again after more than ten seconds.
  EXPECT_NE(answer.find("\r\nRetry-After: 5\r\n"), std::string::npos);
  EXPECT_EQ(MessageOf<quor::otlp::RpcStatus>(answer).message(), "no room");
  m_verdict = {};
  EXPECT_EQ(StatusOf(Logs("one")), 200);
  EXPECT_EQ(m_bodies.size(), 2u);
}

TEST_F(OtlpReceiverTest, ALateVerdictIs503AndTheBodyIsNotTakenTwice) {
  HttpConnection::Patience patience;
  patience.answer = 100ms;
  OtlpReceiver receiver(m_io, *this, patience);
  std::string why;
  ASSERT_TRUE(receiver.Open({{"127.0.0.1:0"}, {}, {}}, &why)) << why;
  receiver.Start();
  m_holds = true;
  HttpPeer peer(ConnectTo(receiver.Addresses().at(0)));
  peer.Send(Logs("one"));
  ASSERT_TRUE(peer.Await(m_io, "503"));
  EXPECT_NE(peer.Take().find("Retry-After: 2"), std::string::npos);
  m_bodies.at(0).done({});
  peer.Send(Logs("one"));
  EXPECT_TRUE(peer.Await(m_io, "200 OK"));
  EXPECT_EQ(m_bodies.size(), 1u);
}

TEST_F(OtlpReceiverTest, RefusesWhatItDoesNotSpeakInWords) {
  EXPECT_EQ(StatusOf(Post("/v1/metrics", "x")), 404);
  EXPECT_EQ(StatusOf(Post("/", "x")), 404);
  const std::string get = Ask("GET /v1/logs HTTP/1.1\r\nHost: x\r\n\r\n");
  EXPECT_EQ(get.substr(9, 3), "405");
  EXPECT_NE(get.find("Allow: POST\r\n"), std::string::npos);
  const std::string json =
      "POST /v1/logs HTTP/1.1\r\nHost: x\r\nContent-Type: application/json\r\n"
      "Content-Length: 2\r\n\r\n{}";
  EXPECT_NE(Ask(json).find("OTEL_EXPORTER_OTLP_PROTOCOL=http/protobuf"), std::string::npos);
  EXPECT_EQ(StatusOf(json), 415);
  EXPECT_EQ(StatusOf(Post("/v1/logs", "x", "Content-Encoding: br\r\n")), 415);
  EXPECT_EQ(StatusOf(Post("/v1/logs", "x", "Origin: http://page.example\r\n")), 403);
  EXPECT_EQ(StatusOf("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"), 505);
  EXPECT_TRUE(m_bodies.empty());
  EXPECT_EQ(m_receiver.Counts().refused, 8u);
}

TEST_F(OtlpReceiverTest, RefusesWhatIsDamagedOrTooLong) {
  EXPECT_EQ(StatusOf(Post("/v1/logs", "not packed", "Content-Encoding: gzip\r\n")), 400);
  const std::string bomb = GzipOf(std::string(8u << 20, '\0'));
  EXPECT_EQ(StatusOf(Post("/v1/logs", bomb, "Content-Encoding: gzip\r\n")), 413);
  const std::string head =
      "POST /v1/logs HTTP/1.1\r\nHost: x\r\nContent-Type: "
      "application/x-protobuf\r\nContent-Length: 4194305\r\n\r\n";
  EXPECT_EQ(StatusOf(head), 413);
  EXPECT_TRUE(m_bodies.empty());
  m_verdict = {OtlpVerdict::Kind::Malformed, 0, "no message"};
  const std::string answer = Ask(Logs("x"));
  EXPECT_EQ(answer.substr(9, 3), "400");
  EXPECT_EQ(MessageOf<quor::otlp::RpcStatus>(answer).message(), "no message");
  EXPECT_EQ(MessageOf<quor::otlp::RpcStatus>(answer).code(), 3);
}

TEST_F(OtlpReceiverTest, SaysHowManyRecordsOfABatchWereRejected) {
  m_verdict = {OtlpVerdict::Kind::Taken, 3, "they have no time"};
  const auto message = MessageOf<quor::otlp::ExportAnswer>(Ask(Logs("x")));
  EXPECT_EQ(message.partial_success().rejected(), 3);
  EXPECT_EQ(message.partial_success().error_message(), "they have no time");
}

TEST_F(OtlpReceiverTest, IdleConnectionsGiveWayToNewOnes) {
  std::vector<std::unique_ptr<HttpPeer>> idle;
  for (std::size_t i = 0; i < OtlpReceiver::kConnectionsMax; ++i) {
    idle.push_back(Connect());
    ASSERT_TRUE(RunUntil(m_io, [&] { return m_receiver.Connections() == idle.size(); }));
  }
  EXPECT_EQ(StatusOf(Logs("one")), 200);
  EXPECT_TRUE(idle.front()->AwaitEnd(m_io));
  EXPECT_LE(m_receiver.Connections(), OtlpReceiver::kConnectionsMax);
}

TEST_F(OtlpReceiverTest, AnEndWaitsForAnswersAndAcceptsNobody) {
  m_holds = true;
  const auto asks = Connect(), waits = Connect();
  asks->Send(Logs("one"));
  ASSERT_TRUE(
      RunUntil(m_io, [&] { return m_bodies.size() == 1 && m_receiver.Connections() == 2; }));
  m_receiver.Stop();
  EXPECT_TRUE(waits->AwaitEnd(m_io));
  EXPECT_EQ(m_receiver.Connections(), 1u);
  m_bodies[0].done({});
  EXPECT_TRUE(asks->Await(m_io, "200 OK"));
  EXPECT_TRUE(asks->AwaitEnd(m_io));
}

TEST(OtlpDoors, WithoutTlsOnlyTheLoopbackIsOpened) {
  struct Nowhere final : OtlpSink {
    void Take(OtlpSignal, Bytes, const std::string&, Done) override {}
  } nowhere;
  asio::io_context io;
  OtlpReceiver receiver(io, nowhere);
  std::string why;
  EXPECT_FALSE(receiver.Open({{"0.0.0.0:0"}, {}, {}}, &why));
  EXPECT_NE(why.find("loopback"), std::string::npos) << why;
  EXPECT_FALSE(receiver.Open({{"localhost"}, {}, {}}, &why));
  EXPECT_FALSE(receiver.Open({{}, {"127.0.0.1:0"}, {"/nowhere"}}, &why));
}

TEST(SeenBodies, AreRememberedForAWhileAndWithinABound) {
  SeenBodies seen;
  const SeenBodies::Clock::time_point start{};
  const auto enter = [&](int number, std::chrono::seconds at) {
    const std::string text = std::to_string(number);
    const auto key = SeenBodies::KeyOf(
        "peer", "", Bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
    const SeenBodies::Look look = seen.Enter(key, start + at, {});
    if (look == SeenBodies::Look::New) seen.Settle(key, true, start + at);
    return look;
  };
  EXPECT_EQ(enter(1, 0s), SeenBodies::Look::New);
  EXPECT_EQ(enter(1, 60s), SeenBodies::Look::Taken);
  EXPECT_EQ(enter(1, 61s), SeenBodies::Look::New);
  for (int i = 0; i < 20'000; ++i) enter(i, 62s);
  EXPECT_EQ(seen.Size(), SeenBodies::kBodiesMax);
  EXPECT_EQ(enter(19'999, 62s), SeenBodies::Look::Taken);
  EXPECT_EQ(enter(2, 62s), SeenBodies::Look::New);
  const auto one = SeenBodies::KeyOf("a", "b", {}), other = SeenBodies::KeyOf("", "ab", {});
  EXPECT_NE(one, other);
}

}  // namespace
