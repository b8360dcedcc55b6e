// The filter text of a monitor's window at the source: what goes to the service, and what the line
// says of it.
#include "documents/trace_realtime_doc.h"
#include "shell/realtime_frame.h"
#include "shell_fixture.h"
#include "support/fake_connection.h"
#include "support/zone_guard.h"

namespace {

using Kind = SourceFilterState::Kind;

class SourceFilterTest : public ShellTest {
 protected:
  SourceFilterTest() {
    m_app->m_connectMonitor = m_service.Connector();
    Start();
    EXPECT_TRUE(m_app->OpenMonitor("web"));
    m_service.m_log.clear();
    EXPECT_TRUE(Frame().OnCommand(ID_VIEW_FILTERTEXT));
  }
  ~SourceFilterTest() override { m_app.reset(); }
  FilterLine& Line() { return m_faces.m_filterLine->m_line; }
  const std::string& Message() { return m_faces.m_filterLine->m_message; }
  void Apply(const std::string& text) {
    Line().Edit(text);
    EXPECT_TRUE(Line().Apply());
  }
  void Answer(Kind kind, const std::string& why = {}) {
    m_service.Last().m_sourceFilter = {.kind = kind, .why = why};
    Tick();
  }
  void Tick() {
    dynamic_cast<CTraceRealtimeFrame&>(*Frame().Children()[0]).OnTimer(TRACE_TIMER_ID);
  }
  std::string Sent() { return std::exchange(m_service.m_log, ""); }
  FakeService m_service;
};

TEST_F(SourceFilterTest, NothingGoesToTheServiceUntilItIsAskedFor) {
  Apply("pid == 1");
  EXPECT_EQ(Sent(), "");
  EXPECT_EQ(Message(), "Applied.");
  EXPECT_FALSE(Line().AtSource().IsOn());
  EXPECT_EQ(Line().AtSource().WhyNot(), "");
  Line().SetAtSource(true);
  EXPECT_EQ(Sent(), "filter pid == 1\n");
  Apply("component == Net");
  EXPECT_EQ(Sent(), "filter component == Net\n");
  Line().SetAtSource(false);
  EXPECT_EQ(Sent(), "filter \n");
}

TEST_F(SourceFilterTest, ATextThatIsTakenBackOrPutAwayIsTakenBackThereToo) {
  Line().SetAtSource(true);
  EXPECT_EQ(Sent(), "") << "there is no text";
  Apply("pid == 1");
  Apply("");
  EXPECT_EQ(Sent(), "filter pid == 1\nfilter \n");
  Apply("pid == 2");
  Line().PutAway();
  EXPECT_EQ(Sent(), "filter pid == 2\nfilter \n");
}

TEST_F(SourceFilterTest, TheLineCountsWhatWasWithheldBesideWhatWasLost) {
  Line().SetAtSource(true);
  Apply("pid == 1");
  Answer(Kind::Asked);
  EXPECT_EQ(Message(), "Applied. The source has not answered yet.");
  m_service.Last().m_counts = {.delivered = 10, .lost = 3, .withheld = 990};
  Answer(Kind::InForce);
  EXPECT_EQ(Message(), "Applied. At the source: 990 withheld, 3 lost.");
  m_service.Last().m_counts.withheld = 1990;
  Tick();
  EXPECT_EQ(Message(), "Applied. At the source: 1990 withheld, 3 lost.");
  const int updates = m_faces.m_filterLine->m_updates;
  Tick();
  EXPECT_EQ(m_faces.m_filterLine->m_updates, updates) << "nothing has changed";
  Line().SetAtSource(false);
  Answer(Kind::None);
  EXPECT_EQ(Message(), "Applied. At the source so far: 1990 withheld, 3 lost.");
}

TEST_F(SourceFilterTest, WhatTheSourceCannotAskWorksInTheWindowAndTheLineSaysWhy) {
  Line().SetAtSource(true);
  Apply("pid == 1");
  Apply("delta > 5ms");
  EXPECT_EQ(Sent(), "filter pid == 1\nfilter \n");
  EXPECT_EQ(
      Message(),
      "Applied. All traces come: the source does not know the trace before: \"delta\" works in "
      "the window only.");
  Apply("pid == 2");
  Answer(Kind::Refused, "an account has at most 16 filter texts");
  EXPECT_EQ(Message(), "Applied. All traces come: an account has at most 16 filter texts.");
  Answer(Kind::Unknown);
  EXPECT_EQ(Message(),
            "Applied. All traces come: the service is of a version that cannot filter them.");
}

TEST_F(SourceFilterTest, AnEmptyWindowSaysThatTracesAreWithheld) {
  CTraceRealtimeDoc& monitor =
      dynamic_cast<CTraceRealtimeDoc&>(*m_app->MonitorTemplate()->Documents()[0]);
  EXPECT_EQ(monitor.WhyEmpty().find("withholds"), std::string::npos);
  m_service.Last().m_counts.withheld = 1;
  Answer(Kind::InForce);
  EXPECT_NE(monitor.WhyEmpty().find("Some came, and the filter text withholds them at the source"),
            std::string::npos)
      << monitor.WhyEmpty();
}

TEST_F(SourceFilterTest, AnEmptyWindowWhoseTextWentSaysThatTracesWereWithheldEarlier) {
  CTraceRealtimeDoc& monitor =
      dynamic_cast<CTraceRealtimeDoc&>(*m_app->MonitorTemplate()->Documents()[0]);
  m_service.Last().m_counts.withheld = 1;
  Answer(Kind::InForce);
  for (const Kind kind : {Kind::None, Kind::Refused, Kind::Unknown}) {
    Answer(kind);
    EXPECT_EQ(monitor.WhyEmpty().find("withholds"), std::string::npos);
    EXPECT_NE(monitor.WhyEmpty().find("Some came earlier, and a filter text withheld them"),
              std::string::npos)
        << monitor.WhyEmpty();
  }
}

// It may show what the text of the first one would withhold.
TEST_F(SourceFilterTest, AllTracesComeWhileTheMonitorHasASecondWindow) {
  FilterLine& line = Line();
  line.SetAtSource(true);
  Apply("pid == 1");
  EXPECT_EQ(Sent(), "filter pid == 1\n");
  ASSERT_TRUE(Frame().OnCommand(ID_WINDOW_NEW));
  Tick();
  EXPECT_EQ(Sent(), "filter \n");
  EXPECT_EQ(line.Message(), "Applied. All traces come: the monitor has another window.");
  Frame().MDIGetActive()->OnClose();
  ASSERT_EQ(Frame().Children().size(), 1u);
  Tick();
  EXPECT_EQ(Sent(), "filter pid == 1\n");
}

TEST_F(SourceFilterTest, ASecondWindowGetsAllTracesHoweverSoonTheFirstOneEnds) {
  Line().SetAtSource(true);
  Apply("pid == 1");
  EXPECT_EQ(Sent(), "filter pid == 1\n");
  ASSERT_TRUE(Frame().OnCommand(ID_WINDOW_NEW));
  Frame().Children()[0]->OnClose();  // before any tick
  ASSERT_EQ(Frame().Children().size(), 1u);
  EXPECT_EQ(Sent(), "filter \n");
}

TEST_F(SourceFilterTest, ATimeWithoutAZoneFollowsTheOptionsThereToo) {
  const ZoneGuard zone("CET-1");
  Line().SetAtSource(true);
  Apply("time >= 2026-11-23T12:00:00");
  EXPECT_NE(Sent().find("T11:00"), std::string::npos);
  g_useUtc = true;
  Tick();
  EXPECT_NE(Sent().find("T12:00"), std::string::npos);
}

TEST_F(SourceFilterTest, TheWindowOfAFileHasNoSource) {
  ASSERT_TRUE(Open(WriteTraces("web.trc", 3)));
  EXPECT_TRUE(Frame().OnCommand(ID_VIEW_FILTERTEXT));
  EXPECT_EQ(Line().AtSource().WhyNot(), "only for live traces");
}

}  // namespace
