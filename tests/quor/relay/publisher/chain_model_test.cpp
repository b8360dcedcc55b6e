// A publisher, an engine that does everything wrong, and readers: what they give out and what they
// tell as lost is all that the sources produced. QUOR_RELAY_SEEDS=N runs more of them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <optional>

#include "quor/relay/publisher/publisher.h"
#include "quor/relay/reader/relay_reader.h"
#include "support/fake_engine.h"
#include "taken_frames.h"

namespace {

using std::chrono::milliseconds;

constexpr unsigned kChainSources = 3, kChainFrames = 80;

std::string InstanceOf(unsigned source) {
  return std::string(15, 's') + char('a' + source);
}

// The frames of a service. The text of a trace has its serial.
struct ChainProduced {
  struct Frame {
    unsigned source = 0, traces = 0, lost = 0;
    std::uint64_t serial = 0;
  };
  explicit ChainProduced(std::mt19937& random) {
    for (unsigned i = 0; i < kChainFrames; ++i) {
      Frame frame{unsigned(random() % kChainSources), unsigned(random() % 6), 0, 0};
      // Each source begins with a trace: a reader begins with what it meets first.
      if (i < kChainSources) frame = {i, 1 + unsigned(random() % 3), 0, 0};
      if (frame.traces == 0 || random() % 8 == 0) frame.lost = 1 + unsigned(random() % 3);
      serials[frame.source] += frame.traces + frame.lost;
      lost += frame.lost;
      frame.serial = serials[frame.source];
      frames.push_back(frame);
    }
  }
  PartedFrame Parted(std::uint64_t number) const {
    const Frame& frame = frames[number - 1];
    MadeFrame made(number, InstanceOf(frame.source), frame.serial);
    for (unsigned i = 0; i < frame.traces; ++i)
      made.Trace("#" + std::to_string(frame.serial - frame.traces + i + 1));
    return PartsOf(made.Lost(frame.lost).Get());
  }
  std::vector<Frame> frames;
  std::uint64_t serials[kChainSources] = {};
  std::uint64_t lost = 0;
};

// Believes nothing that the reader counts: it reads the serials in the texts of the traces.
class Monitor final : public RelayUser {
 public:
  struct Source {
    std::uint64_t began = 0, at = 0, given = 0, told = 0;
    std::set<std::uint64_t> serials;
  };
  std::map<std::string, Source> sources;
  std::uint64_t notInStream = 0, troubles = 0;

 private:
  std::optional<std::uint64_t> Known(const RelayOrigin&) override { return {}; }
  void OnBegin(std::uint64_t id, const RelayOrigin& origin, std::uint64_t serial) override {
    m_instances[id] = origin.instance;
    Source& source = sources[origin.instance];
    if (source.at == 0) source.began = source.at = serial;
    EXPECT_EQ(source.at, serial);
  }
  void OnMessage(std::uint64_t id, const RelayMessage& message) override {
    Source& source = sources[m_instances.at(id)];
    const std::string text(message.envelope.traces.begin(), message.envelope.traces.end());
    std::vector<std::uint64_t> serials;
    for (auto at = text.find('#'); at != text.npos; at = text.find('#', at + 1))
      serials.push_back(std::stoull(text.substr(at + 1)));
    ASSERT_EQ(serials.size(), message.envelope.delivered);
    ASSERT_EQ(message.Begins(), source.at) << "out of order";
    for (std::size_t i = message.skipped; i < serials.size(); ++i) {
      EXPECT_GT(serials[i], source.at) << "told as lost, or given out, before";
      EXPECT_TRUE(source.serials.insert(serials[i]).second);
    }
    source.at = message.envelope.serial;
    source.told += message.Lost();
  }
  void OnLost(std::uint64_t id, std::uint64_t lost) override {
    Source& source = sources[m_instances.at(id)];
    source.at += lost;
    source.told += lost;
    notInStream += lost;
  }
  void OnEnd(std::uint64_t) override {}
  void OnTrouble(RelayTrouble, const std::string& what) override {
    ++troubles;
    ADD_FAILURE() << what;
  }
  std::map<std::uint64_t, std::string> m_instances;
};

class Chain final : public EngineUser {
 public:
  // `loses`: the stream may be trimmed or made anew, and messages may be lost on their way out.
  Chain(unsigned seed, bool loses)
      : m_random(seed), m_loses(loses), m_produced(m_random), m_cluster("S", seed) {}

  void Play() {
    m_reading =
        std::make_unique<FakeEngineReader>(m_cluster, m_cluster.stream, "quor1.>", EngineStart{});
    Begin({});
    Feed(kChainSources);
    Until([this] { return m_confirmed >= kChainSources; }, 20'000);
    SetFaults();
    for (int step = 0; step < 6000 && !testing::Test::HasFailure(); ++step) Step();
    m_cluster.faults = {};
    if (!m_cluster.down.empty()) m_cluster.Restore();
    Feed(kChainFrames);
    Until([this] { return m_confirmed >= kChainFrames; }, 100'000);
    // Words tell of what is missing at the end.
    m_hasEnded = true;
    for (int step = 0; step < 40'000; ++step) Tick();
    CheckAll();
  }

 private:
  void OnAck(std::uint64_t token, const EngineAck& ack) override {
    m_publisher->OnAck(token, ack, m_now);
  }
  void OnRefused(const std::string& what) override { m_publisher->OnTrouble(what, m_now); }
  void OnDown(const std::string& why) override { m_publisher->OnTrouble(why, m_now); }
  void OnUp(const std::string&) override { m_publisher->OnUp(m_now); }

  void SetFaults() {
    FakeFaults& faults = m_cluster.faults;
    for (int* const fault :
         {&faults.lost, &faults.noAck, &faults.doubled, &faults.late, &faults.otherStream,
          &faults.falseDuplicate, &faults.falling, &faults.readTwice, &faults.readSwapped})
      *fault = m_random() % 3 == 0 ? int(m_random() % 25) : 0;
    if (m_loses && m_random() % 2 == 0) faults.readLost = int(m_random() % 20);
  }
  void Begin(const std::optional<Publisher::Kept>& earlier) {
    m_engine = std::make_unique<FakeEngine>(m_cluster, *this);
    m_publisher =
        std::make_unique<Publisher>(*m_engine, "S", "here", "run" + std::to_string(++m_runs));
    for (const std::string& line : m_lines) ASSERT_TRUE(m_publisher->Sources().Restore(line));
    m_publisher->BeginStream(std::string(16, '\x01'), earlier);
    m_given = m_confirmed;
  }
  // What a service would have after the confirmations that reached it.
  void Kill() {
    m_publisher.reset();
    m_engine.reset();
    Begin(m_kept);
  }
  void Feed(std::uint64_t end) {
    while (m_given < end) m_publisher->Add(m_produced.Parted(++m_given), m_now);
  }
  void Step() {
    if (m_random() % 200 == 0)
      Feed(std::min<std::uint64_t>(m_given + 1 + m_random() % 8, kChainFrames));
    if (m_random() % 1500 == 0) Kill();
    if (m_random() % 3000 == 0 && m_cluster.down.empty()) m_cluster.Cut("cut");
    if (m_random() % 500 == 0 && !m_cluster.down.empty()) m_cluster.Restore();
    if (m_loses && m_random() % 1500 == 0) m_cluster.stream.Trim(m_random() % 20);
    if (m_loses && m_random() % 5000 == 0) m_cluster.stream.BeginAnew();
    if (m_random() % 300 == 0) m_kept = m_publisher->Taken();
    Tick();
  }
  void Tick() {
    m_now += milliseconds(1);
    m_cluster.Deliver();
    m_publisher->Go(m_now);
    // What a source is called is kept before its frames are confirmed.
    if (m_publisher->Taken().frames > m_confirmed) m_lines = m_publisher->Sources().Lines();
    m_confirmed = std::max(m_confirmed, m_publisher->Taken().frames);
    // A reader that stands for a while, as its monitor does.
    if (m_stands > 0) {
      --m_stands;
    } else {
      if (m_random() % 800 == 0 && !m_hasEnded) m_stands = int(m_random() % 2000);
      Drain();
    }
  }
  void Drain() {
    m_readerNow += milliseconds(1);
    std::vector<EngineMessage> messages;
    std::string why;
    if (m_reading->Next(milliseconds(0), messages, &why) == EngineReader::State::Messages)
      for (const EngineMessage& message : messages) Take(message);
    m_reader.Look(m_readerNow);
  }
  void Take(const EngineMessage& message) {
    std::string machine, app, why;
    bool isWord = false;
    ASSERT_TRUE(ReadSubject(message.subject, machine, app, isWord));
    if (isWord) {
      MachineWord word;
      ASSERT_TRUE(ReadWord(message.body, word, &why)) << why;
      return m_reader.TakeWord(machine, word, m_readerNow);
    }
    RelayMessage read{{}, message.arrived, 0, 0};
    ASSERT_TRUE(ReadEnvelope(message.body, read.envelope, &why)) << why;
    m_reader.Take(machine, app, std::move(read), m_readerNow);
  }
  template <class Condition>
  void Until(Condition condition, int steps) {
    for (; steps > 0 && !condition() && !testing::Test::HasFailure(); --steps) Tick();
    ASSERT_TRUE(condition()) << m_publisher->Trouble();
  }
  void CheckAll() {
    std::uint64_t told = 0, began = 0;
    for (unsigned source = 0; source < kChainSources; ++source) {
      const std::uint64_t produced = m_produced.serials[source];
      const Monitor::Source& seen = m_monitor.sources[InstanceOf(source)];
      if (seen.serials.empty() && seen.told == 0 && m_loses) continue;
      EXPECT_EQ(seen.began + seen.serials.size() + seen.told, produced) << source;
      EXPECT_EQ(seen.at, produced);
      told += seen.told;
      began += seen.began;
    }
    EXPECT_EQ(m_reader.HeldBytes(), 0u);
    if (m_loses) return;
    EXPECT_EQ(m_monitor.notInStream, 0u) << "nothing was lost on the way";
    EXPECT_EQ(told, m_produced.lost);
    EXPECT_EQ(began, 0u);
  }

  std::mt19937 m_random;
  const bool m_loses;
  bool m_hasEnded = false;
  const ChainProduced m_produced;
  FakeCluster m_cluster;
  Monitor m_monitor;
  RelayReader m_reader{m_monitor};
  std::unique_ptr<FakeEngineReader> m_reading;
  std::unique_ptr<FakeEngine> m_engine;
  std::unique_ptr<Publisher> m_publisher;
  std::optional<Publisher::Kept> m_kept;
  std::vector<std::string> m_lines;
  Publisher::Time m_now{std::chrono::hours(1)};
  RelayReader::Time m_readerNow{0};
  std::uint64_t m_given = 0, m_confirmed = 0;
  int m_runs = 0, m_stands = 0;
};

void PlayAll(bool loses) {
  const char* const more = std::getenv("QUOR_RELAY_SEEDS");
  const unsigned seeds = more ? unsigned(std::atoi(more)) : 100;
  for (unsigned seed = 1; seed <= seeds && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Chain(seed, loses).Play();
  }
}

TEST(RelayChain, NothingIsLostOrDoubledByAnEngineThatKeepsWhatItStored) {
  PlayAll(false);
}
TEST(RelayChain, WhatAStreamDropsOrAReaderMissesIsToldAsLost) {
  PlayAll(true);
}

}  // namespace
