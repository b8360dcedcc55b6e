// Applications that end before anybody has connected to them, or while nobody can: what they traced
// is delivered all the same.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cstring>
#include <filesystem>
#include <quor/quor.hpp>

#include "quor/link/link.h"
#include "quor/link/segment_folder.h"
#include "quor/ring/segment_map.h"
#include "quord_client.h"
#include "support/swept_segments.h"

namespace {

QUOR_POINT(short_point, "Net", "Connect");

class ShortLives : public ::testing::Test {
 protected:
  static void Trace(int count) {
    for (int i = 0; i < count; ++i) QUOR_TRACE_INFO(short_point, "{}", i);
  }
  // One application after the other, each ending as `body` does.
  void Live(int apps, const std::function<void()>& body) {
    for (int i = 0; i < apps; ++i) {
      monitor.Beat();
      const pid_t pid = fork();
      if (pid == 0) {
        body();
        _exit(0);
      }
      ASSERT_GE(WaitForExit(pid), 0);
    }
  }
  void ExpectDelivered(std::uint64_t traces) {
    EXPECT_TRUE(WaitFor([&] { return monitor.Beat(), monitor.Pump(), monitor.Sum() >= traces; }))
        << monitor.Sum();
    EXPECT_EQ(monitor.delivered, traces);
    EXPECT_EQ(monitor.Sum(), traces);
  }
  // Nothing is left behind for which there is no owner any more.
  bool IsSwept() const {
    return WaitFor([&] { return AreSegmentsSwept(quord.SocketPath()); });
  }
  void StartWithMonitor() {
    quord.Start();
    ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  }
  QuordProcess quord;
  QuordClient monitor;
};

TEST_F(ShortLives, KilledOrEndedRightAfterItsTracesAnApplicationDeliversThem) {
  StartWithMonitor();
  Live(40, [] {
    Trace(5);
    kill(getpid(), SIGKILL);
  });
  Live(40, [] {
    Trace(5);
    _exit(0);
  });
  ExpectDelivered(400);
  EXPECT_TRUE(IsSwept());
}

// With the settings of its environment, which no service has told it.
TEST_F(ShortLives, KilledRightAfterItsFirstTraceItDeliversWhatItsEnvironmentSwitchedOn) {
  for (const bool serviceRuns : {false, true}) {
    if (serviceRuns) StartWithMonitor();
    TracedChild app([](TracedChild&) {
      setenv("QUOR_SETTINGS", "Net=developer", 1);
      QUOR_TRACE_AT(short_point, QUOR_INFO | QUOR_DEVELOPER, "for developers");
      return kill(getpid(), SIGKILL);
    });
    EXPECT_EQ(app.Wait(), 1000 + SIGKILL);
  }
  ExpectDelivered(4);
  std::vector<std::string> texts;
  for (const SeenTrace& trace : monitor.traces) texts.push_back(trace.component + " " + trace.text);
  const std::vector<std::string> each = {"Quor started with QUOR_SETTINGS=Net=developer",
                                         "Net for developers"};
  EXPECT_EQ(texts, (std::vector<std::string>{each[0], each[1], each[0], each[1]}));
}

TEST_F(ShortLives, AForkedChildThatTracesAndEndsAtOnceDeliversItsOwn) {
  StartWithMonitor();
  TracedChild parent([](TracedChild&) {
    quor_application("parent");
    Trace(1);
    for (int i = 0; i < 40; ++i) {
      const pid_t child = fork();
      if (child == 0) {
        Trace(3);
        _exit(0);
      }
      int status = 0;
      waitpid(child, &status, 0);
    }
    return 0;
  });
  EXPECT_EQ(parent.Wait(), 0);
  ExpectDelivered(121);
}

// The C library runs no handlers for it: it goes on as a part of its parent.
TEST_F(ShortLives, AChildThatWasMadePastTheCLibraryTracesAsItsParent) {
  StartWithMonitor();
  TracedChild parent([](TracedChild& self) {
    quor_application("parent");
    Trace(10);
    const auto child = static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0));
    if (child == 0) {
      Trace(20);
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    Trace(30);
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  ASSERT_EQ(parent.Reported(), 1u);
  ExpectDelivered(60);
  EXPECT_EQ(monitor.Count("parent"), 60u);
  parent.Go();
  EXPECT_EQ(parent.Wait(), 0);
  EXPECT_TRUE(IsSwept());
  EXPECT_EQ(monitor.lost, 0u);
}

TEST_F(ShortLives, WhileTheServiceStandsStillNothingOfThemIsLost) {
  StartWithMonitor();
  kill(quord.Pid(), SIGSTOP);
  // More than its listen queue holds.
  Live(600, [] { Trace(3); });
  kill(quord.Pid(), SIGCONT);
  ExpectDelivered(1800);
}

TEST_F(ShortLives, AThousandIdleConnectionsKeepNothingOfThemOut) {
  constexpr int kIdle = 1000;
  StartWithMonitor();
  std::vector<int> idle;
  for (int i = 0; i < kIdle; ++i) {
    int socket = -1;
    // The listen queue may be full for a moment.
    ASSERT_TRUE(WaitFor([&] {
      return (socket = ConnectToService(quord.SocketPath().c_str())) >= 0;
    })) << i
        << ": " << std::strerror(errno);
    idle.push_back(socket);
  }
  Live(100, [] { Trace(3); });
  TracedChild longer([](TracedChild& self) {
    Trace(1);
    self.Report(static_cast<std::uint64_t>(quor_flush(20000)));
    return 0;
  });
  EXPECT_EQ(longer.Reported(), 1u);  // this one had a link to the service
  ExpectDelivered(301);
  for (const int socket : idle) close(socket);
}

TEST_F(ShortLives, ThoseThatLivedWhileNoServiceRanAreDeliveredByTheNext) {
  StartWithMonitor();
  quord.Kill();
  Live(50, [] { Trace(4); });
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  ExpectDelivered(200);
  EXPECT_TRUE(IsSwept());
}

TEST_F(ShortLives, AServiceWhoseFolderIsRemovedMakesItAnewAndGoesOn) {
  StartWithMonitor();
  TracedChild app([](TracedChild& self) {
    quor_application("steady");
    Trace(5);
    self.Report(1);
    self.AwaitGo();
    Trace(5);
    return quor_flush(20000) == 1 ? 0 : 1;
  });
  ASSERT_EQ(app.Reported(), 1u);
  ASSERT_TRUE(monitor.Sees("4"));
  RemoveSegments(quord.Folder().Path());
  for (const char* const name : {"quord.sock", "quord.lock", "segments"})
    unlink(quord.Folder().File(name).c_str());
  EXPECT_TRUE(quord.Says("ready again on"));
  QuordClient client;
  EXPECT_TRUE(client.Connect(quord.SocketPath()));
  EXPECT_TRUE(client.Hello(quor::wire::ROLE_MONITOR));
  EXPECT_EQ(quord.Run({"--foreground"}), 1);  // the lock is held again
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  Live(3, [] { Trace(2); });
  ExpectDelivered(16);
}

TEST_F(ShortLives, AServiceThatCannotMakeItsFolderAnewEnds) {
  const std::string folder = quord.Folder().Path() + "/deep";
  mkdir(folder.c_str(), 0700);
  quord.Start({"--socket-dir", folder + "/sockets"});
  RemoveSegments(folder + "/sockets");
  std::filesystem::remove_all(folder);
  EXPECT_EQ(quord.Wait(), 0);
}

TEST_F(ShortLives, AnInstanceEndsWhenItsProcessBecomesAnotherProgram) {
  StartWithMonitor();
  TracedChild app([](TracedChild& self) {
    quor_application("before exec");
    Trace(7);
    self.Report(1);
    self.AwaitGo();
    execl("/bin/sleep", "sleep", "1000", nullptr);
    return 1;
  });
  ASSERT_EQ(app.Reported(), 1u);
  ASSERT_TRUE(monitor.Sees("6"));
  QuordClient client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  EXPECT_EQ(Instances(client, "before exec"), 1u);
  app.Go();
  EXPECT_TRUE(WaitFor([&] { return Instances(client, "before exec") == 0; }));
  EXPECT_EQ(ReadAll("/proc/" + std::to_string(app.Pid()) + "/comm"), "sleep\n");
  EXPECT_TRUE(IsSwept());
}

// As every daemon does; afterwards the numbers are the application's own.
TEST_F(ShortLives, AnApplicationThatClosesAllDescriptorsKeepsItsFilesAndIsTracedOn) {
  StartWithMonitor();
  const std::string path = quord.Folder().File("own");
  TracedChild app([&](TracedChild& self) {
    quor_application("daemon");
    Trace(10);
    quor_flush(20000);
    self.Report(1);
    self.AwaitGo();
    const int reported = dup2(self.ReportEnd(), 1000), go = dup2(self.GoEnd(), 1001);
    close_range(3, 999, 0);
    std::vector<int> own;
    // By the system's call: for a thread sanitizer the library's look at such a number is a race.
    for (int i = 0; i < 40; ++i)
      own.push_back(
          static_cast<int>(syscall(SYS_openat, AT_FDCWD, path.c_str(), O_RDWR | O_CREAT, 0600)));
    Trace(1000);
    quor_thread_name("renamed");
    static quor_point late = QUOR_POINT_INIT("Net", "Late");
    quor_trace(&late, QUOR_INFO, nullptr, 0, "late", 4);
    const pid_t child = fork();
    if (child == 0) {
      Trace(10);
      bool open = true;
      for (const int file : own) open = open && fcntl(file, F_GETFD) != -1;
      _exit(open ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const std::uint64_t good = status == 0 ? 1 : 0;
    if (write(reported, &good, sizeof good) != sizeof good) return 1;
    char byte;
    return read(go, &byte, 1) == 1 ? 0 : 1;
  });
  ASSERT_EQ(app.Reported(), 1u);
  QuordClient client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  app.Go();
  EXPECT_EQ(app.Reported(), 1u);
  ExpectDelivered(10 + 1000 + 1 + 10);
  // It is linked again, and receives settings.
  auto seen = client.Ask(OpenAppRequest("daemon")).app();
  EXPECT_NE(Instances(client, "daemon"), 0u) << quord.Log();
  EXPECT_EQ(client.Ask(SubmitAllRequest(seen, 0x1F)).error(), quor::wire::ERROR_NONE);
  app.Go();
  EXPECT_EQ(app.Wait(), 0);
  EXPECT_EQ(ReadAll(path), "");
  EXPECT_TRUE(IsSwept());
}

TEST_F(ShortLives, FilesThatAreNoSegmentsAreLeftOrRemovedAndHarmNobody) {
  SegmentFolder folder;
  ASSERT_TRUE(folder.Open(quord.SocketPath()));
  const std::string place = quord.Folder().File("segments/");
  const auto put = [&](const std::string& name, const std::string& bytes) {
    const int file = open((place + name).c_str(), O_RDWR | O_CREAT, 0600);
    EXPECT_EQ(write(file, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(file);
  };
  put("empty", "");
  put("short", "QUORSEG1");
  put("noise", std::string(1 << 20, 'x'));
  mkfifo((place + "pipe").c_str(), 0600);
  StartWithMonitor();
  EXPECT_TRUE(WaitFor([&] { return folder.Names() == std::vector<std::string>{"pipe"}; }));
  Live(1, [] { Trace(1); });
  ExpectDelivered(1);
}

// The file of a segment is cut off before the service reads it, while it does, and in its header.
TEST_F(ShortLives, ASegmentThatIsCutOffCostsItsApplicationOnly) {
  StartWithMonitor();
  for (const auto& [known, bytes] : {std::pair(false, 4096), std::pair(true, 4096), {true, 0}}) {
    TracedChild liar([&](TracedChild& self) {
      SegmentFolder own;
      SegmentMap segment;
      if (!own.Open(quord.SocketPath()) ||
          !segment.Create({16, 4096, 1u << 20}, 1, 42, own.NewFile(1, 2)))
        return 1;
      segment.Header()->reserved.store(ring_mark::Make(5000, 500));
      const int descriptor = segment.Descriptor();
      if (!known && ftruncate(descriptor, bytes) != 0) return 1;
      own.Show();
      self.Report(1);
      self.AwaitGo();
      return ftruncate(descriptor, bytes) == 0 ? 0 : 1;
    });
    ASSERT_EQ(liar.Reported(), 1u);
    const std::string pid = std::to_string(liar.Pid());
    EXPECT_TRUE(quord.Says(known ? "(" + pid + ") is here" : "segment " + pid));
    liar.Go();
    EXPECT_EQ(liar.Wait(), 0);
  }
  Live(1, [] { Trace(1); });
  EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.delivered == 1; }));
  EXPECT_FALSE(monitor.ended);
  EXPECT_TRUE(IsSwept());
}

}  // namespace
