#include "quor/protocol/connection.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <thread>

#include "quor/protocol/quor.pb.h"

namespace {

using namespace std::chrono_literals;

struct Heard final : Connection::Handler {
  void OnFrame(const Frame& frame) override {
    words += std::to_string(static_cast<int>(frame.type)) + ":" +
             std::to_string(frame.body.size()) + " ";
    bytes.insert(bytes.end(), frame.body.begin(), frame.body.end());
    if (onFrame) onFrame();
  }
  void OnWritten() override { ++written; }
  void OnRested() override {
    if (onRested) onRested();
  }
  void OnClosed(const std::string& reason) override {
    ++closed;
    why = reason;
  }
  std::string words, why;
  std::vector<std::uint8_t> bytes;
  int closed = 0, written = 0;
  std::function<void()> onFrame, onRested;
};

// A connection on one end of a pair of sockets, and the other end.
class ConnectionTest : public testing::Test {
 protected:
  ConnectionTest() {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    m_nearEnd = ends[0];
    m_far = std::make_unique<LocalSocket>(m_io, asio::local::stream_protocol(), ends[1]);
  }
  ~ConnectionTest() override {
    if (m_near) m_near->Close();
    Run([] { return false; }, 0ms);
  }
  void Start(const ConnectionLimits& limits = {}) {
    m_near = Connection::Start(
        MakeStream(LocalSocket(m_io, asio::local::stream_protocol(), m_nearEnd)), m_heard, limits);
  }
  // Two connections, each the peer of the other.
  void StartBoth(const ConnectionLimits& limits = {}) {
    Start(limits);
    m_other = Connection::Start(MakeStream(std::move(*m_far)), m_heardOther, limits);
  }
  template <class Condition>
  bool Run(Condition&& condition, std::chrono::milliseconds deadline = 5000ms) {
    const auto until = std::chrono::steady_clock::now() + deadline;
    m_io.restart();
    while (!condition()) {
      if (std::chrono::steady_clock::now() >= until) return false;
      m_io.run_one_for(10ms);
      m_io.restart();
    }
    return true;
  }
  void FarSends(const std::vector<std::uint8_t>& bytes) {
    std::error_code error;
    m_far->write_some(asio::buffer(bytes), error);
    EXPECT_FALSE(error);
  }
  static SharedBytes Shared(std::size_t bytes, std::uint8_t value) {
    return ShareBytes(std::vector<std::uint8_t>(bytes, value));
  }

  asio::io_context m_io;
  int m_nearEnd = -1;
  std::unique_ptr<LocalSocket> m_far;
  Heard m_heard, m_heardOther;
  std::shared_ptr<Connection> m_near, m_other;
};

TEST_F(ConnectionTest, MessagesGoBothWays) {
  StartBoth();
  quor::wire::Hello hello;
  hello.set_version(1);
  EXPECT_TRUE(m_near->Send(FrameType::Hello, hello));
  EXPECT_TRUE(m_other->Send(FrameType::Welcome, quor::wire::Welcome()));
  EXPECT_TRUE(Run([&] { return !m_heard.words.empty() && !m_heardOther.words.empty(); }));
  EXPECT_EQ(m_heardOther.words, "1:2 ");
  EXPECT_EQ(m_heard.words, "2:0 ");
  m_other->Close();
}

TEST_F(ConnectionTest, NamesAndRecordsThatAreKeptApartMakeOneDataFrame) {
  StartBoth();
  const SharedBytes names = Shared(3, 'n'), records = Shared(70000, 'r');
  for (int i = 0; i < 20; ++i) EXPECT_TRUE(m_near->SendData(i % 2 ? names : nullptr, records));
  EXPECT_TRUE(Run([&] { return m_heardOther.bytes.size() == 20 * 70000 + 10 * 3; }));
  EXPECT_EQ(m_heardOther.words.substr(0, 16), "6:70000 6:70003 ");
  EXPECT_TRUE(Run([&] { return m_near->QueuedBytes() == 0; }));
  EXPECT_GT(m_heard.written, 0);
  EXPECT_LT(m_heard.written, 20) << "several frames go out in one write";
  m_other->Close();
}

// Thousands of short requests come with one read.
TEST_F(ConnectionTest, FramesThatTakeLongLeaveOthersTheirTurn) {
  Start();
  int frames = 0, framesAtTurn = -1;
  m_heard.onFrame = [&] {
    usleep(500);
    if (++frames == 1) asio::post(m_io, [&] { framesAtTurn = frames; });
  };
  std::vector<std::uint8_t> all;
  for (int i = 0; i < 200; ++i) {
    const auto frame = EncodeFrame(FrameType::Request, Bytes());
    all.insert(all.end(), frame.begin(), frame.end());
  }
  FarSends(all);
  EXPECT_TRUE(Run([&] { return frames == 200; }));
  EXPECT_GE(framesAtTurn, 1);
  EXPECT_LT(framesAtTurn, 50);
}

TEST_F(ConnectionTest, WhatDoesNotFitIntoTheQueueIsNotTakenAndTheConnectionLivesOn) {
  ConnectionLimits limits;
  limits.queueBytesMax = 1 << 20;
  Start(limits);
  const SharedBytes records = Shared(100000, 'r');
  int taken = 0;
  while (m_near->SendData(nullptr, records)) ++taken;
  EXPECT_EQ(taken, 10);
  EXPECT_LE(m_near->QueuedBytes(), limits.queueBytesMax);
  EXPECT_TRUE(m_near->IsOpen());
  std::vector<std::uint8_t> sink(2 << 20);
  std::size_t received = 0;
  m_far->non_blocking(true);
  EXPECT_TRUE(Run([&] {
    std::error_code error;
    received += m_far->read_some(asio::buffer(sink), error);
    return received == 10 * 100005u;
  }));
  EXPECT_TRUE(Run([&] { return m_near->QueuedBytes() == 0; }));
  EXPECT_TRUE(m_near->SendData(nullptr, records));
}

TEST_F(ConnectionTest, ManyShortAnswersThatNobodyReadsAreBoundedByWhatTheyCost) {
  ConnectionLimits limits;
  limits.queueBytesMax = 1 << 20;
  Start(limits);
  quor::wire::Response answer;
  answer.set_id(1);
  std::size_t taken = 0;
  while (m_near->Send(FrameType::Response, answer)) ++taken;
  EXPECT_GT(taken, 1000u);
  EXPECT_LT(taken, (1u << 20) / 100);
}

TEST_F(ConnectionTest, AMalformedFrameEndsItWithAReasonAndNothingAfterItIsHeard) {
  Start();
  auto bytes = EncodeFrame(FrameType::Request, std::string("ok"));
  bytes.insert(bytes.end(), {0, 0, 0, 1, 99});
  const auto more = EncodeFrame(FrameType::Request, std::string("late"));
  bytes.insert(bytes.end(), more.begin(), more.end());
  FarSends(bytes);
  EXPECT_TRUE(Run([&] { return m_heard.closed == 1; }));
  EXPECT_EQ(m_heard.words, "4:2 ");
  EXPECT_EQ(m_heard.why, "malformed: a frame of unknown type 99");
  EXPECT_FALSE(m_near->IsOpen());
  EXPECT_FALSE(m_near->SendData(nullptr, Shared(1, 0)));
}

TEST_F(ConnectionTest, ThePeersEndIsReported) {
  Start();
  m_far->close();
  EXPECT_TRUE(Run([&] { return m_heard.closed == 1; }));
  EXPECT_EQ(m_heard.why, "the peer has ended it");
}

TEST_F(ConnectionTest, ASilentPeerIsNoticed) {
  ConnectionLimits limits;
  limits.silenceDeadline = 100ms;
  Start(limits);
  EXPECT_TRUE(Run([&] { return m_heard.closed == 1; }));
  EXPECT_EQ(m_heard.why, "the peer has sent nothing for 0.1 s");
}

// A debugger, a signal or a machine that is frozen: the peer may have stood still as well.
TEST_F(ConnectionTest, TimeThatThisProcessStoodStillIsNoSilenceOfItsPeer) {
  ConnectionLimits limits;
  limits.silenceDeadline = limits.writeDeadline = 400ms;
  Start(limits);
  for (int i = 0; i < 40; ++i) m_near->SendData(nullptr, Shared(100000, 'r'));
  std::this_thread::sleep_for(1000ms);
  EXPECT_FALSE(Run([&] { return m_heard.closed == 1; }, 100ms)) << m_heard.why;
  EXPECT_TRUE(Run([&] { return m_heard.closed == 1; }));
}

TEST_F(ConnectionTest, WhileAHandlerRestsFramesWaitAndThePeerIsNotSilent) {
  ConnectionLimits limits;
  limits.silenceDeadline = 100ms;
  Start(limits);
  m_heard.onFrame = [this] {
    if (m_heard.words == "4:1 ") m_near->Rest(400ms);
  };
  m_heard.onRested = [this] {
    m_heard.words += "rested ";
    if (m_heard.words == "4:1 rested ") m_near->Rest(1ms);
  };
  auto bytes = EncodeFrame(FrameType::Request, std::string("1"));
  const auto more = EncodeFrame(FrameType::Request, std::string("22"));
  bytes.insert(bytes.end(), more.begin(), more.end());
  FarSends(bytes);
  EXPECT_FALSE(Run([&] { return m_heard.words.size() > 4 || m_heard.closed == 1; }, 300ms));
  EXPECT_TRUE(Run([&] { return m_heard.words == "4:1 rested rested 4:2 "; })) << m_heard.words;
  EXPECT_TRUE(Run([&] { return m_heard.closed == 1; })) << "and now it is";
}

TEST_F(ConnectionTest, HeartbeatsKeepAnIdleConnectionAliveAndAreNotHeard) {
  ConnectionLimits limits;
  limits.heartbeat = 20ms;
  limits.silenceDeadline = 200ms;
  StartBoth(limits);
  EXPECT_FALSE(Run([&] { return m_heard.closed + m_heardOther.closed > 0; }, 600ms));
  EXPECT_EQ(m_heard.words + m_heardOther.words, "");
  m_other->Close();
}

TEST_F(ConnectionTest, APeerThatTakesNothingIsGivenUpAfterTheWriteDeadline) {
  ConnectionLimits limits;
  limits.writeDeadline = 100ms;
  Start(limits);
  for (int i = 0; i < 40; ++i) m_near->SendData(nullptr, Shared(100000, 'r'));
  EXPECT_TRUE(Run([&] { return m_heard.closed == 1; }));
  EXPECT_EQ(m_heard.why, "the peer has read nothing for 0.1 s");
}

TEST_F(ConnectionTest, CloseAfterWritingDeliversEverythingAndThenTheEnd) {
  StartBoth();
  for (int i = 0; i < 30; ++i) m_near->SendData(nullptr, Shared(100000, 'r'));
  quor::wire::Refused refused;
  refused.set_text("no");
  m_near->Send(FrameType::Refused, refused);
  m_near->CloseAfterWriting();
  EXPECT_FALSE(m_near->Send(FrameType::Refused, refused));
  EXPECT_TRUE(Run([&] { return m_heardOther.closed == 1; }));
  EXPECT_EQ(m_heardOther.bytes.size(), 30 * 100000 + 4u);
  EXPECT_EQ(m_heardOther.why, "the peer has ended it");
  EXPECT_EQ(m_heard.closed, 0);
}

TEST_F(ConnectionTest, AHandlerThatClosesInsideAFrameIsNotCalledAgain) {
  Start();
  m_heard.onFrame = [this] { m_near->Close(); };
  auto bytes = EncodeFrame(FrameType::Request, std::string("1"));
  const auto more = EncodeFrame(FrameType::Request, std::string("2"));
  bytes.insert(bytes.end(), more.begin(), more.end());
  FarSends(bytes);
  EXPECT_TRUE(Run([&] { return !m_heard.words.empty(); }));
  EXPECT_FALSE(Run([&] { return m_heard.closed > 0; }, 50ms));
  EXPECT_EQ(m_heard.words, "4:1 ");
}

TEST_F(ConnectionTest, AStrangerMayNotSendLongFrames) {
  Start();
  m_near->LimitFrames(1000);
  FarSends(EncodeFrame(FrameType::Hello, std::string(1000, 'x')));
  EXPECT_TRUE(Run([&] { return m_heard.closed == 1; }));
  EXPECT_EQ(m_heard.why, "malformed: a frame of 1001 bytes is too long");
}

}  // namespace
