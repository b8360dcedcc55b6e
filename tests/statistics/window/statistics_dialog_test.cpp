#include "statistics/window/statistics_dialog.h"

#include <gtest/gtest.h>

#include <thread>

#include "settings/globals.h"
#include "settings/registry.h"
#include "statistics/random_traces.h"
#include "statistics/window/counted_pane.h"
#include "support/fake_report_list.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "support/zone_guard.h"
#include "where/where_program.h"

namespace {

class Controls final : public StatisticsControls {
 public:
  explicit Controls(ReportListOwner& owner) : list(owner) {}
  ReportList& List() override { return list; }
  void ShowStatus(const std::string& text) override { status = text; }
  void EnableOnlyThis(bool on) override { onlyThis = on; }

  FakeReportList list;
  std::string status;
  bool onlyThis = false;
};

WhereProgramPtr Where(const char* text) {
  WhereError error;
  return WhereProgram::Compile(text, error);
}

// Of a document, whose class is the test's.
template <class Document>
class Window {
 public:
  Window() {
    SetSettingsFile(m_folder.File("settings.ini"));
    m_document.m_loading = false;
    for (NameId id = 1; id < 60; ++id) m_document.m_names[id].name = "n" + std::to_string(id);
    g_useUtc = true;
  }
  ~Window() {
    g_useUtc = false;
    SetSettingsFile("");
  }

  void Add(EventPtr event) { m_document.AddTrace(event.release()); }
  void AddRandom(RandomTraces& random, unsigned count) {
    for (; count > 0; --count) Add(random.Make());
  }
  void AddComponent(NameId component, unsigned second = 0) {
    TraceFields fields;
    fields.component = component;
    fields.time = PackTime(9, 41, second, 0);
    Add(MakeEvent(fields));
  }
  void Open() {
    m_dialog = std::make_unique<CStatisticsDlg>(
        m_host, [this] { return m_shown; },
        [this](const std::string& text) { m_taken.push_back(text); });
    m_controls = std::make_unique<Controls>(*m_dialog);
    m_controls->list.SetPage(1000);
    m_dialog->Attach(*m_controls);
  }
  // Until the counts are those of now.
  std::map<std::string, Tally> Counted() {
    const SlowCount slow = Slow();
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    std::map<std::string, Tally> counted;
    do {
      m_host.TickTimers();
      counted.clear();
      for (const StatRow& row : m_dialog->Rows()) counted[row.key] = row.tally;
      if (counted != slow.tallies) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    } while (counted != slow.tallies && std::chrono::steady_clock::now() < end);
    return counted;
  }
  SlowCount Slow() {
    SlowCount slow;
    m_document.m_traces.ForEach(0, [&](const TraceEvent_i* event) {
      if (m_pane.m_filter.Matches(*event, m_document) == 1) slow.Add(m_dialog->Field(), *event);
    });
    return slow;
  }
  std::vector<std::string> Shown() {
    Counted();
    std::vector<std::string> rows;
    for (int row = 0; row < m_controls->list.ItemCount(); ++row)
      rows.push_back(m_controls->list.Text(row));
    return rows;
  }

  TempDir m_folder;
  RecordingHost m_host;
  Document m_document{m_host};
  CountedPane m_pane{m_document};
  TracePane* m_shown = &m_pane;
  std::vector<std::string> m_taken;
  std::unique_ptr<CStatisticsDlg> m_dialog;
  std::unique_ptr<Controls> m_controls;
};
using Rows = std::vector<std::string>;

TEST(StatisticsDialog, ShowsEachValueWithCountShareRateAndTimes) {
  Window<CTraceDoc> window;
  window.AddComponent(1, 0);
  window.AddComponent(2, 1);
  window.AddComponent(1, 4);
  window.AddComponent(1, 2);
  window.Open();
  EXPECT_EQ(window.Shown(),
            (Rows{"n1|3|75.0 %|0.50|2026-11-21 09:41:00.000|2026-11-21 09:41:04.000",
                  "n2|1|25.0 %||2026-11-21 09:41:01.000|2026-11-21 09:41:01.000"}));
  EXPECT_EQ(window.m_controls->status, "4 traces, 2 values");
  EXPECT_EQ(window.m_controls->list.Sort(), "Count down");
}

TEST(StatisticsDialog, AHeadingSortsAndASecondClickTurnsTheOrder) {
  Window<CTraceDoc> window;
  for (const NameId component : {3, 1, 2, 2}) window.AddComponent(component);
  window.Open();
  window.Shown();
  const auto firsts = [&] {
    std::string all;
    for (const StatRow& row : window.m_dialog->Rows()) all += row.value + " ";
    return all;
  };
  EXPECT_EQ(firsts(), "n2 n3 n1 ");
  window.m_controls->list.ClickHeading(0);
  EXPECT_EQ(firsts(), "n1 n2 n3 ");
  EXPECT_EQ(window.m_controls->list.Sort(), "Value up");
  window.m_controls->list.ClickHeading(0);
  EXPECT_EQ(firsts(), "n3 n2 n1 ");
  window.m_controls->list.ClickHeading(1);
  EXPECT_EQ(firsts().substr(0, 3), "n2 ");
}

TEST(StatisticsDialog, ItComesBackWithItsFieldAndItsOrder) {
  Window<CTraceDoc> window;
  window.AddComponent(1);
  window.Open();
  EXPECT_EQ(window.m_dialog->Field(), StatField::Component);
  window.m_dialog->SetField(StatField::Thread);
  window.m_controls->list.ClickHeading(5);
  window.m_dialog->OnCancel();
  window.Open();
  EXPECT_EQ(window.m_dialog->Field(), StatField::Thread);
  EXPECT_EQ(window.m_controls->list.Sort(), "Last up");
}

TEST(StatisticsDialog, StoredValuesThatDoNotExistAreTheUsualOnes) {
  Window<CTraceDoc> window;
  for (const char* const name : {"Field", "Sort"})
    NtRegPut(HKEY_CURRENT_USER, std::string(kRegTraceView) + "\\Statistics", name, 6U);
  window.Open();
  EXPECT_EQ(window.m_dialog->Field(), StatField::Component);
  EXPECT_EQ(window.m_controls->list.Sort(), "Count down");
}

TEST(StatisticsDialog, ADoubleClickAndTheButtonTakeTheFilterTextOfTheRow) {
  Window<CTraceDoc> window;
  window.AddComponent(1);
  window.AddComponent(2);
  window.AddComponent(2);
  window.Open();
  window.Shown();
  EXPECT_FALSE(window.m_controls->onlyThis);
  window.m_controls->list.DoubleClick(1);
  EXPECT_EQ(window.m_taken, (Rows{"component == n1"}));
  EXPECT_TRUE(window.m_controls->onlyThis);
  window.m_controls->list.Click(0);
  window.m_dialog->OnOK();
  EXPECT_EQ(window.m_taken.back(), "component == n2");
  EXPECT_FALSE(window.m_dialog->Ended());
}

TEST(StatisticsDialog, AValueThatNoFilterTextCanSayIsSaid) {
  Window<CTraceDoc> window;
  window.Add(MakeEvent({.text = "\xff 5"}));
  window.Open();
  window.m_dialog->SetField(StatField::Pattern);
  window.Shown();
  window.m_controls->list.DoubleClick(0);
  EXPECT_EQ(window.m_taken, Rows{});
  EXPECT_EQ(window.m_controls->status, "No filter text can say this value.");
}

TEST(StatisticsDialog, ASelectedRowStaysWhereItIsWhileTracesCome) {
  Window<CTraceDoc> window;
  window.AddComponent(1);
  window.AddComponent(1);
  window.AddComponent(2);
  window.Open();
  window.Shown();
  window.m_controls->list.Click(1);
  for (int i = 0; i < 5; ++i) window.AddComponent(2);
  window.Shown();
  EXPECT_EQ(window.m_dialog->Rows().at(1).value, "n2");
  EXPECT_EQ(window.m_dialog->Rows().at(1).tally.count, 6u);
  EXPECT_EQ(window.m_controls->list.SelectedRows(), std::vector<int>{1});
}

TEST(StatisticsDialog, WithoutTracesOrAPaneSaysSoAndCountsNothing) {
  Window<CTraceDoc> window;
  window.m_document.m_loading = true;
  window.AddComponent(1);
  window.Open();
  window.m_host.TickTimers();
  EXPECT_EQ(window.m_dialog->Rows().size(), 0u);
  EXPECT_EQ(window.m_dialog->ReportEmptyText(), "No traces");
  window.m_document.m_loading = false;
  EXPECT_EQ(window.Shown().size(), 1u);
  window.m_shown = nullptr;
  window.m_host.TickTimers();
  EXPECT_EQ(window.m_dialog->Rows().size(), 0u);
}

TEST(StatisticsDialog, ThatIsClosedCountsNoMore) {
  Window<CTraceDoc> window;
  window.AddComponent(1);
  window.Open();
  window.Shown();
  window.m_dialog->OnCancel();
  window.AddComponent(1);
  for (int i = 0; i < 20; ++i) window.m_host.TickTimers();
  EXPECT_EQ(window.m_dialog->Rows().at(0).tally.count, 1u);
  window.m_dialog.reset();
  EXPECT_TRUE(window.m_host.Timers().empty());
}

TEST(StatisticsDialog, CountsAnewWhenAnotherZoneOfTheTimesShowsOtherTraces) {
  const ZoneGuard zone("CET-1");
  Window<CTraceDoc> window;
  for (const unsigned hour : {11u, 12u})
    window.Add(MakeEvent(
        {.component = 1, .date = PackDate(2026, 11, 23), .time = PackTime(hour, 30, 0, 0)}));
  window.m_pane.m_filter.where = Where("time >= 2026-11-23T12:00");
  window.Open();
  window.Shown();
  EXPECT_EQ(window.m_dialog->Rows().at(0).tally.count, 1u);
  g_useUtc = false;
  window.Shown();
  EXPECT_EQ(window.m_dialog->Rows().at(0).tally.count, 2u);
}

CTraceFilter RandomFilter(RandomTraces& random) {
  constexpr const char* kTexts[] = {"severity >= warn", "text contains took", "delta > 0ns",
                                    "component == n41 or text matches \"id [0-9]+\""};
  CTraceFilter filter;
  if (random.Below(2) == 0) filter.where = Where(kTexts[random.Below(4)]);
  if (random.Below(3) == 0) {
    filter.allTraces = filter.allComponents = 0;
    for (NameId id = 40; id < 45; ++id) filter.components[id] = random.Below(2) == 0;
  }
  return filter;
}

TEST(StatisticsDialog, OfAMonitorIsASlowCountUnderFiltersTrimsAndClears) {
  RandomTraces random(11);
  Window<CTraceDoc> window;
  window.Open();
  for (int step = 0; step < 120; ++step) {
    window.AddRandom(random, random.Below(60));
    for (unsigned i = random.Below(50); i > 0 && !window.m_document.m_traces.empty(); --i)
      window.m_document.m_traces.PopFront();
    if (random.Below(25) == 0) window.m_document.DeleteContents();
    window.m_document.m_loading = false;
    if (random.Below(8) == 0) window.m_pane.m_filter = RandomFilter(random);
    if (random.Below(10) == 0) window.m_dialog->SetField(kAllStatFields[random.Below(6)]);
    // Some traces leave before they were counted.
    if (random.Below(3) == 0) continue;
    ASSERT_EQ(window.Counted(), window.Slow().tallies) << step;
  }
}

TEST(StatisticsDialog, OfAFileIsASlowCountUnderFilters) {
  RandomTraces random(12);
  Window<LendingDoc> window;
  window.AddRandom(random, 3000);
  window.Open();
  for (int step = 0; step < 25; ++step) {
    window.m_pane.m_filter = RandomFilter(random);
    window.m_dialog->SetField(kAllStatFields[random.Below(6)]);
    ASSERT_EQ(window.Counted(), window.Slow().tallies) << step;
  }
}

}  // namespace
