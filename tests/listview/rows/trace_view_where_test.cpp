// The list with a filter text: random sequences of texts, ticks, trims and follows, beside the
// plain rules.
#include <map>
#include <random>

#include "trace_view_fixture.h"
#include "where/plain_where.h"
#include "where/random_where.h"
#include "where/text/where_writer.h"

namespace {

class TraceViewWhere : public TraceViewTest, public testing::WithParamInterface<unsigned> {
 protected:
  static constexpr std::size_t kLimit = 80;

  TraceViewWhere() {
    for (NameId id = 0; id < 7; ++id) m_document.m_names[id].name = m_random.AnyName();
    Open();
  }

  // ---- the plain rules
  std::optional<std::int64_t> End() const {
    const TraceEvent_i& newest = *m_document.m_traces.back();
    const RawTrace trace(newest.Record());
    return MomentOfStamp(StampOf(trace));
  }
  bool Passes(std::size_t place) {
    const auto& traces = m_document.m_traces;
    PlainTrace trace = m_plain.at(traces[place]);
    RandomWhere::Name(trace, m_document.m_names);
    const PlainTrace* const before = place > 0 ? &m_plain.at(traces[place - 1]) : nullptr;
    const bool marked = !m_hidesNine || trace.fields.component != 9;
    return marked && (!m_expr || PlainWhere(0, End()).Holds(*m_expr, trace, before));
  }
  void TakeFrom(std::size_t place) {
    for (; place < m_document.m_traces.size(); ++place)
      if (Passes(place)) m_rows.push_back(m_document.m_traces[place]);
  }

  // ---- the steps
  void Filter() {
    CTraceFilter filter;
    m_hidesNine = m_random.Below(3) == 0;
    if (m_hidesNine) {
      filter.allTraces = filter.allComponents = 0;
      filter.components[9] = 0;
    }
    m_expr.reset();
    if (m_random.Below(5)) m_expr = m_random.Tree(static_cast<int>(m_random.Below(4)));
    WhereError error;
    if (m_expr) filter.where = WhereProgram::Compile(*m_expr, error);
    ASSERT_TRUE(!m_expr || filter.where) << error.reason;
    ASSERT_TRUE(m_view->SetFilter(filter, true));
    m_rows.clear();
    TakeFrom(0);
  }
  // A drain that trims as it goes; names may come with it.
  void Tick() {
    CTraceHint batch;
    std::size_t added = 0;
    for (std::size_t left = 1 + m_random.Below(30); left > 0; --left) {
      if (m_document.m_traces.size() >= kLimit) TrimSome(batch, added);
      if (m_random.Below(10) == 0) {
        std::string& name = m_document.m_names[static_cast<NameId>(m_random.Below(10))].name;
        if (name.empty()) name = m_random.AnyName();
      }
      const PlainTrace trace = m_random.Trace(m_document.m_names);
      TraceEvent_i* const event = MakeEvent(trace.fields).release();
      m_document.AddTrace(event);
      m_plain[event] = trace;
      batch.m_events.push_back(event);
      ++added;
    }
    m_document.UpdateAllViews(nullptr, kHintAdded, &batch);
    TakeFrom(m_document.m_traces.size() - std::min(added, m_document.m_traces.size()));
  }
  void TrimSome(CTraceHint& batch, std::size_t& added) {
    const std::size_t count = 1 + m_random.Below(20);
    for (std::size_t i = 0; i < count; ++i) {
      const TraceEvent_i* const oldest = m_document.m_traces[i];
      if (!batch.m_events.empty() && batch.m_events.front() == oldest) {
        batch.m_events.pop_front();
        --added;
      }
      if (!m_rows.empty() && m_rows.front() == oldest) m_rows.erase(m_rows.begin());
      m_plain.erase(oldest);
    }
    Trim(static_cast<int>(count));
  }

  void ExpectTheRows() {
    ASSERT_EQ(m_list->ItemCount(), static_cast<int>(m_rows.size()));
    for (int row = 0; row < m_list->ItemCount(); ++row) {
      const std::uint32_t count = m_rows[static_cast<std::size_t>(row)]->GetSequenceNumber();
      ASSERT_EQ(m_view->RowListText(row, Column::Count),
                count == kNoSequenceNumber ? "" : std::to_string(count));
    }
    // The current trace is one of the rows.
    const TraceEvent_i* const current = m_view->CurrentEvent();
    ASSERT_TRUE(!current || std::find(m_rows.begin(), m_rows.end(), current) != m_rows.end());
  }

  RandomWhere m_random{GetParam()};
  std::map<const TraceEvent_i*, PlainTrace> m_plain;
  std::optional<WhereExpr> m_expr;
  bool m_hidesNine = false;
  std::vector<const TraceEvent_i*> m_rows;
};

TEST_P(TraceViewWhere, RandomTextsTicksAndTrimsLeaveTheRowsThatThePlainRulesName) {
  Tick();
  for (int step = 0; step < 150; ++step) {
    SCOPED_TRACE(m_expr ? WhereText(*m_expr) : std::string("no text"));
    switch (m_random.Below(8)) {
      case 0:
      case 1:
        ASSERT_NO_FATAL_FAILURE(Filter());
        break;
      case 2:
        if (m_list->ItemCount() > 0)
          Focus(static_cast<int>(m_random.Below(static_cast<std::size_t>(m_list->ItemCount()))));
        break;
      case 3:
        FollowTo(m_document.m_traces[m_random.Below(m_document.m_traces.size())]);
        break;
      default:
        Tick();
    }
    ASSERT_NO_FATAL_FAILURE(ExpectTheRows());
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, TraceViewWhere, testing::Range(1u, 41u));

TEST_F(TraceViewTest, ATextThatHidesSomethingIsSaidInTheStatusPaneAndGoesWithShowAll) {
  Add({.text = "a"});
  Add({.text = "b"});
  Open();
  m_view->OnActivateView(true, nullptr, nullptr);
  WhereError error;
  CTraceFilter filter;
  filter.where = WhereProgram::Compile("text == b", error);
  ASSERT_TRUE(m_view->SetFilter(filter, true));
  EXPECT_EQ(Rows(), "2");
  EXPECT_EQ(m_main.Reported().back(), "filtered 1");
  ASSERT_TRUE(m_view->SetFilter({}, true));
  EXPECT_EQ(Rows(), "1 2");
}

}  // namespace
