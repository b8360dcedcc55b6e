#include "shell/details/details_pane.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "settings/globals.h"
#include "settings/registry.h"
#include "support/fake_details.h"
#include "support/make_event.h"
#include "support/plain_trace_pane.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class DetailsPaneTest : public testing::Test {
 protected:
  DetailsPaneTest() {
    SetSettingsFile(m_dir.File("settings.ini"));
    FindSettings = {};
    m_document.m_loading = false;
    m_details.OnPane(m_pane);
    m_pane.Watch(m_details);
    m_details.OnShown(true);
  }
  ~DetailsPaneTest() override {
    m_pane.Unwatch(m_details);
    FindSettings = {};
    g_useUtc = false;
    SetSettingsFile("");
  }
  TraceEvent_i* Add(const TraceFields& fields) {
    m_document.AddTrace(MakeEvent(fields).release());
    return m_document.m_traces.back();
  }
  // The user goes there, and the loop turns.
  FakeDetails& At(TraceEvent_i* event) {
    m_pane.GoToTrace(event);
    m_host.RunPosted();
    return *m_face;
  }
  std::size_t RowOf(const std::string& caption) const {
    for (std::size_t row = 0; row < m_details.Rows().size(); ++row)
      if (m_details.Rows()[row].caption == caption) return row;
    ADD_FAILURE() << "no row " << caption;
    return 0;
  }
  std::string Value(const std::string& caption) {
    return m_details.Rows().at(RowOf(caption)).value;
  }

  TempDir m_dir;
  RecordingHost m_host;
  CTraceDoc m_document{m_host};
  PlainTracePane m_pane{m_document};
  FakeDetails* m_face = nullptr;
  std::vector<std::string> m_taken;
  DetailsPane m_details{
      m_host, [this](DetailsPane& pane) { return std::make_unique<FakeDetails>(pane, m_face); },
      [this](const std::string& text) { m_taken.push_back(text); }};
};

TEST_F(DetailsPaneTest, WithoutATraceItSaysSo) {
  EXPECT_EQ(m_face->m_message, "No trace has the focus");
  EXPECT_EQ(m_face->m_rows, "");
  EXPECT_EQ(m_face->m_text, "");
}

TEST_F(DetailsPaneTest, AllFieldsAreThoseOfTheTrace) {
  m_document.m_names[7].name = "web-1";
  m_document.m_names[8].name = "Sql";
  m_document.m_names[9].name = "query.cpp";
  At(Add({.text = "two\nlines", .machine = 7, .component = 8, .file = 9, .line = 88}));
  EXPECT_EQ(m_face->m_message, "");
  EXPECT_EQ(m_face->m_text, "two\nlines");
  EXPECT_EQ(Value("Machine"), "web-1");
  EXPECT_EQ(Value("Component"), "Sql");
  EXPECT_EQ(Value("Source"), "query.cpp:88");
  EXPECT_EQ(Value("Tic Difference"), "n/a");
  for (const char* caption : {"Time", "Severity", "Category", "Count", "Attributes", "Application",
                              "PID", "TID", "Tic Count"})
    RowOf(caption);
}

TEST_F(DetailsPaneTest, AWalkWithAHeldKeyReadsOneTraceForEachTurnOfTheLoop) {
  TraceEvent_i* const first = Add({.text = "a"});
  TraceEvent_i* const second = Add({.text = "b"});
  const int before = m_face->m_updates;
  for (int step = 0; step < 100; ++step) m_pane.GoToTrace(step % 2 ? second : first);
  EXPECT_EQ(m_face->m_updates, before);
  m_host.RunPosted();
  EXPECT_EQ(m_face->m_updates, before + 1);
  EXPECT_EQ(m_face->m_text, "b");
}

TEST_F(DetailsPaneTest, TracesThatAMonitorAddsDoNotReadTheShownOneAgain) {
  At(Add({.text = "a"}));
  const int before = m_face->m_updates;
  CTraceHint hint(Add({.text = "b"}));
  for (int batch = 0; batch < 10; ++batch) {
    m_pane.OnUpdate(nullptr, kHintAdded, &hint);
    m_host.RunPosted();
  }
  EXPECT_EQ(m_face->m_updates, before);
  At(nullptr);
  EXPECT_EQ(m_face->m_updates, before + 1);
  m_pane.OnUpdate(nullptr, kHintAdded, &hint);
  m_host.RunPosted();
  EXPECT_EQ(m_face->m_updates, before + 1) << "there is nothing to show, and it was said";
}

TEST_F(DetailsPaneTest, ATrimmedTraceStaysToBeReadAndIsNeverReadAgain) {
  At(Add({.text = "a"}));
  CTraceHint hint(m_document.m_traces.back());
  m_pane.OnUpdate(nullptr, kHintTrimmed, &hint);
  m_document.m_traces.PopFront();  // under ASan a reading would be seen
  m_host.RunPosted();
  EXPECT_EQ(m_face->m_message, "This trace has been trimmed");
  EXPECT_EQ(m_face->m_text, "a");
  const int before = m_face->m_updates;
  m_pane.OnUpdate(nullptr, kHintOptions, nullptr);
  m_host.RunPosted();
  EXPECT_EQ(m_face->m_updates, before);
  At(Add({.text = "b"}));
  EXPECT_EQ(m_face->m_message, "");
  EXPECT_EQ(m_face->m_text, "b");
}

TEST_F(DetailsPaneTest, ATrimBetweenTheUsersStepAndTheReadingReadsNothing) {
  m_pane.GoToTrace(Add({.text = "a"}));
  CTraceHint hint(m_document.m_traces.back());
  m_pane.OnUpdate(nullptr, kHintTrimmed, &hint);
  m_document.m_traces.PopFront();
  m_host.RunPosted();
  EXPECT_EQ(m_face->m_message, "No trace has the focus");
}

TEST_F(DetailsPaneTest, AfterAClearNothingIsLeft) {
  At(Add({.text = "a"}));
  m_pane.m_current = nullptr;
  m_document.m_traces.Clear();
  m_pane.OnUpdate(nullptr, kHintReady, nullptr);
  m_host.RunPosted();
  EXPECT_EQ(m_face->m_message, "No trace has the focus");
  EXPECT_EQ(m_face->m_rows + m_face->m_text, "");
}

TEST_F(DetailsPaneTest, AClearTakesAlsoWhatWasTrimmedBefore) {
  At(Add({.text = "a"}));
  CTraceHint hint(m_document.m_traces.back());
  m_pane.OnUpdate(nullptr, kHintTrimmed, &hint);
  m_document.m_traces.PopFront();
  m_host.RunPosted();
  EXPECT_EQ(m_face->m_text, "a");
  m_document.m_traces.Clear();
  m_pane.OnUpdate(nullptr, kHintReady, nullptr);
  m_host.RunPosted();
  EXPECT_EQ(m_face->m_message, "No trace has the focus");
  EXPECT_EQ(m_face->m_rows + m_face->m_text, "");
}

TEST_F(DetailsPaneTest, AnotherZoneOfTimesIsShownAtOnce) {
  At(Add({.text = "a"}));
  const int before = m_face->m_updates;
  g_useUtc = true;
  m_pane.OnUpdate(nullptr, kHintOptions, nullptr);
  m_host.RunPosted();
  EXPECT_EQ(m_face->m_updates, before + 1);
}

TEST_F(DetailsPaneTest, WhatIsNotSeenReadsNothingAndLooksAnewWhenItIs) {
  At(Add({.text = "a"}));
  m_details.OnShown(false);
  const int before = m_face->m_updates;
  At(Add({.text = "b"}));
  EXPECT_EQ(m_face->m_updates, before);
  m_details.OnShown(true);
  EXPECT_EQ(m_face->m_text, "b");
}

// ---- the text

TEST_F(DetailsPaneTest, ALongTextIsShownInPartUntilTheUserWantsAllOfIt) {
  const std::string text = std::string(DetailsPane::kTextBytes - 1, 'x') + "\xC3\xA4rest";
  At(Add({.text = text.c_str()}));
  EXPECT_EQ(m_face->m_text.size(), DetailsPane::kTextBytes - 1) << "no character is cut";
  EXPECT_EQ(m_face->m_hidden, 6u);
  m_details.ShowAll();
  EXPECT_EQ(m_face->m_text, text);
  EXPECT_EQ(m_face->m_hidden, 0u);
  At(Add({.text = (text + "!").c_str()}));
  EXPECT_GT(m_face->m_hidden, 0u) << "each text begins in part";
}

TEST_F(DetailsPaneTest, HitsOfTheLastSearchAndOfTheFilterTextAreTinted) {
  WhereError error;
  m_pane.m_filter.where = WhereProgram::Compile("text contains \"order\"", error);
  ASSERT_TRUE(m_pane.m_filter.where);
  FindSettings.searchText = "4711";
  ASSERT_EQ(RegexPrepare("4711", 0, 1, 0, 0), 1);
  At(Add({.text = "order 4711 of order"}));
  EXPECT_EQ(m_face->m_hits, (std::vector<HitRange>{{0, 5}, {6, 10}, {14, 19}}));
}

// ---- JSON in the text

TEST_F(DetailsPaneTest, JsonStandsOnLinesOfItsOwnIfTheUserWantsThatAlsoNextTime) {
  At(Add({.text = "plain"}));
  EXPECT_FALSE(m_details.Body().HasJson());
  At(Add({.text = "got {\"a\":1}"}));
  EXPECT_TRUE(m_details.Body().HasJson());
  EXPECT_EQ(m_face->m_text, "got {\"a\":1}") << "until it is asked for";
  m_details.SetPretty(true);
  EXPECT_EQ(m_face->m_text, "got \n{\n  \"a\": 1\n}");
  At(Add({.text = "{\"b\":[]}"}));
  EXPECT_EQ(m_face->m_text, "{\n  \"b\": []\n}");
  At(Add({.text = "{\"b\":"}));
  EXPECT_EQ(m_face->m_text, "{\"b\":") << "it is no JSON";
  FakeDetails* other = nullptr;
  DetailsPane next(
      m_host, [&](DetailsPane& pane) { return std::make_unique<FakeDetails>(pane, other); },
      [](const std::string&) {});
  next.OnPane(m_pane);
  At(Add({.text = "{\"b\":1}"}));
  next.OnShown(true);
  EXPECT_EQ(other->m_text, "{\n  \"b\": 1\n}");
  m_details.SetPretty(false);
  EXPECT_EQ(m_face->m_text, "{\"b\":1}");
}

TEST_F(DetailsPaneTest, HitsAreThoseOfTheTracedTextWhereverItsBytesStandNow) {
  FindSettings.searchText = "1,\"name\"";
  ASSERT_EQ(RegexPrepare("1,\"name\"", 0, 1, 0, 0), 1);
  At(Add({.text = "{\"a\":1,\"name\":\"x\"}"}));
  m_details.SetPretty(true);
  ASSERT_EQ(m_face->m_hits.size(), 1u);
  const HitRange hit = m_face->m_hits[0];
  EXPECT_EQ(m_face->m_text.substr(hit.begin, hit.end - hit.begin), "1,\n  \"name\"");
}

TEST_F(DetailsPaneTest, LongJsonIsShownInPartWithTheHitsOfThatPart) {
  FindSettings.searchText = "x";
  ASSERT_EQ(RegexPrepare("x", 0, 1, 0, 0), 1);
  std::string text = "[";
  for (int i = 0; i < 3000; ++i) text += i % 100 ? "\"y\"," : "\"x\",";
  text += "\"z\"]";
  At(Add({.text = text.c_str()}));
  m_details.SetPretty(true);
  EXPECT_EQ(m_face->m_text.size(), DetailsPane::kTextBytes);
  const std::string part = m_face->m_text;
  EXPECT_EQ(m_face->m_hits.size(), std::ranges::count(part, 'x'));
  m_details.ShowAll();
  EXPECT_EQ(m_face->m_hits.size(), 30u);
  EXPECT_EQ(m_face->m_text.substr(0, part.size()), part);
  for (const HitRange& hit : m_face->m_hits) EXPECT_EQ(m_face->m_text[hit.begin], 'x');
}

// ---- the stack

TEST_F(DetailsPaneTest, EachFrameOfTheStackHasARow) {
  At(Add({.text = "a", .stack = "one\ntwo\n"}));
  EXPECT_NE(m_face->m_rows.find("Stack=one\n=two\n"), std::string::npos) << m_face->m_rows;
}

// ---- what the user does with it

TEST_F(DetailsPaneTest, AFieldOffersTheStepsOfTheFilterText) {
  m_document.m_names[8].name = "Sql";
  At(Add({.text = "a", .component = 8}));
  const std::vector<CellStep> steps = m_details.StepsOf(RowOf("Component"));
  ASSERT_EQ(steps.size(), 2u);
  EXPECT_EQ(steps[0].label, "&Only This Component \"Sql\"");
  EXPECT_EQ(steps[1].text, "component != Sql");
  m_details.TakeStep(steps[1].text);
  EXPECT_EQ(m_taken, std::vector<std::string>{"component != Sql"});
  EXPECT_TRUE(m_details.StepsOf(RowOf("Category")).empty()) << "it has none";
  EXPECT_TRUE(m_details.StepsOf(RowOf("Tic Difference")).empty());
  EXPECT_TRUE(m_details.StepsOf(99).empty());
}

TEST_F(DetailsPaneTest, RowsAreCopiedWithTheirNames) {
  m_document.m_names[8].name = "Sql";
  At(Add({.text = "a", .stack = "one\ntwo\n", .component = 8}));
  const std::size_t stack = RowOf("Stack");
  EXPECT_EQ(m_details.CopyText({RowOf("Component"), stack, stack + 1, 99}),
            "Component: Sql\nStack: one\ntwo\n");
}

TEST_F(DetailsPaneTest, OnlyATraceThatNamesItsSourceLeadsThere) {
  m_document.m_names[9].name = "query.cpp";
  At(Add({.text = "a", .file = 9, .line = 88}));
  EXPECT_TRUE(m_details.HasSource(RowOf("Source")));
  EXPECT_FALSE(m_details.HasSource(RowOf("Time")));
  At(Add({.text = "a"}));
  EXPECT_FALSE(m_details.HasSource(RowOf("Source")));
}

}  // namespace
