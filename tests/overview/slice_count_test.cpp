#include "overview/slice_count.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "overview/slow_slices.h"
#include "statistics/random_traces.h"

namespace {

constexpr std::chrono::seconds kLong(60);
constexpr NameId kLossComponent = 40, kLossCategory = 51;

LossNames Losses() {
  NameMap names;
  names[kLossComponent].name = "Quor";
  names[41].name = "Loss";
  names[kLossCategory].name = "Loss";
  return LossNames(names);
}

std::vector<SlicedTrace> SlowTraces(const std::vector<EventPtr>& events,
                                    const ListedTraces& listed) {
  std::vector<SlicedTrace> traces;
  for (std::size_t i = 0; i < events.size(); ++i) {
    if (!listed.Has(i)) continue;
    const TraceEvent_i& event = *events[i];
    const int bits = event.GetAttributes();
    const auto moment = MomentOfStamp(std::uint64_t{event.GetDate()} << 32 | event.GetTime());
    traces.push_back(
        {moment ? *moment / 1'000'000 : TraceTimes::kNone,
         bits & 1   ? 0U
         : bits & 2 ? 1U
         : bits & 4 ? 2U
                    : 3U,
         event.GetComponentId() == kLossComponent && event.GetCategoryId() == kLossCategory});
  }
  return traces;
}

SliceCount::State Whole(SliceCount& count) {
  SliceCount::State state = SliceCount::State::More;
  const auto end = SliceCount::Clock::now() + kLong;
  while (state == SliceCount::State::More && SliceCount::Clock::now() < end)
    state = count.Take(end);
  return state;
}

TEST(SliceCount, IsASlowCountWhateverThreadsAndPiecesThereAre) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE(seed);
    RandomTraces random(seed);
    std::vector<EventPtr> events;
    const std::size_t traces = random.Below(3000);
    while (events.size() < traces) events.push_back(random.Make());
    if (traces > 20 && seed % 3 == 0) {
      events[5] = MakeEvent({.date = PackDate(1970, 1, 1), .time = 0});
      events[9] = MakeEvent({.date = 0, .time = 0});
    }
    const auto listed = std::make_shared<ListedTraces>(events, random.Below(3));
    SliceCountSetup setup;
    setup.perPiece = 1 + random.Below(500);
    setup.perLook = 1 + random.Below(100);
    setup.threads = 1 + random.Below(4);
    SliceCount count(listed, Losses(), setup);
    ASSERT_EQ(Whole(count), SliceCount::State::Whole);
    const std::vector<SlicedTrace> slow = SlowTraces(events, *listed);
    ExpectCountsOf(slow, count.Slices());
    if (count.Slices().Size() == 0) continue;

    // A part of it anew: the same traces in narrower slices, and only the pieces near it are read.
    const std::int64_t middle = (count.Slices().From() + count.Slices().To()) / 2;
    setup.limits = TimeLimits{middle - random.Below(5'000'000), middle + random.Below(5'000'000)};
    setup.known = count.Times();
    SliceCount part(listed, Losses(), setup);
    ASSERT_EQ(Whole(part), SliceCount::State::Whole);
    ExpectCountsOf(slow, part.Slices());
    EXPECT_LE(part.Slices().Width(), count.Slices().Width());
    if (HasFailure()) return;
  }
}

// Counts what is read.
class WatchedTraces final : public CountedTraces {
 public:
  explicit WatchedTraces(const std::vector<EventPtr>& events) : m_events(events) {}
  std::size_t Size() const override { return m_events.size(); }
  std::unique_ptr<Reader> MakeReader() const override { return std::make_unique<Walk>(*this); }
  mutable std::size_t m_read = 0;

 private:
  class Walk final : public Reader {
   public:
    explicit Walk(const WatchedTraces& all) : m_all(all) {}
    void Take(std::size_t from, std::size_t end, Events& events) override {
      for (; from < end; ++from, ++m_all.m_read) events.push_back(m_all.m_events[from].get());
    }

   private:
    const WatchedTraces& m_all;
  };
  const std::vector<EventPtr>& m_events;
};

std::vector<EventPtr> OneASecond(int traces) {
  std::vector<EventPtr> events;
  for (int i = 0; i < traces; ++i) {
    const auto second = static_cast<unsigned>(i);
    events.push_back(
        MakeEvent({.date = PackDate(2026, 11, 21),
                   .time = PackTime(second / 3600, second / 60 % 60, second % 60, 0)}));
  }
  return events;
}

TEST(SliceCount, APartReadsOnlyThePiecesThatItNeeds) {
  const std::vector<EventPtr> events = OneASecond(10'000);
  const auto traces = std::make_shared<WatchedTraces>(events);
  SliceCountSetup setup{.perPiece = 100, .threads = 1};
  SliceCount whole(traces, {}, setup);
  ASSERT_EQ(Whole(whole), SliceCount::State::Whole);
  EXPECT_EQ(traces->m_read, 10'000U);
  EXPECT_LE(whole.Times()->size(), 100U);
  setup.known = whole.Times();
  const std::int64_t from = whole.Slices().From();
  setup.limits = TimeLimits{from + 4'999'000, from + 5'150'000};
  SliceCount part(traces, {}, setup);
  ASSERT_EQ(Whole(part), SliceCount::State::Whole);
  EXPECT_LE(traces->m_read, 10'300U);
  EXPECT_EQ(part.Slices().All().Traces(), 151U);
  EXPECT_EQ(part.Slices().Before(), 4999U);
  EXPECT_EQ(part.Slices().Behind(), 4850U);
}

TEST(SliceCount, ManyTracesHaveNoMorePiecesThanWasAskedFor) {
  const std::vector<EventPtr> events = OneASecond(10'000);
  SliceCount count(std::make_shared<WatchedTraces>(events), {},
                   {.mostPieces = 7, .perPiece = 1, .threads = 1});
  ASSERT_EQ(Whole(count), SliceCount::State::Whole);
  EXPECT_EQ(count.Times()->size(), 7U);
}

TEST(SliceCount, NoTracesAreWholeAtOnce) {
  const std::vector<EventPtr> events;
  SliceCount count(std::make_shared<WatchedTraces>(events), {});
  EXPECT_EQ(Whole(count), SliceCount::State::Whole);
  EXPECT_EQ(count.Slices().Size(), 0U);
  EXPECT_EQ(count.Thousandths(), 1000);
}

class Unreadable final : public CountedTraces {
 public:
  std::size_t Size() const override { return 5; }
  std::unique_ptr<Reader> MakeReader() const override { throw std::bad_alloc(); }
};

TEST(SliceCount, TracesThatCannotBeReadFail) {
  SliceCount count(std::make_shared<Unreadable>(), {});
  EXPECT_EQ(Whole(count), SliceCount::State::Failed);
}

TEST(LossNames, AreThoseOfComponentAndCategory) {
  const LossNames losses = Losses();
  EXPECT_TRUE(losses.Has(kLossComponent, kLossCategory));
  EXPECT_TRUE(losses.Has(kLossComponent, 41));
  EXPECT_FALSE(losses.Has(kLossCategory, kLossComponent));
  EXPECT_FALSE(losses.Has(kLossComponent, 52));
  EXPECT_FALSE(LossNames().Has(0, 0));
}

}  // namespace
