// What the service reads out of a segment while its application writes to it.
#include "quor/traced/traced_app.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>
#include <thread>

#include "quor/ring/ring_producer.h"
#include "quor/traced/forwarded_note.h"
#include "records/name_record.h"
#include "records/record_fields.h"

namespace {

TEST(TracedApp, APointThatIsRegisteredWhileTheServiceReadsHasItsNames) {
  constexpr std::uint32_t kPoints = 16384;
  SegmentMap made, opened;
  ASSERT_TRUE(made.Create({kPoints, 1u << 20, 4096}, 1, 42));
  const char* why = "";
  ASSERT_TRUE(opened.Open(dup(made.Descriptor()), &why)) << why;
  TracedApp app(std::move(opened), "orders", "here", 1);
  // Joins also when an assertion leaves this function.
  std::jthread application([&made] {
    std::uint32_t used = 0;
    for (std::uint32_t i = 0; i < kPoints; ++i) {
      const auto id = AppNameId(i + 1);
      used += static_cast<std::uint32_t>(
          StoreNameBody(made.Names() + used, id, "point " + std::to_string(i)));
      made.Header()->nameBytesUsed.store(used, std::memory_order_release);
      made.Points()[i].component = made.Points()[i].category = id;
      made.Header()->pointCount.store(i + 1, std::memory_order_release);
      // Slow enough for the reader to run in between, again and again.
      const auto until = std::chrono::steady_clock::now() + std::chrono::microseconds(3);
      while (std::chrono::steady_clock::now() < until) {
      }
    }
  });
  std::vector<TracedPoint> points;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (points.size() < kPoints) {
    ASSERT_TRUE(app.ReadPoints(points));
    ASSERT_LT(std::chrono::steady_clock::now(), deadline) << points.size();
  }
  for (std::uint32_t i = 0; i < kPoints; ++i) {
    ASSERT_EQ(points[i].component, "point " + std::to_string(i));
    ASSERT_EQ(points[i].category, points[i].component);
  }
}

// A damaged trace, and one that comes with more drops than can have been, were taken out of the
// ring when it broke. A third trace waits in it.
TEST(TracedApp, OneThatIsGivenUpReportsAlsoWhatItTookOutOfTheRingLast) {
  SegmentMap made, opened;
  ASSERT_TRUE(made.Create({16, 4096, 4096}, 1, 42));
  RingProducer producer(made);
  RingRecord* records[3] = {};
  for (RingRecord*& record : records) {
    RingProducer::Slot slot;
    ASSERT_TRUE(producer.Reserve(kTraceFixedBytes, slot));
    record = slot.header;
    StoreRecord<AppNameId>(slot.record, {});
    producer.Commit(slot);
  }
  records[0]->recordBytes = records[1]->drops = ~std::uint32_t{0};
  const char* why = "";
  ASSERT_TRUE(opened.Open(dup(made.Descriptor()), &why)) << why;
  Hub hub;
  TracedApp app(std::move(opened), "orders", "here", 1);
  app.Enter(hub);
  app.Begin();
  ASSERT_EQ(app.Drain(10, false), TracedApp::Step::Broken);
  EXPECT_EQ(app.CurrentSource()->serial, 0u);
  app.GiveUp(true);
  EXPECT_EQ(app.CurrentSource()->serial, 3u);
  app.Leave();
}

TEST(TracedApp, AClockThatIsSetBackBreaksNoApplication) {
  using std::chrono::hours, std::chrono::seconds;
  EXPECT_EQ(AgeOfChange(hours(10), hours(12), hours(30)), hours(2));
  EXPECT_EQ(AgeOfChange(hours(10), hours(10), hours(30)), seconds(0));
  // The segment was made at ten, and the clock was set back to nine since.
  EXPECT_EQ(AgeOfChange(hours(10), hours(9), hours(30)), hours(30));
}

TEST(ForwardedNote, TheNoteIsInTheSegmentAndOutlivesItsRest) {
  SegmentMap made;
  ASSERT_TRUE(made.Create({16, 4096, 4096}, 1, 42));
  FinishedSegment rest;
  SetForwardTarget(*made.Header(), "orders1:7447");
  made.Header()->served = 50;
  const auto note = ForwardedNote(made.Descriptor(), 20);
  ASSERT_TRUE(note);
  made.Finish(SegmentEnd::Elsewhere);
  note(7);
  ASSERT_TRUE(ReadFinishedSegment(made.Descriptor(), &rest));
  EXPECT_EQ(rest.forwardTarget, "orders1:7447");
  EXPECT_EQ(rest.forwarded, 27u);
  EXPECT_EQ(rest.served, 50u);
}

TEST(ForwardedNote, NothingInTheSegmentIsTrusted) {
  SegmentMap made;
  ASSERT_TRUE(made.Create({16, 4096, 4096}, 1, 42));
  SegmentHeader& header = *made.Header();
  SetForwardTarget(header, std::string(1000, 'x'));
  EXPECT_EQ(ForwardTarget(header), std::string(kForwardTargetBytes - 1, 'x'));
  // No end of the text.
  std::memset(header.forwardTarget, 'y', kForwardTargetBytes);
  header.finished = SegmentEnd::Elsewhere;
  FinishedSegment rest;
  ASSERT_TRUE(ReadFinishedSegment(made.Descriptor(), &rest));
  EXPECT_EQ(rest.forwardTarget, std::string(kForwardTargetBytes, 'y'));
  EXPECT_EQ(ForwardTarget(header), std::string(kForwardTargetBytes, 'y'));
  EXPECT_EQ(ForwardedOf(27, 50, 20), 7u);
  EXPECT_EQ(ForwardedOf(5, 50, 20), 0u);
  EXPECT_EQ(ForwardedOf(~std::uint64_t{0}, 50, 20), 30u);
  EXPECT_EQ(ForwardedOf(0, 10, 20), 0u);
  // The page goes away beneath the note.
  const auto note = ForwardedNote(made.Descriptor(), 0);
  ASSERT_EQ(ftruncate(made.Descriptor(), 0), 0);
  note(7);
  EXPECT_FALSE(ReadFinishedSegment(made.Descriptor(), &rest));
}

}  // namespace
