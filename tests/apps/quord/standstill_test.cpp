// A service that stands still, stopped by a signal or with its whole machine, and goes on: nobody
// is taken for gone because of the time that it could not look, and nobody gives it up.
#include <quor/quor.hpp>

#include "quor/client/trace_thread.h"
#include "quor/service/service.h"
#include "quord_client.h"

namespace {

QUOR_POINT(still_point, "Net", "Connect");

class Standstill : public ::testing::Test {
 protected:
  // One after the other, as children of a process without a second thread.
  static int LiveTwenty(TracedChild& self) {
    self.AwaitGo();
    for (int i = 0; i < 20; ++i) {
      const pid_t pid = fork();
      if (pid == 0) {
        QUOR_TRACE_INFO(still_point, "{}", i);
        _exit(0);
      }
      if (WaitForExit(pid) != 0) return 1;
    }
    return 0;
  }
  static void StandStill(pid_t service, TracedChild* apps, int milliseconds) {
    kill(service, SIGSTOP);
    apps->Go();
    ASSERT_EQ(apps->Wait(), 0);
    poll(nullptr, 0, milliseconds);
    kill(service, SIGCONT);
  }
  QuordProcess quord;
};

TEST_F(Standstill, AMonitorThatSaidNothingMeanwhileIsKept) {
  ServiceOptions options;
  options.socketPath = quord.SocketPath();
  options.stateFolder = quord.Folder().File("state");
  options.tls.keysFolder = quord.KeysFolder();
  options.connectionLimits.silenceDeadline = std::chrono::milliseconds(1200);
  TracedChild service([&options](TracedChild&) {
    Service own(options);
    std::string why;
    if (!own.Open(&why)) return 1;
    own.Run();
    return 0;
  });
  TracedChild apps(LiveTwenty);
  QuordClient monitor, other;
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  StandStill(service.Pid(), &apps, 2000);
  // Its answer shows that the service has checked its clients since it continued.
  ASSERT_TRUE(other.Connect(quord.SocketPath()));
  ASSERT_TRUE(other.Hello(quor::wire::ROLE_MONITOR));
  EXPECT_TRUE(WaitFor([&] {
    monitor.Beat();
    monitor.Pump();
    return monitor.delivered == 20 || monitor.ended;
  }));
  EXPECT_FALSE(monitor.ended);
  EXPECT_EQ(monitor.delivered, 20u);
  // A silence of the monitor itself is still noticed.
  EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.ended; }));
  kill(service.Pid(), SIGTERM);
  EXPECT_EQ(service.Wait(), 0);
}

// For longer than a service of another machine may be silent.
TEST_F(Standstill, AClientWaitsForTheServiceOfItsMachineAndLosesNothing) {
  quord.Start();
  TracedChild apps(LiveTwenty);
  NameMap names;
  std::string why;
  TraceThread_i* const monitor = TraceThread_i::ConnectToTraceService("", names, &why);
  ASSERT_TRUE(monitor) << why;
  StandStill(quord.Pid(), &apps, 11500);
  EXPECT_TRUE(WaitFor([&] {
    while (monitor->HasTraces()) monitor->NextTrace()->Release();
    return monitor->GetCounts().delivered + monitor->GetCounts().lost >= 20;
  })) << quord.Log();
  EXPECT_EQ(monitor->GetCounts().delivered, 20u);
  EXPECT_EQ(monitor->GetCounts().lost, 0u);
  monitor->Disconnect();
}

}  // namespace
