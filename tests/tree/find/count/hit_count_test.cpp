// The hits of a search counted in the background, beside a count that tests each row.
#include "tree/find/count/hit_count.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <thread>

#include "records/trc_walk.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "support/trace_list_sink.h"
#include "support/trc_image.h"
#include "tree/find/searched_text.h"

namespace {

using std::chrono::milliseconds;

RegexProgram Pattern(const char* text) {
  return RegexProgram::Compile(text, {.ignoreCase = true});
}

// The traces of a file, or those of a monitor.
class CountedDoc final : public CTraceDoc {
 public:
  explicit CountedDoc(Host& host) : CTraceDoc(host) { m_loading = false; }
  std::shared_ptr<const MappedFile> m_file;

 private:
  std::shared_ptr<const MappedFile> FileOfTraces() const override { return m_file; }
};

struct Rows {
  int CountedSize() const { return static_cast<int>(rows.size()); }
  const TraceEvent_i* CountedAt(int row) const { return rows[static_cast<std::size_t>(row)]; }

  std::deque<const TraceEvent_i*> rows;
  bool whole = true;
  int notShown = 0;  // every so many rows; 0: all are shown
  int current = -1;
};

// The count owns it.
class RowsView final : public CountedRows {
 public:
  explicit RowsView(const Rows& rows) : m_rows(rows) {}
  int CountedSize() const override { return m_rows.CountedSize(); }
  const TraceEvent_i* CountedAt(int row) const override { return m_rows.CountedAt(row); }
  bool AreRowsWhole() const override { return m_rows.whole; }
  bool IsShown(int row) override { return m_rows.notShown == 0 || row % m_rows.notShown != 0; }
  int CurrentRow() const override { return m_rows.current; }

 private:
  const Rows& m_rows;
};

class HitCountTest : public testing::Test {
 protected:
  int Below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }
  std::string RandomText() {
    static const char* const kWords[] = {"cart", "Cart", "car t", "a", "b ", "aab", "x", ""};
    std::string text;
    for (int words = Below(5); words > 0; --words) text += kWords[Below(8)];
    return text;
  }
  void OpenFile(int traces) {
    TrcImage image;
    for (int i = 0; i < traces; ++i) image.Trace(RandomText());
    m_document.m_file = MappedFile::Open(image.WriteTo(m_dir.File("a.trc")));
    ASSERT_TRUE(m_document.m_file);
    WalkTrc(m_document.m_file->View(), TraceListSink{m_document.m_traces});
  }
  void AddLive(int traces) {
    for (; traces > 0; --traces) {
      m_document.AddTrace(MakeEvent({.text = RandomText()}).release());
      if (Below(3) > 0) m_rows.rows.push_back(m_document.m_traces.back());
    }
  }
  // Every so many traces are a row.
  void ShowSome(int among) {
    m_rows.rows.clear();
    m_document.m_traces.ForEach(0, [&](const TraceEvent_i* trace) {
      if (Below(among) == 0) m_rows.rows.push_back(trace);
    });
  }
  void Trim(int count) {
    int rows = 0;
    for (int i = 0; i < count; ++i) {
      const TraceEvent_i* const trace = m_document.m_traces[static_cast<std::size_t>(i)];
      if (m_rows.rows.empty() || m_rows.rows.front() != trace) continue;
      m_rows.rows.pop_front();
      ++rows;
    }
    if (rows > 0) m_count->OnRemoved(0, rows);
    for (int i = 0; i < count; ++i) m_document.m_traces.PopFront();
  }
  void Begin(const char* pattern, const HitCountSetup& setup = {}) {
    m_plain = RegexPlan(Pattern(pattern));
    m_count = std::make_unique<HitCount>(m_document, std::make_unique<RowsView>(m_rows),
                                         Pattern(pattern), setup);
  }
  void Settle() {
    for (int ticks = 0; m_count->IsAtWork(); ++ticks) {
      ASSERT_LT(ticks, 20000) << "it does not end";
      if (ticks % 8 == 7) std::this_thread::sleep_for(milliseconds(1));
      m_host.TickTimers();
    }
  }
  std::vector<int> Counted() const {
    std::vector<int> rows;
    m_count->VisitIn(0, m_count->Known(), [&](int row) { rows.push_back(row); });
    return rows;
  }
  // Of the first rows.
  std::vector<int> Plain(int rows) {
    std::vector<int> hits;
    RegexMatcher matcher;
    std::string kept;
    for (int row = 0; row < rows; ++row)
      if (matcher.Begin(*m_plain, SearchedText(*m_rows.CountedAt(row), kept), 1'000'000'000) ==
          RegexAnswer::Yes)
        hits.push_back(row);
    return hits;
  }
  void ExpectExact() {
    ASSERT_NO_FATAL_FAILURE(Settle());
    EXPECT_TRUE(m_count->IsWhole());
    EXPECT_EQ(m_count->Known(), m_rows.CountedSize());
    EXPECT_EQ(Counted(), Plain(m_rows.CountedSize()));
  }

  std::mt19937 m_random{1};
  TempDir m_dir;
  RecordingHost m_host;
  CountedDoc m_document{m_host};
  Rows m_rows;
  std::optional<RegexPlan> m_plain;
  std::unique_ptr<HitCount> m_count;
};

TEST_F(HitCountTest, ADocumentWithoutRowsHasNone) {
  Begin("cart");
  EXPECT_FALSE(m_count->IsWhole()) << "nobody has looked yet";
  ExpectExact();
  EXPECT_EQ(m_count->Count(), 0);
}

TEST_F(HitCountTest, RestsWithoutATimerWhenAllIsCounted) {
  AddLive(200);
  Begin("cart");
  EXPECT_EQ(m_host.Timers().size(), 1U);
  ExpectExact();
  EXPECT_TRUE(m_host.Timers().empty());
  const std::uint64_t version = m_count->Version();
  AddLive(50);
  m_count->OnAdded();
  ExpectExact();
  EXPECT_GT(m_count->Version(), version);
}

// Whoever counts by hand must come to the same: once the test is broken, it must be seen.
TEST_F(HitCountTest, KnowsATextThatHasOneAndATextThatHasNone) {
  for (const char* const text : {"a cart", "none", "CARTS", "car t"})
    m_document.AddTrace(MakeEvent({.text = text}).release());
  m_document.m_traces.ForEach(0, [&](const TraceEvent_i* trace) { m_rows.rows.push_back(trace); });
  Begin("cart");
  ASSERT_NO_FATAL_FAILURE(Settle());
  EXPECT_EQ(Counted(), (std::vector{0, 2}));
}

TEST_F(HitCountTest, RowsThatAreThereAndNotShownHaveNone) {
  for (const bool file : {false, true}) {
    if (file) m_document.m_traces.Clear();
    if (file) {
      ASSERT_NO_FATAL_FAILURE(OpenFile(900));
    } else {
      AddLive(900);
    }
    ShowSome(1);
    m_rows.notShown = 3;
    Begin("a", {.rowsForThreads = 0, .threads = 2, .perPiece = 50});
    ASSERT_NO_FATAL_FAILURE(Settle());
    std::vector<int> shown = Plain(900);
    std::erase_if(shown, [](int row) { return row % 3 == 0; });
    EXPECT_EQ(Counted(), shown);
    m_rows.current = shown[1];
    EXPECT_EQ(m_count->Text(), "2 of " + std::to_string(shown.size()) + " hits");
  }
}

// A strip or a list may be painted before the view has told that its rows are gone.
TEST_F(HitCountTest, AHitOfAClearedDocumentHasNoTraceAnyMore) {
  AddLive(200);
  Begin("a");
  ASSERT_NO_FATAL_FAILURE(Settle());
  ASSERT_GT(m_count->Count(), 0);
  EXPECT_EQ(m_count->TraceOf(0), m_rows.CountedAt(Plain(m_rows.CountedSize()).front()));
  EXPECT_EQ(m_count->TraceOf(m_count->Count()), nullptr);
  m_document.m_traces.Clear();
  EXPECT_EQ(m_count->TraceOf(0), nullptr);
}

TEST_F(HitCountTest, ALoadIsWaitedFor) {
  AddLive(20);
  m_document.m_loading = true;
  Begin("a");
  ASSERT_NO_FATAL_FAILURE(Settle());
  EXPECT_FALSE(m_count->IsWhole());
  m_document.m_loading = false;
  m_count->OnAnew();
  ExpectExact();
}

TEST_F(HitCountTest, RowsOfAFileThatStillComeAreCountedByThreadsToo) {
  ASSERT_NO_FATAL_FAILURE(OpenFile(3000));
  ShowSome(2);
  const auto all = m_rows.rows;
  m_rows.rows.clear();
  m_rows.whole = false;
  Begin("cart", {.rowsForThreads = 0, .threads = 2, .perPiece = 64});
  for (std::size_t row = 0; row < all.size();) {
    for (int more = Below(400); more > 0 && row < all.size(); --more)
      m_rows.rows.push_back(all[row++]);
    m_count->OnAdded();
    m_host.TickTimers();
    std::this_thread::sleep_for(milliseconds(1));
    const int known = m_count->Known();
    ASSERT_EQ(Counted(), Plain(known));
    EXPECT_FALSE(m_count->IsWhole());
  }
  m_rows.whole = true;
  m_count->OnAdded();
  ExpectExact();
}

// One text takes many steps of the host, and its trace may be gone before its test has ended.
TEST_F(HitCountTest, ATextThatTakesLongIsTestedToItsEndOrForgotten) {
  const std::string slow(60, 'a');
  for (int i = 0; i < 3; ++i) {
    m_document.AddTrace(MakeEvent({.text = i == 1 ? "bd" : "b" + slow + "dc"}).release());
    m_rows.rows.push_back(m_document.m_traces.back());
  }
  Begin("b\\(a*\\)\\(a*\\)\\(a*\\)\\(a*\\)\\1d$");
  EXPECT_TRUE(m_count->Step(milliseconds(0)));
  EXPECT_EQ(m_count->Known(), 0) << "the test of the first text is not finished";
  Trim(1);
  ExpectExact();
  EXPECT_EQ(Counted(), std::vector{0});
}

class RandomHits : public HitCountTest, public testing::WithParamInterface<unsigned> {
 protected:
  RandomHits() { m_random.seed(GetParam()); }
  const char* AnyPattern() {
    static const char* const kPatterns[] = {"cart", "a", "^c", "a.*b", "nowhere", "x$", "[ab]*t"};
    return kPatterns[Below(7)];
  }
};

TEST_P(RandomHits, OfAFileAreExactUnderNewFiltersAndSearches) {
  ASSERT_NO_FATAL_FAILURE(OpenFile(Below(4000)));
  ShowSome(1 + Below(3));
  const auto setup = [&] {
    return HitCountSetup{.rowsForThreads = Below(2) * 100'000,
                         .threads = static_cast<std::size_t>(1 + Below(3)),
                         .perPiece = static_cast<std::size_t>(1 + Below(300))};
  };
  Begin(AnyPattern(), setup());
  for (int step = 0; step < 6; ++step) {
    for (int ticks = Below(6); ticks > 0; --ticks) m_host.TickTimers();
    ASSERT_EQ(Counted(), Plain(m_count->Known())) << "what is known is right at any time";
    if (Below(3) == 0) {
      Begin(AnyPattern(), setup());
    } else {
      ShowSome(1 + Below(5));
      m_count->OnAnew();
    }
    if (Below(2) == 0) {
      ASSERT_NO_FATAL_FAILURE(ExpectExact());
    }
  }
  ExpectExact();
}

TEST_P(RandomHits, OfAMonitorAreExactUnderTicksTrimsFiltersAndClears) {
  AddLive(Below(600));
  Begin(AnyPattern());
  for (int step = 0; step < 60; ++step) {
    switch (Below(12)) {
      case 0:
        m_rows.rows.clear();
        m_document.m_traces.Clear();
        Below(2) == 0 ? m_count->OnAnew() : m_count->OnAdded();
        break;
      case 1:
        ShowSome(1 + Below(4));
        m_count->OnAnew();
        break;
      case 2:
      case 3:
      case 4:
        Trim(Below(static_cast<int>(m_document.m_traces.size()) / 2 + 1));
        break;
      case 5:
        if (m_rows.rows.empty()) break;
        m_rows.rows.erase(m_rows.rows.begin() + Below(m_rows.CountedSize()));
        m_count->OnRemoved(1, 1);
        break;
      default:
        AddLive(Below(90));
        m_count->OnAdded();
    }
    if (Below(3) == 0) m_count->Step(milliseconds(0));
    if (Below(4) == 0) {
      ASSERT_NO_FATAL_FAILURE(ExpectExact()) << "step " << step;
    }
  }
  m_count->OnAdded();
  ExpectExact();
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomHits, testing::Range(1U, 151U));

}  // namespace
