// Streams to clients that confirm frames: what comes again, bounds, lies, and sums that are exact.
#include "quor/takers/takers.h"

#include <gmock/gmock.h>

#include <random>

#include "taker_fixture.h"

namespace {

using namespace std::chrono_literals;
using namespace quor::wire;

std::string IdOf(char c) {
  return std::string(16, c);
}

class TakersTest : public testing::Test {
 protected:
  // REQUIRES: there are no clients.
  void Use(TakerLimits limits) {
    m_takers.reset();
    m_takers = std::make_unique<Takers>(m_io, m_hub, limits);
  }
  std::unique_ptr<TakerClient> Client(char id, const std::string& owner = "1000") {
    return std::make_unique<TakerClient>(m_io, *m_takers, IdOf(id), owner);
  }
  // Each trace says its own serial.
  void Trace(FedSource& source, int traces = 1, std::size_t bytes = 0) {
    for (int i = 0; i < traces; ++i)
      source.Trace(source.Get()->app + " " + std::to_string(source.Get()->serial + 1) + " " +
                   std::string(bytes, 'x'));
  }
  void Deliver() {
    m_hub.Seal();
    m_hub.Deliver();
    Run();
  }
  void Run() {
    m_io.restart();
    m_io.poll();
  }
  // Reads until nothing comes any more.
  void ReadAll(TakerClient& client) {
    for (Run(); client.Read(); Run()) continue;
  }
  Status StatusNow() {
    Status status;
    m_takers->FillStatus(&status);
    return status;
  }
  // What was stored covers each source from where it stood to its end, without a gap and in order.
  // Returns the number of lost traces.
  std::uint64_t CheckSums(const TakerClient& client,
                          const std::map<std::string, std::uint64_t>& began,
                          const std::vector<FedSource*>& sources) {
    std::map<std::string, std::uint64_t> at = began;
    std::uint64_t lost = 0;
    for (const auto& [number, frame] : client.stored) {
      if (frame.instance.empty()) continue;
      std::uint64_t& serial = at[frame.instance];
      EXPECT_EQ(frame.serial - frame.delivered - frame.lost, serial) << "frame " << number;
      for (const std::string& text : frame.texts) {
        const std::uint64_t own = std::stoull(text.substr(text.find(' ') + 1));
        EXPECT_GT(own, serial);
        EXPECT_LE(own, frame.serial);
        serial = own;
      }
      serial = frame.serial;
      lost += frame.lost;
    }
    for (FedSource* const source : sources) {
      const auto& instance = source->Get()->instance;
      EXPECT_EQ(at[std::string(instance.begin(), instance.end())], source->Get()->serial);
    }
    return lost;
  }

  asio::io_context m_io{1};
  Hub m_hub;
  std::unique_ptr<Takers> m_takers = std::make_unique<Takers>(m_io, m_hub);
};

TEST_F(TakersTest, GetOneSourceAFrameFromTheirBeginningOn) {
  FedSource one(m_hub, "orders", 1), two(m_hub, "billing", 2);
  Trace(one, 3);
  const auto client = Client('a');
  ASSERT_EQ(client->Connect(true), ERROR_NONE);
  for (int i = 0; i < 10; ++i) {
    Trace(one);
    Trace(two);
  }
  two.Lose(5, "the ring was full");
  Deliver();
  ReadAll(*client);
  EXPECT_EQ(client->stored.size(), 2u);
  const auto& instance = one.Get()->instance;
  EXPECT_EQ(CheckSums(*client, {{std::string(instance.begin(), instance.end()), 3}}, {&one, &two}),
            5u);
}

TEST_F(TakersTest, WhatIsNotConfirmedComesAgainWithTheSameNumbersAndNames) {
  FedSource one(m_hub, "orders", 1), two(m_hub, "billing", 2);
  const auto client = Client('a');
  ASSERT_EQ(client->Connect(true), ERROR_NONE);
  for (int i = 0; i < 5; ++i) {
    Trace(one);
    Trace(two);
    Deliver();
  }
  ReadAll(*client);
  ASSERT_EQ(client->received, 10u);
  client->SendTaken(4);
  Run();
  client->Kill();
  Trace(one);
  Deliver();
  ASSERT_EQ(client->Connect(false), ERROR_NONE);
  EXPECT_EQ(client->received, 4u) << "the answer says what was confirmed";
  ReadAll(*client);
  EXPECT_EQ(client->received, 11u);
  EXPECT_EQ(client->again, 6u);
  CheckSums(*client, {}, {&one, &two});
}

TEST_F(TakersTest, AConfirmationThatWasLostIsSaidWithTheNextTake) {
  FedSource one(m_hub, "orders");
  const auto client = Client('a');
  ASSERT_EQ(client->Connect(true), ERROR_NONE);
  for (int i = 0; i < 5; ++i) {
    Trace(one);
    Deliver();
  }
  ReadAll(*client);
  ASSERT_EQ(client->Connect(false, 3), ERROR_NONE);
  ReadAll(*client);
  EXPECT_EQ(client->again, 2u);
  EXPECT_EQ(StatusNow().takers(0).frames(), 3u);
}

TEST_F(TakersTest, ASecondConnectionGoesOnWithTheStreamAndEndsTheFirst) {
  FedSource one(m_hub, "orders");
  const auto first = Client('a'), second = Client('a');
  ASSERT_EQ(first->Connect(true), ERROR_NONE);
  Trace(one, 2);
  Deliver();
  ReadAll(*first);
  ASSERT_EQ(second->Connect(false), ERROR_NONE);
  EXPECT_EQ(first->session->Ended(), "replaced");
  Trace(one);
  Deliver();
  ReadAll(*second);
  EXPECT_EQ(second->received, 2u);
  CheckSums(*second, {}, {&one});
  EXPECT_TRUE(StatusNow().takers(0).connected());
  // What the first one says now is not heard.
  first->SendTaken(1);
  Run();
  EXPECT_EQ(StatusNow().takers(0).frames(), 0u);
}

TEST_F(TakersTest, AStreamBearsTheNameOfWhoeverTookItLast) {
  const auto client = Client('a');
  ASSERT_EQ(client->Connect(true), ERROR_NONE);
  Take take;
  take.set_stream(IdOf('a'));
  ErrorCode code = ERROR_NONE;
  std::string why;
  ASSERT_NE(m_takers->Open("1000", "process 2", take, &code, &why), nullptr) << why;
  EXPECT_EQ(StatusNow().takers(0).who(), "process 2");
  take.set_taken(1);
  EXPECT_EQ(m_takers->Open("1000", "a liar", take, &code, &why), nullptr);
  EXPECT_EQ(StatusNow().takers(0).who(), "process 2");
}

TEST_F(TakersTest, ALieEndsTheConnectionAndLeavesTheStreamAsItWas) {
  FedSource one(m_hub, "orders");
  const auto client = Client('a');
  ASSERT_EQ(client->Connect(true), ERROR_NONE);
  for (int i = 0; i < 3; ++i) {
    Trace(one);
    Deliver();
  }
  ReadAll(*client);
  client->SendTaken(2);
  client->SendTaken(2);
  Run();
  EXPECT_EQ(client->session->Ended(), "") << "the same twice is no lie";
  for (const std::uint64_t lie : {std::uint64_t{4}, ~std::uint64_t{0}, std::uint64_t{1}}) {
    client->SendTaken(lie);
    Run();
    EXPECT_EQ(client->session->Ended(), lie == 1 ? "it gives back what it had taken"
                                                 : "it has taken frames that were not sent");
    ASSERT_EQ(client->Connect(false), ERROR_NONE);
    ReadAll(*client);
    EXPECT_EQ(client->received, 3u);
    EXPECT_EQ(StatusNow().takers(0).frames(), 2u);
  }
  EXPECT_EQ(client->Connect(false, 4), ERROR_BAD_REQUEST);
  EXPECT_EQ(client->why, "it has taken frames that were never sent");
  EXPECT_EQ(client->session->Ended(), "") << "the connection that stands is not touched";
}

TEST_F(TakersTest, AnUnknownStreamGoesOnNowhereAndAnIdMustBeWhole) {
  EXPECT_EQ(Client('a')->Connect(false), ERROR_UNKNOWN_STREAM);
  EXPECT_EQ(Client('a')->Connect(true, 1), ERROR_UNKNOWN_STREAM);
  TakerClient wrong(m_io, *m_takers, "short");
  EXPECT_EQ(wrong.Connect(true), ERROR_BAD_REQUEST);
  EXPECT_EQ(StatusNow().takers_size(), 0);
}

TEST_F(TakersTest, TheSameIdOfAnotherOwnerIsAnotherStream) {
  FedSource one(m_hub, "orders");
  const auto mine = Client('a', "1000"), theirs = Client('a', "1001");
  ASSERT_EQ(mine->Connect(true), ERROR_NONE);
  EXPECT_EQ(theirs->Connect(false), ERROR_UNKNOWN_STREAM);
  ASSERT_EQ(theirs->Connect(true), ERROR_NONE);
  EXPECT_EQ(mine->session->Ended(), "");
}

TEST_F(TakersTest, OneThatNeverConfirmsCostsItsStoreAndNobodyElse) {
  Use({4, 1u << 20, 1h});
  FedSource one(m_hub, "orders");
  const auto idle = Client('a'), good = Client('b');
  ASSERT_EQ(idle->Connect(true), ERROR_NONE);
  ASSERT_EQ(good->Connect(true), ERROR_NONE);
  for (int i = 0; i < 300; ++i) {
    Trace(one, 10, 1000);
    Deliver();
    ReadAll(*idle);
    ReadAll(*good);
    good->SendTaken(good->received);
    Run();
  }
  EXPECT_EQ(CheckSums(*good, {}, {&one}), 0u);
  const Status status = StatusNow();
  EXPECT_LT(status.takers(0).bytes(), (1u << 20) + (128u << 10)) << "and a frame that is under way";
  EXPECT_GT(status.takers(0).dropped(), 1000u);
  EXPECT_EQ(status.takers(1).dropped(), 0u);
  EXPECT_EQ(status.takers(1).traces(), 0u);
  EXPECT_EQ(m_takers->Dropped(), status.takers(0).dropped());
  // It wakes up: what was sent stands, and the loss is in its place.
  for (std::uint64_t last = 0; idle->received > last;) {
    last = idle->received;
    idle->SendTaken(last);
    ReadAll(*idle);
  }
  EXPECT_EQ(CheckSums(*idle, {}, {&one}), status.takers(0).dropped());
}

TEST_F(TakersTest, ThereAreNoMoreThanAllowedAndOneThatIsAwayGivesWay) {
  Use({2, 1u << 20, 1h});
  FedSource one(m_hub, "orders");
  const auto a = Client('a'), b = Client('b'), c = Client('c');
  ASSERT_EQ(a->Connect(true), ERROR_NONE);
  ASSERT_EQ(b->Connect(true), ERROR_NONE);
  EXPECT_EQ(c->Connect(true), ERROR_LIMIT);
  EXPECT_EQ(c->why, "there are 2 takers already, and no more are allowed here");
  Trace(one, 7);
  Deliver();
  ReadAll(*b);
  b->Kill();
  Run();
  ASSERT_EQ(c->Connect(true), ERROR_NONE);
  EXPECT_EQ(b->Connect(false), ERROR_UNKNOWN_STREAM);
  EXPECT_EQ(m_takers->Dropped(), 7u) << "what it held is counted";
  EXPECT_EQ(a->session->Ended(), "");
}

TEST_F(TakersTest, WithoutAnyAllowedNoneIsTaken) {
  Use({0, 1u << 20, 1h});
  EXPECT_EQ(Client('a')->Connect(true), ERROR_LIMIT);
}

TEST_F(TakersTest, AStreamThatNobodyTakesIsForgottenAfterATime) {
  Use({4, 1u << 20, 50ms});
  FedSource one(m_hub, "orders");
  const auto a = Client('a'), b = Client('b');
  ASSERT_EQ(a->Connect(true), ERROR_NONE);
  ASSERT_EQ(b->Connect(true), ERROR_NONE);
  Trace(one, 3);
  Deliver();
  a->Kill();
  m_io.restart();
  m_io.run_for(300ms);
  const Status status = StatusNow();
  ASSERT_EQ(status.takers_size(), 1);
  EXPECT_EQ(status.takers(0).stream(), IdOf('b'));
  EXPECT_EQ(m_takers->Dropped(), 3u);
}

TEST_F(TakersTest, AForgottenSourceIsToldAgainUntilThatIsConfirmed) {
  const auto client = Client('a');
  ASSERT_EQ(client->Connect(true), ERROR_NONE);
  FedSource one(m_hub, "orders", 77);
  Trace(one, 2);
  m_hub.EndSource(one.Get());
  for (std::uint32_t pid = 1000; pid < 1300; ++pid) {
    FedSource other(m_hub, "short", pid);
    m_hub.EndSource(other.Get());
  }
  Deliver();
  ReadAll(*client);
  const std::uint64_t told = client->forgotten;
  EXPECT_GT(told, 0u);
  ASSERT_EQ(client->Connect(false), ERROR_NONE);
  ReadAll(*client);
  EXPECT_EQ(client->forgotten, 2 * told);
  EXPECT_EQ(client->forgottenSum, 0u) << "as of the last frame that was confirmed";
  ASSERT_EQ(client->Connect(false, client->received), ERROR_NONE);
  ReadAll(*client);
  EXPECT_EQ(client->forgotten, 2 * told);
  EXPECT_EQ(client->forgottenSum, m_hub.Forgotten());
  EXPECT_EQ(client->forgottenSum, 2u);
}

TEST_F(TakersTest, NamesBeginAnewWhenAllAreInUseAndNothingWaits) {
  FedSource one(m_hub, "orders");
  const auto client = Client('a');
  ASSERT_EQ(client->Connect(true), ERROR_NONE);
  const auto traceAs = [&](const std::string& component) {
    one.Name(3, component);
    Trace(one);
  };
  const auto useUp = [&](const std::string& prefix) {
    for (int i = 0; i < 65600; ++i) traceAs(prefix + std::to_string(i));
    for (std::uint64_t last = ~std::uint64_t{0}; client->received != last;) {
      last = client->received;
      Deliver();
      ReadAll(*client);
      client->SendTaken(client->received);
      Run();
    }
  };
  {
    TakingStream monitor(m_hub);
    useUp("a");
    EXPECT_TRUE(m_hub.Names().IsFull()) << "a monitor knows its ids for its life";
  }
  traceAs("b");
  Deliver();
  ReadAll(*client);
  EXPECT_EQ(client->component.rfind("(no more names", 0), 0u) << client->component;
  client->SendTaken(client->received);
  Run();
  EXPECT_FALSE(m_hub.Names().IsFull());
  traceAs("c");
  Deliver();
  ReadAll(*client);
  EXPECT_EQ(client->component, "c");
  // Over the next connection as well.
  traceAs("d");
  Deliver();
  ASSERT_EQ(client->Connect(false), ERROR_NONE);
  ReadAll(*client);
  EXPECT_EQ(client->component, "d");
  CheckSums(*client, {}, {&one});
}

// A client that is slow, killed at any byte, and forgetful.
class Play {
 public:
  Play(TakerClient& client, unsigned seed) : m_client(client), m_random(seed) {}
  void Step() {
    if (!m_up) return Connect();
    const unsigned dice = m_random() % 100;
    if (dice < 55) m_client.Read(1 + m_random() % 40000);
    if (dice >= 55 && dice < 80) Confirm();
    if (dice == 80) Die();
    // Another connection takes over while this one stands.
    if (dice == 81) Connect();
  }
  void Finish(const std::function<void()>& run) {
    if (!m_up) Connect();
    for (std::uint64_t last = ~std::uint64_t{0}; last != m_client.received;) {
      last = m_client.received;
      for (run(); m_client.Read(); run()) continue;
      if (m_client.received >= m_here) m_client.SendTaken(m_client.received);
      for (run(); m_client.Read(); run()) continue;
    }
  }
  unsigned Kills() const { return m_kills; }

 private:
  void Connect() {
    // A killed one has often forgotten how much it took.
    const std::uint64_t known = m_random() % 2 == 0 ? m_taken : 0;
    EXPECT_EQ(m_client.Connect(!m_began, known), ERROR_NONE) << m_client.why;
    m_began = m_up = true;
    m_here = m_client.received;
  }
  void Confirm() {
    if (m_client.received < m_here) return;
    const std::uint64_t frames = m_here + m_random() % (m_client.received - m_here + 1);
    const bool isWhole = m_random() % 8 != 0;
    m_client.SendTaken(frames, isWhole ? 100 : m_random() % 6);
    // It had stored these frames, whether or not the service learns it.
    m_here = frames;
    m_taken = std::max(m_taken, frames);
    if (!isWhole) Die();
  }
  void Die() {
    m_client.Kill();
    m_up = false;
    ++m_kills;
  }
  TakerClient& m_client;
  std::mt19937 m_random;
  std::uint64_t m_taken = 0;  // ever
  std::uint64_t m_here = 0;   // over this connection
  unsigned m_kills = 0;
  bool m_up = false, m_began = false;
};

class TakersModel : public TakersTest, public testing::WithParamInterface<unsigned> {};

TEST_P(TakersModel, LosesNothingWithinTheBoundAndTellsTheRestInItsPlace) {
  std::mt19937 random(GetParam());
  const bool isTight = GetParam() % 2 == 1;
  Use({4, isTight ? std::size_t{64} << 10 : std::size_t{64} << 20, 1h});
  const auto a = Client('a'), b = Client('b');
  Play first(*a, random()), second(*b, random());
  first.Step();
  second.Step();
  std::vector<std::unique_ptr<FedSource>> sources;
  std::vector<FedSource*> all;
  for (int step = 0; step < 1500; ++step) {
    if (sources.size() < 6 && random() % 50 == 0) {
      const auto number = static_cast<std::uint32_t>(sources.size());
      sources.push_back(
          std::make_unique<FedSource>(m_hub, "app" + std::to_string(number), number + 1));
      all.push_back(sources.back().get());
    }
    if (!all.empty()) {
      FedSource& source = *all[random() % all.size()];
      if (random() % 40 == 0) source.Lose(1 + random() % 9, "the ring was full");
      Trace(source, static_cast<int>(random() % 30), random() % 300);
    }
    if (random() % 3 == 0) Deliver();
    Run();
    first.Step();
    second.Step();
  }
  Deliver();
  const auto run = [this] { Run(); };
  first.Finish(run);
  second.Finish(run);
  const Status status = StatusNow();
  EXPECT_EQ(CheckSums(*a, {}, all), m_hub.Lost() + status.takers(0).dropped());
  EXPECT_EQ(CheckSums(*b, {}, all), m_hub.Lost() + status.takers(1).dropped());
  EXPECT_EQ(m_takers->Dropped() > 0, isTight);
  EXPECT_GT(first.Kills() + second.Kills(), 5u);
  EXPECT_GT(a->again + b->again, 0u);
  EXPECT_EQ(status.takers(0).traces() + status.takers(1).traces(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Seeds, TakersModel, testing::Range(1u, 61u));

}  // namespace
