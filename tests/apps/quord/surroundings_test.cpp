// A traced program inside a service of the service manager starts no trace service, and says so.
#include <sched.h>
#include <sys/mount.h>

#include <fstream>
#include <quor/quor.hpp>

#include "quord_client.h"

namespace {

QUOR_POINT(surrounded_point, "Net", "Connect");

class Surroundings : public ::testing::Test {
 protected:
  // From now on this process, which has one thread, is in that cgroup as far as it can see.
  static bool Enter(const std::string& file) {
    const uid_t uid = geteuid();
    if (uid != 0) {
      if (unshare(CLONE_NEWUSER) != 0) return false;
      std::ofstream("/proc/self/setgroups") << "deny";
      std::ofstream("/proc/self/uid_map") << uid << " " << uid << " 1";
    }
    const std::string seen = "/proc/" + std::to_string(getpid()) + "/cgroup";
    return unshare(CLONE_NEWNS) == 0 &&
           mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount(file.c_str(), seen.c_str(), nullptr, MS_BIND, nullptr) == 0;
  }
  // Reports 1 when its trace was taken by a service, and 0 when there is none.
  static int Trace(TracedChild& self, const std::string& file, const char* autostart,
                   unsigned milliseconds) {
    autostart ? setenv("QUOR_AUTOSTART", autostart, 1) : unsetenv("QUOR_AUTOSTART");
    setenv("QUOR_QUORD", getenv("QUORD"), 1);
    if (!Enter(file)) return 1;
    quor_application("orders");
    QUOR_TRACE_INFO(surrounded_point, "first");
    self.Report(static_cast<std::uint64_t>(quor_flush(milliseconds)));
    self.AwaitGo();
    return 0;
  }
  std::string Cgroup(const std::string& path) {
    const std::string file = quord.Folder().File("cgroup");
    std::ofstream(file) << "0::" << path << "\n";
    return file;
  }
  void SetUp() override { setenv("QUOR_CONFIG", quord.UsualConfig().c_str(), 1); }
  QuordProcess quord;
};

TEST_F(Surroundings, InsideAServiceNoneIsStartedAndTheNextOneHearsWhy) {
  const std::string file = Cgroup("/system.slice/orders.service");
  TracedChild app([&](TracedChild& self) { return Trace(self, file, nullptr, 1500); });
  ASSERT_EQ(app.Reported(), 0u);
  EXPECT_NE(access(quord.SocketPath().c_str(), F_OK), 0);
  EXPECT_EQ(quord.Run({"status"}), 3);
  // It tells as soon as it has a link, which is to be when the monitor listens.
  kill(app.Pid(), SIGSTOP);
  quord.Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  kill(app.Pid(), SIGCONT);
  EXPECT_TRUE(monitor.Sees(
      "no trace service was started: this program runs inside the service orders.service, with "
      "which it would end; enable quord.socket, or set QUOR_AUTOSTART=1"));
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
}

TEST_F(Surroundings, InASessionOrWhenItIsOrderedOneIsStarted) {
  const std::string session = Cgroup("/user.slice/user-1000.slice/session-3.scope");
  for (const bool ordered : {false, true}) {
    const std::string file = ordered ? Cgroup("/system.slice/orders.service") : session;
    TracedChild app(
        [&](TracedChild& self) { return Trace(self, file, ordered ? "1" : nullptr, 20000); });
    EXPECT_EQ(app.Reported(), 1u) << ordered;
    app.Go();
    EXPECT_EQ(app.Wait(), 0);
    EXPECT_EQ(quord.Run({"stop"}), 0) << quord.Log();
  }
}

}  // namespace
