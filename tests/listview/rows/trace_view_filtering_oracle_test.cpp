// Filter texts that are applied in the background: random sequences of texts, cancels, ticks,
// trims, clicks, follows and of the moments at which the next step is done, beside the plain rules.
#include <algorithm>
#include <map>
#include <random>

#include "documents/trace_file_doc.h"
#include "plain_rows.h"
#include "support/short_pieces.h"
#include "trace_view_fixture.h"
#include "where/plain_where.h"
#include "where/random_where.h"
#include "where/text/where_writer.h"

namespace {

using Events = PlainRows::Events;

class Filtering : public testing::TestWithParam<unsigned> {
 protected:
  static constexpr std::size_t kLimit = 120;
  static constexpr std::size_t kHands = 7;  // steps of the user, whatever the document

  Filtering() {
    SetSettingsFile(m_directory.File("settings.ini"));
    g_useUtc = true;
  }
  ~Filtering() override {
    g_useUtc = false;
    SetSettingsFile("");
  }
  void Open(CTraceDoc& document) {
    m_document = &document;
    m_view = std::make_unique<CTraceView>(
        document, [](RowListOwner& owner) { return std::make_unique<FakeRowList>(owner); });
    m_list = static_cast<FakeRowList*>(&m_view->List());
    m_list->pageRows = 4;
    m_view->m_scanSetup = {.perLook = 1 + m_random.Below(6),
                           .perPiece = 1 + m_random.Below(9),
                           .threads = 1 + m_random.Below(4)};
    m_view->OnInitialUpdate();
    m_rows.Replace(RowsOf(0));
  }

  // ---- the plain rules
  bool Passes(const std::optional<WhereExpr>& expr, std::size_t place) {
    const auto& traces = m_document->m_traces;
    const PlainTrace& trace = m_plain.at(traces[place]);
    const PlainTrace* const before = place > 0 ? &m_plain.at(traces[place - 1]) : nullptr;
    const bool marked = !m_hidesNine || trace.fields.component != 9;
    const std::optional<std::int64_t> end =
        MomentOfStamp(StampOf(RawTrace(traces.back()->Record())));
    return marked && (!expr || PlainWhere(0, end).Holds(*expr, trace, before));
  }
  Events RowsOf(std::size_t from, const std::optional<WhereExpr>& expr) {
    Events rows;
    for (std::size_t place = from; place < m_document->m_traces.size(); ++place)
      if (Passes(expr, place)) rows.push_back(m_document->m_traces[place]);
    return rows;
  }
  Events RowsOf(std::size_t from) { return RowsOf(from, m_expr); }

  // ---- what the view did by itself during one step
  void Track() {
    const bool emptied = std::ranges::count(m_list->calls, "count 0") > 0;
    const auto count = static_cast<std::size_t>(m_list->ItemCount());
    if (m_rows.IsUnderWay() && m_view->m_filterChanged) {
      if (emptied) m_rows.Show(0);
      m_rows.Complete();
      m_before = m_expr;
    } else if (m_rows.IsUnderWay() && emptied) {
      ASSERT_GT(count, 0U) << "nothing replaces rows by none";
      ASSERT_LE(count, m_rows.Coming().size());
      m_rows.Show(count);
    } else if (m_rows.IsShown()) {
      ASSERT_GE(count, m_rows.Shown().size());
      ASSERT_LE(count, m_rows.Coming().size());
      m_rows.Grow(count);
    }
    m_list->calls.clear();
    m_rows.Decide();
  }
  void OneStep() {
    m_host.RunOnePosted();
    Track();
  }
  void Settle() {
    while (m_view->FilterProgress()) {
      ASSERT_TRUE(m_host.WaitForPost());
      ASSERT_NO_FATAL_FAILURE(OneStep());
      ASSERT_NO_FATAL_FAILURE(ExpectThePlainRows());
    }
    m_host.RunPosted();
    ASSERT_FALSE(m_rows.IsUnderWay());
  }

  // ---- the steps
  void Apply() {
    std::optional<WhereExpr> next;
    if (m_random.Below(6)) next = m_random.Tree(static_cast<int>(m_random.Below(4)));
    WhereError error;
    const WhereProgramPtr where = next ? WhereProgram::Compile(*next, error) : nullptr;
    ASSERT_TRUE(!next || where) << error.reason;
    m_list->calls.clear();
    if (!m_rows.IsUnderWay()) m_before = m_expr;
    m_expr = std::move(next);
    m_rows.Begin(RowsOf(0));
    m_view->m_filterChanged = false;
    ASSERT_TRUE(m_view->SetWhere(where));
    Track();
  }
  void Cancel() {
    if (m_rows.IsUnderWay()) {
      m_rows.Cancel();
      m_expr = m_before;
    } else {
      m_rows.EndSearch();
    }
    m_view->CancelFilter();
    m_list->calls.clear();
    m_rows.Decide();
  }
  void Finish() {
    m_list->calls.clear();
    ASSERT_TRUE(m_view->FinishFilter());
    ASSERT_FALSE(m_view->FilterProgress());
    Track();
  }
  // As the filter dialog does.
  void Mark() {
    ASSERT_NO_FATAL_FAILURE(Finish());
    CTraceFilter filter;
    m_hidesNine = m_random.Below(2);
    if (m_hidesNine) {
      filter.allTraces = filter.allComponents = 0;
      filter.components[9] = 0;
    }
    filter.where = m_view->m_filter.where;
    ASSERT_TRUE(m_view->SetFilter(filter, true));
    m_rows.Replace(RowsOf(0));
    m_list->calls.clear();
  }
  void Click() {
    if (m_list->ItemCount() == 0) return;
    const int row = static_cast<int>(m_random.Below(static_cast<std::size_t>(m_list->ItemCount())));
    const bool adds = m_random.Below(3) == 0;
    if (!adds) m_list->SetItemState(-1, 0, kRowSelected);
    m_list->SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
    m_view->OnRowClicked(row);
    m_rows.Click(static_cast<std::size_t>(row), adds);
  }
  void Follow() {
    const auto& traces = m_document->m_traces;
    if (traces.empty()) return;
    CTraceHint hint(traces[m_random.Below(traces.size())]);
    m_view->OnUpdate(nullptr, kHintFollow, &hint);
    m_rows.Follow(hint.m_events.front());
  }
  void Hand(std::size_t step) {
    switch (step) {
      case 0:
      case 1:
        return Apply();
      case 2:
        return Cancel();
      case 3:
        return m_random.Below(4) ? Click() : Finish();
      case 4:
        return Click();
      case 5:
        return Follow();
      default:
        return Scroll();
    }
  }
  void Scroll() { m_list->ScrollTo(static_cast<int>(m_random.Below(kLimit))); }

  void ExpectThePlainRows() {
    SCOPED_TRACE((m_expr ? WhereText(*m_expr) : std::string("no text")) +
                 (m_rows.IsUnderWay() ? ", under way" : ""));
    const Events& shown = m_rows.Shown();
    ASSERT_EQ(m_list->ItemCount(), static_cast<int>(shown.size()));
    for (int row = 0; row < m_list->ItemCount(); ++row) {
      const TraceEvent_i* const event = shown[static_cast<std::size_t>(row)];
      ASSERT_EQ(m_view->Rows().EventAt(row), event) << "row " << row;
      const unsigned state = m_list->GetItemState(row);
      ASSERT_EQ((state & kRowFocused) != 0, m_rows.Focus() == event) << "focus of row " << row;
      ASSERT_EQ((state & kRowSelected) != 0, m_rows.IsSelected(event)) << "row " << row;
    }
    ASSERT_EQ(m_view->CurrentEvent(), m_rows.Focus());
    const bool hides = m_hidesNine || (m_view->m_filter.where != nullptr);
    ASSERT_EQ(m_view->m_filter.ShowsAll(), !hides);
    ASSERT_EQ(m_view->m_filter.where != nullptr, m_expr.has_value());
    ASSERT_TRUE(!m_rows.IsUnderWay() || m_view->FilterProgress());
  }

  RandomWhere m_random{GetParam()};
  TempDir m_directory;
  RecordingHost m_host;
  const ShortPieces m_pieces{m_host};
  CTraceDoc* m_document = nullptr;
  std::unique_ptr<CTraceView> m_view;
  FakeRowList* m_list = nullptr;
  std::map<const TraceEvent_i*, PlainTrace> m_plain;
  std::optional<WhereExpr> m_expr, m_before;  // of the view; in force before it
  bool m_hidesNine = false;
  PlainRows m_rows;
};

// ---- a monitor: traces come and go

class FilteringLive : public Filtering {
 protected:
  FilteringLive() {
    m_live.m_loading = false;
    for (NameId id = 0; id < 10; ++id) m_live.m_names[id].name = m_random.AnyName();
    Open(m_live);
  }

  // A drain that trims as it goes.
  void Tick(std::size_t traces) {
    CTraceHint batch;
    for (; traces > 0; --traces) {
      if (m_live.m_traces.size() >= kLimit) Trim(batch);
      PlainTrace trace = m_random.Trace(m_live.m_names);
      // Mostly in order, as the numbers of one service.
      if (m_random.Below(8)) trace.fields.count = m_number++;
      TraceEvent_i* const event = MakeEvent(trace.fields).release();
      m_live.AddTrace(event);
      m_plain[event] = trace;
      batch.m_events.push_back(event);
    }
    m_live.UpdateAllViews(nullptr, kHintAdded, &batch);
    const std::size_t from = m_live.m_traces.size() - batch.m_events.size();
    m_rows.Add(RowsOf(from, m_rows.IsUnderWay() ? m_before : m_expr), RowsOf(from));
    m_list->calls.clear();
  }
  void Trim(CTraceHint& batch) {
    CTraceHint oldest;
    const std::size_t count = 1 + m_random.Below(40);
    for (std::size_t i = 0; i < count; ++i) oldest.m_events.push_back(m_live.m_traces[i]);
    m_live.UpdateAllViews(nullptr, kHintTrimmed, &oldest);
    for (const TraceEvent_i* const event : oldest.m_events) {
      if (!batch.m_events.empty() && batch.m_events.front() == event) batch.m_events.pop_front();
      m_rows.Remove(event);
      m_plain.erase(event);
      m_live.m_traces.PopFront();
    }
    m_rows.Decide();
  }
  void Clear() {
    m_live.DeleteContents();
    m_plain.clear();
    m_rows.Clear();
    m_list->calls.clear();
  }
  void Step() {
    const std::size_t step = m_random.Below(16);
    if (step < kHands) return Hand(step);
    switch (step) {
      case 7:
        return Tick(1 + m_random.Below(30));
      case 8:
        return m_random.Below(3) ? Tick(1 + m_random.Below(3)) : Mark();
      case 9:
        return m_random.Below(20) ? OneStep() : Clear();
      default:
        return OneStep();
    }
  }

  CTraceDoc m_live{m_host};
  std::uint32_t m_number = 1;
};

TEST_P(FilteringLive, RowsFocusAndSelectionAreThoseOfThePlainRulesAtEveryMoment) {
  Tick(kLimit);
  for (int step = 0; step < 120; ++step) {
    ASSERT_NO_FATAL_FAILURE(Step()) << "step " << step;
    ASSERT_NO_FATAL_FAILURE(ExpectThePlainRows()) << "step " << step;
  }
  // Else the view is closed with a text under way.
  if (m_random.Below(2)) {
    ASSERT_NO_FATAL_FAILURE(Settle());
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FilteringLive, testing::Range(1u, 501u));

// ---- a file: threads share the work

class FilteringFile : public Filtering {
 protected:
  FilteringFile() {
    NameMap names;
    TrcImage image;
    for (NameId id = 0; id < 10; ++id) {
      names[id].name = m_random.AnyName();
      image.Name(id, names[id].name);
    }
    std::vector<PlainTrace> traces;
    for (std::size_t i = 0; i < 3 * kLimit; ++i) {
      PlainTrace trace = m_random.Trace(names);
      if (m_random.Below(8)) trace.fields.count = static_cast<std::uint32_t>(i);
      image.Trace(trace.fields);
      traces.push_back(std::move(trace));
    }
    EXPECT_TRUE(m_file->OnOpenDocument(image.WriteTo(m_directory.File("a.trc"))));
    EXPECT_TRUE(m_host.RunUntil([this] { return !m_file->m_loading; }));
    m_host.RunPosted();
    for (std::size_t i = 0; i < m_file->m_traces.size(); ++i)
      m_plain[m_file->m_traces[i]] = traces[i];
    Open(*m_file);
  }
  ~FilteringFile() override {
    // The view, or the document below it, goes first.
    if (m_random.Below(2)) m_file->DeleteContents();
    m_view.reset();
  }
  void Step() {
    const std::size_t step = m_random.Below(14);
    if (step < kHands) return Hand(step);
    switch (step) {
      case 7:
        return m_random.Below(3) ? OneStep() : Mark();
      default:
        // Those that the threads have asked for, or those that come.
        if (m_random.Below(2) && m_view->FilterProgress()) m_host.WaitForPost();
        return OneStep();
    }
  }

  std::unique_ptr<CTraceFileDoc> m_file = std::make_unique<CTraceFileDoc>(m_host);
};

TEST_P(FilteringFile, RowsFocusAndSelectionAreThoseOfThePlainRulesAtEveryMoment) {
  for (int step = 0; step < 60; ++step) {
    ASSERT_NO_FATAL_FAILURE(Step()) << "step " << step;
    ASSERT_NO_FATAL_FAILURE(ExpectThePlainRows()) << "step " << step;
  }
  if (m_random.Below(2)) {
    ASSERT_NO_FATAL_FAILURE(Settle());
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, FilteringFile, testing::Range(1u, 501u));

}  // namespace
