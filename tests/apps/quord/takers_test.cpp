// Clients that pass traces on and confirm them, killed and coming back, at a real service.
#include <atomic>
#include <quor/quor.hpp>
#include <random>
#include <set>

#include "machine_fixture.h"
#include "quor/client/taker/taker.h"
#include "taking_client.h"

namespace {

QUOR_POINT(taken_point, "Net", "Taken");

const std::string kId(16, 't');

class QuordTakers : public ::testing::Test {
 protected:
  // An application that traces "0", "1" ... up to `traces`, with short pauses.
  static std::unique_ptr<TracedChild> Numbers(int traces) {
    return std::make_unique<TracedChild>([traces](TracedChild& self) {
      quor_application("numbers");
      self.AwaitGo();
      for (int i = 0; i < traces; ++i) {
        QUOR_TRACE_INFO(taken_point, "{}", i);
        if (i % 500 == 0) poll(nullptr, 0, 5);
      }
      return quor_flush(20000) == 1 ? 0 : 1;
    });
  }
  // The stored lines by number; one that came twice is the same.
  std::map<std::uint64_t, std::string> Stored() {
    std::map<std::uint64_t, std::string> stored;
    std::ifstream file(StorePath());
    for (std::string line; std::getline(file, line);) {
      const auto [place, isNew] = stored.try_emplace(std::stoull(line), line);
      EXPECT_EQ(place->second, line);
      m_again += isNew ? 0 : 1;
    }
    return stored;
  }
  // A client in a process of its own: stores, then confirms, until it is killed.
  std::unique_ptr<TracedChild> Client(bool begins) {
    return std::make_unique<TracedChild>([this, begins](TracedChild& self) {
      TakingClient client;
      client.store = open(StorePath().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
      if (!client.Connect(quord.SocketPath())) return 1;
      if (client.Take(kId, begins).error() != quor::wire::ERROR_NONE) return 2;
      self.Report(1);
      for (std::uint64_t said = client.received; !client.ended;) {
        client.Pump();
        // Not each time, so that much is under way when it is killed.
        if (client.received > said + 3) client.SendTaken(said = client.received - 2);
        poll(nullptr, 0, 1);
      }
      return 3;
    });
  }
  std::string StorePath() const { return quord.Folder().File("stored"); }

  QuordProcess quord;
  unsigned m_again = 0;
};

TEST_F(QuordTakers, AClientThatIsKilledAgainAndAgainLosesNothing) {
  quord.Start();
  constexpr int kTraces = 30000;
  const auto app = Numbers(kTraces);
  std::mt19937 random(18);
  auto client = Client(true);
  ASSERT_EQ(client->Reported(), 1u);
  app->Go();
  for (int kill = 0; kill < 12; ++kill) {
    poll(nullptr, 0, static_cast<int>(random() % 60));
    client->Kill();
    client = Client(false);
    ASSERT_EQ(client->Reported(), 1u);
  }
  EXPECT_EQ(app->Wait(), 0);
  const auto last = "," + std::to_string(kTraces - 1) + ",";
  ASSERT_TRUE(WaitFor([&] {
    std::ifstream file(StorePath());
    const std::string all{std::istreambuf_iterator<char>(file), {}};
    return all.find(last) != std::string::npos;
  }));
  client->Kill();
  std::uint64_t serial = 0, next = 0, expected = 1;
  for (const auto& [number, line] : Stored()) {
    EXPECT_EQ(number, expected++);
    std::istringstream words(line);
    std::string skip, texts;
    std::uint64_t to = 0, delivered = 0, lost = 0;
    words >> skip >> skip >> to >> delivered >> lost >> texts;
    if (delivered + lost == 0) continue;
    EXPECT_EQ(to - delivered - lost, serial);
    serial = to;
    EXPECT_EQ(lost, 0u);
    std::istringstream list(texts);
    for (std::string text; std::getline(list, text, ',');)
      ASSERT_EQ(text, std::to_string(next++)) << "frame " << number;
  }
  EXPECT_EQ(next, static_cast<std::uint64_t>(kTraces));
  EXPECT_EQ(serial, static_cast<std::uint64_t>(kTraces));
  EXPECT_GT(m_again, 0u);
}

TEST_F(QuordTakers, TheNextServiceDoesNotKnowTheStreamAndCountsWhatItHeld) {
  quord.Start();
  const auto app = std::make_unique<TracedChild>([](TracedChild& self) {
    quor_application("numbers");
    self.AwaitGo();
    for (int i = 0; i < 100; ++i) QUOR_TRACE_INFO(taken_point, "{}", i);
    if (quor_flush(20000) != 1) return 1;
    self.AwaitGo();
    QUOR_TRACE_INFO(taken_point, "100");
    return quor_flush(20000) == 1 ? 0 : 1;
  });
  TakingClient client;
  ASSERT_TRUE(client.Connect(quord.SocketPath()));
  ASSERT_EQ(client.Take(kId, true).error(), quor::wire::ERROR_NONE);
  app->Go();
  ASSERT_TRUE(WaitFor([&] {
    client.Pump();
    return !client.lines.empty() && client.lines.back().find(",99,") != std::string::npos;
  }));
  EXPECT_EQ(quord.Stop(), 0);
  EXPECT_TRUE(
      quord.Says("traces that client process " + std::to_string(getpid()) + " has not confirmed"));
  quord.Start();
  ASSERT_TRUE(client.Connect(quord.SocketPath()));
  EXPECT_EQ(client.Take(kId, false).error(), quor::wire::ERROR_UNKNOWN_STREAM);
  ASSERT_EQ(client.Take(std::string(16, 'u'), true).error(), quor::wire::ERROR_NONE);
  ASSERT_TRUE(WaitFor([&] { return client.Pump(), client.began; }));
  app->Go();
  ASSERT_TRUE(WaitFor([&] {
    client.Pump();
    return client.lines.back().find(" 101 1 0 100,") != std::string::npos;
  })) << "the serial goes on, so the client sees what was missing between the streams";
  EXPECT_EQ(app->Wait(), 0);
}

TEST_F(QuordTakers, AStatusNamesThemAndAnEndedStreamIsGone) {
  quord.Start();
  TakingClient client, other;
  ASSERT_TRUE(client.Connect(quord.SocketPath()));
  ASSERT_EQ(client.Take(kId, true).error(), quor::wire::ERROR_NONE);
  EXPECT_EQ(client.Take(kId, true).error(), quor::wire::ERROR_BAD_REQUEST) << "once a connection";
  const auto said = [&] {
    const std::size_t before = quord.Log().size();
    EXPECT_EQ(quord.Run({"status", "--socket-dir", quord.Folder().Path()}), 0);
    return quord.Log().substr(before);
  };
  const std::string who = "client process " + std::to_string(getpid());
  EXPECT_NE(said().find(who + " confirms what it gets: 0 frames so far"), std::string::npos);
  client.Close();
  ASSERT_TRUE(WaitFor([&] { return said().find("away for") != std::string::npos; }));
  ASSERT_TRUE(other.Connect(quord.SocketPath()));
  ASSERT_EQ(other.Take(kId, false).error(), quor::wire::ERROR_NONE);
  quor::wire::Request end;
  end.mutable_end_take();
  EXPECT_EQ(other.Ask(end).error(), quor::wire::ERROR_NONE);
  EXPECT_EQ(other.Ask(end).error(), quor::wire::ERROR_BAD_REQUEST);
  EXPECT_EQ(said().find("confirms what it gets"), std::string::npos);
  EXPECT_EQ(other.Take(kId, false).error(), quor::wire::ERROR_UNKNOWN_STREAM);
}

TEST_F(QuordTakers, AnAdministratorLimitsThem) {
  quord.Start({"--takers", "1", "--taker-store", "1"});
  TakingClient client, other;
  ASSERT_TRUE(client.Connect(quord.SocketPath()) && other.Connect(quord.SocketPath()));
  ASSERT_EQ(client.Take(kId, true).error(), quor::wire::ERROR_NONE);
  EXPECT_EQ(other.Take(std::string(16, 'u'), true).error(), quor::wire::ERROR_LIMIT);
  const auto app = Numbers(30000);
  app->Go();
  EXPECT_EQ(app->Wait(), 0);
  // It reads and never confirms: half a MiB is sent, half a MiB waits, the rest is dropped.
  QuordClient asking(quord.SocketPath());
  ASSERT_TRUE(asking.Hello(quor::wire::ROLE_CONFIGURE));
  Request request;
  request.mutable_get_status();
  quor::wire::Status status;
  ASSERT_TRUE(WaitFor([&] {
    client.Pump();
    status = asking.Ask(request).status();
    return status.takers(0).traces() + status.takers(0).dropped() == 30000;
  }));
  EXPECT_GT(status.takers(0).dropped(), 5000u);
  EXPECT_LT(status.takers(0).bytes(), (1u << 20) + (128u << 10));
  EXPECT_EQ(status.dropped(), status.takers(0).dropped());
  EXPECT_EQ(quord.Run({"--takers", "many"}), 2);
  EXPECT_TRUE(quord.Says("is no number from 0 to 64"));
}

TEST_F(QuordTakers, ALieEndsOnlyThatConnection) {
  quord.Start();
  TakingClient client;
  ASSERT_TRUE(client.Connect(quord.SocketPath()));
  ASSERT_EQ(client.Take(kId, true).error(), quor::wire::ERROR_NONE);
  client.SendTaken(1);
  EXPECT_TRUE(WaitFor([&] { return client.Pump(), client.ended; }));
  EXPECT_TRUE(quord.Says("malformed: it has taken frames that were not sent"));
  ASSERT_TRUE(client.Connect(quord.SocketPath()));
  EXPECT_EQ(client.Take(kId, false).error(), quor::wire::ERROR_NONE);
}

// Passes nothing on: it counts, and confirms a little later than it gets.
class Counting final : public Taker::User {
 public:
  void OnStream(const std::string& id) override {
    m_id = id;
    ++streams;
    m_next = 0;
  }
  void OnFrame(const TakenFrame& frame) override {
    EXPECT_EQ(frame.number, ++m_next);
    if (taker && frame.number > 2) taker->Taken(m_id, frame.number - 2);
  }
  void OnGap(std::uint64_t) override {}
  void OnBroken(const std::string&) override {}
  Taker* taker = nullptr;
  std::atomic<unsigned> streams{0};

 private:
  std::string m_id;
  std::uint64_t m_next = 0;
};

TEST_F(QuordTakers, OverServicesThatAreKilledTheSumIsExact) {
  quord.Start();
  constexpr int kTraces = 40000;
  const auto app = Numbers(kTraces);
  Counting counting;
  Taker taker("localhost", counting);
  counting.taker = &taker;
  std::string why;
  ASSERT_TRUE(taker.Start(std::chrono::seconds(10), &why)) << why;
  ASSERT_TRUE(WaitFor([&] { return counting.streams == 1; }));
  app->Go();
  for (int i = 0; i < 3; ++i) {
    poll(nullptr, 0, 70);
    i == 1 ? static_cast<void>(quord.Stop()) : quord.Kill();
    quord.Start();
  }
  EXPECT_EQ(app->Wait(), 0);
  const auto sum = [&] { return taker.GetCounts().delivered + taker.GetCounts().lost; };
  EXPECT_TRUE(WaitFor([&] { return sum() >= kTraces; }));
  EXPECT_EQ(sum(), static_cast<std::uint64_t>(kTraces)) << taker.GetCounts().lost << " lost";
  EXPECT_GE(counting.streams, 2u);
  taker.Stop();
}

using MachineTakers = MachineFixture;

TEST_F(MachineTakers, AtTheServiceOfAMachineOnlyAdministratorsTake) {
  if (!IsRoot()) return;  // there is one account
  Start();
  const auto take = [](QuordClient& client) {
    Request request;
    request.mutable_take()->set_stream(kId);
    request.mutable_take()->set_begins(true);
    return static_cast<int>(client.Ask(request).error());
  };
  EXPECT_EQ(AsClient(kGames, take), quor::wire::ERROR_ACCESS);
  EXPECT_EQ(AsClient(0, take), quor::wire::ERROR_NONE);
}

}  // namespace
