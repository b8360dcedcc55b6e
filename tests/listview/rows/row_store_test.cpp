#include "listview/rows/row_store.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "support/make_event.h"

namespace {

class Store : public testing::Test {
 protected:
  TraceEvent_i* Add() {
    m_traces.push_back(MakeEvent({.count = m_nextCount++}).release());
    return m_traces.back();
  }
  void AddMany(int count) {
    while (count-- > 0) Add();
  }
  // A trim as a view sees it: the traces leave the store while the list still holds them.
  std::vector<int> Trim(int count) {
    std::vector<int> rows;
    for (int i = 0; i < count; ++i)
      rows.push_back(m_rows.RemoveRow(m_traces[static_cast<std::size_t>(i)], true));
    for (int i = 0; i < count; ++i) m_traces.PopFront();
    return rows;
  }
  std::string Rows() const {
    std::string rows;
    for (int row = 0; row < m_rows.Size(); ++row)
      rows += (row ? " " : "") + std::to_string(m_rows.EventAt(row)->GetSequenceNumber());
    return rows;
  }

  TraceList_t m_traces;
  RowStore m_rows{m_traces};
  std::uint32_t m_nextCount = 1;
};

TEST_F(Store, BeginsEmpty) {
  EXPECT_EQ(m_rows.Size(), 0);
  EXPECT_FALSE(m_rows.Has(0));
  EXPECT_FALSE(m_rows.Has(-1));
}

TEST_F(Store, ShowsAllThatTheDocumentHoldsNowAtNoCost) {
  AddMany(1000);
  m_rows.ShowAll();
  EXPECT_EQ(m_rows.Size(), 1000);
  EXPECT_EQ(m_rows.StorageBytes(), 0u);
  Add();
  EXPECT_EQ(m_rows.Size(), 1000) << "a trace that no hint has told of";
}

TEST_F(Store, ARowIsTheEventAndAStateOfZero) {
  AddMany(3);
  m_rows.ShowAll();
  EXPECT_EQ(m_rows[1].event, m_traces[1]);
  EXPECT_EQ(m_rows[1].state, 0u);
  m_rows.RemoveRow(m_traces[1], false);
  EXPECT_EQ(m_rows[1].event, m_traces[2]);
  EXPECT_EQ(m_rows[1].state, 0u);
}

TEST_F(Store, GrowsWithTheDocumentAtNoCost) {
  AddMany(2);
  m_rows.ShowAll();
  for (int i = 0; i < 3; ++i) m_rows.Append(Add());
  EXPECT_EQ(Rows(), "1 2 3 4 5");
  EXPECT_EQ(m_rows.StorageBytes(), 0u);
}

TEST_F(Store, ATraceLeftOutMakesRowsOfTheirOwn) {
  AddMany(2);
  m_rows.ShowAll();
  Add();
  m_rows.Append(Add());
  EXPECT_EQ(Rows(), "1 2 4");
  EXPECT_EQ(m_rows.StorageBytes(), 3 * sizeof(TraceRow));
  m_rows.Append(Add());
  EXPECT_EQ(Rows(), "1 2 4 5");
}

TEST_F(Store, TheFirstTraceLeftOutMakesRowsOfTheirOwnToo) {
  AddMany(3);
  m_rows.Clear();
  m_rows.Append(m_traces[1]);
  m_rows.Append(m_traces[2]);
  EXPECT_EQ(Rows(), "2 3");
}

TEST_F(Store, ATrimTakesTheFirstRowsWhileTheListStillHoldsThem) {
  AddMany(5);
  m_rows.ShowAll();
  EXPECT_EQ(Trim(2), (std::vector<int>{0, 0}));
  EXPECT_EQ(Rows(), "3 4 5");
  m_rows.Append(Add());
  EXPECT_EQ(Trim(1), std::vector<int>{0});
  EXPECT_EQ(Rows(), "4 5 6");
  EXPECT_EQ(m_rows.StorageBytes(), 0u);
}

TEST_F(Store, ATrimmedTraceThatIsNotShownGivesMinusOne) {
  AddMany(4);
  m_rows.Clear();
  m_rows.Append(m_traces[1]);
  m_rows.Append(m_traces[3]);
  EXPECT_EQ(Trim(3), (std::vector<int>{-1, 0, -1}));
  EXPECT_EQ(Rows(), "4");
}

TEST_F(Store, ATraceThatIsNotTheOldestIsFoundToo) {
  AddMany(5);
  m_rows.ShowAll();
  EXPECT_EQ(m_rows.RemoveRow(m_traces[3], false), 3);
  EXPECT_EQ(m_rows.RemoveRow(m_traces[3], false), -1);
  EXPECT_EQ(m_rows.RemoveRow(m_traces[0], false), 0);
  EXPECT_EQ(Rows(), "2 3 5");
}

TEST_F(Store, TracesTrimmedBeforeTheyWereReportedAreNoRowsAndLaterOnesCostNothing) {
  AddMany(3);
  m_rows.ShowAll();
  AddMany(4);  // not reported yet
  EXPECT_EQ(Trim(5), (std::vector<int>{0, 0, 0, -1, -1}));
  EXPECT_EQ(m_rows.Size(), 0);
  m_rows.Append(m_traces[0]);
  m_rows.Append(m_traces[1]);
  EXPECT_EQ(Rows(), "6 7");
  EXPECT_EQ(m_rows.StorageBytes(), 0u);
}

TEST_F(Store, SomeOfTheUnreportedTracesTrimmedAndTheNextHidden) {
  AddMany(1);
  m_rows.ShowAll();
  AddMany(4);
  Trim(3);
  m_rows.Append(m_traces[1]);  // the filter hides m_traces[0]
  EXPECT_EQ(Rows(), "5");
}

TEST_F(Store, AClearedListLeavesNoRowsThatCouldBeRead) {
  AddMany(3);
  m_rows.ShowAll();
  m_traces.Clear();
  EXPECT_EQ(m_rows.Size(), 0);
  EXPECT_FALSE(m_rows.Has(0));
  m_rows.Append(Add());
  EXPECT_EQ(Rows(), "4");
}

TEST_F(Store, AClearedListLeavesNoRowsOfTheirOwnEither) {
  AddMany(3);
  m_rows.Clear();
  m_rows.Append(m_traces[2]);
  const TraceEvent_i* gone = m_traces[2];
  m_traces.Clear();
  EXPECT_EQ(m_rows.Size(), 0);
  EXPECT_EQ(m_rows.RemoveRow(gone, false), -1);
  m_rows.ShowAll();
  EXPECT_EQ(m_rows.StorageBytes(), 0u);
}

TEST_F(Store, AListFilledByALoadIsANewOne) {
  AddMany(3);
  m_rows.ShowAll();
  TraceList_t loaded;
  loaded.push_back(MakeEvent({.count = 77}).release());
  m_traces = std::move(loaded);
  EXPECT_EQ(m_rows.Size(), 0);
  m_rows.ShowAll();
  EXPECT_EQ(Rows(), "77");
}

// The obvious way: every trace that the views were told of, in order, and whether it is shown.
struct Reported {
  TraceEvent_i* event;
  bool shown;
};

class RandomPlay : public Store, public testing::WithParamInterface<unsigned> {
 protected:
  int Below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
  bool Passes(const TraceEvent_i* event) const {
    return !m_filtered || event->GetSequenceNumber() % m_hidden != 0;
  }
  void Rebuild() {
    m_filtered = Below(2) != 0;
    m_hidden = static_cast<unsigned>(2 + Below(40));
    m_reported.clear();
    m_rows.Clear();
    if (!m_filtered) m_rows.ShowAll();
    m_traces.ForEach(0, [&](TraceEvent_i* event) {
      m_reported.push_back({event, Passes(event)});
      if (m_filtered && Passes(event)) m_rows.Append(event);
    });
  }
  // Traces come, some are trimmed before the views are notified of any, then of the rest.
  void Drain() {
    std::vector<TraceEvent_i*> batch;
    for (int i = Below(30); i > 0; --i) batch.push_back(Add());
    const std::size_t before = m_reported.size();
    const int trimmed = Below(3) == 0 ? Below(static_cast<int>(m_traces.size()) + 1) : 0;
    TrimChecked(trimmed);
    const std::size_t lost =
        trimmed > static_cast<int>(before) ? static_cast<std::size_t>(trimmed) - before : 0;
    for (std::size_t i = lost; i < batch.size(); ++i) {
      m_reported.push_back({batch[i], Passes(batch[i])});
      if (Passes(batch[i])) m_rows.Append(batch[i]);
    }
  }
  void TrimChecked(int count) {
    for (int i = 0; i < count; ++i) {
      TraceEvent_i* event = m_traces[static_cast<std::size_t>(i)];
      bool shown = false;
      if (!m_reported.empty()) {
        shown = m_reported.front().shown;
        m_reported.pop_front();
      }
      ASSERT_EQ(m_rows.RemoveRow(event, Below(2) != 0), shown ? 0 : -1);
    }
    for (int i = 0; i < count; ++i) m_traces.PopFront();
  }
  // Some other sender takes a trace from the middle of the rows.
  void RemoveAnywhere() {
    if (m_reported.empty()) return;
    const std::size_t at = static_cast<std::size_t>(Below(static_cast<int>(m_reported.size())));
    int row = -1;
    if (m_reported[at].shown) {
      row = 0;
      for (std::size_t i = 0; i < at; ++i) row += m_reported[i].shown;
    }
    ASSERT_EQ(m_rows.RemoveRow(m_reported[at].event, false), row);
    m_reported[at].shown = false;
  }
  void Compare() const {
    std::vector<TraceEvent_i*> expected, rows;
    for (const Reported& reported : m_reported)
      if (reported.shown) expected.push_back(reported.event);
    for (int row = 0; row < m_rows.Size(); ++row) rows.push_back(m_rows.EventAt(row));
    ASSERT_EQ(rows, expected);
  }

  std::mt19937 m_random{GetParam()};
  std::deque<Reported> m_reported;
  bool m_filtered = false;
  unsigned m_hidden = 2;
};

TEST_P(RandomPlay, AddsTrimsFiltersAndClearsGiveTheRowsOfAPlainQueue) {
  for (int step = 0; step < 400; ++step) {
    switch (Below(12)) {
      case 0:
        Rebuild();
        break;
      case 1:
        m_traces.Clear();
        Rebuild();
        break;
      case 2:
        RemoveAnywhere();
        break;
      case 3:
        TrimChecked(Below(static_cast<int>(m_traces.size()) + 1));
        break;
      default:
        Drain();
    }
    ASSERT_NO_FATAL_FAILURE(Compare()) << "step " << step;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomPlay, testing::Range(1u, 31u));

}  // namespace
