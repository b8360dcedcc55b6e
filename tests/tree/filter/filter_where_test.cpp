// A filter with a text: the text filters what the marks let through.
#include <gtest/gtest.h>

#include "settings/globals.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "tree/filter/filter_pass.h"

namespace {

class FilterWhereTest : public testing::Test {
 protected:
  FilterWhereTest() {
    m_document.m_names = {{3, {"Sql"}}, {4, {"Net"}}, {5, {"4711"}}};
    g_useUtc = true;
  }
  ~FilterWhereTest() override { g_useUtc = false; }

  TraceEvent_i* Add(const TraceFields& fields) {
    m_document.AddTrace(MakeEvent(fields).release());
    return m_document.m_traces.back();
  }
  void Set(const char* text) {
    WhereError error;
    m_filter.where = WhereProgram::Compile(text, error);
    ASSERT_TRUE(m_filter.where) << error.reason;
  }
  // The verdicts on all traces in one pass: "1 0 1"; those of single questions are the same.
  std::string Verdicts() {
    std::string verdicts;
    FilterPass pass(m_filter, m_document);
    m_document.m_traces.ForEach(0, [&](const TraceEvent_i* event) {
      const bool passes = pass.Matches(*event);
      EXPECT_EQ(m_filter.Matches(*event, m_document), passes ? 1 : 0);
      verdicts += verdicts.empty() ? "" : " ";
      verdicts += passes ? "1" : "0";
    });
    return verdicts;
  }

  RecordingHost m_host;
  CTraceDoc m_document{m_host};
  CTraceFilter m_filter;
};

TEST_F(FilterWhereTest, WithAllMarksSetTheTextAloneDecides) {
  Add({.text = "a", .component = 3});
  Add({.text = "b", .component = 4});
  Add({.text = "b", .component = 3});
  Set("component == Sql and text contains b");
  EXPECT_FALSE(m_filter.ShowsAll());
  EXPECT_EQ(Verdicts(), "0 0 1");
  EXPECT_TRUE(m_filter.components.empty());
}

TEST_F(FilterWhereTest, TheTextFiltersWhatTheMarksLetThrough) {
  Add({.text = "b", .component = 3});
  Add({.text = "b", .component = 4});
  Add({.text = "a", .component = 4});
  m_filter.allTraces = m_filter.allComponents = 0;
  m_filter.components[3] = 0;
  Set("text == b");
  EXPECT_EQ(Verdicts(), "0 1 0");
  m_filter.where.reset();
  EXPECT_EQ(Verdicts(), "0 1 1");
}

TEST_F(FilterWhereTest, TheTraceBeforeIsThatOfTheDocumentAlsoWhenItIsHidden) {
  Add({.component = 3, .tic = 1'000'000, .pid = 5});
  Add({.component = 4, .tic = 9'000'000, .pid = 5});
  Add({.component = 3, .tic = 9'500'000, .pid = 5});
  Add({.component = 3, .tic = 99'500'000, .pid = 5});
  m_filter.allTraces = m_filter.allComponents = 0;
  m_filter.components[4] = 0;
  Set("delta > 1us");
  EXPECT_EQ(Verdicts(), "0 0 0 1");
}

TEST_F(FilterWhereTest, APassMayBeginAtAnyTraceOfTheDocument) {
  Add({.tic = 1'000'000, .pid = 5});
  TraceEvent_i* const second = Add({.tic = 9'000'000, .pid = 5});
  TraceEvent_i* const third = Add({.tic = 9'000'001, .pid = 5});
  Set("delta >= 8us");
  FilterPass pass(m_filter, m_document);
  EXPECT_TRUE(pass.Matches(*second));
  EXPECT_FALSE(pass.Matches(*third));
}

TEST_F(FilterWhereTest, TheEndIsTheNewestTraceWhenThePassBegins) {
  Add({.time = PackTime(9, 0, 0, 0)});
  Add({.time = PackTime(9, 4, 0, 0)});
  Set("time >= end - 5m");
  EXPECT_EQ(Verdicts(), "1 1");
  Add({.time = PackTime(9, 8, 0, 0)});
  EXPECT_EQ(Verdicts(), "0 1 1");
}

TEST_F(FilterWhereTest, ToShowAllRemovesTheText) {
  Set("text == b");
  m_filter.ShowAll();
  EXPECT_TRUE(m_filter.ShowsAll());
  EXPECT_FALSE(m_filter.where);
}

// A trace as another implementation of the interface may hold it.
class WithoutRecord final : public TraceEvent_i {
 public:
  explicit WithoutRecord(const TraceFields& fields) : m_event(MakeEvent(fields)) {}
  void Release() override { delete this; }
  std::uint32_t GetSequenceNumber() const override { return m_event->GetSequenceNumber(); }
  std::uint32_t GetDate() const override { return m_event->GetDate(); }
  std::uint32_t GetTime() const override { return m_event->GetTime(); }
  std::string GetText() const override { return m_event->GetText(); }
  NameId GetComponentId() const override { return m_event->GetComponentId(); }
  NameId GetCategoryId() const override { return m_event->GetCategoryId(); }
  NameId GetMachineId() const override { return m_event->GetMachineId(); }
  NameId GetAppId() const override { return m_event->GetAppId(); }
  NameId GetSourceFileId() const override { return m_event->GetSourceFileId(); }
  NameId GetPidId() const override { return m_event->GetPidId(); }
  NameId GetTidId() const override { return m_event->GetTidId(); }
  int GetAttributes() const override { return m_event->GetAttributes(); }
  std::uint64_t GetTicCount() const override { return m_event->GetTicCount(); }
  std::uint32_t GetSourceLine() const override { return m_event->GetSourceLine(); }
  std::string GetStack() const override { return m_event->GetStack(); }

 private:
  EventPtr m_event;
};

TEST_F(FilterWhereTest, ATraceWithoutARecordIsAskedByItsFields) {
  m_document.AddTrace(new WithoutRecord({.text = "b", .component = 3, .tic = 5'000'000, .pid = 5}));
  m_document.AddTrace(
      new WithoutRecord({.text = "b", .stack = "f", .component = 3, .tic = 9'000'000, .pid = 5}));
  Set("component == Sql and pid == 4711 and text == b");
  EXPECT_EQ(Verdicts(), "1 1");
  Set("delta == 4us and stack contains f");
  EXPECT_EQ(Verdicts(), "0 1");
}

}  // namespace
