// Random runs of a publisher, its ends and its next runs, with an engine that loses, delays,
// doubles and lies. QUOR_RELAY_SEEDS=N runs more of them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>

#include "quor/relay/publisher/publisher.h"
#include "quor/relay/source_ledger.h"
#include "support/fake_engine.h"
#include "taken_frames.h"

namespace {

using std::chrono::milliseconds;

constexpr unsigned kSources = 3, kFrames = 60;

// The frames of a service, which it gives out again from the first that was not confirmed.
struct Produced {
  struct Frame {
    unsigned source = 0, traces = 0, lost = 0;
    std::uint64_t serial = 0;
  };
  explicit Produced(std::mt19937& random) {
    std::uint64_t serials[kSources] = {};
    for (unsigned i = 0; i < kFrames; ++i) {
      Frame frame{unsigned(random() % kSources), unsigned(random() % 5), 0, 0};
      if (frame.traces == 0 || random() % 8 == 0) frame.lost = 1 + unsigned(random() % 3);
      serials[frame.source] += frame.traces + frame.lost;
      frame.serial = serials[frame.source];
      frames.push_back(frame);
    }
  }
  PartedFrame Parted(std::uint64_t number) const {
    const Frame& frame = frames[number - 1];
    MadeFrame made(number, std::string(15, 's') + char('a' + frame.source), frame.serial);
    for (unsigned i = 0; i < frame.traces; ++i) {
      // Sometimes of another name, so that a frame has several parts.
      const NameId app = (number + i) % 11 == 0 ? 7 : 2;
      made.Name(7, "other").Trace("trace " + std::to_string(i), app);
    }
    return PartsOf(made.Lost(frame.lost).Get());
  }
  std::vector<Frame> frames;
};

class PublisherRun final : public EngineUser {
 public:
  explicit PublisherRun(unsigned seed)
      : m_random(seed), m_produced(m_random), m_cluster("S", seed) {}

  void Play() {
    Begin({});
    // One message that is acknowledged truly: from then on a sequence of 1 is a lie.
    Feed(1);
    Until([this] { return m_confirmed >= 1; }, 2000);
    for (int* const fault :
         {&m_cluster.faults.lost, &m_cluster.faults.noAck, &m_cluster.faults.doubled,
          &m_cluster.faults.late, &m_cluster.faults.otherStream, &m_cluster.faults.falseDuplicate,
          &m_cluster.faults.falling})
      *fault = m_random() % 3 == 0 ? int(m_random() % 25) : 0;
    for (int step = 0; step < 8000 && !::testing::Test::HasFatalFailure(); ++step) Step();
    m_cluster.faults = {};
    if (!m_cluster.down.empty()) m_cluster.Restore();
    Feed(kFrames);
    Until([this] { return m_confirmed >= kFrames; }, 100000);
    CheckAll();
  }

 private:
  void OnAck(std::uint64_t token, const EngineAck& ack) override {
    m_publisher->OnAck(token, ack, m_now);
  }
  void OnRefused(const std::string& what) override { m_publisher->OnTrouble(what, m_now); }
  void OnDown(const std::string& why) override { m_publisher->OnTrouble(why, m_now); }
  void OnUp(const std::string&) override { m_publisher->OnUp(m_now); }

  void Begin(const std::optional<Publisher::Kept>& earlier) {
    m_engine = std::make_unique<FakeEngine>(m_cluster, *this);
    m_publisher =
        std::make_unique<Publisher>(*m_engine, "S", "here", "run" + std::to_string(++m_runs));
    m_publisher->BeginStream(std::string(16, '\x01'), earlier);
    m_given = m_confirmed;
  }
  // The process is killed. It may have kept what was so some time ago.
  void Kill() {
    m_publisher.reset();
    m_engine.reset();
    Begin(m_kept);
  }
  void Feed(std::uint64_t end) {
    while (m_given < end) m_publisher->Add(m_produced.Parted(++m_given), m_now);
  }
  void Step() {
    if (m_random() % 400 == 0) Feed(std::min<std::uint64_t>(m_given + 1 + m_random() % 8, kFrames));
    if (m_random() % 1500 == 0) Kill();
    if (m_random() % 3000 == 0 && m_cluster.down.empty()) m_cluster.Cut("cut");
    if (m_random() % 500 == 0 && !m_cluster.down.empty()) m_cluster.Restore();
    Tick();
    if (m_random() % 300 == 0) m_kept = m_publisher->Taken();
  }
  void Tick() {
    m_now += milliseconds(1);
    m_cluster.Deliver();
    m_publisher->Go(m_now);
    const std::uint64_t taken = m_publisher->Taken().frames;
    ASSERT_GE(taken, m_kept ? m_kept->frames : 0);
    if (taken <= m_confirmed) return;
    // It is confirmed to the service, which forgets it: so it must be stored.
    Read();
    while (m_confirmed < taken) {
      const auto& frame = m_produced.frames[m_confirmed++];
      for (std::uint64_t back = 0; back < frame.traces + frame.lost; ++back)
        ASSERT_TRUE(m_stored[frame.source].count(frame.serial - back))
            << "frame " << m_confirmed << " is taken and not stored";
    }
  }
  template <class Condition>
  void Until(Condition condition, int steps) {
    for (; steps > 0 && !condition() && !::testing::Test::HasFatalFailure(); --steps) Tick();
    ASSERT_TRUE(condition()) << m_publisher->Trouble();
  }
  void Read() {
    const auto& messages = m_cluster.stream.Messages();
    for (; m_read < messages.size(); ++m_read) {
      std::string machine, app;
      bool isWord = false;
      ASSERT_TRUE(ReadSubject(messages[m_read].subject, machine, app, isWord));
      if (isWord) continue;
      Envelope envelope;
      std::string why;
      ASSERT_TRUE(ReadEnvelope(messages[m_read].body, envelope, &why)) << why;
      const unsigned source = unsigned(envelope.instance.back() - 'a');
      for (std::uint64_t back = 0; back < envelope.delivered + envelope.lost; ++back)
        m_stored[source].insert(envelope.serial - back);
      if (envelope.delivered + envelope.lost > 0)
        m_ledgers[source].Take(envelope.serial, envelope.delivered, envelope.lost);
    }
  }
  // A reader gets everything, once, whatever came twice or in another order.
  void CheckAll() {
    Read();
    for (unsigned source = 0; source < kSources; ++source) {
      std::uint64_t traces = 0, lost = 0;
      for (const auto& frame : m_produced.frames) {
        traces += frame.source == source ? frame.traces : 0;
        lost += frame.source == source ? frame.lost : 0;
      }
      EXPECT_FALSE(m_ledgers[source].HasHole());
      EXPECT_EQ(m_ledgers[source].Counts().delivered, traces);
      EXPECT_EQ(m_ledgers[source].Counts().lost, lost);
    }
  }

  std::mt19937 m_random;
  const Produced m_produced;
  FakeCluster m_cluster;
  std::unique_ptr<FakeEngine> m_engine;
  std::unique_ptr<Publisher> m_publisher;
  std::optional<Publisher::Kept> m_kept;
  Publisher::Time m_now{std::chrono::hours(1)};
  std::uint64_t m_given = 0, m_confirmed = 0;
  std::size_t m_read = 0;
  int m_runs = 0;
  std::set<std::uint64_t> m_stored[kSources];
  SourceLedger m_ledgers[kSources];
};

TEST(PublisherModel, WhatIsTakenIsStoredAndEverythingArrivesWhateverTheEngineDoes) {
  const char* const more = std::getenv("QUOR_RELAY_SEEDS");
  const unsigned seeds = more ? unsigned(std::atoi(more)) : 300;
  for (unsigned seed = 1; seed <= seeds && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    PublisherRun(seed).Play();
  }
}

}  // namespace
