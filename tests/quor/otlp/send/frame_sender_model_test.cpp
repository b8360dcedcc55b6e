// Random frames to a collector that refuses, is away and takes late, by a sender that is killed.
// The seconds of a run are played.
#include <gmock/gmock.h>

#include <memory>
#include <random>

#include "played_collector.h"
#include "played_frames.h"

namespace {

using namespace std::chrono_literals;

struct Harm {
  bool refuses = false, drops = false, kills = false;
};

class PlayedRun {
 public:
  PlayedRun(unsigned seed, Harm harm) : m_random(seed), m_harm(harm) {
    Plan();
    Start();
  }

  void Play() {
    for (std::size_t step = 0; !IsOver(); ++step) {
      ASSERT_LT(step, 200'000u) << "it never ends";
      m_now += std::chrono::milliseconds(m_random() % 400);
      if (m_next < m_frames.size() && m_random() % 3 != 0) AddNext();
      if (m_harm.kills && m_random() % 60 == 0) Kill();
      Send();
      if (auto stored = m_sender->TakeState()) {
        ASSERT_GE(stored->frames, m_confirmed) << "a later state is behind an earlier one";
        m_confirmed = stored->frames;
        m_stored = std::move(stored->bytes);
      }
    }
  }
  void ExpectSum() const {
    EXPECT_EQ(m_collector.Sum() + m_sender->Unreported(), m_covered)
        << "lost " << m_collector.Lost() << ", of which unreported " << m_sender->Unreported();
    EXPECT_EQ(m_confirmed, m_frames.size());
    EXPECT_EQ(m_sender->Queue().Bytes(), 0u);
  }
  const PlayedCollector& Collector() const { return m_collector; }
  std::uint64_t LostOnTheWay() const { return m_sender->Lost(); }
  int Kills() const { return m_kills; }

 private:
  void Plan() {
    const std::string sources[] = {std::string(16, 'a'), std::string(16, 'b')};
    std::uint64_t serials[2] = {};
    const std::size_t frames = 5 + m_random() % 40;
    for (std::size_t i = 0; i < frames; ++i) {
      const std::size_t of = m_random() % 2;
      auto frame = std::make_unique<PlayedFrame>(i + 1, sources[of], 0);
      const std::uint64_t before = serials[of];
      Fill(*frame, serials[of]);
      m_frames.push_back(std::move(frame));
      m_serials.push_back(serials[of]);
      m_covered += serials[of] - before;
    }
    // The last frame ends both sources, so that nothing stays open.
    m_frames.push_back(std::make_unique<PlayedFrame>(frames + 1, "", 0));
    m_serials.push_back(0);
    for (const std::string& source : sources) m_frames.back()->Forget(source);
  }
  void Fill(PlayedFrame& frame, std::uint64_t& serial) {
    const unsigned traces = m_random() % 20;
    for (unsigned i = 0; i < traces; ++i, ++serial) {
      const unsigned draw = m_random() % 10;
      const std::string text = draw < 3 ? "Begin: a" : draw < 6 ? "End: a" : "log";
      frame.Trace(text, static_cast<NameId>(4 + m_random() % 2));
    }
    // A killed sender reports again what nobody had confirmed.
    if (m_harm.kills || m_random() % 8 != 0) return;
    const std::uint64_t lost = 1 + m_random() % 9;
    frame.Lose(lost, m_random() % 2 == 0);
    serial += lost;
  }
  void Start() {
    SendLimits limits;
    if (m_harm.drops) limits.bytes = 1500;
    m_sender = std::make_unique<FrameSender>(
        "web1", limits, [](const std::string&) {}, m_random());
    ASSERT_TRUE(m_stored.empty() || m_sender->Resume(m_stored));
    m_sender->BeginStream(std::string(16, 's'), m_now);
    m_underWay = nullptr;
  }
  // What was not confirmed comes again; sometimes also what was, when the word did not arrive.
  void Kill() {
    ++m_kills;
    Start();
    m_next = m_confirmed - std::min<std::uint64_t>(m_confirmed, m_random() % 3);
  }
  void AddNext() {
    TakenFrame frame = m_frames[m_next]->Get();
    frame.serial = m_serials[m_next++];
    m_sender->Add(frame, m_now);
  }
  void Send() {
    if (!m_underWay) m_underWay = m_sender->Next(m_now);
    if (!m_underWay || m_random() % 3 == 0) return;
    const SendQueue::Request& request = *std::exchange(m_underWay, nullptr);
    const unsigned draw = m_random() % 10;
    if (draw < 2) return Answer(m_random() % 2 == 0 ? 503 : 429);
    if (draw == 2) {
      // With kills, it may have it: its answer got lost.
      if (m_harm.kills && m_random() % 2 == 0) m_collector.Take(request);
      return Answer(0);
    }
    if (m_harm.refuses && draw == 3) return Answer(400);
    if (m_harm.refuses && draw == 4) return m_sender->Answer(Rejecting(request.messages), m_now, 0);
    m_collector.Take(request);
    Answer(200);
  }
  void Answer(int status) {
    m_sender->Answer(Answered(status, status == 429 ? "2" : ""), m_now, 0);
  }
  bool IsOver() const { return m_next == m_frames.size() && m_sender->IsIdle(); }

  std::mt19937 m_random;
  const Harm m_harm;
  std::vector<std::unique_ptr<PlayedFrame>> m_frames;
  std::vector<std::uint64_t> m_serials;
  std::uint64_t m_covered = 0, m_confirmed = 0;
  std::size_t m_next = 0;
  std::string m_stored;
  SendQueue::Time m_now{};
  std::unique_ptr<FrameSender> m_sender;
  const SendQueue::Request* m_underWay = nullptr;
  PlayedCollector m_collector;
  int m_kills = 0;
};

constexpr unsigned kSeeds = 150;

TEST(FrameSenderModel, WhatTheCollectorHasAndWhatItWasToldIsEverything) {
  std::uint64_t lost = 0;
  for (unsigned seed = 0; seed < kSeeds && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    PlayedRun run(seed, {.refuses = true});
    run.Play();
    run.ExpectSum();
    EXPECT_EQ(run.Collector().Doubles(), 0u);
    lost += run.LostOnTheWay();
  }
  EXPECT_GT(lost, 1000u) << "nothing was tried";
}

TEST(FrameSenderModel, TheSumHoldsAlsoWhenTheStoreIsTooSmall) {
  std::uint64_t lost = 0;
  for (unsigned seed = 0; seed < kSeeds && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    PlayedRun run(seed, {.refuses = seed % 2 == 0, .drops = true});
    run.Play();
    run.ExpectSum();
    lost += run.LostOnTheWay();
  }
  EXPECT_GT(lost, 1000u) << "nothing was tried";
}

TEST(FrameSenderModel, AKilledSenderLosesNothingAndItsDoublesHaveTheSameIds) {
  int kills = 0;
  std::size_t doubles = 0;
  for (unsigned seed = 0; seed < kSeeds && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    PlayedRun run(seed, {.kills = true});
    run.Play();
    run.ExpectSum();
    kills += run.Kills();
    doubles += run.Collector().Doubles();
  }
  EXPECT_GT(kills, 50);
  EXPECT_GT(doubles, 50u) << "nothing was sent twice";
}

TEST(FrameSenderState, ALossThatNobodyWasToldOfIsReportedByTheNextProcess) {
  std::vector<std::string> told;
  const auto tell = [&](const std::string& words) { told.push_back(words); };
  SendQueue::Time now{};
  FrameSender first("web1", {}, tell, 1);
  first.BeginStream(std::string(16, 's'), now);
  ASSERT_TRUE(first.TakeState()) << "a new stream is known at once";
  PlayedFrame frame(1, std::string(16, 'a'), 3);
  for (int i = 0; i < 3; ++i) frame.Trace("log", 4);
  first.Add(frame.Get(), now);
  ASSERT_TRUE(first.Next(now += 1s));
  first.Answer(Answered(400), now, 0);
  EXPECT_THAT(told, testing::ElementsAre("3 traces lost: the collector refused them (400)"));
  const auto stored = first.TakeState();
  ASSERT_TRUE(stored);
  EXPECT_EQ(stored->frames, 1u);

  FrameSender second("web1", {}, tell, 1);
  ASSERT_TRUE(second.Resume(stored->bytes));
  second.BeginStream(std::string(16, 's'), now);
  EXPECT_EQ(second.Confirmed(), 1u);
  EXPECT_FALSE(second.Next(now)) << "it rides with a frame";
  second.Add(PlayedFrame(2, std::string(16, 'a'), 3).Get(), now);
  const auto* const request = second.Next(now += 1s);
  ASSERT_TRUE(request);
  PlayedCollector collector;
  collector.Take(*request);
  EXPECT_EQ(collector.Lost(), 3u);
  second.Answer(Answered(200), now, 0);
  const auto told2 = second.TakeState();
  ASSERT_TRUE(told2);
  FrameSender third("web1", {}, tell, 1);
  ASSERT_TRUE(third.Resume(told2->bytes));
  EXPECT_EQ(third.Unreported(), 0u);
}

TEST(FrameSenderState, BytesThatAreNoStateAreRefused) {
  FrameSender sender(
      "web1", {}, [](const std::string&) {}, 1);
  EXPECT_FALSE(sender.Resume("no state"));
  EXPECT_FALSE(sender.Resume(""));
  EXPECT_EQ(sender.Stream(), "");
}

}  // namespace
