// The words of collectors, and when a request goes again.
#include "quor/otlp/send/send_queue.h"

#include <gmock/gmock.h>

#include "played_frames.h"

namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

constexpr std::time_t kNow = 784111777;  // Sun, 06 Nov 1994 08:49:37 GMT

OutRequest Logs(std::uint64_t traces, std::uint64_t lost = 0, std::string body = "body") {
  OutRequest request;
  request.body = std::move(body);
  request.messages = static_cast<std::uint32_t>(traces);
  request.weight = {traces, lost};
  return request;
}

class SendQueueTest : public testing::Test {
 protected:
  SendQueue Make(SendLimits limits = {}) {
    return SendQueue(
        limits, [this](SendLoss loss) { m_losses.push_back(std::move(loss)); }, 7);
  }
  std::vector<SendLoss> m_losses;
  SendQueue::Time m_now{};
};

TEST(RetryAfter, IsSecondsOrADate) {
  EXPECT_EQ(ReadRetryAfter("120", kNow), 120s);
  EXPECT_EQ(ReadRetryAfter("0", kNow), 0s);
  EXPECT_EQ(ReadRetryAfter("Sun, 06 Nov 1994 08:49:47 GMT", kNow), 10s);
  EXPECT_EQ(ReadRetryAfter("Sun, 06 Nov 1994 08:49:07 GMT", kNow), 0s) << "it has passed";
  for (const char* const text : {"", "-1", "1.5", "soon", "12 s", "06 Nov 1994 08:49:37 GMT",
                                 "Sun, 06 Nix 1994 08:49:37 GMT", "Sun, 06 Nov 1994 08:49:37 CET"})
    EXPECT_EQ(ReadRetryAfter(text, kNow), std::nullopt) << text;
}

TEST_F(SendQueueTest, OneRequestIsUnderWayAndTheOthersWaitInOrder) {
  SendQueue queue = Make();
  for (int i = 1; i <= 3; ++i) queue.Add(Logs(static_cast<std::uint64_t>(i)));
  for (std::uint64_t i = 0; i < 3; ++i) {
    const auto* const request = queue.Next(m_now);
    ASSERT_TRUE(request);
    EXPECT_EQ(request->number, i);
    EXPECT_FALSE(queue.Next(m_now));
    EXPECT_EQ(queue.Done(), i);
    queue.Answer(Answered(200), m_now, kNow);
  }
  EXPECT_EQ(queue.Done(), 3u);
  EXPECT_EQ(queue.Taken(), 6u);
  EXPECT_EQ(queue.Bytes(), 0u);
  EXPECT_FALSE(queue.Next(m_now));
}

TEST_F(SendQueueTest, PausesGrowToThirtySecondsAndBeginAnewAfterAnAnswer) {
  SendQueue queue = Make();
  queue.Add(Logs(1));
  std::chrono::milliseconds full = 1s;
  for (int i = 0; i < 8; ++i) {
    ASSERT_TRUE(queue.Next(m_now)) << i;
    queue.Answer(Answered(i % 2 == 0 ? 0 : 503), m_now, kNow);
    const auto pause = *queue.WakeAt() - m_now;
    EXPECT_GE(pause, full / 2) << i;
    EXPECT_LE(pause, full) << i;
    EXPECT_FALSE(queue.Next(m_now + pause - 1ms)) << i;
    m_now += pause;
    full = std::min<std::chrono::milliseconds>(full * 2, 30s);
  }
  ASSERT_TRUE(queue.Next(m_now));
  EXPECT_NE(queue.Trouble(), "");
  queue.Answer(Answered(200), m_now, kNow);
  EXPECT_EQ(queue.Trouble(), "");
  queue.Add(Logs(1));
  ASSERT_TRUE(queue.Next(m_now));
  queue.Answer(Answered(502), m_now, kNow);
  EXPECT_LE(*queue.WakeAt() - m_now, 1s);
  EXPECT_TRUE(m_losses.empty());
}

TEST_F(SendQueueTest, ACollectorThatNamesATimeIsAskedThen) {
  SendQueue queue = Make();
  queue.Add(Logs(1));
  for (const auto& [text, pause] : {std::pair<const char*, std::chrono::seconds>("7", 7s),
                                    {"Sun, 06 Nov 1994 08:49:57 GMT", 20s},
                                    {"99999", 300s}}) {
    ASSERT_TRUE(queue.Next(m_now));
    queue.Answer(Answered(429, text), m_now, kNow);
    EXPECT_EQ(*queue.WakeAt() - m_now, pause) << text;
    m_now = *queue.WakeAt();
  }
}

TEST_F(SendQueueTest, WhatIsRefusedIsLostWithTheLossesThatItReports) {
  SendQueue queue = Make();
  for (const int status : {400, 401, 404, 413, 500, 302}) {
    queue.Add(Logs(3, 4));
    ASSERT_TRUE(queue.Next(m_now));
    queue.Answer(Answered(status), m_now, kNow);
    ASSERT_FALSE(m_losses.empty());
    EXPECT_EQ(m_losses.back().traces, 7u);
    EXPECT_THAT(m_losses.back().reason, HasSubstr(std::to_string(status)));
    EXPECT_EQ(queue.Done(), queue.Added());
  }
  EXPECT_EQ(queue.Taken(), 0u);
}

TEST_F(SendQueueTest, OfARequestThatIsTakenInPartTheRestIsLost) {
  SendQueue queue = Make();
  queue.Add(Logs(10));
  queue.Next(m_now);
  queue.Answer(Rejecting(3), m_now, kNow);
  OutRequest spans = Logs(20);
  spans.kind = OutRequest::Kind::Spans;
  spans.messages = 10;
  queue.Add(std::move(spans));
  queue.Next(m_now);
  queue.Answer(Rejecting(4), m_now, kNow);
  queue.Add(Logs(5, 2));
  queue.Next(m_now);
  queue.Answer(Rejecting(99), m_now, kNow);
  ASSERT_EQ(m_losses.size(), 3u);
  EXPECT_EQ(m_losses[0].traces, 3u);
  EXPECT_EQ(m_losses[0].words, "too old");
  EXPECT_EQ(m_losses[1].traces, 8u);
  EXPECT_EQ(m_losses[2].traces, 7u);
  EXPECT_EQ(queue.Taken(), 7u + 12u);
}

TEST_F(SendQueueTest, AnAnswerThatSaysNothingUsableIsNoRejection) {
  SendQueue queue = Make();
  for (const std::string body : {"", "ok", "{\"partialSuccess\":{\"rejectedSpans\":5}}"}) {
    queue.Add(Logs(1));
    queue.Next(m_now);
    HttpResult result = Answered(202);
    result.response.contentType = "application/json";
    result.response.body.assign(body.begin(), body.end());
    queue.Answer(result, m_now, kNow);
  }
  EXPECT_TRUE(m_losses.empty());
  EXPECT_EQ(queue.Taken(), 3u);
}

// Bodies that a packer cannot make smaller.
std::string Noise(std::size_t size) {
  std::minstd_rand random(5);
  std::string noise(size, '\0');
  for (char& byte : noise) byte = static_cast<char>(random() >> 8);
  return noise;
}

TEST_F(SendQueueTest, BeyondTheBoundTheOldestThatIsNotUnderWayIsDropped) {
  SendLimits limits;
  limits.bytes = 3500;
  SendQueue queue = Make(limits);
  for (std::uint64_t i = 1; i <= 3; ++i) queue.Add(Logs(i, 0, Noise(1000)));
  EXPECT_TRUE(m_losses.empty());
  const auto* const underWay = queue.Next(m_now);
  ASSERT_TRUE(underWay);
  const std::string* const body = &underWay->body;
  queue.Add(Logs(4, 0, Noise(1000)));
  EXPECT_EQ(underWay->number, 0u);
  EXPECT_GT(body->size(), 1000u) << "it is being sent";
  ASSERT_EQ(m_losses.size(), 1u);
  EXPECT_EQ(m_losses[0].number, 1u);
  EXPECT_EQ(m_losses[0].traces, 2u);
  EXPECT_EQ(queue.Done(), 0u);
  EXPECT_LE(queue.Bytes(), 3500u);
  queue.Answer(Answered(503), m_now, kNow);
  queue.Add(Logs(5, 0, Noise(1000)));
  ASSERT_EQ(m_losses.size(), 2u);
  EXPECT_EQ(m_losses[1].number, 0u) << "it waits, so it is the oldest";
  EXPECT_EQ(queue.Done(), 2u);
  EXPECT_FALSE(queue.Next(m_now)) << "the pause is the collector's, not the request's";
}

}  // namespace
