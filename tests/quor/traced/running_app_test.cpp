// When an instance ends: its owner's death is the end of a lock, whatever descriptors say.
#include "quor/traced/running_app.h"

#include <sys/mman.h>
#include <sys/socket.h>

#include "quor/catalogue/catalogue_store.h"
#include "quor/link/link_socket.h"
#include "quor/ring/ring_producer.h"
#include "records/record_fields.h"
#include "support/traced_child.h"

namespace {

// The file of a segment.
class SegmentFile {
 public:
  SegmentFile() : m_file(memfd_create("segment", MFD_CLOEXEC)) {}
  ~SegmentFile() { close(m_file); }
  SegmentFile(const SegmentFile&) = delete;
  SegmentFile& operator=(const SegmentFile&) = delete;
  int Duplicate() const { return dup(m_file); }
  // In a child, on a descriptor of its own: only it and its copies hold the lock.
  SegmentMap Make() const {
    SegmentMap segment;
    const std::string path = "/proc/self/fd/" + std::to_string(m_file);
    EXPECT_TRUE(segment.Create({16, 4096, 1u << 20}, 1, 42, open(path.c_str(), O_RDWR)));
    return segment;
  }

 private:
  const int m_file;
};

class RunningAppTest : public testing::Test, public RunningApp::Host {
 protected:
  static void Trace(const SegmentMap& segment, int count) {
    RingProducer producer(segment);
    for (int i = 0; i < count; ++i) {
      RingProducer::Slot slot;
      EXPECT_TRUE(producer.Reserve(kTraceFixedBytes, slot));
      StoreRecord<AppNameId>(slot.record, {});
      producer.Commit(slot);
    }
  }

  // The service's side of an owner that has made its segment; its link, when it has one.
  AppArrival Arrival(const SegmentFile& file, pid_t pid, int link = -1) {
    AppArrival arrival{{}, {}, OwnedDescriptor(m_io), static_cast<std::uint32_t>(pid), {}};
    arrival.hello.app = "orders";
    const char* why = "";
    EXPECT_TRUE(arrival.segment.Open(file.Duplicate(), &why)) << why;
    if (link >= 0) arrival.socket.assign(link);
    return arrival;
  }
  std::shared_ptr<RunningApp> Make(AppArrival& arrival) {
    return std::make_shared<RunningApp>(m_io, *this, *m_catalogue.Enter("orders"), "here", arrival);
  }
  std::shared_ptr<RunningApp> Found(const SegmentFile& file, pid_t pid) {
    AppArrival arrival = Arrival(file, pid);
    auto app = Make(arrival);
    app->StartWithoutLink(false);
    return app;
  }
  // Runs all work that is ready until the condition holds.
  bool RunsUntil(const std::function<bool()>& condition) {
    return WaitFor([&] { return m_calls += m_io.poll(), condition(); });
  }
  // Runs until the lock was checked several times after a reason; `more`: some times more.
  bool RunsThroughLooks(bool more = false) {
    const std::size_t calls = m_calls + (more ? 8 : 5);
    return RunsUntil([&] { return m_calls >= calls; });
  }
  // Delivered and lost.
  std::uint64_t Serials() const {
    std::uint64_t sum = 0;
    for (const auto& source : m_hub.Sources()) sum += source->serial;
    return sum;
  }
  void ExpectTaken(std::uint64_t traces) {
    EXPECT_EQ(m_hub.Taken(), traces);
    EXPECT_EQ(Serials(), traces);
  }

  asio::io_context m_io;
  Hub m_hub;
  int m_ended = 0;
  std::size_t m_calls = 0;
  std::vector<std::size_t> m_entered;  // points at a time
  const SegmentFile m_file;

 private:
  CatalogueApp* EntryFor(const Account&, const std::string& name) override {
    return m_catalogue.Enter(name);
  }
  std::vector<std::uint32_t> EnterTraces(CatalogueApp&, const TracedPoints& points) override {
    m_entered.push_back(points.size());
    return std::vector<std::uint32_t>(points.size(), kNoTraceId);
  }
  std::uint32_t DefaultSettings() const override { return kDefaultSettings; }
  Hub& HubFor(const Account&, const LinkSink&) override { return m_hub; }
  void OnBegan(RunningApp&) override {}
  void OnRenamed(RunningApp&, CatalogueApp&, CatalogueApp&) override {}
  void OnEnded(RunningApp&) override { ++m_ended; }

  Catalogue m_catalogue{nullptr, kDefaultSettings};
};

// The two ends of a link.
struct Link {
  Link() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends), 0); }
  ~Link() { close(ends[0]); }
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;
  // Children hold copies of it.
  void Break() { shutdown(ends[0], SHUT_RDWR); }
  // What its owner sends when the service sleeps.
  void Call() { EXPECT_TRUE(SendOnLink(ends[0], EncodeCall())); }
  int ends[2] = {-1, -1};  // the application's and the service's, which the service closes
};

TEST_F(RunningAppTest, ACopyOfItsProcessThatHoldsTheLockKeepsItAndItsTraces) {
  Link link;
  TracedChild parent([this](TracedChild& self) {
    const SegmentMap segment = m_file.Make();
    self.Report(1);
    if (fork() != 0) return 0;
    self.AwaitGo();
    Trace(segment, 1000);
    self.Report(2);
    self.AwaitGo();
    Trace(segment, 500);
    _exit(0);
  });
  ASSERT_EQ(parent.Reported(), 1u);
  AppArrival arrival = Arrival(m_file, parent.Pid(), link.ends[1]);
  const auto app = Make(arrival);
  app->Start(std::move(arrival));
  EXPECT_EQ(parent.Wait(), 0);
  EXPECT_TRUE(RunsThroughLooks());
  EXPECT_EQ(m_ended, 0);
  parent.Go();
  EXPECT_EQ(parent.Reported(), 2u);
  link.Call();
  EXPECT_TRUE(RunsUntil([this] { return m_hub.Taken() == 1000; }));
  EXPECT_EQ(m_ended, 0);
  parent.Go();
  EXPECT_TRUE(RunsUntil([this] { return m_ended == 1; }));
  ExpectTaken(1500);
}

TEST_F(RunningAppTest, OneWhoseProcessCannotBeWatchedEndsWithItsLock) {
  TracedChild stranger([](TracedChild&) { return 0; });
  const pid_t gone = stranger.Pid();
  EXPECT_EQ(stranger.Wait(), 0);
  TracedChild owner([this](TracedChild& self) {
    const SegmentMap segment = m_file.Make();
    self.Report(1);
    self.AwaitGo();
    Trace(segment, 700);
    kill(getpid(), SIGKILL);
    return 0;
  });
  ASSERT_EQ(owner.Reported(), 1u);
  const auto app = Found(m_file, gone);
  EXPECT_TRUE(RunsThroughLooks(true));
  EXPECT_EQ(m_ended, 0);
  owner.Go();
  EXPECT_EQ(owner.Wait(), 1000 + SIGKILL);
  EXPECT_TRUE(RunsUntil([this] { return m_ended == 1; }));
  ExpectTaken(700);
}

TEST_F(RunningAppTest, TheEndOfItsLinkIsNotItsEnd) {
  Link first, second;
  TracedChild owner([this](TracedChild& self) {
    const SegmentMap segment = m_file.Make();
    self.Report(1);
    self.AwaitGo();
    Trace(segment, 300);
    self.Report(2);
    self.AwaitGo();
    Trace(segment, 50);
    return 0;
  });
  ASSERT_EQ(owner.Reported(), 1u);
  AppArrival arrival = Arrival(m_file, owner.Pid(), first.ends[1]);
  const auto app = Make(arrival);
  app->Start(std::move(arrival));
  first.Break();
  EXPECT_TRUE(RunsThroughLooks());
  EXPECT_EQ(m_ended, 0);
  owner.Go();
  EXPECT_EQ(owner.Reported(), 2u);
  app->Relink(Arrival(m_file, owner.Pid(), second.ends[1]));
  EXPECT_TRUE(RunsUntil([this] { return m_hub.Taken() == 300; }));
  EXPECT_EQ(m_ended, 0);
  owner.Go();
  EXPECT_EQ(owner.Wait(), 0);
  EXPECT_TRUE(RunsUntil([this] { return m_ended == 1; }));
  ExpectTaken(350);
}

// The number of a process in another namespace is another process here.
TEST_F(RunningAppTest, OneThatGoesByTheNumberOfAnotherProcessEndsWithItsLock) {
  Link link;
  const SegmentFile linked;
  const auto owns = [](const SegmentFile& file) {
    return [&file](TracedChild& self) {
      const SegmentMap segment = file.Make();
      self.Report(1);
      self.AwaitGo();
      Trace(segment, 30);
      return 0;
    };
  };
  TracedChild found(owns(m_file)), owner(owns(linked));
  ASSERT_EQ(found.Reported() + owner.Reported(), 2u);
  const pid_t another = getpid();
  const auto first = Found(m_file, another);
  AppArrival arrival = Arrival(linked, another, link.ends[1]);
  const auto second = Make(arrival);
  second->Start(std::move(arrival));
  link.Break();
  // The quick checks of the one that has lost its link are over.
  EXPECT_TRUE(RunsUntil([&] { return m_calls > 10; }));
  EXPECT_EQ(m_ended, 0);
  for (TracedChild* const child : {&found, &owner}) {
    child->Go();
    EXPECT_EQ(child->Wait(), 0);
  }
  EXPECT_TRUE(RunsUntil([this] { return m_ended == 2; }));
  ExpectTaken(60);
}

TEST_F(RunningAppTest, WhoHasALinkIsNotLookedAt) {
  Link link;
  TracedChild owner([this](TracedChild& self) {
    const SegmentMap segment = m_file.Make();
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  ASSERT_EQ(owner.Reported(), 1u);
  const auto app = Found(m_file, owner.Pid());
  app->Relink(Arrival(m_file, owner.Pid(), link.ends[1]));
  const auto quiet = [this] { return m_io.run_for(std::chrono::milliseconds(1500)) == 0; };
  // No work is left when it sleeps.
  EXPECT_TRUE(WaitFor(quiet));
  owner.Go();
  EXPECT_EQ(owner.Wait(), 0);
  EXPECT_TRUE(RunsUntil([this] { return m_ended == 1; }));
}

// Whatever its segment says, no trace is taken against the claim, and no other instance suffers.
TEST_F(RunningAppTest, OneThatHasClaimedItsRingItselfIsReadAfterItsEndOnly) {
  const SegmentFile other;
  const auto claims = [](const SegmentFile& file, std::uint32_t word) {
    return [&file, word](TracedChild& self) {
      const SegmentMap segment = file.Make();
      segment.Header()->claim = static_cast<RingClaim>(word);
      Trace(segment, 30);
      self.Report(1);
      self.AwaitGo();
      return 0;
    };
  };
  TracedChild writesAFile(claims(m_file, 1)), lies(claims(other, 77));
  ASSERT_EQ(writesAFile.Reported() + lies.Reported(), 2u);
  const auto first = Found(m_file, writesAFile.Pid()), second = Found(other, lies.Pid());
  // After the time for which a link is awaited.
  EXPECT_TRUE(RunsUntil([&] { return m_calls >= 6; }));
  EXPECT_EQ(m_hub.Taken(), 0u);
  for (TracedChild* const child : {&writesAFile, &lies}) {
    child->Go();
    EXPECT_EQ(child->Wait(), 0);
  }
  EXPECT_TRUE(RunsUntil([this] { return m_ended == 2; }));
  ExpectTaken(60);
}

// The reactor may give a wait an event of a descriptor that was closed in the same turn.
TEST_F(RunningAppTest, AReadinessThatWasMeantForAnEarlierDescriptorEndsNobody) {
  const auto owns = [](const SegmentFile& file) {
    return [&file](TracedChild& self) {
      const SegmentMap segment = file.Make();
      self.Report(1);
      self.AwaitGo();
      Trace(segment, 20);
      return 0;
    };
  };
  const SegmentFile earlier;
  TracedChild gone(owns(earlier)), owner(owns(m_file));
  ASSERT_EQ(gone.Reported() + owner.Reported(), 2u);
  std::shared_ptr<RunningApp> first = Found(earlier, gone.Pid()), second;
  int pipe[2];
  ASSERT_EQ(pipe2(pipe, O_CLOEXEC), 0);
  OwnedDescriptor before(m_io, pipe[0]);
  before.async_wait(OwnedDescriptor::wait_read, [&](const std::error_code&) {
    first->Stop();
    second = Found(m_file, owner.Pid());
  });
  EXPECT_EQ(m_io.poll(), 0u);
  // Both events come in one turn, in this order.
  EXPECT_EQ(write(pipe[1], "x", 1), 1);
  gone.Go();
  EXPECT_EQ(gone.Wait(), 0);
  m_io.poll();
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(m_io.run_for(std::chrono::milliseconds(100)), 0u) << "it has no reason to look";
  EXPECT_EQ(m_ended, 0);
  owner.Go();
  EXPECT_EQ(owner.Wait(), 0);
  EXPECT_TRUE(RunsUntil([this] { return m_ended == 1; }));
  ExpectTaken(20);
  close(pipe[1]);
}

// A segment may say that it has more than any library makes.
TEST_F(RunningAppTest, VeryManyPointsAreReadInPartsBetweenWhichOthersHaveTheirTurn) {
  SegmentMap segment;
  ASSERT_TRUE(segment.Create({50000, 4096, 4096}, 1, 42, m_file.Duplicate()));
  segment.Header()->pointCount.store(40000);
  const auto app = Found(m_file, getpid());
  EXPECT_EQ(m_entered, (std::vector<std::size_t>{16384}));
  EXPECT_TRUE(RunsUntil([&] { return m_entered.size() == 3; }));
  EXPECT_EQ(m_entered, (std::vector<std::size_t>{16384, 16384, 7232}));
  app->Stop();
}

}  // namespace
