// Programs that speak OpenTelemetry, quor-bridge otlp-in, quord and trc, each as a real process.
#include <gmock/gmock.h>

#include "apps/bridge/otlpin/otlp_in_fixture.h"
#include "quor/http/client/http_client.h"
#include "quor/otlp/otlp_messages.h"
#include "support/http_peer.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

void Describe(quor::otlp::Resource& resource) {
  AddText(resource, "service.name", "orders");
  AddText(resource, "host.name", "web1");
  AddValue(resource, "process.pid").set_int_value(4711);
}

std::string OneLog(const std::string& text) {
  LogMessage logs;
  Describe(logs.resource);
  logs.scope.set_name("db.pool");
  auto& log = logs.Add(text);
  AddText(log, "thread.name", "main");
  AddText(log, "code.file.path", "/src/pool.cpp");
  AddValue(log, "code.line.number").set_int_value(42);
  return logs.message.SerializeAsString();
}

std::string SpansOf(const SpanMessage& spans) {
  return spans.message.SerializeAsString();
}

class OtlpIn : public OtlpInFixture {
 protected:
  // Sends it again until it is taken, as a client does.
  static std::string PostUntilTaken(Exporter& exporter, const std::string& body) {
    std::string answer;
    WaitFor([&] {
      answer = exporter.Post("/v1/logs", body);
      return answer.empty() || answer.find(" 503 ") == answer.npos;
    });
    return answer;
  }
};

TEST_F(OtlpIn, LogsAndSpansComeAsRowsWithAllThatTheySay) {
  StartQuord();
  BridgeProcess bridge;
  Connect(bridge);
  const auto watcher = Watch(6);
  Exporter exporter(bridge);
  EXPECT_THAT(exporter.Post("/v1/logs", OneLog("a row")), StartsWith("HTTP/1.1 200 "));
  SpanMessage spans;
  Describe(spans.resource);
  spans.scope.set_name("web");
  spans.Add("inner", 1, 2, "outer");
  spans.Add("outer", 0, 4);
  // It overlaps: another lane.
  spans.Add("beside", 3, 5, {}, "other trace");
  // On the same connection.
  EXPECT_THAT(exporter.Post("/v1/traces", SpansOf(spans)), StartsWith("HTTP/1.1 200 "));
  EXPECT_THAT(watcher->Rows(), ElementsAre("web1 orders db.pool 4711 main a row /src/pool.cpp:42",
                                           StartsWith("web1 orders web 4711 lane 1 Begin: outer"),
                                           StartsWith("web1 orders web 4711 lane 1 Begin: inner"),
                                           StartsWith("web1 orders web 4711 lane 1 End: inner"),
                                           StartsWith("web1 orders web 4711 lane 2 Begin: beside"),
                                           StartsWith("web1 orders web 4711 lane 1 End: outer")));
}

TEST_F(OtlpIn, WithoutAServiceEachRequestIsToComeAgainAndTheLogSaysItOnce) {
  BridgeProcess bridge;
  ASSERT_TRUE(bridge.Says("cannot forward to the trace service")) << bridge.Log();
  Exporter exporter(bridge);
  const std::string answer = exporter.Post("/v1/logs", OneLog("early"));
  EXPECT_THAT(answer, StartsWith("HTTP/1.1 503 "));
  EXPECT_THAT(answer, HasSubstr("\r\nRetry-After: 2\r\n"));
  // It has tried again meanwhile.
  poll(nullptr, 0, 1000);
  EXPECT_EQ(bridge.Times("cannot forward to"), 1u) << bridge.Log();
  StartQuord();
  Connect(bridge);
  const auto watcher = Watch(1);
  EXPECT_THAT(exporter.Post("/v1/logs", OneLog("early")), StartsWith("HTTP/1.1 200 "));
  EXPECT_THAT(watcher->Rows(), ElementsAre(HasSubstr("early")));
}

TEST_F(OtlpIn, AServiceThatIsKilledAndComesAgainGetsWhatFollowsOnce) {
  StartQuord();
  BridgeProcess bridge;
  Connect(bridge);
  Exporter exporter(bridge);
  EXPECT_THAT(exporter.Post("/v1/logs", OneLog("before")), StartsWith("HTTP/1.1 200 "));
  m_quord.Kill();
  ASSERT_TRUE(bridge.Says("cannot forward to the trace service")) << bridge.Log();
  EXPECT_THAT(exporter.Post("/v1/logs", OneLog("without")), StartsWith("HTTP/1.1 503 "));
  StartQuord();
  const auto watcher = Watch(2);
  EXPECT_THAT(PostUntilTaken(exporter, OneLog("without")), StartsWith("HTTP/1.1 200 "));
  // What was answered with 200 is known: no row comes of it.
  EXPECT_THAT(exporter.Post("/v1/logs", OneLog("without")), StartsWith("HTTP/1.1 200 "));
  EXPECT_THAT(exporter.Post("/v1/logs", OneLog("after")), StartsWith("HTTP/1.1 200 "));
  EXPECT_THAT(watcher->Rows(), ElementsAre(HasSubstr("without"), HasSubstr("after")));
}

TEST_F(OtlpIn, ABridgeThatIsKilledLosesNothingThatAClientSendsAgain) {
  StartQuord();
  auto bridge = std::make_unique<BridgeProcess>();
  Connect(*bridge);
  const auto watcher = Watch(3);
  auto exporter = std::make_unique<Exporter>(*bridge);
  EXPECT_THAT(exporter->Post("/v1/logs", OneLog("first")), StartsWith("HTTP/1.1 200 "));
  EXPECT_EQ(bridge->End(SIGKILL), 1000 + SIGKILL);
  EXPECT_EQ(exporter->Post("/v1/logs", OneLog("second")), "");
  bridge = std::make_unique<BridgeProcess>();
  Connect(*bridge);
  exporter = std::make_unique<Exporter>(*bridge);
  EXPECT_THAT(exporter->Post("/v1/logs", OneLog("second")), StartsWith("HTTP/1.1 200 "));
  EXPECT_THAT(exporter->Post("/v1/logs", OneLog("third")), StartsWith("HTTP/1.1 200 "));
  EXPECT_THAT(watcher->Rows(),
              ElementsAre(HasSubstr("first"), HasSubstr("second"), HasSubstr("third")));
}

TEST_F(OtlpIn, SpansThatWaitForTheirParentComeWhenItEnds) {
  StartQuord();
  BridgeProcess bridge;
  Connect(bridge);
  const auto watcher = Watch(2);
  SpanMessage spans;
  Describe(spans.resource);
  spans.Add("alone", 1, 2, "a parent that never comes");
  EXPECT_THAT(Exporter(bridge).Post("/v1/traces", SpansOf(spans)), StartsWith("HTTP/1.1 200 "));
  EXPECT_EQ(bridge.End(SIGTERM), 0);
  EXPECT_THAT(bridge.Log(), HasSubstr("1 spans became 2 traces"));
  EXPECT_THAT(watcher->Rows(), ElementsAre(HasSubstr("Begin: alone"), HasSubstr("End: alone")));
}

TEST_F(OtlpIn, ItEndsInTimeWhenTheServiceStandsStill) {
  StartQuord();
  BridgeProcess bridge;
  Connect(bridge);
  kill(m_quord.Pid(), SIGSTOP);
  SpanMessage spans;
  spans.Add("alone", 1, 2, "a parent that never comes");
  // Nothing is to be confirmed yet.
  EXPECT_THAT(Exporter(bridge).Post("/v1/traces", SpansOf(spans)), StartsWith("HTTP/1.1 200 "));
  EXPECT_EQ(bridge.End(SIGTERM), 0);
  EXPECT_THAT(bridge.Log(), HasSubstr("ending with 2 traces that"));
  kill(m_quord.Pid(), SIGCONT);
}

TEST_F(OtlpIn, APortThatIsTakenIsAFailureWithAReason) {
  BridgeProcess bridge;
  const int port = bridge.Port();
  ASSERT_GT(port, 0);
  BridgeProcess second({"--listen", "127.0.0.1:" + std::to_string(port)});
  EXPECT_EQ(second.Wait(), 1);
  EXPECT_THAT(second.Log(), HasSubstr("Address already in use"));
}

TEST_F(OtlpIn, OtherMachinesNeedACertificateOfRoleForward) {
  BridgeProcess without({"--listen", "0.0.0.0:0"});
  EXPECT_EQ(without.Wait(), 1);
  EXPECT_THAT(without.Log(), HasSubstr("server.key"));
  ASSERT_EQ(m_quord.Run({"keys", "init", "--host", "127.0.0.1"}), 0);
  for (const std::string role : {"forward", "monitor"})
    ASSERT_EQ(m_quord.Run({"keys", "issue", role + "1", "--role", role, "--out",
                           m_quord.Folder().File(role)}),
              0);
  StartQuord();
  BridgeProcess bridge({"--listen", "0.0.0.0:0"});
  Connect(bridge);
  const std::string address = "https://127.0.0.1:" + std::to_string(bridge.Port());
  const auto post = [&](const std::string& role, const std::string& text) {
    const std::string side = m_quord.Folder().File(role) + "/client";
    std::string why;
    const auto tls =
        MakeWebTls({m_quord.Folder().File(role) + "/ca.crt", side + ".crt", side + ".key"}, &why);
    EXPECT_TRUE(tls) << why;
    asio::io_context io;
    HttpClient client(io, *ReadWebAddress(address, 4318, &why), tls);
    const std::string body = OneLog(text);
    int status = -1;
    client.Post({"/v1/logs", "Content-Type: application/x-protobuf\r\n", body},
                [&](const HttpResult& result) { status = result.status; });
    EXPECT_TRUE(RunUntil(io, [&] { return status >= 0; }));
    return status;
  };
  const auto watcher = Watch(1);
  EXPECT_EQ(post("monitor", "forbidden"), 0);
  EXPECT_EQ(post("forward", "allowed"), 200);
  EXPECT_THAT(watcher->Rows(), ElementsAre(HasSubstr("allowed")));
  // Without TLS nobody is heard there.
  EXPECT_EQ(Exporter(bridge).Post("/v1/logs", OneLog("plain")), "");
}

}  // namespace
