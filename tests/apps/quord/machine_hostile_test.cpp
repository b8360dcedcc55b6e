// What an account may do to the service of a machine: nothing that others notice.
#include <fcntl.h>
#include <sys/resource.h>

#include <filesystem>
#include <list>
#include <quor/quor.hpp>

#include "machine_fixture.h"
#include "quor/link/link.h"
#include "quor/link/segment_folder.h"
#include "quor/ring/ring_producer.h"
#include "quor/ring/segment_names.h"
#include "records/name_record.h"
#include "records/record_fields.h"

namespace {

QUOR_POINT(witness_point, "Net", "Connect");

class MachineHostile : public MachineFixture {
 protected:
  std::string In(const std::string& name) const { return Place() + "/segments/" + name; }
  // In a process of an account: a segment that is not shown yet.
  static bool Make(SegmentFolder& folder, SegmentMap& segment, const std::string& socket,
                   std::uint64_t random = 2) {
    return folder.OpenOfMachine(socket, kMachineUid) &&
           segment.Create({16, 4096, 4096}, 1, random, folder.NewFile(1, random));
  }
  static void PutNames(SegmentMap& segment, const std::vector<std::string>& names) {
    std::uint32_t used = 0;
    for (std::size_t i = 0; i < names.size(); ++i)
      used += static_cast<std::uint32_t>(StoreNameBody(
          segment.Names() + used, AppNameId(static_cast<std::uint16_t>(i + 1)), names[i]));
    segment.Header()->nameBytesUsed.store(used);
  }
  static bool PutTrace(SegmentMap& segment, AppNameId pid) {
    RingProducer producer(segment);
    RingProducer::Slot slot;
    if (!producer.Reserve(kTraceFixedBytes, slot)) return false;
    RecordFieldsOf<AppNameId> fields;
    fields.pid = pid;
    fields.attributes = 1;
    StoreRecord(slot.record, fields);
    producer.Commit(slot);
    return true;
  }
  // The answer to a hello of this process.
  static std::string Greeted(const std::string& socket, LinkHello hello, int descriptor) {
    const int link = ConnectToService(socket.c_str(), kMachineUid);
    hello.app = "greeter";
    hello.pid = static_cast<std::uint32_t>(getpid());
    SendOnLink(link, EncodeHello(hello), &descriptor, descriptor >= 0 ? 1 : 0);
    LinkDecoder decoder;
    LinkFrame frame;
    std::uint8_t bytes[4096];
    const bool answered = WaitFor([&] {
      const LinkReceived got = ReceiveOnLink(link, bytes, sizeof bytes);
      const std::uint8_t* from = bytes;
      return got.ended ||
             decoder.Feed(from, bytes + got.bytes, frame) == LinkDecoder::Result::Frame;
    });
    close(link);
    if (!answered) return "nothing";
    return frame.type == LinkType::Refused ? frame.refused.reason : "welcome";
  }
  // A program of another account is traced and its settings are listed, as ever.
  void ExpectGoodService(const std::string& app) {
    const auto program = Program(kMail, [&app](TracedChild& self) {
      self.AwaitGo();
      quor_application(app.c_str());
      QUOR_TRACE_INFO(witness_point, "{} is here", app);
      self.AwaitGo();
      return 0;
    });
    QuordClient monitor;
    ASSERT_TRUE(monitor.Monitor(Socket()));
    program->Go();
    EXPECT_TRUE(monitor.Sees(app + " is here"));
    program->Go();
    EXPECT_EQ(program->Wait(), 0);
  }
  // So many descriptors. Its own user may change that.
  bool LetServiceHave(rlim_t descriptors) const {
    return RunAsAccount(kMachineUid, [&] {
             rlimit limit{};
             if (prlimit(quord.Pid(), RLIMIT_NOFILE, nullptr, &limit) != 0) return 1;
             limit.rlim_cur = descriptors;
             return prlimit(quord.Pid(), RLIMIT_NOFILE, &limit, nullptr) == 0 ? 0 : 2;
           }) == 0;
  }
  std::size_t FilesLeft() const {
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(In(""))) ++files;
    return files;
  }
};

TEST_F(MachineHostile, WithoutADescriptorLeftTheServiceRemovesNoSegment) {
  if (!IsRoot()) return;  // there is one account
  const auto killed = Program(kGames, [](TracedChild& self) {
    self.AwaitGo();
    quor_application("killed");
    for (int i = 0; i < 5; ++i) QUOR_TRACE_INFO(witness_point, "of the killed one {}", i);
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(Socket()));
  ASSERT_TRUE(LetServiceHave(3));
  killed->Go();
  ASSERT_EQ(killed->Reported(), 1u);
  EXPECT_TRUE(quord.Says("is not read yet: Too many open files"));
  killed->Kill();
  ASSERT_TRUE(LetServiceHave(1000));
  ExpectGoodService("other");  // its end makes the service look again
  EXPECT_TRUE(monitor.Sees("of the killed one 4"));
  EXPECT_EQ(monitor.lost, 0u);
}

TEST_F(MachineHostile, WhatIsNoSegmentIsRemovedAndSaidOnce) {
  if (!IsRoot()) return;  // there is one account
  Start();
  EXPECT_EQ(
      RunAsAccount(kGames,
                   [&] {
                     const auto show = [&](const char* name) {
                       return rename(In(std::string(".") + name).c_str(), In(name).c_str());
                     };
                     const auto file = [&](const char* name, mode_t mode, off_t size) {
                       const int made = open(In(std::string(".") + name).c_str(),
                                             O_CREAT | O_RDWR | O_CLOEXEC, 0600);
                       return made >= 0 && ftruncate(made, size) == 0 && fchmod(made, mode) == 0 &&
                              close(made) == 0;
                     };
                     if (symlink("/etc/passwd", In(".link").c_str()) != 0) return 1;
                     if (mkfifo(In(".pipe").c_str(), 0660) != 0) return 2;
                     if (mkdir(In(".folder").c_str(), 0770) != 0) return 3;
                     if (!file("open", 0666, 8192) || !file("closed", 0600, 8192)) return 4;
                     if (!file("tiny", 0660, 1) || !file("zero", 0660, 1 << 20)) return 5;
                     if (!file("huge", 0660, off_t{1} << 40)) return 6;
                     if (!file("twice", 0660, 8192)) return 7;
                     if (link(In(".twice").c_str(), In(".second").c_str()) != 0) return 8;
                     for (const char* const name : {"link", "pipe", "folder", "open", "closed",
                                                    "tiny", "zero", "huge", "twice"})
                       if (show(name) != 0) return 9;
                     return 0;
                   }),
      0);
  EXPECT_TRUE(WaitFor([&] { return FilesLeft() == 1; })) << FilesLeft();
  EXPECT_TRUE(quord.Says("account games has made a segment that is not read: "));
  const std::string log = quord.Log();
  EXPECT_EQ(log.find("has made a segment"), log.rfind("has made a segment"));
  ExpectGoodService("after");
}

TEST_F(MachineHostile, FilesThatChangeTheirSizeUnderItHurtNobody) {
  if (!IsRoot()) return;  // there is one account
  const auto games = Program(kGames, [&](TracedChild& self) {
    std::list<SegmentMap> segments;
    for (std::uint64_t i = 0; i < 4; ++i) {
      SegmentFolder folder;
      SegmentMap& segment = segments.emplace_back();
      if (!Make(folder, segment, Socket(), i + 2) || !PutTrace(segment, AppNameId{0})) return 1;
      if (!folder.Show()) return 2;
    }
    self.Report(1);
    self.AwaitGo();
    off_t size = 0;
    for (SegmentMap& segment : segments) {
      if (ftruncate(segment.Descriptor(), size) != 0) return 3;
      size = size == 0 ? 4096 : size * 64;
      segment.Abandon();
    }
    self.Report(2);
    self.AwaitGo();
    return 0;
  });
  Start();
  EXPECT_EQ(games->Reported(), 1u);
  ASSERT_TRUE(quord.Says("application games/application"));
  games->Go();
  EXPECT_EQ(games->Reported(), 2u);
  ExpectGoodService("while they are cut");
  games->Go();
  EXPECT_EQ(games->Wait(), 0);
  ExpectGoodService("after");
  EXPECT_EQ(quord.Stop(), 0);
}

TEST_F(MachineHostile, AProgramCannotPretendAnotherAccount) {
  if (!IsRoot()) return;  // there is one account
  const auto games = Program(kGames, [&](TracedChild& self) {
    self.AwaitGo();
    SegmentFolder folder;
    SegmentMap segment;
    if (!Make(folder, segment, Socket())) return 1;
    PutNames(segment, {"4711 mail", "mail/shop", "a\nmail\x7f", ""});
    segment.Header()->pidName = AppNameId{1};
    segment.Header()->appName = AppNameId{2};
    for (std::uint16_t pid = 0; pid < 6; ++pid)
      if (!PutTrace(segment, AppNameId{pid})) return 2;
    if (!folder.Show()) return 3;
    self.AwaitGo();
    return 0;
  });
  Start();
  QuordClient monitor;
  ASSERT_TRUE(monitor.Monitor(Socket()));
  games->Go();
  ASSERT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.traces.size() == 6; }))
      << monitor.traces.size();
  std::set<std::string> pids;
  for (const SeenTrace& trace : monitor.traces) pids.insert(trace.pid);
  EXPECT_EQ(pids, std::set<std::string>{std::to_string(games->Pid()) + " games"});
  QuordClient client;
  ASSERT_TRUE(client.Connect(Socket()) && client.Hello(quor::wire::ROLE_CONFIGURE));
  EXPECT_EQ(Listed(client), "games/mail/shop 1 games\n");
  games->Go();
  EXPECT_EQ(games->Wait(), 0);
}

TEST_F(MachineHostile, AHelloWithTheMemoryOfAnotherAccountIsRefused) {
  if (!IsRoot()) return;  // there is one account
  const auto mail = Program(kMail, [&](TracedChild& self) {
    SegmentFolder folder;
    SegmentMap segment;
    if (!Make(folder, segment, Socket()) || !folder.Show()) return 1;
    self.Report(segment.Device());
    self.Report(segment.Inode());
    self.AwaitGo();
    return 0;
  });
  Start();
  LinkHello ofMail;
  ofMail.device = mail->Reported();
  ofMail.inode = mail->Reported();
  ASSERT_TRUE(quord.Says("application mail/application"));
  SegmentMap ofRoot;
  ASSERT_TRUE(ofRoot.Create({16, 4096, 4096}, 1, 7));
  for (const bool brings : {false, true})
    EXPECT_EQ(RunAsAccount(kGames,
                           [&] {
                             const std::string answer =
                                 Greeted(Socket(), ofMail, brings ? ofRoot.Descriptor() : -1);
                             EXPECT_EQ(answer, "its segment is another account's");
                             return testing::Test::HasFailure() ? 1 : 0;
                           }),
              0);
  mail->Go();
  EXPECT_EQ(mail->Wait(), 0);
}

TEST_F(MachineHostile, ALeaseOnAFileDoesNotHoldItUp) {
  if (!IsRoot()) return;  // there is one account
  const auto games = Program(kGames, [&](TracedChild& self) {
    signal(SIGIO, SIG_IGN);
    int leased = -1;
    {
      SegmentMap segment;
      if (!segment.Create({16, 4096, 4096}, 1, 7)) return 1;
      const std::string name = "/proc/self/fd/" + std::to_string(segment.Descriptor());
      leased = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    }
    if (leased < 0 || fcntl(leased, F_SETLEASE, F_RDLCK) != 0) return 2;
    const std::string answer = Greeted(Socket(), {}, leased);
    if (answer == "welcome" || answer == "nothing") return 3;
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  Start();
  const auto began = std::chrono::steady_clock::now();
  EXPECT_EQ(games->Reported(), 1u);
  ExpectGoodService("beside a lease");
  // The kernel waits 45 seconds for the holder of a lease.
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(30));
  games->Go();
  EXPECT_EQ(games->Wait(), 0);
}

TEST_F(MachineHostile, ClientsOfAnAccountAreBoundedAndOthersStillGetIn) {
  if (!IsRoot()) return;  // there is one account
  const auto games = Program(kGames, [&](TracedChild& self) {
    std::list<QuordClient> clients;
    for (int i = 0; i < 32; ++i)
      if (!clients.emplace_back().Connect(Socket()) ||
          !clients.back().Hello(quor::wire::ROLE_MONITOR))
        return 1;
    QuordClient another;
    if (another.Connect(Socket()) && another.Hello(quor::wire::ROLE_MONITOR)) return 2;
    self.Report(1);
    self.AwaitGo();
    clients.pop_back();
    return WaitFor(
               [&] { return another.Connect(Socket()) && another.Hello(quor::wire::ROLE_MONITOR); })
               ? 0
               : 3;
  });
  Start();
  EXPECT_EQ(games->Reported(), 1u);
  EXPECT_TRUE(quord.Says("account games has 32 clients: further ones are refused"));
  EXPECT_EQ(AsClient(kMail, [](QuordClient&) { return 0; }), 0);
  games->Go();
  EXPECT_EQ(games->Wait(), 0);
}

TEST_F(MachineHostile, InstancesOfAnAccountAreBoundedAndOthersStillAreTraced) {
  if (!IsRoot()) return;  // there is one account
  rlimit files{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &files), 0);
  files.rlim_cur = files.rlim_max;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &files), 0);
  const auto games = Program(kGames, [&](TracedChild& self) {
    std::list<SegmentMap> segments;
    for (std::uint64_t i = 0; i < 1030; ++i) {
      SegmentFolder folder;
      if (!Make(folder, segments.emplace_back(), Socket(), i + 2) || !folder.Show()) return 1;
    }
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  Start();
  EXPECT_EQ(games->Reported(), 1u);
  EXPECT_TRUE(quord.Says("account games has 1024 running applications: further ones are refused"));
  QuordClient client;
  ASSERT_TRUE(client.Connect(Socket()) && client.Hello(quor::wire::ROLE_CONFIGURE));
  EXPECT_TRUE(WaitFor([&] { return Instances(client, "games/application") == 1024; }));
  EXPECT_TRUE(WaitFor([&] { return FilesLeft() == 1024; })) << FilesLeft();
  ExpectGoodService("beside a thousand");
  games->Go();
  EXPECT_EQ(games->Wait(), 0);
  EXPECT_TRUE(WaitFor([&] { return Instances(client, "games/application") == 0; }));
}

}  // namespace
