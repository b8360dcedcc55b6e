#include "documents/trace_indexes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

#include "support/trc_image.h"

namespace {

using Ids = std::vector<NameId>;

struct Released {
  void operator()(TraceEvent_i* event) const { event->Release(); }
};
using Event = std::unique_ptr<TraceEvent_i, Released>;

Event MakeEvent(NameId machine, NameId app, NameId component, NameId category, NameId pid,
                NameId tid, NameId file) {
  return Event(TraceEvent_i::Create(1, machine, app, component, category, 0, 0, 0, pid, tid, 0,
                                    file, 0, "", ""));
}

// An event of another make, which has no record to read.
class ForeignEvent : public TraceEvent_i {
 public:
  void Release() override {}
  std::uint32_t GetSequenceNumber() const override { return 0; }
  std::uint32_t GetDate() const override { return 0; }
  std::uint32_t GetTime() const override { return 0; }
  std::string GetText() const override { return {}; }
  NameId GetComponentId() const override { return 3; }
  NameId GetCategoryId() const override { return 4; }
  NameId GetMachineId() const override { return 1; }
  NameId GetAppId() const override { return 2; }
  NameId GetSourceFileId() const override { return 7; }
  NameId GetPidId() const override { return 5; }
  NameId GetTidId() const override { return 6; }
  int GetAttributes() const override { return 0; }
  std::uint64_t GetTicCount() const override { return 0; }
  std::uint32_t GetSourceLine() const override { return 0; }
  std::string GetStack() const override { return {}; }
};

TEST(TraceIndexes, EachListTakesItsFieldOnceInOrderOfFirstSight) {
  TraceIndexes indexes;
  indexes.Note(*MakeEvent(9, 2, 3, 4, 5, 6, 7));
  indexes.Note(*MakeEvent(1, 2, 13, 14, 15, 16, 17));
  indexes.Note(*MakeEvent(9, 12, 3, 4, 5, 16, 7));
  EXPECT_EQ(indexes.machines.Ids(), (Ids{9, 1}));
  EXPECT_EQ(indexes.applications.Ids(), (Ids{2, 12}));
  EXPECT_EQ(indexes.components.Ids(), (Ids{3, 13}));
  EXPECT_EQ(indexes.categories.Ids(), (Ids{4, 14}));
  EXPECT_EQ(indexes.processIds.Ids(), (Ids{5, 15}));
  EXPECT_EQ(indexes.threadIds.Ids(), (Ids{6, 16}));
  EXPECT_EQ(indexes.sourceFiles.Ids(), (Ids{7, 17}));
  EXPECT_EQ(indexes.processes, (ProcessMap{{9, {{5, {6, 16}}}}, {1, {{15, {16}}}}}));
}

TEST(TraceIndexes, AnEventWithoutARecordIsReadByItsAccessors) {
  TraceIndexes indexes;
  indexes.Note(ForeignEvent());
  EXPECT_EQ(indexes.machines.Ids(), Ids{1});
  EXPECT_EQ(indexes.applications.Ids(), Ids{2});
  EXPECT_EQ(indexes.components.Ids(), Ids{3});
  EXPECT_EQ(indexes.categories.Ids(), Ids{4});
  EXPECT_EQ(indexes.sourceFiles.Ids(), Ids{7});
  EXPECT_EQ(indexes.processes, (ProcessMap{{1, {{5, {6}}}}}));
}

TEST(TraceIndexes, TheIdsZeroAndTheLargestAreIdsLikeOthers) {
  TraceIndexes indexes;
  indexes.Note(*MakeEvent(0, 0, 0, 0, 0, 0, 0));
  indexes.Note(*MakeEvent(65535, 65535, 65535, 65535, 65535, 65535, 65535));
  EXPECT_EQ(indexes.machines.Ids(), (Ids{0, 65535}));
  EXPECT_EQ(indexes.sourceFiles.Ids(), (Ids{0, 65535}));
  EXPECT_EQ(indexes.processes, (ProcessMap{{0, {{0, {0}}}}, {65535, {{65535, {65535}}}}}));
}

TEST(TraceIndexes, AgreesWithAScanOfTheListsOverManyTraces) {
  std::mt19937 random(7);
  // Few ids for most traces, and now and then any id, so that ids replace each other in the cache.
  const auto id = [&random] {
    return static_cast<NameId>(random() % 8 == 0 ? random() : random() % 20);
  };
  TraceIndexes indexes;
  Ids machines, threads;
  ProcessMap processes;
  for (int i = 0; i < 20000; ++i) {
    const NameId machine = id(), pid = id(), tid = id();
    indexes.Note(*MakeEvent(machine, 1, 1, 1, pid, tid, 1));
    processes[machine][pid].insert(tid);
    if (std::count(machines.begin(), machines.end(), machine) == 0) machines.push_back(machine);
    if (std::count(threads.begin(), threads.end(), tid) == 0) threads.push_back(tid);
  }
  EXPECT_EQ(indexes.machines.Ids(), machines);
  EXPECT_EQ(indexes.threadIds.Ids(), threads);
  EXPECT_EQ(indexes.processes, processes);
}

}  // namespace
