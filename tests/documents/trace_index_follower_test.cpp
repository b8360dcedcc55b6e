// The ids noted after a walk, beside those that the walk notes itself.
#include "documents/trace_index_follower.h"

#include <algorithm>
#include <random>

#include "documents_fixture.h"
#include "records/trc_walk.h"

namespace {

// Writes down where records end, and notes the ids of traces as a load without a follower does.
struct Walked {
  TraceIndexes indexes = {};
  std::vector<std::uint64_t> ends = {};

  explicit Walked(Bytes bytes) { reached = WalkTrc(bytes, *this); }
  void OnName(NameId, std::string_view) {}
  void OnTrace(const std::uint8_t* record) { indexes.Note(RawTrace(record)); }
  void OnUnknownTag(std::uint64_t) {}
  bool OnProgress(std::uint64_t position) {
    ends.push_back(position);
    return true;
  }
  std::uint64_t reached = 0;
};

void ExpectTheSame(const TraceIndexes& indexes, const TraceIndexes& other) {
  EXPECT_EQ(indexes.machines.Ids(), other.machines.Ids());
  EXPECT_EQ(indexes.applications.Ids(), other.applications.Ids());
  EXPECT_EQ(indexes.components.Ids(), other.components.Ids());
  EXPECT_EQ(indexes.categories.Ids(), other.categories.Ids());
  EXPECT_EQ(indexes.processIds.Ids(), other.processIds.Ids());
  EXPECT_EQ(indexes.threadIds.Ids(), other.threadIds.Ids());
  EXPECT_EQ(indexes.sourceFiles.Ids(), other.sourceFiles.Ids());
  EXPECT_EQ(indexes.processes, other.processes);
}

// So many mebibytes of traces of many ids, among them names and stray bytes, that the thread is
// woken several times before the end.
TrcImage LargeImage() {
  TrcImage image;
  std::mt19937 random(7);
  const auto below = [&random](unsigned bound) { return static_cast<NameId>(random() % bound); };
  while (image.Size() < 10 * 1024 * 1024) {
    if (below(50) == 0) image.Name(below(60000), "name");
    if (below(70) == 0) image.Raw(200 + below(50));
    image.Trace({.text = std::string(below(1500), 'x'),
                 .machine = below(5),
                 .app = below(40),
                 .component = below(300),
                 .category = below(2000),
                 .pid = below(900),
                 .tid = below(30000),
                 .file = below(500)});
  }
  return image;
}

TEST(TraceIndexFollower, NotesWhatTheWalkWouldInTheSameOrder) {
  const GuardedBytes bytes = LargeImage().Guarded();
  const Walked walked(bytes.View());
  ASSERT_GT(walked.ends.size(), 8u);
  TraceIndexes indexes;
  TraceIndexFollower follower(bytes.View(), indexes);
  for (const std::uint64_t end : walked.ends) follower.Reach(end);
  follower.Finish(walked.reached);
  ExpectTheSame(indexes, walked.indexes);
}

TEST(TraceIndexFollower, ATraceCutByTheEndOfTheFileIsNotedToo) {
  TrcImage image = LargeImage();
  image.Trace({.text = "cut", .machine = 77}).Cut(4);
  const GuardedBytes bytes = image.Guarded();
  const Walked walked(bytes.View());
  ASSERT_GT(walked.reached, bytes.View().size());
  TraceIndexes indexes;
  TraceIndexFollower follower(bytes.View(), indexes);
  follower.Finish(walked.reached);
  EXPECT_EQ(indexes.machines.Ids().back(), 77);
  ExpectTheSame(indexes, walked.indexes);
}

TEST(TraceIndexFollower, NothingAfterTheEndOfACancelledWalkIsNoted) {
  TrcImage image = LargeImage();
  const std::uint64_t end = image.Size();
  image.Trace({.machine = 77});
  const GuardedBytes bytes = image.Guarded();
  const Walked walked(bytes.View().first(end));
  TraceIndexes indexes;
  TraceIndexFollower follower(bytes.View(), indexes);
  follower.Finish(end);
  ExpectTheSame(indexes, walked.indexes);
}

TEST(TraceIndexFollower, OneThatIsDroppedEndsBeforeItsBytesGoAndNotesNothingMore) {
  TraceIndexes indexes;
  {
    TrcImage image = LargeImage();
    image.Trace({.machine = 77});
    const GuardedBytes bytes = image.Guarded();
    const Walked walked(bytes.View());
    ASSERT_EQ(walked.indexes.machines.Ids().back(), 77);
    TraceIndexFollower follower(bytes.View(), indexes);
    follower.Reach(walked.ends.back());
  }
  const std::vector<NameId>& machines = indexes.machines.Ids();
  EXPECT_EQ(std::count(machines.begin(), machines.end(), 77), 0);
}

TEST(TraceIndexFollower, ASmallFileHasNone) {
  const GuardedBytes bytes = TrcImage().Trace("a").Guarded();
  TraceIndexes indexes;
  EXPECT_EQ(TraceIndexFollower::Start(bytes.View(), indexes), nullptr);
}

class LargeFileTest : public DocumentsTest {};

TEST_F(LargeFileTest, HasTheIndexesOfItsTracesWhenItIsLoaded) {
  const TrcImage image = LargeImage();
  const GuardedBytes bytes = image.Guarded();
  const CTraceFileDoc& document = Load(image);
  ExpectTheSame(document.m_indexes, Walked(bytes.View()).indexes);
}

}  // namespace
