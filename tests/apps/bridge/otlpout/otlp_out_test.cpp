// Applications, quord, quor-bridge otlp-out and a collector, each as a real process but the last:
// sent = logs + ends of spans + lost.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <quor/quor.hpp>

#include "apps/bridge/otlpin/bridge_process.h"
#include "quor/otlp/send/played_collector.h"
#include "support/played_web_service.h"

namespace {

using testing::HasSubstr;
using testing::Not;

QUOR_POINT(sent_point, "Shop", "Order");

// A collector whose answers the test chooses.
class WebCollector {
 public:
  std::string Url() const {
    const std::string url = m_service.Address();  // ends with "/base"
    return url.substr(0, url.rfind('/'));
  }
  // The next requests get this, as often as it says; then 200.
  void Refuse(std::string answer, int times) {
    const std::lock_guard lock(m_mutex);
    m_refusal = std::move(answer);
    m_times = times;
  }
  void BeSlow(int milliseconds) { m_pause = milliseconds; }
  std::uint64_t Sum() const {
    const std::lock_guard lock(m_mutex);
    return m_collector.Sum();
  }
  std::uint64_t Lost() const {
    const std::lock_guard lock(m_mutex);
    return m_collector.Lost();
  }
  int Refused() const { return m_refused; }
  std::vector<std::string> Requests() const { return m_service.Requests(); }

 private:
  void Serve(asio::ip::tcp::socket& socket) {
    for (std::string text; !(text = m_service.ReadRequest(socket)).empty();) {
      poll(nullptr, 0, m_pause);
      PlayedService::Say(socket, AnswerTo(text));
    }
  }
  std::string AnswerTo(const std::string& request) {
    const std::lock_guard lock(m_mutex);
    if (m_times > 0) {
      --m_times;
      ++m_refused;
      return "HTTP/1.1 " + m_refusal + "\r\nContent-Length: 0\r\n\r\n";
    }
    const auto kind =
        request.starts_with("POST /v1/logs ") ? OutRequest::Kind::Logs : OutRequest::Kind::Spans;
    const std::size_t body = request.find("\r\n\r\n") + 4;
    const bool isPacked = request.substr(0, body).find("Content-Encoding: gzip") != request.npos;
    m_collector.Take(kind, isPacked, request.substr(body));
    return "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";
  }

  mutable std::mutex m_mutex;
  PlayedCollector m_collector;
  std::string m_refusal;
  int m_times = 0;
  std::atomic<int> m_pause = 0, m_refused = 0;
  PlayedService m_service{[this](asio::ip::tcp::socket& socket, int) { Serve(socket); }};
};

class OtlpOut : public testing::Test {
 protected:
  void StartQuord() { ASSERT_NO_FATAL_FAILURE(m_quord.Start()); }
  std::vector<std::string> Words(const std::string& url) const {
    return {url, "--state", m_folder.File("state")};
  }
  std::unique_ptr<BridgeProcess> Bridge(std::vector<std::string> more = {}) {
    std::vector<std::string> words = Words(m_collector.Url());
    words.insert(words.end(), more.begin(), more.end());
    auto bridge = std::make_unique<BridgeProcess>(words, "otlp-out");
    EXPECT_TRUE(bridge->Says("taking the traces")) << bridge->Log();
    return bridge;
  }
  // An application that traces blocks with a log in each, three traces a block.
  static std::unique_ptr<TracedChild> Blocks(int blocks) {
    return std::make_unique<TracedChild>([blocks](TracedChild& self) {
      quor_application("orders");
      self.AwaitGo();
      for (int i = 0; i < blocks; ++i) {
        QUOR_TRACE_INFO(sent_point, "Begin: block {}", i);
        QUOR_TRACE_INFO(sent_point, "inside {}", i);
        QUOR_TRACE_INFO(sent_point, "End: block {}", i);
        if (i % 200 == 0) poll(nullptr, 0, 5);
      }
      return quor_flush(20000) == 1 ? 0 : 1;
    });
  }
  void Trace(int blocks) {
    const auto app = Blocks(blocks);
    app->Go();
    EXPECT_EQ(app->Wait(), 0);
  }
  bool HasCome(std::uint64_t traces) {
    return WaitFor([&] { return m_collector.Sum() >= traces; });
  }

  TempDir m_folder;
  QuordProcess m_quord;
  WebCollector m_collector;
};

TEST_F(OtlpOut, AllThatIsSentArrivesAsLogsAndSpans) {
  StartQuord();
  const auto bridge = Bridge();
  Trace(3000);
  EXPECT_TRUE(HasCome(9000)) << bridge->Log();
  EXPECT_EQ(bridge->End(SIGTERM), 0);
  EXPECT_EQ(m_collector.Sum(), 9000u);
  EXPECT_EQ(m_collector.Lost(), 0u);
  EXPECT_THAT(bridge->Log(),
              HasSubstr("ended: the collector took 9000 traces; 0 traces were lost"));
}

TEST_F(OtlpOut, AKilledBridgeGoesOnWithTheSameIds) {
  StartQuord();
  m_collector.BeSlow(30);
  auto bridge = Bridge();
  const auto app = Blocks(8000);
  app->Go();
  for (int kills = 1; kills <= 4; ++kills) {
    ASSERT_TRUE(HasCome(static_cast<std::uint64_t>(kills) * 3000));
    EXPECT_EQ(bridge->End(SIGKILL), 1000 + SIGKILL);
    bridge = Bridge();
  }
  m_collector.BeSlow(0);
  EXPECT_EQ(app->Wait(), 0);
  EXPECT_TRUE(HasCome(24000)) << bridge->Log();
  EXPECT_EQ(bridge->End(SIGTERM), 0);
  EXPECT_EQ(m_collector.Sum(), 24000u) << "doubles have the ids of the first";
}

TEST_F(OtlpOut, ACollectorThatCannotTakeAnythingNowIsAskedAgain) {
  StartQuord();
  m_collector.Refuse("429 Too Many Requests\r\nRetry-After: 1", 1);
  const auto bridge = Bridge();
  Trace(500);
  EXPECT_TRUE(HasCome(1500)) << bridge->Log();
  m_collector.Refuse("503 Service Unavailable", 1);
  Trace(500);
  EXPECT_TRUE(HasCome(3000)) << bridge->Log();
  EXPECT_EQ(m_collector.Refused(), 2);
  EXPECT_EQ(m_collector.Sum(), 3000u);
  EXPECT_EQ(m_collector.Lost(), 0u);
  EXPECT_THAT(bridge->Log(), HasSubstr("takes nothing now (429)"));
  EXPECT_TRUE(bridge->Says("the collector takes traces again"));
}

TEST_F(OtlpOut, WhatACollectorRefusesIsLostAndReportedWithTheNextTraces) {
  StartQuord();
  m_collector.Refuse("400 Bad Request", 2);
  const auto bridge = Bridge();
  Trace(100);
  ASSERT_TRUE(WaitFor([&] { return m_collector.Refused() == 2; })) << bridge->Log();
  EXPECT_EQ(m_collector.Sum(), 0u);
  Trace(100);
  EXPECT_TRUE(HasCome(600)) << bridge->Log();
  EXPECT_EQ(bridge->End(SIGTERM), 0);
  EXPECT_EQ(m_collector.Sum(), 600u);
  EXPECT_EQ(m_collector.Lost(), 300u);
  EXPECT_EQ(bridge->Times("lost: the collector refused them (400)"), 1u) << bridge->Log();
}

TEST_F(OtlpOut, TheServiceKeepsTheTracesOfAnAbsentCollectorForTheNextRun) {
  StartQuord();
  const std::string unused = "http://127.0.0.1:9";
  {
    BridgeProcess bridge(Words(unused), "otlp-out");
    ASSERT_TRUE(bridge.Says("taking the traces")) << bridge.Log();
    Trace(200);
    EXPECT_TRUE(bridge.Says("the collector is not reached")) << bridge.Log();
    EXPECT_EQ(bridge.End(SIGTERM), 0);
  }
  const auto bridge = Bridge();
  EXPECT_TRUE(HasCome(600)) << bridge->Log();
  EXPECT_EQ(m_collector.Sum(), 600u);
}

TEST_F(OtlpOut, AServiceThatWasStartedAnewIsTakenFromItsBeginning) {
  StartQuord();
  const auto bridge = Bridge();
  Trace(100);
  ASSERT_TRUE(HasCome(300));
  m_quord.Kill();
  StartQuord();
  ASSERT_TRUE(WaitFor([&] { return bridge->Times("taking the traces") == 2; })) << bridge->Log();
  Trace(100);
  EXPECT_TRUE(HasCome(600)) << bridge->Log();
  EXPECT_EQ(m_collector.Sum(), 600u);
}

TEST_F(OtlpOut, ATokenGoesWithEachRequestAndNowhereElse) {
  StartQuord();
  const std::string file = m_folder.File("headers", "# ours\nAuthorization: Bearer s3cret\n");
  chmod(file.c_str(), 0600);
  const auto bridge = Bridge({"--header-file", file});
  Trace(10);
  ASSERT_TRUE(HasCome(30));
  for (const std::string& request : m_collector.Requests())
    EXPECT_THAT(request, HasSubstr("\r\nAuthorization: Bearer s3cret\r\n"));
  const std::string process = "/proc/" + std::to_string(bridge->Pid());
  EXPECT_THAT(ReadAll(process + "/cmdline"), HasSubstr("--header-file"));
  EXPECT_THAT(ReadAll(process + "/cmdline"), Not(HasSubstr("s3cret")));
  EXPECT_THAT(ReadAll(process + "/environ"), Not(HasSubstr("s3cret")));
  EXPECT_EQ(bridge->End(SIGTERM), 0);
  EXPECT_THAT(bridge->Log(), Not(HasSubstr("s3cret")));
  EXPECT_THAT(ReadAll(m_folder.File("state")), Not(HasSubstr("s3cret")));
}

TEST_F(OtlpOut, AFileOfHeadersThatCannotBeUsedIsRefusedWithoutItsWords) {
  StartQuord();
  const auto said = [&](const std::string& text, mode_t mode) {
    const std::string file = m_folder.File("headers", text);
    chmod(file.c_str(), mode);
    std::vector<std::string> words = Words(m_collector.Url());
    words.insert(words.end(), {"--header-file", file});
    BridgeProcess bridge(words, "otlp-out");
    EXPECT_EQ(bridge.Wait(), 1) << text;
    EXPECT_THAT(bridge.Log(), Not(HasSubstr("s3cret")));
    return bridge.Log();
  };
  EXPECT_THAT(said("Authorization: s3cret\n", 0644), HasSubstr("others may read it"));
  for (const char* const line :
       {"s3cret", ": s3cret", "A B: s3cret", "Content-Length: 3; s3cret", "X: a\x01s3cret"})
    EXPECT_THAT(said(std::string("A: b\n") + line + "\n", 0600), HasSubstr("line 2")) << line;
}

TEST_F(OtlpOut, ItsEndSaysWhatWasWrong) {
  const auto statusOf = [](const std::vector<std::string>& words, const std::string& expected) {
    BridgeProcess bridge(words, "otlp-out");
    const int status = bridge.Wait();
    EXPECT_THAT(bridge.Log(), HasSubstr(expected));
    return status;
  };
  const std::vector<std::string> words = Words(m_collector.Url());
  EXPECT_EQ(statusOf(words, "quor-bridge: "), 3) << "there is no service";
  StartQuord();
  EXPECT_EQ(statusOf({"ftp://x"}, "--help"), 2);
  EXPECT_EQ(statusOf({"http://x", "--ca", "f"}, "https"), 2);
  EXPECT_EQ(statusOf({"http://u:p@x"}, "--help"), 2);
  {
    const auto first = Bridge();
    EXPECT_EQ(statusOf(words, "another process uses it"), 1);
  }
  m_folder.File("state", "something else");
  EXPECT_EQ(statusOf(words, "no state"), 1);
  EXPECT_EQ(ReadAll(m_folder.File("state")), "something else");
}

}  // namespace
