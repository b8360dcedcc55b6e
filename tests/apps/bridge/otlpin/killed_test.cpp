// A bridge that is killed again and again while a program sends.
#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>

#include "apps/bridge/otlpin/otlp_in_fixture.h"
#include "quor/otlp/otlp_messages.h"

namespace {

constexpr unsigned kLogs = 20;  // of a request

std::string Request(unsigned number) {
  LogMessage logs;
  AddText(logs.resource, "service.name", "orders");
  for (unsigned i = 0; i < kLogs; ++i)
    logs.Add("log " + std::to_string(number) + "." + std::to_string(i));
  const std::string body = logs.message.SerializeAsString();
  return "POST /v1/logs HTTP/1.1\r\nHost: x\r\nContent-Type: application/x-protobuf\r\n"
         "Content-Length: " +
         std::to_string(body.size()) + "\r\n\r\n" + body;
}

class OtlpKilled : public OtlpInFixture {
 protected:
  void StartBridge() {
    m_exporter.reset();
    m_bridge.reset();  // killed, if it runs
    m_bridge = std::make_unique<BridgeProcess>(
        std::vector<std::string>{"--listen", "127.0.0.1:" + std::to_string(m_port)});
    ASSERT_GT(m_bridge->Port(), 0) << m_bridge->Log();
    m_port = m_bridge->Port();
    m_exporter = std::make_unique<Exporter>(*m_bridge);
  }
  bool SendUntilTaken(const std::string& request) {
    return WaitFor([&] {
      const std::string answer = m_exporter->Ask(request);
      return answer.rfind("HTTP/1.1 200 ", 0) == 0;
    });
  }

  int m_port = 0;
  std::unique_ptr<BridgeProcess> m_bridge;
  std::unique_ptr<Exporter> m_exporter;
};

TEST_F(OtlpKilled, AllThatAClientSendsAgainComesAndNothingMoreOftenThanItWasSent) {
  const char* const more = getenv("QUOR_OTLP_KILLS");
  const unsigned kills = more ? static_cast<unsigned>(std::stoul(more)) : 40;
  StartQuord();
  ASSERT_NO_FATAL_FAILURE(StartBridge());
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(m_quord.SocketPath()));
  std::mt19937 random(20261124);
  std::map<std::string, unsigned> sent;
  const unsigned requests = kills * 5;
  for (unsigned number = 0; number < requests; ++number) {
    const std::string request = Request(number);
    unsigned times = 1;
    if (number % 5 == 4) {
      // The bridge may have read nothing, a part, or all of it; the service may have the traces.
      ASSERT_TRUE(m_exporter->Send(request.substr(0, random() % (2 * request.size()))));
      poll(nullptr, 0, static_cast<int>(random() % 4));
      EXPECT_EQ(m_bridge->End(SIGKILL), 1000 + SIGKILL);
      ASSERT_NO_FATAL_FAILURE(StartBridge());
      times = 2;
    }
    ASSERT_TRUE(SendUntilTaken(request)) << m_bridge->Log();
    for (unsigned i = 0; i < kLogs; ++i)
      sent["log " + std::to_string(number) + "." + std::to_string(i)] = times;
    monitor.Beat();
    monitor.Pump();
  }
  const std::string last = "log " + std::to_string(requests - 1) + "." + std::to_string(kLogs - 1);
  EXPECT_TRUE(WaitFor([&] {
    monitor.Beat();
    monitor.Pump();
    return std::any_of(monitor.traces.rbegin(), monitor.traces.rend(),
                       [&](const SeenTrace& trace) { return trace.text == last; });
  }));
  std::map<std::string, unsigned> came;
  for (const SeenTrace& trace : monitor.traces) ++came[trace.text];
  for (const auto& [text, times] : sent) {
    ASSERT_GE(came[text], 1u) << text;
    ASSERT_LE(came[text], times) << text;
  }
  EXPECT_EQ(monitor.lost, 0u);
  EXPECT_EQ(monitor.delivered, monitor.traces.size());
}

}  // namespace
