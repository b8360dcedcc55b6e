// A connection with peers that are slow, in a hurry, half gone or hostile.
#include "quor/http/serve/http_connection.h"

#include <gtest/gtest.h>

#include "support/http_peer.h"

namespace {

using namespace std::chrono_literals;

const std::string kPost = "POST /a HTTP/1.1\r\nHost: h\r\n";

class HttpConnectionTest : public testing::Test, public HttpConnection::Handler {
 protected:
  std::optional<HttpAnswer> OnHead(const HttpRequest& request) override {
    if (request.target != "/refused") return {};
    return HttpAnswer{404, "text/plain", "not here"};
  }
  void OnRequest(HttpConnection&, HttpRequest& request, HttpConnection::Respond respond) override {
    m_bodies.emplace_back(request.body.begin(), request.body.end());
    if (m_holds) return void(m_held = respond);
    respond({200, "text/plain", "got " + m_bodies.back()});
  }
  HttpAnswer Refusal(int status, const std::string& why) override {
    return {status, "text/plain", why};
  }
  void OnGone(HttpConnection&) override {
    ++m_gone;
    m_connection.reset();
  }

  void Start() {
    m_connection = HttpConnection::Start(MakeStream(std::move(m_socket)), *this, m_memory, "peer",
                                         {}, m_patience);
  }
  void TearDown() override {
    if (m_connection) m_connection->Close();
    m_io.restart();
    m_io.run_for(1s);
    EXPECT_EQ(m_memory->used, 0u);
  }
  bool Await(const std::string& text) { return m_peer.Await(m_io, text); }
  bool AwaitGone() {
    return RunUntil(m_io, [&] { return m_gone > 0; });
  }

  asio::io_context m_io;
  LocalSocket m_socket{m_io};
  HttpPeer m_peer{m_socket};
  HttpConnection::Patience m_patience;
  std::shared_ptr<HttpMemory> m_memory = std::make_shared<HttpMemory>();
  std::shared_ptr<HttpConnection> m_connection;
  std::vector<std::string> m_bodies;
  bool m_holds = false;
  HttpConnection::Respond m_held;
  int m_gone = 0;
};

TEST_F(HttpConnectionTest, AnswersRequestsThatFollowEachOtherInTheirOrder) {
  Start();
  m_peer.Send(kPost + "Content-Length: 3\r\n\r\none" + kPost +
              "Transfer-Encoding: chunked\r\n\r\n3\r\ntwo\r\n0\r\n\r\n" + kPost +
              "Content-Length: 5\r\n\r\nth");
  ASSERT_TRUE(Await("got two"));
  m_peer.Send("ree");
  ASSERT_TRUE(Await("got three"));
  EXPECT_EQ(m_bodies, (std::vector<std::string>{"one", "two", "three"}));
  EXPECT_LT(m_peer.Got().find("got one"), m_peer.Got().find("got two"));
  EXPECT_TRUE(RunUntil(m_io, [&] { return m_connection->IdleSince().has_value(); }));
}

TEST_F(HttpConnectionTest, ReadsNothingWhileItAnswers) {
  m_holds = true;
  Start();
  m_peer.Send(kPost + "\r\n");
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_held != nullptr; }));
  std::size_t sent = 0;
  for (int i = 0; i < 300; ++i) {
    sent += m_peer.Send(std::string(65536, 'x'));
    m_io.restart();
    m_io.poll();
  }
  EXPECT_LT(sent, 8u << 20);  // what the system keeps for a socket
  m_held({200, "text/plain", "late"});
  ASSERT_TRUE(Await("late"));
}

TEST_F(HttpConnectionTest, APeerThatSendsNoMoreStillGetsItsAnswer) {
  m_holds = true;
  Start();
  m_peer.Send(kPost + "Content-Length: 1\r\n\r\na");
  m_peer.EndSending();
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_held != nullptr; }));
  m_held({200, "text/plain", "after the end"});
  ASSERT_TRUE(Await("after the end"));
  EXPECT_TRUE(AwaitGone());
}

TEST_F(HttpConnectionTest, APeerThatIsGoneTakesItsRequestAlong) {
  m_holds = true;
  Start();
  m_peer.Send(kPost + "\r\n");
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_held != nullptr; }));
  m_peer.Close();
  m_held({});
  EXPECT_TRUE(AwaitGone());
  m_held({});  // to nobody
}

TEST_F(HttpConnectionTest, AnEndInTheMiddleOfARequestIsTheEnd) {
  Start();
  m_peer.Send(kPost + "Content-Length: 5\r\n\r\nab");
  m_peer.EndSending();
  EXPECT_TRUE(AwaitGone());
  EXPECT_TRUE(m_bodies.empty());
  EXPECT_EQ(m_peer.Got(), "");
}

TEST_F(HttpConnectionTest, WhatIsRefusedAtItsHeadNeedsNoBody) {
  Start();
  m_peer.Send("POST /refused HTTP/1.1\r\nHost: h\r\nContent-Length: 1000000\r\n\r\nstart");
  ASSERT_TRUE(Await("not here"));
  EXPECT_NE(m_peer.Got().find("Connection: close\r\n"), std::string::npos);
  // What still comes does not reset the connection before the answer is read.
  EXPECT_GT(m_peer.Send(std::string(50'000, 'x')), 0u);
  EXPECT_TRUE(m_peer.AwaitEnd(m_io));
  m_peer.Close();
  EXPECT_TRUE(AwaitGone());
  EXPECT_TRUE(m_bodies.empty());
}

TEST_F(HttpConnectionTest, APeerThatWaitsForItsTurnIsToldToGoOn) {
  Start();
  m_peer.Send(kPost + "Expect: 100-continue\r\nContent-Length: 2\r\n\r\n");
  ASSERT_TRUE(Await("100 Continue\r\n\r\n"));
  m_peer.Send("ab");
  ASSERT_TRUE(Await("got ab"));
  m_peer.Take();
  // The body is here already.
  m_peer.Send(kPost + "Expect: 100-continue\r\nContent-Length: 2\r\n\r\ncd");
  ASSERT_TRUE(Await("got cd"));
  EXPECT_EQ(m_peer.Got().find("100 Continue"), std::string::npos);
}

TEST_F(HttpConnectionTest, ATricklingBodyHasOneDeadline) {
  m_patience.body = 200ms;
  Start();
  m_peer.Send(kPost + "Content-Length: 1000000\r\n\r\n");
  ASSERT_TRUE(RunUntil(m_io, [&] {
    m_peer.Send("x");
    return m_peer.Got().find("408") != std::string::npos;
  }));
  m_peer.Close();
  EXPECT_TRUE(AwaitGone());
}

TEST_F(HttpConnectionTest, ATricklingHeadHasOneDeadline) {
  m_patience.head = 200ms;
  Start();
  m_peer.Send(kPost);
  // Less than a head may have, whatever time it takes.
  for (int i = 0; i < 50; ++i) {
    m_peer.Send("x");
    m_io.restart();
    m_io.run_for(6ms);
  }
  ASSERT_TRUE(Await("408"));
}

TEST_F(HttpConnectionTest, APeerThatAsksNothingIsSentAway) {
  m_patience.idle = 100ms;
  Start();
  EXPECT_TRUE(AwaitGone());
  EXPECT_EQ(m_peer.Got(), "");
}

TEST_F(HttpConnectionTest, APeerThatDoesNotReadIsSentAway) {
  m_patience.write = 200ms;
  m_holds = true;
  Start();
  m_peer.Send(kPost + "\r\n");
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_held != nullptr; }));
  m_held({200, "text/plain", std::string(16u << 20, 'x')});
  EXPECT_TRUE(AwaitGone());
}

TEST_F(HttpConnectionTest, AnAnswerThatTakesTooLongIsGivenOnce) {
  m_patience.answer = 100ms;
  m_holds = true;
  Start();
  m_peer.Send(kPost + "\r\n");
  ASSERT_TRUE(Await("503"));
  m_peer.Take();
  m_held({200, "text/plain", "too late"});
  m_peer.Send(kPost + "\r\n");
  m_patience.answer = 8s;
  ASSERT_TRUE(Await("503"));
  EXPECT_EQ(m_peer.Got().find("too late"), std::string::npos);
}

TEST_F(HttpConnectionTest, TheBodiesOfAllTogetherHaveABound) {
  m_memory->used = m_memory->most - 1000;
  Start();
  m_peer.Send(kPost + "Content-Length: 2000\r\n\r\n" + std::string(1500, 'x'));
  ASSERT_TRUE(Await("503"));
  m_peer.Close();
  ASSERT_TRUE(AwaitGone());
  EXPECT_EQ(m_memory->used, m_memory->most - 1000);
  m_memory->used = 0;
}

TEST_F(HttpConnectionTest, WhatIsNoRequestIsAnsweredAndEnds) {
  Start();
  m_peer.Send("\x16\x03\x01 hello\r\n\r\n");
  ASSERT_TRUE(Await("400 Bad Request"));
  EXPECT_TRUE(m_peer.AwaitEnd(m_io));
}

TEST_F(HttpConnectionTest, AnEndOfTheServiceWaitsForTheAnswer) {
  m_holds = true;
  Start();
  m_peer.Send(kPost + "\r\n");
  ASSERT_TRUE(RunUntil(m_io, [&] { return m_held != nullptr; }));
  m_connection->CloseAfterAnswer();
  m_held({200, "text/plain", "the last one"});
  ASSERT_TRUE(Await("the last one"));
  EXPECT_TRUE(m_peer.AwaitEnd(m_io));
  EXPECT_NE(m_peer.Got().find("Connection: close\r\n"), std::string::npos);
}

}  // namespace
