// Applications that live and that no link comes from: their traces are taken all the same, by one
// taker, whenever a link comes after all.
#include <sys/mman.h>
#include <sys/resource.h>

#include <filesystem>
#include <quor/quor.hpp>
#include <random>

#include "quord_client.h"
#include "support/file_traces.h"
#include "support/folder_names.h"

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

QUOR_POINT(connect_point, "Net", "Connect");

constexpr int kWriters = 6, kRounds = 2;

enum class GivesUp { Descriptors, User, Root };

bool GiveUp(GivesUp what, const char* emptyFolder) {
  const rlimit none{0, 0};
  switch (what) {
    case GivesUp::User:
      return setgid(65534) == 0 && setuid(65534) == 0;
    case GivesUp::Root:
      return chroot(emptyFolder) == 0 && chdir("/") == 0;
    default:
      return setrlimit(RLIMIT_NOFILE, &none) == 0;
  }
}

class OutOfReach : public ::testing::Test {
 protected:
  void SetUp() override {
    quord.Start();
    ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  }
  void Pump() {
    monitor.Beat();
    monitor.Pump();
  }
  bool Comes(const std::function<bool()>& condition) {
    return WaitFor([&] { return Pump(), condition(); });
  }

  QuordProcess quord;
  QuordClient monitor;
};

int TraceAndGiveUp(TracedChild& self, GivesUp what, const std::string& emptyFolder) {
  quor_application("daemon");
  for (int i = 0; i < 100; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
  if (quor_flush(20000) != 1) return 1;
  self.Report(1);
  self.AwaitGo();
  self.Report(GiveUp(what, emptyFolder.c_str()) ? 1 : 0);
  // Traces until nothing is left by which the service could notice its end.
  for (int i = 100; i < 150; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
  self.AwaitGo();
  for (int i = 150; i < 200; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
  for (;;) pause();
}

TEST_F(OutOfReach, WhoHasGivenUpItsUserOrItsRootIsReadByTheNextServiceWhileItLives) {
  const std::string empty = quord.Folder().File("empty");
  std::filesystem::create_directory(empty);
  const bool mayAll = geteuid() == 0;
  std::vector<std::unique_ptr<TracedChild>> daemons;
  std::uint64_t traced = 0;
  for (const GivesUp what : {GivesUp::Descriptors, GivesUp::User, GivesUp::Root}) {
    daemons.push_back(std::make_unique<TracedChild>(
        [&](TracedChild& self) { return TraceAndGiveUp(self, what, empty); }));
    ASSERT_EQ(daemons.back()->Reported(), 1u);
    traced += 200;
  }
  ASSERT_TRUE(Comes([&] { return monitor.Sum() == 300; }));
  quord.Kill();
  std::uint64_t gaveUp = 0;
  for (const auto& daemon : daemons) daemon->Go();
  for (const auto& daemon : daemons) gaveUp += daemon->Reported();
  // Another user may give up no more than its descriptors: the others link again.
  EXPECT_EQ(gaveUp, mayAll ? 3u : 1u);
  quord.Start();
  ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  EXPECT_TRUE(Comes([&] { return monitor.Sum() == traced - 150; })) << monitor.Sum();
  for (const auto& daemon : daemons) daemon->Go();
  EXPECT_TRUE(Comes([&] { return monitor.Sum() == traced; })) << monitor.Sum();
  EXPECT_EQ(monitor.Count("daemon"), traced);
  EXPECT_EQ(quord.Log().find("has ended"), std::string::npos);
}

TEST_F(OutOfReach, WhoLosesItsLinkForGoodIsReadOnByTheSameService) {
  TracedChild daemon([](TracedChild& self) {
    quor_application("daemon");
    for (int i = 0; i < 100; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
    if (quor_flush(20000) != 1) return 1;
    // In this order, so that it cannot link again in between.
    if (!GiveUp(GivesUp::Descriptors, "")) return 2;
    for (int number = 3; number < 1024; ++number)
      if (number != self.GoEnd() && number != self.ReportEnd()) close(number);
    self.Report(1);
    self.AwaitGo();
    for (int i = 100; i < 200; ++i) QUOR_TRACE_INFO(connect_point, "{}", i);
    for (;;) pause();
  });
  ASSERT_EQ(daemon.Reported(), 1u);
  EXPECT_TRUE(quord.Says("is read without a link"));
  daemon.Go();
  EXPECT_TRUE(Comes([&] { return monitor.Sum() == 200; })) << monitor.Sum();
}

// What a writer has traced, in memory that it shares with the test.
struct Written {
  std::atomic<std::uint64_t> traces;
  std::atomic<bool> hearsSettings, ends;
};

int Write(Written& written, const std::string& name) {
  quor_application(name.c_str());
  for (std::uint64_t i = 0; !written.ends.load(); ++i) {
    QUOR_TRACE_INFO(connect_point, "{}/{}", name, i);
    written.traces.store(i + 1);
    written.hearsSettings.store(quor_on(&connect_point, QUOR_VERBOSE) != 0);
    if (i % 8 == 0) usleep(500);
  }
  // One that is ended while it writes its file has those traces there and in the ring.
  return quor_flush(20000) == 1 ? 0 : 1;
}

// The writers are stopped while they are ordered to write a file and while the service ends. They
// read that order before, while or after the next service begins to take without a link.
class LateOrders : public OutOfReach {
 protected:
  void SetUp() override {
    OutOfReach::SetUp();
    std::filesystem::create_directory(Files());
    void* const memory = mmap(nullptr, kWriters * sizeof(Written), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    m_written = static_cast<Written*>(memory);
    for (int i = 0; i < kWriters; ++i)
      m_writers.push_back(std::make_unique<TracedChild>(
          [this, i](TracedChild&) { return Write(m_written[i], Name(i)); }));
    for (int i = 0; i < kWriters; ++i)
      ASSERT_TRUE(Comes([&] { return m_written[i].traces.load() > 50; }));
  }
  std::string Files() const { return quord.Folder().File("files"); }
  static std::string Name(int i) { return "writer" + std::to_string(i); }
  void Order(QuordClient& client, int i, bool file) {
    const Request request = file ? SinkRequest(Name(i), 0, Files() + "/" + Name(i) + ".trc")
                                 : SinkRequest(Name(i), 1, "localhost");
    ASSERT_EQ(client.Ask(request).error(), quor::wire::ERROR_NONE);
  }
  void Restart() {
    QuordClient client(quord.SocketPath());
    ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
    for (const auto& writer : m_writers) kill(writer->Pid(), SIGSTOP);
    for (int i = 0; i < kWriters; ++i) {
      Order(client, i, true);
      // When it continues it reads both orders.
      if (m_random() % 2 == 0) Order(client, i, false);
    }
    if (m_random() % 2 == 0) {
      quord.Kill();
    } else {
      EXPECT_EQ(quord.Stop(), 0);
    }
    while (!monitor.ended && monitor.Socket() >= 0) monitor.Pump();
    quord.Start();
    ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  }
  void GoOn() {
    std::vector<Clock::time_point> at;
    for (int i = 0; i < kWriters; ++i)
      at.push_back(Clock::now() + milliseconds(i == 0 ? 10 : 1500 + m_random() % 2000));
    EXPECT_TRUE(Comes([&] {
      for (int i = 0; i < kWriters; ++i)
        if (at[i] <= Clock::now()) kill(m_writers[i]->Pid(), SIGCONT);
      return *std::max_element(at.begin(), at.end()) <= Clock::now();
    }));
    for (int i = 0; i < kWriters; ++i) EXPECT_TRUE(Links(i)) << i;
  }
  // Settings come over a link alone: one that gets the other ones has a link, and goes on tracing.
  bool Links(int i) {
    QuordClient client(quord.SocketPath());
    if (!client.Hello(quor::wire::ROLE_CONFIGURE)) return false;
    const bool wanted = !m_written[i].hearsSettings.load();
    const quor::wire::App app = client.Ask(OpenAppRequest(Name(i))).app();
    const std::uint32_t settings = wanted ? QUOR_INFO | QUOR_VERBOSE : QUOR_INFO;
    if (client.Ask(SubmitAllRequest(app, settings)).error() != quor::wire::ERROR_NONE) return false;
    if (!Comes([&] { return m_written[i].hearsSettings.load() == wanted; })) return false;
    const std::uint64_t before = m_written[i].traces.load();
    return Comes([&] { return m_written[i].traces.load() >= before + 300; });
  }

  std::random_device m_device;
  const unsigned m_seed = m_device();
  std::mt19937 m_random{m_seed};
  Written* m_written = nullptr;
  std::vector<std::unique_ptr<TracedChild>> m_writers;
};

TEST_F(LateOrders, EachTraceIsTakenOnceWhereverALinkComesBetween) {
  SCOPED_TRACE("seed " + std::to_string(m_seed));
  for (int round = 0; round < kRounds && !HasFatalFailure(); ++round) {
    Restart();
    GoOn();
  }
  EXPECT_NE(quord.Log().find("is read without a link"), std::string::npos);
  std::uint64_t traced = 0;
  for (int i = 0; i < kWriters; ++i) m_written[i].ends = true;
  for (int i = 0; i < kWriters; ++i) {
    EXPECT_EQ(m_writers[i]->Wait(), 0);
    traced += m_written[i].traces.load();
  }
  std::map<std::string, int> times;
  for (const std::string& name : NamesIn(Files())) {
    const FileTraces file = ReadTrc(Files() + "/" + name);
    EXPECT_TRUE(file.whole) << name;
    for (std::size_t i = 0; i < file.texts.size(); ++i)
      if (file.numbers[i] != kNoSequenceNumber) ++times[file.texts[i]];
  }
  const std::uint64_t inFiles = times.size();
  EXPECT_TRUE(Comes([&] { return inFiles + monitor.Sum() >= traced; }))
      << inFiles << " + " << monitor.Sum();
  EXPECT_EQ(inFiles + monitor.Sum(), traced);
  for (const SeenTrace& trace : monitor.traces)
    if (trace.component == "Net") ++times["Net/Connect: " + trace.text];
  std::uint64_t twice = 0;
  for (const auto& [text, count] : times) twice += count > 1;
  EXPECT_EQ(twice, 0u);
  EXPECT_GT(inFiles, 0u);
  munmap(m_written, kWriters * sizeof(Written));
}

}  // namespace
