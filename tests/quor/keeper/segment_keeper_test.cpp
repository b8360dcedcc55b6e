// What the keeper holds while no service is there.
#include "quor/keeper/segment_keeper.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "quor/ring/ring_producer.h"
#include "quor/ring/segment_map.h"
#include "support/temp_dir.h"
#include "support/wait_for.h"

namespace {

// A process with a segment, as the service knows it.
class HeldApp {
 public:
  HeldApp() {
    m_segment.Create({16, 4096, 1u << 20}, 1, 42);
    m_pid = fork();
    if (m_pid == 0)
      for (;;) pause();
    process = Descriptor(static_cast<int>(syscall(SYS_pidfd_open, m_pid, 0u)));
  }
  ~HeldApp() { End(); }
  void End() {
    if (m_pid <= 0) return;
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
    m_pid = 0;
  }
  void Trace() {
    RingProducer ring(m_segment, -1);
    RingProducer::Slot slot;
    ASSERT_TRUE(ring.Reserve(100, slot));
    ring.Commit(slot);
  }
  std::uint64_t KeepIn(SegmentKeeper& keeper, const std::string& name) {
    return keeper.Keep(name, static_cast<std::uint32_t>(m_pid), m_segment.Descriptor(), event.Get(),
                       process.Get());
  }
  Descriptor event{eventfd(0, EFD_CLOEXEC)}, process;

 private:
  SegmentMap m_segment;
  pid_t m_pid = 0;
};

class KeeperTest : public ::testing::Test {
 protected:
  // The next service; the one before has gone.
  std::vector<KeptApp> Restart() {
    m_keeper = std::make_unique<SegmentKeeper>();
    return m_keeper->Open(m_folder.Path());
  }
  bool IsThere() const { return access(m_folder.File("keeper.sock").c_str(), F_OK) == 0; }
  Descriptor Dial() const {
    Descriptor peer(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    m_folder.File("keeper.sock").copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(connect(peer.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    return peer;
  }
  TempDir m_folder;
  std::unique_ptr<SegmentKeeper> m_keeper;
};

TEST_F(KeeperTest, TheNextServiceGetsWhatWasKeptAndNotWhatWasForgotten) {
  HeldApp one, two, three;
  EXPECT_TRUE(Restart().empty());
  const std::uint64_t first = one.KeepIn(*m_keeper, "one");
  two.KeepIn(*m_keeper, "two");
  const std::uint64_t third = three.KeepIn(*m_keeper, "three");
  m_keeper->Forget(first);
  m_keeper->Rename(third, "four", 4, three.event.Get(), three.event.Get(), three.process.Get());
  const std::vector<KeptApp> held = Restart();
  ASSERT_EQ(held.size(), 2u);
  EXPECT_EQ(held[0].app, "two");
  EXPECT_EQ(held[1].app, "four");
  EXPECT_EQ(held[1].pid, 4u);
  SegmentMap segment;
  const char* why = "";
  EXPECT_TRUE(segment.Open(dup(held[0].segment.Get()), &why)) << why;
  // Numbers go on behind those that are in use.
  EXPECT_GT(one.KeepIn(*m_keeper, "one"), third);
}

TEST_F(KeeperTest, WhoeverHasEndedWithSomethingLeftIsHeldAndWithNothingLeftIsNot) {
  HeldApp full, empty;
  Restart();
  full.KeepIn(*m_keeper, "full");
  empty.KeepIn(*m_keeper, "empty");
  full.Trace();
  m_keeper.reset();
  full.End();
  empty.End();
  // It looks now and then; the next service sees what it found.
  ASSERT_TRUE(WaitFor([&] {
    const std::vector<KeptApp> held = Restart();
    const bool one = held.size() == 1 && held[0].app == "full";
    m_keeper.reset();
    poll(nullptr, 0, one ? 0 : 600);
    return one;
  }));
  EXPECT_TRUE(IsThere());
}

TEST_F(KeeperTest, ItEndsWithTheLastServiceWhenItHoldsNothing) {
  Restart();
  EXPECT_TRUE(IsThere());
  m_keeper.reset();
  EXPECT_TRUE(WaitFor([&] { return !IsThere(); }));
  EXPECT_TRUE(Restart().empty());
  EXPECT_TRUE(IsThere());
}

TEST_F(KeeperTest, ABadMessageEndsThatConnectionAndWhatIsHeldStays) {
  HeldApp app;
  Restart();
  app.KeepIn(*m_keeper, "orders");
  for (const std::string& message :
       {std::string("x"), std::string(24, '\0'), std::string(4000, 'g')}) {
    m_keeper.reset();
    const Descriptor peer = Dial();
    KeeperWord word{};
    KeptApp held;
    do {
      ASSERT_TRUE(ReceiveKeeperWord(peer.Get(), &word, &held));
    } while (word != KeeperWord::End);
    ASSERT_GT(send(peer.Get(), message.data(), message.size(), MSG_NOSIGNAL), 0);
    EXPECT_FALSE(ReceiveKeeperWord(peer.Get(), &word, &held));
    EXPECT_EQ(Restart().size(), 1u);
  }
}

}  // namespace
