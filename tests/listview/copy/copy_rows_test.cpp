// Traces on the clipboard in each form.
#include "listview/copy/copy_rows.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>

#include "listview/copy/copy_work.h"
#include "settings/globals.h"
#include "settings/registry.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "where/text/where_parser.h"
#include "where/where_matcher.h"

namespace {

class ChosenTraces final : public CopiedTraces {
 public:
  void Rewind() override { m_next = 0; }
  bool Next(CopiedTrace& trace) override {
    if (m_next == events.size()) return false;
    trace = {events[m_next], m_next > 0 ? events[m_next - 1] : nullptr, static_cast<int>(m_next)};
    ++m_next;
    return true;
  }
  int Progress() const override { return Thousandths(m_next, events.size()); }
  std::vector<Column> Columns() const override { return columns; }
  std::string FurtherText(const CopiedTrace& trace, Column) override {
    return trace.row == 0 ? "n/a" : "-0.5";
  }

  std::vector<const TraceEvent_i*> events;
  std::vector<Column> columns = {Column::Sev, Column::Count, Column::Component, Column::Trace};

 private:
  std::size_t m_next = 0;
};

class CopyRows : public testing::Test {
 protected:
  CopyRows() {
    SetSettingsFile(m_directory.File("settings.ini"));
    g_useUtc = true;
    m_document.m_loading = false;
    m_document.m_names = {{1, {"Cart"}}, {2, {"=Net"}}, {3, {"web"}}};
  }
  ~CopyRows() override {
    g_useUtc = false;
    SetSettingsFile("");
  }
  void Add(TraceFields fields, bool chosen = true) {
    m_document.AddTrace(MakeEvent(fields).release());
    if (chosen) m_traces.events.push_back(m_document.m_traces.back());
  }
  std::string Copied(CopyForm form) {
    m_host.m_clipboard.clear();
    CopyRowsAs(m_document, m_traces, form);
    return m_host.m_clipboard;
  }
  void AddTwo() {
    Add({.text = "first\nline", .count = 9, .component = 1, .attributes = kAttributeError});
    Add({.text = "zwölf", .count = 1234, .component = 2});
  }

  TempDir m_directory;
  RecordingHost m_host;
  CTraceDoc m_document{m_host};
  ChosenTraces m_traces;
};

TEST_F(CopyRows, AsTextAreAlignedByBlanksAndOneLineEach) {
  AddTwo();
  m_traces.columns = {Column::Sev, Column::Count, Column::Trace, Column::Component};
  EXPECT_EQ(Copied(CopyForm::Text),
            "Sev    Count  Trace       Component\n"
            "Error      9  first line  Cart\n"
            "Info    1234  zwölf       =Net\n");
  StoreCopiesHeadings(false);
  EXPECT_EQ(Copied(CopyForm::Text),
            "Error     9  first line  Cart\n"
            "Info   1234  zwölf       =Net\n");
}

TEST_F(CopyRows, WithTabsAreForSpreadsheetsAndAreNoFormulas) {
  AddTwo();
  Add({.text = "a\tb", .component = 1});
  m_traces.columns.push_back(Column::Delta);
  EXPECT_EQ(Copied(CopyForm::Tabs),
            "Sev\tCount\tComponent\tTrace\tDelta\n"
            "Error\t9\tCart\tfirst line\tn/a\n"
            "Info\t1234\t'=Net\tzwölf\t-0.5\n"
            "Info\t\tCart\ta b\t-0.5\n");
}

TEST_F(CopyRows, AsCsvAreQuotedAsRfc4180WantsIt) {
  AddTwo();
  Add({.text = "say \"a, b\"", .count = 3, .component = 3});
  Add({.text = "-1+2", .count = 4, .component = 3, .time = PackTime(9, 41, 7, 5)});
  m_traces.columns.push_back(Column::Time);
  m_traces.columns.push_back(Column::Delta);
  EXPECT_EQ(Copied(CopyForm::Csv),
            "Sev,Count,Component,Trace,Time,Delta\r\n"
            "Error,9,Cart,\"first\nline\",2026-11-21T09:41:07.123000Z,\r\n"
            "Info,1234,'=Net,zwölf,2026-11-21T09:41:07.123000Z,-0.5\r\n"
            "Info,3,web,\"say \"\"a, b\"\"\",2026-11-21T09:41:07.123000Z,-0.5\r\n"
            "Info,4,web,'-1+2,2026-11-21T09:41:07.005000Z,-0.5\r\n");
  StoreCopiesHeadings(false);
  EXPECT_TRUE(Copied(CopyForm::Csv).starts_with("Error,9"));
}

TEST_F(CopyRows, AsJsonHaveTheirPlaceInTheDocumentAndItsMicroseconds) {
  constexpr std::uint64_t kMs = 1'000'000'000;
  // Of one process, whose moment a later trace narrows.
  Add({.text = "a", .time = PackTime(9, 41, 7, 1), .tic = 10 * kMs, .pid = 3}, false);
  Add({.text = "b", .time = PackTime(9, 41, 7, 1), .tic = 10 * kMs + kMs / 4, .pid = 3});
  Add({.text = "c", .time = PackTime(9, 41, 7, 2), .tic = 11 * kMs, .pid = 3}, false);
  Add({.text = "\"d\"", .count = 8, .time = PackTime(9, 41, 7, 2), .tic = 11 * kMs, .pid = 3});
  const std::string text = Copied(CopyForm::Json);
  ASSERT_EQ(std::ranges::count(text, '\n'), 2);
  const auto first = nlohmann::json::parse(text.substr(0, text.find('\n')));
  const auto second = nlohmann::json::parse(text.substr(text.find('\n')));
  EXPECT_EQ(first.at("i"), 1);
  EXPECT_EQ(first.at("time"), "2026-11-21T09:41:07.001250Z");
  EXPECT_EQ(second.at("i"), 3);
  EXPECT_EQ(second.at("text"), "\"d\"");
  EXPECT_EQ(second.at("pid"), "web");
  EXPECT_EQ(second.at("component"), nullptr);
}

TEST_F(CopyRows, AsFilterTextAreTheirNumbersInRanges) {
  for (const std::uint32_t count : {7, 1, 2, 3, 3, 12}) Add({.count = count});
  EXPECT_EQ(Copied(CopyForm::FilterText), "count in {1..3, 7, 12}");
}

TEST_F(CopyRows, AFilterTextOfThemShowsThemAndNoOthers) {
  std::mt19937 random(3);
  for (int round = 0; round < 60; ++round) {
    m_document.m_traces.Clear();
    m_traces.events.clear();
    for (std::uint32_t i = 0; i < 50; ++i) {
      TraceFields fields{.text = "say \"" + std::to_string(i) + "\"\n", .count = i * 2};
      if (random() % 3 == 0) fields.count = kNoSequenceNumber;
      if (random() % 9 == 0) fields.date = 0;
      Add(fields, random() % 2 == 0);
    }
    WhereError error;
    const WhereProgramPtr where = WhereProgram::Compile(Copied(CopyForm::FilterText), error);
    ASSERT_TRUE(where) << m_host.m_clipboard;
    std::vector<const TraceEvent_i*> shown;
    WhereMatcher matcher(where, m_document.m_names, {});
    m_document.m_traces.ForEach(0, [&](const TraceEvent_i* trace) {
      if (matcher.Matches(trace->Record())) shown.push_back(trace);
    });
    ASSERT_EQ(shown, m_traces.events) << m_host.m_clipboard;
  }
}

TEST_F(CopyRows, TooManyForAFilterTextAreNotCopiedAndThatIsTold) {
  for (std::uint32_t i = 0; i < 20'000; ++i) Add({.count = 1'000'000 + i * 2});
  m_host.m_clipboard = "before";
  CopyRowsAs(m_document, m_traces, CopyForm::FilterText);
  EXPECT_EQ(m_host.m_clipboard, "before");
  EXPECT_NE(m_host.TakeBoxes().find("a filter text for so many traces would be too long"),
            std::string::npos);
  m_document.m_traces.Clear();
  m_traces.events.clear();
  for (int i = 0; i < 4000; ++i) Add({.text = std::to_string(i), .count = kNoSequenceNumber});
  EXPECT_EQ(Copied(CopyForm::FilterText), "");
  EXPECT_NE(m_host.TakeBoxes().find("too long"), std::string::npos);
}

TEST_F(CopyRows, MoreBytesThanTheBoundEndTheCopy) {
  for (int i = 0; i < 5000; ++i) Add({.text = std::string(1000, 'x')});
  for (const CopyForm form : {CopyForm::Text, CopyForm::Csv, CopyForm::Json}) {
    CopyWork work(m_document, m_traces, form, true, 100'000);
    while (!work.DoPart()) {
      ASSERT_LE(work.Text().size(), 400'000U);
    }
    EXPECT_EQ(work.GetResult(), CopyWork::Result::TooManyBytes);
    EXPECT_EQ(work.Text(), "");
  }
}

TEST_F(CopyRows, TracesThatHaveGoneAreNotRead) {
  AddTwo();
  CopyWork work(m_document, m_traces, CopyForm::Csv, true);
  EXPECT_FALSE(work.DoPart());
  m_document.m_traces.Clear();
  EXPECT_TRUE(work.DoPart());
  EXPECT_EQ(work.GetResult(), CopyWork::Result::TracesGone);
}

TEST_F(CopyRows, ACancelLeavesTheClipboardAsItWas) {
  for (int i = 0; i < 3000; ++i) Add({.text = "x"});
  m_host.SetPieces({{}, {}});
  m_host.m_clipboard = "before";
  m_host.AnswerWorkBox([](CDialog& box) { box.OnCancel(); });
  CopyRowsAs(m_document, m_traces, CopyForm::Text);
  EXPECT_EQ(m_host.m_clipboard, "before");
}

TEST_F(CopyRows, WithoutAClipboardThatIsTold) {
  AddTwo();
  m_host.m_hasClipboard = false;
  Copied(CopyForm::Text);
  EXPECT_NE(m_host.TakeBoxes().find("there is no clipboard"), std::string::npos);
}

TEST_F(CopyRows, TheProgressOfACopyOnlyRises) {
  for (int i = 0; i < 2000; ++i) Add({.text = "x"});
  for (std::size_t form = 0; form < kCopyForms; ++form) {
    CopyWork work(m_document, m_traces, static_cast<CopyForm>(form), true);
    int before = 0;
    while (!work.DoPart()) {
      const int now = work.Progress().value_or(-1);
      ASSERT_GE(now, before) << form;
      ASSERT_LE(now, 1000);
      before = now;
    }
    EXPECT_GT(before, 600) << form;
  }
}

TEST_F(CopyRows, TheFormAndTheHeadingsAreRemembered) {
  AddTwo();
  EXPECT_EQ(LastCopyForm(), CopyForm::Text);
  EXPECT_TRUE(CopiesHeadings());
  Copied(CopyForm::Json);
  EXPECT_EQ(LastCopyForm(), CopyForm::Json);
  StoreCopiesHeadings(false);
  EXPECT_FALSE(CopiesHeadings());
}

}  // namespace
