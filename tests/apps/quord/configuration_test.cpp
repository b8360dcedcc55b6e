// Settings and sinks through the real service: live, kept, and gone when nobody holds them.
#include <sys/mman.h>
#include <quor/quor.hpp>

#include <atomic>

#include "quord_client.h"

namespace {

using quor::wire::ERROR_NONE;

QUOR_POINT(connect_point, "Net", "Connect");
QUOR_POINT(query_point, "Db", "Query");

// How often the applications of this program have traced: their own count, which no service sees.
std::atomic<unsigned>& Rounds() {
  static void* const shared = mmap(nullptr, sizeof(std::atomic<unsigned>), PROT_READ | PROT_WRITE,
                                   MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  return *static_cast<std::atomic<unsigned>*>(shared);
}

// Traces at every severity and attribute until it is killed.
int TraceOn(TracedChild& self) {
  quor_application("orders");
  self.Report(1);
  for (;;) {
    QUOR_TRACE_AT(connect_point, QUOR_INFO, "info");
    QUOR_TRACE_AT(connect_point, QUOR_INFO | QUOR_VERBOSE, "verbose");
    QUOR_TRACE_AT(query_point, QUOR_ERROR, "error");
    ++Rounds();
    poll(nullptr, 0, 1);
  }
  return 0;
}

class Configuration : public ::testing::Test {
 protected:
  // The application's entry once its trace map is complete.
  quor::wire::App Seen(QuordClient& client) {
    Response response;
    EXPECT_TRUE(WaitFor([&] {
      response = client.Ask(GetAppRequest("orders"));
      return Instances(client, "orders") != 0 && response.app().components_size() == 2;
    }));
    return response.app();
  }
  static bool Gets(QuordClient& monitor, const std::string& text) {
    monitor.Pump();
    monitor.traces.clear();
    return WaitFor([&] {
      monitor.Pump();
      for (const SeenTrace& trace : monitor.traces)
        if (trace.text == text) return true;
      return false;
    });
  }
  // Nothing comes while the application goes on.
  static bool IsSilent(QuordClient& monitor) {
    return WaitFor([&] {
      monitor.Pump();
      const std::uint64_t before = monitor.delivered;
      const unsigned round = Rounds();
      return WaitFor([&] { return Rounds() - round >= 60; }) &&
             (monitor.Pump(), monitor.delivered == before);
    });
  }
  std::atomic<unsigned>& m_rounds = Rounds();  // shared with every child from before its start
  QuordProcess quord;
};

TEST_F(Configuration, ASettingTakesEffectInTheRunningApplicationWithinAHundredMilliseconds) {
  quord.Start();
  QuordClient monitor, client(quord.SocketPath());
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  TracedChild app(TraceOn);
  const quor::wire::App seen = Seen(client);
  EXPECT_EQ(Instances(client, "orders"), 1u);
  EXPECT_EQ(seen.sink().type(), 1u);
  EXPECT_EQ(seen.sink().name(), "localhost");
  EXPECT_EQ(seen.components(0).categories(0).settings(), 7u);
  ASSERT_TRUE(Gets(monitor, "info"));
  ASSERT_TRUE(Gets(monitor, "error"));
  for (const SeenTrace& trace : monitor.traces) EXPECT_NE(trace.text, "verbose");
  const auto start = std::chrono::steady_clock::now();
  ASSERT_EQ(client.Ask(SubmitAllRequest(seen, 0x11)).error(), ERROR_NONE);
  ASSERT_TRUE(Gets(monitor, "verbose"));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
  ASSERT_EQ(client.Ask(SubmitAllRequest(seen, 0)).error(), ERROR_NONE);
  EXPECT_TRUE(IsSilent(monitor));
}

TEST_F(Configuration, SettingsSurviveACrashOfTheServiceWhileTheApplicationRuns) {
  quord.Start();
  QuordClient monitor, client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  TracedChild app(TraceOn);
  ASSERT_EQ(client.Ask(SubmitAllRequest(Seen(client), 0x11)).error(), ERROR_NONE);
  quord.Kill();
  quord.Start();
  ASSERT_TRUE(client.Connect(quord.SocketPath()));
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  EXPECT_EQ(Seen(client).components(0).categories(0).settings(), 0x11u);
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  EXPECT_TRUE(Gets(monitor, "verbose"));
}

TEST_F(Configuration, ANameThatComesLateTakesTheTracePointsAlong) {
  quord.Start();
  QuordClient monitor, client(quord.SocketPath());
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  TracedChild app([](TracedChild& self) {
    quor_application("early");
    QUOR_TRACE_INFO(connect_point, "before");
    self.AwaitGo();
    return TraceOn(self);
  });
  ASSERT_TRUE(monitor.Sees("before"));
  ASSERT_TRUE(
      WaitFor([&] { return client.Ask(GetAppRequest("early")).app().components_size() == 2; }));
  app.Go();
  const quor::wire::App seen = Seen(client);
  EXPECT_EQ(Instances(client, "orders"), 1u);
  // Of the points that were there before the name.
  ASSERT_EQ(client.Ask(SubmitAllRequest(seen, 0x11)).error(), ERROR_NONE);
  EXPECT_TRUE(Gets(monitor, "verbose"));
}

TEST_F(Configuration, WithTheLastInstanceAndHandleTheDefaultsReturn) {
  quord.Start();
  QuordClient client(quord.SocketPath()), holder(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  ASSERT_TRUE(holder.Hello(quor::wire::ROLE_CONFIGURE));
  {
    TracedChild app(TraceOn);
    ASSERT_EQ(client.Ask(SubmitAllRequest(Seen(client), 1)).error(), ERROR_NONE);
    ASSERT_EQ(holder.Ask(OpenAppRequest("orders")).error(), ERROR_NONE);
  }
  const auto settings = [&] {
    return client.Ask(GetAppRequest("orders")).app().components(0).categories(0).settings();
  };
  ASSERT_TRUE(quord.Says("has ended"));
  EXPECT_EQ(settings(), 1u);
  Request list;
  list.mutable_list_apps();
  EXPECT_EQ(client.Ask(list).app_names_size(), 1);
  holder.Close();
  EXPECT_TRUE(WaitFor([&] { return client.Ask(list).app_names_size() == 0; }));
  EXPECT_TRUE(WaitFor([&] { return settings() == 7u; }));
}

TEST_F(Configuration, AnApplicationThatStartsWhileItIsInForceReceivesIt) {
  quord.Start();
  QuordClient monitor, client(quord.SocketPath());
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  quor::wire::App seen;
  {
    TracedChild app(TraceOn);
    seen = Seen(client);
  }
  ASSERT_TRUE(quord.Says("has ended"));
  ASSERT_EQ(client.Ask(OpenAppRequest("orders")).error(), ERROR_NONE);
  ASSERT_EQ(client.Ask(SubmitAllRequest(seen, 0x11)).error(), ERROR_NONE);
  monitor.Pump();
  monitor.traces.clear();
  TracedChild app(TraceOn);
  EXPECT_TRUE(Gets(monitor, "verbose"));
}

TEST_F(Configuration, WhoDiedWhileNoServiceRanUsesNothingUpThatWasPrepared) {
  quord.Start();
  QuordClient monitor, client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  TracedChild dies(TraceOn);
  Seen(client);
  quord.Kill();
  dies.Kill();
  quord.Start();
  // The traces that it left are not taken before a monitor connects.
  ASSERT_TRUE(client.Connect(quord.SocketPath()));
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  const Response opened = client.Ask(OpenAppRequest("orders"));
  ASSERT_EQ(client.Ask(SubmitAllRequest(opened.app(), 0x11)).error(), ERROR_NONE);
  client.Close();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  ASSERT_TRUE(quord.Says("has ended"));
  TracedChild app(TraceOn);
  EXPECT_TRUE(Gets(monitor, "verbose"));
}

TEST_F(Configuration, AFileSinkIsWrittenByTheApplicationAndBackAtTheSocketNothingIsMissing) {
  quord.Start();
  QuordClient monitor, client(quord.SocketPath());
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  TracedChild app(TraceOn);
  Seen(client);
  ASSERT_TRUE(Gets(monitor, "info"));
  const std::string path = quord.Folder().File("orders.trc");
  ASSERT_EQ(client.Ask(SinkRequest("orders", 0, path, "flush=1;")).error(), ERROR_NONE);
  ASSERT_TRUE(WaitFor([&] { return ReadAll(path).find("info") != std::string::npos; }));
  EXPECT_TRUE(IsSilent(monitor));
  ASSERT_EQ(client.Ask(SinkRequest("orders", 1, "localhost", "node=x;")).error(), ERROR_NONE);
  EXPECT_TRUE(Gets(monitor, "info"));
  EXPECT_EQ(client.Ask(GetAppRequest("orders")).app().sink().options(), "node=x;");
  EXPECT_EQ(monitor.lost, 0u);
}

TEST_F(Configuration, MachinesThatWereASinkOnceMakeRoomForOthers) {
  quord.Start();
  QuordClient monitor, client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  TracedChild app([](TracedChild& self) {
    quor_application("orders");
    self.AwaitGo();
    QUOR_TRACE_INFO(connect_point, "home again");
    self.AwaitGo();
    return 0;
  });
  ASSERT_TRUE(WaitFor([&] { return Instances(client, "orders") != 0; }));
  for (int port = 1; port <= 80; ++port)
    ASSERT_EQ(client.Ask(SinkRequest("orders", 1, "127.0.0.1:" + std::to_string(port))).error(),
              ERROR_NONE);
  EXPECT_EQ(quord.Log().find("too many machines"), std::string::npos);
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  ASSERT_EQ(client.Ask(SinkRequest("orders", 1, "localhost")).error(), ERROR_NONE);
  app.Go();
  EXPECT_TRUE(monitor.Sees("home again"));
}

TEST_F(Configuration, AFileThatCannotBeWrittenIsReportedInTheStream) {
  quord.Start();
  QuordClient monitor, client(quord.SocketPath());
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  TracedChild app(TraceOn);
  Seen(client);
  ASSERT_EQ(client.Ask(SinkRequest("orders", 0, "/nonexistent/orders.trc")).error(), ERROR_NONE);
  ASSERT_TRUE(WaitFor([&] { return monitor.Pump(), !monitor.losses.empty(); }));
  EXPECT_NE(monitor.losses[0].find("/nonexistent/orders.trc"), std::string::npos)
      << monitor.losses[0];
}

TEST_F(Configuration, RolesAreEnforcedOnEveryRequest) {
  quord.Start();
  QuordClient monitor(quord.SocketPath()), forwarder(quord.SocketPath());
  ASSERT_TRUE(monitor.Hello(quor::wire::ROLE_MONITOR));
  Request list, subscribe, forward, nothing;
  list.mutable_list_apps();
  subscribe.mutable_subscribe();
  forward.mutable_forward()->set_stream(std::string(16, 'x'));
  for (const Request& request :
       {forward, OpenAppRequest("a"), GetAppRequest("a"), SinkRequest("a", 1, "x")})
    EXPECT_EQ(monitor.Ask(request).error(), quor::wire::ERROR_ACCESS);
  EXPECT_EQ(monitor.Ask(list).error(), ERROR_NONE);
  EXPECT_EQ(monitor.Ask(nothing).error(), quor::wire::ERROR_BAD_REQUEST);
  EXPECT_EQ(monitor.Ask(subscribe).error(), ERROR_NONE);
  EXPECT_EQ(monitor.Ask(subscribe).error(), quor::wire::ERROR_BAD_REQUEST);
  ASSERT_TRUE(forwarder.Hello(quor::wire::ROLE_FORWARD));
  EXPECT_EQ(forwarder.Ask(subscribe).error(), quor::wire::ERROR_ACCESS);
  EXPECT_EQ(forwarder.Ask(list).error(), quor::wire::ERROR_ACCESS);
}

TEST_F(Configuration, NothingIsSubmittedForAnApplicationThatNobodyHolds) {
  quord.Start();
  QuordClient client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  {
    TracedChild app(TraceOn);
    Seen(client);
  }
  ASSERT_TRUE(quord.Says("has ended"));
  EXPECT_EQ(client.Ask(SinkRequest("orders", 1, "x")).error(), quor::wire::ERROR_BAD_REQUEST);
  EXPECT_EQ(client.Ask(GetAppRequest("orders")).app().sink().name(), "localhost");
}

TEST_F(Configuration, AnApplicationThatIsNotRegisteredHasAnEmptyMapAndTheDefaultSink) {
  quord.Start();
  QuordClient client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  EXPECT_EQ(client.Ask(GetAppRequest("nobody")).error(), quor::wire::ERROR_UNKNOWN_APP);
  const Response opened = client.Ask(OpenAppRequest("nobody"));
  EXPECT_EQ(opened.error(), ERROR_NONE);
  EXPECT_EQ(opened.app().components_size(), 0);
  EXPECT_EQ(opened.app().sink().name(), "localhost");
  EXPECT_EQ(Instances(client, "nobody"), 0u);
}

}  // namespace
