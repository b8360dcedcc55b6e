#include "overview/window/overview_strip.h"

#include <gtest/gtest.h>

#include <thread>

#include "overview/window/overview_documents.h"
#include "support/fake_overview.h"

namespace {

using Key = OverviewStrip::Key;

class Owner final : public OverviewOwner {
 public:
  void TakeOverviewStep(const std::string& text) override { steps.push_back(text); }
  void LeaveOverview() override { ++left; }
  std::vector<std::string> steps;
  int left = 0;
};

// A pane that notes where it is led, and shows a page.
class LedPane final : public TracePane {
 public:
  using TracePane::TracePane;
  ViewControl* Control() override { return nullptr; }
  TraceEvent_i* CurrentEvent() const override { return nullptr; }
  void VisitPage(const VisitTrace& visit) const override {
    for (const TraceEvent_i* const event : m_page) visit(*event);
  }
  void VisitHits(const VisitTrace& visit) const override {
    for (const TraceEvent_i* const event : m_hitTraces) visit(*event);
  }
  void ShowPage(std::vector<const TraceEvent_i*> page) {
    m_page = std::move(page);
    Tell(&PaneWatcher::OnScrolled);
  }
  std::vector<std::uint32_t> m_ledTo;  // times
  std::vector<const TraceEvent_i*> m_page, m_hitTraces;

 private:
  int TraceCount() const override { return 0; }
  bool ShowsAny() const override { return true; }
  void RepaintHits() override {}
  bool Rebuild() override { return true; }
  void OnReady() override {}
  void AddTraces(const CTraceHint&) override {}
  void RemoveTraces(const CTraceHint&) override {}
  void FollowTrace(CView*, const TraceEvent_i& event) override {
    m_ledTo.push_back(event.GetTime());
  }
  std::unique_ptr<CTraceIterator> MakeIterator() override { return nullptr; }
  void Find(bool) override {}
  void OnExport() override {}
};

template <class Document>
class Strip {
 public:
  Strip() {
    g_useUtc = true;
    m_strip.SetFace(&m_face);
  }
  ~Strip() {
    m_strip.SetPane(nullptr);
    g_useUtc = false;
  }
  // Ten seconds: a trace every 10 ms, each hundredth an error.
  void FillTenSeconds() {
    for (int i = 0; i < 1000; ++i)
      m_document.AddAt(i * 10, i % 100 == 50 ? kAttributeError : kAttributeInfo);
  }
  void Show() {
    m_strip.SetPane(&m_pane);
    Settle();
  }
  bool IsAwake() { return !m_document.m_host.Timers().empty(); }
  // Until all is counted and shown.
  void Settle() {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    do {
      m_document.m_host.TickTimers();
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    } while (IsAwake() && std::chrono::steady_clock::now() < end);
  }
  std::uint64_t CountOfBars() {
    std::uint64_t all = 0;
    for (const OverviewBar& bar : m_strip.Bars()) all += bar.counts.Traces();
    return all;
  }
  int PxAt(std::int64_t ms) { return m_strip.Scale().PxOf(kBegin + ms); }
  static constexpr std::int64_t kBegin = 1'795'251'600'000;  // 9:00

  OverviewDocument<Document> m_document;
  LedPane m_pane{m_document.m_document};
  Owner m_owner;
  FakeOverview* m_slot = nullptr;
  OverviewStrip m_strip{m_document.m_host, m_owner};
  FakeOverview m_face{m_strip, m_slot};
};

template <class Document>
class OverviewStripTest : public testing::Test, public Strip<Document> {};
using Documents = testing::Types<CTraceDoc, LendingDoc>;
TYPED_TEST_SUITE(OverviewStripTest, Documents);

TYPED_TEST(OverviewStripTest, ShowsAllTracesAndSaysWhatItShows) {
  this->FillTenSeconds();
  this->Show();
  EXPECT_EQ(this->CountOfBars(), 1000U);
  EXPECT_EQ(this->m_strip.Description(), "1,000 traces from 09:00:00 to 09:00:10, 10 errors");
  EXPECT_EQ(this->m_strip.EmptyText(), "");
  EXPECT_GT(this->m_face.m_updates, 0);
}

TYPED_TEST(OverviewStripTest, WithoutTracesItSaysSo) {
  this->Show();
  EXPECT_EQ(this->m_strip.EmptyText(), "No traces with a time");
  EXPECT_TRUE(this->m_strip.Bars().empty());
  for (const Key key : {Key::Left, Key::Enter, Key::ZoomIn}) this->m_strip.OnKey(key, false);
  this->m_strip.Press(10);
  this->m_strip.Release(500);
  this->m_strip.Wheel(5, 1);
  EXPECT_TRUE(this->m_owner.steps.empty());
}

TYPED_TEST(OverviewStripTest, TheFilterOfThePaneIsFollowed) {
  this->FillTenSeconds();
  this->Show();
  this->m_pane.m_filter.where = WhereOf("severity == error");
  this->m_strip.OnShownTraces();
  this->Settle();
  EXPECT_EQ(this->CountOfBars(), 10U);
  this->m_pane.m_filter.where = nullptr;
  this->m_strip.OnShownTraces();
  this->Settle();
  EXPECT_EQ(this->CountOfBars(), 1000U);
}

TYPED_TEST(OverviewStripTest, AClickLeadsToTheFirstTraceThere) {
  this->FillTenSeconds();
  this->Show();
  this->m_strip.Press(this->PxAt(5000));
  this->m_strip.Release(this->PxAt(5000));
  ASSERT_EQ(this->m_pane.m_ledTo.size(), 1U);
  EXPECT_EQ(this->m_pane.m_ledTo[0], PackTime(9, 0, 5, 0));
  EXPECT_TRUE(this->m_owner.steps.empty());
}

TYPED_TEST(OverviewStripTest, AClickWhereNothingIsLeadsToTheNextTraceElseToTheOneBefore) {
  for (const int ms : {0, 100, 9'000, 20'000}) this->m_document.AddAt(ms);
  this->Show();
  for (const int ms : {4'000, 12'000}) {
    this->m_strip.Press(this->PxAt(ms));
    this->m_strip.Release(this->PxAt(ms));
  }
  EXPECT_EQ(this->m_pane.m_ledTo,
            (std::vector<std::uint32_t>{PackTime(9, 0, 9, 0), PackTime(9, 0, 20, 0)}));
}

TYPED_TEST(OverviewStripTest, DraggingChoosesARangeAndFiltersByIt) {
  this->FillTenSeconds();
  this->Show();
  this->m_strip.Press(this->PxAt(2000));
  this->m_strip.Drag(this->PxAt(4000));
  ASSERT_TRUE(this->m_strip.Chosen().has_value());
  this->m_strip.Drag(this->PxAt(1000));
  const TimeLimits chosen = *this->m_strip.Chosen();
  this->m_strip.Release(this->PxAt(1000));
  ASSERT_EQ(this->m_owner.steps.size(), 1U);
  EXPECT_FALSE(this->m_strip.Chosen().has_value());
  EXPECT_TRUE(this->m_pane.m_ledTo.empty());
  // The step gives exactly the traces of the range.
  CTraceFilter filter;
  filter.where = WhereOf(this->m_owner.steps[0]);
  ASSERT_TRUE(filter.where) << this->m_owner.steps[0];
  std::size_t between = 0;
  for (const SlicedTrace& trace : this->m_document.Slow({})) between += chosen.Has(trace.time);
  EXPECT_GT(between, 50U);
  EXPECT_LT(between, 200U);
  EXPECT_EQ(this->m_document.Slow(filter).size(), between);
}

TYPED_TEST(OverviewStripTest, EscapeEndsADragThenTheZoomThenLeaves) {
  this->FillTenSeconds();
  this->Show();
  this->m_strip.Wheel(500, 2);
  this->m_strip.Press(100);
  this->m_strip.Drag(400);
  this->m_strip.OnKey(Key::Escape, false);
  this->m_strip.Release(400);
  EXPECT_TRUE(this->m_owner.steps.empty());
  EXPECT_TRUE(this->m_strip.IsZoomed());
  this->m_strip.OnKey(Key::Escape, false);
  EXPECT_FALSE(this->m_strip.IsZoomed());
  EXPECT_EQ(this->m_owner.left, 0);
  this->m_strip.OnKey(Key::Escape, false);
  EXPECT_EQ(this->m_owner.left, 1);
}

TYPED_TEST(OverviewStripTest, TheWheelZoomsAroundTheMouseAndCountsTheRangeAnew) {
  this->FillTenSeconds();
  this->Show();
  const std::int64_t width = this->m_strip.Counted()->Slices().Width();
  const std::int64_t there = this->m_strip.Scale().TimeAt(300);
  this->m_strip.Wheel(300, 3);
  EXPECT_NEAR(static_cast<double>(this->m_strip.Scale().TimeAt(300) - there), 0, 20);
  this->Settle();
  const TimeLimits zoom = *this->m_strip.Counted()->Zoom();
  EXPECT_LT(this->m_strip.Counted()->Slices().Width(), width);
  ExpectCountsOf(this->m_document.Slow({}), this->m_strip.Counted()->Slices());
  EXPECT_LT(this->CountOfBars(), 200U);
  EXPECT_EQ(this->m_strip.Scale().from, zoom.from);
  this->m_strip.Wheel(300, -3);
  this->Settle();
  EXPECT_FALSE(this->m_strip.IsZoomed());
  EXPECT_EQ(this->CountOfBars(), 1000U);
}

TYPED_TEST(OverviewStripTest, AZoomEndsSomewhereAndStaysWithinTheWhole) {
  this->FillTenSeconds();
  this->Show();
  const OverviewScale whole = this->m_strip.Scale();
  for (const int px : {0, 999, 40, 960}) {
    this->m_strip.Wheel(px, 50);
    this->Settle();
    const OverviewScale zoomed = this->m_strip.Scale();
    EXPECT_GT(zoomed.to, zoomed.from);
    EXPECT_GE(zoomed.from, whole.from);
    EXPECT_LE(zoomed.to, whole.to);
    this->m_strip.Wheel(500, -3);
    EXPECT_GE(this->m_strip.Scale().from, whole.from);
    EXPECT_LE(this->m_strip.Scale().to, whole.to);
    this->m_strip.ZoomOut();
    this->Settle();
  }
}

TYPED_TEST(OverviewStripTest, TimesFarAwayAreToldAtTheEndsAndShownWhenAskedFor) {
  const auto labels = [&] {
    std::string all;
    for (const OverviewLabel& label : this->m_strip.Labels(
             [](const std::string& text) { return static_cast<int>(text.size()); }))
      if (label.isEnd) all += "[" + label.text + "]";
    return all;
  };
  this->FillTenSeconds();
  this->m_document.Add(MakeEvent({.date = PackDate(1970, 1, 1), .time = 0}));
  this->m_document.Add(MakeEvent({.date = PackDate(2030, 1, 1), .time = 0}));
  this->Show();
  EXPECT_EQ(this->CountOfBars(), 1000U);
  EXPECT_EQ(labels(),
            "[2026-11-21 09:00:00.000 (1 trace long before)][(1 trace long behind) 09:00:10.000]");
  EXPECT_NE(this->m_strip.Description().find(", 1 trace long before, 1 trace long behind"),
            std::string::npos);
  EXPECT_TRUE(this->m_strip.OnKey(Key::Far, false));
  this->Settle();
  EXPECT_EQ(this->CountOfBars(), 1002U);
  EXPECT_EQ(this->m_strip.Scale().from, 0);
  EXPECT_EQ(labels().find("[1970-01-01 00:00:00 (all times)]"), 0U) << labels();
  this->m_strip.Wheel(1, 3);
  this->Settle();
  EXPECT_LT(this->m_strip.Scale().to, 400'000'000'000);
  this->m_strip.ZoomOut();
  this->Settle();
  EXPECT_EQ(this->CountOfBars(), 1002U);
  this->m_strip.OnKey(Key::Far, false);
  this->Settle();
  EXPECT_EQ(this->CountOfBars(), 1000U);
  EXPECT_EQ(this->m_strip.Scale().from, this->kBegin);
}

TYPED_TEST(OverviewStripTest, WithoutTimesFarAwayThereIsNothingMoreToShow) {
  this->FillTenSeconds();
  this->Show();
  this->m_strip.OnKey(Key::Far, false);
  EXPECT_FALSE(this->m_strip.ShowsFar());
  this->m_strip.OpenMenu(0, 0);
  EXPECT_EQ(this->m_document.m_host.MenuText(), "(Show Times Far Away)|(Zoom Out)");
}

TYPED_TEST(OverviewStripTest, TheKeysMoveByABarChooseAndLead) {
  this->FillTenSeconds();
  this->Show();
  ASSERT_TRUE(this->m_strip.OnKey(Key::Right, false));
  const TimeLimits first = *this->m_strip.Cursor();
  EXPECT_EQ(first.from, this->m_strip.Scale().from) << "the first key shows where it stands";
  this->m_strip.OnKey(Key::Right, false);
  EXPECT_EQ(this->m_strip.Cursor()->from, first.to);
  EXPECT_NE(this->m_strip.Description().find(". Here: "), std::string::npos);
  this->m_strip.OnKey(Key::Enter, false);
  ASSERT_EQ(this->m_pane.m_ledTo.size(), 1U);
  this->m_strip.OnKey(Key::Right, true);
  this->m_strip.OnKey(Key::Right, true);
  ASSERT_TRUE(this->m_strip.Chosen().has_value());
  EXPECT_EQ(this->m_strip.Chosen()->from, first.to);
  EXPECT_EQ(this->m_strip.Chosen()->to - first.to, 3 * (first.to - first.from));
  this->m_strip.OnKey(Key::Enter, false);
  EXPECT_EQ(this->m_owner.steps.size(), 1U);
  this->m_strip.OnKey(Key::Left, false);
  this->m_strip.OnKey(Key::Left, false);
  this->m_strip.OnKey(Key::Left, false);
  this->m_strip.OnKey(Key::Left, false);
  this->m_strip.OnKey(Key::Left, false);
  EXPECT_EQ(this->m_strip.Cursor()->from, first.from);
  this->m_strip.OnKey(Key::End, false);
  EXPECT_EQ(this->m_strip.Cursor()->to, this->m_strip.Counted()->Slices().To());
  this->m_strip.OnKey(Key::Home, false);
  EXPECT_EQ(this->m_strip.Cursor()->from, first.from);
  this->m_strip.OnKey(Key::ZoomIn, false);
  EXPECT_TRUE(this->m_strip.IsZoomed());
  this->m_strip.OnKey(Key::ZoomOut, false);
  EXPECT_FALSE(this->m_strip.IsZoomed());
}

TYPED_TEST(OverviewStripTest, ThePageMarksAndHitsAreShownAtTheirTimes) {
  this->FillTenSeconds();
  this->Show();
  TraceList_t& traces = this->m_document.m_document.m_traces;
  this->m_pane.ShowPage({traces[300], traces[301], traces[310]});
  this->Settle();
  EXPECT_EQ(this->m_strip.Page(), (TimeLimits{this->kBegin + 3000, this->kBegin + 3101}));
  this->m_pane.m_hitTraces = {traces[0], traces[500], traces[500]};
  EXPECT_EQ(this->m_strip.HitTicks(), (std::vector<int>{0, this->PxAt(5000)}));
  this->m_document.m_document.Notes().Mark({700, 100}, 3);
  EXPECT_EQ(this->m_strip.MarkTicks(), (std::vector<int>{this->PxAt(1000), this->PxAt(7000)}));
}

TYPED_TEST(OverviewStripTest, TheToolTipSaysWhatABarHas) {
  this->FillTenSeconds();
  this->Show();
  EXPECT_EQ(this->m_strip.TextAt(-1), "");
  EXPECT_EQ(this->m_strip.TextAt(FakeOverview::kWidthPx), "");
  EXPECT_NE(this->m_strip.TextAt(this->PxAt(500)).find(", 1 error"), std::string::npos)
      << this->m_strip.TextAt(this->PxAt(500));
}

TYPED_TEST(OverviewStripTest, WhenAllIsCountedNothingWakesUp) {
  this->FillTenSeconds();
  this->Show();
  EXPECT_FALSE(this->IsAwake());
  this->m_strip.OnScrolled();
  EXPECT_TRUE(this->IsAwake());
  this->m_strip.SetPane(nullptr);
  EXPECT_FALSE(this->IsAwake());
}

TEST(MonitorStripTest, TracesThatComeAndGoAreFollowed) {
  Strip<CTraceDoc> strip;
  strip.FillTenSeconds();
  strip.Show();
  strip.m_document.Trim(400);
  for (int i = 0; i < 50; ++i) strip.m_document.AddAt(10'000 + i * 10);
  CTraceHint none;
  strip.m_document.m_document.UpdateAllViews(nullptr, kHintAdded, &none);
  strip.Settle();
  EXPECT_EQ(strip.CountOfBars(), 650U);
  ExpectCountsOf(strip.m_document.Slow({}), strip.m_strip.Counted()->Slices());
}

TEST(MonitorStripTest, WhenWhatWasFarAwayHasGoneTheRestIsToldApartAgain) {
  Strip<CTraceDoc> strip;
  strip.m_document.Add(MakeEvent({.date = PackDate(1970, 1, 1), .time = 0}));
  strip.FillTenSeconds();
  strip.Show();
  strip.m_strip.ShowFar(true);
  strip.Settle();
  EXPECT_LE(strip.m_strip.Bars().size(), 2U);
  strip.m_document.Trim(1);
  strip.Settle();
  EXPECT_GT(strip.m_strip.Bars().size(), 20U);
  EXPECT_EQ(strip.CountOfBars(), 1000U);
}

TEST(MonitorStripTest, TracesMayGoWhileAZoomIsCounted) {
  Strip<CTraceDoc> strip;
  strip.FillTenSeconds();
  strip.Show();
  strip.m_strip.Wheel(500, 1);
  strip.m_document.Trim(600);
  strip.Settle();
  ASSERT_TRUE(strip.m_strip.Counted()->Zoom().has_value());
  ExpectCountsOf(strip.m_document.Slow({}), strip.m_strip.Counted()->Slices());
}

TEST(MonitorStripTest, AClearLeavesNothingBehind) {
  Strip<CTraceDoc> strip;
  strip.FillTenSeconds();
  strip.Show();
  strip.m_strip.Wheel(500, 2);
  strip.m_document.m_document.DeleteContents();
  strip.Settle();
  EXPECT_EQ(strip.m_strip.EmptyText(), "No traces with a time");
  EXPECT_FALSE(strip.m_strip.IsZoomed());
  strip.m_document.AddAt(5);
  strip.m_strip.OnShownTraces();
  strip.Settle();
  EXPECT_EQ(strip.CountOfBars(), 1U);
}

TEST(MonitorStripTest, AFewSlicesDoNotBecomeWideBlocks) {
  Strip<CTraceDoc> strip;
  strip.m_document.AddAt(5);
  strip.Show();
  ASSERT_EQ(strip.m_strip.Bars().size(), 1U);
  const OverviewBar bar = strip.m_strip.Bars().front();
  EXPECT_LE(bar.toPx - bar.fromPx, FakeOverview::kMostBarPx + 1);
}

}  // namespace
