// Rows are found when they are asked for.
#include "filter/shown_traces.h"

#include "run_trc.h"
#include "support/temp_dir.h"
#include "support/trc_image.h"
#include "terminal/trace_file.h"

namespace {

class ShownTracesTest : public testing::Test {
 protected:
  static constexpr std::size_t kTraces = 5000;

  // Every fifth trace is an error.
  static TrcImage Image() {
    TrcImage image;
    for (std::size_t i = 0; i < kTraces; ++i)
      image.Trace(i % 5 == 4 ? TraceFields{.attributes = kAttributeError} : TraceFields{});
    return image;
  }
  // Leaves the errors, and counts what is tested.
  void KeepErrors(ShownTraces& traces) {
    traces.Keep([this](const TraceEvent_i& trace) {
      ++m_tested;
      return trace.GetAttributes() == kAttributeError;
    });
  }

  TempDir m_temp;
  TerminalHost m_host;
  const std::unique_ptr<CTraceFileDoc> m_document =
      OpenTraceFile(m_host, Image().WriteTo(m_temp.File("a.trc")));
  ShownTraces m_traces{*m_document};
  std::size_t m_tested = 0;
};

TEST_F(ShownTracesTest, TheFirstRowNeedsNoMoreThanTheTracesBeforeIt) {
  KeepErrors(m_traces);
  EXPECT_TRUE(m_traces.Has(0));
  EXPECT_EQ(m_tested, 5u);
  EXPECT_TRUE(m_traces.Has(9));
  EXPECT_EQ(m_tested, 50u);
  EXPECT_EQ(m_traces.PlaceOf(9), 49u);
}

TEST_F(ShownTracesTest, AllRowsComeInTheirOrder) {
  KeepErrors(m_traces);
  EXPECT_EQ(m_traces.Count(), kTraces / 5);
  EXPECT_EQ(m_tested, kTraces);
  EXPECT_FALSE(m_traces.Has(kTraces / 5));
  EXPECT_EQ(m_traces.PlaceOf(kTraces / 5 - 1), kTraces - 1);
}

TEST_F(ShownTracesTest, FromAPlaceOnOnlyTheRowBeforeItIsLookedForBackwards) {
  KeepErrors(m_traces);
  const std::size_t first = m_traces.FirstRowFrom(3001);
  EXPECT_EQ(first, 1u);
  EXPECT_TRUE(m_traces.Has(first));
  EXPECT_EQ(m_traces.PlaceOf(first - 1), 2999u);
  EXPECT_EQ(m_traces.PlaceOf(first), 3004u);
  EXPECT_EQ(m_tested, 6u);
}

TEST_F(ShownTracesTest, FromTheBeginningThereIsNoRowBefore) {
  KeepErrors(m_traces);
  EXPECT_EQ(m_traces.FirstRowFrom(0), 0u);
  EXPECT_TRUE(m_traces.Has(0));
  EXPECT_EQ(m_traces.PlaceOf(0), 4u);
}

TEST_F(ShownTracesTest, TheLookIsAskedOnTheWayAndEndsTheSearch) {
  m_traces.Keep([](const TraceEvent_i&) { return false; });
  std::vector<std::size_t> places;
  m_traces.OnLook([&](std::size_t place) {
    places.push_back(place);
    return places.size() < 3;
  });
  EXPECT_FALSE(m_traces.Has(0));
  EXPECT_EQ(places, (std::vector<std::size_t>{0, 256, 512}));
}

}  // namespace
