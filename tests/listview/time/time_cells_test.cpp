// The cells of the columns of times.
#include "listview/time/time_cells.h"

#include <gtest/gtest.h>

#include "settings/globals.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "support/zone_guard.h"

namespace {

constexpr std::uint64_t kUsPs = 1'000'000;

class TimeCellsTest : public testing::Test {
 protected:
  TimeCellsTest() {
    g_useUtc = true;
    m_document.m_loading = false;
  }
  ~TimeCellsTest() override { g_useUtc = false; }

  // A trace at so many microseconds behind 09:41:07.
  TraceEvent_i* Add(unsigned us) {
    m_document.AddTrace(MakeEvent({.time = PackTime(9, 41, 7 + us / 1'000'000, us / 1000 % 1000),
                                   .tic = (5'000'000 + us) * kUsPs,
                                   .pid = 1})
                            .release());
    return m_document.m_traces.back();
  }
  void Trim(int count) {
    CTraceHint hint;
    for (int i = 0; i < count; ++i)
      hint.m_events.push_back(m_document.m_traces[static_cast<std::size_t>(i)]);
    m_cells.Forget(hint);
    for (int i = 0; i < count; ++i) m_document.m_traces.PopFront();
  }
  std::string Since(const TraceEvent_i* trace) {
    return m_cells.Text(Column::Since, *trace, nullptr, std::nullopt);
  }
  std::string Wall(std::size_t place, bool placed = true) {
    return m_cells.Text(Column::WallTime, *m_document.m_traces[place], nullptr,
                        placed ? std::optional(place) : std::nullopt);
  }

  RecordingHost m_host;
  CTraceDoc m_document{m_host};
  int m_repaints = 0;
  TimeCells m_cells{m_document, [this] { ++m_repaints; }};
};

TEST_F(TimeCellsTest, SinceIsEmptyUntilATraceIsTheReference) {
  const TraceEvent_i* const one = Add(0);
  EXPECT_EQ(Since(one), "");
  m_cells.ToggleReference(*one);
  EXPECT_EQ(Since(one), "reference");
  m_cells.ToggleReference(*one);
  EXPECT_EQ(Since(one), "") << "again on the same trace takes it off";
}

TEST_F(TimeCellsTest, SinceIsNegativeBeforeTheReference) {
  const TraceEvent_i *const one = Add(0), *const two = Add(1500), *const three = Add(2000);
  m_cells.ToggleReference(*one);
  m_cells.ToggleReference(*two);
  EXPECT_EQ(Since(one), "-0.001500000");
  EXPECT_EQ(Since(two), "reference");
  EXPECT_EQ(Since(three), "0.000500000");
}

TEST_F(TimeCellsTest, AReferenceThatIsTrimmedIsGoneAndSaysSo) {
  const TraceEvent_i* const one = Add(0);
  const TraceEvent_i* const two = Add(1500);
  m_cells.ToggleReference(*one);
  Trim(1);
  EXPECT_EQ(Since(two), "reference gone");
  m_cells.ToggleReference(*two);
  EXPECT_EQ(Since(two), "reference");
}

TEST_F(TimeCellsTest, AReferenceThatIsClearedIsGoneAlsoWhereANewTraceLies) {
  const TraceEvent_i* const one = Add(0);
  m_cells.ToggleReference(*one);
  m_document.DeleteContents();
  const TraceEvent_i* const other = Add(0);
  EXPECT_EQ(Since(other), "reference gone");
  EXPECT_FALSE(m_cells.IsReference(other));
}

TEST_F(TimeCellsTest, WallTimeHasTheMicrosecondsThatProgramsGet) {
  TraceMoments moments(true);
  for (const unsigned us : {500u, 1400u, 2000u, 3999u}) Add(us);
  moments.Learn(m_document.m_traces);
  for (std::size_t place = 0; place < 4; ++place) {
    std::string text;
    moments.Append(text, place, *m_document.m_traces[place]);
    EXPECT_EQ(Wall(place), text);
    m_cells.BeginPage();
    EXPECT_EQ(Wall(place, false), text) << "its place is looked for";
  }
  EXPECT_EQ(Wall(1), "2026-11-21T09:41:07.001400Z");
}

TEST_F(TimeCellsTest, WallTimeIsInTheZoneThatIsShown) {
  const ZoneGuard zone("EST5");
  for (const unsigned us : {500U, 2000U}) Add(us);
  g_useUtc = false;
  EXPECT_EQ(Wall(0), "2026-11-21T04:41:07.000500-05:00");
  g_useUtc = true;
  EXPECT_EQ(Wall(0), "2026-11-21T09:41:07.000500Z");
}

TEST_F(TimeCellsTest, ManyTracesAreLearnedInTheBackgroundAndThenPaintedAgain) {
  for (unsigned i = 0; i < 20'000; ++i) Add(i * 10);
  EXPECT_EQ(Wall(7), "2026-11-21T09:41:07.000Z");
  EXPECT_EQ(m_repaints, 0);
  while (m_repaints == 0) m_host.RunPosted();
  EXPECT_EQ(Wall(7), "2026-11-21T09:41:07.000070Z");
  Add(200'030);
  EXPECT_EQ(Wall(20'000), "2026-11-21T09:41:07.200030Z") << "a new one is learned at once";
  EXPECT_EQ(m_repaints, 1);
}

TEST_F(TimeCellsTest, ATrimKeepsTheMicrosecondsAndAClearBeginsAnew) {
  for (const unsigned us : {500u, 1400u, 2000u}) Add(us);
  Wall(0);
  Trim(2);
  EXPECT_EQ(Wall(0), "2026-11-21T09:41:07.002000Z");
  m_document.DeleteContents();
  Add(2999);
  EXPECT_EQ(Wall(0), "2026-11-21T09:41:07.002000Z") << "one trace alone tells less";
}

TEST_F(TimeCellsTest, ATimeOfNoCalendarIsShownAsItStands) {
  m_document.AddTrace(MakeEvent({.date = PackDate(2026, 13, 40)}).release());
  EXPECT_EQ(Wall(0), m_document.m_traces[0]->GetTimeString(false));
}

TEST_F(TimeCellsTest, TracesThatAreTrimmedWhileTheyAreLearnedAreNotMissed) {
  for (unsigned i = 0; i < 9000; ++i) Add(i * 10);
  Wall(0);
  Trim(6003);
  while (m_repaints == 0) m_host.RunPosted();
  EXPECT_EQ(Wall(0), "2026-11-21T09:41:07.060030Z");
}

}  // namespace
