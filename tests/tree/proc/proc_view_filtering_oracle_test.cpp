// Filter texts that are applied to the tree in the background: random sequences of texts, cancels,
// ticks, trims, the user's hands and of the moments at which the next step is done, beside the
// plain rules.
#include <map>

#include "documents/trace_file_doc.h"
#include "live_items.h"
#include "plain_filtering.h"
#include "support/recording_host.h"
#include "support/short_pieces.h"
#include "support/temp_dir.h"
#include "tree/proc/model/same_tree.h"
#include "where/random_where.h"
#include "where/text/where_writer.h"

namespace {

using Events = PlainFiltering::Events;

char KindOf(const CTraceEvent& node) {
  return "lbtpamr"[static_cast<std::size_t>(node.Kind())];
}

class TreeTexts : public testing::TestWithParam<unsigned> {
 protected:
  static constexpr std::size_t kLimit = 90;
  static constexpr std::size_t kHands = 6;  // steps of the user, whatever the document

  TreeTexts() { g_useUtc = true; }
  ~TreeTexts() override { g_useUtc = false; }

  PlainTrace MakeTrace(const NameMap& names) {
    PlainTrace trace = m_random.Trace(names);
    TraceFields& fields = trace.fields;
    const std::size_t dice = m_random.Below(10);
    if (dice < 3) fields.text = "Begin: " + std::to_string(m_number);
    if (dice >= 7) fields.text = "End: " + std::to_string(m_number);
    for (const char c : fields.text)
      if (c < ' ' || c > '~') fields.text = "plain";
    fields.app = fields.pid = 1;
    fields.machine = static_cast<NameId>(1 + m_random.Below(8) / 7);
    fields.tid = static_cast<NameId>(3 + m_random.Below(2));
    // Mostly in order, as the numbers of one service.
    if (m_random.Below(30)) fields.count = m_number;
    ++m_number;
    RandomWhere::Name(trace, names);
    return trace;
  }
  std::unique_ptr<CProcView> MakeView() {
    return std::make_unique<CProcView>(*m_document, [](TreeControlOwner& owner) {
      return std::make_unique<FakeTreeControl>(owner);
    });
  }
  void Open(CTraceDoc& document) {
    m_document = &document;
    m_view = MakeView();
    m_tree = static_cast<FakeTreeControl*>(&m_view->Tree());
    m_view->m_scanSetup = {.perLook = 1 + m_random.Below(6),
                           .perPiece = 1 + m_random.Below(9),
                           .threads = 1 + m_random.Below(4)};
    m_view->OnInitialUpdate();
    m_plain = std::make_unique<PlainFiltering>(document.m_names);
    m_plain->Replace(TracesOf(0));
  }

  // ---- the plain rules
  bool Passes(const std::optional<WhereExpr>& expr, std::size_t place) {
    const auto& traces = m_document->m_traces;
    const PlainTrace& trace = m_known.at(traces[place]);
    const PlainTrace* const before = place > 0 ? &m_known.at(traces[place - 1]) : nullptr;
    const bool marked = !m_hidesNine || trace.fields.component != 9;
    const std::optional<std::int64_t> end =
        MomentOfStamp(StampOf(RawTrace(traces.back()->Record())));
    return marked && (!expr || PlainWhere(0, end).Holds(*expr, trace, before));
  }
  Events TracesOf(std::size_t from, const std::optional<WhereExpr>& expr) {
    Events events;
    for (std::size_t place = from; place < m_document->m_traces.size(); ++place)
      if (Passes(expr, place)) events.push_back(m_document->m_traces[place]);
    return events;
  }
  Events TracesOf(std::size_t from) { return TracesOf(from, m_expr); }

  // ---- what the view did by itself
  void Track() {
    const TreeFiltering* const now = m_view->Filtering();
    if (m_plain->IsUnderWay() && now && now->pass) {
      ASSERT_NO_FATAL_FAILURE(m_plain->File(now->pass->Model().TraceCount()));
    } else if (m_plain->IsUnderWay()) {
      ASSERT_TRUE(m_view->m_filterChanged);
      if (m_selected) m_wanted = m_selected->event;
      if (m_outsideEvent) m_wanted = m_outsideEvent;
      ASSERT_EQ(m_view->Model().TraceCount(), m_plain->Complete());
      Select(nullptr);
      m_before = m_expr;
    }
    if (!now) Decide();
  }
  // The search has ended.
  void Decide() {
    if (m_wanted) Select(m_plain->NodeOf(m_wanted));
    m_wanted = nullptr;
  }
  void Select(PlainNode* node) {
    m_selected = node;
    m_outside = nullptr;
    m_outsideEvent = nullptr;
  }
  void OneStep() {
    m_host.RunOnePosted();
    Track();
  }
  void Settle() {
    while (m_view->FilterProgress()) {
      ASSERT_TRUE(m_host.WaitForPost());
      ASSERT_NO_FATAL_FAILURE(OneStep());
      ASSERT_NO_FATAL_FAILURE(ExpectThePlainTree());
    }
    m_host.RunPosted();
    ASSERT_FALSE(m_plain->IsUnderWay());
  }

  // ---- the steps
  void Apply() {
    std::optional<WhereExpr> next;
    if (m_random.Below(6)) next = m_random.Tree(static_cast<int>(m_random.Below(4)));
    WhereError error;
    const WhereProgramPtr where = next ? WhereProgram::Compile(*next, error) : nullptr;
    ASSERT_TRUE(!next || where) << error.reason;
    const bool stops = m_plain->IsUnderWay() && !next && !m_before;
    if (!m_plain->IsUnderWay()) m_before = m_expr;
    m_expr = std::move(next);
    if (stops) {
      m_plain->Cancel();
    } else {
      m_plain->Begin(TracesOf(0));
      m_view->m_filterChanged = false;
    }
    ASSERT_TRUE(m_view->SetWhere(where));
    Track();
  }
  void Cancel() {
    if (m_plain->IsUnderWay()) {
      m_plain->Cancel();
      m_expr = m_before;
    } else {
      m_wanted = nullptr;
    }
    m_view->CancelFilter();
    Track();
  }
  void Finish() {
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
    const PlainFiltering::Event selected = m_view->CurrentEvent();
    ASSERT_TRUE(m_view->SetFilter(filter, true));
    m_plain->Replace(TracesOf(0));
    Select(selected ? m_plain->NodeOf(selected) : nullptr);
  }
  // The user's hands, and commands that make items.
  void Touch() {
    const std::vector<TreeItem> items = ItemsThatExist(*m_tree);
    if (items.empty()) return;
    const TreeItem item = items[m_random.Below(items.size())];
    switch (m_random.Below(4)) {
      case 0:
        m_tree->Expand(item, !(m_tree->ItemState(item) & kTreeExpanded));
        break;
      case 1:
        m_view->NextTreeItem(item);
        break;
      default:
        m_tree->SelectItem(item);
    }
    // A closed item takes the selection of what is below it.
    SeeSelection();
  }
  // The user has chosen, or the control: the plain rules have nothing to say.
  void SeeSelection() {
    Select(nullptr);
    const CTraceEvent* const node = m_view->NodeOf(m_tree->SelectedItem());
    if (!node) return;
    m_wanted = nullptr;
    m_selected = PlainOf(*node, m_plain->Shown().Root());
    // Its trace was trimmed, or it was taken out for a hidden one.
    if (m_selected) return;
    m_outside = node;
    m_outsideEvent = node->event;
  }
  static PlainNode* PlainOf(const CTraceEvent& node, PlainNode& below) {
    for (PlainNode* const child : below.children) {
      if (node.event && child->event == node.event && child->kind == KindOf(node)) return child;
      if (PlainNode* const found = PlainOf(node, *child)) return found;
    }
    return nullptr;
  }
  void Follow() {
    const auto& traces = m_document->m_traces;
    if (traces.empty()) return;
    CTraceHint hint(traces[m_random.Below(traces.size())]);
    m_view->OnUpdate(nullptr, kHintFollow, &hint);
    if (m_view->Filtering() && !m_view->Filtering()->pass) {
      m_wanted = hint.m_events.front();
      return;
    }
    PlainNode* const node = m_plain->NodeOf(hint.m_events.front());
    if (!node) return;
    Select(node);
    m_wanted = nullptr;
  }

  void ExpectThePlainTree() {
    SCOPED_TRACE((m_expr ? WhereText(*m_expr) : std::string("no text")) +
                 (m_plain->IsUnderWay() ? ", under way" : ""));
    PlainTree& plain = m_plain->Shown();
    ASSERT_NO_FATAL_FAILURE(ExpectSameNodes(m_view->Model(), m_view->Model().Root(), plain,
                                            plain.Root(),
                                            [](const CTraceEvent&, const std::string&) {}));
    ASSERT_NO_FATAL_FAILURE(ExpectLiveItems(*m_view));
    const CTraceEvent* const node = m_view->NodeOf(m_tree->SelectedItem());
    if (m_selected) {
      ASSERT_TRUE(node) << m_tree->Picture();
      ASSERT_EQ(node->event, m_selected->event) << m_tree->Picture();
      ASSERT_EQ(KindOf(*node), m_selected->kind);
    } else {
      ASSERT_EQ(node, m_outside) << m_tree->Picture();
    }
    const bool hides = m_hidesNine || m_expr;
    ASSERT_EQ(m_view->m_filter.ShowsAll(), !hides);
    ASSERT_EQ(m_view->m_filter.where != nullptr, m_expr.has_value());
    ASSERT_TRUE(!m_plain->IsUnderWay() || m_view->FilterProgress());
  }
  void Hand(std::size_t step) {
    switch (step) {
      case 0:
      case 1:
        return Apply();
      case 2:
        return m_random.Below(2) ? Cancel() : Touch();
      case 3:
        return m_random.Below(4) ? Touch() : Finish();
      case 4:
        return Touch();
      default:
        return Follow();
    }
  }
  virtual void Step() = 0;
  void Play(int steps) {
    for (int step = 0; step < steps; ++step) {
      ASSERT_NO_FATAL_FAILURE(Step()) << "step " << step;
      ASSERT_NO_FATAL_FAILURE(ExpectThePlainTree()) << "step " << step;
    }
    // Else the view is closed with a text under way.
    if (m_random.Below(2)) {
      ASSERT_NO_FATAL_FAILURE(Settle());
    }
  }

  RandomWhere m_random{GetParam()};
  RecordingHost m_host;
  const ShortPieces m_pieces{m_host};
  CTraceDoc* m_document = nullptr;
  std::unique_ptr<CProcView> m_view;
  FakeTreeControl* m_tree = nullptr;
  std::map<const TraceEvent_i*, PlainTrace> m_known;
  std::optional<WhereExpr> m_expr, m_before;  // of the view; in force before it
  bool m_hidesNine = false;
  std::unique_ptr<PlainFiltering> m_plain;
  PlainNode* m_selected = nullptr;
  const CTraceEvent* m_outside = nullptr;  // the selected node, where the plain tree has none
  PlainFiltering::Event m_outsideEvent = nullptr;
  PlainFiltering::Event m_wanted = nullptr;
  std::uint32_t m_number = 1;
};

// ---- a monitor: traces come and go

class TreeTextsLive : public TreeTexts {
 protected:
  TreeTextsLive() {
    m_live.m_loading = false;
    for (NameId id = 0; id < 10; ++id) m_live.m_names[id].name = "n" + std::to_string(id);
    Open(m_live);
  }
  // A drain that trims as it goes.
  void Tick(std::size_t traces) {
    CTraceHint batch;
    for (; traces > 0; --traces) {
      if (m_live.m_traces.size() >= kLimit) Trim(batch);
      const PlainTrace trace = MakeTrace(m_live.m_names);
      TraceEvent_i* const event = MakeEvent(trace.fields).release();
      m_live.AddTrace(event);
      m_known[event] = trace;
      batch.m_events.push_back(event);
    }
    m_live.UpdateAllViews(nullptr, kHintAdded, &batch);
    const std::size_t from = m_live.m_traces.size() - batch.m_events.size();
    m_plain->Add(TracesOf(from, m_plain->IsUnderWay() ? m_before : m_expr), TracesOf(from));
    Track();
  }
  void Trim(CTraceHint& batch) {
    CTraceHint oldest;
    const std::size_t count = 1 + m_random.Below(30);
    for (std::size_t i = 0; i < count; ++i) oldest.m_events.push_back(m_live.m_traces[i]);
    m_live.UpdateAllViews(nullptr, kHintTrimmed, &oldest);
    for (const TraceEvent_i* const event : oldest.m_events) {
      if (!batch.m_events.empty() && batch.m_events.front() == event) batch.m_events.pop_front();
      m_plain->Remove(event);
      if (m_wanted == event || !m_plain->IsUnderWay()) m_wanted = nullptr;
    }
    m_plain->Removed();
    // The selection moves at each trim, if a node is near; else what the control made of it stays.
    if (PlainNode* const node = m_plain->NodeOf(oldest.m_events.front())) {
      Select(node);
      m_wanted = nullptr;
    } else {
      SeeSelection();
    }
    for (const TraceEvent_i* const event : oldest.m_events) {
      m_known.erase(event);
      m_live.m_traces.PopFront();
    }
  }
  void Clear() {
    m_live.DeleteContents();
    m_known.clear();
    m_plain->Replace({});
    Select(nullptr);
    m_wanted = nullptr;
  }
  void Step() override {
    const std::size_t step = m_random.Below(16);
    if (step < kHands) return Hand(step);
    switch (step) {
      case 6:
        return m_random.Below(2) ? OneStep() : Tick(1 + m_random.Below(30));
      case 7:
        return m_random.Below(3) ? Tick(1 + m_random.Below(3)) : Mark();
      case 8:
        return m_random.Below(20) ? OneStep() : Clear();
      default:
        return OneStep();
    }
  }

  CTraceDoc m_live{m_host};
};

TEST_P(TreeTextsLive, NodesAndSelectionAreThoseOfThePlainRulesAtEveryMoment) {
  Tick(kLimit);
  Play(120);
}

INSTANTIATE_TEST_SUITE_P(Seeds, TreeTextsLive, testing::Range(1u, 501u));

// ---- a file: threads share the judging

class TreeTextsFile : public TreeTexts {
 protected:
  TreeTextsFile() {
    NameMap names;
    TrcImage image;
    for (NameId id = 0; id < 10; ++id) {
      names[id].name = "n" + std::to_string(id);
      image.Name(id, names[id].name);
    }
    std::vector<PlainTrace> traces;
    for (std::size_t i = 0; i < 3 * kLimit; ++i) {
      traces.push_back(MakeTrace(names));
      image.Trace(traces.back().fields);
    }
    EXPECT_TRUE(m_file->OnOpenDocument(image.WriteTo(m_directory.File("a.trc"))));
    EXPECT_TRUE(m_host.RunUntil([this] { return !m_file->m_loading; }));
    m_host.RunPosted();
    for (std::size_t i = 0; i < m_file->m_traces.size(); ++i)
      m_known[m_file->m_traces[i]] = traces[i];
    Open(*m_file);
  }
  ~TreeTextsFile() override {
    // The view, or the document below it, goes first.
    if (m_random.Below(2)) m_file->DeleteContents();
    m_view.reset();
  }
  // After a text the tree stands as one that was built by it at once.
  void ExpectAFreshTree() {
    ASSERT_NO_FATAL_FAILURE(Settle());
    const TraceEvent_i* const selected = m_view->CurrentEvent();
    ASSERT_NO_FATAL_FAILURE(Apply());
    ASSERT_NO_FATAL_FAILURE(Settle());
    const std::unique_ptr<CProcView> fresh = MakeView();
    fresh->SetFilter(m_view->m_filter, false);
    fresh->m_currentEvent = const_cast<TraceEvent_i*>(selected);
    fresh->OnInitialUpdate();
    const auto& tree = static_cast<const FakeTreeControl&>(fresh->Tree());
    ASSERT_EQ(m_tree->Picture(), tree.Picture());
    ASSERT_EQ(m_tree->Top(), tree.Top());
    ASSERT_EQ(m_tree->Count(), tree.Count());
  }
  void Step() override {
    const std::size_t step = m_random.Below(14);
    if (step < kHands) return Hand(step);
    switch (step) {
      case 6:
        return m_random.Below(3) ? OneStep() : ExpectAFreshTree();
      case 7:
        return m_random.Below(3) ? OneStep() : Mark();
      default:
        // Those that the threads have asked for, or those that come.
        if (m_random.Below(2) && m_view->FilterProgress()) m_host.WaitForPost();
        return OneStep();
    }
  }

  TempDir m_directory;
  std::unique_ptr<CTraceFileDoc> m_file = std::make_unique<CTraceFileDoc>(m_host);
};

TEST_P(TreeTextsFile, NodesAndSelectionAreThoseOfThePlainRulesAtEveryMoment) {
  Play(60);
}

INSTANTIATE_TEST_SUITE_P(Seeds, TreeTextsFile, testing::Range(1u, 501u));

}  // namespace
