#include "tree/filter/trace_filter.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "documents/trace_doc.h"
#include "support/make_event.h"
#include "support/recording_host.h"
#include "support/trc_image.h"

namespace {

int Matches(CTraceFilter& filter, const TraceFields& fields) {
  return filter.Matches(*MakeEvent(fields));
}

// An event of a library that keeps no record.
class BareEvent : public _TraceEvent_t {
 public:
  using _TraceEvent_t::_TraceEvent_t;
  const std::uint8_t* Record() const override { return nullptr; }
};

// A filter with nothing marked whole but with every single mark at 1.
CTraceFilter OnlyAllTracesOff() {
  CTraceFilter filter;
  filter.allTraces = 0;
  return filter;
}

TEST(TraceFilter, ANewFilterPassesEverythingAndHasEmptyMaps) {
  CTraceFilter filter;
  EXPECT_EQ(Matches(filter, {}), 1);
  EXPECT_EQ(Matches(filter, {.component = 9, .pid = 4, .attributes = 0}), 1);
  EXPECT_EQ(filter.severities, (std::vector<int>{1, 1, 1}));
  EXPECT_EQ(filter.attributes, (std::vector<int>{1, 1, 1, 1, 1}));
  EXPECT_TRUE(filter.components.empty());
  EXPECT_TRUE(filter.categories.empty());
  EXPECT_TRUE(filter.applications.empty());
  EXPECT_TRUE(filter.threads.empty());
}

TEST(TraceFilter, AllTracesPassesBeforeAnyOtherMarkIsLookedAt) {
  CTraceFilter filter;
  filter.allSeverities = filter.allComponents = filter.allThreads = filter.allAttributes = 0;
  filter.severities = {0, 0, 0};
  filter.components[5] = 0;
  EXPECT_EQ(Matches(filter, {.component = 5}), 1);
  EXPECT_EQ(Matches(filter, {.component = 6}), 1);
  EXPECT_EQ(filter.components.size(), 1u) << "and enters nothing";
}

TEST(TraceFilter, WithTheRootUncheckedEveryTraceFailsAtTheSeverity) {
  CTraceFilter filter;
  filter.allTraces = filter.allSeverities = filter.allComponents = filter.allCategories = 0;
  filter.allApplications = filter.allThreads = filter.allAttributes = 0;
  filter.severities = {0, 0, 0};
  for (const std::uint16_t attributes : {0, 1, 2, 4, 7, 8, 16, 24, 31})
    EXPECT_EQ(Matches(filter, {.component = 3, .attributes = attributes}), 0) << attributes;
  EXPECT_TRUE(filter.components.empty()) << "what fails before a test never enters its map";
  EXPECT_TRUE(filter.threads.empty());
}

TEST(TraceFilter, ATraceWithMoreThanOneSeverityIsJudgedByTheLowest) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allSeverities = 0;
  filter.severities = {0, 1, 1};
  EXPECT_EQ(Matches(filter, {.attributes = 7}), 0);
  EXPECT_EQ(Matches(filter, {.attributes = 6}), 1);
  filter.severities = {1, 0, 1};
  EXPECT_EQ(Matches(filter, {.attributes = 7}), 1);
  EXPECT_EQ(Matches(filter, {.attributes = 6}), 0);
  EXPECT_EQ(Matches(filter, {.attributes = 4}), 1);
  filter.severities = {1, 1, 0};
  EXPECT_EQ(Matches(filter, {.attributes = 4}), 0);
}

TEST(TraceFilter, ATraceWithoutSeverityIsHiddenThoughEverySeverityIsShown) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allSeverities = 0;
  EXPECT_EQ(Matches(filter, {.attributes = 0}), 0);
  EXPECT_EQ(Matches(filter, {.attributes = 24}), 0);
  EXPECT_EQ(Matches(filter, {.attributes = 1}), 1);
  filter.allSeverities = 1;
  EXPECT_EQ(Matches(filter, {.attributes = 0}), 1);
}

TEST(TraceFilter, UncheckingDeveloperHidesTracesWithItsBitAndLeavesAllOthers) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allAttributes = 0;
  filter.attributes[1] = 0;
  EXPECT_EQ(Matches(filter, {.attributes = 1}), 1);
  EXPECT_EQ(Matches(filter, {.attributes = 1 | 8}), 0);
  EXPECT_EQ(Matches(filter, {.attributes = 1 | 16}), 1);
  EXPECT_EQ(Matches(filter, {.attributes = 1 | 8 | 16}), 0);
}

TEST(TraceFilter, UncheckingVerboseHidesTracesWithItsBitAndLeavesAllOthers) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allAttributes = 0;
  filter.attributes[3] = 0;
  EXPECT_EQ(Matches(filter, {.attributes = 1}), 1);
  EXPECT_EQ(Matches(filter, {.attributes = 1 | 8}), 1);
  EXPECT_EQ(Matches(filter, {.attributes = 1 | 16}), 0);
  EXPECT_EQ(Matches(filter, {.attributes = 1 | 8 | 16}), 0);
}

TEST(TraceFilter, TheMarksOfTracesWithoutABitAreTheirOwn) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allAttributes = 0;
  filter.attributes = {0, 1, 1, 1, 1};
  EXPECT_EQ(Matches(filter, {.attributes = 1}), 0);
  EXPECT_EQ(Matches(filter, {.attributes = 9}), 1);
  filter.attributes = {1, 1, 0, 1, 1};
  EXPECT_EQ(Matches(filter, {.attributes = 1}), 0);
  EXPECT_EQ(Matches(filter, {.attributes = 17}), 1);
}

TEST(TraceFilter, MatchingNeverWritesTheAttributeMarks) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allAttributes = 0;
  for (const std::uint16_t attributes : {0, 1, 9, 17, 25})
    Matches(filter, {.attributes = attributes});
  EXPECT_EQ(filter.attributes, (std::vector<int>{1, 1, 1, 1, 1}));
}

TEST(TraceFilter, ANewComponentPassesAndIsThenInTheMapAsShown) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allComponents = 0;
  filter.components[4] = 0;
  EXPECT_EQ(Matches(filter, {.component = 5}), 1);
  EXPECT_EQ(filter.components, (std::map<NameId, int>{{4, 0}, {5, 1}}));
  EXPECT_EQ(Matches(filter, {.component = 4}), 0);
}

TEST(TraceFilter, ANewCategoryAndANewApplicationPassAndEnterAsShown) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allCategories = filter.allApplications = 0;
  filter.categories[1] = 0;
  filter.applications[1] = 0;
  EXPECT_EQ(Matches(filter, {.app = 2, .category = 2}), 1);
  EXPECT_EQ(filter.categories, (std::map<NameId, int>{{1, 0}, {2, 1}}));
  EXPECT_EQ(filter.applications, (std::map<NameId, int>{{1, 0}, {2, 1}}));
  EXPECT_EQ(Matches(filter, {.app = 2, .category = 1}), 0);
  EXPECT_EQ(Matches(filter, {.app = 1, .category = 2}), 0);
}

TEST(TraceFilter, TheFirstTestThatFailsEndsTheCall) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allComponents = filter.allCategories = filter.allApplications = filter.allThreads = 0;
  filter.components[1] = 0;
  EXPECT_EQ(Matches(filter, {.machine = 8, .app = 8, .component = 1, .category = 8}), 0);
  EXPECT_TRUE(filter.categories.empty());
  filter.categories[2] = 0;
  EXPECT_EQ(Matches(filter, {.machine = 8, .app = 8, .component = 9, .category = 2}), 0);
  EXPECT_EQ(filter.components.count(9), 1u);
  EXPECT_TRUE(filter.applications.empty());
  filter.applications[3] = 0;
  EXPECT_EQ(Matches(filter, {.machine = 8, .app = 3, .component = 9, .category = 9}), 0);
  EXPECT_TRUE(filter.threads.empty());
}

TEST(TraceFilter, AMachineNeverSeenEntersWholeAndPasses) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allThreads = 0;
  EXPECT_EQ(Matches(filter, {.machine = 3, .pid = 5, .tid = 6}), 1);
  ASSERT_EQ(filter.threads.count(3), 1u);
  EXPECT_EQ(filter.threads[3].allProcesses, 1);
  EXPECT_TRUE(filter.threads[3].processes.empty());
}

TEST(TraceFilter, ANewProcessPassesUnderAWholeMachineAndFailsWithoutEnteringUnderAnother) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allThreads = 0;
  filter.threads[3].processes[5];
  EXPECT_EQ(Matches(filter, {.machine = 3, .pid = 7}), 1);
  filter.threads[3].allProcesses = 0;
  EXPECT_EQ(Matches(filter, {.machine = 3, .pid = 7}), 0);
  EXPECT_EQ(filter.threads[3].processes.size(), 1u);
  filter.threads[3].processes[7];
  EXPECT_EQ(Matches(filter, {.machine = 3, .pid = 7}), 1) << "once it is in the filter";
}

TEST(TraceFilter, ANewThreadPassesUnderAWholeProcessAndFailsWithoutEnteringUnderAnother) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allThreads = 0;
  filter.threads[3].allProcesses = 0;
  ProcessFilterEntry& process = filter.threads[3].processes[5];
  EXPECT_EQ(Matches(filter, {.machine = 3, .pid = 5, .tid = 8}), 1);
  process.allThreadsOfProcess = 0;
  EXPECT_EQ(Matches(filter, {.machine = 3, .pid = 5, .tid = 8}), 0);
  EXPECT_TRUE(process.threadMarks.empty());
  process.threadMarks[8] = 1;
  EXPECT_EQ(Matches(filter, {.machine = 3, .pid = 5, .tid = 8}), 1);
  process.threadMarks[8] = 0;
  EXPECT_EQ(Matches(filter, {.machine = 3, .pid = 5, .tid = 8}), 0);
}

TEST(TraceFilter, AMarkThatIsNotOneCountsAsZero) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allSeverities = filter.allComponents = filter.allThreads = filter.allAttributes = 0;
  const TraceFields fields{.machine = 1, .component = 1, .pid = 1, .tid = 1};
  filter.components[1] = 1;
  filter.threads[1].allProcesses = 0;
  filter.threads[1].processes[1].allThreadsOfProcess = 0;
  int& thread = filter.threads[1].processes[1].threadMarks[1] = 1;
  ASSERT_EQ(Matches(filter, fields), 1);
  for (int* mark : {&filter.severities[0], &filter.attributes[0], &filter.attributes[2],
                    &filter.components[1], &thread}) {
    *mark = 2;
    EXPECT_EQ(Matches(filter, fields), 0);
    *mark = -1;
    EXPECT_EQ(Matches(filter, fields), 0);
    *mark = 1;
  }
  // A mark for a whole branch is only asked whether it is zero.
  for (int* whole : {&filter.allSeverities, &filter.threads[1].allProcesses,
                     &filter.threads[1].processes[1].allThreadsOfProcess}) {
    *whole = 2;
    thread = 0;
    filter.severities[0] = whole == &filter.allSeverities ? 0 : 1;
    EXPECT_EQ(Matches(filter, fields), whole == &filter.allSeverities ? 0 : 1);
    *whole = 0;
    thread = filter.severities[0] = 1;
  }
}

TEST(TraceFilter, AMarkChangedDirectlyCountsFromTheNextTrace) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allComponents = filter.allThreads = 0;
  const TraceFields fields{.machine = 1, .component = 2, .pid = 3, .tid = 4};
  ASSERT_EQ(Matches(filter, fields), 1);
  int& component = filter.components[2];
  component = 0;
  EXPECT_EQ(Matches(filter, fields), 0);
  component = 1;
  EXPECT_EQ(Matches(filter, fields), 1);
  filter.threads[1].allProcesses = 0;
  EXPECT_EQ(Matches(filter, fields), 0);
  filter.threads[1].processes[3].threadMarks[4] = 1;
  EXPECT_EQ(Matches(filter, fields), 1);
  filter.threads[1].processes[3].allThreadsOfProcess = 0;
  EXPECT_EQ(Matches(filter, fields), 1);
  filter.threads[1].processes[3].threadMarks[4] = 0;
  EXPECT_EQ(Matches(filter, fields), 0);
}

TEST(TraceFilter, AddressesOfMarksHoldWhileTheFilterIsAddedTo) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allComponents = filter.allThreads = 0;
  Matches(filter, {.machine = 300, .component = 300});
  const int* component = &filter.components[300];
  const MachineFilterEntry* machine = &filter.threads[300];
  const int* severity = filter.severities.data();
  for (int id = 0; id < 3000; ++id)
    Matches(filter, {.machine = static_cast<NameId>(id), .component = static_cast<NameId>(id)});
  EXPECT_EQ(component, &filter.components[300]);
  EXPECT_EQ(machine, &filter.threads[300]);
  EXPECT_EQ(severity, filter.severities.data());
}

TEST(TraceFilter, ACopyIsDeepAndIndependent) {
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allComponents = filter.allThreads = 0;
  const TraceFields fields{.machine = 1, .component = 2, .pid = 3, .tid = 4};
  filter.threads[1].allProcesses = 0;
  filter.threads[1].processes[3].allThreadsOfProcess = 0;
  filter.threads[1].processes[3].threadMarks[4] = 1;
  ASSERT_EQ(Matches(filter, fields), 1);
  CTraceFilter copy = filter;
  filter.components[2] = 0;
  EXPECT_EQ(Matches(filter, fields), 0);
  EXPECT_EQ(Matches(copy, fields), 1);
  copy.threads[1].processes[3].threadMarks[4] = 0;
  EXPECT_EQ(Matches(copy, fields), 0);
  filter.components[2] = 1;
  EXPECT_EQ(Matches(filter, fields), 1);
}

TEST(TraceFilter, AnAssignedFilterHasTheOthersMarksAndNoneOfItsOld) {
  const TraceFields fields{.machine = 1, .component = 2, .pid = 3, .tid = 4};
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allComponents = filter.allThreads = 0;
  ASSERT_EQ(Matches(filter, fields), 1);
  CTraceFilter other = filter;
  other.components[2] = 0;
  filter = other;
  EXPECT_EQ(Matches(filter, fields), 0);
  other.components[2] = 1;
  other.threads[1].allProcesses = 0;
  filter = other;
  EXPECT_EQ(Matches(filter, fields), 0);
  const CTraceFilter& self = filter;
  filter = self;
  EXPECT_EQ(Matches(filter, fields), 0);
  EXPECT_EQ(filter.components, other.components);
}

TEST(TraceFilter, AnEventWithoutARecordIsJudgedAlike) {
  const EventPtr withRecord =
      MakeEvent({.machine = 1, .app = 2, .component = 3, .category = 4, .pid = 5, .tid = 6});
  const std::uint8_t* record = withRecord->Record();
  ASSERT_NE(record, nullptr);
  const BareEvent bare(record);
  CTraceFilter filter = OnlyAllTracesOff();
  filter.allSeverities = filter.allComponents = filter.allCategories = 0;
  filter.allApplications = filter.allThreads = filter.allAttributes = 0;
  filter.threads[1].allProcesses = 0;
  filter.threads[1].processes[5].allThreadsOfProcess = 0;
  filter.threads[1].processes[5].threadMarks[6] = 1;
  const auto allThree = [&](int expected, const char* what) {
    EXPECT_EQ(filter.Matches(bare), expected) << what;
    EXPECT_EQ(filter.Matches(*withRecord), expected) << what;
    EXPECT_EQ(filter.Matches(RawTrace(record)), expected) << what;
  };
  allThree(1, "all shown");
  for (int* mark : {&filter.severities[0], &filter.components[3], &filter.categories[4],
                    &filter.applications[2], &filter.threads[1].processes[5].threadMarks[6]}) {
    *mark = 0;
    allThree(0, "one mark off");
    *mark = 1;
  }
}

class MergeDocumentNames : public testing::Test {
 protected:
  void Add(const TraceFields& fields) { m_document.AddTrace(MakeEvent(fields).release()); }

  RecordingHost m_host;
  CTraceDoc m_document{m_host};
  CTraceFilter m_filter;
};

TEST_F(MergeDocumentNames, AddsEveryIdAsShown) {
  Add({.machine = 1, .app = 2, .component = 3, .category = 4, .pid = 5, .tid = 6});
  Add({.machine = 1, .app = 12, .component = 13, .category = 14, .pid = 5, .tid = 16});
  m_filter.MergeDocumentNames(m_document);
  EXPECT_EQ(m_filter.components, (std::map<NameId, int>{{3, 1}, {13, 1}}));
  EXPECT_EQ(m_filter.categories, (std::map<NameId, int>{{4, 1}, {14, 1}}));
  EXPECT_EQ(m_filter.applications, (std::map<NameId, int>{{2, 1}, {12, 1}}));
  ASSERT_EQ(m_filter.threads.size(), 1u);
  EXPECT_EQ(m_filter.threads[1].allProcesses, 1);
  ASSERT_EQ(m_filter.threads[1].processes.size(), 1u);
  EXPECT_EQ(m_filter.threads[1].processes[5].allThreadsOfProcess, 1);
  EXPECT_EQ(m_filter.threads[1].processes[5].threadMarks, (std::map<NameId, int>{{6, 1}, {16, 1}}));
}

TEST_F(MergeDocumentNames, LeavesTheMarksThatAreThere) {
  Add({.machine = 1, .app = 2, .component = 3, .category = 4, .pid = 5, .tid = 6});
  m_filter.components[3] = m_filter.categories[4] = m_filter.applications[2] = 0;
  m_filter.threads[1].allProcesses = 0;
  m_filter.threads[1].processes[5].allThreadsOfProcess = 0;
  m_filter.threads[1].processes[5].threadMarks[6] = 0;
  m_filter.MergeDocumentNames(m_document);
  EXPECT_EQ(m_filter.components[3] + m_filter.categories[4] + m_filter.applications[2], 0);
  EXPECT_EQ(m_filter.threads[1].allProcesses, 0);
  EXPECT_EQ(m_filter.threads[1].processes[5].allThreadsOfProcess, 0);
  EXPECT_EQ(m_filter.threads[1].processes[5].threadMarks[6], 0);
}

TEST_F(MergeDocumentNames, BringsInANewProcessWholeSoThatItShows) {
  m_filter.allTraces = m_filter.allThreads = 0;
  m_filter.threads[1].allProcesses = 0;
  const TraceFields fields{.machine = 1, .pid = 5, .tid = 6};
  Add(fields);
  EXPECT_EQ(Matches(m_filter, fields), 0);
  m_filter.MergeDocumentNames(m_document);
  EXPECT_EQ(Matches(m_filter, fields), 1);
}

TEST_F(MergeDocumentNames, StillKnowsTheIdsAfterTheDocumentWasEmptied) {
  Add({.machine = 1, .component = 3});
  m_filter.MergeDocumentNames(m_document);
  m_document.DeleteContents();
  m_filter.MergeDocumentNames(m_document);
  EXPECT_EQ(m_filter.components.count(3), 1u);
  CTraceFilter later;
  later.MergeDocumentNames(m_document);
  EXPECT_EQ(later.components.count(3), 1u);
  EXPECT_EQ(later.threads.count(1), 1u);
}

}  // namespace
