#include "listview/details/trace_detail_dialog.h"

#include <gtest/gtest.h>

#include "listview/details/fake_cursor.h"
#include "settings/globals.h"
#include "support/recording_host.h"
#include "support/zone_guard.h"
#include "symbols/naming_program.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class TraceDetails : public testing::Test {
 protected:
  TraceDetails() { g_useUtc = true; }
  ~TraceDetails() override { g_useUtc = false; }

  // The dialog opened on the last of these traces.
  CTraceDetailDialog& OpenOn(const std::vector<TraceFields>& traces) {
    m_cursor.Clear();
    for (const TraceFields& fields : traces) m_cursor.Add(fields);
    m_cursor.StandAt(traces.size() - 1);
    m_dialog.OnInitDialog();
    m_cursor.TakeSteps();
    return m_dialog;
  }

  RecordingHost m_host;
  NameMap m_names = {{1, {"web-1"}}, {2, {"shop"}}, {3, {"Net"}},    {4, {"open"}},
                     {5, {"812"}},   {6, {"main"}}, {7, {"net.cpp"}}};
  FakeCursor m_cursor;
  CTraceDetailDialog m_dialog{m_host, m_cursor, m_names};
};

// ---- hits of the last search

TEST_F(TraceDetails, TheHitsOfTheLastSearchStandWhereTheTextHasThem) {
  ASSERT_EQ(RegexPrepare("up", 0, 1, 0, 0), 1);
  FindSettings.searchText = "up";
  m_cursor.Clear();
  m_cursor.Add({.text = "up\nis up\n\nup"});
  m_cursor.StandAt(0);
  CTraceDetailDialog dialog(m_host, m_cursor, m_names);
  dialog.OnInitDialog();
  FindSettings = {};
  ASSERT_EQ(dialog.m_text, "up\r\nis up\r\n\r\nup");
  EXPECT_EQ(dialog.m_hits, (std::vector<HitRange>{{0, 2}, {7, 9}, {13, 15}}));
}

TEST_F(TraceDetails, WithoutASearchNoHitsAreReported) {
  FindSettings = {};
  EXPECT_TRUE(OpenOn({{.text = "up"}}).m_hits.empty());
}

// ---- fields

TEST_F(TraceDetails, EveryFieldShowsItsPartOfTheTrace) {
  const CTraceDetailDialog& dialog = OpenOn({{.text = "connected",
                                              .stack = "a\nb",
                                              .count = 17,
                                              .machine = 1,
                                              .app = 2,
                                              .component = 3,
                                              .category = 4,
                                              .tic = 1500,
                                              .pid = 5,
                                              .tid = 6,
                                              .attributes = 1 + 8,
                                              .file = 7,
                                              .line = 42}});
  EXPECT_EQ(dialog.m_severity, "Info");
  EXPECT_EQ(dialog.m_count, "17");
  EXPECT_EQ(dialog.m_attributes, "Info, Developer");
  EXPECT_EQ(dialog.m_component, "Net");
  EXPECT_EQ(dialog.m_category, "open");
  EXPECT_EQ(dialog.m_machine, "web-1");
  EXPECT_EQ(dialog.m_application, "shop");
  EXPECT_EQ(dialog.m_pid, "812");
  EXPECT_EQ(dialog.m_tid, "main");
  EXPECT_EQ(dialog.m_time, "2026-11-21 09:41:07.123");
  EXPECT_EQ(dialog.m_ticCount, "1500");
  EXPECT_EQ(dialog.m_source, "net.cpp:42");
  EXPECT_EQ(dialog.m_stack, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(dialog.m_text, "connected");
}

TEST_F(TraceDetails, TheFieldsStandInTheirGroupsWithTheirCaptions) {
  std::string all;
  for (const CTraceDetailDialog::Field& field : CTraceDetailDialog::Fields())
    all += std::to_string(field.id) + " " + field.group + " " + field.caption + "\n";
  EXPECT_EQ(all,
            "1159 Trace Info Severity:\n"
            "1041 Trace Info Count:\n"
            "1158 Trace Info Attributes:\n"
            "1054 Trace Info Component:\n"
            "1055 Trace Info Category:\n"
            "1044 Process Info Machine:\n"
            "1045 Process Info Application:\n"
            "1046 Process Info PID:\n"
            "1047 Process Info TID:\n"
            "1042 Time Info Time:\n"
            "1072 Time Info Tic Count:\n"
            "1078 Time Info Tic Difference:\n"
            "1087 Location Source:\n");
  EXPECT_STREQ(CTraceDetailDialog::kCaption, "Trace Properties");
}

TEST_F(TraceDetails, TheAccountIsReadFromTheNameOfTheProcess) {
  m_names[5] = {"812 alice"};
  m_names[6] = {"812"};
  const CTraceDetailDialog& dialog = OpenOn({{.pid = 6}, {.pid = 5}});
  EXPECT_EQ(dialog.m_pid, "812 alice");
  EXPECT_EQ(dialog.m_account, "alice");
  m_dialog.OnBack();
  EXPECT_EQ(dialog.m_pid, "812");
  EXPECT_EQ(dialog.m_account, "");
  m_dialog.OnNext();
  ASSERT_EQ(dialog.m_account, "alice");
  m_cursor.Clear();
  m_dialog.OnBack();
  EXPECT_EQ(dialog.m_account, "") << "of no trace";
}

TEST_F(TraceDetails, TheFieldsStartOutEmpty) {
  for (const CTraceDetailDialog::Field& field : CTraceDetailDialog::Fields())
    EXPECT_EQ(m_dialog.*(field.value), "") << field.caption;
  EXPECT_EQ(m_dialog.m_text, "");
  EXPECT_TRUE(m_dialog.m_stack.empty());
}

TEST_F(TraceDetails, ASeverityWordStandsForExactlyOneLowBitAndElseItsNumberShows) {
  const std::vector<std::pair<std::uint16_t, std::string>> words = {
      {0, "0"}, {1, "Info"}, {2, "Warning"},        {3, "3"}, {4, "Error"}, {5, "5"},
      {6, "6"}, {7, "7"},    {4 + 8 + 16, "Error"}, {8, "0"}};
  for (const auto& [attributes, word] : words)
    EXPECT_EQ(OpenOn({{.attributes = attributes}}).m_severity, word) << attributes;
}

TEST_F(TraceDetails, ANumberThatIsNoneLeavesCountEmpty) {
  EXPECT_EQ(OpenOn({{.count = kNoSequenceNumber}}).m_count, "");
  EXPECT_EQ(OpenOn({{.count = 4294967294u}}).m_count, "4294967294");
}

TEST_F(TraceDetails, ATraceWithoutASourceFileHasAnEmptySource) {
  EXPECT_EQ(OpenOn({{.file = 0, .line = 7}}).m_source, "");
  EXPECT_EQ(OpenOn({{.file = 7, .line = 4000000000u}}).m_source, "net.cpp:4000000000");
}

TEST_F(TraceDetails, ANameThatTheMapLacksIsAnEmptyFieldAndEntersNothing) {
  EXPECT_EQ(OpenOn({{.machine = 99}}).m_machine, "");
  EXPECT_EQ(m_names.count(99), 0u);
}

TEST_F(TraceDetails, TheTimeIsLocalUnlessUtcIsChosen) {
  const ZoneGuard zone("Europe/Berlin");
  EXPECT_EQ(OpenOn({{}}).m_time, "2026-11-21 09:41:07.123");
  g_useUtc = false;
  EXPECT_EQ(OpenOn({{}}).m_time, "2026-11-21 10:41:07.123");
}

TEST_F(TraceDetails, ALineFeedOfTheTextGetsACarriageReturnBeforeIt) {
  EXPECT_EQ(OpenOn({{.text = "a\nb\n\nc"}}).m_text, "a\r\nb\r\n\r\nc");
  EXPECT_EQ(OpenOn({{.text = "a\r\nb"}}).m_text, "a\r\r\nb");  // every one
}

TEST_F(TraceDetails, ATraceWithoutAStackLeavesTheListDisabledAndEmpty) {
  OpenOn({{.stack = "a"}});
  EXPECT_TRUE(m_dialog.m_stackEnabled);
  OpenOn({{.stack = ""}});
  EXPECT_FALSE(m_dialog.m_stackEnabled);
  EXPECT_TRUE(m_dialog.m_stack.empty());
}

TEST_F(TraceDetails, TheStackIsCutAtItsLineFeeds) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(OpenOn({{.stack = "main"}}).m_stack, Lines{"main"});
  EXPECT_EQ(OpenOn({{.stack = "a\nb\n"}}).m_stack, (Lines{"a", "b"}));  // no empty last entry
  EXPECT_EQ(OpenOn({{.stack = "a\n\nb"}}).m_stack, (Lines{"a", "", "b"}));
  EXPECT_EQ(OpenOn({{.stack = "\n"}}).m_stack, Lines{""});
  EXPECT_TRUE(m_dialog.m_stackEnabled);
}

// ---- tic difference

TEST_F(TraceDetails, TheDifferenceIsToTheTraceBeforeWithItsTimeSpan) {
  EXPECT_EQ(OpenOn({{.tic = 1000}, {.tic = 2500}}).m_ticDifference, "1500 (1.5 ns)");
  EXPECT_EQ(OpenOn({{.tic = 7}, {.tic = 7}}).m_ticDifference, "0 (0 ps)");
}

TEST_F(TraceDetails, TheFirstTraceHasNoDifferenceAndNoWayBack) {
  EXPECT_EQ(OpenOn({{.tic = 1000}}).m_ticDifference, "n/a");
  EXPECT_FALSE(m_dialog.m_hasBack);
  EXPECT_FALSE(m_dialog.m_hasNext);
}

TEST_F(TraceDetails, ATraceWithoutATicCountShows0AndNoDifference) {
  const CTraceDetailDialog& dialog = OpenOn({{.tic = 1000}, {.tic = 0}});
  EXPECT_EQ(dialog.m_ticCount, "0");
  EXPECT_EQ(dialog.m_ticDifference, "n/a");
}

TEST_F(TraceDetails, TheDifferenceIsShownAcrossProcesses) {
  EXPECT_EQ(OpenOn({{.tic = 1000, .pid = 1}, {.tic = 1002, .pid = 5}}).m_ticDifference, "2 (2 ps)");
}

TEST_F(TraceDetails, ADifferenceBelowZeroWrapsAndItsSpanIsNegative) {
  EXPECT_EQ(OpenOn({{.tic = 1000}, {.tic = 995}}).m_ticDifference, "18446744073709551611 (-5 ps)");
}

TEST_F(TraceDetails, AnEarlierTraceWithoutATicCountStillGivesADifference) {
  EXPECT_EQ(OpenOn({{.tic = 0}, {.tic = 1000}}).m_ticDifference, "1000 (1 ns)");
}

TEST_F(TraceDetails, TheDifferenceIsGotByTwoRealStepsOfTheCursor) {
  for (const TraceFields& fields : {TraceFields{.tic = 1}, TraceFields{.tic = 2}})
    m_cursor.Add(fields);
  m_cursor.StandAt(1);
  m_dialog.OnInitDialog();
  EXPECT_EQ(m_cursor.TakeSteps(), "prev next");
  m_dialog.OnBack();
  EXPECT_EQ(m_cursor.TakeSteps(), "prev");  // the first has none before it
  m_dialog.OnNext();
  EXPECT_EQ(m_cursor.TakeSteps(), "next prev next");
}

TEST_F(TraceDetails, WithoutATicCountTheCursorIsNotMoved) {
  m_cursor.Add({.tic = 1});
  m_cursor.Add({.tic = 0});
  m_cursor.StandAt(1);
  m_dialog.OnInitDialog();
  EXPECT_EQ(m_cursor.TakeSteps(), "");
}

// ---- walking

TEST_F(TraceDetails, BackAndNextWalkTheCursorAndFillAnew) {
  OpenOn({{.text = "1"}, {.text = "2", .stack = "s"}, {.text = "3"}});
  EXPECT_EQ(m_dialog.m_text, "3");
  EXPECT_FALSE(m_dialog.m_hasNext);
  EXPECT_TRUE(m_dialog.m_hasBack);
  m_dialog.OnBack();
  EXPECT_EQ(m_dialog.m_text, "2");
  EXPECT_TRUE(m_dialog.m_stackEnabled);
  EXPECT_TRUE(m_dialog.m_hasNext);
  EXPECT_TRUE(m_dialog.m_hasBack);
  m_dialog.OnBack();
  EXPECT_EQ(m_dialog.m_text, "1");
  EXPECT_FALSE(m_dialog.m_stackEnabled);
  EXPECT_FALSE(m_dialog.m_hasBack);
  m_dialog.OnNext();
  EXPECT_EQ(m_dialog.m_text, "2");
}

TEST_F(TraceDetails, NewTracesShowInTheButtonsOnlyAtTheNextFilling) {
  OpenOn({{.text = "1"}, {.text = "2"}});
  m_cursor.Add({.text = "3"});
  EXPECT_FALSE(m_dialog.m_hasNext);
  m_dialog.OnBack();
  m_dialog.OnNext();
  EXPECT_EQ(m_dialog.m_text, "2");
  EXPECT_TRUE(m_dialog.m_hasNext);
}

TEST_F(TraceDetails, WithoutATraceUnderTheCursorAllFieldsAreEmpty) {
  OpenOn({{.text = "1", .stack = "s", .machine = 1, .tic = 1}, {.text = "2", .tic = 2}});
  m_cursor.Clear();
  m_dialog.OnBack();
  for (const CTraceDetailDialog::Field& field : CTraceDetailDialog::Fields())
    EXPECT_EQ(m_dialog.*(field.value), "") << field.caption;
  EXPECT_EQ(m_dialog.m_text, "");
  EXPECT_FALSE(m_dialog.m_stackEnabled);
  EXPECT_FALSE(m_dialog.m_hasNext);
}

TEST_F(TraceDetails, AnEarlierNodeWithoutATraceGivesNoDifference) {
  m_cursor.AddNothing();
  m_cursor.Add({.tic = 5});
  m_cursor.StandAt(1);
  m_dialog.OnInitDialog();
  EXPECT_EQ(m_dialog.m_ticDifference, "n/a");
  EXPECT_EQ(m_dialog.m_ticCount, "5");
}

TEST_F(TraceDetails, ItEndsByCancelAndTheCursorStandsOnTheTraceLastShown) {
  m_cursor.Add({.text = "1"});
  m_cursor.Add({.text = "2"});
  m_cursor.StandAt(0);
  m_host.AnswerDialog([](CDialog& dialog) {
    dynamic_cast<CTraceDetailDialog&>(dialog).OnNext();
    dialog.OnCancel();
  });
  EXPECT_EQ(m_dialog.DoModal(), CDialog::kIdCancel);
  EXPECT_EQ(m_cursor.current->GetText(), "2");
}

// ---- the names of the stack

class NamedStack : public TraceDetails {
 protected:
  ~NamedStack() override { g_stackNaming.reset(); }
  void NameBy(const NamingProgram& program) {
    g_stackNaming = std::make_unique<StackNaming>(std::vector<std::string>(), program.Path());
  }
  void AwaitNames() {
    ASSERT_TRUE(m_host.WaitForPost());
    m_host.RunPosted();
  }

  const std::string m_recorded = "/usr/bin/orders+0x12ab [0a1b2c3d4e5f]";
};

TEST_F(NamedStack, TheRecordedLinesAreThereAtOnceAndTheNamesWhenTheyCome) {
  const NamingProgram program(NamingProgram::kHangsUntilToldTo);
  NameBy(program);
  int shown = 0;
  m_dialog.m_whenNamed = [&] { ++shown; };
  OpenOn({{.stack = m_recorded}});
  EXPECT_EQ(m_dialog.m_stack, std::vector<std::string>{m_recorded});
  EXPECT_TRUE(m_dialog.m_stackNames.frames.empty());
  program.Tell();
  AwaitNames();
  EXPECT_EQ(shown, 1);
  ASSERT_EQ(m_dialog.m_stackNames.frames.size(), 1u);
  EXPECT_EQ(m_dialog.m_stackNames.frames[0].text, "Charge() at pay.cpp:12 (orders)");
  EXPECT_EQ(m_dialog.m_stackNames.missing, std::vector<std::string>{"no names for libfoo.so"});
  EXPECT_EQ(m_dialog.m_stack, std::vector<std::string>{m_recorded});
}

TEST_F(NamedStack, NamesOfAnEarlierTraceAreNotShown) {
  const NamingProgram program(NamingProgram::kAnswers);
  NameBy(program);
  OpenOn({{.text = "1", .stack = m_recorded}, {.text = "2", .stack = ""}});
  m_dialog.OnBack();
  ASSERT_TRUE(m_host.WaitForPost());
  m_dialog.OnNext();
  m_host.RunPosted();
  EXPECT_TRUE(m_dialog.m_stackNames.frames.empty());
}

TEST_F(NamedStack, NamesThatComeAfterTheDialogAreDropped) {
  const NamingProgram program(NamingProgram::kAnswers);
  NameBy(program);
  m_cursor.Add({.stack = m_recorded});
  m_cursor.StandAt(0);
  auto dialog = std::make_unique<CTraceDetailDialog>(m_host, m_cursor, m_names);
  int shown = 0;
  dialog->m_whenNamed = [&] { ++shown; };
  dialog->OnInitDialog();
  ASSERT_TRUE(m_host.WaitForPost());
  dialog.reset();
  m_host.RunPosted();
  EXPECT_EQ(shown, 0);
}

}  // namespace
