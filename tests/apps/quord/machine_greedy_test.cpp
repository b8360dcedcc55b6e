// What one account uses up of the service of a machine costs only that account.
#include <filesystem>
#include <list>
#include <quor/quor.hpp>

#include "machine_fixture.h"
#include "quor/link/link.h"
#include "quor/link/segment_folder.h"
#include "quor/ring/segment_map.h"
#include "support/lingering_socket.h"

namespace {

QUOR_POINT(greedy_point, "Net", "Connect");

class MachineGreedy : public MachineFixture {
 protected:
  // In a process of an account: a segment that the service finds.
  bool Show(SegmentMap& segment, std::uint64_t random, bool isFinished = false) const {
    SegmentFolder folder;
    if (!folder.OpenOfMachine(Socket(), kMachineUid) ||
        !segment.Create({16, 4096, 4096}, random, random, folder.NewFile(random, random)))
      return false;
    if (isFinished) segment.Finish(SegmentEnd::Elsewhere);
    if (isFinished) segment = SegmentMap();  // its owner is gone
    return folder.Show();
  }
  std::unique_ptr<TracedChild> Holds(uid_t account, int segments) {
    return Program(account, [=, this](TracedChild& self) {
      std::list<SegmentMap> all;
      self.AwaitGo();
      for (int i = 0; i < segments; ++i)
        if (!Show(all.emplace_back(), static_cast<std::uint64_t>(i + 2))) return 1;
      self.Report(1);
      self.AwaitGo();
      return 0;
    });
  }
  std::size_t Files() const {
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator(Place() + "/segments"))
      ++files;
    return files;
  }
};

TEST_F(MachineGreedy, WhereDescriptorsAreShortNoSegmentIsRemovedAndAllAreReadLater) {
  if (!IsRoot()) return;  // there is one account
  const auto games = Holds(kGames, 100);
  const auto mail = Program(kMail, [](TracedChild& self) {
    self.AwaitGo();
    quor_application("shop");
    for (int i = 0; i < 50; ++i) QUOR_TRACE_INFO(greedy_point, "{}", i);
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  quord.Start({"--machine", "--user", "daemon"}, "prlimit --nofile=120:120");
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(Socket()));
  games->Go();
  EXPECT_EQ(games->Reported(), 1u);
  ASSERT_TRUE(quord.Says("is not read yet: Too many open files"));
  mail->Go();
  EXPECT_EQ(mail->Reported(), 1u);
  mail->Kill();     // its segment is all that is left of it
  usleep(1500000);  // the service has looked at it again, in vain
  EXPECT_EQ(Files(), 101u);
  games->Go();
  EXPECT_EQ(games->Wait(), 0);
  EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.Sum() == 50; })) << monitor.Sum();
  EXPECT_EQ(monitor.traces.size(), 50u);
}

// What one program leaves goes to another one of that account, and the third still waits.
TEST_F(MachineGreedy, ASegmentForWhichAnEndLeftNoRoomIsReadLater) {
  if (!IsRoot()) return;  // there is one account
  const auto first = Holds(kGames, 60), second = Holds(kGames, 80);
  const auto mail = Program(kMail, [](TracedChild& self) {
    self.AwaitGo();
    quor_application("shop");
    for (int i = 0; i < 50; ++i) QUOR_TRACE_INFO(greedy_point, "{}", i);
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  quord.Start({"--machine", "--user", "daemon"}, "prlimit --nofile=120:120");
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(Socket()));
  // The newest files are looked at first.
  for (TracedChild* const program : {first.get(), mail.get(), second.get()}) {
    program->Go();
    EXPECT_EQ(program->Reported(), 1u);
  }
  ASSERT_TRUE(quord.Says("is not read yet: Too many open files"));
  mail->Kill();
  first->Go();
  EXPECT_EQ(first->Wait(), 0);
  usleep(1500000);  // again in vain
  second->Go();
  EXPECT_EQ(second->Wait(), 0);
  EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.Sum() == 50; })) << monitor.Sum();
}

// They would take the places of the files whose counts another account's monitors still need.
TEST_F(MachineGreedy, RestsOfWhichNobodyLearnsAreBoundedAsWell) {
  if (!IsRoot()) return;  // there is one account
  const auto games = Program(kGames, [&](TracedChild& self) {
    SegmentMap segment;
    for (std::uint64_t i = 0; i < 1200; ++i)
      if (!Show(segment, i + 2, true)) return 1;
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  Start();
  EXPECT_EQ(games->Reported(), 1u);
  // They are kept for twelve seconds, but for those beyond the bound.
  EXPECT_TRUE(WaitFor([&] { return Files() <= 1024; }, 8000)) << Files();
  EXPECT_EQ(Files(), 1024u);
  games->Go();
  EXPECT_EQ(games->Wait(), 0);
}

// Whoever reads the bytes beside which such a descriptor came would close it, and wait.
TEST_F(MachineGreedy, ADescriptorThatDoesNotCloseHoldsUpNobody) {
  if (!IsRoot()) return;  // there is one account
  const auto games = Program(kGames, [&](TracedChild& self) {
    std::list<LingeringSocket> all(4);
    quor::wire::Hello hello;
    hello.set_version(kProtocolVersion);
    hello.set_role(quor::wire::ROLE_MONITOR);
    LinkHello link;
    const std::vector<std::uint8_t> client =
        EncodeFrame(FrameType::Hello, hello.SerializeAsString());
    const std::vector<std::uint8_t> whole = EncodeHello(link), strange(40, 0xFF), one(1, 0);
    std::vector<int> sockets;
    for (const auto* const bytes : {&client, &whole, &strange, &one}) {
      LingeringSocket& lingering = all.back();
      sockets.push_back(ConnectToService(Socket().c_str(), kMachineUid));
      const int number = lingering.Number();
      if (!SendOnLink(sockets.back(), *bytes, &number, 1)) return 1;
      lingering.Forget();
      all.splice(all.begin(), all, std::prev(all.end()));
    }
    self.Report(1);
    self.AwaitGo();
    for (const int socket : sockets) close(socket);
    self.Report(2);
    self.AwaitGo();
    return 0;
  });
  Start();
  const auto began = std::chrono::steady_clock::now();
  for (std::uint64_t step = 1; step <= 2; ++step) {
    EXPECT_EQ(games->Reported(), step);
    EXPECT_EQ(AsClient(kMail, [](QuordClient& client) { return Listed(client).empty() ? 0 : 1; }),
              0);
    games->Go();
  }
  EXPECT_EQ(games->Wait(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(60));
}

}  // namespace
