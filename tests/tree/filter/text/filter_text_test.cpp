#include "tree/filter/text/filter_text.h"

#include <gtest/gtest.h>

#include "support/recording_host.h"
#include "tree/filter/filter_tree_text.h"
#include "tree/filter/text/filter_of_text.h"

namespace {

using Labels = std::vector<std::string>;

class FilterText : public testing::Test {
 protected:
  FilterText() {
    m_names = {{1, {"web-1"}}, {2, {"db-1"}},       {3, {"Net"}},   {4, {"Sql"}},
               {5, {"Cache"}}, {6, {"Query"}},      {7, {"812"}},   {8, {"4711 alice"}},
               {9, {"main"}},  {10, {"worker"}},    {11, {"shop"}}, {12, {"Job queue"}},
               {13, {"900"}},  {14, {"4711 carol"}}};
    m_filter.components = {{3, 1}, {4, 1}, {5, 1}, {12, 1}};
    m_filter.categories = {{6, 1}, {9, 1}};
    m_filter.applications = {{11, 1}};
    m_filter.threads[1].processes[7].threadMarks = {{9, 1}, {10, 1}};
    m_filter.threads[1].processes[13].threadMarks = {{9, 1}, {10, 1}};
    m_filter.threads[2].processes[8].threadMarks = {{9, 1}, {10, 1}};
  }
  void Click(const std::vector<Labels>& nodes) {
    CFilterDialog dialog(m_host, m_filter, m_names);
    dialog.OnInitDialog();
    for (const Labels& labels : nodes) dialog.OnTreeClick(&NodeAt(dialog, labels), true);
    dialog.OnOK();
  }
  // Of a file that is loaded, or of traces that arrive.
  std::string Text(bool mayGrow = false) {
    std::string why;
    return TextOfFilter(m_filter, {m_names, mayGrow}, &why).value_or("no: " + why);
  }
  std::string LiveText() { return Text(true); }
  // The tree that a text opens as: its text, or "place: reason".
  std::string Opened(const std::string& text, bool mayGrow = false) {
    WhereError error;
    const auto expr = ParseWhere(text, error);
    if (!expr) return "parse: " + error.reason;
    CTraceFilter filter = m_filter;
    if (!FilterOfText(*expr, {m_names, mayGrow}, filter, error))
      return text.substr(error.place, error.length) + ": " + error.reason;
    std::string why;
    return TextOfFilter(filter, {m_names, mayGrow}, &why).value_or("no: " + why);
  }
  std::string OpenedLive(const std::string& text) { return Opened(text, true); }

  RecordingHost m_host;
  CTraceFilter m_filter;
  NameMap m_names;
};

const Labels kAll = {}, kComponents = {"All Components"}, kThreads = {"All Threads"};

Labels Component(const char* name) {
  return {"All Components", name};
}

TEST_F(FilterText, ATreeThatShowsAllIsAnEmptyText) {
  EXPECT_EQ(Text(), "");
  EXPECT_EQ(LiveText(), "");
}

TEST_F(FilterText, ATreeThatShowsNothingIsATextThatHoldsForNoTrace) {
  Click({kAll});
  EXPECT_EQ(Text(), "severity < info");
  EXPECT_EQ(LiveText(), "severity < info");
}

TEST_F(FilterText, SeveritiesAreSaidInTheShortestFormThatHidesTracesWithoutOne) {
  Click({{"All Severities", "Info"}});
  EXPECT_EQ(Text(), "severity >= warn");
  Click({{"All Severities", "Warn"}});
  EXPECT_EQ(Text(), "severity == error");
  Click({{"All Severities", "Info"}});
  EXPECT_EQ(Text(), "severity in {info, error}");
  m_filter.severities = {1, 1, 1};
  EXPECT_EQ(Text(), "severity >= info");
}

TEST_F(FilterText, DeveloperAndVerboseTracesAreHiddenByNot) {
  Click({{"All Attributes", "Developer"}});
  EXPECT_EQ(Text(), "not developer");
  Click({{"All Attributes", "Verbose"}});
  EXPECT_EQ(Text(), "not developer and not verbose");
}

TEST_F(FilterText, MarksThatNoDialogWritesAreSaidToo) {
  m_filter.allTraces = m_filter.allAttributes = 0;
  m_filter.attributes = {0, 1, 1, 1, 1};
  EXPECT_EQ(Text(), "developer");
  m_filter.attributes[1] = 0;
  EXPECT_EQ(Text(), "severity < info");
}

TEST_F(FilterText, WhatIsHiddenIsNamedWhenThatIsShorter) {
  Click({Component("Net")});
  EXPECT_EQ(Text(), "component != Net");
  Click({Component("Job queue")});
  EXPECT_EQ(Text(), "component in {Cache, Sql}");
  Click({Component("Sql")});
  EXPECT_EQ(Text(), "component == Cache");
}

TEST_F(FilterText, WhileTracesArriveOnlyWhatIsHiddenIsNamedSoThatNewComponentsAreShown) {
  Click({Component("Net"), Component("Job queue"), Component("Sql")});
  EXPECT_EQ(LiveText(), "component not in {\"Job queue\", Net, Sql}");
  Click({Component("Cache")});
  EXPECT_EQ(LiveText(), "component not in {Cache, \"Job queue\", Net, Sql}");
  EXPECT_EQ(Text(), "severity < info");
}

TEST_F(FilterText, AllBranchesMustHold) {
  Click({{"All Severities", "Info"}, Component("Net"), {"All Threads", "web-1"}});
  EXPECT_EQ(Text(), "severity >= warn and component != Net and machine == db-1");
  EXPECT_EQ(LiveText(), "severity >= warn and component != Net and machine != web-1");
}

TEST_F(FilterText, AProcessIsSaidWithItsMachine) {
  Click({{"All Threads", "web-1", "PID:812"}});
  EXPECT_EQ(Text(), "machine != web-1 or pid == 900");
  EXPECT_EQ(LiveText(), "machine != web-1 or pid == 900");
  Click({{"All Threads", "db-1"}});
  EXPECT_EQ(Text(), "machine == web-1 and pid == 900");
  EXPECT_EQ(LiveText(), "machine != db-1 and (machine != web-1 or pid == 900)");
}

TEST_F(FilterText, OfAFileFromOneMachineTheMachineIsNotSaid) {
  m_filter.threads.erase(2);
  Click({{"All Threads", "web-1", "PID:812"}});
  EXPECT_EQ(Text(), "pid == 900");
  EXPECT_EQ(LiveText(), "machine != web-1 or pid == 900");
}

TEST_F(FilterText, ProcessesThatShowTheSameThreadsAreOneTest) {
  Click({{"All Threads", "db-1"},
         {"All Threads", "web-1", "PID:812", "TID:main"},
         {"All Threads", "web-1", "PID:900", "TID:main"}});
  EXPECT_EQ(Text(), "machine == web-1 and pid in {812, 900} and tid == worker");
}

TEST_F(FilterText, AProcessIsSaidWithItsAccountOnlyWhereAnotherOneHasItsNumber) {
  Click({{"All Threads", "db-1", "PID:4711 alice", "TID:main"}});
  EXPECT_EQ(Text(), "machine != db-1 or pid == 4711 and tid == worker");
  m_filter.threads[2].processes[14].threadMarks = {{9, 1}};
  EXPECT_EQ(LiveText(),
            "machine != db-1 or pid == 4711 and account == alice and tid == worker or "
            "pid == 4711 and account == carol");
}

TEST_F(FilterText, TwoOfTheSameNameAndNotTheSameMarkAreRefused) {
  m_names[15] = {"Net"};
  m_filter.components[15] = 1;
  EXPECT_EQ(Text(), "");
  m_filter.allTraces = m_filter.allComponents = m_filter.components[3] = 0;
  EXPECT_EQ(Text(),
            "no: two components are named Net, and the tree shows one of them; a text "
            "cannot tell them apart");
}

TEST_F(FilterText, ATreeThatIsTooLargeForATextIsRefused) {
  m_filter.allTraces = m_filter.allComponents = 0;
  for (NameId id = 100; id < 60000; ++id) {
    m_names[id].name = "component " + std::to_string(id);
    m_filter.components[id] = id % 2;
  }
  EXPECT_EQ(Text(),
            "no: the tree is too large for a filter text: a filter text has 64 KiB at most");
}

// ---- back

TEST_F(FilterText, OtherWordsForTheSameOpenAsTheSameTree) {
  for (const char* const text :
       {"component in {Sql, Cache}", "component == Sql or component == Cache",
        "not (component != Sql and component != Cache)", "not component in {Net, \"Job queue\"}",
        "component not in {Net} and not component == \"Job queue\"", "component matches \"^[SC]\"",
        "component contains \"e\" and component != Net and component not startswith \"Job\" or "
        "component == Sql"})
    EXPECT_EQ(Opened(text), "component in {Cache, Sql}") << text;
  EXPECT_EQ(Opened("severity > info"), "severity >= warn");
  EXPECT_EQ(Opened("not (severity <= info) and severity in {info, warn, error}"),
            "severity >= warn");
}

TEST_F(FilterText, ATextThatOpensRestrictsTheTreeThatIsThere) {
  Click({Component("Net"), {"All Severities", "Info"}});
  EXPECT_EQ(Opened("component in {Net, Sql} and severity <= warn and severity >= info"),
            "severity == warn and component == Sql");
}

TEST_F(FilterText, WhatTheTreeDoesNotHaveIsRefusedAtItsPlace) {
  EXPECT_EQ(Opened("severity >= warn and not text contains \"retry\""),
            "text contains \"retry\": the filter dialog cannot say \"text contains\"");
  EXPECT_EQ(Opened("component == Sql and (stack or line < 3)"),
            "stack: the filter dialog cannot say \"stack\"");
}

TEST_F(FilterText, BranchesThatDependOnEachOtherAreRefusedAtTheirPlace) {
  EXPECT_EQ(Opened("component != Net and (severity == error or category == Query) and not verbose"),
            "(severity == error or category == Query): the filter dialog shows what passes each of "
            "its branches; here All Severities and All Categories depend on each other");
  EXPECT_EQ(Opened("not verbose and not (component == Net and developer)"),
            "not (component == Net and developer): the filter dialog shows what passes each of its "
            "branches; here Developer and All Components depend on each other");
}

TEST_F(FilterText, TracesWithoutASeverityMakeANegationAnotherThing) {
  EXPECT_EQ(Opened("component == Sql and severity != info"),
            "severity != info: the filter dialog hides traces without a severity unless it shows "
            "all three; it can say severity in {...}");
  EXPECT_EQ(Opened("severity >= info"),
            "severity >= info: the filter dialog also shows traces without a severity where it "
            "shows all three");
}

// Ends at once, whatever the text.
TEST_F(FilterText, ATextOfTooManyCasesIsRefused) {
  for (NameId id = 100; id < 5000; ++id) {
    m_names[id].name = "c" + std::to_string(id);
    m_filter.components[id] = 1;
    m_filter.threads[1].processes[id];
  }
  for (const char* const field : {"component", "pid"}) {
    std::string text;
    for (int i = 0; i < 2000; ++i)
      text += std::string(i ? " or " : "") + field + " == c" + std::to_string(i * 2);
    for (const bool mayGrow : {false, true})
      EXPECT_EQ(Opened(text, mayGrow), text + ": too many different cases for the filter dialog");
  }
  std::string both;
  for (int i = 0; i < 500; ++i)
    both += (i ? " or pid == " : "pid == ") + std::to_string(i) + " and account == a" +
            std::to_string(i);
  EXPECT_EQ(OpenedLive(both), both + ": too many different cases for the filter dialog");
}

TEST_F(FilterText, OnlyTheTracesOfDevelopersIsNoTree) {
  EXPECT_EQ(Opened("developer"),
            "developer: the filter dialog can hide traces that are for developers, but not the "
            "others");
}

TEST_F(FilterText, WhileTracesArriveATextThatHidesNewNamesIsNoTree) {
  EXPECT_EQ(OpenedLive("severity == error and component == Sql"),
            "component == Sql: the filter dialog shows components that come later; it can say "
            "\"not in\" of those that have come");
  EXPECT_EQ(OpenedLive("component != Later").substr(0, 20), "component != Later: ");
  EXPECT_EQ(Opened("component != Later"), "");
  EXPECT_EQ(OpenedLive("component != Sql"), "component != Sql");
  EXPECT_EQ(OpenedLive("component not contains \"e\""),
            "component not contains \"e\": the filter dialog cannot say \"component contains\" of "
            "names that are still to come");
  EXPECT_EQ(OpenedLive("machine == web-1"),
            "machine == web-1: the filter dialog shows machines that come later; it can say "
            "machine not in {...} of those that have come");
}

TEST_F(FilterText, WhileTracesArriveNewProcessesFollowTheirMachine) {
  EXPECT_EQ(OpenedLive("machine != web-1 or pid == 812"), "machine != web-1 or pid == 812");
  EXPECT_EQ(OpenedLive("machine != web-1 or pid != 812"),
            "machine != web-1 or pid != 812: the filter dialog hides processes that come later on "
            "web-1, because it does not show all of that machine");
  EXPECT_EQ(OpenedLive("machine != web-1 or pid in {812, 900}"),
            "machine != web-1 or pid in {812, 900}: the filter dialog shows processes that come "
            "later on web-1, because it shows all that have come");
  EXPECT_EQ(OpenedLive("machine != web-1 or pid in {812..899}").substr(0, 37),
            "machine != web-1 or pid in {812..899}");
  EXPECT_EQ(Opened("machine != web-1 or pid < 900"), "machine != web-1 or pid == 812");
}

TEST_F(FilterText, WhileTracesArriveNewThreadsFollowTheirProcess) {
  const std::string worker = "machine != web-1 or pid == 812 and tid == worker";
  EXPECT_EQ(OpenedLive(worker), worker);
  const std::string notMain = "machine != web-1 or pid == 812 and tid != main";
  EXPECT_EQ(OpenedLive(notMain),
            notMain +
                ": the filter dialog hides threads that come later in process 812, because "
                "it does not show all of it");
  EXPECT_EQ(Opened(notMain), worker);
  const std::string both = "machine != web-1 or pid == 812 and tid in {main, worker}";
  EXPECT_EQ(OpenedLive(both),
            both +
                ": the filter dialog shows threads that come later in process 812, because it "
                "shows all that have come");
}

}  // namespace
