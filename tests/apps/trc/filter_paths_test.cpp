#include "filter/filter_paths.h"

#include <gtest/gtest.h>

#include "filter/live_filter.h"
#include "support/recording_host.h"
#include "support/trc_image.h"

namespace {

TraceEvent_i* Event(const TraceFields& fields) {
  return TraceEvent_i::Create(1, fields.machine, fields.app, fields.component, fields.category, 0,
                              0, 0, fields.pid, fields.tid, fields.attributes, 0, 0, fields.text,
                              "");
}

class FilterPath : public testing::Test {
 protected:
  FilterPath() {
    m_document.m_names = {{1, {"web-1"}},   {2, {"Net"}},      {3, {"Net/In"}}, {4, {"open"}},
                          {5, {"shop"}},    {6, {"812"}},      {7, {"77"}},     {8, {"a"}},
                          {9, {"a/PID:b"}}, {10, {"b/TID:c"}}, {11, {"c"}},     {12, {"b"}},
                          {13, {"Net"}}};
  }
  void Add(const TraceFields& fields) { m_document.AddTrace(Event(fields)); }
  // "Error" or "" for the words.
  std::string Apply(const std::vector<std::pair<std::string, bool>>& steps) {
    FilterPaths paths;
    for (const auto& [path, check] : steps) paths.Add(path, check);
    m_filter = CTraceFilter();
    std::string why;
    return paths.Apply(m_document, m_filter, &why) ? "" : why;
  }
  // "1 0 1": the verdict on each trace of the document.
  std::string Shown() {
    std::string shown;
    for (std::size_t i = 0; i < m_document.m_traces.size(); ++i)
      shown += (i ? " " : "") + std::to_string(m_filter.Matches(*m_document.m_traces[i]));
    return shown;
  }

  RecordingHost m_host;
  CTraceDoc m_document{m_host};
  CTraceFilter m_filter;
};

TEST_F(FilterPath, UncheckBringsANodeToUncheckedAndLeavesOneThatIs) {
  Add({.attributes = kAttributeInfo});
  Add({.attributes = kAttributeWarn});
  EXPECT_EQ(Apply({{"All Severities/Warn", false}}), "");
  EXPECT_EQ(Shown(), "1 0");
  EXPECT_EQ(Apply({{"All Severities/Warn", false}, {"All Severities/Warn", false}}), "");
  EXPECT_EQ(Shown(), "1 0");
}

TEST_F(FilterPath, APartialNodeIsBroughtToEither) {
  Add({.attributes = kAttributeInfo});
  Add({.attributes = kAttributeWarn});
  EXPECT_EQ(Apply({{"All Severities/Warn", false}, {"All Severities", false}}), "");
  EXPECT_EQ(m_filter.severities, (std::vector<int>{0, 0, 0}));
  EXPECT_EQ(Apply({{"All Severities/Warn", false}, {"All Severities", true}}), "");
  EXPECT_EQ(m_filter.allTraces, 1);
}

TEST_F(FilterPath, StepsAreTakenInTheirOrder) {
  Add({.attributes = kAttributeInfo});
  Add({.attributes = kAttributeError});
  EXPECT_EQ(Apply({{"All Severities", false}, {"All Severities/Error", true}}), "");
  EXPECT_EQ(Shown(), "0 1");
  EXPECT_EQ(Apply({{"All Severities/Error", true}, {"All Severities", false}}), "");
  EXPECT_EQ(Shown(), "0 0");
}

TEST_F(FilterPath, TheEmptyPathIsTheRoot) {
  Add({.component = 2});
  EXPECT_EQ(Apply({{"", false}}), "");
  EXPECT_EQ(m_filter.allTraces, 0);
  EXPECT_EQ(m_filter.components, (std::map<NameId, int>{{2, 0}}));
  EXPECT_EQ(Apply({{"", false}, {"", true}}), "");
  EXPECT_EQ(m_filter.allTraces, 1);
}

TEST_F(FilterPath, ReachesAMachineItsProcessesAndTheirThreads) {
  Add({.machine = 1, .pid = 6, .tid = 7});
  Add({.machine = 1, .pid = 6, .tid = 8});
  Add({.machine = 1, .pid = 12, .tid = 7});
  EXPECT_EQ(Apply({{"All Threads/web-1/PID:812", false}}), "");
  EXPECT_EQ(Shown(), "0 0 1");
  EXPECT_EQ(Apply({{"All Threads/web-1/PID:812/TID:a", false}}), "");
  EXPECT_EQ(Shown(), "1 0 1");
  EXPECT_EQ(Apply({{"All Threads/web-1", false}}), "");
  EXPECT_EQ(Shown(), "0 0 0");
}

TEST_F(FilterPath, ALabelThatHoldsTheSeparatorIsWrittenAsItStands) {
  Add({.component = 2});
  Add({.component = 3});
  EXPECT_EQ(Apply({{"All Components/Net/In", false}}), "");
  EXPECT_EQ(Shown(), "1 0");
  EXPECT_EQ(Apply({{"All Components/Net", false}}), "");
  EXPECT_EQ(Shown(), "0 1");
}

TEST_F(FilterPath, OfTheLabelsThatFitTheLongestIsTakenAndAShorterOneWhenItLeadsNowhere) {
  Add({.machine = 9, .pid = 12, .tid = 11});  // a/PID:b  PID:b        TID:c
  Add({.machine = 8, .pid = 10, .tid = 11});  // a        PID:b/TID:c  TID:c
  EXPECT_EQ(Apply({{"All Threads/a/PID:b", false}}), "");
  EXPECT_EQ(Shown(), "0 1");
  EXPECT_EQ(Apply({{"All Threads/a/PID:b/TID:c", false}}), "");
  EXPECT_EQ(Shown(), "1 0");
  EXPECT_EQ(Apply({{"All Threads/a/PID:b/PID:b/TID:c", false}}), "");
  EXPECT_EQ(Shown(), "0 1");
}

TEST_F(FilterPath, NodesOfOneParentWithTheSameLabelAreOneToAPath) {
  Add({.component = 2});
  Add({.component = 13});
  EXPECT_EQ(Apply({{"All Components/Net", false}}), "");
  EXPECT_EQ(Shown(), "0 0");
}

TEST_F(FilterPath, AnEmptyLabelIsReached) {
  Add({.component = 99});
  Add({.component = 2});
  EXPECT_EQ(Apply({{"All Components/", false}}), "");
  EXPECT_EQ(Shown(), "0 1");
}

TEST_F(FilterPath, AnUnknownPathIsReportedWithNearNames) {
  Add({.machine = 1, .component = 2, .pid = 6});
  EXPECT_EQ(Apply({{"All Severities/Wran", false}}),
            "there is no \"All Severities/Wran\" in the filter; near it: \"All Severities/Warn\"");
  EXPECT_EQ(Apply({{"all severities/warn", false}}),
            "there is no \"all severities/warn\" in the filter; near it: \"All Severities/Warn\"");
  EXPECT_EQ(Apply({{"Net", false}}),
            "there is no \"Net\" in the filter; near it: \"All Components/Net\"");
  EXPECT_EQ(Apply({{"All Threads/we", true}}),
            "there is no \"All Threads/we\" in the filter; near it: \"All Threads/web-1\", "
            "\"All Threads/web-1/PID:812\", \"All Threads/web-1/PID:812/TID:\"");
}

TEST_F(FilterPath, AnUnknownPathThatIsNearNothingIsReportedWithWhatThereIs) {
  Add({.component = 2});
  EXPECT_EQ(Apply({{"All Components/something else altogether", false}}),
            "there is no \"All Components/something else altogether\" in the filter; there is: "
            "\"All Components/Net\"");
  EXPECT_EQ(Apply({{"zzzzzzz", false}}),
            "there is no \"zzzzzzz\" in the filter; there is: \"All Severities\", "
            "\"All Attributes\", \"All Components\", \"All Categories\", \"All Applications\", "
            "\"All Threads\"");
}

TEST_F(FilterPath, ATerminalDoesNotActOnTheNamesThatAreReported) {
  m_document.m_names[2].name = "Net\x1b[2J\n";
  Add({.component = 2});
  EXPECT_EQ(Apply({{"All Components/Net\x1b[2", false}}),
            "there is no \"All Components/Net\\x1b[2\" in the filter; near it: "
            "\"All Components/Net\\x1b[2J\\n\"");
}

TEST_F(FilterPath, APathOfAMegabyteIsReportedAtOnce) {
  Add({.component = 2});
  EXPECT_NE(Apply({{std::string(1 << 20, '/'), false}}), "");
  EXPECT_NE(Apply({{"All Components/" + std::string(1 << 20, 'x'), false}}), "");
}

TEST_F(FilterPath, WithoutStepsTheFilterGetsTheNamesAndShowsAll) {
  Add({.component = 2});
  EXPECT_EQ(Apply({}), "");
  EXPECT_EQ(m_filter.allTraces, 1);
  EXPECT_EQ(m_filter.components, (std::map<NameId, int>{{2, 1}}));
}

TEST_F(FilterPath, APathBelowABranchOfNamesIsNeverImpossible) {
  const auto hopeless = [this](const std::string& path) {
    FilterPaths paths;
    paths.Add("All Severities/Warn", false);
    paths.Add(path, false);
    std::string why;
    const bool is = paths.HasImpossiblePath(m_host, &why);
    EXPECT_EQ(is, !why.empty());
    return is;
  };
  EXPECT_FALSE(hopeless(""));
  EXPECT_FALSE(hopeless("All Threads"));
  EXPECT_FALSE(hopeless("All Components/Net"));
  EXPECT_FALSE(hopeless("All Threads/web-1/PID:812"));
  EXPECT_TRUE(hopeless("All Severities/Debug"));
  EXPECT_TRUE(hopeless("All Severities/Error/x"));
  EXPECT_TRUE(hopeless("All Attributes/"));
  EXPECT_TRUE(hopeless("Net"));
}

// Live: each trace by the names that came up to it.
class LivePath : public testing::Test {
 protected:
  bool Passes(const TraceFields& fields) {
    if (!m_live) m_live.emplace(m_paths, m_names);
    TraceEvent_i* const event = Event(fields);
    const bool passes = m_live->Passes(*event);
    event->Release();
    return passes;
  }
  NameMap m_names = {{2, {"Net"}}, {3, {"Db"}}, {1, {"web-1"}}, {6, {"812"}}, {7, {"813"}}};
  FilterPaths m_paths;
  std::optional<LiveFilter> m_live;
};

TEST_F(LivePath, WithoutStepsAllPass) {
  EXPECT_TRUE(Passes({.component = 2}));
  EXPECT_TRUE(m_live->Missing().empty());
}

TEST_F(LivePath, APathIsKeptUntilItsNameComes) {
  m_paths.Add("All Components/Db", false);
  EXPECT_TRUE(Passes({.component = 2}));
  EXPECT_EQ(m_live->Missing(), std::vector<std::string>{"All Components/Db"});
  EXPECT_FALSE(Passes({.component = 3}));
  EXPECT_TRUE(Passes({.component = 2}));
  EXPECT_TRUE(m_live->Missing().empty());
}

TEST_F(LivePath, ANameThatComesLaterIsJudgedLikeOneThatCameBefore) {
  m_paths.Add("All Components", false);
  m_paths.Add("All Components/Net", true);
  EXPECT_TRUE(Passes({.component = 2}));
  EXPECT_FALSE(Passes({.component = 3}));  // a name that no step mentions
  EXPECT_FALSE(Passes({.component = 4}));
  EXPECT_TRUE(Passes({.component = 2}));
}

TEST_F(LivePath, StepsOnBranchesWithoutNamesHoldFromTheFirstTraceOn) {
  m_paths.Add("All Severities/Warn", false);
  EXPECT_FALSE(Passes({.attributes = kAttributeWarn}));
  EXPECT_TRUE(Passes({.machine = 1, .component = 2, .pid = 6}));
  EXPECT_FALSE(Passes({.machine = 1, .component = 3, .pid = 7, .attributes = kAttributeWarn}));
}

TEST_F(LivePath, AStepOnTheRootSpeaksOfEveryNameToCome) {
  m_paths.Add("", false);
  for (const char* path : {"All Severities", "All Attributes", "All Components/Net",
                           "All Categories", "All Applications", "All Threads"})
    m_paths.Add(path, true);
  EXPECT_TRUE(Passes({.component = 2}));
  EXPECT_FALSE(Passes({.component = 3}));
  EXPECT_TRUE(Passes({.component = 2, .tid = 7}));
}

TEST_F(LivePath, AThreadOfAKnownProcessIsNoticed) {
  m_paths.Add("All Threads/web-1/PID:812/TID:813", false);
  EXPECT_TRUE(Passes({.machine = 1, .pid = 6, .tid = 6}));
  EXPECT_TRUE(Passes({.machine = 1, .pid = 7, .tid = 7}));
  EXPECT_FALSE(Passes({.machine = 1, .pid = 6, .tid = 7}));
}

}  // namespace
