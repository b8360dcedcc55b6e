// Monitors that hand a filter text to a real service: what real programs traced is delivered,
// withheld or lost, to the trace, whatever dies, waits or changes meanwhile.
#include <list>
#include <quor/quor.hpp>
#include <random>

#include "machine_fixture.h"
#include "quor/client/trace_thread.h"

namespace {

using Kind = SourceFilterState::Kind;

QUOR_POINT(filter_point, "Net", "Connect");

constexpr const char* kText = "text contains \"x\"";
constexpr int kEach = 10;  // every tenth trace has an x

class Watcher {
 public:
  ~Watcher() {
    if (m_thread) m_thread->Disconnect();
  }
  bool Connect(const std::string& text = {}) {
    std::string why;
    m_thread = TraceThread_i::ConnectToTraceService("", m_names, &why, text);
    EXPECT_TRUE(m_thread) << why;
    return m_thread && (text.empty() || Becomes(Kind::InForce));
  }
  bool Becomes(Kind kind) const {
    return WaitFor([&] { return m_thread->GetSourceFilter().kind == kind; });
  }
  void Drain() {
    while (m_thread->HasTraces()) {
      TraceEvent_i* const trace = m_thread->NextTrace();
      if (trace->GetComponentName(m_names) == "Quor")
        ++reports;
      else
        trace->GetText().find('x') != std::string::npos ? ++matching : ++others;
      trace->Release();
    }
  }
  TraceThread_i& Thread() { return *m_thread; }
  TraceThread_i::Counts Counts() const { return m_thread->GetCounts(); }
  std::uint64_t Sum() const { return Counts().delivered + Counts().withheld + Counts().lost; }
  // The ledger may come before the last of its traces is taken.
  bool HasTakenAll() const { return matching + others >= Counts().delivered; }
  bool SumBecomes(std::uint64_t traced) {
    return WaitFor([&] { return Drain(), Sum() >= traced && HasTakenAll(); }) && Sum() == traced;
  }
  std::uint64_t matching = 0, others = 0, reports = 0;

 private:
  NameMap m_names;
  TraceThread_i* m_thread = nullptr;
};

// At each Go `count` traces of which every tenth has an x, at a pace that the service can follow.
// Reports how many were traced so far.
int TraceInSteps(TracedChild& self, int count, std::size_t bytes = 20) {
  quor_application("orders");
  const std::string fill(bytes, 'f');
  const int pace = bytes > 1000 ? 50 : 200;  // what the ring holds
  for (;;) {
    self.AwaitGo();
    for (int i = 0; i < count; ++i) {
      QUOR_TRACE_INFO(filter_point, "{} {} {}", i, i % kEach == 0 ? "x" : "y", fill);
      if (i % pace == pace - 1) quor_flush(10000);
    }
    quor_flush(10000);
    quor_counts counts{};
    quor_get_counts(&counts);
    self.Report(counts.traced);
  }
}

// Traces until it is killed, in bursts.
int TraceOn(TracedChild& self) {
  quor_application("orders");
  self.AwaitGo();
  for (std::uint64_t i = 0;; ++i) {
    QUOR_TRACE_INFO(filter_point, "{} {}", i, i % kEach == 0 ? "x" : "y");
    if (i % 500 == 499) usleep(2000);
  }
}

class AtSource : public ::testing::Test {
 protected:
  QuordProcess quord;
};

TEST_F(AtSource, TwoMonitorsOfWhichOneHasATextAddUpToWhatWasTraced) {
  quord.Start();
  TracedChild app([](TracedChild& self) { return TraceInSteps(self, 20'000); });
  Watcher filtered, all;
  ASSERT_TRUE(filtered.Connect(kText) && all.Connect());
  app.Go();
  const std::uint64_t traced = app.Reported();
  ASSERT_TRUE(filtered.SumBecomes(traced) && all.SumBecomes(traced));
  EXPECT_EQ(filtered.matching, filtered.Counts().delivered);
  EXPECT_EQ(filtered.others, 0u);
  EXPECT_EQ(filtered.Counts().withheld, all.others);
  EXPECT_EQ(filtered.matching, all.matching);
  EXPECT_EQ(all.Counts().withheld, 0u);
  EXPECT_EQ(filtered.Counts().lost, all.Counts().lost);
}

TEST_F(AtSource, ATextThatChangesAHundredTimesLosesNothing) {
  quord.Start();
  TracedChild app(TraceOn);
  Watcher filtered, all;
  ASSERT_TRUE(filtered.Connect(kText) && all.Connect());
  app.Go();
  std::minstd_rand random(7);
  const char* const texts[] = {kText,
                               "",
                               "component == Other",
                               "delta > 1s",
                               "text matches \"[0-4] x\"",
                               "severity >= info"};
  for (int change = 0; change < 100; ++change) {
    const std::string text = texts[random() % std::size(texts)];
    filtered.Thread().FilterAtSource(text);
    const std::uint64_t wanted = all.Sum() + 200;
    ASSERT_TRUE(WaitFor([&] { return filtered.Drain(), all.Drain(), all.Sum() >= wanted; }));
    const Kind kind = text.empty() ? Kind::None : text[0] == 'd' ? Kind::Refused : Kind::InForce;
    EXPECT_TRUE(filtered.Becomes(kind)) << text;
  }
  app.Kill();
  ASSERT_TRUE(quord.Says("has ended"));
  EXPECT_TRUE(WaitFor([&] {
    filtered.Drain();
    all.Drain();
    return filtered.Sum() == all.Sum();
  })) << filtered.Sum()
      << " of " << all.Sum();
  EXPECT_GT(filtered.Counts().withheld, 0u);
  EXPECT_GT(filtered.others, 0u) << "some texts let all through";
}

TEST_F(AtSource, AServiceKilledUnderLoadIsAskedAgainAndTheGapIsCounted) {
  quord.Start();
  TracedChild app([](TracedChild& self) { return TraceInSteps(self, 5'000); });
  Watcher filtered;
  ASSERT_TRUE(filtered.Connect(kText));
  app.Go();
  ASSERT_TRUE(WaitFor([&] { return filtered.Drain(), filtered.Counts().withheld > 1000; }));
  quord.Kill();
  quord.Start();
  ASSERT_TRUE(filtered.Becomes(Kind::InForce));
  app.Reported();
  app.Go();
  const std::uint64_t traced = app.Reported();
  EXPECT_TRUE(filtered.SumBecomes(traced)) << filtered.Sum() << " of " << traced;
  EXPECT_EQ(filtered.others, 0u) << "the text came before the stream";
  EXPECT_EQ(filtered.matching, filtered.Counts().delivered);
  EXPECT_GE(filtered.matching, 500u);
  EXPECT_EQ(filtered.Counts().lost > 0, filtered.reports > 0);
}

TEST_F(AtSource, AnApplicationKilledInABurstIsCountedAlike) {
  quord.Start();
  TracedChild app(TraceOn);
  Watcher filtered, all;
  ASSERT_TRUE(filtered.Connect(kText) && all.Connect());
  app.Go();
  ASSERT_TRUE(WaitFor([&] { return all.Drain(), filtered.Drain(), all.Sum() > 5000; }));
  app.Kill();
  ASSERT_TRUE(quord.Says("has ended"));
  EXPECT_TRUE(WaitFor([&] {
    filtered.Drain();
    all.Drain();
    return filtered.Sum() == all.Sum() && filtered.Counts().withheld == all.others &&
           filtered.HasTakenAll() && all.HasTakenAll();
  })) << filtered.Sum()
      << " of " << all.Sum();
  EXPECT_EQ(filtered.matching, all.matching);
  EXPECT_LE(all.Counts().lost, 1u);
}

TEST_F(AtSource, APausedMonitorLosesOnlyWhatMatches) {
  quord.Start();
  TracedChild app([](TracedChild& self) { return TraceInSteps(self, 150'000); });
  Watcher filtered;
  ASSERT_TRUE(filtered.Connect(kText));
  filtered.Thread().Pause();
  app.Go();
  const std::uint64_t traced = app.Reported();
  filtered.Thread().Resume();
  ASSERT_TRUE(filtered.SumBecomes(traced)) << filtered.Sum() << " of " << traced;
  const TraceThread_i::Counts counts = filtered.Counts();
  EXPECT_GT(counts.lost, 0u) << "more matched than a pause keeps";
  EXPECT_EQ(counts.withheld, traced - traced / kEach);
  EXPECT_EQ(counts.delivered, filtered.matching);
  EXPECT_GT(filtered.reports, 0u);
}

TEST_F(AtSource, AMonitorThatDoesNotTakeItsTracesLosesOnlyWhatMatches) {
  quord.Start();
  TracedChild app([](TracedChild& self) { return TraceInSteps(self, 30'000, 60'000); });
  Watcher filtered;
  ASSERT_TRUE(filtered.Connect(kText));
  app.Go();
  const std::uint64_t traced = app.Reported();
  ASSERT_TRUE(WaitFor([&] { return filtered.Sum() >= traced; }));
  ASSERT_TRUE(filtered.SumBecomes(traced)) << filtered.Sum() << " of " << traced;
  EXPECT_GT(filtered.Counts().lost, 0u) << "the queue of the monitor is smaller";
  EXPECT_EQ(filtered.Counts().withheld, traced - traced / kEach);
  EXPECT_EQ(filtered.Counts().delivered, filtered.matching);
}

TEST_F(AtSource, TracesThatAnotherMachineForwardsAreFilteredToo) {
  ASSERT_EQ(quord.Run({"keys", "init", "--host", "orders1"}), 0);
  quord.Start({"--listen", "127.0.0.1:0"});
  const std::string far = quord.SocketPath(), machine = "127.0.0.1:" + quord.Port();
  QuordProcess near;
  ASSERT_EQ(quord.Run({"keys", "issue", "near", "--role", "forward", "--out",
                       near.KeysFolder() + "/forward"}),
            0);
  near.Start();
  TracedChild app([](TracedChild& self) { return TraceInSteps(self, 10'000); });
  setenv("QUOR_SOCKET", far.c_str(), 1);
  Watcher filtered, all;
  ASSERT_TRUE(filtered.Connect(kText) && all.Connect());
  QuordClient client(near.SocketPath());
  ASSERT_TRUE(client.Hello(quor::wire::ROLE_CONFIGURE));
  ASSERT_EQ(client.Ask(OpenAppRequest("orders")).error(), quor::wire::ERROR_NONE);
  ASSERT_EQ(client.Ask(SinkRequest("orders", 1, machine)).error(), quor::wire::ERROR_NONE);
  app.Go();
  const std::uint64_t traced = app.Reported();
  EXPECT_TRUE(filtered.SumBecomes(traced) && all.SumBecomes(traced)) << filtered.Sum();
  EXPECT_EQ(filtered.others, 0u);
  EXPECT_EQ(filtered.matching, all.matching);
  EXPECT_EQ(filtered.Counts().withheld, all.others);
}

class AtSourceOfMachine : public MachineFixture {};

TEST_F(AtSourceOfMachine, AnAccountIsWithheldOnlyWhatIsItsOwn) {
  if (!IsRoot()) return;  // there are no accounts to be
  const auto traces = [](TracedChild& self) {
    self.AwaitGo();
    quor_application("shop");
    for (int i = 0; i < 100; ++i) QUOR_TRACE_INFO(filter_point, "{}", i % kEach == 0 ? "x" : "y");
    quor_flush(10000);
    self.Report(1);
    self.AwaitGo();
    return 0;
  };
  const auto games = Program(kGames, traces), mail = Program(kMail, traces);
  TracedChild watcher([](TracedChild& self) {
    self.AwaitGo();
    BecomeAccount(kGames);
    Watcher own;
    if (!own.Connect("text contains x and account startswith games")) return 1;
    self.Report(1);
    self.AwaitGo();
    EXPECT_TRUE(own.SumBecomes(100));
    EXPECT_EQ(own.Counts().withheld, 90u);
    EXPECT_EQ(own.matching, 10u);
    return 0;
  });
  Start();
  watcher.Go();
  ASSERT_EQ(watcher.Reported(), 1u);
  for (TracedChild* const app : {mail.get(), games.get()}) {
    app->Go();
    EXPECT_EQ(app->Reported(), 1u);
  }
  watcher.Go();
  EXPECT_EQ(watcher.Wait(), 0);
}

// Each text takes long to make, and no two are equal.
TEST_F(AtSource, TextsOfManyClientsHoldUpNobodyAndAllAreTaken) {
  quord.Start();
  std::list<QuordClient> clients(32);
  QuordClient other;
  for (QuordClient& client : clients)
    ASSERT_TRUE(client.Connect(quord.SocketPath()) && client.Hello(quor::wire::ROLE_MONITOR));
  ASSERT_TRUE(other.Connect(quord.SocketPath()) && other.Hello(quor::wire::ROLE_MONITOR));
  int number = 0;
  for (QuordClient& client : clients) {
    std::string text;
    for (int test = 0; test < 4; ++test)
      text += std::string(test == 0 ? "" : " or ") + "text matches \"" + std::to_string(++number) +
              "(?:(?:[a-f]{1,20}|\\p{L}x){1,30}y){1,20}\"";
    Request request;
    request.mutable_set_filter()->set_text(text);
    client.Begin(request);
  }
  EXPECT_EQ(other.Ask(ListRequest()).error(), quor::wire::ERROR_NONE);
  std::size_t answered = 0;
  for (QuordClient& client : clients) {
    client.Pump();
    answered += client.IsAnswered() ? 1 : 0;
  }
  EXPECT_LT(answered, clients.size()) << "somebody else had a turn before the last of them";
  for (QuordClient& client : clients) {
    EXPECT_TRUE(WaitFor([&] { return client.Pump(), client.IsAnswered(); }));
    EXPECT_EQ(client.Answer().text(), "");
  }
}

}  // namespace
