// Peers that send false data, flood the service or have no access: each loses only its own
// connection.
#include <sys/mman.h>
#include <sys/stat.h>

#include <fstream>
#include <list>
#include <random>

#include "quor/link/link.h"
#include "quor/link/segment_folder.h"
#include "quor/listeners/local_listener.h"
#include "quor/ring/ring_producer.h"
#include "quor/ring/segment_map.h"
#include "quord_client.h"
#include "records/name_record.h"
#include "records/record_fields.h"

namespace {

using Bytes_t = std::vector<std::uint8_t>;

class Hostile : public ::testing::Test {
 protected:
  void SetUp() override {
    quord.Start();
    ASSERT_TRUE(witness.Monitor(quord.SocketPath()));
  }
  // Another connection saw nothing of it.
  void TearDown() override {
    Request request;
    request.mutable_pause();
    EXPECT_EQ(witness.Ask(request).error(), quor::wire::ERROR_NONE);
    witness.Close();
    EXPECT_EQ(quord.Stop(), 0);
  }
  bool IsEnded(QuordClient& client) {
    return WaitFor([&] { return client.Pump(), client.ended; });
  }
  // What the service answers to a link that begins with these bytes and descriptors.
  LinkFrame Greet(const Bytes_t& bytes, std::vector<int> descriptors) {
    const int socket = ConnectToService(quord.SocketPath().c_str());
    EXPECT_TRUE(
        SendOnLink(socket, bytes, descriptors.data(), static_cast<int>(descriptors.size())));
    LinkDecoder decoder;
    LinkFrame frame;
    bool got = false;
    EXPECT_TRUE(WaitFor([&] {
      std::uint8_t room[4096];
      const LinkReceived received = ReceiveOnLink(socket, room, sizeof room);
      const std::uint8_t* from = room;
      got = decoder.Feed(from, room + received.bytes, frame) == LinkDecoder::Result::Frame;
      return got || received.ended;
    }));
    EXPECT_TRUE(got);
    close(socket);
    return frame;
  }
  static LinkHello Named(const std::string& app) {
    LinkHello hello;
    hello.pid = static_cast<std::uint32_t>(getpid());
    hello.app = app;
    return hello;
  }
  QuordProcess quord;
  QuordClient witness;
};

TEST_F(Hostile, GarbageEndsThatConnectionWithAReasonInTheLog) {
  std::mt19937 random(7);
  for (int i = 0; i < 50; ++i) {
    QuordClient client(quord.SocketPath());
    Bytes_t bytes(5 + random() % 3000);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    bytes[0] = 0x7F;  // too long a frame, whatever comes
    client.SendRaw(bytes);
    ASSERT_TRUE(IsEnded(client));
  }
  EXPECT_TRUE(quord.Says("malformed: "));
}

TEST_F(Hostile, GarbageAfterTheWelcomeEndsThatConnection) {
  for (const Bytes_t& bytes : {Bytes_t{0, 0, 0, 0, 4}, Bytes_t{0xFF, 0xFF, 0xFF, 0xFF, 4},
                               Bytes_t{0, 0, 0, 3, 4, 0xFF, 0xFF}, Bytes_t{0, 0, 0, 1, 99},
                               Bytes_t{0, 0, 0, 1, 6}, Bytes_t{0, 0, 0, 1, 1}}) {
    QuordClient client(quord.SocketPath());
    ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
    client.SendRaw(bytes);
    EXPECT_TRUE(IsEnded(client));
  }
}

TEST_F(Hostile, AHugeHelloIsNotCollected) {
  QuordClient client(quord.SocketPath());
  client.SendRaw({0, 0x10, 0, 0, 1, 8});
  EXPECT_TRUE(IsEnded(client));
  EXPECT_TRUE(quord.Says("is too long"));
}

TEST_F(Hostile, AReplayedHelloEndsTheConnection) {
  QuordClient client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_MONITOR));
  quor::wire::Hello again;
  again.set_version(kProtocolVersion);
  again.set_role(quor::wire::ROLE_CONFIGURE);
  client.Send(FrameType::Hello, again);
  EXPECT_TRUE(IsEnded(client));
}

TEST_F(Hostile, AnUnknownVersionIsRefusedWithAReason) {
  QuordClient client(quord.SocketPath());
  EXPECT_FALSE(client.Hello(quor::wire::ROLE_MONITOR, 99));
  EXPECT_EQ(client.refused.code(), quor::wire::ERROR_VERSION);
  EXPECT_EQ(client.refused.text(), "version 99 of the protocol is not known here, only 1");
}

TEST_F(Hostile, WhoeverSaysNothingIsDisconnected) {
  const int silent = ConnectToService(quord.SocketPath().c_str());
  const int slow = ConnectToService(quord.SocketPath().c_str());
  EXPECT_TRUE(SendOnLink(slow, {0, 0, 0}));
  for (const int socket : {silent, slow}) {
    pollfd ready{socket, POLLIN, 0};
    EXPECT_EQ(poll(&ready, 1, 8000), 1);
    close(socket);
  }
  EXPECT_TRUE(quord.Says("it has sent no hello"));
}

TEST_F(Hostile, AForgedSegmentIsRefusedWithItsReason) {
  const int plain = memfd_create("x", MFD_CLOEXEC);
  EXPECT_EQ(ftruncate(plain, 1 << 20), 0);
  EXPECT_EQ(Greet(EncodeHello(Named("liar")), {plain}).refused.reason,
            "the segment has a wrong mark");
  EXPECT_EQ(Greet(EncodeHello(Named("liar")), {plain, plain}).refused.reason,
            "it brings more than its segment");
  EXPECT_EQ(Greet(EncodeHello(Named("liar")), {}).refused.reason, "its segment is not known here");
  LinkHello newer = Named("newer");
  newer.version = 9;
  EXPECT_EQ(Greet(EncodeHello(newer), {plain}).refused.reason,
            "version 9 of the link is not known here, only 2");
  close(plain);
}

TEST_F(Hostile, ASegmentThatContradictsItselfIsReadNoFurther) {
  // A segment for each case: the service may still write to one that it has just given up.
  SegmentMap points, ring, counts;
  for (SegmentMap* const segment : {&points, &ring, &counts})
    ASSERT_TRUE(segment->Create({64, 4096, 4096}, 1, 12345));
  const auto greet = [&](const SegmentMap& segment) {
    EXPECT_EQ(Greet(EncodeHello(Named("liar")), {segment.Descriptor()}).type, LinkType::Welcome);
  };
  points.Header()->pointCount.store(1000000);
  greet(points);
  EXPECT_TRUE(quord.Says("is read no further: its trace points contradict themselves"));
  const std::uint64_t tooLong = ring_word::Make(0, 1u << 20, false);
  reinterpret_cast<RingRecord*>(ring.Ring())->word.store(tooLong ^ ring.Layout().salt);
  greet(ring);
  EXPECT_TRUE(quord.Says("is read no further: its ring contradicts itself"));
  counts.Header()->served.store(~std::uint64_t{0});
  greet(counts);
  EXPECT_TRUE(quord.Says("is read no further: its count of traces is impossible"));
}

// Makes it again and again, as a runtime does whose link has ended.
TEST_F(Hostile, ASegmentThatIsReadNoFurtherIsReportedOnceAndItsLinkIsRefused) {
  SegmentMap broken;
  ASSERT_TRUE(broken.Create({64, 4096, 4096}, 1, 12345));
  RingProducer producer(broken);
  RingProducer::Slot slot;
  for (int i = 0; i < 8; ++i) {
    ASSERT_TRUE(producer.Reserve(kTraceFixedBytes, slot));
    StoreRecord<AppNameId>(slot.record, {});
    producer.Commit(slot);
  }
  // The last of them is longer than the ring.
  const auto at =
      static_cast<std::uint64_t>(reinterpret_cast<std::uint8_t*>(slot.header) - broken.Ring()) /
      kRingUnitBytes;
  slot.header->word.store(ring_word::Make(at, 1u << 20, false) ^ broken.Layout().salt);
  broken.Header()->dropped.store(5);
  EXPECT_EQ(Greet(EncodeHello(Named("broken")), {broken.Descriptor()}).type, LinkType::Welcome);
  EXPECT_TRUE(WaitFor([&] { return witness.Pump(), witness.lost != 0; }));
  EXPECT_EQ(witness.delivered, 7u);
  EXPECT_EQ(witness.lost, 6u);
  EXPECT_TRUE(quord.Says("has ended"));
  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(Greet(EncodeHello(Named("broken")), {broken.Descriptor()}).refused.reason,
              "its segment is not read any more");
  witness.Pump();
  ASSERT_EQ(witness.losses.size(), 1u);
  EXPECT_NE(witness.losses[0].find("what it traces is not read any more"), std::string::npos);
}

// A file beside the socket, which its owner has left where `segment` is closed.
void ShowFile(SegmentFolder& folder, const QuordProcess& quord, SegmentMap& segment) {
  ASSERT_TRUE(folder.Open(quord.SocketPath()));
  ASSERT_TRUE(segment.Create({64, 4096, 4096}, 1, 12345, folder.NewFile(1, 2)));
}

TEST_F(Hostile, AFinishedSegmentWithAnImpossibleCountStopsNoMonitor) {
  SegmentFolder folder;
  SegmentMap segment;
  ShowFile(folder, quord, segment);
  segment.Header()->served.store(std::uint64_t{1} << 57);
  segment.Header()->finished.store(SegmentEnd::Here);
  segment = SegmentMap();
  ASSERT_TRUE(folder.Show());
  EXPECT_TRUE(WaitFor([&] { return folder.Names().empty(); }, 8000));
  EXPECT_TRUE(quord.Says("is removed: its count of traces is impossible", 2000));
  QuordClient another;
  ASSERT_TRUE(another.Monitor(quord.SocketPath()));
  for (const auto& [instance, serial] : another.serials) EXPECT_LT(serial, std::uint64_t{1} << 56);
}

TEST_F(Hostile, ASegmentThatSaysItIsFinishedWhileItsOwnerLivesIsRead) {
  SegmentFolder folder;
  SegmentMap segment;
  ShowFile(folder, quord, segment);
  segment.Header()->finished.store(SegmentEnd::Here);
  RingProducer producer(segment);
  RingProducer::Slot slot;
  ASSERT_TRUE(producer.Reserve(kTraceFixedBytes, slot));
  StoreRecord<AppNameId>(slot.record, {});
  producer.Commit(slot);
  ASSERT_TRUE(folder.Show());
  EXPECT_TRUE(WaitFor([&] { return witness.Pump(), witness.delivered == 1; }));
}

// The heaps of the sanitizers keep freed memory for a while, on purpose.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(Hostile, WhatManyInstancesTookIsGivenBackWhenTheyHaveEnded) {
  constexpr std::uint32_t kInstances = 60, kNames = 1200, kPoints = 40;
  const auto heapKb = [&] {
    std::ifstream status("/proc/" + std::to_string(quord.Pid()) + "/status");
    for (std::string line; std::getline(status, line);)
      if (line.rfind("RssAnon:", 0) == 0) return std::stol(line.substr(8));
    return 0l;
  };
  std::list<SegmentMap> instances;
  for (std::uint32_t i = 0; i < kInstances; ++i) {
    SegmentMap& made = instances.emplace_back();
    ASSERT_TRUE(made.Create({64, 1u << 20, 4096}, 1 + i, 12345 + i));
    ASSERT_TRUE(made.NamesMemory().Reach(1u << 20));
    std::uint32_t used = 0;
    for (std::uint32_t id = 0; id < kNames; ++id)
      used += static_cast<std::uint32_t>(
          StoreNameBody(made.Names() + used, AppNameId(id),
                        std::to_string(i) + std::string(600, 'n') + std::to_string(id)));
    made.Header()->nameBytesUsed.store(used);
    for (std::uint32_t point = 0; point < kPoints; ++point)
      made.Points()[point].component = made.Points()[point].category = AppNameId(point + 1);
    made.Header()->pointCount.store(kPoints);
    ASSERT_EQ(Greet(EncodeHello(Named("many " + std::to_string(i))), {made.Descriptor()}).type,
              LinkType::Welcome);
  }
  ASSERT_TRUE(WaitFor([&] { return heapKb() > 40000; })) << heapKb();
  const long most = heapKb();
  instances.clear();
  EXPECT_TRUE(WaitFor([&] { return heapKb() < most / 2; })) << most << " " << heapKb();
}
#endif

TEST_F(Hostile, MoreTracesThanTheMachineCanHaveMadeAreNotBelievedToBeLost) {
  constexpr std::uint64_t kLie = std::uint64_t{1} << 44;
  const auto make = [] {
    auto segment = std::make_unique<SegmentMap>();
    EXPECT_TRUE(segment->Create({64, 4096, 4096}, 1, 12345));
    return segment;
  };
  auto pending = make(), record = make(), dropped = make(), sink = make();
  pending->Header()->pendingDrops.store(kLie);
  RingProducer producer(*record);
  // Each record may tell of 2^32 drops.
  for (RingProducer::Slot slot; producer.Reserve(kTraceFixedBytes, slot);) {
    StoreRecord<AppNameId>(slot.record, {});
    slot.header->drops = 0xFFFFFFFF;
    producer.Commit(slot);
  }
  record->Header()->pendingDrops.store(0);
  dropped->Header()->dropped.store(kLie);
  sink->Header()->sinkUnreported.store(kLie);
  for (auto* const segment : {&pending, &record, &dropped, &sink}) {
    SCOPED_TRACE(segment == &pending ? "pending" : segment == &record ? "record" : "the dead's");
    const std::size_t before = quord.Log().size();
    TracedChild owner([&](TracedChild& self) {
      const int descriptor = (*segment)->Descriptor();
      const int link = ConnectToService(quord.SocketPath().c_str());
      SendOnLink(link, EncodeHello(Named("liar")), &descriptor, 1);
      self.Report(1);
      return 0;
    });
    EXPECT_EQ(owner.Reported(), 1u);
    EXPECT_EQ(owner.Wait(), 0);
    segment->reset();  // the owner dies here
    EXPECT_TRUE(WaitFor([&] {
      return quord.Log().find("is read no further: its ring contradicts itself", before) !=
             std::string::npos;
    })) << quord.Log();
  }
  witness.Pump();
  EXPECT_LT(witness.lost, std::uint64_t{1} << 33);
  EXPECT_FALSE(witness.ended);
}

// A forwarder's connection on which a stream is open.
struct ForwardClient {
  ForwardClient(const std::string& path, const std::string& stream) : client(path) {
    EXPECT_TRUE(client.Hello(quor::wire::ROLE_FORWARD));
    Request request;
    request.mutable_forward()->set_stream(stream);
    request.mutable_forward()->set_machine("other");
    const Response answer = client.Ask(request);
    EXPECT_EQ(answer.error(), quor::wire::ERROR_NONE);
    EXPECT_EQ(answer.taken(), 0u);
  }
  void OneTrace() {
    Bytes_t body(1 + kTraceFixedBytes);
    body[0] = 11;
    client.SendRaw(EncodeFrame(FrameType::Data, body));
  }
  void Line(std::uint64_t serial, std::uint64_t delivered, std::uint64_t lost) {
    quor::wire::Ledger ledger;
    auto* const word = ledger.add_sources();
    word->set_instance(std::string(16, 'i'));
    word->set_serial(serial);
    word->set_delivered(delivered);
    word->set_lost(lost);
    client.Send(FrameType::Ledger, ledger);
  }
  QuordClient client;
};

TEST_F(Hostile, LossesThatAForwarderReportsAreCountedUpToACredibleLimit) {
  constexpr std::uint64_t kMost = std::uint64_t{1} << 55;
  ForwardClient first(quord.SocketPath(), std::string(16, 'a'));
  first.Line(0, 0, 0);
  first.Line(kMost, 0, kMost);
  ForwardClient second(quord.SocketPath(), std::string(16, 'b'));
  second.Line(2 * kMost, 0, 0);
  second.OneTrace();
  second.Line(2 * kMost + 1 - kMost, 1, 0);
  EXPECT_TRUE(quord.Says("tells of " + std::to_string(kMost) + " lost traces"));
  EXPECT_TRUE(WaitFor([&] { return witness.Pump(), witness.delivered == 1; }));
  EXPECT_LT(witness.lost, std::uint64_t{100'000'000'000});
  EXPECT_FALSE(witness.ended);
}

TEST_F(Hostile, AForwarderThatUsesAnothersIdsTouchesNothingOfIt) {
  const std::string stream(16, 's');
  TracedChild liar([&](TracedChild& self) {
    self.AwaitGo();
    ForwardClient client(quord.SocketPath(), stream);
    client.Line((std::uint64_t{1} << 56) - 1, 0, 0);
    self.Report(1);
    self.AwaitGo();
    return 0;
  });
  ForwardClient good(quord.SocketPath(), stream);
  good.OneTrace();
  good.Line(1, 1, 0);
  EXPECT_TRUE(WaitFor([&] { return witness.Pump(), witness.delivered == 1; }));
  liar.Go();
  ASSERT_EQ(liar.Reported(), 1u);
  // The honest forwarder continues its stream, and its counts are accepted.
  good.OneTrace();
  good.Line(5, 2, 3);
  EXPECT_TRUE(WaitFor([&] { return witness.Pump(), witness.delivered + witness.lost == 5; }));
  EXPECT_EQ(witness.delivered, 2u);
  good.client.Pump();
  EXPECT_FALSE(good.client.ended);
  liar.Go();
  EXPECT_EQ(liar.Wait(), 0);
}

TEST_F(Hostile, OfTwoConnectionsWithOneStreamTheLaterGoesOnAndTheFirstDoesNotDisturbIt) {
  const std::string stream(16, 's');
  ForwardClient first(quord.SocketPath(), stream);
  first.OneTrace();
  ForwardClient second(quord.SocketPath(), stream);
  second.OneTrace();
  Request request;
  request.mutable_list_apps();  // is answered after the trace
  EXPECT_EQ(second.client.Ask(request).error(), quor::wire::ERROR_ACCESS);
  first.Line(1, 1, 0);
  EXPECT_TRUE(IsEnded(first.client));
  EXPECT_TRUE(quord.Says("another connection goes on with its stream"));
  second.Line(1, 1, 0);
  EXPECT_TRUE(WaitFor([&] { return witness.Pump(), witness.delivered == 1; }));
  second.client.Pump();
  EXPECT_FALSE(second.client.ended);
}

TEST_F(Hostile, AForwarderThatLiesIsEndedAndNothingOfTheFrameWasTaken) {
  QuordClient client(quord.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_FORWARD));
  Request request;
  request.mutable_forward()->set_stream("short");
  EXPECT_EQ(client.Ask(request).error(), quor::wire::ERROR_BAD_REQUEST);
  request.mutable_forward()->set_stream(std::string(16, 's'));
  request.mutable_forward()->set_machine("other");
  EXPECT_EQ(client.Ask(request).error(), quor::wire::ERROR_NONE);
  Bytes_t body(1 + kTraceFixedBytes);
  body[0] = 11;
  client.SendRaw(EncodeFrame(FrameType::Data, body));
  quor::wire::Ledger ledger;  // tells of two traces where one came
  auto* const word = ledger.add_sources();
  word->set_instance(std::string(16, 'i'));
  word->set_serial(2);
  word->set_delivered(2);
  client.Send(FrameType::Ledger, ledger);
  EXPECT_TRUE(IsEnded(client));
  EXPECT_TRUE(quord.Says("a ledger does not count what came"));
  witness.Pump();
  EXPECT_TRUE(witness.traces.empty());
}

TEST_F(Hostile, AnotherUsersProcessIsRefused) {
  constexpr uid_t kNobody = 65534;
  if (geteuid() != 0) return;  // admission_test.cpp has what can be had without rights
  // The rights of folder and socket let everybody in, so that the peer check alone is left.
  ASSERT_EQ(chmod(quord.Folder().Path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(quord.SocketPath().c_str(), 0666), 0);
  const pid_t other = fork();
  if (other == 0) {
    if (setuid(kNobody) != 0) _exit(90);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    quord.SocketPath().copy(address.sun_path, sizeof address.sun_path - 1);
    if (connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) _exit(91);
    quor::wire::Hello hello;
    hello.set_version(kProtocolVersion);
    hello.set_role(quor::wire::ROLE_MONITOR);
    SendOnLink(socket, EncodeFrame(FrameType::Hello, hello.SerializeAsString()));
    pollfd ready{socket, POLLIN, 0};
    poll(&ready, 1, 10000);
    char byte;
    _exit(recv(socket, &byte, 1, 0) <= 0 ? 0 : 92);  // closed without an answer
  }
  EXPECT_EQ(WaitForExit(other), 0);
  EXPECT_TRUE(quord.Says("of user 65534 is refused: only the user of this service may connect"));
  chmod(quord.Folder().Path().c_str(), 0700);
}

TEST_F(Hostile, ASecondServiceIsRefusedAndALiveSocketNotTakenOver) {
  EXPECT_EQ(quord.Run({"--foreground"}), 1);
  EXPECT_EQ(quord.Run({}), 1);
  EXPECT_TRUE(
      quord.Says("quord is already running here (process " + std::to_string(quord.Pid()) + ")"));
  // Without the lock, somebody who answers at the socket is still not driven out.
  unlink(quord.Folder().File("quord.lock").c_str());
  EXPECT_EQ(quord.Run({"--foreground"}), 1);
  EXPECT_TRUE(quord.Says("another process answers there without the lock"));
}

TEST(LocalListener, AFolderThatOthersMayEnterIsRefused) {
  QuordProcess quord;
  chmod(quord.Folder().Path().c_str(), 0755);
  EXPECT_EQ(quord.Run({"--foreground"}), 1);
  EXPECT_TRUE(quord.Says("others may enter it"));
  chmod(quord.Folder().Path().c_str(), 0700);
}

TEST(LocalListener, ASocketThatADeadServiceLeftBehindIsReplaced) {
  QuordProcess quord;
  quord.Start();
  quord.Kill();
  EXPECT_EQ(access(quord.SocketPath().c_str(), F_OK), 0);
  quord.Start();
  EXPECT_EQ(quord.Stop(), 0);
}

}  // namespace
