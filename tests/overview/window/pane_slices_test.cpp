#include "overview/window/pane_slices.h"

#include <gtest/gtest.h>

#include "overview/window/overview_documents.h"

namespace {

constexpr std::chrono::milliseconds kStep(4);

void RunToWhole(PaneSlices& slices) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  do slices.Step(kStep);
  while (!slices.IsWhole() && !slices.HasFailed() && std::chrono::steady_clock::now() < end);
  ASSERT_TRUE(slices.IsWhole());
}

CTraceFilter RandomFilter(RandomTraces& random) {
  const char* const texts[] = {"", "severity >= warn", "component in {n41, n42} or pid == n10",
                               "text contains took", "not app == n31"};
  CTraceFilter filter;
  const std::string text = texts[random.Below(5)];
  if (!text.empty()) filter.where = WhereOf(text);
  return filter;
}

std::optional<TimeLimits> RandomZoom(RandomTraces& random) {
  if (random.Below(3) != 0) return std::nullopt;
  const std::int64_t from = 1'795'219'200'000 + random.Below(170'000) * std::int64_t{1000};
  return TimeLimits{from, from + 1 + random.Below(90'000'000)};
}

// Tells one PaneSlices of removals, as the strip does.
class Removals final : public PaneWatcher {
 public:
  void OnRemoval(const CTraceHint& removed) override {
    if (slices) slices->OnRemoval(removed);
  }
  std::unique_ptr<PaneSlices> slices;
};

// Steps are cut short, so that traces go that were counted and others that were not.
TEST(PaneSlices, OfAMonitorAreASlowCountUnderFiltersTrimsClearsAndZooms) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE(seed);
    OverviewDocument<CTraceDoc> document(seed);
    RandomTraces& random = document.m_random;
    Removals removals;
    document.m_pane.Watch(removals);
    CTraceFilter filter = RandomFilter(random);
    for (unsigned step = 0; step < 12; ++step) {
      document.AddRandom(random.Below(60));
      if (random.Below(4) == 0) document.Trim(random.Below(80));
      if (random.Below(12) == 0) document.m_document.DeleteContents();
      if (random.Below(6) == 0) filter = RandomFilter(random);
      if (!removals.slices || !removals.slices->IsOf(document.m_document, filter) ||
          random.Below(8) == 0)
        removals.slices =
            std::make_unique<PaneSlices>(document.m_document, filter, RandomZoom(random));
      if (random.Below(3) != 0) removals.slices->Step(std::chrono::milliseconds(0));
      if (random.Below(4) == 0) document.Trim(random.Below(40));
    }
    RunToWhole(*removals.slices);
    ExpectCountsOf(document.Slow(filter), removals.slices->Slices());
    document.m_pane.Unwatch(removals);
    if (HasFailure()) return;
  }
}

TEST(PaneSlices, OfAFileAreASlowCountUnderFiltersAndZooms) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE(seed);
    OverviewDocument<LendingDoc> document(seed);
    document.AddRandom(document.m_random.Below(3000));
    const CTraceFilter filter = RandomFilter(document.m_random);
    const std::vector<SlicedTrace> slow = document.Slow(filter);
    PaneSlices whole(document.m_document, filter);
    RunToWhole(whole);
    ExpectCountsOf(slow, whole.Slices());
    PaneSlices zoomed(document.m_document, filter, RandomZoom(document.m_random), whole.Times());
    RunToWhole(zoomed);
    ExpectCountsOf(slow, zoomed.Slices());
    if (HasFailure()) return;
  }
}

template <class Document>
void ExpectFirstTraces(unsigned seed) {
  OverviewDocument<Document> document(seed);
  document.AddRandom(800);
  const CTraceFilter filter = RandomFilter(document.m_random);
  PaneSlices slices(document.m_document, filter);
  RunToWhole(slices);
  for (int i = 0; i < 20; ++i) {
    const auto limits = RandomZoom(document.m_random).value_or(TimeLimits());
    const TraceEvent_i* first = nullptr;
    CTraceFilter asked = filter;
    document.m_document.m_traces.ForEach(0, [&](const TraceEvent_i* event) {
      const std::int64_t time = SlowTraceOf(*event).time;
      if (!first && time != TraceTimes::kNone && limits.Has(time) &&
          asked.Matches(*event, document.m_document) == 1)
        first = event;
    });
    ASSERT_EQ(slices.FirstIn(limits), first);
  }
}

TEST(PaneSlices, TheFirstTraceOfAPlaceIsTheFirstOfTheDocumentThatIsShown) {
  for (unsigned seed = 0; seed < 30; ++seed) {
    ExpectFirstTraces<CTraceDoc>(seed);
    ExpectFirstTraces<LendingDoc>(seed);
  }
}

// A name that comes later says that traces before it were reports of losses.
TEST(PaneSlices, LossesAreCountedWhenTheirNamesCome) {
  OverviewDocument<CTraceDoc> document;
  document.m_document.m_names.erase(50);
  for (int i = 0; i < 4; ++i) {
    TraceFields fields;
    fields.component = 40;
    fields.category = static_cast<NameId>(50 + i % 2);
    document.Add(MakeEvent(fields));
  }
  Removals removals;
  document.m_pane.Watch(removals);
  removals.slices = std::make_unique<PaneSlices>(document.m_document, CTraceFilter());
  RunToWhole(*removals.slices);
  EXPECT_EQ(removals.slices->Slices().All().losses, 0U);
  document.m_document.m_names[50].name = "Loss";
  RunToWhole(*removals.slices);
  EXPECT_EQ(removals.slices->Slices().All().losses, 2U);
  document.Trim(1);
  RunToWhole(*removals.slices);
  EXPECT_EQ(removals.slices->Slices().All().losses, 1U);
  document.m_pane.Unwatch(removals);
}

TEST(PaneSlices, OneBrokenTimeInAMonitorIsFarAndTheOthersStayNarrow) {
  OverviewDocument<CTraceDoc> document;
  document.Add(MakeEvent({.date = PackDate(1970, 1, 1), .time = 0}));
  PaneSlices slices(document.m_document, CTraceFilter());
  for (int i = 0; i < 400; ++i) {
    document.AddAt(i * 10);
    RunToWhole(slices);
  }
  EXPECT_LE(slices.Slices().Width(), 2);
  EXPECT_EQ(slices.Slices().Before(), 1U);
}

TEST(PaneSlices, ChangesAreTold) {
  OverviewDocument<CTraceDoc> document;
  document.AddAt(1);
  PaneSlices slices(document.m_document, CTraceFilter());
  EXPECT_TRUE(slices.Step(kStep));
  EXPECT_FALSE(slices.Step(kStep));
  document.AddAt(2);
  EXPECT_TRUE(slices.Step(kStep));
  EXPECT_FALSE(slices.Step(kStep));
}

}  // namespace
