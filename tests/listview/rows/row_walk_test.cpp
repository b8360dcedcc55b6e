// The walk of a search over rows, with a scan ahead and without.
#include "listview/rows/row_walk.h"

#include <gtest/gtest.h>

#include <random>

#include "records/trc_walk.h"
#include "support/temp_dir.h"
#include "support/trace_list_sink.h"
#include "support/trc_image.h"
#include "tree/regex/regex.h"

namespace {

class RowWalkTest : public testing::Test {
 protected:
  void Open(int traces) {
    TrcImage image;
    for (int i = 0; i < traces; ++i)
      image.Name(1, "hit").Trace({.text = m_random() % 4 ? "no" : "a hit", .stack = "hit"});
    m_file = MappedFile::Open(image.WriteTo(m_dir.File("a.trc")));
    WalkTrc(m_file->View(), TraceListSink{m_traces});
    m_lent = std::make_shared<LentTraces>(m_traces, m_file);
  }
  // All rows that the search meets as hits, in order, and where it stops.
  std::string Hits(RowWalk& walk) {
    std::string hits;
    for (;;) {
      while (walk.Prepare()) {
      }
      const std::optional<std::string_view> text = walk.NextText();
      if (!text) return hits + "stop " + std::to_string(walk.StopRow());
      if (RegexMatchText(*text)) hits += std::to_string(walk.Row()) + " ";
    }
  }
  void ExpectTheSame(const RowStore& rows) {
    for (int focused = -1; focused < rows.Size(); ++focused)
      for (const bool backward : {false, true}) {
        RowWalk plain(rows, focused, backward), scanned(rows, focused, backward);
        scanned.Scan(m_traces, [&](const ScanOrder& order) {
          return TextScan::BeginWith(2, 3, m_lent, *RegexLastProgram(), order);
        });
        ASSERT_EQ(Hits(scanned), Hits(plain)) << "from " << focused << (backward ? " up" : " down");
      }
  }

  std::mt19937 m_random{5};
  TempDir m_dir;
  std::shared_ptr<const MappedFile> m_file;
  TraceList_t m_traces;
  std::shared_ptr<const LentTraces> m_lent;
};

TEST_F(RowWalkTest, AScanLeavesTheHitsAndTheirOrderWhereAllIsShown) {
  ASSERT_EQ(RegexPrepare("hit", 0, 1, 0, 0), 1);
  for (const int traces : {1, 2, 3, 40}) {
    m_traces.Clear();
    Open(traces);
    RowStore rows(m_traces);
    rows.ShowAll();
    ASSERT_EQ(rows.Size(), traces);
    ExpectTheSame(rows);
  }
}

TEST_F(RowWalkTest, AScanLeavesTheHitsAndTheirOrderInAFilteredList) {
  ASSERT_EQ(RegexPrepare("hit", 0, 1, 0, 0), 1);
  Open(60);
  for (const unsigned share : {2u, 5u, 30u}) {
    RowStore rows(m_traces);
    for (std::size_t i = 0; i < m_traces.size(); ++i)
      if (m_random() % share == 0) rows.Append(m_traces[i]);
    ExpectTheSame(rows);
  }
}

TEST_F(RowWalkTest, OnlyRowsThatMayMatchAreLookedAt) {
  ASSERT_EQ(RegexPrepare("hit", 0, 1, 0, 0), 1);
  Open(50);
  RowStore rows(m_traces);
  rows.ShowAll();
  RowWalk walk(rows, -1, false);
  walk.Scan(m_traces, [&](const ScanOrder& order) {
    return TextScan::BeginWith(1, 10, m_lent, *RegexLastProgram(), order);
  });
  for (;;) {
    while (walk.Prepare()) {
    }
    const std::optional<std::string_view> text = walk.NextText();
    if (!text) break;
    EXPECT_EQ(*text, "a hit");
  }
}

}  // namespace
